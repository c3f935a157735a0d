// The layout of the shaders' parameters, from the compiled shaders' own words. That the library
// fills them in, binds what they read and runs them in their groups, the operations show.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "d3d11/shader_bytecode.h"
#include "pictavo/pictavo.h"

namespace pictavo::d3d11 {
namespace {

u32 Word(const u8* bytes) {
  u32 word;
  std::memcpy(&word, bytes, 4);
  return word;
}

/// A chunk of a compiled shader; null without one.
const u8* Chunk(const Bytecode& code, const char* name) {
  for (u32 i = 0; i < Word(code.data + 28); ++i) {
    const u8* chunk = code.data + Word(code.data + 32 + 4 * i);
    if (std::memcmp(chunk, name, 4) == 0) return chunk + 8;
  }
  return nullptr;
}

/// A buffer of a shader as its reflection data tells it: "size type name type name …".
std::string Layout(const u8* rdef, const std::string& bufferName) {
  constexpr u32 kBufferSize = 24, kVariableSize = 40, kMemberSize = 12, kStructure = 5;
  const auto name = [&](const u8* at) {
    return std::string(reinterpret_cast<const char*>(rdef + Word(at)));
  };
  std::string text;
  const auto add = [&](const u8* field, const u8* type) {
    const u32 kind = Word(type) >> 16;
    text += kind == 2 ? " i " : kind == 3 ? " f " : kind == 19 ? " u " : " ? ";
    text += name(field);
  };
  for (u32 b = 0; b < Word(rdef); ++b) {
    const u8* buffer = rdef + Word(rdef + 4) + kBufferSize * b;
    if (name(buffer) != bufferName) continue;
    text = std::to_string(Word(buffer + 12));
    for (u32 i = 0; i < Word(buffer + 4); ++i) {
      const u8* variable = rdef + Word(buffer + 8) + kVariableSize * i;
      const u8* type = rdef + Word(variable + 16);
      if ((Word(type) & 0xFFFF) != kStructure) add(variable, type);
      for (u32 m = 0; m < Word(type + 8) >> 16; ++m) {  // of an element of a structured buffer
        const u8* member = rdef + Word(type + 12) + kMemberSize * m;
        add(member, rdef + Word(member + 4));
      }
    }
  }
  return text;
}

/// What a shader declares an output to hold, as a D3D_RESOURCE_RETURN_TYPE.
u32 ReturnType(const u8* rdef, const char* output) {
  constexpr u32 kBindingSize = 32;
  for (u32 i = 0; i < Word(rdef + 8); ++i) {
    const u8* binding = rdef + Word(rdef + 12) + kBindingSize * i;
    if (std::strcmp(reinterpret_cast<const char*>(rdef + Word(binding)), output) == 0) {
      return Word(binding + 8);
    }
  }
  return 0;
}

const std::string kRegion =
    " u uSrcColorFormat u uDstColorFormat i nDstOriX i nDstOriY i nSrcRgnSx i nSrcRgnSy"
    " i nSrcRgnW i nSrcRgnH";
const std::string kKeyed = "48" + kRegion + " u uKeys u nDummy1 u nDummy2 u nDummy3";
const std::string kKeys = "32 f r f g f b i angle i denoise u nDummy1 u nDummy2 u nDummy3";
const std::string kFiltered = "48" + kRegion + " i nRadius i nDummy1 i nDummy2 i nDummy3";
const std::string kScaled =
    "48 u uSrcColorFormat u uDstColorFormat u ufxSrcXStep u ufxSrcYStep u uInnerXStep"
    " u uInnerYStep i nDstRgnSx i nDstRgnSy i nDstRgnEx i nDstRgnEy i nDummy1 i nDummy2";
const std::string kAffine = "64" + kRegion +
                            " i nFxSrcXStart i nFxSrcYStart i nFxSrcXStepX i nFxSrcXStepY"
                            " i nFxSrcYStepX i nFxSrcYStepY i nDummy1 i nDummy2";
const std::string kResized = "16 u uSrcColorFormat u uDstColorFormat u uWeighted u uDummy";
const std::string kRotated =
    "64 u uSrcColorFormat u uDstColorFormat u uNearest u uDummy u uFxSrcXStart u uFxSrcYStart"
    " u uFxSrcXStepX u uFxSrcXStepY u uFxSrcYStepX u uFxSrcYStepY";
const std::string kFillPlane = "16 i nDstSx i nDstSy f fColorA i nDummy1";
const std::string kFillColour =
    "32 i nDstSx i nDstSy f fColorR f fColorG f fColorB f fColorA i nDummy1 i nDummy2";
const std::string kTinted =
    "32 i nDstSx i nDstSy f fColorR f fColorG f fColorB f fDummy1 i nDummy2 i nDummy3";
const std::string kBlurred = "16 u uBlurRadius u uWidth u uHeight u uDummy";
const std::string kWeights = "16 u uRadius f fAlpha u uFilterType u uDummy";
const std::string kGrown = "16 u uFilterRadiusW u uFilterRadiusH u uDummy1 u uDummy2";
const std::string kGrownRegion =
    "48" + kRegion + " u uFilterRadiusW u uFilterRadiusH u uClipSrcA u uDummy1";

const std::pair<Shader, std::string> kBlocks[] = {
    {Shader::kChromaKey, kKeyed},
    {Shader::kRegionCopy, "32" + kRegion},
    {Shader::kRegionCopyToPlane, "32" + kRegion},
    {Shader::kRegionCopyFromPlane, "32" + kRegion},
    {Shader::kMaterialCopy, "32" + kRegion},
    {Shader::kRegionFilterRows, kFiltered},
    {Shader::kRegionFilterColumns, kFiltered},
    {Shader::kScaledCopy, kScaled},
    {Shader::kAffineCopy, kAffine},
    {Shader::kResizeRows, kResized},
    {Shader::kResizeColumns, kResized},
    {Shader::kRotateCopy, kRotated},
    {Shader::kFillPlane, kFillPlane},
    {Shader::kFillColour, kFillColour},
    {Shader::kColourFromSource, kTinted},
    {Shader::kPlainCopy, ""},
    {Shader::kBoxBlurRows, kBlurred},
    {Shader::kBoxBlurColumns, kBlurred},
    {Shader::kFilterWeights, kWeights},
    {Shader::kFilterApply, kGrown},
    {Shader::kFilterApplyToRegion, kGrownRegion},
    {Shader::kClipGrown, "32" + kRegion},
};
static_assert(std::size(kBlocks) == kShaderCount);

TEST(Shaders, HaveTheirParametersInTheirPlaces) {
  for (const auto& [shader, block] : kBlocks) {
    const u8* rdef = Chunk(kBytecode[static_cast<size_t>(shader)], "RDEF");
    EXPECT_EQ(Layout(rdef, "CSParam"), block) << "shader " << static_cast<int>(shader);
    EXPECT_EQ(Layout(rdef, "ColorKeys"), shader == Shader::kChromaKey ? kKeys : "");
    constexpr u32 kUnorm = 1, kUint = 4, kFloat = 5;  // as the views that are bound
    const bool floats = shader == Shader::kFilterWeights || shader == Shader::kResizeRows;
    EXPECT_EQ(ReturnType(rdef, "txDst"), shader == Shader::kBoxBlurRows ? kUint
                                         : floats                       ? kFloat
                                                                        : kUnorm)
        << "shader " << static_cast<int>(shader);
  }
}

}  // namespace
}  // namespace pictavo::d3d11

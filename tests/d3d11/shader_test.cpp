// The compiled shaders' own words: their parameters, resources and groups are what the CPU code
// takes them for. That it fills the parameters in this order, the operations show.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

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

/// The reflection data of a shader, in words: every resource as "name register content", and a
/// buffer with its size and its members, each "type name", with the offset where it is not the next
/// four bytes.
class Reflection {
 public:
  explicit Reflection(const u8* rdef) : rdef_(rdef) {}

  std::set<std::string> Resources() const {
    constexpr u32 kStructuredBuffer = 5;
    const std::string kinds[] = {"b", "", "t", "", "u", "t"};
    const std::string contents[] = {"", "", "", "", " uint", " float", ""};
    std::set<std::string> resources;
    for (u32 i = 0; i < Word(rdef_ + 8); ++i) {
      const u8* binding = rdef_ + Word(rdef_ + 12) + 32 * i;
      const u32 kind = Word(binding + 4);
      const std::string name = Name(binding);
      std::string text = name + ' ' + kinds[kind] + std::to_string(Word(binding + 20));
      text += kind == kStructuredBuffer ? "" : contents[Word(binding + 8)];
      for (u32 b = 0; b < Word(rdef_); ++b) {
        const u8* buffer = rdef_ + Word(rdef_ + 4) + 24 * b;
        if (Name(buffer) == name) text += ": " + Members(buffer);
      }
      resources.insert(text);
    }
    return resources;
  }

 private:
  std::string Name(const u8* at) const { return reinterpret_cast<const char*>(rdef_ + Word(at)); }

  std::string Members(const u8* buffer) const {
    constexpr u32 kVariableSize = 40, kMemberSize = 12, kStructure = 5;
    std::string text = std::to_string(Word(buffer + 12));
    u32 next = 0;
    const auto add = [&](const u8* name, u32 offset, const u8* type) {
      const u32 kind = Word(type) >> 16;
      text += kind == 2 ? " i " : kind == 3 ? " f " : kind == 19 ? " u " : " ? ";
      text += Name(name);
      if (offset != next) text.append(1, '@').append(std::to_string(offset));
      next = offset + 4;
    };
    for (u32 i = 0; i < Word(buffer + 4); ++i) {
      const u8* variable = rdef_ + Word(buffer + 8) + kVariableSize * i;
      const u8* type = rdef_ + Word(variable + 16);
      if ((Word(type) & 0xFFFF) != kStructure) add(variable, Word(variable + 4), type);
      for (u32 m = 0; m < Word(type + 8) >> 16; ++m) {  // of an element of a structured buffer
        const u8* member = rdef_ + Word(type + 12) + kMemberSize * m;
        add(member, Word(member + 8), rdef_ + Word(member + 4));
      }
    }
    return text;
  }

  const u8* rdef_;
};

// "CSParam b0: " and its size stand before these.
const std::string kRegion =
    " u uSrcColorFormat u uDstColorFormat i nDstOriX i nDstOriY i nSrcRgnSx i nSrcRgnSy"
    " i nSrcRgnW i nSrcRgnH";
const std::string kKeyed = "48" + kRegion + " u uKeys u nDummy1 u nDummy2 u nDummy3";
const std::string kKeys =
    "ColorKeys t1: 32 f r f g f b i angle i denoise u nDummy1 u nDummy2 u nDummy3";
const std::string kFiltered = "48" + kRegion + " i nRadius i nDummy1 i nDummy2 i nDummy3";
const std::string kScaled =
    "48 u uSrcColorFormat u uDstColorFormat u ufxSrcXStep u ufxSrcYStep u uInnerXStep"
    " u uInnerYStep i nDstRgnSx i nDstRgnSy i nDstRgnEx i nDstRgnEy i nDummy1 i nDummy2";
const std::string kAffine = "64" + kRegion +
                            " i nFxSrcXStart i nFxSrcYStart i nFxSrcXStepX i nFxSrcXStepY"
                            " i nFxSrcYStepX i nFxSrcYStepY i nDummy1 i nDummy2";
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

const std::string kMaterial = "txMaterial0 t0 float", kSource = "txSrc t0 float";
const std::string kDst = "txDst u0 float", kFilter = "txFilter t1 float";

const struct {
  Shader shader;
  std::string block;  // empty for none
  std::set<std::string> resources;
  u32 groupX = 32, groupY = 32;
} kExpected[] = {
    {Shader::kChromaKey, kKeyed, {kMaterial, kKeys, kDst}},
    {Shader::kRegionCopy, "32" + kRegion, {kSource, kDst}},
    {Shader::kRegionCopyToPlane, "32" + kRegion, {kSource, kDst}},
    {Shader::kRegionCopyFromPlane, "32" + kRegion, {kSource, kDst}},
    {Shader::kMaterialCopy, "32" + kRegion, {kMaterial, kDst}},
    {Shader::kRegionFilterRows, kFiltered, {kMaterial, kDst}},
    {Shader::kRegionFilterColumns, kFiltered, {kMaterial, kDst}},
    {Shader::kScaledCopy, kScaled, {kMaterial, kDst}},
    {Shader::kAffineCopy, kAffine, {kMaterial, kDst}},
    {Shader::kFillPlane, kFillPlane, {kDst}},
    {Shader::kFillColour, kFillColour, {kDst}},
    {Shader::kColourFromSource, kTinted, {kSource, kDst}},
    {Shader::kPlainCopy, "", {kMaterial, kDst}},
    {Shader::kBoxBlurRows,
     kBlurred,
     {kSource, "txDst u0 uint", "txRemainder u1 uint", "txDivisor u2 uint"},
     32,
     1},
    {Shader::kBoxBlurColumns,
     kBlurred,
     {"txSrc t0 uint", "txRemainder t1 uint", "txDivisor t2 uint", kDst},
     32,
     1},
    {Shader::kFilterWeights, kWeights, {kDst}, 1, 1},
    {Shader::kFilterApply, kGrown, {kMaterial, kFilter, kDst}},
    {Shader::kFilterApplyToRegion, kGrownRegion, {kMaterial, kFilter, kDst}},
};
static_assert(std::size(kExpected) == kShaderCount);

TEST(Shaders, AreWhatTheLibraryTakesThemFor) {
  constexpr u32 kThreadGroup = 155;  // the declaration's token
  for (const auto& e : kExpected) {
    SCOPED_TRACE("shader " + std::to_string(&e - kExpected));
    const Bytecode& code = kBytecode[static_cast<size_t>(e.shader)];
    std::set<std::string> resources = e.resources;
    if (!e.block.empty()) resources.insert("CSParam b0: " + e.block);
    EXPECT_EQ(Reflection(Chunk(code, "RDEF")).Resources(), resources);

    const u8* program = Chunk(code, "SHEX") != nullptr ? Chunk(code, "SHEX") : Chunk(code, "SHDR");
    const u8* token = program + 8;
    while ((Word(token) & 0x7FF) != kThreadGroup) token += 4 * (Word(token) >> 24 & 0x7F);
    EXPECT_EQ(Word(token + 4), e.groupX);
    EXPECT_EQ(Word(token + 8), e.groupY);
    EXPECT_EQ(Word(token + 12), 1u);
  }
}

}  // namespace
}  // namespace pictavo::d3d11

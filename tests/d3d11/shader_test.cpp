// The compiled shaders' own words: their parameters, resources and groups are what the CPU code
// takes them for.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "d3d11/shader_blocks.h"
#include "d3d11/shader_bytecode.h"

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

struct Field {
  std::string name;
  size_t offset, size;
  char type;  // u, i or f

  bool operator==(const Field&) const = default;
};
using Fields = std::vector<Field>;

void PrintTo(const Field& f, std::ostream* out) {
  *out << f.type << ' ' << f.name << " at " << f.offset << ", " << f.size << " bytes";
}

/// What the reflection data of a shader says.
struct Reflection {
  std::map<std::string, Fields> buffers;         // constant and structured ones
  std::map<std::string, size_t> sizes;           // of those
  std::map<std::string, std::string> registers;  // of every resource: kind, register, content
};

char TypeLetter(const u8* type) {
  const u32 kind = Word(type) >> 16;
  return kind == 2 ? 'i' : kind == 3 ? 'f' : kind == 19 ? 'u' : '?';
}

Fields Variables(const u8* rdef, const u8* buffer) {
  constexpr u32 kVariableSize = 40, kMemberSize = 12, kStructure = 5;
  Fields fields;
  for (u32 i = 0; i < Word(buffer + 4); ++i) {
    const u8* variable = rdef + Word(buffer + 8) + kVariableSize * i;
    const u8* type = rdef + Word(variable + 16);
    const auto name = [&](const u8* at) {
      return std::string(reinterpret_cast<const char*>(rdef + Word(at)));
    };
    if ((Word(type) & 0xFFFF) != kStructure) {
      fields.push_back({name(variable), Word(variable + 4), Word(variable + 8), TypeLetter(type)});
      continue;
    }
    for (u32 m = 0; m < Word(type + 8) >> 16; ++m) {  // an element of a structured buffer
      const u8* member = rdef + Word(type + 12) + kMemberSize * m;
      fields.push_back({name(member), Word(member + 8), 4, TypeLetter(rdef + Word(member + 4))});
    }
  }
  return fields;
}

Reflection Reflect(const u8* rdef) {
  Reflection result;
  for (u32 i = 0; i < Word(rdef); ++i) {
    const u8* buffer = rdef + Word(rdef + 4) + 24 * i;
    const char* name = reinterpret_cast<const char*>(rdef + Word(buffer));
    result.buffers[name] = Variables(rdef, buffer);
    result.sizes[name] = Word(buffer + 12);
  }
  const std::map<u32, std::string> kinds = {{0, "b"}, {2, "t"}, {4, "u"}};
  const std::map<u32, std::string> contents = {{0, ""}, {4, " uint"}, {5, " float"}};
  for (u32 i = 0; i < Word(rdef + 8); ++i) {
    const u8* binding = rdef + Word(rdef + 12) + 32 * i;
    const u32 kind = Word(binding + 4), samples = Word(binding + 16);
    const std::string place = std::to_string(Word(binding + 20));
    result.registers[reinterpret_cast<const char*>(rdef + Word(binding))] =
        kind == 5 ? "t" + place + " of " + std::to_string(samples) + " bytes"
                  : kinds.at(kind) + place + contents.at(Word(binding + 8));
  }
  return result;
}

template <typename T>
Field FieldOf(const char* name, size_t offset, T) {
  return {name, offset, sizeof(T),
          std::is_same_v<T, f32>   ? 'f'
          : std::is_same_v<T, i32> ? 'i'
                                   : 'u'};
}
#define FIELD(block, name) FieldOf(#name, offsetof(block, name), block{}.name)

const Fields kRegionCopy = {
    FIELD(RegionCopyBlock, uSrcColorFormat), FIELD(RegionCopyBlock, uDstColorFormat),
    FIELD(RegionCopyBlock, nDstOriX),        FIELD(RegionCopyBlock, nDstOriY),
    FIELD(RegionCopyBlock, nSrcRgnSx),       FIELD(RegionCopyBlock, nSrcRgnSy),
    FIELD(RegionCopyBlock, nSrcRgnW),        FIELD(RegionCopyBlock, nSrcRgnH)};

/// The fields of a block that begins with the region-copy block.
Fields Region(const Fields& rest) {
  Fields fields = kRegionCopy;
  fields.insert(fields.end(), rest.begin(), rest.end());
  return fields;
}

const Fields kChromaKey = Region({FIELD(ChromaKeyBlock, uKeys), FIELD(ChromaKeyBlock, nDummy1),
                                  FIELD(ChromaKeyBlock, nDummy2), FIELD(ChromaKeyBlock, nDummy3)});
const Fields kColorKey = {FIELD(ColorKey, r),       FIELD(ColorKey, g),
                          FIELD(ColorKey, b),       FIELD(ColorKey, angle),
                          FIELD(ColorKey, denoise), FIELD(ColorKey, nDummy1),
                          FIELD(ColorKey, nDummy2), FIELD(ColorKey, nDummy3)};
const Fields kRegionFilter =
    Region({FIELD(RegionFilterBlock, nRadius), FIELD(RegionFilterBlock, nDummy1),
            FIELD(RegionFilterBlock, nDummy2), FIELD(RegionFilterBlock, nDummy3)});
const Fields kScaledCopy = {
    FIELD(ScaledCopyBlock, uSrcColorFormat), FIELD(ScaledCopyBlock, uDstColorFormat),
    FIELD(ScaledCopyBlock, ufxSrcXStep),     FIELD(ScaledCopyBlock, ufxSrcYStep),
    FIELD(ScaledCopyBlock, uInnerXStep),     FIELD(ScaledCopyBlock, uInnerYStep),
    FIELD(ScaledCopyBlock, nDstRgnSx),       FIELD(ScaledCopyBlock, nDstRgnSy),
    FIELD(ScaledCopyBlock, nDstRgnEx),       FIELD(ScaledCopyBlock, nDstRgnEy),
    FIELD(ScaledCopyBlock, nDummy1),         FIELD(ScaledCopyBlock, nDummy2)};
const Fields kAffineCopy =
    Region({FIELD(AffineCopyBlock, nFxSrcXStart), FIELD(AffineCopyBlock, nFxSrcYStart),
            FIELD(AffineCopyBlock, nFxSrcXStepX), FIELD(AffineCopyBlock, nFxSrcXStepY),
            FIELD(AffineCopyBlock, nFxSrcYStepX), FIELD(AffineCopyBlock, nFxSrcYStepY),
            FIELD(AffineCopyBlock, nDummy1), FIELD(AffineCopyBlock, nDummy2)});
const Fields kFillPlane = {FIELD(FillPlaneBlock, nDstSx), FIELD(FillPlaneBlock, nDstSy),
                           FIELD(FillPlaneBlock, fColorA), FIELD(FillPlaneBlock, nDummy1)};
const Fields kFillColour = {FIELD(FillColourBlock, nDstSx),  FIELD(FillColourBlock, nDstSy),
                            FIELD(FillColourBlock, fColorR), FIELD(FillColourBlock, fColorG),
                            FIELD(FillColourBlock, fColorB), FIELD(FillColourBlock, fColorA),
                            FIELD(FillColourBlock, nDummy1), FIELD(FillColourBlock, nDummy2)};
const Fields kColourFromSource = {
    FIELD(ColourFromSourceBlock, nDstSx),  FIELD(ColourFromSourceBlock, nDstSy),
    FIELD(ColourFromSourceBlock, fColorR), FIELD(ColourFromSourceBlock, fColorG),
    FIELD(ColourFromSourceBlock, fColorB), FIELD(ColourFromSourceBlock, fDummy1),
    FIELD(ColourFromSourceBlock, nDummy2), FIELD(ColourFromSourceBlock, nDummy3)};
const Fields kBoxBlur = {FIELD(BoxBlurBlock, uBlurRadius), FIELD(BoxBlurBlock, uWidth),
                         FIELD(BoxBlurBlock, uHeight), FIELD(BoxBlurBlock, uDummy)};
const Fields kFilterWeights = {
    FIELD(FilterWeightsBlock, uRadius), FIELD(FilterWeightsBlock, fAlpha),
    FIELD(FilterWeightsBlock, uFilterType), FIELD(FilterWeightsBlock, uDummy)};
const Fields kFilterApply = {FIELD(FilterApplyBlock, uFilterRadiusW),
                             FIELD(FilterApplyBlock, uFilterRadiusH),
                             FIELD(FilterApplyBlock, uDummy1), FIELD(FilterApplyBlock, uDummy2)};
const Fields kFilterApplyToRegion =
    Region({FIELD(FilterApplyToRegionBlock, uFilterRadiusW),
            FIELD(FilterApplyToRegionBlock, uFilterRadiusH),
            FIELD(FilterApplyToRegionBlock, uClipSrcA), FIELD(FilterApplyToRegionBlock, uDummy1)});

using Registers = std::map<std::string, std::string>;
const Registers kMaterial = {{"txMaterial0", "t0 float"}, {"txDst", "u0 float"}};
const Registers kSource = {{"txSrc", "t0 float"}, {"txDst", "u0 float"}};
const Registers kNoSource = {{"txDst", "u0 float"}};
const Registers kFiltered = {
    {"txMaterial0", "t0 float"}, {"txFilter", "t1 float"}, {"txDst", "u0 float"}};

struct Expected {
  Shader shader;
  Fields block;  // empty for none
  size_t blockSize;
  Registers registers;
  u32 groupX, groupY;
} const kExpected[] = {
    {Shader::kChromaKey,
     kChromaKey,
     sizeof(ChromaKeyBlock),
     {{"txMaterial0", "t0 float"}, {"ColorKeys", "t1 of 32 bytes"}, {"txDst", "u0 float"}},
     32,
     32},
    {Shader::kRegionCopy, kRegionCopy, sizeof(RegionCopyBlock), kSource, 32, 32},
    {Shader::kRegionCopyToPlane, kRegionCopy, sizeof(RegionCopyBlock), kSource, 32, 32},
    {Shader::kRegionCopyFromPlane, kRegionCopy, sizeof(RegionCopyBlock), kSource, 32, 32},
    {Shader::kMaterialCopy, kRegionCopy, sizeof(RegionCopyBlock), kMaterial, 32, 32},
    {Shader::kRegionFilterRows, kRegionFilter, sizeof(RegionFilterBlock), kMaterial, 32, 32},
    {Shader::kRegionFilterColumns, kRegionFilter, sizeof(RegionFilterBlock), kMaterial, 32, 32},
    {Shader::kScaledCopy, kScaledCopy, sizeof(ScaledCopyBlock), kMaterial, 32, 32},
    {Shader::kAffineCopy, kAffineCopy, sizeof(AffineCopyBlock), kMaterial, 32, 32},
    {Shader::kFillPlane, kFillPlane, sizeof(FillPlaneBlock), kNoSource, 32, 32},
    {Shader::kFillColour, kFillColour, sizeof(FillColourBlock), kNoSource, 32, 32},
    {Shader::kColourFromSource, kColourFromSource, sizeof(ColourFromSourceBlock), kSource, 32, 32},
    {Shader::kPlainCopy, {}, 0, kMaterial, 32, 32},
    {Shader::kBoxBlurRows,
     kBoxBlur,
     sizeof(BoxBlurBlock),
     {{"txSrc", "t0 float"},
      {"txDst", "u0 uint"},
      {"txRemainder", "u1 uint"},
      {"txDivisor", "u2 uint"}},
     32,
     1},
    {Shader::kBoxBlurColumns,
     kBoxBlur,
     sizeof(BoxBlurBlock),
     {{"txSrc", "t0 uint"},
      {"txRemainder", "t1 uint"},
      {"txDivisor", "t2 uint"},
      {"txDst", "u0 float"}},
     32,
     1},
    {Shader::kFilterWeights, kFilterWeights, sizeof(FilterWeightsBlock), kNoSource, 1, 1},
    {Shader::kFilterApply, kFilterApply, sizeof(FilterApplyBlock), kFiltered, 32, 32},
    {Shader::kFilterApplyToRegion, kFilterApplyToRegion, sizeof(FilterApplyToRegionBlock),
     kFiltered, 32, 32},
};
static_assert(std::size(kExpected) == kShaderCount);

TEST(Shaders, AgreeWithTheirBlocks) {
  for (const Expected& e : kExpected) {
    const auto index = static_cast<size_t>(e.shader);
    SCOPED_TRACE("shader " + std::to_string(index));
    const u8* rdef = Chunk(kBytecode[index], "RDEF");
    ASSERT_NE(rdef, nullptr);
    Reflection reflection = Reflect(rdef);
    Registers registers = e.registers;
    if (!e.block.empty()) {
      registers["CSParam"] = "b0";
      EXPECT_EQ(reflection.buffers["CSParam"], e.block);
      EXPECT_EQ(reflection.sizes["CSParam"], e.blockSize);
    }
    if (e.shader == Shader::kChromaKey) {
      EXPECT_EQ(reflection.buffers["ColorKeys"], kColorKey);
    }
    EXPECT_EQ(reflection.registers, registers);
  }
}

TEST(Shaders, RunInTheirGroups) {
  constexpr u32 kThreadGroup = 155;  // the declaration's token
  for (const Expected& e : kExpected) {
    const Bytecode& code = kBytecode[static_cast<size_t>(e.shader)];
    const u8* program = Chunk(code, "SHEX") != nullptr ? Chunk(code, "SHEX") : Chunk(code, "SHDR");
    ASSERT_NE(program, nullptr);
    const u8* token = program + 8;
    while ((Word(token) & 0x7FF) != kThreadGroup) token += 4 * (Word(token) >> 24 & 0x7F);
    EXPECT_EQ(Word(token + 4), e.groupX);
    EXPECT_EQ(Word(token + 8), e.groupY);
    EXPECT_EQ(Word(token + 12), 1u);
  }
}

}  // namespace
}  // namespace pictavo::d3d11

// The bytes that operations gave when they were found right, as hashes: of drawn calls, and of
// pictures that hold all pairs of bytes under all alphas. scripts/hashes.sh records them anew.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "operations.h"

namespace pictavo::test {
namespace {

struct Hashes {
  const char* operation;
  u32 drawn, dense;
};
constexpr Hashes kRecorded[] = {
#include "hashes.def"
};

class Hash {
 public:
  void Add(const Outcome& outcome) {
    Add(outcome.result);
    Add(outcome.dst.size());
    size_t at = 0;
    for (uint64_t word; at + sizeof word <= outcome.dst.size(); at += sizeof word) {
      std::memcpy(&word, &outcome.dst[at], sizeof word);
      Add(word);
    }
    for (; at < outcome.dst.size(); ++at) Add(outcome.dst[at]);
  }
  u32 Value() const { return static_cast<u32>(state_ >> 32); }

 private:
  void Add(uint64_t word) {
    state_ = (state_ ^ word) * 0x9E3779B97F4A7C15;
    state_ ^= state_ >> 29;
  }

  uint64_t state_ = 1;
};

/// The portable build, and from where on others may differ.
u32 HashOfDrawnCalls(const Operation& operation) {
  Random random(11);
  Hash hash;
  for (int i = 0; i < 250; ++i) {
    const Case c = DrawCase(operation, random);
    hash.Add(RunCase(c, PICTAVO_LEVEL_PORTABLE));
    if (operation.sameFrom != 0) hash.Add(RunCase(c, operation.sameFrom));
  }
  return hash.Value();
}

constexpr i32 kSide = 256;

/// All pairs of bytes under one alpha or, in every other round, every byte under every alpha;
/// every fourth round with the strength that was drawn.
Case Plane(const Operation& operation, int round, Random& random) {
  Case c = DrawCase(operation, random);
  const bool manyAlphas = round % 2 != 0;
  const size_t plane = static_cast<size_t>(round / 2 % 128 * 255 / 127);
  c.call.width = c.call.height = c.call.srcWidth = c.call.srcHeight = kSide;
  c.call.dstPitch = c.call.srcPitch = 4 * kSide;
  if (round % 4 != 1)
    c.call.start = c.call.end = 1, c.call.opacity = 255, c.call.layer.opacity = 255;
  c.dst.resize(4 * kSide * kSide);
  c.src.resize(c.dst.size());
  for (size_t i = 0; i < kSide * kSide; ++i) {
    const size_t low = i & 255, high = i >> 8;
    const size_t src[2][4] = {{low, high, plane, plane}, {high, plane, low, low}};
    const size_t dst[2][4] = {{high, low, 255 - low, 5 * low + 11 * high},
                              {7 * low + plane, high ^ plane, low + high, high}};
    for (size_t k = 0; k < 4; ++k) {
      c.src[4 * i + k] = static_cast<u8>(src[manyAlphas][k]);
      c.dst[4 * i + k] = static_cast<u8>(dst[manyAlphas][k]);
    }
  }
  if (operation.traits & kInPlace) c.dst.swap(c.src);
  return c;
}

/// Sees that builds agree, too.
u32 HashOfPlanes(const Operation& operation) {
  Random random(13);
  Hash hash;
  const int rounds = operation.traits & kManyRules ? 768 : 256;
  for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
    const Case c = Plane(operation, round, random);
    Outcome same = {};
    for (const i32 level : Levels()) {
      if (level == PICTAVO_LEVEL_SSSE3) continue;  // has no builds of these
      Outcome outcome = {0, c.dst};
      outcome.result = operation(level, outcome.dst.data(), c.src.data(), c.call);
      if (level == 0 || level == operation.sameFrom) {
        hash.Add(outcome);
        same = std::move(outcome);
      } else if (level > operation.sameFrom) {
        EXPECT_TRUE(outcome == same) << Describe(c, level);
      }
    }
  }
  return hash.Value();
}

const Hashes* Recorded(const Operation& operation) {
  for (const Hashes& hashes : kRecorded)
    if (std::strcmp(hashes.operation, operation.name) == 0) return &hashes;
  return nullptr;
}

TEST(Recorded, DrawnCalls) {
  EXPECT_EQ(std::size(kRecorded), Operations().size()) << "scripts/hashes.sh was not run";
  for (const Operation& operation : Operations()) {
    const Hashes* const recorded = Recorded(operation);
    ASSERT_NE(recorded, nullptr) << operation.name;
    EXPECT_EQ(HashOfDrawnCalls(operation), recorded->drawn) << operation.name;
  }
}

TEST(Recorded, EveryPairOfBytes) {
  for (const Operation& operation : Operations()) {
    const Hashes* const recorded = Recorded(operation);
    if (!(operation.traits & kEachPixel) || recorded == nullptr) continue;
    EXPECT_EQ(HashOfPlanes(operation), recorded->dense) << operation.name;
  }
}

/// For scripts/hashes.sh: the table as it now would be.
TEST(Recorded, DISABLED_Print) {
  for (const Operation& operation : Operations()) {
    std::printf("    {\"%s\", 0x%08x, 0x%08x},\n", operation.name, HashOfDrawnCalls(operation),
                operation.traits & kEachPixel ? HashOfPlanes(operation) : 0);
  }
}

}  // namespace
}  // namespace pictavo::test

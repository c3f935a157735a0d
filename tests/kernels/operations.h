// Every operation on the processor's pictures behind one signature, and calls of them drawn from
// bytes: of a random generator, or of a fuzzer.
#ifndef PICTAVO_TESTS_OPERATIONS_H_
#define PICTAVO_TESTS_OPERATIONS_H_

#include <span>
#include <string>
#include <vector>

#include "guarded_memory.h"
#include "pictavo/pictavo.h"
#include "pixels.h"

namespace pictavo::test {

/// What an operation is called with; each takes what it has.
struct Call {
  i32 width = 1, height = 1, dstPitch = 4;
  i32 srcWidth = 1, srcHeight = 1, srcPitch = 4;  // the sizes: of resizers and motion blur
  i32 flip = 0;
  f32 start = 1, end = 1;
  u8 opacity = 255;
  u32 colour = 0;
  i32 forceOpaque = 0, fullSize = 1;
  f32 radius = 1;
  BlendParam layer = {0, 255, 0, 0, 0};
  MotionBlurParam motion = {1, 30, 0, 0, 1, 0, 0};
  ChromaKey keys[3] = {};
  i32 keyCount = 1, format = 1;
  u32 border = 0;
  u32 selector = 0;
  i32 binCount = 256;
  u32 model = 0, matrix = 0, range = 0;
  f32 reals[8] = {};  // what a record of parameters is made from: mostly 0 … 1, …
  u32 words[4] = {};  // … and any bits
  i32 level = 0;
  u8* dst = nullptr;
  const u8* src = nullptr;
  void (*changeDst)(ImageDesc&) = nullptr;  // of operations that take records
  void (*changeSrc)(ImageDesc&) = nullptr;
};

/// While the thread runs an operation.
extern thread_local bool isInOperation;

enum Traits : u32 {
  kPacked = 1,       // rows follow each other
  kOnePitch = 2,     // the destination's is the source's
  kInPlace = 4,      // the source, if any, is the destination
  kMayAlias = 8,     // the source may be the destination
  kOwnSize = 16,     // the source has a size of its own
  kWholePitch = 32,  // pitches count in whole pixels
  kEachPixel = 64,   // a pixel's bytes come from the same place of both pictures
  kManyRules = 128   // … by one of many rules, which the call chooses
};

struct Operation {
  const char* name;  // its slot first
  u32 traits;
  u32 (*run)(const Call&);
  i32 sameFrom = 0;  // the lowest level of those that give the same bytes
  i32 srcBytes = 4;  // of a pixel of the source, …
  i32 dstBytes = 4;  // … of the destination

  /// Should it fault, the program says what it was doing.
  u32 operator()(i32 level, u8* dst, const u8* src, Call call) const;
};

std::span<const Operation> Operations();
const Operation& Slot(int slot);

/// The levels at which builds change, as far as this processor can run them.
std::vector<i32> Levels();

/// What is left of some bytes; zeros behind their end.
class Input {
 public:
  explicit Input(std::span<const u8> bytes) : bytes_(bytes) {}
  u8 Byte();
  u32 Bits();
  i32 Below(i32 end) { return Byte() % end; }
  i32 Integer();       // mostly small, sometimes extreme
  f32 Real(f32 most);  // mostly within it, sometimes extreme

 private:
  std::span<const u8> bytes_;
};

/// A call with its pictures; of just the bytes that the geometry describes.
struct Case {
  const Operation* operation;
  Call call;
  Bytes dst, src;
  bool aliased;
  GuardedMemory::Side side;
};
Case DrawCase(const Operation& operation, Input* input, i32 wider = 0);
Case DrawCase(const Operation& operation, Random& random, i32 wider = 0);
/// An operation with arguments of the test's own.
Case MakeCase(const Operation& operation, const Call& call, Bytes dst, Bytes src,
              GuardedMemory::Side side = GuardedMemory::Side::kAfter);

struct Outcome {
  u32 result;
  Bytes dst;
  bool operator==(const Outcome&) const = default;
};
/// Runs a case on copies in guarded memory.
Outcome RunCase(const Case& c, i32 level);

/// What is wrong with the outcomes at all levels; empty: nothing.
std::string Disagreement(const Case& c);
std::string Describe(const Case& c, i32 level);

/// Bytes of a picture whose rows are `pitch` apart, and its first row in such memory.
size_t Span(i32 width, i32 height, i32 pitch, i32 pixelBytes = 4);
u8* Top(u8* memory, i32 height, i32 pitch);

}  // namespace pictavo::test

#endif  // PICTAVO_TESTS_OPERATIONS_H_

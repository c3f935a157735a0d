// What every operation refuses: with which code, and that it then writes nothing.
#include <gtest/gtest.h>

#include <limits>

#include "operations.h"

namespace pictavo::test {
namespace {

using C = Call&;
using Change = void (*)(C);

struct Refusals {
  std::vector<int> slots;
  u32 code;
  std::vector<Change> changes;
};

constexpr u32 P = PICTAVO_E_POINTER, I = PICTAVO_E_INVALIDARG, F = PICTAVO_E_FAIL,
              E = PICTAVO_S_FALSE, S = PICTAVO_S_OK;
constexpr i32 kMost = std::numeric_limits<i32>::max(), kLeast = std::numeric_limits<i32>::min();
constexpr f32 kNan = std::numeric_limits<f32>::quiet_NaN(),
              kInfinite = std::numeric_limits<f32>::infinity();

constexpr Change kNoDst = [](C c) { c.dst = nullptr; }, kNoSrc = [](C c) { c.src = nullptr; },
                 kNoPixels = [](C c) { c.dst = nullptr, c.width = c.height = 0; },
                 kNoWidth = [](C c) { c.width = 0; }, kNoHeight = [](C c) { c.height = 0; },
                 kNegative = [](C c) { c.width = -2, c.height = -2; },
                 kLeastSize = [](C c) { c.width = c.height = kLeast; },
                 kHuge = [](C c) { c.width = c.height = kMost; };

/// A change of the records alone: of one, of the other, of both.
#define RECORDS(change)                                        \
  [](C c) { c.changeDst = [](ImageDesc& i) { change; }; },     \
      [](C c) { c.changeSrc = [](ImageDesc& i) { change; }; }, \
      [](C c) { c.changeDst = c.changeSrc = [](ImageDesc& i) { change; }; }
#define RECORD(change) [](C c) { c.changeDst = [](ImageDesc& i) { change; }; }

const std::vector<int> kBlends = {2, 3, 4, 5, 6, 7, 8, 9, 10, 36, 37},
                       kInPlaceConversions = {16, 17, 18, 19}, kResizers = {29, 30, 31, 55, 57, 58},
                       kSpaces = {88, 89}, kWarps = {67, 79, 81, 96};

const Refusals kRefusals[] = {
    {kBlends, 0, {kNoDst, kNoSrc}},
    {{2, 3, 4, 5, 7, 36, 37}, 1, {kNoWidth, kNoHeight, kNegative, kLeastSize}},
    {{6, 8, 9, 10}, 0, {kNoWidth, kNoHeight, kNegative, kLeastSize}},
    {{11}, F, {kNoDst, kNoSrc, kNoWidth, kNoHeight, kNegative, kLeastSize}},
    {{7}, 1, {[](C c) { c.dstPitch = 0; }, [](C c) { c.dstPitch = -16; }}},
    {{8, 9}, 0, {[](C c) { c.dstPitch = 0; }, [](C c) { c.dstPitch = -16; }}},
    {{8}, 0, {[](C c) { c.srcPitch = 0; }, [](C c) { c.srcPitch = -16; }}},
    {{3, 6, 10}, 0, {kHuge}},

    {kInPlaceConversions, 1, {kNoDst, kNoPixels, kNoWidth, kNoHeight, kNegative}},
    {{17, 19}, 1, {kHuge}},
    {{20, 21}, I, {kNoDst, kNoSrc, kNoPixels}},
    {{20, 21}, E, {kNoWidth, kNoHeight}},
    {{20, 21}, S, {[](C c) { c.height = -1; }}},
    {{46}, F, {kNoDst, kNoSrc, kNoPixels}},
    {{46}, S, {kNoWidth, kNoHeight, kNegative}},

    {{50}, P, {kNoDst, kNoSrc, kNoPixels}},
    {{50}, E, {kNoWidth, kNoHeight, kNegative}},
    {{50}, I, {[](C c) { c.dstPitch = 15; }, [](C c) { c.srcPitch = -16; }}},
    {{54, 93}, P, {kNoDst, kNoSrc, [](C c) { c.src = nullptr, c.format = 9; }}},
    {{54, 93},
     I,
     {[](C c) { c.dstPitch = c.srcPitch = 15; }, [](C c) { c.dstPitch = c.srcPitch = -16; },
      [](C c) { c.format = PICTAVO_FRAME_RGBA32 + 1; }, [](C c) { c.format = 3 << 8; },
      [](C c) { c.format = 2 << 16; }, [](C c) { c.format = 1 << 24; },
      [](C c) { c.format = PICTAVO_FRAME_BGR24 | 1 << 8; },
      [](C c) { c.format = PICTAVO_FRAME_RGBA32 | 1 << 16; }, [](C c) { c.src = c.dst + 7; }}},
    {{54}, E, {kNoWidth, kNoHeight, kNegative}},
    {{93}, E, {[](C c) { c.srcWidth = 0; }, [](C c) { c.srcHeight = kLeast; }}},

    {kResizers, P, {kNoDst, kNoSrc, kNoPixels}},
    {kResizers,
     E,
     {kNoWidth, [](C c) { c.height = -1; }, [](C c) { c.srcWidth = kLeast; },
      [](C c) { c.srcHeight = 0; }}},
    {{29, 30, 55, 57, 58},
     I,
     {[](C c) { c.srcWidth = 32768; }, [](C c) { c.srcHeight = 32768; },
      [](C c) { c.srcHeight = kMost; }}},
    {{31},
     I,
     {[](C c) { c.width = (1 << 23) + 1; }, [](C c) { c.height = (1 << 23) + 1; },
      [](C c) { c.height = kMost; }}},

    {{60, 61, 65}, P, {kNoDst, kNoSrc, kNoPixels, RECORDS(i.data = nullptr)}},
    {{60, 61, 65},
     I,
     {RECORDS(i.memoryKind = 3), RECORDS(i.bytesPerPixel = 3), RECORDS(i.pitch = 15),
      RECORDS(i.pitch = -16), [](C c) { c.dst = const_cast<u8*>(c.src) + 4; },
      [](C c) { c.words[0] = ~0u; }}},
    {{60, 61},
     I,
     {[](C c) { c.words[1] = ~0u; }, [](C c) { c.words[2] = ~0u; }, [](C c) { c.words[3] = ~0u; },
      [](C c) { c.dst = const_cast<u8*>(c.src); }}},
    {{61},
     I,
     {[](C c) { c.reals[0] = kNan; }, [](C c) { c.reals[1] = -0.1f; }, [](C c) { c.reals[2] = 1; },
      [](C c) { c.reals[3] = -0.1f; }, [](C c) { c.reals[0] = kInfinite; }}},
    {{60, 65}, E, {kNoWidth, [](C c) { c.height = c.srcHeight = -1; }}},
    {{61}, E, {kNoWidth, [](C c) { c.height = -1; }}},
    {{62}, P, {kNoDst, kNoSrc, kNoPixels}},
    {{62},
     I,
     {[](C c) { c.dstPitch = 15; }, [](C c) { c.srcPitch = -16; }, [](C c) { c.srcHeight = 32768; },
      [](C c) { c.dst = const_cast<u8*>(c.src) + 60; }}},
    {{62}, E, {kNoWidth, [](C c) { c.srcHeight = -1; }}},
    {{62}, S, {[](C c) { c.words[0] = 12; }, [](C c) { c.words[3] = 12; }}},
    {{65}, I, {RECORD(i.width = 3), RECORD(i.height = 3)}},

    {{43, 44}, F, {kNoDst, kNoSrc, [](C c) { c.binCount = 0; }, [](C c) { c.binCount = -1; }}},
    {{48}, F, {kNoDst}},
    {{49, 56, 78}, P, {kNoDst, kNoPixels}},
    {{49, 56, 78}, E, {kNoWidth, kNoHeight, [](C c) { c.height = -1; }}},
    {{49, 56, 78},
     I,
     {[](C c) { c.dstPitch = 15; }, [](C c) { c.dstPitch = -16; }, [](C c) { c.radius = kNan; },
      [](C c) { c.radius = -1; }, [](C c) { c.radius = 2001; },
      [](C c) { c.reals[0] = kNan, c.width = 0; }, [](C c) { c.reals[0] = kInfinite; }}},
    {{49},
     I,
     {[](C c) { c.reals[0] = 15.5f; }, [](C c) { c.reals[0] = -2.5f; },
      [](C c) { c.reals[1] = 29; }, [](C c) { c.reals[1] = -1; }}},
    {{56}, I, {[](C c) { c.reals[0] = -1; }, [](C c) { c.reals[0] = 112; }}},
    {{78},
     I,
     {[](C c) { c.reals[0] = -0.1f; }, [](C c) { c.reals[1] = -0.1f; },
      [](C c) { c.reals[0] = c.reals[1] = 1; }, [](C c) { c.words[0] = 1, c.words[1] = 5; },
      [](C c) { c.words[0] = 1, c.words[1] = 135; }, RECORD(i.memoryKind = 3),
      RECORD(i.bytesPerPixel = 1)}},
    {{78}, P, {RECORD(i.data = nullptr)}},
    {{80}, P, {kNoDst, kNoSrc, kNoPixels, RECORDS(i.data = nullptr)}},
    {{80}, E, {[](C c) { c.width = c.srcWidth = 0; }}},
    {{80},
     I,
     {[](C c) { c.dstPitch = 15; }, [](C c) { c.srcPitch = 15; }, [](C c) { c.srcPitch = -16; },
      [](C c) { c.src = c.dst + 1; }, [](C c) { c.srcWidth = 3; }, [](C c) { c.srcHeight = 0; },
      RECORDS(i.memoryKind = 3), RECORDS(i.bytesPerPixel = 3)}},
    {{51, 52, 69}, P, {kNoDst, kNoPixels}},
    {{51, 52, 69}, E, {kNoWidth, kNoHeight, [](C c) { c.height = -1; }}},
    {{51, 52, 69}, I, {[](C c) { c.dstPitch = 15; }, [](C c) { c.dstPitch = -16; }}},
    {{52},
     I,
     {[](C c) { c.reals[0] = kNan; }, [](C c) { c.reals[1] = kNan; },
      [](C c) { c.reals[2] = kNan; }, [](C c) { c.reals[3] = kNan, c.width = 0; }}},
    {{51, 69}, S, {[](C c) { c.words[0] = 0x7FFFFFFF; }, [](C c) { c.words[3] = 0x8000000F; }}},
    {{69}, I, {[](C c) { c.border = 0; }, [](C c) { c.border = 0, c.width = 0; }}},
    {{70, 72, 75}, P, {kNoDst, kNoSrc, RECORDS(i.data = nullptr)}},
    {{70, 72, 75},
     I,
     {RECORDS(i.memoryKind = 3), RECORDS(i.bytesPerPixel = 1), RECORDS(i.pitch = 15)}},
    {{70, 72},
     I,
     {RECORD(i.width = 3), RECORD(i.height = 5), RECORD(i.height = 0),
      [](C c) { c.words[0] = c.words[1] = 17, c.width = 0; }}},
    {{70, 72}, E, {[](C c) { c.changeDst = c.changeSrc = [](ImageDesc& i) { i.width = 0; }; }}},
    {{70},
     I,
     {[](C c) { c.words[0] = 8; }, [](C c) { c.reals[0] = kNan; }, [](C c) { c.reals[0] = -1; },
      [](C c) { c.reals[0] = 1.001f; }, [](C c) { c.reals[1] = kNan; },
      [](C c) { c.reals[1] = -0.001f; }, [](C c) { c.reals[1] = 2; },
      [](C c) { c.reals[2] = kNan; }, [](C c) { c.reals[2] = kInfinite; }}},
    {{72},
     I,
     {[](C c) { c.format = 2; }, [](C c) { c.words[1] = 16; }, [](C c) { c.words[1] = 17; },
      [](C c) { c.words[2] = 62; }, [](C c) { c.words[2] = 63; }}},
    {{75},
     I,
     {RECORDS(i.width = 3), RECORDS(i.width = 0), [](C c) { c.words[2] = 0x7FFFFFFF; },
      [](C c) { c.words[3] = 0x800000FF; }}},
    {{75},
     E,
     {[](C c) { c.words[2] = 4; }, [](C c) { c.words[3] = 4; },
      [](C c) { c.words[2] = 4, c.changeDst = [](ImageDesc& i) { i.width = -1; }; }}},
    {{77}, P, {kNoDst, kNoPixels}},
    {{77}, E, {kNoWidth, kNoHeight, [](C c) { c.height = -1; }}},
    {{82}, P, {kNoDst, kNoSrc}},
    {{82}, I, {kNoWidth, kNegative}},
    {{83, 84, 85}, P, {kNoDst, kNoSrc}},
    {{83},
     I,
     {kNoWidth, [](C c) { c.reals[0] = kNan; }, [](C c) { c.reals[0] = -100; },
      [](C c) { c.reals[0] = kInfinite; }}},
    {{84}, E, {kNoWidth, kNegative}},
    {{84, 85}, I, {[](C c) { c.srcPitch = 15; }}},
    {{84}, I, {[](C c) { c.selector = 5; }, [](C c) { c.words[0] = 4, c.width = 0; }}},
    {{85}, I, {kNoWidth, kNegative, [](C c) { c.selector = 4; }}},

    {{71, 107},
     I,
     {kNoDst, RECORD(i.data = nullptr), RECORD(i.width = 0), RECORD(i.height = -1),
      RECORD(i.bufferWidth = 3), RECORD(i.bufferHeight = 3), RECORD(i.bytesPerPixel = 3),
      RECORD(i.memoryKind = 3), RECORD((i.bytesPerPixel = 1, i.pitch = 3)),
      RECORD((i.bytesPerPixel = 1, i.pitch = -16))}},
    {{107}, I, {RECORD(i.bytesPerPixel = 1)}},

    {{73, 74},
     I,
     {[](C c) { c.layer.alphaMode = 3; }, [](C c) { c.layer.alphaMode = ~0u; },
      [](C c) { c.layer.opacity = 256; }}},
    {{74},
     I,
     {[](C c) { c.layer.fractionX = kNan; }, [](C c) { c.layer.fractionX = -0.1f; },
      [](C c) { c.layer.fractionY = 1.5f; }, [](C c) { c.layer.fractionY = -0.1f; }}},

    {kWarps, P, {kNoDst, kNoSrc, RECORDS(i.data = nullptr)}},
    {kWarps, E, {RECORDS(i.width = 0), RECORDS(i.height = -1), RECORDS(i.height = kLeast)}},
    {kWarps,
     I,
     {RECORDS(i.memoryKind = 3), RECORDS(i.bytesPerPixel = 1), RECORDS(i.pitch = 15),
      RECORDS(i.pitch = -16), [](C c) { c.src = c.dst + 4; }}},
    {{67, 79, 81},
     I,
     {[](C c) { c.words[0] = 15; }, RECORDS((i.width = (1 << 28) + 1, i.pitch = kMost)),
      RECORDS(i.height = kMost), [](C c) { c.reals[0] = kNan; },
      [](C c) { c.reals[1] = kInfinite; }, [](C c) { c.reals[2] = kNan; },
      [](C c) { c.reals[3] = kInfinite; }}},
    {{67},
     I,
     {[](C c) { c.reals[1] = -1; }, [](C c) { c.reals[1] = -2; }, [](C c) { c.reals[4] = -1e7f; },
      // Places too far out.
      [](C c) { c.reals[1] = -0.99999994f, c.reals[4] = 1e6f; }}},
    {{79},
     I,
     {[](C c) { c.reals[2] = -1; }, [](C c) { c.reals[2] = 1e8f; },
      [](C c) { c.reals[3] = 1000; }}},
    {{81}, I, {[](C c) { c.reals[5] = 1.2f; }, [](C c) { c.reals[5] = -0.6f; }}},
    {{96},
     I,
     {[](C c) { c.layer.mode = 12; }, [](C c) { c.layer.opacity = 256; },
      [](C c) { c.layer.alphaMode = 3; }, [](C c) { c.reals[0] = kNan; },
      [](C c) { c.reals[1] = 1.5f; }, [](C c) { c.reals[2] = kInfinite; },
      [](C c) { c.reals[3] = -2; }}},
    {{96},
     S,
     {[](C c) { c.layer.opacity = 0; }, [](C c) { c.reals[0] = 1; },
      [](C c) { c.reals[1] = 1.5f, c.reals[3] = 0.5f; },
      [](C c) { c.reals[0] = 1, c.reals[2] = 9; }}},

    {{63},
     I,
     {kNoDst, kNoSrc, RECORDS(i.data = nullptr), RECORDS(i.memoryKind = 3),
      [](C c) { c.srcWidth = -8; }, [](C c) { c.srcHeight = kLeast; }, kHuge,
      [](C c) { c.motion.maxSamples = 1; }, [](C c) { c.motion.maxSamples = 0; },
      [](C c) { c.motion.maxSamples = kLeast; }, [](C c) { c.motion.strength = kNan; },
      [](C c) { c.motion.strength = kInfinite; }, [](C c) { c.motion.strength = -1; },
      [](C c) { c.motion.strength = 1e30f; }, [](C c) { c.motion.dirX = kInfinite; },
      [](C c) { c.motion.dirX = 150000, c.motion.maxSamples = 65537; },
      [](C c) { c.motion.zoom = 1e8f; }, [](C c) { c.motion.angle = 1e9f; },
      // The first ring is 65536 pixels wide, and its height wraps to 0.
      [](C c) {
        c.srcWidth = 65534, c.srcHeight = 65536;
        c.motion.zoom = 1.0002f, c.motion.dirX = 0;
      }}},
    // An empty destination takes neither time nor memory, however long its other side is.
    {{63},
     S,
     {[](C c) { c.width = kMost, c.height = kLeast; }, [](C c) { c.width = 0, c.height = kMost; },
      [](C c) { c.motion = {1, 30, 0, 0, 9, 0, 0}, c.width = kMost, c.height = 0; },
      [](C c) { c.motion = {1, 30, 0, 0, 1, 0, 90}, c.width = -1, c.height = kMost; }}},

    {{86}, P, {kNoDst, kNoSrc, RECORDS(i.data = nullptr)}},
    {{86},
     I,
     {[](C c) { c.keyCount = -1; }, [](C c) { c.keyCount = kLeast; }, RECORDS(i.memoryKind = 3),
      RECORDS(i.height = -1), RECORDS(i.width = i.pitch = -4), RECORDS(i.pitch = 15),
      RECORDS(i.pitch = -16), RECORDS((i.width = 1 << 30, i.pitch = 0)),
      RECORDS((i.width = 1 << 28, i.pitch = 1 << 30, i.height = 4)), RECORDS(i.height = 1 << 28)}},
    {{86}, S, {[](C c) { c.keyCount = 0; }}},

    {{87}, P, {kNoDst, kNoPixels}},
    {{87},
     E,
     {kNoWidth, kNoHeight, kNegative, [](C c) { c.height = -kMost; }, [](C c) { c.radius = 0; },
      [](C c) { c.radius = -1; }, [](C c) { c.radius = kNan; }, [](C c) { c.radius = kInfinite; },
      [](C c) { c.height = 2, c.radius = 2.001f; }, [](C c) { c.width = 2, c.radius = 2.001f; }}},
    {{87},
     I,
     {[](C c) { c.dstPitch = 15; }, [](C c) { c.dstPitch = -15; }, [](C c) { c.dstPitch = 0; },
      [](C c) { c.width = c.height = c.dstPitch = kMost; }}},

    {kSpaces, P, {kNoSrc, kNoPixels, [](C c) { c.dst = nullptr, c.model = 9; }}},
    {kSpaces, E, {kNoWidth, [](C c) { c.height = c.dstPitch = c.srcPitch = 0; }}},
    {kSpaces,
     I,
     {[](C c) { c.width = -1; }, [](C c) { c.width = 0, c.height = -1; },
      [](C c) { c.height = 0, c.model = PICTAVO_COLOR_HSV, c.range = 0; },
      [](C c) { c.dstPitch = 15; }, [](C c) { c.srcPitch = -15; },
      [](C c) { c.width = c.height = c.srcPitch = kMost, c.dstPitch = kLeast; },
      [](C c) { c.matrix = 3; }, [](C c) { c.range = 2; }, [](C c) { c.matrix = c.range = ~0u; },
      [](C c) { c.model = PICTAVO_COLOR_HSV, c.matrix = 1, c.range = PICTAVO_RANGE_FULL; },
      [](C c) { c.model = PICTAVO_COLOR_HSL; },
      [](C c) { c.model = PICTAVO_COLOR_HSL, c.range = PICTAVO_RANGE_DEGREES; },
      [](C c) { c.model = 3, c.range = PICTAVO_RANGE_FULL; }}},

    {{53, 99}, P, {kNoDst, kNoPixels, [](C c) { c.words[1] = 1, c.width = 0; }}},
    {{53, 99}, E, {kNoWidth, kNoHeight, kNegative}},
    {{53},
     I,
     {[](C c) { c.words[0] = 16; }, [](C c) { c.reals[0] = kNan; }, [](C c) { c.reals[0] = 4; },
      [](C c) { c.reals[0] = -0.1f; }, [](C c) { c.reals[1] = kNan; },
      [](C c) { c.reals[1] = -0.1f; }, [](C c) { c.reals[2] = -0.003f; },
      [](C c) { c.reals[2] = 26; }, [](C c) { c.reals[2] = kNan; }, [](C c) { c.reals[3] = 1.1f; },
      [](C c) { c.reals[4] = kNan; }}},
    {{99},
     I,
     {[](C c) { c.reals[0] = -1.1f; }, [](C c) { c.reals[0] = kNan; },
      [](C c) { c.reals[1] = -0.4f; }, [](C c) { c.reals[2] = 1.1f; },
      [](C c) { c.reals[3] = kInfinite; }, [](C c) { c.reals[3] = kNan; },
      [](C c) { c.reals[4] = 1.1f; }, [](C c) { c.reals[5] = kNan; }}},
    {{53, 99}, I, {[](C c) { c.dstPitch = 15; }, [](C c) { c.dstPitch = -16; }}},

    {{66},
     P,
     {kNoDst, kNoSrc, RECORDS(i.data = nullptr), [](C c) { c.words[3] = 1; },
      [](C c) { c.words[3] = 2; }}},
    {{66},
     I,
     {RECORDS(i.memoryKind = 3), RECORDS(i.bytesPerPixel = 1), RECORDS(i.pitch = 15),
      RECORDS(i.pitch = -16), RECORD(i.width = 3), RECORD(i.height = 0),
      [](C c) { c.words[0] = 64; }}},
    {{66}, E, {[](C c) { c.width = c.srcWidth = 0; }, [](C c) { c.height = c.srcHeight = -1; }}},

    {{59, 94, 106}, P, {kNoDst, kNoSrc, kNoPixels}},
    {{59, 94, 106}, E, {kNoWidth, kNoHeight, [](C c) { c.width = -2; }}},
    {{94},
     I,
     {[](C c) { c.words[0] = 5; }, [](C c) { c.dstPitch = 3; }, [](C c) { c.srcPitch = 15; }}},
    {{106}, I, {[](C c) { c.words[0] = 6; }, [](C c) { c.words[3] = 6, c.width = 0; }, kHuge}},
    {{109},
     I,
     {[](C c) { c.reals[0] = kNan, c.width = 0; }, [](C c) { c.reals[0] = -0.1f; },
      [](C c) { c.reals[0] = 85.1f; }}},
    {{109, 110}, P, {kNoDst, kNoSrc, kNoPixels}},
    {{109, 110}, S, {kNoWidth, kNegative, [](C c) { c.height = c.dstPitch = c.srcPitch = 0; }}},
    {{109, 110},
     I,
     {[](C c) { c.dstPitch = 15; }, [](C c) { c.dstPitch = -16; }, [](C c) { c.srcPitch = 3; },
      [](C c) { c.srcPitch = -4; }}},
};

#undef RECORDS
#undef RECORD

/// A call that every operation takes.
Call GoodCall() {
  Call c{.width = 4, .height = 4, .dstPitch = 16, .srcWidth = 4, .srcHeight = 4, .srcPitch = 16};
  c.radius = 2;
  c.border = 1;
  c.motion = {1, 30, 9, 3, 1, 0, 0};
  c.keys[0] = {0, 255, 0, 0, 30, 20};
  return c;
}

/// What it makes of a destination after a change.
Outcome RunChanged(const Operation& operation, i32 level, const Bytes& before, Change change) {
  Outcome outcome = {0, before};
  const Bytes src(64, 99);
  Call c = GoodCall();
  c.dst = outcome.dst.data();
  c.src = src.data();
  change(c);
  outcome.result = operation(level, c.dst, c.src, c);
  return outcome;
}

TEST(Operations, RefuseWithTheStatedCodeAndWriteNothing) {
  Random random(1);
  Bytes before(64);
  FillPixels(before.data(), before.size(), kSoft, random);
  for (const auto& [slots, code, changes] : kRefusals) {
    for (const int slot : slots) {
      const Operation& operation = Slot(slot);
      for (const i32 level : Levels()) {
        EXPECT_NE(RunChanged(operation, level, before, [](C) {}).dst, before) << operation.name;
        for (const Change& change : changes) {
          EXPECT_EQ(RunChanged(operation, level, before, change), (Outcome{code, before}))
              << operation.name << ", level " << level << ", code " << code << ", change "
              << &change - &changes[0];
        }
      }
    }
  }
}

}  // namespace
}  // namespace pictavo::test

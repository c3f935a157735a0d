// Running sums along rows. A sum is kept as the whole part and the remainder of its division by the
// window's size, so that the columns' sums fit 32 bits whatever the radius; no digit is lost.
//
// A thread slides along its row of 32. What the windows gain and lose goes through group memory, and
// so do the results: there the group reads and writes along the rows.
#include "box_blur.hlsli"

Texture2D<float4> txSrc : register(t0);
RWTexture2D<uint4> txDst : register(u0);
RWTexture2D<uint4> txRemainder : register(u1);
RWTexture2D<uint4> txDivisor : register(u2);  // one row: windows of a column are alike

// A tile of pixels, with a column that keeps banks apart, and what the group holds of tiles: pixels
// gained, which become the whole parts, pixels lost, and two halves of remainders.
static const uint kRows = 32, kColumns = 16;
static const uint kPitch = kColumns + 1, kTile = kRows * kPitch;
static const uint kGained = 0, kLost = kTile, kFirst = 2 * kTile, kSecond = 3 * kTile;
groupshared uint tiles[4 * kTile];

uint Packed(uint4 bytes) {
  return bytes.x | bytes.y << 8 | bytes.z << 16 | bytes.w << 24;
}
uint4 Unpacked(uint bytes) { return uint4(bytes, bytes >> 8, bytes >> 16, bytes >> 24) & 255; }

// A thread's place in a tile at the step that the group is at.
uint2 Cell(uint thread, uint step) {
  const uint cell = step * kRows + thread;
  return uint2(cell % kColumns, cell / kColumns);
}

// Reads a tile of pixels, clear outside the picture.
void Stage(uint tile, uint thread, int left, uint top) {
  [loop] for (uint step = 0; step < kColumns; ++step) {
    const uint2 cell = Cell(thread, step);
    const int2 place = int2(left, int(top)) + int2(cell);
    const bool outside = Outside(place, int2(uWidth, uHeight));
    tiles[tile + cell.y * kPitch + cell.x] =
        outside ? 0 : Packed(ToBytes(txSrc.Load(int3(outside ? int2(0, 0) : place, 0))));
  }
}

// Slides along a tile's row, from a sum that lacks the pixel that the first window gains.
void Slide(inout uint4 sum, uint row, uint left) {
  [loop] for (uint column = 0; column < kColumns; ++column) {
    const uint at = row * kPitch + column;
    sum += Unpacked(tiles[kGained + at]);
    const uint divisor = WindowSize(min(left + column, uWidth - 1), uWidth);
    const uint4 remainder = sum % divisor;
    tiles[kGained + at] = Packed(sum / divisor);
    tiles[kFirst + at] = remainder.x | remainder.y << 16;
    tiles[kSecond + at] = remainder.z | remainder.w << 16;
    sum -= Unpacked(tiles[kLost + at]);
  }
}

void Write(uint thread, uint left, uint right, uint top) {
  [loop] for (uint step = 0; step < kColumns; ++step) {
    const uint2 cell = Cell(thread, step);
    const uint2 place = uint2(left, top) + cell;
    if (place.x >= right || place.y >= uHeight) continue;
    const uint at = cell.y * kPitch + cell.x;
    const uint first = tiles[kFirst + at], second = tiles[kSecond + at];
    const uint divisor = WindowSize(place.x, uWidth);
    txDst[place] = Unpacked(tiles[kGained + at]);
    txRemainder[place] = uint4(first & 65535, first >> 16, second & 65535, second >> 16);
    if (place.y == 0) txDivisor[place] = uint4(divisor, divisor, divisor, divisor);
  }
}

[numthreads(32, 1, 1)]
void BoxBlurRows(uint3 group : SV_GroupID, uint thread : SV_GroupIndex) {
  const uint top = group.x * kRows;
  const uint begin = group.y * Stretch();
  const uint end = min(begin + Stretch(), uWidth);
  const uint filled = min(begin + uBlurRadius, uWidth);
  uint4 sum = 0;
  [loop] for (uint x = WindowBegin(begin); x < filled; x += kColumns) {
    Stage(kGained, thread, int(x), top);
    GroupMemoryBarrierWithGroupSync();
    [loop] for (uint column = 0; column < min(kColumns, filled - x); ++column) {
      sum += Unpacked(tiles[kGained + thread * kPitch + column]);
    }
    GroupMemoryBarrierWithGroupSync();
  }
  [loop] for (uint left = begin; left < end; left += kColumns) {
    Stage(kGained, thread, int(left + uBlurRadius), top);
    Stage(kLost, thread, int(left) - int(uBlurRadius), top);
    GroupMemoryBarrierWithGroupSync();
    Slide(sum, thread, left);
    GroupMemoryBarrierWithGroupSync();
    Write(thread, left, end, top);
    GroupMemoryBarrierWithGroupSync();
  }
}

// Alpha blending: the rules' corner cases, and what the public header says is different from
// level 3.
#include <gtest/gtest.h>

#include "operations.h"

namespace pictavo::test {
namespace {

struct Corner {
  int slot;
  i32 level;
  Call call;
  std::vector<u32> src, dst, expected;  // 0xAARRGGBB
};

TEST(Blend, Corners) {
  const Call one, two{.width = 2, .dstPitch = 8, .srcPitch = 8},
      three{.width = 3, .dstPitch = 12, .srcPitch = 12};
  const auto faded = [](f32 start, f32 end) { return Call{.start = start, .end = end}; };
  const auto opacity = [](u8 o, u32 backdrop) { return Call{.opacity = o, .colour = backdrop}; };
  const Call column{.width = 1, .height = 2, .flip = 1, .start = 0.5f, .end = 0.0f};
  Corner corners[] = {
      // An opaque source is copied whole; a half clear one over white is mixed with 128 and 128.
      {2, 0, one, {0xFF030201}, {0x09090909}, {0xFF030201}},
      {4, 0, one, {0x801E140A}, {0x07FFFFFF}, {0xFF8E8984}},
      {4, 3, one, {0x801E140A}, {0x07FFFFFF}, {0x078E8984}},
      {3, 0, one, {0x801E140A}, {0x07FFFFFF}, {0x808E8984}},
      // A weight of 255 beside a soft neighbour is mixed from level 3; a third pixel stands alone.
      {2,
       0,
       three,
       {0xFF0900C8, 0x64000000, 0xFF030201},
       {0x01FA3264, 0x02404040, 0x03070707},
       {0xFF0900C8, 0xFF272727, 0xFF030201}},
      {2,
       3,
       three,
       {0xFF0900C8, 0x64000000, 0xFF030201},
       {0x01FA3264, 0x02404040, 0x03070707},
       {0x010900C7, 0x02272727, 0xFF030201}},
      // A clear pixel: left alone, but in a mixed pair of slot 3 it takes the source's alpha.
      {3, 0, two, {0x00050505, 0x80000000}, {0x09030201, 0x09000000}, {0x09030201, 0x80000000}},
      {3, 3, two, {0x00050505, 0x80000000}, {0x09030201, 0x09000000}, {0x00030201, 0x80000000}},
      // Flipped: row 0 is made from the source's last row, at the ramp's start.
      {2, 0, column, {0x00000000, 0xFE646464}, {0x000000C8, 0x08080808}, {0xFF313196, 0x08080808}},
      // Ramps that leave 0 … 1, unclamped below level 3 and saturated from it.
      {2, 0, faded(2, 2), {0xC8FF0064}, {0x0A0A0A0A}, {0xFF88FA96}},
      {2, 3, faded(2, 2), {0xC8FF0064}, {0x0A0A0A0A}, {0x0AFF009C}},
      {2, 0, faded(-1, -1), {0x80FF0064}, {0x0A0A0A0A}, {0xFF8F0FDD}},
      {2, 3, faded(-1, -1), {0x80FF0064}, {0x0A0A0A0A}, {0x0A0A0A0A}},
      // Premultiplied: 256 - a in the blend, 255 - a in the composite.
      {7, 0, one, {0x80C86464}, {0x03C865FF}, {0xFFFF96E3}},
      {9, 0, one, {0x80C86464}, {0x64C865FF}, {0xB3FF96E2}},
      {6, 3, two, {0x00090909, 0x01090909}, {0x04030201, 0x040100FF}, {0x04030201, 0xFF0909FF}},
      {5, 0, faded(0.5f, 0.5f), {0xFF6403FF}, {0x0900FF64}, {0xFF3281B1}},
      // Far outside 0 … 1: 13200000 + ((255 * (256 - 16830000)) >> 8) is below 0.
      {5, 0, faded(66000, 66000), {0xFF0000C8}, {0xC80000FF}, {0xFF00001D}},
      {8, 3, faded(66000, 66000), {0xFF0000C8}, {0xC80000FF}, {0x1500001C}},
      // A clear destination takes the source whole, with the faded weight for its alpha.
      {8, 0, one, {0x28030201}, {0x00636363}, {0x28030201}},
      {8, 0, faded(0.5f, 0.5f), {0x29030201}, {0x00636363}, {0x14030201}},
      // An opacity byte o weighs o + 1; a backdrop's blue stands in for the destination …
      {11, 0, opacity(127, 0), {0xFF0064C8}, {0x03646464}, {0x03326495}},
      {11, 0, opacity(255, 0xFF0000FF), {0x80006400}, {0x4D090909}, {0x4D00327F}},
      // … but is not painted where the weight is 0.
      {11, 0, opacity(0, 0xFF0000FF), {0xFF006400}, {0x4D090909}, {0x4D090909}},
      {36, 0, opacity(127, 0), {0xFF0064C8}, {0x03646464}, {0x7F326495}},
      {36, 0, opacity(255, 0), {0x000064C8}, {0x03646464}, {0x03646464}},
      {37, 0, opacity(255, 0), {0xFF0064C8}, {0x03646464}, {0xFF0064C8}},
  };
  for (Corner& corner : corners) {
    Slot(corner.slot)(corner.level, reinterpret_cast<u8*>(corner.dst.data()),
                      reinterpret_cast<const u8*>(corner.src.data()), corner.call);
    EXPECT_EQ(corner.dst, corner.expected)
        << "slot " << corner.slot << " level " << corner.level << " case " << &corner - corners;
  }
}

}  // namespace
}  // namespace pictavo::test

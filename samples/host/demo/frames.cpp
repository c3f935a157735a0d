// Frames as decoders have them, planes and channels: the demo's part.
#include <string>
#include <vector>

#include "demo/demo.h"

namespace host {
namespace {

using pictavo::Call;
using pictavo::IPictavo6;
using pictavo::Outcome;
using Bytes = std::vector<u8>;

constexpr u32 kMatrix = pictavo::PICTAVO_MATRIX_BT709, kRange = pictavo::PICTAVO_RANGE_LIMITED;

struct Layout {
  const char* name;
  u32 layout;
  const char* remark;
};
constexpr Layout kNv12 = {"NV12", pictavo::PICTAVO_FRAME_NV12, "8 bits, one chroma for 2 × 2"};
constexpr Layout kYuy2 = {"YUY2", pictavo::PICTAVO_FRAME_YUY2, "8 bits, one chroma for 2 × 1"};
constexpr Layout kP010 = {"P010", pictavo::PICTAVO_FRAME_P010, "10 bits, one chroma for 2 × 2"};

/// Packs a picture into the first bytes of `frame`.
Outcome Pack(IPictavo6* object, const Picture& picture, const Layout& layout, u8* frame) {
  return Call<&IPictavo6::ConvertBGRAToFrame>(object, picture.pixels.data(), picture.width,
                                              picture.height, picture.pitch(), frame,
                                              pictavo::FrameFormat(layout.layout, kMatrix, kRange));
}

/// Bytes in rows, as grey pixels.
Picture Grey(Demo& demo, const u8* bytes, i32 width, i32 height) {
  Picture grey(width, height);
  demo.object->ExpandPlane(bytes, width, height, width, grey.pixels.data(), grey.pitch());
  return grey;
}

/// The bytes of a picture as NV12, one below the other.
SheetPicture ShowMemory(Demo& demo) {
  const Picture& picture = demo.background;
  const Picture packed = demo.Examine(
      {"to NV12", 93, Picture(picture.width, picture.height), [&](IPictavo6* object, Picture* dst) {
         return Pack(object, picture, kNv12, dst->pixels.data());
       }});
  const i64 bytes = pictavo::FrameBytes(kNv12.layout, picture.width, picture.height);
  const i32 rows = static_cast<i32>(bytes / picture.width);
  return {Thumbnail(Grey(demo, packed.pixels.data(), picture.width, rows)),
          "to NV12",
          "slot 93",
          {"the frame's bytes: Y, below it U and V in turn",
           Format("%lld of the picture's %lld bytes", static_cast<long long>(bytes),
                  static_cast<long long>(picture.bytes()))}};
}

SheetPicture ShowBack(Demo& demo, const Layout& layout, u32 range, const char* remark) {
  const Picture& picture = demo.background;
  Bytes frame(
      static_cast<size_t>(pictavo::FrameBytes(layout.layout, picture.width, picture.height)));
  Pack(demo.object, picture, layout, frame.data());
  const std::string name = std::string("from ") + layout.name;
  const Picture back = demo.Examine(
      {name, 54, Picture(picture.width, picture.height), [&](IPictavo6* object, Picture* dst) {
         return Call<&IPictavo6::ConvertFrameToBGRA>(
             object, frame.data(), dst->width, dst->height, dst->pixels.data(), dst->pitch(),
             pictavo::FrameFormat(layout.layout, kMatrix, range));
       }});
  return {Thumbnail(back), name, "slot 54", {layout.remark, remark}};
}

/// The luma of a picture, packed.
Bytes LumaOf(Demo& demo, const Picture& picture) {
  Bytes plane(picture.bytes() / 4);
  demo.object->ExtractPlane(picture.pixels.data(), picture.width, picture.height, picture.pitch(),
                            plane.data(), picture.width, 4);
  return plane;
}

SheetPicture ShowLuma(Demo& demo) {
  const Picture& picture = demo.background;
  const Picture plane =
      demo.Examine({"luma as a plane", 94, Picture(picture.width, picture.height),
                    [&](IPictavo6* object, Picture* dst) {
                      return Call<&IPictavo6::ExtractPlane>(
                          object, picture.pixels.data(), picture.width, picture.height,
                          picture.pitch(), dst->pixels.data(), picture.width, 4u);
                    }});
  return {Thumbnail(Grey(demo, plane.pixels.data(), picture.width, picture.height)),
          "luma as a plane",
          "slots 94, 110",
          {"a byte a pixel, shown as grey", ""}};
}

SheetPicture ShowScaledPlane(Demo& demo) {
  const Picture& picture = demo.background;
  const Bytes luma = LumaOf(demo, picture);
  const Picture scaled = demo.Examine({"plane, scaled", 109, Picture(picture.width, picture.height),
                                       [&](IPictavo6* object, Picture* dst) {
                                         return Call<&IPictavo6::ExpandPlaneScaled>(
                                             object, luma.data(), dst->width, dst->height,
                                             dst->width, dst->pixels.data(), dst->pitch(), 1.6f);
                                       }});
  return {Thumbnail(scaled), "plane, scaled", "slot 109", {"the same luma times 1.6", ""}};
}

SheetPicture ShowAlphaPlane(Demo& demo) {
  const Bytes luma = LumaOf(demo, demo.background);
  const Picture masked =
      demo.Examine({"plane as alpha", 59, demo.layer, [&](IPictavo6* object, Picture* dst) {
                      return Call<&IPictavo6::SetAlphaPlane>(
                          object, dst->pixels.data(), luma.data(), static_cast<u32>(dst->width),
                          static_cast<u32>(dst->height));
                    }});
  return {Thumbnail(masked), "plane as alpha", "slot 59", {"the layer, by that luma", ""}};
}

SheetPicture ShowShuffled(Demo& demo) {
  const Picture shuffled =
      demo.Examine({"shuffled channels", 106, demo.background, [](IPictavo6* object, Picture* dst) {
                      return Call<&IPictavo6::ShuffleChannels>(
                          object, dst->pixels.data(), dst->pixels.data(),
                          static_cast<i64>(dst->bytes() / 4), 2u, 1u, 0u, 5u);
                    }});
  return {Thumbnail(shuffled), "shuffled channels", "slot 106", {"red and blue exchanged", ""}};
}

}  // namespace

std::vector<SheetColumn> ShowFrames(Demo& demo) {
  return {{"Frames",
           {ShowMemory(demo), ShowBack(demo, kNv12, kRange, "BT.709, limited range"),
            ShowBack(demo, kYuy2, kRange, "BT.709, limited range"),
            ShowBack(demo, kP010, pictavo::PICTAVO_RANGE_FULL, "limited, but taken for full")}},
          {"Planes and channels",
           {ShowLuma(demo), ShowScaledPlane(demo), ShowAlphaPlane(demo), ShowShuffled(demo)}}};
}

}  // namespace host

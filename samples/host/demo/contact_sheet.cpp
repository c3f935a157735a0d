#include "demo/contact_sheet.h"

#include <windows.h>

#include <algorithm>
#include <cstring>

#include "base/text.h"

namespace host {
namespace {

// Lengths in pixels.
constexpr i32 kCellWidth = 360, kCellHeight = 240;
constexpr i32 kMargin = 36, kColumnGap = 24, kRowGap = 20;
constexpr i32 kTitleHeight = 82, kHeadingHeight = 34;
constexpr i32 kNameTop = kCellHeight + 6, kLineTop = kNameTop + 21, kLineHeight = 17;
constexpr i32 kRowHeight = kLineTop + 2 * kLineHeight + kRowGap;
constexpr i32 kCheck = 10;

// A neutral ground, so that the pictures' colours are seen as they are.
constexpr u32 kGround = 0xFF26282B, kWell = 0xFF1D1F21;
constexpr u8 kCheckLight = 0xFF, kCheckDark = 0xCF;

struct TextStyle {
  i32 size;  // of the line, pixels
  LONG weight;
  u32 colour;  // 0xRRGGBB
};
constexpr TextStyle kTitleStyle = {32, FW_SEMIBOLD, 0xFFFFFF};
constexpr TextStyle kSubtitleStyle = {19, FW_NORMAL, 0xB4B8BD};
constexpr TextStyle kHeadingStyle = {21, FW_SEMIBOLD, 0xF2C14E};
constexpr TextStyle kNameStyle = {18, FW_SEMIBOLD, 0xFFFFFF};
constexpr TextStyle kTagStyle = {16, FW_NORMAL, 0xB4B8BD};
constexpr TextStyle kLineStyle = {16, FW_NORMAL, 0xB4B8BD};

/// A picture in memory that Windows can draw text into; no screen is needed.
class Canvas {
 public:
  Canvas(i32 width, i32 height);
  ~Canvas();
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  void Fill(const Rect& area, u32 colour);
  void DrawOnChecks(const Picture& picture, i32 left, i32 top);
  void DrawLine(const std::string& text, const TextStyle& style, const Rect& line,
                UINT align = DT_LEFT);
  Picture Finished() const;

 private:
  u8* At(i32 x, i32 y) { return bits_ + 4 * (static_cast<size_t>(y) * width_ + x); }

  const size_t width_;
  const i32 height_;
  u8* bits_ = nullptr;
  HDC device_ = nullptr;
  HBITMAP bitmap_ = nullptr;
  HGDIOBJ replaced_ = nullptr;
};

Canvas::Canvas(i32 width, i32 height) : width_(static_cast<size_t>(width)), height_(height) {
  BITMAPINFO info = {};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = width;
  info.bmiHeader.biHeight = -height;  // the top row first
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  void* bits = nullptr;
  device_ = CreateCompatibleDC(nullptr);
  bitmap_ = CreateDIBSection(device_, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  bits_ = static_cast<u8*>(bits);
  if (device_ == nullptr || bits_ == nullptr) throw Failure("cannot make the contact sheet");
  replaced_ = SelectObject(device_, bitmap_);
  SetBkMode(device_, TRANSPARENT);
  Fill({0, 0, width, height}, kGround);
}

Canvas::~Canvas() {
  SelectObject(device_, replaced_);
  DeleteObject(bitmap_);
  DeleteDC(device_);
}

void Canvas::Fill(const Rect& area, u32 colour) {
  for (i32 y = 0; y < area.height; ++y) {
    for (i32 x = 0; x < area.width; ++x) {
      std::memcpy(At(area.left + x, area.top + y), &colour, sizeof colour);
    }
  }
}

void Canvas::DrawOnChecks(const Picture& picture, i32 left, i32 top) {
  for (i32 y = 0; y < picture.height; ++y) {
    for (i32 x = 0; x < picture.width; ++x) {
      const int check = (x / kCheck + y / kCheck) % 2 == 0 ? kCheckLight : kCheckDark;
      const u8* source = picture.At(x, y);
      u8* pixel = At(left + x, top + y);
      for (int c = 0; c < 3; ++c) {
        pixel[c] = static_cast<u8>((source[c] * source[3] + check * (255 - source[3]) + 127) / 255);
      }
    }
  }
}

void Canvas::DrawLine(const std::string& text, const TextStyle& style, const Rect& line,
                      UINT align) {
  const HFONT font = CreateFontW(style.size, 0, 0, 0, style.weight, FALSE, FALSE, FALSE,
                                 DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                                 ANTIALIASED_QUALITY, VARIABLE_PITCH | FF_SWISS, L"Segoe UI");
  const HGDIOBJ replaced = SelectObject(device_, font);
  SetTextColor(device_, RGB(style.colour >> 16 & 255, style.colour >> 8 & 255, style.colour & 255));
  RECT box = {line.left, line.top, line.left + line.width, line.top + line.height};
  const int drawn = DrawTextW(device_, Utf16(text).c_str(), -1, &box,
                              align | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
  GdiFlush();
  SelectObject(device_, replaced);
  DeleteObject(font);
  if (drawn == 0) throw Failure("cannot draw text: there is no font");
}

Picture Canvas::Finished() const {
  Picture picture(static_cast<i32>(width_), height_);
  std::memcpy(picture.pixels.data(), bits_, picture.pixels.size());
  for (size_t i = 3; i < picture.pixels.size(); i += 4) picture.pixels[i] = 255;
  return picture;
}

void DrawCell(const SheetPicture& picture, i32 left, i32 top, Canvas* canvas) {
  canvas->Fill({left, top, kCellWidth, kCellHeight}, kWell);
  canvas->DrawOnChecks(picture.thumbnail, left + (kCellWidth - picture.thumbnail.width) / 2,
                       top + (kCellHeight - picture.thumbnail.height) / 2);
  canvas->DrawLine(picture.name, kNameStyle, {left, top + kNameTop, kCellWidth, kNameStyle.size});
  canvas->DrawLine(picture.tag, kTagStyle, {left, top + kNameTop + 2, kCellWidth, kTagStyle.size},
                   DT_RIGHT);
  i32 lineTop = top + kLineTop;
  for (const std::string& line : picture.lines) {
    canvas->DrawLine(line, kLineStyle, {left, lineTop, kCellWidth, kLineHeight});
    lineTop += kLineHeight;
  }
}

}  // namespace

Picture Thumbnail(const Picture& picture) { return Fitted(picture, kCellWidth, kCellHeight); }

Picture DrawContactSheet(const std::string& title, const std::string& subtitle,
                         const std::vector<SheetColumn>& columns) {
  size_t rows = 0;
  for (const SheetColumn& column : columns) rows = std::max(rows, column.pictures.size());
  const i32 width =
      2 * kMargin - kColumnGap + static_cast<i32>(columns.size()) * (kCellWidth + kColumnGap);
  const i32 height =
      2 * kMargin - kRowGap + kTitleHeight + kHeadingHeight + static_cast<i32>(rows) * kRowHeight;
  Canvas canvas(width, height);
  canvas.DrawLine(title, kTitleStyle, {kMargin, kMargin - 8, width - 2 * kMargin, 36});
  canvas.DrawLine(subtitle, kSubtitleStyle, {kMargin, kMargin + 32, width - 2 * kMargin, 24});
  i32 left = kMargin;
  for (const SheetColumn& column : columns) {
    i32 top = kMargin + kTitleHeight;
    canvas.DrawLine(column.heading, kHeadingStyle, {left, top, kCellWidth, kHeadingHeight});
    top += kHeadingHeight;
    for (const SheetPicture& picture : column.pictures) {
      DrawCell(picture, left, top, &canvas);
      top += kRowHeight;
    }
    left += kCellWidth + kColumnGap;
  }
  return canvas.Finished();
}

}  // namespace host

#include "base/picture.h"

#include <windows.h>

#include <wincodec.h>
#include <wrl/client.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "base/text.h"

namespace host {
namespace {

using Microsoft::WRL::ComPtr;

std::string Quoted(const std::filesystem::path& path) { return '"' + Utf8(path.native()) + '"'; }

/// Turns what a step on a file answers into a Failure, unless it went well.
struct Steps {
  const char* what;
  const char* vagueReason;  // where the codec says no more than that it failed
  const std::filesystem::path& path;

  void operator()(HRESULT result) const {
    if (FAILED(result))
      throw Failure(std::string(what) + ' ' + Quoted(path) + ": " + Reason(result));
  }

  std::string Reason(HRESULT result) const {
    switch (result) {
      case WINCODEC_ERR_COMPONENTNOTFOUND:
      case WINCODEC_ERR_UNKNOWNIMAGEFORMAT:
        return "it is not a picture of a known format";
      case WINCODEC_ERR_BADIMAGE:
      case WINCODEC_ERR_BADHEADER:
      case WINCODEC_ERR_BADSTREAMDATA:
      case WINCODEC_ERR_FRAMEMISSING:
      case WINCODEC_ERR_STREAMREAD:
      case E_FAIL:
        return vagueReason;
      case WINCODEC_ERR_IMAGESIZEOUTOFRANGE:
        return "the picture is too large";
    }
    return SystemMessage(result);
  }
};

HRESULT CreateFactory(ComPtr<IWICImagingFactory>* factory) {
  return CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                          IID_PPV_ARGS(factory->ReleaseAndGetAddressOf()));
}

/// The format that a file's name asks for. Throws UsageFailure for one that cannot be written.
bool IsJpegName(const std::filesystem::path& path) {
  const std::wstring ending = path.extension().native();
  const auto is = [&](const wchar_t* known) { return _wcsicmp(ending.c_str(), known) == 0; };
  if (!is(L".png") && !is(L".jpg") && !is(L".jpeg")) {
    throw UsageFailure("pictures are written to names in .png, .jpg or .jpeg, not " + Quoted(path));
  }
  return !is(L".png");
}

/// The source pixels that lie under one pixel of a resized row or column, first and last in part.
struct Span {
  Span(i32 position, i32 size, i32 sourceSize)
      : from(static_cast<double>(position) * sourceSize / size),
        to(static_cast<double>(position + 1) * sourceSize / size),
        first(static_cast<i32>(from)),
        end(std::min(sourceSize, static_cast<i32>(std::ceil(to)))) {}

  double Weight(i32 i) const { return std::min<double>(to, i + 1) - std::max<double>(from, i); }

  double from, to;
  i32 first, end;
};

/// The mean under one pixel.
void WriteMean(const Picture& picture, const Span& columns, const Span& rows, u8* pixel) {
  double colours[3] = {}, alpha = 0, area = 0;
  for (i32 y = rows.first; y < rows.end; ++y) {
    for (i32 x = columns.first; x < columns.end; ++x) {
      const u8* source = picture.At(x, y);
      const double weight = rows.Weight(y) * columns.Weight(x);
      for (int c = 0; c < 3; ++c) colours[c] += weight * source[3] * source[c];
      alpha += weight * source[3];
      area += weight;
    }
  }
  if (alpha <= 0) return;
  for (int c = 0; c < 3; ++c) pixel[c] = static_cast<u8>(colours[c] / alpha + 0.5);
  pixel[3] = static_cast<u8>(alpha / area + 0.5);
}

i32 Scaled(i32 size, i64 numerator, i64 denominator) {
  return static_cast<i32>(std::max<i64>(1, size * numerator / denominator));
}

}  // namespace

bool Fits(i64 width, i64 height) {
  // Pitches are 32-bit signed numbers, and the codecs take sizes of 32 bits.
  constexpr i64 kLargestPitch = std::numeric_limits<i32>::max();
  constexpr i64 kLargestSize = std::numeric_limits<u32>::max();
  return width >= 1 && height >= 1 && width <= kLargestPitch / 4 &&
         4 * width <= kLargestSize / height;
}

Picture::Picture(i64 pictureWidth, i64 pictureHeight)
    : width(static_cast<i32>(pictureWidth)), height(static_cast<i32>(pictureHeight)) {
  if (!Fits(pictureWidth, pictureHeight)) {
    throw Failure(Format("a picture of %lld x %lld pixels is too large",
                         static_cast<long long>(pictureWidth),
                         static_cast<long long>(pictureHeight)));
  }
  pixels.resize(bytes());
}

Picture Picture::Promised(Size size) {
  Picture picture(1, 1);
  picture.width = size.width;
  picture.height = size.height;
  picture.pixels.clear();
  return picture;
}

pictavo::ImageDesc Describe(Picture& picture) {
  pictavo::ImageDesc image = {};
  image.data = picture.pixels.data();
  image.bufferWidth = image.width = picture.width;
  image.bufferHeight = image.height = picture.height;
  image.pitch = picture.pitch();
  image.bytesPerPixel = 4;
  return image;
}

pictavo::ImageDesc Describe(const Picture& picture) {
  return Describe(const_cast<Picture&>(picture));
}

pictavo::ImageDesc DescribeInside(Picture& picture, i32 border) {
  pictavo::ImageDesc image = Describe(picture);
  image.data = picture.At(border, border);
  image.width -= 2 * border;
  image.height -= 2 * border;
  return image;
}

Picture ReadPicture(const std::filesystem::path& path) {
  const Steps check = {"cannot read", "the picture is damaged", path};
  ComPtr<IWICImagingFactory> factory;
  ComPtr<IWICBitmapDecoder> decoder;
  ComPtr<IWICBitmapFrameDecode> frame;
  ComPtr<IWICBitmapSource> source;
  check(CreateFactory(&factory));
  check(factory->CreateDecoderFromFilename(path.c_str(), nullptr, GENERIC_READ,
                                           WICDecodeMetadataCacheOnDemand, &decoder));
  check(decoder->GetFrame(0, &frame));
  UINT width = 0, height = 0;
  check(frame->GetSize(&width, &height));
  constexpr UINT kLargest = std::numeric_limits<i32>::max();
  if (width == 0 || height == 0) check(WINCODEC_ERR_BADIMAGE);
  if (width > kLargest || height > kLargest) check(WINCODEC_ERR_IMAGESIZEOUTOFRANGE);
  check(WICConvertBitmapSource(GUID_WICPixelFormat32bppBGRA, frame.Get(), &source));
  Picture picture(static_cast<i32>(width), static_cast<i32>(height));
  check(source->CopyPixels(nullptr, static_cast<UINT>(picture.pitch()),
                           static_cast<UINT>(picture.pixels.size()), picture.pixels.data()));
  return picture;
}

namespace {

/// Writes the file; `path` names it to people.
void Encode(const std::filesystem::path& file, const std::filesystem::path& path, bool jpeg,
            const Picture& picture) {
  const Steps check = {"cannot write", "the codec failed", path};
  Picture pixels = jpeg ? OnWhite(picture) : picture;
  ComPtr<IWICImagingFactory> factory;
  ComPtr<IWICStream> stream;
  ComPtr<IWICBitmapEncoder> encoder;
  ComPtr<IWICBitmapFrameEncode> frame;
  ComPtr<IWICBitmap> bitmap;
  ComPtr<IWICBitmapSource> converted;
  WICPixelFormatGUID format = jpeg ? GUID_WICPixelFormat24bppBGR : GUID_WICPixelFormat32bppBGRA;
  check(CreateFactory(&factory));
  check(factory->CreateStream(&stream));
  check(stream->InitializeFromFilename(file.c_str(), GENERIC_WRITE));
  check(factory->CreateEncoder(jpeg ? GUID_ContainerFormatJpeg : GUID_ContainerFormatPng, nullptr,
                               &encoder));
  check(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache));
  check(encoder->CreateNewFrame(&frame, nullptr));
  check(frame->Initialize(nullptr));
  check(frame->SetSize(static_cast<UINT>(picture.width), static_cast<UINT>(picture.height)));
  check(frame->SetPixelFormat(&format));
  check(factory->CreateBitmapFromMemory(
      static_cast<UINT>(picture.width), static_cast<UINT>(picture.height),
      GUID_WICPixelFormat32bppBGRA, static_cast<UINT>(picture.pitch()),
      static_cast<UINT>(pixels.pixels.size()), pixels.pixels.data(), &bitmap));
  check(WICConvertBitmapSource(format, bitmap.Get(), &converted));
  check(frame->WriteSource(converted.Get(), nullptr));
  check(frame->Commit());
  check(encoder->Commit());
}

}  // namespace

void WritePicture(const std::filesystem::path& path, const Picture& picture) {
  const bool jpeg = IsJpegName(path);
  std::filesystem::path beside = path;
  beside += Format(".%lu.part", GetCurrentProcessId());
  std::error_code ignored;
  try {
    Encode(beside, path, jpeg, picture);
    if (!MoveFileExW(beside.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
      throw Failure("cannot write " + Quoted(path) + ": " +
                    SystemMessage(HRESULT_FROM_WIN32(GetLastError())));
    }
  } catch (...) {
    std::filesystem::remove(beside, ignored);
    throw;
  }
}

Picture Cropped(const Picture& picture, const Rect& part) {
  Picture cropped(part.width, part.height);
  for (i32 y = 0; y < part.height; ++y) {
    std::memcpy(cropped.At(0, y), picture.At(part.left, part.top + y),
                static_cast<size_t>(cropped.pitch()));
  }
  return cropped;
}

void Paste(const Picture& picture, i32 left, i32 top, Picture* into) {
  for (i32 y = 0; y < picture.height; ++y) {
    std::memcpy(into->At(left, top + y), picture.At(0, y), static_cast<size_t>(picture.pitch()));
  }
}

Picture WithRoom(const Picture& picture, i32 border) {
  Picture room(picture.width + 2 * border, picture.height + 2 * border);
  Paste(picture, border, border, &room);
  return room;
}

Picture Resized(const Picture& picture, i32 width, i32 height) {
  Picture resized(width, height);
  for (i32 y = 0; y < height; ++y) {
    const Span rows(y, height, picture.height);
    for (i32 x = 0; x < width; ++x) {
      WriteMean(picture, Span(x, width, picture.width), rows, resized.At(x, y));
    }
  }
  return resized;
}

Picture Fitted(const Picture& picture, i32 width, i32 height) {
  if (i64{picture.width} * height > i64{picture.height} * width) {
    return Resized(picture, width, Scaled(picture.height, width, picture.width));
  }
  return Resized(picture, Scaled(picture.width, height, picture.height), height);
}

Picture Covering(const Picture& picture, i32 width, i32 height) {
  Rect middle = {0, 0, picture.width, picture.height};
  if (i64{picture.width} * height > i64{picture.height} * width) {
    middle.width = Scaled(picture.height, width, height);
    middle.left = (picture.width - middle.width) / 2;
  } else {
    middle.height = Scaled(picture.width, height, width);
    middle.top = (picture.height - middle.height) / 2;
  }
  return Resized(Cropped(picture, middle), width, height);
}

double RmsDifference(const Picture& a, const Picture& b) {
  double squares = 0;
  for (size_t i = 0; i < a.pixels.size(); ++i) {
    const int step = i % 4 == 3 ? 0 : a.pixels[i] - b.pixels[i];
    squares += step * step;
  }
  return std::sqrt(squares / 0.75 / static_cast<double>(a.pixels.size()));
}

Difference DifferenceOf(const Picture& a, const Picture& b, int amplified) {
  Difference found = {Picture(a.width, a.height)};
  size_t unlike = 0, seen = 0;
  double sum = 0;
  for (size_t i = 0; i < a.pixels.size(); ++i) {
    const int distance = std::abs(a.pixels[i] - b.pixels[i]);
    found.largest = std::max(found.largest, distance);
    unlike += distance != 0;
    sum += distance;
    seen += (a.pixels[i | 3] | b.pixels[i | 3]) != 0;
    found.picture.pixels[i] =
        i % 4 == 3 ? u8{255} : static_cast<u8>(std::min(amplified * distance, 255));
  }
  found.mean = sum / static_cast<double>(std::max(seen, size_t{1}));
  found.share = 100.0 * static_cast<double>(unlike) / static_cast<double>(a.pixels.size());
  return found;
}

Picture OnWhite(Picture picture) {
  for (size_t i = 0; i < picture.pixels.size(); i += 4) {
    u8* pixel = &picture.pixels[i];
    for (int c = 0; c < 3; ++c) {
      pixel[c] = static_cast<u8>((pixel[c] * pixel[3] + 255 * (255 - pixel[3]) + 127) / 255);
    }
    pixel[3] = 255;
  }
  return picture;
}

Picture Premultiply(pictavo::IPictavo6* object, Picture picture) {
  object->PremultiplyPitched(picture.pixels.data(), picture.width, picture.height, picture.pitch());
  return picture;
}

Picture Unpremultiply(Picture picture) {
  for (size_t i = 0; i < picture.pixels.size(); i += 4) {
    u8* pixel = &picture.pixels[i];
    const int alpha = pixel[3];
    if (alpha == 0) continue;
    for (int c = 0; c < 3; ++c) {
      pixel[c] = static_cast<u8>(std::min(255, (pixel[c] * 255 + alpha / 2) / alpha));
    }
  }
  return picture;
}

}  // namespace host

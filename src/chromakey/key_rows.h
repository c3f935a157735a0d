// The kernels of the chroma key: one key over one row of packed pixels.
#ifndef PICTAVO_CHROMAKEY_KEY_ROWS_H_
#define PICTAVO_CHROMAKEY_KEY_ROWS_H_

#include "pictavo/pictavo.h"

namespace pictavo::chromakey {

/// Luma, and chroma around 0.
struct Yuv {
  f32 y, u, v;
};

Yuv ToYuv(u8 r, u8 g, u8 b);

/// A key, and what its pass computes from it once.
struct PassKey {
  PassKey(const Yuv& keyColour, i32 keyAngle, i32 keyDenoise);

  bool IsNearGrey() const { return kg < 13.0f; }

  Yuv key;
  i32 angle;
  i32 denoise;
  f32 kg;  // the key's chroma, its distance from grey
  double tangent;
  double cotangent;  // 0 for an angle of 0
  f32 lumaScale;
};

enum class Layout { kArgb, kAyuv };

/// Keys a row. The first key's pass writes the result, later ones write the least of it and theirs.
/// The result may be the source itself.
using KeyRow = void(u8* result, const u8* source, i64 width, const PassKey& key);

/// The build of a level for all rows of a pass.
KeyRow* KeyRowFor(i32 level, Layout layout, bool nearGrey, bool firstPass);

/// Lays a keyed row over a background. The result may be the background itself.
void CompositeRow(u8* result, const u8* keyed, const u8* background, i64 width);

}  // namespace pictavo::chromakey

#endif  // PICTAVO_CHROMAKEY_KEY_ROWS_H_

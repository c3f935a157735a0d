// The vector sampler of layer_scaled.cpp over V, included once for each instruction set.

#include "cpu/simd/sampler.inl"

/// Of sources of two columns or more; reads the stretch, and writes `out`, by whole vectors.
inline void SampleStretch(u8* out, const RowPair& rows, const Stretch& stretch, i32 down) {
  const V y = V::All32(static_cast<u32>(down));
  for (i64 x = 0; x < stretch.count; x += V::kPixels) {
    const PixelPairs top = LoadPairs(rows.top, stretch.places + x);
    const PixelPairs bottom = LoadPairs(rows.bottom, stretch.places + x);
    const V across = V::Load(reinterpret_cast<const u8*>(stretch.across + x));
    SampleRounded({top.here, top.right, bottom.here, bottom.right}, SampleWeights(across, y))
        .Store(out + 4 * x);
  }
}

// What the CPU writes and the shaders read, to the byte: the block CSParam of each shader, and the
// elements of the key buffer. Fields are called as in the shaders; the dummies pad.
#ifndef PICTAVO_D3D11_SHADER_BLOCKS_H_
#define PICTAVO_D3D11_SHADER_BLOCKS_H_

#include "pictavo/pictavo.h"

namespace pictavo::d3d11 {

/// Colour formats as the shaders know them.
enum ColorFormat : u32 { kBgra = 0, kRgba = 1, kPlane = 2 };

struct RegionCopyBlock {
  u32 uSrcColorFormat;
  u32 uDstColorFormat;
  i32 nDstOriX;
  i32 nDstOriY;
  i32 nSrcRgnSx;
  i32 nSrcRgnSy;
  i32 nSrcRgnW;
  i32 nSrcRgnH;
};
static_assert(sizeof(RegionCopyBlock) == 32);

struct ChromaKeyBlock {
  RegionCopyBlock region;
  u32 uKeys;
  u32 nDummy1 = 0, nDummy2 = 0, nDummy3 = 0;
};
static_assert(sizeof(ChromaKeyBlock) == 48);

struct ColorKey {
  f32 r, g, b;  // 0 … 255
  i32 angle;
  i32 denoise;
  u32 nDummy1 = 0, nDummy2 = 0, nDummy3 = 0;
};
static_assert(sizeof(ColorKey) == 32);

inline constexpr i32 kMostKeys = 1024;

struct RegionFilterBlock {
  RegionCopyBlock region;
  i32 nRadius;
  i32 nDummy1 = 0, nDummy2 = 0, nDummy3 = 0;
};
static_assert(sizeof(RegionFilterBlock) == 48);

struct ScaledCopyBlock {
  u32 uSrcColorFormat;
  u32 uDstColorFormat;
  u32 ufxSrcXStep;
  u32 ufxSrcYStep;
  u32 uInnerXStep;
  u32 uInnerYStep;
  i32 nDstRgnSx;
  i32 nDstRgnSy;
  i32 nDstRgnEx;
  i32 nDstRgnEy;
  i32 nDummy1 = 0, nDummy2 = 0;
};
static_assert(sizeof(ScaledCopyBlock) == 48);

struct AffineCopyBlock {
  RegionCopyBlock region;
  i32 nFxSrcXStart;
  i32 nFxSrcYStart;
  i32 nFxSrcXStepX;
  i32 nFxSrcXStepY;
  i32 nFxSrcYStepX;
  i32 nFxSrcYStepY;
  i32 nDummy1 = 0, nDummy2 = 0;
};
static_assert(sizeof(AffineCopyBlock) == 64);

struct ResizeBlock {
  u32 uSrcColorFormat;
  u32 uDstColorFormat;
  u32 uWeighted;
  u32 uDummy = 0;
};
static_assert(sizeof(ResizeBlock) == 16);

struct RotateBlock {
  u32 uSrcColorFormat;
  u32 uDstColorFormat;
  u32 uNearest;
  u32 uDummy = 0;
  i64 uFxSrcXStart, uFxSrcYStart;
  i64 uFxSrcXStepX, uFxSrcXStepY;
  i64 uFxSrcYStepX, uFxSrcYStepY;
};
static_assert(sizeof(RotateBlock) == 64);

struct FillPlaneBlock {
  i32 nDstSx;
  i32 nDstSy;
  f32 fColorA;
  i32 nDummy1 = 0;
};
static_assert(sizeof(FillPlaneBlock) == 16);

struct FillColourBlock {
  i32 nDstSx;
  i32 nDstSy;
  f32 fColorR;
  f32 fColorG;
  f32 fColorB;
  f32 fColorA;
  i32 nDummy1 = 0, nDummy2 = 0;
};
static_assert(sizeof(FillColourBlock) == 32);

struct ColourFromSourceBlock {
  i32 nDstSx;
  i32 nDstSy;
  f32 fColorR;
  f32 fColorG;
  f32 fColorB;
  f32 fDummy1 = 0;
  i32 nDummy2 = 0, nDummy3 = 0;
};
static_assert(sizeof(ColourFromSourceBlock) == 32);

struct BoxBlurBlock {
  u32 uBlurRadius;
  u32 uWidth;
  u32 uHeight;
  u32 uDummy = 0;
};
static_assert(sizeof(BoxBlurBlock) == 16);

struct FilterWeightsBlock {
  u32 uRadius;
  f32 fAlpha;
  u32 uFilterType;
  u32 uDummy = 0;
};
static_assert(sizeof(FilterWeightsBlock) == 16);

struct FilterApplyBlock {
  u32 uFilterRadiusW;
  u32 uFilterRadiusH;
  u32 uDummy1 = 0, uDummy2 = 0;
};
static_assert(sizeof(FilterApplyBlock) == 16);

struct FilterApplyToRegionBlock {
  RegionCopyBlock region;
  u32 uFilterRadiusW;
  u32 uFilterRadiusH;
  u32 uClipSrcA;
  u32 uDummy1 = 0;
};
static_assert(sizeof(FilterApplyToRegionBlock) == 48);

}  // namespace pictavo::d3d11

#endif  // PICTAVO_D3D11_SHADER_BLOCKS_H_

// Scaling and turning by the processor's rules. Its own code says where pixels lie and what they
// weigh; the card adds them up.
#include <algorithm>

#include "cpu/base/scratch.h"
#include "cpu/geometry/filter_taps.h"
#include "cpu/geometry/warp.h"
#include "d3d11/computation.h"
#include "frame/result.h"

namespace pictavo {

using namespace d3d11;

namespace {

/// An entry of a filter's table on the card.
struct Tap {
  f32 weight, first;
};

/// Lays a side's weights out as the shaders take them: a column for each pixel.
void LayOut(const cpu::FilterTaps& taps, i64 columns, i64 count, Tap* table) {
  for (i64 x = 0; x < columns; ++x) {
    const f32* const weights = reinterpret_cast<const f32*>(taps.Singles(x));
    const f32 first = static_cast<f32>(taps.First(x));
    for (i64 i = 0; i < count; ++i) table[i * columns + x] = {weights[i], first};
  }
}

}  // namespace

u32 CPictavo_D3D::GetTaps(const D3DCall& call, Scratch which, i64 srcSize, i64 dstSize, u32 filter,
                          Picture* table) noexcept {
  cpu::FilterTaps taps(srcSize, dstSize, {0, static_cast<double>(srcSize)}, filter, 1, true);
  const i64 count = std::min(taps.taps(), srcSize), rowBytes = dstSize * i64{sizeof(Tap)};
  cpu::Scratch made(taps.Bytes()), laidOut(count * rowBytes);
  if (made.IsShort() || laidOut.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  taps.Make(made.data());
  LayOut(taps, dstSize, count, reinterpret_cast<Tap*>(laidOut.data()));
  PICTAVO_RETURN_IF_FAILED(GetScratch(call.device, which, static_cast<u32>(dstSize),
                                      static_cast<u32>(count), DXGI_FORMAT_R32G32_FLOAT, table));
  call.context->UpdateSubresource(table->texture.Get(), 0, nullptr, laidOut.data(),
                                  static_cast<UINT>(rowBytes), 0);
  return PICTAVO_S_OK;
}

u32 CPictavo_D3D::FilteredCopy(const D3DCall& call, const ResizeParam* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures));
  if (!cpu::Holds(*param)) return PICTAVO_E_INVALIDARG;
  const auto& [dst, src] = pictures;
  const D3DRegion whole = {0, 0, 0, 0, src.width, src.height};
  if (src.width == dst.width && src.height == dst.height) return MaterialCopy(call, &whole);

  Computation computation(this, call);
  Picture across, down, rows;
  PICTAVO_RETURN_IF_FAILED(
      GetTaps(call, Scratch::kTapsAcross, src.width, dst.width, param->filter, &across));
  PICTAVO_RETURN_IF_FAILED(
      GetTaps(call, Scratch::kTapsDown, src.height, dst.height, param->filter, &down));
  PICTAVO_RETURN_IF_FAILED(GetScratch(call.device, Scratch::kRows, static_cast<u32>(dst.width),
                                      static_cast<u32>(src.height), DXGI_FORMAT_R32G32B32A32_FLOAT,
                                      &rows));
  const auto run = [&](Shader shader, const Pictures& pass, const Picture& taps) {
    Pass over = PassOver(shader, pass, pass.dst.width, pass.dst.height);
    over.inputs[1] = taps.in.Get();
    return computation.Run(over, ResizeBlock{.uSrcColorFormat = pass.src.format,
                                             .uDstColorFormat = pass.dst.format,
                                             .uWeighted = param->alphaMode});
  };
  PICTAVO_RETURN_IF_FAILED(run(Shader::kResizeRows, {rows, src}, across));
  return run(Shader::kResizeColumns, {dst, rows}, down);
}

u32 CPictavo_D3D::RotatedCopy(const D3DCall& call, const RotateParam* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures));
  const auto& [dst, src] = pictures;
  cpu::RotationSteps steps;
  if (!cpu::FindRotationSteps(*param, dst.width, dst.height, &steps)) return PICTAVO_E_INVALIDARG;
  return Computation(this, call)
      .Run(PassOver(Shader::kRotateCopy, pictures, dst.width, dst.height),
           RotateBlock{.uSrcColorFormat = src.format,
                       .uDstColorFormat = dst.format,
                       .uNearest = param->filter == PICTAVO_SAMPLE_NEAREST,
                       .uFxSrcXStart = steps.x,
                       .uFxSrcYStart = steps.y,
                       .uFxSrcXStepX = steps.xAcross,
                       .uFxSrcXStepY = steps.xDown,
                       .uFxSrcYStepX = steps.yAcross,
                       .uFxSrcYStepY = steps.yDown});
}

}  // namespace pictavo

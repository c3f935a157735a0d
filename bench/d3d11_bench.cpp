// Times the Direct3D 11 operations on this machine's device, the graphics card's or the system's
// software one, pictures staying on it:
//   d3d11_bench
#include <d3d11.h>
#include <wrl/client.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include "frame/pictavo_object.h"

namespace {

using namespace pictavo;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr i32 kWidth = 1920, kHeight = 1080;

constexpr D3DRegion kAll = {0, 0, 0, 0, kWidth, kHeight};
constexpr f32 kColour[] = {0, 0.5f, 1, 1};
constexpr D3DClearParam kClear = {kColour, 4};
constexpr D3DBlurParam kBlur8 = {8, 8, 1}, kBlur100 = {100, 100, 1};
constexpr D3DGrowParam kSquare8 = {8, 8, 0, 1}, kSquare32 = {32, 32, 0, 1}, kDisc8 = {8, 8, 1, 1},
                       kBell8 = {8, 8, 3, 1};
constexpr D3DRegionFilterParam kFilter8 = {kAll, 8};
constexpr D3DScaleParam kHalf = {0, 0, kWidth / 2, kHeight / 2};
constexpr D3DAffineParam kTurn = {0, 0,     0,     0,     kWidth, kHeight,
                                  0, 20000, 63303, 16962, -16962, 63303};
constexpr ChromaKey kColours[] = {{0, 255, 0, 0, 30, 20}, {20, 60, 230, 0, 45, 0}};
constexpr D3DKeyParam kKeys = {kAll, kColours, 2};
constexpr D3DGrowRegionParam kOutline = {kAll, kSquare8, 1}, kBellRegion = {kAll, kBell8, 0};

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "d3d11_bench: %s\n", what);
  std::exit(1);
}

class Bench {
 public:
  Bench();

  void Run(const char* name, i32 opCode, const void* param) {
    Time(name, [&] {
      return object_->D3DComputeOp(opCode, 0, device_.Get(), context_.Get(), &dst_, &src_, param);
    });
  }
  void RunBlurSlot(u32 radius) {
    Time("103 box blur, radius 8",
         [&] { return object_->BoxBlurD3D(device_.Get(), context_.Get(), &dst_, &src_, radius); });
  }

 private:
  void PrintDevice();
  ComPtr<ID3D11Texture2D> Picture(u32 bindFlags);
  void Finish();
  Milliseconds Once(const std::function<u32()>& run);
  void Time(const char* name, const std::function<u32()>& run);

  ComPtr<ID3D11Device> device_;
  ComPtr<ID3D11DeviceContext> context_;
  ComPtr<ID3D11Texture2D> destination_, source_;
  ImageDesc dst_ = {}, src_ = {};
  Pictavo pictavo_;
  IPictavo6* const object_ = &pictavo_;
};

Bench::Bench() {
  const D3D_FEATURE_LEVEL level = D3D_FEATURE_LEVEL_11_0;
  for (const D3D_DRIVER_TYPE type : {D3D_DRIVER_TYPE_HARDWARE, D3D_DRIVER_TYPE_WARP}) {
    if (device_) break;
    D3D11CreateDevice(nullptr, type, nullptr, 0, &level, 1, D3D11_SDK_VERSION,
                      device_.ReleaseAndGetAddressOf(), nullptr, context_.ReleaseAndGetAddressOf());
  }
  if (!device_) Fail("there is no Direct3D 11 device");
  PrintDevice();
  destination_ = Picture(D3D11_BIND_UNORDERED_ACCESS);
  source_ = Picture(D3D11_BIND_SHADER_RESOURCE);
  dst_.memoryKind = src_.memoryKind = PICTAVO_MEMORY_D3D11_TEXTURE;
  dst_.data = destination_.Get();
  src_.data = source_.Get();
}

void Bench::PrintDevice() {
  ComPtr<IDXGIDevice> dxgi;
  ComPtr<IDXGIAdapter> adapter;
  DXGI_ADAPTER_DESC desc = {};
  if (SUCCEEDED(device_->QueryInterface(IID_PPV_ARGS(&dxgi))) &&
      SUCCEEDED(dxgi->GetAdapter(&adapter))) {
    adapter->GetDesc(&desc);
  }
  std::printf("%ls\n%d x %d pixels, milliseconds\n\n", desc.Description, kWidth, kHeight);
  std::puts("                                    first call   any call");
}

/// Stripes and noise, partly clear.
ComPtr<ID3D11Texture2D> Bench::Picture(u32 bindFlags) {
  std::vector<u32> pixels(kWidth * kHeight);
  u32 random = 1;
  for (size_t i = 0; i < pixels.size(); ++i) {
    random = random * 1664525 + 1013904223;
    const u32 alpha = i / 64 % 3 == 0 ? 0 : i / 64 % 3 == 1 ? 255 : random >> 24;
    pixels[i] = (random >> 8 & 0xFFFFFF) | alpha << 24;
  }
  const D3D11_TEXTURE2D_DESC desc = {.Width = kWidth,
                                     .Height = kHeight,
                                     .MipLevels = 1,
                                     .ArraySize = 1,
                                     .Format = DXGI_FORMAT_B8G8R8A8_UNORM,
                                     .SampleDesc = {1, 0},
                                     .Usage = D3D11_USAGE_DEFAULT,
                                     .BindFlags = bindFlags,
                                     .CPUAccessFlags = 0,
                                     .MiscFlags = 0};
  const D3D11_SUBRESOURCE_DATA data = {pixels.data(), kWidth * 4, 0};
  ComPtr<ID3D11Texture2D> texture;
  if (FAILED(device_->CreateTexture2D(&desc, &data, &texture))) Fail("no texture");
  return texture;
}

void Bench::Finish() {
  const D3D11_QUERY_DESC desc = {D3D11_QUERY_EVENT, 0};
  ComPtr<ID3D11Query> query;
  if (FAILED(device_->CreateQuery(&desc, &query))) Fail("no query");
  context_->End(query.Get());
  while (context_->GetData(query.Get(), nullptr, 0, 0) == S_FALSE) SwitchToThread();
}

Milliseconds Bench::Once(const std::function<u32()>& run) {
  const Clock::time_point start = Clock::now();
  if (run() != PICTAVO_S_OK) Fail("an operation failed");
  Finish();
  return Clock::now() - start;
}

void Bench::Time(const char* name, const std::function<u32()>& run) {
  constexpr Milliseconds kEnough{3000};
  const Milliseconds first = Once(run);
  std::vector<Milliseconds> others;
  for (Milliseconds spent{}; spent < kEnough; spent += others.back()) others.push_back(Once(run));
  std::sort(others.begin(), others.end());
  std::printf("%-34s %11.1f %10.1f\n", name, first.count(), others[others.size() / 2].count());
  std::fflush(stdout);
}

}  // namespace

int main() {
  Bench bench;
  bench.Run("0 copy without a shader", PICTAVO_D3D_COPY_TEXTURE, nullptr);
  bench.Run("2 box blur, radius 8", PICTAVO_D3D_BOX_BLUR, &kBlur8);
  bench.Run("2 box blur, radius 100", PICTAVO_D3D_BOX_BLUR, &kBlur100);
  bench.Run("3 growing, square of 8", PICTAVO_D3D_GROW, &kSquare8);
  bench.Run("3 growing, disc of 8", PICTAVO_D3D_GROW, &kDisc8);
  bench.Run("4 clear", PICTAVO_D3D_CLEAR, &kClear);
  bench.Run("5 region copy", PICTAVO_D3D_COPY_REGION, &kAll);
  bench.Run("6 scaling to half", PICTAVO_D3D_SCALE, &kHalf);
  bench.Run("9 region filter, radius 8", PICTAVO_D3D_FILTER_REGION, &kFilter8);
  bench.Run("10 affine copy, turned", PICTAVO_D3D_COPY_AFFINE, &kTurn);
  bench.Run("12 outline, square of 8", PICTAVO_D3D_GROW_REGION, &kOutline);
  bench.Run("12 growing, bell of 8", PICTAVO_D3D_GROW_REGION, &kBellRegion);
  bench.Run("14 chroma key, 2 keys", PICTAVO_D3D_CHROMA_KEY, &kKeys);
  bench.RunBlurSlot(8);
  bench.Run("3 growing, square of 32", PICTAVO_D3D_GROW, &kSquare32);
  return 0;
}

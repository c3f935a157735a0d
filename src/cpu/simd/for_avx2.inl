// Includes the file that KERNELS names, code over the vocabulary, for AVX2. Each family does so in
// its own namespace, after cpu/simd/avx2.h.
TARGET_REGION("avx2")
namespace avx2 {
namespace {
using namespace pictavo::cpu::avx2;
#include KERNELS
}  // namespace
}  // namespace avx2
TARGET_REGION_END

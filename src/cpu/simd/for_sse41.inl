// Includes the file that KERNELS names, code over the vocabulary, for SSE4.1. Each family does so
// in its own namespace, after cpu/simd/sse41.h.
TARGET_REGION("sse4.1")
namespace sse41 {
namespace {
using namespace pictavo::cpu::sse41;
#include KERNELS
}  // namespace
}  // namespace sse41
TARGET_REGION_END

// Includes the file that KERNELS names, code over the vocabulary, for SSE2. Each family does so in
// its own namespace, after cpu/simd/sse2.h.
namespace sse2 {
namespace {
using namespace pictavo::cpu::sse2;
#include KERNELS
}  // namespace
}  // namespace sse2

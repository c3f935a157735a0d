// Includes the file that KERNELS names, code over the vocabulary, for SSSE3. Each family does so in
// its own namespace, after cpu/simd/ssse3.h.
TARGET_REGION("ssse3")
namespace ssse3 {
namespace {
using namespace pictavo::cpu::ssse3;
#include KERNELS
}  // namespace
}  // namespace ssse3
TARGET_REGION_END

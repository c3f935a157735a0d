#include "cpu_detect/cpu_detect.h"

#ifdef _MSC_VER
#include <intrin.h>
#else
#include <cpuid.h>
#include <immintrin.h>
#endif

#include <array>
#include <new>

#include "cpu/simd/target_region.h"
#include "cpu_detect/instruction_set.h"

namespace pictavo {
namespace {

struct CpuidRegisters {
  std::uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
};

/// All zero for a leaf that the processor does not have.
CpuidRegisters Cpuid(std::uint32_t leaf) {
  CpuidRegisters registers;
#ifdef _MSC_VER
  int values[4];
  __cpuid(values, 0);
  if (static_cast<std::uint32_t>(values[0]) < leaf) return registers;
  __cpuidex(values, static_cast<int>(leaf), 0);
  registers = {static_cast<std::uint32_t>(values[0]), static_cast<std::uint32_t>(values[1]),
               static_cast<std::uint32_t>(values[2]), static_cast<std::uint32_t>(values[3])};
#else
  __get_cpuid_count(leaf, 0, &registers.eax, &registers.ebx, &registers.ecx, &registers.edx);
#endif
  return registers;
}

TARGET_REGION("xsave")
std::uint32_t ReadXcr0() { return static_cast<std::uint32_t>(_xgetbv(0)); }
TARGET_REGION_END

CpuRegisters ReadRegisters() {
  const CpuidRegisters leaf1 = Cpuid(1);
  CpuRegisters cpu{.leaf1Ecx = leaf1.ecx, .leaf1Edx = leaf1.edx, .leaf7Ebx = Cpuid(7).ebx};
  if (HasXgetbv(cpu)) cpu.xcr0 = ReadXcr0();
  return cpu;
}

class CpuDetect final : public ICpuDetect {
 public:
  std::uint32_t Initialize(std::uint32_t) noexcept override {
    highest_ = HighestInstructionSet(ReadRegisters());
    return 0;
  }
  std::uint32_t Uninitialize() noexcept override { return 0; }

  std::uint8_t HasMMX() noexcept override { return Has(InstructionSet::kMMX); }
  std::uint8_t HasSSE() noexcept override { return Has(InstructionSet::kSSE); }
  std::uint8_t HasSSE2() noexcept override { return Has(InstructionSet::kSSE2); }
  std::uint8_t HasSSE3() noexcept override { return Has(InstructionSet::kSSE3); }
  std::uint8_t HasSSSE3() noexcept override { return Has(InstructionSet::kSSSE3); }
  std::uint8_t HasSSE41() noexcept override { return Has(InstructionSet::kSSE41); }
  std::uint8_t HasSSE42() noexcept override { return Has(InstructionSet::kSSE42); }
  std::uint8_t HasAVX2() noexcept override { return Has(InstructionSet::kAVX2); }

 private:
  std::uint8_t Has(InstructionSet set) const { return highest_ >= set; }

  InstructionSet highest_ = InstructionSet::kNone;
};

}  // namespace
}  // namespace pictavo

extern "C" {

pictavo::ICpuDetect* AllocateCPUISDetectUtility() {
  return new (std::nothrow) pictavo::CpuDetect();
}

void ReleaseCPUISDetectUtility(pictavo::ICpuDetect* detect) {
  delete static_cast<pictavo::CpuDetect*>(detect);
}

}  // extern "C"

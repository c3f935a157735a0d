#ifndef PICTAVO_MODULES_INSTRUCTION_SET_H_
#define PICTAVO_MODULES_INSTRUCTION_SET_H_

#include <cstdint>

namespace pictavo {

/// What a processor says about itself.
struct CpuRegisters {
  std::uint32_t leaf1Ecx = 0;  // CPUID leaf 1
  std::uint32_t leaf1Edx = 0;
  std::uint32_t leaf7Ebx = 0;  // CPUID leaf 7, subleaf 0; 0 on a processor without that leaf
  std::uint32_t xcr0 = 0;      // register states the system saves; 0 when XGETBV cannot be used
};

/// The ladder of instruction sets.
enum class InstructionSet { kNone, kMMX, kSSE, kSSE2, kSSE3, kSSSE3, kSSE41, kSSE42, kAVX2 };

/// Operating system support for XGETBV.
constexpr bool HasXgetbv(const CpuRegisters& cpu) { return cpu.leaf1Ecx >> 27 & 1; }

/// The highest step of the ladder with every step below it supported too.
constexpr InstructionSet HighestInstructionSet(const CpuRegisters& cpu) {
  constexpr std::uint32_t kXmmAndYmmState = 6;
  const bool ymmUsable = HasXgetbv(cpu) && (cpu.xcr0 & kXmmAndYmmState) == kXmmAndYmmState;
  const bool hasAvx = cpu.leaf1Ecx >> 28 & 1;
  const bool steps[] = {
      (cpu.leaf1Edx >> 23 & 1) != 0, (cpu.leaf1Edx >> 25 & 1) != 0,
      (cpu.leaf1Edx >> 26 & 1) != 0, (cpu.leaf1Ecx & 1) != 0,
      (cpu.leaf1Ecx >> 9 & 1) != 0,  (cpu.leaf1Ecx >> 19 & 1) != 0,
      (cpu.leaf1Ecx >> 20 & 1) != 0, ymmUsable && hasAvx && (cpu.leaf7Ebx >> 5 & 1) != 0};
  int highest = 0;
  for (const bool step : steps) {
    if (!step) break;
    ++highest;
  }
  return static_cast<InstructionSet>(highest);
}

}  // namespace pictavo

#endif  // PICTAVO_MODULES_INSTRUCTION_SET_H_

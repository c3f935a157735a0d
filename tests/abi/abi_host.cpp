// A host compiled for the platform's usual C++ ABI, with nothing but kernel32 beneath it. The exit
// code is the number of the check that failed, 0 when none did.
#include "pictavo/pictavo.h"

extern "C" {
__declspec(dllimport) void* GetStdHandle(unsigned long which);
__declspec(dllimport) int WriteFile(void* file, const void* data, unsigned long size,
                                    unsigned long* written, void* overlapped);
[[noreturn]] __declspec(dllimport) void ExitProcess(unsigned code);
int _fltused = 0;  // what the compiler asks of a program with floating-point numbers

int PassesInC(pictavo::IPictavo6* object);
}

namespace {

using namespace pictavo;

unsigned checks = 0;

void Check(bool passed, const char* what) {
  ++checks;
  if (passed) return;
  unsigned long length = 0, written;
  while (what[length] != '\0') ++length;
  void* const errors = GetStdHandle(static_cast<unsigned long>(-12));
  WriteFile(errors, "Failed: ", 8, &written, nullptr);
  WriteFile(errors, what, length, &written, nullptr);
  WriteFile(errors, "\n", 1, &written, nullptr);
  ExitProcess(checks);
}

unsigned called = 0;

/// A method that only says which slot it stands in; callers clear the stack, so any call may.
template <unsigned slot>
u32 Note() {
  called = slot;
  return 0;
}

template <typename Result, typename Owner, typename... Arguments>
Result Call(IPictavo6* object, Result (Owner::*method)(Arguments...) noexcept) {
  return (object->*method)(Arguments{}...);
}

template <typename T, T... slots>
struct Table {
  static constexpr u32 (*kMethods[])() = {Note<slots>...};
};

/// Calls every method of the list, in order, on an object whose table is laid by hand.
void CheckPlaces() {
  const auto* table = __make_integer_seq<Table, unsigned, PICTAVO_METHOD_COUNT>::kMethods;
  IPictavo6* const object = reinterpret_cast<IPictavo6*>(&table);
  unsigned next = 0;
#define PICTAVO_METHOD(slot, name, where, arguments) \
  Call(object, &IPictavo6::name);                    \
  Check(called == slot && slot == next++, #name " is in its slot");
#define PICTAVO_RESERVED(slot, arguments) PICTAVO_METHOD(slot, Reserved##slot, , )
#include "pictavo/pictavo_methods.inl"
  Check(next == PICTAVO_METHOD_COUNT, "the list has every slot");
}

void CheckLevels(IPictavo6* object) {  // slots 0, 1 and 42
  object->SetCPULevel(-5);
  Check(object->GetCPULevel() == -5, "SetCPULevel is read back by GetCPULevel");
  object->DetectInstructionSet();
  Check(object->GetCPULevel() >= 0 && object->GetCPULevel() <= 8, "DetectInstructionSet");
  object->SetCPULevel(0);
}

constexpr u32 kUntouched = 0x55667788, kBackdrop = 0xFF204060;

/// Two rows of one pixel each, source packed and read bottom-up, destination with a gap.
struct Pictures {
  u32 dst[4] = {0x40102030, kUntouched, 0x90A0B0C0, kUntouched};
  u32 src[2] = {0xC8643219, 0x80503C28};

  u8* d() { return reinterpret_cast<u8*>(dst); }
  const u8* s() const { return reinterpret_cast<const u8*>(src); }
  bool Holds(u32 top, u32 bottom) const {
    return dst[0] == top && dst[1] == kUntouched && dst[2] == bottom && dst[3] == kUntouched;
  }
};

void CheckBlends(IPictavo6* object) {
  Pictures a, b, c, d;
  Check(object->BlendOverWithOpacityRamp(a.d(), a.s(), 1, 2, 8, 4, 1, 0.25f, 1.0f) == 1 &&
            a.Holds(0xFF18232F, 0xFF82726E),
        "slot 2, floats on the stack");
  Check(object->BlendOverWithOpacity(b.d(), b.s(), 1, 2, 8, 4, 200, kBackdrop) == PICTAVO_S_OK &&
            b.Holds(0x40493734, 0x90323E4A),
        "slot 11, a byte");
  Check(object->BlendOverWithOpacityRampAndAlpha(c.d(), c.s(), 1, 2, 8, 4, 200, kBackdrop, 1, 0.25f,
                                                 1.0f) == 1 &&
            c.Holds(0x19243F5A, 0x623A3A44),
        "slot 36, a byte and floats");
  Check(object->BlendOverWithOpacityRampKeepAlpha(d.d(), d.s(), 1, 2, 8, 4, 200, kBackdrop, 1,
                                                  0.25f, 1.0f) == 1 &&
            d.Holds(0x40243F5A, 0x903A3A44),
        "slot 37, a byte and floats");
}

void CheckRecords(IPictavo6* object) {
  Pictures p;
  ImageDesc dst = {{}, 1, 2, 0, p.dst, 1, 2, 8, 4}, src = {{}, 1, 2, 0, p.src, 1, 2, 4, 4};
  const BlendParam none = {0, 0, 0, 0, 0}, unknown = {99, 255, 0, 0, 0};
  Check(object->BlendLayer(&dst, &src, &none) == PICTAVO_S_OK, "slot 73, nothing to do");
  Check(object->BlendLayer(&dst, &src, &unknown) == PICTAVO_E_INVALIDARG, "slot 73, a bad mode");
  dst.data = nullptr;
  Check(object->BlendLayer(&dst, &src, &none) == PICTAVO_E_POINTER, "slot 73, a null picture");
}

void CheckUnbuilt(IPictavo6* object) {
#define PICTAVO_RESERVED(slot, arguments) \
  Check(Call(object, &IPictavo6::Reserved##slot) == PICTAVO_E_NOTIMPL, "slot " #slot);
#include "pictavo/pictavo_methods.inl"
}

}  // namespace

extern "C" [[noreturn]] void Main() {
  CheckPlaces();
  IPictavo6* const object = GetPictavo6();
  Check(object != nullptr, "GetPictavo6");
  CheckLevels(object);
  CheckBlends(object);
  CheckRecords(object);
  CheckUnbuilt(object);
  Check(PassesInC(object) != 0, "the C header's table");
  Check(ReleasePictavo6(object) == 0 && ReleasePictavo(nullptr) == 0, "ReleasePictavo");
  ExitProcess(0);
}

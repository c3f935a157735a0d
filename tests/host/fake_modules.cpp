// Every fake module in one: each DLL exports the functions it stands for.
#include <windows.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "fakes.h"
#include "memory_manager/memory_manager.h"

namespace pictavo::test {
namespace {

using u32 = std::uint32_t;

FakeControl& Control() {
  return *reinterpret_cast<FakeControl*>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(nullptr), "fakeControl")));
}

[[gnu::format(gnu_printf, 1, 2)]] void Note(const char* format, ...) {
  char event[400];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(event, sizeof(event), format, arguments);
  va_end(arguments);
  Control().note(event);
}

// Objects are tables laid by hand: a slot of an interface that moves is noticed. The slots that
// nobody may call are empty.
template <typename Function>
const void* Slot(Function* function) {
  return reinterpret_cast<const void*>(function);
}

u32 Initialize(void*, u32 flags) {
  Note("detect Initialize %u", flags);
  return 0;
}

/// Answers with the whole register, of which the caller wants the low byte.
template <int level>
u32 Has(void*) {
  Note("detect Has %d", level);
  return Control().answers[level - 1];
}

const void* const detectTable[] = {Slot(Initialize), nullptr,      Slot(Has<1>), Slot(Has<2>),
                                   Slot(Has<3>),     Slot(Has<4>), Slot(Has<5>), Slot(Has<6>),
                                   Slot(Has<7>),     Slot(Has<8>)};
const void* const* detect = detectTable;
int convert, render;

/// The one object of a module that hands out one.
void* CreateOnly(void* object, const char* part) {
  const bool refused = Control().refusals-- > 0;
  Note("%s %s", part, refused ? "refused" : "create");
  return refused ? nullptr : object;
}

void ReleaseOnly(const void* object, const void* given, const char* part) {
  Note("%s release%s", part, given == object ? "" : " of a stranger");
}

struct Buffer {
  const void* const* table;
  std::vector<std::uint8_t> pixels;
};
void* GetPixels(Buffer* self) {
  return Control().bufferFault == BufferFault::kNoPixels ? nullptr : self->pixels.data();
}
std::uint64_t GetSize(Buffer* self) { return self->pixels.size(); }

struct Manager {
  const void* const* table;
  std::wstring name;
};
u32 Make(Buffer** buffer, u32 size) {
  static const void* const table[] = {nullptr, nullptr,         nullptr,
                                      nullptr, Slot(GetPixels), Slot(GetSize)};
  if (Control().buffersBefore-- > 0 || Control().bufferFault != BufferFault::kNoBuffer) {
    *buffer = new Buffer{table, std::vector<std::uint8_t>(size, 0xEE)};
  }
  return Control().createResult;
}
u32 CreateBuffer(Manager*, Buffer** buffer, u32 kind, u32 format, u32 width, u32 height, u32 pitch,
                 u32 usage) {
  Note("CreateBuffer %u %u %u %u %u %u", kind, format, width, height, pitch, usage);
  return Make(buffer, height * pitch);
}
u32 ReleaseBuffer(Manager*, Buffer** buffer, u32 flag) {
  Note("ReleaseBuffer %u", flag);
  delete *buffer;  // and leaves the client its pointer
  return 0;
}
u32 CreateBufferWithIdentity(Manager*, Buffer** buffer, const AdapterIdentity* identity,
                             const MemoryBufferDesc* d) {
  Note("CreateBufferWithIdentity %u: %u %u 0x%X %u %u %u %u", identity->bytes[15], d->kind,
       d->format, d->flags, d->width, d->height, d->pitch, d->usage);
  return Make(buffer, d->height * d->pitch);
}

u32 CreateManager(int version, const wchar_t* name, Manager** view) {
  static const void* table[27] = {};
  table[1] = Slot(CreateBuffer);
  table[11] = Slot(ReleaseBuffer);
  table[26] = Slot(CreateBufferWithIdentity);
  if (!Control().refuseManager) *view = new Manager{table, name};
  Note("memory%d %s %ls", version, Control().refuseManager ? "refused" : "create", name);
  return 0;
}

u32 ReleaseManager(int version, Manager** view) {
  Note("memory%d release %ls", version, (*view)->name.c_str());
  delete *view;
  return 0;
}

}  // namespace

extern "C" {

void* AllocateCPUISDetectUtility() { return CreateOnly(&detect, "detect"); }
void ReleaseCPUISDetectUtility(void* given) { ReleaseOnly(&detect, given, "detect"); }
void* GetConvertUtility4() { return CreateOnly(&convert, "convert"); }
void ReleaseConvertUtility4(void* given) { ReleaseOnly(&convert, given, "convert"); }
void* GetVKT3DRender4Host() { return CreateOnly(&render, "render"); }
void ReleaseVKT3DRender4Host(void* given) { ReleaseOnly(&render, given, "render"); }

u32 CreateVKTMemMgr(const wchar_t* name, Manager** view) { return CreateManager(1, name, view); }
u32 CreateVKTMemMgr3(const wchar_t* name, Manager** view) { return CreateManager(3, name, view); }
u32 CreateVKTMemMgr4(const wchar_t* name, Manager** view) { return CreateManager(4, name, view); }
u32 CreateVKTMemMgr5(const wchar_t* name, Manager** view) { return CreateManager(5, name, view); }
u32 ReleaseVKTMemMgr(Manager** view) { return ReleaseManager(1, view); }
u32 ReleaseVKTMemMgr3(Manager** view) { return ReleaseManager(3, view); }
u32 ReleaseVKTMemMgr4(Manager** view) { return ReleaseManager(4, view); }
u32 ReleaseVKTMemMgr5(Manager** view) { return ReleaseManager(5, view); }

}  // extern "C"
}  // namespace pictavo::test

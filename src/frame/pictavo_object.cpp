#include "frame/pictavo_object.h"

#include <mutex>
#include <new>

#include "platform/module.h"

namespace pictavo {
namespace {

/// The answer of the newest predicate that says yes. Older ones are then not asked.
i32 HighestLevel(ICpuDetect* detect) {
  if (detect->HasAVX2()) return 8;
  if (detect->HasSSE42()) return 7;
  if (detect->HasSSE41()) return 6;
  if (detect->HasSSSE3()) return 5;
  if (detect->HasSSE3()) return 4;
  if (detect->HasSSE2()) return 3;
  if (detect->HasSSE()) return 2;
  return detect->HasMMX() ? 1 : 0;
}

/// Loads a sibling module, unless it is loaded, and takes its object from the create entry point.
/// A module without the entry point stays loaded for the next attempt.
template <typename Object>
Object* CreateFromModule(HMODULE* module, const wchar_t* file, const char* createName) {
  if (*module == nullptr) *module = LoadLibraryW(file);
  if (*module == nullptr) return nullptr;
  auto* create = EntryPoint<Object*()>(*module, createName);
  return create != nullptr ? create() : nullptr;
}

/// Gives the object back, as far as there is one and an entry point for it, and unloads the module.
template <typename Object>
void ReleaseToModule(HMODULE module, Object* object, const char* releaseName) {
  if (module == nullptr) return;
  auto* release = EntryPoint<void(Object*)>(module, releaseName);
  if (release != nullptr && object != nullptr) release(object);
  FreeLibrary(module);
}

}  // namespace

Pictavo::Pictavo() noexcept {
  DetectInstructionSet();
  kernelTable.Fill(cpuLevel, kLayerKernels);
  QueryPerformanceFrequency(&perfFrequency);
}

Pictavo::~Pictavo() {
  ReleaseToModule(cpuDetectModule, cpuDetect, "ReleaseCPUISDetectUtility");
  ReleaseToModule(convertModule, convertUtility, "ReleaseConvertUtility4");
  ReleaseToModule(renderModule, renderHost, "ReleaseVKT3DRender4Host");
  ReleaseBuffers();  // of which some are the client's
  delete memoryClient;
  delete dilation;
}

void Pictavo::DetectInstructionSet() noexcept {
  ICpuDetect* detect = EnsureCpuDetect();
  cpuLevel = detect != nullptr ? HighestLevel(detect) : PICTAVO_LEVEL_PORTABLE;
}

i32 Pictavo::GetCPULevel() noexcept { return cpuLevel; }

void Pictavo::SetCPULevel(i32 level) noexcept {
  cpuLevel = level;
  kernelTable.Fill(level, kLayerKernels);
}

ICpuDetect* Pictavo::EnsureCpuDetect() noexcept {
  const std::lock_guard guard(moduleLock);
  if (cpuDetect == nullptr) {
    cpuDetect = CreateFromModule<ICpuDetect>(&cpuDetectModule, L"CPUIstructionSetDetect.dll",
                                             "AllocateCPUISDetectUtility");
    if (cpuDetect != nullptr) cpuDetect->Initialize(0);
  }
  return cpuDetect;
}

bool Pictavo::EnsureMemoryClient() noexcept {
  const std::lock_guard guard(moduleLock);
  if (memoryClient == nullptr) memoryClient = CCommonUtility::Create("Pictavo", this);
  return memoryClient != nullptr;
}

bool Pictavo::EnsureConvertUtility() noexcept {
  const std::lock_guard guard(moduleLock);
  if (convertUtility == nullptr) {
    convertUtility = CreateFromModule<IConvertUtility>(&convertModule, L"ConvertUtility.dll",
                                                       "GetConvertUtility4");
  }
  return convertUtility != nullptr;
}

void* Pictavo::EnsureRenderHost() noexcept {
  const std::lock_guard guard(renderLock);
  if (renderHost == nullptr) {
    renderHost = CreateFromModule<void>(&renderModule, L"VKT_3DRender.dll", "GetVKT3DRender4Host");
  }
  return renderHost;
}

bool Pictavo::EnsureDilation() noexcept {
  const std::lock_guard guard(moduleLock);
  if (dilation == nullptr) dilation = new (std::nothrow) CPictavo_Dilation(this);
  return dilation != nullptr;
}

bool Pictavo::EnsureOpenCL() {
  if (openclReady == 0 && LoadOpenCL()) {
    SetCacheFolder();
    openclReady = 1;
  }
  return openclReady != 0;
}

}  // namespace pictavo

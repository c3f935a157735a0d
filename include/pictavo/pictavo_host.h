/// @file
/// For hosts on Windows: opens Pictavo.dll at run time, owns its object, and calls it with
/// pictures.
///
///   const pictavo::Host host;  // or Host(LR"(C:\Program Files\Editor\Pictavo.dll)")
///   pictavo::Picture frame(1920, 1080);
///   host.GaussianBlur(frame, 4);  // throws pictavo::Error when it is refused
///
/// or, without exceptions and picture types:
///
///   pictavo::Library library;
///   if (!library) return Report(library.errorText(), library.systemError());
///   if (!library.Call<&IPictavo6::BlendOverPitched>(frame, title, width, height, pitch)) …
///
/// Header only; compiles as C++17 or later and needs no import library. Without exceptions in the
/// compiler's settings, Host and Picture are left out.
#ifndef PICTAVO_PICTAVO_HOST_H_
#define PICTAVO_PICTAVO_HOST_H_

#include <windows.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "pictavo/pictavo.h"

namespace pictavo {

/// Why a Library has no object.
enum class LoadError {
  none,            ///< it has one, or has given it to another Library
  moduleNotFound,  ///< the DLL, or one that it needs, cannot be loaded
  entryMissing,    ///< the DLL is older than this header, or another DLL of that name
  objectNull,      ///< the DLL could not make its object
};

/// A DLL's version; all 0 where it states none.
struct LibraryVersion {
  unsigned major;  ///< changes with the table
  unsigned minor;  ///< changes with what is built
  unsigned patch;  ///< changes with what is mended
};

/// How a Library is loaded.
struct LoadSettings {
  /// Sets the level from what the system says of the processor when the library found none, for
  /// want of its module: without a level it runs its portable code.
  bool setLevel = true;
  /// Calls SearchSafely() first.
  bool searchSafely = true;
};

/// From now on DLLs that this process asks for by their plain names come from the program's own
/// folder, from those that the host has named by AddDllDirectory or SetDllDirectory, and from the
/// system's; no more from the current folder and the PATH. Modules that nobody ships could be put
/// there by anybody who can write to them. Holds for the whole process and cannot be undone.
inline void SearchSafely() noexcept {
  if (!SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_DEFAULT_DIRS)) SetDllDirectoryW(L"");
}

/// The level of this processor, as far as the system tells.
inline i32 ProcessorLevel() noexcept {
  constexpr struct {
    DWORD feature;  // PF_AVX2_INSTRUCTIONS_AVAILABLE and so on, which older headers lack
    i32 level;
  } kFeatures[] = {{40, PICTAVO_LEVEL_AVX2},
                   {38, 7},
                   {37, PICTAVO_LEVEL_SSE4_1},
                   {36, PICTAVO_LEVEL_SSSE3},
                   {13, 4}};
  for (const auto& known : kFeatures) {
    if (IsProcessorFeaturePresent(known.feature)) return known.level;
  }
  return PICTAVO_LEVEL_SSE2;  // every 64-bit processor's
}

/// A type for each method, since types can be compared.
template <auto method>
struct Named;

/// Whether a method is one of some.
template <auto method, auto... methods>
inline constexpr bool kIsAmong = (std::is_same_v<Named<method>, Named<methods>> || ...);

/// Whether a method's result is what its comment calls a status: 1 for success.
template <auto method>
inline constexpr bool kReturnsStatus = kIsAmong<
    method, &IPictavo6::BlendOverWithOpacityRamp, &IPictavo6::BlendOverPacked,
    &IPictavo6::BlendOverPitched, &IPictavo6::BlendPremultipliedWithOpacityRamp,
    &IPictavo6::BlendPremultipliedPacked, &IPictavo6::BlendPremultipliedPitched,
    &IPictavo6::CompositePremultipliedWithOpacityRamp, &IPictavo6::CompositePremultipliedPitched,
    &IPictavo6::CompositePremultipliedPacked, &IPictavo6::UnpremultiplyPitched,
    &IPictavo6::UnpremultiplyPacked, &IPictavo6::PremultiplyPitched, &IPictavo6::PremultiplyPacked,
    &IPictavo6::BlendOverWithOpacityRampAndAlpha, &IPictavo6::BlendOverWithOpacityRampKeepAlpha>;

/// Whether a method's result says that it did its work, or that there was nothing to do.
template <auto method>
constexpr bool Succeeded(u32 result) noexcept {
  return kReturnsStatus<method> ? result == 1 : static_cast<i32>(result) >= 0;
}

/// What a method answered.
struct Outcome {
  u32 result;      ///< as the method's comment says
  bool succeeded;  ///< Succeeded() of it
  /// Whether it succeeded.
  explicit operator bool() const noexcept { return succeeded; }
};

/// Calls a method and tells whether it succeeded, whatever kind of result it has:
/// Call<&IPictavo6::BlendOverPitched>(object, …).
template <auto method, typename... Arguments>
Outcome Call(IPictavo6* object, Arguments&&... arguments) noexcept {
  const u32 result = (object->*method)(std::forward<Arguments>(arguments)...);
  return {result, Succeeded<method>(result)};
}

/// A method's name in pictavo.h.
template <auto method>
constexpr const char* MethodName() noexcept {
#define PICTAVO_METHOD(slot, name, where, arguments) \
  if (std::is_same_v<Named<method>, Named<&IPictavo6::name>>) return #name;
#include "pictavo/pictavo_methods.inl"
  return "A reserved method";
}

/// What a result code says, in a few words of English; a static string.
constexpr const char* ResultText(u32 result) noexcept {
  switch (result) {
    case PICTAVO_S_OK:
      return "done";
    case PICTAVO_S_FALSE:
      return "nothing to do";
    case PICTAVO_E_NOTIMPL:
      return "not built";
    case PICTAVO_E_POINTER:
      return "a pointer is null";
    case PICTAVO_E_FAIL:
      return "a step failed";
    case PICTAVO_E_OUTOFMEMORY:
      return "memory is short";
    case PICTAVO_E_INVALIDARG:
      return "an argument cannot be used";
    default:
      return "a failure of the system's";
  }
}

/// The modules that this project makes for the library.
enum class Module {
  cpuDetect,       ///< CPUIstructionSetDetect.dll: the processor's level
  convertUtility,  ///< ConvertUtility.dll: slots 88 to 92
  memoryManager,   ///< VKTMemMgr.dll: buffers for OpenCL and slot 68
};
/// Their files, in that order.
inline constexpr const wchar_t* kModuleFiles[] = {L"CPUIstructionSetDetect.dll",
                                                  L"ConvertUtility.dll", L"VKTMemMgr.dll"};

/// Pictavo.dll, loaded, and one object of it. Gives the object back and unloads the DLL when it
/// goes out of scope; pointers to the object do not outlive that.
///
/// Every Library has an object of its own, with its own instruction-set level. The object may be
/// used from several threads as pictavo.h states; the Library itself, like any plain value, must
/// not be moved or destroyed while another thread uses it. Never make or destroy one inside
/// DllMain.
class Library {
 public:
  /// Loads the DLL, the modules that lie beside it, and makes an object. A module that does not is
  /// looked for as the system looks for DLLs.
  /// @param path full path of the DLL, or its plain name to look for it in the system's order, the
  /// program's own folder first
  explicit Library(const wchar_t* path = L"Pictavo.dll", LoadSettings settings = {}) noexcept
      : error_(Open(path, settings)) {}

  ~Library() {
    if (object_ != nullptr) release_(object_);
    if (module_ != nullptr) FreeLibrary(module_);
    for (const HMODULE sibling : siblings_) {
      if (sibling != nullptr) FreeLibrary(sibling);
    }
  }

  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  /// Takes the other's object and leaves it with none.
  Library(Library&& other) noexcept
      : module_(std::exchange(other.module_, nullptr)),
        object_(std::exchange(other.object_, nullptr)),
        release_(other.release_),
        systemError_(std::exchange(other.systemError_, ERROR_SUCCESS)),
        error_(std::exchange(other.error_, LoadError::none)) {
    std::swap(siblings_, other.siblings_);
  }

  /// Gives back its own object and takes the other's.
  Library& operator=(Library&& other) noexcept {
    Library taken(std::move(other));
    std::swap(module_, taken.module_);
    std::swap(object_, taken.object_);
    std::swap(release_, taken.release_);
    std::swap(systemError_, taken.systemError_);
    std::swap(error_, taken.error_);
    std::swap(siblings_, taken.siblings_);
    return *this;
  }

  /// True when there is an object.
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /// The object; null when there is none. It stays this Library's.
  IPictavo6* get() const noexcept { return object_; }

  /// The object's methods. There must be an object.
  IPictavo6* operator->() const noexcept { return object_; }

  /// Calls a method of the object's, as the function of that name. There must be an object.
  template <auto method, typename... Arguments>
  Outcome Call(Arguments&&... arguments) const noexcept {
    return pictavo::Call<method>(object_, std::forward<Arguments>(arguments)...);
  }

  /// Whether a module was found. Without one the library does what pictavo.h says.
  bool has(Module module) const noexcept { return siblings_[static_cast<int>(module)] != nullptr; }

  /// The loaded DLL, for example to ask for its path; null when it was not found. It stays this
  /// Library's.
  HMODULE module() const noexcept { return module_; }

  /// The loaded DLL's product version, from its resources.
  LibraryVersion version() const noexcept {
    // The block of name 1 and type 16 (RT_VERSION) has the fixed part of a version at byte 40: a
    // signature and, from byte 16 on, the product version.
    constexpr DWORD kFixed = 40, kSignature = 0xFEEF04BDu;
    const HRSRC place = module_ != nullptr
                            ? FindResourceW(module_, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(16))
                            : nullptr;
    if (place == nullptr || SizeofResource(module_, place) < kFixed + 24) return {};
    const HGLOBAL block = LoadResource(module_, place);
    DWORD fixed[6] = {};
    if (block != nullptr) {
      std::memcpy(fixed, static_cast<const char*>(LockResource(block)) + kFixed, sizeof fixed);
    }
    if (fixed[0] != kSignature) return {};
    return {HIWORD(fixed[4]), LOWORD(fixed[4]), HIWORD(fixed[5])};
  }

  /// Why there is no object.
  LoadError error() const noexcept { return error_; }

  /// The system's code for moduleNotFound and entryMissing, as GetLastError gave it, else 0.
  DWORD systemError() const noexcept { return systemError_; }

  /// One line of English for error(), without a full stop; a static string, empty for none.
  const char* errorText() const noexcept {
    switch (error_) {
      case LoadError::none:
        return "";
      case LoadError::moduleNotFound:
        return "Pictavo.dll cannot be loaded";
      case LoadError::entryMissing:
        return "Pictavo.dll is too old for this program";
      case LoadError::objectNull:
        return "Pictavo.dll could not create its object";
    }
    return "";
  }

 private:
  LoadError Open(const wchar_t* path, const LoadSettings& settings) noexcept {
    if (settings.searchSafely) SearchSafely();
    module_ = LoadLibraryW(path);
    if (module_ == nullptr) return Failed(LoadError::moduleNotFound);
    for (int i = 0; i < kModules; ++i) siblings_[i] = LoadSibling(kModuleFiles[i]);
    const auto create = Entry<decltype(&GetPictavo6)>("GetPictavo6");
    if (create == nullptr) return Failed(LoadError::entryMissing);
    release_ = Entry<decltype(&ReleasePictavo6)>("ReleasePictavo6");
    if (release_ == nullptr) return Failed(LoadError::entryMissing);
    object_ = create();
    if (object_ == nullptr) return LoadError::objectNull;
    if (settings.setLevel && object_->GetCPULevel() == PICTAVO_LEVEL_PORTABLE) {
      object_->SetCPULevel(ProcessorLevel());
    }
    return LoadError::none;
  }

  /// A module beside the DLL, or the one that the system finds. The library asks for it by its
  /// plain name, which finds what is loaded.
  HMODULE LoadSibling(const wchar_t* file) const noexcept {
    constexpr DWORD kLongest = 32768;                                 // the system's longest path
    wchar_t* const path = new (std::nothrow) wchar_t[kLongest + 32];  // and a name
    HMODULE sibling = nullptr;
    if (path != nullptr) {
      const DWORD length = GetModuleFileNameW(module_, path, kLongest);
      wchar_t* const slash = length > 0 && length < kLongest ? std::wcsrchr(path, L'\\') : nullptr;
      if (slash != nullptr) {
        std::wmemcpy(slash + 1, file, std::wcslen(file) + 1);
        sibling = LoadLibraryW(path);
      }
    }
    delete[] path;
    return sibling != nullptr ? sibling : LoadLibraryW(file);
  }

  LoadError Failed(LoadError error) noexcept {
    systemError_ = GetLastError();
    return error;
  }

  template <typename Fn>
  Fn Entry(const char* name) const noexcept {
    // Through void*: a cast between unrelated function types would warn.
    return reinterpret_cast<Fn>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }

  static constexpr int kModules = 3;

  HMODULE module_ = nullptr;
  HMODULE siblings_[kModules] = {};  // in the order of Module
  IPictavo6* object_ = nullptr;
  decltype(&ReleasePictavo6) release_ = nullptr;
  DWORD systemError_ = ERROR_SUCCESS;
  LoadError error_;  // last: Open sets the others
};

/// A picture of 32-bit pixels, bytes B, G, R, A, that somebody else owns. Use View and ConstView.
template <typename Byte>
class BasicView {
 public:
  /// @param data the top row's first byte
  /// @param pitch bytes from the start of one row to the start of the next
  BasicView(Byte* data, i32 width, i32 height, i32 pitch) noexcept
      : data_(data), width_(width), height_(height), pitch_(pitch) {}

  /// A view that may write serves where one that only reads is asked for.
  template <typename Other, typename = std::enable_if_t<std::is_convertible_v<Other*, Byte*>>>
  BasicView(const BasicView<Other>& other) noexcept
      : BasicView(other.data(), other.width(), other.height(), other.pitch()) {}

  Byte* data() const noexcept { return data_; }    ///< the top row's first byte
  i32 width() const noexcept { return width_; }    ///< pixels in a row
  i32 height() const noexcept { return height_; }  ///< rows
  i32 pitch() const noexcept { return pitch_; }    ///< bytes from row to row

  /// The four bytes of a pixel.
  Byte* At(i32 x, i32 y) const noexcept {
    return data_ + static_cast<ptrdiff_t>(pitch_) * y + static_cast<ptrdiff_t>(4) * x;
  }

  /// A rectangle of the picture, which must lie inside it.
  BasicView Part(i32 left, i32 top, i32 width, i32 height) const noexcept {
    return {At(left, top), width, height, pitch_};
  }

  /// The record for the methods that take one.
  ImageDesc Describe() const noexcept {
    return {{}, width_, height_, 0, const_cast<u8*>(data_), width_, height_, pitch_, 4};
  }

 private:
  Byte* data_;
  i32 width_, height_, pitch_;
};
using View = BasicView<u8>;             ///< a picture to write to
using ConstView = BasicView<const u8>;  ///< a picture to read

#if defined(__cpp_exceptions) || defined(_CPPUNWIND)

/// Why a Host could not be made, or a call was refused; what() is a line of English that names the
/// method.
class Error : public std::runtime_error {
 public:
  /// @param result the method's
  Error(const std::string& what, u32 result) : std::runtime_error(what), result_(result) {}
  /// The method's result; PICTAVO_E_FAIL where no method was called.
  u32 result() const noexcept { return result_; }

 private:
  u32 result_;
};

/// A picture of 32-bit pixels that it owns: rows packed, the top row first, clear at first. Copied
/// and moved like any value.
class Picture {
 public:
  Picture() = default;  ///< An empty one.

  /// @throws Error when a size is negative or too large for a pitch; std::bad_alloc
  Picture(i32 width, i32 height) : width_(width), height_(height) {
    if (width < 0 || height < 0 || width >= 1 << 29) {
      throw Error("Picture: the size cannot be used", PICTAVO_E_INVALIDARG);
    }
    bytes_.resize(size_t{4} * static_cast<size_t>(width) * static_cast<size_t>(height));
  }

  i32 width() const noexcept { return width_; }      ///< pixels in a row
  i32 height() const noexcept { return height_; }    ///< rows
  i32 pitch() const noexcept { return 4 * width_; }  ///< bytes from row to row

  u8* data() noexcept { return bytes_.data(); }              ///< the first byte
  const u8* data() const noexcept { return bytes_.data(); }  ///< the first byte
  size_t size() const noexcept { return bytes_.size(); }     ///< bytes of all rows

  /// The four bytes of a pixel.
  u8* At(i32 x, i32 y) noexcept { return View(*this).At(x, y); }
  /// The four bytes of a pixel.
  const u8* At(i32 x, i32 y) const noexcept { return ConstView(*this).At(x, y); }

  /// All of it, as long as it lives and is not moved or assigned to.
  operator View() noexcept { return {data(), width_, height_, pitch()}; }
  /// All of it, to read.
  operator ConstView() const noexcept { return {data(), width_, height_, pitch()}; }

  /// Takes its pixels from a stream of raw ones, such as `ffmpeg -f rawvideo -pix_fmt bgra` writes.
  /// @throws Error when the stream has fewer
  template <typename Stream>
  void Read(Stream&& stream) {
    if (!stream.read(reinterpret_cast<char*>(data()), static_cast<ptrdiff_t>(size()))) {
      throw Error("Picture: the pixels cannot be read", PICTAVO_E_FAIL);
    }
  }

  /// Writes its pixels to a stream as Read takes them.
  /// @throws Error when the stream does not take them
  template <typename Stream>
  void Write(Stream&& stream) const {
    if (!stream.write(reinterpret_cast<const char*>(data()), static_cast<ptrdiff_t>(size()))
             .flush()) {
      throw Error("Picture: the pixels cannot be written", PICTAVO_E_FAIL);
    }
  }

 private:
  i32 width_ = 0, height_ = 0;
  std::vector<u8> bytes_;
};

/// A Library whose calls take pictures and throw an Error when they are refused. What they do is
/// said in pictavo.h, under the names of the methods; `->` and Require lead to all the others.
/// Pictures that go together have one size unless a call makes one of another. Threads as Library.
class Host : public Library {
 public:
  /// As Library, which sets up the level and finds the modules.
  /// @throws Error when the DLL or its object cannot be had
  explicit Host(const wchar_t* path = L"Pictavo.dll", LoadSettings settings = {})
      : Library(path, settings) {
    if (!*this) throw Error(errorText(), PICTAVO_E_FAIL);
  }

  /// Calls any method that returns a result: Require<&IPictavo6::FindThreshold>(values, 256,
  /// &index).
  /// @return its result, a success
  /// @throws Error
  template <auto method, typename... Arguments>
  u32 Require(Arguments&&... arguments) const {
    const Outcome outcome = Call<method>(std::forward<Arguments>(arguments)...);
    if (outcome) return outcome.result;
    char code[16];
    std::snprintf(code, sizeof code, " (0x%08X)", static_cast<unsigned>(outcome.result));
    const char* const text = kReturnsStatus<method> ? "refused" : ResultText(outcome.result);
    throw Error(std::string(MethodName<method>()) + ": " + text + code, outcome.result);
  }

  /// @name In place
  /// @{

  /// Writes a colour, 0xAARRGGBB, over a picture.
  void Fill(View picture, u32 colour) const {
    const i32 all[] = {0, 0, picture.width(), picture.height()};
    InPlace<&IPictavo6::FillRectangle>(picture, all, colour);
  }
  /// Straight alpha to premultiplied.
  void Premultiply(View picture) const { InPlace<&IPictavo6::PremultiplyPitched>(picture); }
  /// Premultiplied alpha to straight.
  void Unpremultiply(View picture) const { InPlace<&IPictavo6::UnpremultiplyPitched>(picture); }
  /// The true Gaussian.
  void GaussianBlur(View picture, f32 sigma, u32 edges = PICTAVO_EDGES_REPLICATE) const {
    InPlace<&IPictavo6::GaussianBlur>(picture, sigma, sigma, edges);
  }
  /// Three box blurs, near a Gaussian.
  void GaussianBlurBox3(View picture, f32 radius) const {
    InPlace<&IPictavo6::GaussianBlurBox3>(picture, radius);
  }
  /// An unsharp mask.
  void SharpenPicture(View picture, f32 amount, f32 radius, f32 threshold = 0) const {
    InPlace<&IPictavo6::SharpenPicture>(picture, amount, threshold, radius);
  }
  /// Levels of the three colours, or of the channels given.
  void AdjustLevels(View picture, const LevelsParam& param, u32 channels = 7) const {
    InPlace<&IPictavo6::AdjustLevels>(picture, channels, &param);
  }
  /// Brightness, contrast, saturation and so on.
  void AdjustColor(View picture, const ColorParam& param) const {
    InPlace<&IPictavo6::AdjustColor>(picture, &param);
  }
  /// Levels, choke and feather of an alpha.
  void AdjustMatte(View picture, const MatteParam& param) const {
    ImageDesc image = picture.Describe();
    Require<&IPictavo6::AdjustMatte>(&image, &param);
  }
  /// Grows what lies `border` pixels inside a picture, by its edge pixels, up to the picture's
  /// edges.
  void ExtendBoundary(View picture, i32 border) const {
    ImageDesc image =
        picture.Part(border, border, picture.width() - 2 * border, picture.height() - 2 * border)
            .Describe();
    image.bufferWidth = picture.width();
    image.bufferHeight = picture.height();
    Require<&IPictavo6::ExtendBoundary>(&image, static_cast<u32>(border));
  }
  /// @}

  /// @name One picture over another
  /// @{

  /// Lays a picture of straight alpha over another.
  void BlendOver(View dst, ConstView src) const {
    Blend<&IPictavo6::BlendOverWithOpacityRamp>(dst, src, 0, 1.0f, 1.0f);
  }
  /// Lays one of straight alpha, at an opacity, over another or over a colour.
  void BlendOverWithOpacity(View dst, ConstView src, u8 opacity, u32 backdrop = 0) const {
    Blend<&IPictavo6::BlendOverWithOpacity>(dst, src, opacity, backdrop);
  }
  /// Lays a premultiplied picture over an opaque one.
  void BlendPremultiplied(View dst, ConstView src) const {
    Blend<&IPictavo6::BlendPremultipliedWithOpacityRamp>(dst, src, 0, 1.0f, 1.0f);
  }
  /// Lays a premultiplied picture over a premultiplied one.
  void CompositePremultiplied(View dst, ConstView src) const {
    Blend<&IPictavo6::CompositePremultipliedWithOpacityRamp>(dst, src, 0, 1.0f, 1.0f);
  }
  /// Mixes a layer of any size into a picture, from their upper left corners on.
  void BlendLayer(View dst, ConstView src, const BlendParam& param) const {
    ImageDesc to = dst.Describe();
    const ImageDesc from = src.Describe();
    Require<&IPictavo6::BlendLayer>(&to, &from, &param);
  }
  /// Multiplies a picture's alpha by a matte, PICTAVO_MATTE_.
  void ApplyMatte(View picture, ConstView matte, u32 mode = PICTAVO_MATTE_ALPHA) const {
    ImageDesc to = picture.Describe();
    const ImageDesc from = matte.Describe();
    Require<&IPictavo6::ApplyMatte>(&to, &from, mode);
  }
  /// A moment on the way from one picture to another.
  void ApplyTransition(View dst, ConstView from, ConstView to, const TransitionParam& param) const {
    ImageDesc target = dst.Describe();
    const ImageDesc first = from.Describe(), second = to.Describe();
    Require<&IPictavo6::ApplyTransition>(&target, &first, &second, &param);
  }
  /// @}

  /// @name From one picture to another
  /// @{

  /// Copies a picture.
  void Copy(ConstView src, View dst) const {
    const i32 all[] = {0, 0, src.width(), src.height()};
    RequireOneSize("Copy", src, dst);
    Map<&IPictavo6::CopyRectangle>(src, dst, all);
  }
  /// Makes a picture of another size by a filter; colours are weighted by alpha.
  void ResizeFiltered(ConstView src, View dst, u32 filter = PICTAVO_FILTER_CATMULL_ROM) const {
    const ResizeParam param = {filter, 1, {}};
    Map<&IPictavo6::ResizeFiltered>(src, dst, &param);
  }
  /// The same, into a new picture.
  Picture Resized(ConstView src, i32 width, i32 height,
                  u32 filter = PICTAVO_FILTER_CATMULL_ROM) const {
    Picture dst(width, height);
    ResizeFiltered(src, dst, filter);
    return dst;
  }
  /// Mirrors a picture: 1 left to right, 2 top to bottom.
  void FlipPicture(ConstView src, View dst, u32 mode) const {
    Map<&IPictavo6::FlipPicture>(src, dst, mode);
  }
  /// Turns and scales into a picture of any size.
  void RotatePicture(ConstView src, View dst, const RotateParam& param) const {
    Map<&IPictavo6::RotatePicture>(src, dst, &param);
  }
  /// Turns in space, into a picture of any size.
  void TiltPicture(ConstView src, View dst, const TiltParam& param) const {
    Map<&IPictavo6::TiltPicture>(src, dst, &param);
  }
  /// Swirls a disc.
  void SwirlPicture(ConstView src, View dst, const SwirlParam& param) const {
    Map<&IPictavo6::SwirlPicture>(src, dst, &param);
  }
  /// Filters by whole-number weights.
  void ConvolvePicture(ConstView src, View dst, const ConvolveParam& param) const {
    Map<&IPictavo6::ConvolvePicture>(src, dst, &param);
  }
  /// Maps colours by a table, such as pictavo_cube.h reads.
  void ApplyColorLut(ConstView src, View dst, const ColorLutParam& param) const {
    Map<&IPictavo6::ApplyColorLut>(src, dst, &param);
  }
  /// Makes what has a key's colour clear. Rows must be packed.
  void ApplyChromaKey(ConstView src, View dst, const ChromaKey& key) const {
    RequirePacked("ApplyChromaKey", src);
    RequirePacked("ApplyChromaKey", dst);
    Map<&IPictavo6::ApplyChromaKey>(src, dst, &key, 1, 1);
  }
  /// Smears along a motion into a new picture, as large as that needs. Rows must be packed.
  /// @param offset where the new picture's upper left corner lies from the source's: x, y
  Picture MotionBlurred(ConstView src, const MotionBlurParam& param,
                        std::array<i32, 2>* offset = nullptr) const {
    RequirePacked("MotionBlur", src);
    const ImageDesc from = src.Describe();
    ImageDesc to = {};
    std::array<i32, 2> moved = {};
    Require<&IPictavo6::GetMotionBlurDstSize>(&from, &to, &param, &moved[0], &moved[1]);
    Picture dst(to.width, to.height);
    Map<&IPictavo6::MotionBlur>(src, dst, &param);
    if (offset != nullptr) *offset = moved;
    return dst;
  }
  /// Makes pixels of a packed frame: FrameBytes of dst's size, in a FrameFormat.
  void ConvertFrameToBGRA(const u8* frame, View dst, u32 format) const {
    Require<&IPictavo6::ConvertFrameToBGRA>(frame, dst.width(), dst.height(), dst.data(),
                                            dst.pitch(), format);
  }
  /// The way back.
  void ConvertBGRAToFrame(ConstView src, u8* frame, u32 format) const {
    Require<&IPictavo6::ConvertBGRAToFrame>(src.data(), src.width(), src.height(), src.pitch(),
                                            frame, format);
  }
  /// @}

  /// @name Measures
  /// @{

  /// PICTAVO_MEASURE_, of a channel, 0 … 3 for blue, green, red, alpha, or of luma, -1.
  f32 MeasurePicture(ConstView picture, i32 channel, u32 measure) const {
    f32 result = 0;
    InPlace<&IPictavo6::MeasurePicture>(picture, channel, measure, &result);
    return result;
  }
  /// How often each byte stands in a channel: 0 blue, 1 green, 2 red, 3 alpha.
  std::array<u32, 256> ComputeHistogram(ConstView picture, u32 channel) const {
    if (picture.width() < 0 || picture.height() < 0 || picture.pitch() < 0) {
      throw Error("ComputeHistogram: sizes and pitches below 0 are none", PICTAVO_E_INVALIDARG);
    }
    std::array<u32, 256> bins = {};
    Require<&IPictavo6::ComputeHistogram>(
        picture.data(), static_cast<u32>(picture.width()), static_cast<u32>(picture.height()),
        static_cast<u32>(picture.pitch()), bins.data(), 256, channel);
    return bins;
  }
  /// @}

 private:
  template <auto method, typename Byte, typename... Arguments>
  void InPlace(BasicView<Byte> picture, Arguments... arguments) const {
    Require<method>(picture.data(), picture.width(), picture.height(), picture.pitch(),
                    arguments...);
  }

  template <auto method, typename... Arguments>
  void Blend(View dst, ConstView src, Arguments... arguments) const {
    RequireOneSize(MethodName<method>(), dst, src);
    Require<method>(dst.data(), src.data(), dst.width(), dst.height(), dst.pitch(), src.pitch(),
                    arguments...);
  }

  template <auto method, typename... Arguments>
  void Map(ConstView src, View dst, Arguments... arguments) const {
    const ImageDesc from = src.Describe();
    ImageDesc to = dst.Describe();
    Require<method>(&from, &to, arguments...);
  }

  static void RequireOneSize(const char* method, ConstView one, ConstView other) {
    if (one.width() == other.width() && one.height() == other.height()) return;
    throw Error(std::string(method) + ": the pictures differ in size", PICTAVO_E_INVALIDARG);
  }

  static void RequirePacked(const char* method, ConstView picture) {
    if (picture.pitch() == 4 * picture.width()) return;
    throw Error(std::string(method) + ": rows must be packed", PICTAVO_E_INVALIDARG);
  }
};

#endif  // exceptions

}  // namespace pictavo

#endif  // PICTAVO_PICTAVO_HOST_H_

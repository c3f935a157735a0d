// Every method of the list that works on the processor, in the real DLL: the code of each refusal,
// and hostile geometry, numbers and null pointers, as a host with a fault would pass them. A call
// does what the operation does that stands behind it, ends in a documented code with nothing
// written, or writes inside the rows that it was given. Memory that is not there is the host's to
// answer for: calls that describe more rows than exist are left out.
//
// What an argument is, its name and type say: pictures have a first pixel (dst, buffer, image; src,
// pixels), or a record, and a width, height and pitch, perhaps of their own (dstWidth).
#include <gtest/gtest.h>
#include <windows.h>
#include <xmmintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <deque>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "chromakey/chroma_key_fx.h"
#include "convert_utility/colour.h"
#include "cpu/operations.h"
#include "frame/kernel_table.h"
#include "module_folder.h"

namespace pictavo::test {
namespace {

/// The operations behind the methods, with the methods' arguments.
namespace operations {

using namespace chromakey;
using namespace colour;
using namespace cpu;

u32 ConvertBGRAToYUVAPortable(const u8* src, u32 width, i32 height, i32 srcPitch, u8* dst,
                              i32 dstPitch) {
  return ConvertBGRAToYUVA(0, src, width, height, srcPitch, dst, dstPitch);
}
void ConvertRGBToYUVPixels(i32 level, const u8* pixels, i32* y, i32* u, i32* v) {
  (level < 3 ? ConvertRGBToYUVPixelsPortable : ConvertRGBToYUV4Pixels)(pixels, y, u, v);
}
u32 DrawRectOutline(u32* buffer, i32, i32, u32 pitch, const i32* rect, u32 colour) {
  return cpu::DrawRectOutline(buffer, pitch, rect, colour);
}
template <u32 first, u32 modes>
u32 Mix(i32 level, ImageDesc* dst, const ImageDesc* src, const BlendParam* param) {
  KernelTable table;
  table.Fill(level, kLayerKernels);
  return table.Mix(first, modes, dst, src, param);
}
constexpr auto BlendLayer = Mix<0, 24>, BlendLayerSubpixel = Mix<12, 12>;
u32 FillSolidColor(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, u8 blue, u8 green,
                   u8 red, u8 alpha) {
  const u8 bytes[] = {blue, green, red, alpha};
  return cpu::FillSolidColor(level, buffer, width, height, pitch, std::bit_cast<u32>(bytes));
}

}  // namespace operations

using Word = std::uintptr_t;
using Words = std::array<Word, 11>;

/// A picture's record, another record, a rectangle, pixels or numbers that are read, or written.
enum class Kind { kInteger, kUnsigned, kReal, kImage, kParameters, kRect, kSource, kTarget };

/// A record of parameters that a call does something with, and how many of its first words are
/// numbers.
struct Good {
  const void* record;
  size_t size, numbers;
};
template <typename T>
Good Of(const T& record, size_t numbers = sizeof(T) / 4) {
  return {&record, sizeof(T), numbers};
}
Good GoodOf(const BlendParam*) {
  static constexpr BlendParam good = {0, 200, 0, 0.5f, 0.5f};
  return Of(good);
}
Good GoodOf(const MotionBlurParam*) {
  static constexpr MotionBlurParam good = {1, 30, 5, 2, 1, 0, 0};
  return Of(good);
}
Good GoodOf(const RotateParam*) {
  static constexpr RotateParam good = {30, 1.5f, 3, 2, 4, 5, 1};
  return Of(good);
}
Good GoodOf(const SwirlParam*) {
  static constexpr SwirlParam good = {4, 3, 6, 90, 1};
  return Of(good);
}
Good GoodOf(const TiltParam*) {
  static constexpr TiltParam good = {4, 3, 30, 20, 10, 60, 1};
  return Of(good);
}
Good GoodOf(const MatteParam*) {
  static constexpr MatteParam good = {0.1f, 0.9f, 1, 1};
  return Of(good);
}
Good GoodOf(const ChromaKey*) {
  static constexpr ChromaKey good = {0, 255, 0, 0, 30, 20};
  return Of(good);
}
Good GoodOf(const LevelsParam*) {
  static constexpr LevelsParam good = {0.1f, 0.9f, 2, 0, 1};
  return Of(good);
}
Good GoodOf(const ColorParam*) {
  static constexpr ColorParam good = {0.1f, 1.5f, 0.5f, 30, 0.2f, -0.2f};
  return Of(good);
}
Good GoodOf(const ColorLutParam*) {
  static constexpr u16 entries[24 * 24 * 24 * 4] = {};  // as many as a size among kWords takes
  static constexpr ColorLutParam good = {2, 256, entries};
  return Of(good, 2);
}

Good GoodOf(const TransitionParam*) {
  static constexpr TransitionParam good = {PICTAVO_TRANSITION_WIPE, 0.5f, 0.25f, 30, 0xFF102030};
  return Of(good);
}
Good GoodOf(const ConvolveParam*) {
  static constexpr ConvolveParam good = {3, 2, 1, 0, {1, 2, 1, 0, 0, 0, -1, 2, -1}};
  return Of(good);
}

Good GoodOf(const ResizeParam*) {
  static constexpr ResizeParam good = {PICTAVO_FILTER_LANCZOS, 1, {}};
  return Of(good);
}

struct Argument {
  std::string name;
  Kind kind;
  bool constant, real;  // what a pointer points to
  Good good = {};
  size_t index = 0;

  bool Is(std::string_view end) const { return name.ends_with(end); }
};

template <typename T>
Argument ArgumentOf() {
  using To = std::remove_cv_t<std::remove_pointer_t<T>>;
  constexpr bool constant = std::is_const_v<std::remove_pointer_t<T>>;
  Argument argument = {"", constant ? Kind::kSource : Kind::kTarget, constant,
                       std::is_same_v<To, f32>};
  if constexpr (std::is_same_v<T, f32>) {
    argument.kind = Kind::kReal;
  } else if constexpr (!std::is_pointer_v<T>) {
    argument.kind = std::is_signed_v<T> ? Kind::kInteger : Kind::kUnsigned;
  } else if constexpr (std::is_same_v<To, ImageDesc>) {
    argument.kind = Kind::kImage;
  } else if constexpr (constant && std::is_class_v<To>) {
    argument.kind = Kind::kParameters;
    argument.good = GoodOf(T{});
  }
  return argument;
}

template <typename T>
T As(Word word) {
  if constexpr (std::is_pointer_v<T>)
    return reinterpret_cast<T>(word);
  else if constexpr (std::is_same_v<T, f32>)
    return std::bit_cast<f32>(static_cast<u32>(word));
  else
    return static_cast<T>(word);
}

/// What the type of a method tells.
template <auto method>
struct Typed;

template <typename R, typename Owner, typename... A, R (Owner::*method)(A...) noexcept>
struct Typed<method> {
  static std::vector<Argument> Arguments(std::string names) {  // in brackets
    std::vector<Argument> arguments = {ArgumentOf<A>()...};
    std::replace_if(
        names.begin(), names.end(), [](char c) { return !std::isalnum(c); }, ' ');
    std::istringstream in(names);
    for (Argument& argument : arguments) {
      in >> argument.name;
      if (argument.name == "rect") argument.kind = Kind::kRect;
      argument.index = static_cast<size_t>(&argument - arguments.data());
    }
    return arguments;
  }

  template <typename Call, size_t... i>
  static u32 Run(const Call& call, const Words& words, std::index_sequence<i...>) {
    if constexpr (std::is_void_v<R>)
      return call(As<A>(words[i])...), PICTAVO_S_OK;
    else
      return call(As<A>(words[i])...);
  }

  static u32 Through(IPictavo6* object, const Words& words) {
    const auto call = [=](A... a) { return (object->*method)(a...); };
    return Run(call, words, std::index_sequence_for<A...>());
  }

  template <auto operation>
  static u32 Beside(i32 level, const Words& words) {
    const auto call = [=](A... a) {
      if constexpr (std::is_invocable_v<decltype(operation), i32, A...>)
        return operation(level, a...);
      else
        return operation(a...);
    };
    return Run(call, words, std::index_sequence_for<A...>());
  }
};

struct Method {
  u32 slot;
  const char* name;
  std::vector<Argument> arguments;
  u32 (*through)(IPictavo6* object, const Words& words);
  u32 (*beside)(i32 level, const Words& words);

  const Argument* Find(std::string_view wanted) const {
    const auto found = std::find_if(arguments.begin(), arguments.end(),
                                    [=](const Argument& a) { return a.name == wanted; });
    return found == arguments.end() ? nullptr : &*found;
  }
};

const std::vector<Method> kMethods = {
#define ON_PROCESSOR(slot, name, arguments)                                                       \
  {slot, #name, Typed<&IPictavo6::name>::Arguments(#arguments), Typed<&IPictavo6::name>::Through, \
   Typed<&IPictavo6::name>::Beside<operations::name>},
#define METHOD_CPU ON_PROCESSOR
#define METHOD_MODULE ON_PROCESSOR
#define METHOD_OBJECT(slot, name, arguments)
#define METHOD_SURFACE(slot, name, arguments)
#define METHOD_OPENCL(slot, name, arguments)
#define METHOD_D3D11(slot, name, arguments)
#define PICTAVO_METHOD(slot, name, where, arguments) METHOD_##where(slot, name, arguments)
#include "pictavo/pictavo_methods.inl"
};

constexpr i32 kWidth = 16, kHeight = 12, kPitch = 64;
constexpr i64 kAround = 4096;  // bytes on either side of a picture
constexpr f32 kReals[] = {1, 0, -1, 0.5f, 3, 1e38f, -1e38f, 1e-42f, NAN, INFINITY, -INFINITY};
constexpr i32 kIntegers[] = {1, 0, -1, 2, 12, 24, 255, 256, INT32_MAX, INT32_MIN};
constexpr i32 kSizes[] = {0, 1, 3, -1, INT32_MIN, INT32_MAX};
constexpr i32 kRectangles[6][4] = {{1, 1, 9, 8},  {9, 1, 1, 8},         {1, 8, 9, 1},
                                   {-1, 0, 5, 5}, {0, INT32_MIN, 5, 5}, {5, 5, 5, 5}};
constexpr f32 kRealRectangles[6][4] = {{0.5f, 1.25f, 9.5f, 8}, {9, 1, 1, 8},     {1, 8, NAN, 9},
                                       {-1e38f, 0, 1e38f, 5},  {-90, 0, -80, 5}, {5, 5, 5, 5}};

/// Numbers for each word of a record; those that are not, as singles.
constexpr u32 kWords[] = {0,
                          1,
                          2,
                          24,
                          256,
                          0x7FFFFFFF,
                          0x80000000,
                          0xFFFFFFFF,
                          0x3F000000,
                          0xBF800000,
                          0x7E967699 /* 1e38 */,
                          0x7FC00000,
                          0x7F800000};

/// All that methods may read or write. Of the pictures' records, the first is good and the others
/// differ from it in one field.
struct Memory {
  struct Zone {
    u8 before[kAround], picture[kPitch * kHeight], after[kAround];
  } dst, src;
  u32 numbers[16 * 11 + 256];
  ImageDesc dstImages[44], srcImages[44], bordered[44];
};
Memory memory;

void Vary(ImageDesc (&images)[44], const ImageDesc& good) {
  std::fill(std::begin(images), std::end(images), good);
  images[1].data = nullptr;
  ImageDesc* next = images + 2;
  for (const auto field : {&ImageDesc::width, &ImageDesc::height, &ImageDesc::bytesPerPixel,
                           &ImageDesc::bufferWidth, &ImageDesc::bufferHeight, &ImageDesc::pitch})
    for (const i32 size : kSizes) next++->*field = size;
  for (const i32 size : kSizes) next++->memoryKind = static_cast<u32>(size);
}

void MakeMemory() {
  std::memset(&memory, 0x55, sizeof(memory));
  u8* const bytes[] = {memory.dst.before, memory.src.before};
  for (size_t i = 0; i < sizeof(Memory::Zone); ++i) {
    bytes[0][i] = static_cast<u8>(i * 7 + i / 255);
    bytes[1][i] = static_cast<u8>(i * 13 + i / 251);
  }
  ImageDesc image = {{}, kWidth, kHeight, 0, memory.dst.picture, kWidth, kHeight, kPitch, 4};
  Vary(memory.dstImages, image);
  image.data = memory.src.picture;
  Vary(memory.srcImages, image);
  image = {{}, kWidth, kHeight, 0, memory.dst.picture + 3 * (kPitch + 4), 10, 6, kPitch, 4};
  Vary(memory.bordered, image);
}

struct alignas(void*) Record : std::array<u32, 48> {};

/// Some records, and null.
template <size_t count>
std::vector<Word> Each(const ImageDesc (&images)[count]) {
  std::vector<Word> words;
  for (const ImageDesc& image : images) words.push_back(reinterpret_cast<Word>(&image));
  words.push_back(0);
  return words;
}

/// Records of parameters that differ from the good one in a number, and null.
std::vector<Word> Each(const Good& good) {
  static std::map<const void*, std::vector<Record>> made;
  std::vector<Record>& records = made[good.record];
  if (records.empty()) {
    records.resize(1 + good.numbers * std::size(kWords));
    Record* next = records.data();
    for (Record& record : records) std::memcpy(&record, good.record, good.size);
    for (size_t i = 0; i < good.numbers; ++i)
      for (const u32 word : kWords) (*++next)[i] = word;
  }
  std::vector<Word> words;
  for (const Record& record : records) words.push_back(reinterpret_cast<Word>(&record));
  words.push_back(0);
  return words;
}

std::vector<Word> Integers(std::vector<i32> integers) {
  return {integers.begin(), integers.end()};  // their signs go on
}

/// What an argument is tried with, a good value first.
std::vector<Word> Values(const Argument& a) {
  switch (a.kind) {
    case Kind::kReal: {
      std::vector<Word> words;
      for (const f32 number : kReals) words.push_back(std::bit_cast<u32>(number));
      return words;
    }
    case Kind::kSource:
      return {reinterpret_cast<Word>(memory.src.picture), 0};
    case Kind::kTarget: {
      const bool picture = a.Is("dst") || a.Is("buffer") || a.Is("image") || a.Is("pixels");
      return {reinterpret_cast<Word>(picture ? static_cast<void*>(memory.dst.picture)
                                             : &memory.numbers[16 * a.index]),
              0};
    }
    case Kind::kImage:
      return Each(a.Is("image") ? memory.bordered
                  : a.constant  ? memory.srcImages
                                : memory.dstImages);
    case Kind::kParameters:
      return Each(a.good);
    case Kind::kRect: {
      std::vector<Word> words;
      for (size_t i = 0; i < std::size(kRectangles); ++i)
        words.push_back(a.real ? reinterpret_cast<Word>(kRealRectangles[i])
                               : reinterpret_cast<Word>(kRectangles[i]));
      words.push_back(0);
      return words;
    }
    default:
      break;
  }
  if (a.Is("idth")) return Integers({kWidth, 0, 1, -1, INT32_MIN, INT32_MAX});
  if (a.Is("eight")) return Integers({kHeight, 0, 1, -1, INT32_MIN, INT32_MAX});
  if (a.Is("itch"))
    return Integers({kPitch, 0, 1, kPitch - 1, kPitch + 1, -kPitch, INT32_MIN, INT32_MAX});
  if (a.Is("keyCount")) return Integers({1, 0, -1, INT32_MIN});
  if (a.Is("binCount")) return Integers({256, 1, 0, -1, INT32_MIN});
  if (a.Is("model") || a.Is("matrix")) return Integers({0, 1, 2, 3, -1});
  return Integers({std::begin(kIntegers), std::end(kIntegers)});
}

/// The bytes that a geometry describes, from the first byte of the top row.
struct Span {
  i64 from = 0, to = 0, rows = 0;
  /// Rows that share bytes may be more than anyone can wait for.
  bool IsThere() const {
    return rows <= 4096 && from >= -kAround && to <= kAround + kPitch * kHeight;
  }
};

Span SpanOf(i64 width, i64 height, i64 pitch) {
  if (width < 1 || height < 1) return {};
  const i64 last = (height - 1) * pitch;
  return {std::min<i64>(0, last), std::max<i64>(0, last) + 4 * width, height};
}

/// A method with its arguments.
struct Call {
  const Method& method;
  Words words = {};

  /// With the first value of each argument, a good one.
  explicit Call(const Method& called) : method(called) {
    for (const Argument& a : method.arguments) WordOf(a) = Values(a)[0];
  }

  Word& WordOf(const Argument& a) { return words[a.index]; }
  Word WordOf(const Argument& a) const { return const_cast<Call*>(this)->WordOf(a); }

  /// The number of a picture (dst or src) with the name in capitals, or that of both pictures.
  i64 Number(const std::string& picture, std::string name, i64 otherwise) const {
    const Argument* a = method.Find(picture + name);
    name[0] = static_cast<char>(std::tolower(name[0]));
    if (a == nullptr) a = method.Find(name);
    if (a == nullptr) return otherwise;
    const Word word = WordOf(*a);
    return a->kind == Kind::kUnsigned ? i64{static_cast<u32>(word)} : i64{static_cast<i32>(word)};
  }

  bool HasNull() const {
    return std::any_of(method.arguments.begin(), method.arguments.end(), [&](const Argument& a) {
      return (a.kind == Kind::kSource || a.kind == Kind::kTarget || a.kind == Kind::kImage) &&
             WordOf(a) == 0;
    });
  }

  /// The bytes of a record's picture, also where a method takes rows as packed whatever the pitch.
  Span Picture(const ImageDesc& image) const {
    // A motion blur that does not move copies to all the bytes that there are.
    const i64 room = method.slot == 63 ? std::max<i64>(0, i64{image.pitch} * image.height) : 0;
    const Span packed = SpanOf(image.width, image.height, 4 * i64{image.width});
    const Span pitched = SpanOf(image.width, image.height, image.pitch);
    return {std::min(packed.from, pitched.from), std::max({packed.to, pitched.to, room}),
            packed.rows};
  }

  /// The bytes of a picture (dst or src) that arguments describe.
  Span Picture(const std::string& picture) const {
    const Argument* const count = method.Find("count");
    if (count != nullptr && count->kind <= Kind::kUnsigned)
      return SpanOf(Number("", "count", 0), 1, 0);
    const i64 width = Number(picture, "Width", kWidth), height = Number(picture, "Height", kHeight);
    i64 pitch = Number(picture, "Pitch", 4 * width);  // without one, rows follow each other
    if (method.slot == 46) pitch = (width + (pitch - 4 * width) / 4) * 4;
    if (method.slot == 48) return SpanOf(kWidth, kHeight, pitch);  // goes by its rectangle
    return SpanOf(width, height, pitch);
  }

  /// The bytes of all pictures, the destination's first.
  std::vector<Span> Pictures() const {
    std::vector<Span> spans;
    for (const Argument& a : method.arguments) {
      if (a.kind != Kind::kImage) continue;
      const Span span = Picture(*reinterpret_cast<const ImageDesc*>(WordOf(a)));
      spans.insert(a.constant ? spans.end() : spans.begin(), span);
    }
    if (spans.empty()) spans = {Picture("dst"), Picture("src")};
    return spans;
  }

  /// What may be written of the destination.
  Span Target() const {
    if (HasNull()) return {};
    return method.slot == 71 || method.slot == 107 ? Span{0, kPitch * kHeight} : Pictures()[0];
  }

  /// Whether the memory that it describes exists, or none does.
  bool IsHonest() const {
    if (HasNull()) return true;
    const std::vector<Span> spans = Pictures();
    return std::all_of(spans.begin(), spans.end(), [](const Span& s) { return s.IsThere(); });
  }

  std::string Text() const {
    std::string text = std::to_string(method.slot) + " " + method.name;
    for (const Argument& a : method.arguments)
      text += " " + a.name + "=" + std::to_string(static_cast<i64>(WordOf(a)));
    return text;
  }
};

bool Same(const auto& a, const auto& b) { return std::memcmp(&a, &b, sizeof(a)) == 0; }

std::string running;  // for a call that does not come back

LONG CALLBACK TellOfCrash(EXCEPTION_POINTERS* exception) {
  if (exception->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION) {
    std::fprintf(stderr, "crashed: %s\n", running.c_str());
    std::fflush(stderr);
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

/// A floating-point state that hosts may leave behind, another one each time: rounding up, down or
/// towards zero, tiny numbers lost, exceptions, and no room in the x87 unit.
class OddFloatingPoint {
 public:
  OddFloatingPoint() {
    static size_t next = 0;
    constexpr unsigned kStates[] = {0x0000, 0x5F80, 0x3F80, 0xFFC0, 0x2000};
    _mm_setcsr(odd_ = kStates[next++ % std::size(kStates)]);
    for (int i = 0; i < 8; ++i) __asm__ volatile("fldz");
  }
  ~OddFloatingPoint() {
    const unsigned after = _mm_getcsr();
    _mm_setcsr(before_);
    __asm__ volatile("fninit");
    EXPECT_EQ(after, odd_) << "the host's state was lost";
  }

 private:
  const unsigned before_ = _mm_getcsr();
  unsigned odd_;
};

class Slots : public testing::Test {
 protected:
  Slots() {
    AddVectoredExceptionHandler(1, TellOfCrash);
    MakeMemory();
  }
  ~Slots() override { module_.Entry<int32_t(IPictavo6*)>("ReleasePictavo6")(object_); }

  struct Outcome {
    u32 result;
    bool wrote;
    Memory after;
  };
  /// Leaves the memory as it was.
  Outcome Run(const Call& call) {
    running = call.Text();
    const Memory before = memory;
    const u32 result = [&] {
      const OddFloatingPoint state;
      return call.method.through(object_, call.words);
    }();
    const Memory after = std::exchange(memory, before);
    return {result, !Same(after, before), after};
  }

  /// Tries a call beside its operation.
  void Try(const Call& call) {
    const auto [result, wrote, after] = Run(call);
    const Memory before = memory;
    ASSERT_EQ(result, call.method.beside(object_->GetCPULevel(), call.words)) << running;
    ASSERT_TRUE(Same(after, memory)) << running << " is not its operation";
    memory = before;

    ASSERT_TRUE(kCodes.contains(result)) << running << " = " << result;
    Span span = call.Target();
    if (result > 1 || !span.IsThere()) span = {};
    Memory elsewhere = before;  // but for what may be written
    std::copy(after.dst.picture + span.from, after.dst.picture + span.to,
              elsewhere.dst.picture + span.from);
    ASSERT_TRUE(Same(after.dst, elsewhere.dst) && Same(after.src, before.src))
        << running << " = " << result << " wrote elsewhere";
  }

  const std::set<u32> kCodes = {PICTAVO_S_OK,   PICTAVO_S_FALSE,       PICTAVO_E_POINTER,
                                PICTAVO_E_FAIL, PICTAVO_E_OUTOFMEMORY, PICTAVO_E_INVALIDARG};
  const RealModule module_{L"Pictavo.dll"};
  IPictavo6* const object_ = module_.Entry<IPictavo6*()>("GetPictavo6")();
  const i32 detected_ = object_->GetCPULevel();
};

TEST_F(Slots, AreTheirOperationsAndStayInTheirRows) {
  size_t calls = 0;
  for (const i32 level : {INT32_MIN, 0, 3, 5, 6, detected_, INT32_MAX}) {
    if (level > detected_ && detected_ < 8) continue;
    object_->SetCPULevel(level);
    for (const Method& method : kMethods) {
      // Every pair of arguments, each at every value, the others good.
      for (const Argument& a : method.arguments) {
        for (const Argument& b : method.arguments) {
          if (b.index >= a.index) break;
          for (const Word first : Values(a)) {
            for (const Word second : Values(b)) {
              Call call(method);
              call.WordOf(a) = first;
              call.WordOf(b) = second;
              if (!call.IsHonest()) continue;
              Try(call);
              if (HasFatalFailure()) return;
              ++calls;
            }
          }
        }
      }
    }
  }
  EXPECT_GT(calls, 100000u);
}

struct Refusal {
  const char* slots;
  const char* changes;  // of good calls, apart by |: arguments, or fields of records
  u32 result;
};
/// What the tests of the kernels do not ask the operations themselves.
const Refusal kRefusals[] = {
    {"14", "y=0|u=0|v=0", PICTAVO_S_OK},
    {"15", "r=0|g=0|b=0", PICTAVO_S_OK},
    {"34 35", "pixels=0|y=0|u=0|v=0", PICTAVO_S_OK},
    {"48", "rect=0", PICTAVO_E_FAIL},
    {"48", "rect=1|rect=2|rect=3|rect=4", PICTAVO_E_INVALIDARG},
    {"64", "src=0|dst=0|param=0|offsetX=0|offsetY=0", PICTAVO_E_POINTER},
    {"71 107", "border=4|border=2147483648|border=4294967295", PICTAVO_E_INVALIDARG},
    {"73 74",
     "dst=0 param.opacity=0|src=0 param.opacity=0|param=0|dst.data=0 param.opacity=0|"
     "src.data=0 param.mode=99",
     PICTAVO_E_POINTER},
    {"73 74", "param.opacity=0 param.mode=99|param.opacity=0 dst.memoryKind=3", PICTAVO_S_OK},
    {"73 74",
     "dst.memoryKind=3|src.memoryKind=3|param.mode=20|param.mode=24|param.mode=4294967284|"
     "param.mode=4294967295|param.opacity=256",
     PICTAVO_E_INVALIDARG},
    {"74", "param.mode=8|param.mode=12|param.mode=19|param.mode=23", PICTAVO_E_INVALIDARG},
    {"86", "keys=0 keyCount=0", PICTAVO_E_POINTER},
    {"87", "width=536870911 height=2147483647 pitch=2147483647 radius=3", PICTAVO_E_OUTOFMEMORY},
    {"90 92", "first=0|second=0|third=0|third=0 model=9", PICTAVO_E_POINTER},
    {"91 95", "r=0|g=0|b=0", PICTAVO_E_POINTER},
    {"92", "pixel=0", PICTAVO_E_POINTER},
    {"90 91 92", "model=3|matrix=3|range=2|model=1 matrix=1|model=2 range=0", PICTAVO_E_INVALIDARG},
};

/// The fields of records that changes name, and where they lie.
const std::map<std::string, size_t> kFields = {{"mode", offsetof(BlendParam, mode)},
                                               {"opacity", offsetof(BlendParam, opacity)},
                                               {"memoryKind", offsetof(ImageDesc, memoryKind)},
                                               {"data", offsetof(ImageDesc, data)}};

/// Applies one change, as kRefusals has it. Rectangles are numbered from 1.
void Change(Call* call, const std::string& change) {
  const std::string target = change.substr(0, change.find('='));
  const auto value = static_cast<Word>(std::stoll(change.substr(target.size() + 1)));
  const size_t dot = target.find('.');
  const Argument* const a = call->method.Find(target.substr(0, dot));
  ASSERT_NE(a, nullptr) << "slot " << call->method.slot << " has no " << target;
  Word& word = call->WordOf(*a);
  if (dot != std::string::npos) {
    if (a->kind == Kind::kParameters) {
      static std::deque<Record> changed;  // the good ones are others', too
      word = reinterpret_cast<Word>(&changed.emplace_back(*reinterpret_cast<Record*>(word)));
    }
    const std::string field = target.substr(dot + 1);
    std::memcpy(reinterpret_cast<u8*>(word) + kFields.at(field), &value, field == "data" ? 8 : 4);
  } else if (a->kind == Kind::kRect && value > 0) {
    word = Values(*a)[value];
  } else {
    word = a->kind == Kind::kReal ? std::bit_cast<u32>(static_cast<f32>(value)) : value;
  }
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::istringstream in(text);
  std::vector<std::string> parts;
  for (std::string part; std::getline(in, part, separator);) parts.push_back(part);
  return parts;
}

TEST_F(Slots, RefuseWithTheirCodesAndWriteNothing) {
  for (const auto& [slots, changes, result] : kRefusals) {
    for (const std::string& slot : Split(slots, ' ')) {
      const Call good(*std::find_if(kMethods.begin(), kMethods.end(), [&](const Method& m) {
        return std::to_string(m.slot) == slot;
      }));
      EXPECT_TRUE(Run(good).result != result || Run(good).wrote) << "a good call of slot " << slot;
      for (const std::string& alternative : Split(changes, '|')) {
        for (const i32 level : {0, detected_}) {
          object_->SetCPULevel(level);
          Call call = good;
          for (const std::string& change : Split(alternative, ' ')) Change(&call, change);
          const Outcome outcome = Run(call);
          EXPECT_TRUE(outcome.result == result && !outcome.wrote)
              << running << " = " << outcome.result << " with " << alternative;
          MakeMemory();
        }
      }
    }
  }
}

TEST_F(Slots, WithoutTheirModuleFailAndThenFindIt) {
  for (const bool there : {false, true}) {
    FindModulesIn(there ? kRealModules : kNoModules);
    for (const Method& method : kMethods) {
      if (method.slot < 88 || method.slot > 92) continue;
      const Outcome outcome = Run(Call(method));
      EXPECT_EQ(outcome.result, there ? PICTAVO_S_OK : PICTAVO_E_FAIL) << method.name;
      EXPECT_EQ(outcome.wrote, there) << method.name;
    }
  }
}

}  // namespace
}  // namespace pictavo::test

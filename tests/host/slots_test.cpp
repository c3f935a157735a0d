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

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
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

enum class Kind {
  kInteger,
  kUnsigned,
  kReal,
  kSource,
  kTarget,
  kRecord,
  kLayer,
  kMotion,
  kKeys,
  kRect
};

struct Argument {
  std::string name;
  Kind kind;
  size_t index = 0;

  bool Is(std::string_view end) const { return name.ends_with(end); }
};

template <typename T>
constexpr Kind KindOf() {
  using To = std::remove_cv_t<std::remove_pointer_t<T>>;
  constexpr bool constant = std::is_const_v<std::remove_pointer_t<T>>;
  if (std::is_same_v<T, f32>) return Kind::kReal;
  if (!std::is_pointer_v<T>) return std::is_signed_v<T> ? Kind::kInteger : Kind::kUnsigned;
  if (std::is_same_v<To, ImageDesc>) return Kind::kRecord;
  if (std::is_same_v<To, BlendParam>) return Kind::kLayer;
  if (std::is_same_v<To, MotionBlurParam>) return Kind::kMotion;
  if (std::is_same_v<To, ChromaKey>) return Kind::kKeys;
  if (std::is_same_v<To, i32> && constant) return Kind::kRect;
  return constant ? Kind::kSource : Kind::kTarget;
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
    std::vector<Argument> arguments = {{"", KindOf<A>()}...};
    std::replace_if(
        names.begin(), names.end(), [](char c) { return !std::isalnum(c); }, ' ');
    std::istringstream in(names);
    for (Argument& argument : arguments) {
      in >> argument.name;
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

/// A field of a record.
struct Field {
  const char* name;
  Kind record;
  size_t offset, size;
  bool real;
};
#define FIELD(kind, record, field)                                      \
  {                                                                     \
#field, Kind::kind, offsetof(record, field), sizeof(record::field), \
        std::is_same_v < decltype(record::field), f32>                  \
  }
const Field kFields[] = {FIELD(kRecord, ImageDesc, data),
                         FIELD(kRecord, ImageDesc, memoryKind),
                         FIELD(kRecord, ImageDesc, width),
                         FIELD(kRecord, ImageDesc, height),
                         FIELD(kRecord, ImageDesc, bytesPerPixel),
                         FIELD(kRecord, ImageDesc, bufferWidth),
                         FIELD(kRecord, ImageDesc, bufferHeight),
                         FIELD(kRecord, ImageDesc, pitch),
                         FIELD(kLayer, BlendParam, mode),
                         FIELD(kLayer, BlendParam, opacity),
                         FIELD(kLayer, BlendParam, alphaMode),
                         FIELD(kLayer, BlendParam, fractionX),
                         FIELD(kLayer, BlendParam, fractionY),
                         FIELD(kMotion, MotionBlurParam, strength),
                         FIELD(kMotion, MotionBlurParam, maxSamples),
                         FIELD(kMotion, MotionBlurParam, dirX),
                         FIELD(kMotion, MotionBlurParam, dirY),
                         FIELD(kMotion, MotionBlurParam, zoom),
                         FIELD(kMotion, MotionBlurParam, angle),
                         FIELD(kKeys, ChromaKey, angle),
                         FIELD(kKeys, ChromaKey, denoise)};

Word Bits(double value, bool real) {
  return real ? std::bit_cast<u32>(static_cast<f32>(value))
              : static_cast<Word>(static_cast<i64>(value));
}

/// All that methods may read or write. Of records, the first is good and the others differ from it
/// in one field.
struct Memory {
  struct Zone {
    u8 before[kAround], picture[kPitch * kHeight], after[kAround];
  } dst, src;
  u32 numbers[16 * 11 + 256];
  ImageDesc dstRecords[44], srcRecords[44], bordered[44];
  BlendParam layers[53];
  MotionBlurParam motions[66];
  ChromaKey keys[21];
  i32 rectangles[6][4];
};
Memory memory;

template <typename T, size_t count>
void Vary(T (&records)[count], Kind kind, const T& good) {
  std::fill(std::begin(records), std::end(records), good);
  T* next = records;
  for (const Field& field : kFields) {
    const auto set = [&](double value) {
      const Word bits = Bits(value, field.real);
      std::memcpy(reinterpret_cast<u8*>(++next) + field.offset, &bits, field.size);
    };
    if (field.record != kind) continue;
    if (field.size == sizeof(void*)) {
      set(0);
    } else if (field.real) {
      std::for_each(std::begin(kReals), std::end(kReals), set);
    } else if (kind == Kind::kRecord) {
      std::for_each(std::begin(kSizes), std::end(kSizes), set);
    } else {
      std::for_each(std::begin(kIntegers), std::end(kIntegers), set);
    }
  }
}

void MakeMemory() {
  std::memset(&memory, 0x55, sizeof(memory));
  u8* const bytes[] = {memory.dst.before, memory.src.before};
  for (size_t i = 0; i < sizeof(Memory::Zone); ++i) {
    bytes[0][i] = static_cast<u8>(i * 7 + i / 255);
    bytes[1][i] = static_cast<u8>(i * 13 + i / 251);
  }
  ImageDesc image = {{}, kWidth, kHeight, 0, memory.dst.picture, kWidth, kHeight, kPitch, 4};
  Vary(memory.dstRecords, Kind::kRecord, image);
  image.data = memory.src.picture;
  Vary(memory.srcRecords, Kind::kRecord, image);
  image = {{}, kWidth, kHeight, 0, memory.dst.picture + 3 * (kPitch + 4), 10, 6, kPitch, 4};
  Vary(memory.bordered, Kind::kRecord, image);
  Vary(memory.layers, Kind::kLayer, {0, 200, 0, 0.5f, 0.5f});
  Vary(memory.motions, Kind::kMotion, {1, 30, 5, 2, 1, 0, 0});
  Vary(memory.keys, Kind::kKeys, {0, 255, 0, 0, 30, 20});
  std::memcpy(memory.rectangles, kRectangles, sizeof(kRectangles));
}

std::vector<Word> Each(const auto& records) {
  std::vector<Word> words;
  for (const auto& record : records) words.push_back(reinterpret_cast<Word>(&record));
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
      const bool picture = a.Is("dst") || a.Is("buffer") || a.Is("image");
      return {reinterpret_cast<Word>(picture ? static_cast<void*>(memory.dst.picture)
                                             : &memory.numbers[16 * a.index]),
              0};
    }
    case Kind::kRecord:
      return Each(a.Is("dst")   ? memory.dstRecords
                  : a.Is("src") ? memory.srcRecords
                                : memory.bordered);
    case Kind::kLayer:
      return Each(memory.layers);
    case Kind::kMotion:
      return Each(memory.motions);
    case Kind::kKeys:
      return Each(memory.keys);
    case Kind::kRect:
      return Each(memory.rectangles);
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

  Call(const Method& called, const std::vector<size_t>& chosen) : method(called) {
    for (size_t i = 0; i < chosen.size(); ++i) words[i] = Values(method.arguments[i])[chosen[i]];
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
      return (a.kind == Kind::kSource || a.kind == Kind::kTarget || a.kind == Kind::kRecord) &&
             WordOf(a) == 0;
    });
  }

  /// The bytes of a picture (dst or src). Where a method takes rows of records as packed whatever
  /// the pitch, those too.
  Span Picture(const std::string& picture) const {
    const Argument* record = method.Find(picture);
    if (record != nullptr && record->kind == Kind::kRecord) {
      const auto& image = *reinterpret_cast<const ImageDesc*>(WordOf(*record));
      // A motion blur that does not move copies to all the bytes that there are.
      const i64 room = method.slot == 63 ? std::max<i64>(0, i64{image.pitch} * image.height) : 0;
      const Span packed = SpanOf(image.width, image.height, 4 * i64{image.width});
      const Span pitched = SpanOf(image.width, image.height, image.pitch);
      return {std::min(packed.from, pitched.from), std::max({packed.to, pitched.to, room}),
              packed.rows};
    }
    const i64 width = Number(picture, "Width", kWidth), height = Number(picture, "Height", kHeight);
    i64 pitch = Number(picture, "Pitch", 4 * width);  // without one, rows follow each other
    if (method.slot == 46) pitch = (width + (pitch - 4 * width) / 4) * 4;
    if (method.slot == 48) return SpanOf(kWidth, kHeight, pitch);  // goes by its rectangle
    return SpanOf(width, height, pitch);
  }

  /// What may be written of the destination.
  Span Target() const {
    if (HasNull()) return {};
    return method.slot == 71 || method.slot == 107 ? Span{0, kPitch * kHeight} : Picture("dst");
  }

  /// Whether the memory that it describes exists, or none does.
  bool IsHonest() const {
    return HasNull() ||
           (Picture("dst").IsThere() && Picture("src").IsThere() && Picture("image").IsThere());
  }

  std::string Text() const {
    std::string text = std::to_string(method.slot) + " " + method.name;
    for (const Argument& a : method.arguments)
      text += " " + a.name + "=" + std::to_string(static_cast<i64>(WordOf(a)));
    return text;
  }
};

bool Same(const void* a, const void* b, size_t size) { return std::memcmp(a, b, size) == 0; }

std::string running;  // for a call that does not come back

LONG CALLBACK TellOfCrash(EXCEPTION_POINTERS* exception) {
  if (exception->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION) {
    std::fprintf(stderr, "crashed: %s\n", running.c_str());
    std::fflush(stderr);
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

class Slots : public testing::Test {
 protected:
  Slots() {
    AddVectoredExceptionHandler(1, TellOfCrash);
    MakeMemory();
  }
  ~Slots() override { module_.Entry<int32_t(IPictavo6*)>("ReleasePictavo6")(object_); }

  /// Runs a call and its operation on the same memory, which is as before afterwards.
  void Try(const Call& call) {
    running = call.Text();
    const Memory before = memory;
    const u32 result = call.method.through(object_, call.words);
    const Memory after = std::exchange(memory, before);
    const u32 expected = call.method.beside(object_->GetCPULevel(), call.words);
    ASSERT_EQ(result, expected) << running;
    ASSERT_TRUE(Same(&after, &memory, sizeof(memory))) << running << " is not its operation";
    memory = before;

    ASSERT_TRUE(kCodes.contains(result)) << running << " = " << result;
    Span span = call.Target();
    if (result > 1 || !span.IsThere()) span = {};
    const u8 *now = after.dst.before, *then = before.dst.before;
    const auto from = static_cast<size_t>(kAround + span.from),
               to = static_cast<size_t>(kAround + span.to);
    ASSERT_TRUE(Same(now, then, from) && Same(now + to, then + to, sizeof(Memory::Zone) - to) &&
                Same(&after.src, &before.src, sizeof(before.src)))
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
      std::vector<size_t> counts;
      for (const Argument& a : method.arguments) counts.push_back(Values(a).size());
      // Every pair of arguments, each at every value, the others good.
      std::set<std::vector<size_t>> choices;
      for (size_t i = 0; i < counts.size(); ++i) {
        for (size_t j = 0; j < i; ++j) {
          std::vector<size_t> chosen(counts.size());
          for (chosen[i] = 0; chosen[i] < counts[i]; ++chosen[i]) {
            for (chosen[j] = 0; chosen[j] < counts[j]; ++chosen[j]) choices.insert(chosen);
          }
        }
      }
      for (const auto& chosen : choices) {
        const Call call(method, chosen);
        if (!call.IsHonest()) continue;
        Try(call);
        if (HasFatalFailure()) return;
        ++calls;
      }
    }
  }
  EXPECT_GT(calls, 100000u);
}

struct Refusal {
  const char* slots;
  const char* changes;  // of good calls, apart by |: arguments, or fields of their records
  u32 result;
};
constexpr char kNoSize[] =
    "width=0|height=0|width=-2 height=-2|width=-2147483648 height=-2147483648";
constexpr char kTooLarge[] = "width=2147483647 height=2147483647";
constexpr u32 kStatusBad = 0, kStatusGood = 1;
const Refusal kRefusals[] = {
    {"2 3 4 5 6 7 8 9 10 36 37", "dst=0|src=0|dst=0 src=0 width=0", kStatusBad},
    {"2 3 4 5 7 36 37", kNoSize, kStatusGood},
    {"6 8 9 10", kNoSize, kStatusBad},
    {"8", "dstPitch=0|srcPitch=0|dstPitch=-64|srcPitch=-64", kStatusBad},
    {"9", "pitch=0|pitch=-64", kStatusBad},
    {"7", "pitch=0|pitch=-64", kStatusGood},
    {"3 6 10", kTooLarge, kStatusBad},
    {"11", "dst=0|src=0", PICTAVO_E_FAIL},
    {"11", kNoSize, PICTAVO_E_FAIL},
    {"14", "y=0|u=0|v=0", PICTAVO_S_OK},
    {"15", "r=0|g=0|b=0", PICTAVO_S_OK},
    {"34 35", "pixels=0|y=0|u=0|v=0", PICTAVO_S_OK},
    {"16 17 18 19", "buffer=0", kStatusGood},
    {"16 17 18 19", kNoSize, kStatusGood},
    {"17 19", kTooLarge, kStatusGood},
    {"20 21", "src=0|dst=0|src=0 width=0", PICTAVO_E_INVALIDARG},
    {"20 21", "width=0|height=0", PICTAVO_S_FALSE},
    {"20 21 46", "height=-1", PICTAVO_S_OK},
    {"29 30 31 55 57 58", "dst=0|src=0|dst=0 dstWidth=0", PICTAVO_E_POINTER},
    {"29 30 31 55 57 58", "dstWidth=0|dstHeight=-1|srcWidth=-2147483648|srcHeight=0 srcWidth=32768",
     PICTAVO_S_FALSE},
    {"29 30 55 57 58", "srcWidth=32768|srcHeight=32768", PICTAVO_E_INVALIDARG},
    {"31", "dstWidth=8388609|dstHeight=8388609", PICTAVO_E_INVALIDARG},
    {"43 44", "pixels=0|bins=0|binCount=0|binCount=-1", PICTAVO_E_FAIL},
    {"46", "src=0|dst=0", PICTAVO_E_FAIL},
    {"46", kNoSize, PICTAVO_S_OK},
    {"48", "buffer=0|rect=0", PICTAVO_E_FAIL},
    {"48", "rect=1|rect=2|rect=3|rect=4", PICTAVO_E_INVALIDARG},
    {"63",
     "src=0|dst=0|param=0|src.data=0|dst.data=0|src.memoryKind=3|dst.memoryKind=3|src.width=-1|"
     "src.height=-1|param.strength=-1|param.strength=nan|param.maxSamples=1|param.maxSamples=0|"
     "param.dirX=inf",
     PICTAVO_E_INVALIDARG},
    {"63", "dst.width=0|dst.height=-1", PICTAVO_S_OK},
    {"64", "src=0|dst=0|param=0|offsetX=0|offsetY=0", PICTAVO_E_POINTER},
    {"71 107",
     "image=0|image.data=0|image.memoryKind=3|image.width=0|image.height=-1|image.bufferWidth=11|"
     "image.bufferHeight=7|image.bytesPerPixel=3|border=4|border=2147483648|border=4294967295",
     PICTAVO_E_INVALIDARG},
    {"71", "image.bytesPerPixel=1 image.pitch=11|image.bytesPerPixel=1 image.pitch=-64",
     PICTAVO_E_INVALIDARG},
    {"107", "image.bytesPerPixel=1", PICTAVO_E_INVALIDARG},
    {"71 107", "border=0", PICTAVO_S_OK},
    {"73 74",
     "dst=0 param.opacity=0|src=0 param.opacity=0|param=0|dst.data=0 param.opacity=0|src.data=0 "
     "param.mode=99",
     PICTAVO_E_POINTER},
    {"73 74", "param.opacity=0 param.mode=99|param.opacity=0 dst.memoryKind=3", PICTAVO_S_OK},
    {"73 74",
     "dst.memoryKind=3|src.memoryKind=3|param.mode=20|param.mode=24|param.mode=4294967284|"
     "param.mode=4294967295|param.opacity=256|param.alphaMode=3",
     PICTAVO_E_INVALIDARG},
    {"74",
     "param.mode=8|param.mode=12|param.mode=19|param.mode=23|param.fractionX=nan|"
     "param.fractionY=1.5|param.fractionX=-0.1",
     PICTAVO_E_INVALIDARG},
    {"77", "buffer=0|buffer=0 width=0", PICTAVO_E_POINTER},
    {"77", kNoSize, PICTAVO_S_FALSE},
    {"82", "buffer=0|mean=0|mean=0 width=0", PICTAVO_E_POINTER},
    {"82", kNoSize, PICTAVO_E_INVALIDARG},
    {"86", "src=0|dst=0|keys=0 keyCount=0|src.data=0|dst.data=0", PICTAVO_E_POINTER},
    {"86",
     "keyCount=0|keyCount=-1|src.memoryKind=3|dst.memoryKind=3|src.width=-1|dst.height=-1|"
     "dst.width=15|src.pitch=65|dst.pitch=63",
     PICTAVO_E_INVALIDARG},
    {"86", "src.height=0|dst.height=0", PICTAVO_S_OK},
    {"87", "image=0|image=0 width=0", PICTAVO_E_POINTER},
    {"87", "radius=0|radius=-1|radius=nan|radius=inf|radius=12.001", PICTAVO_S_FALSE},
    {"87", kNoSize, PICTAVO_S_FALSE},
    {"87", "pitch=63|pitch=-63|pitch=0", PICTAVO_E_INVALIDARG},
    {"87", "width=536870911 height=2147483647 pitch=2147483647 radius=3", PICTAVO_E_OUTOFMEMORY},
    {"88 89", "src=0 model=9|dst=0 width=-1", PICTAVO_E_POINTER},
    {"88 89", "width=0|height=0", PICTAVO_S_FALSE},
    {"88 89",
     "model=3|matrix=3|range=2|model=1 matrix=1|model=1 range=2|model=2 range=0|width=-1|height=-1|"
     "srcPitch=63|dstPitch=-63|width=0 model=3",
     PICTAVO_E_INVALIDARG},
    {"90 92", "first=0|second=0|third=0|third=0 model=9", PICTAVO_E_POINTER},
    {"91", "r=0|g=0|b=0", PICTAVO_E_POINTER},
    {"92", "pixel=0", PICTAVO_E_POINTER},
    {"90 91 92", "model=3|matrix=3|range=2|model=1 matrix=1|model=2 range=0", PICTAVO_E_INVALIDARG},
    {"90", "r=256|g=-1|b=-2147483648", PICTAVO_E_INVALIDARG},
    {"91", "first=256|second=-1|third=256|model=1 second=256", PICTAVO_E_INVALIDARG},
    {"95", "r=0|g=0|b=0", PICTAVO_E_POINTER},
};

/// Applies one change, as kRefusals has it. Records are numbered from 1 where they are arguments.
void Change(Call* call, const std::string& change) {
  const std::string target = change.substr(0, change.find('='));
  const double value = std::strtod(change.c_str() + target.size() + 1, nullptr);
  const size_t dot = target.find('.');
  const Argument* const a = call->method.Find(target.substr(0, dot));
  ASSERT_NE(a, nullptr) << "slot " << call->method.slot << " has no " << target;
  Word& word = call->WordOf(*a);
  if (dot == std::string::npos) {
    word = a->kind == Kind::kRect && value > 0 ? Values(*a)[static_cast<size_t>(value)]
                                               : Bits(value, a->kind == Kind::kReal);
    return;
  }
  const auto* field = std::find_if(std::begin(kFields), std::end(kFields), [&](const Field& f) {
    return target.substr(dot + 1) == f.name;
  });
  ASSERT_NE(field, std::end(kFields)) << target;
  const Word bits = Bits(value, field->real);
  std::memcpy(reinterpret_cast<u8*>(word) + field->offset, &bits, field->size);
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::istringstream in(text);
  std::vector<std::string> parts;
  for (std::string part; std::getline(in, part, separator);) parts.push_back(part);
  return parts;
}

TEST_F(Slots, RefuseWithTheirCodesAndWriteNothing) {
  const Memory good = memory;
  for (const Refusal& refusal : kRefusals) {
    for (const std::string& number : Split(refusal.slots, ' ')) {
      const Method& method = *std::find_if(kMethods.begin(), kMethods.end(), [&](const Method& m) {
        return std::to_string(m.slot) == number;
      });
      for (const std::string& changes : Split(refusal.changes, '|')) {
        for (const i32 level : {0, 3, 6, detected_}) {
          object_->SetCPULevel(level);
          Call call(method, std::vector<size_t>(method.arguments.size()));
          memory = good;
          const u32 plain = method.through(object_, call.words);
          EXPECT_FALSE(plain == refusal.result && Same(&memory, &good, sizeof(good)))
              << "the good call of slot " << number;
          memory = good;
          for (const std::string& change : Split(changes, ' ')) Change(&call, change);
          running = call.Text();
          const Memory before = memory;
          EXPECT_EQ(method.through(object_, call.words), refusal.result)
              << running << " with " << changes;
          EXPECT_TRUE(Same(&memory, &before, sizeof(before))) << running << " with " << changes;
        }
      }
    }
  }
}

TEST_F(Slots, WithoutTheirModuleFailAndThenFindIt) {
  const auto try5 = [&](u32 expected) {
    for (const Method& method : kMethods) {
      if (method.slot < 88 || method.slot > 92) continue;
      const Call call(method, std::vector<size_t>(method.arguments.size()));
      const Memory before = memory;
      EXPECT_EQ(method.through(object_, call.words), expected) << method.name;
      EXPECT_EQ(Same(&memory, &before, sizeof(before)), expected != PICTAVO_S_OK) << method.name;
      memory = before;
    }
  };
  FindModulesIn(kNoModules);
  try5(PICTAVO_E_FAIL);
  FindModulesIn(kRealModules);
  try5(PICTAVO_S_OK);
}

}  // namespace
}  // namespace pictavo::test

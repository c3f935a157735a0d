// Every slot of the real DLL that works on the processor, under hostile geometry, numbers and null
// pointers, by the raw table, as a host with a fault would call it. A call ends in a documented
// code with nothing written, or writes inside the rows that it was given. Memory that is not there
// is the host's to answer for: calls that describe more rows than exist are left out.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "module_folder.h"
#include "pictavo/pictavo.h"

namespace pictavo::test {
namespace {

using Word = std::uintptr_t;
using Method = u32(void*, Word, Word, Word, Word, Word, Word, Word, Word, Word, Word, Word);
constexpr size_t kMostArguments = 11;

constexpr i32 kWidth = 16, kHeight = 12, kPitch = 64;
constexpr size_t kAround = 4096;  // bytes on either side of a picture

/// What an argument is:
///   D d  destination: its record, its pixels       S s  source
///   w h p  the destination's geometry              W H P  the source's (where it has its own)
///   B M K  the records of layers, motions and keys      n  number of keys
///   E  a record with room for a border             b N  bins and how many
///   r  a rectangle                                 o  numbers that come back
///   i  a whole number                              f  a float
struct Slot {
  u32 slot;
  bool status;  // the result is 1 or 0
  bool packed;
  const char* arguments;
};
const Slot kSlots[] = {
    {2, true, false, "dswhpPiff"},     {3, true, true, "dswh"},
    {4, true, false, "dswhp"},         {5, true, false, "dswhpPiff"},
    {6, true, true, "dswh"},           {7, true, false, "dswhp"},
    {8, true, false, "dswhpPiff"},     {9, true, false, "dswhp"},
    {10, true, true, "dswh"},          {11, false, false, "dswhpPii"},
    {14, false, false, "iiiooo"},      {15, false, false, "iiiooo"},
    {16, true, false, "dwhp"},         {17, true, true, "dwh"},
    {18, true, false, "dwhp"},         {19, true, true, "dwh"},
    {20, false, false, "swhPdp"},      {21, false, false, "swhPdp"},
    {29, false, false, "dwhpsWHPi"},   {30, false, false, "dwhpsWHPii"},
    {31, false, false, "dwhpsWHP"},    {34, false, false, "sooo"},
    {35, false, false, "sooo"},        {36, false, false, "dswhpPiiiff"},
    {37, false, false, "dswhpPiiiff"}, {43, false, false, "sWHPbNi"},
    {44, false, false, "sWHPbNi"},     {46, false, false, "swhPdp"},
    {48, false, false, "dwhpri"},      {55, false, false, "dwhpsWHP"},
    {57, false, false, "dwhpsWHP"},    {58, false, false, "dwhpsWHPi"},
    {63, false, false, "SDM"},         {64, false, false, "SDMoo"},
    {71, false, false, "Ei"},          {73, false, false, "DSB"},
    {74, false, false, "DSB"},         {77, false, false, "dwhpiiii"},
    {82, false, true, "swho"},         {86, false, false, "SDKni"},
    {87, false, false, "dwhpf"},       {88, false, false, "swhPdpiii"},
    {89, false, false, "swhPdpiii"},   {90, false, false, "iiioooiii"},
    {91, false, false, "iiioooiii"},   {92, false, false, "soooiii"},
    {95, false, false, "iiiooo"},      {107, false, false, "Ei"},
};

/// A picture's bytes in the middle of others.
struct Zone {
  std::vector<u8> bytes = std::vector<u8>(2 * kAround + kPitch * kHeight);
  u8* picture() { return &bytes[kAround]; }
};

ImageDesc Record(void* data) {
  ImageDesc image = {};
  image.data = data;
  image.width = image.bufferWidth = kWidth;
  image.height = image.bufferHeight = kHeight;
  image.pitch = kPitch;
  image.bytesPerPixel = 4;
  return image;
}

/// A good record, and ones with a field at an extreme. Only sizes that no memory could have, or
/// none, are refused without a look at the memory.
std::vector<ImageDesc> Records(void* data, bool bordered) {
  ImageDesc good = Record(data);
  if (bordered) {
    good.width -= 6;
    good.height -= 6;
    good.data = static_cast<u8*>(data) + 3 * kPitch + 12;
  }
  std::vector<ImageDesc> records = {good};
  const auto with = [&](auto field, auto... values) {
    for (const auto value : {values...}) {
      records.push_back(good);
      records.back().*field = value;
    }
  };
  with(&ImageDesc::data, nullptr);
  with(&ImageDesc::memoryKind, 3u);
  with(&ImageDesc::width, 0, -1, INT32_MIN);
  with(&ImageDesc::height, 0, -1, INT32_MIN);
  with(&ImageDesc::bytesPerPixel, 0, -1, 3, INT32_MAX);
  with(&ImageDesc::bufferWidth, -1, 0, INT32_MIN);
  with(&ImageDesc::bufferHeight, -1, 0, INT32_MIN);
  if (!bordered) with(&ImageDesc::pitch, 0, 1, kPitch - 1, -1);
  return records;
}

const f32 kFloats[] = {1,
                       0,
                       -1,
                       0.5f,
                       3,
                       1e38f,
                       -1e38f,
                       1e-42f,
                       std::bit_cast<f32>(0x7FC00000),
                       std::bit_cast<f32>(0x7F800000),
                       std::bit_cast<f32>(0xFF800000)};
const i32 kNumbers[] = {1, 0, -1, 2, 24, 255, 256, INT32_MAX, INT32_MIN};

struct Hostile {
  Hostile() {
    dstRecords = Records(dst.picture(), false);
    srcRecords = Records(src.picture(), false);
    bordered = Records(dst.picture(), true);
    for (const i32 mode : {0, 5, 8, 12, 23, 24, -1, INT32_MAX})
      layers.push_back({static_cast<u32>(mode), 200, 0, 0.5f, 0.5f});
    for (const i32 number : kNumbers) {
      layers.push_back({0, static_cast<u32>(number), 0, 0, 0});
      layers.push_back({0, 200, static_cast<u32>(number), 0, 0});
      motions.push_back({1, number, 5, 2, 1, 0, 0});
      keys.push_back({0, 255, 0, 0, number, 20});
      keys.push_back({0, 255, 0, 0, 20, number});
    }
    for (const f32 number : kFloats) {
      layers.push_back({12, 255, 0, number, 0.5f});
      layers.push_back({12, 255, 0, 0.5f, number});
      motions.push_back({number, 30, 5, 2, 1, 0, 0});
      motions.push_back({1, 30, number, 2, 1, 0, 0});
      motions.push_back({1, 30, 5, number, 1, 0, 0});
      motions.push_back({1, 30, 0, 0, number, 0, 0});
      motions.push_back({1, 30, 0, 0, 1, 0, number});
    }
  }

  std::vector<Word> Values(char kind) {
    const auto pointers = [](auto& records) {
      std::vector<Word> values;
      for (auto& record : records) values.push_back(reinterpret_cast<Word>(&record));
      values.push_back(0);
      return values;
    };
    switch (kind) {
      case 'd':
        return {reinterpret_cast<Word>(dst.picture()), 0};
      case 's':
        return {reinterpret_cast<Word>(src.picture()), 0};
      case 'D':
        return pointers(dstRecords);
      case 'S':
        return pointers(srcRecords);
      case 'E':
        return pointers(bordered);
      case 'B':
        return pointers(layers);
      case 'M':
        return pointers(motions);
      case 'K':
        return pointers(keys);
      case 'w':
      case 'W':
        return Words({kWidth, 0, 1, -1, INT32_MIN, INT32_MAX});
      case 'h':
      case 'H':
        return Words({kHeight, 0, 1, -1, INT32_MIN, INT32_MAX});
      case 'p':
      case 'P':
        return Words({kPitch, 0, 1, kPitch - 1, kPitch + 1, -kPitch, INT32_MIN, INT32_MAX});
      case 'n':
        return Words({1, 0, -1, INT32_MIN});
      case 'N':
        return Words({256, 1, 0, -1, INT32_MIN});
      case 'r':
        return pointers(rectangles);
      case 'b':
      case 'o':
        return {reinterpret_cast<Word>(numbers.data()), 0};
      case 'i':
        return Words({kNumbers, std::end(kNumbers)});
      default: {  // 'f', all of which lie on the stack
        std::vector<Word> values;
        for (const f32 number : kFloats) values.push_back(std::bit_cast<u32>(number));
        return values;
      }
    }
  }

  static std::vector<Word> Words(std::vector<i32> numbers) {
    std::vector<Word> words;
    for (const i32 number : numbers) words.push_back(static_cast<Word>(i64{number}));
    return words;
  }

  Zone dst, src;
  std::vector<ImageDesc> dstRecords, srcRecords, bordered;
  std::vector<BlendParam> layers = {{0, 200, 0, 0, 0}};
  std::vector<MotionBlurParam> motions = {{1, 30, 5, 2, 1, 0, 0}};
  std::vector<ChromaKey> keys = {{0, 255, 0, 0, 30, 20}};
  std::vector<std::array<i32, 4>> rectangles = {{1, 1, 9, 8},  {9, 1, 1, 8},         {1, 8, 9, 1},
                                                {-1, 0, 5, 5}, {0, INT32_MIN, 5, 5}, {5, 5, 5, 5}};
  std::array<u32, 256> numbers = {};
};

/// The bytes that a geometry describes, from the first byte of the top row.
struct Span {
  i64 from, to, rows = 0;
  /// Rows that share bytes may be more than anyone can wait for.
  bool isThere() const {
    return rows <= 4096 && from >= -i64{kAround} && to <= i64{kAround} + kPitch * kHeight;
  }
};

Span SpanOf(i64 width, i64 height, i64 pitch) {
  if (width < 1 || height < 1) return {0, 0};
  const i64 last = (height - 1) * pitch;
  return {std::min<i64>(0, last), std::max<i64>(0, last) + 4 * width, height};
}

class Call {
 public:
  Call(const Slot& slot, const std::vector<std::vector<Word>>& values,
       const std::vector<size_t>& chosen)
      : slot_(slot) {
    for (size_t i = 0; i < chosen.size(); ++i) {
      words_[i] = values[i][chosen[i]];
      const char kind = slot.arguments[i];
      const i64 number = static_cast<i32>(words_[i]);
      const bool pixels = std::strchr("dsDSE", kind) != nullptr;
      if (pixels && words_[i] == 0) null_ = true;
      geometry_[static_cast<u8>(kind)] = number;
      if (kind == 'D') toRecord_ = reinterpret_cast<const ImageDesc*>(words_[i]);
    }
  }

  /// Whether the memory that it describes exists, or none does.
  bool IsHonest() const {
    if (null_) return true;
    const i64 width = Number('w', kWidth), height = Number('h', kHeight);
    // More 32-bit pixels than addresses; of slot 82's bytes just not.
    if (slot_.packed && slot_.slot != 82 && width == INT32_MAX && height == INT32_MAX) return true;
    return Destination().isThere() && Source().isThere();
  }

  u32 Run(IPictavo6* object) const {
    Method* const* table = *reinterpret_cast<Method***>(object);
    const auto& a = words_;
    return table[slot_.slot](object, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9],
                             a[10]);
  }

  bool Refused(u32 result) const { return slot_.status ? result == 0 : result >= 0x80000000u; }

  /// What it may write of the destination.
  Span Destination() const {
    if (std::strchr(slot_.arguments, 'E') != nullptr) return {0, kPitch * kHeight};
    if (std::strchr(slot_.arguments, 'D') != nullptr) {
      if (toRecord_ == nullptr) return {0, 0};
      // A picture that does not move is copied to all the bytes that there are.
      const i64 room =
          slot_.slot == 63 ? std::max<i64>(0, i64{toRecord_->pitch} * toRecord_->height) : 0;
      // Some of these methods take rows as packed, whatever the pitch.
      const Span packed = SpanOf(toRecord_->width, toRecord_->height, 4 * i64{toRecord_->width});
      const Span pitched = SpanOf(toRecord_->width, toRecord_->height, toRecord_->pitch);
      return {std::min(packed.from, pitched.from), std::max({packed.to, pitched.to, room}),
              packed.rows};
    }
    if (null_) return {0, 0};
    if (slot_.slot == 48) return SpanOf(kWidth, kHeight, Unsigned('p'));  // goes by its rectangle
    const i64 width = Number('w', kWidth);
    i64 pitch = slot_.packed ? 4 * width : Number('p', kPitch);
    if (slot_.slot == 46) pitch = (width + (pitch - 4 * width) / 4) * 4;
    return SpanOf(width, Number('h', kHeight), pitch);
  }

  std::string Text() const {
    std::string text = "slot ";
    text.append(std::to_string(slot_.slot)).append(1, ' ').append(slot_.arguments);
    for (size_t i = 0; slot_.arguments[i] != 0; ++i)
      text.append(1, ' ').append(std::to_string(static_cast<i64>(words_[i])));
    return text;
  }

 private:
  i64 Number(char kind, i64 otherwise) const {
    return std::strchr(slot_.arguments, kind) != nullptr ? geometry_[static_cast<u8>(kind)]
                                                         : otherwise;
  }
  i64 Unsigned(char kind) const { return static_cast<u32>(geometry_[static_cast<u8>(kind)]); }
  Span Source() const {
    const bool own = std::strchr(slot_.arguments, 'W') != nullptr;
    i64 width = own ? Number('W', kWidth) : Number('w', kWidth);
    const i64 height = own ? Number('H', kHeight) : Number('h', kHeight);
    if (slot_.slot == 43 || slot_.slot == 44) {
      return SpanOf(Unsigned('W'), Unsigned('H'), Unsigned('P'));
    }
    if (slot_.slot == 20 || slot_.slot == 21) width = Unsigned('w');
    return SpanOf(width, height, slot_.packed ? 4 * width : Number('P', Number('p', kPitch)));
  }

  const Slot& slot_;
  std::array<Word, kMostArguments> words_ = {};
  std::array<i64, 128> geometry_ = {};
  const ImageDesc* toRecord_ = nullptr;
  bool null_ = false;
};

std::string running;  // for a call that does not come back

LONG CALLBACK TellOfCrash(EXCEPTION_POINTERS* exception) {
  if (exception->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION) {
    std::fprintf(stderr, "crashed: %s\n", running.c_str());
    std::fflush(stderr);
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

TEST(Hostile, EndsInACodeOrStaysInItsRows) {
  AddVectoredExceptionHandler(1, TellOfCrash);
  const RealModule module(L"Pictavo.dll");
  IPictavo6* object = module.Entry<IPictavo6*()>("GetPictavo6")();
  const i32 detected = object->GetCPULevel();
  const std::set<u32> codes = {PICTAVO_S_OK,     PICTAVO_S_FALSE,       PICTAVO_E_POINTER,
                               PICTAVO_E_FAIL,   PICTAVO_E_OUTOFMEMORY, PICTAVO_E_INVALIDARG,
                               PICTAVO_E_NOTIMPL};
  Hostile hostile;
  for (size_t i = 0; i < hostile.dst.bytes.size(); ++i) {
    hostile.dst.bytes[i] = static_cast<u8>(i * 7 + i / 255);
    hostile.src.bytes[i] = static_cast<u8>(i * 13 + i / 251);
  }
  const std::vector<u8> dstBefore = hostile.dst.bytes, srcBefore = hostile.src.bytes;
  size_t calls = 0;

  const auto tryCall = [&](const Slot& slot, const std::vector<std::vector<Word>>& values,
                           const std::vector<size_t>& chosen) {
    // GetMotionBlurDstSize fills in the record.
    const std::vector<ImageDesc> records = hostile.dstRecords;
    const Call call(slot, values, chosen);
    if (!call.IsHonest()) return;
    running = call.Text();
    const u32 result = call.Run(object);
    ++calls;
    const bool isVoid = slot.slot == 14 || slot.slot == 15 || slot.slot == 34 || slot.slot == 35;
    if (!isVoid) {
      ASSERT_TRUE(slot.status ? result <= 1 : codes.contains(result)) << running << " = " << result;
    }
    Span span = call.Destination();
    if (isVoid || call.Refused(result) || !span.isThere()) span = {0, 0};
    const auto& after = hostile.dst.bytes;
    const auto first = static_cast<ptrdiff_t>(kAround + span.from);
    const auto last = static_cast<ptrdiff_t>(kAround + span.to);
    ASSERT_TRUE(std::equal(after.begin(), after.begin() + first, dstBefore.begin()) &&
                std::equal(after.begin() + last, after.end(), dstBefore.begin() + last))
        << running << " = " << result << " wrote elsewhere";
    ASSERT_EQ(hostile.src.bytes, srcBefore) << running << " wrote to its source";
    hostile.dst.bytes = dstBefore;
    hostile.dstRecords = records;
  };

  for (const i32 level : {INT32_MIN, -1, 0, 3, 5, 6, detected, detected + 1, INT32_MAX}) {
    if (level > detected && detected < 8) continue;
    object->SetCPULevel(level);
    for (const Slot& slot : kSlots) {
      std::vector<std::vector<Word>> values;
      for (const char* kind = slot.arguments; *kind != 0; ++kind)
        values.push_back(hostile.Values(*kind));
      // Every pair of arguments, each at every value, the others good.
      for (size_t i = 0; i < values.size(); ++i) {
        for (size_t j = i; j < values.size(); ++j) {
          std::vector<size_t> chosen(values.size());
          for (chosen[i] = 0; chosen[i] < values[i].size(); ++chosen[i]) {
            if (i == j) {
              tryCall(slot, values, chosen);
            } else {
              for (chosen[j] = 1; chosen[j] < values[j].size(); ++chosen[j])
                tryCall(slot, values, chosen);
              chosen[j] = 0;
            }
            if (HasFatalFailure()) return;
          }
        }
      }
    }
  }
  EXPECT_GT(calls, 100000u);
  module.Entry<int32_t(IPictavo6*)>("ReleasePictavo6")(object);
}

}  // namespace
}  // namespace pictavo::test

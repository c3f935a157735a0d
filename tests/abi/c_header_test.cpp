// The C header beside the C++ one, for the compiler to compare: every record, field and method.
#include <cstddef>
#include <type_traits>

#include "pictavo/pictavo.h"
// After it.
#include "pictavo/pictavo_c.h"

namespace {

using namespace pictavo;

/// A type's counterpart in the C header.
template <typename T>
struct Twin {
  using Type = T;
};
template <typename T>
using TwinOf = typename Twin<T>::Type;
template <typename T>
struct Twin<T*> {
  using Type = TwinOf<T>*;
};
template <typename T>
struct Twin<const T> {
  using Type = const TwinOf<T>;
};
template <>
struct Twin<IPictavoSurface> {
  using Type = PictavoSurface;
};
template <>
struct Twin<IHostPicture> {
  using Type = PictavoHostPicture;
};

#define RECORD(Name)            \
  template <>                   \
  struct Twin<Name> {           \
    using Type = Pictavo##Name; \
  };                            \
  static_assert(sizeof(Name) == sizeof(Pictavo##Name) && alignof(Name) == alignof(Pictavo##Name));
#define FIELD(Record, name)                                                 \
  static_assert(offsetof(Record, name) == offsetof(Pictavo##Record, name)); \
  static_assert(std::is_same_v<TwinOf<decltype(Record::name)>, decltype(Pictavo##Record::name)>);
#include "c_header_fields.inl"

/// A method as a function of C.
template <typename Object, typename Result, typename Owner, typename... Arguments>
auto Plain(Result (Owner::*)(Arguments...) noexcept)
    -> TwinOf<Result> (*)(Object*, TwinOf<Arguments>...);

#define PLACED(Methods, slot, name, method)                          \
  static_assert(offsetof(Methods, name) == (slot) * sizeof(void*) && \
                std::is_same_v<decltype(method), decltype(Methods::name)>);
#define PICTAVO_METHOD(slot, name, where, arguments) \
  PLACED(PictavoMethods, slot, name, Plain<Pictavo>(&IPictavo6::name))
#define PICTAVO_RESERVED(slot, arguments) PICTAVO_METHOD(slot, Reserved##slot, , )
#include "pictavo/pictavo_methods.inl"
static_assert(sizeof(PictavoMethods) == PICTAVO_METHOD_COUNT * sizeof(void*));
PLACED(PictavoSurfaceMethods, 0, Query, Plain<PictavoSurface>(&IPictavoSurface::Query))
PLACED(PictavoHostPictureMethods, 4, GetTexture,
       Plain<PictavoHostPicture>(&IHostPicture::GetTexture))

}  // namespace

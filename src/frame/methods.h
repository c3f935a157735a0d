// Heads of the methods in pictavo_methods.inl, for the class that implements them: their types come
// from the interface, their names from the list.
#ifndef PICTAVO_FRAME_METHODS_H_
#define PICTAVO_FRAME_METHODS_H_

#include <cstddef>
#include <tuple>

namespace pictavo {

template <typename Method>
struct Signature;

template <typename R, typename Owner, typename... Arguments>
struct Signature<R (Owner::*)(Arguments...) noexcept> {
  using Result = R;
  /// Counted from the end, where 1 is the last.
  template <std::size_t place>
  using Argument = std::tuple_element_t<sizeof...(Arguments) - place, std::tuple<Arguments...>>;
};

}  // namespace pictavo

/// The head of a method or, with the scope `Pictavo::`, of its definition.
#define PICTAVO_HEAD(scope, name, arguments)                \
  Signature<decltype(&IPictavo6::name)>::Result scope name( \
      PICTAVO_PARAMETERS(name PICTAVO_AND arguments)) noexcept

/// `PICTAVO_AND (a, b)` is `, a, b`; without arguments it is nothing.
#define PICTAVO_AND(...) __VA_OPT__(, ) __VA_ARGS__

// The parameters of a method, given its name and those of its arguments: the macro below that takes
// as many.
#define PICTAVO_PARAMETERS(...)                                                            \
  PICTAVO_THIRTEENTH(__VA_ARGS__, PICTAVO_11, PICTAVO_10, PICTAVO_9, PICTAVO_8, PICTAVO_7, \
                     PICTAVO_6, PICTAVO_5, PICTAVO_4, PICTAVO_3, PICTAVO_2, PICTAVO_1,     \
                     PICTAVO_0, )                                                          \
  (__VA_ARGS__)
#define PICTAVO_THIRTEENTH(a, b, c, d, e, f, g, h, i, j, k, l, m, ...) m
#define PICTAVO_PARAMETER(m, place, argument) \
  [[maybe_unused]] Signature<decltype(&IPictavo6::m)>::Argument<place> argument
#define PICTAVO_0(m)
#define PICTAVO_1(m, a) PICTAVO_PARAMETER(m, 1, a)
#define PICTAVO_2(m, a, ...) PICTAVO_PARAMETER(m, 2, a), PICTAVO_1(m, __VA_ARGS__)
#define PICTAVO_3(m, a, ...) PICTAVO_PARAMETER(m, 3, a), PICTAVO_2(m, __VA_ARGS__)
#define PICTAVO_4(m, a, ...) PICTAVO_PARAMETER(m, 4, a), PICTAVO_3(m, __VA_ARGS__)
#define PICTAVO_5(m, a, ...) PICTAVO_PARAMETER(m, 5, a), PICTAVO_4(m, __VA_ARGS__)
#define PICTAVO_6(m, a, ...) PICTAVO_PARAMETER(m, 6, a), PICTAVO_5(m, __VA_ARGS__)
#define PICTAVO_7(m, a, ...) PICTAVO_PARAMETER(m, 7, a), PICTAVO_6(m, __VA_ARGS__)
#define PICTAVO_8(m, a, ...) PICTAVO_PARAMETER(m, 8, a), PICTAVO_7(m, __VA_ARGS__)
#define PICTAVO_9(m, a, ...) PICTAVO_PARAMETER(m, 9, a), PICTAVO_8(m, __VA_ARGS__)
#define PICTAVO_10(m, a, ...) PICTAVO_PARAMETER(m, 10, a), PICTAVO_9(m, __VA_ARGS__)
#define PICTAVO_11(m, a, ...) PICTAVO_PARAMETER(m, 11, a), PICTAVO_10(m, __VA_ARGS__)

#endif  // PICTAVO_FRAME_METHODS_H_

// The processor's own string instructions. They fill whole cache lines without reading them first,
// which a loop of stores cannot ask for; a short row is over before they have begun.
#ifndef PICTAVO_CPU_BASE_STRING_MOVES_H_
#define PICTAVO_CPU_BASE_STRING_MOVES_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

inline void StringFill(u8* dst, i64 pixels, u32 colour) {
  asm volatile("rep stosl" : "+D"(dst), "+c"(pixels) : "a"(colour) : "memory");
}

/// Of pixels that do not overlap.
inline void StringCopy(u8* dst, const u8* src, i64 pixels) {
  asm volatile("rep movsl" : "+D"(dst), "+S"(src), "+c"(pixels) : : "memory");
}

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_BASE_STRING_MOVES_H_

// Widening conversions that reads do in vector loops of their own.
//
// Integers and singles going to double, and the smaller integers going to
// single, convert exactly (or, for 32-bit integers to single, by the plain
// rounding of a cast), so the host's saturating conversion reduces to a cast
// for them. Reading "int16=>double" and the like is mostly this conversion;
// done eight lanes at a time it costs a fraction of an element-by-element
// loop.
#pragma once

#include <cstddef>

#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

// Converts `n` elements of class `srcClass` at `src` into class `dstClass`
// at `dst`, when the pair is a widening one; false (nothing done) for every
// other pair, which the host's AssignToVoidBuffer converts. Both pointers
// must be aligned to their element types. Cost: one pass, no allocation.
bool widenElements(kxClassID dstClass, void* dst, kxClassID srcClass, const void* src, size_t n);

}  // namespace Tarnwicks::FileIO

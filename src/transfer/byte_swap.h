// Byte order of whole elements: when a transfer must reverse the bytes of
// its elements, and the loops that do it.
#pragma once

#include <cstddef>

#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

// True when elements of class `cls` stored in machine format `format` have
// their bytes in the other order from this machine's. Never for char, whose
// bytes belong to the text decoder. Formats are compared modulo 5: the host
// lists each byte order once in the first group and again as its l64 form
// in the second, so "ieee-le.l64" is as native as "ieee-le".
bool needsByteSwap(kxClassID cls, int format);

// Reverses the bytes of each of `n` elements of `elementBytes` bytes in
// place. Sizes other than 2, 4 and 8 leave the data as it is. Cost: one
// pass, no allocation; one byte shuffle per 32 bytes where the processor has
// AVX2, a byte-swap instruction per element otherwise.
void swapBytesInPlace(void* data, size_t n, size_t elementBytes);

// The same while copying from `src` to `dst` (which must not overlap): a
// reversal folded into a copy costs no more than the copy.
void swapBytesCopy(void* dst, const void* src, size_t n, size_t elementBytes);

}  // namespace Tarnwicks::FileIO

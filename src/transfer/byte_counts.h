// Arithmetic on file positions and skip counts that can't overflow: a skip
// is any count up to the largest 64-bit value, so a position plus a skip,
// or bits rounded up to bytes, may lie beyond what an int64_t holds.
#pragma once

#include <cstdint>
#include <limits>

namespace Tarnwicks::FileIO {

// The bytes that cover `bits` bits (bits >= 0), rounded up.
constexpr int64_t bytesCoveringBits(int64_t bits) {
  return bits / 8 + (bits % 8 != 0 ? 1 : 0);
}

// position + bytes, or the largest int64_t when the sum lies beyond it: no
// file reaches that far, so every test against a file's size still holds.
inline int64_t positionPlus(int64_t position, int64_t bytes) {
  int64_t sum = 0;
  if (__builtin_add_overflow(position, bytes, &sum)) return std::numeric_limits<int64_t>::max();
  return sum;
}

}  // namespace Tarnwicks::FileIO

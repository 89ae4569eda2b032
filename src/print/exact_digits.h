// Every decimal digit of a double, for the precisions the fast paths don't
// serve.
//
// A finite double is m * 2^e with m below 2^53, so its exact decimal
// expansion ends: at most 767 significant digits, and nothing but zeros
// after them. Printing with a precision of a million or two thousand
// million is therefore these digits, rounded once, then zeros that the
// caller writes straight to its sink: memory stays bounded by the digits,
// and time is linear in the output.
#pragma once

#include <cstdint>

namespace Tarnwicks::FileIO {

// The exact decimal expansion of a finite, non-negative double: `count`
// significant digits (no trailing zeros; 0 for zero), the first of them at
// place 10^`firstPlace`.
struct ExactDecimal {
  static constexpr int kMaxDigits = 800;  // 767 suffice
  char digits[kMaxDigits];
  int count = 0;
  int firstPlace = 0;
};
void exactDecimal(double magnitude, ExactDecimal& out);

// `value` rounded half to even at place 10^lastPlace, in place: digits
// below that place go, and a carry may add a digit in front (firstPlace
// grows). A value that rounds to zero has count 0.
void roundAtPlace(ExactDecimal& value, int64_t lastPlace);

}  // namespace Tarnwicks::FileIO

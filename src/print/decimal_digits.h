// Exact decimal scaling of doubles in 128-bit integer arithmetic.
//
// A double is m * 2^e with m below 2^53. Its value times 10^scale, rounded
// half to even on the exact product, is what printf's digits are: %.6f
// prints round(|v| * 10^6), %.5e prints round(|v| * 10^(5 - X)) for the
// value's decimal exponent X. For the scales that ordinary precisions and
// magnitudes need, the exact product fits in 128 bits and costs a multiply
// and a shift; the rest is left to the caller's general path.
#pragma once

#include <cstdint>

namespace Tarnwicks::FileIO {

using uint128 = unsigned __int128;

// round(|value| * 10^scale), half to even. False when the exact arithmetic
// would need more than 128 bits.
bool scaledInteger(double magnitude, int scale, uint128& out);

// The decimal digits of `value` ending at `end` (at most 39); returns where
// they begin.
char* writeDecimal128(uint128 value, char* end);

// 10^n for n from 0 to 38.
uint128 powerOfTen(int n);

}  // namespace Tarnwicks::FileIO

// One date as the library keeps it: a double-double count of milliseconds
// since 1970-01-01 00:00:00 in the parser's zone. `high` holds the leading
// part and `low` the correction that carries digits past the millisecond
// (zero unless a fraction longer than three digits was read).
//
// NaT is `high` a negative quiet NaN with `low` 0; the infinities are `high`
// plus or minus infinity with `low` 0. These are the values that the host's
// datetime class stores, high part as the real and low part as the
// imaginary part of one complex double.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

namespace datetime {

struct DateValue {
  double high = 0;
  double low = 0;

  static DateValue notATime() { return {std::bit_cast<double>(kNaTBits), 0}; }
  static DateValue plusInfinity() { return {INFINITY, 0}; }
  static DateValue minusInfinity() { return {-INFINITY, 0}; }

  bool isNaT() const { return std::isnan(high); }
  // A date that a format can be said to have read: neither part is NaN, so
  // the infinities count and NaT does not.
  bool isParsed() const { return !std::isnan(high) && !std::isnan(low); }

  // The bits of NaT's high part: the negative quiet NaN.
  static constexpr uint64_t kNaTBits = 0xFFF8000000000000ULL;
};

// The sum of a double-double `value` and a double `x`, as a double-double.
// Exact to the last bit of the two parts (two-sum, then renormalised); a NaN
// error term from infinite operands becomes 0.
inline DateValue addDoubleDouble(DateValue value, double x) {
  double h = value.high;
  double l = value.low;
  double s = h + x;
  double b = s - h;
  double e = (h - (s - b)) + (x - b);
  if (std::isnan(e)) e = 0;
  if (l == 0) return {s, e};
  double t = e + l;
  double r = s + t;
  double c = t - (r - s);
  if (std::isnan(c)) c = 0;
  return {r, c};
}

}  // namespace datetime

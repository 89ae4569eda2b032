// From the text of a lexed number to the value of a column of one of the
// ten numeric types.
//
// A part's text reads as strtod reads it once every unit that is not a
// digit, a sign or a point has become "e" (so any exponent letter, and the
// unit letter of an imaginary part, work alike). Doubles are correctly
// rounded (fast_float). Integer columns round the double, halves away from
// zero, and saturate silently; the 64-bit ones read big values from the
// digits themselves, since a double cannot hold them. No allocation, no
// throw.
#pragma once

#include <fast_float/fast_float.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

#include "textscan/number_lexer.h"

namespace textscan {

namespace conversion_detail {

// Units of a number mapped on the stack; longer ones use a heap buffer.
inline constexpr size_t kScratchUnits = 128;

template <class CharT>
inline char16_t unitOf(CharT c) {
  return static_cast<char16_t>(static_cast<std::make_unsigned_t<CharT>>(c));
}

inline bool isPlainNumberUnit(char16_t c) {
  return (c >= u'0' && c <= u'9') || c == u'+' || c == u'-' || c == u'.';
}

// fast_float over narrow text: a leading "+" is skipped, and text that is
// no number at all gives 0, as strtod does.
inline double parseNarrow(const char* first, const char* last) {
  if (first < last && *first == '+') ++first;
  double value = 0;
  auto result = fast_float::from_chars(first, last, value);
  if (result.ec != std::errc()) {
    // Out of range: fast_float leaves the infinity or zero strtod gives.
    if (result.ec == std::errc::result_out_of_range) return value;
    return 0;
  }
  return value;
}

// "inf" or "nan", either case, with an optional sign: the value, else false.
template <class CharT>
bool parseName(const CharT* p, size_t n, double& value) {
  if (n != 3 && n != 4) return false;
  bool negative = false;
  if (n == 4) {
    char16_t s = unitOf(p[0]);
    if (s != u'+' && s != u'-') return false;
    negative = s == u'-';
    ++p;
  }
  char16_t a = foldAsciiCase(unitOf(p[0])), b = foldAsciiCase(unitOf(p[1])),
           c = foldAsciiCase(unitOf(p[2]));
  if (a == u'i' && b == u'n' && c == u'f') {
    value = negative ? -std::numeric_limits<double>::infinity()
                     : std::numeric_limits<double>::infinity();
    return true;
  }
  if (a == u'n' && b == u'a' && c == u'n') {
    value = negative ? -std::numeric_limits<double>::quiet_NaN()
                     : std::numeric_limits<double>::quiet_NaN();
    return true;
  }
  return false;
}

}  // namespace conversion_detail

// The double of one part's text (no blanks around it). An empty text is 0.
template <class CharT>
double partToDouble(const CharT* p, size_t n) {
  using namespace conversion_detail;
  if (n == 0) return 0;
  double value;
  if (parseName(p, n, value)) return value;
  if constexpr (sizeof(CharT) == 1) {
    bool plain = true;
    for (size_t i = 0; i < n && plain; ++i) {
      char c = p[i];
      plain = isPlainNumberUnit(unitOf(c)) || c == 'e' || c == 'E';
    }
    if (plain) return parseNarrow(p, p + n);
  }
  // Numbers longer than the buffer on the stack (hundreds of digits, made
  // only by files built to be odd) take a buffer that grows once.
  char onStack[kScratchUnits];
  static thread_local std::string longText;
  char* mapped = onStack;
  if (n > kScratchUnits) {
    longText.resize(n);
    mapped = longText.data();
  }
  for (size_t i = 0; i < n; ++i) {
    char16_t c = unitOf(p[i]);
    mapped[i] = isPlainNumberUnit(c) ? static_cast<char>(c) : 'e';
  }
  return parseNarrow(mapped, mapped + n);
}

// The common number in one pass: an optional minus, digits or a point, and
// a plain exponent, read by fast_float where it stands (UTF-16 units are
// copied to bytes first). Returns the units taken, or 0 when the number is
// anything else (a word, a plus sign, an imaginary or complex form, another
// exponent letter) or runs to the end of `avail`, so that the caller lexes it
// instead. Where it takes a number, the lexer would have taken the same
// text, and the value is the one its conversion gives.
template <class CharT>
[[gnu::always_inline]] inline size_t readPlainReal(const CharT* p, size_t avail,
                                                   const NumberSyntax& syntax, double& value) {
  using namespace conversion_detail;
  if (avail < 2) return 0;
  char16_t c = unitOf(p[0]);
  char16_t d = c == u'-' ? unitOf(p[1]) : c;
  if (!((d >= u'0' && d <= u'9') || d == u'.')) return 0;
  const char* first;
  const char* last;
  char copied[kScratchUnits];
  if constexpr (sizeof(CharT) == 1) {
    first = p;
    last = p + avail;
  } else {
    size_t n = 0;
    while (n < avail && n < kScratchUnits) {
      char16_t u = p[n];
      if (!(isPlainNumberUnit(u) || u == u'e' || u == u'E')) break;
      copied[n++] = static_cast<char>(u);
    }
    if (n == kScratchUnits) return 0;
    first = copied;
    last = copied + n;
  }
  auto result = fast_float::from_chars(first, last, value);
  if (result.ec != std::errc()) return 0;
  size_t length = static_cast<size_t>(result.ptr - first);
  if (length >= avail) return 0;
  char16_t next = unitOf(p[length]);
  if (next == u'i' || next == u'j' || next == u'+' || next == u'-' ||
      syntax.isExponentLetter(next)) {
    return 0;
  }
  return length;
}

// A part of a lexed number, as a double.
template <class CharT>
double partValue(const CharT* field, const NumberPart& part) {
  return partToDouble(field + part.begin, part.end - part.begin);
}

// The value of type T for a double read from `text` (used for the 64-bit
// types, which look at the digits again).
template <class T, class CharT>
T toColumnType(double x, const CharT* text, size_t n);

namespace conversion_detail {

// Beyond 2^52 a double has no fraction left: the 64-bit types read the
// digits themselves from there on.
inline constexpr double kExactLimit = 4503599627370496.0;

template <class T>
T saturatedRound(double x) {
  constexpr double lo = static_cast<double>(std::numeric_limits<T>::min());
  constexpr double hi = static_cast<double>(std::numeric_limits<T>::max());
  if (std::isnan(x)) return 0;
  if (x >= hi) return std::numeric_limits<T>::max();
  if (x <= lo) return std::numeric_limits<T>::min();
  return static_cast<T>(std::round(x));
}

// The digits of the text into a 64-bit value, the limit at once on
// overflow; at the first unit that is no digit, the rest of the text read
// as a number rounds the result away from zero when it is at least 0.5.
template <class T, class CharT>
T exactInteger(const CharT* p, size_t n) {
  constexpr bool isSigned = std::is_signed_v<T>;
  using U = uint64_t;
  size_t i = 0;
  bool negative = false;
  if (i < n && (unitOf(p[i]) == u'+' || unitOf(p[i]) == u'-')) {
    negative = unitOf(p[i]) == u'-';
    ++i;
  }
  const U limit = isSigned ? (negative ? U{1} << 63 : (U{1} << 63) - 1)
                           : (negative ? 0 : std::numeric_limits<U>::max());
  U value = 0;
  for (; i < n; ++i) {
    char16_t c = unitOf(p[i]);
    if (c < u'0' || c > u'9') break;
    U digit = c - u'0';
    if (value > (limit - digit) / 10) {
      return isSigned ? (negative ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max())
                      : (negative ? 0 : std::numeric_limits<T>::max());
    }
    value = value * 10 + digit;
  }
  if (i < n && value + 1 < limit && partToDouble(p + i, n - i) >= 0.5) ++value;
  if constexpr (isSigned) {
    return negative ? static_cast<T>(U{0} - value) : static_cast<T>(value);
  } else {
    return negative ? 0 : static_cast<T>(value);
  }
}

}  // namespace conversion_detail

template <class T, class CharT>
T toColumnType(double x, const CharT* text, size_t n) {
  using namespace conversion_detail;
  if constexpr (std::is_same_v<T, double>) {
    return x;
  } else if constexpr (std::is_same_v<T, float>) {
    return static_cast<float>(x);
  } else if constexpr (sizeof(T) < 8) {
    return saturatedRound<T>(x);
  } else {
    if (std::isnan(x)) return 0;
    if (std::isinf(x)) {
      return x > 0 ? std::numeric_limits<T>::max() : std::numeric_limits<T>::min();
    }
    if (std::is_unsigned_v<T> && x < 0) return 0;
    if (std::fabs(x) < kExactLimit) return static_cast<T>(std::round(x));
    return exactInteger<T>(text, n);
  }
}

// The value an empty field takes in a column of type T: "EmptyValue"
// truncated toward zero and saturated for the integer types, 0 for NaN.
template <class T>
T emptyValueAs(double v) {
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(v);
  } else {
    if (std::isnan(v)) return 0;
    constexpr double hi = static_cast<double>(std::numeric_limits<T>::max());
    constexpr double lo = static_cast<double>(std::numeric_limits<T>::min());
    if (v >= hi) return std::numeric_limits<T>::max();
    if (v <= lo) return std::numeric_limits<T>::min();
    return static_cast<T>(std::trunc(v));
  }
}

}  // namespace textscan

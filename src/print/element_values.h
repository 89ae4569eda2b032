// The element types of printable arrays, and the value tests and conversions
// the print pieces apply to one element. Each is a template over the
// element's C++ type, so that the batch loop of the runner, the pieces'
// decision and the general readers of the argument sources test and convert
// a value the same way.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

// Logical elements are bytes; any byte but 0 reads as true.
enum class LogicalByte : uint8_t {};

template <class T>
inline constexpr bool kIsFloating = std::is_floating_point_v<T>;
template <class T>
inline constexpr bool kIsSignedInteger = std::is_integral_v<T>&& std::is_signed_v<T>;

// Calls f.template operator()<T>() with the element type of `cls`. Char data
// are UTF-16 units. Classes that are not printable have been refused before
// any value is read; they read as double.
template <class F>
decltype(auto) visitElementType(kxClassID cls, F&& f) {
  switch (cls) {
    case kxSINGLE_CLASS:
      return f.template operator()<float>();
    case kxINT8_CLASS:
      return f.template operator()<int8_t>();
    case kxUINT8_CLASS:
      return f.template operator()<uint8_t>();
    case kxINT16_CLASS:
      return f.template operator()<int16_t>();
    case kxUINT16_CLASS:
      return f.template operator()<uint16_t>();
    case kxINT32_CLASS:
      return f.template operator()<int32_t>();
    case kxUINT32_CLASS:
      return f.template operator()<uint32_t>();
    case kxINT64_CLASS:
      return f.template operator()<int64_t>();
    case kxUINT64_CLASS:
      return f.template operator()<uint64_t>();
    case kxCHAR_CLASS:
      return f.template operator()<char16_t>();
    case kxLOGICAL_CLASS:
      return f.template operator()<LogicalByte>();
    default:
      return f.template operator()<double>();
  }
}

template <class T>
inline auto plainValue(T v) {
  if constexpr (std::is_same_v<T, LogicalByte>) {
    return static_cast<uint8_t>(static_cast<uint8_t>(v) != 0);
  } else if constexpr (std::is_same_v<T, char16_t>) {
    return static_cast<uint16_t>(v);
  } else {
    return v;
  }
}

template <class T>
inline double elementToDouble(T v) {
  return static_cast<double>(plainValue(v));
}

template <class T>
inline bool elementIsFinite(T v) {
  if constexpr (kIsFloating<T>) {
    return std::isfinite(v);
  } else {
    return true;
  }
}

// Rounding for the integer readers: values whose spacing is below one move
// half a unit away from zero before they are cut, so that the cut rounds.
// Larger values are whole already, and adding a half would round them to
// even instead.
template <class F>
inline F roundHalfOut(F v) {
  constexpr F limit = std::is_same_v<F, float> ? F(8388608.0f) : F(4503599627370496.0);
  if (std::fabs(v) < limit) v += v >= 0 ? F(0.5) : F(-0.5);
  return v;
}

template <class T>
inline char16_t elementToChar16(T raw) {
  auto v = plainValue(raw);
  if constexpr (kIsFloating<T>) {
    if (v != v) return 0;
    v = roundHalfOut(v);
    if (v > 65535) return 65535;
    if (v < 0) return 0;
    return static_cast<char16_t>(v);
  } else {
    if constexpr (std::is_signed_v<decltype(v)>) {
      if (v < 0) return 0;
    }
    if (static_cast<uint64_t>(v) > 65535) return 65535;
    return static_cast<char16_t>(v);
  }
}

template <class T>
inline int64_t elementToInt64(T raw) {
  auto v = plainValue(raw);
  if constexpr (kIsFloating<T>) {
    if (v != v) return 0;
    auto r = roundHalfOut(v);
    if (r >= 9223372036854775808.0) return std::numeric_limits<int64_t>::max();
    if (r < -9223372036854775808.0) return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(r);
  } else if constexpr (std::is_same_v<decltype(v), uint64_t>) {
    return v > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())
               ? std::numeric_limits<int64_t>::max()
               : static_cast<int64_t>(v);
  } else {
    return static_cast<int64_t>(v);
  }
}

template <class T>
inline uint64_t elementToUInt64(T raw) {
  auto v = plainValue(raw);
  if constexpr (kIsFloating<T>) {
    if (v != v) return 0;
    auto r = roundHalfOut(v);
    if (r >= 18446744073709551616.0) return std::numeric_limits<uint64_t>::max();
    if (r < 0) return 0;
    return static_cast<uint64_t>(r);
  } else {
    if constexpr (std::is_signed_v<decltype(v)>) {
      if (v < 0) return 0;
    }
    return static_cast<uint64_t>(v);
  }
}

// ---- the value tests of the pieces; a finite value is assumed -------------

// %d and %i print the value itself when it is a whole number that a signed
// 64-bit integer holds exactly. 2^63 is the first double that fails.
template <class T>
inline bool fitsSigned64(T raw) {
  auto v = plainValue(raw);
  if constexpr (kIsFloating<T>) {
    double d = v;
    return d >= -9223372036854775808.0 && d < 9223372036854775808.0 &&
           static_cast<double>(static_cast<int64_t>(d)) == d;
  } else if constexpr (std::is_same_v<decltype(v), uint64_t>) {
    return v <= static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
  } else {
    return true;
  }
}

// The value of an element that fitsSigned64 accepted: a floating one is
// whole and in range, so a plain cast gives what elementToInt64 would,
// without its rounding.
template <class T>
inline int64_t fittedToInt64(T v) {
  if constexpr (kIsFloating<T>) {
    return static_cast<int64_t>(v);
  } else {
    return elementToInt64(v);
  }
}

// %o, %u, %x and %X: a whole number from 0 below 2^64.
template <class T>
inline bool fitsUnsigned64(T raw) {
  auto v = plainValue(raw);
  if constexpr (kIsFloating<T>) {
    double d = v;
    return d >= 0 && d < 18446744073709551616.0 &&
           static_cast<double>(static_cast<uint64_t>(d)) == d;
  } else if constexpr (std::is_signed_v<decltype(v)>) {
    return v >= 0;
  } else {
    return true;
  }
}

// %s takes a number as a character when it is a whole 32-bit value.
template <class T>
inline bool fitsInt32(T raw) {
  auto v = plainValue(raw);
  if constexpr (kIsFloating<T>) {
    double d = v;
    return d >= -2147483648.0 && d <= 2147483647.0 && std::trunc(d) == d;
  } else if constexpr (std::is_same_v<decltype(v), uint32_t> ||
                       std::is_same_v<decltype(v), uint64_t>) {
    return v <= 2147483647u;
  } else if constexpr (std::is_same_v<decltype(v), int64_t>) {
    return v >= -2147483648LL && v <= 2147483647LL;
  } else {
    return true;
  }
}

// A UTF-16 code: a whole number from 0 to 65535 (%c, and each element %s
// takes from a numeric array).
template <class T>
inline bool isCharacterCode(T raw) {
  auto v = plainValue(raw);
  if constexpr (kIsFloating<T>) {
    double d = v;
    return d >= 0 && d <= 65535 && std::trunc(d) == d;
  } else {
    if constexpr (std::is_signed_v<decltype(v)>) {
      if (v < 0) return false;
    }
    return static_cast<uint64_t>(v) <= 65535;
  }
}

}  // namespace Tarnwicks::FileIO

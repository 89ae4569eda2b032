// The number conversions of scan formats: for each conversion and length,
// the reader that gathers it, the C type its value takes, and how the
// reader's magnitude and sign become that value.
//
// The readers (fileio/number_readers.h) give a 64-bit magnitude and a sign;
// the raw value is what the C library's conversion would hold (the
// two's complement of the magnitude when the sign is negative). Signed
// types clamp the raw value to their range. Unsigned types clamp a positive
// value to their largest; a negative one keeps its low bits when the bitwise
// complement of the raw value fits the type (so "-1" read by %u is
// 4294967295, as the C library has it), and is 0 otherwise.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "fileio/byte_source.h"
#include "fileio/number_readers.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

// The reader a conversion uses.
enum class ReaderKind { Signed, AnyBase, Unsigned, Hex, Octal, Float };

template <class T>
T clampSigned(uint64_t magnitude, bool negative) {
  const auto raw = static_cast<int64_t>(negative ? 0 - magnitude : magnitude);
  if constexpr (sizeof(T) == sizeof(int64_t)) {
    return raw;
  } else {
    return static_cast<T>(
        std::clamp<int64_t>(raw, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
  }
}

template <class T>
T clampUnsigned(uint64_t magnitude, bool negative) {
  constexpr uint64_t kLargest = std::numeric_limits<T>::max();
  const uint64_t raw = negative ? 0 - magnitude : magnitude;
  if (!negative) return static_cast<T>(std::min(raw, kLargest));
  return ~raw <= kLargest ? static_cast<T>(raw & kLargest) : T(0);
}

// One functor per reader. Each has the value type `value_type`, the class
// of the result when a format holds only its kind (kResultClass), and
// read(): true with the value on success, else false with the reader's
// code. read() costs what the reader costs: no allocation, no throw.
template <class T, ReaderKind Kind>
struct IntegerFunctorBase {
  using value_type = T;
  static constexpr ReaderKind kReader = Kind;
  static constexpr bool kSigned = Kind == ReaderKind::Signed || Kind == ReaderKind::AnyBase;
  static constexpr bool kLong = sizeof(T) == sizeof(int64_t);
  static constexpr kxClassID kResultClass = !kLong    ? kxDOUBLE_CLASS
                                            : kSigned ? kxINT64_CLASS
                                                      : kxUINT64_CLASS;

  static T fromReader(uint64_t magnitude, bool negative) {
    if constexpr (kSigned) {
      return clampSigned<T>(magnitude, negative);
    } else {
      return clampUnsigned<T>(magnitude, negative);
    }
  }
  static bool read(ByteSource& in, int width, T& value, int& code) {
    bool negative = false;
    code = 0;
    uint64_t magnitude;
    switch (Kind) {
      case ReaderKind::Signed:
        magnitude = readSigned(in, width, code, negative);
        break;
      case ReaderKind::AnyBase:
        magnitude = readAnyBase(in, width, code, negative);
        break;
      case ReaderKind::Unsigned:
        magnitude = readUnsigned(in, width, code, negative);
        break;
      case ReaderKind::Hex:
        magnitude = readHex(in, width, code, negative);
        break;
      default:
        magnitude = readOctal(in, width, code, negative);
        break;
    }
    if (code != 0) return false;
    value = fromReader(magnitude, negative);
    return true;
  }
};

template <class T>
struct IntegerReadingFunctor : IntegerFunctorBase<T, ReaderKind::Signed> {};
template <class T>
struct IntegerCouldBeHexReadingFunctor : IntegerFunctorBase<T, ReaderKind::AnyBase> {};
template <class T>
struct UnsignedIntegerReadingFunctor : IntegerFunctorBase<T, ReaderKind::Unsigned> {};
template <class T>
struct HexReadingFunctor : IntegerFunctorBase<T, ReaderKind::Hex> {};
template <class T>
struct OctalReadingFunctor : IntegerFunctorBase<T, ReaderKind::Octal> {};

template <class T>
struct FloatReadingFunctor {
  using value_type = T;
  static constexpr ReaderKind kReader = ReaderKind::Float;
  static constexpr kxClassID kResultClass = kxDOUBLE_CLASS;

  static bool read(ByteSource& in, int width, T& value, int& code) {
    code = kReadSuccess;
    double v = readDouble(in, width, code);
    if (code != kReadSuccess) return false;
    value = static_cast<T>(v);
    return true;
  }
};

}  // namespace Tarnwicks::FileIO

// %bo %bu %bx %bX (doubles) and %to %tu %tx %tX (singles): the bit pattern
// of a floating value, always with all its digits.
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include "pieces.h"
#include "twhost/stream_errors.h"

namespace Tarnwicks::FileIO {

namespace {

template <class Bits>
int writeDigits(char* buffer, Bits bits, int count, unsigned base, const char* digits) {
  for (int i = count - 1; i >= 0; --i) {
    buffer[i] = digits[bits % base];
    bits /= base;
  }
  return count;
}

// 64 bits take 22 octal, 20 decimal or 16 hexadecimal digits; 32 bits 11,
// 10 or 8.
template <class Bits>
constexpr int digitCount(unsigned base) {
  if constexpr (sizeof(Bits) == 8) {
    return base == 8 ? 22 : base == 10 ? 20 : 16;
  } else {
    return base == 8 ? 11 : base == 10 ? 10 : 8;
  }
}

}  // namespace

template <class Bits, class Float>
void foutFormatPieceForOUXbt<Bits, Float>::print(PrintSink& sink, printfArgumentSource& source) {
  const FieldState& width = this->widthField();
  const FieldState& precision = this->precisionField();
  bool alternate = (this->flags() & kFlagAlternate) != 0;
  bool left = this->leftJustified();
  bool zeroFill = !left && (this->flags() & kFlagZero) && precision.kind == kFieldAbsent;
  if (!source.requireValue(true)) return;

  Float value;
  if constexpr (sizeof(Float) == 4) {
    value = source.readSingle();
  } else {
    value = source.readDouble();
  }
  Bits bits;
  std::memcpy(&bits, &value, sizeof bits);
  char digits[32] = {};
  int count = formatDigits(digits, bits);

  uint64_t target = static_cast<uint64_t>(count);
  if (precision.kind != kFieldAbsent) {
    target = std::max<uint64_t>(precision.resolved, target);
  } else if (zeroFill && width.kind != kFieldAbsent) {
    target = std::max<uint64_t>(width.resolved, target);
  }
  uint64_t size = adjustLength(target, count, alternate);

  // The text is prefix, zeros and digits, padded as "%*s" would pad it.
  FormattedNumber number;
  char* cursor = number.prefix;
  writePrefix(cursor, alternate);
  number.prefixLength = static_cast<uint32_t>(cursor - number.prefix);
  number.zeros = target - static_cast<uint64_t>(count);
  number.digits = digits;
  number.digitCount = static_cast<size_t>(count);
  if (width.resolved > INT_MAX) {
    sink.flush();
    sink.target().errorCode = EOVERFLOW;
    throw static_cast<int>(EOVERFLOW);
  }
  if (width.resolved > size) (left ? number.padAfter : number.padBefore) = width.resolved - size;
  sink.putNumber(number);
}

template <class Bits, class Float>
int foutFormatPieceForObt<Bits, Float>::formatDigits(char* buffer, Bits bits) {
  int n = writeDigits(buffer, bits, digitCount<Bits>(8), 8, "01234567");
  if (n != digitCount<Bits>(8)) throw code(StreamError::InternalError);
  return n;
}

template <class Bits, class Float>
uint64_t foutFormatPieceForObt<Bits, Float>::adjustLength(uint64_t& length, int digitCount,
                                                          bool alternate) {
  // "#" asks for a leading zero, which only a field of bare digits lacks.
  if (alternate && length == static_cast<uint64_t>(digitCount)) ++length;
  return length;
}

template <class Bits, class Float>
int foutFormatPieceForUbt<Bits, Float>::formatDigits(char* buffer, Bits bits) {
  int n = writeDigits(buffer, bits, digitCount<Bits>(10), 10, "0123456789");
  if (n != digitCount<Bits>(10)) throw code(StreamError::InternalError);
  return n;
}

template <class Bits, class Float>
foutFormatPieceForXbt<Bits, Float>::foutFormatPieceForXbt(const PieceSetup& setup)
    : foutFormatPieceForOUXbt<Bits, Float>(setup),
      upperCase(!setup.narrowFormat.empty() && setup.narrowFormat.back() == 'X') {}

template <class Bits, class Float>
int foutFormatPieceForXbt<Bits, Float>::formatDigits(char* buffer, Bits bits) {
  int n = writeDigits(buffer, bits, digitCount<Bits>(16), 16,
                      upperCase ? "0123456789ABCDEF" : "0123456789abcdef");
  if (n != digitCount<Bits>(16)) throw code(StreamError::InternalError);
  return n;
}

template <class Bits, class Float>
void foutFormatPieceForXbt<Bits, Float>::writePrefix(char*& cursor, bool alternate) {
  if (!alternate) return;
  *cursor++ = '0';
  *cursor++ = upperCase ? 'X' : 'x';
}

template class foutFormatPieceForOUXbt<unsigned long, double>;
template class foutFormatPieceForOUXbt<unsigned int, float>;
template class foutFormatPieceForObt<unsigned long, double>;
template class foutFormatPieceForObt<unsigned int, float>;
template class foutFormatPieceForUbt<unsigned long, double>;
template class foutFormatPieceForUbt<unsigned int, float>;
template class foutFormatPieceForXbt<unsigned long, double>;
template class foutFormatPieceForXbt<unsigned int, float>;

}  // namespace Tarnwicks::FileIO

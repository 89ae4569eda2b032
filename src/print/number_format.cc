// Exact printf text without printf. std::to_chars with a precision is
// specified to give what printf gives for the same conversion in the "C"
// locale, and the integer forms are simple enough to write out; the C library
// is kept for "#" with floating conversions, huge precisions, and the forms
// it reads in its own way.
#include "number_format.h"

#include <cerrno>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "decimal_digits.h"
#include "exact_digits.h"
#include "fileio/stream.h"

namespace Tarnwicks::FileIO {

namespace {

constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

void applyWidth(int32_t width, uint32_t flags, bool zeroFill, FormattedNumber& out) {
  if (width < 0) return;
  uint64_t used =
      out.prefixLength + out.zeros + out.digitCount + out.trailingZeros + out.suffixLength;
  if (static_cast<uint64_t>(width) <= used) return;
  uint64_t fill = static_cast<uint64_t>(width) - used;
  if (flags & kFlagLeft) {
    out.padAfter = fill;
  } else if (zeroFill && (flags & kFlagZero)) {
    out.zeros += fill;
  } else {
    out.padBefore = fill;
  }
}

void setSignPrefix(bool negative, uint32_t flags, FormattedNumber& out) {
  char sign = negative ? '-' : (flags & kFlagPlus) ? '+' : (flags & kFlagSpace) ? ' ' : 0;
  if (sign != 0) {
    out.prefix[0] = sign;
    out.prefixLength = 1;
  }
}

// Runs snprintf, growing into `large` when the small buffer is too short.
// A failure of the C library (a result it can't count in an int) is thrown
// as its errno, as a failed formatted write would report it, or as NoHelp
// when errno tells nothing.
template <class Call>
void runLibrary(NumberScratch& scratch, FormattedNumber& out, Call call) {
  errno = 0;
  int n = call(scratch.small, sizeof scratch.small);
  if (n < 0) throw errnoOr(StreamError::NoHelp);
  if (static_cast<size_t>(n) < sizeof scratch.small) {
    out.digits = scratch.small;
  } else {
    scratch.large.resize(static_cast<size_t>(n) + 1);
    errno = 0;
    n = call(scratch.large.data(), scratch.large.size());
    if (n < 0) throw errnoOr(StreamError::NoHelp);
    out.digits = scratch.large.data();
  }
  out.digitCount = static_cast<size_t>(n);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
template <class T>
void formatVerbatim(const NumberSpec& spec, T value, NumberScratch& scratch, FormattedNumber& out) {
  const char* f = spec.verbatim;
  int w = spec.width;
  int p = spec.precision;
  runLibrary(scratch, out, [&](char* buf, size_t size) {
    if (spec.verbatimWidthStar && spec.verbatimPrecisionStar)
      return snprintf(buf, size, f, w, p, value);
    if (spec.verbatimWidthStar) return snprintf(buf, size, f, w, value);
    if (spec.verbatimPrecisionStar) return snprintf(buf, size, f, p, value);
    return snprintf(buf, size, f, value);
  });
}

// A floating conversion by the C library, without its width, which is applied
// here so that a wide field costs no memory.
void formatDoubleByLibrary(const NumberSpec& spec, double value, NumberScratch& scratch,
                           FormattedNumber& out) {
  char format[16];
  char* f = format;
  *f++ = '%';
  if (spec.flags & kFlagPlus) *f++ = '+';
  if (spec.flags & kFlagSpace) *f++ = ' ';
  if (spec.flags & kFlagAlternate) *f++ = '#';
  bool withPrecision = spec.precision >= 0;
  if (withPrecision) {
    *f++ = '.';
    *f++ = '*';
  }
  *f++ = spec.conversion;
  *f = 0;
  int p = spec.precision;
  runLibrary(scratch, out, [&](char* buf, size_t size) {
    return withPrecision ? snprintf(buf, size, format, p, value)
                         : snprintf(buf, size, format, value);
  });
  if (out.digitCount > 0 &&
      (out.digits[0] == '-' || out.digits[0] == '+' || out.digits[0] == ' ')) {
    out.prefix[0] = out.digits[0];
    out.prefixLength = 1;
    ++out.digits;
    --out.digitCount;
  }
  applyWidth(spec.width, spec.flags, std::isfinite(value), out);
}
#pragma GCC diagnostic pop

char* writeOctal(uint64_t value, char* end) {
  do {
    *--end = static_cast<char>('0' + (value & 7));
    value >>= 3;
  } while (value != 0);
  return end;
}

char* writeHex(uint64_t value, char* end, bool upper) {
  const char* digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
  do {
    *--end = digits[value & 15];
    value >>= 4;
  } while (value != 0);
  return end;
}

// ---- %e %f %g by exact scaling ----------------------------------------------

char* writeExponent(int exponent, char* out) {
  *out++ = 'e';
  *out++ = exponent < 0 ? '-' : '+';
  unsigned e = static_cast<unsigned>(exponent < 0 ? -exponent : exponent);
  if (e < 10) *out++ = '0';
  char digits[8];
  char* end = digits + sizeof digits;
  char* begin = writeDecimal(e, end);
  while (begin < end) *out++ = *begin++;
  return out;
}

// d[.ddd], the mantissa of %e, from `count` digits.
char* writeMantissa(const char* digits, int count, char* out) {
  *out++ = digits[0];
  if (count > 1) {
    *out++ = '.';
    std::memcpy(out, digits + 1, static_cast<size_t>(count - 1));
    out += count - 1;
  }
  return out;
}

// The digits of places exponent .. -precision as a fixed-point number.
char* writeFixed(const char* digits, int count, int exponent, int precision, char* out) {
  if (exponent >= 0) {
    int whole = exponent + 1;
    std::memcpy(out, digits, static_cast<size_t>(whole));
    out += whole;
    if (precision > 0) {
      *out++ = '.';
      std::memcpy(out, digits + whole, static_cast<size_t>(count - whole));
      out += count - whole;
    }
    return out;
  }
  *out++ = '0';
  if (precision > 0) {
    *out++ = '.';
    int zeros = -exponent - 1;
    std::memset(out, '0', static_cast<size_t>(zeros));
    out += zeros;
    std::memcpy(out, digits, static_cast<size_t>(count));
    out += count;
  }
  return out;
}

// %g drops trailing zeros of the fraction, and the point when none is left.
char* trimFraction(char* begin, char* end) {
  char* point = static_cast<char*>(std::memchr(begin, '.', static_cast<size_t>(end - begin)));
  if (point == nullptr) return end;
  while (end > point + 1 && end[-1] == '0') --end;
  if (end == point + 1) --end;
  return end;
}

char* writeZero(char style, int precision, char* out) {
  *out++ = '0';
  if (style == 'g') return out;
  if (precision > 0) {
    *out++ = '.';
    std::memset(out, '0', static_cast<size_t>(precision));
    out += precision;
  }
  return style == 'e' ? writeExponent(0, out) : out;
}

// The `count` significant digits of |v| and its decimal exponent X, exactly
// rounded: round(|v| * 10^(count - 1 - X)) has exactly `count` digits.
bool significantDigits(double magnitude, int count, char* digits, int& exponent) {
  int binaryExponent;
  std::frexp(magnitude, &binaryExponent);
  // |v| lies in [2^(b-1), 2^b): X is this estimate or a little above it.
  int x = static_cast<int>(std::floor((binaryExponent - 1) * 0.30102999566398120));
  uint128 limit = powerOfTen(count);
  for (int tries = 0; tries < 3; ++tries, ++x) {
    uint128 q;
    if (!scaledInteger(magnitude, count - 1 - x, q)) return false;
    if (q >= limit) continue;  // X is higher, or rounding carried into a new place
    if (q < powerOfTen(count - 1)) return false;
    char buffer[48];
    char* end = buffer + sizeof buffer;
    std::memcpy(digits, writeDecimal128(q, end), static_cast<size_t>(count));
    exponent = x;
    return true;
  }
  return false;
}

// %e, %f or %g of a finite magnitude without "#", as printf writes it; null
// when the exact 128-bit path can't serve it.
char* writeExact(char style, int precision, double magnitude, char* out) {
  if (magnitude == 0) return writeZero(style, precision, out);
  if (style == 'f') {
    uint128 q;
    if (!scaledInteger(magnitude, precision, q)) return nullptr;
    char buffer[48];
    char* end = buffer + sizeof buffer;
    char* begin = writeDecimal128(q, end);
    // q / 10^precision: its first digit stands at place length - precision - 1.
    int length = static_cast<int>(end - begin);
    return writeFixed(begin, length, length - precision - 1, precision, out);
  }
  if (precision > 30) return nullptr;
  char digits[40];
  int exponent;
  if (style == 'e') {
    if (!significantDigits(magnitude, precision + 1, digits, exponent)) return nullptr;
    return writeExponent(exponent, writeMantissa(digits, precision + 1, out));
  }
  int significant = precision == 0 ? 1 : precision;
  if (!significantDigits(magnitude, significant, digits, exponent)) return nullptr;
  if (exponent < significant && exponent >= -4) {
    char* end = writeFixed(digits, significant, exponent, significant - 1 - exponent, out);
    return trimFraction(out, end);
  }
  char* end = trimFraction(out, writeMantissa(digits, significant, out));
  return writeExponent(exponent, end);
}

// ---- huge precisions from the exact digits ----------------------------------

// %e of the exact digits: d[.ddd] with `precision` places, then the
// exponent. The zeros past the digits are left to the sink.
void fullExponent(const ExactDecimal& x, int64_t precision, bool alternate, char upperE,
                  char* buffer, FormattedNumber& out) {
  char* p = buffer;
  *p++ = x.count > 0 ? x.digits[0] : '0';
  const int64_t shown = x.count > 1 ? x.count - 1 : 0;
  if (precision > 0 || alternate) *p++ = '.';
  std::memcpy(p, x.digits + 1, static_cast<size_t>(shown));
  p += shown;
  out.trailingZeros = static_cast<uint64_t>(precision - shown);
  char exponent[8];
  char* e = writeExponent(x.count > 0 ? x.firstPlace : 0, exponent);
  exponent[0] = upperE;
  if (out.trailingZeros == 0) {
    std::memcpy(p, exponent, static_cast<size_t>(e - exponent));
    p += e - exponent;
  } else {
    out.suffixLength = static_cast<uint32_t>(e - exponent);
    std::memcpy(out.suffix, exponent, out.suffixLength);
  }
  out.digits = buffer;
  out.digitCount = static_cast<size_t>(p - buffer);
}

// %f of the exact digits with `precision` places after the point.
void fullFixed(const ExactDecimal& x, int64_t precision, bool alternate, char* buffer,
               FormattedNumber& out) {
  char* p = buffer;
  int index = 0;
  if (x.count == 0 || x.firstPlace < 0) {
    *p++ = '0';
  } else {
    for (int place = x.firstPlace; place >= 0; --place) {
      *p++ = index < x.count ? x.digits[index++] : '0';
    }
  }
  if (precision > 0 || alternate) *p++ = '.';
  int64_t written = 0;
  if (x.count > 0 && index < x.count) {
    // Zeros between the point and the first digit, then the digits.
    for (int place = -1; place > x.firstPlace; --place, ++written) *p++ = '0';
    const int rest = x.count - index;
    std::memcpy(p, x.digits + index, static_cast<size_t>(rest));
    p += rest;
    written += rest;
  }
  out.trailingZeros = static_cast<uint64_t>(precision - written);
  out.digits = buffer;
  out.digitCount = static_cast<size_t>(p - buffer);
}

// %e, %f, %g with a precision too large for the fast paths, of a finite
// value: the exact digits rounded once.
void formatDoubleFull(const NumberSpec& spec, double value, NumberScratch& scratch,
                      FormattedNumber& out) {
  const bool alternate = (spec.flags & kFlagAlternate) != 0;
  const bool upper = spec.conversion == 'E' || spec.conversion == 'G';
  ExactDecimal x;
  exactDecimal(std::fabs(value), x);
  int64_t precision = spec.precision;
  char style = spec.conversion == 'f'                               ? 'f'
               : (spec.conversion == 'e' || spec.conversion == 'E') ? 'e'
                                                                    : 'g';
  bool trim = false;
  if (style == 'g') {
    const int64_t significant = precision == 0 ? 1 : precision;
    if (x.count > 0) roundAtPlace(x, int64_t{x.firstPlace} - significant + 1);
    const int64_t exponent = x.count > 0 ? x.firstPlace : 0;
    if (exponent < significant && exponent >= -4) {
      style = 'f';
      precision = significant - 1 - exponent;
    } else {
      style = 'e';
      precision = significant - 1;
    }
    trim = !alternate;
  } else if (style == 'e') {
    if (x.count > 0) roundAtPlace(x, int64_t{x.firstPlace} - precision);
  } else {
    roundAtPlace(x, -precision);
  }
  if (trim) {
    // %g shows no zeros after the last digit, and no point without digits
    // after it: what is left is the digits alone.
    precision = 0;
  }
  if (style == 'e') {
    if (trim) precision = x.count > 1 ? x.count - 1 : 0;
    fullExponent(x, precision, alternate, upper ? 'E' : 'e', scratch.small, out);
  } else {
    if (trim) {
      const int64_t below = int64_t{x.firstPlace} - x.count + 1;  // place of the last digit
      precision = x.count > 0 && below < 0 ? -below : 0;
    }
    fullFixed(x, precision, alternate, scratch.small, out);
  }
  setSignPrefix(std::signbit(value), spec.flags, out);
  // printf counts its output in an int; a text beyond that is no text.
  if (out.prefixLength + out.digitCount + out.trailingZeros + out.suffixLength > INT_MAX) {
    throw code(StreamError::InvalidFormat);
  }
  applyWidth(spec.width, spec.flags, true, out);
}

}  // namespace

char* writeDecimal(uint64_t value, char* end) {
  while (value >= 100) {
    unsigned pair = static_cast<unsigned>(value % 100) * 2;
    value /= 100;
    end -= 2;
    end[0] = kDigitPairs[pair];
    end[1] = kDigitPairs[pair + 1];
  }
  if (value >= 10) {
    unsigned pair = static_cast<unsigned>(value) * 2;
    end -= 2;
    end[0] = kDigitPairs[pair];
    end[1] = kDigitPairs[pair + 1];
  } else {
    *--end = static_cast<char>('0' + value);
  }
  return end;
}

void formatSigned(const NumberSpec& spec, int64_t value, NumberScratch& scratch,
                  FormattedNumber& out) {
  out = FormattedNumber{};
  if (spec.verbatim != nullptr) return formatVerbatim(spec, static_cast<long>(value), scratch, out);
  bool negative = value < 0;
  uint64_t magnitude = negative ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  setSignPrefix(negative, spec.flags, out);
  char* end = scratch.small + 32;
  char* begin = (spec.precision == 0 && magnitude == 0) ? end : writeDecimal(magnitude, end);
  out.digits = begin;
  out.digitCount = static_cast<size_t>(end - begin);
  if (spec.precision > 0 && static_cast<size_t>(spec.precision) > out.digitCount) {
    out.zeros = static_cast<uint64_t>(spec.precision) - out.digitCount;
  }
  applyWidth(spec.width, spec.flags, spec.precision < 0, out);
}

void formatUnsigned(const NumberSpec& spec, uint64_t value, NumberScratch& scratch,
                    FormattedNumber& out) {
  out = FormattedNumber{};
  if (spec.verbatim != nullptr) {
    return formatVerbatim(spec, static_cast<unsigned long>(value), scratch, out);
  }
  char* end = scratch.small + 32;
  char* begin = end;
  bool alternate = (spec.flags & kFlagAlternate) != 0;
  if (!(spec.precision == 0 && value == 0)) {
    switch (spec.conversion) {
      case 'o':
        begin = writeOctal(value, end);
        break;
      case 'x':
        begin = writeHex(value, end, false);
        break;
      case 'X':
        begin = writeHex(value, end, true);
        break;
      default:
        begin = writeDecimal(value, end);
        break;
    }
  }
  out.digits = begin;
  out.digitCount = static_cast<size_t>(end - begin);
  if (spec.precision > 0 && static_cast<size_t>(spec.precision) > out.digitCount) {
    out.zeros = static_cast<uint64_t>(spec.precision) - out.digitCount;
  }
  if (alternate) {
    if (spec.conversion == 'o') {
      // "#" makes the first digit a zero, adding one only when needed.
      if (out.zeros == 0 && (out.digitCount == 0 || out.digits[0] != '0')) out.zeros = 1;
    } else if ((spec.conversion == 'x' || spec.conversion == 'X') && value != 0) {
      out.prefix[0] = '0';
      out.prefix[1] = spec.conversion;
      out.prefixLength = 2;
    }
  }
  applyWidth(spec.width, spec.flags, spec.precision < 0, out);
}

void formatDouble(const NumberSpec& spec, double value, NumberScratch& scratch,
                  FormattedNumber& out) {
  out = FormattedNumber{};
  if (spec.verbatim != nullptr) return formatVerbatim(spec, value, scratch, out);
  int precision = spec.precision < 0 ? 6 : spec.precision;
  if (precision > NumberScratch::kMaxFastPrecision && std::isfinite(value)) {
    return formatDoubleFull(spec, value, scratch, out);
  }
  if ((spec.flags & kFlagAlternate) || !std::isfinite(value)) {
    return formatDoubleByLibrary(spec, value, scratch, out);
  }
  char style = spec.conversion == 'f'                               ? 'f'
               : (spec.conversion == 'e' || spec.conversion == 'E') ? 'e'
                                                                    : 'g';
  bool upper = spec.conversion == 'E' || spec.conversion == 'G';
  double magnitude = std::fabs(value);
  char* begin = scratch.small;
  char* end = writeExact(style, precision, magnitude, begin);
  if (end == nullptr) {
    std::chars_format format = style == 'f'   ? std::chars_format::fixed
                               : style == 'e' ? std::chars_format::scientific
                                              : std::chars_format::general;
    end = std::to_chars(begin, scratch.small + sizeof scratch.small, magnitude, format, precision)
              .ptr;
  }
  setSignPrefix(std::signbit(value), spec.flags, out);
  if (upper) {
    for (char* p = end - 1; p > begin; --p) {
      if (*p == 'e') {
        *p = 'E';
        break;
      }
    }
  }
  out.digits = begin;
  out.digitCount = static_cast<size_t>(end - begin);
  applyWidth(spec.width, spec.flags, true, out);
}

void formatPadded(const char* text, size_t length, uint64_t width, bool left,
                  FormattedNumber& out) {
  out = FormattedNumber{};
  out.digits = text;
  out.digitCount = length;
  if (width > length) {
    (left ? out.padAfter : out.padBefore) = width - length;
  }
}

}  // namespace Tarnwicks::FileIO

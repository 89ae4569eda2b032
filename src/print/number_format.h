// Numbers to text, byte for byte as the C library's printf writes them in the
// "C" locale, without a call into printf for the common forms.
//
// A formatted number is kept in parts (padding, sign or prefix, zeros,
// digits) so that a width of a million costs no buffer of that size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Tarnwicks::FileIO {

// The flag bits of a conversion, as the parser gathers them.
enum PrintFlag : uint32_t {
  kFlagLeft = 1,       // "-"
  kFlagPlus = 2,       // "+"
  kFlagSpace = 4,      // " "
  kFlagAlternate = 8,  // "#"
  kFlagZero = 16,      // "0"
};

// A width or precision that the conversion does not have.
inline constexpr int32_t kNoField = -1;

// One printf conversion with its fields settled: what "%<flags><width>.<precision>l<conversion>"
// means. Width and precision are kNoField when absent.
struct NumberSpec {
  uint32_t flags = 0;
  char conversion = 'd';  // d i o u x X e E f g G
  int32_t width = kNoField;
  int32_t precision = kNoField;
  // The narrow text of a conversion the C library reads in its own odd way
  // (a precision of "." followed by "-" and no digit); null for all others.
  // Such a conversion is always handed to the C library as written.
  const char* verbatim = nullptr;
  // Width and precision stand as "*" arguments in `verbatim`.
  bool verbatimWidthStar = false;
  bool verbatimPrecisionStar = false;
};

// Scratch space for one conversion. The small buffer serves every form but
// precisions above kMaxFastPrecision, which grow `large`.
struct NumberScratch {
  static constexpr int kMaxFastPrecision = 1024;
  char small[kMaxFastPrecision + 400];
  std::string large;
};

struct FormattedNumber {
  uint64_t padBefore = 0;  // blanks
  char prefix[2] = {0, 0};
  uint32_t prefixLength = 0;
  uint64_t zeros = 0;
  const char* digits = nullptr;
  size_t digitCount = 0;
  // Zeros after the digits, and then `suffix` (an exponent): the tail of a
  // huge precision, never held in memory. The suffix is empty whenever
  // trailingZeros is 0.
  uint64_t trailingZeros = 0;
  char suffix[8] = {};
  uint32_t suffixLength = 0;
  uint64_t padAfter = 0;  // blanks

  uint64_t size() const {
    return padBefore + prefixLength + zeros + digitCount + trailingZeros + suffixLength + padAfter;
  }
};

// %ld and %li.
void formatSigned(const NumberSpec& spec, int64_t value, NumberScratch& scratch,
                  FormattedNumber& out);
// %lo, %lu, %lx, %lX.
void formatUnsigned(const NumberSpec& spec, uint64_t value, NumberScratch& scratch,
                    FormattedNumber& out);
// %e, %E, %f, %g, %G. Infinite and NaN values, which the pieces print as
// words of their own, are handed to the C library. A precision above
// NumberScratch::kMaxFastPrecision is served from the exact digits, with
// its zeros left to the sink; one whose text could not be counted in an
// int, as printf counts, throws InvalidFormat.
void formatDouble(const NumberSpec& spec, double value, NumberScratch& scratch,
                  FormattedNumber& out);

// Writes `text` of `length` characters right-justified in `width`, or
// left-justified when `left` holds: the "%*s" of the words Inf and NaN and
// of the bit patterns.
void formatPadded(const char* text, size_t length, uint64_t width, bool left, FormattedNumber& out);

// Decimal digits of `value` ending at `end`; returns where they begin.
char* writeDecimal(uint64_t value, char* end);

}  // namespace Tarnwicks::FileIO

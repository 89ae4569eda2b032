// Exact decimal expansion of doubles with a small big-number in base 10^9.
#include "exact_digits.h"

#include <cmath>
#include <cstring>

namespace Tarnwicks::FileIO {

namespace {

constexpr uint32_t kLimbBase = 1000000000;
constexpr int kLimbDigits = 9;
// 1100 binary places need 5^1100, about 10^769: 86 limbs of nine digits.
constexpr int kMaxLimbs = 100;

// A non-negative integer, least significant limb first.
struct BigDecimal {
  uint32_t limb[kMaxLimbs];
  int used = 0;

  explicit BigDecimal(uint64_t v) {
    while (v != 0) {
      limb[used++] = static_cast<uint32_t>(v % kLimbBase);
      v /= kLimbBase;
    }
  }
  // Multiplies by k, which must be below 2^32.
  void multiply(uint64_t k) {
    uint64_t carry = 0;
    for (int i = 0; i < used; ++i) {
      uint64_t t = limb[i] * k + carry;
      limb[i] = static_cast<uint32_t>(t % kLimbBase);
      carry = t / kLimbBase;
    }
    while (carry != 0) {
      limb[used++] = static_cast<uint32_t>(carry % kLimbBase);
      carry /= kLimbBase;
    }
  }
  // The decimal digits, most significant first; returns their count.
  int write(char* out) const {
    if (used == 0) return 0;
    int n = 0;
    char top[kLimbDigits + 1];
    int topLength = 0;
    for (uint32_t v = limb[used - 1]; v != 0; v /= 10) top[topLength++] = char('0' + v % 10);
    while (topLength > 0) out[n++] = top[--topLength];
    for (int i = used - 2; i >= 0; --i) {
      uint32_t v = limb[i];
      for (int d = kLimbDigits - 1; d >= 0; --d) {
        out[n + d] = char('0' + v % 10);
        v /= 10;
      }
      n += kLimbDigits;
    }
    return n;
  }
};

}  // namespace

void exactDecimal(double magnitude, ExactDecimal& out) {
  out.count = 0;
  out.firstPlace = 0;
  if (!(magnitude > 0) || !std::isfinite(magnitude)) return;
  int exponent = 0;
  double fraction = std::frexp(magnitude, &exponent);
  auto mantissa = static_cast<uint64_t>(std::ldexp(fraction, 53));
  exponent -= 53;
  while ((mantissa & 1) == 0) {
    mantissa >>= 1;
    ++exponent;
  }
  BigDecimal n(mantissa);
  int place = 0;  // the value is n * 10^place
  if (exponent >= 0) {
    for (int left = exponent; left > 0; left -= 30)
      n.multiply(uint64_t{1} << (left < 30 ? left : 30));
  } else {
    // m / 2^k is m * 5^k / 10^k.
    constexpr uint64_t kFivePower13 = 1220703125;
    int left = -exponent;
    for (; left >= 13; left -= 13) n.multiply(kFivePower13);
    for (; left > 0; --left) n.multiply(5);
    place = exponent;
  }
  const int written = n.write(out.digits);
  // The last digit written stands at place `place`; zeros at the end go.
  int count = written;
  while (count > 0 && out.digits[count - 1] == '0') --count;
  out.count = count;
  out.firstPlace = place + written - 1;
}

void roundAtPlace(ExactDecimal& value, int64_t lastPlace) {
  if (value.count == 0) return;
  const int64_t lastDigitPlace = int64_t{value.firstPlace} - value.count + 1;
  if (lastDigitPlace >= lastPlace) return;  // nothing below the place: exact
  // Digits kept: those at places firstPlace down to lastPlace.
  const int64_t keep = int64_t{value.firstPlace} - lastPlace + 1;
  if (keep < 0) {
    value.count = 0;  // below half of the last place
    return;
  }
  const int k = static_cast<int>(keep);
  // The first dropped digit and whether anything follows it decide.
  const char first = value.digits[k];
  bool above = first > '5';
  if (first == '5') {
    above = k + 1 < value.count;  // the expansion has no trailing zeros
    if (!above) {
      const bool odd = k > 0 && (value.digits[k - 1] - '0') % 2 == 1;
      above = odd;  // a tie goes to the even neighbour
    }
  }
  value.count = k;
  if (above) {
    int i = k - 1;
    while (i >= 0 && value.digits[i] == '9') --i;
    if (i < 0) {
      // All nines, or nothing kept: the carry makes a new leading 1.
      value.digits[0] = '1';
      value.count = 1;
      ++value.firstPlace;
      return;
    }
    ++value.digits[i];
    value.count = i + 1;
  }
  while (value.count > 0 && value.digits[value.count - 1] == '0') --value.count;
}

}  // namespace Tarnwicks::FileIO

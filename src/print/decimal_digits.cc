#include "decimal_digits.h"

#include <bit>
#include <cstring>

#include "number_format.h"

namespace Tarnwicks::FileIO {

namespace {

struct PowerTable {
  uint128 values[39];
  constexpr PowerTable() : values() {
    values[0] = 1;
    for (int i = 1; i < 39; ++i) values[i] = values[i - 1] * 10;
  }
};
constexpr PowerTable kPowers;

int bitWidth(uint128 v) {
  uint64_t high = static_cast<uint64_t>(v >> 64);
  if (high != 0) return 64 + std::bit_width(high);
  return std::bit_width(static_cast<uint64_t>(v));
}

// Rounds quotient q with remainder `rem` of a division by `divisor`, half to
// even.
uint128 roundQuotient(uint128 q, uint128 rem, uint128 divisor) {
  uint128 twice = rem << 1;  // rem < divisor < 2^127
  if (twice > divisor || (twice == divisor && (q & 1))) ++q;
  return q;
}

}  // namespace

uint128 powerOfTen(int n) {
  return kPowers.values[n];
}

// The weight of the lowest bit of a subnormal double is 2^-1074.
constexpr int kSubnormalExponent = -1074;

bool scaledInteger(double magnitude, int scale, uint128& out) {
  uint64_t bits;
  std::memcpy(&bits, &magnitude, sizeof bits);
  int biased = static_cast<int>(bits >> 52 & 0x7ff);
  uint64_t m = bits & ((uint64_t{1} << 52) - 1);
  int e;
  if (biased == 0) {
    e = kSubnormalExponent;
  } else {
    m |= uint64_t{1} << 52;
    e = biased - 1075;
  }
  if (m == 0) {
    out = 0;
    return true;
  }
  if (scale >= 0) {
    if (scale > 22) return false;  // m * 10^scale must stay below 2^127
    uint128 n = static_cast<uint128>(m) * kPowers.values[scale];
    if (e >= 0) {
      if (bitWidth(n) + e > 127) return false;
      out = n << e;
      return true;
    }
    int shift = -e;
    if (shift >= 128) {
      out = 0;  // n < 2^127 <= half of 2^shift
      return true;
    }
    uint128 q = n >> shift;
    uint128 rem = n & ((uint128{1} << shift) - 1);
    out = roundQuotient(q, rem, uint128{1} << shift);
    return true;
  }
  if (-scale > 38) return false;
  uint128 divisor = kPowers.values[-scale];
  if (e >= 0) {
    if (53 + e > 127) return false;
    uint128 n = static_cast<uint128>(m) << e;
    out = roundQuotient(n / divisor, n % divisor, divisor);
    return true;
  }
  if (bitWidth(divisor) + (-e) > 126) return false;
  divisor <<= -e;
  out = roundQuotient(m / divisor, m % divisor, divisor);
  return true;
}

char* writeDecimal128(uint128 value, char* end) {
  constexpr uint64_t kChunk = 10000000000000000000ULL;  // 10^19
  if (value >> 64 == 0) return writeDecimal(static_cast<uint64_t>(value), end);
  char* begin = end;
  while (value >> 64 != 0) {
    uint64_t low = static_cast<uint64_t>(value % kChunk);
    value /= kChunk;
    char* chunk = writeDecimal(low, begin);
    while (begin - chunk < 19) *--chunk = '0';
    begin = chunk;
  }
  return writeDecimal(static_cast<uint64_t>(value), begin);
}

}  // namespace Tarnwicks::FileIO

// libFuzzer target for the size and skip arguments of fread and fwrite, and
// the arithmetic of positions plus skips.
//
// Checks, beyond the sanitizers:
//  - the size attribute agrees with a plain restatement of its rule (n,
//    Inf, [m n], [m Inf]; the limit 2^48 - 1 on each count and on their
//    product);
//  - the skip attribute accepts exactly the whole numbers from 0 up, of any
//    numeric class, and keeps their value (saturated past the 64-bit range);
//  - position plus skip and bits rounded up to bytes agree with 128-bit
//    arithmetic, saturating instead of overflowing.
//
// Input: byte 0 picks the check and the class; then raw 8-byte values.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "fileio/attributes.h"
#include "transfer/byte_counts.h"
#include "twhost/kx_array.h"
#include "twhost/kx_data.h"

namespace {

using namespace Tarnwicks::FileIO;

constexpr double kLimit = 281474976710655.0;  // 2^48 - 1

void check(bool ok) {
  if (!ok) std::abort();
}

bool badCount(double x) {
  return std::isnan(x) || x < 0;
}

void size(const double* v, size_t n) {
  kxOwned a(kxCreateDoubleMatrix(1, n, kxREAL));
  std::memcpy(kxGetPr(a.get()), v, n * sizeof(double));
  SizeAttribute s;
  s.parse(a.get());
  if (n == 1) {
    const double x = v[0];
    check(s.valid == !badCount(x));
    if (!s.valid) return;
    if (x == 0) {
      check(s.rows == 0 && s.columns == 0 && !s.unbounded);
    } else if (x <= kLimit) {
      check(s.rows == static_cast<int64_t>(std::round(x)) && s.columns == 1 && !s.unbounded);
    } else {
      check(s.rows == 1 && s.columns == 0 && s.unbounded);
    }
    check(!s.isMatrix);
    return;
  }
  const double m = v[0], c = v[1];
  const bool inLimits = m <= kLimit && c <= kLimit && std::round(m) * std::round(c) <= kLimit;
  const bool openEnded = m <= kLimit && c > kLimit;
  const bool expected = !badCount(m) && !badCount(c) && (inLimits || openEnded);
  check(s.valid == expected);
  if (!s.valid) return;
  check(s.isMatrix);
  if (inLimits) {
    check(s.rows == static_cast<int64_t>(std::round(m)) &&
          s.columns == static_cast<int64_t>(std::round(c)) && !s.unbounded);
  } else if (m == 0) {
    check(s.rows == 0 && s.columns == 0);
  } else {
    check(s.rows == static_cast<int64_t>(std::round(m)) && s.columns == 0 && s.unbounded);
  }
  // What is read is always within what a result can hold.
  if (!s.unbounded) check(double(s.rows) * double(s.columns) <= kLimit);
}

void skip(uint64_t bits, int kind) {
  SkipAttribute s;
  kxOwned a;
  bool expected = false;
  int64_t value = 0;
  if (kind == 0) {
    double d;
    std::memcpy(&d, &bits, sizeof d);
    a.reset(kxCreateDoubleScalar(d));
    expected = std::isfinite(d) && d >= 0 && std::trunc(d) == d;
    value = !expected                    ? 0
            : d >= 9223372036854775808.0 ? std::numeric_limits<int64_t>::max()
                                         : static_cast<int64_t>(d);
  } else {
    const kxClassID cls = kind == 1 ? kxINT64_CLASS : kxUINT64_CLASS;
    a.reset(kxCreateNumericMatrix(1, 1, cls, kxREAL));
    std::memcpy(kxGetData(a.get()), &bits, sizeof bits);
    expected = bits >> 63 == 0;  // negative int64, or a uint64 past int64
    value = expected ? static_cast<int64_t>(bits) : 0;
  }
  s.parse(a.get());
  check(s.valid == expected);
  if (s.valid) check(s.rows == value);
}

void arithmetic(uint64_t a, uint64_t b) {
  const int64_t position = static_cast<int64_t>(a >> 1);
  const int64_t bytes = static_cast<int64_t>(b >> 1);
  const __int128 sum = static_cast<__int128>(position) + bytes;
  const __int128 max = std::numeric_limits<int64_t>::max();
  check(positionPlus(position, bytes) == (sum > max ? max : sum));
  const __int128 covering = (static_cast<__int128>(bytes) + 7) / 8;
  check(bytesCoveringBits(bytes) == covering);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size_) {
  if (size_ < 1 + 16) return 0;
  double v[2];
  std::memcpy(v, data + 1, sizeof v);
  uint64_t raw[2];
  std::memcpy(raw, data + 1, sizeof raw);
  switch (data[0] % 6) {
    case 0:
      size(v, 1);
      break;
    case 1:
      size(v, 2);
      break;
    case 2:
    case 3:
    case 4:
      skip(raw[0], data[0] % 6 - 2);
      break;
    default:
      arithmetic(raw[0], raw[1]);
  }
  return 0;
}

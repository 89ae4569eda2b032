// Numbers formatted without printf, compared with printf over every flag
// combination, a spread of widths and precisions, and values at the edges.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "print/number_format.h"
#include "print_test_support.h"
#include "twhost/stream_errors.h"

namespace {

using namespace Tarnwicks::FileIO;
using print_test::cprintf;

std::string text(const FormattedNumber& n) {
  std::string s(n.padBefore, ' ');
  s.append(n.prefix, n.prefixLength);
  s.append(n.zeros, '0');
  s.append(n.digits, n.digitCount);
  s.append(n.trailingZeros, '0');
  s.append(n.suffix, n.suffixLength);
  s.append(n.padAfter, ' ');
  return s;
}

const char kFlagChars[] = "-+ #0";

// A NumberSpec and the printf format that mean the same conversion.
struct Conversion {
  NumberSpec spec;
  std::string format;
};

Conversion conversion(uint32_t flags, int width, int precision, char conv, bool isLong) {
  Conversion c;
  c.spec.flags = flags;
  c.spec.width = width;
  c.spec.precision = precision;
  c.spec.conversion = conv;
  c.format = "%";
  for (int b = 0; b < 5; ++b) {
    if (flags & (1u << b)) c.format += kFlagChars[b];
  }
  if (width >= 0) c.format += std::to_string(width);
  if (precision >= 0) c.format += "." + std::to_string(precision);
  if (isLong) c.format += "l";
  c.format += conv;
  return c;
}

const int kWidths[] = {-1, 0, 1, 7, 25};
const int kPrecisions[] = {-1, 0, 1, 3, 6, 13, 17, 40};

const double kDoubles[] = {
    0.0,
    -0.0,
    1.0,
    -1.0,
    0.5,
    1.5,
    2.5,
    -2.5,
    0.125,
    0.05,
    9.5,
    99.95,
    999999.5,
    1e-5,
    1.0 / 3,
    -2.0 / 3,
    M_PI,
    123456.789,
    1e15,
    1e16,
    1e21,
    1e22,
    1e100,
    -1e300,
    DBL_MAX,
    DBL_MIN,
    std::numeric_limits<double>::denorm_min(),
    -2.2250738585072009e-308,  // the largest subnormal, negative
    9007199254740991.0,        // 2^53 - 1
    9007199254740992.0,        // 2^53
    9007199254740994.0,        // the double after 2^53
    9223372036854775808.0,     // 2^63
    18446744073709551616.0,    // 2^64
    5e-324,
    0.1,
    1e-4,
    9.9999e-5,
    123e-7,
};

TEST(NumberFormat, DoublesMatchPrintfOverFlagsWidthsAndPrecisions) {
  NumberScratch scratch;
  FormattedNumber n;
  int compared = 0;
  for (char conv : {'e', 'E', 'f', 'g', 'G'}) {
    for (uint32_t flags = 0; flags < 32; ++flags) {
      for (int width : kWidths) {
        for (int precision : kPrecisions) {
          Conversion c = conversion(flags, width, precision, conv, false);
          for (double v : kDoubles) {
            formatDouble(c.spec, v, scratch, n);
            ASSERT_EQ(text(n), cprintf(c.format.c_str(), v)) << c.format << " of " << v;
            ++compared;
          }
        }
      }
    }
  }
  EXPECT_GT(compared, 100000);
}

TEST(NumberFormat, HugePrecisionsAndWidthsMatchPrintf) {
  NumberScratch scratch;
  FormattedNumber n;
  for (char conv : {'e', 'f', 'g'}) {
    for (int precision : {300, 767, 1023, 1024, 1025, 1100, 5000}) {
      for (double v : {0.1, DBL_MAX, 5e-324, -1.0 / 3, 0.0}) {
        for (uint32_t flags : {0u, 8u, 18u}) {
          Conversion c = conversion(flags, 2000, precision, conv, false);
          formatDouble(c.spec, v, scratch, n);
          ASSERT_EQ(text(n), cprintf(c.format.c_str(), v)) << c.format << " of " << v;
        }
      }
    }
  }
}

// Precisions beyond the fast paths come from the exact digits: every
// double, ties and carries included, as printf writes it.
TEST(NumberFormat, RandomDoublesAtHugePrecisionsMatchPrintf) {
  std::mt19937_64 rng(20261123);
  NumberScratch scratch;
  FormattedNumber n;
  const char convs[] = "eEfgG";
  for (int i = 0; i < 4000; ++i) {
    uint64_t bits = rng();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    if (!std::isfinite(v)) continue;
    if (i % 3 == 1)
      v = std::ldexp(static_cast<double>(rng() % 2000000) - 1e6, -1074 + int(rng() % 40));
    if (i % 3 == 2) v = static_cast<double>(rng() % 100000) / 8;  // short, with ties
    uint32_t flags = static_cast<uint32_t>(rng() % 32);
    int precision = 1025 + static_cast<int>(rng() % 400);
    Conversion c = conversion(flags, -1, precision, convs[rng() % 5], false);
    formatDouble(c.spec, v, scratch, n);
    ASSERT_EQ(text(n), cprintf(c.format.c_str(), v)) << c.format << " of " << v;
  }
}

// The zeros of a huge precision are counted, not held; a text that printf
// could not count in an int is an invalid format.
TEST(NumberFormat, HugePrecisionsCostOnlyTheirDigits) {
  NumberScratch scratch;
  FormattedNumber n;
  Conversion f = conversion(0, -1, 1000000000, 'f', false);
  formatDouble(f.spec, 1.5, scratch, n);
  EXPECT_EQ(std::string(n.digits, n.digitCount), "1.5");
  EXPECT_EQ(n.trailingZeros, 999999999u);
  Conversion g = conversion(0, -1, 2147483647, 'g', false);
  formatDouble(g.spec, 1.0, scratch, n);
  EXPECT_EQ(text(n), "1");
  Conversion e = conversion(8, -1, 100000, 'E', false);
  formatDouble(e.spec, 2.0, scratch, n);
  EXPECT_EQ(n.trailingZeros, 100000u);
  EXPECT_EQ(std::string(n.suffix, n.suffixLength), "E+00");
  for (char conv : {'f', 'e'}) {
    Conversion huge = conversion(0, -1, 2147483647, conv, false);
    int thrown = 0;
    try {
      formatDouble(huge.spec, 1.0, scratch, n);
    } catch (int c) {
      thrown = c;
    }
    EXPECT_EQ(thrown, code(StreamError::InvalidFormat)) << conv;
  }
}

TEST(NumberFormat, RandomDoublesMatchPrintf) {
  std::mt19937_64 rng(20240601);
  NumberScratch scratch;
  FormattedNumber n;
  const char convs[] = "eEfgG";
  for (int i = 0; i < 200000; ++i) {
    uint64_t bits = rng();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    if (!std::isfinite(v)) continue;
    if (i % 2)
      v = std::ldexp(static_cast<double>(rng() % 2000000) - 1e6, static_cast<int>(rng() % 80) - 40);
    uint32_t flags = static_cast<uint32_t>(rng() % 32);
    int width = static_cast<int>(rng() % 30) - 1;
    int precision = static_cast<int>(rng() % 25) - 1;
    char conv = convs[rng() % 5];
    // %f of a huge value is long but exact all the same.
    Conversion c = conversion(flags, width, precision, conv, false);
    formatDouble(c.spec, v, scratch, n);
    ASSERT_EQ(text(n), cprintf(c.format.c_str(), v)) << c.format << " of " << v;
  }
}

// Short decimals put the rounding place right at or next to the last of the
// shortest digits, where ties and near-ties live.
TEST(NumberFormat, ShortDecimalsAndTiesMatchPrintf) {
  std::mt19937_64 rng(7);
  NumberScratch scratch;
  FormattedNumber n;
  for (int i = 0; i < 60000; ++i) {
    double m = static_cast<double>(rng() % 20000000) - 10000000;
    int j = static_cast<int>(rng() % 12);
    double v = (i % 3 == 0) ? std::ldexp(m, -j) : m / std::pow(10.0, j);
    if (i % 5 == 0) v = std::nextafter(v, (i % 10 == 0) ? 1e300 : -1e300);
    for (char conv : {'e', 'f', 'g'}) {
      int precision = static_cast<int>(rng() % 12);
      Conversion c = conversion(0, -1, precision, conv, false);
      formatDouble(c.spec, v, scratch, n);
      ASSERT_EQ(text(n), cprintf(c.format.c_str(), v)) << c.format << " of " << v;
    }
  }
}

const int64_t kSigned[] = {0,
                           1,
                           -1,
                           7,
                           -42,
                           255,
                           1000000,
                           -9007199254740993LL,
                           9007199254740993LL,
                           std::numeric_limits<int64_t>::max(),
                           std::numeric_limits<int64_t>::min()};

TEST(NumberFormat, SignedIntegersMatchPrintf) {
  NumberScratch scratch;
  FormattedNumber n;
  for (char conv : {'d', 'i'}) {
    for (uint32_t flags = 0; flags < 32; ++flags) {
      for (int width : kWidths) {
        for (int precision : kPrecisions) {
          Conversion c = conversion(flags, width, precision, conv, true);
          for (int64_t v : kSigned) {
            formatSigned(c.spec, v, scratch, n);
            ASSERT_EQ(text(n), cprintf(c.format.c_str(), static_cast<long>(v)))
                << c.format << " of " << v;
          }
        }
      }
    }
  }
}

const uint64_t kUnsigned[] = {
    0, 1, 7, 8, 255, 4096, 0x7fffffffffffffffULL, 1ULL << 63, ~0ULL, 9007199254740993ULL};

TEST(NumberFormat, UnsignedIntegersMatchPrintf) {
  NumberScratch scratch;
  FormattedNumber n;
  for (char conv : {'o', 'u', 'x', 'X'}) {
    for (uint32_t flags = 0; flags < 32; ++flags) {
      for (int width : kWidths) {
        for (int precision : kPrecisions) {
          Conversion c = conversion(flags, width, precision, conv, true);
          for (uint64_t v : kUnsigned) {
            formatUnsigned(c.spec, v, scratch, n);
            ASSERT_EQ(text(n), cprintf(c.format.c_str(), static_cast<unsigned long>(v)))
                << c.format << " of " << v;
          }
        }
      }
    }
  }
}

TEST(NumberFormat, OddFormatsGoToTheLibraryAsWritten) {
  NumberScratch scratch;
  FormattedNumber n;
  NumberSpec spec;
  spec.conversion = 'd';
  spec.verbatim = "%.-ld";
  formatSigned(spec, 42, scratch, n);
  EXPECT_EQ(text(n), cprintf("%.-ld", 42L));
  spec.verbatim = "%*.-e";
  spec.verbatimWidthStar = true;
  spec.width = 9;
  formatDouble(spec, 1.5, scratch, n);
  EXPECT_EQ(text(n), cprintf("%*.-e", 9, 1.5));
}

TEST(NumberFormat, PaddedWords) {
  FormattedNumber n;
  formatPadded("Inf", 3, 6, false, n);
  EXPECT_EQ(text(n), "   Inf");
  formatPadded("-Inf", 4, 6, true, n);
  EXPECT_EQ(text(n), "-Inf  ");
  formatPadded("NaN", 3, 2, false, n);
  EXPECT_EQ(text(n), "NaN");
}

}  // namespace

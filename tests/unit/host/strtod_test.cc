// The number reader ut_strtod, checked against the C library's strtod in the
// "C" locale, which is correctly rounded on glibc.
#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "twhost/kx_data.h"

namespace {

struct Reading {
  double value;
  long consumed;
  bool rangeError;
};

Reading readOurs(const std::string& text) {
  char* end = nullptr;
  errno = 0;
  double v = ut_strtod(text.c_str(), &end, utGetFpcContext());
  return {v, end - text.c_str(), errno == ERANGE};
}

Reading readLibc(const std::string& text) {
  static locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
  char* end = nullptr;
  errno = 0;
  double v = strtod_l(text.c_str(), &end, c);
  return {v, end - text.c_str(), errno == ERANGE};
}

// Same bits, or both NaN of the same sign.
bool sameDouble(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) {
    return std::isnan(a) && std::isnan(b) && std::signbit(a) == std::signbit(b);
  }
  return std::memcmp(&a, &b, sizeof a) == 0;
}

void expectLikeLibc(const std::string& text, bool compareRange = false) {
  Reading ours = readOurs(text);
  Reading libc = readLibc(text);
  EXPECT_TRUE(sameDouble(ours.value, libc.value))
      << "'" << text << "': " << ours.value << " vs " << libc.value;
  EXPECT_EQ(ours.consumed, libc.consumed) << "'" << text << "'";
  if (compareRange) {
    EXPECT_EQ(ours.rangeError, libc.rangeError) << "'" << text << "'";
  }
}

TEST(HostStrtod, HardDecimalCasesRoundLikeTheCLibrary) {
  const char* cases[] = {
      "0.1",
      "1e23",
      "8.988465674311579e307",
      "2.2250738585072011e-308",
      "2.2250738585072012e-308",
      "4.9406564584124654e-324",
      "2.4703282292062327e-324",
      "2.4703282292062328e-324",
      "1.7976931348623157e308",
      "1.7976931348623158e308",
      "9007199254740993",
      "9007199254740992.5000000000000000000001",
      "17976931348623158079372897140530341507993413271003782693617377898044496829276475094664901797"
      "75872070963302864166928879109465555478519404026306574886715058206819089020007083836762738548"
      "45817711531764475730270069855571366959622842914819860834936475292719074168444365510704342711"
      "559699508093042880177904174497791.9999999999999999999",
      "0.000000000000000000000000000000000000000000001e-280",
      "123456789012345678901234567890",
      "3.14159265358979323846264338327950288419716939937510",
      "1.00000000000000011102230246251565404236316680908203125",
      "1.00000000000000011102230246251565404236316680908203124",
      "1.00000000000000011102230246251565404236316680908203126",
      "7.e-3",
      ".5e1",
      "5.",
      "0",
      "-0",
      "00000000000000000000000000001.5",
      "1e-400",
      "-1e-400",
      "1E+308",
      "1e0000000000000000000001"};
  for (const char* c : cases) expectLikeLibc(c);
}

TEST(HostStrtod, RandomDecimalTextsRoundLikeTheCLibrary) {
  std::mt19937_64 rng(20240611);
  std::uniform_int_distribution<int> digitCount(1, 30);
  std::uniform_int_distribution<int> digit(0, 9);
  std::uniform_int_distribution<int> exponent(-340, 310);
  std::uniform_int_distribution<int> coin(0, 3);
  for (int i = 0; i < 20000; ++i) {
    std::string text;
    if (coin(rng) == 0) text += '-';
    int n = digitCount(rng);
    int point = std::uniform_int_distribution<int>(0, n)(rng);
    for (int d = 0; d < n; ++d) {
      if (d == point && coin(rng) != 0) text += '.';
      text += static_cast<char>('0' + digit(rng));
    }
    if (coin(rng) != 0) text += "e" + std::to_string(exponent(rng));
    Reading ours = readOurs(text);
    Reading libc = readLibc(text);
    ASSERT_TRUE(sameDouble(ours.value, libc.value)) << text;
    ASSERT_EQ(ours.consumed, libc.consumed) << text;
  }
}

TEST(HostStrtod, RandomDoublesReadBackFromTheirShortestAndLongestTexts) {
  std::mt19937_64 rng(7);
  for (int i = 0; i < 20000; ++i) {
    uint64_t bits = rng();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    if (!std::isfinite(v)) continue;
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.17g", v);
    ASSERT_TRUE(sameDouble(readOurs(buf).value, v)) << buf;
    std::snprintf(buf, sizeof buf, "%.16e", v);  // often the wrong neighbour's digits
    ASSERT_TRUE(sameDouble(readOurs(buf).value, readLibc(buf).value)) << buf;
  }
}

TEST(HostStrtod, OverflowGivesHugeValueAndRangeError) {
  Reading r = readOurs("1.7976931348623159e308");
  EXPECT_EQ(r.value, HUGE_VAL);
  EXPECT_TRUE(r.rangeError);
  r = readOurs("-1e99999999999999999999");
  EXPECT_EQ(r.value, -HUGE_VAL);
  EXPECT_TRUE(r.rangeError);
  EXPECT_EQ(r.consumed, 23);
  expectLikeLibc("1e400", true);
  EXPECT_FALSE(readOurs("1.5").rangeError);
}

TEST(HostStrtod, UnderflowToZeroIsARangeError) {
  Reading r = readOurs("1e-400");
  EXPECT_EQ(r.value, 0.0);
  EXPECT_TRUE(r.rangeError);
  EXPECT_FALSE(readOurs("0e-400").rangeError);
}

TEST(HostStrtod, HexadecimalFloats) {
  const char* cases[] = {
      "0x1p-1074", "0x1.fffffffffffff8p0",        "0X1.8P+1",      "-0x10",     "0x",
      "0x.8",      "0x1.000000000000080000001p0", "+0xAbC.dEfp-3", "0x1p99999", " 0x1g"};
  for (const char* c : cases) expectLikeLibc(c);
  EXPECT_EQ(readOurs("0X1.8P+1").value, 3.0);
  EXPECT_EQ(readOurs("0x").consumed, 1);
}

// A text, the value read from it and how many characters the reading took;
// the C library must agree on both.
struct ReadCase {
  const char* text;
  double value;  // NaN stands for any NaN of the sign given
  long consumed;
};

class ReadsLikeTheCLibrary : public ::testing::TestWithParam<ReadCase> {};

TEST_P(ReadsLikeTheCLibrary, ValueAndEndPoint) {
  const ReadCase& c = GetParam();
  Reading r = readOurs(c.text);
  EXPECT_TRUE(sameDouble(r.value, c.value)) << c.text << ": " << r.value;
  EXPECT_EQ(r.consumed, c.consumed) << c.text;
  expectLikeLibc(c.text);
}

INSTANTIATE_TEST_SUITE_P(SpecialWords, ReadsLikeTheCLibrary,
                         ::testing::Values(ReadCase{"inf", INFINITY, 3},
                                           ReadCase{"-Infinity", -INFINITY, 9},
                                           ReadCase{"INFINITE", INFINITY, 3},
                                           ReadCase{"+iNf5", INFINITY, 4}, ReadCase{"nan", NAN, 3},
                                           ReadCase{"-NaN", -NAN, 4},
                                           ReadCase{"nan(123abc_)", NAN, 12},
                                           ReadCase{"nan(", NAN, 3}, ReadCase{"nan(1 2)", NAN, 3},
                                           ReadCase{"in", 0.0, 0}, ReadCase{"na", 0.0, 0}));

// The end point lies past the number, or at the start when none was read.
INSTANTIATE_TEST_SUITE_P(WhereReadingStops, ReadsLikeTheCLibrary,
                         ::testing::Values(ReadCase{" \t\n+1.5x", 1.5, 7}, ReadCase{"abc", 0.0, 0},
                                           ReadCase{"  -", 0.0, 0}, ReadCase{".", 0.0, 0},
                                           ReadCase{"-.e5", 0.0, 0}, ReadCase{"1e", 1.0, 1},
                                           ReadCase{"1e+", 1.0, 1}, ReadCase{"1.e5", 1e5, 4},
                                           ReadCase{"2.5e-3,4", 2.5e-3, 6}, ReadCase{"1,5", 1.0, 1},
                                           ReadCase{"--1", 0.0, 0}, ReadCase{"+-1", 0.0, 0},
                                           ReadCase{"", 0.0, 0}, ReadCase{"\v\f\r7", 7.0, 4},
                                           ReadCase{"1d5", 1.0, 1}));

TEST(HostStrtod, NullEndPointerIsAllowed) {
  EXPECT_EQ(ut_strtod("42", nullptr), 42.0);
}

TEST(HostStrtod, ProcessLocaleDoesNotChangeTheRadixPoint) {
  const char* previous = std::setlocale(LC_NUMERIC, nullptr);
  std::string saved = previous ? previous : "C";
  const char* names[] = {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8"};
  const char* found = nullptr;
  for (const char* n : names) {
    if (std::setlocale(LC_NUMERIC, n)) {
      found = n;
      break;
    }
  }
  if (!found) GTEST_SKIP() << "no locale with a decimal comma is installed";
  Reading r = readOurs("1.25");
  Reading comma = readOurs("1,25");
  std::setlocale(LC_NUMERIC, saved.c_str());
  EXPECT_EQ(r.value, 1.25);
  EXPECT_EQ(comma.value, 1.0);
  EXPECT_EQ(comma.consumed, 1);
}

}  // namespace

// Doubles are correctly rounded: a million random texts read by sscanf with
// %f, each compared with the C library's strtod, bit for bit. The texts have
// 17 to 40 significant digits over the whole exponent range, subnormals
// included, and exact halfway points between neighbouring doubles, where
// rounding to even decides.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "scan_test_support.h"

namespace {

using namespace scan_test;

constexpr size_t kTexts = 1000000;

// A text of `digits` significant digits with a decimal exponent.
std::string randomDigits(std::mt19937_64& rng, int digits, int exponent) {
  std::string s;
  if (rng() & 1) s += '-';
  s += char('1' + rng() % 9);
  int point = static_cast<int>(rng() % static_cast<unsigned>(digits));
  for (int i = 1; i < digits; ++i) {
    if (i == point) s += '.';
    s += char('0' + rng() % 10);
  }
  s += 'e' + std::to_string(exponent);
  return s;
}

// The exact decimal text of the point halfway between a double and its
// successor: (2m + 1) * 2^(e - 1), written out by printf from a long double,
// which holds it exactly.
std::string halfway(std::mt19937_64& rng) {
  const uint64_t m = (uint64_t(1) << 52) | (rng() & ((uint64_t(1) << 52) - 1));
  const int e = static_cast<int>(rng() % 90) - 30;
  long double h = std::ldexp(static_cast<long double>(2 * m + 1), e - 1);
  char text[256];
  if (e >= 1) {
    std::snprintf(text, sizeof text, "%.0Lf", h);
  } else {
    std::snprintf(text, sizeof text, "%.*Lf", 1 - e, h);
  }
  return text;
}

std::string randomText(std::mt19937_64& rng) {
  switch (rng() % 5) {
    case 0:
      return halfway(rng);
    case 1: {
      // Around the subnormals and the smallest normals.
      int digits = 17 + static_cast<int>(rng() % 24);
      return randomDigits(rng, digits, -300 - static_cast<int>(rng() % 45));
    }
    case 2: {
      double v;
      uint64_t bits = rng();
      std::memcpy(&v, &bits, sizeof v);
      if (!std::isfinite(v)) v = 1.5;
      char text[64];
      std::snprintf(text, sizeof text, "%.17g", v);
      return text;
    }
    default: {
      int digits = 17 + static_cast<int>(rng() % 24);
      return randomDigits(rng, digits, static_cast<int>(rng() % 660) - 340);
    }
  }
}

TEST(StrtodMillion, EveryValueIsTheCorrectlyRoundedOne) {
  std::mt19937_64 rng(20261123);
  std::vector<std::string> texts;
  texts.reserve(kTexts);
  std::string all;
  for (size_t i = 0; i < kTexts; ++i) {
    texts.push_back(randomText(rng));
    all += texts.back();
    all += (i % 7 == 6) ? '\n' : ' ';
  }
  Outcome r = call(kSlotSscanf, 2, {str(all), str("%f")});
  ASSERT_EQ(r.error, "");
  ASSERT_EQ(r.number(1), double(kTexts));
  const std::vector<double> ours = r.values();
  size_t wrong = 0;
  for (size_t i = 0; i < kTexts; ++i) {
    double expected = std::strtod(texts[i].c_str(), nullptr);
    if (std::memcmp(&expected, &ours[i], sizeof expected) != 0 && ++wrong <= 10) {
      ADD_FAILURE() << texts[i] << ": " << ours[i] << " but strtod gives " << expected;
    }
  }
  EXPECT_EQ(wrong, 0u);
}

}  // namespace

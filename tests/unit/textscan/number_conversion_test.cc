// From lexed text to column values: the one-pass reading of common numbers
// agrees with the lexer and its conversion; integer columns round and
// saturate; 64-bit columns read big values from the digits; empty fields
// take "EmptyValue" as each type can hold it.
#include "textscan/number_conversion.h"
#include "textscan/options.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace {

using namespace textscan;

template <class T>
T fromText(const std::string& text) {
  NumberSyntax syntax(kDefaultExpChars);
  LexedNumber n = lexNumber(text.data(), text.data() + text.size(), syntax);
  EXPECT_EQ(n.form, NumberForm::Real) << text;
  double x = partValue(text.data(), n.real);
  return toColumnType<T>(x, text.data() + n.real.begin, n.real.end - n.real.begin);
}

TEST(NumberConversion, SmallIntegersRoundHalfAwayAndSaturate) {
  EXPECT_EQ(fromText<int8_t>("300"), 127);
  EXPECT_EQ(fromText<int8_t>("-300"), -128);
  EXPECT_EQ(fromText<int8_t>("2.5"), 3);
  EXPECT_EQ(fromText<int8_t>("-2.5"), -3);
  EXPECT_EQ(fromText<int8_t>("NaN"), 0);
  EXPECT_EQ(fromText<uint8_t>("-1"), 0);
  EXPECT_EQ(fromText<uint16_t>("65535.4"), 65535);
  EXPECT_EQ(fromText<int32_t>("Inf"), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(fromText<int32_t>("-inf"), std::numeric_limits<int32_t>::min());
  EXPECT_EQ(fromText<int32_t>("1.5"), 2);
  EXPECT_EQ(fromText<uint32_t>("4294967295.6"), std::numeric_limits<uint32_t>::max());
}

TEST(NumberConversion, SixtyFourBitsReadTheDigits) {
  EXPECT_EQ(fromText<int64_t>("9223372036854775807"), std::numeric_limits<int64_t>::max());
  EXPECT_EQ(fromText<int64_t>("9223372036854775806"), 9223372036854775806);
  EXPECT_EQ(fromText<int64_t>("9223372036854775808"), std::numeric_limits<int64_t>::max());
  EXPECT_EQ(fromText<int64_t>("-9223372036854775808"), std::numeric_limits<int64_t>::min());
  EXPECT_EQ(fromText<int64_t>("-9223372036854775809"), std::numeric_limits<int64_t>::min());
  EXPECT_EQ(fromText<int64_t>("4503599627370497"), 4503599627370497);
  EXPECT_EQ(fromText<int64_t>("4503599627370497.5"), 4503599627370498);
  EXPECT_EQ(fromText<int64_t>("-4503599627370497.5"), -4503599627370498);
  EXPECT_EQ(fromText<int64_t>("4503599627370497.4"), 4503599627370497);
  // The exponent is not applied once the digits are read one by one.
  EXPECT_EQ(fromText<int64_t>("9e18"), 9);
  EXPECT_EQ(fromText<uint64_t>("18446744073709551615"), std::numeric_limits<uint64_t>::max());
  EXPECT_EQ(fromText<uint64_t>("18446744073709551616"), std::numeric_limits<uint64_t>::max());
  EXPECT_EQ(fromText<uint64_t>("-5"), 0u);
  EXPECT_EQ(fromText<uint64_t>("12345678901234567"), 12345678901234567u);
}

TEST(NumberConversion, EmptyValueAsEachType) {
  double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(emptyValueAs<int32_t>(nan), 0);
  EXPECT_EQ(emptyValueAs<int32_t>(1e300), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(emptyValueAs<int16_t>(-1e300), std::numeric_limits<int16_t>::min());
  EXPECT_EQ(emptyValueAs<uint8_t>(-3), 0);
  EXPECT_EQ(emptyValueAs<int32_t>(2.7), 2);
  EXPECT_EQ(emptyValueAs<int32_t>(-2.7), -2);
  EXPECT_EQ(emptyValueAs<int64_t>(1e300), std::numeric_limits<int64_t>::max());
  EXPECT_TRUE(std::signbit(emptyValueAs<double>(-nan)));
}

// Where the one-pass reading takes a number, the lexer takes the same text
// and its conversion gives the same bits; over bytes and UTF-16 units.
TEST(NumberConversion, OnePassAgreesWithTheLexer) {
  std::mt19937 rng(13);
  const char alphabet[] = "0123456789012345.-+eEdDij,x ";
  NumberSyntax syntax(kDefaultExpChars);
  int taken = 0;
  for (int round = 0; round < 200000; ++round) {
    std::string text(1 + rng() % 14, ' ');
    for (char& c : text) c = alphabet[rng() % (sizeof alphabet - 1)];
    std::u16string wide(text.begin(), text.end());
    double fast = 0;
    size_t length = readPlainReal(text.data(), text.size(), syntax, fast);
    double fastWide = 0;
    ASSERT_EQ(readPlainReal(wide.data(), wide.size(), syntax, fastWide), length) << text;
    if (length == 0) continue;
    ++taken;
    LexedNumber n = lexNumber(text.data(), text.data() + text.size(), syntax);
    ASSERT_EQ(n.form, NumberForm::Real) << text;
    ASSERT_EQ(n.length, length) << text;
    double lexed = partValue(text.data(), n.real);
    ASSERT_EQ(std::bit_cast<uint64_t>(fast), std::bit_cast<uint64_t>(lexed)) << text;
    ASSERT_EQ(std::bit_cast<uint64_t>(fastWide), std::bit_cast<uint64_t>(lexed)) << text;
  }
  EXPECT_GT(taken, 10000);
}

}  // namespace

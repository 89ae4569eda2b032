// The one decision both print paths make for a value: own conversion, words,
// replacement %e. Values at the edges of each conversion's range, in the
// element types they come in.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "print/print_decision.h"

namespace {

using Tarnwicks::FileIO::classifyElement;
using Tarnwicks::FileIO::FormattedNumber;
using Tarnwicks::FileIO::formatWord;
using Tarnwicks::FileIO::kFlagLeft;
using Tarnwicks::FileIO::kFlagPlus;
using Tarnwicks::FileIO::kFlagSpace;
using Tarnwicks::FileIO::PieceKind;
using Tarnwicks::FileIO::ValueClass;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr ValueClass kOwn = ValueClass::Own;
constexpr ValueClass kE = ValueClass::ThroughE;
constexpr ValueClass kWords = ValueClass::NotFinite;

struct DoubleCase {
  PieceKind kind;
  double value;
  ValueClass expected;
};

class DecisionOfDoubles : public ::testing::TestWithParam<DoubleCase> {};

TEST_P(DecisionOfDoubles, MatchesTheConversionsRange) {
  const DoubleCase& c = GetParam();
  EXPECT_EQ(classifyElement(c.kind, c.value), c.expected)
      << "kind " << static_cast<int>(c.kind) << " value " << c.value;
}

INSTANTIATE_TEST_SUITE_P(
    Table, DecisionOfDoubles,
    ::testing::Values(
        DoubleCase{PieceKind::Double, 1.5, kOwn}, DoubleCase{PieceKind::Double, -kInf, kWords},
        DoubleCase{PieceKind::Double, kNaN, kWords},
        // 2^63 turns into the smallest int64 and fails; -2^63 holds.
        DoubleCase{PieceKind::SignedInteger, 9223372036854775808.0, kE},
        DoubleCase{PieceKind::SignedInteger, -9223372036854775808.0, kOwn},
        DoubleCase{PieceKind::SignedInteger, 2.5, kE},
        DoubleCase{PieceKind::SignedInteger, kInf, kWords},
        DoubleCase{PieceKind::UnsignedInteger, -1.0, kE},
        DoubleCase{PieceKind::UnsignedInteger, -kInf, kWords},
        DoubleCase{PieceKind::String, kNaN, kWords}, DoubleCase{PieceKind::String, kInf, kWords},
        DoubleCase{PieceKind::UnsignedInteger, -0.0, kOwn},
        DoubleCase{PieceKind::UnsignedInteger, 18446744073709551616.0, kE},
        DoubleCase{PieceKind::UnsignedInteger, 18446744073709549568.0, kOwn},
        DoubleCase{PieceKind::String, 2147483647.0, kOwn},
        DoubleCase{PieceKind::String, 2147483648.0, kE},
        DoubleCase{PieceKind::String, -2147483648.0, kOwn}, DoubleCase{PieceKind::String, 0.5, kE},
        DoubleCase{PieceKind::Char, 65535.0, kOwn}, DoubleCase{PieceKind::Char, 65536.0, kE},
        DoubleCase{PieceKind::Char, -1.0, kE}, DoubleCase{PieceKind::Char, kNaN, kWords},
        // Bit patterns show Inf and NaN like any other value.
        DoubleCase{PieceKind::Bits, kInf, kOwn}, DoubleCase{PieceKind::Bits, kNaN, kOwn}));

TEST(DecisionOfIntegers, IntegerClassesAreFiniteAndRangeChecked) {
  EXPECT_EQ(classifyElement(PieceKind::SignedInteger, std::numeric_limits<uint64_t>::max()), kE);
  EXPECT_EQ(classifyElement(PieceKind::SignedInteger, uint64_t{INT64_MAX}), kOwn);
  EXPECT_EQ(classifyElement(PieceKind::UnsignedInteger, int8_t{-5}), kE);
  EXPECT_EQ(classifyElement(PieceKind::UnsignedInteger, uint64_t{UINT64_MAX}), kOwn);
  EXPECT_EQ(classifyElement(PieceKind::String, uint32_t{2147483648u}), kE);
  EXPECT_EQ(classifyElement(PieceKind::String, int64_t{-2147483648LL}), kOwn);
  EXPECT_EQ(classifyElement(PieceKind::Char, int32_t{65536}), kE);
  EXPECT_EQ(classifyElement(PieceKind::Char, char16_t{0xFFFF}), kOwn);
  EXPECT_EQ(classifyElement(PieceKind::Double, std::numeric_limits<float>::infinity()), kWords);
}

std::string word(double value, uint32_t flags, bool alwaysSigned, uint64_t width) {
  FormattedNumber n;
  formatWord(value, flags, alwaysSigned, width, n);
  return std::string(n.padBefore, ' ') + std::string(n.digits, n.digitCount) +
         std::string(n.padAfter, ' ');
}

TEST(Words, SignsFlagsAndPadding) {
  EXPECT_EQ(word(kInf, 0, false, 0), "Inf");
  EXPECT_EQ(word(-kInf, kFlagPlus, false, 0), "-Inf");
  EXPECT_EQ(word(kInf, kFlagPlus | kFlagSpace, false, 0), "+Inf");
  EXPECT_EQ(word(kInf, kFlagSpace, false, 6), "   Inf");
  EXPECT_EQ(word(-kNaN, kFlagPlus, false, 0), "NaN");
  EXPECT_EQ(word(kNaN, 0, true, 0), "+NaN");
  EXPECT_EQ(word(kNaN, kFlagLeft, false, 5), "NaN  ");
}

}  // namespace

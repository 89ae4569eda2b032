// The number grammar of numeric fields: where a number ends, in which form,
// with widths, precisions and exponent letters, over UTF-16 units and bytes.
#include "textscan/number_lexer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

namespace {

using textscan::LexedNumber;
using textscan::lexNumber;
using textscan::NumberForm;
using textscan::NumberSyntax;
using textscan::NumberWord;

struct LexCase {
  const char* text;
  const char* field;  // what the number takes; "" for no number
  NumberForm form;
  int width = -1;
  int precision = -1;
  const char* expChars = "eEdD";
};

std::u16string wide(const std::string& s) {
  return std::u16string(s.begin(), s.end());
}

void PrintTo(const LexCase& c, std::ostream* os) {
  *os << '"' << c.text << "\" width " << c.width << " precision " << c.precision << " exp \""
      << c.expChars << '"';
}

class LexTable : public ::testing::TestWithParam<LexCase> {};

TEST_P(LexTable, TakesTheNumberAndLeavesTheRest) {
  const LexCase& c = GetParam();
  NumberSyntax syntax(wide(c.expChars), c.width, c.precision);
  std::u16string text = wide(c.text);
  LexedNumber units = lexNumber(std::u16string_view(text), syntax);
  EXPECT_EQ(text.substr(0, units.length), wide(c.field));
  EXPECT_EQ(units.form, c.form);
  // The byte form agrees on ASCII text.
  std::string bytes = c.text;
  LexedNumber narrow = lexNumber(std::string_view(bytes), syntax);
  EXPECT_EQ(narrow.length, units.length);
  EXPECT_EQ(narrow.form, units.form);
  EXPECT_EQ(narrow.reachedEnd, units.reachedEnd);
}

constexpr NumberForm kNone = NumberForm::None;
constexpr NumberForm kReal = NumberForm::Real;
constexpr NumberForm kImag = NumberForm::Imaginary;
constexpr NumberForm kComplex = NumberForm::Complex;

INSTANTIATE_TEST_SUITE_P(
    Grammar, LexTable,
    ::testing::Values(
        LexCase{"1.5", "1.5", kReal}, LexCase{"1.5.2", "1.5", kReal}, LexCase{"5.", "5.", kReal},
        LexCase{".5", ".5", kReal}, LexCase{"+.5e-3x", "+.5e-3", kReal}, LexCase{"-0", "-0", kReal},
        LexCase{"007", "007", kReal},
        // An exponent needs a digit; without one the letter is left.
        LexCase{"1e", "1", kReal}, LexCase{"1e+", "1", kReal}, LexCase{"1e+-5", "1", kReal},
        LexCase{"1E5", "1E5", kReal}, LexCase{"1d3", "1d3", kReal},
        LexCase{"1d3", "1", kReal, -1, -1, "e"}, LexCase{"1.5e3", "1.5", kReal, -1, -1, ""},
        LexCase{"2x3", "2x3", kReal, -1, -1, "x"},
        // The words, either case, with a sign; no exponent after them.
        LexCase{"+Inf", "+Inf", kReal}, LexCase{"-inf", "-inf", kReal},
        LexCase{"NaN", "NaN", kReal}, LexCase{"nan", "nan", kReal},
        // A word in the first place ends the number: no exponent, no unit.
        LexCase{"Infinity", "Inf", kReal}, LexCase{"Infe5", "Inf", kReal},
        LexCase{"Infi", "Inf", kReal}, LexCase{"NaN+2i", "NaN", kReal}, LexCase{"NA", "", kNone},
        LexCase{"In", "", kNone},
        // Imaginary and complex forms: only lower-case i and j.
        LexCase{"3i", "3i", kImag}, LexCase{"3j", "3j", kImag}, LexCase{"3I", "3", kReal},
        LexCase{"1e5i", "1e5i", kImag}, LexCase{"1+2i", "1+2i", kComplex},
        LexCase{"1-2.5e3j", "1-2.5e3j", kComplex}, LexCase{"1+Infi", "1+Infi", kComplex},
        LexCase{"-1-nanj", "-1-nanj", kComplex}, LexCase{"1+2ix", "1+2i", kComplex},
        // A sign that opens no imaginary part is the next field's.
        LexCase{"1+2", "1", kReal}, LexCase{"1+i", "1", kReal}, LexCase{"1+-2i", "1", kReal},
        LexCase{"1 +2i", "1", kReal},
        // No number at all.
        LexCase{"i", "", kNone}, LexCase{"-", "", kNone}, LexCase{".", "", kNone},
        LexCase{"+.", "", kNone}, LexCase{"", "", kNone}, LexCase{" 1", "", kNone},
        LexCase{"e5", "", kNone},
        // Widths count from the number's start; words and signs must fit.
        LexCase{"12345", "123", kReal, 3, 1}, LexCase{"3.14159", "3.14", kReal, -1, 2},
        LexCase{"3.5", "3.", kReal, -1, 0}, LexCase{"NaN", "", kNone, 2},
        LexCase{"NaN", "NaN", kReal, 3}, LexCase{"-NaN", "", kNone, 3}, LexCase{"+5", "", kNone, 1},
        LexCase{"5", "", kNone, 0},
        // A cut exponent never ends in a bare letter or letter and sign.
        LexCase{"1e+5", "1e+5", kReal, 4}, LexCase{"1e5", "1", kReal, 2},
        LexCase{"12e+5", "12", kReal, 4}, LexCase{"12e55", "12e5", kReal, 4},
        LexCase{"1e+55", "1e+5", kReal, 4}, LexCase{"1e+5", "1", kReal, 3},
        LexCase{"12e5", "12", kReal, 2},
        // The imaginary part has a width of its own, from the real part's end.
        // The sign counts in it.
        LexCase{"12+34i", "12", kReal, 2}, LexCase{"12+34i", "12+34i", kComplex, 3},
        LexCase{"12+345i", "12", kReal, 3},
        // A precision cuts both parts.
        LexCase{"1.2+2.7i", "1.2+2.7i", kComplex, -1, 1}, LexCase{"1.25+2i", "1.2", kReal, -1, 1},
        LexCase{"1.2+2.75i", "1.2", kReal, -1, 1}));

TEST(NumberLexer, PartsLocateSignDigitsAndExponent) {
  NumberSyntax syntax(u"eEdD");
  std::u16string text = u"-12.50d+3";
  LexedNumber n = lexNumber(std::u16string_view(text), syntax);
  ASSERT_EQ(n.form, NumberForm::Real);
  EXPECT_TRUE(n.real.negative);
  EXPECT_EQ(n.real.begin, 0u);
  EXPECT_EQ(n.real.integerBegin(), 1u);
  EXPECT_EQ(n.real.integerEnd, 3u);
  EXPECT_EQ(n.real.fractionBegin(), 4u);
  EXPECT_EQ(n.real.fractionEnd, 6u);
  EXPECT_EQ(n.real.exponentBegin(), 6u);
  EXPECT_EQ(n.real.exponentEnd(), 9u);
  EXPECT_EQ(n.real.end, 9u);
  EXPECT_EQ(n.real.word, NumberWord::None);
}

TEST(NumberLexer, ComplexPartsSplitAtTheJoiningSign) {
  NumberSyntax syntax(u"eEdD");
  std::u16string text = u"1-2.5e3j,";
  LexedNumber n = lexNumber(std::u16string_view(text), syntax);
  ASSERT_EQ(n.form, NumberForm::Complex);
  EXPECT_EQ(n.real.end, 1u);
  EXPECT_FALSE(n.real.negative);
  EXPECT_EQ(n.imaginary.begin, 1u);
  EXPECT_TRUE(n.imaginary.negative);
  EXPECT_EQ(n.imaginary.integerBegin(), 2u);
  EXPECT_EQ(n.imaginary.fractionBegin(), 4u);
  EXPECT_EQ(n.imaginary.exponentBegin(), 5u);
  EXPECT_EQ(n.imaginary.end, 7u);
  EXPECT_EQ(n.unitAt, 7u);
  EXPECT_EQ(n.length, 8u);
  EXPECT_FALSE(n.reachedEnd);
}

TEST(NumberLexer, WordsAndPureImaginaryGoToTheirParts) {
  NumberSyntax syntax(u"e");
  std::u16string inf = u"-INF";
  LexedNumber n = lexNumber(std::u16string_view(inf), syntax);
  EXPECT_EQ(n.real.word, NumberWord::Inf);
  EXPECT_TRUE(n.real.negative);
  std::u16string imaginary = u"2.5j";
  n = lexNumber(std::u16string_view(imaginary), syntax);
  ASSERT_EQ(n.form, NumberForm::Imaginary);
  EXPECT_EQ(n.imaginary.fractionEnd, 3u);
  EXPECT_EQ(n.unitAt, 3u);
  std::u16string complexWord = u"1-NaNi";
  n = lexNumber(std::u16string_view(complexWord), syntax);
  ASSERT_EQ(n.form, NumberForm::Complex);
  EXPECT_EQ(n.imaginary.word, NumberWord::NaN);
  EXPECT_TRUE(n.imaginary.negative);
}

// A reader over a text decoded in pieces needs to know when the answer
// could change with more text.
TEST(NumberLexer, ReportsWhenItLookedPastTheText) {
  NumberSyntax syntax(u"e");
  struct {
    const char16_t* text;
    bool reached;
  } cases[] = {{u"12", true},  {u"12,", false}, {u"1e", true}, {u"1e5 ", false},
               {u"1+2", true}, {u"x", false},   {u"In", true}};
  for (const auto& c : cases) {
    std::u16string_view text(c.text);
    EXPECT_EQ(lexNumber(text, syntax).reachedEnd, c.reached)
        << std::string(text.begin(), text.end());
  }
  // The unit after a full width still matters: it may be an "i".
  NumberSyntax width3(u"e", 3);
  std::u16string_view digits(u"1234");
  EXPECT_TRUE(lexNumber(digits.substr(0, 3), width3).reachedEnd);
  EXPECT_FALSE(lexNumber(digits, width3).reachedEnd);
}

TEST(NumberLexer, ByteFormSeesOnlyAsciiExponentLetters) {
  NumberSyntax syntax(u"\u00e9");
  EXPECT_TRUE(syntax.hasNonAsciiExponentLetters());
  std::u16string units = u"2\u00e93";
  EXPECT_EQ(lexNumber(std::u16string_view(units), syntax).length, 3u);
  std::string bytes =
      "2\xc3\xa9"
      "3";
  EXPECT_EQ(lexNumber(std::string_view(bytes), syntax).length, 1u);
  // A Latin-1 byte of the same value is not the letter either.
  std::string latin1 =
      "2\xe9"
      "3";
  EXPECT_EQ(lexNumber(std::string_view(latin1), syntax).length, 1u);
}

// The end-of-text unit ends a number even when "ExpChars" names it.
TEST(NumberLexer, EndOfTextIsNeverAnExponentLetter) {
  NumberSyntax syntax(u"e\uFFFF");
  std::u16string text = u"1\uFFFF5";
  EXPECT_EQ(lexNumber(std::u16string_view(text), syntax).length, 1u);
  std::u16string_view one(u"1");
  LexedNumber n = lexNumber(one, syntax);
  EXPECT_EQ(n.length, 1u);
  EXPECT_TRUE(n.reachedEnd);
}

TEST(NumberLexer, LooksLikeNumberAtTheOpeningUnits) {
  struct {
    const char16_t* text;
    bool number;
  } cases[] = {{u"5", true},   {u"+5", true},   {u"-.5", true},  {u".", false},  {u".x", false},
               {u"inf", true}, {u"-INF", true}, {u"Inx", false}, {u"nan", true}, {u"Na", false},
               {u"+i", false}, {u"x", false},   {u"", false},    {u"+-1", false}};
  for (const auto& c : cases) {
    std::u16string_view t(c.text);
    EXPECT_EQ(textscan::looksLikeNumber(t.data(), t.data() + t.size()), c.number)
        << std::string(t.begin(), t.end());
  }
}

// On text made of digits, signs, points and exponent letters, the C
// library's strtod and the lexer must end a real number at the same place.
TEST(NumberLexer, AgreesWithStrtodOnWhereARealNumberEnds) {
  const char alphabet[] = "0123456789+-.eE";
  std::mt19937 random(20240611);
  NumberSyntax syntax(u"eE");
  for (int round = 0; round < 50000; ++round) {
    std::string text;
    size_t length = random() % 12;
    for (size_t i = 0; i < length; ++i) text.push_back(alphabet[random() % (sizeof alphabet - 1)]);
    char* stop = nullptr;
    std::strtod(text.c_str(), &stop);
    size_t expected = static_cast<size_t>(stop - text.c_str());
    LexedNumber n = lexNumber(std::string_view(text), syntax);
    ASSERT_EQ(n.length, expected) << '"' << text << '"';
    ASSERT_EQ(n.form == NumberForm::None, expected == 0) << '"' << text << '"';
  }
}

}  // namespace

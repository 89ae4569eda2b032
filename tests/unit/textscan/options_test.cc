// Building Options: the first inputs, the repeat count, the option names,
// escapes, and the settling of whitespace and delimiters.
#include "textscan/options.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "textscan_test_support.h"

namespace {

using namespace textscan_test;
using V = std::vector<std::u16string>;

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

TEST(OptionsSource, FileIdentifiersAndTextAreAccepted) {
  struct {
    std::function<kxArray*()> source;
    const char* error;
  } cases[] = {
      {[] { return num(3); }, ""},
      {[] { return num(3.5); }, ""},
      {[] { return num(kInf); }, ""},
      {[] { return str("1 2 3"); }, ""},
      {[] { return kxCreateCharMatrix(2, 3); }, ""},
      {[] { return num(0); }, "KORVAN:textscan:standardStream"},
      {[] { return num(2); }, "KORVAN:textscan:standardStream"},
      {[] { return num(2.5); }, "KORVAN:textscan:standardStream"},
      {[] { return num(-1); }, "KORVAN:FileIO:InvalidFid"},
      {[] { return num(kNaN); }, "KORVAN:FileIO:InvalidFid"},
      {[] { return kxCreateDoubleMatrix(1, 2, kxREAL); }, "KORVAN:FileIO:InvalidFid"},
      {[] { return emptyChar(); }, "KORVAN:textscan:NoInput"},
      {[] { return kxCreateDoubleMatrix(0, 0, kxREAL); }, "KORVAN:textscan:NoInput"},
      {[] { return cellOf({}); }, "KORVAN:textscan:NoInput"},
      {[] { return typed(kxINT8_CLASS, 3); }, "KORVAN:textscan:WrongInputType"},
      {[] { return flag(true); }, "KORVAN:textscan:WrongInputType"},
      {[] { return cellOf({str("x")}); }, "KORVAN:textscan:WrongInputType"},
  };
  int row = 0;
  for (const auto& c : cases) {
    EXPECT_EQ(OptionCall({c.source(), str("%f")}).error(), c.error) << "row " << row;
    ++row;
  }
}

TEST(OptionsSource, FormatMustBeAStringAndItsEscapesAreExpanded) {
  EXPECT_EQ(OptionCall({str("1"), num(1)}).error(), "KORVAN:textscan:SecondInput");
  EXPECT_EQ(OptionCall({str("1"), kxCreateCharMatrix(2, 2)}).error(),
            "KORVAN:textscan:SecondInput");
  EXPECT_EQ(OptionCall({str("1"), emptyChar()}).error(), "");
  EXPECT_EQ(OptionCall({str("1"), str("   ")}).error(), "KORVAN:textscan:SecondInput");
  auto f = OptionCall({str("1"), str("%f\\q")}).failure();
  ASSERT_TRUE(f);
  EXPECT_EQ(f->id, "KORVAN:textscan:IncorrectEscapeConstant");
  EXPECT_EQ(textArg(f->args.at(0)), u"Format");
  // A tab written as an escape separates items like a real one.
  EXPECT_EQ(OptionCall({str("1"), str("%f\\t%d")}).build().format.size(), 2u);
}

TEST(OptionsRepeatCount, IsRoundedUpAndNegativeOrNaNMeansNoLimit) {
  struct {
    std::function<kxArray*()> count;
    double lines;
  } cases[] = {{[] { return num(2.5); }, 3},
               {[] { return num(2); }, 2},
               {[] { return num(0); }, 0},
               {[] { return num(-0.0); }, 0},
               {[] { return num(0.1); }, 1},
               {[] { return num(-1); }, kInf},
               {[] { return num(-0.5); }, kInf},
               {[] { return num(kNaN); }, kInf},
               {[] { return num(kInf); }, kInf},
               {[] { return kxCreateDoubleMatrix(0, 0, kxREAL); }, kInf},
               {[] { return typed(kxINT8_CLASS, 4); }, 4},
               {[] { return typed(kxUINT64_CLASS, 1e15); }, 1e15}};
  for (const auto& c : cases) {
    textscan::Options o = OptionCall({str("1"), str("%f"), c.count()}).build();
    EXPECT_EQ(o.numberOfLines, c.lines);
    EXPECT_FALSE(std::signbit(o.numberOfLines));
    EXPECT_EQ(o.numberOfLinesIsInfinite, std::isinf(c.lines));
  }
}

TEST(OptionsRepeatCount, RefusesWhatIsNoRealNumberAndUnpairedOptions) {
  kxArray* complexCount = kxCreateDoubleMatrix(1, 1, kxCOMPLEX);
  kxGetPi(complexCount)[0] = 2;
  auto f = OptionCall({str("1"), str("%f"), complexCount}).failure();
  ASSERT_TRUE(f);
  EXPECT_EQ(f->id, "KORVAN:textscan:NotNumericScalar");
  EXPECT_EQ(textArg(f->args.at(0)), u"Number of lines");
  EXPECT_EQ(OptionCall({str("1"), str("%f"), flag(true)}).error(),
            "KORVAN:textscan:NotNumericScalar");
  EXPECT_EQ(OptionCall({str("1"), str("%f"), cellOf({})}).error(),
            "KORVAN:textscan:NotNumericScalar");
  EXPECT_EQ(OptionCall({str("1"), str("%f"), kxCreateDoubleMatrix(1, 2, kxREAL)}).error(),
            "KORVAN:textscan:NotNumericScalar");
  EXPECT_EQ(OptionCall({str("1"), str("%f"), num(1), str("Delimiter")}).error(),
            "KORVAN:textscan:UnpairedParamsValues");
  EXPECT_EQ(OptionCall({str("1"), str("%f"), str("Delimiter")}).error(),
            "KORVAN:textscan:UnpairedParamsValues");
  EXPECT_EQ(OptionCall({str("1"), str("%f"), num(1), str("Delimiter"), str(",")}).error(), "");
}

TEST(OptionNames, FoldCaseButMatchWholeNamesOnly) {
  struct {
    std::function<kxArray*()> name;
    const char* error;
  } cases[] = {
      {[] { return str("delimiter"); }, ""},
      {[] { return str("DELIMITER"); }, ""},
      {[] { return str("commentSTYLE"); }, ""},
      {[] { return str("delim"); }, "KORVAN:textscan:UnknownOption"},
      {[] { return str("Delimiters"); }, "KORVAN:textscan:UnknownOption"},
      {[] { return str(""); }, "KORVAN:textscan:UnknownOption"},
      // A unit beyond ASCII never matches, even one that folds to a letter.
      {[] { return u16(u"Del\u0131miter"); }, "KORVAN:textscan:UnknownOption"},
      {[] { return u16(u"\u212Aelimiter"); }, "KORVAN:textscan:UnknownOption"},
      {[] { return num(1); }, "KORVAN:textscan:NotAString"},
      {[] { return kxCreateCharMatrix(2, 9); }, "KORVAN:textscan:NotAString"},
  };
  int row = 0;
  for (const auto& c : cases) {
    // A repeat count first, so that a numeric name is read as a name.
    EXPECT_EQ(OptionCall({str("1"), str("%f"), num(1), c.name(), str(",")}).error(), c.error)
        << "row " << row;
    ++row;
  }
  auto f = OptionCall({str("1"), str("%f"), str("delim"), str(",")}).failure();
  ASSERT_TRUE(f);
  EXPECT_EQ(textArg(f->args.at(0)), u"delim") << "the name as the caller wrote it";
  f = OptionCall({str("1"), str("%f"), num(1), num(1), str(",")}).failure();
  ASSERT_TRUE(f);
  EXPECT_EQ(textArg(f->args.at(0)), u"Parameter Name");
}

TEST(OptionEscapes, ExpandTheFiveEscapesAndKeepAFinalBackslash) {
  struct {
    const char16_t* given;
    const char16_t* expanded;
  } cases[] = {{u"a\\tb", u"a\tb"},    {u"\\\\n", u"\\n"}, {u"end\\", u"end\\"},
               {u"\\", u"\\"},         {u"", u""},         {u"\\b\\n\\r\\t\\\\", u"\b\n\r\t\\"},
               {u"\\\\\\\\", u"\\\\"}, {u"x\\\\", u"x\\"}};
  for (const auto& c : cases) {
    EXPECT_EQ(textscan::expandEscapeText(c.given, u"Label"), c.expanded);
  }
  for (const char16_t* bad : {u"\\q", u"ok\\x", u"\\0", u"\\\\\\a"}) {
    auto f = failureOf([&] { textscan::expandEscapeText(bad, u"Label"); });
    ASSERT_TRUE(f);
    EXPECT_EQ(f->id, "KORVAN:textscan:IncorrectEscapeConstant");
    EXPECT_EQ(textArg(f->args.at(0)), u"Label");
  }
}

TEST(OptionEscapes, RenderingReadsBackToTheSameText) {
  EXPECT_EQ(textscan::renderEscapeText(u"\n\r\\\b\t,"), u"\\n\\r\\\\\\b\\t,");
  const char16_t alphabet[] = u"\\\n\r\b\tabn";
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    std::u16string text;
    for (size_t i = random() % 10; i > 0; --i) text.push_back(alphabet[random() % 8]);
    EXPECT_EQ(textscan::expandEscapeText(textscan::renderEscapeText(text), u"x"), text);
  }
  kxOwned shown(textscan::renderEscapes(u""));
  EXPECT_EQ(kxGetM(shown.get()), 1u);
  EXPECT_EQ(kxGetN(shown.get()), 0u);
}

struct WhitespaceCase {
  const char* name;
  std::vector<std::function<kxArray*()>> options;
  const char* format;
  std::u16string whitespace;
  V delimiters;
  bool warns;
};

TEST(OptionsWhitespace, SettlesWhitespaceAndDelimitersTogether) {
  auto s = [](const char* text) { return [text] { return str(text); }; };
  const WhitespaceCase cases[] = {
      {"defaults", {}, "%f", u" \b\t", V{u" ", u"\b", u"\t"}, false},
      {"empty whitespace", {s("Whitespace"), s("")}, "%f", u"", V{}, false},
      // A space is added; it delimits only when no string field could hold it.
      {"tab, strings", {s("Whitespace"), s("\\t")}, "%s", u"\t ", V{u"\t"}, false},
      {"tab, numbers", {s("Whitespace"), s("\\t")}, "%f", u"\t ", V{u"\t", u" "}, false},
      {"tab and space", {s("Whitespace"), s("\\t ")}, "%s", u"\t ", V{u"\t", u" "}, false},
      // A delimiter leaves the whitespace; only a caller's own overlap warns.
      {"space delimiter", {s("Delimiter"), s(" ")}, "%f", u"\b\t", V{u" "}, false},
      {"comma and comma-space",
       {s("Delimiter"), s(","), s("Whitespace"), s(", ")},
       "%f",
       u" ",
       V{u","},
       true},
      {"added space",
       {s("Delimiter"), s(" "), s("Whitespace"), s("\\t")},
       "%f",
       u"\t",
       V{u" "},
       false},
      {"no overlap",
       {s("Delimiter"), s(","), s("Whitespace"), s("\\t")},
       "%f",
       u"\t ",
       V{u","},
       false},
      {"long delimiter",
       {s("Delimiter"), [] { return cellOf({str(" ,")}); }},
       "%f",
       u" \b\t",
       V{u" ,"},
       false},
  };
  for (const WhitespaceCase& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<kxOwned> owned;
    std::vector<kxArray*> args = {str("1"), str(c.format)};
    for (const auto& make : c.options) args.push_back(make());
    for (kxArray* a : args) owned.emplace_back(a);
    test_support::CaughtWarnings warnings;
    textscan::Options o(1, static_cast<int>(args.size()), args.data());
    EXPECT_EQ(o.whitespace, c.whitespace);
    EXPECT_EQ(o.delimiters, c.delimiters);
    bool warned = !warnings.ids().empty();
    EXPECT_EQ(warned, c.warns);
    if (warned) {
      EXPECT_EQ(warnings.ids()[0], "KORVAN:textscan:DelimiterSpaceConflict");
    }
  }
}

TEST(OptionsWhitespace, SpaceEndsAQuotedFieldOnlyWithTheCallersSpaceAndDefaultDelimiters) {
  EXPECT_FALSE(OptionCall({str("1"), str("%q")}).build().spaceEndsQuotedField);
  textscan::Options o = OptionCall({str("1"), str("%q"), str("Whitespace"), str(" ")}).build();
  EXPECT_TRUE(o.whitespaceHasSpace);
  EXPECT_TRUE(o.spaceEndsQuotedField);
  o = OptionCall({str("1"), str("%q"), str("Whitespace"), str(" "), str("Delimiter"), str(",")})
          .build();
  EXPECT_FALSE(o.spaceEndsQuotedField);
  o = OptionCall({str("1"), str("%q"), str("Whitespace"), str("\\t")}).build();
  EXPECT_TRUE(o.spaceAddedToWhitespace);
  EXPECT_FALSE(o.spaceEndsQuotedField);
}

TEST(OptionsTreatAsEmpty, RefusesNumbersButNotTheBareWords) {
  struct {
    const char* text;
    bool refused;
  } cases[] = {{"NA", false},  {"-", false},    {".", false},   {"", false},     {"1e", false},
               {"Inf", false}, {"nan", false},  {"INF", false}, {"N/A", false},  {"1.5", true},
               {"+Inf", true}, {"-nan", true},  {" 1 ", true},  {"\t5", true},   {"1+2i", true},
               {"3i", true},   {"NaNi", false}, {"1d3", true},  {"0x10", false}, {"1 2", false}};
  for (const auto& c : cases) {
    std::string error =
        OptionCall({str("1"), str("%f"), str("TreatAsEmpty"), cellOf({str("ok"), str(c.text)})})
            .error();
    EXPECT_EQ(error, c.refused ? "KORVAN:textscan:NumericInTreatAsEmpty" : "") << c.text;
  }
  // The exponent letters that count are the final ones, whatever the order.
  EXPECT_EQ(
      OptionCall({str("1"), str("%f"), str("TreatAsEmpty"), str("1d3"), str("ExpChars"), str("e")})
          .error(),
      "");
}

TEST(OptionsFormat, ZeroWidthItemsRunOnceAndStringItemsAreNoted) {
  textscan::Options o = OptionCall({str("1"), str("%0f")}).build();
  EXPECT_EQ(o.numberOfLines, 1);
  EXPECT_FALSE(o.numberOfLinesIsInfinite);
  EXPECT_EQ(OptionCall({str("1"), str("%0f %0c %0[a]")}).build().numberOfLines, 1);
  EXPECT_TRUE(std::isinf(OptionCall({str("1"), str("%0f x")}).build().numberOfLines));
  EXPECT_TRUE(std::isinf(OptionCall({str("1"), str("%0f %f")}).build().numberOfLines));
  EXPECT_EQ(OptionCall({str("1"), str("%0f"), num(0)}).build().numberOfLines, 0);
  EXPECT_EQ(OptionCall({str("1"), str("%0f"), num(5)}).build().numberOfLines, 1);
  for (const char* f : {"%s", "%f %q", "%5t"}) {
    EXPECT_TRUE(OptionCall({str("1"), str(f)}).build().formatHasStringFields) << f;
  }
  for (const char* f : {"%f", "%[abc]", "%C %D %c", "%%s"}) {
    EXPECT_FALSE(OptionCall({str("1"), str(f)}).build().formatHasStringFields) << f;
  }
}

TEST(OptionsAtTheRead, LineEndsAdjustTheDelimitersAndMakeTheStopStrings) {
  textscan::Options crlf = OptionCall({str("1"), str("%s"), str("Delimiter"), str(",\\n")}).build();
  crlf.endOfLine = u"\r\n";
  textscan::prepareDelimitersForLineEnd(crlf);
  EXPECT_EQ(crlf.delimiters, (V{u",", u"\n", u"\r\n", u"\r"}));

  textscan::Options cr =
      OptionCall({str("1"), str("%s"), str("Delimiter"), str("\\n,\\n")}).build();
  cr.endOfLine = u"\r";
  textscan::prepareDelimitersForLineEnd(cr);
  EXPECT_EQ(cr.delimiters, (V{u"\r", u",", u"\r"}));

  textscan::Options stops = OptionCall({str("1"), str("%s"), str("Delimiter"), str(",;"),
                                        str("EndOfLine"), str("\\r\\n")})
                                .build();
  textscan::collectStopStrings(stops);
  EXPECT_EQ(stops.stopStrings, (V{u",", u";", u"\r", u"\n"}));

  // No whitespace and no delimiters at all: a string runs to the end.
  textscan::Options none = OptionCall({str("1"), str("%s"), str("Whitespace"), str("")}).build();
  none.endOfLine = u"\n";
  textscan::collectStopStrings(none);
  EXPECT_TRUE(none.stopStrings.empty());
}

}  // namespace

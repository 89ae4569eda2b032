// Every option: the values it takes, each refusal with its identifier and
// argument, and the last of two settings standing.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "textscan_test_support.h"

namespace {

using namespace textscan_test;

struct SetterRow {
  const char* option;
  std::function<kxArray*()> value;
  const char* error;                   // "" when the value is accepted
  const char16_t* argument = nullptr;  // the error's one argument, if it has one
};

void PrintTo(const SetterRow& row, std::ostream* os) {
  *os << row.option << " -> " << (*row.error ? row.error : "accepted");
}

class SetterTable : public ::testing::TestWithParam<SetterRow> {};

TEST_P(SetterTable, AcceptsOrRefusesWithItsIdentifier) {
  const SetterRow& row = GetParam();
  OptionCall call{str("1 2"), str("%f"), str(row.option), row.value()};
  std::optional<Failure> f = call.failure();
  if (!*row.error) {
    EXPECT_FALSE(f) << f->id;
    return;
  }
  ASSERT_TRUE(f);
  EXPECT_EQ(f->id, std::string("KORVAN:textscan:") + row.error);
  if (row.argument) {
    ASSERT_EQ(f->args.size(), 1u);
    EXPECT_EQ(textArg(f->args[0]), row.argument);
  } else {
    EXPECT_TRUE(f->args.empty());
  }
}

kxArray* pair() {
  return kxCreateDoubleMatrix(1, 2, kxREAL);
}
kxArray* twoRowChar() {
  return kxCreateCharMatrix(2, 1);
}
kxArray* complexScalar() {
  kxArray* a = kxCreateDoubleMatrix(1, 1, kxCOMPLEX);
  kxGetPi(a)[0] = 1;
  return a;
}
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(
    Flags, SetterTable,
    ::testing::Values(
        SetterRow{"CollectOutput", [] { return num(1); }, ""},
        SetterRow{"CollectOutput", [] { return flag(true); }, ""},
        SetterRow{"CollectOutput", [] { return typed(kxINT8_CLASS, 0); }, ""},
        SetterRow{"CollectOutput", [] { return str("yes"); }, "NotNumericScalar", u"CollectOutput"},
        SetterRow{"CollectOutput", pair, "NotNumericScalar", u"CollectOutput"},
        SetterRow{"ReturnOnError", [] { return flag(false); }, ""},
        SetterRow{"ReturnOnError", [] { return cellOf({}); }, "NotNumericScalar", u"ReturnOnError"},
        SetterRow{"MultipleDelimsAsOne", [] { return num(1); }, ""},
        SetterRow{"MultipleDelimsAsOne", [] { return str("x"); }, "NotAnIntegerValue",
                  u"MultipleDelimsAsOne"}));

INSTANTIATE_TEST_SUITE_P(
    Lists, SetterTable,
    ::testing::Values(
        SetterRow{"CommentStyle", [] { return str("%"); }, ""},
        SetterRow{"CommentStyle",
                  [] {
                    return cellOf({str("/*"), str("*/")});
                  },
                  ""},
        SetterRow{"CommentStyle", emptyChar, ""},
        SetterRow{"CommentStyle", [] { return num(1); }, "NonStringCellsInCommentStyle"},
        SetterRow{"CommentStyle", [] { return cellOf({}); }, "NonStringCellsInCommentStyle"},
        SetterRow{"CommentStyle",
                  [] {
                    return cellOf({str("a"), str("b"), str("c")});
                  },
                  "NonStringCellsInCommentStyle"},
        SetterRow{"CommentStyle", [] { return cellOf({num(1)}); }, "NonStringCellsInCommentStyle"},
        SetterRow{"CommentStyle", twoRowChar, "NonStringCellsInCommentStyle"},
        SetterRow{"Delimiter", [] { return str(","); }, ""},
        SetterRow{"Delimiter",
                  [] {
                    return cellOf({str(",;"), str("\\t")});
                  },
                  ""},
        SetterRow{"Delimiter", emptyChar, ""},
        SetterRow{"Delimiter", [] { return num(1); }, "NotAStringOrCellOfStrings", u"Delimiter"},
        SetterRow{"Delimiter", [] { return cellOf({}); }, "EmptyCellArrayInvalid", u"Delimiter"},
        SetterRow{"Delimiter",
                  [] {
                    return cellOf({str(","), num(1)});
                  },
                  "NotAStringOrCellOfStrings", u"Delimiter"},
        SetterRow{"Delimiter", [] { return cellOf({kxCreateCellMatrix(1, 1)}); },
                  "NotAStringOrCellOfStrings", u"Delimiter"},
        SetterRow{"Delimiter", [] { return str("\\q"); }, "IncorrectEscapeConstant", u"Delimiter"},
        SetterRow{"Delimiter", [] { return cellOf({str("\\q")}); }, "IncorrectEscapeConstant",
                  u"Delimiter"},
        SetterRow{"TreatAsEmpty", [] { return str("NA"); }, ""},
        SetterRow{"TreatAsEmpty",
                  [] {
                    return cellOf({str("N/A"), str("-")});
                  },
                  ""},
        SetterRow{"TreatAsEmpty", [] { return cellOf({}); }, ""},
        SetterRow{"TreatAsEmpty", [] { return num(1); }, "NonStringsInTreatAsEmpty"},
        SetterRow{"TreatAsEmpty",
                  [] {
                    return cellOf({str("NA"), num(1)});
                  },
                  "NonStringCellsInTreatAsEmpty"},
        SetterRow{"TreatAsEmpty", [] { return str("1.5"); }, "NumericInTreatAsEmpty"}));

INSTANTIATE_TEST_SUITE_P(
    Texts, SetterTable,
    ::testing::Values(
        SetterRow{"EndOfLine", emptyChar, ""}, SetterRow{"EndOfLine", [] { return str("x"); }, ""},
        SetterRow{"EndOfLine", [] { return str("\\r\\n"); }, ""},
        SetterRow{"EndOfLine", [] { return num(1); }, "NotAString", u"EndOfLine"},
        SetterRow{"EndOfLine", [] { return str("ab"); }, "LookforAndGetEndofline"},
        SetterRow{"EndOfLine", [] { return str("\\n\\r"); }, "LookforAndGetEndofline"},
        SetterRow{"EndOfLine", [] { return str("\\q"); }, "IncorrectEscapeConstant", u"EndOfLine"},
        SetterRow{"ExpChars", [] { return str("eE"); }, ""},
        SetterRow{"ExpChars", [] { return str("\\q"); }, ""},
        SetterRow{"ExpChars", [] { return num(1); }, "NotAString", u"ExpChars"},
        SetterRow{"DateLocale", [] { return str("en_US"); }, ""},
        SetterRow{"DateLocale", [] { return num(1); }, "NotAString", u"DateLocale"},
        SetterRow{"DateLocale", twoRowChar, "NotAString", u"DateLocale"},
        SetterRow{"Whitespace", [] { return str(" \\t"); }, ""},
        SetterRow{"Whitespace", emptyChar, ""},
        SetterRow{"Whitespace", [] { return num(1); }, "NotAString", u"Whitespace"},
        SetterRow{"Whitespace", [] { return str("\\x"); }, "IncorrectEscapeConstant",
                  u"Whitespace"}));

INSTANTIATE_TEST_SUITE_P(
    Numbers, SetterTable,
    ::testing::Values(
        SetterRow{"EmptyValue", [] { return num(-1); }, ""},
        SetterRow{"EmptyValue", [] { return typed(kxINT16_CLASS, 5); }, ""},
        SetterRow{"EmptyValue", [] { return str("x"); }, "NotNumericScalar", u"EmptyValue"},
        SetterRow{"EmptyValue", [] { return flag(true); }, "NotNumericScalar", u"EmptyValue"},
        SetterRow{"HeaderColumns", [] { return typed(kxUINT8_CLASS, 3); }, ""},
        SetterRow{"HeaderColumns", [] { return num(0); }, ""},
        SetterRow{"HeaderColumns", [] { return num(1.5); }, "NotAnIntegerValue", u"HeaderColumns"},
        SetterRow{"HeaderColumns", [] { return num(kInf); }, "NotAnIntegerValue", u"HeaderColumns"},
        SetterRow{"HeaderColumns", complexScalar, "NotAnIntegerValue", u"HeaderColumns"},
        SetterRow{"HeaderColumns", [] { return num(-1); }, "LookforAndGetHeaderColumns"},
        SetterRow{"HeaderLines", [] { return num(2); }, ""},
        SetterRow{"HeaderLines", [] { return num(kNaN); }, "NotAnIntegerValue", u"HeaderLines"},
        SetterRow{"HeaderLines", [] { return flag(true); }, "NotAnIntegerValue", u"HeaderLines"},
        SetterRow{"HeaderLines", [] { return num(-2); }, "LookforAndGetHeaderLines"},
        SetterRow{"NumCharactersToSkip", [] { return num(10); }, ""},
        SetterRow{"NumCharactersToSkip", [] { return num(0.5); }, "NotAnIntegerValue",
                  u"NumCharactersToSkip"},
        SetterRow{"NumCharactersToSkip", [] { return num(-1); },
                  "LookforAndGetNumCharactersToSkip"},
        // Refused by name, whatever the value.
        SetterRow{"Bufsize", [] { return num(4096); }, "BufSizeDeprecation"},
        SetterRow{"bufsize", [] { return str("x"); }, "BufSizeDeprecation"}));

TEST(OptionSetters, StoreTheirValues) {
  OptionCall call{str("1"),
                  str("%f"),
                  str("CollectOutput"),
                  num(2),
                  str("ReturnOnError"),
                  flag(false),
                  str("MultipleDelimsAsOne"),
                  flag(true),
                  str("CommentStyle"),
                  cellOf({str("/*"), str("\\n")}),
                  str("EmptyValue"),
                  typed(kxINT8_CLASS, -3),
                  str("EndOfLine"),
                  str("\\r\\n"),
                  str("ExpChars"),
                  str("\\x"),
                  str("HeaderColumns"),
                  num(2),
                  str("HeaderLines"),
                  num(-0.0),
                  str("NumCharactersToSkip"),
                  num(7),
                  str("DateLocale"),
                  str("de_DE"),
                  str("TreatAsEmpty"),
                  cellOf({str("-"), str("N/A"), str("NA"), str("x")})};
  textscan::Options o = call.build();
  EXPECT_TRUE(o.collectOutput);
  EXPECT_FALSE(o.returnOnError);
  EXPECT_TRUE(o.multipleDelimsAsOne);
  // Comment markers and exponent letters keep their backslashes.
  EXPECT_EQ(o.commentStyle, (std::vector<std::u16string>{u"/*", u"\\n"}));
  EXPECT_EQ(o.expChars, u"\\x");
  EXPECT_EQ(o.emptyValue, -3);
  EXPECT_EQ(o.endOfLine, u"\r\n");
  EXPECT_FALSE(o.endOfLineIsDefault);
  EXPECT_EQ(o.headerColumns, 2);
  EXPECT_FALSE(std::signbit(o.headerLines)) << "-0 is kept as 0";
  EXPECT_EQ(o.numCharactersToSkip, 7);
  ASSERT_NE(o.dateLocale, nullptr);
  EXPECT_EQ(matrix::get_ustring(o.dateLocale), u"de_DE");
  // Longest first; equal lengths keep their order.
  EXPECT_EQ(o.treatAsEmpty, (std::vector<std::u16string>{u"N/A", u"NA", u"-", u"x"}));
}

TEST(OptionSetters, DefaultsStandWhenNoOptionIsGiven) {
  textscan::Options o = OptionCall{str("1"), str("%f")}.build();
  EXPECT_TRUE(std::isinf(o.numberOfLines));
  EXPECT_TRUE(o.numberOfLinesIsInfinite);
  EXPECT_EQ(std::bit_cast<uint64_t>(o.emptyValue), textscan::kEmptyValueBits);
  EXPECT_TRUE(o.returnOnError);
  EXPECT_FALSE(o.collectOutput);
  EXPECT_EQ(o.expChars, u"eEdD");
  EXPECT_TRUE(o.endOfLine.empty());
  EXPECT_TRUE(o.endOfLineIsDefault);
  EXPECT_EQ(o.dateLocale, nullptr);
  EXPECT_TRUE(o.commentStyle.empty());
  EXPECT_TRUE(o.treatAsEmpty.empty());
}

// A second setting replaces the first, lists included.
TEST(OptionSetters, TheLastOfTwoSettingsStands) {
  textscan::Options o = OptionCall{str("1"),
                                   str("%f"),
                                   str("Delimiter"),
                                   str(",;"),
                                   str("TreatAsEmpty"),
                                   cellOf({str("a"), str("b")}),
                                   str("CommentStyle"),
                                   cellOf({str("{"), str("}")}),
                                   str("HeaderLines"),
                                   num(1),
                                   str("delimiter"),
                                   str("|"),
                                   str("TREATASEMPTY"),
                                   str("c"),
                                   str("CommentStyle"),
                                   str("#"),
                                   str("HeaderLines"),
                                   num(2)}
                            .build();
  EXPECT_EQ(o.delimiters, std::vector<std::u16string>{u"|"});
  EXPECT_EQ(o.treatAsEmpty, std::vector<std::u16string>{u"c"});
  EXPECT_EQ(o.commentStyle, std::vector<std::u16string>{u"#"});
  EXPECT_EQ(o.headerLines, 2);
}

TEST(OptionSetters, DelimiterStringGivesOneDelimiterPerCharacter) {
  using V = std::vector<std::u16string>;
  EXPECT_EQ(OptionCall({str("1"), str("%f"), str("Delimiter"), str(",;")}).build().delimiters,
            (V{u",", u";"}));
  EXPECT_EQ(
      OptionCall({str("1"), str("%f"), str("Delimiter"), cellOf({str(",;")})}).build().delimiters,
      (V{u",;"}));
  EXPECT_EQ(OptionCall({str("1"), str("%f"), str("Delimiter"), str("\\t")}).build().delimiters,
            (V{u"\t"}));
  EXPECT_EQ(OptionCall({str("1"), str("%f"), str("Delimiter"), cellOf({str("\\r\\n"), str("")})})
                .build()
                .delimiters,
            (V{u"\r\n", u""}));
}

}  // namespace

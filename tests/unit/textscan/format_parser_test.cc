// The format grammar: every letter and suffix, sets, date patterns,
// literals and separators, and the failures with their positions.
#include "textscan/format_parser.h"

#include <gtest/gtest.h>

#include "textscan_test_support.h"
#include "twhost/catalog.h"
#include "twhost/text.h"

namespace {

using namespace textscan;
using textscan_test::Failure;
using textscan_test::failureOf;
using textscan_test::textArg;

FormatDescription conv(SpecifierType type, int32_t width = -1, int32_t precision = -1,
                       bool skip = false, std::u16string text = u"") {
  return FormatDescription{std::move(text), width, precision, type, skip};
}
FormatDescription literal(std::u16string text) {
  int32_t width = static_cast<int32_t>(text.size());
  return FormatDescription{std::move(text), width, -1, LiteralField, true};
}

std::vector<FormatDescription> parse(const std::u16string& format) {
  FormatCursor cursor(format);
  cursor.skipSeparators();
  std::vector<FormatDescription> items;
  while (!cursor.atEnd()) items.push_back(nextItem(cursor));
  return items;
}

struct GrammarCase {
  const char* format;
  std::vector<FormatDescription> items;
};

void PrintTo(const GrammarCase& c, std::ostream* os) {
  *os << '"' << c.format << '"';
}

class FormatGrammar : public ::testing::TestWithParam<GrammarCase> {};

TEST_P(FormatGrammar, SplitsTheFormatIntoItems) {
  std::string f = GetParam().format;
  std::vector<FormatDescription> items = parse(std::u16string(f.begin(), f.end()));
  ASSERT_EQ(items.size(), GetParam().items.size());
  for (size_t i = 0; i < items.size(); ++i) {
    const FormatDescription& got = items[i];
    const FormatDescription& want = GetParam().items[i];
    EXPECT_EQ(got.type, want.type) << "item " << i;
    EXPECT_EQ(got.width, want.width) << "item " << i;
    EXPECT_EQ(got.precision, want.precision) << "item " << i;
    EXPECT_EQ(got.skip, want.skip) << "item " << i;
    EXPECT_EQ(got.text, want.text) << "item " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Letters, FormatGrammar,
    ::testing::Values(
        GrammarCase{"%d", {conv(Int32Field)}}, GrammarCase{"%d8", {conv(Int8Field)}},
        GrammarCase{"%d16", {conv(Int16Field)}}, GrammarCase{"%d32", {conv(Int32Field)}},
        GrammarCase{"%d64", {conv(Int64Field)}}, GrammarCase{"%u", {conv(UInt32Field)}},
        GrammarCase{"%u8", {conv(UInt8Field)}}, GrammarCase{"%u16", {conv(UInt16Field)}},
        GrammarCase{"%u32", {conv(UInt32Field)}}, GrammarCase{"%u64", {conv(UInt64Field)}},
        GrammarCase{"%f", {conv(DoubleField)}}, GrammarCase{"%f32", {conv(SingleField)}},
        GrammarCase{"%f64", {conv(DoubleField)}}, GrammarCase{"%n", {conv(NumberField)}},
        GrammarCase{"%c", {conv(CharacterField, 1)}}, GrammarCase{"%3c", {conv(CharacterField, 3)}},
        GrammarCase{"%0c", {conv(CharacterField, 0)}}, GrammarCase{"%s", {conv(StringField)}},
        GrammarCase{"%q", {conv(QuotedField)}}, GrammarCase{"%t", {conv(ApostropheQuotedField)}},
        GrammarCase{"%C", {conv(CategoricalField)}}, GrammarCase{"%D", {conv(DatetimeField)}}));

INSTANTIATE_TEST_SUITE_P(Suffixes, FormatGrammar,
                         ::testing::Values(
                             // A suffix is taken whole or not at all; what is left is a literal.
                             GrammarCase{"%d9", {conv(Int32Field), literal(u"9")}},
                             GrammarCase{"%d1", {conv(Int32Field), literal(u"1")}},
                             GrammarCase{"%d168", {conv(Int16Field), literal(u"8")}},
                             GrammarCase{"%u128", {conv(UInt32Field), literal(u"128")}},
                             GrammarCase{"%u88", {conv(UInt8Field), literal(u"8")}},
                             GrammarCase{"%f16", {conv(DoubleField), literal(u"16")}},
                             GrammarCase{"%f8", {conv(DoubleField), literal(u"8")}},
                             GrammarCase{"%f3", {conv(DoubleField), literal(u"3")}},
                             GrammarCase{"%n64", {conv(NumberField), literal(u"64")}}));

INSTANTIATE_TEST_SUITE_P(WidthsAndFlags, FormatGrammar,
                         ::testing::Values(GrammarCase{"%*5d", {conv(Int32Field, 5, -1, true)}},
                                           GrammarCase{"%5*d", {conv(Int32Field, 5, -1, true)}},
                                           GrammarCase{"%*5*d", {conv(Int32Field, 5, -1, true)}},
                                           GrammarCase{"%-5d", {conv(Int32Field, 5)}},
                                           GrammarCase{"%*-5d", {conv(Int32Field, 5, -1, true)}},
                                           GrammarCase{"%-*d", {conv(Int32Field, -1, -1, true)}},
                                           GrammarCase{"%5.2f", {conv(DoubleField, 5, 2)}},
                                           GrammarCase{"%.f", {conv(DoubleField)}},
                                           GrammarCase{"%.3f", {conv(DoubleField, -1, 3)}},
                                           GrammarCase{"%5.f", {conv(DoubleField, 5)}},
                                           GrammarCase{"%007.0f", {conv(DoubleField, 7, 0)}},
                                           GrammarCase{"%99999999999d",
                                                       {conv(Int32Field, 2147483647)}},
                                           GrammarCase{"%.99999999999999999999999f",
                                                       {conv(DoubleField, -1, 2147483647)}},
                                           GrammarCase{"%*s", {conv(StringField, -1, -1, true)}}));

INSTANTIATE_TEST_SUITE_P(
    SetsAndDates, FormatGrammar,
    ::testing::Values(GrammarCase{"%[abc]", {conv(SetField, -1, -1, false, u"abc")}},
                      GrammarCase{"%[]abc]", {conv(SetField, -1, -1, false, u"]abc")}},
                      GrammarCase{"%[^]]", {conv(NegatedSetField, -1, -1, false, u"]")}},
                      GrammarCase{"%[^,]", {conv(NegatedSetField, -1, -1, false, u",")}},
                      GrammarCase{"%[a-z]", {conv(SetField, -1, -1, false, u"a-z")}},
                      GrammarCase{"%[ %]", {conv(SetField, -1, -1, false, u" %")}},
                      GrammarCase{"%*5[ab]x", {conv(SetField, 5, -1, true, u"ab"), literal(u"x")}},
                      GrammarCase{"%[a]]", {conv(SetField, -1, -1, false, u"a"), literal(u"]")}},
                      GrammarCase{"%{yyyy-MM-dd HH:mm}D",
                                  {conv(DatetimeField, -1, -1, false, u"yyyy-MM-dd HH:mm")}},
                      GrammarCase{"%{}D", {conv(DatetimeField)}},
                      GrammarCase{"%10{HH}D%f",
                                  {conv(DatetimeField, 10, -1, false, u"HH"), conv(DoubleField)}}));

INSTANTIATE_TEST_SUITE_P(
    LiteralsAndSeparators, FormatGrammar,
    ::testing::Values(GrammarCase{"", {}}, GrammarCase{"%%d", {literal(u"%d")}},
                      GrammarCase{"a%%b", {literal(u"a%b")}},
                      GrammarCase{"50%%", {literal(u"50%")}},
                      GrammarCase{"%%%d", {literal(u"%"), conv(Int32Field)}},
                      GrammarCase{"a b", {literal(u"a"), literal(u"b")}},
                      GrammarCase{"a\tb\bc", {literal(u"a"), literal(u"b"), literal(u"c")}},
                      GrammarCase{"  %d  ", {conv(Int32Field)}},
                      GrammarCase{"x%d", {literal(u"x"), conv(Int32Field)}},
                      GrammarCase{"%d%f", {conv(Int32Field), conv(DoubleField)}},
                      GrammarCase{"%d,%f", {conv(Int32Field), literal(u","), conv(DoubleField)}},
                      GrammarCase{"*lit", {literal(u"*lit")}},
                      GrammarCase{"\n%s", {literal(u"\n"), conv(StringField)}}));

struct BadFormatCase {
  const char16_t* format;
  long position;  // 1-based
  const char16_t* rest;
  const char* detail;
  const char16_t* letter = nullptr;
};

TEST(FormatParser, FailuresNameTheirPlaceAndDetail) {
  const BadFormatCase cases[] = {
      {u"%", 1, u"%", "IncompleteFormat"},
      {u"%d %", 4, u"%", "IncompleteFormat"},
      {u"%5", 1, u"%5", "IncompleteFormat"},
      {u"%5.", 1, u"%5.", "IncompleteFormat"},
      {u"%*", 1, u"%*", "IncompleteFormat"},
      {u"%5*", 1, u"%5*", "IncompleteFormat"},
      {u"%-", 1, u"%-", "IncompleteFormat"},
      {u"%x", 1, u"%x", "UnsupportedSpecifier", u"x"},
      {u"a %5.2z b", 3, u"%5.2z b", "UnsupportedSpecifier", u"z"},
      {u"%%%", 3, u"%", "IncompleteFormat"},
      {u"% d", 1, u"% d", "UnsupportedSpecifier", u" "},
      {u"%[abc", 1, u"%[abc", "ClosingSet"},
      {u"%[", 1, u"%[", "ClosingSet"},
      {u"%[^", 1, u"%[^", "ClosingSet"},
      {u"%[]", 1, u"%[]", "ClosingSet"},
      // With a width between, the place falls inside the conversion.
      {u"%5[abc", 2, u"5[abc", "ClosingSet"},
      {u"%f %*[a", 5, u"*[a", "ClosingSet"},
      {u"%{yyyy}", 1, u"%{yyyy}", "ClosingDateFormat"},
      {u"%{yyyy", 1, u"%{yyyy", "ClosingDateFormat"},
      {u"%{a}x}D", 1, u"%{a}x}D", "ClosingDateFormat"},
  };
  for (const BadFormatCase& c : cases) {
    std::u16string format = c.format;
    SCOPED_TRACE(std::string(format.begin(), format.end()));
    kxOwned source(kxCreateString("1"));
    kxOwned formatArray(kxCreateStringFromNChars_UTF16(format.data(), format.size()));
    kxArray* args[] = {source.get(), formatArray.get()};
    auto f = failureOf([&] { textscan::Options(1, 2, args); });
    ASSERT_TRUE(f);
    EXPECT_EQ(f->id, "KORVAN:textscan:BadFormatString");
    ASSERT_EQ(f->args.size(), 3u);
    EXPECT_EQ(std::get<long>(f->args[0]), c.position);
    EXPECT_EQ(textArg(f->args[1]), c.rest);
    resource_core::BaseMsgID detail =
        c.letter ? kxMsg("KORVAN:textscan", c.detail, std::u16string(c.letter))
                 : kxMsg("KORVAN:textscan", c.detail);
    EXPECT_EQ(textArg(f->args[2]), fl::i18n::to_ustring(kxMessageText(detail)));
  }
}

TEST(FormatParser, FailedItemLeavesTheCursorAtTheEnd) {
  std::u16string format = u"%f %[ab %d";
  FormatCursor cursor(format);
  EXPECT_EQ(nextItem(cursor).type, DoubleField);
  EXPECT_EQ(cursor.itemEnd, 2u);
  EXPECT_EQ(cursor.position, 3u);
  FormatDescription failed = nextItem(cursor);
  EXPECT_EQ(failed, FormatDescription{});
  EXPECT_TRUE(cursor.atEnd());
  EXPECT_EQ(cursor.errorPosition, 3u);
}

}  // namespace

// Escape translation and the integer reader it shares with the parser.
#include <gtest/gtest.h>

#include "fileio/escapes.h"
#include "print_test_support.h"
#include "twhost/text.h"

namespace {

using Tarnwicks::FileIO::parseWideInteger;
using Tarnwicks::FileIO::translateEscapes;

struct EscapeCase {
  const char16_t* format;
  std::u16string translated;
  const char* warning;  // "" for none
};

class Escapes : public ::testing::TestWithParam<EscapeCase> {};

TEST_P(Escapes, TranslateAsTheUserExpects) {
  const EscapeCase& c = GetParam();
  print_test::CaughtWarnings warnings;
  std::u16string format = c.format;
  bool failed = translateEscapes(format);
  EXPECT_EQ(format, c.translated);
  EXPECT_EQ(failed, *c.warning != 0);
  if (*c.warning) {
    ASSERT_EQ(warnings.ids().size(), 1u);
    EXPECT_EQ(warnings.ids()[0], c.warning);
  } else {
    EXPECT_TRUE(warnings.ids().empty());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Table, Escapes,
    ::testing::Values(EscapeCase{u"a\\nb\\tc", u"a\nb\tc", ""},
                      EscapeCase{u"\\f\\r\\\\\\'\\\"\\?\\a\\b\\v", u"\f\r\\'\"?\a\b\v", ""},
                      EscapeCase{u"\\x41", u"A", ""}, EscapeCase{u"\\x4a\\x4A", u"JJ", ""},
                      EscapeCase{u"\\101", u"A", ""},
                      // Octal stops at the first digit it can't use; the rest stays.
                      EscapeCase{u"\\1018", u"A8", ""}, EscapeCase{u"\\12ab", u"\nab", ""},
                      EscapeCase{u"\\0", std::u16string(1, u'\0'), ""},
                      EscapeCase{u"%d\\n", u"%d\n", ""},
                      // Hex takes every hexadecimal digit that follows.
                      EscapeCase{u"\\xffff", u"\uffff", ""},
                      EscapeCase{u"ab\\x10000cd", u"ab", "KORVAN:printf:HexCharCodeOutOfRange"},
                      EscapeCase{u"\\200000", u"", "KORVAN:printf:OctalCharCodeOutOfRange"},
                      EscapeCase{u"x\\8", u"x", "KORVAN:printf:OctalCharCodeInvalid"},
                      EscapeCase{u"x\\xg", u"x", "KORVAN:printf:HexCharCodeInvalid"},
                      EscapeCase{u"x\\x", u"x", "KORVAN:printf:HexCharCodeInvalid"},
                      // The first bad escape ends the translation: what follows is lost.
                      EscapeCase{u"ok\\q\\n", u"ok", "KORVAN:printf:BadEscapeSequenceInFormat"},
                      EscapeCase{u"\\", u"", "KORVAN:printf:NoControlCharacterInFormat"},
                      EscapeCase{u"abc\\", u"abc", "KORVAN:printf:NoControlCharacterInFormat"},
                      EscapeCase{u"\u00e9\\n", u"\u00e9\n", ""}));

TEST(Escapes, BadEscapeNamesTheCharacter) {
  std::vector<std::string> messages;
  static std::vector<std::string>* sink;
  sink = &messages;
  auto previous = kxSetWarningHandler(
      [](const std::string&, const std::string& message) { sink->push_back(message); });
  std::u16string format = u"\\q";
  translateEscapes(format);
  kxSetWarningHandler(previous);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_NE(messages[0].find("\\q"), std::string::npos) << messages[0];
}

struct IntegerCase {
  const char16_t* text;
  int base;
  int32_t value;
  size_t used;
};

class WideInteger : public ::testing::TestWithParam<IntegerCase> {};

TEST_P(WideInteger, ReadsAndSaturates) {
  const IntegerCase& c = GetParam();
  std::u16string text = c.text;
  const char16_t* stop = nullptr;
  int32_t v = parseWideInteger(text.data(), text.data() + text.size(), stop, c.base);
  EXPECT_EQ(v, c.value);
  EXPECT_EQ(static_cast<size_t>(stop - text.data()), c.used);
}

INSTANTIATE_TEST_SUITE_P(
    Table, WideInteger,
    ::testing::Values(IntegerCase{u"123x", 10, 123, 3}, IntegerCase{u"-42", 10, -42, 3},
                      IntegerCase{u"", 10, 0, 0}, IntegerCase{u"x", 10, 0, 0},
                      // A sign without digits uses nothing.
                      IntegerCase{u"-", 10, 0, 0}, IntegerCase{u"-x", 10, 0, 0},
                      IntegerCase{u"2147483647", 10, 2147483647, 10},
                      IntegerCase{u"2147483648", 10, 2147483647, 10},
                      IntegerCase{u"99999999999999", 10, 2147483647, 14},
                      IntegerCase{u"-2147483648", 10, -2147483647 - 1, 11},
                      IntegerCase{u"-99999999999", 10, -2147483647 - 1, 12},
                      IntegerCase{u"0778", 8, 63, 3}, IntegerCase{u"fF1g", 16, 0xff1, 3},
                      IntegerCase{u"9", 8, 0, 0}));

}  // namespace

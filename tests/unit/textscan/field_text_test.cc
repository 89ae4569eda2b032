// What a column of another area receives: UTF-8 field bytes decoded exactly
// as the file decoder decodes them, and the quote rule of quoted fields.
#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <random>
#include <string>

#include "textscan/column.h"

namespace {

using textscan::FieldText;

// The file decoder's result: ICU's UTF-8 converter, then every character
// beyond the 16-bit range as the one unit 26.
std::u16string decodeLikeFiles(const std::string& bytes) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* cnv = ucnv_open("UTF-8", &status);
  std::u16string out(bytes.size() + 1, u'\0');
  int32_t n = ucnv_toUChars(cnv, reinterpret_cast<UChar*>(out.data()), out.size(), bytes.data(),
                            bytes.size(), &status);
  ucnv_close(cnv);
  EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
  out.resize(n);
  out.erase(
      std::remove_if(out.begin(), out.end(), [](char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }),
      out.end());
  std::replace_if(
      out.begin(), out.end(), [](char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }, char16_t(26));
  return out;
}

std::u16string decoded(const std::string& bytes) {
  std::u16string out;
  FieldText(bytes.data(), bytes.size()).appendTo(out);
  return out;
}

TEST(FieldText, DecodesLikeTheFileDecoder) {
  const std::string cases[] = {
      "plain",         "caf\xc3\xa9",  "\xe2\x82\xac 5",     "\xf0\x9f\x98\x80!",
      "\xed\xa0\x80x", "\xe0\x80\xaf", "\xc0\xaf",           "\xf4\x90\x80\x80",
      "\xe2\x82",      "\xf0\x9f\x98", "\x80\xbf",           "\xfe\xff",
      "a\xc3",         "\xef\xbf\xbf", std::string(1, '\0'),
  };
  for (const std::string& c : cases) EXPECT_EQ(decoded(c), decodeLikeFiles(c)) << c;
}

TEST(FieldText, RandomBytesDecodeLikeTheFileDecoder) {
  std::mt19937 rng(13);
  // Bytes weighted towards the lead and trail ranges, where the rules are.
  const uint8_t pool[] = {'a',  ',',  0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC2,
                          0xDF, 0xE0, 0xE1, 0xED, 0xEF, 0xF0, 0xF3, 0xF4, 0xF5, 0xFF};
  for (int round = 0; round < 20000; ++round) {
    std::string bytes(rng() % 12, '\0');
    for (char& b : bytes) b = static_cast<char>(pool[rng() % sizeof pool]);
    ASSERT_EQ(decoded(bytes), decodeLikeFiles(bytes)) << round;
  }
}

TEST(FieldText, WideTextIsAppendedAsItStands) {
  std::u16string text = u"x\xFFFDy";
  std::u16string out = u">";
  FieldText(text.data(), text.size()).appendTo(out);
  EXPECT_EQ(out, u">x\xFFFDy");
}

struct QuoteCase {
  std::u16string field;
  std::u16string content;
};

TEST(StripQuotes, KeepsTheContentAndWhatFollowsTheClosingQuote) {
  const QuoteCase cases[] = {
      {u"\"abc\"", u"abc"},   {u"\"a\"\"b\"", u"a\"b"},     {u"\"\"", u""},
      {u"\"", u""},           {u"\"ab\"cd\"e", u"abcd\"e"}, {u"\"open", u"open"},
      {u"\"a\"\"\"", u"a\""}, {u"\"\"\"\"", u"\""},
  };
  for (const QuoteCase& c : cases) {
    std::u16string out(c.field.size(), u'?');
    size_t n =
        textscan::stripQuotes(u'"', c.field.data(), c.field.data() + c.field.size(), out.data());
    EXPECT_EQ(out.substr(0, n), c.content);
  }
}

}  // namespace

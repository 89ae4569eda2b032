// The fast path of all-numeric patterns against ICU itself: whenever the
// fast path claims a value, ICU must read the same text to the same bits.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "datetime/date_parser.h"

namespace {

using datetime::datetimeICUParser;
using datetime::DateValue;

// Patterns the fast path takes, and texts made to fit them more or less.
const char16_t* const kFastPatterns[] = {
    u"yyyy-MM-dd HH:mm:ss.SSS",
    u"yyyy-MM-dd'T'HH:mm:ss",
    u"yyyy-MM-dd HH:mm:ss.SSSSSS",
    u"yyyy-MM-dd HH:mm:ss.SSSSSSSSS",
    u"dd/MM/yyyy",
    u"M/d/yy",
    u"d.M.y HH:mm",
    u"yyyyMMdd",
    u"yyMMddHHmmss",
    u"HH:mm:ss.S",
    u"MM/dd",
    u"yyyy-MM-dd'T'HH:mm:ss.SS'Z'",
    u"[yyyy]",
};

std::u16string digits(std::mt19937& rng, int value, int width) {
  std::u16string out;
  for (int i = 0; i < width; ++i, value /= 10) out.insert(out.begin(), char16_t(u'0' + value % 10));
  (void)rng;
  return out;
}

// A text shaped by the pattern: each letter run becomes digits of a width
// near the run's, with values near the valid range; then a few mutations.
std::u16string textFor(const std::u16string& pattern, std::mt19937& rng) {
  std::uniform_int_distribution<int> pick(0, 99);
  std::u16string out;
  bool quoted = false;
  for (size_t i = 0; i < pattern.size();) {
    char16_t c = pattern[i];
    if (c == u'\'') {
      quoted = !quoted;
      ++i;
      continue;
    }
    if (quoted || !std::isalpha(static_cast<int>(c))) {
      out += c;
      ++i;
      continue;
    }
    size_t end = i;
    while (end < pattern.size() && pattern[end] == c) ++end;
    int count = static_cast<int>(end - i);
    int width = count;
    int roll = pick(rng);
    if (roll < 10) width = count + 1;
    if (roll >= 10 && roll < 20 && count > 1) width = count - 1;
    if (roll >= 20 && roll < 25) width = count + 3;
    if (c == u'y' && count <= 2 && roll >= 25 && roll < 45) width = 4;
    int limit = c == u'M' ? 14 : c == u'd' ? 33 : c == u'H' ? 25 : c == u'm' || c == u's' ? 61 : 0;
    int value = limit ? std::uniform_int_distribution<int>(0, limit)(rng)
                      : std::uniform_int_distribution<int>(0, 999999999)(rng);
    out += digits(rng, value, width);
    i = end;
  }
  static const char16_t kNoise[] = u"0123456789-/ :.T+\tE,x\u0663";
  int mutations = pick(rng) < 70 ? 0 : 1 + pick(rng) % 3;
  for (int k = 0; k < mutations && !out.empty(); ++k) {
    size_t at = std::uniform_int_distribution<size_t>(0, out.size() - 1)(rng);
    char16_t noise = kNoise[std::uniform_int_distribution<size_t>(0, std::size(kNoise) - 2)(rng)];
    switch (pick(rng) % 3) {
      case 0:
        out[at] = noise;
        break;
      case 1:
        out.insert(out.begin() + static_cast<long>(at), noise);
        break;
      default:
        out.erase(out.begin() + static_cast<long>(at));
        break;
    }
  }
  if (pick(rng) < 5) out = u" " + out + u"  ";
  return out;
}

bool sameBits(DateValue a, DateValue b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

TEST(FastPath, AgreesWithICUWheneverItClaimsAValue) {
  std::mt19937 rng(20261123);
  for (const char16_t* pattern : kFastPatterns) {
    datetimeICUParser parser(pattern, std::string("en_US"));
    ASSERT_TRUE(parser.hasFastPath()) << std::string(pattern, pattern + 1);
    int claimed = 0;
    constexpr int kTexts = 4000;
    for (int i = 0; i < kTexts; ++i) {
      std::u16string text = textFor(pattern, rng);
      DateValue fast;
      if (!parser.parseFast(text.data(), text.size(), fast)) continue;
      ++claimed;
      DateValue icu;
      bool recognised = parser.parseDateTextWithICU(text, icu);
      std::string shown(text.begin(), text.end());
      ASSERT_TRUE(recognised) << shown;
      ASSERT_TRUE(sameBits(fast, icu)) << shown << ": fast " << fast.high << " + " << fast.low
                                       << ", ICU " << icu.high << " + " << icu.low;
      // The byte form reads ASCII text the same.
      std::string bytes(text.begin(), text.end());
      DateValue narrow;
      ASSERT_TRUE(parser.parseFast(bytes.data(), bytes.size(), narrow)) << shown;
      ASSERT_TRUE(sameBits(fast, narrow)) << shown;
    }
    // The generator aims at the pattern: most texts should take the fast path.
    EXPECT_GT(claimed, kTexts / 20) << std::string(pattern, pattern + 4);
  }
}

TEST(FastPath, TakesOnlyNumericPatternsInLocalesWithASCIIDigits) {
  auto fast = [](const std::u16string& pattern, const char* locale = "en_US") {
    return datetimeICUParser(pattern, std::string(locale)).hasFastPath();
  };
  EXPECT_TRUE(fast(u"yyyy-MM-dd HH:mm:ss.SSS"));
  EXPECT_TRUE(fast(u"yyyy-MM-dd HH:mm:ss.SSS", "de_DE"));
  EXPECT_FALSE(fast(u"yyyy-MM-dd", "ar_EG"));
  EXPECT_FALSE(fast(u"dd-MMM-yyyy"));
  EXPECT_FALSE(fast(u"hh:mm a"));
  EXPECT_FALSE(fast(u"yyyy-MM-dd'T'HH:mm:ssSSSSSS"));  // long fraction right after a field
  EXPECT_FALSE(fast(u"SSSSSSSS"));  // found by the fuzz target: ICU reads nothing
  EXPECT_FALSE(fast(u".SSSSSS"));
  EXPECT_FALSE(fast(u"yMd"));      // one-letter fields that abut
  EXPECT_FALSE(fast(u"dd'e'MM"));  // ICU may read an exponent
}

TEST(FastPath, SeparatorsStayStrictOnBothPaths) {
  datetimeICUParser parser(u"yyyy-MM-dd", std::string("en_US"));
  for (const char16_t* text : {u"2020/01/02", u"2020.01.02", u"2020 01 02", u"2020-01/02"}) {
    DateValue v;
    EXPECT_FALSE(parser.parseFast(text, std::char_traits<char16_t>::length(text), v));
    EXPECT_FALSE(parser.parseDateTextWithICU(text, v));
    EXPECT_TRUE(v.isNaT());
  }
}

}  // namespace

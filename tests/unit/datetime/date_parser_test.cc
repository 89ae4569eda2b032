// The date parser: patterns read through ICU, the fraction past
// milliseconds, the trailing literal, defaults, two-digit years, the words,
// and the configuration errors.
#include "datetime/date_parser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "support/builtin_calls.h"

namespace {

using datetime::datetimeICUParser;
using datetime::DateValue;
using test_support::raisedBy;

// Milliseconds since 1970 of a UTC time, by the C library.
double utcMs(int y, int mo, int d, int h = 0, int mi = 0, int s = 0, double ms = 0) {
  tm t{};
  t.tm_year = y - 1900;
  t.tm_mon = mo - 1;
  t.tm_mday = d;
  t.tm_hour = h;
  t.tm_min = mi;
  t.tm_sec = s;
  return static_cast<double>(timegm(&t)) * 1000.0 + ms;
}

int currentYear() {
  time_t now = time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  return local.tm_year + 1900;
}

DateValue parse(const std::u16string& pattern, const std::u16string& text,
                bool* recognised = nullptr) {
  datetimeICUParser p(pattern, std::string("en_US"));
  DateValue out;
  bool ok = p.parseDateText(text, out);
  if (recognised) *recognised = ok;
  return out;
}

struct DateCase {
  const char16_t* pattern;
  const char16_t* text;
  double expected;  // NaN: NaT
};

class ReadsDates : public ::testing::TestWithParam<DateCase> {};

TEST_P(ReadsDates, ToTheMillisecond) {
  const DateCase& c = GetParam();
  DateValue v = parse(c.pattern, c.text);
  if (std::isnan(c.expected)) {
    EXPECT_TRUE(v.isNaT()) << "got " << v.high;
  } else {
    EXPECT_EQ(v.high, c.expected);
    EXPECT_EQ(v.low, 0);
  }
}

const double kNaT = NAN;

INSTANTIATE_TEST_SUITE_P(
    Patterns, ReadsDates,
    ::testing::Values(
        DateCase{u"yyyy-MM-dd", u"2020-01-02", utcMs(2020, 1, 2)},
        DateCase{u"yyyy-MM-dd", u"  2020-01-02\t", utcMs(2020, 1, 2)},
        DateCase{u"yyyy-MM-dd HH:mm:ss.SSS", u"2021-12-31 23:59:58.125",
                 utcMs(2021, 12, 31, 23, 59, 58, 125)},
        DateCase{u"yyyy-MM-dd'T'HH:mm:ss", u"1999-03-04T05:06:07", utcMs(1999, 3, 4, 5, 6, 7)},
        DateCase{u"yyyy-MM-dd'T'HH:mm:ss'Z'", u"1999-03-04T05:06:07Z", utcMs(1999, 3, 4, 5, 6, 7)},
        DateCase{u"dd/MM/yyyy", u"31/12/1900", utcMs(1900, 12, 31)},
        DateCase{u"M/d/yyyy", u"7/4/1776", utcMs(1776, 7, 4)},
        DateCase{u"yyyyMMdd", u"20200229", utcMs(2020, 2, 29)},
        DateCase{u"dd-MMM-yyyy", u"05-Mar-2001", utcMs(2001, 3, 5)},
        DateCase{u"MMMM d, yyyy", u"March 5, 2001", utcMs(2001, 3, 5)},
        DateCase{u"yyyy-MM-dd HH:mm:ss.S", u"2020-01-02 03:04:05.5",
                 utcMs(2020, 1, 2, 3, 4, 5, 500)},
        // Separators are strict: another separator is not overruled.
        DateCase{u"yyyy-MM-dd", u"2020/01/02", kNaT}, DateCase{u"yyyy-MM-dd", u"2020.01.02", kNaT},
        DateCase{u"dd.MM.yyyy", u"02/01/2020", kNaT},
        // Invalid dates, extra text, missing parts.
        DateCase{u"yyyy-MM-dd", u"2019-02-29", kNaT}, DateCase{u"yyyy-MM-dd", u"2020-13-01", kNaT},
        DateCase{u"HH:mm", u"24:00", kNaT}, DateCase{u"yyyy-MM-dd", u"2020-01-02x", kNaT},
        DateCase{u"yyyy-MM-dd", u"2020-01", kNaT},
        // A trailing literal must be there, though ICU would forgive it.
        DateCase{u"yyyy-MM-dd'T'", u"2020-01-02T", utcMs(2020, 1, 2)},
        DateCase{u"yyyy-MM-dd'T'", u"2020-01-02", kNaT},
        DateCase{u"yyyy.", u"2020.", utcMs(2020, 1, 1)}, DateCase{u"yyyy.", u"2020", kNaT}));

TEST(DateParser, WordsAreTrimmedAndFolded) {
  bool recognised = false;
  EXPECT_TRUE(parse(u"yyyy-MM-dd", u"  nat ", &recognised).isNaT());
  EXPECT_TRUE(recognised);
  EXPECT_EQ(parse(u"yyyy-MM-dd", u"INF", &recognised).high, INFINITY);
  EXPECT_TRUE(recognised);
  EXPECT_EQ(parse(u"yyyy-MM-dd", u"+inf", &recognised).high, INFINITY);
  EXPECT_EQ(parse(u"yyyy-MM-dd", u"-Inf", &recognised).high, -INFINITY);
  EXPECT_TRUE(parse(u"yyyy-MM-dd", u"", &recognised).isNaT());
  EXPECT_TRUE(recognised);
  EXPECT_TRUE(parse(u"yyyy-MM-dd", u"Infinity", &recognised).isNaT());
  EXPECT_FALSE(recognised);
  // "NaN" anywhere is refused before ICU's number reader can take it.
  EXPECT_TRUE(parse(u"yyyy", u"NaN", &recognised).isNaT());
  EXPECT_FALSE(recognised);
  // NaT is the negative quiet NaN with a zero low part.
  DateValue nat = parse(u"yyyy", u"NaT");
  EXPECT_EQ(std::bit_cast<uint64_t>(nat.high), DateValue::kNaTBits);
  EXPECT_EQ(nat.low, 0);
}

TEST(DateParser, TextWithVeryManyDigitsIsNaTAndDoesNotReachICU) {
  // ICU 72 divides by zero on a fraction field of 35 digits or more.
  std::u16string digits(40, u'7');
  EXPECT_TRUE(parse(u"S", digits).isNaT());
  EXPECT_TRUE(parse(u"yyyy-MM-dd HH:mm:ss.SSS", u"2020-01-02 03:04:05." + digits).isNaT());
  // ICU's number reader also runs on past an exponent letter.
  EXPECT_TRUE(
      parse(u".S", u"." + std::u16string(25, u'0') + u"E" + std::u16string(7, u'0')).isNaT());
  // A long fraction is read by our own reader, which takes any length.
  datetimeICUParser p(u"ss.SSSSSS", std::string("en_US"));
  DateValue v;
  EXPECT_TRUE(p.parseDateText(u"07." + digits, v));
}

TEST(DateParser, MissingPartsComeFromTheDefaults) {
  EXPECT_EQ(parse(u"yyyy", u"2024").high, utcMs(2024, 1, 1));
  EXPECT_EQ(parse(u"MM", u"03").high, utcMs(currentYear(), 3, 1));
  time_t now = time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  double today = utcMs(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
  double read = parse(u"HH:mm", u"13:45").high;
  // The day may turn between the two clock readings; then it is tomorrow.
  EXPECT_TRUE(read == today + utcMs(1970, 1, 1, 13, 45) ||
              read == today + 86400000.0 + utcMs(1970, 1, 1, 13, 45));
}

TEST(DateParser, TwoDigitYearsFallInTheHundredYearsFromFiftyYearsAgo) {
  int pivot = currentYear() - 50;
  int first = pivot % 100;
  int last = (first + 99) % 100;
  auto text = [](int yy) {
    char16_t t[] = u"01/02/00";
    t[6] = static_cast<char16_t>(u'0' + yy / 10);
    t[7] = static_cast<char16_t>(u'0' + yy % 10);
    return std::u16string(t);
  };
  EXPECT_EQ(parse(u"MM/dd/yy", text(first)).high, utcMs(pivot, 1, 2));
  EXPECT_EQ(parse(u"MM/dd/yy", text(last)).high, utcMs(pivot + 99, 1, 2));
  // Four digits under "yy" are a year as written.
  EXPECT_EQ(parse(u"MM/dd/yy", u"01/02/1850").high, utcMs(1850, 1, 2));
}

TEST(DateParser, LongFractionsCarryALowPart) {
  datetimeICUParser p(u"yyyy-MM-dd HH:mm:ss.SSSSSS", std::string("en_US"));
  EXPECT_EQ(p.fractionDigits(), 6);
  DateValue v;
  ASSERT_TRUE(p.parseDateText(u"2020-01-02 03:04:05.123456", v));
  double whole = utcMs(2020, 1, 2, 3, 4, 5);
  // high + low is the time to the nanosecond; the microseconds live in low.
  EXPECT_NEAR((v.high - whole) + v.low, 123.456, 1e-9);
  EXPECT_EQ(v.high, whole + 123.456);
  datetimeICUParser twelve(u"ss.SSSSSSSSSSSS", std::string("en_US"));
  EXPECT_EQ(twelve.fractionDigits(), 9);
  // A fraction run that is not followed by the pattern's end still reads.
  datetimeICUParser inner(u"yyyy HH:mm:ss.SSSSSS 'h'", std::string("en_US"));
  ASSERT_TRUE(inner.parseDateText(u"1970 01:02:03.000001 h", v));
  EXPECT_NEAR((v.high - utcMs(1970, 1, 1, 1, 2, 3)) + v.low, 0.001, 1e-12);
}

// Parsers of one locale share its symbols; parsers made in turn for other
// locales, and kept alive together, each read their own month names and
// eras.
TEST(DateParser, ParsersOfLocalesInTurnReadTheirOwnWords) {
  struct Reading {
    const char* locale;
    const char16_t* text;
  };
  const Reading readings[] = {{"en_US", u"5 March 2001 CE"},
                              {"de_DE", u"5 März 2001 CE"},
                              {"fr_FR", u"5 mars 2001 CE"},
                              {"de_DE", u"5 März 2001 CE"},
                              {"en_US", u"5 March 2001 CE"}};
  std::vector<std::unique_ptr<datetimeICUParser>> parsers;
  for (const Reading& r : readings) {
    parsers.push_back(std::make_unique<datetimeICUParser>(u"d MMMM y G", std::string(r.locale)));
  }
  for (size_t i = 0; i < parsers.size(); ++i) {
    SCOPED_TRACE(readings[i].locale);
    DateValue v;
    EXPECT_TRUE(parsers[i]->parseDateText(readings[i].text, v));
    EXPECT_EQ(v.high, utcMs(2001, 3, 5));
    // Another locale's month name is no date here.
    const char16_t* other = readings[(i + 1) % parsers.size()].text;
    if (std::u16string(other) != readings[i].text) {
      EXPECT_FALSE(parsers[i]->parseDateText(other, v));
      EXPECT_TRUE(v.isNaT());
    }
  }
}

TEST(DateParser, ConfigurationErrorsCarryTheirIdentifiers) {
  auto make = [](const std::u16string& pattern, const char* locale = "en_US") {
    return raisedBy([&] { datetimeICUParser p(pattern, std::string(locale)); });
  };
  EXPECT_EQ(make(u""), "KORVAN:datetime:ParseErrs");
  EXPECT_EQ(make(u"yyyy-MM-dd HH:mm Z"), "KORVAN:datetime:FormatConflict_Zz");
  EXPECT_EQ(make(u"HH:mm zzzz"), "KORVAN:datetime:FormatConflict_Zz");
  EXPECT_EQ(make(u"HH:mm:ss'Z'"), "");
  EXPECT_EQ(make(u"ss.SSxSS"), "KORVAN:datetime:FormatConflict_Zz");
  EXPECT_EQ(make(u"ss.SSmSS"), "KORVAN:datetime:InvalidFractionalSeconds");
  EXPECT_EQ(make(u"ss.SmS"), "");  // three or fewer: ICU reads them itself
  kxOwned bad(kxCreateString("xx_YY"));
  EXPECT_EQ(raisedBy([&] { datetimeICUParser p(u"yyyy", bad.get()); }),
            "KORVAN:datetime:InvalidLocaleString");
  kxOwned number(kxCreateDoubleScalar(1));
  EXPECT_EQ(raisedBy([&] { datetimeICUParser p(u"yyyy", number.get()); }),
            "KORVAN:datetime:InvalidLocale");
  kxOwned german(kxCreateString("de-DE"));
  datetimeICUParser p(u"dd. MMMM yyyy", german.get());
  DateValue v;
  ASSERT_TRUE(p.parseDateText(u"05. März 2001", v));
  EXPECT_EQ(v.high, utcMs(2001, 3, 5));
}

TEST(DateParser, QuotedFieldsAreUnquoted) {
  datetimeICUParser p(u"yyyy-MM-dd", std::string("en_US"));
  std::u16string quoted = u"\"2020-01-02\"";
  EXPECT_EQ(p.parseDateField(quoted.data(), quoted.size()).high, utcMs(2020, 1, 2));
  std::u16string empty = u"\"\"";
  EXPECT_TRUE(p.parseDateField(empty.data(), empty.size()).isNaT());
  EXPECT_TRUE(p.parseDateField(nullptr, 0).isNaT());
}

}  // namespace

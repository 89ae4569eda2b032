#include "date_parser.h"

#include <unicode/dtfmtsym.h>
#include <unicode/gregocal.h>
#include <unicode/numsys.h>
#include <unicode/simpletz.h>
#include <unicode/tzfmt.h>

#include <cmath>
#include <ctime>

#include "date_locale.h"
#include "icu_check.h"
#include "locale_formats.h"
#include "pattern_rules.h"
#include "quoted_text.h"
#include "twhost/errors.h"
#include "twhost/kx_data.h"

namespace datetime {

namespace {

// No Julian era, ever: the Gregorian change lies before any date a double
// can tell apart (minus two to the 53rd milliseconds).
constexpr double kNoJulianEra = -9007199254740992.0;
// Two-digit years fall in the hundred years from 1 January of this many
// years ago.
constexpr int32_t kPivotYearsBack = 50;
// ICU reads fractions of up to this many "S" itself.
constexpr int32_t kIcuFractionDigits = 3;
// Past that, fractions are read to nine digits, nanoseconds.
constexpr int32_t kMaxFractionDigits = 9;
constexpr double kMsPerSecond = 1000.0;

const char16_t* const kUnzoned = u"unzoned";

icu::UnicodeString toUnicode(std::u16string_view s) {
  return icu::UnicodeString(s.data(), static_cast<int32_t>(s.size()));
}

icu::UnicodeString trimmedText(std::u16string_view text) {
  icu::UnicodeString u = toUnicode(text);
  u.trim();
  return u;
}

// The local date of the wall clock, for patterns without a year, month or
// day: "HH:mm" reads a time of today.
void wallClockDate(int32_t& year, int32_t& month, int32_t& day) {
  time_t seconds = static_cast<time_t>(std::floor(utWallClock()));
  tm local{};
  localtime_r(&seconds, &local);
  constexpr int kTmYearBase = 1900;
  year = local.tm_year + kTmYearBase;
  month = local.tm_mon;
  day = local.tm_mday;
}

// Whether the locale writes numbers in ASCII digits, which is all the fast
// path reads.
bool usesAsciiDigits(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::NumberingSystem> ns(icu::NumberingSystem::createInstance(locale, status));
  return U_SUCCESS(status) && ns && std::string(ns->getName()) == "latn";
}

// ICU 72 scales a fraction field of one to three "S" by a power of ten in
// 32-bit arithmetic, which wraps to zero past 34 digits and divides by it
// (a crash found by the fuzz target). The digits it counts are those its
// number reader took, which may run on past an exponent letter ("0...0E0..."
// did it). A date holds fewer than twenty digits, so under such a pattern a
// text with more than this many digits in all is NaT before ICU sees it.
constexpr int32_t kMostDigits = 31;

bool holdsTooManyDigits(const icu::UnicodeString& text) {
  int32_t digits = 0;
  for (int32_t i = 0; i < text.length();) {
    UChar32 c = text.char32At(i);
    if (u_isdigit(c) && ++digits > kMostDigits) return true;
    i += U16_LENGTH(c);
  }
  return false;
}

}  // namespace

bool parseSpecialDateText(const icu::UnicodeString& text, DateValue& out) {
  auto is = [&](const char16_t* word) { return text.caseCompare(word, U_FOLD_CASE_DEFAULT) == 0; };
  if (text.isEmpty() || is(u"NaT")) {
    out = DateValue::notATime();
    return true;
  }
  if (is(u"Inf") || is(u"+Inf")) {
    out = DateValue::plusInfinity();
    return true;
  }
  if (is(u"-Inf")) {
    out = DateValue::minusInfinity();
    return true;
  }
  out = DateValue::notATime();
  return false;
}

datetimeICUParser::datetimeICUParser(const ustring& pattern, const kxArray* locale) {
  construct(pattern, icu::Locale(requireDateLocale(locale).c_str()));
}

datetimeICUParser::datetimeICUParser(const ustring& pattern, const std::string& localeName) {
  construct(pattern, icu::Locale(localeName.c_str()));
}

datetimeICUParser::~datetimeICUParser() = default;

void datetimeICUParser::construct(const ustring& pattern, const icu::Locale& locale) {
  icu::UnicodeString trimmed = toUnicode(pattern);
  trimmed.trim();
  ustring trimmedPattern(trimmed.getBuffer(), static_cast<size_t>(trimmed.length()));
  ustring literal = trailingLiteralOf(trimmedPattern);
  trailingLiteral_ = toUnicode(literal);
  trailingLiteralUnits_ = literal;
  createDateCalendar(locale);
  double pivot = defaultPivotDate();
  setDateFormat(pivot, pattern, locale);
  if (usesAsciiDigits(locale)) fast_ = NumericPattern::compile(pattern, defaults_);
}

void datetimeICUParser::createDateCalendar(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  auto* zone = new icu::SimpleTimeZone(0, icu::UnicodeString(kUnzoned));
  calendar_ = std::make_unique<icu::GregorianCalendar>(zone, locale, status);
  checkICU(status, "create calendar");
  auto* gregorian = static_cast<icu::GregorianCalendar*>(calendar_.get());
  gregorian->setGregorianChange(kNoJulianEra, status);
  checkICU(status, "set Gregorian change");
  calendar_->setSkippedWallTimeOption(UCAL_WALLTIME_LAST);
  calendar_->setRepeatedWallTimeOption(UCAL_WALLTIME_LAST);
  calendar_->setFirstDayOfWeek(UCAL_SUNDAY);
  calendar_->setMinimalDaysInFirstWeek(1);
}

double datetimeICUParser::defaultPivotDate() {
  UErrorCode status = U_ZERO_ERROR;
  UDate saved = calendar_->getTime(status);
  checkICU(status, "read calendar calendar initial time");
  calendar_->setTime(icu::Calendar::getNow(), status);
  int32_t pivotYear = calendar_->get(UCAL_EXTENDED_YEAR, status) - kPivotYearsBack;
  checkICU(status, "get current year");
  calendar_->clear();
  calendar_->set(pivotYear, 0, 1, 0, 0, 0);
  UDate pivot = calendar_->getTime(status);
  checkICU(status, "get default pivot year");
  calendar_->setTime(saved, status);
  checkICU(status, "reset calendar to initial time");
  defaults_.pivotYear = pivotYear;
  return pivot;
}

void datetimeICUParser::setDateFormat(double pivot, const ustring& pattern,
                                      const icu::Locale& locale) {
  if (pattern.empty()) kxThrowId("KORVAN:datetime", "ParseErrs", pattern);
  // The calendar's zone is always "unzoned": a pattern may name no zone.
  if (hasUnquotedZoneLetter(pattern)) kxThrowId("KORVAN:datetime", "FormatConflict_Zz", pattern);
  wallClockDate(defaults_.year, defaults_.month, defaults_.day);
  if (holdsAnyOf(pattern, u"yuYU")) {
    defaults_.month = 0;
    defaults_.day = 1;
  } else if (holdsAnyOf(pattern, u"MLQq")) {
    defaults_.day = 1;
  }
  calendar_->setLenient(false);
  createDateFormatter(pattern, locale);
  UErrorCode status = U_ZERO_ERROR;
  formatter_->set2DigitYearStart(pivot, status);
  checkICU(status, "set pivot year");

  FractionRun run = fractionRunOf(pattern);
  fractionDigits_ = static_cast<int32_t>(run.length());
  if (fractionDigits_ <= kIcuFractionDigits) return;
  // ICU keeps milliseconds only: the formatter reads up to the run, a
  // number reader reads the digits, and a second formatter what follows.
  for (size_t i = run.first; i <= run.last; ++i) {
    if (pattern[i] != u'S') kxThrowId("KORVAN:datetime", "InvalidFractionalSeconds");
  }
  formatter_->applyPattern(toUnicode(std::u16string_view(pattern).substr(0, run.first)));
  fractionDigits_ = std::min(fractionDigits_, kMaxFractionDigits);
  fractionFormat_.reset(formatter_->getNumberFormat()->clone());
  fractionFormat_->setParseIntegerOnly(true);
  fractionFormat_->setMinimumIntegerDigits(fractionDigits_);
  fractionFormat_->setMaximumIntegerDigits(fractionDigits_);
  if (run.last + 1 < pattern.size()) {
    suffixFormatter_.reset(formatter_->clone());
    suffixFormatter_->applyPattern(toUnicode(std::u16string_view(pattern).substr(run.last + 1)));
  }
}

// ICU 72 has no switch against separators being overruled, and needs none:
// in strict mode (setLenient(false)) its parser matches every literal of the
// pattern as written, so "2020/01/02" does not read under "yyyy-MM-dd". The
// date-separator equivalences apply only to lenient parsing.
void datetimeICUParser::createDateFormatter(const ustring& pattern, const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  formatter_ = std::make_unique<icu::SimpleDateFormat>(toUnicode(pattern), locale, status);
  checkICU(status, "create formatter");
  formatter_->setLenient(false);
  formatter_->setBooleanAttribute(UDAT_PARSE_ALLOW_NUMERIC, false, status);
  checkICU(status, "set formatter PARSE_ALLOW_NUMERIC attribute");
  // The symbols (eras "BCE" and "CE") and the zone format ("UTC") are the
  // locale's shared ones, copied.
  formatter_->adoptDateFormatSymbols(dateSymbolsFor(locale).release());
  formatter_->adoptTimeZoneFormat(zoneFormatFor(locale).release());
}

bool datetimeICUParser::parseDateText(std::u16string_view text, DateValue& out) {
  if (parseFast(text.data(), text.size(), out)) return true;
  return parseICU(trimmedText(text), out);
}

bool datetimeICUParser::parseDateTextWithICU(std::u16string_view text, DateValue& out) {
  return parseICU(trimmedText(text), out);
}

bool datetimeICUParser::parseICU(const icu::UnicodeString& text, DateValue& out) {
  calendar_->clear();
  calendar_->set(defaults_.year, defaults_.month, defaults_.day, 0, 0, 0);
  icu::ParsePosition position(0);
  // ICU's number reader would take "NaN" for a number.
  if (text.indexOf(u"NaN") >= 0) {
    out = DateValue::notATime();
    return false;
  }
  if (fractionDigits_ > 0 && fractionDigits_ <= kIcuFractionDigits && holdsTooManyDigits(text)) {
    out = DateValue::notATime();
    return false;
  }
  formatter_->parse(text, *calendar_, position);
  if (position.getIndex() < 1) return parseSpecialDateText(text, out);
  double fraction = 0;
  if (fractionDigits_ > kIcuFractionDigits) {
    int32_t before = position.getIndex();
    icu::Formattable number;
    fractionFormat_->parse(text, number, position);
    if (position.getIndex() == before) return parseSpecialDateText(text, out);
    UErrorCode status = U_ZERO_ERROR;
    double digits = position.getIndex() - before;
    fraction = number.getDouble(status) / std::pow(10.0, digits);
    checkICU(status, "get fractional seconds");
    if (suffixFormatter_) {
      before = position.getIndex();
      suffixFormatter_->parse(text, *calendar_, position);
      if (position.getIndex() == before) return parseSpecialDateText(text, out);
    }
  }
  if (position.getIndex() < text.length() || text.length() == 0) {
    return parseSpecialDateText(text, out);
  }
  // ICU forgives a missing trailing literal; dates here must carry it.
  if (!trailingLiteral_.isEmpty() && !text.endsWith(trailingLiteral_)) {
    out = DateValue::notATime();
    return false;
  }
  UErrorCode status = U_ZERO_ERROR;
  double time = calendar_->getTime(status);
  if (U_FAILURE(status)) {
    out = DateValue::notATime();
    return false;
  }
  out = fractionDigits_ <= kIcuFractionDigits
            ? DateValue{time, 0}
            : addDoubleDouble({std::floor(time), 0}, fraction * kMsPerSecond);
  return true;
}

DateValue datetimeICUParser::parseDateField(const char16_t* units, size_t length) {
  if (length == 0) return DateValue::notATime();
  std::u16string_view text(units, length);
  if (units[0] == kDoubleQuote) {
    if (scratch_.size() < length) scratch_.resize(length);
    size_t n = stripQuotes(kDoubleQuote, units, units + length, scratch_.data());
    if (n == 0) return DateValue::notATime();
    text = std::u16string_view(scratch_.data(), n);
  }
  DateValue out;
  parseDateText(text, out);
  return out;
}

}  // namespace datetime

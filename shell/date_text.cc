// Dates as text in their own pattern. ICU formats everything but the
// fraction of the second: its "S" fields stop at milliseconds, while a
// datetime holds nanoseconds (a double-double count of milliseconds). So
// each run of "S" is swapped for a private-use mark before ICU sees the
// pattern, the instant given to ICU is cut to the whole second, and the
// marks in ICU's text are replaced by the fraction's digits.
#include "date_text.h"

#include <unicode/dtfmtsym.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "twhost/catalog.h"
#include "twhost/errors.h"
#include "twhost/text.h"

namespace tw {

namespace {

// A character no date pattern uses: ICU copies it as literal text.
constexpr char16_t kFractionMark = u'\uE000';
constexpr int kFractionDigits = 9;
constexpr double kMsPerSecond = 1000.0;
constexpr double kNsPerMs = 1e6;
constexpr int64_t kNsPerMsWhole = 1000000;
// No Julian calendar before 1582: the same proleptic Gregorian calendar as
// the dates were read with.
constexpr double kNoJulianEra = -9007199254740992.0;

// A whole second and the nanoseconds past it.
struct SplitInstant {
  double secondMs;  // a whole number of seconds, in milliseconds
  int64_t nanos;    // 0 to 999,999,999
};

// high + low milliseconds, rounded to the nearest nanosecond.
SplitInstant split(double high, double low) {
  double ms = std::floor(high);
  double rest = (high - ms) + low;  // exact: both parts are small
  double carry = std::floor(rest);
  ms += carry;
  rest -= carry;
  auto sub = static_cast<int64_t>(std::llround(rest * kNsPerMs));
  if (sub >= kNsPerMsWhole) {
    ms += 1;
    sub -= kNsPerMsWhole;
  }
  double seconds = std::floor(ms / kMsPerSecond);
  double msInSecond = ms - seconds * kMsPerSecond;
  if (msInSecond < 0) {
    seconds -= 1;
    msInSecond += kMsPerSecond;
  } else if (msInSecond >= kMsPerSecond) {
    seconds += 1;
    msInSecond -= kMsPerSecond;
  }
  return {seconds * kMsPerSecond, static_cast<int64_t>(msInSecond) * kNsPerMsWhole + sub};
}

// The pattern with each unquoted run of "S" made one mark; `runs` gets the
// length of each run in order.
icu::UnicodeString markFractions(const ustring& format, std::vector<size_t>& runs) {
  icu::UnicodeString out;
  bool quoted = false;
  for (size_t i = 0; i < format.size();) {
    char16_t c = format[i];
    if (c == u'\'') quoted = !quoted;
    if (quoted || c != u'S') {
      out.append(c);
      ++i;
      continue;
    }
    size_t start = i;
    while (i < format.size() && format[i] == u'S') ++i;
    runs.push_back(i - start);
    out.append(kFractionMark);
  }
  return out;
}

std::string fractionText(int64_t nanos, size_t length) {
  std::string digits(kFractionDigits, '0');
  for (int k = kFractionDigits - 1; k >= 0; --k, nanos /= 10) {
    digits[static_cast<size_t>(k)] = static_cast<char>('0' + nanos % 10);
  }
  if (length <= digits.size()) return digits.substr(0, length);
  return digits + std::string(length - digits.size(), '0');
}

icu::Locale displayLocale() {
  std::string name = kxMessageText(kxMsg("KORVAN:datetime:localizedStrings", "Locale"));
  icu::Locale locale(name.c_str());
  return locale.isBogus() ? icu::Locale::getUS() : locale;
}

}  // namespace

struct DateTextFormatter::Icu {
  std::unique_ptr<icu::SimpleDateFormat> format;
  std::vector<size_t> fractionRuns;
};

DateTextFormatter::DateTextFormatter(const ustring& format) : icu_(std::make_unique<Icu>()) {
  icu::Locale locale = displayLocale();
  // A pattern that holds the mark already is given to ICU as it stands.
  bool markable = format.find(kFractionMark) == ustring::npos;
  for (const ustring& pattern : {format, ustring(kFallbackDateFormat)}) {
    if (pattern.empty()) continue;
    std::vector<size_t> runs;
    icu::UnicodeString icuPattern =
        markable ? markFractions(pattern, runs)
                 : icu::UnicodeString(pattern.data(), static_cast<int32_t>(pattern.size()));
    UErrorCode status = U_ZERO_ERROR;
    auto f = std::make_unique<icu::SimpleDateFormat>(icuPattern, locale, status);
    auto calendar =
        std::make_unique<icu::GregorianCalendar>(icu::TimeZone::getGMT()->clone(), locale, status);
    if (U_FAILURE(status)) continue;
    calendar->setGregorianChange(kNoJulianEra, status);
    if (U_FAILURE(status)) continue;
    // The eras the dates are read with, so that a text shown reads back.
    auto symbols = std::make_unique<icu::DateFormatSymbols>(locale, status);
    if (U_FAILURE(status)) continue;
    const icu::UnicodeString eras[] = {u"BCE", u"CE"};
    constexpr int32_t kEraCount = 2;
    symbols->setEras(eras, kEraCount);
    symbols->setEraNames(eras, kEraCount);
    symbols->setNarrowEras(eras, kEraCount);
    // After the calendar, which brings symbols of its own.
    f->adoptCalendar(calendar.release());
    f->adoptDateFormatSymbols(symbols.release());
    icu_->format = std::move(f);
    icu_->fractionRuns = std::move(runs);
    return;
  }
}

DateTextFormatter::~DateTextFormatter() = default;

std::string DateTextFormatter::text(double high, double low) const {
  if (std::isnan(high)) return "NaT";
  if (std::isinf(high)) return high > 0 ? "Inf" : "-Inf";
  if (!icu_->format) return "?";
  SplitInstant at = split(high, low);
  icu::UnicodeString shown;
  icu_->format->format(at.secondMs, shown);
  std::string utf8;
  shown.toUTF8String(utf8);
  if (icu_->fractionRuns.empty()) return utf8;
  std::string out;
  std::string mark;
  icu::UnicodeString(kFractionMark).toUTF8String(mark);
  size_t run = 0;
  for (size_t i = 0; i < utf8.size();) {
    if (run < icu_->fractionRuns.size() && utf8.compare(i, mark.size(), mark) == 0) {
      out += fractionText(at.nanos, icu_->fractionRuns[run++]);
      i += mark.size();
    } else {
      out += utf8[i++];
    }
  }
  return out;
}

std::vector<std::string> datetimeTexts(const kxArray* datetime) {
  const kxArray* props = kxGetObjectProperties(datetime);
  auto property = [&](const char* name) -> const kxArray* {
    return props && kxIsStruct(props) ? kxGetField(props, 0, name) : nullptr;
  };
  const kxArray* format = property("Format");
  bool hasFormat = format && kxIsChar(format) && kxGetNumberOfElements(format) != 0;
  DateTextFormatter dates(hasFormat ? ustring(kxGetChars(format), kxGetNumberOfElements(format))
                                    : ustring(kFallbackDateFormat));
  const kxArray* data = property("Data");
  bool numeric = data && kxIsDouble(data);
  size_t have = numeric ? kxGetNumberOfElements(data) : 0;
  const double* high = numeric ? kxGetPr(data) : nullptr;
  const double* low = numeric && kxIsComplex(data) ? kxGetPi(data) : nullptr;
  std::vector<std::string> texts;
  size_t n = kxGetNumberOfElements(datetime);
  for (size_t i = 0; i < n; ++i) {
    texts.push_back(i < have ? dates.text(high[i], low ? low[i] : 0) : dates.text(NAN, 0));
  }
  return texts;
}

}  // namespace tw

// The date parser: the text of one field to a DateValue, for one pattern in
// one locale, through ICU's calendar and SimpleDateFormat.
//
// Beyond ICU it reads fractions of a second past three digits (as a
// double-double correction), insists on the pattern's trailing literal, fills
// the parts a pattern lacks from a default date, reads the words NaT, Inf,
// +Inf and -Inf, and takes all-numeric patterns through a fast path that
// gives ICU's own results (numeric_pattern.h).
//
// A field that does not parse gives NaT; only configuration errors throw:
// an empty pattern, a time zone, a broken run of fraction letters, a bad
// locale, or a failing ICU call.
//
// Construction costs a calendar, a formatter and their symbols; make one
// parser per pattern and reuse it. A parser is not thread-safe: each parse
// resets and fills its calendar.
#pragma once

#include <unicode/calendar.h>
#include <unicode/numfmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "datetime/date_value.h"
#include "numeric_pattern.h"
#include "twhost/kx_array.h"

namespace datetime {

class datetimeICUParser {
 public:
  // `locale` is the "DateLocale" value (a char row naming a locale).
  datetimeICUParser(const ustring& pattern, const kxArray* locale);
  // `localeName` names a locale that validateDateLocale accepted.
  datetimeICUParser(const ustring& pattern, const std::string& localeName);
  ~datetimeICUParser();
  datetimeICUParser(const datetimeICUParser&) = delete;
  datetimeICUParser& operator=(const datetimeICUParser&) = delete;

  // Reads a text; blanks around it are trimmed. True when the text was
  // recognised, as a date or as one of the words; `out` is set either way.
  bool parseDateText(std::u16string_view text, DateValue& out);

  // A field as the reader hands it over: empty gives NaT, a field that
  // starts with a double quote is unquoted first.
  DateValue parseDateField(const char16_t* units, size_t length);

  // The fast path alone: true when it is sure of the value. Bytes must be
  // ASCII-compatible (UTF-8). Callers fall back to parseDateField.
  template <class CharT>
  bool parseFast(const CharT* text, size_t length, DateValue& out) const {
    return fast_ && fast_->parse(text, length, out) && endsWithTrailingLiteral(text, length);
  }
  bool hasFastPath() const { return fast_.has_value(); }
  // ICU alone, bypassing the fast path: what the fast path must agree with.
  bool parseDateTextWithICU(std::u16string_view text, DateValue& out);

  int32_t fractionDigits() const { return fractionDigits_; }
  const DateDefaults& defaults() const { return defaults_; }

 private:
  void construct(const ustring& pattern, const icu::Locale& locale);
  void createDateCalendar(const icu::Locale& locale);
  double defaultPivotDate();
  void setDateFormat(double pivot, const ustring& pattern, const icu::Locale& locale);
  void createDateFormatter(const ustring& pattern, const icu::Locale& locale);
  bool parseICU(const icu::UnicodeString& trimmed, DateValue& out);
  // The trailing literal test of ICU's path, on a text the fast path read
  // (so blanks at its end are ASCII).
  template <class CharT>
  bool endsWithTrailingLiteral(const CharT* text, size_t length) const {
    while (length > 0 && isAsciiBlank(static_cast<std::make_unsigned_t<CharT>>(text[length - 1]))) {
      --length;
    }
    size_t n = trailingLiteralUnits_.size();
    if (n > length) return false;
    for (size_t i = 0; i < n; ++i) {
      if (static_cast<std::make_unsigned_t<CharT>>(text[length - n + i]) !=
          trailingLiteralUnits_[i]) {
        return false;
      }
    }
    return true;
  }

  // Owned ICU objects, released in reverse order.
  std::unique_ptr<icu::Calendar> calendar_;
  std::unique_ptr<icu::SimpleDateFormat> formatter_;
  std::unique_ptr<icu::NumberFormat> fractionFormat_;       // only past three "S"
  std::unique_ptr<icu::SimpleDateFormat> suffixFormatter_;  // pattern after such a run
  icu::UnicodeString trailingLiteral_;
  ustring trailingLiteralUnits_;  // the same, for the fast path
  DateDefaults defaults_;
  int32_t fractionDigits_ = 0;
  std::optional<NumericPattern> fast_;
  ustring scratch_;  // unquoted field text, grows only
};

// The words that stand for no date or for the infinities, compared without
// case: "" and "NaT" (true, NaT), "Inf" and "+Inf", "-Inf" (true); anything
// else gives NaT and false.
bool parseSpecialDateText(const icu::UnicodeString& text, DateValue& out);

}  // namespace datetime

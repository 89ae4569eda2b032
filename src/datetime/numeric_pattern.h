// The fast path of the date parser, for patterns made only of numeric
// fields (y, M, d, H, m, s, S) and literal separators, such as
// "yyyy-MM-dd HH:mm:ss.SSS" or "dd/MM/yy".
//
// It claims a result only when it is sure that ICU, configured as the date
// parser configures it, reads the text to the same value: a text of ASCII
// digits in the widths the pattern asks for, every separator exactly as
// written, and a valid date. Anything else -- other widths, blanks before a
// number, signs, other digits, NaT, invalid dates -- it leaves to ICU, which
// keeps every answer ICU's own. A test and a fuzz target hold the two paths
// to the same results.
//
// Cost: one pass over the text, no allocation, no ICU call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "datetime/date_value.h"

namespace datetime {

using ustring = std::u16string;

// What the parser would otherwise take from its calendar: the date that
// each parse starts from (month counted from 0), and the first year of the
// hundred years that two-digit years fall in.
struct DateDefaults {
  int32_t year = 1970;
  int32_t month = 0;
  int32_t day = 1;
  int32_t pivotYear = 1950;
};

class NumericPattern {
 public:
  // Empty when the pattern holds anything the fast path does not read.
  static std::optional<NumericPattern> compile(const ustring& pattern,
                                               const DateDefaults& defaults);

  // True, with `out` set, when the text (blanks around it allowed) is surely
  // a date that ICU reads to `out`; false means "ask ICU", never "NaT".
  // `CharT` is char16_t, or char for ASCII-compatible bytes.
  template <class CharT>
  bool parse(const CharT* text, size_t length, DateValue& out) const;

 private:
  enum class Kind : uint8_t { Literal, Year, Month, Day, Hour, Minute, Second, Fraction };
  struct Element {
    Kind kind;
    uint8_t count;  // letters in the pattern
    bool fixed;     // inside a run of abutting numeric fields: exactly `count` digits
    std::string literal;
  };

  explicit NumericPattern(const DateDefaults& defaults) : defaults_(defaults) {}

  std::vector<Element> elements_;
  DateDefaults defaults_;
};

// The blanks that both paths trim around a text, as far as ASCII goes.
inline bool isAsciiBlank(unsigned c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Days from 1970-01-01 to the given day of the proleptic Gregorian calendar
// (month 1 to 12).
int64_t daysFromCivil(int64_t year, unsigned month, unsigned day);

}  // namespace datetime

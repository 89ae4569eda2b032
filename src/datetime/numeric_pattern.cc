#include "numeric_pattern.h"

#include <cmath>
#include <type_traits>

namespace datetime {

namespace {

constexpr char16_t kQuote = u'\'';
constexpr char kFirstPrintable = 0x20;
constexpr char kLastPrintable = 0x7E;
// ICU reads a fraction of up to three letters itself and truncates what is
// longer; the fast path takes up to nine digits there, which fit 32 bits.
constexpr size_t kShortFractionMaxDigits = 9;
constexpr size_t kMillisecondDigits = 3;
// A longer fraction is read as one integer; up to fifteen digits it is exact
// as a double, as ICU's reading of it is.
constexpr size_t kLongFractionMaxDigits = 15;
// 1e0 to 1e15, each exact, so a division by them is what ICU's path gets
// from std::pow.
constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr int kMonthsInYear = 12;
constexpr int kHoursInDay = 24;
constexpr int kMinutesInHour = 60;
constexpr int kSecondsInMinute = 60;
constexpr double kMsPerDay = 86400000.0;
constexpr double kMsPerHour = 3600000.0;
constexpr double kMsPerMinute = 60000.0;
constexpr double kMsPerSecond = 1000.0;
constexpr int kYearsInCentury = 100;

bool isAsciiLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

bool isAsciiDigit(unsigned c) {
  return c - '0' < 10;
}

// A separator the fast path can match as written: printable ASCII, not a
// digit (ICU would read it into the number before it).
bool isPlainSeparator(char16_t c) {
  return c >= kFirstPrintable && c <= kLastPrintable && !isAsciiDigit(c);
}

// Characters that ICU's number reader may take as part of the number that
// ends just before them (exponent, grouping, percent): the fast path does
// not follow a number of variable width with them.
bool mayExtendNumber(char c) {
  return c == 'e' || c == 'E' || c == ',' || c == '%';
}

bool isLeapYear(int64_t y) {
  return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

unsigned daysInMonth(int64_t year, unsigned month) {
  static constexpr unsigned kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && isLeapYear(year) ? 29 : kDays[month - 1];
}

}  // namespace

int64_t daysFromCivil(int64_t y, unsigned m, unsigned d) {
  // Days counted in 400-year eras from 0000-03-01, shifted to 1970.
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

std::optional<NumericPattern> NumericPattern::compile(const ustring& pattern,
                                                      const DateDefaults& defaults) {
  NumericPattern p(defaults);
  auto& els = p.elements_;
  auto appendLiteral = [&](char16_t c) {
    if (els.empty() || els.back().kind != Kind::Literal)
      els.push_back({Kind::Literal, 0, false, {}});
    els.back().literal.push_back(static_cast<char>(c));
  };
  unsigned seen = 0;
  for (size_t i = 0; i < pattern.size();) {
    char16_t c = pattern[i];
    if (c == kQuote) {
      size_t close = pattern.find(kQuote, i + 1);
      if (close == ustring::npos || close == i + 1) return std::nullopt;
      for (size_t k = i + 1; k < close; ++k) {
        if (!isPlainSeparator(pattern[k])) return std::nullopt;
        appendLiteral(pattern[k]);
      }
      i = close + 1;
      continue;
    }
    if (!isAsciiLetter(c)) {
      if (!isPlainSeparator(c)) return std::nullopt;
      appendLiteral(c);
      ++i;
      continue;
    }
    size_t end = i;
    while (end < pattern.size() && pattern[end] == c) ++end;
    size_t count = end - i;
    Kind kind;
    switch (c) {
      case u'y':
        kind = Kind::Year;
        break;
      case u'M':
        kind = Kind::Month;
        break;
      case u'd':
        kind = Kind::Day;
        break;
      case u'H':
        kind = Kind::Hour;
        break;
      case u'm':
        kind = Kind::Minute;
        break;
      case u's':
        kind = Kind::Second;
        break;
      case u'S':
        kind = Kind::Fraction;
        break;
      default:
        return std::nullopt;
    }
    unsigned bit = 1u << static_cast<unsigned>(kind);
    if (seen & bit) return std::nullopt;
    seen |= bit;
    bool countOk = kind == Kind::Fraction ? count <= UINT8_MAX
                   : kind == Kind::Year   ? count == 1 || count == 2 || count == 4
                                          : count <= 2;
    if (!countOk) return std::nullopt;
    els.push_back({kind, static_cast<uint8_t>(count), false, {}});
    i = end;
  }
  if (seen == 0) return std::nullopt;
  // ICU trims nothing off a pattern; the text is trimmed, so blanks at either
  // end of the pattern could never match.
  if (els.front().kind == Kind::Literal && els.front().literal.front() == ' ') return std::nullopt;
  if (els.back().kind == Kind::Literal && els.back().literal.back() == ' ') return std::nullopt;

  for (size_t k = 0; k < els.size(); ++k) {
    Element& e = els[k];
    if (e.kind == Kind::Literal) continue;
    bool after = k > 0 && els[k - 1].kind != Kind::Literal;
    bool before = k + 1 < els.size() && els[k + 1].kind != Kind::Literal;
    e.fixed = after || before;
    bool longFraction = e.kind == Kind::Fraction && e.count > kMillisecondDigits;
    if (longFraction) {
      // The long fraction is read after the rest by a reader of its own:
      // ICU must read a field and a separator before it (a pattern that
      // starts with the run reads nothing), and nothing may follow.
      constexpr size_t kFieldAndSeparator = 2;
      if (e.fixed || k + 1 != els.size() || k < kFieldAndSeparator) return std::nullopt;
    } else if (e.fixed) {
      bool widthOk = e.kind == Kind::Year       ? e.count == 2 || e.count == 4
                     : e.kind == Kind::Fraction ? true
                                                : e.count == 2;
      if (!widthOk) return std::nullopt;
    } else if (k + 1 < els.size() && mayExtendNumber(els[k + 1].literal.front())) {
      return std::nullopt;
    }
  }
  return p;
}

template <class CharT>
bool NumericPattern::parse(const CharT* text, size_t length, DateValue& out) const {
  using Unit = std::make_unsigned_t<CharT>;
  size_t pos = 0;
  size_t end = length;
  while (pos < end && isAsciiBlank(static_cast<Unit>(text[pos]))) ++pos;
  while (end > pos && isAsciiBlank(static_cast<Unit>(text[end - 1]))) --end;

  int64_t year = defaults_.year;
  unsigned month = static_cast<unsigned>(defaults_.month) + 1;
  unsigned day = static_cast<unsigned>(defaults_.day);
  unsigned hour = 0, minute = 0, second = 0, millis = 0;
  bool longFraction = false;
  double fraction = 0;

  for (const Element& e : elements_) {
    if (e.kind == Kind::Literal) {
      if (end - pos < e.literal.size()) return false;
      for (char c : e.literal) {
        if (static_cast<Unit>(text[pos]) != static_cast<unsigned char>(c)) return false;
        ++pos;
      }
      continue;
    }
    size_t start = pos;
    uint64_t v = 0;
    size_t limit = e.fixed ? e.count : kLongFractionMaxDigits + 1;
    while (pos < end && pos - start < limit && isAsciiDigit(static_cast<Unit>(text[pos]))) {
      v = v * 10 + (static_cast<Unit>(text[pos]) - '0');
      ++pos;
    }
    size_t digits = pos - start;
    if (digits == 0 || (e.fixed && digits != e.count)) return false;
    switch (e.kind) {
      case Kind::Year: {
        if (!e.fixed && (e.count == 4 ? digits != 4 : digits != 2 && digits != 4)) return false;
        if (digits == 2 && e.count < 3) {
          int64_t century = defaults_.pivotYear / kYearsInCentury * kYearsInCentury;
          int64_t ambiguous = defaults_.pivotYear % kYearsInCentury;
          year = century + static_cast<int64_t>(v) +
                 (static_cast<int64_t>(v) < ambiguous ? kYearsInCentury : 0);
        } else {
          year = static_cast<int64_t>(v);
        }
        break;
      }
      case Kind::Fraction:
        if (e.count > kMillisecondDigits) {
          if (digits > kLongFractionMaxDigits) return false;
          longFraction = true;
          fraction = static_cast<double>(v) / kPowersOfTen[digits];
        } else {
          if (digits > kShortFractionMaxDigits) return false;
          // Left-justified to milliseconds, further digits cut off.
          for (size_t k = digits; k < kMillisecondDigits; ++k) v *= 10;
          for (size_t k = digits; k > kMillisecondDigits; --k) v /= 10;
          millis = static_cast<unsigned>(v);
        }
        break;
      default: {
        if (!e.fixed && (e.count == 1 ? digits > 2 : digits != 2)) return false;
        unsigned value = static_cast<unsigned>(v);
        if (e.kind == Kind::Month) month = value;
        if (e.kind == Kind::Day) day = value;
        if (e.kind == Kind::Hour) hour = value;
        if (e.kind == Kind::Minute) minute = value;
        if (e.kind == Kind::Second) second = value;
      }
    }
  }
  if (pos != end) return false;
  if (year < 1 || month < 1 || month > kMonthsInYear || day < 1 || day > daysInMonth(year, month) ||
      hour >= kHoursInDay || minute >= kMinutesInHour || second >= kSecondsInMinute) {
    return false;
  }
  double time = static_cast<double>(daysFromCivil(year, month, day)) * kMsPerDay +
                hour * kMsPerHour + minute * kMsPerMinute + second * kMsPerSecond + millis;
  out = longFraction ? addDoubleDouble({std::floor(time), 0}, fraction * kMsPerSecond)
                     : DateValue{time, 0};
  return true;
}

template bool NumericPattern::parse<char16_t>(const char16_t*, size_t, DateValue&) const;
template bool NumericPattern::parse<char>(const char*, size_t, DateValue&) const;

}  // namespace datetime

// The string readers' rules (sscanf's: numbers read by the C conversions in
// place) over UTF-16 units instead of the UTF-8 bytes of the same text.
//
// The string readers skip zero bytes and Unicode white space, copy a field
// of at most 64 bytes (integers) or 512 bytes (doubles) and convert it with
// strtoll, strtoull or ut_strtod. Only ASCII can be part of a number, and a
// unit of ASCII is one byte of UTF-8, so a field copied from the units up to
// the first unit that no number contains converts exactly as the bytes do,
// and takes as many units as the bytes took bytes.
//
// Each read costs the field copy and one conversion; nothing allocates or
// throws.
#pragma once

#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include "fileio/number_readers.h"
#include "number_functors.h"
#include "twhost/kx_data.h"
#include "twhost/stream_errors.h"
#include "twhost/text.h"

namespace Tarnwicks::FileIO {

class UnitNumbers {
 public:
  UnitNumbers(const char16_t* text, size_t n) : begin_(text), next_(text), end_(text + n) {}

  // Takes the separators ahead of a number; true when the text ends there.
  bool skipToNumber() {
    while (next_ < end_ && isSeparator(*next_)) ++next_;
    return next_ == end_;
  }
  // Takes white space, as a literal's white space does (zero units stay).
  void skipSpace() {
    while (next_ < end_ && isSpace(*next_)) ++next_;
  }

  // One number for functor F, after skipToNumber() found one. True with the
  // value, else false with the reader's code.
  template <class F>
  bool read(typename F::value_type& value, int& failure) {
    if constexpr (F::kReader == ReaderKind::Float) {
      return readFloat(value, failure);
    } else {
      return readInteger<F>(value, failure);
    }
  }

  size_t consumed() const { return static_cast<size_t>(next_ - begin_); }

 private:
  static constexpr size_t kIntegerField = 64;
  static constexpr size_t kDoubleField = 512;
  // Stands in the field for the first unit that no number contains.
  static constexpr char kNoNumber = '\x80';

  static bool isSpace(char16_t u) {
    if (u < 0x80) return u == u' ' || (u >= u'\t' && u <= u'\r');
    return twu_isspace(u);
  }
  static bool isSeparator(char16_t u) { return u == 0 || isSpace(u); }
  // What strtod, strtoll and strtoull can take: digits, letters (exponents,
  // hexadecimal, "inf", "nan"), signs, the point, and the "(...)" of a NaN.
  static bool mayBeInNumber(char16_t u) {
    return (u >= u'0' && u <= u'9') || ((u | 0x20) >= u'a' && (u | 0x20) <= u'z') || u == u'.' ||
           u == u'+' || u == u'-' || u == u'(' || u == u')' || u == u'_';
  }
  static bool isDigitOf(char16_t c, int base) {
    if (base == 16) return (c >= u'0' && c <= u'9') || ((c | 0x20) >= u'a' && (c | 0x20) <= u'f');
    return c >= u'0' && c < (base == 8 ? u'8' : u'0' + 10);
  }

  // The field: at most `limit` units up to the first that can't be in a
  // number, which is kept as kNoNumber; NUL-terminated.
  void copyField(size_t limit, char* field) const {
    size_t i = 0;
    for (const char16_t* p = next_; i < limit && p < end_; ++p) {
      if (!mayBeInNumber(*p)) {
        field[i++] = *p == 0 ? '\0' : kNoNumber;
        break;
      }
      field[i++] = static_cast<char>(*p);
    }
    field[i] = '\0';
  }

  static int baseOfText(const char* text) {
    if (*text == '-' || *text == '+') ++text;
    if (text[0] != '0') return 10;
    return (text[1] == 'x' || text[1] == 'X') ? 16 : 8;
  }
  static constexpr int baseOf(ReaderKind reader) {
    switch (reader) {
      case ReaderKind::AnyBase:
        return 0;
      case ReaderKind::Hex:
        return 16;
      case ReaderKind::Octal:
        return 8;
      default:
        return 10;
    }
  }

  template <class F>
  bool readInteger(typename F::value_type& value, int& failure) {
    constexpr int base = baseOf(F::kReader);
    char field[kIntegerField + 1];
    copyField(kIntegerField, field);
    const bool negative = field[0] == '-';
    char* stop = nullptr;
    errno = 0;
    uint64_t magnitude;
    if constexpr (F::kSigned) {
      auto v = static_cast<uint64_t>(std::strtoll(field, &stop, base));
      magnitude = negative ? 0 - v : v;
    } else {
      magnitude = std::strtoull(field, &stop, base);
      if (negative) magnitude = 0 - magnitude;
    }
    if (stop == field) {
      failure = code(StreamError::MatchingFailure);
      return false;
    }
    next_ += stop - field;
    // A number that filled the field is taken whole.
    if (static_cast<size_t>(stop - field) == kIntegerField) {
      const int digits = base != 0 ? base : baseOfText(field);
      while (next_ < end_ && isDigitOf(*next_, digits)) ++next_;
    }
    value = F::fromReader(magnitude, negative);
    return true;
  }

  template <class T>
  bool readFloat(T& value, int& failure) {
    char field[kDoubleField + 1];
    copyField(kDoubleField, field);
    char* stop = nullptr;
    double v = ut_strtod(field, &stop, utGetFpcContext());
    if (stop == field) {
      failure = code(StreamError::NoHelp);
      return false;
    }
    next_ += stop - field;
    value = static_cast<T>(v);
    return true;
  }

  const char16_t* begin_;
  const char16_t* next_;
  const char16_t* end_;
};

}  // namespace Tarnwicks::FileIO

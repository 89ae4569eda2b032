// The number grammar of textscan's numeric fields, as a lexer over a plain
// range of character units.
//
// It decides where a number ends and what its parts are; it converts
// nothing. One pass over the units of the field, no allocation, no throw,
// no virtual call: it is meant to sit in the inner loop of the reader.
// Instantiate it on char16_t for decoded text and on char for ASCII or
// UTF-8 bytes read as they are (a byte above 127 is never part of a number,
// so the byte form sees only ASCII exponent letters; see
// NumberSyntax::hasNonAsciiExponentLetters).
//
// The grammar, from the place where the number starts (the reader has
// already passed leading spaces, empty-field words and delimiters):
//
//   number     = word-part
//              | digit-part ["i" | "j"]
//              | digit-part sign unsigned-part ("i" | "j")
//   digit-part = [sign] digits ["." digits]  (at least one digit)  [exponent]
//   word-part  = [sign] ("NaN" | "Inf")      (either case)
//   exponent   = letter of ExpChars, [sign], digits  (no digit: not taken)
//   unsigned-part = digit-part or word-part without the sign
//
// A word in the first place ends the number, so "Infinity" is "Inf" and
// leaves "inity"; as the second part of a complex number it takes its unit
// ("1+Infi").
//
// A width caps the units of the part from its start (sign and word must
// fit whole; an exponent that does not fit is cut or dropped so that the
// field never ends in a bare letter or letter and sign). The second part of
// a complex number has a width of its own, counted from the real part's
// end. A precision cuts the digits after the point; what is cut is left for
// the next field.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace textscan {

// A peek past the end of the text gives this unit, and the same unit in the
// data ends the read there.
inline constexpr char16_t kEndOfText = 0xFFFF;

// ASCII upper case to lower case; every other unit as it is.
constexpr char16_t foldAsciiCase(char16_t c) noexcept {
  return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + (u'a' - u'A')) : c;
}

// What a numeric field may hold: the exponent letters ("ExpChars") and the
// format item's width and precision. Made once per format item.
class NumberSyntax {
 public:
  static constexpr size_t kUnlimited = SIZE_MAX;

  // `width` and `precision` as the format item has them: -1 for none.
  explicit NumberSyntax(std::u16string_view expChars, int32_t width = -1, int32_t precision = -1)
      : width_(width < 0 ? kUnlimited : static_cast<size_t>(width)),
        precision_(precision < 0 ? kUnlimited : static_cast<size_t>(precision)) {
    for (char16_t c : expChars) {
      if (c < kAsciiLimit) {
        ascii_[c >> 6] |= uint64_t{1} << (c & 63);
      } else {
        otherLetters_.push_back(c);
      }
    }
  }

  bool isExponentLetter(char16_t c) const noexcept {
    if (c < kAsciiLimit) return (ascii_[c >> 6] >> (c & 63)) & 1;
    return otherLetters_.find(c) != std::u16string::npos;
  }
  bool hasWidth() const noexcept { return width_ != kUnlimited; }
  // kUnlimited without a width.
  size_t width() const noexcept { return width_; }
  bool hasPrecision() const noexcept { return precision_ != kUnlimited; }
  size_t precision() const noexcept { return precision_; }
  // An exponent letter beyond ASCII: the byte form of the lexer cannot see
  // it, and a reader must lex decoded text instead.
  bool hasNonAsciiExponentLetters() const noexcept { return !otherLetters_.empty(); }

 private:
  static constexpr char16_t kAsciiLimit = 128;
  uint64_t ascii_[2] = {0, 0};
  std::u16string otherLetters_;
  size_t width_;
  size_t precision_;
};

enum class NumberWord : uint8_t { None, Inf, NaN };

// One real number inside a field. Offsets count units from the field's
// start; an empty range has begin == end.
struct NumberPart {
  size_t begin = 0;  // the sign, or the first unit when there is none
  size_t end = 0;    // one past the last unit
  bool negative = false;
  NumberWord word = NumberWord::None;  // Inf or NaN: no digits follow
  size_t integerBegin = 0;             // digits before the point
  size_t integerEnd = 0;
  size_t fractionBegin = 0;  // digits after the point; empty when none
  size_t fractionEnd = 0;
  size_t exponentBegin = 0;  // the letter, its sign and digits; empty when none
  size_t exponentEnd = 0;
};

enum class NumberForm : uint8_t {
  None,       // no number here
  Real,       // `real`
  Imaginary,  // `imaginary`, then the unit letter: "3i"
  Complex,    // `real`, then `imaginary` from its sign, then the letter: "1-2j"
};

struct LexedNumber {
  NumberForm form = NumberForm::None;
  size_t length = 0;  // units of the field; 0 for None
  NumberPart real;
  NumberPart imaginary;
  size_t unitAt = 0;  // offset of the "i" or "j" of the imaginary forms
  // The lexer looked at the unit at `last`, which it took as the end of the
  // text. A reader whose text goes on beyond `last` (a file not yet decoded
  // that far) must make more available and lex again.
  bool reachedEnd = false;
};

namespace lexer_detail {

// Reads units as char16_t: bytes above 127 stay above 127 and match
// nothing but the test for their own value.
template <class CharT>
struct Units {
  static_assert(sizeof(CharT) == 1 || sizeof(CharT) == 2, "bytes or UTF-16 units");
  const CharT* text;
  size_t size;
  bool reachedEnd = false;

  char16_t at(size_t i) noexcept {
    if (i < size) return static_cast<char16_t>(static_cast<std::make_unsigned_t<CharT>>(text[i]));
    reachedEnd = true;
    return kEndOfText;
  }
};

constexpr bool isDigit(char16_t c) noexcept {
  return c >= u'0' && c <= u'9';
}
constexpr bool isSign(char16_t c) noexcept {
  return c == u'+' || c == u'-';
}
constexpr bool isImaginaryUnit(char16_t c) noexcept {
  return c == u'i' || c == u'j';
}

template <class CharT>
bool isExponentLetter(const NumberSyntax& syntax, char16_t c) noexcept {
  // In the byte form a unit above 127 is a piece of a UTF-8 sequence.
  if constexpr (sizeof(CharT) == 1) {
    if (c >= 128) return false;
  }
  return syntax.isExponentLetter(c);
}

// True when the three units at `at` spell `word` (lower case), folding case.
template <class CharT>
bool matchesWord(Units<CharT>& u, size_t at, const char16_t* word) noexcept {
  for (size_t k = 0; k < 3; ++k) {
    if (foldAsciiCase(u.at(at + k)) != word[k]) return false;
  }
  return true;
}

inline size_t limitFrom(size_t start, size_t width) noexcept {
  return width == NumberSyntax::kUnlimited || width > SIZE_MAX - start ? SIZE_MAX : start + width;
}

// Lexes one part at `start`, within [start, limit). Fills `part` and
// returns true when there is a number.
template <class CharT>
bool lexPart(Units<CharT>& u, size_t start, size_t limit, const NumberSyntax& syntax,
             bool allowSign, NumberPart& part) noexcept {
  part = NumberPart{};
  part.begin = start;
  size_t i = start;
  char16_t c = i < limit ? u.at(i) : kEndOfText;
  if (allowSign && isSign(c)) {
    part.negative = c == u'-';
    c = ++i < limit ? u.at(i) : kEndOfText;
  }
  const size_t afterSign = i;
  part.integerBegin = i;
  while (isDigit(c)) c = ++i < limit ? u.at(i) : kEndOfText;
  part.integerEnd = i;
  part.fractionBegin = part.fractionEnd = i;
  if (c == u'.') {
    c = ++i < limit ? u.at(i) : kEndOfText;
    part.fractionBegin = i;
    size_t keep = limitFrom(i, syntax.precision());
    while (i < keep && isDigit(c)) c = ++i < limit ? u.at(i) : kEndOfText;
    part.fractionEnd = i;
  }
  size_t end = i;

  if (part.integerEnd == part.integerBegin && part.fractionEnd == part.fractionBegin) {
    // No digit: the only numbers left are the two words, which must fit.
    static constexpr char16_t kNaN[] = u"nan";
    static constexpr char16_t kInf[] = u"inf";
    if (afterSign + 3 > limit) return false;
    if (matchesWord(u, afterSign, kNaN)) {
      part.word = NumberWord::NaN;
    } else if (matchesWord(u, afterSign, kInf)) {
      part.word = NumberWord::Inf;
    } else {
      return false;
    }
    part.integerBegin = part.integerEnd = part.fractionBegin = part.fractionEnd = afterSign;
    part.end = part.exponentBegin = part.exponentEnd = afterSign + 3;
    return true;
  }

  part.exponentBegin = part.exponentEnd = end;
  if (end < limit && isExponentLetter<CharT>(syntax, u.at(end))) {
    size_t k = end + 1;
    if (isSign(u.at(k))) ++k;
    size_t digitsBegin = k;
    // Past the limit only the fact that the exponent overruns it matters.
    while (k <= limit && isDigit(u.at(k))) ++k;
    if (k > digitsBegin) {
      if (k <= limit) {
        end = k;
      } else {
        // A cut may not leave a bare letter, or a letter and its sign.
        size_t room = limit - end;
        bool dropped = room == 1 || (room == 2 && isSign(u.at(limit - 1)));
        if (!dropped) end = limit;
      }
      part.exponentEnd = end;
    }
  }
  part.end = end;
  return true;
}

}  // namespace lexer_detail

// Lexes the number at `first`, seeing [first, last) as the whole text. Cost:
// one look at each unit of the field and at most a few units past it.
template <class CharT>
LexedNumber lexNumber(const CharT* first, const CharT* last, const NumberSyntax& syntax) noexcept {
  using namespace lexer_detail;
  Units<CharT> u{first, static_cast<size_t>(last - first)};
  LexedNumber result;
  if (!lexPart(u, 0, limitFrom(0, syntax.width()), syntax, true, result.real)) {
    result.reachedEnd = u.reachedEnd;
    return result;
  }
  size_t end = result.real.end;
  char16_t next = result.real.word == NumberWord::None ? u.at(end) : kEndOfText;
  if (isImaginaryUnit(next)) {
    result.form = NumberForm::Imaginary;
    result.imaginary = result.real;
    result.real = NumberPart{};
    result.unitAt = end;
    result.length = end + 1;
  } else if (isSign(next) &&
             lexPart(u, end + 1, limitFrom(end, syntax.width()), syntax, false, result.imaginary) &&
             isImaginaryUnit(u.at(result.imaginary.end))) {
    result.form = NumberForm::Complex;
    result.imaginary.begin = end;
    result.imaginary.negative = next == u'-';
    result.unitAt = result.imaginary.end;
    result.length = result.unitAt + 1;
  } else {
    // A sign that opens no imaginary part belongs to the next field.
    result.form = NumberForm::Real;
    result.imaginary = NumberPart{};
    result.length = end;
  }
  result.reachedEnd = u.reachedEnd;
  return result;
}

template <class CharT>
LexedNumber lexNumber(std::basic_string_view<CharT> text, const NumberSyntax& syntax) noexcept {
  return lexNumber(text.data(), text.data() + text.size(), syntax);
}

// Whether a number can open at `first`: an optional sign, then a digit, a
// point and a digit, or the start of "Inf" or "NaN" in either case. Looks at
// four units at most.
template <class CharT>
bool looksLikeNumber(const CharT* first, const CharT* last) noexcept {
  using namespace lexer_detail;
  Units<CharT> u{first, static_cast<size_t>(last - first)};
  size_t i = isSign(u.at(0)) ? 1 : 0;
  char16_t c = u.at(i);
  if (isDigit(c)) return true;
  if (c == u'.') return isDigit(u.at(i + 1));
  char16_t folded = foldAsciiCase(c);
  if (folded == u'i')
    return foldAsciiCase(u.at(i + 1)) == u'n' && foldAsciiCase(u.at(i + 2)) == u'f';
  if (folded == u'n')
    return foldAsciiCase(u.at(i + 1)) == u'a' && foldAsciiCase(u.at(i + 2)) == u'n';
  return false;
}

}  // namespace textscan

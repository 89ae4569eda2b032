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

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
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
      if (c == kEndOfText) continue;  // it ends the text, and can open nothing
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
// start; an empty range has begin == end. Its pieces follow one another:
// sign, integer digits, point, fraction digits, exponent (letter, sign,
// digits); a word stands alone after the sign.
struct NumberPart {
  size_t begin = 0;        // the sign, or the first unit when there is none
  size_t integerEnd = 0;   // end of the digits before the point
  size_t fractionEnd = 0;  // end of the digits after the point
  size_t end = 0;          // one past the last unit
  bool negative = false;
  bool hasSign = false;
  bool hasPoint = false;
  NumberWord word = NumberWord::None;  // Inf or NaN: no digits, no exponent

  size_t integerBegin() const noexcept { return begin + hasSign; }
  size_t fractionBegin() const noexcept { return integerEnd + hasPoint; }
  size_t exponentBegin() const noexcept { return word == NumberWord::None ? fractionEnd : end; }
  size_t exponentEnd() const noexcept { return end; }
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

constexpr bool isDigit(char16_t c) noexcept {
  return static_cast<char16_t>(c - u'0') < 10;
}
constexpr bool isSign(char16_t c) noexcept {
  return c == u'+' || c == u'-';
}
constexpr bool isImaginaryUnit(char16_t c) noexcept {
  return c == u'i' || c == u'j';
}

// The text as char16_t units (bytes above 127 stay above 127 and match
// nothing), with a record of whether any look went past its end.
template <class CharT>
struct Units {
  static_assert(sizeof(CharT) == 1 || sizeof(CharT) == 2, "bytes or UTF-16 units");
  const CharT* text;
  size_t size;
  bool reachedEnd = false;

  static char16_t unit(CharT c) noexcept {
    return static_cast<char16_t>(static_cast<std::make_unsigned_t<CharT>>(c));
  }
  char16_t at(size_t i) noexcept {
    if (i < size) return unit(text[i]);
    reachedEnd = true;
    return kEndOfText;
  }
  // The end of the run of digits from `i`, looking no further than `bound`.
  // The inner loop of every number: eight bytes (four units) at a time
  // while the run lasts, then one unit at a time.
  size_t skipDigits(size_t i, size_t bound) noexcept {
    size_t stop = bound < size ? bound : size;
    if constexpr (std::endian::native == std::endian::little) {
      constexpr size_t kPerWord = sizeof(uint64_t) / sizeof(CharT);
      while (i + kPerWord <= stop) {
        uint64_t word;
        std::memcpy(&word, text + i, sizeof word);
        uint64_t others = nonDigitUnits(word);
        if (others != 0) return i + std::countr_zero(others) / (8 * sizeof(CharT));
        i += kPerWord;
      }
    }
    while (i < stop && isDigit(unit(text[i]))) ++i;
    if (i == size && size < bound) reachedEnd = true;  // the run may go on
    return i;
  }

  // Each unit of a little-endian word that is no ASCII digit, as non-zero
  // bits in its place: the high part must be that of "0", and the low
  // nibble plus 6 must not carry into the next nibble.
  static uint64_t nonDigitUnits(uint64_t word) noexcept {
    constexpr uint64_t kOnes = sizeof(CharT) == 1 ? 0x0101010101010101ull : 0x0001000100010001ull;
    constexpr uint64_t kHigh = (sizeof(CharT) == 1 ? 0xF0 : 0xFFF0) * kOnes;
    constexpr uint64_t kLow = 0x0F * kOnes;
    return ((word & kHigh) ^ (u'0' * kOnes)) | (((word & kLow) + 6 * kOnes) & (0xF0 * kOnes));
  }
};

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
  return width > SIZE_MAX - start ? SIZE_MAX : start + width;
}

// Lexes one part at `start`, within [start, limit). Fills `part` and
// returns true when there is a number.
template <class CharT>
bool lexPart(Units<CharT>& u, size_t start, size_t limit, const NumberSyntax& syntax,
             bool allowSign, NumberPart& part) noexcept {
  part = NumberPart{};
  part.begin = start;
  size_t i = start;
  if (allowSign && i < limit) {
    char16_t c = u.at(i);
    if (isSign(c)) {
      part.hasSign = true;
      part.negative = c == u'-';
      ++i;
    }
  }
  const size_t afterSign = i;
  i = u.skipDigits(i, limit);
  part.integerEnd = i;
  if (i < limit && u.at(i) == u'.') {
    part.hasPoint = true;
    ++i;
    size_t keep = limitFrom(i, syntax.precision());
    i = u.skipDigits(i, keep < limit ? keep : limit);
  }
  part.fractionEnd = i;
  size_t end = i;

  if (part.integerEnd == afterSign && part.fractionEnd == part.fractionBegin()) {
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
    part.hasPoint = false;
    part.integerEnd = part.fractionEnd = afterSign;
    part.end = afterSign + 3;
    return true;
  }

  if (end < limit && isExponentLetter<CharT>(syntax, u.at(end))) {
    size_t k = end + 1;
    if (isSign(u.at(k))) ++k;
    // Past the limit only the fact that the exponent overruns it matters.
    size_t digitsEnd = u.skipDigits(k, limitFrom(limit, 1));
    if (digitsEnd > k) {
      if (digitsEnd <= limit) {
        end = digitsEnd;
      } else {
        // A cut may not leave a bare letter, or a letter and its sign.
        size_t room = limit - end;
        bool dropped = room == 1 || (room == 2 && isSign(u.at(limit - 1)));
        if (!dropped) end = limit;
      }
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
    result.imaginary.begin = end;  // its sign is the one that joins the parts
    result.imaginary.hasSign = true;
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

// FieldText's decoding, the quote rule, and the table of column makers that
// other areas fill at start-up.
#include <array>
#include <string>

#include "textscan/column.h"
#include "twhost/errors.h"

namespace textscan {

namespace {

constexpr char16_t kReplacement = 0xFFFD;
// What the file decoder makes of a character beyond the 16-bit range.
constexpr char16_t kSubstitute = 26;

// The bounds of the second byte of a well-formed sequence, by lead byte;
// every later byte is 0x80..0xBF. A lead outside these is no lead at all.
struct LeadRule {
  uint8_t length;
  uint8_t secondLow;
  uint8_t secondHigh;
};

constexpr LeadRule leadRule(uint8_t b) {
  if (b >= 0xC2 && b <= 0xDF) return {2, 0x80, 0xBF};
  if (b == 0xE0) return {3, 0xA0, 0xBF};
  if (b == 0xED) return {3, 0x80, 0x9F};  // no surrogates
  if (b >= 0xE1 && b <= 0xEF) return {3, 0x80, 0xBF};
  if (b == 0xF0) return {4, 0x90, 0xBF};
  if (b >= 0xF1 && b <= 0xF3) return {4, 0x80, 0xBF};
  if (b == 0xF4) return {4, 0x80, 0x8F};  // nothing past U+10FFFF
  return {0, 0, 0};
}

}  // namespace

// A malformed sequence is replaced by one U+FFFD for its longest valid
// prefix (at least one byte), which is the rule the file decoder follows.
void FieldText::appendTo(ustring& out) const {
  if (wide_) {
    out.append(wide_, length_);
    return;
  }
  const auto* p = reinterpret_cast<const uint8_t*>(narrow_);
  size_t i = 0;
  while (i < length_) {
    uint8_t b = p[i];
    if (b < 0x80) {
      out.push_back(b);
      ++i;
      continue;
    }
    LeadRule rule = leadRule(b);
    if (rule.length == 0) {
      out.push_back(kReplacement);
      ++i;
      continue;
    }
    uint32_t code = b & (0xFF >> (rule.length + 1));
    size_t k = 1;
    for (; k < rule.length && i + k < length_; ++k) {
      uint8_t t = p[i + k];
      uint8_t low = k == 1 ? rule.secondLow : 0x80;
      uint8_t high = k == 1 ? rule.secondHigh : 0xBF;
      if (t < low || t > high) break;
      code = (code << 6) | (t & 0x3F);
    }
    if (k < rule.length) {
      out.push_back(kReplacement);
    } else {
      out.push_back(code > 0xFFFF ? kSubstitute : static_cast<char16_t>(code));
    }
    i += k;
  }
}

size_t stripQuotes(char16_t quote, const char16_t* first, const char16_t* last, char16_t* out) {
  size_t written = 0;
  bool closed = false;
  const char16_t* p = first + 1;
  while (p < last) {
    char16_t c = *p;
    if (!closed && c == quote) {
      if (p + 1 >= last) break;  // the closing quote ends the text
      out[written++] = p[1];
      closed = p[1] != quote;
      p += 2;
    } else {
      out[written++] = c;
      ++p;
    }
  }
  return written;
}

namespace {

std::array<TextColumnMaker, NoField>& textColumnMakers() {
  static std::array<TextColumnMaker, NoField> makers{};
  return makers;
}

}  // namespace

void setTextColumnMaker(SpecifierType kind, TextColumnMaker maker) {
  if (kind == CategoricalField || kind == DatetimeField) textColumnMakers()[kind] = maker;
}

// Used by the read: the maker installed for `kind`, or the error that names
// the conversion still missing from this build.
TextColumnMaker requireTextColumnMaker(SpecifierType kind) {
  if (TextColumnMaker maker = textColumnMakers()[kind]) return maker;
  const char* name = kind == DatetimeField ? "textscan's %D conversion (dates)"
                                           : "textscan's %C conversion (categories)";
  kxThrowId("KORVAN:FileIO", "NotBuiltYet", std::string(name));
}

}  // namespace textscan

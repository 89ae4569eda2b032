// FieldText's decoding, the quote rule, and the table of column makers that
// other areas fill at start-up.
#include <array>
#include <string>

#include "textscan/column.h"
#include "twhost/errors.h"
#include "utf8_units.h"

namespace textscan {

// A malformed sequence is replaced by one U+FFFD for its longest valid
// prefix (at least one byte), which is the rule the file decoder follows.
void FieldText::appendTo(ustring& out) const {
  if (wide_) {
    out.append(wide_, length_);
    return;
  }
  size_t at = out.size();
  out.resize(at + length_);
  out.resize(at + decodeUtf8Units(narrow_, length_, out.data() + at));
}

namespace {

template <class CharT>
size_t stripQuotesOf(char16_t quote, const CharT* first, const CharT* last, char16_t* out) {
  size_t written = 0;
  bool closed = false;
  const CharT* p = first + 1;
  while (p < last) {
    auto c = static_cast<char16_t>(*p);
    if (!closed && c == quote) {
      if (p + 1 >= last) break;  // the closing quote ends the text
      auto next = static_cast<char16_t>(p[1]);
      out[written++] = next;
      closed = next != quote;
      p += 2;
    } else {
      out[written++] = c;
      ++p;
    }
  }
  return written;
}

}  // namespace

size_t stripQuotes(char16_t quote, const char16_t* first, const char16_t* last, char16_t* out) {
  return stripQuotesOf(quote, first, last, out);
}

size_t stripQuotes(char16_t quote, const char* first, const char* last, char16_t* out) {
  return stripQuotesOf(quote, first, last, out);
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

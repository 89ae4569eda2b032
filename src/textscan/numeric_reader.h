// The reader of numeric fields: an empty field at a delimiter, leading
// spaces, the "TreatAsEmpty" words, then the number lexer. It hands the
// lexed number on with the field, so that the column converts it without
// looking at the text again.
#pragma once

#include <string>
#include <vector>

#include "field_readers.h"
#include "textscan/number_lexer.h"

namespace textscan {

// "TreatAsEmpty", longest first, with the first units for a quick test.
struct EmptyWords {
  std::vector<ustring> words;
  UnitSet firstUnits;

  explicit EmptyWords(const std::vector<ustring>& list = {}) : words(list) {
    std::stable_sort(words.begin(), words.end(),
                     [](const ustring& a, const ustring& b) { return a.size() > b.size(); });
    for (const ustring& w : words) {
      if (!w.empty()) firstUnits.add(w[0]);
    }
  }
  bool empty() const { return words.empty(); }
};

struct NumericField {
  FieldResult field;
  LexedNumber number;  // form None: an empty field
};

// Lexes at `start` units from the place, making more of a file's text
// available while the lexer reaches the end of what is there.
template <class S>
LexedNumber lexAt(S& s, size_t start, const NumberSyntax& syntax) {
  constexpr size_t kFirstLook = 64;
  for (size_t want = kFirstLook;; want *= 2) {
    s.available(start + want);
    size_t n = s.buffered();
    const auto* p = s.data() + s.head();
    LexedNumber number = lexNumber(p + start, p + std::max(n, start), syntax);
    if (!number.reachedEnd || n < start + want) return number;
  }
}

template <class S>
bool looksLikeNumberAt(S& s, size_t at) {
  s.available(at + 4);
  size_t n = s.buffered();
  const auto* p = s.data() + s.head();
  return looksLikeNumber(p + at, p + std::max(n, at));
}

template <class S>
NumericField readNumber(const ItemReader& r, S& s, const ReadContext& ctx,
                        const EmptyWords& words) {
  if (ctx.matchDelimiter(s) > 0) return {};
  size_t start = 0;
  while (s.peek(start) == u' ') ++start;

  if (!words.empty() && words.firstUnits.contains(s.peek(start))) {
    for (const ustring& w : words.words) {
      if (!ReadContext::matchesAt(s, start, w)) continue;
      // A one-unit word that could open a number yields to the number.
      if (w.size() == 1 && kNumberOpeners.find(w[0]) != std::u16string_view::npos &&
          looksLikeNumberAt(s, start)) {
        continue;
      }
      s.advance(start + w.size());
      return {};
    }
  }

  NumericField out;
  out.number = lexAt(s, start, r.syntax);
  s.advance(start);
  if (out.number.form != NumberForm::None) {
    out.field.length = out.number.length;
    return out;
  }
  // No number here: fine at a line end or the end of the input, unless a
  // delimiter stands there; a width of 0 reads nothing and never fails.
  if (r.hasWidth && r.width == 0) return out;
  char16_t c = s.peek();
  if (c != kEndOfText && !ctx.isLineEndChar(c))
    out.field.ok = false;
  else if (ctx.matchDelimiter(s) > 0)
    out.field.ok = false;
  return out;
}

}  // namespace textscan

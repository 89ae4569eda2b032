// Backslash escapes in option values, and their rendering back.
#include <utility>

#include "arguments.h"
#include "textscan/options.h"

namespace textscan {

namespace {

// Each escape letter with the character it stands for.
constexpr std::pair<char16_t, char16_t> kEscapes[] = {
    {u'\\', u'\\'}, {u'b', u'\b'}, {u'n', u'\n'}, {u'r', u'\r'}, {u't', u'\t'},
};

// The character an escape letter stands for, or 0 when it stands for none.
char16_t escapedCharacter(char16_t letter) {
  for (const auto& [l, c] : kEscapes) {
    if (l == letter) return c;
  }
  return 0;
}

// The escape letter that shows a character, or 0 when it is shown as is.
char16_t escapeLetter(char16_t character) {
  for (const auto& [l, c] : kEscapes) {
    if (c == character) return l;
  }
  return 0;
}

}  // namespace

ustring expandEscapeText(ustring text, const ustring& label) {
  size_t at = text.find(u'\\');
  if (at == ustring::npos) return text;
  // One pass, writing behind the reading place: the text only shrinks.
  size_t out = at;
  while (at < text.size()) {
    char16_t c = text[at];
    if (c == u'\\' && at + 1 < text.size()) {
      c = escapedCharacter(text[at + 1]);
      if (c == 0) raise("IncorrectEscapeConstant", label);
      ++at;  // past the pair, so a doubled backslash before "n" is a backslash and an n
    }
    text[out++] = c;
    ++at;
  }
  text.resize(out);
  return text;
}

ustring expandEscapes(const kxArray* value, const ustring& label) {
  return expandEscapeText(matrix::get_ustring(value), label);
}

ustring renderEscapeText(std::u16string_view text) {
  ustring shown;
  shown.reserve(text.size());
  for (char16_t c : text) {
    if (char16_t letter = escapeLetter(c)) {
      shown.push_back(u'\\');
      shown.push_back(letter);
    } else {
      shown.push_back(c);
    }
  }
  return shown;
}

kxArray* renderEscapes(const ustring& text) {
  ustring shown = renderEscapeText(text);
  return kxCreateStringFromNChars_UTF16(shown.data(), shown.size());
}

}  // namespace textscan

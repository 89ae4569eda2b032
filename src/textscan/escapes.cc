// Backslash escapes in option values, and their rendering back.
#include "arguments.h"
#include "textscan/options.h"

namespace textscan {

namespace {

// The character an escape letter stands for, or 0 when it stands for none.
char16_t escapedCharacter(char16_t letter) {
  switch (letter) {
    case u'\\':
      return u'\\';
    case u'b':
      return u'\b';
    case u'n':
      return u'\n';
    case u'r':
      return u'\r';
    case u't':
      return u'\t';
    default:
      return 0;
  }
}

// The escape letter that shows a character, or 0 when it is shown as is.
char16_t escapeLetter(char16_t c) {
  switch (c) {
    case u'\n':
      return u'n';
    case u'\r':
      return u'r';
    case u'\\':
      return u'\\';
    case u'\b':
      return u'b';
    case u'\t':
      return u't';
    default:
      return 0;
  }
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

// UTF-8 and UTF-16, the default character set, and the character tests.
#include "twhost/text.h"

#include <cstring>

#include "twhost/kx_array.h"

namespace {

void appendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

// Decodes one code point at s[i]; advances i. Malformed input gives U+FFFD
// and consumes one byte, so decoding always makes progress.
char32_t decodeUtf8(const std::string& s, size_t& i) {
  auto b = [&](size_t k) { return static_cast<unsigned char>(s[k]); };
  unsigned char c = b(i);
  if (c < 0x80) {
    ++i;
    return c;
  }
  int len = c >= 0xF0 && c < 0xF5 ? 4 : c >= 0xE0 ? 3 : c >= 0xC2 && c < 0xE0 ? 2 : 0;
  if (len == 0 || i + len > s.size()) {
    ++i;
    return 0xFFFD;
  }
  char32_t cp = c & (0x7F >> len);
  for (int k = 1; k < len; ++k) {
    if ((b(i + k) & 0xC0) != 0x80) {
      ++i;
      return 0xFFFD;
    }
    cp = (cp << 6) | (b(i + k) & 0x3F);
  }
  bool overlong = (len == 3 && cp < 0x800) || (len == 4 && cp < 0x10000);
  if (overlong || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
    ++i;
    return 0xFFFD;
  }
  i += len;
  return cp;
}

}  // namespace

const char* svGetDefaultCharacterSet() {
  return "UTF-8";
}

std::string utGetLocaleName() {
  return "en_US";
}

namespace fl::i18n {

ustring to_ustring(const std::string& utf8) {
  ustring out;
  out.reserve(utf8.size());
  for (size_t i = 0; i < utf8.size();) {
    char32_t cp = decodeUtf8(utf8, i);
    if (cp >= 0x10000) {
      cp -= 0x10000;
      out += static_cast<char16_t>(0xD800 + (cp >> 10));
      out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
    } else {
      out += static_cast<char16_t>(cp);
    }
  }
  return out;
}

std::string to_string(const ustring& text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      ++i;
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      c = '?';
    }
    appendUtf8(out, c);
  }
  return out;
}

ustring ascii_to_ustring(const char* ascii) {
  ustring out;
  for (; *ascii; ++ascii) out += static_cast<char16_t>(static_cast<unsigned char>(*ascii));
  return out;
}

}  // namespace fl::i18n

kxArray* kxCreateString(const char* utf8) {
  if (!*utf8) return kxCreateCharMatrix(0, 0);
  ustring u = fl::i18n::to_ustring(utf8);
  return kxCreateStringFromNChars_UTF16(u.data(), u.size());
}

std::string kxArrayToUTF8StdString(const kxArray* a) {
  return fl::i18n::to_string(kxArrayToUString(a));
}

size_t utf16_strlen(const char16_t* s) {
  size_t n = 0;
  while (s[n]) ++n;
  return n;
}

bool twu_isspace(char16_t c) {
  return c == ' ' || (c >= 0x09 && c <= 0x0D) || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

bool twu_isdigit(char16_t c) {
  return c >= '0' && c <= '9';
}

bool twu_isxdigit(char16_t c) {
  return twu_isdigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool twu_isbreakablespace(char16_t c) {
  return c == ' ' || c == '\t' || c == 0x1680 || (c >= 0x2000 && c <= 0x200A && c != 0x2007) ||
         c == 0x205F || c == 0x3000;
}

char16_t twu_tolower(char16_t c) {
  if (c >= 'A' && c <= 'Z') return c + ('a' - 'A');
  if ((c >= 0xC0 && c <= 0xDE) && c != 0xD7) return c + 0x20;
  return c;
}

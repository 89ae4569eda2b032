// Text helpers of the host: the default character set, the locale, UTF-8 and
// UTF-16 conversions and the character tests.
#pragma once

#include <cstddef>
#include <string>

#include "twhost/export.h"
#include "twhost/kx_array.h"

// The default character set of file text: "UTF-8".
TW_HOST const char* svGetDefaultCharacterSet();
// The host's locale name ("en_US"), used by date parsing.
TW_HOST std::string utGetLocaleName();

namespace fl::i18n {
// UTF-8 <-> UTF-16. Invalid bytes become U+FFFD; lone surrogates become "?".
TW_HOST ustring to_ustring(const std::string& utf8);
TW_HOST std::string to_string(const ustring& text);
TW_HOST ustring ascii_to_ustring(const char* ascii);
}  // namespace fl::i18n

TW_HOST size_t utf16_strlen(const char16_t* s);
TW_HOST bool twu_isspace(char16_t c);
TW_HOST bool twu_isdigit(char16_t c);
TW_HOST bool twu_isxdigit(char16_t c);
// Spaces that break a line: blank, tab, and the Unicode space separators
// except the no-break ones.
TW_HOST bool twu_isbreakablespace(char16_t c);
TW_HOST char16_t twu_tolower(char16_t c);

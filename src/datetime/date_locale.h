// Locales for reading dates: the "DateLocale" value a user gives, and the
// default when there is none.
#pragma once

#include <string>

#include "twhost/kx_array.h"

namespace datetime {

// Settles a "DateLocale" value. A value that is not a character row throws
// "KORVAN:datetime:InvalidLocale". Otherwise `name` becomes ICU's name of
// the locale and the result is true; a text that names no locale ICU has
// data for gives false, with `name` the classic locale's. Names in the C
// library's form ("de_DE.UTF-8") and with "-" for "_" are accepted.
bool validateDateLocale(const kxArray* array, std::string& name);

// ICU's name of the locale a "DateLocale" value names; a value that names
// none throws "KORVAN:datetime:InvalidLocaleString" with its text.
std::string requireDateLocale(const kxArray* array);

// The same test on a text.
bool canonicalDateLocale(const std::string& text, std::string& name);

// The locale whose date words are read when none is given: the host's
// catalogue entry "KORVAN:datetime:localizedStrings:Locale".
std::string defaultDateLocaleName();

}  // namespace datetime

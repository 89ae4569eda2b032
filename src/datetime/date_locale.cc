#include "date_locale.h"

#include <unicode/locid.h>

#include <algorithm>
#include <set>

#include "twhost/catalog.h"
#include "twhost/errors.h"

namespace datetime {

namespace {

constexpr const char* kClassicLocale = "en_US_POSIX";

// The languages ICU has locale data for, gathered once.
const std::set<std::string>& knownLanguages() {
  static const std::set<std::string> languages = [] {
    std::set<std::string> out;
    int32_t count = 0;
    const icu::Locale* all = icu::Locale::getAvailableLocales(count);
    for (int32_t i = 0; i < count; ++i) out.insert(all[i].getLanguage());
    return out;
  }();
  return languages;
}

bool isKnownCountry(const char* country) {
  for (const char* const* c = icu::Locale::getISOCountries(); *c; ++c) {
    if (std::string(*c) == country) return true;
  }
  return false;
}

}  // namespace

bool canonicalDateLocale(const std::string& text, std::string& name) {
  name = kClassicLocale;
  // "de_DE.UTF-8@euro": the encoding and modifier of the C library's form
  // say nothing about dates.
  std::string base = text.substr(0, text.find_first_of(".@"));
  std::replace(base.begin(), base.end(), '-', '_');
  if (base.empty() ||
      base.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_") !=
          std::string::npos) {
    return false;
  }
  icu::Locale locale = icu::Locale::createCanonical(base.c_str());
  if (locale.isBogus() || !knownLanguages().count(locale.getLanguage())) return false;
  if (locale.getCountry()[0] != '\0' && !isKnownCountry(locale.getCountry())) return false;
  name = locale.getName();
  return true;
}

bool validateDateLocale(const kxArray* array, std::string& name) {
  if (!array || !kxIsChar(array) || kxGetNumberOfDimensions(array) != 2 || kxGetM(array) != 1) {
    kxThrowId("KORVAN:datetime", "InvalidLocale");
  }
  return canonicalDateLocale(kxArrayToStdString(array), name);
}

std::string requireDateLocale(const kxArray* array) {
  std::string name;
  if (!validateDateLocale(array, name)) {
    kxThrowId("KORVAN:datetime", "InvalidLocaleString", kxArrayToUString(array));
  }
  return name;
}

std::string defaultDateLocaleName() {
  return kxMessageText(kxMsg("KORVAN:datetime:localizedStrings", "Locale"));
}

}  // namespace datetime

#include "locale_formats.h"

#include <string>

#include "icu_check.h"

namespace datetime {

namespace {

struct LocaleFormats {
  std::string name;
  std::unique_ptr<icu::DateFormatSymbols> symbols;
  std::unique_ptr<icu::TimeZoneFormat> zoneFormat;
};

// The entry for the locale, made anew when another locale is asked for.
// The new entry is complete before it replaces the old one, so a failure
// leaves the old one as it was.
const LocaleFormats& formatsFor(const icu::Locale& locale) {
  static LocaleFormats* const cached = new LocaleFormats();
  if (cached->symbols && cached->name == locale.getName()) return *cached;
  LocaleFormats fresh;
  UErrorCode status = U_ZERO_ERROR;
  fresh.symbols = std::make_unique<icu::DateFormatSymbols>(locale, "gregorian", status);
  checkICU(status, "create date format symbols");
  const icu::UnicodeString eras[] = {u"BCE", u"CE"};
  constexpr int32_t kEraCount = 2;
  fresh.symbols->setEras(eras, kEraCount);
  fresh.symbols->setEraNames(eras, kEraCount);
  fresh.symbols->setNarrowEras(eras, kEraCount);
  fresh.zoneFormat.reset(icu::TimeZoneFormat::createInstance(locale, status));
  checkICU(status, "create TimeZoneFormat for specified locale");
  fresh.zoneFormat->setGMTPattern(u"UTC{0}", status);
  fresh.zoneFormat->setGMTZeroFormat(u"UTC", status);
  checkICU(status, "set UTC format");
  fresh.name = locale.getName();
  *cached = std::move(fresh);
  return *cached;
}

}  // namespace

std::unique_ptr<icu::DateFormatSymbols> dateSymbolsFor(const icu::Locale& locale) {
  return std::make_unique<icu::DateFormatSymbols>(*formatsFor(locale).symbols);
}

std::unique_ptr<icu::TimeZoneFormat> zoneFormatFor(const icu::Locale& locale) {
  return std::unique_ptr<icu::TimeZoneFormat>(formatsFor(locale).zoneFormat->clone());
}

}  // namespace datetime

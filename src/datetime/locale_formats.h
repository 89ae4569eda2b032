// What every date parser of one locale configures alike and ICU makes
// slowly: the date format symbols, with the eras "BCE" and "CE", and the
// time zone format, with "UTC" for a zero offset. They are made once for
// the locale asked for last and copied for each parser. A format guess
// makes some forty parsers of one locale, and the resource look-ups behind
// a fresh set of symbols were most of a parser's cost.
//
// One process-wide entry, on the interpreter's one thread; never freed.
#pragma once

#include <unicode/dtfmtsym.h>
#include <unicode/locid.h>
#include <unicode/tzfmt.h>

#include <memory>

namespace datetime {

// A copy of the locale's symbols, for a formatter to adopt. ICU failures
// throw ICUError ("create date format symbols").
std::unique_ptr<icu::DateFormatSymbols> dateSymbolsFor(const icu::Locale& locale);

// A copy of the locale's time zone format, for a formatter to adopt. ICU
// failures throw ICUError ("create TimeZoneFormat for specified locale",
// "set UTC format").
std::unique_ptr<icu::TimeZoneFormat> zoneFormatFor(const icu::Locale& locale);

}  // namespace datetime

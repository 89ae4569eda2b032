// The interpreter's date formats for textscan: the candidates it guesses
// from ("datetime.getFormatsForGuessing") and the format it suggests when
// no date could be read ("datetime.getDefaultFormatForLocale"). Registered
// by name when the host loads.
#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "twhost/calls.h"
#include "twhost/catalog.h"
#include "twhost/errors.h"
#include "twhost/kx_array.h"
#include "twhost/text.h"

namespace {

// The candidates, in the order they are tried.
//
// The first block is the priority block: the first of them that reads the
// first field is taken at once, with no narrowing. It holds the ISO 8601
// forms, which are what machines write and which no other entry reads, so
// committing to them early loses nothing. The fraction has nine letters
// because such a run reads any number of digits exactly, where three would
// cut microseconds off; a form with a fraction comes before the same form
// without, though they never read the same text.
//
// The rest are narrowed field by field, and when several still read every
// field, the first of them wins (with a warning). So order decides the
// ambiguous cases: the locale's own order of day and month comes first
// (see monthFirst below), then the other. Forms with a time come before the
// same date alone, only because they are likelier in data with times; "/"
// before "-" before "."; numeric months before names, short names before
// long ones. One-letter fields read one or two digits, and "y" reads a
// two-digit year in the hundred years from fifty years ago as well as a
// four-digit year as written.
const char16_t* const kPriorityFormats[] = {
    u"yyyy-MM-dd'T'HH:mm:ss.SSSSSSSSS",
    u"yyyy-MM-dd'T'HH:mm:ss",
    u"yyyy-MM-dd'T'HH:mm",
    u"yyyy-MM-dd HH:mm:ss.SSSSSSSSS",
    u"yyyy-MM-dd HH:mm:ss",
    u"yyyy-MM-dd HH:mm",
    u"yyyy-MM-dd",
};

// "{1}" and "{2}" take the day and the month, in the order of the locale
// or the other.
const char16_t* const kNumericForms[] = {
    u"{1}/{2}/y HH:mm:ss", u"{1}/{2}/y HH:mm", u"{1}/{2}/y",
    u"{1}-{2}-y HH:mm:ss", u"{1}-{2}-y HH:mm", u"{1}-{2}-y",
    u"{1}.{2}.y HH:mm:ss", u"{1}.{2}.y HH:mm", u"{1}.{2}.y",
};

const char16_t* const kOtherFormats[] = {
    u"y/M/d HH:mm:ss",   u"y/M/d",     u"d-MMM-y HH:mm:ss",     u"d-MMM-y",
    u"d MMM y HH:mm:ss", u"d MMM y",   u"MMM d, y HH:mm:ss",    u"MMM d, y",
    u"d MMMM y",         u"MMMM d, y", u"EEE MMM d HH:mm:ss y", u"HH:mm:ss.SSSSSSSSS",
    u"HH:mm:ss",         u"HH:mm",
};

constexpr const char* kDefaultLocale = "en_US";
constexpr const char16_t* kDefaultTime = u" HH:mm:ss";

// The locale a "DateLocale" value names, or the catalogue's default. The
// library has checked a locale before it calls; a text ICU cannot make
// sense of falls back to the default.
icu::Locale localeOf(int nrhs, kxArray** prhs) {
  std::string name = kxMessageText(kxMsg("KORVAN:datetime:localizedStrings", "Locale"));
  if (nrhs > 0 && prhs[0] && kxIsChar(prhs[0])) name = kxArrayToStdString(prhs[0]);
  name = name.substr(0, name.find_first_of(".@"));
  std::replace(name.begin(), name.end(), '-', '_');
  icu::Locale locale = icu::Locale::createCanonical(name.c_str());
  return locale.isBogus() ? icu::Locale(kDefaultLocale) : locale;
}

// The locale's short date pattern, from ICU.
icu::UnicodeString shortDatePattern(const icu::Locale& locale) {
  std::unique_ptr<icu::DateFormat> f(
      icu::DateFormat::createDateInstance(icu::DateFormat::kShort, locale));
  icu::UnicodeString pattern;
  if (auto* simple = dynamic_cast<icu::SimpleDateFormat*>(f.get())) simple->toPattern(pattern);
  return pattern.isEmpty() ? icu::UnicodeString(u"MM/dd/yyyy") : pattern;
}

// Whether the locale writes the month before the day.
bool monthFirst(const icu::Locale& locale) {
  icu::UnicodeString p = shortDatePattern(locale);
  int32_t m = p.indexOf(u'M');
  int32_t d = p.indexOf(u'd');
  return m >= 0 && d >= 0 && m < d;
}

ustring fill(const char16_t* form, const char16_t* first, const char16_t* second) {
  ustring out = form;
  out.replace(out.find(u"{1}"), 3, first);
  out.replace(out.find(u"{2}"), 3, second);
  return out;
}

void formatsForGuessing(int, kxArray** plhs, int nrhs, kxArray** prhs) {
  icu::Locale locale = localeOf(nrhs, prhs);
  std::vector<ustring> formats(std::begin(kPriorityFormats), std::end(kPriorityFormats));
  bool mFirst = monthFirst(locale);
  for (int pass = 0; pass < 2; ++pass) {
    bool dayFirst = (pass == 0) != mFirst;
    for (const char16_t* form : kNumericForms) {
      formats.push_back(dayFirst ? fill(form, u"d", u"M") : fill(form, u"M", u"d"));
    }
  }
  formats.insert(formats.end(), std::begin(kOtherFormats), std::end(kOtherFormats));
  kxArray* cell = kxCreateCellMatrix(formats.size(), 1);
  for (size_t i = 0; i < formats.size(); ++i) {
    kxSetCell(cell, i, kxCreateStringFromNChars_UTF16(formats[i].data(), formats[i].size()));
  }
  plhs[0] = cell;
  plhs[1] = kxCreateDoubleScalar(static_cast<double>(std::size(kPriorityFormats)));
}

// The locale's short date with two-digit day and month and a four-digit
// year, and a time to the second: "MM/dd/yyyy HH:mm:ss" in en_US,
// "dd.MM.yyyy HH:mm:ss" in de_DE.
void defaultFormatForLocale(int, kxArray** plhs, int nrhs, kxArray** prhs) {
  icu::UnicodeString p = shortDatePattern(localeOf(nrhs, prhs));
  ustring out;
  bool quoted = false;
  for (int32_t i = 0; i < p.length();) {
    char16_t c = p[i];
    int32_t end = i + 1;
    if (c == u'\'') quoted = !quoted;
    if (!quoted && (c == u'y' || c == u'M' || c == u'd')) {
      while (end < p.length() && p[end] == c) ++end;
      int32_t count = end - i;
      if (c == u'y') out += u"yyyy";
      if (c == u'd') out += u"dd";
      if (c == u'M') out += count <= 2 ? u"MM" : ustring(static_cast<size_t>(count), u'M');
    } else {
      out += c;
    }
    i = end;
  }
  out += kDefaultTime;
  plhs[0] = kxCreateStringFromNChars_UTF16(out.data(), out.size());
}

[[maybe_unused]] const bool kRegistered = [] {
  kxRegisterFunction("datetime.getFormatsForGuessing", formatsForGuessing);
  kxRegisterFunction("datetime.getDefaultFormatForLocale", defaultFormatForLocale);
  return true;
}();

}  // namespace

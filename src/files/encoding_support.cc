// The supported file encodings: the Unicode forms, the ISO-8859 and Windows
// code pages, and the common East Asian and Cyrillic ones. The list is a
// product decision: anything else ICU can open still works, with a warning
// that results are not guaranteed. Every name on it must open with the ICU
// the build uses: ISO-8859-16 is left out, since Debian's ICU has no table
// for it under any name.
#include "encoding_support.h"

#include <strings.h>
#include <unicode/ucnv.h>

namespace Tarnwicks::FileIO {

namespace {

constexpr const char* kSupported[] = {
    "UTF-8",        "UTF-16",       "UTF-16BE",     "UTF-16LE",     "UTF-32",       "UTF-32BE",
    "UTF-32LE",     "US-ASCII",     "ISO-8859-1",   "ISO-8859-2",   "ISO-8859-3",   "ISO-8859-4",
    "ISO-8859-5",   "ISO-8859-6",   "ISO-8859-7",   "ISO-8859-8",   "ISO-8859-9",   "ISO-8859-10",
    "ISO-8859-13",  "ISO-8859-14",  "ISO-8859-15",  "windows-874",  "windows-1250", "windows-1251",
    "windows-1252", "windows-1253", "windows-1254", "windows-1255", "windows-1256", "windows-1257",
    "windows-1258", "Shift_JIS",    "EUC-JP",       "ISO-2022-JP",  "EUC-KR",       "GBK",
    "GB2312",       "GB18030",      "Big5",         "Big5-HKSCS",   "KOI8-R",       "KOI8-U",
    "IBM437",       "IBM850",       "IBM866",
};

}  // namespace

std::string standardEncodingName(const char* icuName) {
  if (icuName == nullptr) return std::string();
  for (const char* standard : {"MIME", "IANA"}) {
    UErrorCode status = U_ZERO_ERROR;
    const char* name = ucnv_getStandardName(icuName, standard, &status);
    if (U_SUCCESS(status) && name != nullptr) return name;
  }
  return icuName;
}

std::span<const char* const> supportedEncodings() {
  return kSupported;
}

bool isSupportedEncoding(const char* icuName) {
  // Names are compared as ICU resolves them, so that a converter with no
  // standard name (windows-874 is "windows-874-2000") is still found, under
  // any of its aliases.
  UErrorCode status = U_ZERO_ERROR;
  const char* converter = ucnv_getAlias(icuName, 0, &status);
  if (U_FAILURE(status) || converter == nullptr) converter = icuName;
  for (const char* name : kSupported) {
    status = U_ZERO_ERROR;
    const char* listed = ucnv_getAlias(name, 0, &status);
    if (U_SUCCESS(status) && listed != nullptr && strcasecmp(listed, converter) == 0) return true;
  }
  return false;
}

}  // namespace Tarnwicks::FileIO

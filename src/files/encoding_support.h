// Which encodings the environment supports as file encodings. Others still
// work through ICU, but fopen warns about them.
#pragma once

#include <span>
#include <string>

namespace Tarnwicks::FileIO {

// The standard (IANA or MIME) name of an ICU converter name, or the name
// itself when ICU knows none.
std::string standardEncodingName(const char* icuName);
// True when `icuName` (any name ICU knows) opens the converter of an
// encoding on the supported list.
bool isSupportedEncoding(const char* icuName);
// The standard names of the supported list.
std::span<const char* const> supportedEncodings();

}  // namespace Tarnwicks::FileIO

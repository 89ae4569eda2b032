// Which encodings the environment supports as file encodings. Others still
// work through ICU, but fopen warns about them.
#pragma once

#include <span>
#include <string>

namespace Tarnwicks::FileIO {

// The standard (IANA or MIME) name of an ICU converter name, or the name
// itself when ICU knows none.
std::string standardEncodingName(const char* icuName);
// True for the encodings of the supported list, by standard name, compared
// without case.
bool isSupportedEncoding(const std::string& standardName);
// The standard names of the supported list.
std::span<const char* const> supportedEncodings();

}  // namespace Tarnwicks::FileIO

// JSON records of values, warnings and errors, one record per line.
#pragma once

#include <string>

#include "twhost/kx_array.h"

namespace tw {

// The JSON form of a value (see json_writer.cc for the forms).
std::string jsonValue(const kxArray* a);

// {"name": ..., "value": ...}
std::string jsonDisplayRecord(const std::string& name, const kxArray* a);
// {"warning": {...}} or {"error": {...}}, by `kind`.
std::string jsonMessageRecord(const char* kind, const std::string& identifier,
                              const std::string& message);

// A JSON string of UTF-16 text: printable ASCII as it stands, every other
// unit (NUL included) as \uXXXX, so the output is pure ASCII and lone
// surrogates survive.
void appendJsonString(std::string& out, const ustring& text);

}  // namespace tw

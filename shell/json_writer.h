// JSON records of values, warnings and errors, one record per line.
#pragma once

#include <string>

#include "source_location.h"
#include "twhost/kx_array.h"

namespace tw {

// The JSON form of a value (see json_writer.cc for the forms).
std::string jsonValue(const kxArray* a);

// {"name": ..., "value": ...}
std::string jsonDisplayRecord(const std::string& name, const kxArray* a);
// {"warning": {...}} or {"error": {...}}, by `kind`, with the identifier,
// the message, and where it happened: "file" (null at the prompt), "line"
// and "column" (null when unknown).
std::string jsonMessageRecord(const char* kind, const std::string& identifier,
                              const std::string& message, const SourceLocation& where);

// A JSON string of UTF-16 text: printable ASCII as it stands, every other
// unit (NUL included) as \uXXXX, so the output is pure ASCII and lone
// surrogates survive.
void appendJsonString(std::string& out, const ustring& text);

}  // namespace tw

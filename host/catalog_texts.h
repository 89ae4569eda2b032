// The built-in texts of the message catalogue, kept apart from the lookup so
// that the wording can be edited on its own.
#pragma once

#include <cstddef>

#include "twhost/stream_errors.h"

namespace twhost {

struct CatalogText {
  const char* identifier;  // "catalog:key"
  const char* text;        // UTF-8, with {0}, {1} ... where arguments go
};

extern const CatalogText kCatalogTexts[];
extern const size_t kCatalogTextCount;

// The key in "KORVAN:FileIO" of a stream error; null for a value that
// names none.
const char* streamErrorKey(Tarnwicks::FileIO::StreamError e);

}  // namespace twhost

// The built-in texts of the message catalogue, kept apart from the lookup so
// that the wording can be edited on its own.
#pragma once

#include <cstddef>

namespace twhost {

struct CatalogText {
  const char* identifier;  // "catalog:key"
  const char* text;        // UTF-8, with {0}, {1} ... where arguments go
};

extern const CatalogText kCatalogTexts[];
extern const size_t kCatalogTextCount;

// Keys in "KORVAN:FileIO" of the stream error codes: entry i is code -(i+1).
extern const char* const kStreamErrorKeys[];
constexpr int kStreamErrorCount = 45;

}  // namespace twhost

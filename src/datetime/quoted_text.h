// The quote rule of quoted fields, shared by dates and categories.
#pragma once

#include <cstddef>

namespace datetime {

constexpr char16_t kDoubleQuote = u'"';

// `first` points at the opening quote; the units up to `last` are written
// to `out` (room for last - first units) with the opening quote dropped,
// each doubled quote made single, and the first lone quote dropped as the
// closing one; what follows it is copied as it stands, quotes included.
// Returns the units written.
inline size_t stripQuotes(char16_t quote, const char16_t* first, const char16_t* last,
                          char16_t* out) {
  size_t written = 0;
  bool closed = false;
  const char16_t* p = first + 1;
  while (p < last) {
    char16_t c = *p;
    if (!closed && c == quote) {
      if (p + 1 >= last) break;  // the closing quote ends the text
      out[written++] = p[1];
      closed = p[1] != quote;
      p += 2;
    } else {
      out[written++] = c;
      ++p;
    }
  }
  return written;
}

}  // namespace datetime

// Where a place in the UTF-8 copy of sscanf's text stands in the caller's
// UTF-16 text: the body reports its next index there, and the path checks
// compare the two paths by it.
#pragma once

#include <cstddef>

namespace Tarnwicks::FileIO {

// The count of UTF-16 units in the well-formed UTF-8 bytes [begin, end): one
// per lead byte, two for a four-byte lead. Linear, no allocation.
inline size_t utf16UnitsOfUtf8(const char* begin, const char* end) {
  size_t units = 0;
  for (const char* p = begin; p < end; ++p) {
    auto b = static_cast<unsigned char>(*p);
    if ((b & 0xC0) != 0x80) units += b >= 0xF0 ? 2 : 1;
  }
  return units;
}

}  // namespace Tarnwicks::FileIO

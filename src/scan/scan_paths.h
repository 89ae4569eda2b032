// Both paths of a scan, run over one input and reduced to what a caller
// sees: for the checks that the fast path gives what the general path
// gives (the unit tests and the fuzz target).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "scan_result.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

struct ScanRun {
  std::vector<unsigned char> bytes;  // the elements as stored
  kxClassID cls = kxUNKNOWN_CLASS;
  size_t total = 0;  // elements
  uint64_t count = 0;
  int error = 0;
  bool normalEnd = false;
  size_t position = 0;  // units (texts) or bytes (files) read
  bool operator==(const ScanRun&) const = default;
};

// sscanf's scan of `text` by the general path (over its UTF-8) or the fast
// path (which must take the format).
ScanRun scanTextGeneral(const ustring& format, const ustring& text, const ScanSize& size);
ScanRun scanTextFast(const ustring& format, const ustring& text, const ScanSize& size);
// fscanf's scan of a file holding `bytes` (in memory, read as UTF-8).
ScanRun scanFileBytes(const ustring& format, const std::string& bytes, const ScanSize& size,
                      bool fast);

}  // namespace Tarnwicks::FileIO

// The result of fscanf and sscanf: the size argument as the scan needs it,
// and the shaping of what was read into the result array.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fileio/attributes.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

struct ScanSize {
  // Without a size argument: read everything into a column.
  ScanSize() = default;
  // From a parsed and validated size argument.
  explicit ScanSize(const SizeAttribute& size);

  // The conversions wanted; meaningless when unlimited.
  uint64_t limit() const { return static_cast<uint64_t>(rows) * static_cast<uint64_t>(columns); }
  // A size that asks for nothing: the scan doesn't read at all.
  bool holdsNothing() const { return !unlimited && limit() == 0; }

  int64_t rows = 1;
  int64_t columns = 0;
  bool twoValues = false;
  bool unlimited = true;
};

// The empty double array of the size's own shape, for a size that holds
// nothing.
kxArray* emptyScanResult(const ScanSize& size);

// The result array of `total` elements of class `cls` held in `block` (a
// kxMallocEx block that the array adopts, null when total is 0). Filled
// column by column into the size's rows, the last column padded with zeros;
// text, and any request for one row, comes out as a row; nothing read
// gives 0 by 0.
kxArray* scanResultArray(void* block, size_t total, kxClassID cls, const ScanSize& size);

}  // namespace Tarnwicks::FileIO

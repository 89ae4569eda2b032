// Shaping the elements a scan read into its result array.
#include "scan_result.h"

#include <cstring>

#include "twhost/kx_memory.h"

namespace Tarnwicks::FileIO {

ScanSize::ScanSize(const SizeAttribute& size)
    : rows(size.rows), columns(size.columns), twoValues(size.isMatrix), unlimited(size.unbounded) {}

kxArray* emptyScanResult(const ScanSize& size) {
  return kxCreateDoubleMatrix(static_cast<size_t>(size.rows), static_cast<size_t>(size.columns),
                              kxREAL);
}

kxArray* scanResultArray(void* block, size_t total, kxClassID cls, const ScanSize& size) {
  if (total == 0) {
    kxFreeEx(block);
    return kxCreateNumericMatrix(0, 0, cls, kxREAL);
  }
  const bool asRow = (cls == kxCHAR_CLASS && !size.twoValues) || (size.twoValues && size.rows == 1);
  size_t rows = static_cast<size_t>(size.rows);
  if (rows > total || (cls == kxCHAR_CLASS && !size.twoValues)) rows = total;
  size_t columns = (total + rows - 1) / rows;
  if (rows == 1) {
    rows = columns;
    columns = 1;
  }
  const size_t elements = rows * columns;
  if (elements > total) {
    const size_t bytes = kxClassElementSize(cls);
    block = kxReallocExCheck(block, elements * bytes);
    std::memset(static_cast<char*>(block) + total * bytes, 0, (elements - total) * bytes);
  }
  kxArray* a = kxCreateNumericMatrix(0, 0, cls, kxREAL);
  kxSetM(a, asRow ? 1 : rows);
  kxSetN(a, asRow ? elements : columns);
  kxSetData(a, block);
  return a;
}

}  // namespace Tarnwicks::FileIO

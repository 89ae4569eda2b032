// fread's result: its shape and the array that adopts the reader's blocks.
#include "fread_result.h"

#include "twhost/kx_memory.h"

namespace Tarnwicks::FileIO {

ResultShape freadResultShape(size_t total, size_t rows, bool isMatrix, bool isChar,
                             size_t unitBytes, bool noConvert) {
  ResultShape shape;
  if (total == 0) return shape;
  // "noconvert" counts bytes: an element of the result holds unitBytes.
  size_t elements = noConvert ? (total + unitBytes - 1) / unitBytes : total;
  size_t r = rows == 0 ? 1 : rows;
  if (r > elements || (isChar && !isMatrix)) r = elements;
  size_t c = (elements + r - 1) / r;
  if (r == 1) {
    r = c;
    c = 1;
  }
  if (rows == 1 && isMatrix && !noConvert) {
    // [1 n] asks for a row.
    c = r * c;
    r = 1;
  }
  shape.rows = r;
  shape.columns = c;
  return shape;
}

kxArray* makeFreadResult(OutputBuffer& buffer, ResultRoom& room, const ResultShape& shape,
                         kxClassID resultClass, size_t unitBytes, bool noConvert) {
  const size_t elements = shape.rows * shape.columns;
  const size_t have = buffer.totalElements();
  const size_t wanted = noConvert ? elements * unitBytes : elements;
  if (wanted > have) room.appendZeros(wanted - have);
  if (!noConvert) {
    kxArray* a = buffer.toArray(shape.rows, shape.columns);
    if (resultClass == kxLOGICAL_CLASS) {
      // Bytes read as they stand may hold any value: a logical holds 0 or 1.
      auto* bytes = static_cast<unsigned char*>(kxGetData(a));
      for (size_t i = 0; i < elements; ++i) bytes[i] = bytes[i] != 0;
    }
    return a;
  }

  // The raw bytes become the memory of elements of the result class.
  size_t n = 0;
  void* data = buffer.takeJoined(n);
  kxArray* a = kxCreateNumericMatrix(0, 0, resultClass, kxREAL);
  kxSetM(a, shape.rows);
  kxSetN(a, shape.columns);
  if (data != nullptr && elements != 0) {
    kxSetData(a, data);
  } else {
    kxFreeEx(data);
  }
  return a;
}

}  // namespace Tarnwicks::FileIO

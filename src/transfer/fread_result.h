// The shape of fread's result, and the array made from a reader's buffer.
#pragma once

#include <cstddef>

#include "fileio/attributes.h"
#include "fileio/output_buffer.h"
#include "result_room.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

struct ResultShape {
  size_t rows = 0;
  size_t columns = 0;
};

// The shape for `total` elements read under a size of `rows` (the size's
// first value; 1 for none), `isMatrix` when the size had two values, for a
// result of class char or not. `unitBytes` is 1 except for "noconvert",
// where `total` counts bytes and a result element holds `unitBytes` of them.
//
// The rows stand as asked unless fewer elements came (or, for char read
// without a two-value size, always): then they are the count. The columns
// are what the elements fill, rounded up, the gap padded with zeros. A
// request of one row first comes out as a column, and a two-value size of
// one row then turns it back into a row. Nothing read gives 0 by 0.
ResultShape freadResultShape(size_t total, size_t rows, bool isMatrix, bool isChar,
                             size_t unitBytes, bool noConvert);

// Makes the result array of class `resultClass` from what `buffer` holds,
// padded with zeros to the shape; a logical result holds only 0 and 1. When the buffer is a single
// block with room for the padding, the array adopts it without a copy.
kxArray* makeFreadResult(OutputBuffer& buffer, ResultRoom& room, const ResultShape& shape,
                         kxClassID resultClass, size_t unitBytes, bool noConvert);

}  // namespace Tarnwicks::FileIO

// ResultRoom: room in place inside a reader's OutputBuffer, so that readers
// put elements straight into the blocks that become the result.
//
// When the file's size tells how much can still come, the buffer is given
// one block of that size up front (presize): a read to the end then fills a
// single block, which the result array adopts as it stands, with no join and
// no second copy. Without a size the blocks grow by doubling, as the buffer
// does on its own.
#pragma once

#include <cstddef>

#include "fileio/output_buffer.h"

namespace Tarnwicks::FileIO {

class ResultRoom {
 public:
  explicit ResultRoom(OutputBuffer& buffer) : buffer(buffer) {}

  // Makes one block able to hold `elements` more elements. Cost: one
  // allocation (huge-page advised when large); nothing is touched.
  void presize(size_t elements);
  // Contiguous room for up to `want` elements (want >= 1); `granted` gets
  // how many, at least 1. Follow with used().
  void* room(size_t want, size_t& granted);
  // After room(): `n` of the granted elements hold data.
  void used(size_t n);
  // Elements the current block can still take without a new block.
  size_t available() const { return left; }
  // Appends `n` zero elements (padding of a result shape), in the last
  // block when it has room.
  void appendZeros(size_t n);

 private:
  OutputBuffer& buffer;
  // Elements the last block is known to hold beyond its used part. A lower
  // bound: the buffer may have made its block larger than asked.
  size_t left = 0;
  // Size of the next block made when `left` runs out; doubles each time.
  size_t nextBlock = 0;
};

}  // namespace Tarnwicks::FileIO

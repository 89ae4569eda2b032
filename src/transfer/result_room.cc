// ResultRoom: elements straight into a reader's result blocks.
#include "result_room.h"

#include <algorithm>
#include <cstring>

namespace Tarnwicks::FileIO {

namespace {
// The buffer's own cap on a block: 8388608 elements.
constexpr size_t kLargestGrownBlock = 8388608;
}  // namespace

void ResultRoom::presize(size_t elements) {
  if (elements == 0) return;
  size_t want = elements;
  buffer.reserve(want);
  buffer.commit(0);
  left = elements;
}

void* ResultRoom::room(size_t want, size_t& granted) {
  if (left == 0) {
    // A new block: reserve() makes one of at least what it is asked for.
    if (nextBlock == 0) nextBlock = buffer.getBlockSize();
    size_t size = std::max(want, nextBlock);
    nextBlock = std::min(nextBlock * 2, std::max(kLargestGrownBlock, nextBlock));
    size_t ask = size;
    buffer.reserve(ask);
    buffer.commit(0);
    left = size;
  }
  granted = std::min(want, left);
  return buffer.reserve(granted);
}

void ResultRoom::used(size_t n) {
  buffer.commit(n);
  left -= std::min(n, left);
}

void ResultRoom::appendZeros(size_t n) {
  const size_t bytes = buffer.getElementSize();
  while (n > 0) {
    size_t granted = 0;
    void* p = room(n, granted);
    std::memset(p, 0, granted * bytes);
    used(granted);
    n -= granted;
  }
}

}  // namespace Tarnwicks::FileIO

// OutputBuffer: results of unknown size, in blocks that never move.
#include "fileio/output_buffer.h"

#include <algorithm>
#include <cstring>

#include "twhost/kx_memory.h"

namespace Tarnwicks::FileIO {

OutputBuffer::OutputBuffer(kxClassID cls, size_t firstBlock, size_t minBlk, size_t maxBlk)
    : minBlock(minBlk ? minBlk : 1),
      maxBlock(maxBlk ? maxBlk : minBlock),
      blockSize(std::max(firstBlock, minBlock)),
      classId(cls),
      elementSize(kxClassElementSize(cls) ? kxClassElementSize(cls) : 1) {}

OutputBuffer::~OutputBuffer() {
  freeBlocksAfter(0);
}

void OutputBuffer::BlockList::push_back(const Block& b) {
  if (n == capacity) {
    Block* bigger = new Block[capacity * 2];
    std::copy(items, items + n, bigger);
    if (items != inlineItems) delete[] items;
    items = bigger;
    capacity *= 2;
  }
  items[n++] = b;
}

void OutputBuffer::freeBlocksAfter(size_t keep) {
  while (blocks.size() > keep) {
    kxFreeEx(blocks.back().data);
    blocks.pop_back();
    if (!blocks.empty()) countBefore -= blocks.back().count;
  }
  if (blocks.empty()) countBefore = 0;
}

void OutputBuffer::newBlock(size_t atLeast) {
  size_t n = std::max(atLeast, std::max(blockSize, minBlock));
  char* data = static_cast<char*>(kxMallocExCheck(n * elementSize));
  if (!blocks.empty()) countBefore += blocks.back().count;
  blocks.push_back({data, 0, n});
}

void* OutputBuffer::reserve(size_t& count) {
  if (blocks.empty() || blocks.back().count + count > blocks.back().capacity) newBlock(count);
  Block& last = blocks.back();
  char* p = last.data + last.count * elementSize;
  last.count += count;
  requested = count;
  if (markPointer == nullptr) {
    markPointer = p;
    markBlock = blocks.size() - 1;
  }
  return p;
}

void OutputBuffer::commit(size_t n) {
  if (blocks.empty()) return;
  blocks.back().count -= requested - std::min(n, requested);
  requested = 0;
}

void OutputBuffer::grow() {
  blockSize = std::max(std::min(blockSize * 2, maxBlock), minBlock);
}

void OutputBuffer::append(const void* data, size_t n) {
  if (n == 0) return;
  size_t want = n;
  void* p = reserve(want);
  std::memcpy(p, data, n * elementSize);
  requested = 0;
}

void OutputBuffer::push(const void* element) {
  if (blocks.empty() || blocks.back().count == blocks.back().capacity) {
    if (!blocks.empty()) grow();
    newBlock(1);
  }
  Block& last = blocks.back();
  std::memcpy(last.data + last.count * elementSize, element, elementSize);
  ++last.count;
}

void OutputBuffer::removeLast(size_t n) {
  while (n > 0 && !blocks.empty()) {
    size_t take = std::min(n, blocks.back().count);
    blocks.back().count -= take;
    n -= take;
    if (n == 0) break;
    if (blocks.size() == 1) break;
    freeBlocksAfter(blocks.size() - 1);
  }
}

void OutputBuffer::copyLast(size_t n, void* out) const {
  char* dst = static_cast<char*>(out) + n * elementSize;
  for (size_t b = blocks.size(); b-- > 0 && n > 0;) {
    size_t take = std::min(n, blocks[b].count);
    dst -= take * elementSize;
    std::memcpy(dst, blocks[b].data + (blocks[b].count - take) * elementSize, take * elementSize);
    n -= take;
  }
}

size_t OutputBuffer::totalElements() const {
  return blocks.empty() ? 0 : countBefore + blocks.back().count;
}

void OutputBuffer::dropFromMark() {
  if (markPointer == nullptr) {
    freeBlocksAfter(0);
    return;
  }
  freeBlocksAfter(markBlock + 1);
  Block& last = blocks.back();
  last.count = static_cast<size_t>(static_cast<char*>(markPointer) - last.data) / elementSize;
  markPointer = nullptr;
}

void* OutputBuffer::takeJoined(size_t& n) {
  n = totalElements();
  void* joined = nullptr;
  if (n != 0 && blocks.size() == 1) {
    // One block: hand it over as it stands, unused tail and all.
    joined = blocks[0].data;
    blocks.clear();
  } else if (n != 0) {
    joined = kxMallocExCheck(n * elementSize);
    char* dst = static_cast<char*>(joined);
    for (size_t i = 0; i < blocks.size(); ++i) {
      std::memcpy(dst, blocks[i].data, blocks[i].count * elementSize);
      dst += blocks[i].count * elementSize;
    }
  }
  freeBlocksAfter(0);
  markPointer = nullptr;
  return joined;
}

kxArray* OutputBuffer::toArray() {
  size_t n = 0;
  void* data = takeJoined(n);
  kxArray* a = kxCreateNumericMatrix(0, 0, classId, kxREAL);
  if (classId == kxCHAR_CLASS) {
    kxSetN(a, n);
    kxSetM(a, 1);
  } else {
    kxSetM(a, 1);
    kxSetN(a, n);
  }
  if (data) kxSetData(a, data);
  return a;
}

kxArray* OutputBuffer::toArray(size_t rows, size_t columns) {
  size_t n = 0;
  void* data = takeJoined(n);
  size_t want = rows * columns;
  if (want > n) {
    void* bigger = kxCallocExCheck(want, elementSize);
    if (data) std::memcpy(bigger, data, n * elementSize);
    kxFreeEx(data);
    data = bigger;
  }
  kxArray* a = kxCreateNumericMatrix(0, 0, classId, kxREAL);
  kxSetM(a, rows);
  kxSetN(a, columns);
  if (data && want) {
    kxSetData(a, data);
  } else {
    kxFreeEx(data);
  }
  return a;
}

}  // namespace Tarnwicks::FileIO

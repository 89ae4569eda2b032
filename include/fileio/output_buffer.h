// OutputBuffer: the growing store into which readers put results whose size
// is not known in advance (a line, the rest of a file, scanned values).
//
// Elements live in a list of blocks from kxMallocExCheck. A block is never
// moved once filled, so reading to the end of a large file copies each
// element once, when toArray() joins the blocks; a single block is adopted
// by the array as it stands, without any copy.
#pragma once

#include <cstddef>
#include <vector>

#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

class OutputBuffer {
 public:
  // `firstBlock`, `minBlock` and `maxBlock` are counts of elements; a
  // `maxBlock` of 0 becomes `minBlock`. fgets uses (char, 1024, 64, 8388608).
  OutputBuffer(kxClassID classId, size_t firstBlock, size_t minBlock, size_t maxBlock);
  virtual ~OutputBuffer();
  OutputBuffer(const OutputBuffer&) = delete;
  OutputBuffer& operator=(const OutputBuffer&) = delete;

  // Room for `count` elements: in the last block when its used part plus
  // `count` fits `blockSize`, else in a new block of max(count, minBlock)
  // elements. The room is counted as used at once; commit() gives back what
  // was not. Sets the mark if none is set. Never returns null (raises the
  // host's out-of-memory error). `count` is left as given; it is in-out only
  // so that callers may ask for what they will use.
  void* reserve(size_t& count);
  // After reserve(count): `n` of the `count` elements were used.
  void commit(size_t n);
  // Doubles blockSize, capped by maxBlock and not under minBlock.
  void grow();

  // Appends `n` elements from `data`. Cost: one copy, at most one new block.
  void append(const void* data, size_t n);
  // Appends one element; `element` points at elementSize bytes.
  void push(const void* element);
  // Removes the last `n` elements (n <= totalElements()). Blocks emptied by
  // this stay allocated.
  void removeLast(size_t n);
  // Copies the last `n` elements, oldest first, into `out`.
  void copyLast(size_t n, void* out) const;

  size_t totalElements() const;
  bool empty() const { return totalElements() == 0; }
  kxClassID getClassId() const { return classId; }
  size_t getElementSize() const { return elementSize; }
  size_t getBlockSize() const { return blockSize; }

  // Cuts the contents back to the mark: the block at the mark is shortened,
  // the blocks after it are freed. Without a mark, empties the buffer.
  void dropFromMark();

  // Joins the contents into one kxMallocEx block that the caller owns (null
  // when empty) and empties the buffer; `n` gets the element count.
  void* takeJoined(size_t& n);
  // A new array of classId, 1 by totalElements(), adopting the joined data;
  // for char the column count is set before the row count. Empties the buffer.
  kxArray* toArray();
  // The same with the given shape; rows * columns must not exceed the total
  // (elements beyond are dropped, missing ones zero).
  kxArray* toArray(size_t rows, size_t columns);

  // Where the first element of the current unit stands. Callers clear the
  // mark by setting markPointer to null before each unit.
  void* markPointer = nullptr;
  size_t markBlock = 0;

 private:
  struct Block {
    char* data;
    size_t count;     // elements used
    size_t capacity;  // elements it can hold
  };
  // The list of blocks. Most buffers (a line, a small read) need one or two,
  // so the first few records live inside the buffer and cost no allocation.
  class BlockList {
   public:
    BlockList() = default;
    ~BlockList() {
      if (items != inlineItems) delete[] items;
    }
    BlockList(const BlockList&) = delete;
    BlockList& operator=(const BlockList&) = delete;
    size_t size() const { return n; }
    bool empty() const { return n == 0; }
    Block& back() { return items[n - 1]; }
    const Block& back() const { return items[n - 1]; }
    Block& operator[](size_t i) { return items[i]; }
    const Block& operator[](size_t i) const { return items[i]; }
    void push_back(const Block& b);
    void pop_back() { --n; }
    void clear() { n = 0; }

   private:
    static constexpr size_t kInline = 4;
    Block inlineItems[kInline];
    Block* items = inlineItems;
    size_t n = 0;
    size_t capacity = kInline;
  };

  void newBlock(size_t atLeast);
  void freeBlocksAfter(size_t keep);

  size_t minBlock;
  size_t maxBlock;
  size_t blockSize;
  size_t requested = 0;
  BlockList blocks;
  size_t countBefore = 0;  // elements in all blocks but the last
  kxClassID classId;
  size_t elementSize;
};

}  // namespace Tarnwicks::FileIO

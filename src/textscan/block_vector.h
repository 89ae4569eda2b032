// BlockVector<T>: the store of a column, in blocks from the host's array
// allocator so that a result array can adopt them.
//
// Values never move while the store grows. The first block is 1 KiB, the
// size of a small read's whole column, which the result then adopts
// without a copy; each later block doubles, up to 1 MiB, so that a large
// read costs few allocations. Handing over a store of several blocks copies
// it once into one block, freeing each block as it is copied, so that the
// peak stays near one copy of the column.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "twhost/kx_memory.h"

namespace textscan {

template <class T>
class BlockVector {
 public:
  BlockVector() = default;
  BlockVector(const BlockVector&) = delete;
  BlockVector& operator=(const BlockVector&) = delete;
  BlockVector(BlockVector&& other) noexcept { swap(other); }
  BlockVector& operator=(BlockVector&& other) noexcept {
    swap(other);
    return *this;
  }
  ~BlockVector() { clear(); }

  size_t size() const { return count_; }

  [[gnu::always_inline]] void push_back(T v) {
    if (fill_ == capacity_) openBlock();
    top_[fill_++] = v;
    ++count_;
  }

  // `n` copies of `v`.
  void appendRepeated(size_t n, T v) {
    while (n > 0) {
      if (fill_ == capacity_) openBlock();
      size_t take = std::min(n, capacity_ - fill_);
      std::fill_n(top_ + fill_, take, v);
      fill_ += take;
      count_ += take;
      n -= take;
    }
  }

  // The values as one kxMallocEx block, which the caller owns; null when
  // there are none. The store is empty afterwards.
  T* release() {
    if (count_ == 0) {
      clear();
      return nullptr;
    }
    T* out;
    if (blocks_.size() == 1) {
      out = blocks_[0].data;
      blocks_.clear();
    } else {
      out = static_cast<T*>(kxMallocEx(count_ * sizeof(T)));
      if (!out) throw std::bad_alloc();
      size_t at = 0;
      for (Block& b : blocks_) {
        size_t n = std::min(b.size, count_ - at);
        std::memcpy(out + at, b.data, n * sizeof(T));
        at += n;
        kxFreeEx(b.data);
        b.data = nullptr;
      }
      blocks_.clear();
    }
    reset();
    return out;
  }

  void clear() {
    for (Block& b : blocks_) kxFreeEx(b.data);
    blocks_.clear();
    reset();
  }

 private:
  static constexpr size_t kFirstBlockBytes = 1024;
  static constexpr size_t kLargestBlockBytes = size_t{1} << 20;

  struct Block {
    T* data;
    size_t size;
  };

  void openBlock() {
    size_t bytes = blocks_.empty()
                       ? kFirstBlockBytes
                       : std::min(blocks_.back().size * sizeof(T) * 2, kLargestBlockBytes);
    size_t elements = std::max<size_t>(bytes / sizeof(T), 1);
    T* data = static_cast<T*>(kxMallocEx(elements * sizeof(T)));
    if (!data) throw std::bad_alloc();
    blocks_.push_back({data, elements});
    top_ = data;
    fill_ = 0;
    capacity_ = elements;
  }
  void reset() {
    count_ = fill_ = capacity_ = 0;
    top_ = nullptr;
  }
  void swap(BlockVector& o) noexcept {
    std::swap(blocks_, o.blocks_);
    std::swap(count_, o.count_);
    std::swap(top_, o.top_);
    std::swap(fill_, o.fill_);
    std::swap(capacity_, o.capacity_);
  }

  std::vector<Block> blocks_;
  size_t count_ = 0;
  T* top_ = nullptr;
  size_t fill_ = 0;
  size_t capacity_ = 0;
};

}  // namespace textscan

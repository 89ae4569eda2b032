// BlockVector<T>: the store of a column, one block from the host's array
// allocator that the result array adopts as it is, without a copy.
//
// The block doubles as it fills, through the host's realloc. Large blocks
// are mapped memory that the C library grows in place or remaps without
// copying, so each value is written once where the result will hold it and
// the peak stays at one copy of the column: no second block of the same
// size is ever touched. The slack at the end of the block is never written,
// so it costs address space and not memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>

#include "twhost/kx_memory.h"

namespace textscan {

template <class T>
class BlockVector {
 public:
  BlockVector() = default;
  BlockVector(const BlockVector&) = delete;
  BlockVector& operator=(const BlockVector&) = delete;
  ~BlockVector() { clear(); }

  size_t size() const { return count_; }

  [[gnu::always_inline]] void push_back(T v) {
    if (count_ == capacity_) grow(count_ + 1);
    data_[count_++] = v;
  }

  // Room for `n` more values at the end, to be written through the pointer
  // (valid until the next growth); truncate() gives back what goes unused.
  T* extend(size_t n) {
    if (count_ + n > capacity_) grow(count_ + n);
    T* at = data_ + count_;
    count_ += n;
    return at;
  }
  // Keeps the first `n` values (n <= size()).
  void truncate(size_t n) { count_ = n; }
  const T* data() const { return data_; }

  // `n` copies of `v`.
  void appendRepeated(size_t n, T v) {
    if (count_ + n > capacity_) grow(count_ + n);
    std::fill_n(data_ + count_, n, v);
    count_ += n;
  }

  // The values as one kxMallocEx block, which the caller owns; null when
  // there are none. The store is empty afterwards.
  T* release() {
    if (count_ == 0) {
      clear();
      return nullptr;
    }
    T* out = data_;
    data_ = nullptr;
    count_ = capacity_ = 0;
    return out;
  }

  void clear() {
    kxFreeEx(data_);
    data_ = nullptr;
    count_ = capacity_ = 0;
  }

 private:
  // Small, so that a format of very many conversions costs little for each
  // column; doubling makes the number of reallocs logarithmic anyway.
  static constexpr size_t kFirstBlockBytes = 64;

  [[gnu::noinline]] void grow(size_t needed) {
    size_t elements = std::max(capacity_ * 2, std::max<size_t>(kFirstBlockBytes / sizeof(T), 1));
    elements = std::max(elements, needed);
    if (elements > SIZE_MAX / sizeof(T)) throw std::bad_alloc();
    data_ = static_cast<T*>(data_ ? kxReallocExCheck(data_, elements * sizeof(T))
                                  : kxMallocExCheck(elements * sizeof(T)));
    capacity_ = elements;
  }

  T* data_ = nullptr;
  size_t count_ = 0;
  size_t capacity_ = 0;
};

}  // namespace textscan

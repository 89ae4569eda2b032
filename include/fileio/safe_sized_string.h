// SafeSizedStringT: a small growable buffer of char or char16_t in a host
// block, the work store of the encoding and number readers.
#pragma once

#include <cstddef>
#include <cstring>

#include "twhost/kx_memory.h"

namespace Tarnwicks::FileIO {

template <class T>
class SafeSizedStringT {
 public:
  SafeSizedStringT() = default;
  explicit SafeSizedStringT(size_t initialCapacity) { reserve(initialCapacity); }
  virtual ~SafeSizedStringT() {
    if (owned) utFree(data);
  }
  SafeSizedStringT(const SafeSizedStringT&) = delete;
  SafeSizedStringT& operator=(const SafeSizedStringT&) = delete;

  // Makes room for `n` elements in all. Growing reallocates to the new size
  // plus the old capacity, so a buffer grown step by step stays amortised
  // O(1) per element. Raises the host's out-of-memory error on failure.
  void reserve(size_t n) {
    if (n <= capacity) return;
    size_t newCapacity = n + capacity;
    data = static_cast<T*>(utReallocWithCheck(data, newCapacity * sizeof(T)));
    capacity = newCapacity;
  }
  void append(const T* src, size_t n) {
    if (src >= data && src < data + length) {
      // Appending part of ourselves: the source may move when we grow.
      size_t offset = static_cast<size_t>(src - data);
      reserve(length + n);
      std::memmove(data + length, data + offset, n * sizeof(T));
    } else {
      reserve(length + n);
      if (n) std::memcpy(data + length, src, n * sizeof(T));
    }
    length += n;
  }
  void push(T c) {
    reserve(length + 1);
    data[length++] = c;
  }
  void clear() { length = 0; }

  T* data = nullptr;
  size_t length = 0;
  size_t capacity = 0;
  bool owned = true;
};

}  // namespace Tarnwicks::FileIO

// The codes of a category column, one per field, each in the narrowest
// unsigned class that holds every code so far: a byte while there are at
// most 254 categories, as there mostly are, then 16, 32 or 64 bits. Since
// codes are given in order of first appearance, the largest code is the
// number of categories, and the class the store ends in is the class the
// result needs. The block comes from kxMallocEx and the result array
// adopts it as it stands: no narrowing pass, no copy at the end.
//
// Cost: a byte per field in the common case; a widening rewrites the
// codes once, at most three times in all.
#pragma once

#include <cstddef>
#include <cstdint>

#include "twhost/kx_array.h"

namespace datetime {

class CodeStore {
 public:
  // The largest code of each class: its largest value is kept free.
  static constexpr uint64_t kLargestUint8Code = 254;
  static constexpr uint64_t kLargestUint16Code = 65534;
  static constexpr uint64_t kLargestUint32Code = 4294967294;

  CodeStore() = default;
  CodeStore(const CodeStore&) = delete;
  CodeStore& operator=(const CodeStore&) = delete;
  ~CodeStore() { clear(); }

  [[gnu::always_inline]] void push(uint64_t code) {
    if (code > limit_) widen(code);
    if (count_ == capacity_) grow();
    switch (cls_) {
      case kxUINT8_CLASS:
        static_cast<uint8_t*>(data_)[count_++] = static_cast<uint8_t>(code);
        return;
      case kxUINT16_CLASS:
        static_cast<uint16_t*>(data_)[count_++] = static_cast<uint16_t>(code);
        return;
      case kxUINT32_CLASS:
        static_cast<uint32_t*>(data_)[count_++] = static_cast<uint32_t>(code);
        return;
      default:
        static_cast<uint64_t*>(data_)[count_++] = code;
        return;
    }
  }

  size_t size() const { return count_; }
  uint64_t back() const { return at(count_ - 1); }
  uint64_t at(size_t i) const;
  // The class of the codes: the narrowest for the largest code pushed.
  kxClassID codeClass() const { return cls_; }
  // The codes as an n-by-1 array of codeClass(); the store is empty after.
  kxArray* release();
  void clear();

  // The narrowest class for codes up to `largest`.
  static kxClassID classFor(uint64_t largest);

 private:
  void widen(uint64_t code);
  void grow();

  void* data_ = nullptr;
  size_t count_ = 0;
  size_t capacity_ = 0;
  kxClassID cls_ = kxUINT8_CLASS;
  uint64_t limit_ = kLargestUint8Code;
};

}  // namespace datetime

#include "code_store.h"

#include <algorithm>
#include <new>

#include "twhost/kx_memory.h"

namespace datetime {

namespace {

// Small, so that a column of few fields costs little; doubling keeps the
// number of reallocs logarithmic.
constexpr size_t kFirstBlockBytes = 64;

size_t widthOf(kxClassID cls) {
  return kxClassElementSize(cls);
}

uint64_t limitOf(kxClassID cls) {
  switch (cls) {
    case kxUINT8_CLASS:
      return CodeStore::kLargestUint8Code;
    case kxUINT16_CLASS:
      return CodeStore::kLargestUint16Code;
    case kxUINT32_CLASS:
      return CodeStore::kLargestUint32Code;
    default:
      return UINT64_MAX;
  }
}

template <class From, class To>
void copyCodes(const void* from, void* to, size_t n) {
  std::copy_n(static_cast<const From*>(from), n, static_cast<To*>(to));
}

template <class To>
void copyCodesTo(kxClassID from, const void* data, void* to, size_t n) {
  switch (from) {
    case kxUINT8_CLASS:
      return copyCodes<uint8_t, To>(data, to, n);
    case kxUINT16_CLASS:
      return copyCodes<uint16_t, To>(data, to, n);
    default:
      return copyCodes<uint32_t, To>(data, to, n);
  }
}

}  // namespace

kxClassID CodeStore::classFor(uint64_t largest) {
  if (largest <= kLargestUint8Code) return kxUINT8_CLASS;
  if (largest <= kLargestUint16Code) return kxUINT16_CLASS;
  if (largest <= kLargestUint32Code) return kxUINT32_CLASS;
  return kxUINT64_CLASS;
}

uint64_t CodeStore::at(size_t i) const {
  switch (cls_) {
    case kxUINT8_CLASS:
      return static_cast<const uint8_t*>(data_)[i];
    case kxUINT16_CLASS:
      return static_cast<const uint16_t*>(data_)[i];
    case kxUINT32_CLASS:
      return static_cast<const uint32_t*>(data_)[i];
    default:
      return static_cast<const uint64_t*>(data_)[i];
  }
}

// Codes only grow by one at a time, so a widening goes one class up.
void CodeStore::widen(uint64_t code) {
  kxClassID to = classFor(code);
  size_t capacity = std::max<size_t>(capacity_, 1);
  void* wider = kxMallocExCheck(capacity * widthOf(to));
  switch (to) {
    case kxUINT16_CLASS:
      copyCodesTo<uint16_t>(cls_, data_, wider, count_);
      break;
    case kxUINT32_CLASS:
      copyCodesTo<uint32_t>(cls_, data_, wider, count_);
      break;
    default:
      copyCodesTo<uint64_t>(cls_, data_, wider, count_);
      break;
  }
  kxFreeEx(data_);
  data_ = wider;
  capacity_ = capacity;
  cls_ = to;
  limit_ = limitOf(to);
}

void CodeStore::grow() {
  size_t width = widthOf(cls_);
  size_t elements = std::max(capacity_ * 2, kFirstBlockBytes / width);
  if (elements > SIZE_MAX / width) throw std::bad_alloc();
  data_ = data_ ? kxReallocExCheck(data_, elements * width) : kxMallocExCheck(elements * width);
  capacity_ = elements;
}

kxArray* CodeStore::release() {
  kxArray* a = kxCreateNumericMatrix(0, 0, cls_, kxREAL);
  size_t dims[2] = {count_, 1};
  kxSetDimensions(a, dims, 2);
  if (count_ != 0) {
    kxSetData(a, data_);
    data_ = nullptr;
  }
  clear();
  return a;
}

void CodeStore::clear() {
  kxFreeEx(data_);
  data_ = nullptr;
  count_ = capacity_ = 0;
  cls_ = kxUINT8_CLASS;
  limit_ = kLargestUint8Code;
}

}  // namespace datetime

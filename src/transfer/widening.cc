// Widening conversions in vector loops.
#include "widening.h"

#include <cstdint>

namespace Tarnwicks::FileIO {

namespace {

// Blocks of a fixed number of elements: the compiler turns the inner loop
// into vector conversions even at its cheapest vectorising level.
template <class D, class S>
void widen(D* __restrict out, const S* __restrict in, size_t n) {
  constexpr size_t kLanes = 16;
  size_t i = 0;
  for (; i + kLanes <= n; i += kLanes) {
    for (size_t k = 0; k < kLanes; ++k) out[i + k] = static_cast<D>(in[i + k]);
  }
  for (; i < n; ++i) out[i] = static_cast<D>(in[i]);
}

template <class D>
bool widenInto(D* out, kxClassID srcClass, const void* src, size_t n) {
  switch (srcClass) {
    case kxINT8_CLASS:
      widen(out, static_cast<const int8_t*>(src), n);
      return true;
    case kxUINT8_CLASS:
      widen(out, static_cast<const uint8_t*>(src), n);
      return true;
    case kxINT16_CLASS:
      widen(out, static_cast<const int16_t*>(src), n);
      return true;
    case kxUINT16_CLASS:
      widen(out, static_cast<const uint16_t*>(src), n);
      return true;
    case kxINT32_CLASS:
      widen(out, static_cast<const int32_t*>(src), n);
      return true;
    case kxUINT32_CLASS:
      widen(out, static_cast<const uint32_t*>(src), n);
      return true;
    case kxSINGLE_CLASS:
      if constexpr (sizeof(D) == sizeof(double)) {
        widen(out, static_cast<const float*>(src), n);
        return true;
      }
      return false;
    default:
      return false;
  }
}

}  // namespace

bool widenElements(kxClassID dstClass, void* dst, kxClassID srcClass, const void* src, size_t n) {
  if (dstClass == kxDOUBLE_CLASS) return widenInto(static_cast<double*>(dst), srcClass, src, n);
  if (dstClass == kxSINGLE_CLASS) return widenInto(static_cast<float*>(dst), srcClass, src, n);
  return false;
}

}  // namespace Tarnwicks::FileIO

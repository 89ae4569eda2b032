// Byte reversal of whole elements.
#include "byte_swap.h"

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "twhost/kx_data.h"

namespace Tarnwicks::FileIO {

bool needsByteSwap(kxClassID cls, int format) {
  if (cls == kxCHAR_CLASS) return false;
  return utGetDataSizeType() % 5 != format % 5;
}

namespace {

inline uint16_t reversed(uint16_t v) {
  return __builtin_bswap16(v);
}
inline uint32_t reversed(uint32_t v) {
  return __builtin_bswap32(v);
}
inline uint64_t reversed(uint64_t v) {
  return __builtin_bswap64(v);
}

// Loads and stores through memcpy: file data need not be aligned to its
// element type.
template <class U>
void swapLoop(unsigned char* dst, const unsigned char* src, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    U v;
    std::memcpy(&v, src + i * sizeof(U), sizeof(U));
    v = reversed(v);
    std::memcpy(dst + i * sizeof(U), &v, sizeof(U));
  }
}

// A reversal of 2, 4 or 8 bytes stays inside each 16-byte lane, so one byte
// shuffle per 32 bytes does it. Whole vectors only; returns the bytes done.
__attribute__((target("avx2"))) size_t swapVectors(unsigned char* dst, const unsigned char* src,
                                                   size_t bytes, size_t elementBytes) {
  alignas(32) unsigned char order[32];
  for (size_t i = 0; i < 32; ++i) {
    size_t first = i - i % elementBytes;
    order[i] = static_cast<unsigned char>((first + elementBytes - 1 - i % elementBytes) % 16);
  }
  const __m256i mask = _mm256_load_si256(reinterpret_cast<const __m256i*>(order));
  size_t done = 0;
  for (; done + 32 <= bytes; done += 32) {
    __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + done));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + done), _mm256_shuffle_epi8(v, mask));
  }
  return done;
}

bool haveVectors() {
  static const bool avx2 = __builtin_cpu_supports("avx2");
  return avx2;
}

void swapAny(unsigned char* dst, const unsigned char* src, size_t n, size_t elementBytes) {
  if (elementBytes != 2 && elementBytes != 4 && elementBytes != 8) {
    if (dst != src) std::memcpy(dst, src, n * elementBytes);
    return;
  }
  size_t done = haveVectors() ? swapVectors(dst, src, n * elementBytes, elementBytes) : 0;
  dst += done;
  src += done;
  n -= done / elementBytes;
  switch (elementBytes) {
    case 2:
      swapLoop<uint16_t>(dst, src, n);
      break;
    case 4:
      swapLoop<uint32_t>(dst, src, n);
      break;
    default:
      swapLoop<uint64_t>(dst, src, n);
      break;
  }
}

}  // namespace

void swapBytesInPlace(void* data, size_t n, size_t elementBytes) {
  auto* p = static_cast<unsigned char*>(data);
  swapAny(p, p, n, elementBytes);
}

void swapBytesCopy(void* dst, const void* src, size_t n, size_t elementBytes) {
  swapAny(static_cast<unsigned char*>(dst), static_cast<const unsigned char*>(src), n,
          elementBytes);
}

}  // namespace Tarnwicks::FileIO

// Packing and unpacking of bit fields in memory.
#include "bit_fields.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace Tarnwicks::FileIO {

namespace {

// Logical elements are bytes holding 0 or 1.
struct LogicalByte {
  uint8_t v;
};

inline uint64_t loadBig(const unsigned char* p) {
  uint64_t w;
  std::memcpy(&w, p, 8);
  return __builtin_bswap64(w);
}

inline uint64_t loadLittle(const unsigned char* p) {
  uint64_t w;
  std::memcpy(&w, p, 8);
  return w;
}

inline uint64_t lowMask(int bits) {
  return bits >= 64 ? ~uint64_t{0} : (uint64_t{1} << bits) - 1;
}

// The `bits` bits at bit `pos` of the stream (bits 1..64). `Wide` is needed
// when the field may reach into a ninth byte (bits > 57).
template <bool Msb, bool Wide>
inline uint64_t fieldAt(const unsigned char* bytes, uint64_t pos, int bits) {
  const unsigned char* p = bytes + (pos >> 3);
  const unsigned r = static_cast<unsigned>(pos & 7);
  if constexpr (Msb) {
    uint64_t top = loadBig(p) << r;
    if constexpr (Wide) {
      if (r != 0) top |= static_cast<uint64_t>(p[8]) >> (8 - r);
    }
    return top >> (64 - bits);
  } else {
    uint64_t low = loadLittle(p) >> r;
    if constexpr (Wide) {
      if (r != 0) low |= static_cast<uint64_t>(p[8]) << (64 - r);
    }
    return low & lowMask(bits);
  }
}

inline int64_t signExtend(uint64_t v, int bits) {
  if (bits >= 64) return static_cast<int64_t>(v);
  const int shift = 64 - bits;
  return static_cast<int64_t>(v << shift) >> shift;
}

// One value into one element, saturating to the element's range.
template <class T>
inline void storeUnsigned(T* out, uint64_t v) {
  if constexpr (std::is_same_v<T, LogicalByte>) {
    out->v = v != 0;
  } else if constexpr (std::is_floating_point_v<T>) {
    *out = static_cast<T>(v);
  } else {
    constexpr uint64_t top = static_cast<uint64_t>(std::numeric_limits<T>::max());
    *out = static_cast<T>(v > top ? top : v);
  }
}

template <class T>
inline void storeSigned(T* out, int64_t v) {
  if constexpr (std::is_same_v<T, LogicalByte>) {
    out->v = v > 0;
  } else if constexpr (std::is_floating_point_v<T>) {
    *out = static_cast<T>(v);
  } else if constexpr (std::is_unsigned_v<T>) {
    if (v < 0) {
      *out = 0;
    } else {
      storeUnsigned(out, static_cast<uint64_t>(v));
    }
  } else {
    constexpr int64_t lo = std::numeric_limits<T>::min();
    constexpr int64_t hi = std::numeric_limits<T>::max();
    *out = static_cast<T>(v < lo ? lo : (v > hi ? hi : v));
  }
}

template <class T>
inline void storeField(T* out, uint64_t raw, int bits, bool isSigned) {
  if (isSigned) {
    storeSigned(out, signExtend(raw, bits));
  } else {
    storeUnsigned(out, raw);
  }
}

template <class T, bool Msb, bool Wide, bool Signed>
size_t unpackLoop(T* out, const unsigned char* bytes, uint64_t startBit, uint64_t endBit, size_t n,
                  const BitLayout& layout) {
  const int bits = layout.bitCount;
  const uint64_t step = layout.step();
  uint64_t pos = startBit + layout.valueOffset();
  // Whole fields first: the loop the compiler keeps tight.
  size_t whole = 0;
  if (endBit >= pos + bits) whole = std::min<uint64_t>(n, (endBit - pos - bits) / step + 1);
  for (size_t i = 0; i < whole; ++i, pos += step) {
    uint64_t raw = fieldAt<Msb, Wide>(bytes, pos, bits);
    if constexpr (Signed) {
      storeSigned(out + i, signExtend(raw, bits));
    } else {
      storeUnsigned(out + i, raw);
    }
  }
  if (whole == n || pos >= endBit) return whole;
  // A field cut off by the end of the stream: a number of the bits that came.
  const int got = static_cast<int>(endBit - pos);
  uint64_t raw = fieldAt<Msb, Wide>(bytes, pos, bits);
  raw = Msb ? raw >> (bits - got) : raw & lowMask(got);
  storeField(out + whole, raw, got, Signed);
  return whole + 1;
}

// The layout's three choices become template arguments, so that each loop
// is compiled for one case.
template <class T, bool Msb, bool Wide>
size_t unpackSigned(T* out, const unsigned char* bytes, uint64_t startBit, uint64_t endBit,
                    size_t n, const BitLayout& l) {
  return l.isSigned ? unpackLoop<T, Msb, Wide, true>(out, bytes, startBit, endBit, n, l)
                    : unpackLoop<T, Msb, Wide, false>(out, bytes, startBit, endBit, n, l);
}

template <class T, bool Msb>
size_t unpackWidth(T* out, const unsigned char* bytes, uint64_t startBit, uint64_t endBit, size_t n,
                   const BitLayout& l) {
  return l.bitCount > 57 ? unpackSigned<T, Msb, true>(out, bytes, startBit, endBit, n, l)
                         : unpackSigned<T, Msb, false>(out, bytes, startBit, endBit, n, l);
}

template <class T>
size_t unpackAs(void* out, const unsigned char* bytes, uint64_t startBit, uint64_t endBit, size_t n,
                const BitLayout& l) {
  T* o = static_cast<T*>(out);
  return l.msbFirst ? unpackWidth<T, true>(o, bytes, startBit, endBit, n, l)
                    : unpackWidth<T, false>(o, bytes, startBit, endBit, n, l);
}

}  // namespace

size_t unpackFields(kxClassID outClass, void* out, const unsigned char* bytes, uint64_t startBit,
                    uint64_t endBit, size_t n, const BitLayout& layout) {
  switch (outClass) {
    case kxLOGICAL_CLASS:
      return unpackAs<LogicalByte>(out, bytes, startBit, endBit, n, layout);
    case kxCHAR_CLASS:
    case kxUINT16_CLASS:
      return unpackAs<uint16_t>(out, bytes, startBit, endBit, n, layout);
    case kxDOUBLE_CLASS:
      return unpackAs<double>(out, bytes, startBit, endBit, n, layout);
    case kxSINGLE_CLASS:
      return unpackAs<float>(out, bytes, startBit, endBit, n, layout);
    case kxINT8_CLASS:
      return unpackAs<int8_t>(out, bytes, startBit, endBit, n, layout);
    case kxUINT8_CLASS:
      return unpackAs<uint8_t>(out, bytes, startBit, endBit, n, layout);
    case kxINT16_CLASS:
      return unpackAs<int16_t>(out, bytes, startBit, endBit, n, layout);
    case kxINT32_CLASS:
      return unpackAs<int32_t>(out, bytes, startBit, endBit, n, layout);
    case kxUINT32_CLASS:
      return unpackAs<uint32_t>(out, bytes, startBit, endBit, n, layout);
    case kxINT64_CLASS:
      return unpackAs<int64_t>(out, bytes, startBit, endBit, n, layout);
    case kxUINT64_CLASS:
      return unpackAs<uint64_t>(out, bytes, startBit, endBit, n, layout);
    default:
      return 0;
  }
}

// ---- writing -------------------------------------------------------------------------

uint64_t fieldPatternOfInteger(__int128 v, int bitCount, bool isSigned) {
  const uint64_t mask = lowMask(bitCount);
  if (!isSigned) {
    // Taken as a 64-bit pattern: a negative integer has its high bits set.
    uint64_t x = static_cast<uint64_t>(v);
    if (bitCount < 64 && (x >> bitCount) != 0) return mask;
    return x & mask;
  }
  const __int128 top = (__int128{1} << (bitCount - 1)) - 1;
  const __int128 bottom = -(__int128{1} << (bitCount - 1));
  if (v < bottom) return uint64_t{1} << (bitCount - 1);
  if (v > top) return static_cast<uint64_t>(top);
  return static_cast<uint64_t>(v) & mask;
}

uint64_t fieldPattern(double v, int bitCount, bool isSigned) {
  if (std::isnan(v)) return 0;
  const double r = std::round(v);
  __int128 i;
  if (isSigned) {
    if (r >= 9223372036854775808.0) {
      i = std::numeric_limits<int64_t>::max();
    } else if (r < -9223372036854775808.0) {
      i = std::numeric_limits<int64_t>::min();
    } else {
      i = static_cast<int64_t>(r);
    }
  } else {
    if (r <= 0) {
      i = 0;
    } else if (r >= 18446744073709551616.0) {
      i = std::numeric_limits<uint64_t>::max();
    } else {
      i = static_cast<uint64_t>(r);
    }
  }
  return fieldPatternOfInteger(i, bitCount, isSigned);
}

BitPacker::BitPacker(bool msbFirst, uint8_t carryBits, int carryCount, unsigned char* o)
    : msb(msbFirst), out(o) {
  if (carryCount > 0) {
    acc = msb ? (carryBits >> (8 - carryCount)) : (carryBits & lowMask(carryCount));
    pending = carryCount;
    if (pending == 8) {
      out[count++] = static_cast<unsigned char>(acc);
      acc = 0;
      pending = 0;
    }
  }
}

void BitPacker::pushSmall(uint64_t value, int bits) {
  // pending < 8 and bits <= 32: the accumulator never overflows.
  if (msb) {
    acc = (acc << bits) | value;
    pending += bits;
    while (pending >= 8) {
      pending -= 8;
      out[count++] = static_cast<unsigned char>(acc >> pending);
    }
    acc &= lowMask(pending);
  } else {
    acc |= value << pending;
    pending += bits;
    while (pending >= 8) {
      out[count++] = static_cast<unsigned char>(acc);
      acc >>= 8;
      pending -= 8;
    }
  }
}

void BitPacker::push(uint64_t value, int bits) {
  value &= lowMask(bits);
  if (bits <= 32) {
    pushSmall(value, bits);
  } else if (msb) {
    pushSmall(value >> 32, bits - 32);
    pushSmall(value & 0xffffffffu, 32);
  } else {
    pushSmall(value & 0xffffffffu, 32);
    pushSmall(value >> 32, bits - 32);
  }
}

void BitPacker::pushZeros(int bits) {
  while (bits > 0) {
    int k = bits > 32 ? 32 : bits;
    pushSmall(0, k);
    bits -= k;
  }
}

uint8_t BitPacker::pendingBits() const {
  if (pending == 0) return 0;
  return msb ? static_cast<uint8_t>(acc << (8 - pending)) : static_cast<uint8_t>(acc);
}

namespace {

template <class S>
void packAs(BitPacker& packer, const S* src, size_t n, const BitLayout& l) {
  for (size_t i = 0; i < n; ++i) {
    uint64_t pattern;
    if constexpr (std::is_floating_point_v<S>) {
      pattern = fieldPattern(static_cast<double>(src[i]), l.bitCount, l.isSigned);
    } else if constexpr (std::is_same_v<S, LogicalByte>) {
      pattern = fieldPatternOfInteger(src[i].v != 0, l.bitCount, l.isSigned);
    } else {
      pattern = fieldPatternOfInteger(src[i], l.bitCount, l.isSigned);
    }
    if (l.msbFirst && l.extra > 0) packer.pushZeros(l.extra);
    packer.push(pattern, l.bitCount);
    if (!l.msbFirst && l.extra > 0) packer.pushZeros(l.extra);
  }
}

}  // namespace

void packFields(BitPacker& packer, kxClassID srcClass, const void* src, size_t n,
                const BitLayout& layout) {
  switch (srcClass) {
    case kxLOGICAL_CLASS:
      return packAs(packer, static_cast<const LogicalByte*>(src), n, layout);
    case kxCHAR_CLASS:
    case kxUINT16_CLASS:
      return packAs(packer, static_cast<const uint16_t*>(src), n, layout);
    case kxDOUBLE_CLASS:
      return packAs(packer, static_cast<const double*>(src), n, layout);
    case kxSINGLE_CLASS:
      return packAs(packer, static_cast<const float*>(src), n, layout);
    case kxINT8_CLASS:
      return packAs(packer, static_cast<const int8_t*>(src), n, layout);
    case kxUINT8_CLASS:
      return packAs(packer, static_cast<const uint8_t*>(src), n, layout);
    case kxINT16_CLASS:
      return packAs(packer, static_cast<const int16_t*>(src), n, layout);
    case kxINT32_CLASS:
      return packAs(packer, static_cast<const int32_t*>(src), n, layout);
    case kxUINT32_CLASS:
      return packAs(packer, static_cast<const uint32_t*>(src), n, layout);
    case kxINT64_CLASS:
      return packAs(packer, static_cast<const int64_t*>(src), n, layout);
    case kxUINT64_CLASS:
      return packAs(packer, static_cast<const uint64_t*>(src), n, layout);
    default:
      return;
  }
}

}  // namespace Tarnwicks::FileIO

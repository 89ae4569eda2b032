// Bit fields ("ubit12", "bit5", "bit5in8"): the packing and unpacking of
// runs of fields in memory. The streams, the carry and the skips are the
// readers' and writers' business (fread_bits.h, fwrite_transfer.h).
//
// A run of fields is a bit stream over bytes. Byte order 1 (big-endian)
// takes the bits of each byte from the most significant down and a field's
// first bits are its most significant; the other order takes them from the
// least significant up and a field's first bits are its least significant.
// With a container ("bit5in8") each field occupies `bitCount + extra` bits,
// the `extra` ones before the value in order 1 and after it otherwise.
#pragma once

#include <cstddef>
#include <cstdint>

#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

struct BitLayout {
  int bitCount = 0;  // bits of the value, 1..64
  int extra = 0;     // unused bits of the container
  bool msbFirst = false;
  bool isSigned = false;

  uint64_t step() const { return static_cast<uint64_t>(bitCount) + extra; }
  // Bits from the start of a field to the start of its value.
  uint64_t valueOffset() const { return msbFirst ? static_cast<uint64_t>(extra) : 0; }
};

// Slack the unpacker may read past the last byte of the stream; those bytes
// must exist (their values don't matter).
inline constexpr size_t kBitReadSlack = 16;

// Unpacks up to `n` fields of the stream in `bytes`, starting at bit
// `startBit`; the stream ends at bit `endBit`. Each value is stored into
// `out`, an array of class `outClass`, saturating to its range (logical
// takes 1 for a positive value). A field whose value starts at or past
// `endBit` is not produced; one cut off by `endBit` is made from the bits
// that remain, as a number of that many bits. Returns the fields produced.
// Cost: a handful of instructions per field; no allocation.
size_t unpackFields(kxClassID outClass, void* out, const unsigned char* bytes, uint64_t startBit,
                    uint64_t endBit, size_t n, const BitLayout& layout);

// The pattern of `bitCount` bits that a value of an element becomes:
// floating values round half away from zero (NaN gives 0) and stop at the
// ends of the 64-bit range, a negative one giving 0 in an unsigned field;
// integers stand as they are. Then it saturates to the field: an unsigned
// field takes all ones when any bit above it is set; a signed field takes
// its minimum (only the top bit set) or maximum when the value doesn't fit.
uint64_t fieldPattern(double v, int bitCount, bool isSigned);
uint64_t fieldPatternOfInteger(__int128 v, int bitCount, bool isSigned);

// Collects fields into whole bytes. Starts from the `carryCount` bits of a
// part-byte `carryBits` (placed as the carry keeps them: high bits in order
// 1, low bits otherwise; carryCount may be 8).
class BitPacker {
 public:
  BitPacker(bool msbFirst, uint8_t carryBits, int carryCount, unsigned char* out);
  // Appends the low `bits` bits of `value` (bits 1..64).
  void push(uint64_t value, int bits);
  // Appends `bits` zero bits.
  void pushZeros(int bits);
  // Whole bytes written to `out` so far.
  size_t bytes() const { return count; }
  // The part-byte left over, placed as the carry keeps it, and its bits.
  uint8_t pendingBits() const;
  int pendingCount() const { return pending; }

 private:
  void pushSmall(uint64_t value, int bits);  // bits <= 32

  bool msb;
  uint64_t acc = 0;
  int pending = 0;
  unsigned char* out;
  size_t count = 0;
};

// Packs `n` elements of `src` (class `srcClass`) as fields into `out`
// through `packer`. `out` needs room for (n * step + 8) / 8 + 1 bytes.
void packFields(BitPacker& packer, kxClassID srcClass, const void* src, size_t n,
                const BitLayout& layout);

}  // namespace Tarnwicks::FileIO

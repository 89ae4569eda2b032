// libFuzzer target for the bit-field packer and unpacker of fread and
// fwrite ("ubit5", "bit12", "bit5in8", in both byte orders).
//
// Checks, beyond the sanitizers:
//  - a round trip: fields packed from random values unpack to the values'
//    patterns, sign-extended for signed fields, whatever the carry the
//    packing started from;
//  - packing in one run and packing element by element, each run handing
//    its part-byte to the next as the file's carry does, give the same bytes;
//  - unpacking from a bit offset equals unpacking the same bits shifted to
//    the start.
//
// Input: byte 0 the bit count, byte 1 the container's extra bits, byte 2
// the order, sign and starting carry; then 8 bytes per value.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "transfer/bit_fields.h"

namespace {

using namespace Tarnwicks::FileIO;

constexpr size_t kMaxValues = 256;

// The value a field of `bits` bits holding `pattern` stands for.
int64_t fieldValue(uint64_t pattern, int bits, bool isSigned) {
  if (!isSigned || bits == 64) return static_cast<int64_t>(pattern);
  const uint64_t top = uint64_t{1} << (bits - 1);
  return static_cast<int64_t>((pattern ^ top) - top);
}

void check(bool ok) {
  if (!ok) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) return 0;
  BitLayout layout;
  layout.bitCount = data[0] % 64 + 1;
  layout.extra = data[1] % (65 - layout.bitCount);
  layout.msbFirst = (data[2] & 1) != 0;
  layout.isSigned = (data[2] & 2) != 0;
  const int carryCount = (data[2] >> 2) % 8;
  const uint8_t carryBits = 0;  // what the bits before the fields hold is not ours
  data += 3;
  size -= 3;
  const size_t n = std::min(size / 8, kMaxValues);
  if (n == 0) return 0;
  std::vector<int64_t> values(n);
  std::memcpy(values.data(), data, n * 8);

  const size_t room = (n * layout.step() + 8) / 8 + 1 + kBitReadSlack;
  std::vector<unsigned char> whole(room, 0), pieces(room, 0);

  // One run.
  BitPacker packer(layout.msbFirst, carryBits, carryCount, whole.data());
  packFields(packer, kxINT64_CLASS, values.data(), n, layout);
  const size_t bytes = packer.bytes();
  if (packer.pendingCount() > 0) whole[bytes] = packer.pendingBits();
  const uint64_t endBit = carryCount + n * layout.step();

  // Element by element, the part-byte carried over.
  uint8_t carry = carryBits;
  int held = carryCount;
  size_t at = 0;
  for (size_t i = 0; i < n; ++i) {
    BitPacker one(layout.msbFirst, carry, held, pieces.data() + at);
    packFields(one, kxINT64_CLASS, &values[i], 1, layout);
    at += one.bytes();
    carry = one.pendingBits();
    held = one.pendingCount();
  }
  if (held > 0) pieces[at] = carry;
  check(at == bytes && held == packer.pendingCount());
  check(std::memcmp(whole.data(), pieces.data(), room) == 0);

  // Back again.
  std::vector<int64_t> back(n + 1, 0);
  const size_t got = unpackFields(layout.isSigned ? kxINT64_CLASS : kxUINT64_CLASS, back.data(),
                                  whole.data(), carryCount, endBit, n, layout);
  check(got == n);
  for (size_t i = 0; i < n; ++i) {
    const uint64_t pattern = fieldPatternOfInteger(values[i], layout.bitCount, layout.isSigned);
    const int64_t expected = fieldValue(pattern, layout.bitCount, layout.isSigned);
    if (layout.isSigned) {
      check(back[i] == expected);
    } else {
      check(static_cast<uint64_t>(back[i]) == pattern);
    }
  }

  // The first field read from its offset, and from a copy of its bits
  // moved to the start of a fresh stream.
  if (carryCount > 0) {
    std::vector<unsigned char> moved(room, 0);
    BitPacker again(layout.msbFirst, 0, 0, moved.data());
    packFields(again, kxINT64_CLASS, values.data(), n, layout);
    if (again.pendingCount() > 0) moved[again.bytes()] = again.pendingBits();
    std::vector<int64_t> fromStart(n + 1, 0);
    unpackFields(layout.isSigned ? kxINT64_CLASS : kxUINT64_CLASS, fromStart.data(), moved.data(),
                 0, n * layout.step(), n, layout);
    check(std::memcmp(fromStart.data(), back.data(), n * 8) == 0);
  }
  return 0;
}

// Bit fields in memory: unpacking, saturation, packing, and both byte
// orders, against hand-worked bytes and against each other.
#include "transfer/bit_fields.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "transfer/byte_swap.h"

namespace {

using Tarnwicks::FileIO::BitLayout;
using Tarnwicks::FileIO::BitPacker;
using Tarnwicks::FileIO::fieldPattern;
using Tarnwicks::FileIO::fieldPatternOfInteger;
using Tarnwicks::FileIO::kBitReadSlack;
using Tarnwicks::FileIO::packFields;
using Tarnwicks::FileIO::unpackFields;

BitLayout layout(int bits, bool msb, bool isSigned, int extra = 0) {
  BitLayout l;
  l.bitCount = bits;
  l.extra = extra;
  l.msbFirst = msb;
  l.isSigned = isSigned;
  return l;
}

// Unpacks from whole bytes (the stream is all of them) into doubles.
std::vector<double> unpack(std::vector<unsigned char> bytes, size_t n, const BitLayout& l,
                           uint64_t startBit = 0) {
  const uint64_t end = 8 * bytes.size();
  bytes.resize(bytes.size() + kBitReadSlack, 0);
  std::vector<double> out(n);
  out.resize(unpackFields(kxDOUBLE_CLASS, out.data(), bytes.data(), startBit, end, n, l));
  return out;
}

struct UnpackCase {
  std::vector<unsigned char> bytes;
  int bits;
  bool msb;
  bool isSigned;
  int extra;
  size_t n;
  std::vector<double> want;
};

TEST(BitFields, UnpacksHandWorkedBytes) {
  const UnpackCase cases[] = {
      // 0xE5 = 1110 0101
      {{0xE5}, 3, true, false, 0, 2, {7, 1}},
      {{0xE5}, 3, false, false, 0, 2, {5, 4}},
      {{0xE5}, 3, true, true, 0, 2, {-1, 1}},
      {{0xE0}, 3, true, true, 0, 1, {-1}},
      // 12 bits over three bytes: 0xAB 0xCD 0xEF
      {{0xAB, 0xCD, 0xEF}, 12, true, false, 0, 2, {0xABC, 0xDEF}},
      {{0xAB, 0xCD, 0xEF}, 12, false, false, 0, 2, {0xDAB, 0xEFC}},
      // "bit4in8": the value stands after the padding in order 1, before it
      // in the other.
      {{0x5A}, 4, true, false, 4, 1, {0xA}},
      {{0x5A}, 4, false, false, 4, 1, {0xA}},
      {{0x3C}, 2, true, false, 6, 1, {0}},
      {{0x3C}, 2, false, false, 6, 1, {0}},
      // A field cut off by the end is made of the bits that came.
      {{0xE5}, 12, true, false, 0, 3, {0xE5}},
      {{0xE5}, 12, true, true, 0, 1, {-27}},
      {{0xE5}, 12, false, false, 0, 1, {0xE5}},
      // A field whose value would start past the end is not produced.
      {{0xFF}, 4, true, false, 8, 2, {}},
      // 64 bits at an odd offset reach into a ninth byte.
      {{0x80, 0, 0, 0, 0, 0, 0, 0, 0x01}, 64, true, false, 0, 1, {9223372036854775808.0}},
  };
  for (const UnpackCase& c : cases) {
    EXPECT_EQ(unpack(c.bytes, c.n, layout(c.bits, c.msb, c.isSigned, c.extra)), c.want)
        << c.bits << " bits, msb " << c.msb << ", extra " << c.extra;
  }
}

TEST(BitFields, SixtyFourBitFieldsAtEveryOffsetInBothOrders) {
  const uint64_t v = 0xF123456789ABCDEFull;
  for (int offset = 0; offset < 8; ++offset) {
    for (bool msb : {true, false}) {
      std::vector<unsigned char> bytes(9 + kBitReadSlack, 0);
      BitPacker p(msb, 0, 0, bytes.data());
      if (offset) p.pushZeros(offset);
      p.push(v, 64);
      p.pushZeros(8 - (offset ? offset : 8));
      uint64_t got = 0;
      unpackFields(kxUINT64_CLASS, &got, bytes.data(), offset, 72, 1, layout(64, msb, false));
      EXPECT_EQ(got, v) << offset << " " << msb;
    }
  }
}

TEST(BitFields, StoresSaturateToTheResultClass) {
  std::vector<unsigned char> bytes = {0xFF, 0xC0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  uint8_t u8 = 0;
  unpackFields(kxUINT8_CLASS, &u8, bytes.data(), 0, 16, 1, layout(10, true, false));
  EXPECT_EQ(u8, 255);  // 1023 in a 10-bit field
  int8_t i8 = 0;
  unpackFields(kxINT8_CLASS, &i8, bytes.data(), 0, 16, 1, layout(10, true, false));
  EXPECT_EQ(i8, 127);
  uint16_t u16 = 7;
  unpackFields(kxUINT16_CLASS, &u16, bytes.data(), 0, 16, 1, layout(10, true, true));
  EXPECT_EQ(u16, 0);  // -1 has no place in uint16
  uint8_t logical = 7;
  unpackFields(kxLOGICAL_CLASS, &logical, bytes.data(), 0, 16, 1, layout(10, true, true));
  EXPECT_EQ(logical, 0);  // a negative value is false
  unpackFields(kxLOGICAL_CLASS, &logical, bytes.data(), 0, 16, 1, layout(10, true, false));
  EXPECT_EQ(logical, 1);
}

struct PatternCase {
  double value;
  int bits;
  bool isSigned;
  uint64_t want;
};

TEST(BitFields, ValuesSaturateToTheField) {
  const PatternCase cases[] = {
      {9, 3, false, 0b111},
      {5, 3, true, 0b011},
      {-9, 3, true, 0b100},
      {-4, 3, true, 0b100},
      {-1, 3, true, 0b111},
      {3, 3, true, 0b011},
      {NAN, 3, true, 0},
      {NAN, 3, false, 0},
      {-5, 3, false, 0},
      {2.5, 8, false, 3},
      {-2.5, 8, true, 0xFD},
      {2.4999, 8, false, 2},
      {INFINITY, 8, false, 255},
      {-INFINITY, 8, true, 0x80},
      {1e30, 64, true, 0x7FFFFFFFFFFFFFFF},
      {1e30, 64, false, ~0ull},
      {-1e30, 64, true, 0x8000000000000000},
      {1, 1, false, 1},
      {1, 1, true, 0},
      {-1, 1, true, 1},
      {-2, 1, true, 1},
  };
  for (const PatternCase& c : cases) {
    EXPECT_EQ(fieldPattern(c.value, c.bits, c.isSigned), c.want)
        << c.value << " in " << c.bits << (c.isSigned ? " signed" : " unsigned");
  }
  // Integers stand as they are: a negative one has its high bits set, so an
  // unsigned field takes all ones.
  EXPECT_EQ(fieldPatternOfInteger(-1, 3, false), 0b111u);
  EXPECT_EQ(fieldPatternOfInteger(std::numeric_limits<uint64_t>::max(), 64, true),
            0x7FFFFFFFFFFFFFFFull);
  EXPECT_EQ(fieldPatternOfInteger(std::numeric_limits<int64_t>::min(), 64, true),
            0x8000000000000000ull);
}

TEST(BitFields, PackerKeepsThePartByteWhereTheCarryHoldsIt) {
  unsigned char out[4] = {};
  BitPacker msb(true, 0, 0, out);
  msb.push(0b101, 3);
  EXPECT_EQ(msb.bytes(), 0u);
  EXPECT_EQ(msb.pendingCount(), 3);
  EXPECT_EQ(msb.pendingBits(), 0b10100000);
  BitPacker lsb(false, 0, 0, out);
  lsb.push(0b101, 3);
  EXPECT_EQ(lsb.pendingBits(), 0b00000101);
  // Continuing from a carry of 5 bits completes its byte.
  BitPacker more(true, 0b10100000, 3, out);
  more.push(0b11111, 5);
  EXPECT_EQ(more.bytes(), 1u);
  EXPECT_EQ(out[0], 0b10111111);
  // A full carry goes out first.
  BitPacker full(false, 0xAB, 8, out);
  EXPECT_EQ(full.bytes(), 1u);
  EXPECT_EQ(out[0], 0xAB);
}

// Packing then unpacking gives the values back, for every width, both
// orders, with and without a container, from any starting carry.
TEST(BitFields, PackThenUnpackGivesTheValuesBack) {
  std::mt19937_64 rng(12345);
  for (int bits = 1; bits <= 64; ++bits) {
    for (bool msb : {true, false}) {
      for (int extra : {0, 3}) {
        for (bool isSigned : {false, true}) {
          const int carry = static_cast<int>(rng() % 8);
          const size_t n = 37;
          std::vector<int64_t> values(n);
          for (auto& v : values) {
            uint64_t r = rng();
            if (bits < 64) r &= (uint64_t{1} << bits) - 1;
            v = static_cast<int64_t>(r);
            if (isSigned && bits < 64) v = (v << (64 - bits)) >> (64 - bits);
          }
          const BitLayout l = layout(bits, msb, isSigned, extra);
          std::vector<unsigned char> bytes((n * l.step() + 16) / 8 + kBitReadSlack, 0);
          const uint8_t carryBits = msb ? 0xFF << (8 - carry) : (1u << carry) - 1;
          BitPacker p(msb, carry ? carryBits : 0, carry, bytes.data());
          packFields(p, kxINT64_CLASS, values.data(), n, l);
          bytes[p.bytes()] = p.pendingBits();
          const uint64_t end = 8 * p.bytes() + p.pendingCount();
          if (!isSigned) {
            std::vector<uint64_t> back(n);
            ASSERT_EQ(unpackFields(kxUINT64_CLASS, back.data(), bytes.data(), carry, end, n, l), n);
            for (size_t i = 0; i < n; ++i) EXPECT_EQ(back[i], static_cast<uint64_t>(values[i]));
          } else {
            std::vector<int64_t> back(n);
            ASSERT_EQ(unpackFields(kxINT64_CLASS, back.data(), bytes.data(), carry, end, n, l), n);
            EXPECT_EQ(back, values) << bits << " " << msb << " " << extra;
          }
        }
      }
    }
  }
}

TEST(ByteSwap, OnlyTheOtherByteOrderSwapsAndCharNever) {
  using Tarnwicks::FileIO::needsByteSwap;
  // 0 ieee-le, 1 ieee-be, 5 ieee-le.l64, 6 ieee-be.l64 on a little-endian host.
  EXPECT_FALSE(needsByteSwap(kxDOUBLE_CLASS, 0));
  EXPECT_TRUE(needsByteSwap(kxDOUBLE_CLASS, 1));
  EXPECT_FALSE(needsByteSwap(kxINT64_CLASS, 5));
  EXPECT_TRUE(needsByteSwap(kxINT64_CLASS, 6));
  EXPECT_FALSE(needsByteSwap(kxCHAR_CLASS, 1));
}

TEST(ByteSwap, ReversesEachElement) {
  using Tarnwicks::FileIO::swapBytesCopy;
  using Tarnwicks::FileIO::swapBytesInPlace;
  unsigned char b[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  swapBytesInPlace(b, 4, 2);
  EXPECT_EQ(std::vector<int>(b, b + 8), (std::vector<int>{2, 1, 4, 3, 6, 5, 8, 7}));
  unsigned char c[8];
  swapBytesCopy(c, b, 1, 8);
  EXPECT_EQ(std::vector<int>(c, c + 8), (std::vector<int>{7, 8, 5, 6, 3, 4, 1, 2}));
  swapBytesInPlace(c, 2, 4);
  EXPECT_EQ(std::vector<int>(c, c + 8), (std::vector<int>{6, 5, 8, 7, 2, 1, 4, 3}));
  swapBytesInPlace(c, 8, 1);
  EXPECT_EQ(c[0], 6);
}

}  // namespace

// FreadBitConvert: fread of bit fields ("ubit12", "bit5", "bit5in8").
//
// Fields are read in runs: the bytes a run needs come in one read, after
// the bits the file's carry still holds, and are unpacked straight into the
// result. Exactly the bytes that the fields cover are read, so the file's
// position and the part-byte left in the carry are those of reading one
// field at a time. A skip between groups is a count of bits.
#pragma once

#include <vector>

#include "bit_fields.h"
#include "byte_counts.h"
#include "fileio/carry_byte.h"
#include "fread_readers.h"

namespace Tarnwicks::FileIO {

class FreadBitConvert : public FreadReader {
 public:
  using FreadReader::FreadReader;
  void transfer(const FreadSetup& setup) override;
  // The skip is in bits; in bytes it is rounded up.
  int64_t skipLength() const override { return bytesCoveringBits(request_.skip()); }

 private:
  // Reads up to `n` fields into the result; returns those produced. A short
  // read sets `status` and empties the carry.
  size_t readRun(CarryByte& carry, size_t n, const BitLayout& layout);
  // Passes `wanted` bits: from the carry, then by reading or seeking. False
  // (with `status` set) when the file ended first.
  bool skipBits(bool bySeek, CarryByte& carry, int64_t wanted, const FreadSetup& setup);
  // Reads one byte into an empty carry.
  bool fillCarry(CarryByte& carry);
  // Keeps the last `keep` bits of the carry's byte (of the bits it held),
  // or empties it for 0.
  static void keepBits(CarryByte& carry, uint8_t byte, int keep);

  std::vector<unsigned char> bytes_;
};

}  // namespace Tarnwicks::FileIO

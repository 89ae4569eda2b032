// FwriteTransfer: one fwrite call's move of an array's elements into a file,
// in the type the precision names.
//
// One dispatch picks one of five loops:
//   - native, same class, no skip: one write of the array's own memory;
//   - native, same class, with a skip: the direct group loop;
//   - native, another class: the conversion loop;
//   - another machine format: the format loop (conversion, then a byte
//     reversal of each element when the order differs);
//   - bit fields: the bit loop (fwrite_bits.cc).
// A skip comes before each group of `repeat` elements, the first included;
// inside the file it passes over what is there, beyond the end it leaves
// zeros (a hole, where the file can have one). Converting loops work in blocks of at most 1024
// elements through one scratch block, so memory does not grow with the data. A failure of the file
// never raises: `write` returns true and `status` tells why.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "bit_fields.h"
#include "fileio/carry_byte.h"
#include "fileio/stream.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

class FwriteTransfer {
 public:
  FwriteTransfer(FileIO::stream* s, const void* source, kxClassID sourceClass, int format,
                 int outputCode, uint64_t count, int64_t skip);

  // Writes `count` elements. True on failure; `count` then holds the
  // elements written.
  bool write(int bitCount, int64_t repeat, int sizeValue);

  int status = 0;
  FileIO::stream* stream;
  int64_t skip;  // bytes before each group; bits for bit fields
  const unsigned char* source;
  kxClassID sourceClass;
  int format;
  int outputCode;
  uint64_t count;

 private:
  // Writes `n` elements of `elementBytes` from `data` (UTF-16 units through
  // the encoding for char); `written` gets the count. False on a short write.
  bool writeBlock(const void* data, size_t elementBytes, size_t n, size_t& written);
  // Converts `n` elements at `source` into the file's class, reversing their
  // bytes when `swap`, and writes them.
  bool writeConverted(size_t elementBytes, size_t n, bool swap, size_t& written);
  // Size and position for the skips. False (count 0) when the size can't be
  // had.
  bool skipSetup();
  // The next block: at most `limit` (0: no limit) elements, never across a
  // group boundary when there is a skip; `needSkip` tells that the block
  // starts a group. 0 when all is written.
  size_t nextWriteBlock(size_t limit, uint64_t done, uint64_t repeat, bool& needSkip) const;
  // Passes `bytes` bytes: seeks while inside the file, writes zeros beyond.
  // A failure without a code of the stream's own gives `seekCause` for a
  // seek and `writeCause` for a write of zeros.
  bool skipBeforeBlock(int64_t bytes, StreamError seekCause = StreamError::InternalError,
                       StreamError writeCause = StreamError::NoHelp);
  // `bytes` of zeros from the end of the file: a hole where the medium can
  // seek, written zeros where it can't (pipes, devices). A target beyond
  // any file's reach fails with EFBIG.
  bool fillPastEnd(int64_t bytes, StreamError writeCause);

  bool directLoop(size_t elementBytes, uint64_t repeat);
  bool convertingLoop(size_t elementBytes, uint64_t repeat, bool swap);
  bool bitLoop(int bitCount, uint64_t repeat, int sizeValue);
  // The skip of a bit write: `bits` bits through the carry; the gap keeps
  // what the file holds.
  bool skipBits(CarryByte& carry, int64_t bits);
  // Writes `n` elements at `source` as fields.
  bool writeFields(CarryByte& carry, size_t n, const BitLayout& layout, size_t& written);

  kxClassID fileClass = kxUNKNOWN_CLASS;
  int64_t fileSize = 0;
  bool seekAllowed = false;
  std::vector<unsigned char> zeros;    // a skip's zero block, made once
  std::vector<unsigned char> scratch;  // one converted block
};

}  // namespace Tarnwicks::FileIO

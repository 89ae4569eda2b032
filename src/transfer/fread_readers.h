// The reader family of fread: one class per way of moving data from a file
// into the result, each driven by a stop rule (stop_rules.h).
//
//   FreadSameNoSkip    native, same class, no skip: one read straight into
//                      the result's memory.
//   FreadSameWithSkip  native, same class, groups of `repeat` with a skip
//                      after each.
//   FreadDifferent     native, another class: read, then convert.
//   FreadConvert       another machine format: read, reverse the bytes of
//                      each element when the order differs, convert.
//   FreadBitConvert    bit fields (fread_bits.h).
//
// A reader lives for one call. It never throws on a failure of the file: it
// stops, keeps what came, and leaves 0, an errno or a StreamError code in
// its status. Nothing is allocated per element; the scratch memory of a call is
// bounded (a few hundred KiB), whatever the size of the read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fileio/attributes.h"
#include "fileio/output_buffer.h"
#include "fileio/stream.h"
#include "fread_request.h"
#include "result_room.h"
#include "stop_rules.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

class TcodnStream;

// What run() settles before the transfer: how skips are passed, and the
// first block.
struct FreadSetup {
  size_t elementBytes = 0;  // bytes of an element in the file
  bool useSeek = false;     // skips above 8192 bytes are sought past
  int64_t position = 0;     // position when the transfer began
  int64_t blocks = 0;       // reads of `chunk` bytes that pass one skip
  size_t chunk = 0;         // bytes of one such read
  int64_t fileSize = 0;     // size when the transfer began (with a skip)
  size_t blockSize = 0;     // the stop rule's block
  size_t firstBlock = 0;    // `repeat` with a skip, else blockSize
};

// The reader of one fread call. Afterwards the buffer holds what came and
// status() tells why the read stopped early (0 when it did not).
class FreadReader {
 public:
  // `input` outlives the reader.
  FreadReader(stream& input, const FreadRequest& request);
  virtual ~FreadReader();
  FreadReader(const FreadReader&) = delete;
  FreadReader& operator=(const FreadReader&) = delete;

  // Reads; never throws for a failure of the file.
  virtual void run();

  int status() const { return status_; }
  OutputBuffer& buffer() { return buffer_; }
  // Room in place in the buffer; the result builder pads through it.
  ResultRoom& room() { return room_; }

 protected:
  virtual void transfer(const FreadSetup& setup) = 0;
  // The skip in bytes.
  virtual int64_t skipLength() const { return request_.skip(); }
  // Bytes of one element in the file.
  virtual size_t fileElementBytes() const;

  // Starts the carry for this transfer; false (with the status set) when a
  // part-byte left by a bit write could not be flushed.
  bool prepareCarry();
  // Reads `n` elements (or all, when `all`) into `target`, growing it. `got`
  // gets the count. Returns true when `got` differs from `n`; sets the status
  // to the stream's error, or NoHelp for a short read without one.
  bool readBlock(OutputBuffer& target, size_t& got, size_t n, size_t elementBytes, bool all);
  // Passes the skip after a group; true when the transfer must stop.
  bool skipBetween(const FreadSetup& setup);
  // An upper bound of the elements still in the file (0 when unknown), for
  // elements of `elementBytes` in groups of `repeat` with `skipBytes` after
  // each group.
  size_t elementsLeftInFile(size_t elementBytes, size_t repeat, int64_t skipBytes);
  // Sizes the result's first block by what the file still holds.
  void presizeResult(size_t elementBytes, size_t repeat, int64_t skipBytes);
  // Reads up to `n` elements (SIZE_MAX: to the end) straight into the
  // result's blocks, reversing the bytes of each when `swap`. Returns the
  // elements read; stops at the first short read.
  size_t readIntoResult(size_t n, size_t elementBytes, bool swap);

  stream& input_;
  const FreadRequest request_;
  const StopRule stop_;
  int status_ = 0;
  OutputBuffer buffer_;
  ResultRoom room_;
  TcodnStream* text_ = nullptr;  // the stream's text layer, for char reads
  std::vector<unsigned char> skipScratch_;
};

// Native, same class, no skip: the whole read goes straight into the
// result's blocks (one block when the file's size is known).
class FreadSameNoSkip : public FreadReader {
 public:
  using FreadReader::FreadReader;
  void run() override;
  void transfer(const FreadSetup&) override {}
};

class FreadSameWithSkip : public FreadReader {
 public:
  using FreadReader::FreadReader;
  void transfer(const FreadSetup& setup) override;
};

class FreadDifferent : public FreadReader {
 public:
  using FreadReader::FreadReader;
  void transfer(const FreadSetup& setup) override;

 protected:
  // Reads up to `n` elements of the file, converted into the result; the
  // elements that came.
  size_t readPiece(size_t n, size_t elementBytes, bool swap);
  size_t readCharPiece(size_t n);

  std::vector<unsigned char> scratch_;
};

class FreadConvert : public FreadDifferent {
 public:
  using FreadDifferent::FreadDifferent;
  size_t fileElementBytes() const override;
};

// Elements of a piece: enough to keep the C library's calls large, few
// enough that the piece stays in the second-level cache.
size_t freadPieceElements(size_t inBytes, size_t outBytes);

}  // namespace Tarnwicks::FileIO

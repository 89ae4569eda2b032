// fileStream: the stream of an open file, on a C buffered FILE*.
//
// There is no second buffer above the C stream: reads and writes go to it in
// chunks of at most 1 MiB. The file is always in C binary mode; text is the
// business of the encoding layer (TcodnStream).
#pragma once

#include <cstdio>
#include <memory>

#include "fileio/byte_source.h"
#include "fileio/carry_byte.h"
#include "fileio/tcodn_stream.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

class FilePermission;
class fileStream;

// The input of a fileStream as a ByteSource, by the scanner's rules: the
// window is what the C library already holds in its buffer, so a byte costs
// no call, and a refill is one getc.
class FileBytes final : public ByteSource {
 public:
  explicit FileBytes(fileStream& owner);
  void begin() override;
  bool refill() override;
  void putBack(const unsigned char* bytes, size_t n) override;
  void commit() override;
  int failureCode() const override;

 private:
  // Hands the bytes taken from the window to the C library.
  void settle();

  fileStream& owner_;
  const unsigned char* windowStart_ = nullptr;
  // The one-byte window where the C library's buffer can't be reached.
  unsigned char held_ = 0;
};

class fileStream : public TcodnStream {
 public:
  // `file` is not owned. `encoding` may be empty (the default). For a named
  // encoding on an ordinary file the encoding is checked (a warning when the
  // host does not support it). `permission` belongs to the file object.
  fileStream(FILE* file, const char* encoding, const FilePermission* permission);
  ~fileStream() override;

  int getPosition(int64_t& pos) override;
  size_t read(size_t count, void* buffer, size_t size) override;
  size_t write(size_t count, const void* buffer, size_t size) override;
  int vformat(const char* format, va_list* args) override;
  bool atEnd() override;
  bool unread(int64_t n) override;
  void idleHook() override {}
  int readLine(int64_t limit, OutputBuffer& buffer) override;
  // readLine for the common case, with the result made at its final size:
  // a line that lies whole in the C buffer, in UTF-8 of plain ASCII or in a
  // single-byte table encoding, followed by a byte that tells its terminator
  // (CR, LF or a pair). Returns the char array (1 by n, terminator included)
  // and sets `terminator`; null when the line is not of that kind, with
  // nothing consumed, and readLine must be used. Cost: one array, one pass
  // over the bytes, no other allocation.
  kxArray* readWholeLine(int64_t limit, int& terminator);
  int setPosition(int64_t pos) override;
  bool getFileSize(int64_t& size) override;
  // Regular files only: a seek, or in append mode a truncation upwards
  // (appended writes go to the end whatever the position).
  MoveResult moveBeyondEnd(int64_t target) override;
  bool hasFile() override { return file != nullptr; }
  int flush() override;
  void clearError() override;
  void checkEncoding() override;
  CarryByte* carryByte() override { return carry.get(); }
  ByteSource* byteSource() override { return &source; }
  // Large writes ask the file system for their blocks up front (fallocate,
  // size unchanged): it then allocates once instead of page by page.
  void reserveSpace(uint64_t bytes) override;

  // Lets the stream give its C file a larger buffer once the file is read
  // from start to end (see beforeRefill). The caller promises to close the
  // file before the stream is destroyed, since the stream owns that buffer.
  void allowBufferGrowth(bool allow = true) { mayGrowBuffer = allow; }
  static constexpr int kRefillsBeforeGrowing = 16;
  static constexpr size_t kGrownBufferSize = 65536;

  FILE* getFile() const { return file; }
  const FilePermission* getPermission() const { return permission; }
  CarryByte& getCarry() { return *carry; }

  // Sets errorCode from errno, else NoHelp when the C stream has its error flag,
  // else 0 (end of file alone is no error).
  void recordState();
  // The same after a read; a read that failed with an error (a folder, a
  // file open for writing only) also counts as the end of the input, so
  // that a loop until feof ends. clearError() forgets it.
  void recordReadState();
  bool readHasFailed() const { return readFailed; }

 protected:
  // readLine one character at a time, every character through readChars():
  // the rule that the fast path must match, and its fallback.
  int readLineSlow(int64_t limit, OutputBuffer& buffer, int64_t count, int terminator,
                   char16_t previous);
  // getc and ungetc, so that the end-of-file flag is set exactly when no byte
  // follows.
  void peek();
  // Called by the readers of text before they refill the C buffer. A file
  // read on and on (kRefillsBeforeGrowing refills with no seek between)
  // gets a buffer of kGrownBufferSize: a sixteenth of the system calls from
  // then on. Files read in place, a seek before each small read, keep the
  // small buffer, which each seek refills whole.
  void beforeRefill();
  // A seek: reading from start to end starts over.
  void noteSeek() { refillsInARow = 0; }

  FILE* file;
  const FilePermission* permission;
  uint8_t lastByte = 0;
  bool readFailed = false;
  bool mayGrowBuffer = false;
  int refillsInARow = 0;
  struct FreeBlock {
    void operator()(char* p) const;
  };
  // The larger buffer once given; the C file uses it until it is closed.
  std::unique_ptr<char, FreeBlock> grownBuffer;
  std::unique_ptr<CarryByte> carry;
  FileBytes source{*this};

  friend class FileBytes;
};

}  // namespace Tarnwicks::FileIO

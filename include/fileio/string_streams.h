// Streams over strings: inputStringStream reads the UTF-8 text of sscanf,
// outputStringStream collects the output of sprintf in a block that the
// result array adopts.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fileio/byte_source.h"
#include "fileio/tcodn_stream.h"

namespace Tarnwicks::FileIO {

class inputStringStream;

// The input of an inputStringStream as a ByteSource, by the in-place rules:
// the window is all the rest of the text.
class StringBytes final : public ByteSource {
 public:
  explicit StringBytes(inputStringStream& owner);
  void begin() override;
  bool refill() override;
  // Steps back over the last `n` bytes taken: they are the text's own.
  void putBack(const unsigned char* bytes, size_t n) override;
  void commit() override;
  int failureCode() const override { return 0; }

 private:
  inputStringStream& owner_;
};

class inputStringStream : public TcodnStream {
 public:
  // Reads the bytes [text, text + n), which must stay alive; decoded as
  // `encoding` (sscanf passes UTF-8).
  inputStringStream(const char* text, size_t n, const char* encoding = "UTF-8");

  int getPosition(int64_t& pos) override;
  // Copies min(bytes left, count * size) bytes and returns BYTES, not
  // elements: the scan readers count bytes on strings.
  size_t read(size_t count, void* buffer, size_t size) override;
  size_t write(size_t count, const void* buffer, size_t size) override;  // raises
  int vformat(const char* format, va_list* args) override;               // raises
  bool atEnd() override { return current == end; }
  bool unread(int64_t n) override;
  void idleHook() override {}
  int setPosition(int64_t pos) override;
  bool getFileSize(int64_t& size) override;
  // Numbers are read in place, as the C conversions read a text.
  ByteSource* byteSource() override { return &source; }

  // The count of UTF-16 units of the whole text.
  size_t unitCount();

  const char* begin;
  const char* current;
  const char* end;

 private:
  StringBytes source{*this};
};

class outputStringStream : public TcodnStream {
 public:
  // sprintf passes "UTF-16": the units are stored as they stand.
  explicit outputStringStream(const char* encoding = "UTF-16");
  ~outputStringStream() override;

  int getPosition(int64_t& pos) override;
  size_t read(size_t count, void* buffer, size_t size) override;  // raises
  // Appends the bytes, growing the block as needed (amortised O(1) a byte).
  size_t write(size_t count, const void* buffer, size_t size) override;
  int vformat(const char* format, va_list* args) override;
  bool atEnd() override { return true; }
  // Moves the cursor back `n` bytes; true.
  bool unread(int64_t n) override;
  void idleHook() override {}

  // Bytes written so far.
  size_t size() const { return static_cast<size_t>(cursor - begin); }
  const char* data() const { return begin; }
  // Gives up the contents: a kxMallocEx block (null when empty) that the
  // caller adopts with kxSetData, and its size in bytes. The stream is empty
  // afterwards.
  void* release(size_t& bytes);
  // Forgets the contents without freeing the block (to reuse it per cell).
  void clear() { cursor = begin; }

  char* begin = nullptr;
  char* capacityEnd = nullptr;
  char* cursor = nullptr;

 private:
  void makeRoom(size_t bytes);
};

}  // namespace Tarnwicks::FileIO

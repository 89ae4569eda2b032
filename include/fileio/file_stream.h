// fileStream: the stream of an open file, on a C buffered FILE*.
//
// There is no second buffer above the C stream: reads and writes go to it in
// chunks of at most 1 MiB. The file is always in C binary mode; text is the
// business of the encoding layer (TcodnStream).
#pragma once

#include <cstdio>
#include <memory>

#include "fileio/carry_byte.h"
#include "fileio/safe_sized_string.h"
#include "fileio/tcodn_stream.h"

namespace Tarnwicks::FileIO {

class FilePermission;

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
  uint64_t readOctal(int width, int& error, bool& negative) override;
  uint64_t readHex(int width, int& error, bool& negative) override;
  uint64_t readUnsigned(int width, int& error, bool& negative) override;
  uint64_t readSigned(int width, int& error, bool& negative) override;
  uint64_t readAnyBase(int width, int& error, bool& negative) override;
  double readDouble(int width, int& status) override;
  void markPosition() override;
  void returnToMark() override;
  int readLine(int64_t limit, OutputBuffer& buffer) override;
  int setPosition(int64_t pos) override;
  bool getFileSize(int64_t& size) override;
  bool hasFile() override { return file != nullptr; }
  int flush() override;
  void clearError() override;
  void checkEncoding() override;
  CarryByte* carryByte() override { return carry.get(); }
  // Large writes ask the file system for their blocks up front (fallocate,
  // size unchanged): it then allocates once instead of page by page.
  void reserveSpace(uint64_t bytes) override;

  FILE* getFile() const { return file; }
  const FilePermission* getPermission() const { return permission; }
  CarryByte& getCarry() { return *carry; }

  // Sets errorCode from errno, else NoHelp when the C stream has its error flag,
  // else 0 (end of file alone is no error).
  void recordState();

 protected:
  // readLine exactly as the character-at-a-time definition: every character
  // through readChars(). The fast path falls back to it.
  int readLineSlow(int64_t limit, OutputBuffer& buffer, int64_t count, int terminator,
                   char16_t previous);
  // getc and ungetc, so that the end-of-file flag is set exactly when no byte
  // follows.
  void peek();
  uint64_t readInteger(int base, bool anyBase, bool isSigned, int width, int& error,
                       bool& negative);

  FILE* file;
  const FilePermission* permission;
  int64_t mark = 0;
  uint8_t lastByte = 0;
  std::unique_ptr<CarryByte> carry;
  SafeSizedStringT<char> digits;
};

}  // namespace Tarnwicks::FileIO

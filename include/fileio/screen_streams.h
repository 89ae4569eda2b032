// The streams of the three standard files. Standard input cannot be read by
// this library (reads raise "notimplemented_mx"); standard output and error
// write through the host's console, error output inside KVErr so that the
// current console stream is left as it was.
#pragma once

#include "fileio/file_stream.h"

namespace Tarnwicks::FileIO {

class screenStreamBase : public fileStream {
 public:
  // All screen streams are made with the encoding "UTF-16": their text goes
  // to the console as UTF-16 units.
  screenStreamBase(FILE* file, const FilePermission* permission);

  int getPosition(int64_t& pos) override;  // -1, reported as success
  size_t read(size_t count, void* buffer, size_t size) override;
  size_t write(size_t count, const void* buffer, size_t size) override;
  int vformat(const char* format, va_list* args) override;
  bool atEnd() override { return false; }
  bool unread(int64_t n) override;
  void idleHook() override;
  bool isInteractive() override { return true; }
  // Standard input is not read by number either.
  ByteSource* byteSource() override { return nullptr; }
  int setPosition(int64_t pos) override;  // always fails: -1
  bool getFileSize(int64_t& size) override;
  bool hasFile() override { return true; }
  int flush() override;
  bool isConsole() override { return true; }
  void clearError() override { errorCode = 0; }
  // printf-style output to the console; not done by this base.
  virtual int formatToConsole(const char* format, ...);
};

class outputScreenStream : public screenStreamBase {
 public:
  using screenStreamBase::screenStreamBase;

  // Narrow bytes to the console. A zero byte is stepped over, not printed.
  size_t write(size_t count, const void* buffer, size_t size) override;
  // Formats into a block of formatBufferSize + 1 bytes (measured when 0).
  int vformat(const char* format, va_list* args) override;
  void idleHook() override {}
  size_t writeChars(size_t count, const char16_t* chars) override;
  int flush() override;
  // Formats into a block of formatBufferSize + 1 bytes and prints it; the
  // characters printed, 0 when formatting failed.
  virtual int vformatToConsole(const char* format, va_list* args);

  uint64_t formatBufferSize = 0;
  uint64_t consoleCount = 0;
};

class stdErrStream : public outputScreenStream {
 public:
  using outputScreenStream::outputScreenStream;

  size_t write(size_t count, const void* buffer, size_t size) override;
  int vformat(const char* format, va_list* args) override;
  size_t writeChars(size_t count, const char16_t* chars) override;
  int flush() override;
};

}  // namespace Tarnwicks::FileIO

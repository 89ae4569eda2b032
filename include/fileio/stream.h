// stream: the one interface through which every reader and writer of the
// library touches a file, the console or a string.
//
// Failures of the medium never raise here: an operation returns short and
// leaves a number in errorCode (0, a positive errno, or a negative code
// -1..-45 of the "KORVAN:FileIO" catalogue). The owner of the stream moves
// it to the file's lastError. Only construction and the operations a stream
// does not support raise.
//
// The virtual operations are declared in their fixed order. Slots 0-17 are
// the byte and number interface; 18 is the encoded text write; 19-26 belong
// to file-backed streams and have neutral bodies here for the string streams.
#pragma once

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>

#include "fileio/carry_byte.h"
#include "twhost/stream_errors.h"

namespace Tarnwicks::FileIO {

class OutputBuffer;

// What getPosition gives for a medium without positions (the console), and
// what ftell reports when the position can't be had.
inline constexpr int64_t kUnknownPosition = -1;

// errno when the last call of the C library set it, else `fallback`.
inline int errnoOr(StreamError fallback) {
  return errno != 0 ? errno : code(fallback);
}

class stream {
 public:
  stream() = default;
  stream(const stream&) = delete;
  stream& operator=(const stream&) = delete;
  virtual ~stream();

  // 2: the byte position into `pos`; 0 on success, else non-zero with
  // errorCode set.
  virtual int getPosition(int64_t& pos) = 0;
  // 3: reads up to `count` elements of `size` bytes; returns elements read.
  // End of input alone leaves errorCode at 0.
  virtual size_t read(size_t count, void* buffer, size_t size) = 0;
  // 4: writes `count` elements of `size` bytes; returns elements written.
  virtual size_t write(size_t count, const void* buffer, size_t size) = 0;
  // 5: formats like vfprintf; characters written, or negative on failure.
  virtual int vformat(const char* format, va_list* args) = 0;
  // 6: the end-of-file flag of the medium (set only by a read that failed).
  virtual bool atEnd() = 0;
  // 7: gives back the last `n` bytes read; false on failure.
  virtual bool unread(int64_t n) = 0;
  // 8: called by interactive readers between items.
  virtual void idleHook() = 0;
  // 9
  virtual bool isInteractive() { return false; }

  // 10-14: the integer readers of fscanf. Skip white space, take a sign, then
  // digits of the base (readAnyBase: 0 octal, 0x hexadecimal, else decimal).
  // `width` < 0 means none; the sign and prefix count against it. `negative`
  // tells the sign; the magnitude is returned. `error` gets -9 when digits
  // were seen but nothing converted, or errno/-1 when no digit came (and then
  // what was taken is given back).
  virtual uint64_t readOctal(int width, int& error, bool& negative) = 0;
  virtual uint64_t readHex(int width, int& error, bool& negative) = 0;
  virtual uint64_t readUnsigned(int width, int& error, bool& negative) = 0;
  virtual uint64_t readSigned(int width, int& error, bool& negative) = 0;
  virtual uint64_t readAnyBase(int width, int& error, bool& negative) = 0;
  // 15: reads a floating number. The caller presets `status` to 0x7fffffff
  // (success); "inf"/"nan" forms return with it untouched; a partial special
  // word gives status -1 and -1.0; a failed conversion leaves the error
  // number (or -1) in status.
  virtual double readDouble(int width, int& status) = 0;
  // 16, 17: remember the position, and return to it.
  virtual void markPosition() = 0;
  virtual void returnToMark() = 0;

  // 18: writes UTF-16 units encoded in the stream's encoding; returns the
  // units written (0 when the bytes didn't all go out on a variable-width
  // encoding). Characters the encoding lacks set errorCode -37 and are
  // replaced; the call goes on.
  virtual size_t writeChars(size_t count, const char16_t* chars) = 0;

  // 19: reads one line into `buffer` (class char), terminator included: LF,
  // CR, CR LF or LF CR. `limit` is a count of characters, -1 for none; a
  // limit below 1 reads nothing. Returns the terminator's length (0 when the
  // line ended without one). Afterwards atEnd() is true exactly when no byte
  // follows. Cost: amortised O(1) per character, no per-character allocation.
  virtual int readLine(int64_t limit, OutputBuffer& buffer);
  // 20: moves to a byte position; 0 on success.
  virtual int setPosition(int64_t pos);
  // 21: the size of the medium in bytes; false when it can't be had.
  virtual bool getFileSize(int64_t& size);
  // 22: true when a C file stands behind the stream.
  virtual bool hasFile() { return false; }
  // 23: 0 on success.
  virtual int flush() { return 0; }
  // 24: true for the screen streams.
  virtual bool isConsole() { return false; }
  // 25: clears errorCode and the medium's error and end-of-file flags.
  virtual void clearError() { errorCode = 0; }
  // 26: warns when the encoding is not one the host supports.
  virtual void checkEncoding() {}

  // The part-byte of bit transfers; null for streams without one.
  virtual CarryByte* carryByte() { return nullptr; }

  // Announces that `bytes` are about to be written at the current position,
  // so that the medium can make room for them at once. Only a hint: the
  // default, and any medium that can't, does nothing.
  virtual void reserveSpace(uint64_t /*bytes*/) {}

  // ---- transfers built on read(), for fread --------------------------------
  // Reads `n` elements into `buffer` (whose element size must be
  // `elementBytes`), reserving room as it goes, until n came or a read gave 0.
  // Returns the elements read.
  size_t readCount(size_t n, OutputBuffer& buffer, size_t elementBytes);
  // Reads to the end of input, growing the buffer's blocks. Returns the
  // elements read. Data go straight into the buffer's blocks, without a copy.
  size_t readToEnd(OutputBuffer& buffer, size_t elementBytes);

  // printf-style convenience over vformat().
  int format(const char* format, ...) __attribute__((format(printf, 2, 3)));

  // errorCode, or `fallback` when the medium left none: a transfer that came
  // short always reports a cause.
  int errorOr(StreamError fallback) const { return errorOr(code(fallback)); }
  int errorOr(int fallback) const { return errorCode != 0 ? errorCode : fallback; }

  // Sets errorCode to `e`.
  void setError(StreamError e) { errorCode = code(e); }

  int errorCode = 0;
  // Bytes written since the caller last zeroed it; fprintf's result.
  uint64_t bytesWritten = 0;

 protected:
  // Raises the error of an operation this kind of stream does not do.
  [[noreturn]] static void notImplemented();
};

}  // namespace Tarnwicks::FileIO

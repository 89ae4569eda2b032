// stream: the one interface through which every reader and writer of the
// library touches a file, the console or a string.
//
// Failures of the medium never raise here: an operation returns short and
// leaves a number in errorCode (0, a positive errno, or a StreamError code
// of the "KORVAN:FileIO" catalogue). The owner of the stream moves it to the
// file's lastError. Only construction and the operations a stream does not
// support raise.
//
// The operations come in groups: bytes in and out, positions, text through
// the stream's encoding, lines, and what the medium can do. Numbers are not
// read here but by the free functions of number_readers.h, through the
// stream's ByteSource; characters are decoded by its text layer.
#pragma once

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>

#include "fileio/carry_byte.h"
#include "twhost/stream_errors.h"

namespace Tarnwicks::FileIO {

class ByteSource;
class OutputBuffer;
class TcodnStream;

// What getPosition gives for a medium without positions (the console), and
// what ftell reports when the position can't be had.
inline constexpr int64_t kUnknownPosition = -1;

// errno when the last call of the C library set it, else `fallback`.
inline int errnoOr(StreamError fallback) {
  return errno != 0 ? errno : code(fallback);
}

// True for the codes of text that the encoding could not carry as it
// stood (InvalidChar to UnknownError): the text went on with a substitute,
// and the code is what the user is told.
inline bool isTextFault(int c) {
  return c <= code(StreamError::InvalidChar) && c >= code(StreamError::UnknownError);
}

class stream {
 public:
  stream() = default;
  stream(const stream&) = delete;
  stream& operator=(const stream&) = delete;
  virtual ~stream();

  // ---- bytes ---------------------------------------------------------------
  // Reads up to `count` elements of `size` bytes; returns elements read.
  // End of input alone leaves errorCode at 0.
  virtual size_t read(size_t count, void* buffer, size_t size) = 0;
  // Writes `count` elements of `size` bytes; returns elements written.
  virtual size_t write(size_t count, const void* buffer, size_t size) = 0;
  // Formats like vfprintf; characters written, or negative on failure.
  virtual int vformat(const char* format, va_list* args) = 0;
  // Gives back the last `n` bytes read; false on failure.
  virtual bool unread(int64_t n) = 0;
  // The end-of-file flag of the medium (set only by a read that failed).
  virtual bool atEnd() = 0;

  // ---- positions -----------------------------------------------------------
  // The byte position into `pos`; 0 on success, else non-zero with
  // errorCode set.
  virtual int getPosition(int64_t& pos) = 0;
  // Moves to a byte position; 0 on success.
  virtual int setPosition(int64_t pos);
  // The size of the medium in bytes; false when it can't be had.
  virtual bool getFileSize(int64_t& size);
  // Moves to `target`, at or past the end, so that the next write leaves a
  // hole that reads as zeros and takes no room on the disk. kMoved when
  // done; kCannotMove when the medium can't (a pipe, a device: the caller
  // writes the zeros); kMoveFailed with errorCode set (EFBIG for a target
  // beyond the largest file the system allows).
  enum MoveResult { kMoved, kCannotMove, kMoveFailed };
  virtual MoveResult moveBeyondEnd(int64_t /*target*/) { return kCannotMove; }

  // ---- text ----------------------------------------------------------------
  // Writes UTF-16 units encoded in the stream's encoding; returns the units
  // written (0 when the bytes didn't all go out on a variable-width
  // encoding). Characters the encoding lacks set errorCode InvalidChar and
  // are replaced; the call goes on.
  virtual size_t writeChars(size_t count, const char16_t* chars) = 0;
  // Reads one line into `buffer` (class char), terminator included: LF, CR,
  // CR LF or LF CR. `limit` is a count of characters, -1 for none; a limit
  // below 1 reads nothing. Returns the terminator's length (0 when the line
  // ended without one). Afterwards atEnd() is true exactly when no byte
  // follows. Cost: amortised O(1) per character, no per-character
  // allocation.
  virtual int readLine(int64_t limit, OutputBuffer& buffer);

  // ---- the medium ----------------------------------------------------------
  // Called by interactive readers between items.
  virtual void idleHook() = 0;
  // True for the console, whose reads wait for a person.
  virtual bool isInteractive() { return false; }
  // True when a C file stands behind the stream.
  virtual bool hasFile() { return false; }
  // Writes out what the medium buffers; 0 on success.
  virtual int flush() { return 0; }
  // True for the screen streams.
  virtual bool isConsole() { return false; }
  // Clears errorCode and the medium's error and end-of-file flags.
  virtual void clearError() { errorCode = 0; }
  // Warns when the encoding is not one the host supports.
  virtual void checkEncoding() {}
  // Announces that `bytes` are about to be written at the current position,
  // so that the medium can make room for them at once. Only a hint: the
  // default, and any medium that can't, does nothing.
  virtual void reserveSpace(uint64_t /*bytes*/) {}

  // ---- what the stream offers beyond bytes --------------------------------
  // The part-byte of bit transfers; null for streams without one.
  virtual CarryByte* carryByte() { return nullptr; }
  // The input as a window of bytes, for the number readers; null for a
  // stream that can't be read that way (the screen, an output string).
  virtual ByteSource* byteSource() { return nullptr; }
  // The layer that decodes the stream's bytes into UTF-16 and encodes them
  // back; null for a stream without an encoding.
  virtual TcodnStream* textLayer() { return nullptr; }

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
  int errorOr(StreamError fallback) const { return errorCode != 0 ? errorCode : code(fallback); }
  // Sets errorCode to `e`.
  void setError(StreamError e) { errorCode = code(e); }

  // Raises the error of an operation this kind of stream does not do.
  [[noreturn]] static void notImplemented();

  int errorCode = 0;
  // Bytes written since the caller last zeroed it; fprintf's result.
  uint64_t bytesWritten = 0;
};

}  // namespace Tarnwicks::FileIO

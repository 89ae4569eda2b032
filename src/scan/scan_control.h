// scanControl: runs a scan format's pieces over a stream, cycling through
// the format until the size is met, the input ends or a piece fails.
//
// The size counts conversions: a number adds 1, and so does a %s, %c or %[
// whatever its length, so the buffer can hold more elements than the count.
// A format that stores nothing (literals alone, or skipped conversions)
// ends after one pass, or after `size` passes: a scan never loops without
// reading.
#pragma once

#include <cstdint>

#include "fileio/output_buffer.h"
#include "fileio/stream.h"
#include "scan_format.h"

namespace Tarnwicks::FileIO {

// The blocks of a scan's OutputBuffer, in elements: first, smallest,
// largest.
inline constexpr size_t kScanFirstBlock = 1024;
inline constexpr size_t kScanMinBlock = 64;
inline constexpr size_t kScanMaxBlock = 8388608;

class scanControl {
 public:
  // `count` holds the size on entry (ignored when `unlimited`) and the
  // conversions stored afterwards; the caller reads it after scan().
  scanControl(const ustring& format, stream& s, uint64_t* count, bool unlimited);
  virtual ~scanControl() = default;
  scanControl(const scanControl&) = delete;
  scanControl& operator=(const scanControl&) = delete;

  // True when the stream's text is decoded through its own encoding.
  virtual bool convertsText() const { return false; }

  // True for a normal end (the size met, or the input ended after at least
  // one whole pass of the format), false when the input ran out or a read
  // failed before that. scanError holds the code of what ended it: 0 for
  // the end of input or a size met.
  bool scan();

  OutputBuffer& buffer() { return buffer_; }
  scanFormatParser& format() { return format_; }

  int scanError = 0;
  uint64_t piecesRead = 0;

 private:
  // Reads one piece; false with scanError set when it failed.
  bool apply(finFormatPiece& piece);

  uint64_t sizeLimit;
  stream& stream_;
  uint64_t* count;
  scanFormatParser format_;
  OutputBuffer buffer_;
  bool unlimited;
};

class fscanfScanControl final : public scanControl {
 public:
  using scanControl::scanControl;
  bool convertsText() const override { return true; }
};

class sscanfScanControl final : public scanControl {
 public:
  using scanControl::scanControl;
};

}  // namespace Tarnwicks::FileIO

// The text of a char array whose units are all ASCII, read as bytes: the
// units are narrowed a block at a time behind a CharStream<char>, so that
// the read takes the same byte path as a UTF-8 file and the text is never
// copied whole.
//
// A unit is a byte here, so places, widths and %c counts are the same in
// the two forms; the caller checks that every unit is below 128 first (which
// also rules out the end marker U+FFFF). Like a file's source, the window
// drops what was consumed once a block or more of it lies behind the place,
// and grows to hold a field longer than a block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "char_stream.h"

namespace textscan {

// Whether every one of the `n` units is ASCII. Stops at the first block
// that is not, so text beyond ASCII costs little to turn away.
bool allAsciiUnits(const char16_t* units, size_t n);

class NarrowedText final : public Refiller<char> {
 public:
  // Reads `units[0, size)` through `stream`, from the start.
  NarrowedText(const char16_t* units, size_t size, CharStream<char>& stream);
  ~NarrowedText() override;
  NarrowedText(const NarrowedText&) = delete;

  bool more(CharStream<char>& stream, size_t wanted) override;
  void rewind();
  // The units consumed from the start of the text.
  uint64_t position() const;

 private:
  void dropConsumed();

  const char16_t* units_;
  size_t size_;
  CharStream<char>& stream_;
  std::unique_ptr<char[]> buffer_;
  size_t capacity_ = 0;
  size_t count_ = 0;      // bytes in the buffer
  size_t next_ = 0;       // the first unit not yet narrowed
  uint64_t dropped_ = 0;  // bytes dropped from the front so far
};

}  // namespace textscan

// The bytes a C FILE holds for reading, reached without a call per byte.
//
// With glibc the read buffer of a FILE is [_IO_read_ptr, _IO_read_end), and
// advancing _IO_read_ptr is what getc does: positions, ungetc and the
// end-of-file flag stay consistent. A FILE that is writing has an empty read
// buffer, and the refill (a getc) switches it to reading as getc would.
// Elsewhere the buffer can't be reached: kHaveBufferAccess is false, and
// callers read through the C library instead.
#pragma once

#include <cstdio>

namespace Tarnwicks::FileIO {

#if defined(__GLIBC__)
struct BufferedBytes {
  // glibc's flag for a FILE reading from its put-back area (_IO_IN_BACKUP).
  static constexpr int kInPutBackArea = 0x100;
  FILE* f;
  const unsigned char* begin() const {
    return reinterpret_cast<const unsigned char*>(f->_IO_read_ptr);
  }
  const unsigned char* end() const {
    return reinterpret_cast<const unsigned char*>(f->_IO_read_end);
  }
  // Takes the bytes before `p`, which lies in [begin(), end()].
  void consume(const unsigned char* p) {
    f->_IO_read_ptr = reinterpret_cast<char*>(const_cast<unsigned char*>(p));
  }
  // True while the C library reads from its put-back area (after more
  // ungetc than the buffer holds) instead of its buffer.
  bool inPutBackArea() const { return (f->_flags & kInPutBackArea) != 0; }
  // Refills an empty buffer. False at the end of the file or on an error.
  bool refill() {
    int c = getc_unlocked(f);
    if (c == EOF) return false;
    ungetc(c, f);  // steps back inside the buffer just filled
    return true;
  }
};
constexpr bool kHaveBufferAccess = true;
#else
struct BufferedBytes {
  FILE* f;
  const unsigned char* begin() const { return nullptr; }
  const unsigned char* end() const { return nullptr; }
  void consume(const unsigned char*) {}
  bool inPutBackArea() const { return true; }
  bool refill() { return false; }
};
constexpr bool kHaveBufferAccess = false;
#endif

}  // namespace Tarnwicks::FileIO

// FileBytes: a file's input as a window onto the C library's read buffer.
//
// The bytes a reader takes from the window are handed to the C library
// (its read pointer moved past them) before every refill, put-back and
// commit, so the FILE always stands where the reader stands whenever it is
// asked. Where the buffer can't be reached the window is one byte, fetched
// by getc and given back by ungetc when it wasn't taken.
#include <cerrno>

#include "c_file_buffer.h"
#include "fileio/file_stream.h"

namespace Tarnwicks::FileIO {

FileBytes::FileBytes(fileStream& owner)
    : ByteSource(NumberRules::Scanner, owner.errorCode), owner_(owner) {}

void FileBytes::begin() {
  BufferedBytes buffer{owner_.file};
  next = windowStart_ = buffer.begin();
  end = buffer.end();
}

void FileBytes::settle() {
  if (next == windowStart_) return;
  // unread(1) gives the last byte back by ungetc when it knows it.
  owner_.lastByte = next[-1];
  if (kHaveBufferAccess) {
    BufferedBytes{owner_.file}.consume(next);
  }
  windowStart_ = next;
}

bool FileBytes::refill() {
  settle();
  if (kHaveBufferAccess) {
    owner_.beforeRefill();
    if (!BufferedBytes{owner_.file}.refill()) {
      next = end = windowStart_ = nullptr;
      return false;
    }
    begin();
    return true;
  }
  int c = getc_unlocked(owner_.file);
  if (c == EOF) {
    next = end = windowStart_ = nullptr;
    return false;
  }
  held_ = static_cast<unsigned char>(c);
  next = windowStart_ = &held_;
  end = &held_ + 1;
  return true;
}

void FileBytes::putBack(const unsigned char* bytes, size_t n) {
  commit();
  // The C library takes them back in the reverse order; where they are the
  // bytes just before its read pointer, it only steps the pointer back.
  for (size_t i = n; i-- > 0;) ungetc(bytes[i], owner_.file);
  owner_.lastByte = 0;
  begin();
}

void FileBytes::commit() {
  settle();
  if (!kHaveBufferAccess && next != end) {
    // The one byte looked at and not taken goes back to the C library.
    ungetc(held_, owner_.file);
    next = end = windowStart_ = nullptr;
  }
}

int FileBytes::failureCode() const {
  if (errno != 0) return errno;
  return owner_.file != nullptr && ferror(owner_.file) ? code(StreamError::NoHelp) : 0;
}

}  // namespace Tarnwicks::FileIO

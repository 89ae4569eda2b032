// The neutral bodies of stream, and the transfers that fread builds on read().
#include "fileio/stream.h"

#include "fileio/output_buffer.h"
#include "twhost/errors.h"

namespace Tarnwicks::FileIO {

stream::~stream() = default;

void stream::notImplemented() {
  kxThrowId("KORVAN:legacy_two_part", "notimplemented_mx");
}

int stream::readLine(int64_t, OutputBuffer&) {
  notImplemented();
}

int stream::setPosition(int64_t) {
  return -1;
}

bool stream::getFileSize(int64_t&) {
  return false;
}

size_t stream::readCount(size_t n, OutputBuffer& buffer, size_t elementBytes) {
  size_t got = 0;
  while (got < n) {
    size_t want = n - got;
    void* room = buffer.reserve(want);
    size_t came = read(want, room, elementBytes);
    buffer.commit(came);
    got += came;
    if (came == 0) break;
  }
  return got;
}

size_t stream::readToEnd(OutputBuffer& buffer, size_t elementBytes) {
  size_t got = 0;
  for (;;) {
    buffer.grow();
    size_t want = buffer.getBlockSize();
    void* room = buffer.reserve(want);
    size_t came = read(want, room, elementBytes);
    buffer.commit(came);
    got += came;
    if (came < want) break;
  }
  return got;
}

int stream::format(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int n = vformat(fmt, &args);
  va_end(args);
  return n;
}

}  // namespace Tarnwicks::FileIO

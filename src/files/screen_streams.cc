// The streams of the standard files: reading standard input is not this
// library's business, and the two output streams go through the console.
#include "fileio/screen_streams.h"

#include <algorithm>
#include <climits>
#include <cstdio>

#include "twhost/console.h"
#include "twhost/errors.h"
#include "twhost/kx_memory.h"

namespace Tarnwicks::FileIO {

using services::io::KVStream;

namespace {

// Bytes the console's UTF-8 takes for these units.
uint64_t utf8Length(const char16_t* s, size_t n) {
  uint64_t bytes = 0;
  for (size_t i = 0; i < n; ++i) {
    char16_t u = s[i];
    if (u < 0x80) {
      bytes += 1;
    } else if (u < 0x800) {
      bytes += 2;
    } else if ((u & 0xFC00) == 0xD800 && i + 1 < n && (s[i + 1] & 0xFC00) == 0xDC00) {
      bytes += 4;
      ++i;
    } else {
      bytes += 3;
    }
  }
  return bytes;
}

// Adds the console's UTF-8 bytes of the `n` units it took from `chars` to
// the stream's counts; returns `n`.
size_t countOnConsole(outputScreenStream& s, const char16_t* chars, size_t n) {
  uint64_t bytes = utf8Length(chars, n);
  s.consoleCount += bytes;
  s.bytesWritten += bytes;
  return n;
}

// Runs a console write inside KVErr and puts the current stream back.
template <class F>
auto onErrorStream(F&& f) {
  KVStream::push(KVStream::KVOut, KVStream::KVErr);
  auto result = f();
  KVStream::flush(KVStream::KVOut);
  KVStream::pop();
  return result;
}

}  // namespace

screenStreamBase::screenStreamBase(FILE* f, const FilePermission* perm)
    : fileStream(f, "UTF-16", perm) {}

int screenStreamBase::getPosition(int64_t& pos) {
  pos = kUnknownPosition;
  return 0;
}
size_t screenStreamBase::read(size_t, void*, size_t) {
  notImplemented();
}
size_t screenStreamBase::write(size_t, const void*, size_t) {
  notImplemented();
}
int screenStreamBase::vformat(const char*, va_list*) {
  notImplemented();
}
bool screenStreamBase::unread(int64_t) {
  notImplemented();
}
void screenStreamBase::idleHook() {
  notImplemented();
}
int screenStreamBase::setPosition(int64_t) {
  return -1;
}
bool screenStreamBase::getFileSize(int64_t&) {
  notImplemented();
}
int screenStreamBase::flush() {
  notImplemented();
}
int screenStreamBase::formatToConsole(const char*, ...) {
  notImplemented();
}

size_t outputScreenStream::write(size_t count, const void* buffer, size_t size) {
  const char* text = static_cast<const char*>(buffer);
  const size_t total = count * size;
  // The console prints C strings: a zero byte would end the text, so each
  // piece stops there and the zero byte itself is stepped over.
  size_t offset = 0;
  while (offset < total) {
    int piece = static_cast<int>(std::min<size_t>(total - offset, INT_MAX));
    int printed = utPrintf("%.*s", piece, text + offset);
    if (printed < 0) break;
    offset += static_cast<size_t>(printed);
    if (offset < total && text[offset] == '\0') {
      ++offset;
      utPrintf("%s", "");
    }
  }
  consoleCount += total;
  bytesWritten += total;
  return count;
}

int outputScreenStream::vformat(const char* format, va_list* args) {
  return vformatToConsole(format, args);
}

int outputScreenStream::vformatToConsole(const char* format, va_list* args) {
  size_t size = formatBufferSize;
  if (size == 0) {
    va_list measure;
    va_copy(measure, *args);
    int n = vsnprintf(nullptr, 0, format, measure);
    va_end(measure);
    if (n < 0) return 0;
    size = static_cast<size_t>(n);
  }
  char* block = static_cast<char*>(utMallocWithCheck(size + 1));
  int n = vsnprintf(block, size + 1, format, *args);
  int result = 0;
  if (n >= 0) {
    utPuts(block);
    result = std::min(n, static_cast<int>(size));
    consoleCount += static_cast<uint64_t>(result);
    bytesWritten += static_cast<uint64_t>(result);
  }
  utFree(block);
  return result;
}

size_t outputScreenStream::writeChars(size_t count, const char16_t* chars) {
  if (chars == nullptr || count == 0) return 0;
  return countOnConsole(*this, chars, services::io::uout::get().write(chars, count));
}

int outputScreenStream::flush() {
  return KVStream::flush(KVStream::KVOut);
}

size_t stdErrStream::write(size_t count, const void* buffer, size_t size) {
  return onErrorStream([&] { return outputScreenStream::write(count, buffer, size); });
}

int stdErrStream::vformat(const char* format, va_list* args) {
  return onErrorStream([&] { return vformatToConsole(format, args); });
}

size_t stdErrStream::writeChars(size_t count, const char16_t* chars) {
  if (chars == nullptr || count == 0) return 0;
  return countOnConsole(*this, chars, services::io::uerr::get().write(chars, count));
}

int stdErrStream::flush() {
  return KVStream::flush(KVStream::KVErr);
}

}  // namespace Tarnwicks::FileIO

// Streams over strings: the input of sscanf and the output of sprintf.
#include "fileio/string_streams.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "twhost/errors.h"
#include "twhost/kx_data.h"
#include "twhost/kx_memory.h"
#include "twhost/text.h"

namespace Tarnwicks::FileIO {

// ---- input -------------------------------------------------------------------

StringBytes::StringBytes(inputStringStream& owner)
    : ByteSource(NumberRules::InPlace, owner.errorCode), owner_(owner) {}

void StringBytes::begin() {
  next = reinterpret_cast<const unsigned char*>(owner_.current);
  end = reinterpret_cast<const unsigned char*>(owner_.end);
}

bool StringBytes::refill() {
  commit();
  return false;
}

void StringBytes::putBack(const unsigned char*, size_t n) {
  next -= n;
}

void StringBytes::commit() {
  owner_.current = reinterpret_cast<const char*>(next);
}

inputStringStream::inputStringStream(const char* text, size_t n, const char* encoding)
    : TcodnStream(encoding), begin(text), current(text), end(text + n) {}

int inputStringStream::getPosition(int64_t& pos) {
  pos = current - begin;
  return 0;
}

size_t inputStringStream::read(size_t count, void* buffer, size_t size) {
  size_t n = std::min(static_cast<size_t>(end - current), count * size);
  std::memcpy(buffer, current, n);
  current += n;
  return n;
}

size_t inputStringStream::write(size_t, const void*, size_t) {
  notImplemented();
}
int inputStringStream::vformat(const char*, va_list*) {
  notImplemented();
}

bool inputStringStream::unread(int64_t n) {
  if (n < 0 || n > current - begin) return false;
  current -= n;
  return true;
}

int inputStringStream::setPosition(int64_t pos) {
  if (pos < 0 || pos > end - begin) return -1;
  current = begin + pos;
  return 0;
}

bool inputStringStream::getFileSize(int64_t& size) {
  size = end - begin;
  return true;
}

size_t inputStringStream::unitCount() {
  size_t units = 0;
  UConverter* counter = converter;
  const char* p = begin;
  // ICU counts in 32-bit lengths: long texts go in pieces.
  while (p < end) {
    size_t piece = std::min<size_t>(static_cast<size_t>(end - p), 0x3fffffff);
    UErrorCode status = U_ZERO_ERROR;
    int32_t n = ucnv_toUChars(counter, nullptr, 0, p, static_cast<int32_t>(piece), &status);
    units += static_cast<size_t>(n);
    p += piece;
  }
  return units;
}

// ---- output ------------------------------------------------------------------

outputStringStream::outputStringStream(const char* encoding) : TcodnStream(encoding) {}

outputStringStream::~outputStringStream() {
  kxFreeEx(begin);
}

void outputStringStream::makeRoom(size_t bytes) {
  if (static_cast<size_t>(capacityEnd - cursor) >= bytes) return;
  size_t used = size();
  size_t capacity = std::max<size_t>((used + bytes) * 2, 64);
  // realloc moves a large block by remapping its pages rather than copying.
  char* block = static_cast<char*>(kxReallocExCheck(begin, capacity));
  begin = block;
  cursor = block + used;
  capacityEnd = block + capacity;
}

int outputStringStream::getPosition(int64_t& pos) {
  pos = cursor - begin;
  return 0;
}

size_t outputStringStream::read(size_t, void*, size_t) {
  notImplemented();
}

size_t outputStringStream::write(size_t count, const void* buffer, size_t size) {
  size_t bytes = count * size;
  if (bytes == 0) return count;
  makeRoom(bytes);
  std::memcpy(cursor, buffer, bytes);
  cursor += bytes;
  bytesWritten += bytes;
  return count;
}

int outputStringStream::vformat(const char* format, va_list* args) {
  va_list measure;
  va_copy(measure, *args);
  int n = vsnprintf(nullptr, 0, format, measure);
  va_end(measure);
  if (n < 0) {
    errorCode = errnoOr(StreamError::NoHelp);
    return n;
  }
  makeRoom(static_cast<size_t>(n) + 1);
  vsnprintf(cursor, static_cast<size_t>(n) + 1, format, *args);
  cursor += n;
  bytesWritten += static_cast<uint64_t>(n);
  return n;
}

bool outputStringStream::unread(int64_t n) {
  if (n < 0 || n > cursor - begin) return false;
  cursor -= n;
  return true;
}

void* outputStringStream::release(size_t& bytes) {
  bytes = size();
  void* block = bytes ? begin : nullptr;
  if (!bytes) kxFreeEx(begin);
  begin = capacityEnd = cursor = nullptr;
  return block;
}

}  // namespace Tarnwicks::FileIO

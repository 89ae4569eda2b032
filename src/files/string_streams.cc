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

namespace {

// The UTF-8 character at p, decoded far enough to test it for white space.
char16_t peekUnit(const char* p, const char* end, size_t& length) {
  auto b = static_cast<unsigned char>(*p);
  if (b < 0x80 || end - p < 2) {
    length = 1;
    return b;
  }
  if (b < 0xE0) {
    length = 2;
    return char16_t(((b & 0x1F) << 6) | (p[1] & 0x3F));
  }
  if (b < 0xF0 && end - p >= 3) {
    length = 3;
    return char16_t(((b & 0x0F) << 12) | ((p[1] & 0x3F) << 6) | (p[2] & 0x3F));
  }
  length = 1;
  return b;
}

// Zero bytes and white space separate the values of sscanf: the first byte
// from `p` that starts a value, or `end`.
const char* pastSeparators(const char* p, const char* end) {
  while (p < end) {
    size_t len = 1;
    char16_t u = *p == '\0' ? u' ' : peekUnit(p, end, len);
    if (!twu_isspace(u)) break;
    p += len;
  }
  return p;
}

}  // namespace

// ---- input -------------------------------------------------------------------

inputStringStream::inputStringStream(const char* text, size_t n, const char* encoding)
    : TcodnStream(encoding), begin(text), current(text), mark(text), end(text + n) {}

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

uint64_t inputStringStream::readInteger(int base, bool isSigned, int width, int& error,
                                        bool& negative) {
  error = 0;
  negative = false;
  current = pastSeparators(current, end);
  if (current == end) return 0;
  // The C conversions want a terminated text: take at most the field.
  size_t avail = static_cast<size_t>(end - current);
  size_t field = width < 0 ? std::min<size_t>(avail, 64) : std::min<size_t>(avail, width);
  char text[72];
  std::memcpy(text, current, field);
  text[field] = '\0';
  char* stop = nullptr;
  errno = 0;
  uint64_t value;
  const char* p = text;
  while (*p == ' ' || *p == '\t') ++p;  // strto* would skip them; the field never has any
  if (*p == '-') negative = true;
  if (isSigned) {
    long long v = std::strtoll(text, &stop, base);
    value = static_cast<uint64_t>(negative ? -v : v);
  } else {
    value = std::strtoull(text, &stop, base);
    if (negative) value = static_cast<uint64_t>(-static_cast<int64_t>(value));
  }
  if (stop == text) {
    error = code(StreamError::MatchingFailure);
    negative = false;
    return 0;
  }
  size_t used = static_cast<size_t>(stop - text);
  current += used;
  // A number longer than the field taken is consumed whole.
  if (width < 0) {
    const char* set = base == 16 ? "0123456789abcdefABCDEF" : base == 8 ? "01234567" : "0123456789";
    while (current < end && std::strchr(set, *current) && *current) ++current;
  }
  return value;
}

uint64_t inputStringStream::readOctal(int width, int& error, bool& negative) {
  return readInteger(8, false, width, error, negative);
}
uint64_t inputStringStream::readHex(int width, int& error, bool& negative) {
  return readInteger(16, false, width, error, negative);
}
uint64_t inputStringStream::readUnsigned(int width, int& error, bool& negative) {
  return readInteger(10, false, width, error, negative);
}
uint64_t inputStringStream::readSigned(int width, int& error, bool& negative) {
  return readInteger(10, true, width, error, negative);
}
uint64_t inputStringStream::readAnyBase(int width, int& error, bool& negative) {
  return readInteger(0, true, width, error, negative);
}

double inputStringStream::readDouble(int width, int& status) {
  current = pastSeparators(current, end);
  if (current == end) {
    status = code(StreamError::NoHelp);
    return 0.0;
  }
  size_t avail = static_cast<size_t>(end - current);
  size_t field = width < 0 ? std::min<size_t>(avail, 512) : std::min<size_t>(avail, width);
  char text[520];
  std::memcpy(text, current, field);
  text[field] = '\0';
  char* stop = nullptr;
  double v = ut_strtod(text, &stop, utGetFpcContext());
  if (stop == text) {
    status = code(StreamError::NoHelp);
    return -1.0;
  }
  current += stop - text;
  return v;
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

uint64_t outputStringStream::readOctal(int, int&, bool&) {
  notImplemented();
}
uint64_t outputStringStream::readHex(int, int&, bool&) {
  notImplemented();
}
uint64_t outputStringStream::readUnsigned(int, int&, bool&) {
  notImplemented();
}
uint64_t outputStringStream::readSigned(int, int&, bool&) {
  notImplemented();
}
uint64_t outputStringStream::readAnyBase(int, int&, bool&) {
  notImplemented();
}
double outputStringStream::readDouble(int, int&) {
  notImplemented();
}

void* outputStringStream::release(size_t& bytes) {
  bytes = size();
  void* block = bytes ? begin : nullptr;
  if (!bytes) kxFreeEx(begin);
  begin = capacityEnd = cursor = nullptr;
  return block;
}

}  // namespace Tarnwicks::FileIO

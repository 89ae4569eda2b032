// The host's console: two streams, output and error, which stand on the
// process's stdout and stderr. Text is UTF-8 on the way out.
#pragma once

#include <cstddef>

#include "twhost/export.h"
#include "twhost/kx_array.h"

TW_HOST int utPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));
TW_HOST int utPuts(const char* text);

namespace services::io {

// Which console stream utPrintf and utPuts write to: KVOut or KVErr.
class TW_HOST KVStream {
 public:
  enum Which { KVOut = 0, KVErr = 1 };
  // Makes `to` the current stream in place of `from` until pop().
  static void push(Which from, Which to);
  static void pop();
  static Which current();
  static int flush(Which w);
};

// UTF-16 console writers.
class TW_HOST uout {
 public:
  static uout& get();
  // Units written; a short count means the console failed.
  size_t write(const char16_t* text, size_t n);
};
class TW_HOST uerr {
 public:
  static uerr& get();
  size_t write(const char16_t* text, size_t n);
};

// Writes narrow bytes to a console stream, zero bytes included; returns the
// count written.
TW_HOST size_t writeConsoleBytes(KVStream::Which w, const char* data, size_t n);

}  // namespace services::io

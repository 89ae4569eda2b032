// The console: stdout and stderr, with a stack that redirects the current
// stream (the error stream's writers push KVErr for the length of a write).
#include "twhost/console.h"

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "twhost/text.h"

namespace services::io {

namespace {

std::vector<KVStream::Which>& streamStack() {
  static std::vector<KVStream::Which> stack;
  return stack;
}

FILE* fileOf(KVStream::Which w) {
  return w == KVStream::KVErr ? stderr : stdout;
}

size_t writeUtf16(KVStream::Which w, const char16_t* text, size_t n) {
  std::string utf8 = fl::i18n::to_string(ustring(text, n));
  if (w == KVStream::KVErr) std::fflush(stdout);  // keep the two streams in order
  size_t written = std::fwrite(utf8.data(), 1, utf8.size(), fileOf(w));
  return written == utf8.size() ? n : 0;
}

}  // namespace

void KVStream::push(Which /*from*/, Which to) {
  streamStack().push_back(to);
}

void KVStream::pop() {
  if (!streamStack().empty()) streamStack().pop_back();
}

KVStream::Which KVStream::current() {
  return streamStack().empty() ? KVOut : streamStack().back();
}

int KVStream::flush(Which w) {
  return std::fflush(fileOf(w)) == 0 ? 0 : -1;
}

uout& uout::get() {
  static uout instance;
  return instance;
}
size_t uout::write(const char16_t* text, size_t n) {
  return writeUtf16(KVStream::KVOut, text, n);
}

uerr& uerr::get() {
  static uerr instance;
  return instance;
}
size_t uerr::write(const char16_t* text, size_t n) {
  return writeUtf16(KVStream::KVErr, text, n);
}

size_t writeConsoleBytes(KVStream::Which w, const char* data, size_t n) {
  if (w == KVStream::KVErr) std::fflush(stdout);
  return std::fwrite(data, 1, n, fileOf(w));
}

}  // namespace services::io

using services::io::KVStream;

int utPrintf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  FILE* f = KVStream::current() == KVStream::KVErr ? stderr : stdout;
  int r = std::vfprintf(f, format, args);
  va_end(args);
  return r;
}

int utPuts(const char* text) {
  FILE* f = KVStream::current() == KVStream::KVErr ? stderr : stdout;
  return std::fputs(text, f) < 0 ? -1 : 0;
}

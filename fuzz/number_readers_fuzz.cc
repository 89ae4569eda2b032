// libFuzzer target for the number readers of fscanf and sscanf.
//
// Checks, beyond the sanitizers:
//  - on a file, the readers agree with the C library's scanner: "%le" for
//    doubles, and the scanner's digit sets for integers (what fscanf makes
//    of the same bytes, in the same steps), value, code and the bytes left;
//  - where the C library's buffer ends changes nothing: a file buffered one
//    byte at a time reads exactly as one buffered whole;
//  - on a string, a read that succeeds takes at least one byte and never
//    leaves the text, so a scan loop always advances.
//
// Input: byte 0 picks the reader, byte 1 the width; the rest is the text.
// Up to three numbers are read in a row.
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

#include "fileio/attributes.h"
#include "fileio/file_stream.h"
#include "fileio/number_readers.h"
#include "fileio/string_streams.h"

namespace {

using namespace Tarnwicks::FileIO;

enum Reader { kSigned, kUnsigned, kHex, kOctal, kAnyBase, kDouble, kReaderCount };
constexpr int kReadsInARow = 3;

struct Result {
  uint64_t value = 0;  // the bits of a double
  int code = 0;        // error or status
  bool negative = false;
};

bool sameResult(const Result& a, const Result& b, Reader reader) {
  if (a.code != b.code || a.negative != b.negative) return false;
  if (reader != kDouble) return a.value == b.value;
  double x, y;
  std::memcpy(&x, &a.value, sizeof x);
  std::memcpy(&y, &b.value, sizeof y);
  return (std::isnan(x) && std::isnan(y)) || a.value == b.value;
}

// ---- the peer: the C library's scanner, in the steps fscanf takes -----------

Result peerInteger(FILE* f, Reader reader, int width) {
  int base = reader == kHex ? 16 : reader == kOctal ? 8 : 10;
  const bool anyBase = reader == kAnyBase;
  const bool isSigned = reader == kSigned || reader == kAnyBase;
  Result r;
  errno = 0;
  int taken = 0;
  int c;
  do {
    c = getc(f);
  } while (c != EOF && std::isspace(c));
  if (c == '-' || c == '+') {
    r.negative = c == '-';
    ++taken;
    c = getc(f);
  }
  bool leadingZero = false;
  if (c == '0') {
    leadingZero = true;
    ++taken;
    if (anyBase) {
      int x = getc(f);
      if (x == 'x' || x == 'X') {
        base = 16;
        ++taken;
      } else {
        base = 8;
        if (x != EOF) ungetc(x, f);
      }
    }
  } else if (c != EOF) {
    ungetc(c, f);
  }
  if (anyBase && !leadingZero) base = 10;
  const char* set = base == 8 ? "01234567" : base == 16 ? "0123456789abcdefABCDEF" : "0123456789";
  int left = width < 0 ? -1 : width - taken;
  if (leadingZero && left != 0) {
    int zeros = 0;
    if (std::fscanf(f, "%*[0]%n", &zeros) != EOF && left > 0 && zeros > left) {
      fseek(f, -(zeros - left), SEEK_CUR);
      zeros = left;
    }
    if (left > 0) left -= zeros;
  }
  char format[48];
  int surplus = 0;
  if (left >= 0) {
    int gather = std::min(left, 24);
    surplus = left - gather;
    std::snprintf(format, sizeof format, "%%%d[%s]%%n", gather, set);
  } else {
    std::snprintf(format, sizeof format, "%%22[%s]%%n", set);
  }
  char digits[32] = {};
  int gathered = 0;
  if (left != 0 && std::fscanf(f, format, digits, &gathered) == 1) {
    if (gathered >= (left < 0 ? 22 : left - surplus)) {
      std::snprintf(format, sizeof format, "%%*[%s]%%n", set);
      int skipped = 0;
      if (std::fscanf(f, format, &skipped) != EOF && left >= 0 && skipped > surplus) {
        fseek(f, -(skipped - surplus), SEEK_CUR);
      }
    }
    errno = 0;
    r.value = isSigned ? static_cast<uint64_t>(std::strtoll(digits, nullptr, base))
                       : std::strtoull(digits, nullptr, base);
    return r;
  }
  if (leadingZero) {
    r.negative = false;
    return r;
  }
  r.code = errnoOr(StreamError::NoHelp);
  if (taken > 0) fseek(f, -taken, SEEK_CUR);
  return r;
}

Result peerDouble(FILE* f, int width) {
  Result r;
  r.code = kReadSuccess;
  errno = 0;
  int c;
  do {
    c = getc(f);
  } while (c != EOF && std::isspace(c));
  int sign = 0;
  if (c == '-' || c == '+') {
    sign = c;
    c = getc(f);
  }
  double v = 0;
  const char* word = std::tolower(c) == 'i' ? "inf" : std::tolower(c) == 'n' ? "nan" : nullptr;
  if (word != nullptr) {
    int seen[3] = {c, 0, 0};
    int n = 1;
    while (n < 3) {
      seen[n] = getc(f);
      if (seen[n] == EOF || std::tolower(seen[n]) != word[n]) break;
      ++n;
    }
    if (n == 3) {
      v = word[0] == 'i' ? std::numeric_limits<double>::infinity()
                         : std::numeric_limits<double>::quiet_NaN();
      if (sign == '-') v = -v;
    } else {
      if (seen[n] != EOF) ungetc(seen[n], f);
      for (int i = n - 1; i >= 0; --i) ungetc(seen[i], f);
      if (sign) ungetc(sign, f);
      r.code = code(StreamError::NoHelp);
      v = -1.0;
    }
    std::memcpy(&r.value, &v, sizeof v);
    return r;
  }
  if (c != EOF) ungetc(c, f);
  if (sign) ungetc(sign, f);
  char format[24];
  std::snprintf(format, sizeof format, width >= 0 ? "%%%dle" : "%%le", width);
  if (std::fscanf(f, format, &v) != 1) {
    // The sign goes back, which fscanf itself can't do.
    if (sign) ungetc(sign, f);
    r.code = errnoOr(StreamError::NoHelp);
    v = 0;
  }
  std::memcpy(&r.value, &v, sizeof v);
  return r;
}

// ---- the readers ----------------------------------------------------------------

using IntegerReader = uint64_t (*)(stream&, int, int&, bool&);
// By Reader, up to kDouble.
const IntegerReader kIntegerReaders[] = {readSigned, readUnsigned, readHex, readOctal, readAnyBase};

Result readOne(stream& s, Reader reader, int width) {
  Result r;
  if (reader != kDouble) {
    r.value = kIntegerReaders[reader](s, width, r.code, r.negative);
    return r;
  }
  r.code = kReadSuccess;
  double v = readDouble(s, width, r.code);
  std::memcpy(&r.value, &v, sizeof v);
  return r;
}

bool succeeded(const Result& r, Reader reader) {
  return reader == kDouble ? r.code == kReadSuccess : r.code == 0;
}

struct Run {
  Result results[kReadsInARow];
  int count = 0;
  std::string rest;
  bool atEnd = false;
};

// Reads on a file of `text` buffered `bufferBytes` at a time (0: the C
// library's choice), through the readers or through the peer.
Run readFile(std::string text, Reader reader, int width, size_t bufferBytes, bool peer) {
  static const FilePermission permission("r", 0);
  FILE* f = fmemopen(text.data(), text.size(), "r");
  if (bufferBytes != 0) setvbuf(f, nullptr, _IOFBF, bufferBytes);
  auto s = std::make_unique<fileStream>(f, "", &permission);
  Run run;
  while (run.count < kReadsInARow) {
    Result r = !peer               ? readOne(*s, reader, width)
               : reader == kDouble ? peerDouble(f, width)
                                   : peerInteger(f, reader, width);
    run.results[run.count++] = r;
    if (!succeeded(r, reader)) break;
  }
  run.atEnd = feof(f) != 0;
  for (int c; (c = getc(f)) != EOF;) run.rest += static_cast<char>(c);
  s.reset();
  std::fclose(f);
  return run;
}

bool sameRun(const Run& a, const Run& b, Reader reader, bool compareEnd) {
  if (a.count != b.count || a.rest != b.rest || (compareEnd && a.atEnd != b.atEnd)) return false;
  for (int i = 0; i < a.count; ++i) {
    if (!sameResult(a.results[i], b.results[i], reader)) return false;
  }
  return true;
}

void checkString(const std::string& text, Reader reader, int width) {
  inputStringStream in(text.data(), text.size());
  for (int i = 0; i < kReadsInARow; ++i) {
    const char* before = in.current;
    Result r = readOne(in, reader, width);
    if (in.current < before || in.current > in.end) __builtin_trap();
    if (!succeeded(r, reader)) break;
    // A success that took nothing would stall a scan.
    if (in.current == before && in.current != in.end) __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) return 0;
  const Reader reader = static_cast<Reader>(data[0] % kReaderCount);
  // Integer widths start at 3, above any sign and prefix: below that the
  // scanner's steps overrun the width, which the readers don't.
  int width = data[1] == 0xFF ? -1 : (reader == kDouble ? 0 : 3) + data[1] % 40;
  const std::string text(reinterpret_cast<const char*>(data + 2), size - 2);

  const Run whole = readFile(text, reader, width, 0, false);
  const Run byteByByte = readFile(text, reader, width, 1, false);
  if (!sameRun(whole, byteByByte, reader, true)) __builtin_trap();
  const Run peer = readFile(text, reader, width, 0, true);
  if (!sameRun(whole, peer, reader, true)) __builtin_trap();

  checkString(text, reader, width);
  return 0;
}

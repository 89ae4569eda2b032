// The number readers of fscanf on a file: integers in a base, and doubles.
//
// Digits are gathered by the C scanner with a bounded field, because a file
// has no known end to convert in place; a number longer than the field is
// still consumed whole, and what lies past a requested width is given back.
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "fileio/file_stream.h"

namespace Tarnwicks::FileIO {

namespace {

// The widest digit field handed to the C scanner at once.
constexpr int kMaxGather = 24;

const char* digitSet(int base) {
  return base == 8 ? "01234567" : base == 16 ? "0123456789abcdefABCDEF" : "0123456789";
}

}  // namespace

uint64_t fileStream::readInteger(int base, bool anyBase, bool isSigned, int width, int& error,
                                 bool& negative) {
  error = 0;
  negative = false;
  errno = 0;
  int taken = 0;  // characters consumed ahead of the digits
  int c;
  do {
    c = getc_unlocked(file);
  } while (c != EOF && std::isspace(c));
  if (c == '-' || c == '+') {
    negative = c == '-';
    ++taken;
    c = getc_unlocked(file);
  }
  bool leadingZero = false;
  if (c == '0') {
    leadingZero = true;
    ++taken;
    if (anyBase) {
      int x = getc_unlocked(file);
      if (x == 'x' || x == 'X') {
        base = 16;
        ++taken;
      } else {
        base = 8;
        if (x != EOF) ungetc(x, file);
      }
    }
  } else if (c != EOF) {
    ungetc(c, file);
  }
  if (anyBase && !leadingZero) base = 10;

  int left = width < 0 ? -1 : width - taken;  // width left for the digits
  if (leadingZero && left != 0) {
    // Further zeros add nothing; they count against the width.
    int zeros = 0;
    if (fscanf(file, "%*[0]%n", &zeros) != EOF && left > 0 && zeros > left) {
      unread(zeros - left);
      zeros = left;
    }
    if (left > 0) left -= zeros;
  }

  char format[48];
  const char* set = digitSet(base);
  int surplus = 0;
  if (left >= 0) {
    int gather = left;
    if (gather > kMaxGather) {
      surplus = gather - kMaxGather;
      gather = kMaxGather;
    }
    snprintf(format, sizeof format, "%%%d[%s]%%n", gather, set);
  } else {
    snprintf(format, sizeof format, "%%22[%s]%%n", set);
  }
  digits.reserve(kMaxGather + 2);
  digits.data[0] = '\0';
  int gathered = 0;
  int matched = left == 0 ? 0 : fscanf(file, format, digits.data, &gathered);
  if (matched == 1) {
    // A number longer than the field is consumed whole; what lies past a
    // given width goes back.
    int limit = left < 0 ? 22 : left - surplus;
    if (gathered >= limit) {
      char skip[48];
      snprintf(skip, sizeof skip, "%%*[%s]%%n", set);
      int skipped = 0;
      if (fscanf(file, skip, &skipped) != EOF && left >= 0 && skipped > surplus) {
        unread(skipped - surplus);
      }
    }
    char* end = nullptr;
    errno = 0;
    uint64_t value = isSigned ? static_cast<uint64_t>(std::strtoll(digits.data, &end, base))
                              : std::strtoull(digits.data, &end, base);
    if (end == digits.data) error = code(StreamError::MatchingFailure);
    return value;
  }
  if (leadingZero) {
    negative = false;
    return 0;
  }
  // Nothing to convert: give back the sign taken.
  int err = errnoOr(StreamError::NoHelp);
  if (taken > 0) unread(taken);
  error = err;
  errorCode = err;
  return 0;
}

uint64_t fileStream::readOctal(int width, int& error, bool& negative) {
  return readInteger(8, false, false, width, error, negative);
}
uint64_t fileStream::readHex(int width, int& error, bool& negative) {
  return readInteger(16, false, false, width, error, negative);
}
uint64_t fileStream::readUnsigned(int width, int& error, bool& negative) {
  return readInteger(10, false, false, width, error, negative);
}
uint64_t fileStream::readSigned(int width, int& error, bool& negative) {
  return readInteger(10, false, true, width, error, negative);
}
uint64_t fileStream::readAnyBase(int width, int& error, bool& negative) {
  return readInteger(10, true, true, width, error, negative);
}

double fileStream::readDouble(int width, int& status) {
  errno = 0;
  int c;
  do {
    c = getc_unlocked(file);
  } while (c != EOF && std::isspace(c));
  int sign = 0;
  if (c == '-' || c == '+') {
    sign = c;
    c = getc_unlocked(file);
  }
  // "inf" and "nan" in any case, after an optional sign.
  const char* word = c == 'i' || c == 'I' ? "inf" : c == 'n' || c == 'N' ? "nan" : nullptr;
  if (word != nullptr) {
    int seen[3] = {c, 0, 0};
    int n = 1;
    while (n < 3) {
      int d = getc_unlocked(file);
      seen[n] = d;
      if (d == EOF || std::tolower(d) != word[n]) break;
      ++n;
    }
    if (n == 3) {
      double v = word[0] == 'i' ? std::numeric_limits<double>::infinity()
                                : std::numeric_limits<double>::quiet_NaN();
      return sign == '-' ? -v : v;
    }
    // A partial word goes back as it came.
    if (seen[n] != EOF) ungetc(seen[n], file);
    for (int i = n - 1; i >= 0; --i) ungetc(seen[i], file);
    if (sign) ungetc(sign, file);
    status = code(StreamError::NoHelp);
    return -1.0;
  }
  if (c != EOF) ungetc(c, file);
  if (sign) ungetc(sign, file);
  status = 0x7fffffff;
  lastByte = 0;
  double value = 0;
  int got;
  if (width >= 0) {
    char format[24];
    snprintf(format, sizeof format, "%%%dle", width);
    got = fscanf(file, format, &value);
  } else {
    got = fscanf(file, "%le", &value);
  }
  if (got > 0) return value;
  recordState();
  status = errorOr(StreamError::NoHelp);
  return value;
}

}  // namespace Tarnwicks::FileIO

// Numbers as the C library's conversions read a text in place: sscanf's
// rules. The source's window holds all the rest of the text, so a field is
// copied out whole, converted by strtoll, strtoull or ut_strtod, and the
// bytes they used are taken.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "fileio/stream.h"
#include "number_rules.h"
#include "twhost/kx_data.h"
#include "twhost/text.h"

namespace Tarnwicks::FileIO {

namespace {

// The longest field converted without a width: an integer, and a double.
constexpr size_t kIntegerField = 64;
constexpr size_t kDoubleField = 512;

// The UTF-8 character at p, decoded far enough to test it for white space.
char16_t peekUnit(const unsigned char* p, const unsigned char* end, size_t& length) {
  unsigned char b = *p;
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

// The field of a conversion: the width, or `longest` without one, and
// never more than `longest`, which the buffer holds.
size_t fieldLimit(int width, size_t longest) {
  return width < 0 ? longest : std::min(static_cast<size_t>(width), longest);
}

// Copies at most `limit` bytes of the window into `text` (room for
// limit + 1), NUL-terminated: the C conversions want a terminated text.
void copyField(const ByteSource& in, size_t limit, char* text) {
  size_t field = std::min(static_cast<size_t>(in.end - in.next), limit);
  std::memcpy(text, in.next, field);
  text[field] = '\0';
}

bool isDigitOf(unsigned char c, int base) {
  if (base == 16) return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'f');
  return c >= '0' && c < (base == 8 ? '8' : '0' + 10);
}

// The base that a text without one gives itself: "0x" hexadecimal, "0"
// octal, else decimal.
int baseOfText(const char* text) {
  if (*text == '-' || *text == '+') ++text;
  if (text[0] != '0') return 10;
  return (text[1] == 'x' || text[1] == 'X') ? 16 : 8;
}

}  // namespace

void skipSeparators(ByteSource& in) {
  while (in.next < in.end) {
    size_t len = 1;
    char16_t u = *in.next == '\0' ? u' ' : peekUnit(in.next, in.end, len);
    if (!twu_isspace(u)) break;
    in.next += len;
  }
}

uint64_t convertInteger(ByteSource& in, int base, bool isSigned, int width, int& error,
                        bool& negative) {
  error = 0;
  negative = false;
  in.begin();
  skipSeparators(in);
  if (in.next == in.end) {
    in.commit();
    return 0;
  }
  char text[kIntegerField + 1];
  copyField(in, fieldLimit(width, kIntegerField), text);
  negative = text[0] == '-';
  char* stop = nullptr;
  errno = 0;
  uint64_t value;
  if (isSigned) {
    uint64_t v = static_cast<uint64_t>(std::strtoll(text, &stop, base));
    value = negative ? 0 - v : v;
  } else {
    value = std::strtoull(text, &stop, base);
    if (negative) value = 0 - value;
  }
  if (stop == text) {
    in.commit();
    error = code(StreamError::MatchingFailure);
    negative = false;
    return 0;
  }
  in.next += stop - text;
  // A number longer than the field taken is taken whole. Only a number
  // that filled the field goes on: one that ended inside it ended for good
  // ("019" read in base 0 is the octal 01, and the 9 stays).
  if (width < 0 && static_cast<size_t>(stop - text) == kIntegerField) {
    const int digits = base != 0 ? base : baseOfText(text);
    while (in.next < in.end && isDigitOf(*in.next, digits)) ++in.next;
  }
  in.commit();
  return value;
}

double convertDouble(ByteSource& in, int width, int& status) {
  in.begin();
  skipSeparators(in);
  if (in.next == in.end) {
    in.commit();
    status = code(StreamError::NoHelp);
    return 0.0;
  }
  char text[kDoubleField + 1];
  copyField(in, fieldLimit(width, kDoubleField), text);
  char* stop = nullptr;
  double v = ut_strtod(text, &stop, utGetFpcContext());
  if (stop == text) {
    in.commit();
    status = code(StreamError::NoHelp);
    return -1.0;
  }
  in.next += stop - text;
  in.commit();
  return v;
}

}  // namespace Tarnwicks::FileIO

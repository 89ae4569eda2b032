// Escape translation. Warnings, not errors: a user who writes "\q" still gets
// the text ahead of it printed, which is what they most likely wanted to see.
#include "fileio/escapes.h"

#include "twhost/errors.h"
#include "twhost/text.h"

namespace Tarnwicks::FileIO {

namespace {

constexpr int64_t kSaturation = 2147483648LL;

int digitValue(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  char16_t lower = twu_tolower(c);
  if (lower >= u'a' && lower <= u'z') return lower - u'a' + 10;
  return 99;
}

void warn(const char* key) {
  kxWarningMsgId(kxMsg("KORVAN:printf", key));
}

// Reads the code of "\NNN" or "\xHH" starting at `from`. Every following
// hexadecimal digit is gathered, also for octal, and what the base cannot use
// is left in the format. Returns false after warning.
bool readCharCode(const char16_t*& from, const char16_t* end, int base, char16_t& out) {
  const char16_t* runEnd = from;
  while (runEnd < end && twu_isxdigit(*runEnd)) ++runEnd;
  const char16_t* stop = from;
  int32_t value = parseWideInteger(from, runEnd, stop, base);
  bool octal = base == 8;
  if (stop == from) {
    warn(octal ? "OctalCharCodeInvalid" : "HexCharCodeInvalid");
    return false;
  }
  if (value >= 65536) {
    warn(octal ? "OctalCharCodeOutOfRange" : "HexCharCodeOutOfRange");
    return false;
  }
  out = static_cast<char16_t>(value);
  from = stop;
  return true;
}

// The character of a one-letter escape after the backslash; 0 when `c` is
// none of them.
char16_t simpleEscape(char16_t c) {
  switch (c) {
    case u'f':
      return u'\f';
    case u'r':
      return u'\r';
    case u'\\':
      return u'\\';
    case u'\'':
      return u'\'';
    case u'"':
      return u'"';
    case u'?':
      return u'?';
    case u'a':
      return u'\a';
    case u'b':
      return u'\b';
    case u'v':
      return u'\v';
    default:
      return 0;
  }
}

}  // namespace

int32_t parseWideInteger(const char16_t* text, const char16_t* limit, const char16_t*& stop,
                         int base) {
  const char16_t* p = text;
  bool negative = false;
  if (p < limit && *p == u'-') {
    negative = true;
    ++p;
  }
  const char16_t* digitsStart = p;
  int64_t value = 0;
  for (; p < limit; ++p) {
    int d = digitValue(*p);
    if (d >= base) break;
    value = value * base + d;
    if (value > kSaturation) value = kSaturation;
  }
  if (p == digitsStart) {
    stop = text;
    return 0;
  }
  stop = p;
  if (negative) return static_cast<int32_t>(-value);
  return value >= kSaturation ? 2147483647 : static_cast<int32_t>(value);
}

bool translateEscapes(ustring& format) {
  // Output never grows past input, so translating in place is safe.
  const char16_t* in = format.data();
  const char16_t* end = in + format.size();
  char16_t* out = format.data();
  bool failed = false;
  while (in < end) {
    if (*in != u'\\') {
      *out++ = *in++;
      continue;
    }
    ++in;
    if (in == end) {
      warn("NoControlCharacterInFormat");
      failed = true;
      break;
    }
    char16_t c = *in;
    char16_t code = 0;
    if (c == u'n') {
      *out++ = 10;
      ++in;
    } else if (c == u't') {
      *out++ = 9;
      ++in;
    } else if (twu_isdigit(c)) {
      if (!readCharCode(in, end, 8, code)) {
        failed = true;
        break;
      }
      *out++ = code;
    } else if ((code = simpleEscape(c)) != 0) {
      *out++ = code;
      ++in;
    } else if (c == u'x') {
      ++in;
      if (!readCharCode(in, end, 16, code)) {
        failed = true;
        break;
      }
      *out++ = code;
    } else {
      kxWarningMsgId(kxMsg("KORVAN:printf", "BadEscapeSequenceInFormat", ustring(1, c)));
      failed = true;
      break;
    }
  }
  format.resize(static_cast<size_t>(out - format.data()));
  return failed;
}

}  // namespace Tarnwicks::FileIO

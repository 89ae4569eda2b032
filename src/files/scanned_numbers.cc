// Numbers as the C library's scanner reads them from a FILE: fscanf's rules.
//
// A file has no known end to convert in place, so the bytes of a number are
// gathered first, as the scanner's digit sets and "%le" gather them, and
// converted once complete. Every byte is looked at in the source's window
// before it is taken; a byte the number can't use is simply not taken, so
// only the sign of a failed number, and a special word begun and not
// finished, ever go back to the medium.
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "fileio/number_readers.h"
#include "fileio/stream.h"
#include "number_rules.h"
#include "twhost/kx_data.h"

namespace Tarnwicks::FileIO {

namespace {

constexpr int kEnd = ByteSource::kEnd;
// Without a width the scanner's field holds 22 digits ("%22[...]"), and with
// one at most 24; digits past the field are taken and change nothing.
constexpr int kFieldDigits = 22;
constexpr int kWidthFieldDigits = 24;
// What the width allows when there is none.
constexpr int64_t kNoWidth = INT64_MAX;

constexpr int asciiLower(int c) {
  return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}
constexpr bool isDecimalDigit(int c) {
  return c >= '0' && c <= '9';
}
constexpr bool isHexDigit(int c) {
  return isDecimalDigit(c) || (asciiLower(c) >= 'a' && asciiLower(c) <= 'f');
}
constexpr bool isDigitOf(int c, int base) {
  return base == 8 ? c >= '0' && c <= '7' : base == 16 ? isHexDigit(c) : isDecimalDigit(c);
}

// The characters of a double as the scanner gathers them: on the stack,
// and on the heap only past kLocal characters.
class Token {
 public:
  void add(int c) {
    if (n_ < kLocal) {
      local_[n_++] = static_cast<char>(c);
      return;
    }
    if (n_ == kLocal) spill_.assign(local_, kLocal);
    spill_ += static_cast<char>(c);
    ++n_;
  }
  size_t size() const { return n_; }
  int last() const { return n_ == 0 ? kEnd : n_ <= kLocal ? local_[n_ - 1] : spill_.back(); }
  // NUL-terminated.
  const char* text() {
    if (n_ <= kLocal) {
      local_[n_] = '\0';
      return local_;
    }
    return spill_.c_str();
  }

 private:
  static constexpr size_t kLocal = 127;
  char local_[kLocal + 1];
  size_t n_ = 0;
  std::string spill_;
};

// Gathers "%le" as the C library's scanner does, from `c`, the first byte,
// which a sign was (already taken) or which is looked at, not taken. At
// most `width` bytes count, the sign among them. True when the gathered
// text is a number; its value is in `value`.
bool gatherDouble(ByteSource& in, int c, bool signTaken, int64_t width, Token& token,
                  double& value) {
  // `left`: bytes the scanner may still look at after the one in hand.
  int64_t left = width - 1;
  if (c == kEnd) return false;
  if (signTaken) {
    token.add(c);
    if (left == 0) return false;
    c = in.peek();
    if (c == kEnd) return false;
    --left;
  }
  const size_t signSize = token.size();
  bool digit = false, dot = false, exponent = false, hex = false;
  int exponentChar = 'e';
  // A leading "0x" is hexadecimal only with room for a digit after the x.
  if (left != 0 && c == '0') {
    token.add(c);
    ++in.next;
    c = in.peek();
    --left;
    if (left != 0 && asciiLower(c) == 'x') {
      token.add(c);
      ++in.next;
      hex = true;
      exponentChar = 'p';
      c = in.peek();
      --left;
    } else {
      digit = true;
    }
  }
  for (;;) {
    int kept = c;
    if (isDecimalDigit(c) || (hex && !exponent && isHexDigit(c))) {
      digit = true;
    } else if (exponent && token.last() == exponentChar && (c == '-' || c == '+')) {
      // the sign of the exponent
    } else if (digit && !exponent && asciiLower(c) == exponentChar) {
      exponent = dot = true;
      kept = exponentChar;
    } else if (c == '.' && !dot) {
      dot = true;
    } else {
      break;  // not taken: the number ends before it
    }
    token.add(kept);
    ++in.next;
    if (left == 0) break;
    c = in.peek();
    if (c == kEnd) break;
    --left;
  }
  // Nothing past the sign, or nothing past "0x", is no number.
  if (token.size() == signSize || (hex && token.size() == signSize + 2)) return false;
  const char* text = token.text();
  char* stop = nullptr;
  value = ut_strtod(text, &stop);
  return stop != text;
}

}  // namespace

int skipSpace(ByteSource& in) {
  for (;;) {
    while (in.next != in.end) {
      if (!isScannerSpace(*in.next)) return *in.next;
      ++in.next;
    }
    if (!in.refill()) return kEnd;
  }
}

uint64_t scanInteger(ByteSource& in, int base, bool isSigned, int width, int& error,
                     bool& negative) {
  error = 0;
  negative = false;
  errno = 0;
  in.begin();
  int64_t left = width < 0 ? kNoWidth : width;  // bytes the width still allows
  int c = skipSpace(in);
  unsigned char sign = 0;
  if ((c == '-' || c == '+') && left > 0) {
    sign = static_cast<unsigned char>(c);
    negative = c == '-';
    ++in.next;
    --left;
    c = in.peek();
  }
  bool leadingZero = false;
  if (c == '0' && left > 0) {
    leadingZero = true;
    ++in.next;
    --left;
    if (base == 0) {
      int x = in.peek();
      if ((x == 'x' || x == 'X') && left > 0) {
        base = 16;
        ++in.next;
        --left;
      } else {
        base = 8;
      }
    }
  }
  if (base == 0) base = 10;
  if (leadingZero && left > 0) {
    // Further zeros add nothing; they count against the width.
    while (in.peek() == '0' && left > 0) {
      ++in.next;
      --left;
    }
  }

  char digits[kWidthFieldDigits + 1];
  const int field =
      width < 0 ? kFieldDigits : static_cast<int>(std::min<int64_t>(left, kWidthFieldDigits));
  int n = 0;
  while (n < field && isDigitOf(in.peek(), base)) {
    digits[n++] = static_cast<char>(*in.next++);
    --left;
  }
  if (n > 0) {
    // A number longer than the field is taken whole, up to the width.
    if (n == field) {
      while (isDigitOf(in.peek(), base) && left > 0) {
        ++in.next;
        --left;
      }
    }
    in.commit();
    digits[n] = '\0';
    errno = 0;
    return isSigned ? static_cast<uint64_t>(std::strtoll(digits, nullptr, base))
                    : std::strtoull(digits, nullptr, base);
  }
  if (leadingZero) {
    in.commit();
    negative = false;
    return 0;
  }
  // No number: what was taken ahead of the digits goes back.
  const int cause = errnoOr(StreamError::NoHelp);
  if (sign != 0) in.putBack(&sign, 1);
  in.commit();
  error = cause;
  in.errorCode = cause;
  return 0;
}

double scanDouble(ByteSource& in, int width, int& status) {
  errno = 0;
  in.begin();
  int c = skipSpace(in);
  unsigned char sign = 0;
  if (c == '-' || c == '+') {
    sign = static_cast<unsigned char>(c);
    ++in.next;
    c = in.peek();
  }
  // "inf" and "nan" in any case, whatever the width.
  const char* word = asciiLower(c) == 'i' ? "inf" : asciiLower(c) == 'n' ? "nan" : nullptr;
  if (word != nullptr) {
    unsigned char taken[4];
    int n = 0;
    if (sign != 0) taken[n++] = sign;
    const int wordStart = n;
    // Exactly the word is looked at: a byte after it stays unseen.
    constexpr int kWordLength = 3;
    while (asciiLower(c) == word[n - wordStart]) {
      taken[n++] = static_cast<unsigned char>(c);
      ++in.next;
      if (n - wordStart == kWordLength) break;
      c = in.peek();
    }
    if (n - wordStart == kWordLength) {
      in.commit();
      double v = word[0] == 'i' ? std::numeric_limits<double>::infinity()
                                : std::numeric_limits<double>::quiet_NaN();
      return sign == '-' ? -v : v;
    }
    // A word begun and not finished goes back as it came.
    in.putBack(taken, static_cast<size_t>(n));
    in.commit();
    status = code(StreamError::NoHelp);
    return -1.0;
  }

  status = kReadSuccess;
  Token token;
  double value = 0;
  const int64_t limit = width > 0 ? width : kNoWidth;
  if (gatherDouble(in, sign != 0 ? sign : c, sign != 0, limit, token, value)) {
    in.commit();
    return value;
  }
  if (sign != 0) in.putBack(&sign, 1);
  in.commit();
  in.errorCode = in.failureCode();
  status = in.errorCode != 0 ? in.errorCode : code(StreamError::NoHelp);
  return 0.0;
}

}  // namespace Tarnwicks::FileIO

// UTF-8 bytes to UTF-16 units one character at a time, by the rules of the
// file decoder: a malformed sequence gives one U+FFFD for its longest valid
// prefix (at least one byte), and a character beyond the 16-bit range the
// one unit 26. The read of bytes and the read of decoded text count and
// show characters through this, so that the two agree.
#pragma once

#include <cstddef>
#include <cstdint>

namespace textscan {

inline constexpr char16_t kReplacementUnit = 0xFFFD;
// What the file decoder makes of a character beyond the 16-bit range.
inline constexpr char16_t kSubstituteUnit = 26;

namespace utf8_detail {

// The bounds of the second byte of a well-formed sequence, by lead byte;
// every later byte is 0x80..0xBF. A lead outside these is no lead at all.
struct LeadRule {
  uint8_t length;
  uint8_t secondLow;
  uint8_t secondHigh;
};

constexpr LeadRule leadRule(uint8_t b) {
  if (b >= 0xC2 && b <= 0xDF) return {2, 0x80, 0xBF};
  if (b == 0xE0) return {3, 0xA0, 0xBF};
  if (b == 0xED) return {3, 0x80, 0x9F};  // no surrogates
  if (b >= 0xE1 && b <= 0xEF) return {3, 0x80, 0xBF};
  if (b == 0xF0) return {4, 0x90, 0xBF};
  if (b >= 0xF1 && b <= 0xF3) return {4, 0x80, 0xBF};
  if (b == 0xF4) return {4, 0x80, 0x8F};  // nothing past U+10FFFF
  return {0, 0, 0};
}

}  // namespace utf8_detail

// Decodes the character at `p` (n > 0 bytes stand there) into `unit` and
// returns the bytes it took.
inline size_t decodeUtf8Unit(const char* text, size_t n, char16_t& unit) {
  const auto* p = reinterpret_cast<const uint8_t*>(text);
  uint8_t b = p[0];
  if (b < 0x80) {
    unit = b;
    return 1;
  }
  utf8_detail::LeadRule rule = utf8_detail::leadRule(b);
  if (rule.length == 0) {
    unit = kReplacementUnit;
    return 1;
  }
  uint32_t code = b & (0xFF >> (rule.length + 1));
  size_t k = 1;
  for (; k < rule.length && k < n; ++k) {
    uint8_t t = p[k];
    uint8_t low = k == 1 ? rule.secondLow : 0x80;
    uint8_t high = k == 1 ? rule.secondHigh : 0xBF;
    if (t < low || t > high) break;
    code = (code << 6) | (t & 0x3F);
  }
  if (k < rule.length) {
    unit = kReplacementUnit;
  } else {
    unit = code > 0xFFFF ? kSubstituteUnit : static_cast<char16_t>(code);
  }
  return k;
}

// Decodes the `n` bytes at `text` into `out`, which has room for `n` units,
// and returns the units written (at most `n`). Runs of ASCII are copied a
// byte at a time without the decoder.
inline size_t decodeUtf8Units(const char* text, size_t n, char16_t* out) {
  size_t i = 0;
  size_t written = 0;
  while (i < n) {
    auto b = static_cast<uint8_t>(text[i]);
    if (b < 0x80) {
      out[written++] = b;
      ++i;
      continue;
    }
    i += decodeUtf8Unit(text + i, n - i, out[written++]);
  }
  return written;
}

}  // namespace textscan

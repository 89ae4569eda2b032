// PrintSink: the buffer between the print pieces and a stream.
//
// Pieces produce two kinds of text: numbers, which are narrow ASCII and reach
// a file as raw bytes (what a formatted write would put there), and text in
// UTF-16 (literals, %s, %c), which reaches it through the stream's encoder.
// Writing each piece with its own call into the stream would cost a virtual
// call per value, so the sink gathers text and writes it in large blocks:
//
// - Bytes mode (files, console): numbers are gathered as bytes. Text goes to
//   writeChars, unless the encoding writes ASCII as the same single bytes,
//   in which case ASCII text joins the bytes.
// - Units mode (UTF-16 string streams): everything is gathered as UTF-16
//   units, numbers widened, and goes to writeChars.
//
// A failed write throws the stream's error code as an int, as a piece does.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "fileio/stream.h"
#include "number_format.h"

namespace Tarnwicks::FileIO {

class PrintSink {
 public:
  enum class Mode { Bytes, Units };

  PrintSink(stream& target, Mode mode, bool asciiTextAsBytes);
  ~PrintSink();
  PrintSink(const PrintSink&) = delete;
  PrintSink& operator=(const PrintSink&) = delete;

  stream& target() { return target_; }
  // True when ASCII text joins the gathered number text as it stands.
  bool takesAsciiTextInline() const { return mode_ == Mode::Units || asciiTextAsBytes_; }

  // Number text.
  void putNumber(const FormattedNumber& number) {
    if (number.padBefore == 0 && number.zeros == 0 && number.padAfter == 0 &&
        number.trailingZeros == 0 && number.digitCount <= kQuickLimit &&
        used_ + kQuickLimit + 2 <= kCapacity) {
      if (mode_ == Mode::Bytes) {
        char* out = bytes_ + used_;
        if (number.prefixLength != 0) std::memcpy(out, number.prefix, number.prefixLength);
        std::memcpy(out + number.prefixLength, number.digits, number.digitCount);
      } else {
        char16_t* out = units_ + used_;
        for (uint32_t i = 0; i < number.prefixLength; ++i)
          *out++ = static_cast<unsigned char>(number.prefix[i]);
        for (size_t i = 0; i < number.digitCount; ++i)
          out[i] = static_cast<unsigned char>(number.digits[i]);
      }
      used_ += number.prefixLength + number.digitCount;
      return;
    }
    putNumberSlow(number);
  }

  // A whole number as "%ld" writes it without flags, width or precision,
  // and the ASCII text that follows it: the commonest conversion, written
  // straight into the buffer.
  __attribute__((always_inline)) void putPlainInteger(int64_t value, const char* suffix,
                                                      size_t suffixLength) {
    if (used_ + 32 > kCapacity) flush();
    if (mode_ == Mode::Bytes) {
      char* out = bytes_ + used_;
      size_t n = writeInteger(value, out);
      for (size_t i = 0; i < suffixLength; ++i) out[n + i] = suffix[i];
      used_ += n + suffixLength;
    } else {
      char16_t* out = units_ + used_;
      size_t n = writeInteger(value, out);
      for (size_t i = 0; i < suffixLength; ++i) out[n + i] = static_cast<unsigned char>(suffix[i]);
      used_ += n + suffixLength;
    }
  }

  // UTF-16 text: literals, %s, %c.
  void putText(const char16_t* text, size_t n) {
    if (n <= kQuickLimit && used_ + n <= kCapacity) {
      if (mode_ == Mode::Units) {
        std::memcpy(units_ + used_, text, n * sizeof(char16_t));
        used_ += n;
        return;
      }
      if (asciiTextAsBytes_) {
        char16_t any = 0;
        for (size_t i = 0; i < n; ++i) any |= text[i];
        if (any < 0x80) {
          for (size_t i = 0; i < n; ++i) bytes_[used_ + i] = static_cast<char>(text[i]);
          used_ += n;
          return;
        }
      }
    }
    putTextSlow(text, n);
  }
  // `count` copies of one character, as text.
  void putRepeatedText(char16_t c, uint64_t count);

  // Writes out what is gathered.
  void flush();

 private:
  static constexpr size_t kCapacity = 32768;
  static constexpr size_t kQuickLimit = 512;

  static size_t decimalDigits(uint64_t v) {
    static constexpr uint64_t kPowers[] = {1ULL,
                                           10ULL,
                                           100ULL,
                                           1000ULL,
                                           10000ULL,
                                           100000ULL,
                                           1000000ULL,
                                           10000000ULL,
                                           100000000ULL,
                                           1000000000ULL,
                                           10000000000ULL,
                                           100000000000ULL,
                                           1000000000000ULL,
                                           10000000000000ULL,
                                           100000000000000ULL,
                                           1000000000000000ULL,
                                           10000000000000000ULL,
                                           100000000000000000ULL,
                                           1000000000000000000ULL,
                                           10000000000000000000ULL};
    if (v < 10) return 1;
    // log10 from log2: 1233 / 4096 is just above log10(2).
    unsigned t = static_cast<unsigned>(std::bit_width(v) * 1233) >> 12;
    return t + 1 - (v < kPowers[t]);
  }

  template <class C>
  static size_t writeInteger(int64_t value, C* out) {
    static constexpr char kPairs[] =
        "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
        "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
        "8081828384858687888990919293949596979899";
    uint64_t magnitude = static_cast<uint64_t>(value);
    size_t sign = 0;
    if (value < 0) {
      *out = C('-');
      magnitude = 0 - magnitude;
      sign = 1;
    }
    size_t digits = decimalDigits(magnitude);
    C* p = out + sign + digits;
    while (magnitude >= 100) {
      unsigned pair = static_cast<unsigned>(magnitude % 100) * 2;
      magnitude /= 100;
      *--p = C(kPairs[pair + 1]);
      *--p = C(kPairs[pair]);
    }
    if (magnitude >= 10) {
      unsigned pair = static_cast<unsigned>(magnitude) * 2;
      *--p = C(kPairs[pair + 1]);
      *--p = C(kPairs[pair]);
    } else {
      *--p = C('0' + magnitude);
    }
    return sign + digits;
  }

  void putNumberSlow(const FormattedNumber& number);
  void putTextSlow(const char16_t* text, size_t n);
  void putNumberBytes(const char* p, size_t n);
  void putRepeatedNumberByte(char c, uint64_t count);
  void writeUnits(const char16_t* text, size_t n);
  [[noreturn]] void fail();

  stream& target_;
  Mode mode_;
  bool asciiTextAsBytes_;
  size_t used_ = 0;
  union {
    char bytes_[kCapacity];
    char16_t units_[kCapacity];
  };
};

}  // namespace Tarnwicks::FileIO

#include "print_sink.h"

#include <algorithm>

#include "twhost/stream_errors.h"

namespace Tarnwicks::FileIO {

PrintSink::PrintSink(stream& target, Mode mode, bool asciiTextAsBytes)
    : target_(target), mode_(mode), asciiTextAsBytes_(asciiTextAsBytes && mode == Mode::Bytes) {}

// Whatever is still gathered is dropped: the owner flushes before it looks at
// the result, and a destructor can't report a failed write.
PrintSink::~PrintSink() = default;

void PrintSink::fail() {
  used_ = 0;
  // A stream that has no code of its own for the failure reports NoHelp.
  throw target_.errorOr(StreamError::NoHelp);
}

void PrintSink::flush() {
  if (used_ == 0) return;
  size_t n = used_;
  used_ = 0;
  if (mode_ == Mode::Bytes) {
    if (target_.write(n, bytes_, 1) != n) fail();
  } else {
    if (target_.writeChars(n, units_) != n) fail();
  }
}

void PrintSink::writeUnits(const char16_t* text, size_t n) {
  if (n != 0 && target_.writeChars(n, text) != n) fail();
}

void PrintSink::putNumberBytes(const char* p, size_t n) {
  while (n > 0) {
    if (used_ == kCapacity) flush();
    size_t take = std::min(n, kCapacity - used_);
    if (mode_ == Mode::Bytes) {
      std::memcpy(bytes_ + used_, p, take);
    } else {
      for (size_t i = 0; i < take; ++i) units_[used_ + i] = static_cast<unsigned char>(p[i]);
    }
    used_ += take;
    p += take;
    n -= take;
  }
}

void PrintSink::putRepeatedNumberByte(char c, uint64_t count) {
  while (count > 0) {
    if (used_ == kCapacity) flush();
    size_t take = static_cast<size_t>(std::min<uint64_t>(count, kCapacity - used_));
    if (mode_ == Mode::Bytes) {
      std::memset(bytes_ + used_, c, take);
    } else {
      std::fill_n(units_ + used_, take, static_cast<char16_t>(c));
    }
    used_ += take;
    count -= take;
  }
}

void PrintSink::putNumberSlow(const FormattedNumber& number) {
  putRepeatedNumberByte(' ', number.padBefore);
  putNumberBytes(number.prefix, number.prefixLength);
  putRepeatedNumberByte('0', number.zeros);
  putNumberBytes(number.digits, number.digitCount);
  putRepeatedNumberByte('0', number.trailingZeros);
  putNumberBytes(number.suffix, number.suffixLength);
  putRepeatedNumberByte(' ', number.padAfter);
}

void PrintSink::putTextSlow(const char16_t* text, size_t n) {
  if (mode_ == Mode::Units) {
    while (n > 0) {
      if (used_ == kCapacity) flush();
      size_t take = std::min(n, kCapacity - used_);
      std::memcpy(units_ + used_, text, take * sizeof(char16_t));
      used_ += take;
      text += take;
      n -= take;
    }
    return;
  }
  // Bytes mode: ASCII runs may join the bytes; anything else goes through
  // the encoder, after what was gathered ahead of it.
  while (n > 0) {
    size_t run = 0;
    if (asciiTextAsBytes_) {
      while (run < n && text[run] < 0x80) ++run;
    }
    if (run > 0) {
      for (size_t done = 0; done < run;) {
        if (used_ == kCapacity) flush();
        size_t take = std::min(run - done, kCapacity - used_);
        for (size_t i = 0; i < take; ++i) bytes_[used_ + i] = static_cast<char>(text[done + i]);
        used_ += take;
        done += take;
      }
      text += run;
      n -= run;
      continue;
    }
    size_t other = 0;
    if (asciiTextAsBytes_) {
      while (other < n && text[other] >= 0x80) ++other;
    } else {
      other = n;
    }
    flush();
    writeUnits(text, other);
    text += other;
    n -= other;
  }
}

void PrintSink::putRepeatedText(char16_t c, uint64_t count) {
  if (count == 0) return;
  if (mode_ == Mode::Bytes && !(asciiTextAsBytes_ && c < 0x80)) {
    char16_t block[256];
    std::fill_n(block, 256, c);
    flush();
    while (count > 0) {
      size_t take = static_cast<size_t>(std::min<uint64_t>(count, 256));
      writeUnits(block, take);
      count -= take;
    }
    return;
  }
  // Units mode, or ASCII joining the bytes.
  putRepeatedNumberByte(static_cast<char>(c), count);
}

}  // namespace Tarnwicks::FileIO

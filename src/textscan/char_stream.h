// The characters a read works on: a window of units in memory, with a
// refill behind it for files.
//
// CharT is char16_t for decoded text (a char array, or a file in any
// encoding) and char for the bytes of a UTF-8 file read as they are. The
// readers see one contiguous window, `data()[head .. count)`; a look past
// `count` asks the refiller for more, which happens once per block and never
// inside a field's inner loop. A look past the end of the input gives
// kEndOfText, and the unit U+FFFF in the data is made the end of the input
// by the refiller (or by the text's setup), so that every test treats the
// two alike.
#pragma once

#include <cstddef>
#include <cstdint>

#include "textscan/number_lexer.h"

namespace textscan {

template <class CharT>
class CharStream;

// What stands behind a stream whose text is not all in memory. `more` adds
// units at the end of the window (moving or compacting the window as it
// likes, but never dropping units from `head` on) and returns false when
// the input has none left.
template <class CharT>
class Refiller {
 public:
  virtual ~Refiller() = default;
  virtual bool more(CharStream<CharT>& stream, size_t wanted) = 0;
};

template <class CharT>
class CharStream {
 public:
  using Unit = CharT;

  CharStream() = default;
  CharStream(const CharT* text, size_t size) : data_(text), count_(size) {}

  // The unit `offset` places ahead, or kEndOfText. Bytes come as their
  // values 0..255.
  [[gnu::always_inline]] char16_t peek(size_t offset = 0) {
    size_t i = head_ + offset;
    if (i < count_) return unit(data_[i]);
    return peekSlow(offset);
  }
  // Whether `n` units stand from `head` on (refilling as needed).
  [[gnu::always_inline]] bool available(size_t n) {
    if (head_ + n <= count_) return true;
    return availableSlow(n);
  }
  [[gnu::noinline]] bool availableSlow(size_t n) {
    while (refiller_ && head_ + n > count_) {
      if (!refiller_->more(*this, head_ + n - count_)) break;
    }
    return head_ + n <= count_;
  }
  // Moves on by `n` units. A string stream's place may pass its end, as an
  // offset given by the caller can; every look tests against the end.
  [[gnu::always_inline]] void advance(size_t n) {
    if (head_ + n <= count_ || !refiller_) {
      head_ += n;
      return;
    }
    advanceSlow(n);
  }
  [[gnu::noinline]] void advanceSlow(size_t n) {
    available(n);
    head_ = head_ + n <= count_ ? head_ + n : count_;
  }
  // A byte never reads as kEndOfText, and U+FFFF in decoded text is cut
  // off as the end, so this is the end of the input and nothing else.
  bool atEnd() { return peek() == kEndOfText; }

  // The window, for readers that scan it directly. Valid until the next
  // available/peek/advance that refills.
  const CharT* data() const { return data_; }
  size_t head() const { return head_; }
  size_t count() const { return count_; }
  // Units known to stand from `head`, without refilling.
  size_t buffered() const { return count_ > head_ ? count_ - head_ : 0; }

  static char16_t unit(CharT c) {
    return static_cast<char16_t>(static_cast<std::make_unsigned_t<CharT>>(c));
  }

  // For refillers: replace the window.
  void setWindow(const CharT* data, size_t head, size_t count) {
    data_ = data;
    head_ = head;
    count_ = count;
  }
  void setRefiller(Refiller<CharT>* r) { refiller_ = r; }

 private:
  [[gnu::noinline]] char16_t peekSlow(size_t offset) {
    if (refiller_ && available(offset + 1)) return unit(data_[head_ + offset]);
    return kEndOfText;
  }

  const CharT* data_ = nullptr;
  size_t head_ = 0;
  size_t count_ = 0;
  Refiller<CharT>* refiller_ = nullptr;
};

}  // namespace textscan

// ASCII units of a char array narrowed to bytes a block at a time.
#include "narrow_text.h"

#include <algorithm>
#include <cstring>

#include "read_switches.h"

namespace textscan {

namespace {

// Units tested at a time: the inner loop has no branch, so the compiler
// makes it a few vector ORs, and text beyond ASCII is turned away within a
// block of its first wide unit.
constexpr size_t kAsciiTestUnits = 4096;
constexpr char16_t kFirstWideUnit = 0x80;

}  // namespace

bool allAsciiUnits(const char16_t* units, size_t n) {
  for (size_t at = 0; at < n; at += kAsciiTestUnits) {
    size_t end = std::min(n, at + kAsciiTestUnits);
    char16_t seen = 0;
    for (size_t i = at; i < end; ++i) seen |= units[i];
    if (seen >= kFirstWideUnit) return false;
  }
  return true;
}

NarrowedText::NarrowedText(const char16_t* units, size_t size, CharStream<char>& stream)
    : units_(units), size_(size), stream_(stream) {
  stream_.setRefiller(this);
  stream_.setWindow(nullptr, 0, 0);
  more(stream_, 1);
}

NarrowedText::~NarrowedText() {
  stream_.setRefiller(nullptr);
}

void NarrowedText::dropConsumed() {
  size_t head = std::min(stream_.head(), count_);
  if (head < fileBlockUnits()) return;
  std::memmove(buffer_.get(), buffer_.get() + head, count_ - head);
  count_ -= head;
  dropped_ += head;
  stream_.setWindow(buffer_.get(), stream_.head() - head, count_);
}

bool NarrowedText::more(CharStream<char>& stream, size_t /*wanted*/) {
  if (next_ == size_) return false;
  dropConsumed();
  // One block a call, as for a file: a reader that wants more calls again.
  size_t want = std::min(fileBlockUnits(), size_ - next_);
  if (count_ + want > capacity_) {
    size_t grown = std::max(capacity_ * 2, count_ + want);
    std::unique_ptr<char[]> bigger(new char[grown]);
    if (count_) std::memcpy(bigger.get(), buffer_.get(), count_);
    buffer_ = std::move(bigger);
    capacity_ = grown;
  }
  char* out = buffer_.get() + count_;
  const char16_t* in = units_ + next_;
  for (size_t i = 0; i < want; ++i) out[i] = static_cast<char>(in[i]);
  count_ += want;
  next_ += want;
  stream.setWindow(buffer_.get(), stream.head(), count_);
  return true;
}

void NarrowedText::rewind() {
  count_ = 0;
  next_ = 0;
  dropped_ = 0;
  stream_.setWindow(buffer_.get(), 0, 0);
  more(stream_, 1);
}

uint64_t NarrowedText::position() const {
  return dropped_ + std::min(stream_.head(), count_);
}

}  // namespace textscan

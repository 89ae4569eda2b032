// Blocks of a file's text behind a CharStream: refills, dropping what was
// consumed, the end marker, and the byte position at the end.
#include "file_source.h"

#include "read_switches.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace textscan {

namespace {

// Units read at a time. Large enough that a refill is rare next to the work
// on the units, small enough that a read holds little of the file.
constexpr size_t kBlockUnits = size_t{1} << 18;
size_t blockUnits = kBlockUnits;

// U+FFFF in UTF-8.
constexpr unsigned char kEndMarkerBytes[3] = {0xEF, 0xBF, 0xBF};

}  // namespace

size_t fileBlockUnits() {
  return blockUnits;
}
void setFileBlockUnits(size_t units) {
  blockUnits = units == 0 ? kBlockUnits : units;
}

template <class CharT>
FileSource<CharT>::FileSource(Tarnwicks::FileIO::fileStream& file, CharStream<CharT>& stream)
    : file_(file), stream_(stream) {
  int64_t position = 0;
  if (file_.getPosition(position) != 0) position = 0;
  startByte_ = position;
  nextByte_ = static_cast<uint64_t>(position);
  stream_.setRefiller(this);
  stream_.setWindow(nullptr, 0, 0);
  more(stream_, 1);
}

template <class CharT>
FileSource<CharT>::~FileSource() {
  if (!finished_) finish();
  stream_.setRefiller(nullptr);
}

template <class CharT>
void FileSource<CharT>::dropConsumed() {
  size_t head = std::min(stream_.head(), count_);
  // The window is compacted once the consumed part is a block or more.
  if (head < blockUnits) return;
  size_t drop = head;
  if constexpr (sizeof(CharT) == 2) {
    // Only whole blocks go, so that every unit kept has its block's start.
    uint64_t place = dropped_ + head;
    auto containing = std::upper_bound(blocks_.begin(), blocks_.end(), place,
                                       [](uint64_t p, const Block& b) { return p < b.firstUnit; });
    --containing;
    drop = static_cast<size_t>(containing->firstUnit - dropped_);
    blocks_.erase(blocks_.begin(), containing);
    if (drop == 0) return;
  }
  std::memmove(buffer_.get(), buffer_.get() + drop, (count_ + held_ - drop) * sizeof(CharT));
  count_ -= drop;
  dropped_ += drop;
  stream_.setWindow(buffer_.get(), stream_.head() - drop, count_);
}

template <class CharT>
void FileSource<CharT>::cutAtEndMarker(size_t from) {
  if constexpr (sizeof(CharT) == 2) {
    const CharT* first = buffer_.get() + from;
    const CharT* last = buffer_.get() + count_;
    const CharT* at = std::find(first, last, static_cast<CharT>(kEndOfText));
    if (at != last) {
      count_ = static_cast<size_t>(at - buffer_.get());
      ended_ = true;
    }
  } else {
    // Bytes 0xEF are rare in most text: memchr finds the candidates fast.
    const char* p = buffer_.get() + from;
    const char* end = buffer_.get() + count_;
    while (p + 3 <= end) {
      p = static_cast<const char*>(
          std::memchr(p, kEndMarkerBytes[0], static_cast<size_t>(end - p)));
      if (!p || p + 3 > end) return;
      if (std::memcmp(p, kEndMarkerBytes, sizeof kEndMarkerBytes) == 0) {
        count_ = static_cast<size_t>(p - buffer_.get());
        ended_ = true;
        return;
      }
      ++p;
    }
  }
}

template <class CharT>
bool FileSource<CharT>::more(CharStream<CharT>& stream, size_t /*wanted*/) {
  if (ended_) return false;
  dropConsumed();
  // One block a call: a reader that wants far ahead (a wide %c) calls
  // again, and the buffer grows only with what the file holds.
  size_t want = blockUnits;
  if (count_ + held_ + want > capacity_) {
    size_t grown = std::max(capacity_ * 2, count_ + held_ + want);
    std::unique_ptr<CharT[]> bigger(new CharT[grown]);
    if (count_ + held_) std::memcpy(bigger.get(), buffer_.get(), (count_ + held_) * sizeof(CharT));
    buffer_ = std::move(bigger);
    capacity_ = grown;
  }
  size_t before = count_;
  if constexpr (sizeof(CharT) == 1) {
    size_t got = file_.read(want, buffer_.get() + count_ + held_, 1);
    count_ += held_ + got;
    held_ = 0;
    cutAtEndMarker(before);
    if (got == 0) {
      ended_ = true;
    } else if (!ended_) {
      // A block may end inside the end marker: its first bytes wait for
      // the next block before they count.
      auto* p = reinterpret_cast<const unsigned char*>(buffer_.get());
      if (count_ >= 1 && p[count_ - 1] == kEndMarkerBytes[0]) {
        held_ = 1;
      } else if (count_ >= 2 && p[count_ - 2] == kEndMarkerBytes[0] &&
                 p[count_ - 1] == kEndMarkerBytes[1]) {
        held_ = 2;
      }
      count_ -= held_;
    }
    stream.setWindow(buffer_.get(), stream.head(), count_);
    return count_ > before || (!ended_ && got > 0);
  } else {
    size_t bytes = 0;
    size_t got = file_.readChars(buffer_.get() + count_, want, bytes);
    if (got == 0) {
      ended_ = true;
      stream.setWindow(buffer_.get(), stream.head(), count_);  // the buffer may have moved
      return false;
    }
    blocks_.push_back({dropped_ + count_, nextByte_, got == bytes});
    nextByte_ += bytes;
    count_ += got;
    cutAtEndMarker(before);
    stream.setWindow(buffer_.get(), stream.head(), count_);
    return count_ > before;
  }
}

template <class CharT>
void FileSource<CharT>::rewind() {
  file_.setPosition(startByte_);
  count_ = held_ = 0;
  dropped_ = 0;
  nextByte_ = static_cast<uint64_t>(startByte_);
  blocks_.clear();
  ended_ = false;
  stream_.setWindow(buffer_.get(), 0, 0);
  more(stream_, 1);
}

template <class CharT>
uint64_t FileSource<CharT>::bytePositionOf(uint64_t unit) {
  if constexpr (sizeof(CharT) == 1) {
    return static_cast<uint64_t>(startByte_) + unit;
  } else {
    if (blocks_.empty()) return nextByte_;
    auto containing = std::upper_bound(blocks_.begin(), blocks_.end(), unit,
                                       [](uint64_t p, const Block& b) { return p < b.firstUnit; });
    if (containing == blocks_.begin()) return blocks_.front().firstByte;
    --containing;
    uint64_t within = unit - containing->firstUnit;
    if (containing->oneBytePerUnit || within == 0) return containing->firstByte + within;
    // Characters of varying size: decode the consumed part once more.
    file_.setPosition(static_cast<int64_t>(containing->firstByte));
    std::vector<char16_t> scratch(within);
    size_t bytes = 0;
    file_.readChars(scratch.data(), within, bytes);
    return containing->firstByte + bytes;
  }
}

template <class CharT>
uint64_t FileSource<CharT>::finish() {
  finished_ = true;
  uint64_t unit = dropped_ + std::min(stream_.head(), count_);
  uint64_t position = bytePositionOf(unit);
  file_.setPosition(static_cast<int64_t>(position));
  return position;
}

template class FileSource<char>;
template class FileSource<char16_t>;

}  // namespace textscan

// The stop rule of fread: when a reader has read enough. A reader asks its
// rule how large the next block may be and whether to go on; the rule holds
// nothing but the count asked for.
#pragma once

#include <algorithm>
#include <cstddef>

namespace Tarnwicks::FileIO {

class StopRule {
 public:
  // The size is unbounded: read until the file ends.
  static StopRule atEnd() { return StopRule(true, 0); }
  // `n` elements were asked for.
  static StopRule afterCount(size_t n) { return StopRule(false, n); }

  // Elements in a block when nothing else bounds it.
  size_t blockSize() const { return readsAll_ ? kBlock : std::min(wanted_, kBlock); }
  // True while `done` elements are fewer than wanted.
  bool wantsMore(size_t done) const { return readsAll_ || wanted_ > done; }
  // The next block: `block`, cut to what is still wanted.
  size_t nextBlock(size_t block, size_t done) const {
    return readsAll_ ? block : std::min(block, wanted_ - done);
  }
  // True when the read goes to the end of the file.
  bool readsAll() const { return readsAll_; }
  // The elements asked for; 0 when readsAll().
  size_t wanted() const { return wanted_; }

 private:
  static constexpr size_t kBlock = 1024;
  StopRule(bool readsAll, size_t wanted) : readsAll_(readsAll), wanted_(wanted) {}

  bool readsAll_;
  size_t wanted_;
};

}  // namespace Tarnwicks::FileIO

// The stop rules of fread: when a reader has read enough. A reader asks its
// rule how large the next block may be and whether to go on; the rule holds
// nothing but the count asked for.
#pragma once

#include <algorithm>
#include <cstddef>

namespace Tarnwicks::FileIO {

class AllBase {
 public:
  virtual ~AllBase() = default;
  // Elements in a block when nothing else bounds it.
  virtual size_t blockSize() const = 0;
  // True while `done` elements are fewer than wanted.
  virtual bool wantsMore(size_t done) const = 0;
  // The next block: `block`, cut to what is still wanted.
  virtual size_t nextBlock(size_t block, size_t done) const = 0;
  // True when the read goes to the end of the file.
  virtual bool readsAll() const = 0;
};

// The size is unbounded: read until the file ends.
class AllHelperClass final : public AllBase {
 public:
  size_t blockSize() const override { return 1024; }
  bool wantsMore(size_t) const override { return true; }
  size_t nextBlock(size_t block, size_t) const override { return block; }
  bool readsAll() const override { return true; }
};

// `n` elements were asked for.
class NHelperClass final : public AllBase {
 public:
  explicit NHelperClass(size_t n) : n(n) {}
  size_t blockSize() const override { return std::min<size_t>(n, 1024); }
  bool wantsMore(size_t done) const override { return n > done; }
  size_t nextBlock(size_t block, size_t done) const override { return std::min(block, n - done); }
  bool readsAll() const override { return false; }

  size_t n;
};

}  // namespace Tarnwicks::FileIO

// Call frames and the two allocation families that record into them.
#include "twhost/kx_frame.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <unordered_set>
#include <vector>

#include "array_impl.h"
#include "twhost/errors.h"
#include "twhost/kx_memory.h"

namespace {

// The records of one frame. Most built-in calls make a handful of arrays and
// adopt them soon after, so a short vector searched from the back answers
// nearly every query at once; past a few dozen records a hash set takes over,
// so that a call making millions of arrays stays linear.
template <class T>
class RecordSet {
 public:
  void insert(T p) {
    if (big_) {
      big_->insert(p);
      return;
    }
    small_.push_back(p);
    if (small_.size() > kSmallLimit) {
      big_ = std::make_unique<std::unordered_set<T>>(small_.begin(), small_.end());
      small_.clear();
    }
  }
  bool erase(T p) {
    if (big_) return big_->erase(p) > 0;
    for (size_t i = small_.size(); i-- > 0;) {
      if (small_[i] == p) {
        small_[i] = small_.back();
        small_.pop_back();
        return true;
      }
    }
    return false;
  }
  size_t size() const { return big_ ? big_->size() : small_.size(); }
  template <class F>
  void forEach(F f) const {
    if (big_) {
      for (T p : *big_) f(p);
    } else {
      for (T p : small_) f(p);
    }
  }
  void moveInto(RecordSet& other) {
    forEach([&](T p) { other.insert(p); });
    clear();
  }
  void clear() {
    small_.clear();
    big_.reset();
  }

 private:
  static constexpr size_t kSmallLimit = 32;
  std::vector<T> small_;
  std::unique_ptr<std::unordered_set<T>> big_;
};

}  // namespace

struct kxCallFrame::Records {
  RecordSet<void*> blocks;
  RecordSet<kxArray*> arrays;
};

namespace {

// The frames in force, innermost last.
std::vector<kxCallFrame::Records*>& frameStack() {
  static std::vector<kxCallFrame::Records*> stack;
  return stack;
}

// Records are reused from one call to the next at the same depth, so that a
// loop of built-in calls allocates nothing for its accounting.
kxCallFrame::Records* recordsForDepth(size_t depth) {
  static std::vector<std::unique_ptr<kxCallFrame::Records>> pool;
  while (pool.size() <= depth) pool.push_back(std::make_unique<kxCallFrame::Records>());
  return pool[depth].get();
}

constexpr size_t kHugeThreshold = size_t{4} << 20;
constexpr size_t kHugeAlign = size_t{2} << 20;

// A large block grown by realloc lands in fresh pages that nobody advised;
// the whole 2 MiB stretches inside it are worth asking for as huge pages.
void adviseHugePages(void* p, size_t bytes) {
  auto start = (reinterpret_cast<uintptr_t>(p) + kHugeAlign - 1) & ~(kHugeAlign - 1);
  auto end = (reinterpret_cast<uintptr_t>(p) + bytes) & ~(kHugeAlign - 1);
  if (end > start) madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
}

void* rawAlloc(size_t bytes) {
  if (bytes == 0) bytes = 1;
  if (bytes < kHugeThreshold) return std::malloc(bytes);
  void* p = nullptr;
  size_t rounded = (bytes + kHugeAlign - 1) & ~(kHugeAlign - 1);
  if (posix_memalign(&p, kHugeAlign, rounded) != 0) return nullptr;
  madvise(p, rounded, MADV_HUGEPAGE);
  return p;
}

void* checked(void* p) {
  if (!p) fl::except::bad_alloc();
  return p;
}

void* recorded(void* p) {
  if (p) twhost::recordBlock(p);
  return p;
}

}  // namespace

namespace twhost {

void recordArray(kxArray* a) {
  auto& stack = frameStack();
  if (!stack.empty()) stack.back()->arrays.insert(a);
}

// A record is looked for from the innermost frame outwards, since a deeper
// call may adopt or free what an outer one made.
void forgetArray(kxArray* a) {
  auto& stack = frameStack();
  for (auto it = stack.rbegin(); it != stack.rend(); ++it) {
    if ((*it)->arrays.erase(a)) return;
  }
}

void recordBlock(void* p) {
  auto& stack = frameStack();
  if (!stack.empty()) stack.back()->blocks.insert(p);
}

void forgetBlock(void* p) {
  auto& stack = frameStack();
  for (auto it = stack.rbegin(); it != stack.rend(); ++it) {
    if ((*it)->blocks.erase(p)) return;
  }
}

void* allocData(size_t bytes, bool zero) {
  void* p = checked(rawAlloc(bytes));
  if (zero) std::memset(p, 0, bytes == 0 ? 1 : bytes);
  return p;
}

void freeData(void* p) {
  std::free(p);
}

}  // namespace twhost

// ---- the frame ---------------------------------------------------------------

kxCallFrame::kxCallFrame()
    : records_(recordsForDepth(frameStack().size())),
      exceptionsAtStart_(std::uncaught_exceptions()) {
  frameStack().push_back(records_);
}

kxCallFrame::~kxCallFrame() {
  auto& stack = frameStack();
  // Take our records off the stack first, so that destroying what is left
  // does not look for it in us again.
  if (!stack.empty() && stack.back() == records_) stack.pop_back();
  if (std::uncaught_exceptions() > exceptionsAtStart_) {
    // An error is passing out of the call: nothing it made survives.
    records_->arrays.forEach([](kxArray* a) { kxDestroyArray(a); });
    records_->blocks.forEach([](void* p) { std::free(p); });
  } else if (!stack.empty()) {
    // A normal return: what is left stays accounted to the caller's frame.
    records_->arrays.moveInto(stack.back()->arrays);
    records_->blocks.moveInto(stack.back()->blocks);
  }
  records_->arrays.clear();
  records_->blocks.clear();
}

void kxCallFrame::keep(kxArray* a) {
  if (!a || !records_->arrays.erase(a)) return;
  auto& stack = frameStack();
  for (auto it = stack.rbegin(); it != stack.rend(); ++it) {
    if (*it != records_) {
      (*it)->arrays.insert(a);
      return;
    }
  }
}

void kxReleaseFromFrames(kxArray* a) {
  if (a) twhost::forgetArray(a);
}

size_t kxCallFrame::liveBlocks() const {
  return records_->blocks.size();
}
size_t kxCallFrame::liveArrays() const {
  return records_->arrays.size();
}

int kxCallBuiltin(BuiltinEntry entry, int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  int outputs = nlhs > 0 ? nlhs : 1;
  for (int i = 0; i < outputs; ++i) plhs[i] = nullptr;
  try {
    kxCallFrame frame;
    return entry(nlhs, plhs, nrhs, prhs);
  } catch (...) {
    // The frame has freed whatever the outputs held.
    for (int i = 0; i < outputs; ++i) plhs[i] = nullptr;
    throw;
  }
}

// ---- allocation families --------------------------------------------------------

void* kxMallocEx(size_t n) {
  return recorded(rawAlloc(n));
}
void* kxMallocExCheck(size_t n) {
  return recorded(checked(rawAlloc(n)));
}
void* kxCallocEx(size_t count, size_t size) {
  size_t bytes = 0;
  if (__builtin_mul_overflow(count, size, &bytes)) return nullptr;
  void* p = rawAlloc(bytes);
  if (p) std::memset(p, 0, bytes == 0 ? 1 : bytes);
  return recorded(p);
}
void* kxCallocExCheck(size_t count, size_t size) {
  return checked(kxCallocEx(count, size));
}
void* kxReallocExCheck(void* p, size_t n) {
  if (!p) return kxMallocExCheck(n);
  // The record stays with the frame that held it, under the new address; a
  // failed realloc leaves the old block, and its record, in place.
  RecordSet<void*>* owner = nullptr;
  auto& stack = frameStack();
  for (auto it = stack.rbegin(); it != stack.rend() && !owner; ++it) {
    if ((*it)->blocks.erase(p)) owner = &(*it)->blocks;
  }
  void* q = std::realloc(p, n == 0 ? 1 : n);
  if (owner) owner->insert(q ? q : p);
  if (q && n >= kHugeThreshold) adviseHugePages(q, n);
  return checked(q);
}
void kxFreeEx(void* p) {
  if (!p) return;
  twhost::forgetBlock(p);
  std::free(p);
}
void kxFree(void* p) {
  kxFreeEx(p);
}

// Host-scoped blocks outlive calls (open files live in them), so they are not
// recorded; their owners free them by destructor.
void* utMalloc(size_t n) {
  return rawAlloc(n);
}
void* utMallocWithCheck(size_t n) {
  return checked(rawAlloc(n));
}
void* utCalloc(size_t count, size_t size) {
  size_t bytes = 0;
  if (__builtin_mul_overflow(count, size, &bytes)) return nullptr;
  void* p = rawAlloc(bytes);
  if (p) std::memset(p, 0, bytes == 0 ? 1 : bytes);
  return p;
}
void* utReallocWithCheck(void* p, size_t n) {
  return checked(std::realloc(p, n == 0 ? 1 : n));
}
void utFree(void* p) {
  std::free(p);
}

// Call frames and the two allocation families that record into them.
#include "host/kx_frame.h"

#include <sys/mman.h>

#include <cstdlib>
#include <cstring>
#include <exception>
#include <unordered_set>
#include <vector>

#include "array_impl.h"
#include "host/errors.h"
#include "host/kx_memory.h"

struct kxCallFrame::Records {
  std::unordered_set<void*> blocks;
  std::unordered_set<kxArray*> arrays;
};

namespace {

// The frames in force, innermost last.
std::vector<kxCallFrame::Records*>& frameStack() {
  static std::vector<kxCallFrame::Records*> stack;
  return stack;
}

constexpr size_t kHugeThreshold = size_t{4} << 20;
constexpr size_t kHugeAlign = size_t{2} << 20;

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

kxCallFrame::kxCallFrame() : records_(new Records), exceptionsAtStart_(std::uncaught_exceptions()) {
  frameStack().push_back(records_);
}

kxCallFrame::~kxCallFrame() {
  auto& stack = frameStack();
  // Take our records off the stack first, so that destroying what is left
  // does not look for it in us again.
  if (!stack.empty() && stack.back() == records_) stack.pop_back();
  if (std::uncaught_exceptions() > exceptionsAtStart_) {
    // An error is passing out of the call: nothing it made survives.
    for (kxArray* a : records_->arrays) kxDestroyArray(a);
    for (void* p : records_->blocks) std::free(p);
  } else if (!stack.empty()) {
    // A normal return: what is left stays accounted to the caller's frame.
    stack.back()->arrays.merge(records_->arrays);
    stack.back()->blocks.merge(records_->blocks);
  }
  delete records_;
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
  std::unordered_set<void*>* owner = nullptr;
  auto& stack = frameStack();
  for (auto it = stack.rbegin(); it != stack.rend() && !owner; ++it) {
    if ((*it)->blocks.erase(p)) owner = &(*it)->blocks;
  }
  void* q = std::realloc(p, n == 0 ? 1 : n);
  if (owner) owner->insert(q ? q : p);
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

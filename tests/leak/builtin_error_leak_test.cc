// Run under the leak sanitizer: built-ins that fail after allocating arrays
// and blocks, called the way the host calls them, must leave nothing behind.
// The sanitizer checks at exit and fails the run on any leak.
//
// With --leak-on-purpose the program drops a block on the floor instead, so
// that the test suite can show that the sanitizer is really watching.
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "twhost/errors.h"
#include "twhost/kx_array.h"
#include "twhost/kx_frame.h"
#include "twhost/kx_memory.h"

namespace {

int failAfterAllocating(int nlhs, kxArray** plhs, int, kxArray**) {
  for (int i = 0; i < nlhs; ++i) plhs[i] = kxCreateNumericMatrix(100, 100, kxINT32_CLASS, kxREAL);
  kxArray* cell = kxCreateCellMatrix(2, 2);
  for (size_t i = 0; i < 4; ++i) kxSetCell(cell, i, kxCreateString("an element of the cell"));
  const char* names[] = {"a", "b"};
  kxArray* s = kxCreateStructMatrix(1, 3, 2, names);
  kxSetField(s, 2, "b", kxCreateDoubleMatrix(5, 5, kxCOMPLEX));
  kxSetField(s, 0, "c", cell);
  kxMallocExCheck(1000);
  kxCallocExCheck(10, 10);
  void* big = kxMallocExCheck(16);
  big = kxReallocExCheck(big, size_t{8} << 20);  // past the huge-page threshold
  kxArray* grown = kxCreateNumericMatrix(0, 0, kxUINT8_CLASS, kxREAL);
  kxSetData(grown, kxMallocExCheck(64));
  char* text = kxArray2String(plhs[0] ? plhs[0] : grown);
  (void)text;
  kxThrowId("KORVAN:FileIO", "InvalidFid");
}

int failInsideANestedCall(int, kxArray** plhs, int, kxArray**) {
  plhs[0] = kxCreateDoubleScalar(1);
  kxArray* inner[2] = {};
  try {
    kxCallBuiltin(failAfterAllocating, 2, inner, 0, nullptr);
  } catch (const fl::except::IUserException&) {
    // The nested failure is handled here; this body then fails on its own.
  }
  kxMallocExCheck(50);
  throw std::runtime_error("outer failure");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "--leak-on-purpose") == 0) {
    void* lost = utMalloc(123);
    lost = nullptr;
    (void)lost;
    return 0;
  }
  int failures = 0;
  for (int round = 0; round < 3; ++round) {
    kxArray* out[3] = {};
    try {
      kxCallBuiltin(failAfterAllocating, 3, out, 0, nullptr);
      ++failures;
    } catch (const fl::except::IUserException&) {
    }
    for (kxArray* a : out) failures += a != nullptr;
    try {
      kxCallBuiltin(failInsideANestedCall, 1, out, 0, nullptr);
      ++failures;
    } catch (const std::runtime_error&) {
    }
  }
  if (failures) std::fprintf(stderr, "%d calls did not end as expected\n", failures);
  return failures == 0 ? 0 : 1;
}

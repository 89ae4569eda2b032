// Call frames: what a built-in makes is freed when an error passes out of it,
// handed to the caller when it returns, and forgotten once adopted.
#include <gtest/gtest.h>

#include <stdexcept>

#include "twhost/errors.h"
#include "twhost/kx_array.h"
#include "twhost/kx_frame.h"
#include "twhost/kx_memory.h"

namespace {

// A body that makes arrays of every kind of ownership, blocks, and an
// output, then fails.
int makeThenFail(int, kxArray** plhs, int, kxArray**) {
  plhs[0] = kxCreateDoubleMatrix(10, 10, kxCOMPLEX);
  kxArray* cell = kxCreateCellMatrix(1, 2);
  kxSetCell(cell, 0, kxCreateString("held by the cell"));
  const char* names[] = {"f"};
  kxArray* s = kxCreateStructMatrix(1, 1, 1, names);
  kxSetField(s, 0, "f", kxCreateDoubleScalar(1));
  kxSetCell(cell, 1, s);
  kxMallocExCheck(100);
  void* grown = kxMallocExCheck(8);
  grown = kxReallocExCheck(grown, 1 << 20);
  kxArray* adoptedData = kxCreateDoubleMatrix(0, 0, kxREAL);
  kxSetData(adoptedData, kxCallocExCheck(4, sizeof(double)));
  kxThrowId("KORVAN:FileIO", "InvalidFid");
}

int makeThenReturn(int, kxArray** plhs, int, kxArray**) {
  plhs[0] = kxCreateDoubleScalar(3);
  kxDestroyArray(kxCreateDoubleScalar(4));  // a temporary the body frees itself
  kxFreeEx(kxMallocEx(16));
  return 0;
}

int throwsPlainException(int, kxArray** plhs, int, kxArray**) {
  plhs[0] = kxCreateString("x");
  throw std::runtime_error("not a host error");
}

TEST(HostFrame, ErrorOutOfABuiltinFreesEverythingItMade) {
  kxCallFrame caller;
  kxArray* out[1] = {};
  EXPECT_THROW(kxCallBuiltin(makeThenFail, 1, out, 0, nullptr), fl::except::IMsgIDException);
  EXPECT_EQ(out[0], nullptr);
  EXPECT_EQ(caller.liveArrays(), 0u);
  EXPECT_EQ(caller.liveBlocks(), 0u);
}

TEST(HostFrame, AnyExceptionTypeFreesTheOutputs) {
  kxCallFrame caller;
  kxArray* out[1] = {};
  EXPECT_THROW(kxCallBuiltin(throwsPlainException, 1, out, 0, nullptr), std::runtime_error);
  EXPECT_EQ(out[0], nullptr);
  EXPECT_EQ(caller.liveArrays(), 0u);
}

TEST(HostFrame, NormalReturnHandsTheOutputsToTheCaller) {
  kxCallFrame caller;
  kxArray* out[1] = {};
  EXPECT_EQ(kxCallBuiltin(makeThenReturn, 1, out, 0, nullptr), 0);
  ASSERT_NE(out[0], nullptr);
  EXPECT_EQ(kxGetScalar(out[0]), 3);
  EXPECT_EQ(caller.liveArrays(), 1u);
  EXPECT_EQ(caller.liveBlocks(), 0u);
  kxDestroyArray(out[0]);
  EXPECT_EQ(caller.liveArrays(), 0u);
}

TEST(HostFrame, InputsOfTheCallerSurviveAnErrorInTheCallee) {
  kxCallFrame caller;
  kxArray* in[1] = {kxCreateDoubleScalar(5)};
  kxArray* out[1] = {};
  EXPECT_THROW(kxCallBuiltin(makeThenFail, 1, out, 1, in), fl::except::IMsgIDException);
  EXPECT_EQ(caller.liveArrays(), 1u);
  EXPECT_EQ(kxGetScalar(in[0]), 5);
  kxDestroyArray(in[0]);
}

TEST(HostFrame, AdoptionRemovesTheRecord) {
  kxCallFrame frame;
  void* block = kxMallocExCheck(3 * sizeof(double));
  kxArray* a = kxCreateDoubleMatrix(0, 0, kxREAL);
  EXPECT_EQ(frame.liveBlocks(), 1u);
  EXPECT_EQ(frame.liveArrays(), 1u);
  kxSetData(a, block);
  EXPECT_EQ(frame.liveBlocks(), 0u);

  kxArray* cell = kxCreateCellMatrix(1, 1);
  EXPECT_EQ(frame.liveArrays(), 2u);
  kxSetCell(cell, 0, a);
  EXPECT_EQ(frame.liveArrays(), 1u);

  auto** slots = static_cast<kxArray**>(kxCallocExCheck(1, sizeof(kxArray*)));
  slots[0] = kxCreateDoubleScalar(1);
  EXPECT_EQ(frame.liveBlocks(), 1u);
  EXPECT_EQ(frame.liveArrays(), 2u);
  kxSetCells(cell, slots);
  EXPECT_EQ(frame.liveBlocks(), 0u);
  EXPECT_EQ(frame.liveArrays(), 1u);
  kxDestroyArray(cell);
  EXPECT_EQ(frame.liveArrays(), 0u);
}

TEST(HostFrame, FreeingAndReallocatingKeepTheRecordsRight) {
  kxCallFrame frame;
  void* p = kxMallocEx(8);
  void* q = kxReallocExCheck(p, 1 << 22);
  EXPECT_EQ(frame.liveBlocks(), 1u);
  kxFreeEx(q);
  EXPECT_EQ(frame.liveBlocks(), 0u);
  void* host = utMallocWithCheck(64);
  EXPECT_EQ(frame.liveBlocks(), 0u);  // host-scoped blocks are not recorded
  utFree(host);
}

TEST(HostFrame, KeepHandsAnArrayToTheEnclosingFrame) {
  kxCallFrame outer;
  kxArray* kept = nullptr;
  try {
    kxCallFrame inner;
    kept = kxCreateDoubleScalar(1);
    kxCreateDoubleScalar(2);  // dropped by the error below
    inner.keep(kept);
    EXPECT_EQ(inner.liveArrays(), 1u);
    throw 1;
  } catch (int) {
  }
  EXPECT_EQ(outer.liveArrays(), 1u);
  EXPECT_EQ(kxGetScalar(kept), 1);
  kxDestroyArray(kept);
}

TEST(HostFrame, ANestedFrameFreesOnlyWhatItMade) {
  kxCallFrame outer;
  kxArray* before = kxCreateDoubleScalar(1);
  try {
    kxCallFrame inner;
    kxCreateDoubleScalar(2);
    kxMallocExCheck(10);
    // Something from the outer frame, freed inside, is forgotten where it was.
    kxDestroyArray(before);
    EXPECT_EQ(outer.liveArrays(), 0u);
    EXPECT_EQ(inner.liveArrays(), 1u);
    throw 1;
  } catch (int) {
  }
  EXPECT_EQ(outer.liveArrays(), 0u);
  EXPECT_EQ(outer.liveBlocks(), 0u);
}

TEST(HostFrame, NothingIsRecordedWithoutAFrame) {
  kxArray* a = kxCreateDoubleScalar(1);  // would be lost to no record
  kxCallFrame frame;
  EXPECT_EQ(frame.liveArrays(), 0u);
  kxDestroyArray(a);
}

TEST(HostFrame, ReleasedArraysSurviveAnErrorPassingTheirFrame) {
  kxArray* released = nullptr;
  kxCallFrame outer;
  try {
    kxCallFrame frame;
    released = kxCreateDoubleScalar(8);
    kxCreateDoubleScalar(9);  // not released: freed by the error
    kxReleaseFromFrames(released);
    EXPECT_EQ(frame.liveArrays(), 1u);
    kxThrowId("KORVAN:FileIO", "InvalidFid");
  } catch (const fl::except::IMsgIDException&) {
  }
  EXPECT_EQ(outer.liveArrays(), 0u);
  EXPECT_EQ(kxGetScalar(released), 8);
  kxDestroyArray(released);
}

TEST(HostFrame, SizesThatOverflowRaiseOutOfMemory) {
  kxCallFrame frame;
  EXPECT_THROW(kxCreateDoubleMatrix(SIZE_MAX / 4, 4, kxREAL), fl::except::IMsgIDException);
  size_t dims[] = {SIZE_MAX / 2, 3};
  EXPECT_THROW(kxCreateCellArray(2, dims), fl::except::IMsgIDException);
  EXPECT_EQ(kxCallocEx(SIZE_MAX / 2, 4), nullptr);
  EXPECT_EQ(frame.liveArrays(), 0u);
}

TEST(HostFrame, CheckedAllocationFailureRaisesOutOfMemory) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the address sanitizer stops on impossible allocations";
#endif
  kxCallFrame frame;
  try {
    kxMallocExCheck(SIZE_MAX / 2);
    FAIL() << "no error";
  } catch (const fl::except::IUserException& e) {
    EXPECT_EQ(e.get_error_id(), "KORVAN:nomem");
  }
  EXPECT_EQ(kxMallocEx(SIZE_MAX / 2), nullptr);
  EXPECT_EQ(frame.liveBlocks(), 0u);
}

}  // namespace

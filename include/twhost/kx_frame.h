// Call frames: the host's accounting of what one built-in call allocates.
//
// While a frame is current, every array-scoped block (kxMallocEx ...) and
// every array made by a creator is recorded in it. Adoption (kxSetData,
// kxSetCell, ...) and freeing remove the record. When an error passes out of
// the frame, everything still recorded is freed, so no error path leaks. On a
// normal end the records pass to the enclosing frame, or are dropped when
// there is none: the caller owns the outputs it was handed (keep()).
#pragma once

#include <cstddef>

#include "twhost/export.h"
#include "twhost/kx_array.h"

class TW_HOST kxCallFrame {
 public:
  kxCallFrame();
  ~kxCallFrame();
  kxCallFrame(const kxCallFrame&) = delete;
  kxCallFrame& operator=(const kxCallFrame&) = delete;

  // Hands an array (and all it contains) to whoever made the frame.
  void keep(kxArray* a);
  // How many blocks and arrays are recorded now; for tests.
  size_t liveBlocks() const;
  size_t liveArrays() const;

  struct Records;

 private:
  Records* records_;
  int exceptionsAtStart_;
};

// Takes an array out of the records of every frame in force: from now on
// only its holder owns it (a kxOwned, a result handed to another language),
// and no error passing an enclosing frame frees it. The arrays it contains
// were never recorded apart from it. One look-up in each frame in force.
TW_HOST void kxReleaseFromFrames(kxArray* a);

// Calls a built-in under a new frame. On an error every output slot is freed
// and nulled, and the error passes on.
using BuiltinEntry = int (*)(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
TW_HOST int kxCallBuiltin(BuiltinEntry entry, int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);

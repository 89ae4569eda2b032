// Helpers of the file layer's tests: a scratch folder, caught warnings and
// the identifier of a raised error, as the other modules' tests have them.
#pragma once

#include "support/builtin_calls.h"
#include "support/scratch_dir.h"

namespace files_test {

using test_support::CaughtWarnings;
using test_support::raisedBy;
using test_support::ScratchDir;

}  // namespace files_test

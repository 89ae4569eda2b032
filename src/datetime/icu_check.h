// The test that follows every ICU call of the date parser: a failed status
// throws "KORVAN:datetime:kexErrors:ICUError" with the step's label and
// ICU's name for the status.
#pragma once

#include <unicode/utypes.h>

#include <string>

#include "twhost/errors.h"

namespace datetime {

[[noreturn]] inline void throwICUError(const char* step, UErrorCode status) {
  kxThrowId("KORVAN:datetime:kexErrors", "ICUError", std::string(step),
            std::string(u_errorName(status)));
}

inline void checkICU(UErrorCode status, const char* step) {
  if (U_FAILURE(status)) throwICUError(step, status);
}

}  // namespace datetime

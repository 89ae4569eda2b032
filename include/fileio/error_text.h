// The text a user sees for a stream error number, as the error-text output of
// the file, print and scan built-ins.
#pragma once

#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

// 0 gives the empty text (0 by 0), a StreamError code its catalogue text,
// anything else strerror's text.
kxArray* errorTextArray(int code);

}  // namespace Tarnwicks::FileIO

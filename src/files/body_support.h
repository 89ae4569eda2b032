// Small pieces shared by the bodies of the file built-ins.
#pragma once

#include <string>

#include "host/kx_array.h"

namespace Tarnwicks::FileIO {

class twAbsFile;

// The message of an error number as a text array: 0 gives the empty text
// (0 by 0), -1..-45 the catalogue text, anything else strerror.
kxArray* errorTextArray(int code);
// A text array from narrow UTF-8 text; "" gives the empty text (0 by 0).
kxArray* textArray(const std::string& text);
// The position as ftell reports it: false with lastError set on failure,
// else lastError 0.
bool tellPosition(twAbsFile* file, int64_t& position);

}  // namespace Tarnwicks::FileIO

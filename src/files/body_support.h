// Small pieces shared by the bodies of the file built-ins.
#pragma once

#include <string>

#include "fileio/error_text.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

class twAbsFile;

// A text array from narrow UTF-8 text; "" gives the empty text (0 by 0).
kxArray* textArray(const std::string& text);
// The position as ftell reports it: false with lastError set on failure,
// else lastError 0.
bool tellPosition(twAbsFile* file, int64_t& position);

}  // namespace Tarnwicks::FileIO

// Backslash escapes of print and scan formats, and the integer reader they
// share with the format parsers. Built in the print area; the scan area uses
// them too, which is why they are declared here.
#pragma once

#include <cstdint>

#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

// Reads an optional "-" and then digits of `base` (8, 10 or 16, letters of
// either case) from [text, limit). The magnitude saturates at 2^31, so a
// positive overflow gives 2147483647 and a negative one -2147483648. `stop`
// is the first unit not used; it falls back to `text` when a sign has no
// digit behind it.
int32_t parseWideInteger(const char16_t* text, const char16_t* limit, const char16_t*& stop,
                         int base);

// Replaces the backslash sequences of `format` in place. A bad sequence
// raises a warning and ends the translation there: `format` keeps what was
// translated before it and loses the rest. Returns true on such a failure.
bool translateEscapes(ustring& format);

}  // namespace Tarnwicks::FileIO

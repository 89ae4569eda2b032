// What the print built-ins share: the checks of their value arguments, the
// choice of how a stream is written, and the text results.
#pragma once

#include <cstdint>

#include "fileio/string_streams.h"
#include "print_sink.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

// Every value must be numeric, char or logical, and not sparse; else
// "<catalog>:invalidInputType" (with the class name) or
// "<catalog>:invalidInputAttribute".
void checkPrintValues(kxArray* const* values, int count, const char* catalog);

// True when text written through `target`'s encoder gives the same bytes as
// ASCII written raw, so that a literal may join the number bytes.
bool writesAsciiAsBytes(stream& target);

// The units gathered in a UTF-16 string stream as a char array that adopts
// them: 1 by n. With nothing written, 1 by 0, or the empty text (0 by 0)
// when `emptyAsEmptyText`.
kxArray* takeStreamText(outputStringStream& text, bool emptyAsEmptyText);

}  // namespace Tarnwicks::FileIO

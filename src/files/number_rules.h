// The two rule sets behind the number readers (fileio/number_readers.h):
// the C scanner's on a FILE, and the C conversions' on a text in place.
// Each runs one begin() ... commit() of its source. `base` 0 asks for the
// base the text gives ("0x" hexadecimal, "0" octal, else decimal).
#pragma once

#include <cstdint>

#include "fileio/byte_source.h"

namespace Tarnwicks::FileIO {

uint64_t scanInteger(ByteSource& in, int base, bool isSigned, int width, int& error,
                     bool& negative);
double scanDouble(ByteSource& in, int width, int& status);

uint64_t convertInteger(ByteSource& in, int base, bool isSigned, int width, int& error,
                        bool& negative);
double convertDouble(ByteSource& in, int width, int& status);

// The white space the scanner skips ahead of a number, taken: the first
// byte after it, not taken, or ByteSource::kEnd at the end of input.
int skipSpace(ByteSource& in);
// Zero bytes and white space separate the values of sscanf: takes them.
void skipSeparators(ByteSource& in);

// The C locale's white space, which the scanner skips: the library never
// changes the character classes of the process.
constexpr bool isScannerSpace(int c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

}  // namespace Tarnwicks::FileIO

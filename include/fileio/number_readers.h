// The number readers of fscanf and sscanf: integers in a base, and doubles,
// read from a stream's ByteSource by the rules the source reports.
//
// Each reader runs one begin() ... commit() of the source: it neither throws
// nor allocates (a double longer than 128 characters in a file excepted),
// and costs an inline compare and increment per byte, plus one refill per
// buffer of the medium. A failure is a code in the out argument, never an
// exception.
//
// Integers. White space is skipped, a sign taken, then the digits of the
// base. `width` < 0 means none, and 0 reads no digit; sign and prefix count
// against it, and no byte past it is taken. The magnitude is returned and
// `negative` tells the sign. `error` is 0 on success.
//
//   Scanner rules (files). A leading "0" and the zeros after it count as a
//   number; readAnyBase takes "0x" for hexadecimal and "0" for octal. Up to
//   22 digits (24 with a width) are converted as strtoull or strtoll would,
//   saturating; further digits are taken without changing the value. No
//   digit and no leading zero: the sign is given back, and `error` and the
//   stream's errorCode get errno, or NoHelp.
//   InPlace rules (strings). Zero bytes and Unicode white space separate
//   values. The field (up to 64 bytes, or `width`) is converted by strtoll
//   or strtoull in place, so "0x" is taken by readHex and readAnyBase, and
//   without a width the rest of a longer number is taken too. Nothing left:
//   0 without error. Nothing converts: MatchingFailure, `negative` false.
//
// readSigned and readAnyBase convert as strtoll (a magnitude up to 2^63-1),
// the others as strtoull.
//
// Doubles. The caller presets `status` to kReadSuccess. White space is
// skipped; "inf" and "nan" in any case, after an optional sign, give the
// signed infinity or NaN with the status untouched, even past a width.
//
//   Scanner rules: a word begun and not finished is given back whole, with
//   status NoHelp and the value -1. Otherwise the number is read as the C
//   library's scanner reads "%le" (decimal or hexadecimal, at most `width`
//   characters, 0 meaning none), taking the bytes it takes: "1e+" reads 1
//   and takes all three. A failure gives back the sign and sets errorCode
//   from the medium; the status is that code, or NoHelp.
//   InPlace rules: the field (up to 512 bytes, or `width`) is converted by
//   ut_strtod in place. Nothing left: status NoHelp, value 0. Nothing
//   converts: status NoHelp, value -1.
#pragma once

#include <cstdint>

#include "fileio/byte_source.h"

namespace Tarnwicks::FileIO {

class stream;

// The status that readDouble leaves untouched on success.
inline constexpr int kReadSuccess = 0x7fffffff;

uint64_t readOctal(ByteSource& in, int width, int& error, bool& negative);
uint64_t readHex(ByteSource& in, int width, int& error, bool& negative);
// Base 10, unsigned.
uint64_t readUnsigned(ByteSource& in, int width, int& error, bool& negative);
// Base 10, signed.
uint64_t readSigned(ByteSource& in, int width, int& error, bool& negative);
// The base the text gives: "0x" hexadecimal, "0" octal, else decimal.
uint64_t readAnyBase(ByteSource& in, int width, int& error, bool& negative);
double readDouble(ByteSource& in, int width, int& status);
// Takes what every reader above skips ahead of a number (white space, and
// zero bytes on strings), in one begin() ... commit(); true when the input
// ends there. A scan asks it first to tell the end of its input, where a
// reader would report a failure or, on strings, 0, from a bad number.
bool skipToNumber(ByteSource& in);

// The same on a stream's source. A stream without one (the screen, the
// output of sprintf) raises "KORVAN:legacy_two_part:notimplemented_mx".
uint64_t readOctal(stream& s, int width, int& error, bool& negative);
uint64_t readHex(stream& s, int width, int& error, bool& negative);
uint64_t readUnsigned(stream& s, int width, int& error, bool& negative);
uint64_t readSigned(stream& s, int width, int& error, bool& negative);
uint64_t readAnyBase(stream& s, int width, int& error, bool& negative);
double readDouble(stream& s, int width, int& status);

}  // namespace Tarnwicks::FileIO

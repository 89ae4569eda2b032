// The kinds a print format is made of: what the parser reads from a
// conversion, which piece serves it, and what one value makes of it. Shared
// by the parser, the piece factory, the pieces and the batch loop.
#pragma once

#include <cstdint>

namespace Tarnwicks::FileIO {

// The conversion character of a gathered conversion; Literal for a run of
// text.
enum class ConversionKind : uint8_t {
  Literal,
  D,
  I,
  O,
  U,
  X,  // x and X
  E,  // e and E
  F,
  G,  // g and G
  S,
  C,
};

// The length modifier. h and l change nothing in the text; t and b turn o,
// u, x and X into the bit pattern of a single (t) or a double (b).
enum class LengthKind : uint8_t { None, H, L, T, B };

// How a width or precision is given.
enum fieldKind : int32_t {
  kFieldNumber = 0,  // written in the format
  kFieldAbsent = 1,
  kFieldNumberedStar = 2,  // "*n$": from argument n
  kFieldStar = 3,          // "*": from the next value
};

inline bool isStar(fieldKind kind) {
  return kind == kFieldNumberedStar || kind == kFieldStar;
}

// Which class a piece is: what the factory made of a conversion kind and its
// length modifier.
enum class PieceKind : uint8_t {
  Literal,
  Double,           // e E f g G
  SignedInteger,    // d i
  UnsignedInteger,  // o u x X
  String,           // s
  Char,             // c
  Bits              // o u x X with t or b
};

// What a conversion prints for the value that stands next.
enum class ValueClass : uint8_t {
  ThroughE,   // a number its conversion can't show (1.5 under %d): the
              // replacement %e with the same flags, width and precision
  Empty,      // the current argument is empty: it is passed by, nothing printed
  NotFinite,  // Inf or NaN: the words
  Own,        // the conversion itself
};

}  // namespace Tarnwicks::FileIO

// The decision a conversion makes for each value it meets: print it with
// its own conversion, print Inf or NaN as words, print it through the
// replacement %e, or (an empty argument) print nothing.
//
// Both ways of printing decide here: the pieces, through
// foutFormatPiece::classify, and the batch loop, element by element. So the
// two can't come to different texts for the same value.
#pragma once

#include <cstdint>

#include "element_values.h"
#include "number_format.h"
#include "print_kinds.h"

namespace Tarnwicks::FileIO {

// What a conversion of `kind` prints for the element `v` of a non-empty
// argument. Inline, with no call and no allocation: the batch loop runs it
// once per value, and with a constant `kind` it folds to one test.
template <class T>
inline ValueClass classifyElement(PieceKind kind, T v) {
  bool shown = false;
  switch (kind) {
    case PieceKind::Literal:
    case PieceKind::Bits:
      // Literals take no value; bit patterns show Inf and NaN like any other.
      return ValueClass::Own;
    case PieceKind::SignedInteger:
      shown = fitsSigned64(v);
      break;
    case PieceKind::UnsignedInteger:
      shown = fitsUnsigned64(v);
      break;
    case PieceKind::String:
      shown = fitsInt32(v);
      break;
    case PieceKind::Char:
      shown = isCharacterCode(v);
      break;
    case PieceKind::Double:
      shown = elementIsFinite(v);
      break;
  }
  if (shown) return ValueClass::Own;
  // Every test above refuses Inf and NaN, so that a value shown costs one
  // test; only a value refused needs telling apart.
  return elementIsFinite(v) ? ValueClass::ThroughE : ValueClass::NotFinite;
}

// Inf or NaN as its word, right-justified in `width`, or left-justified
// under kFlagLeft: "-Inf"; "+Inf" under kFlagPlus; " Inf" under kFlagSpace;
// "NaN" whatever its sign, "+NaN" when `alwaysSigned`. A negative star
// width has been folded into `flags` as left, plus and space by the caller.
void formatWord(double value, uint32_t flags, bool alwaysSigned, uint64_t width,
                FormattedNumber& out);

}  // namespace Tarnwicks::FileIO

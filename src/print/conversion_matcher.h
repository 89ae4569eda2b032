// The conversion grammar of print formats, matched by hand.
//
//   numberSpec := [1-9] D* "$"
//   conversion := "%" numberSpec? [-+ #0]* width? precision? [hlbt]? [diouxXeEfgGsc%]?
//   width      := "*" numberSpec? | [1-9] D*
//   precision  := "." ( "*" numberSpec? | "-"? D* )
//
// Every part after the "%" is optional and taken greedily, so each "%" starts
// a match; what follows decides whether it is a valid conversion.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tarnwicks::FileIO {

struct CaptureSpan {
  uint32_t start = 0;
  uint32_t length = 0;
  bool empty() const { return length == 0; }
};

struct ConversionMatch {
  size_t start = 0;   // position of the "%"
  size_t length = 0;  // at least 1
  // The argument number "n$". The grammar has it in three places; this
  // reports the conversion's own when written, else the width star's, else
  // the precision star's.
  CaptureSpan number;
  CaptureSpan flags;      // the whole run of flag characters
  CaptureSpan width;      // "12", "*" or "*3$"
  CaptureSpan precision;  // ".", ".5", ".-3", ".*" or ".*3$"
  CaptureSpan lengthModifier;
  CaptureSpan conversion;  // one character, or empty
  // The "n$" after a star, inside `width` and `precision`.
  CaptureSpan widthNumber;
  CaptureSpan precisionNumber;
};

// Finds the first conversion at or after `from` in text[0, n).
bool findConversion(const char16_t* text, size_t n, size_t from, ConversionMatch& match);

}  // namespace Tarnwicks::FileIO

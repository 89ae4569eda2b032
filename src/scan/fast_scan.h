// The fast path of fscanf and sscanf, for the formats that read numbers
// and nothing else: one numeric conversion (any of d i u x o e f g, any
// length), perhaps repeated, with nothing but white space between, without
// widths or skips. "%f", "%d\n" and "%f %f %f" are such formats.
//
// It gives exactly what the general path (scanControl and its pieces) gives
// for the same format and input: the same values, count, error code, end
// state and position. It differs in cost only: no call per piece, values
// straight into one growing block that the result array adopts (realloc
// growth, no copy at the end), and for sscanf no UTF-8 copy of the text:
// the caller's UTF-16 units are read in place, by the rules the string
// readers apply to the UTF-8 of the same text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fileio/stream.h"
#include "scan_format.h"
#include "scan_result.h"

namespace Tarnwicks::FileIO {

struct FastPlan {
  bool eligible = false;
  ReaderKind reader = ReaderKind::Float;
  int length = 0;
  // By piece: true for a literal of white space.
  std::vector<bool> literal;
};

// Whether the fast path takes a parsed format, and how.
FastPlan planFastScan(scanFormatParser& format);

struct FastOutcome {
  void* block = nullptr;  // kxMallocEx, `total` elements of `cls`
  size_t total = 0;
  kxClassID cls = kxDOUBLE_CLASS;
  int error = 0;
  bool normalEnd = false;
};

// sscanf over the units [text, text + n); `consumed` gets the units read.
FastOutcome fastScanText(const FastPlan& plan, const char16_t* text, size_t n, const ScanSize& size,
                         size_t& consumed);
// fscanf over a stream; the literals of `format` read through its pieces.
FastOutcome fastScanStream(const FastPlan& plan, scanFormatParser& format, stream& s,
                           const ScanSize& size);

}  // namespace Tarnwicks::FileIO

// The scan loop: pieces in a cycle until the size is met, the input ends or
// a piece fails, then the literals that close the last pass.
#include "scan_control.h"

namespace Tarnwicks::FileIO {

namespace {

scanFormatParser parsed(const ustring& format) {
  scanFormatParser parser(format);
  parser.parseFormat();
  return parser;
}

}  // namespace

scanControl::scanControl(const ustring& format, stream& s, uint64_t* count, bool unlimited)
    : sizeLimit(*count),
      stream_(s),
      count(count),
      format_(parsed(format)),
      buffer_(format_.resultClass(), kScanFirstBlock, kScanMinBlock, kScanMaxBlock),
      unlimited(unlimited) {
  *count = 0;
}

bool scanControl::apply(finFormatPiece& piece) {
  bool failed = false;
  int code = 0;
  uint64_t stored = piece.read(stream_, buffer_, convertsText(), failed, code);
  if (failed) {
    scanError = code;
    return false;
  }
  *count += stored;
  scanError = 0;
  ++piecesRead;
  return true;
}

bool scanControl::scan() {
  uint64_t stalled = 0;
  bool result = false;
  while (unlimited || sizeLimit > *count) {
    int code = 0;
    finFormatPiece* piece = format_.nextScanPiece(code);
    if (piece == nullptr) {
      scanError = code;
      return result;
    }
    if (format_.wrapped()) {
      // A whole pass is behind us. One that stored nothing and read no
      // conversion was literals alone: it ends the scan rather than loop.
      if (*count != 0) {
        result = true;
      } else {
        if (stalled == 0) return true;
        result = true;
        if (stalled == sizeLimit) return result;
      }
    }
    if (!apply(*piece)) return result;
    if (*count == 0 && !piece->isLiteral()) ++stalled;
  }
  if (unlimited) return result;
  // The size is met: the literals that close this pass are still read.
  while (format_.piecesLeftInPass()) {
    int code = 0;
    finFormatPiece* piece = format_.nextScanPiece(code);
    if (piece == nullptr || !piece->isLiteral()) return true;
    if (!apply(*piece)) return true;
  }
  return true;
}

}  // namespace Tarnwicks::FileIO

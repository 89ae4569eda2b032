// scanFormatParser: a scan format, parsed once into its list of pieces,
// handed out in a cycle while a scan runs.
//
// Grammar: literal text up to a "%" ("%%" stays in the literal); then "%",
// an optional "*" (skip: read, store nothing), an optional decimal width of
// at least 1, and either a set "[...]" or an optional length "h" or "l" and
// one of d i u x X o e E f g G s c. The format ends at its first NUL.
//
// A fault in the format (code InvalidFormat) does not stop the parse from
// being used: the pieces ahead of it stay, and an error piece in its place
// reports the code when the scan reaches it.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "pieces.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

// What a piece of the format is, for those that look at the format as a
// whole (the fast path).
struct PieceShape {
  enum Kind { Literal, Number, Text, Error };
  Kind kind = Literal;
  // For numbers: the reader and the length (0 none, 1 "h", 2 "l").
  ReaderKind reader = ReaderKind::Float;
  int length = 0;
};

class scanFormatParser {
 public:
  explicit scanFormatParser(const ustring& format);

  // Builds the piece list and decides the result class: all text gives
  // char, numbers of one class give that class, any mix gives double. A
  // literal or text ahead of the first number leaves the decision to it.
  void parseFormat();

  // The next piece of the cycle, its width restored; at the end of the list
  // the cycle starts again and wrapped() becomes true. Null only for an
  // empty list, with `code` InternalError.
  finFormatPiece* nextScanPiece(int& code);
  // The piece at `index`, without moving the cycle; null and InternalError
  // past the end.
  finFormatPiece* pieceAt(size_t index, int& code);
  // True while pieces remain before the end of the list in this pass.
  bool piecesLeftInPass() const { return next_ < pieces_.size(); }

  bool wrapped() const { return wrapped_; }
  kxClassID resultClass() const { return resultClass_; }
  size_t size() const { return pieces_.size(); }
  const std::vector<PieceShape>& shapes() const { return shapes_; }

 private:
  // The piece that starts at `pos`, which moves past it; null with `code`
  // for a fault.
  std::unique_ptr<finFormatPiece> parsePiece(size_t& pos, int& code, PieceShape& shape);
  std::unique_ptr<finFormatPiece> parseConversion(size_t& pos, int& code, PieceShape& shape);

  ustring format_;
  std::vector<std::unique_ptr<finFormatPiece>> pieces_;
  std::vector<PieceShape> shapes_;
  size_t next_ = 0;
  bool wrapped_ = false;
  kxClassID resultClass_ = kxCHAR_CLASS;
};

}  // namespace Tarnwicks::FileIO

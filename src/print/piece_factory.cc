// makePiece: which piece serves a gathered conversion.
#include "pieces.h"

namespace Tarnwicks::FileIO {

namespace {

enum ConversionKind {
  kLiteral = 0,
  kD = 1,
  kI = 2,
  kO = 3,
  kU = 4,
  kX = 5,
  kE = 6,
  kF = 7,
  kG = 8,
  kS = 9,
  kC = 10,
};
enum LengthKind { kNone = 0, kH = 1, kL = 2, kT = 3, kB = 4 };

template <template <class, class> class Piece>
std::unique_ptr<foutFormatPiece> bitPiece(int lengthKind, const PieceSetup& setup) {
  if (lengthKind == kT) return std::make_unique<Piece<unsigned int, float>>(setup);
  return std::make_unique<Piece<unsigned long, double>>(setup);
}

}  // namespace

std::unique_ptr<foutFormatPiece> makePiece(int conversionKind, int lengthKind,
                                           const PieceSetup& setup, const std::u16string& text) {
  bool bits = lengthKind == kT || lengthKind == kB;
  switch (conversionKind) {
    case kLiteral:
      return std::make_unique<foutFormatPieceForLiterals>(text);
    case kD:
    case kI:
      return std::make_unique<foutFormatPieceForInteger<long long>>(setup);
    case kO:
      if (bits) return bitPiece<foutFormatPieceForObt>(lengthKind, setup);
      return std::make_unique<foutFormatPieceForInteger<unsigned long long>>(setup);
    case kU:
      if (bits) return bitPiece<foutFormatPieceForUbt>(lengthKind, setup);
      return std::make_unique<foutFormatPieceForInteger<unsigned long long>>(setup);
    case kX:
      if (bits) return bitPiece<foutFormatPieceForXbt>(lengthKind, setup);
      return std::make_unique<foutFormatPieceForInteger<unsigned long long>>(setup);
    case kE:
    case kF:
    case kG:
      return std::make_unique<foutFormatPieceForDouble>(setup);
    case kS:
      return std::make_unique<foutFormatPieceForS>(setup);
    default:
      return std::make_unique<foutFormatPieceForC>(setup);
  }
}

}  // namespace Tarnwicks::FileIO

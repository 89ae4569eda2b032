// makePiece: which piece serves a gathered conversion.
#include "pieces.h"

namespace Tarnwicks::FileIO {

namespace {

// The bit-pattern piece of o, u, x or X: of a single under t, of a double
// under b.
template <template <class, class> class Piece>
std::unique_ptr<foutFormatPiece> bitPiece(LengthKind length, const PieceSetup& setup) {
  if (length == LengthKind::T) return std::make_unique<Piece<unsigned int, float>>(setup);
  return std::make_unique<Piece<unsigned long, double>>(setup);
}

}  // namespace

std::unique_ptr<foutFormatPiece> makePiece(ConversionKind conversion, LengthKind length,
                                           const PieceSetup& setup, const std::u16string& text) {
  bool bits = length == LengthKind::T || length == LengthKind::B;
  switch (conversion) {
    case ConversionKind::Literal:
      return std::make_unique<foutFormatPieceForLiterals>(text);
    case ConversionKind::D:
    case ConversionKind::I:
      return std::make_unique<foutFormatPieceForInteger<long long>>(setup);
    case ConversionKind::O:
      if (bits) return bitPiece<foutFormatPieceForObt>(length, setup);
      return std::make_unique<foutFormatPieceForInteger<unsigned long long>>(setup);
    case ConversionKind::U:
      if (bits) return bitPiece<foutFormatPieceForUbt>(length, setup);
      return std::make_unique<foutFormatPieceForInteger<unsigned long long>>(setup);
    case ConversionKind::X:
      if (bits) return bitPiece<foutFormatPieceForXbt>(length, setup);
      return std::make_unique<foutFormatPieceForInteger<unsigned long long>>(setup);
    case ConversionKind::E:
    case ConversionKind::F:
    case ConversionKind::G:
      return std::make_unique<foutFormatPieceForDouble>(setup);
    case ConversionKind::S:
      return std::make_unique<foutFormatPieceForS>(setup);
    case ConversionKind::C:
      break;
  }
  return std::make_unique<foutFormatPieceForC>(setup);
}

}  // namespace Tarnwicks::FileIO

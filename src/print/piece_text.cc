// Literal text, %s and %c: pieces that write UTF-16 text.
#include "pieces.h"

namespace Tarnwicks::FileIO {

foutFormatPieceForLiterals::foutFormatPieceForLiterals(std::u16string text)
    : foutFormatPiece(PieceKind::Literal, PieceSetup{}), text_(std::move(text)) {}

void foutFormatPieceForLiterals::print(PrintSink& sink, printfArgumentSource&) {
  sink.putText(text_.data(), text_.size());
}

void foutFormatPieceForS::print(PrintSink& sink, printfArgumentSource& source) {
  TakenText text = source.takeString();
  uint64_t n = text.length;
  const FieldState& precision = precisionField();
  if (precision.kind != kFieldAbsent && !precision.negative && n > precision.resolved) {
    n = precision.resolved;
  }
  bool left = leftJustified();
  if (!left) padText(sink, n);
  sink.putText(text.data, static_cast<size_t>(n));
  if (left) padText(sink, n);
}

void foutFormatPieceForC::print(PrintSink& sink, printfArgumentSource& source) {
  if (!source.requireValue(true)) return;
  bool left = leftJustified();
  if (!left) padText(sink, 1);
  char16_t unit = source.readChar16();
  sink.putText(&unit, 1);
  if (left) padText(sink, 1);
}

}  // namespace Tarnwicks::FileIO

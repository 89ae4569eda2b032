// Literal text, %s and %c: pieces that write UTF-16 text.
#include "element_values.h"
#include "pieces.h"

namespace Tarnwicks::FileIO {

foutFormatPieceForLiterals::foutFormatPieceForLiterals(std::u16string text)
    : foutFormatPiece(PieceKind::Literal, PieceSetup{}), text_(std::move(text)) {}

void foutFormatPieceForLiterals::print(PrintSink& sink, printfArgumentSource&) {
  sink.putText(text_.data(), text_.size());
}

int foutFormatPieceForS::classify(printfArgumentSource& source) {
  // An empty array still meets %s, which pads it to the width.
  if (source.isEmptyCurrent() && source.hasCurrent()) return 3;
  int c = source.classifyValue(true);
  if (c != 0) return c;
  bool fits = visitElementType(source.currentClass(), [&]<class E>() {
    return fitsInt32(static_cast<const E*>(source.currentElements())[source.currentIndex()]);
  });
  return fits ? 3 : 0;
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

int foutFormatPieceForC::classify(printfArgumentSource& source) {
  int c = source.classifyValue(true);
  if (c != 0) return c;
  bool code = visitElementType(source.currentClass(), [&]<class E>() {
    return isCharacterCode(static_cast<const E*>(source.currentElements())[source.currentIndex()]);
  });
  return code ? 3 : 0;
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

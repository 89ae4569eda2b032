// %d %i %o %u %x %X %e %E %f %g %G: the conversions that print a number
// through a narrow format.
#include <type_traits>

#include "element_values.h"
#include "pieces.h"

namespace Tarnwicks::FileIO {

namespace {

template <class Test>
bool testCurrent(printfArgumentSource& source, Test test) {
  return visitElementType(source.currentClass(), [&]<class E>() {
    return test(static_cast<const E*>(source.currentElements())[source.currentIndex()]);
  });
}

}  // namespace

void foutFormatPieceForDouble::print(PrintSink& sink, printfArgumentSource& source) {
  printDouble(sink, source);
}

int foutFormatPieceForDouble::classify(printfArgumentSource& source) {
  return source.classifyValue(false);
}

template <class T>
foutFormatPieceForInteger<T>::foutFormatPieceForInteger(const PieceSetup& setup)
    : foutFormatPiece(std::is_signed_v<T> ? PieceKind::SignedInteger : PieceKind::UnsignedInteger,
                      setup) {}

template <class T>
int foutFormatPieceForInteger<T>::classify(printfArgumentSource& source) {
  int c = source.classifyValue(true);
  if (c != 0) return c;
  bool fits;
  if constexpr (std::is_signed_v<T>) {
    fits = testCurrent(source, [](auto v) { return fitsSigned64(v); });
  } else {
    fits = testCurrent(source, [](auto v) { return fitsUnsigned64(v); });
  }
  return fits ? 3 : 0;
}

template <class T>
void foutFormatPieceForInteger<T>::print(PrintSink& sink, printfArgumentSource& source) {
  if (!source.requireValue(true)) return;
  FormattedNumber number;
  if constexpr (std::is_signed_v<T>) {
    int64_t value = source.readInt64();
    formatSigned(specInForce(sink), value, scratch_, number);
  } else {
    uint64_t value = source.readUInt64();
    formatUnsigned(specInForce(sink), value, scratch_, number);
  }
  sink.putNumber(number);
}

template class foutFormatPieceForInteger<long long>;
template class foutFormatPieceForInteger<unsigned long long>;

}  // namespace Tarnwicks::FileIO

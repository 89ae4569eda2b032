// %d %i %o %u %x %X %e %E %f %g %G: the conversions that print a number
// through a narrow format.
#include <type_traits>

#include "pieces.h"

namespace Tarnwicks::FileIO {

void foutFormatPieceForDouble::print(PrintSink& sink, printfArgumentSource& source) {
  printDouble(sink, source);
}

template <class T>
foutFormatPieceForInteger<T>::foutFormatPieceForInteger(const PieceSetup& setup)
    : foutFormatPiece(std::is_signed_v<T> ? PieceKind::SignedInteger : PieceKind::UnsignedInteger,
                      setup) {}

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

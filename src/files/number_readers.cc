// The number readers: the rules of the source decide how a number is read.
#include "fileio/number_readers.h"

#include "fileio/stream.h"
#include "number_rules.h"

namespace Tarnwicks::FileIO {

namespace {

// The base that asks the text for its own.
constexpr int kBaseOfText = 0;

uint64_t readInteger(ByteSource& in, int base, bool isSigned, int width, int& error,
                     bool& negative) {
  return in.rules == ByteSource::NumberRules::Scanner
             ? scanInteger(in, base, isSigned, width, error, negative)
             : convertInteger(in, base, isSigned, width, error, negative);
}

ByteSource& sourceOf(stream& s) {
  ByteSource* in = s.byteSource();
  if (in == nullptr) stream::notImplemented();
  return *in;
}

}  // namespace

uint64_t readOctal(ByteSource& in, int width, int& error, bool& negative) {
  return readInteger(in, 8, false, width, error, negative);
}
uint64_t readHex(ByteSource& in, int width, int& error, bool& negative) {
  return readInteger(in, 16, false, width, error, negative);
}
uint64_t readUnsigned(ByteSource& in, int width, int& error, bool& negative) {
  return readInteger(in, 10, false, width, error, negative);
}
uint64_t readSigned(ByteSource& in, int width, int& error, bool& negative) {
  return readInteger(in, 10, true, width, error, negative);
}
uint64_t readAnyBase(ByteSource& in, int width, int& error, bool& negative) {
  return readInteger(in, kBaseOfText, true, width, error, negative);
}
double readDouble(ByteSource& in, int width, int& status) {
  return in.rules == ByteSource::NumberRules::Scanner ? scanDouble(in, width, status)
                                                      : convertDouble(in, width, status);
}

bool skipToNumber(ByteSource& in) {
  in.begin();
  bool ended;
  if (in.rules == ByteSource::NumberRules::Scanner) {
    ended = skipSpace(in) == ByteSource::kEnd;
  } else {
    skipSeparators(in);
    ended = in.next == in.end;
  }
  in.commit();
  return ended;
}

uint64_t readOctal(stream& s, int width, int& error, bool& negative) {
  return readOctal(sourceOf(s), width, error, negative);
}
uint64_t readHex(stream& s, int width, int& error, bool& negative) {
  return readHex(sourceOf(s), width, error, negative);
}
uint64_t readUnsigned(stream& s, int width, int& error, bool& negative) {
  return readUnsigned(sourceOf(s), width, error, negative);
}
uint64_t readSigned(stream& s, int width, int& error, bool& negative) {
  return readSigned(sourceOf(s), width, error, negative);
}
uint64_t readAnyBase(stream& s, int width, int& error, bool& negative) {
  return readAnyBase(sourceOf(s), width, error, negative);
}
double readDouble(stream& s, int width, int& status) {
  return readDouble(sourceOf(s), width, status);
}

}  // namespace Tarnwicks::FileIO

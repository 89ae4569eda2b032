// libFuzzer target for the precision texts of fread and fwrite ("int16",
// "3*uint8=>double", "*char", "ubit5", "bit5in8", "int64" under any
// machine format).
//
// Checks, beyond the sanitizers:
//  - a precision that fwrite accepts is one that fread accepts, and both
//    read the same type in the file: the same code, repeat, bit count,
//    size value and machine format;
//  - whatever fread accepts is in range: codes 1 to 13, a repeat of at
//    least 1, bit fields of 1 to 64 bits within their container;
//  - parsing is a function of the text: a second parse agrees.
//
// Input: byte 0 picks the machine format; the rest is the text.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fileio/attributes.h"
#include "twhost/errors.h"
#include "twhost/kx_data.h"

namespace {

using namespace Tarnwicks::FileIO;

void check(bool ok) {
  if (!ok) std::abort();
}

void ignoreWarning(const std::string&, const std::string&) {}

struct Parsed {
  bool ok;
  PrecisionString p;
};

Parsed reading(const std::string& text, int format) {
  Parsed r{false, PrecisionString()};
  r.p.format = format;
  r.ok = r.p.parse(text.c_str());
  return r;
}

Parsed writing(const std::string& text, int format) {
  Parsed r{false, PrecisionString(kxDOUBLE_CLASS)};
  r.p.format = format;
  r.ok = r.p.parse(text.c_str());
  return r;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool quiet = (kxSetWarningHandler(ignoreWarning), true);
  (void)quiet;
  if (size < 1) return 0;
  const int formats = utGetNumDataSizeTypes();
  const int format = data[0] % formats;
  // The C text the attribute is given: up to a NUL, as load() would refuse.
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  const std::string cText = text.c_str();

  const Parsed r = reading(cText, format);
  if (r.ok) {
    check(r.p.inputCode >= 1 && r.p.inputCode <= 13);
    check(r.p.outputCode >= 1 && r.p.outputCode <= 13);
    check(r.p.repeat >= 1 && r.p.repeat <= 0x7fffffff);
    check(r.p.bitCount >= 0 && r.p.bitCount <= 64);
    check(r.p.sizeValue == 0 || r.p.bitCount == 0 || r.p.bitCount <= r.p.sizeValue);
    check(r.p.sizeValue >= 0 && r.p.sizeValue <= 64);
    const Parsed again = reading(cText, format);
    check(again.ok && again.p.inputCode == r.p.inputCode && again.p.outputCode == r.p.outputCode &&
          again.p.repeat == r.p.repeat && again.p.bitCount == r.p.bitCount &&
          again.p.sizeValue == r.p.sizeValue && again.p.format == r.p.format);
  }
  const Parsed w = writing(cText, format);
  if (w.ok) {
    check(r.ok);
    check(w.p.outputCode == r.p.inputCode && w.p.repeat == r.p.repeat &&
          w.p.bitCount == r.p.bitCount && w.p.sizeValue == r.p.sizeValue &&
          w.p.format == r.p.format);
  }
  return 0;
}

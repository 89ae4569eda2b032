// libFuzzer target for formatted output: random formats (through escape
// translation and the parser) applied to random argument arrays of every
// printable class, by the runner on both of its paths.
//
// Beyond the sanitizers it checks one property: the batch loop and the
// pieces print the same text and end with the same code.
//
// Input: byte 0 options, byte 1 format length, the format bytes, then the
// arguments: a class byte, an element count, and per element a byte that
// picks an interesting value or starts eight raw bytes.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fileio/escapes.h"
#include "fileio/string_streams.h"
#include "print/format_parser.h"
#include "print/format_runner.h"
#include "twhost/errors.h"
#include "twhost/kx_array.h"
#include "twhost/kx_data.h"

namespace {

using namespace Tarnwicks::FileIO;

const double kValues[] = {0.0,
                          -0.0,
                          1.0,
                          -1.0,
                          0.5,
                          2.5,
                          -7.25,
                          3.14159,
                          1e300,
                          -1e-300,
                          5e-324,
                          9007199254740993.0,
                          9223372036854775808.0,
                          18446744073709551616.0,
                          -9223372036854775808.0,
                          NAN,
                          INFINITY,
                          -INFINITY,
                          65.0,
                          97.0,
                          1e5,
                          7.0,
                          255.0,
                          65535.0,
                          70000.0,
                          12.0,
                          -12.0,
                          0.1,
                          1e-7,
                          123456.789,
                          2147483648.0,
                          -2147483648.0};

const kxClassID kClasses[] = {kxDOUBLE_CLASS, kxSINGLE_CLASS, kxINT8_CLASS,    kxUINT8_CLASS,
                              kxINT16_CLASS,  kxUINT16_CLASS, kxINT32_CLASS,   kxUINT32_CLASS,
                              kxINT64_CLASS,  kxUINT64_CLASS, kxLOGICAL_CLASS, kxCHAR_CLASS};

struct Reader {
  const uint8_t* p;
  size_t n;
  uint8_t byte() {
    if (n == 0) return 0;
    --n;
    return *p++;
  }
};

double value(Reader& in) {
  uint8_t pick = in.byte();
  if (pick < 224) return kValues[pick % (sizeof kValues / sizeof kValues[0])];
  uint64_t bits = 0;
  for (int i = 0; i < 8; ++i) bits = bits << 8 | in.byte();
  double v;
  std::memcpy(&v, &bits, sizeof v);
  return v;
}

// A written width or precision of more than four digits would only make the
// run slow, so such formats are passed over.
bool tooWide(const std::u16string& format) {
  int run = 0;
  for (char16_t c : format) {
    run = (c >= u'0' && c <= u'9') ? run + 1 : 0;
    if (run > 4) return true;
  }
  return false;
}

struct Result {
  std::u16string text;
  int code;
};

Result runOnce(const std::u16string& format, std::vector<kxArray*>& args, bool batch) {
  outputStringStream out("UTF-16");
  Result r;
  {
    PrintSink sink(out, PrintSink::Mode::Units, false);
    PrintFormatRunner runner(format, sink, args.data(), args.size());
    if (!batch) runner.disableBatch();
    runner.run();
    r.code = runner.errorCode;
  }
  r.text.assign(reinterpret_cast<const char16_t*>(out.data()), out.size() / 2);
  return r;
}

void quietWarnings(const std::string&, const std::string&) {}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static bool ready = (kxSetWarningHandler(&quietWarnings), true);
  (void)ready;
  Reader in{data, size};
  uint8_t options = in.byte();
  size_t formatLength = in.byte() % 64;
  std::u16string format;
  for (size_t i = 0; i < formatLength; ++i) {
    uint8_t b = in.byte();
    // Mostly ASCII, now and then a unit beyond it.
    format.push_back(b == 0xff ? char16_t(0x20ac) : char16_t(b & 0x7f));
  }
  if (options & 1) translateEscapes(format);
  if (tooWide(format)) return 0;

  // A star takes its width or precision from the values: keep them small
  // there, or one run prints gigabytes.
  bool stars = format.find(u'*') != std::u16string::npos;
  std::vector<kxArray*> args;
  size_t argCount = in.byte() % 5;
  for (size_t a = 0; a < argCount; ++a) {
    kxClassID cls = kClasses[in.byte() % (sizeof kClasses / sizeof kClasses[0])];
    size_t count = in.byte() % 9;
    size_t rows = (count > 1 && (in.byte() & 1)) ? 2 : 1;
    if (count % rows != 0) rows = 1;
    std::vector<double> values(count);
    for (double& v : values) {
      v = value(in);
      if (stars && std::isfinite(v) && std::fabs(v) > 1e5) v = std::fmod(v, 1e5);
      // Inf saturates to the largest integer of the class: a width of 2^31.
      bool integer = cls != kxDOUBLE_CLASS && cls != kxSINGLE_CLASS;
      if (stars && integer && !std::isfinite(v)) v = 1;
    }
    kxArray* arr = cls == kxCHAR_CLASS ? kxCreateCharMatrix(rows, count / rows)
                                       : kxCreateNumericMatrix(rows, count / rows, cls, kxREAL);
    if (count) AssignToVoidBuffer(cls, kxGetData(arr), kxDOUBLE_CLASS, values.data(), count);
    args.push_back(arr);
  }

  try {
    Result batch = runOnce(format, args, true);
    Result pieces = runOnce(format, args, false);
    if (batch.text != pieces.text || batch.code != pieces.code) std::abort();
    // The parser of sprintfc's signed mode, which drops widths.
    PrintFormatParser signedParser(format, (options & 2) != 0);
    (void)signedParser.endsLeftJustifiedWithSpaces();
  } catch (const fl::except::IUserException&) {
    // A host error (the overflow of a star width of -2^31 in the words) is
    // an allowed end of a run.
  }
  for (kxArray* a : args) kxDestroyArray(a);
  return 0;
}

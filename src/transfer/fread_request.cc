// FreadRequest: the classes an fread call reads and makes, and the checks of
// what its readers rely on.
#include "fread_request.h"

#include <string>

#include "twhost/errors.h"

namespace Tarnwicks::FileIO {

namespace {

[[noreturn]] void broken(const char* what) {
  kxThrowId("KORVAN", "internal", std::string("fread request: ") + what);
}

// The most bits a bit field can have: those of a 64-bit element.
constexpr int kMostFieldBits = 64;

}  // namespace

kxClassID freadResultClass(const PrecisionString& p) {
  if (p.outputCode != kPrecNoConvert) return precisionClass(p.outputCode);
  if (p.inputCode != kPrecNoConvert) return precisionClass(p.inputCode);
  return kxUINT8_CLASS;
}

FreadRequest::FreadRequest(const PrecisionString& precision, uint64_t count, bool unbounded,
                           int64_t skip)
    : precision_(&precision),
      count_(count),
      unbounded_(unbounded),
      skip_(skip),
      resultClass_(freadResultClass(precision)),
      inputClass_(noConvert() ? kxUINT8_CLASS : precisionClass(precision.inputCode)),
      outputClass_(noConvert() ? kxUINT8_CLASS : resultClass_) {
  if (skip < 0) broken("negative skip");
  if (precision.repeat < 1) broken("repeat below 1");
  if (precision.bitCount < 0 || precision.bitCount > kMostFieldBits) broken("bit count");
  if (inputClass_ == kxUNKNOWN_CLASS || resultClass_ == kxUNKNOWN_CLASS) {
    broken("element type without a class");
  }
}

}  // namespace Tarnwicks::FileIO

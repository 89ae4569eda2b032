// FreadRequest: one fread call as its body settled it. What an element is
// in the file and in the result, how many to read, and what to pass between
// groups of them; read only once made.
#pragma once

#include <cstdint>

#include "fileio/attributes.h"
#include "stop_rules.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

// The class of fread's result for a precision. "=>noconvert" keeps the class
// read; raw bytes kept raw ("*noconvert") are uint8.
kxClassID freadResultClass(const PrecisionString& precision);

class FreadRequest {
 public:
  // `precision` is validated and outlives the request. `count` elements are
  // asked for (bytes of the file for "noconvert"), or all of the file when
  // `unbounded`. `skip` is the bytes (bits for bit fields) passed after each
  // group of precision.repeat elements. Raises "KORVAN:internal" when these
  // don't hold together: a negative skip, a bit count beyond 64, an element
  // type without a class.
  FreadRequest(const PrecisionString& precision, uint64_t count, bool unbounded, int64_t skip);

  const PrecisionString& precision() const { return *precision_; }
  // The machine format and bit count of the precision.
  int format() const { return precision_->format; }
  int bitCount() const { return precision_->bitCount; }
  int64_t repeat() const { return precision_->repeat; }
  // "noconvert": the file's bytes as they stand.
  bool noConvert() const { return precision_->inputCode == kPrecNoConvert; }
  // The class of the elements in the file, and of those the reader stores
  // (uint8 for both with "noconvert").
  kxClassID inputClass() const { return inputClass_; }
  kxClassID outputClass() const { return outputClass_; }
  // The class of the result array: that of the output, or for "noconvert"
  // the class the bytes are gathered into.
  kxClassID resultClass() const { return resultClass_; }
  uint64_t count() const { return count_; }
  int64_t skip() const { return skip_; }
  StopRule stopRule() const {
    return unbounded_ ? StopRule::atEnd() : StopRule::afterCount(count_);
  }

 private:
  const PrecisionString* precision_;
  uint64_t count_;
  bool unbounded_;
  int64_t skip_;
  kxClassID resultClass_;
  kxClassID inputClass_;
  kxClassID outputClass_;
};

}  // namespace Tarnwicks::FileIO

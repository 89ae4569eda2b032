#include "print_decision.h"

#include <cmath>
#include <string>

namespace Tarnwicks::FileIO {

void formatWord(double value, uint32_t flags, bool alwaysSigned, uint64_t width,
                FormattedNumber& out) {
  const char* word;
  if (std::isnan(value)) {
    word = alwaysSigned ? "+NaN" : "NaN";
  } else if (value < 0) {
    word = "-Inf";
  } else if (flags & kFlagPlus) {
    word = "+Inf";
  } else if (flags & kFlagSpace) {
    word = " Inf";
  } else {
    word = "Inf";
  }
  formatPadded(word, std::char_traits<char>::length(word), width, (flags & kFlagLeft) != 0, out);
}

}  // namespace Tarnwicks::FileIO

// How numbers are written on the console. The short form (the default)
// shows about five significant digits, with one scale factor for a whole
// matrix when its numbers are large or small; the long form shows the
// digits that read back as the same value. JSON records never go through
// here: they always carry every digit.
#pragma once

#include <string>

#include "twhost/kx_array.h"

namespace tw {

enum class NumberFormat { Short, Long };

struct DisplayOptions {
  NumberFormat format = NumberFormat::Short;
  int width = 80;  // characters a line may take before columns wrap
};

// One style for all the elements of a numeric, logical or char array, so
// that its columns line up and share their scale factor.
class NumberStyle {
 public:
  NumberStyle(const kxArray* a, NumberFormat format);

  // "1.0e+03 *" when the elements are shown divided by a common factor;
  // empty otherwise.
  std::string factorText() const;
  // Element i, with its imaginary part when the array is complex.
  std::string text(const kxArray* a, size_t i) const;

 private:
  enum class Kind {
    Exact,     // integers as they are: integer classes, logical, whole doubles
    Fixed,     // four decimals, after division by the factor
    Exponent,  // four decimals and an exponent, element by element
    Shortest,  // the long form: the shortest digits that read back the same
  };
  std::string realText(double v) const;

  Kind kind_ = Kind::Exact;
  bool single_ = false;
  int factorExponent_ = 0;  // the factor is 10^factorExponent_
  double factor_ = 1;
};

}  // namespace tw

// Choosing the style of an array's numbers, and writing them.
#include "number_format.h"

#include <cmath>
#include <cstdio>

#include "number_text.h"
#include "value.h"

namespace tw {

namespace {

constexpr int kDecimals = 4;
// Below this, whole numbers are shown in full in the short form; a wider
// number would take more room than its digits are worth.
constexpr double kShortWholeLimit = 1e10;
// Whole numbers below this are exact in a double and shown without exponent
// in the long form.
constexpr double kLongWholeLimit = 1e15;
// A scalar between these shows in fixed point.
constexpr double kFixedScalarLow = 1e-3;
constexpr double kFixedScalarHigh = 1e5;
// A matrix whose largest magnitude lies between these needs no factor.
constexpr double kFixedMatrixLow = 1e-3;
constexpr double kFixedMatrixHigh = 1e3;

// What the style is chosen from: the magnitudes of the finite parts.
struct Magnitudes {
  bool anyFinite = false;
  bool allWhole = true;
  double largest = 0;
  double smallestNonZero = INFINITY;

  void add(double v) {
    if (!std::isfinite(v)) return;
    anyFinite = true;
    if (v != std::floor(v)) allWhole = false;
    double m = std::fabs(v);
    if (m > largest) largest = m;
    if (m > 0 && m < smallestNonZero) smallestNonZero = m;
  }
};

std::string printed(const char* format, double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, format, kDecimals, v);
  return buf;
}

std::string wholeText(double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.0f", v == 0 ? 0.0 : v);  // no "-0"
  return buf;
}

}  // namespace

NumberStyle::NumberStyle(const kxArray* a, NumberFormat format) {
  kxClassID cls = kxGetClassID(a);
  single_ = cls == kxSINGLE_CLASS;
  if (cls != kxDOUBLE_CLASS && cls != kxSINGLE_CLASS) return;  // Exact
  if (format == NumberFormat::Long) {
    kind_ = Kind::Shortest;
    return;
  }
  Magnitudes m;
  size_t n = numelOf(a);
  bool complex = kxIsComplex(a);
  for (size_t i = 0; i < n; ++i) {
    m.add(elementAsDouble(a, i));
    if (complex) m.add(imagAsDouble(a, i));
  }
  if (!m.anyFinite || (m.allWhole && m.largest < kShortWholeLimit)) return;  // Exact
  if (n == 1) {
    bool fixed = m.largest >= kFixedScalarLow && m.largest < kFixedScalarHigh;
    kind_ = fixed ? Kind::Fixed : Kind::Exponent;
    return;
  }
  kind_ = Kind::Fixed;
  if (m.largest < kFixedMatrixLow || m.largest >= kFixedMatrixHigh) {
    factorExponent_ = static_cast<int>(std::floor(std::log10(m.largest)));
    factor_ = std::pow(10.0, factorExponent_);
  }
  // A non-zero element that would show as 0.0000 next to the largest one
  // needs an exponent of its own.
  double lastPlace = factor_ * std::pow(10.0, -kDecimals);
  if (m.smallestNonZero < lastPlace / 2) {
    kind_ = Kind::Exponent;
    factorExponent_ = 0;
    factor_ = 1;
  }
}

std::string NumberStyle::factorText() const {
  if (factorExponent_ == 0) return "";
  char buf[32];
  std::snprintf(buf, sizeof buf, "1.0e%+03d *", factorExponent_);
  return buf;
}

std::string NumberStyle::realText(double v) const {
  if (std::isnan(v)) return "NaN";
  if (std::isinf(v)) return v > 0 ? "Inf" : "-Inf";
  switch (kind_) {
    case Kind::Exact:
      return wholeText(v);
    case Kind::Fixed:
      return v == 0 ? "0" : printed("%.*f", v / factor_);
    case Kind::Exponent:
      return v == 0 ? "0" : printed("%.*e", v);
    case Kind::Shortest:
      if (v == std::floor(v) && std::fabs(v) < (single_ ? 1e7 : kLongWholeLimit)) {
        return wholeText(v);
      }
      return single_ ? shortestText(static_cast<float>(v)) : shortestText(v);
  }
  return "";
}

std::string NumberStyle::text(const kxArray* a, size_t i) const {
  std::string re;
  switch (kxGetClassID(a)) {
    case kxINT64_CLASS:
      re = std::to_string(static_cast<const int64_t*>(kxGetData(a))[i]);
      break;
    case kxUINT64_CLASS:
      re = std::to_string(static_cast<const uint64_t*>(kxGetData(a))[i]);
      break;
    default:
      re = realText(elementAsDouble(a, i));
      break;
  }
  if (!kxIsComplex(a)) return re;
  double im = imagAsDouble(a, i);
  std::string imText = std::isnan(im) ? "NaN" : realText(std::fabs(im));
  return re + (std::signbit(im) ? " - " : " + ") + imText + "i";
}

}  // namespace tw

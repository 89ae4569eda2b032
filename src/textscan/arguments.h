// The shapes of argument that the options accept, and the thrower of the
// reader's own errors.
#pragma once

#include <cmath>
#include <utility>

#include "twhost/errors.h"
#include "twhost/kx_array.h"

namespace textscan {

inline constexpr const char* kCatalog = "KORVAN:textscan";

// Throws "KORVAN:textscan:<key>" with the given arguments.
template <class... A>
[[noreturn]] void raise(const char* key, A&&... args) {
  kxThrowId(kCatalog, key, std::forward<A>(args)...);
}

// A char row (one row, two dimensions) or the 0-by-0 char array. A cell's
// empty slot (null) is an empty double, and no string.
inline bool isStringArgument(const kxArray* a) {
  if (!a || !kxIsChar(a) || kxGetNumberOfDimensions(a) != 2) return false;
  return kxGetM(a) == 1 || (kxGetM(a) == 0 && kxGetN(a) == 0);
}

inline bool isNumericScalar(const kxArray* a) {
  return kxIsNumeric(a) && kxIsScalar(a);
}

// True or false given as a number or a logical.
inline bool isFlagScalar(const kxArray* a) {
  return isNumericScalar(a) || kxIsLogicalScalar(a);
}

// A real numeric scalar, finite, with no fraction.
inline bool isWholeNumber(const kxArray* a) {
  if (!isNumericScalar(a) || kxIsComplex(a)) return false;
  double v = kxGetScalar(a);
  return std::isfinite(v) && v == std::round(v);
}

// Every element of a cell is a string argument.
inline bool holdsOnlyStrings(const kxArray* cell) {
  size_t n = kxGetNumberOfElements(cell);
  for (size_t i = 0; i < n; ++i) {
    if (!isStringArgument(kxGetCell(cell, i))) return false;
  }
  return true;
}

}  // namespace textscan

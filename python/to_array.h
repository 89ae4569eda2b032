// Python values into the host's arrays, for the inputs of one call.
//
//   None                       0-by-0 double (the language's [])
//   bool, numpy.bool_          logical scalar
//   int, float                 double scalar (an int that a double can't hold
//                              exactly is refused: pass numpy.int64 instead)
//   complex                    complex double scalar
//   numpy scalar               1-by-1 of its class
//   str                        char row ('' is the 0-by-0 char of '')
//   bytes, bytearray           uint8 row
//   list, tuple                1-by-n cell
//   dict with str keys         1-by-1 struct
//   numpy.ndarray              same class and shape; 1-d is a row (1-by-n),
//                              0-d is 1-by-1; "U1" arrays are char arrays,
//                              object arrays are cells
//
// A numpy array passed directly as an argument is lent to the call, not
// copied, when its dtype is numeric, native, aligned, real and column-major
// (or contiguous 1-d); other arrays are converted once by numpy. Arrays
// inside lists and dicts are copied, and so are bool arrays, whose bytes are
// made 0 or 1. Nesting deeper than 1000 levels is refused.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <vector>

#include "twhost/kx_array.h"

namespace twpython {

class CallInputs {
 public:
  explicit CallInputs(const pybind11::args& args);
  ~CallInputs();
  CallInputs(const CallInputs&) = delete;
  CallInputs& operator=(const CallInputs&) = delete;

  const std::vector<const kxArray*>& arrays() const { return arrays_; }

 private:
  void add(pybind11::handle value);
  // Lends the data of a numpy array that needs no conversion; false when it
  // does.
  bool lend(const pybind11::array& a);

  std::vector<const kxArray*> arrays_;
  std::vector<kxOwned> owned_;
  // Arrays whose block is numpy's: taken back before they are destroyed.
  std::vector<kxArray*> lent_;
  // numpy arrays made by conversion, kept alive while their data is lent.
  std::vector<pybind11::object> keep_;
};

// A new array holding `value`, copied (for arrays nested in cells and
// structs).
kxOwned toArray(pybind11::handle value);

}  // namespace twpython

// Host arrays into Python values. Shapes are the array's own dimensions and
// data stays column-major, so that nothing needs reordering.
//
//   real numeric, logical   numpy array of the class that takes over the
//                           array's data block: no copy
//   1-by-1 of those         float (double), bool (logical), a numpy scalar of
//                           the class (single and the integer classes)
//   complex                 numpy complex array (a copy: the host keeps the
//                           real and imaginary parts apart); complex double
//                           1-by-1 is a complex
//   char                    str for a row (and for an empty char); a numpy
//                           "U1" array for a matrix
//   cell                    list when it is a vector or empty, else a numpy
//                           object array
//   struct                  dict for 1-by-1, list of dicts for a vector or
//                           empty, else a numpy object array of dicts
//   datetime                numpy datetime64[ns] array
//   categorical             (codes, categories): codes a numpy integer array,
//                           0-based with -1 for an undefined element, as
//                           pandas.Categorical.from_codes(codes, categories)
//                           takes them; categories a list of str
//   any other object        {"class": name, "properties": dict}
//   no array (null)         None
#pragma once

#include <pybind11/pybind11.h>

#include "twhost/kx_array.h"

namespace twpython {

// The Python value of `a`. Data blocks of `a` and of the arrays inside it
// pass to the numpy arrays made from them; `a` stays with its owner, emptied
// of those blocks.
pybind11::object fromArray(kxArray* a);

// The two host objects with a Python form of their own (host_objects.cc).
pybind11::object fromDatetime(const kxArray* a);
pybind11::object fromCategorical(const kxArray* a);

// Shapes and column-major strides of the host's dimensions.
std::vector<pybind11::ssize_t> shapeOf(const kxArray* a);
std::vector<pybind11::ssize_t> columnMajorStrides(const std::vector<pybind11::ssize_t>& shape,
                                                  pybind11::ssize_t itemSize);

}  // namespace twpython

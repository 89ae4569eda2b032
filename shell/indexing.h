// Reading and assigning through subscripts: x(i), x(i,j), C{i}, s.name, and
// deleting with x(i) = [].
//
// One subscript indexes the elements in column-major order; several index
// the dimensions, the last one spanning all the dimensions that remain.
// Assignments grow arrays as needed, padding with zeros or empty values.
#pragma once

#include <string>
#include <vector>

#include "value.h"

namespace tw {

struct Subscript {
  bool colon = false;  // a lone ':'
  Value value;
};
using Subscripts = std::vector<Subscript>;

Value indexParen(const Value& base, const Subscripts& subs);
std::vector<Value> indexBrace(const Value& base, const Subscripts& subs);
std::vector<Value> fieldValues(const Value& base, const std::string& name);

// The assignments return the new value of the whole; `base` may be empty
// (an undefined variable). When `base` is the only holder of its array, the
// array is changed in place.
Value assignParen(const Value& base, const Subscripts& subs, const Value& rhs);
Value assignBrace(const Value& base, const Subscripts& subs, const Value& rhs);
Value assignField(const Value& base, const std::string& name, const Value& rhs);

// The value of 'end' in subscript `position` (from 0) of `count`.
size_t endValue(const kxArray* base, size_t position, size_t count);

}  // namespace tw

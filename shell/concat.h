// Joining values side by side and on top of each other: [a, b; c, d].
#pragma once

#include <vector>

#include "value.h"

namespace tw {

Value horizontalJoin(const std::vector<Value>& parts);
Value verticalJoin(const std::vector<Value>& parts);

// {a, b; c, d}: every element in a cell of its own, rows of equal length.
Value cellFromRows(const std::vector<std::vector<Value>>& rows);

// The class a join of these arrays has: a cell if any is a cell, char over
// numbers, an integer class over floating ones, single over double, and
// logical only when all are. Raises when the classes cannot meet.
kxClassID joinedClass(const std::vector<const kxArray*>& parts);

// A copy of `a` in class `cls` (a number, logical or char class), complex
// when `complex` is set.
Value convertTo(const kxArray* a, kxClassID cls, bool complex);

}  // namespace tw

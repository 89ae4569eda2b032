// The language's operators on values: element-wise arithmetic with implicit
// expansion, comparisons, logical operators, matrix products, transposes and
// ranges.
#pragma once

#include <cstddef>

#include "ast.h"
#include "value.h"

namespace tw {

Value unaryOperation(UnaryOp op, const Value& a);
Value binaryOperation(BinaryOp op, const Value& a, const Value& b);
Value transposeOf(const Value& a, bool conjugate);

// start:step:stop. The count of elements, and element k of it: start plus
// k steps, except that the last element is the end itself when the steps
// reach it within rounding, so that 0:0.1:0.3 ends in 0.3 exactly.
struct RangeSteps {
  double start;
  double step;
  double stop;
  size_t count;
  double element(size_t k) const;
};
RangeSteps makeRangeSteps(double start, double step, double stop);
Value rangeValue(const RangeSteps& r);

}  // namespace tw

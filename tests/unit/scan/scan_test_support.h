// Helpers of the scan tests: calls of sscanf and fscanf through the table,
// and the elements of a result exactly as stored.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "support/builtin_calls.h"
#include "support/scratch_dir.h"
#include "twhost/kx_data.h"
#include "twhost/stream_errors.h"

namespace scan_test {

using Tarnwicks::FileIO::kSlotSscanf;
using test_support::call;
using test_support::num;
using test_support::Outcome;
using test_support::str;

// sscanf(text, format) with all four outputs.
inline Outcome sscanf(const std::string& text, const std::string& format) {
  return call(kSlotSscanf, 4, {str(text), str(format)});
}
inline Outcome sscanf(const std::string& text, const std::string& format, kxArray* size) {
  return call(kSlotSscanf, 4, {str(text), str(format), size});
}

// A 1-by-n double row, for size arguments.
inline kxArray* row(std::initializer_list<double> values) {
  kxArray* a = kxCreateDoubleMatrix(1, values.size(), kxREAL);
  std::copy(values.begin(), values.end(), kxGetPr(a));
  return a;
}

// Element i of output 0 as the bits of its own class, widened to 64 bits
// (doubles as their bit pattern): an exact comparison for every class.
inline uint64_t bitsAt(const Outcome& r, size_t i) {
  const kxArray* a = r.at(0);
  uint64_t bits = 0;
  std::memcpy(&bits, static_cast<const char*>(kxGetData(a)) + i * kxGetElementSize(a),
              kxGetElementSize(a));
  return bits;
}

}  // namespace scan_test

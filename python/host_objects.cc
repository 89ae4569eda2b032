// The host's datetime and categorical values in numpy's terms.
//
// A datetime holds "Data": per element a double-double count of milliseconds
// since 1970-01-01 UTC, high part real and low part imaginary (NaT: high
// NaN). A categorical holds "Categories", a cell of char rows, and "Codes",
// 1-based category numbers with 0 or NaN for an undefined element.
#include <pybind11/numpy.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

#include "from_array.h"
#include "python_errors.h"
#include "twhost/kx_data.h"

namespace py = pybind11;

namespace twpython {

namespace {

constexpr int64_t kNanosecondsPerMillisecond = 1'000'000;
constexpr int64_t kNaT = std::numeric_limits<int64_t>::min();

const kxArray* property(const kxArray* a, const char* name) {
  const kxArray* props = kxGetObjectProperties(a);
  return props && kxIsStruct(props) ? kxGetField(props, 0, name) : nullptr;
}

[[noreturn]] void outOfRange(double milliseconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.17g", milliseconds);
  raise("DatetimeOutOfRange", std::string(text));
}

// Whole milliseconds and the fraction left are split before scaling, so that
// the nanoseconds come out exact wherever the double-double is.
int64_t nanoseconds(double high, double low) {
  if (std::isnan(high)) return kNaT;
  // Past this many milliseconds either way the nanoseconds overflow int64.
  constexpr double kLimit = 9.2e12;
  double whole = std::floor(high);
  double fraction = (high - whole) + low;
  if (!(std::fabs(whole) < kLimit) || !(std::fabs(fraction) < kLimit)) outOfRange(high);
  int64_t ns = 0;
  if (__builtin_mul_overflow(static_cast<int64_t>(whole), kNanosecondsPerMillisecond, &ns) ||
      __builtin_add_overflow(ns, std::llround(fraction * kNanosecondsPerMillisecond), &ns) ||
      ns == kNaT) {
    outOfRange(high);
  }
  return ns;
}

struct CodeType {
  const char* dtype;
  kxClassID cls;
};

// The smallest signed integer type that holds every code and -1.
CodeType codeType(size_t categories) {
  if (categories < INT8_MAX) return {"i1", kxINT8_CLASS};
  if (categories < INT16_MAX) return {"i2", kxINT16_CLASS};
  if (categories < INT32_MAX) return {"i4", kxINT32_CLASS};
  return {"i8", kxINT64_CLASS};
}

}  // namespace

py::object fromDatetime(const kxArray* a) {
  std::vector<py::ssize_t> shape = shapeOf(a);
  py::dtype dt("M8[ns]");
  py::array out(dt, shape, columnMajorStrides(shape, dt.itemsize()));
  auto* ns = static_cast<int64_t*>(out.mutable_data());
  const kxArray* data = property(a, "Data");
  bool numeric = data && kxIsNumeric(data);
  size_t have = numeric ? kxGetNumberOfElements(data) : 0;
  size_t n = kxGetNumberOfElements(a);
  for (size_t i = 0; i < n; ++i) {
    if (i >= have) {
      ns[i] = kNaT;
      continue;
    }
    double high = KxData(data).asDouble(i);
    double low =
        kxIsComplex(data) ? KxData(kxGetClassID(data), kxGetImagData(data)).asDouble(i) : 0;
    ns[i] = nanoseconds(high, low);
  }
  return out;
}

py::object fromCategorical(const kxArray* a) {
  py::list categories;
  const kxArray* cats = property(a, "Categories");
  if (cats && kxIsCell(cats)) {
    for (size_t i = 0; i < kxGetNumberOfElements(cats); ++i) {
      kxArray* c = kxGetCell(cats, i);
      categories.append(c && kxIsChar(c) ? fromArray(c) : py::str(""));
    }
  }
  size_t count = categories.size();
  std::vector<py::ssize_t> shape = shapeOf(a);
  CodeType type = codeType(count);
  py::dtype dt(type.dtype);
  py::array codes(dt, shape, columnMajorStrides(shape, dt.itemsize()));
  const kxArray* given = property(a, "Codes");
  size_t have = given && kxIsNumeric(given) ? kxGetNumberOfElements(given) : 0;
  size_t n = kxGetNumberOfElements(a);
  auto* out = static_cast<char*>(codes.mutable_data());
  for (size_t i = 0; i < n; ++i) {
    double code = i < have ? KxData(given).asDouble(i) : 0;
    bool defined = code >= 1 && code <= static_cast<double>(count) && code == std::floor(code);
    double zeroBased = defined ? code - 1 : -1;
    AssignToVoidBuffer(type.cls, out + i * dt.itemsize(), kxDOUBLE_CLASS, &zeroBased, 1);
  }
  return py::make_tuple(codes, categories);
}

}  // namespace twpython

// The interpreter's datetime and categorical values, as textscan makes them
// through "datetime.textscanCreateFromStrings" and "categorical".
// Registered by name when the host loads.
//
// A datetime is an object with the properties "Format" (a char row) and
// "Data" (a complex double array of the value's size: per element the high
// part of a double-double count of milliseconds since 1970 in the real part,
// the low part in the imaginary part). A categorical has "Categories" (a
// cell column of char rows) and "Codes" (per element the 1-based number of
// its category, 0 for undefined, in an unsigned class that holds them all).
#include <cstring>
#include <unordered_map>

#include "twhost/calls.h"
#include "twhost/errors.h"
#include "twhost/kx_array.h"
#include "twhost/kx_data.h"
#include "twhost/kx_memory.h"

namespace {

constexpr int kDatetimeInputs = 2;
constexpr int kCategoricalInputs = 3;

kxArray* objectOf(const char* className, size_t count, const char* first, kxArray* firstValue,
                  const char* second, kxArray* secondValue) {
  const char* names[] = {first, second};
  kxArray* props = kxCreateStructMatrix(1, 1, 2, names);
  kxSetField(props, 0, first, firstValue);
  kxSetField(props, 0, second, secondValue);
  size_t dims[] = {count, 1};
  return kxCreateObjectArray(className, 2, dims, props);
}

// Inputs: the dates as a double column (complex when a low part was read;
// null or empty for none) and the format as a char row.
void textscanCreateFromStrings(int, kxArray** plhs, int nrhs, kxArray** prhs) {
  if (nrhs < kDatetimeInputs) matrix::detail::error_minrhs();
  const kxArray* dates = prhs[0];
  const kxArray* format = prhs[1];
  if ((dates && !kxIsEmpty(dates) && !(kxIsDouble(dates) && !kxIsSparse(dates))) ||
      (format && !kxIsChar(format))) {
    kxThrowId("KORVAN:datetime", "InvalidTextscanValues");
  }
  size_t n = dates ? kxGetNumberOfElements(dates) : 0;
  kxArray* data = kxCreateDoubleMatrix(n, 1, kxCOMPLEX);
  if (n) {
    std::memcpy(kxGetPr(data), kxGetPr(dates), n * sizeof(double));
    if (kxIsComplex(dates)) std::memcpy(kxGetPi(data), kxGetPi(dates), n * sizeof(double));
  }
  ustring text = format ? kxArrayToUString(format) : ustring();
  kxArray* formatRow = kxCreateStringFromNChars_UTF16(text.data(), text.size());
  plhs[0] = objectOf("datetime", n, "Format", formatRow, "Data", data);
}

// Inputs: one code per element (0 undefined), the code of each category,
// and the names of the categories in the order they are to be listed. The
// codes keep their class; they are renumbered to positions in the list.
void categorical(int, kxArray** plhs, int nrhs, kxArray** prhs) {
  if (nrhs < kCategoricalInputs) matrix::detail::error_minrhs();
  const kxArray* codes = prhs[0];
  const kxArray* values = prhs[1];
  const kxArray* names = prhs[2];
  if (!codes || !values || !names || !kxIsNumeric(codes) || !kxIsNumeric(values) ||
      !kxIsCell(names) || kxGetNumberOfElements(values) != kxGetNumberOfElements(names)) {
    kxThrowId("KORVAN:categorical", "InvalidCodesAndNames");
  }
  size_t k = kxGetNumberOfElements(names);
  std::unordered_map<double, double> position;
  KxData valueData(values);
  for (size_t i = 0; i < k; ++i)
    position.emplace(valueData.asDouble(i), static_cast<double>(i + 1));
  kxArray* categories = kxCreateCellMatrix(k, 1);
  for (size_t i = 0; i < k; ++i) {
    const kxArray* name = kxGetCell(names, i);
    if (!name || !kxIsChar(name)) {
      kxDestroyArray(categories);
      kxThrowId("KORVAN:categorical", "InvalidCodesAndNames");
    }
    ustring text = kxArrayToUString(name);
    kxSetCell(categories, i, kxCreateStringFromNChars_UTF16(text.data(), text.size()));
  }
  size_t n = kxGetNumberOfElements(codes);
  kxClassID cls = kxGetClassID(codes);
  kxArray* out = kxCreateNumericMatrix(n, 1, cls, kxREAL);
  KxData in(codes);
  for (size_t i = 0; i < n; ++i) {
    auto it = position.find(in.asDouble(i));
    double code = it == position.end() ? 0 : it->second;
    AssignToVoidBuffer(cls, static_cast<char*>(kxGetData(out)) + i * kxClassElementSize(cls),
                       kxDOUBLE_CLASS, &code, 1);
  }
  plhs[0] = objectOf("categorical", n, "Categories", categories, "Codes", out);
}

[[maybe_unused]] const bool kRegistered = [] {
  kxRegisterFunction("datetime.textscanCreateFromStrings", textscanCreateFromStrings);
  kxRegisterFunction("categorical", categorical);
  return true;
}();

}  // namespace

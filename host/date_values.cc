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
#include <cmath>
#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <vector>

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

// Codes of an unsigned class through a table: `table[c]` is the place of
// code c, for c up to k; larger codes have none. The places fit the class.
template <class T>
void renumberByTable(const void* codes, void* out, size_t n, const std::vector<uint64_t>& table) {
  std::vector<T> places(table.begin(), table.end());
  const size_t k = places.size() - 1;
  const T* in = static_cast<const T*>(codes);
  T* to = static_cast<T*>(out);
  for (size_t i = 0; i < n; ++i) to[i] = in[i] <= k ? places[in[i]] : T(0);
}

// The table when `k` fits the class of the codes; false for other classes.
bool renumberUnsigned(kxClassID cls, const void* codes, void* out, size_t n,
                      const std::vector<uint64_t>& table) {
  const uint64_t k = table.size() - 1;
  switch (cls) {
    case kxUINT8_CLASS:
      if (k > UINT8_MAX) return false;
      renumberByTable<uint8_t>(codes, out, n, table);
      return true;
    case kxUINT16_CLASS:
      if (k > UINT16_MAX) return false;
      renumberByTable<uint16_t>(codes, out, n, table);
      return true;
    case kxUINT32_CLASS:
      if (k > UINT32_MAX) return false;
      renumberByTable<uint32_t>(codes, out, n, table);
      return true;
    case kxUINT64_CLASS:
      renumberByTable<uint64_t>(codes, out, n, table);
      return true;
    default:
      return false;
  }
}

// Each code becomes the 1-based position of its value among `values`, 0
// when none has it. When the values are 1 to k in some order, as textscan
// gives them, a table does it, in the codes' own class when that is an
// unsigned one (one pass, no conversion); any other values or classes go
// through doubles and a map.
void renumber(const kxArray* codes, const kxArray* values, kxArray* out) {
  size_t k = kxGetNumberOfElements(values);
  size_t n = kxGetNumberOfElements(codes);
  KxData valueData(values);
  std::vector<uint64_t> table(k + 1, 0);
  size_t tabled = 0;
  std::unordered_map<double, double> position;
  for (size_t i = 0; i < k; ++i) {
    double v = valueData.asDouble(i);
    double place = static_cast<double>(i + 1);
    position.emplace(v, place);
    if (v >= 1 && v <= static_cast<double>(k) && v == std::floor(v) &&
        table[static_cast<size_t>(v)] == 0) {
      table[static_cast<size_t>(v)] = i + 1;
      ++tabled;
    }
  }
  bool permutation = tabled == k;
  if (permutation &&
      renumberUnsigned(kxGetClassID(codes), kxGetData(codes), kxGetData(out), n, table)) {
    return;
  }
  // One typed pass in, one out; the renumbering works on doubles.
  std::vector<double> work(n);
  AssignToVoidBuffer(kxDOUBLE_CLASS, work.data(), KxData(codes), n);
  for (double& c : work) {
    if (permutation && c >= 0 && c <= static_cast<double>(k) && c == std::floor(c)) {
      c = static_cast<double>(table[static_cast<size_t>(c)]);
    } else if (auto it = position.find(c); it != position.end()) {
      c = it->second;
    } else {
      c = 0;
    }
  }
  AssignToVoidBuffer(kxGetClassID(out), kxGetData(out), kxDOUBLE_CLASS, work.data(), n);
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
  kxArray* out =
      kxCreateNumericMatrix(kxGetNumberOfElements(codes), 1, kxGetClassID(codes), kxREAL);
  renumber(codes, values, out);
  plhs[0] =
      objectOf("categorical", kxGetNumberOfElements(codes), "Categories", categories, "Codes", out);
}

[[maybe_unused]] const bool kRegistered = [] {
  kxRegisterFunction("datetime.textscanCreateFromStrings", textscanCreateFromStrings);
  kxRegisterFunction("categorical", categorical);
  return true;
}();

}  // namespace

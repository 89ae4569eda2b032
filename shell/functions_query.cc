// Host functions that answer questions about values.
#include <cmath>

#include "functions.h"
#include "shell_errors.h"
#include "twhost/calls.h"
#include "value.h"

namespace tw {

namespace {

kxArray* logicalOut(bool v) {
  return kxCreateLogicalScalar(v);
}

void sizeFunction(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  checkArgCount("size", nrhs, 1, 2);
  std::vector<size_t> dims = dimsOf(prhs[0]);
  if (nrhs == 2) {
    checkOutCount("size", nlhs, 1);
    double d = scalarOf(prhs[1], "a dimension");
    if (d < 1 || d != std::floor(d)) shellError("BadDimension");
    size_t k = static_cast<size_t>(d) - 1;
    plhs[0] = kxCreateDoubleScalar(k < dims.size() ? static_cast<double>(dims[k]) : 1.0);
    return;
  }
  if (nlhs <= 1) {
    kxArray* r = kxCreateDoubleMatrix(1, dims.size(), kxREAL);
    for (size_t k = 0; k < dims.size(); ++k) kxGetPr(r)[k] = static_cast<double>(dims[k]);
    plhs[0] = r;
    return;
  }
  // [m, n] = size(x): the last output takes the product of what remains.
  for (int k = 0; k < nlhs; ++k) {
    double v = 1;
    if (static_cast<size_t>(k) < dims.size()) v = static_cast<double>(dims[k]);
    if (k == nlhs - 1) {
      for (size_t j = k + 1; j < dims.size(); ++j) v *= static_cast<double>(dims[j]);
    }
    plhs[k] = kxCreateDoubleScalar(v);
  }
}

void registerSimple(const char* name, kxArray* (*fn)(const kxArray*)) {
  registerShellFunction(name, [=](int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
    checkArgCount(name, nrhs, 1, 1);
    checkOutCount(name, nlhs, 1);
    plhs[0] = fn(prhs[0]);
  });
}

void isequalFunction(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  checkArgCount("isequal", nrhs, 2, -1);
  checkOutCount("isequal", nlhs, 1);
  bool same = true;
  for (int i = 1; i < nrhs && same; ++i) same = valuesEqual(prhs[0], prhs[i]);
  plhs[0] = logicalOut(same);
}

void isfieldFunction(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  checkArgCount("isfield", nrhs, 2, 2);
  checkOutCount("isfield", nlhs, 1);
  const kxArray* s = prhs[0];
  const kxArray* names = prhs[1];
  auto has = [&](const kxArray* name) {
    return kxIsStruct(s) && kxIsChar(name) &&
           kxGetFieldNumber(s, textOf(name, "a field name").c_str()) >= 0;
  };
  if (!kxIsCell(names)) {
    plhs[0] = logicalOut(has(names));
    return;
  }
  kxArray* r = kxCreateNumericArray(kxGetNumberOfDimensions(names), kxGetDimensions(names),
                                    kxLOGICAL_CLASS, kxREAL);
  for (size_t i = 0; i < numelOf(names); ++i) {
    const kxArray* e = kxGetCell(names, i);
    kxGetLogicals(r)[i] = e && has(e);
  }
  plhs[0] = r;
}

void strcmpFunction(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  checkArgCount("strcmp", nrhs, 2, 2);
  checkOutCount("strcmp", nlhs, 1);
  auto same = [](const kxArray* a, const kxArray* b) {
    return a && b && kxIsChar(a) && kxIsChar(b) && dimsOf(a) == dimsOf(b) &&
           utextOf(a, "") == utextOf(b, "");
  };
  const kxArray* a = prhs[0];
  const kxArray* b = prhs[1];
  if (!kxIsCell(a) && !kxIsCell(b)) {
    plhs[0] = logicalOut(same(a, b));
    return;
  }
  const kxArray* cell = kxIsCell(a) ? a : b;
  const kxArray* other = kxIsCell(a) ? b : a;
  if (kxIsCell(other) && numelOf(other) != 1 && dimsOf(other) != dimsOf(cell)) {
    shellError("SizeMismatch", std::string("strcmp"), sizeText(dimsOf(a)), sizeText(dimsOf(b)));
  }
  if (kxIsCell(other) && numelOf(cell) == 1 && numelOf(other) != 1) std::swap(cell, other);
  kxArray* r = kxCreateNumericArray(kxGetNumberOfDimensions(cell), kxGetDimensions(cell),
                                    kxLOGICAL_CLASS, kxREAL);
  for (size_t i = 0; i < numelOf(cell); ++i) {
    const kxArray* o = other;
    if (kxIsCell(other)) o = kxGetCell(other, numelOf(other) == 1 ? 0 : i);
    kxGetLogicals(r)[i] = same(kxGetCell(cell, i), o);
  }
  plhs[0] = r;
}

kxArray* numelOut(const kxArray* a) {
  return kxCreateDoubleScalar(static_cast<double>(numelOf(a)));
}
kxArray* classOut(const kxArray* a) {
  return kxCreateString(classNameOf(a).c_str());
}
kxArray* isemptyOut(const kxArray* a) {
  return logicalOut(numelOf(a) == 0);
}
kxArray* lengthOut(const kxArray* a) {
  size_t longest = 0;
  for (size_t d : dimsOf(a)) longest = std::max(longest, d);
  return kxCreateDoubleScalar(numelOf(a) == 0 ? 0.0 : static_cast<double>(longest));
}
kxArray* ndimsOut(const kxArray* a) {
  return kxCreateDoubleScalar(static_cast<double>(kxGetNumberOfDimensions(a)));
}
kxArray* iscellOut(const kxArray* a) {
  return logicalOut(kxIsCell(a));
}
kxArray* ischarOut(const kxArray* a) {
  return logicalOut(kxIsChar(a));
}
kxArray* isstructOut(const kxArray* a) {
  return logicalOut(kxIsStruct(a));
}
kxArray* isnumericOut(const kxArray* a) {
  return logicalOut(kxIsNumeric(a));
}
kxArray* islogicalOut(const kxArray* a) {
  return logicalOut(kxIsLogical(a));
}
kxArray* isrealOut(const kxArray* a) {
  return logicalOut(!kxIsComplex(a));
}
kxArray* issparseOut(const kxArray* a) {
  return logicalOut(kxIsSparse(a));
}

kxArray* fieldnamesOut(const kxArray* a) {
  if (!kxIsStruct(a)) shellError("FieldOfNonStruct", std::string("fieldnames"), classNameOf(a));
  int nf = kxGetNumberOfFields(a);
  kxArray* r = kxCreateCellMatrix(static_cast<size_t>(nf), 1);
  for (int f = 0; f < nf; ++f) kxSetCell(r, f, kxCreateString(kxGetFieldNameByNumber(a, f)));
  return r;
}

kxArray* isnanOut(const kxArray* a) {
  if (!isNumericOrLogicalOrChar(a)) shellError("NeedNumbers", std::string("isnan"), classNameOf(a));
  kxArray* r =
      kxCreateNumericArray(kxGetNumberOfDimensions(a), kxGetDimensions(a), kxLOGICAL_CLASS, kxREAL);
  for (size_t i = 0; i < numelOf(a); ++i) {
    kxGetLogicals(r)[i] = std::isnan(elementAsDouble(a, i)) || std::isnan(imagAsDouble(a, i));
  }
  return r;
}

}  // namespace

void registerQueryFunctions() {
  registerShellFunction("size", sizeFunction);
  registerShellFunction("isequal", isequalFunction);
  registerShellFunction("isfield", isfieldFunction);
  registerShellFunction("strcmp", strcmpFunction);
  registerSimple("numel", numelOut);
  registerSimple("class", classOut);
  registerSimple("isempty", isemptyOut);
  registerSimple("length", lengthOut);
  registerSimple("ndims", ndimsOut);
  registerSimple("iscell", iscellOut);
  registerSimple("ischar", ischarOut);
  registerSimple("isstruct", isstructOut);
  registerSimple("isnumeric", isnumericOut);
  registerSimple("islogical", islogicalOut);
  registerSimple("isreal", isrealOut);
  registerSimple("issparse", issparseOut);
  registerSimple("fieldnames", fieldnamesOut);
  registerSimple("isnan", isnanOut);
}

}  // namespace tw

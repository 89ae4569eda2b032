// Host functions that make values: conversions, constructors, constants.
#include <cmath>
#include <cstring>
#include <limits>

#include "date_text.h"
#include "functions.h"
#include "shell_errors.h"
#include "twhost/calls.h"
#include "twhost/text.h"
#include "value.h"

namespace tw {

kxClassID classFromName(const std::string& name) {
  static const struct {
    const char* name;
    kxClassID cls;
  } table[] = {
      {"double", kxDOUBLE_CLASS}, {"single", kxSINGLE_CLASS},   {"int8", kxINT8_CLASS},
      {"uint8", kxUINT8_CLASS},   {"int16", kxINT16_CLASS},     {"uint16", kxUINT16_CLASS},
      {"int32", kxINT32_CLASS},   {"uint32", kxUINT32_CLASS},   {"int64", kxINT64_CLASS},
      {"uint64", kxUINT64_CLASS}, {"logical", kxLOGICAL_CLASS}, {"char", kxCHAR_CLASS},
  };
  for (const auto& e : table) {
    if (name == e.name) return e.cls;
  }
  return kxUNKNOWN_CLASS;
}

namespace {

size_t sizeValue(const char* fn, double d) {
  if (std::isnan(d) || d != std::floor(d)) shellError("BadSize", std::string(fn));
  if (d < 0) return 0;
  if (d > 1e12) shellError("BadSize", std::string(fn));
  return static_cast<size_t>(d);
}

}  // namespace

std::vector<size_t> sizeArguments(const char* fn, int nrhs, kxArray** prhs, kxClassID* cls) {
  if (cls) *cls = kxDOUBLE_CLASS;
  if (cls && nrhs > 0 && kxIsChar(prhs[nrhs - 1])) {
    std::string name = textOf(prhs[nrhs - 1], "a class name");
    *cls = classFromName(name);
    if (*cls == kxUNKNOWN_CLASS || *cls == kxCHAR_CLASS) shellError("BadClassName", name);
    --nrhs;
  }
  if (nrhs == 0) return {1, 1};
  if (nrhs == 1) {
    const kxArray* a = prhs[0];
    if (!(kxIsNumeric(a) || kxIsLogical(a))) shellError("BadSize", std::string(fn));
    size_t n = numelOf(a);
    if (n == 1) {
      size_t d = sizeValue(fn, elementAsDouble(a, 0));
      return {d, d};
    }
    if (n < 2 || !kxIsVector(a)) shellError("BadSize", std::string(fn));
    std::vector<size_t> dims;
    for (size_t i = 0; i < n; ++i) dims.push_back(sizeValue(fn, elementAsDouble(a, i)));
    return dims;
  }
  std::vector<size_t> dims;
  for (int i = 0; i < nrhs; ++i) dims.push_back(sizeValue(fn, scalarOf(prhs[i], "a size")));
  return dims;
}

namespace {

kxArray* copyOut(const kxArray* a) {
  return kxDuplicateArray(a);
}

void registerConversion(const char* name, kxClassID cls) {
  registerShellFunction(name, [name, cls](int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
    checkArgCount(name, nrhs, 1, 1);
    checkOutCount(name, nlhs, 1);
    kxArray* r = kxMustBe(prhs[0], cls);
    plhs[0] = r == prhs[0] ? copyOut(r) : r;
  });
}

// char(x), char(a, b, ...) and char({'a', 'bc'}): rows padded with blanks.
// char of a datetime: a row per element, as the console shows it.
void charFunction(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  checkArgCount("char", nrhs, 1, -1);
  checkOutCount("char", nlhs, 1);
  if (nrhs == 1 && kxIsObject(prhs[0]) &&
      kxGetObjectClassName(prhs[0]) == std::string("datetime")) {
    std::vector<ustring> rows;
    for (const std::string& text : datetimeTexts(prhs[0])) {
      rows.push_back(fl::i18n::to_ustring(text));
    }
    plhs[0] = kxCreateCharMatrixFromRows(rows);
    return;
  }
  if (nrhs == 1 && !kxIsCell(prhs[0])) {
    kxArray* r = kxMustBe(prhs[0], kxCHAR_CLASS);
    plhs[0] = r == prhs[0] ? copyOut(r) : r;
    return;
  }
  std::vector<ustring> rows;
  auto addRows = [&](const kxArray* a) {
    if (kxIsCell(a)) {
      for (size_t i = 0; i < numelOf(a); ++i) {
        const kxArray* e = kxGetCell(a, i);
        rows.push_back(e ? utextOf(e, "an element of the cell") : ustring());
      }
      return;
    }
    Value c = Value::adopt(kxDuplicateArray(a));
    if (!kxIsChar(a)) c = Value::adopt(kxMustBe(a, kxCHAR_CLASS));
    size_t m = kxGetM(c.get()), n = numelOf(c.get()), cols = m ? n / m : 0;
    const char16_t* d = kxGetChars(c.get());
    if (n == 0) rows.emplace_back();
    for (size_t i = 0; i < m; ++i) {
      ustring row(cols, u' ');
      for (size_t j = 0; j < cols; ++j) row[j] = d[j * m + i];
      rows.push_back(row);
    }
  };
  for (int i = 0; i < nrhs; ++i) addRows(prhs[i]);
  plhs[0] = kxCreateCharMatrixFromRows(rows);
}

// A filled array for zeros, ones and the constants.
kxArray* filled(const std::vector<size_t>& dims, kxClassID cls, double re, double im = 0) {
  kxArray* r = kxCreateNumericArray(dims.size(), dims.data(), cls, im != 0 ? kxCOMPLEX : kxREAL);
  size_t n = kxGetNumberOfElements(r);
  for (size_t i = 0; i < n; ++i) storeElement(r, i, re);
  if (im != 0) {
    for (size_t i = 0; i < n; ++i) kxGetPi(r)[i] = im;
  }
  return r;
}

// zeros and ones take a class name after the size: zeros(2, 'int8').
void registerFilled(const char* name, double value) {
  registerShellFunction(name, [=](int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
    checkOutCount(name, nlhs, 1);
    kxClassID cls;
    std::vector<size_t> dims = sizeArguments(name, nrhs, prhs, &cls);
    plhs[0] = filled(dims, cls, value);
  });
}

void registerConstant(const char* name, kxClassID cls, double re, double im) {
  registerShellFunction(name, [=](int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
    checkOutCount(name, nlhs, 1);
    plhs[0] = filled(sizeArguments(name, nrhs, prhs, nullptr), cls, re, im);
  });
}

void complexFunction(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  checkArgCount("complex", nrhs, 1, 2);
  checkOutCount("complex", nlhs, 1);
  const kxArray* a = prhs[0];
  const kxArray* b = nrhs > 1 ? prhs[1] : nullptr;
  for (const kxArray* x : {a, b}) {
    if (x && (!(kxIsNumeric(x) || kxIsLogical(x) || kxIsChar(x)) || kxIsComplex(x))) {
      shellError("ComplexParts");
    }
  }
  kxClassID cls = kxGetClassID(a);
  if (b && cls == kxDOUBLE_CLASS && kxGetClassID(b) != kxLOGICAL_CLASS &&
      kxGetClassID(b) != kxCHAR_CLASS) {
    cls = kxGetClassID(b);
  }
  if (cls == kxLOGICAL_CLASS || cls == kxCHAR_CLASS) cls = kxDOUBLE_CLASS;
  std::vector<size_t> dims = dimsOf(a);
  if (b && numelOf(a) == 1 && numelOf(b) != 1) dims = dimsOf(b);
  if (b && numelOf(a) != 1 && numelOf(b) != 1 && dimsOf(a) != dimsOf(b)) {
    shellError("SizeMismatch", std::string("complex"), sizeText(dimsOf(a)), sizeText(dimsOf(b)));
  }
  Value re = makeNumeric(dims, cls);
  Value im = makeNumeric(dims, cls);
  size_t n = numelOf(re.get());
  for (size_t i = 0; i < n; ++i) {
    storeElement(re.get(), i, elementAsLongDouble(a, numelOf(a) == 1 ? 0 : i));
    if (b) storeElement(im.get(), i, elementAsLongDouble(b, numelOf(b) == 1 ? 0 : i));
  }
  kxArray* r = kxCreateNumericArray(dims.size(), dims.data(), cls, kxCOMPLEX);
  size_t bytes = n * kxClassElementSize(cls);
  if (bytes) {
    std::memcpy(kxGetData(r), kxGetData(re.get()), bytes);
    std::memcpy(kxGetImagData(r), kxGetData(im.get()), bytes);
  }
  plhs[0] = r;
}

void sparseFunction(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  checkArgCount("sparse", nrhs, 1, 2);
  checkOutCount("sparse", nlhs, 1);
  if (nrhs == 2) {
    size_t m = sizeValue("sparse", scalarOf(prhs[0], "a size"));
    size_t n = sizeValue("sparse", scalarOf(prhs[1], "a size"));
    plhs[0] = kxCreateSparseDouble(m, n);
    return;
  }
  const kxArray* a = prhs[0];
  if (!(kxIsDouble(a) || kxIsLogical(a)) || kxIsComplex(a) || kxGetNumberOfDimensions(a) > 2) {
    shellError("SparseInput", classNameOf(a));
  }
  kxArray* r = kxCreateSparseDouble(kxGetM(a), kxGetN(a));
  for (size_t i = 0; i < numelOf(a); ++i) kxGetPr(r)[i] = elementAsDouble(a, i);
  plhs[0] = r;
}

// struct('a', 1, 'b', {1, 2}): cell values spread over a struct array.
void structFunction(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  checkOutCount("struct", nlhs, 1);
  if (nrhs == 1 && kxIsDouble(prhs[0]) && numelOf(prhs[0]) == 0) {
    plhs[0] = kxCreateStructMatrix(0, 0, 0, nullptr);
    return;
  }
  if (nrhs % 2 != 0) shellError("StructPairs");
  std::vector<std::string> names;
  std::vector<size_t> dims = {1, 1};
  bool spread = false;
  for (int i = 0; i < nrhs; i += 2) {
    if (!isCharRow(prhs[i]) || numelOf(prhs[i]) == 0) shellError("BadFieldName");
    names.push_back(textOf(prhs[i], "a field name"));
    const kxArray* v = prhs[i + 1];
    if (kxIsCell(v) && numelOf(v) != 1) {
      if (spread && dimsOf(v) != dims) shellError("StructCellSizes");
      dims = dimsOf(v);
      spread = true;
    }
  }
  std::vector<const char*> ptrs;
  for (const auto& n : names) ptrs.push_back(n.c_str());
  // Made under the caller's call frame, which frees it if a step fails.
  kxArray* s = kxCreateStructArray(dims.size(), dims.data(), 0, nullptr);
  for (const char* p : ptrs) kxAddField(s, p);
  size_t n = numelOf(s);
  for (size_t f = 0; f < names.size(); ++f) {
    int field = kxGetFieldNumber(s, ptrs[f]);
    const kxArray* v = prhs[2 * f + 1];
    for (size_t i = 0; i < n; ++i) {
      const kxArray* e = v;
      if (kxIsCell(v)) e = kxGetCell(v, numelOf(v) == 1 ? 0 : i);
      kxSetFieldByNumber(s, i, field, e ? kxDuplicateArray(e) : kxCreateDoubleMatrix(0, 0, kxREAL));
    }
  }
  plhs[0] = s;
}

void cellFunction(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  checkOutCount("cell", nlhs, 1);
  std::vector<size_t> dims = sizeArguments("cell", nrhs, prhs, nullptr);
  if (nrhs == 0) dims = {0, 0};
  plhs[0] = makeCell(dims).duplicate();
}

void reshapeFunction(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  checkArgCount("reshape", nrhs, 2, -1);
  checkOutCount("reshape", nlhs, 1);
  const kxArray* a = prhs[0];
  size_t total = numelOf(a);
  std::vector<size_t> dims;
  int open = -1;
  if (nrhs == 2) {
    dims = sizeArguments("reshape", 1, prhs + 1, nullptr);
    if (numelOf(prhs[1]) == 1) shellError("BadSize", std::string("reshape"));
  } else {
    for (int i = 1; i < nrhs; ++i) {
      if (numelOf(prhs[i]) == 0) {
        if (open >= 0) shellError("ReshapeOpen");
        open = static_cast<int>(dims.size());
        dims.push_back(1);
      } else {
        dims.push_back(sizeValue("reshape", scalarOf(prhs[i], "a size")));
      }
    }
  }
  size_t product = 1;
  for (size_t d : dims) product *= d;
  if (open >= 0) {
    if (product == 0 || total % product != 0) {
      std::string text;
      for (size_t k = 0; k < dims.size(); ++k) {
        text += (k ? "x" : "") + (static_cast<int>(k) == open ? "[]" : std::to_string(dims[k]));
      }
      shellError("ReshapeCount", static_cast<long>(total), text);
    }
    dims[open] = total / product;
    product = total;
  }
  if (product != total) shellError("ReshapeCount", static_cast<long>(total), sizeText(dims));
  kxArray* r = kxDuplicateArray(a);
  kxSetDimensions(r, dims.data(), dims.size());
  plhs[0] = r;
}

}  // namespace

void registerDataFunctions() {
  static const struct {
    const char* name;
    kxClassID cls;
  } conversions[] = {
      {"double", kxDOUBLE_CLASS}, {"single", kxSINGLE_CLASS},   {"int8", kxINT8_CLASS},
      {"uint8", kxUINT8_CLASS},   {"int16", kxINT16_CLASS},     {"uint16", kxUINT16_CLASS},
      {"int32", kxINT32_CLASS},   {"uint32", kxUINT32_CLASS},   {"int64", kxINT64_CLASS},
      {"uint64", kxUINT64_CLASS}, {"logical", kxLOGICAL_CLASS},
  };
  for (const auto& c : conversions) registerConversion(c.name, c.cls);
  registerShellFunction("char", charFunction);
  registerShellFunction("complex", complexFunction);
  registerShellFunction("sparse", sparseFunction);
  registerShellFunction("struct", structFunction);
  registerShellFunction("cell", cellFunction);
  registerShellFunction("reshape", reshapeFunction);
  registerFilled("zeros", 0);
  registerFilled("ones", 1);
  double inf = std::numeric_limits<double>::infinity();
  double nan = std::numeric_limits<double>::quiet_NaN();
  registerConstant("Inf", kxDOUBLE_CLASS, inf, 0);
  registerConstant("inf", kxDOUBLE_CLASS, inf, 0);
  registerConstant("NaN", kxDOUBLE_CLASS, nan, 0);
  registerConstant("nan", kxDOUBLE_CLASS, nan, 0);
  registerConstant("pi", kxDOUBLE_CLASS, M_PI, 0);
  registerConstant("eps", kxDOUBLE_CLASS, std::numeric_limits<double>::epsilon(), 0);
  registerConstant("true", kxLOGICAL_CLASS, 1, 0);
  registerConstant("false", kxLOGICAL_CLASS, 0, 0);
  registerConstant("i", kxDOUBLE_CLASS, 0, 1);
  registerConstant("j", kxDOUBLE_CLASS, 0, 1);
}

}  // namespace tw

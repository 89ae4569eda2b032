// Concatenation of two-dimensional arrays.
#include "concat.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "shell_errors.h"

namespace tw {

namespace {

int rank(kxClassID cls) {
  switch (cls) {
    case kxLOGICAL_CLASS:
      return 0;
    case kxDOUBLE_CLASS:
      return 1;
    case kxSINGLE_CLASS:
      return 2;
    case kxCHAR_CLASS:
      return 4;
    default:
      return isIntegerClass(cls) ? 3 : -1;
  }
}

Value wrapInCell(const Value& v) {
  Value c = Value::adopt(kxCreateCellMatrix(1, 1));
  kxSetCell(c.get(), 0, v.duplicate());
  return c;
}

std::vector<std::string> fieldNames(const kxArray* s) {
  std::vector<std::string> names;
  for (int f = 0; f < kxGetNumberOfFields(s); ++f) names.emplace_back(kxGetFieldNameByNumber(s, f));
  return names;
}

// Brings every part to the joined class; parts of that class already stay.
std::vector<Value> unify(const std::vector<Value>& parts, kxClassID& cls) {
  std::vector<const kxArray*> raw;
  for (const Value& p : parts) raw.push_back(p.get());
  cls = joinedClass(raw);
  bool complex = false;
  for (const Value& p : parts) complex = complex || kxIsComplex(p.get());
  std::vector<Value> out;
  for (const Value& p : parts) {
    const kxArray* a = p.get();
    if (cls == kxCELL_CLASS) {
      out.push_back(kxIsCell(a) ? p : wrapInCell(p));
    } else if (cls == kxSTRUCT_CLASS || kxIsObject(a)) {
      out.push_back(p);
    } else if (kxGetClassID(a) == cls && kxIsComplex(a) == complex && !kxIsSparse(a)) {
      out.push_back(p);
    } else {
      out.push_back(convertTo(a, cls, complex));
    }
  }
  if (cls == kxSTRUCT_CLASS) {
    std::vector<std::string> first;
    bool haveFirst = false;
    for (const Value& p : out) {
      if (numelOf(p.get()) == 0) continue;
      std::vector<std::string> names = fieldNames(p.get());
      std::sort(names.begin(), names.end());
      if (!haveFirst) {
        first = names;
        haveFirst = true;
      } else if (names != first) {
        shellError("StructFieldsDiffer");
      }
    }
  }
  return out;
}

Value join(const std::vector<Value>& input, bool horizontal) {
  if (input.empty()) return makeEmpty();
  if (input.size() == 1) return input[0];
  kxClassID cls;
  std::vector<Value> parts = unify(input, cls);
  // Empty parts take no room, unless every part is empty.
  std::vector<Value> kept;
  for (const Value& p : parts) {
    if (numelOf(p.get()) != 0) kept.push_back(p);
  }
  if (kept.empty()) {
    const kxArray* first = parts[0].get();
    bool sameOther = true;
    size_t total = 0;
    for (const Value& p : parts) {
      const kxArray* a = p.get();
      if (kxGetNumberOfDimensions(a) > 2) sameOther = false;
      if (horizontal ? kxGetM(a) != kxGetM(first) : kxGetN(a) != kxGetN(first)) sameOther = false;
      total += horizontal ? kxGetN(a) : kxGetM(a);
    }
    std::vector<size_t> dims = {0, 0};
    if (sameOther) {
      dims = horizontal ? std::vector<size_t>{kxGetM(first), total}
                        : std::vector<size_t>{total, kxGetN(first)};
    }
    return Value::adopt(createArray(cls, false, dims, first));
  }
  if (kept.size() == 1) return kept[0];
  for (const Value& p : kept) {
    if (kxIsObject(p.get())) shellError("JoinClasses", classNameOf(p.get()), std::string("other"));
    if (kxGetNumberOfDimensions(p.get()) > 2) shellError("JoinNd");
  }
  const kxArray* first = kept[0].get();
  size_t outRows = kxGetM(first), outCols = kxGetN(first);
  for (size_t i = 1; i < kept.size(); ++i) {
    const kxArray* a = kept[i].get();
    if (horizontal ? kxGetM(a) != outRows : kxGetN(a) != outCols) {
      shellError(horizontal ? "JoinRows" : "JoinColumns", sizeText(dimsOf(first)),
                 sizeText(dimsOf(a)));
    }
    (horizontal ? outCols : outRows) += horizontal ? kxGetN(a) : kxGetM(a);
  }
  // A complex part makes the whole result complex.
  const kxArray* model = first;
  for (const Value& p : kept) {
    if (kxIsComplex(p.get())) model = p.get();
  }
  Value out = Value::adopt(createArray(cls, kxIsComplex(model), {outRows, outCols}, model));
  kxArray* r = out.get();
  if (horizontal) {
    size_t at = 0;
    for (const Value& p : kept) {
      size_t n = numelOf(p.get());
      for (size_t i = 0; i < n; ++i) transferElement(r, at + i, p.get(), i);
      at += n;
    }
  } else {
    size_t rowAt = 0;
    for (const Value& p : kept) {
      const kxArray* a = p.get();
      size_t m = kxGetM(a);
      for (size_t j = 0; j < outCols; ++j) {
        for (size_t i = 0; i < m; ++i) transferElement(r, j * outRows + rowAt + i, a, j * m + i);
      }
      rowAt += m;
    }
  }
  return out;
}

}  // namespace

kxClassID joinedClass(const std::vector<const kxArray*>& parts) {
  bool anyCell = false, anyStruct = false, anyOther = false;
  int best = -1;
  kxClassID bestClass = kxDOUBLE_CLASS;
  const kxArray* object = nullptr;
  for (const kxArray* a : parts) {
    kxClassID c = kxGetClassID(a);
    if (c == kxCELL_CLASS) {
      anyCell = true;
    } else if (c == kxSTRUCT_CLASS) {
      anyStruct = true;
    } else if (kxIsObject(a)) {
      object = a;
    } else {
      // The empty [] joins with anything without a say in the class.
      bool plainEmpty = c == kxDOUBLE_CLASS && numelOf(a) == 0;
      if (plainEmpty) continue;
      anyOther = true;
      int r = rank(c);
      if (r < 0) shellError("JoinClasses", classNameOf(a), std::string("others"));
      if (r == 3 && best == 3 && c != bestClass) {
        // Two integer classes: the leftmost wins, as it would for a number.
        continue;
      }
      if (r > best) {
        best = r;
        bestClass = c;
      }
    }
  }
  if (anyCell) return kxCELL_CLASS;
  if (anyStruct) {
    if (anyOther) shellError("JoinClasses", std::string("struct"), std::string("non-struct"));
    return kxSTRUCT_CLASS;
  }
  if (object) {
    if (anyOther) shellError("JoinClasses", classNameOf(object), std::string("others"));
    return kxOBJECT_CLASS;
  }
  if (best < 0) return kxDOUBLE_CLASS;
  // Char over numbers, but an integer class still decides for numbers.
  if (best == 4) return kxCHAR_CLASS;
  return bestClass;
}

Value convertTo(const kxArray* a, kxClassID cls, bool complex) {
  if (!isNumericOrLogicalOrChar(a)) {
    shellError("ConversionFailed", classNameOf(a), std::string(kxClassNameOf(cls)));
  }
  Value r = makeNumeric(dimsOf(a), cls, complex && cls != kxCHAR_CLASS && cls != kxLOGICAL_CLASS);
  size_t n = numelOf(a);
  for (size_t i = 0; i < n; ++i) storeElement(r.get(), i, elementAsLongDouble(a, i));
  if (kxIsComplex(r.get()) && kxIsComplex(a)) {
    // The imaginary part goes through the same element writer.
    Value im = makeNumeric(dimsOf(a), cls);
    for (size_t i = 0; i < n; ++i) storeElement(im.get(), i, imagAsDouble(a, i));
    std::memcpy(kxGetImagData(r.get()), kxGetData(im.get()), n * kxGetElementSize(r.get()));
  }
  return r;
}

Value horizontalJoin(const std::vector<Value>& parts) {
  return join(parts, true);
}
Value verticalJoin(const std::vector<Value>& parts) {
  return join(parts, false);
}

Value cellFromRows(const std::vector<std::vector<Value>>& rows) {
  if (rows.empty()) return Value::adopt(kxCreateCellMatrix(0, 0));
  size_t n = rows[0].size();
  for (const auto& r : rows) {
    if (r.size() != n) {
      shellError("JoinColumns", std::string("1x") + std::to_string(n),
                 std::string("1x") + std::to_string(r.size()));
    }
  }
  size_t m = rows.size();
  Value c = Value::adopt(kxCreateCellMatrix(m, n));
  for (size_t i = 0; i < m; ++i) {
    for (size_t j = 0; j < n; ++j) kxSetCell(c.get(), j * m + i, rows[i][j].duplicate());
  }
  return c;
}

}  // namespace tw

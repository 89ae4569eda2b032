// Subscripted reference, assignment and deletion.
#include "indexing.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "concat.h"
#include "shell_errors.h"

namespace tw {

namespace {

// The positions one subscript selects, from 0.
struct IndexList {
  bool colon = false;
  std::vector<size_t> pos;
  size_t limit = 0;           // largest position + 1
  std::vector<size_t> shape;  // the subscript's own size, for linear results

  size_t count(size_t extent) const { return colon ? extent : pos.size(); }
  size_t at(size_t k) const { return colon ? k : pos[k]; }
};

IndexList resolve(const Subscript& s) {
  IndexList l;
  if (s.colon) {
    l.colon = true;
    return l;
  }
  const kxArray* v = s.value.get();
  size_t n = numelOf(v);
  if (kxIsLogical(v)) {
    const bool* d = kxGetLogicals(v);
    for (size_t i = 0; i < n; ++i) {
      if (d[i]) l.pos.push_back(i);
    }
    if (!l.pos.empty()) l.limit = l.pos.back() + 1;
    bool row = kxGetNumberOfDimensions(v) == 2 && kxGetM(v) == 1;
    l.shape = row ? std::vector<size_t>{1, l.pos.size()} : std::vector<size_t>{l.pos.size(), 1};
    return l;
  }
  if (!(kxIsNumeric(v) || kxIsChar(v)) || kxIsComplex(v)) {
    shellError("BadIndexType", classNameOf(v));
  }
  l.pos.resize(n);
  for (size_t i = 0; i < n; ++i) {
    double d = elementAsDouble(v, i);
    if (!(d >= 1) || d != std::floor(d) || !std::isfinite(d)) {
      char text[64];
      std::snprintf(text, sizeof text, "%.17g", d);
      shellError("BadIndex", std::string(text));
    }
    l.pos[i] = static_cast<size_t>(d) - 1;
    l.limit = std::max(l.limit, l.pos[i] + 1);
  }
  l.shape = dimsOf(v);
  return l;
}

std::vector<IndexList> resolveAll(const Subscripts& subs) {
  std::vector<IndexList> lists;
  lists.reserve(subs.size());
  for (const Subscript& s : subs) lists.push_back(resolve(s));
  return lists;
}

// The extent each of n subscripts ranges over; the last takes all the
// dimensions that remain.
std::vector<size_t> extentsFor(const std::vector<size_t>& dims, size_t n) {
  std::vector<size_t> ext(n, 1);
  for (size_t k = 0; k < dims.size(); ++k) {
    if (k < n) {
      ext[k] = dims[k];
    } else {
      ext[n - 1] *= dims[k];
    }
  }
  return ext;
}

void checkBounds(const std::vector<IndexList>& lists, const std::vector<size_t>& ext) {
  for (size_t k = 0; k < lists.size(); ++k) {
    if (!lists[k].colon && lists[k].limit > ext[k]) {
      if (lists.size() == 1) {
        shellError("IndexOutOfRange", static_cast<long>(lists[k].limit), static_cast<long>(ext[k]));
      }
      shellError("SubscriptOutOfRange", static_cast<long>(lists[k].limit), static_cast<long>(k + 1),
                 static_cast<long>(ext[k]));
    }
  }
}

// Linear positions (in an array whose leading extents are `ext`) of every
// combination of the subscripts, first subscript fastest.
std::vector<size_t> linearPositions(const std::vector<IndexList>& lists,
                                    const std::vector<size_t>& ext) {
  size_t n = lists.size();
  std::vector<size_t> counts(n);
  size_t total = 1;
  for (size_t k = 0; k < n; ++k) {
    counts[k] = lists[k].count(ext[k]);
    total *= counts[k];
  }
  std::vector<size_t> out;
  out.reserve(total);
  if (total == 0) return out;
  std::vector<size_t> sub(n, 0);
  for (size_t i = 0; i < total; ++i) {
    size_t p = 0, stride = 1;
    for (size_t k = 0; k < n; ++k) {
      p += lists[k].at(sub[k]) * stride;
      stride *= ext[k];
    }
    out.push_back(p);
    for (size_t k = 0; k < n && ++sub[k] == counts[k]; ++k) sub[k] = 0;
  }
  return out;
}

bool isVectorShape(const std::vector<size_t>& d) {
  return d.size() == 2 && (d[0] == 1 || d[1] == 1);
}

// The size of x(i) for a single subscript.
std::vector<size_t> linearResultDims(const kxArray* a, const IndexList& l) {
  size_t n = numelOf(a);
  if (l.colon) return {n, 1};
  std::vector<size_t> d = dimsOf(a);
  if (isVectorShape(d) && n != 1 && isVectorShape(l.shape)) {
    size_t k = l.pos.size();
    return d[0] == 1 ? std::vector<size_t>{1, k} : std::vector<size_t>{k, 1};
  }
  return l.shape;
}

Value gather(const kxArray* a, const std::vector<size_t>& positions,
             const std::vector<size_t>& outDims) {
  kxClassID cls = kxGetClassID(a);
  Value r = Value::adopt(createArray(cls, kxIsComplex(a), outDims, a));
  for (size_t i = 0; i < positions.size(); ++i) transferElement(r.get(), i, a, positions[i]);
  return r;
}

// Selected positions and the size of the selection.
std::vector<size_t> select(const kxArray* a, const Subscripts& subs, std::vector<size_t>& outDims) {
  std::vector<IndexList> lists = resolveAll(subs);
  std::vector<size_t> ext = extentsFor(dimsOf(a), subs.size());
  checkBounds(lists, ext);
  if (subs.size() == 1) {
    outDims = linearResultDims(a, lists[0]);
  } else {
    outDims.resize(subs.size());
    for (size_t k = 0; k < subs.size(); ++k) outDims[k] = lists[k].count(ext[k]);
  }
  return linearPositions(lists, ext);
}

}  // namespace

size_t endValue(const kxArray* base, size_t position, size_t count) {
  std::vector<size_t> ext = extentsFor(dimsOf(base), count);
  return ext[position];
}

namespace {

// The property that holds one element per element of a datetime or
// categorical value; null for other objects, which cannot be indexed.
const char* elementProperty(const kxArray* a) {
  std::string cls = kxGetObjectClassName(a);
  if (cls == "datetime") return "Data";
  if (cls == "categorical") return "Codes";
  return nullptr;
}

// x(subs) of a datetime or categorical value: the element property is
// indexed as an array of the value's own size, and the other properties
// come along unchanged.
Value indexObject(const Value& base, const Subscripts& subs) {
  const kxArray* a = base.get();
  const char* property = elementProperty(a);
  const kxArray* props = kxGetObjectProperties(a);
  const kxArray* elements = property && props ? kxGetField(props, 0, property) : nullptr;
  if (!elements || numelOf(elements) != numelOf(a)) shellError("IndexObject", classNameOf(a));
  kxArray* shaped = kxDuplicateArray(elements);
  std::vector<size_t> dims = dimsOf(a);
  kxSetDimensions(shaped, dims.data(), dims.size());
  Value picked = indexParen(Value::adopt(shaped), subs);
  kxArray* newProps = kxDuplicateArray(props);
  kxSetField(newProps, 0, property, picked.duplicate());
  std::vector<size_t> outDims = dimsOf(picked.get());
  return Value::adopt(
      kxCreateObjectArray(kxGetObjectClassName(a), outDims.size(), outDims.data(), newProps));
}

}  // namespace

Value indexParen(const Value& base, const Subscripts& subs) {
  const kxArray* a = base.get();
  if (kxIsObject(a)) return subs.empty() ? base : indexObject(base, subs);
  if (subs.empty()) return base;
  // x(k) on a double array, the common case in loops.
  if (subs.size() == 1 && !subs[0].colon && kxGetClassID(a) == kxDOUBLE_CLASS && !kxIsComplex(a) &&
      isRealDoubleScalar(subs[0].value.get())) {
    double d = *kxGetPr(subs[0].value.get());
    size_t n = numelOf(a);
    if (d >= 1 && d == std::floor(d) && d <= static_cast<double>(n)) {
      return makeScalar(kxGetPr(a)[static_cast<size_t>(d) - 1]);
    }
  }
  std::vector<size_t> outDims;
  std::vector<size_t> positions = select(a, subs, outDims);
  return gather(a, positions, outDims);
}

std::vector<Value> indexBrace(const Value& base, const Subscripts& subs) {
  const kxArray* a = base.get();
  if (!kxIsCell(a)) shellError("BraceOnNonCell", classNameOf(a));
  std::vector<Value> out;
  if (subs.empty()) {
    for (size_t i = 0; i < numelOf(a); ++i) out.push_back(cellElement(base, i));
    return out;
  }
  std::vector<size_t> outDims;
  for (size_t p : select(a, subs, outDims)) out.push_back(cellElement(base, p));
  return out;
}

std::vector<Value> fieldValues(const Value& base, const std::string& name) {
  const kxArray* a = base.get();
  if (!kxIsStruct(a)) shellError("FieldOfNonStruct", name, classNameOf(a));
  int f = kxGetFieldNumber(a, name.c_str());
  if (f < 0) shellError("NoSuchField", name);
  std::vector<Value> out;
  for (size_t i = 0; i < numelOf(a); ++i) out.push_back(fieldElement(base, i, f));
  return out;
}

namespace {

bool isPlainEmpty(const kxArray* a) {
  return kxGetClassID(a) == kxDOUBLE_CLASS && kxGetNumberOfDimensions(a) == 2 && kxGetM(a) == 0 &&
         kxGetN(a) == 0 && !kxIsSparse(a);
}

// The positions that x(subs) = [] keeps, as a selection.
Value deleteElements(const Value& base, const Subscripts& subs) {
  const kxArray* a = base.get();
  std::vector<size_t> dims = dimsOf(a);
  std::vector<IndexList> lists = resolveAll(subs);
  std::vector<size_t> ext = extentsFor(dims, subs.size());
  checkBounds(lists, ext);
  auto remaining = [](const IndexList& l, size_t extent) {
    std::vector<bool> gone(extent, l.colon);
    for (size_t p : l.pos) gone[p] = true;
    IndexList keep;
    for (size_t i = 0; i < extent; ++i) {
      if (!gone[i]) keep.pos.push_back(i);
    }
    return keep;
  };
  if (subs.size() == 1) {
    IndexList keep = remaining(lists[0], ext[0]);
    std::vector<size_t> outDims;
    if (lists[0].colon) {
      outDims = {0, 0};
    } else if (dims.size() == 2 && dims[1] == 1 && dims[0] != 1) {
      outDims = {keep.pos.size(), 1};
    } else {
      outDims = {1, keep.pos.size()};
    }
    return gather(a, keep.pos, outDims);
  }
  // Every subscript but one must take its whole extent.
  size_t partial = subs.size();
  for (size_t k = 0; k < subs.size(); ++k) {
    IndexList keep = remaining(lists[k], ext[k]);
    if (!keep.pos.empty()) {
      if (partial != subs.size()) shellError("DeleteShape");
      partial = k;
    }
  }
  std::vector<IndexList> kept(subs.size());
  std::vector<size_t> outDims(subs.size());
  for (size_t k = 0; k < subs.size(); ++k) {
    if (k == partial || partial == subs.size()) {
      kept[k] = partial == subs.size() && k != 0 ? IndexList{true, {}, 0, {}}
                                                 : remaining(lists[k], ext[k]);
    } else {
      kept[k].colon = true;
    }
    outDims[k] = kept[k].count(ext[k]);
  }
  return gather(a, linearPositions(kept, ext), outDims);
}

// The new size of an array assigned through `lists`.
std::vector<size_t> grownDims(const std::vector<size_t>& dims, const std::vector<IndexList>& lists,
                              const kxArray* rhs) {
  size_t n = lists.size();
  if (n == 1) {
    size_t total = 1;
    for (size_t d : dims) total *= d;
    const IndexList& l = lists[0];
    if (l.colon || l.limit <= total) return dims;
    if (dims.size() == 2 && dims[1] == 1 && dims[0] != 1 && dims[0] != 0) return {l.limit, 1};
    if (dims.size() == 2 && (dims[0] <= 1 || total == 0)) {
      if (dims[0] == 0 && dims[1] == 1) return {l.limit, 1};
      return {1, l.limit};
    }
    shellError("GrowMatrix");
  }
  std::vector<size_t> ext = extentsFor(dims, n);
  std::vector<size_t> rhsDims = dimsOf(rhs);
  bool rhsScalar = numelOf(rhs) == 1;
  std::vector<size_t> grown(n);
  for (size_t k = 0; k < n; ++k) {
    if (lists[k].colon) {
      // An empty dimension assigned with ':' takes its size from the value.
      grown[k] = ext[k] == 0 && !rhsScalar ? (k < rhsDims.size() ? rhsDims[k] : 1) : ext[k];
    } else {
      grown[k] = std::max(ext[k], lists[k].limit);
    }
  }
  if (n < dims.size()) {
    if (grown[n - 1] != ext[n - 1]) shellError("GrowMatrix");
    std::vector<size_t> out = dims;
    for (size_t k = 0; k + 1 < n; ++k) out[k] = grown[k];
    return out;
  }
  while (grown.size() > 2 && grown.back() == 1) grown.pop_back();
  return grown;
}

// Copies the elements of `a` (of size `dims`) to their places in `dst`
// (of size `newDims`, no smaller in any dimension).
void moveElements(kxArray* dst, const std::vector<size_t>& newDims, const kxArray* a,
                  const std::vector<size_t>& dims) {
  size_t total = numelOf(a);
  // When every dimension but the last stays, elements keep their linear
  // positions: growing a vector is one block copy.
  bool samePositions = dims.size() <= newDims.size();
  for (size_t k = 0; samePositions && k + 1 < dims.size(); ++k) {
    samePositions = dims[k] == newDims[k];
  }
  if (samePositions && kxGetClassID(dst) == kxGetClassID(a) && !kxIsCell(a) && !kxIsStruct(a) &&
      kxIsComplex(dst) == kxIsComplex(a)) {
    size_t bytes = total * kxGetElementSize(a);
    if (bytes) {
      std::memcpy(kxGetData(dst), kxGetData(a), bytes);
      if (kxIsComplex(a)) std::memcpy(kxGetImagData(dst), kxGetImagData(a), bytes);
    }
    return;
  }
  std::vector<size_t> sub(dims.size(), 0);
  for (size_t j = 0; j < total; ++j) {
    size_t p = 0, stride = 1;
    for (size_t k = 0; k < newDims.size(); ++k) {
      p += (k < sub.size() ? sub[k] : 0) * stride;
      stride *= newDims[k];
    }
    for (size_t k = 0; k < sub.size() && ++sub[k] == dims[k]; ++k) sub[k] = 0;
    transferElement(dst, p, a, j);
  }
}

void addMissingFields(kxArray* target, const kxArray* from) {
  for (int f = 0; f < kxGetNumberOfFields(from); ++f)
    kxAddField(target, kxGetFieldNameByNumber(from, f));
}

// x(subs) = rhs; with `brace`, C{subs} = value where rhs is that value
// already in a 1-by-1 cell.
Value assignElements(const Value& base, const Subscripts& subs, const Value& rhsValue, bool brace) {
  const kxArray* rhs = rhsValue.get();
  const kxArray* a = base ? base.get() : nullptr;
  if (a && kxIsObject(a)) shellError("IndexObject", classNameOf(a));
  if (kxIsObject(rhs)) {
    if (a && !(numelOf(a) == 0)) shellError("IndexObject", classNameOf(rhs));
    if (subs.size() != 1 || subs[0].colon || numelOf(subs[0].value.get()) != 1 ||
        elementAsDouble(subs[0].value.get(), 0) != 1) {
      shellError("IndexObject", classNameOf(rhs));
    }
    return rhsValue;
  }
  // The class of the result.
  bool fresh = !a || (numelOf(a) == 0 && kxGetClassID(a) == kxDOUBLE_CLASS);
  kxClassID cls;
  if (fresh) {
    cls = kxGetClassID(rhs);
  } else if (kxIsCell(a)) {
    if (!kxIsCell(rhs)) shellError("CellNeedsCell", classNameOf(rhs));
    cls = kxCELL_CLASS;
  } else if (kxIsStruct(a)) {
    if (!kxIsStruct(rhs)) shellError("StructNeedsStruct", classNameOf(rhs));
    cls = kxSTRUCT_CLASS;
  } else {
    if (!isNumericOrLogicalOrChar(rhs)) {
      shellError("ConversionFailed", classNameOf(rhs), classNameOf(a));
    }
    cls = joinedClass({a, rhs});
  }
  bool complex = !kxIsCell(rhs) && !kxIsStruct(rhs) &&
                 ((a && kxIsComplex(a)) || kxIsComplex(rhs)) && cls != kxCHAR_CLASS &&
                 cls != kxLOGICAL_CLASS;

  std::vector<size_t> dims = a ? dimsOf(a) : std::vector<size_t>{0, 0};
  std::vector<IndexList> lists = resolveAll(subs);
  if (subs.empty()) shellError("NoSubscripts");
  std::vector<size_t> newDims = grownDims(dims, lists, rhs);
  std::vector<size_t> ext = extentsFor(newDims, subs.size());
  std::vector<size_t> targets = linearPositions(lists, ext);
  size_t rn = numelOf(rhs);
  if (brace && targets.size() != 1)
    shellError("BraceAssignCount", static_cast<long>(targets.size()));
  if (rn != 1 && rn != targets.size()) {
    shellError("AssignCount", static_cast<long>(rn), static_cast<long>(targets.size()));
  }

  bool sameShape = a && newDims == dims;
  bool sameKind = a && kxGetClassID(a) == cls && kxIsComplex(a) == complex && !kxIsSparse(a);
  bool newFields = false;
  if (cls == kxSTRUCT_CLASS && a && !fresh) {
    for (int f = 0; f < kxGetNumberOfFields(rhs); ++f) {
      if (kxGetFieldNumber(a, kxGetFieldNameByNumber(rhs, f)) < 0) newFields = true;
    }
  }
  Value result;
  if (sameShape && sameKind && base.unique()) {
    result = base;
    if (newFields) addMissingFields(result.get(), rhs);
  } else {
    const kxArray* fieldsFrom = a && !fresh ? a : rhs;
    result = Value::adopt(createArray(cls, complex, newDims, fieldsFrom));
    if (cls == kxSTRUCT_CLASS) addMissingFields(result.get(), rhs);
    if (a && !fresh) {
      moveElements(result.get(), newDims, a, dims);
    }
  }
  kxArray* r = result.get();
  for (size_t i = 0; i < targets.size(); ++i) transferElement(r, targets[i], rhs, rn == 1 ? 0 : i);
  fillEmptySlots(r);
  return result;
}

}  // namespace

Value assignParen(const Value& base, const Subscripts& subs, const Value& rhs) {
  if (base && isPlainEmpty(rhs.get()) && !subs.empty()) return deleteElements(base, subs);
  if (!base && isPlainEmpty(rhs.get())) return makeEmpty();
  return assignElements(base, subs, rhs, false);
}

Value assignBrace(const Value& base, const Subscripts& subs, const Value& rhs) {
  Value cellBase = base;
  if (base && !kxIsCell(base.get())) {
    if (numelOf(base.get()) != 0) shellError("BraceOnNonCell", classNameOf(base.get()));
    cellBase = Value::adopt(
        kxCreateCellArray(kxGetNumberOfDimensions(base.get()), kxGetDimensions(base.get())));
  }
  if (!cellBase) cellBase = Value::adopt(kxCreateCellMatrix(0, 0));
  Value wrapped = Value::adopt(kxCreateCellMatrix(1, 1));
  kxSetCell(wrapped.get(), 0, rhs.duplicate());
  return assignElements(cellBase, subs, wrapped, true);
}

Value assignField(const Value& base, const std::string& name, const Value& rhs) {
  Value result;
  if (!base || (numelOf(base.get()) == 0 && kxGetClassID(base.get()) == kxDOUBLE_CLASS)) {
    const char* n = name.c_str();
    result = Value::adopt(kxCreateStructMatrix(1, 1, 1, &n));
  } else if (!kxIsStruct(base.get())) {
    shellError("FieldOfNonStruct", name, classNameOf(base.get()));
  } else if (numelOf(base.get()) != 1) {
    shellError("FieldOfArray", name, sizeText(dimsOf(base.get())));
  } else {
    result = base.unique() ? base : Value::adopt(base.duplicate());
  }
  kxSetField(result.get(), 0, name.c_str(), rhs.duplicate());
  return result;
}

}  // namespace tw

// Arrays: creation, queries and setters.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <initializer_list>
#include <numeric>
#include <unordered_set>

#include "array_impl.h"
#include "twhost/errors.h"
#include "twhost/kx_array.h"
#include "twhost/kx_data.h"
#include "twhost/kx_memory.h"

using twhost::allocData;
using twhost::freeData;

namespace twhost {

size_t elementCount(const std::vector<size_t>& dims) {
  size_t n = 1;
  for (size_t d : dims) {
    if (__builtin_mul_overflow(n, d, &n)) fl::except::bad_alloc();
  }
  return n;
}

}  // namespace twhost

namespace {

bool isNumericClass(kxClassID c) {
  return c >= kxDOUBLE_CLASS && c <= kxUINT64_CLASS;
}
bool holdsArrays(const kxArray* a) {
  return a->cls == kxCELL_CLASS || a->cls == kxSTRUCT_CLASS;
}

std::vector<size_t> normalDims(size_t ndim, const size_t* dims) {
  if (ndim == 0) return {0, 0};
  std::vector<size_t> d(dims, dims + ndim);
  while (d.size() > 2 && d.back() == 1) d.pop_back();
  while (d.size() < 2) d.push_back(d.empty() ? 0 : 1);
  return d;
}

size_t slotCount(const kxArray* a) {
  size_t n = twhost::elementCount(a->dims);
  return a->cls == kxSTRUCT_CLASS ? n * a->fields.size() : n;
}

// Records of destroyed arrays, kept for the next ones: a loop that makes and
// drops a small array per call (a line, a scalar) then costs one allocation
// per array, its data block, instead of three (the record and its dims
// too). The pool is plain data, alive until the very end of the process,
// and has no lock: the host is called from one thread at a time.
struct RecordPool {
  static constexpr size_t kKept = 64;
  kxArray* records[kKept];
  size_t count;
};
RecordPool g_pool;

kxArray* takeRecord() {
  return g_pool.count ? g_pool.records[--g_pool.count] : new kxArray;
}

// Takes back the record of an array whose contents are gone.
void keepRecord(kxArray* a) {
  if (g_pool.count == RecordPool::kKept) {
    delete a;
    return;
  }
  a->sparse = false;
  a->fields.clear();
  a->className.clear();
  g_pool.records[g_pool.count++] = a;
}

kxArray* newArray(kxClassID cls, std::vector<size_t> dims) {
  kxArray* a = takeRecord();
  a->cls = cls;
  a->dims = std::move(dims);
  twhost::recordArray(a);
  return a;
}

// The same for dims given in place ({m, n}): a kept record's dims are
// reused without an allocation.
kxArray* newArray(kxClassID cls, std::initializer_list<size_t> dims) {
  kxArray* a = takeRecord();
  a->cls = cls;
  a->dims.assign(dims);
  twhost::recordArray(a);
  return a;
}

// Makes an array with a data block for its class: zeroed numbers, null
// array pointers for cells and structs. Sizes are worked out and blocks taken
// before the array exists, so that an allocation failure leaves nothing
// behind even outside a call frame. `Dims` is a vector or an {m, n} list.
template <class Dims>
kxArray* makeArray(kxClassID cls, Dims dims, kxComplexity cx, bool zero) {
  size_t elementSize =
      cls == kxCELL_CLASS || cls == kxSTRUCT_CLASS ? sizeof(kxArray*) : kxClassElementSize(cls);
  bool arrays = cls == kxCELL_CLASS || cls == kxSTRUCT_CLASS;
  size_t count = 1;
  for (size_t d : dims) {
    if (__builtin_mul_overflow(count, d, &count)) fl::except::bad_alloc();
  }
  size_t bytes = 0;
  if (__builtin_mul_overflow(count, elementSize, &bytes)) fl::except::bad_alloc();
  void* pr = allocData(bytes, zero || arrays);
  void* pi = nullptr;
  if (cx == kxCOMPLEX && !arrays) {
    try {
      pi = allocData(bytes, zero);
    } catch (...) {
      freeData(pr);
      throw;
    }
  }
  kxArray* a = newArray(cls, std::move(dims));
  a->pr = pr;
  a->pi = pi;
  return a;
}
kxArray* makeArray(kxClassID cls, std::initializer_list<size_t> dims, kxComplexity cx, bool zero) {
  return makeArray<std::initializer_list<size_t>>(cls, dims, cx, zero);
}

// The element pointers of a cell or struct; a compact cell of char rows
// gets its elements made first.
kxArray** slots(const kxArray* a) {
  twhost::makeRowElements(a);
  return static_cast<kxArray**>(a->pr);
}

void destroyContents(kxArray* a) {
  if (a->rows) {
    twhost::dropCharRows(a);
  } else if (holdsArrays(a)) {
    size_t n = slotCount(a);
    for (size_t i = 0; i < n; ++i) kxDestroyArray(slots(a)[i]);
  }
  freeData(a->pr);
  freeData(a->pi);
  a->pr = a->pi = nullptr;
  if (a->props) kxDestroyArray(a->props);
  a->props = nullptr;
}

// An array handed to a setter is owned by its new parent from now on.
kxArray* adopt(kxArray* child) {
  if (child) twhost::forgetArray(child);
  return child;
}

}  // namespace

// ---- class facts -------------------------------------------------------------

size_t kxClassElementSize(kxClassID cls) {
  switch (cls) {
    case kxLOGICAL_CLASS:
    case kxINT8_CLASS:
    case kxUINT8_CLASS:
      return 1;
    case kxCHAR_CLASS:
    case kxINT16_CLASS:
    case kxUINT16_CLASS:
      return 2;
    case kxSINGLE_CLASS:
    case kxINT32_CLASS:
    case kxUINT32_CLASS:
      return 4;
    case kxDOUBLE_CLASS:
    case kxINT64_CLASS:
    case kxUINT64_CLASS:
      return 8;
    case kxCELL_CLASS:
    case kxSTRUCT_CLASS:
      return sizeof(kxArray*);
    default:
      return 0;
  }
}

const char* kxClassNameOf(kxClassID cls) {
  switch (cls) {
    case kxCELL_CLASS:
      return "cell";
    case kxSTRUCT_CLASS:
      return "struct";
    case kxLOGICAL_CLASS:
      return "logical";
    case kxCHAR_CLASS:
      return "char";
    case kxDOUBLE_CLASS:
      return "double";
    case kxSINGLE_CLASS:
      return "single";
    case kxINT8_CLASS:
      return "int8";
    case kxUINT8_CLASS:
      return "uint8";
    case kxINT16_CLASS:
      return "int16";
    case kxUINT16_CLASS:
      return "uint16";
    case kxINT32_CLASS:
      return "int32";
    case kxUINT32_CLASS:
      return "uint32";
    case kxINT64_CLASS:
      return "int64";
    case kxUINT64_CLASS:
      return "uint64";
    case kxFUNCTION_CLASS:
      return "function_handle";
    default:
      return "unknown";
  }
}

// ---- queries --------------------------------------------------------------------

kxClassID kxGetClassID(const kxArray* a) {
  return a->cls;
}
const char* kxGetClassName(const kxArray* a) {
  return a->cls == kxOBJECT_CLASS ? a->className.c_str() : kxClassNameOf(a->cls);
}
bool kxIsNumeric(const kxArray* a) {
  return isNumericClass(a->cls);
}
bool kxIsSparse(const kxArray* a) {
  return a->sparse;
}
bool kxIsComplex(const kxArray* a) {
  return a->pi != nullptr;
}
bool kxIsChar(const kxArray* a) {
  return a->cls == kxCHAR_CLASS;
}
bool kxIsLogical(const kxArray* a) {
  return a->cls == kxLOGICAL_CLASS;
}
bool kxIsDouble(const kxArray* a) {
  return a->cls == kxDOUBLE_CLASS;
}
bool kxIsCell(const kxArray* a) {
  return a->cls == kxCELL_CLASS;
}
bool kxIsStruct(const kxArray* a) {
  return a->cls == kxSTRUCT_CLASS;
}
bool kxIsObject(const kxArray* a) {
  return a->cls == kxOBJECT_CLASS;
}
bool kxIsEmpty(const kxArray* a) {
  return kxGetNumberOfElements(a) == 0;
}
bool kxIsScalar(const kxArray* a) {
  return kxGetNumberOfElements(a) == 1;
}
bool kxIsVector(const kxArray* a) {
  return a->dims.size() == 2 && (a->dims[0] == 1 || a->dims[1] == 1);
}
bool kxIsIntScalar(const kxArray* a) {
  if (!kxIsNumeric(a) || kxIsComplex(a) || !kxIsScalar(a)) return false;
  double v = kxGetScalar(a);
  return std::isfinite(v) && v == std::trunc(v);
}
bool kxIsLogicalScalar(const kxArray* a) {
  return kxIsLogical(a) && kxIsScalar(a);
}
bool kxIsLogicalScalarTrue(const kxArray* a) {
  return kxIsLogicalScalar(a) && *static_cast<const kxLogical*>(a->pr);
}

size_t kxGetNumberOfElements(const kxArray* a) {
  return twhost::elementCount(a->dims);
}
size_t kxGetM(const kxArray* a) {
  return a->dims[0];
}
size_t kxGetN(const kxArray* a) {
  size_t n = 1;
  for (size_t i = 1; i < a->dims.size(); ++i) n *= a->dims[i];
  return n;
}
size_t kxGetNumberOfDimensions(const kxArray* a) {
  return a->dims.size();
}
const size_t* kxGetDimensions(const kxArray* a) {
  return a->dims.data();
}
size_t kxGetElementSize(const kxArray* a) {
  return kxClassElementSize(a->cls);
}

void* kxGetData(const kxArray* a) {
  twhost::makeRowElements(a);
  return a->pr;
}
void* kxGetImagData(const kxArray* a) {
  return a->pi;
}
double* kxGetPr(const kxArray* a) {
  return static_cast<double*>(a->pr);
}
double* kxGetPi(const kxArray* a) {
  return static_cast<double*>(a->pi);
}
kxLogical* kxGetLogicals(const kxArray* a) {
  return static_cast<kxLogical*>(a->pr);
}
kxChar* kxGetChars(const kxArray* a) {
  return static_cast<kxChar*>(a->pr);
}

double kxGetScalar(const kxArray* a) {
  if (kxIsEmpty(a) || kxClassElementSize(a->cls) == 0 || holdsArrays(a)) return std::nan("");
  return KxData(a).asDouble(0);
}

// ---- creation ----------------------------------------------------------------------

kxArray* kxCreateDoubleScalar(double v) {
  kxArray* a = makeArray(kxDOUBLE_CLASS, {1, 1}, kxREAL, false);
  *kxGetPr(a) = v;
  return a;
}

kxArray* kxCreateLogicalScalar(bool v) {
  kxArray* a = makeArray(kxLOGICAL_CLASS, {1, 1}, kxREAL, false);
  *kxGetLogicals(a) = v;
  return a;
}

kxArray* kxCreateDoubleMatrix(size_t m, size_t n, kxComplexity c) {
  return makeArray(kxDOUBLE_CLASS, {m, n}, c, true);
}
kxArray* kxCreateLogicalMatrix(size_t m, size_t n) {
  return makeArray(kxLOGICAL_CLASS, {m, n}, kxREAL, true);
}
kxArray* kxCreateNumericMatrix(size_t m, size_t n, kxClassID cls, kxComplexity c) {
  return makeArray(cls, {m, n}, c, true);
}
kxArray* kxCreateUninitNumericMatrix(size_t m, size_t n, kxClassID cls, kxComplexity c) {
  return makeArray(cls, {m, n}, c, false);
}
kxArray* kxCreateNumericArray(size_t ndim, const size_t* dims, kxClassID cls, kxComplexity c) {
  return makeArray(cls, normalDims(ndim, dims), c, true);
}
kxArray* kxCreateCharMatrix(size_t m, size_t n) {
  return makeArray(kxCHAR_CLASS, {m, n}, kxREAL, true);
}
kxArray* kxCreateCellMatrix(size_t m, size_t n) {
  return makeArray(kxCELL_CLASS, {m, n}, kxREAL, true);
}
kxArray* kxCreateCellArray(size_t ndim, const size_t* dims) {
  return makeArray(kxCELL_CLASS, normalDims(ndim, dims), kxREAL, true);
}

kxArray* kxCreateStructArray(size_t ndim, const size_t* dims, int nfields, const char** names) {
  std::vector<size_t> d = normalDims(ndim, dims);
  size_t slotsNeeded = 0;
  if (__builtin_mul_overflow(twhost::elementCount(d), static_cast<size_t>(std::max(nfields, 0)),
                             &slotsNeeded) ||
      slotsNeeded > SIZE_MAX / sizeof(kxArray*)) {
    fl::except::bad_alloc();
  }
  void* block = allocData(slotsNeeded * sizeof(kxArray*), true);
  kxArray* a = newArray(kxSTRUCT_CLASS, std::move(d));
  a->pr = block;
  for (int i = 0; i < nfields; ++i) a->fields.emplace_back(names[i]);
  return a;
}
kxArray* kxCreateStructMatrix(size_t m, size_t n, int nfields, const char** names) {
  size_t dims[2] = {m, n};
  return kxCreateStructArray(2, dims, nfields, names);
}

kxArray* kxCreateStringFromNChars_UTF16(const char16_t* chars, size_t n) {
  kxArray* a = makeArray(kxCHAR_CLASS, {1, n}, kxREAL, false);
  if (n) std::memcpy(a->pr, chars, n * sizeof(char16_t));
  return a;
}

kxArray* kxCreateString(const char* utf8);  // text.cc: needs the UTF-8 decoder

kxArray* kxCreateCharMatrixFromRows(const std::vector<ustring>& rows) {
  size_t width = 0;
  for (const auto& r : rows) width = std::max(width, r.size());
  kxArray* a = makeArray(kxCHAR_CLASS, {rows.size(), width}, kxREAL, false);
  char16_t* d = kxGetChars(a);
  size_t m = rows.size();
  for (size_t i = 0; i < m; ++i) {
    for (size_t j = 0; j < width; ++j) d[j * m + i] = j < rows[i].size() ? rows[i][j] : u' ';
  }
  return a;
}

kxArray* kxCreateObjectArray(const char* className, size_t ndim, const size_t* dims,
                             kxArray* props) {
  kxArray* a = newArray(kxOBJECT_CLASS, normalDims(ndim, dims));
  a->className = className;
  a->props = adopt(props);
  a->pr = allocData(0, true);
  return a;
}

kxArray* kxCreateSparseDouble(size_t m, size_t n) {
  kxArray* a = kxCreateDoubleMatrix(m, n, kxREAL);
  a->sparse = true;
  return a;
}

kxArray* kxDuplicateArray(const kxArray* src) {
  kxArray* a = newArray(src->cls, src->dims);
  a->sparse = src->sparse;
  a->fields = src->fields;
  a->className = src->className;
  if (src->props) a->props = adopt(kxDuplicateArray(src->props));
  if (src->rows) {
    a->pr = allocData(0, true);
    twhost::copyCharRows(src, a);
    return a;
  }
  if (holdsArrays(src)) {
    size_t n = slotCount(src);
    a->pr = allocData(n * sizeof(kxArray*), true);
    for (size_t i = 0; i < n; ++i) {
      if (slots(src)[i]) slots(a)[i] = adopt(kxDuplicateArray(slots(src)[i]));
    }
    return a;
  }
  size_t bytes = kxGetNumberOfElements(src) * kxClassElementSize(src->cls);
  a->pr = allocData(bytes, false);
  if (bytes) std::memcpy(a->pr, src->pr, bytes);
  if (src->pi) {
    a->pi = allocData(bytes, false);
    if (bytes) std::memcpy(a->pi, src->pi, bytes);
  }
  return a;
}

// Copies are eager: arrays here have a single owner, and the library never
// writes into what it borrows.
kxArray* kxCreateSharedDataCopy(const kxArray* a) {
  return kxDuplicateArray(a);
}

void kxDestroyArray(kxArray* a) {
  if (!a) return;
  twhost::forgetArray(a);
  destroyContents(a);
  keepRecord(a);
}

kxArray* kxMustBe(const kxArray* a, kxClassID cls) {
  if (a->cls == cls) return const_cast<kxArray*>(a);
  if (kxClassElementSize(a->cls) == 0 || holdsArrays(a) || kxClassElementSize(cls) == 0 ||
      cls == kxCELL_CLASS || cls == kxSTRUCT_CLASS) {
    kxThrowId("KORVAN:shell", "ConversionFailed", std::string(kxGetClassName(a)),
              std::string(kxClassNameOf(cls)));
  }
  kxArray* r = makeArray(cls, a->dims, a->pi ? kxCOMPLEX : kxREAL, false);
  size_t n = kxGetNumberOfElements(a);
  AssignToVoidBuffer(cls, r->pr, a->cls, a->pr, n);
  if (a->pi) AssignToVoidBuffer(cls, r->pi, a->cls, a->pi, n);
  return r;
}

// ---- setters ----------------------------------------------------------------------

void kxSetData(kxArray* a, void* block) {
  if (a->pr == block) return;
  twhost::forgetBlock(block);
  // A cell or struct gives up the arrays it held along with their block.
  if (a->rows) {
    twhost::dropCharRows(a);
  } else if (holdsArrays(a)) {
    size_t n = slotCount(a);
    for (size_t i = 0; i < n; ++i) kxDestroyArray(slots(a)[i]);
  }
  freeData(a->pr);
  a->pr = block;
}

void* kxDetachData(kxArray* a) {
  if (!isNumericClass(a->cls) && a->cls != kxLOGICAL_CLASS && a->cls != kxCHAR_CLASS) {
    return nullptr;
  }
  if (a->pi || a->sparse) return nullptr;
  // The empty block is taken first, so that a failure leaves the array whole.
  void* empty = allocData(0, true);
  void* block = a->pr;
  a->pr = empty;
  a->dims = {0, 0};
  return block;
}

void kxSetImagData(kxArray* a, void* block) {
  if (block) twhost::forgetBlock(block);
  if (a->pi != block) freeData(a->pi);
  a->pi = block;
}

void kxSetM(kxArray* a, size_t m) {
  a->dims[0] = m;
}

void kxSetN(kxArray* a, size_t n) {
  a->dims.resize(2);
  a->dims[1] = n;
}

void kxSetDimensions(kxArray* a, const size_t* dims, size_t ndim) {
  a->dims = normalDims(ndim, dims);
}

void kxSetCell(kxArray* cell, size_t index, kxArray* value) {
  kxArray*& slot = slots(cell)[index];
  if (slot != value) kxDestroyArray(slot);
  slot = adopt(value);
}

kxArray* kxGetCell(const kxArray* cell, size_t index) {
  return slots(cell)[index];
}

void kxSetCells(kxArray* cell, kxArray** values) {
  twhost::makeRowElements(cell);
  size_t n = kxGetNumberOfElements(cell);
  twhost::forgetBlock(values);
  if (cell->pr == values) {
    for (size_t i = 0; i < n; ++i) adopt(values[i]);
    return;
  }
  // An element that stays (the same array given again) must not be freed.
  std::unordered_set<kxArray*> kept(values, values + n);
  for (size_t i = 0; i < n; ++i) {
    if (!kept.count(slots(cell)[i])) kxDestroyArray(slots(cell)[i]);
  }
  for (size_t i = 0; i < n; ++i) adopt(values[i]);
  freeData(cell->pr);
  cell->pr = values;
}

int kxGetNumberOfFields(const kxArray* s) {
  return static_cast<int>(s->fields.size());
}
const char* kxGetFieldNameByNumber(const kxArray* s, int field) {
  return s->fields[field].c_str();
}
int kxGetFieldNumber(const kxArray* s, const char* name) {
  auto it = std::find(s->fields.begin(), s->fields.end(), name);
  return it == s->fields.end() ? -1 : static_cast<int>(it - s->fields.begin());
}

int kxAddField(kxArray* s, const char* name) {
  int existing = kxGetFieldNumber(s, name);
  if (existing >= 0) return existing;
  size_t n = kxGetNumberOfElements(s);
  size_t oldF = s->fields.size();
  auto** grown = static_cast<kxArray**>(allocData(n * (oldF + 1) * sizeof(kxArray*), true));
  for (size_t e = 0; e < n; ++e) {
    for (size_t f = 0; f < oldF; ++f) grown[e * (oldF + 1) + f] = slots(s)[e * oldF + f];
  }
  freeData(s->pr);
  s->pr = grown;
  s->fields.emplace_back(name);
  return static_cast<int>(oldF);
}

kxArray* kxGetFieldByNumber(const kxArray* s, size_t index, int field) {
  return slots(s)[index * s->fields.size() + field];
}
kxArray* kxGetField(const kxArray* s, size_t index, const char* name) {
  int f = kxGetFieldNumber(s, name);
  return f < 0 ? nullptr : kxGetFieldByNumber(s, index, f);
}
void kxSetFieldByNumber(kxArray* s, size_t index, int field, kxArray* value) {
  kxArray*& slot = slots(s)[index * s->fields.size() + field];
  if (slot != value) kxDestroyArray(slot);
  slot = adopt(value);
}
void kxSetField(kxArray* s, size_t index, const char* name, kxArray* value) {
  int f = kxGetFieldNumber(s, name);
  if (f < 0) f = kxAddField(s, name);
  kxSetFieldByNumber(s, index, f, value);
}

const char* kxGetObjectClassName(const kxArray* a) {
  return a->className.c_str();
}
kxArray* kxGetObjectProperties(const kxArray* a) {
  return a->props;
}

void kxSetArrayScope(kxArray*, kxVariableScope) {}

// ---- text out ----------------------------------------------------------------------

ustring kxArrayToUString(const kxArray* a) {
  size_t n = kxGetNumberOfElements(a);
  if (a->cls == kxCHAR_CLASS) return ustring(kxGetChars(a), n);
  ustring out;
  if (kxClassElementSize(a->cls) == 0 || holdsArrays(a)) return out;
  out.resize(n);
  AssignToVoidBuffer(kxCHAR_CLASS, out.data(), a->cls, a->pr, n);
  return out;
}

char16_t* kxArrayToString_UTF16(const kxArray* a) {
  ustring s = kxArrayToUString(a);
  auto* p = static_cast<char16_t*>(kxMallocExCheck((s.size() + 1) * sizeof(char16_t)));
  std::copy(s.begin(), s.end(), p);
  p[s.size()] = 0;
  return p;
}

std::string kxArrayToStdString(const kxArray* a) {
  ustring s = kxArrayToUString(a);
  std::string out(s.size(), '?');
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] < 0x100) out[i] = static_cast<char>(s[i]);
  }
  return out;
}

char* kxCreateCStrFromArray(const kxArray* a, void* (*allocator)(size_t)) {
  std::string s = kxArrayToUTF8StdString(a);
  auto* p = static_cast<char*>(allocator(s.size() + 1));
  if (!p) fl::except::bad_alloc();
  std::memcpy(p, s.c_str(), s.size() + 1);
  return p;
}

char* kxArray2String(const kxArray* a) {
  return kxCreateCStrFromArray(a, kxMallocExCheck);
}

namespace matrix {

ustring get_ustring(const kxArray* a) {
  return kxArrayToUString(a);
}

size_t get_kxchar_ptr_and_len(const kxArray* a, const char16_t*& ptr) {
  ptr = a->cls == kxCHAR_CLASS ? kxGetChars(a) : nullptr;
  return ptr ? kxGetNumberOfElements(a) : 0;
}

kxOwned create(const char16_t* chars, size_t n) {
  return kxOwned(kxCreateStringFromNChars_UTF16(chars, n));
}

}  // namespace matrix

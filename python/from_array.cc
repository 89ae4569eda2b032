#include "from_array.h"

#include <pybind11/numpy.h>

#include <algorithm>
#include <bit>
#include <complex>
#include <cstring>
#include <string>

#include "python_errors.h"
#include "twhost/kx_data.h"
#include "twhost/kx_memory.h"

namespace py = pybind11;
using namespace pybind11::literals;

namespace twpython {

namespace {

const char* dtypeOf(kxClassID cls) {
  switch (cls) {
    case kxLOGICAL_CLASS:
      return "?";
    case kxDOUBLE_CLASS:
      return "f8";
    case kxSINGLE_CLASS:
      return "f4";
    case kxINT8_CLASS:
      return "i1";
    case kxUINT8_CLASS:
      return "u1";
    case kxINT16_CLASS:
      return "i2";
    case kxUINT16_CLASS:
      return "u2";
    case kxINT32_CLASS:
      return "i4";
    case kxUINT32_CLASS:
      return "u4";
    case kxINT64_CLASS:
      return "i8";
    case kxUINT64_CLASS:
      return "u8";
    default:
      return nullptr;
  }
}

bool isOneByOne(const kxArray* a) {
  return kxGetNumberOfDimensions(a) == 2 && kxGetM(a) == 1 && kxGetN(a) == 1;
}

// A vector in the sense of lists: two dimensions, one of them at most 1.
bool isListShaped(const kxArray* a) {
  return kxGetNumberOfDimensions(a) == 2 && (kxGetM(a) <= 1 || kxGetN(a) <= 1);
}

py::object numpyScalar(const kxArray* a) {
  const void* data = kxGetData(a);
  kxClassID cls = kxGetClassID(a);
  switch (cls) {
    case kxDOUBLE_CLASS:
      return py::float_(*static_cast<const double*>(data));
    case kxLOGICAL_CLASS:
      return py::bool_(*static_cast<const kxLogical*>(data));
    case kxINT64_CLASS:
      return py::dtype("i8").attr("type")(py::int_(*static_cast<const int64_t*>(data)));
    case kxUINT64_CLASS:
      return py::dtype("u8").attr("type")(py::int_(*static_cast<const uint64_t*>(data)));
    default:
      // Every other class is held exactly by a double.
      return py::dtype(dtypeOf(cls)).attr("type")(py::float_(KxData(a).asDouble(0)));
  }
}

// Takes the block over: numpy frees it through the capsule when the last
// view of it goes.
py::array adopt(kxArray* a, const char* dtype) {
  std::vector<py::ssize_t> shape = shapeOf(a);
  py::dtype dt(dtype);
  std::vector<py::ssize_t> strides = columnMajorStrides(shape, dt.itemsize());
  void* block = kxDetachData(a);
  py::capsule owner;
  try {
    owner = py::capsule(block, kxFree);
  } catch (...) {
    kxFree(block);
    throw;
  }
  return py::array(dt, shape, strides, block, owner);
}

template <class T>
py::array joinComplex(const kxArray* a) {
  std::vector<py::ssize_t> shape = shapeOf(a);
  py::array_t<std::complex<T>, py::array::f_style> out(shape);
  auto* dst = out.mutable_data();
  auto* re = static_cast<const T*>(kxGetData(a));
  auto* im = static_cast<const T*>(kxGetImagData(a));
  size_t n = kxGetNumberOfElements(a);
  for (size_t i = 0; i < n; ++i) dst[i] = {re[i], im[i]};
  return out;
}

py::object fromNumeric(kxArray* a) {
  kxClassID cls = kxGetClassID(a);
  bool complex = kxIsComplex(a);
  if (isOneByOne(a)) {
    if (!complex) return numpyScalar(a);
    if (cls == kxDOUBLE_CLASS) return py::cast(std::complex<double>(*kxGetPr(a), *kxGetPi(a)));
  }
  if (complex && cls == kxSINGLE_CLASS) return joinComplex<float>(a);
  if (complex) return joinComplex<double>(a);
  if (kxIsSparse(a)) {
    // The host keeps sparse arrays full; their block is not theirs to give.
    std::vector<py::ssize_t> shape = shapeOf(a);
    py::array out(py::dtype("f8"), shape, columnMajorStrides(shape, sizeof(double)));
    std::memcpy(out.mutable_data(), kxGetData(a), kxGetNumberOfElements(a) * sizeof(double));
    return out;
  }
  return adopt(a, dtypeOf(cls));
}

// Units below this are ASCII; from the first surrogate on, a unit may be
// half of a pair.
constexpr char16_t kFirstNonAscii = 0x80;
constexpr char16_t kFirstSurrogate = 0xD800;
constexpr char16_t kPastSurrogates = 0xE000;

// A new reference to the str of `n` UTF-16 units, or null with Python's
// error set. Made directly in the narrowest form Python keeps: text
// without surrogates needs no decoder (one pass to find the widest unit,
// one to copy); only text with surrogates is decoded, so that a pair
// becomes one character and a lone one stays as it is.
PyObject* strOfUnits(const char16_t* units, size_t n) {
  char16_t seen = 0;
  for (size_t i = 0; i < n; ++i) seen |= units[i];
  auto length = static_cast<Py_ssize_t>(n);
  if (seen < kFirstNonAscii) {
    PyObject* s = PyUnicode_New(length, kFirstNonAscii - 1);
    if (!s) return nullptr;
    Py_UCS1* out = PyUnicode_1BYTE_DATA(s);
    for (size_t i = 0; i < n; ++i) out[i] = static_cast<Py_UCS1>(units[i]);
    return s;
  }
  bool surrogates = seen >= kFirstSurrogate && std::any_of(units, units + n, [](char16_t u) {
                      return u >= kFirstSurrogate && u < kPastSurrogates;
                    });
  if (!surrogates) return PyUnicode_FromKindAndData(PyUnicode_2BYTE_KIND, units, length);
  // A byte order given, so that a leading U+FEFF stays a character.
  int order = std::endian::native == std::endian::little ? -1 : 1;
  return PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(units),
                               static_cast<Py_ssize_t>(n * sizeof(char16_t)), "surrogatepass",
                               &order);
}

py::str strFrom(const char16_t* units, size_t n) {
  PyObject* s = strOfUnits(units, n);
  if (!s) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(s);
}

py::object fromChar(const kxArray* a) {
  size_t n = kxGetNumberOfElements(a);
  const kxChar* chars = kxGetChars(a);
  if (n == 0 || (isListShaped(a) && kxGetM(a) == 1)) return strFrom(chars, n);
  std::vector<py::ssize_t> shape = shapeOf(a);
  py::dtype dt("U1");
  py::array out(dt, shape, columnMajorStrides(shape, dt.itemsize()));
  auto* codes = static_cast<uint32_t*>(out.mutable_data());
  for (size_t i = 0; i < n; ++i) codes[i] = chars[i];
  return out;
}

// A cell of char rows still in the host's compact form, as a list of str
// made straight from its blocks: no array per element.
py::list strList(const char16_t* units, const uint64_t* ends, size_t n) {
  auto items = py::reinterpret_steal<py::list>(PyList_New(static_cast<Py_ssize_t>(n)));
  if (!items) throw py::error_already_set();
  uint64_t start = 0;
  for (size_t i = 0; i < n; ++i) {
    PyObject* s = strOfUnits(units + start, static_cast<size_t>(ends[i] - start));
    if (!s) throw py::error_already_set();
    PyList_SET_ITEM(items.ptr(), static_cast<Py_ssize_t>(i), s);
    start = ends[i];
  }
  return items;
}

// Values in column-major order, as a list or as an object array of the
// array's shape.
template <class Element>
py::object collection(const kxArray* a, Element element) {
  size_t n = kxGetNumberOfElements(a);
  py::list items(n);
  for (size_t i = 0; i < n; ++i) items[i] = element(i);
  if (isListShaped(a)) return items;
  py::module_ numpy = py::module_::import("numpy");
  py::array flat = numpy.attr("empty")(n, "dtype"_a = "O");
  for (size_t i = 0; i < n; ++i) flat[py::int_(i)] = items[i];
  std::vector<py::ssize_t> shape = shapeOf(a);
  py::tuple dims(shape.size());
  for (size_t i = 0; i < shape.size(); ++i) dims[i] = py::int_(shape[i]);
  return flat.attr("reshape")(dims, "order"_a = "F");
}

// An empty slot of a cell, or a field never set, is the empty value.
py::object slotValue(kxArray* a) {
  return a ? fromArray(a) : py::array(py::dtype("f8"), std::vector<py::ssize_t>{0, 0});
}

py::object fromStruct(kxArray* s) {
  int fields = kxGetNumberOfFields(s);
  auto element = [&](size_t i) {
    py::dict d;
    for (int f = 0; f < fields; ++f) {
      d[py::str(kxGetFieldNameByNumber(s, f))] = slotValue(kxGetFieldByNumber(s, i, f));
    }
    return d;
  };
  if (isOneByOne(s)) return element(0);
  return collection(s, element);
}

py::object fromObject(kxArray* a) {
  std::string name = kxGetObjectClassName(a);
  if (name == "datetime") return fromDatetime(a);
  if (name == "categorical") return fromCategorical(a);
  py::dict d;
  d["class"] = name;
  d["properties"] = fromArray(kxGetObjectProperties(a));
  return d;
}

}  // namespace

std::vector<py::ssize_t> shapeOf(const kxArray* a) {
  const size_t* dims = kxGetDimensions(a);
  return std::vector<py::ssize_t>(dims, dims + kxGetNumberOfDimensions(a));
}

std::vector<py::ssize_t> columnMajorStrides(const std::vector<py::ssize_t>& shape,
                                            py::ssize_t itemSize) {
  std::vector<py::ssize_t> strides(shape.size());
  py::ssize_t step = itemSize;
  for (size_t i = 0; i < shape.size(); ++i) {
    strides[i] = step;
    step *= shape[i] > 0 ? shape[i] : 1;
  }
  return strides;
}

py::object fromArray(kxArray* a) {
  if (!a) return py::none();
  switch (kxGetClassID(a)) {
    case kxCHAR_CLASS:
      return fromChar(a);
    case kxCELL_CLASS: {
      const char16_t* units = nullptr;
      const uint64_t* ends = nullptr;
      if (isListShaped(a) && kxGetCharRows(a, &units, &ends)) {
        return strList(units, ends, kxGetNumberOfElements(a));
      }
      return collection(a, [&](size_t i) { return slotValue(kxGetCell(a, i)); });
    }
    case kxSTRUCT_CLASS:
      return fromStruct(a);
    case kxOBJECT_CLASS:
      return fromObject(a);
    default:
      if (dtypeOf(kxGetClassID(a))) return fromNumeric(a);
      raise("UnsupportedClass", std::string(kxGetClassName(a)));
  }
}

}  // namespace twpython

#include "to_array.h"

#include <pybind11/numpy.h>

#include <complex>
#include <cstdio>
#include <cstring>
#include <string>

#include "python_errors.h"
#include "twhost/kx_data.h"

namespace py = pybind11;

namespace twpython {

namespace {

// The first code point that needs two UTF-16 units; a char element holds one.
constexpr uint32_t kFirstSupplementary = 0x10000;
// Lists, dicts and object arrays inside one another, at most.
constexpr int kMaxNesting = 1000;

struct ArrayClass {
  kxClassID cls;
  bool complex;
  const char* dtype;  // the native numpy dtype the data is brought to
};

constexpr ArrayClass kCellClass{kxCELL_CLASS, false, "O"};
constexpr ArrayClass kCharClass{kxCHAR_CLASS, false, "U1"};

// The class a numpy dtype maps to. float16 widens to single, which holds it
// exactly; other dtypes (long double, dates, byte strings...) are refused
// rather than rounded or guessed at.
ArrayClass classOf(const py::dtype& dt) {
  char kind = dt.kind();
  auto size = dt.itemsize();
  switch (kind) {
    case 'b':
      return {kxLOGICAL_CLASS, false, "?"};
    case 'i':
    case 'u': {
      bool sign = kind == 'i';
      switch (size) {
        case 1:
          return sign ? ArrayClass{kxINT8_CLASS, false, "i1"}
                      : ArrayClass{kxUINT8_CLASS, false, "u1"};
        case 2:
          return sign ? ArrayClass{kxINT16_CLASS, false, "i2"}
                      : ArrayClass{kxUINT16_CLASS, false, "u2"};
        case 4:
          return sign ? ArrayClass{kxINT32_CLASS, false, "i4"}
                      : ArrayClass{kxUINT32_CLASS, false, "u4"};
        case 8:
          return sign ? ArrayClass{kxINT64_CLASS, false, "i8"}
                      : ArrayClass{kxUINT64_CLASS, false, "u8"};
      }
      break;
    }
    case 'f':
      if (size == 2 || size == 4) return {kxSINGLE_CLASS, false, "f4"};
      if (size == 8) return {kxDOUBLE_CLASS, false, "f8"};
      break;
    case 'c':
      if (size == 8) return {kxSINGLE_CLASS, true, "c8"};
      if (size == 16) return {kxDOUBLE_CLASS, true, "c16"};
      break;
    case 'U':
      if (size == 4) return kCharClass;
      break;
    case 'O':
      return kCellClass;
  }
  raise("UnsupportedDtype", py::str(static_cast<const py::handle&>(dt)).cast<std::string>());
}

// numpy's shape as the host's dimensions: 0-d is 1-by-1, 1-d a row.
std::vector<size_t> dimsOf(const py::array& a) {
  std::vector<size_t> dims;
  if (a.ndim() == 0) return {1, 1};
  if (a.ndim() == 1) dims.push_back(1);
  for (py::ssize_t i = 0; i < a.ndim(); ++i) dims.push_back(static_cast<size_t>(a.shape(i)));
  return dims;
}

// The array with the given dtype, aligned, native and column-major: `a`
// itself when it already is, else numpy's conversion.
py::array normalised(const py::array& a, const ArrayClass& c) {
  // Left to the process's end on purpose: Python is gone by the time
  // static destructors run.
  static const auto* require = new py::object(py::module_::import("numpy").attr("require"));
  py::list flags;
  flags.append("F");
  flags.append("A");
  return (*require)(a, py::dtype(c.dtype), flags).cast<py::array>();
}

kxOwned makeArray(const std::vector<size_t>& dims, const ArrayClass& c) {
  if (c.cls == kxCELL_CLASS) return kxOwned(kxCreateCellArray(dims.size(), dims.data()));
  kxOwned out(
      kxCreateNumericArray(dims.size(), dims.data(), c.cls, c.complex ? kxCOMPLEX : kxREAL));
  return out;
}

template <class T>
void splitComplex(const void* from, kxArray* to, size_t n) {
  auto* src = static_cast<const std::complex<T>*>(from);
  auto* re = static_cast<T*>(kxGetData(to));
  auto* im = static_cast<T*>(kxGetImagData(to));
  for (size_t i = 0; i < n; ++i) {
    re[i] = src[i].real();
    im[i] = src[i].imag();
  }
}

kxOwned charsFrom(const uint32_t* codes, const std::vector<size_t>& dims, size_t n) {
  kxOwned out(kxCreateNumericArray(dims.size(), dims.data(), kxCHAR_CLASS, kxREAL));
  kxChar* chars = kxGetChars(out.get());
  for (size_t i = 0; i < n; ++i) {
    if (codes[i] >= kFirstSupplementary) {
      char hex[16];
      std::snprintf(hex, sizeof hex, "%04X", codes[i]);
      raise("CharNeedsTwoUnits", std::string(hex));
    }
    chars[i] = static_cast<kxChar>(codes[i]);
  }
  return out;
}

// A copy of a numpy array of any supported dtype.
kxOwned copyArray(const py::array& given) {
  ArrayClass c = classOf(given.dtype());
  py::array a = normalised(given, c);
  std::vector<size_t> dims = dimsOf(a);
  size_t n = static_cast<size_t>(a.size());
  if (c.cls == kxCHAR_CLASS) return charsFrom(static_cast<const uint32_t*>(a.data()), dims, n);
  kxOwned out = makeArray(dims, c);
  if (c.cls == kxCELL_CLASS) {
    auto* items = static_cast<PyObject* const*>(a.data());
    for (size_t i = 0; i < n; ++i) kxSetCell(out.get(), i, toArray(items[i]).release());
  } else if (c.complex && c.cls == kxSINGLE_CLASS) {
    splitComplex<float>(a.data(), out.get(), n);
  } else if (c.complex) {
    splitComplex<double>(a.data(), out.get(), n);
  } else if (c.cls == kxLOGICAL_CLASS) {
    // numpy's bool bytes may hold any value (a view of other bytes); a
    // logical is 0 or 1.
    auto* bytes = static_cast<const uint8_t*>(a.data());
    kxLogical* logicals = kxGetLogicals(out.get());
    for (size_t i = 0; i < n; ++i) logicals[i] = bytes[i] != 0;
  } else if (n) {
    std::memcpy(kxGetData(out.get()), a.data(), n * kxClassElementSize(c.cls));
  }
  return out;
}

kxOwned fromInt(py::handle value) {
  double d = PyLong_AsDouble(value.ptr());
  bool tooLarge = d == -1.0 && PyErr_Occurred();
  if (tooLarge) PyErr_Clear();
  // Python compares an int with a float exactly.
  if (tooLarge || !py::float_(d).equal(value)) {
    raise("IntegerNotExact", std::string(py::str(value)));
  }
  return kxOwned(kxCreateDoubleScalar(d));
}

// Python keeps a str in the narrowest of three forms. One or two bytes a
// character are already UTF-16 units, copied (or widened) once into the
// array; four bytes a character are encoded, so that a character beyond the
// 16-bit range becomes its pair. Lone surrogates pass through: a char
// element is any UTF-16 unit.
kxOwned fromStr(py::handle value) {
  PyObject* s = value.ptr();
  Py_ssize_t length = PyUnicode_GetLength(s);
  if (length == 0) return kxOwned(kxCreateString(""));
  int kind = PyUnicode_KIND(s);
  if (kind == PyUnicode_1BYTE_KIND || kind == PyUnicode_2BYTE_KIND) {
    auto n = static_cast<size_t>(length);
    kxOwned out(kxCreateUninitNumericMatrix(1, n, kxCHAR_CLASS, kxREAL));
    kxChar* chars = kxGetChars(out.get());
    if (kind == PyUnicode_1BYTE_KIND) {
      const Py_UCS1* latin = PyUnicode_1BYTE_DATA(s);
      for (size_t i = 0; i < n; ++i) chars[i] = latin[i];
    } else {
      std::memcpy(chars, PyUnicode_2BYTE_DATA(s), n * sizeof(kxChar));
    }
    return out;
  }
  py::bytes units =
      py::reinterpret_steal<py::bytes>(PyUnicode_AsEncodedString(s, "utf-16-le", "surrogatepass"));
  if (!units) throw py::error_already_set();
  char* data = nullptr;
  Py_ssize_t bytes = 0;
  PyBytes_AsStringAndSize(units.ptr(), &data, &bytes);
  std::u16string text(static_cast<size_t>(bytes) / sizeof(char16_t), u'\0');
  std::memcpy(text.data(), data, text.size() * sizeof(char16_t));
  return kxOwned(kxCreateStringFromNChars_UTF16(text.data(), text.size()));
}

kxOwned fromBytes(py::handle value) {
  std::string bytes = PyByteArray_Check(value.ptr())
                          ? std::string(PyByteArray_AsString(value.ptr()),
                                        static_cast<size_t>(PyByteArray_Size(value.ptr())))
                          : std::string(value.cast<py::bytes>());
  kxOwned out(kxCreateNumericMatrix(1, bytes.size(), kxUINT8_CLASS, kxREAL));
  if (!bytes.empty()) std::memcpy(kxGetData(out.get()), bytes.data(), bytes.size());
  return out;
}

kxOwned fromSequence(py::handle value) {
  py::sequence items = py::reinterpret_borrow<py::sequence>(value);
  size_t n = items.size();
  kxOwned cell(kxCreateCellMatrix(1, n));
  for (size_t i = 0; i < n; ++i) kxSetCell(cell.get(), i, toArray(items[i]).release());
  return cell;
}

kxOwned fromDict(py::handle value) {
  py::dict d = py::reinterpret_borrow<py::dict>(value);
  std::vector<std::string> names;
  for (auto item : d) {
    if (!py::isinstance<py::str>(item.first)) {
      raise("FieldNameNotText", std::string(py::str(py::type::of(item.first).attr("__name__"))));
    }
    names.push_back(item.first.cast<std::string>());
  }
  std::vector<const char*> pointers;
  for (const auto& name : names) pointers.push_back(name.c_str());
  kxOwned s(kxCreateStructMatrix(1, 1, static_cast<int>(names.size()), pointers.data()));
  int field = 0;
  for (auto item : d) kxSetFieldByNumber(s.get(), 0, field++, toArray(item.second).release());
  return s;
}

}  // namespace

kxOwned toArray(py::handle value) {
  // A list that holds itself would recurse without end.
  static int depth = 0;
  if (depth >= kMaxNesting) raise("NestingTooDeep", long{kMaxNesting});
  struct Level {
    Level() { ++depth; }
    ~Level() { --depth; }
  } level;
  PyObject* o = value.ptr();
  if (o == Py_None) return kxOwned(kxCreateDoubleMatrix(0, 0, kxREAL));
  if (PyBool_Check(o)) return kxOwned(kxCreateLogicalScalar(o == Py_True));
  if (PyLong_Check(o)) return fromInt(value);
  if (PyFloat_Check(o)) return kxOwned(kxCreateDoubleScalar(PyFloat_AsDouble(o)));
  if (PyComplex_Check(o)) {
    kxOwned z(kxCreateDoubleMatrix(1, 1, kxCOMPLEX));
    *kxGetPr(z.get()) = PyComplex_RealAsDouble(o);
    *kxGetPi(z.get()) = PyComplex_ImagAsDouble(o);
    return z;
  }
  if (PyUnicode_Check(o)) return fromStr(value);
  if (PyBytes_Check(o) || PyByteArray_Check(o)) return fromBytes(value);
  if (PyList_Check(o) || PyTuple_Check(o)) return fromSequence(value);
  if (PyDict_Check(o)) return fromDict(value);
  if (py::isinstance<py::array>(value)) return copyArray(py::reinterpret_borrow<py::array>(value));
  static const auto* generic = new py::object(py::module_::import("numpy").attr("generic"));
  if (py::isinstance(value, *generic)) {
    return copyArray(py::module_::import("numpy").attr("asarray")(value).cast<py::array>());
  }
  raise("UnsupportedType", std::string(py::str(py::type::of(value).attr("__name__"))));
}

CallInputs::CallInputs(const py::args& args) {
  arrays_.reserve(args.size());
  owned_.reserve(args.size());
  lent_.reserve(args.size());
  try {
    for (py::handle value : args) add(value);
  } catch (...) {
    // The destructor does not run for a constructor that throws.
    for (kxArray* a : lent_) kxDetachData(a);
    throw;
  }
}

CallInputs::~CallInputs() {
  for (kxArray* a : lent_) kxDetachData(a);
}

void CallInputs::add(py::handle value) {
  if (py::isinstance<py::array>(value) && lend(py::reinterpret_borrow<py::array>(value))) return;
  owned_.push_back(toArray(value));
  arrays_.push_back(owned_.back().get());
}

bool CallInputs::lend(const py::array& given) {
  ArrayClass c = classOf(given.dtype());
  // Logicals are copied: their bytes must be made 0 or 1.
  if (c.complex || c.cls == kxCELL_CLASS || c.cls == kxCHAR_CLASS || c.cls == kxLOGICAL_CLASS ||
      given.size() == 0) {
    return false;
  }
  py::array a = normalised(given, c);
  if (!a.is(given)) keep_.push_back(a);
  std::vector<size_t> dims = dimsOf(a);
  owned_.emplace_back(kxCreateNumericMatrix(0, 0, c.cls, kxREAL));
  kxArray* borrowed = owned_.back().get();
  // From here on the block is numpy's: the destructor takes it back.
  kxSetData(borrowed, const_cast<void*>(a.data()));
  lent_.push_back(borrowed);
  kxSetDimensions(borrowed, dims.data(), dims.size());
  arrays_.push_back(borrowed);
  return true;
}

}  // namespace twpython

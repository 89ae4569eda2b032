// Values: making them, reading their elements, comparing them.
#include "value.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "shell_errors.h"
#include "twhost/text.h"

namespace tw {

Value Value::adopt(kxArray* a) {
  Value v;
  v.p_ = std::shared_ptr<kxArray>(a, kxDestroyDeleter());
  return v;
}

Value Value::view(const Value& outer, kxArray* inner) {
  Value v;
  v.p_ = std::shared_ptr<kxArray>(outer.p_, inner);
  return v;
}

Value makeScalar(double v) {
  return Value::adopt(kxCreateDoubleScalar(v));
}
Value makeLogical(bool v) {
  return Value::adopt(kxCreateLogicalScalar(v));
}
Value makeEmpty() {
  return Value::adopt(kxCreateDoubleMatrix(0, 0, kxREAL));
}

Value makeCharRow(const ustring& text) {
  return Value::adopt(kxCreateStringFromNChars_UTF16(text.data(), text.size()));
}

Value makeCharRowUtf8(const std::string& text) {
  return makeCharRow(fl::i18n::to_ustring(text));
}

Value makeNumeric(const std::vector<size_t>& dims, kxClassID cls, bool complex) {
  return Value::adopt(
      kxCreateNumericArray(dims.size(), dims.data(), cls, complex ? kxCOMPLEX : kxREAL));
}

Value makeCell(const std::vector<size_t>& dims) {
  Value c = Value::adopt(kxCreateCellArray(dims.size(), dims.data()));
  size_t n = numelOf(c.get());
  for (size_t i = 0; i < n; ++i) kxSetCell(c.get(), i, kxCreateDoubleMatrix(0, 0, kxREAL));
  return c;
}

std::vector<size_t> dimsOf(const kxArray* a) {
  const size_t* d = kxGetDimensions(a);
  return std::vector<size_t>(d, d + kxGetNumberOfDimensions(a));
}

size_t numelOf(const kxArray* a) {
  return kxGetNumberOfElements(a);
}

std::string classNameOf(const kxArray* a) {
  return kxGetClassName(a);
}

std::string sizeText(const std::vector<size_t>& dims) {
  std::string s;
  for (size_t i = 0; i < dims.size(); ++i) {
    if (i) s += 'x';
    s += std::to_string(dims[i]);
  }
  return s;
}

bool isIntegerClass(kxClassID cls) {
  return cls >= kxINT8_CLASS && cls <= kxUINT64_CLASS;
}

bool isNumericOrLogicalOrChar(const kxArray* a) {
  return kxIsNumeric(a) || kxIsLogical(a) || kxIsChar(a);
}

bool isRealDoubleScalar(const kxArray* a) {
  return kxGetClassID(a) == kxDOUBLE_CLASS && !kxIsComplex(a) && !kxIsSparse(a) &&
         kxGetNumberOfDimensions(a) == 2 && kxGetM(a) == 1 && kxGetN(a) == 1;
}

namespace {

template <class R>
R readElement(kxClassID cls, const void* data, size_t i) {
  switch (cls) {
    case kxDOUBLE_CLASS:
      return static_cast<R>(static_cast<const double*>(data)[i]);
    case kxSINGLE_CLASS:
      return static_cast<R>(static_cast<const float*>(data)[i]);
    case kxLOGICAL_CLASS:
      return static_cast<const bool*>(data)[i] ? R(1) : R(0);
    case kxCHAR_CLASS:
      return static_cast<R>(static_cast<const char16_t*>(data)[i]);
    case kxINT8_CLASS:
      return static_cast<R>(static_cast<const int8_t*>(data)[i]);
    case kxUINT8_CLASS:
      return static_cast<R>(static_cast<const uint8_t*>(data)[i]);
    case kxINT16_CLASS:
      return static_cast<R>(static_cast<const int16_t*>(data)[i]);
    case kxUINT16_CLASS:
      return static_cast<R>(static_cast<const uint16_t*>(data)[i]);
    case kxINT32_CLASS:
      return static_cast<R>(static_cast<const int32_t*>(data)[i]);
    case kxUINT32_CLASS:
      return static_cast<R>(static_cast<const uint32_t*>(data)[i]);
    case kxINT64_CLASS:
      return static_cast<R>(static_cast<const int64_t*>(data)[i]);
    case kxUINT64_CLASS:
      return static_cast<R>(static_cast<const uint64_t*>(data)[i]);
    default:
      return std::numeric_limits<R>::quiet_NaN();
  }
}

// Round half away from zero, NaN to 0, saturate at the bounds of T.
template <class T>
T toInteger(long double v) {
  if (std::isnan(v)) return 0;
  v = std::round(v);
  if (v <= static_cast<long double>(std::numeric_limits<T>::min())) {
    return std::numeric_limits<T>::min();
  }
  if (v >= static_cast<long double>(std::numeric_limits<T>::max())) {
    return std::numeric_limits<T>::max();
  }
  return static_cast<T>(v);
}

}  // namespace

double elementAsDouble(const kxArray* a, size_t i) {
  return readElement<double>(kxGetClassID(a), kxGetData(a), i);
}

long double elementAsLongDouble(const kxArray* a, size_t i) {
  return readElement<long double>(kxGetClassID(a), kxGetData(a), i);
}

double imagAsDouble(const kxArray* a, size_t i) {
  const void* im = kxGetImagData(a);
  return im ? readElement<double>(kxGetClassID(a), im, i) : 0.0;
}

void storeElement(kxArray* a, size_t i, long double v) {
  void* d = kxGetData(a);
  switch (kxGetClassID(a)) {
    case kxDOUBLE_CLASS:
      static_cast<double*>(d)[i] = static_cast<double>(v);
      break;
    case kxSINGLE_CLASS:
      static_cast<float*>(d)[i] = static_cast<float>(v);
      break;
    case kxLOGICAL_CLASS:
      static_cast<bool*>(d)[i] = v != 0;
      break;
    case kxCHAR_CLASS:
      static_cast<char16_t*>(d)[i] = toInteger<uint16_t>(v);
      break;
    case kxINT8_CLASS:
      static_cast<int8_t*>(d)[i] = toInteger<int8_t>(v);
      break;
    case kxUINT8_CLASS:
      static_cast<uint8_t*>(d)[i] = toInteger<uint8_t>(v);
      break;
    case kxINT16_CLASS:
      static_cast<int16_t*>(d)[i] = toInteger<int16_t>(v);
      break;
    case kxUINT16_CLASS:
      static_cast<uint16_t*>(d)[i] = toInteger<uint16_t>(v);
      break;
    case kxINT32_CLASS:
      static_cast<int32_t*>(d)[i] = toInteger<int32_t>(v);
      break;
    case kxUINT32_CLASS:
      static_cast<uint32_t*>(d)[i] = toInteger<uint32_t>(v);
      break;
    case kxINT64_CLASS:
      static_cast<int64_t*>(d)[i] = toInteger<int64_t>(v);
      break;
    case kxUINT64_CLASS:
      static_cast<uint64_t*>(d)[i] = toInteger<uint64_t>(v);
      break;
    default:
      break;
  }
}

ustring utextOf(const kxArray* a, const char* what) {
  if (!kxIsChar(a)) shellError("NeedText", std::string(what), classNameOf(a));
  return ustring(kxGetChars(a), numelOf(a));
}

std::string textOf(const kxArray* a, const char* what) {
  return fl::i18n::to_string(utextOf(a, what));
}

bool isCharRow(const kxArray* a) {
  return kxIsChar(a) && kxGetNumberOfDimensions(a) == 2 && (kxGetM(a) == 1 || numelOf(a) == 0);
}

double scalarOf(const kxArray* a, const char* what) {
  if (!(kxIsNumeric(a) || kxIsLogical(a)) || numelOf(a) != 1 || kxIsComplex(a)) {
    shellError("NeedScalar", std::string(what));
  }
  return elementAsDouble(a, 0);
}

bool isTrue(const kxArray* a) {
  if (!isNumericOrLogicalOrChar(a)) shellError("BadCondition", classNameOf(a));
  size_t n = numelOf(a);
  if (n == 0) return false;
  if (kxIsLogical(a)) {
    const bool* d = kxGetLogicals(a);
    for (size_t i = 0; i < n; ++i) {
      if (!d[i]) return false;
    }
    return true;
  }
  for (size_t i = 0; i < n; ++i) {
    if (elementAsDouble(a, i) == 0 && imagAsDouble(a, i) == 0) return false;
  }
  return true;
}

kxArray* createArray(kxClassID cls, bool complex, const std::vector<size_t>& dims,
                     const kxArray* fieldsFrom) {
  if (cls == kxCELL_CLASS) return kxCreateCellArray(dims.size(), dims.data());
  if (cls == kxSTRUCT_CLASS) {
    std::vector<const char*> names;
    int nf = fieldsFrom ? kxGetNumberOfFields(fieldsFrom) : 0;
    for (int f = 0; f < nf; ++f) names.push_back(kxGetFieldNameByNumber(fieldsFrom, f));
    return kxCreateStructArray(dims.size(), dims.data(), nf, names.data());
  }
  return kxCreateNumericArray(dims.size(), dims.data(), cls, complex ? kxCOMPLEX : kxREAL);
}

void transferElement(kxArray* dst, size_t to, const kxArray* src, size_t from) {
  kxClassID cls = kxGetClassID(dst);
  if (cls == kxCELL_CLASS) {
    kxArray* e = kxGetCell(src, from);
    kxSetCell(dst, to, e ? kxDuplicateArray(e) : nullptr);
    return;
  }
  if (cls == kxSTRUCT_CLASS) {
    for (int f = 0; f < kxGetNumberOfFields(dst); ++f) {
      int g = kxGetFieldNumber(src, kxGetFieldNameByNumber(dst, f));
      kxArray* e = g < 0 ? nullptr : kxGetFieldByNumber(src, from, g);
      kxSetFieldByNumber(dst, to, f, e ? kxDuplicateArray(e) : nullptr);
    }
    return;
  }
  if (kxGetClassID(src) == cls) {
    size_t es = kxGetElementSize(dst);
    std::memcpy(static_cast<char*>(kxGetData(dst)) + to * es,
                static_cast<const char*>(kxGetData(src)) + from * es, es);
  } else {
    storeElement(dst, to, elementAsLongDouble(src, from));
  }
  if (kxGetImagData(dst)) {
    double im = imagAsDouble(src, from);
    if (cls == kxSINGLE_CLASS) {
      static_cast<float*>(kxGetImagData(dst))[to] = static_cast<float>(im);
    } else {
      kxGetPi(dst)[to] = im;
    }
  }
}

void fillEmptySlots(kxArray* a) {
  size_t n = numelOf(a);
  if (kxIsCell(a)) {
    for (size_t i = 0; i < n; ++i) {
      if (!kxGetCell(a, i)) kxSetCell(a, i, kxCreateDoubleMatrix(0, 0, kxREAL));
    }
  } else if (kxIsStruct(a)) {
    for (size_t i = 0; i < n; ++i) {
      for (int f = 0; f < kxGetNumberOfFields(a); ++f) {
        if (!kxGetFieldByNumber(a, i, f)) {
          kxSetFieldByNumber(a, i, f, kxCreateDoubleMatrix(0, 0, kxREAL));
        }
      }
    }
  }
}

Value cellElement(const Value& cell, size_t i) {
  kxArray* e = kxGetCell(cell.get(), i);
  return e ? Value::view(cell, e) : makeEmpty();
}

Value fieldElement(const Value& s, size_t i, int field) {
  kxArray* e = kxGetFieldByNumber(s.get(), i, field);
  return e ? Value::view(s, e) : makeEmpty();
}

namespace {

// Slots never filled read as [].
bool slotEqual(const kxArray* a, const kxArray* b) {
  if (!a || !b) {
    const kxArray* other = a ? a : b;
    return !other || (numelOf(other) == 0 && kxIsDouble(other));
  }
  return valuesEqual(a, b);
}

}  // namespace

bool valuesEqual(const kxArray* a, const kxArray* b) {
  if (dimsOf(a) != dimsOf(b)) return false;
  size_t n = numelOf(a);
  if (isNumericOrLogicalOrChar(a) && isNumericOrLogicalOrChar(b)) {
    for (size_t i = 0; i < n; ++i) {
      if (elementAsLongDouble(a, i) != elementAsLongDouble(b, i)) return false;
      if (imagAsDouble(a, i) != imagAsDouble(b, i)) return false;
    }
    return true;
  }
  if (kxGetClassID(a) != kxGetClassID(b)) return false;
  if (kxIsCell(a)) {
    for (size_t i = 0; i < n; ++i) {
      if (!slotEqual(kxGetCell(a, i), kxGetCell(b, i))) return false;
    }
    return true;
  }
  if (kxIsStruct(a)) {
    int nf = kxGetNumberOfFields(a);
    if (nf != kxGetNumberOfFields(b)) return false;
    for (int f = 0; f < nf; ++f) {
      int g = kxGetFieldNumber(b, kxGetFieldNameByNumber(a, f));
      if (g < 0) return false;
      for (size_t i = 0; i < n; ++i) {
        if (!slotEqual(kxGetFieldByNumber(a, i, f), kxGetFieldByNumber(b, i, g))) return false;
      }
    }
    return true;
  }
  if (kxIsObject(a)) {
    return std::strcmp(kxGetObjectClassName(a), kxGetObjectClassName(b)) == 0 &&
           slotEqual(kxGetObjectProperties(a), kxGetObjectProperties(b));
  }
  return false;
}

}  // namespace tw

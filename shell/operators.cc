// Operators. Integer classes compute in long double, which holds every
// 64-bit integer exactly, and store with the host's rounding and saturation;
// double and single compute in double.
#include "operators.h"

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>

#include "shell_errors.h"

namespace tw {

namespace {

using Complex = std::complex<double>;

bool isComparison(BinaryOp op) {
  return op >= BinaryOp::Eq && op <= BinaryOp::Ge;
}
bool isElementLogical(BinaryOp op) {
  return op == BinaryOp::And || op == BinaryOp::Or;
}
bool isPower(BinaryOp op) {
  return op == BinaryOp::Pow || op == BinaryOp::ElPow;
}

void needOperands(BinaryOp op, const kxArray* a, const kxArray* b) {
  if (!isNumericOrLogicalOrChar(a) || !isNumericOrLogicalOrChar(b)) {
    shellError("UndefinedOperator", std::string(binaryOpText(op)), classNameOf(a), classNameOf(b));
  }
}

kxClassID arithmeticClass(const kxArray* a, const kxArray* b) {
  kxClassID ca = kxGetClassID(a), cb = kxGetClassID(b);
  bool ia = isIntegerClass(ca), ib = isIntegerClass(cb);
  if (ia && ib && ca != cb) shellError("MixedIntegers", classNameOf(a), classNameOf(b));
  if (ia) return ca;
  if (ib) return cb;
  if (ca == kxSINGLE_CLASS || cb == kxSINGLE_CLASS) return kxSINGLE_CLASS;
  return kxDOUBLE_CLASS;
}

// Where the elements of each operand come from for each element of the
// result: the same place, a scalar, or a general expansion of singleton
// dimensions.
class Expansion {
 public:
  Expansion(BinaryOp op, const kxArray* a, const kxArray* b) {
    std::vector<size_t> da = dimsOf(a), db = dimsOf(b);
    size_t na = numelOf(a), nb = numelOf(b);
    if (da == db) {
      mode_ = Same;
      dims_ = da;
    } else if (na == 1) {
      mode_ = LeftScalar;
      dims_ = db;
    } else if (nb == 1) {
      mode_ = RightScalar;
      dims_ = da;
    } else {
      mode_ = General;
      size_t nd = std::max(da.size(), db.size());
      da.resize(nd, 1);
      db.resize(nd, 1);
      dims_.resize(nd);
      for (size_t k = 0; k < nd; ++k) {
        if (da[k] != db[k] && da[k] != 1 && db[k] != 1) {
          shellError("SizeMismatch", std::string(binaryOpText(op)), sizeText(dimsOf(a)),
                     sizeText(dimsOf(b)));
        }
        dims_[k] = da[k] == 1 ? db[k] : da[k];
      }
      size_t n = 1;
      for (size_t d : dims_) n *= d;
      ai_.resize(n);
      bi_.resize(n);
      std::vector<size_t> sub(nd, 0);
      for (size_t i = 0; i < n; ++i) {
        size_t pa = 0, pb = 0, sa = 1, sb = 1;
        for (size_t k = 0; k < nd; ++k) {
          pa += (da[k] == 1 ? 0 : sub[k]) * sa;
          pb += (db[k] == 1 ? 0 : sub[k]) * sb;
          sa *= da[k];
          sb *= db[k];
        }
        ai_[i] = pa;
        bi_[i] = pb;
        for (size_t k = 0; k < nd && ++sub[k] == dims_[k]; ++k) sub[k] = 0;
      }
    }
    count_ = 1;
    for (size_t d : dims_) count_ *= d;
  }

  const std::vector<size_t>& dims() const { return dims_; }
  size_t count() const { return count_; }
  size_t a(size_t k) const {
    return mode_ == Same || mode_ == RightScalar ? k : mode_ == LeftScalar ? 0 : ai_[k];
  }
  size_t b(size_t k) const {
    return mode_ == Same || mode_ == LeftScalar ? k : mode_ == RightScalar ? 0 : bi_[k];
  }

 private:
  enum Mode { Same, LeftScalar, RightScalar, General } mode_;
  std::vector<size_t> dims_;
  std::vector<size_t> ai_, bi_;
  size_t count_ = 0;
};

template <class T>
T arithmetic(BinaryOp op, T x, T y) {
  switch (op) {
    case BinaryOp::Add:
      return x + y;
    case BinaryOp::Sub:
      return x - y;
    case BinaryOp::Mul:
    case BinaryOp::ElMul:
      return x * y;
    case BinaryOp::Div:
    case BinaryOp::ElDiv:
      return x / y;
    case BinaryOp::LeftDiv:
      return y / x;
    case BinaryOp::Pow:
    case BinaryOp::ElPow:
      return std::pow(x, y);
    default:
      return T(0);
  }
}

bool compare(BinaryOp op, long double x, long double y) {
  switch (op) {
    case BinaryOp::Eq:
      return x == y;
    case BinaryOp::Ne:
      return x != y;
    case BinaryOp::Lt:
      return x < y;
    case BinaryOp::Le:
      return x <= y;
    case BinaryOp::Gt:
      return x > y;
    case BinaryOp::Ge:
      return x >= y;
    default:
      return false;
  }
}

// A negative base with a fractional exponent has a complex power.
bool powerNeedsComplex(const kxArray* a, const kxArray* b, const Expansion& ex) {
  for (size_t k = 0; k < ex.count(); ++k) {
    double x = elementAsDouble(a, ex.a(k)), y = elementAsDouble(b, ex.b(k));
    if (x < 0 && std::isfinite(y) && y != std::floor(y)) return true;
  }
  return false;
}

void dropZeroImaginary(kxArray* r) {
  size_t n = numelOf(r);
  for (size_t i = 0; i < n; ++i) {
    if (imagAsDouble(r, i) != 0) return;
  }
  kxSetImagData(r, nullptr);
}

void storeComplex(kxArray* r, size_t k, Complex v) {
  if (kxGetClassID(r) == kxSINGLE_CLASS) {
    static_cast<float*>(kxGetData(r))[k] = static_cast<float>(v.real());
    static_cast<float*>(kxGetImagData(r))[k] = static_cast<float>(v.imag());
  } else {
    kxGetPr(r)[k] = v.real();
    kxGetPi(r)[k] = v.imag();
  }
}

Value elementWise(BinaryOp op, const kxArray* a, const kxArray* b) {
  Expansion ex(op, a, b);
  size_t n = ex.count();
  if (isComparison(op) || isElementLogical(op)) {
    Value r = makeNumeric(ex.dims(), kxLOGICAL_CLASS);
    bool* out = kxGetLogicals(r.get());
    bool complex = kxIsComplex(a) || kxIsComplex(b);
    for (size_t k = 0; k < n; ++k) {
      size_t i = ex.a(k), j = ex.b(k);
      if (isElementLogical(op)) {
        bool x = elementAsDouble(a, i) != 0 || imagAsDouble(a, i) != 0;
        bool y = elementAsDouble(b, j) != 0 || imagAsDouble(b, j) != 0;
        out[k] = op == BinaryOp::And ? (x && y) : (x || y);
      } else {
        bool v = compare(op, elementAsLongDouble(a, i), elementAsLongDouble(b, j));
        if (complex && (op == BinaryOp::Eq || op == BinaryOp::Ne)) {
          bool imagEqual = imagAsDouble(a, i) == imagAsDouble(b, j);
          v = op == BinaryOp::Eq ? (v && imagEqual) : (v || !imagEqual);
        }
        out[k] = v;
      }
    }
    return r;
  }

  kxClassID cls = arithmeticClass(a, b);
  bool complex = kxIsComplex(a) || kxIsComplex(b);
  if (!complex && isPower(op) && !isIntegerClass(cls)) complex = powerNeedsComplex(a, b, ex);
  if (complex && isIntegerClass(cls)) shellError("ComplexInteger", classNameOf(a), classNameOf(b));
  Value r = makeNumeric(ex.dims(), cls, complex);
  kxArray* out = r.get();
  if (complex) {
    for (size_t k = 0; k < n; ++k) {
      size_t i = ex.a(k), j = ex.b(k);
      Complex x(elementAsDouble(a, i), imagAsDouble(a, i));
      Complex y(elementAsDouble(b, j), imagAsDouble(b, j));
      storeComplex(out, k, arithmetic(op, x, y));
    }
    dropZeroImaginary(out);
  } else if (isIntegerClass(cls)) {
    for (size_t k = 0; k < n; ++k) {
      storeElement(
          out, k, arithmetic(op, elementAsLongDouble(a, ex.a(k)), elementAsLongDouble(b, ex.b(k))));
    }
  } else if (cls == kxDOUBLE_CLASS) {
    double* d = kxGetPr(out);
    for (size_t k = 0; k < n; ++k) {
      d[k] = arithmetic(op, elementAsDouble(a, ex.a(k)), elementAsDouble(b, ex.b(k)));
    }
  } else {
    float* d = static_cast<float*>(kxGetData(out));
    for (size_t k = 0; k < n; ++k) {
      d[k] = static_cast<float>(
          arithmetic(op, elementAsDouble(a, ex.a(k)), elementAsDouble(b, ex.b(k))));
    }
  }
  return r;
}

Value matrixProduct(const kxArray* a, const kxArray* b) {
  if (kxGetNumberOfDimensions(a) > 2 || kxGetNumberOfDimensions(b) > 2) {
    shellError("NotMatrix", std::string("*"));
  }
  size_t m = kxGetM(a), inner = kxGetN(a), n = kxGetN(b);
  if (kxGetM(b) != inner) {
    shellError("InnerDimensions", sizeText(dimsOf(a)), sizeText(dimsOf(b)));
  }
  kxClassID cls = arithmeticClass(a, b);
  if (isIntegerClass(cls)) shellError("IntegerMatrixProduct", classNameOf(a), classNameOf(b));
  bool complex = kxIsComplex(a) || kxIsComplex(b);
  Value r = makeNumeric({m, n}, cls, complex);
  for (size_t i = 0; i < m; ++i) {
    for (size_t j = 0; j < n; ++j) {
      Complex sum = 0;
      for (size_t k = 0; k < inner; ++k) {
        Complex x(elementAsDouble(a, k * m + i), imagAsDouble(a, k * m + i));
        Complex y(elementAsDouble(b, j * inner + k), imagAsDouble(b, j * inner + k));
        sum += x * y;
      }
      if (complex) {
        storeComplex(r.get(), j * m + i, sum);
      } else {
        storeElement(r.get(), j * m + i, sum.real());
      }
    }
  }
  if (complex) dropZeroImaginary(r.get());
  return r;
}

}  // namespace

Value binaryOperation(BinaryOp op, const Value& av, const Value& bv) {
  const kxArray* a = av.get();
  const kxArray* b = bv.get();
  // The common case of a loop counter or an accumulator.
  if (isRealDoubleScalar(a) && isRealDoubleScalar(b)) {
    double x = *kxGetPr(a), y = *kxGetPr(b);
    if (isComparison(op)) return makeLogical(compare(op, x, y));
    if (isElementLogical(op)) {
      return makeLogical(op == BinaryOp::And ? (x != 0 && y != 0) : (x != 0 || y != 0));
    }
    if (!(isPower(op) && x < 0 && y != std::floor(y) && std::isfinite(y))) {
      return makeScalar(arithmetic(op, x, y));
    }
  }
  needOperands(op, a, b);
  bool scalarA = numelOf(a) == 1, scalarB = numelOf(b) == 1;
  switch (op) {
    case BinaryOp::Mul:
      if (!scalarA && !scalarB) return matrixProduct(a, b);
      break;
    case BinaryOp::Div:
      if (!scalarB) shellError("MatrixDivision", std::string("/"));
      break;
    case BinaryOp::LeftDiv:
      if (!scalarA) shellError("MatrixDivision", std::string("\\"));
      break;
    case BinaryOp::Pow:
      if (!scalarA || !scalarB) shellError("MatrixPower");
      break;
    default:
      break;
  }
  return elementWise(op, a, b);
}

Value unaryOperation(UnaryOp op, const Value& av) {
  const kxArray* a = av.get();
  if (isRealDoubleScalar(a)) {
    double x = *kxGetPr(a);
    switch (op) {
      case UnaryOp::Minus:
        return makeScalar(-x);
      case UnaryOp::Plus:
        return av;
      case UnaryOp::Not:
        return makeLogical(x == 0);
    }
  }
  if (!isNumericOrLogicalOrChar(a)) {
    const char* text = op == UnaryOp::Minus ? "-" : op == UnaryOp::Plus ? "+" : "~";
    shellError("UndefinedUnary", std::string(text), classNameOf(a));
  }
  size_t n = numelOf(a);
  if (op == UnaryOp::Not) {
    Value r = makeNumeric(dimsOf(a), kxLOGICAL_CLASS);
    for (size_t i = 0; i < n; ++i) {
      kxGetLogicals(r.get())[i] = elementAsDouble(a, i) == 0 && imagAsDouble(a, i) == 0;
    }
    return r;
  }
  kxClassID cls = kxGetClassID(a);
  if (cls == kxLOGICAL_CLASS || cls == kxCHAR_CLASS) cls = kxDOUBLE_CLASS;
  if (op == UnaryOp::Plus && cls == kxGetClassID(a)) return av;
  bool complex = kxIsComplex(a);
  Value r = makeNumeric(dimsOf(a), cls, complex);
  double sign = op == UnaryOp::Minus ? -1 : 1;
  for (size_t i = 0; i < n; ++i) {
    if (complex) {
      storeComplex(r.get(), i, Complex(sign * elementAsDouble(a, i), sign * imagAsDouble(a, i)));
    } else {
      storeElement(r.get(), i, sign * elementAsLongDouble(a, i));
    }
  }
  return r;
}

Value transposeOf(const Value& av, bool conjugate) {
  const kxArray* a = av.get();
  if (kxGetNumberOfDimensions(a) > 2) shellError("TransposeNd");
  if (kxIsObject(a)) shellError("UndefinedUnary", std::string("'"), classNameOf(a));
  size_t m = kxGetM(a), n = kxGetN(a);
  kxArray* r;
  if (kxIsCell(a)) {
    r = kxCreateCellMatrix(n, m);
  } else if (kxIsStruct(a)) {
    std::vector<const char*> names;
    for (int f = 0; f < kxGetNumberOfFields(a); ++f) names.push_back(kxGetFieldNameByNumber(a, f));
    r = kxCreateStructMatrix(n, m, static_cast<int>(names.size()), names.data());
  } else {
    r = kxCreateNumericMatrix(n, m, kxGetClassID(a), kxIsComplex(a) ? kxCOMPLEX : kxREAL);
  }
  Value out = Value::adopt(r);
  size_t es = kxGetElementSize(a);
  for (size_t i = 0; i < m; ++i) {
    for (size_t j = 0; j < n; ++j) {
      size_t from = j * m + i, to = i * n + j;
      if (kxIsCell(a)) {
        if (kxArray* e = kxGetCell(a, from)) kxSetCell(r, to, kxDuplicateArray(e));
      } else if (kxIsStruct(a)) {
        for (int f = 0; f < kxGetNumberOfFields(a); ++f) {
          if (kxArray* e = kxGetFieldByNumber(a, from, f)) {
            kxSetFieldByNumber(r, to, f, kxDuplicateArray(e));
          }
        }
      } else {
        std::memcpy(static_cast<char*>(kxGetData(r)) + to * es,
                    static_cast<const char*>(kxGetData(a)) + from * es, es);
        if (kxIsComplex(a)) {
          std::memcpy(static_cast<char*>(kxGetImagData(r)) + to * es,
                      static_cast<const char*>(kxGetImagData(a)) + from * es, es);
        }
      }
    }
  }
  if (conjugate && kxIsComplex(a)) {
    for (size_t i = 0; i < m * n; ++i) {
      storeComplex(r, i, std::conj(Complex(elementAsDouble(r, i), imagAsDouble(r, i))));
    }
  }
  return out;
}

double RangeSteps::element(size_t k) const {
  return k + 1 == count ? stop : start + static_cast<double>(k) * step;
}

RangeSteps makeRangeSteps(double start, double step, double stop) {
  RangeSteps r{start, step, stop, 0};
  if (std::isnan(start) || std::isnan(step) || std::isnan(stop) || step == 0 ||
      (step > 0 && start > stop) || (step < 0 && start < stop)) {
    return r;
  }
  double q = (stop - start) / step;
  if (!std::isfinite(q) || q >= 1e12) shellError("RangeTooLarge");
  // A last element within rounding of the end still counts.
  double n = std::floor(q + 1e-10 * std::max(1.0, q));
  r.count = static_cast<size_t>(n) + 1;
  r.stop = start + n * step;
  if (std::fabs(r.stop - stop) <= 1e-10 * std::max(1.0, std::fabs(stop))) r.stop = stop;
  return r;
}

Value rangeValue(const RangeSteps& r) {
  Value v = Value::adopt(kxCreateDoubleMatrix(1, r.count, kxREAL));
  double* d = kxGetPr(v.get());
  for (size_t k = 0; k < r.count; ++k) d[k] = r.element(k);
  return v;
}

}  // namespace tw

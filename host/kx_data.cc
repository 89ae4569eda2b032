// Typed views of array data and the host's conversions between classes.
//
// AssignToVoidBuffer carries every fread and fwrite, so its work is one typed
// loop per pair of classes, chosen once per call: no per-element switch.
#include "twhost/kx_data.h"

#include <bit>
#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

#include <fast_float/fast_float.h>

#include "twhost/errors.h"

namespace {

// Element types by class. Logical elements are read as bytes so that a byte
// other than 0 or 1 in a block still counts as true without undefined
// behaviour; char elements are UTF-16 code units.
enum class Logical : uint8_t {};

template <class T>
constexpr bool isFloating = std::is_floating_point_v<T>;

constexpr double pow2(int k) {
  double r = 1.0;
  while (k-- > 0) r *= 2.0;
  return r;
}

// A value truncates into the range of D exactly when it lies strictly between
// these two bounds: max + 1 and min - 1, both exact in double (for int64,
// -2^63 - 1 is not a double, but a value equal to -2^63 saturates to the same
// minimum anyway).
template <class D>
constexpr double upperExclusive() {
  return pow2(std::numeric_limits<D>::digits);
}
template <class D>
constexpr double lowerExclusive() {
  if constexpr (std::is_unsigned_v<D>) {
    return -1.0;
  } else {
    constexpr int digits = std::numeric_limits<D>::digits;
    return -pow2(digits) - (digits < 53 ? 1.0 : 0.0);
  }
}

// Round half away from zero, then saturate. Adding the largest double below
// one half and truncating rounds halves outward without a call into libm, and
// never carries a value that is just below a half across the boundary.
template <class D>
inline D fromDouble(double v) {
  if (v != v) return D{0};
  double r = v + std::copysign(0.49999999999999994, v);
  if (r >= upperExclusive<D>()) return std::numeric_limits<D>::max();
  if (r <= lowerExclusive<D>()) return std::numeric_limits<D>::min();
  return static_cast<D>(r);
}

template <class D, class S>
inline D fromInteger(S v) {
  using DL = std::numeric_limits<D>;
  using SL = std::numeric_limits<S>;
  if constexpr (std::cmp_greater(SL::max(), DL::max())) {
    if (std::cmp_greater(v, DL::max())) return DL::max();
  }
  if constexpr (std::cmp_less(SL::min(), DL::min())) {
    if (std::cmp_less(v, DL::min())) return DL::min();
  }
  return static_cast<D>(v);
}

template <class D, class S>
inline D convert(S v) {
  if constexpr (std::is_same_v<D, S>) {
    return v;
  } else if constexpr (std::is_same_v<S, Logical>) {
    return convert<D>(static_cast<uint8_t>(static_cast<uint8_t>(v) != 0));
  } else if constexpr (std::is_same_v<S, char16_t>) {
    return convert<D>(static_cast<uint16_t>(v));
  } else if constexpr (std::is_same_v<D, Logical>) {
    return static_cast<Logical>(v != 0);
  } else if constexpr (std::is_same_v<D, char16_t>) {
    return static_cast<char16_t>(convert<uint16_t>(v));
  } else if constexpr (isFloating<D>) {
    return static_cast<D>(v);
  } else if constexpr (isFloating<S>) {
    return fromDouble<D>(static_cast<double>(v));
  } else {
    return fromInteger<D>(v);
  }
}

// Loads and stores go through memcpy: file buffers need not be aligned to
// their element type, and the compiler makes plain moves of these.
template <class D, class S>
void convertLoop(void* dst, const void* src, size_t count) {
  auto* out = static_cast<unsigned char*>(dst);
  const auto* in = static_cast<const unsigned char*>(src);
  for (size_t i = 0; i < count; ++i) {
    S s;
    std::memcpy(&s, in + i * sizeof(S), sizeof(S));
    D d = convert<D>(s);
    std::memcpy(out + i * sizeof(D), &d, sizeof(D));
  }
}

[[noreturn]] void unsupported(kxClassID from, kxClassID to) {
  kxThrowId("KORVAN", "internal",
            std::string("no conversion from class ") + kxClassNameOf(from) + " to class " +
                kxClassNameOf(to));
}

// Calls f with a value-initialised element of the class's type.
template <class F>
bool withElementType(kxClassID cls, F&& f) {
  switch (cls) {
    case kxLOGICAL_CLASS:
      f(Logical{});
      return true;
    case kxCHAR_CLASS:
      f(char16_t{});
      return true;
    case kxDOUBLE_CLASS:
      f(double{});
      return true;
    case kxSINGLE_CLASS:
      f(float{});
      return true;
    case kxINT8_CLASS:
      f(int8_t{});
      return true;
    case kxUINT8_CLASS:
      f(uint8_t{});
      return true;
    case kxINT16_CLASS:
      f(int16_t{});
      return true;
    case kxUINT16_CLASS:
      f(uint16_t{});
      return true;
    case kxINT32_CLASS:
      f(int32_t{});
      return true;
    case kxUINT32_CLASS:
      f(uint32_t{});
      return true;
    case kxINT64_CLASS:
      f(int64_t{});
      return true;
    case kxUINT64_CLASS:
      f(uint64_t{});
      return true;
    default:
      return false;
  }
}

template <class T>
T load(const void* data, size_t index) {
  T v;
  std::memcpy(&v, static_cast<const unsigned char*>(data) + index * sizeof(T), sizeof(T));
  return v;
}

}  // namespace

// ---- KxData ------------------------------------------------------------------------

KxData::KxData(const kxArray* a) : cls_(kxGetClassID(a)), data_(kxGetData(a)) {}
KxData::KxData(kxClassID cls, const void* data) : cls_(cls), data_(data) {}

bool KxData::indexIsFinite(size_t index) const {
  if (cls_ == kxDOUBLE_CLASS) return std::isfinite(load<double>(data_, index));
  if (cls_ == kxSINGLE_CLASS) return std::isfinite(load<float>(data_, index));
  return true;
}

double KxData::asDouble(size_t index) const {
  double out = std::numeric_limits<double>::quiet_NaN();
  withElementType(cls_, [&](auto tag) {
    using S = decltype(tag);
    out = convert<double>(load<S>(data_, index));
  });
  return out;
}

// ---- conversion ------------------------------------------------------------------------

void AssignToVoidBuffer(kxClassID dstClass, void* dst, kxClassID srcClass, const void* src,
                        size_t count) {
  if (count == 0) return;
  if (srcClass == kxUNKNOWN_CLASS) {
    size_t size = kxClassElementSize(dstClass);
    if (size == 0) unsupported(srcClass, dstClass);
    std::memmove(dst, src, count * size);
    return;
  }
  bool done = false;
  withElementType(srcClass, [&](auto srcTag) {
    using S = decltype(srcTag);
    done = withElementType(dstClass, [&](auto dstTag) {
      using D = decltype(dstTag);
      if constexpr (std::is_same_v<D, S>) {
        std::memmove(dst, src, count * sizeof(S));
      } else {
        convertLoop<D, S>(dst, src, count);
      }
    });
  });
  if (!done) unsupported(srcClass, dstClass);
}

void AssignToVoidBuffer(kxClassID dstClass, void* dst, const KxData& src, size_t count) {
  AssignToVoidBuffer(dstClass, dst, src.classId(), src.data(), count);
}

// ---- machine formats and precision sizes ---------------------------------------------

namespace {

// Entries 2 to 4 are kept free and have no name, so that no text can select
// them; the last entry stands for "no format".
constexpr const char* kFormatNames[] = {"ieee-le",     "ieee-be",     "", "", "",
                                        "ieee-le.l64", "ieee-be.l64", ""};
constexpr int kFormatCount = sizeof(kFormatNames) / sizeof(kFormatNames[0]);

// Bytes in a file of precision codes 1 to 13; "no conversion" moves bytes.
constexpr int kCodeSizes[] = {1, 1, 1, 2, 4, 8, 1, 2, 4, 8, 4, 8, 1};

}  // namespace

int utGetDataSizeType() {
  static_assert(std::endian::native == std::endian::little ||
                std::endian::native == std::endian::big);
  return std::endian::native == std::endian::little ? 0 : 1;
}

int utGetNumDataSizeTypes() {
  return kFormatCount;
}

const char* utGetDataSizeTypeName(int index) {
  return index >= 0 && index < kFormatCount ? kFormatNames[index] : "";
}

int utGetDataEndianType(int format) {
  return format == 1 || format == 6 ? 1 : 0;
}

int utDconvertSize(int /*format*/, int code) {
  // Every format of the list is IEEE with the same widths; they differ only
  // in byte order and in the width of "long", which is fixed at 32 bits here.
  return code >= 1 && code <= 13 ? kCodeSizes[code - 1] : 0;
}

bool utDconvertSign(int code) {
  return (code >= 3 && code <= 6) || code == 11 || code == 12;
}

bool utSignBit(double v) {
  return std::signbit(v);
}

// ---- the number reader ------------------------------------------------------------------

namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
char asciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

bool startsWithNoCase(const char* p, const char* word) {
  for (; *word; ++p, ++word) {
    if (asciiLower(*p) != *word) return false;
  }
  return true;
}

// The C library reads hexadecimal floats correctly rounded; its "C" locale
// keeps the radix character a point whatever the process locale is.
locale_t classicLocale() {
  static locale_t loc = newlocale(LC_ALL_MASK, "C", nullptr);
  return loc;
}

}  // namespace

utFpcContext* utGetFpcContext() {
  static utFpcContext context;
  return &context;
}

double ut_strtod(const char* s, char** end, utFpcContext*) {
  const char* p = s;
  while (isBlank(*p)) ++p;
  if (p[0] == '0' || ((p[0] == '+' || p[0] == '-') && p[1] == '0')) {
    const char* q = p[0] == '0' ? p : p + 1;
    if (q[1] == 'x' || q[1] == 'X') return strtod_l(s, end, classicLocale());
  }
  bool negative = false;
  if (*p == '+' || *p == '-') negative = *p++ == '-';
  auto finish = [&](double v, const char* stop) {
    if (end) *end = const_cast<char*>(stop);
    return negative ? -v : v;
  };

  if (startsWithNoCase(p, "inf")) {
    return finish(HUGE_VAL, p + (startsWithNoCase(p, "infinity") ? 8 : 3));
  }
  if (startsWithNoCase(p, "nan")) {
    p += 3;
    // "nan(chars)" is read whole, as strtod does; an unclosed one is not.
    if (*p == '(') {
      const char* q = p + 1;
      while (isDigit(*q) || (asciiLower(*q) >= 'a' && asciiLower(*q) <= 'z') || *q == '_') ++q;
      if (*q == ')') p = q + 1;
    }
    return finish(std::numeric_limits<double>::quiet_NaN(), p);
  }

  // Find where the number ends before handing it over, so that the reader
  // never has to look for the end of a long text.
  const char* q = p;
  size_t digits = 0;
  bool nonZero = false;
  for (; isDigit(*q); ++q, ++digits) nonZero |= *q != '0';
  if (*q == '.') {
    for (++q; isDigit(*q); ++q, ++digits) nonZero |= *q != '0';
  }
  if (digits == 0) {
    if (end) *end = const_cast<char*>(s);
    return 0.0;
  }
  if (*q == 'e' || *q == 'E') {
    const char* e = q + 1;
    if (*e == '+' || *e == '-') ++e;
    if (isDigit(*e)) {
      while (isDigit(*e)) ++e;
      q = e;
    }
  }
  double v = 0.0;
  auto result = fast_float::from_chars(p, q, v);
  if (std::isinf(v) || (v == 0.0 && nonZero)) errno = ERANGE;
  return finish(v, result.ptr);
}

// ---- wall clock ----------------------------------------------------------------------------

double utWallClock() {
  timespec ts{};
  clock_gettime(CLOCK_REALTIME, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// Permission, machine format, size and skip attributes, and the common rule
// for numeric scalar arguments. Precisions are in precision_string.cc.
#include "fileio/attributes.h"

#include <cctype>
#include <cmath>
#include <cstring>
#include <limits>

#include "twhost/errors.h"
#include "twhost/kx_data.h"

namespace Tarnwicks::FileIO {

namespace {

// The largest element count a size may name: 2^48 - 1.
constexpr double kSizeLimit = 281474976710655.0;

bool equalsNoCase(const char* a, const char* b) {
  for (; *a && *b; ++a, ++b) {
    if (std::tolower(static_cast<unsigned char>(*a)) !=
        std::tolower(static_cast<unsigned char>(*b)))
      return false;
  }
  return *a == *b;
}

}  // namespace

// ---- permission -------------------------------------------------------------

FilePermission::FilePermission(const char* text, int mode) {
  valid = parse(text);
  constructedMode = mode;
}

bool FilePermission::parse(const char* text) {
  value = text;
  stored = nullptr;
  if (std::strchr("rwaWA", text[0]) == nullptr || text[0] == '\0') {
    stored = kxMakeError(kxMsg("KORVAN:legacy_two_part", "badpermission_mx"));
    return false;
  }
  for (const char* p = text; *p; ++p) {
    if (std::strchr("rwab+AWt", *p) == nullptr) {
      stored = kxMakeError(kxMsg("KORVAN:fopen", "IncorrectFileMode"));
      return false;
    }
  }
  read = write = append = update = binary = this->text = false;
  autoFlush = true;
  for (const char* p = text; *p; ++p) {
    switch (*p) {
      case 'r':
        read = true;
        break;
      case 'w':
        write = true;
        break;
      case 'W':
        write = true;
        autoFlush = false;
        break;
      case 'a':
        append = true;
        break;
      case 'A':
        append = true;
        autoFlush = false;
        break;
      case 'b':
        binary = true;
        break;
      case 't':
        this->text = true;
        break;
      case '+':
        update = true;
        break;
    }
  }
  if (int(read) + int(write) + int(append) != 1) {
    stored = kxMakeError(kxMsg("KORVAN:fopen", "ConflictingExclusiveFileModes"));
    return false;
  }
  // Files are never opened in C text mode: line ends are the encoding
  // layer's business, and "t" is only remembered.
  int n = 0;
  cMode[n++] = read ? 'r' : write ? 'w' : 'a';
  if (update) cMode[n++] = '+';
  cMode[n++] = 'b';
  cMode[n] = '\0';
  if (this->text) value.erase(value.find('t'), 1);
  return true;
}

void FilePermission::validate() const {
  if (stored) kxReThrowException(stored);
  if (!valid) kxThrowId("KORVAN:legacy_two_part", "badpermission_mx");
}

// ---- machine format ----------------------------------------------------------

MachineFormat::MachineFormat() : format(utGetDataSizeType()) {}

bool MachineFormat::parse(const char* text) {
  value = text;
  const int none = utGetNumDataSizeTypes() - 1;
  format = none;
  size_t n = std::strlen(text);
  if (n == 0) return false;
  if (n == 1) {
    char c = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    if (c == 'n') {
      format = utGetDataSizeType();
      return true;
    }
    if (c == ' ') return false;
    // The short forms stand at their index plus one: "l" 0, "b" 1, "a" 5,
    // "s" 6; the blanks hold the places of the reserved formats.
    static const char kShortForms[] = "nlb   as";
    const char* hit = std::strchr(kShortForms, c);
    if (hit == nullptr) return false;
    format = static_cast<int>(hit - kShortForms) - 1;
    return true;
  }
  if (equalsNoCase(text, "native")) {
    format = utGetDataSizeType();
    return true;
  }
  for (int i = 0; i <= none - 1; ++i) {
    const char* name = utGetDataSizeTypeName(i);
    if (name != nullptr && *name != '\0' && equalsNoCase(text, name)) {
      format = i;
      return true;
    }
  }
  return false;
}

// ---- numeric arguments ---------------------------------------------------------

bool numericScalarValue(const kxArray* a, int64_t& out, bool* isNaN, bool* isInf) {
  if (isNaN) *isNaN = false;
  if (isInf) *isInf = false;
  if (a == nullptr || kxIsEmpty(a) || !kxIsNumeric(a)) return false;
  kxClassID cls = kxGetClassID(a);
  if (cls < kxDOUBLE_CLASS || cls > kxUINT64_CLASS) return false;
  const void* data = kxGetData(a);
  switch (cls) {
    case kxINT8_CLASS:
      out = *static_cast<const int8_t*>(data);
      return true;
    case kxUINT8_CLASS:
      out = *static_cast<const uint8_t*>(data);
      return true;
    case kxINT16_CLASS:
      out = *static_cast<const int16_t*>(data);
      return true;
    case kxUINT16_CLASS:
      out = *static_cast<const uint16_t*>(data);
      return true;
    case kxINT32_CLASS:
      out = *static_cast<const int32_t*>(data);
      return true;
    case kxUINT32_CLASS:
      out = *static_cast<const uint32_t*>(data);
      return true;
    case kxINT64_CLASS:
      out = *static_cast<const int64_t*>(data);
      return true;
    case kxUINT64_CLASS: {
      uint64_t v = *static_cast<const uint64_t*>(data);
      if (v >> 63) return false;
      out = static_cast<int64_t>(v);
      return true;
    }
    default:
      break;
  }
  double v = cls == kxDOUBLE_CLASS ? *static_cast<const double*>(data)
                                   : double(*static_cast<const float*>(data));
  if (std::isnan(v)) {
    if (isNaN) *isNaN = true;
    out = 0;
    return false;
  }
  if (std::isinf(v)) {
    if (isInf) *isInf = true;
    out = v > 0 ? 1 : -1;
    return false;
  }
  double t = std::trunc(v);
  // Beyond the 64-bit range a whole number saturates: it is still exact in
  // the sense that matters here, an offset or count larger than any file.
  if (t >= 9223372036854775808.0) {
    out = std::numeric_limits<int64_t>::max();
    return true;
  }
  if (t < -9223372036854775808.0) {
    out = std::numeric_limits<int64_t>::min();
    return true;
  }
  out = static_cast<int64_t>(t);
  return t == v;
}

void SizeAttribute::parse(const kxArray* a) {
  valid = true;
  stored = nullptr;
  auto fail = [this](const char* catalog, const char* key) {
    valid = false;
    stored = kxMakeError(kxMsg(catalog, key));
  };
  if (a == nullptr || !kxIsNumeric(a)) {
    fail("KORVAN:FileIO", "sizeMustBeNumeric");
    return;
  }
  kxArray* d = kxMustBe(a, kxDOUBLE_CLASS);
  kxOwned holder(d == a ? nullptr : d);
  unbounded = false;
  isMatrix = false;
  const double* v = kxGetPr(d);
  size_t count = kxGetNumberOfElements(d);
  if (count == 0) {
    fail("KORVAN:legacy_two_part", "badsize_mx");
  } else if (count == 1) {
    double x = v[0];
    if (std::isnan(x) || x < 0) {
      fail("KORVAN:legacy_two_part", "badsize_mx");
    } else if (x == 0) {
      rows = columns = 0;
    } else if (x <= kSizeLimit) {
      rows = static_cast<int64_t>(std::round(x));
      columns = 1;
    } else {
      rows = 1;
      columns = 0;
      unbounded = true;
    }
  } else if (count == 2 && kxGetM(d) == 1 && kxGetNumberOfDimensions(d) == 2) {
    double m = v[0], n = v[1];
    if (std::isnan(m) || std::isnan(n) || m < 0 || n < 0) {
      fail("KORVAN:legacy_two_part", "badsize_mx");
    } else if (m <= kSizeLimit && n <= kSizeLimit && std::round(m) * std::round(n) <= kSizeLimit) {
      rows = static_cast<int64_t>(std::round(m));
      columns = static_cast<int64_t>(std::round(n));
      isMatrix = true;
    } else if (m <= kSizeLimit && n > kSizeLimit) {
      isMatrix = true;
      if (m == 0) {
        rows = columns = 0;
      } else {
        rows = static_cast<int64_t>(std::round(m));
        columns = 0;
        unbounded = true;
      }
    } else {
      fail("KORVAN:legacy_two_part", "badsize_mx");
    }
  } else {
    fail("KORVAN:legacy_two_part", "badsize_mx");
  }
}

void SizeAttribute::validate() const {
  if (stored) kxReThrowException(stored);
  if (!valid) kxThrowId("KORVAN:legacy_two_part", "badsize_mx");
}

void SizeAttribute::adjustForNoConvert(size_t elementBytes) {
  int64_t oldRows = rows;
  rows = 1;
  if (unbounded) return;
  double want =
      std::ceil(double(oldRows) * double(columns) / double(elementBytes ? elementBytes : 1));
  if (want <= -1.0 || want >= 18446744073709551616.0) {
    columns = 0;
    kxErrMsg(39);
  }
  columns = static_cast<int64_t>(want);
}

void SkipAttribute::parse(const kxArray* a) {
  int64_t v = 0;
  valid = a != nullptr && kxIsNumeric(a) && !kxIsEmpty(a) && !kxIsComplex(a) &&
          numericScalarValue(a, v) && v >= 0;
  rows = valid ? v : 0;
}

void SkipAttribute::validate() const {
  if (stored) kxReThrowException(stored);
  if (!valid) kxThrowId("KORVAN:legacy_two_part", "badskip_mx");
}

}  // namespace Tarnwicks::FileIO

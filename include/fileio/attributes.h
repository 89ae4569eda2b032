// File attributes: the small parsers behind the permission, machine format,
// precision, size and skip arguments of fopen, fread and fwrite.
//
// An attribute never raises while it parses. It records whether its value is
// usable and, where the error is more precise than the class's own, keeps the
// error itself. A built-in loads every attribute it was given, in whatever
// position, and only then calls validate() on each in its own order, so the
// error a user sees does not depend on where the bad argument stood.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "twhost/errors.h"
#include "twhost/kx_array.h"
#include "twhost/kx_memory.h"

namespace KORVAN {
// Error tags: one type per identifier, named after it.
namespace legacy_two_part {
struct badpermission_mx {
  static constexpr const char* catalog = "KORVAN:legacy_two_part";
  static constexpr const char* key = "badpermission_mx";
};
struct badmachformat_mx {
  static constexpr const char* catalog = "KORVAN:legacy_two_part";
  static constexpr const char* key = "badmachformat_mx";
};
struct badprecision_mx {
  static constexpr const char* catalog = "KORVAN:legacy_two_part";
  static constexpr const char* key = "badprecision_mx";
};
struct badfilename_mx {
  static constexpr const char* catalog = "KORVAN:legacy_two_part";
  static constexpr const char* key = "badfilename_mx";
};
}  // namespace legacy_two_part
namespace fopen {
struct EncodingString {
  static constexpr const char* catalog = "KORVAN:fopen";
  static constexpr const char* key = "EncodingString";
};
}  // namespace fopen
}  // namespace KORVAN

namespace Tarnwicks::FileIO {

inline constexpr char dfltAttrEmpty[] = "";
inline constexpr char dfltPermValue[] = "r";
inline constexpr char dfltPrecVal[] = "uchar";

// True when the char array `a` holds a NUL character.
inline bool holdsNul(const kxArray* a) {
  const auto* units = static_cast<const char16_t*>(kxGetData(a));
  const size_t n = kxGetNumberOfElements(a);
  for (size_t i = 0; i < n; ++i) {
    if (units[i] == 0) return true;
  }
  return false;
}

// A text attribute. `Default` is the text it holds until something is parsed;
// `Tag` names the error that validate() raises for an unusable value.
template <const char* Default, class Tag>
class CharAttrValidator {
 public:
  CharAttrValidator() : value(Default) {}
  virtual ~CharAttrValidator() = default;

  // Raises the Tag error unless the value is usable.
  virtual void validate() const {
    if (!valid) kxThrowId(Tag::catalog, Tag::key);
  }
  // Stores the text; true when it is usable. The base accepts anything.
  virtual bool parse(const char* text) {
    value = text;
    return true;
  }

  // Loads from an argument: a non-char array makes the attribute invalid
  // without looking further; otherwise its UTF-8 text goes through parse().
  // A text holding a NUL is not usable either: the C text made from it
  // would end there and mean something else.
  void load(const kxArray* a) {
    if (a == nullptr || !kxIsChar(a) || holdsNul(a)) {
      valid = false;
      return;
    }
    char* text = kxCreateCStrFromArray(a, kxMallocEx);
    valid = parse(text);
    kxFreeEx(text);
  }

  std::string value;
  bool valid = true;
};

// The encoding argument of fopen and the text argument of fclose: any text.
using EncodingAttribute = CharAttrValidator<dfltAttrEmpty, KORVAN::fopen::EncodingString>;
using FileNameAttribute = CharAttrValidator<dfltAttrEmpty, KORVAN::legacy_two_part::badfilename_mx>;

// A permission such as "r", "w+", "A", "rt". Every file is opened in C binary
// mode; "t" is accepted and dropped from the stored text.
class FilePermission
    : public CharAttrValidator<dfltPermValue, KORVAN::legacy_two_part::badpermission_mx> {
 public:
  FilePermission() = default;
  // The standard files: `text` is the permission they report, mode 1.
  FilePermission(const char* text, int mode);

  // Rethrows the stored error, else raises badpermission_mx when invalid.
  void validate() const override;
  bool parse(const char* text) override;

  bool read = true;
  bool write = false;
  bool append = false;
  bool update = false;
  bool binary = false;
  bool text = false;
  bool autoFlush = true;  // off for "W" and "A"
  int constructedMode = 0;
  std::exception_ptr stored;
  char cMode[4] = {'r', 'b', 0, 0};  // the mode handed to the C library
};

// A machine format: an index in the host's list (utGetDataSizeTypeName).
// An unknown text leaves the index at the last entry, which means none.
class MachineFormat
    : public CharAttrValidator<dfltAttrEmpty, KORVAN::legacy_two_part::badmachformat_mx> {
 public:
  MachineFormat();
  // Callers raise kxErrMsg(messageNumber) themselves when !valid; validate()
  // raises the class's identifier.
  bool parse(const char* text) override;

  int messageNumber = 34;
  int format;  // native by default
};

// Precision codes: 1 logical, 2 char, 3..6 int8..int64, 7..10 uint8..uint64,
// 11 single, 12 double, 13 no conversion.
enum PrecisionCode : int {
  kPrecLogical = 1,
  kPrecChar = 2,
  kPrecInt8 = 3,
  kPrecInt16 = 4,
  kPrecInt32 = 5,
  kPrecInt64 = 6,
  kPrecUint8 = 7,
  kPrecUint16 = 8,
  kPrecUint32 = 9,
  kPrecUint64 = 10,
  kPrecSingle = 11,
  kPrecDouble = 12,
  kPrecNoConvert = 13,
};
// The class of a code's elements; 0 (kxUNKNOWN_CLASS) for 13 and bad codes.
kxClassID precisionClass(int code);
// Bytes of a code's elements in native form; 0 for 13 and bad codes.
size_t precisionBytes(int code);
// The code whose elements have class `cls`; 0 for classes without one.
int precisionCodeOfClass(kxClassID cls);

// A precision such as "int16", "3*uint8=>double", "ubit5", "bit5in8" or
// "*char". For fread (reading) `inputCode` is the type in the file and
// `outputCode` the class of the result; for fwrite (writing) `outputCode` is
// the type in the file and `inputCode` the class id of the data.
class PrecisionString
    : public CharAttrValidator<dfltPrecVal, KORVAN::legacy_two_part::badprecision_mx> {
 public:
  // Reading default: "uint8=>double".
  PrecisionString();
  // Writing default for data of class `dataClass`: "uint8" in the file.
  explicit PrecisionString(kxClassID dataClass);

  // Set `format` from the machine format before parsing: the size values of
  // the 64-bit and non-native forms depend on it. May warn (int12, uint7).
  bool parse(const char* text) override;

  int outputCode;
  int format = 0;
  int64_t repeat = 1;
  int sizeValue = 0;  // bits of a field's container ("bit5in8": 8), else the
                      // file size of a non-native element, else 0
  int inputCode;
  int bitCount = 0;  // bits of a bit field, 0 for whole elements
  bool allowOutputSpec;
  bool starForm = false;  // "*type": output class equals input class
};

// The common rule for a numeric scalar argument. Integer classes give their
// value (a uint64 with the top bit set fails); double and single are
// truncated and succeed only if that changed nothing. NaN sets *isNaN, an
// infinity sets *isInf and gives +1 or -1. Non-numeric or empty: false.
bool numericScalarValue(const kxArray* a, int64_t& out, bool* isNaN = nullptr,
                        bool* isInf = nullptr);

class NumericAttr {
 public:
  virtual ~NumericAttr() = default;
  virtual bool isValid() const { return valid; }
  // Rethrows the stored error; else raises the class's error when invalid.
  virtual void validate() const = 0;

  bool valid = true;
  std::exception_ptr stored;
  int64_t rows = 0;
};

// The size argument of fread: n, Inf, [m n] or [m Inf].
class SizeAttribute : public NumericAttr {
 public:
  SizeAttribute() { rows = 1; }
  void parse(const kxArray* a);
  void validate() const override;
  // For "noconvert" reads: one row, the columns counted in elements of
  // `elementBytes`. Raises kxErrMsg(39) when the count can't be held.
  void adjustForNoConvert(size_t elementBytes);

  int64_t columns = 0;
  bool isMatrix = false;
  bool unbounded = true;  // read to the end of the file
};

// The skip argument of fread and fwrite: a count of bytes (bits for bit
// fields) to pass between groups of elements.
class SkipAttribute : public NumericAttr {
 public:
  void parse(const kxArray* a);
  void validate() const override;
};

}  // namespace Tarnwicks::FileIO

// Typed views of array data, the host's conversions between classes, machine
// formats and the number reader.
#pragma once

#include <cstddef>
#include <cstdint>

#include "twhost/export.h"
#include "twhost/kx_array.h"

// A typed, borrowed view of an array's real data or of a raw block.
class TW_HOST KxData {
 public:
  explicit KxData(const kxArray* a);
  KxData(kxClassID cls, const void* data);

  kxClassID classId() const { return cls_; }
  const void* data() const { return data_; }
  // False only for a NaN or an infinity; integer, logical and char elements
  // are always finite.
  bool indexIsFinite(size_t index) const;
  // The element as a double (int64 and uint64 above 2^53 round).
  double asDouble(size_t index) const;

 private:
  kxClassID cls_;
  const void* data_;
};

// Converts `count` elements into `dst` of class `dstClass`. Floating values
// going to an integer class round half away from zero, NaN becomes 0, and
// what is out of range saturates at the class bounds; logical takes 0 or 1
// (any non-zero, NaN included, is 1); char takes the value as a UTF-16 code,
// saturated. A source of class 0 (kxUNKNOWN_CLASS) is raw bytes copied as they
// stand into elements of dstClass.
TW_HOST void AssignToVoidBuffer(kxClassID dstClass, void* dst, const KxData& src, size_t count);
TW_HOST void AssignToVoidBuffer(kxClassID dstClass, void* dst, kxClassID srcClass, const void* src,
                                size_t count);

// Machine formats. The list: 0 "ieee-le", 1 "ieee-be", 2 to 4 reserved (no
// text selects them), 5 "ieee-le.l64", 6 "ieee-be.l64", 7 none.
TW_HOST int utGetDataSizeType();
TW_HOST int utGetNumDataSizeTypes();
TW_HOST const char* utGetDataSizeTypeName(int index);
// 1 for the big-endian formats, 0 for the others.
TW_HOST int utGetDataEndianType(int format);
// Bytes an element of precision code 1..13 takes in a file of the given
// machine format.
TW_HOST int utDconvertSize(int format, int code);
// True for the signed integer codes (3 to 6) and the floating codes.
TW_HOST bool utDconvertSign(int code);
TW_HOST bool utSignBit(double v);

// Floating-point control context for ut_strtod; it carries nothing today
// because the reader always rounds to nearest.
struct utFpcContext {};
TW_HOST utFpcContext* utGetFpcContext();
// Locale-independent, correctly rounded text to double, with strtod's
// contract: leading blanks, sign, decimal or hexadecimal digits, "inf",
// "infinity", "nan"; *end is where the reading stopped (s when nothing was
// read). Overflow gives +-HUGE_VAL and sets errno to ERANGE.
TW_HOST double ut_strtod(const char* s, char** end, utFpcContext* ctx = nullptr);
// Seconds since the epoch, with a fraction.
TW_HOST double utWallClock();

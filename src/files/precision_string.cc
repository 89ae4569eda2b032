// Precisions: "int16", "3*uint8=>double", "*char", "ubit5", "bit5in8", and
// the table of precision codes shared by fread, fwrite and OutputBuffer.
#include <cstdlib>
#include <cstring>

#include "fileio/attributes.h"
#include "twhost/errors.h"
#include "twhost/kx_data.h"

namespace Tarnwicks::FileIO {

namespace {

struct CodeInfo {
  kxClassID cls;
  size_t bytes;
};
constexpr CodeInfo kCodes[14] = {
    {kxUNKNOWN_CLASS, 0}, {kxLOGICAL_CLASS, 1}, {kxCHAR_CLASS, 2},   {kxINT8_CLASS, 1},
    {kxINT16_CLASS, 2},   {kxINT32_CLASS, 4},   {kxINT64_CLASS, 8},  {kxUINT8_CLASS, 1},
    {kxUINT16_CLASS, 2},  {kxUINT32_CLASS, 4},  {kxUINT64_CLASS, 8}, {kxSINGLE_CLASS, 4},
    {kxDOUBLE_CLASS, 8},  {kxUNKNOWN_CLASS, 0},
};

struct NamedCode {
  const char* name;
  int code;
};

// Names whose width follows the C types of the file's machine. "long" is
// always 32 bits wide.
constexpr NamedCode kCNames[] = {
    {"bool", 1},       {"logical", 1},       {"char", 2},    {"char*1", 2},
    {"schar", 3},      {"signed char", 3},   {"short", 4},   {"int", 5},
    {"long", 5},       {"float", 11},        {"single", 11}, {"double", 12},
    {"uchar", 7},      {"unsigned char", 7}, {"ushort", 8},  {"unsigned short", 8},
    {"uint", 9},       {"unsigned int", 9},  {"ulong", 9},   {"unsigned long", 9},
    {"noconvert", 13},
};

constexpr NamedCode kFixedNames[] = {
    {"int8", 3},      {"int16", 4},     {"int32", 5},     {"int64", 6},
    {"uint8", 7},     {"uint16", 8},    {"uint32", 9},    {"uint64", 10},
    {"integer*1", 3}, {"integer*2", 4}, {"integer*4", 5}, {"integer*8", 6},
    {"float32", 11},  {"float64", 12},  {"real*4", 11},   {"real*8", 12},
};

// The text starts with `name`, and the name ends the text or is followed by
// "=". Gives the position after the name.
const char* matchName(const char* text, const char* name) {
  size_t n = std::strlen(name);
  if (std::strncmp(text, name, n) != 0) return nullptr;
  char next = text[n];
  return next == '\0' || next == '=' ? text + n : nullptr;
}

// 64-bit elements are read and written in the l64 form of the file's byte
// order.
int wideFormat(int format) {
  if (format == 5 || format == 6) return format;
  return utGetDataEndianType(format) == 1 ? 6 : 5;
}

int codeByWidth(long bits, bool isSigned) {
  if (bits <= 8) return isSigned ? 3 : 7;
  if (bits <= 16) return isSigned ? 4 : 8;
  if (bits <= 32) return isSigned ? 5 : 9;
  return isSigned ? 6 : 10;
}

// The type lookup: a name from the tables, or a bit form. `format` may be
// changed to the l64 form for 64-bit types. Returns where the lookup
// stopped, or null for no match.
const char* lookupType(const char* text, int& format, int& code, int& bitCount, int& sizeValue) {
  const int native = utGetDataSizeType();
  for (const NamedCode& e : kCNames) {
    if (const char* end = matchName(text, e.name)) {
      code = e.code;
      bitCount = 0;
      sizeValue = format == native ? 0 : utDconvertSize(format, code);
      return end;
    }
  }
  for (const NamedCode& e : kFixedNames) {
    if (const char* end = matchName(text, e.name)) {
      code = e.code;
      bitCount = 0;
      if (code == kPrecInt64 || code == kPrecUint64) format = wideFormat(format);
      sizeValue = format == native ? 0 : utDconvertSize(format, code);
      return end;
    }
  }
  struct BitForm {
    const char* letters;
    bool isSigned;
    const char* warning;  // the integer spellings work, but are discouraged
  };
  static constexpr BitForm kBitForms[] = {{"bit", true, nullptr},
                                          {"int", true, "InvalidIntPrecision"},
                                          {"ubit", false, nullptr},
                                          {"uint", false, "InvalidUIntPrecision"}};
  for (const BitForm& f : kBitForms) {
    size_t len = std::strlen(f.letters);
    if (std::strncmp(text, f.letters, len) != 0) continue;
    char* end = nullptr;
    long n = std::strtol(text + len, &end, 10);
    if (*end == '\0' || *end == '=') {
      if (n < 1 || n > 64) return nullptr;
      if (n > 32) format = wideFormat(format);
      code = codeByWidth(n, f.isSigned);
      bitCount = static_cast<int>(n);
      sizeValue = 0;
    } else if (end[0] == 'i' && end[1] == 'n') {
      long m = std::strtol(end + 2, &end, 10);
      if (!(*end == '\0' || *end == '=')) return nullptr;
      if (m < 1 || m > 64 || n > m || n < 1) return nullptr;
      code = codeByWidth(m, f.isSigned);
      bitCount = static_cast<int>(n);
      sizeValue = static_cast<int>(m);
    } else {
      return nullptr;
    }
    if (f.warning) kxWarningMsgId(kxMsg("KORVAN:FileIO", f.warning));
    return end;
  }
  return nullptr;
}

const char* skipSpaces(const char* p) {
  while (*p == ' ') ++p;
  return p;
}

}  // namespace

kxClassID precisionClass(int code) {
  return code >= 1 && code <= 13 ? kCodes[code].cls : kxUNKNOWN_CLASS;
}

size_t precisionBytes(int code) {
  return code >= 1 && code <= 13 ? kCodes[code].bytes : 0;
}

int precisionCodeOfClass(kxClassID cls) {
  for (int code = 1; code <= 12; ++code) {
    if (kCodes[code].cls == cls) return code;
  }
  return 0;
}

PrecisionString::PrecisionString()
    : outputCode(kPrecDouble), inputCode(kPrecUint8), allowOutputSpec(true) {}

PrecisionString::PrecisionString(kxClassID dataClass)
    : outputCode(kPrecUint8), inputCode(dataClass), allowOutputSpec(false) {}

bool PrecisionString::parse(const char* text) {
  value = text;
  repeat = 1;
  starForm = false;
  const char* p = text;
  char* stop = nullptr;
  if (*p == '*') {
    // "*type": the result keeps the type read. No count may follow the star.
    starForm = true;
    p = skipSpaces(p + 1);
    std::strtol(p, &stop, 10);
    if (*stop == '*' || *stop != *p) return false;
  } else {
    long n = std::strtol(p, &stop, 10);
    if (*stop == '*') {
      if (n < 1 || n > 0x7fffffff) return false;
      repeat = n;
      p = skipSpaces(stop + 1);
    } else if (*stop != *p) {
      return false;
    }
  }

  if (!allowOutputSpec) {
    // fwrite: the one type names the elements in the file.
    const char* end = lookupType(p, format, outputCode, bitCount, sizeValue);
    return end != nullptr && *end == '\0';
  }

  const char* end = lookupType(p, format, inputCode, bitCount, sizeValue);
  if (end == nullptr) return false;
  if (*end == '\0') {
    outputCode = starForm ? inputCode : kPrecDouble;
    return true;
  }
  if (starForm || end[0] != '=' || end[1] != '>') return false;

  int outFormat = format, code = 0, b = 0, c = 0;
  const char* outEnd = lookupType(skipSpaces(end + 2), outFormat, code, b, c);
  // An output type that isn't understood leaves the result double: old
  // scripts rely on this leniency.
  if (outEnd == nullptr || *outEnd != '\0') return true;
  outputCode = code;
  // The output must be a whole class: bit fields other than the widths of
  // the integer classes are refused.
  if ((b == 0 && (c < 3 || c == 4)) || (b == 8 && (c == 0 || c == 1)) ||
      (b == 16 && (c == 0 || c == 2)) || (b == 32 && (c == 0 || c == 4))) {
    return true;
  }
  return outputCode == kPrecDouble || (b == 0 && c == 8) || (b == 64 && (c == 0 || c == 8));
}

}  // namespace Tarnwicks::FileIO

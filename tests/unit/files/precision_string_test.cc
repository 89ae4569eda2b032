// Precisions: every name of both tables, the bit forms, counts, the star
// form and the output part, for reading and for writing.
#include <string>

#include "fileio/attributes.h"
#include "files_test_support.h"
#include "twhost/kx_data.h"

namespace {

using namespace Tarnwicks::FileIO;

struct Parsed {
  bool ok;
  int inputCode, outputCode, bitCount, sizeValue;
  int64_t repeat;
  int format;
};

Parsed parseRead(const char* text, int format = 0) {
  PrecisionString p;
  p.format = format;
  bool ok = p.parse(text);
  return {ok, p.inputCode, p.outputCode, p.bitCount, p.sizeValue, p.repeat, p.format};
}

struct NameCase {
  const char* name;
  int code;
};

// Every type name, alone: read as that code into double, native and not.
TEST(PrecisionNames, EveryNameOfBothTables) {
  const NameCase names[] = {
      {"bool", 1},       {"logical", 1},       {"char", 2},      {"char*1", 2},
      {"schar", 3},      {"signed char", 3},   {"short", 4},     {"int", 5},
      {"long", 5},       {"float", 11},        {"single", 11},   {"double", 12},
      {"uchar", 7},      {"unsigned char", 7}, {"ushort", 8},    {"unsigned short", 8},
      {"uint", 9},       {"unsigned int", 9},  {"ulong", 9},     {"unsigned long", 9},
      {"noconvert", 13}, {"int8", 3},          {"int16", 4},     {"int32", 5},
      {"int64", 6},      {"uint8", 7},         {"uint16", 8},    {"uint32", 9},
      {"uint64", 10},    {"integer*1", 3},     {"integer*2", 4}, {"integer*4", 5},
      {"integer*8", 6},  {"float32", 11},      {"float64", 12},  {"real*4", 11},
      {"real*8", 12},
  };
  for (const NameCase& n : names) {
    Parsed r = parseRead(n.name);
    EXPECT_TRUE(r.ok) << n.name;
    EXPECT_EQ(r.inputCode, n.code) << n.name;
    EXPECT_EQ(r.outputCode, 12) << n.name;
    EXPECT_EQ(r.bitCount, 0) << n.name;
    EXPECT_EQ(r.repeat, 1) << n.name;
    bool wide = n.code == 6 || n.code == 10;
    // 64-bit integers always take the l64 form of the byte order.
    EXPECT_EQ(r.format, wide ? 5 : 0) << n.name;
    EXPECT_EQ(r.sizeValue, wide ? 8 : 0) << n.name;

    Parsed big = parseRead(n.name, 1);
    EXPECT_EQ(big.format, wide ? 6 : 1) << n.name;
    EXPECT_EQ(big.sizeValue, utDconvertSize(big.format, n.code)) << n.name;

    Parsed star = parseRead(("*" + std::string(n.name)).c_str());
    EXPECT_TRUE(star.ok) << n.name;
    EXPECT_EQ(star.outputCode, n.code) << n.name;
  }
}

struct FormCase {
  const char* text;
  bool ok;
  int inputCode, outputCode, bitCount, sizeValue;
  int64_t repeat;
};

class PrecisionForms : public ::testing::TestWithParam<FormCase> {};

TEST_P(PrecisionForms, Read) {
  const FormCase& c = GetParam();
  files_test::CaughtWarnings quiet;
  Parsed r = parseRead(c.text);
  ASSERT_EQ(r.ok, c.ok) << c.text;
  if (!c.ok) return;
  EXPECT_EQ(r.inputCode, c.inputCode) << c.text;
  EXPECT_EQ(r.outputCode, c.outputCode) << c.text;
  EXPECT_EQ(r.bitCount, c.bitCount) << c.text;
  EXPECT_EQ(r.sizeValue, c.sizeValue) << c.text;
  EXPECT_EQ(r.repeat, c.repeat) << c.text;
}

INSTANTIATE_TEST_SUITE_P(
    Forms, PrecisionForms,
    ::testing::Values(
        FormCase{"uint8=>double", true, 7, 12, 0, 0, 1}, FormCase{"*uint8", true, 7, 7, 0, 0, 1},
        FormCase{"*uint8=>double", false, 0, 0, 0, 0, 0},
        FormCase{"3*uint8=>double", true, 7, 12, 0, 0, 3},
        FormCase{"3* uint8", true, 7, 12, 0, 0, 3}, FormCase{"0*uint8", false, 0, 0, 0, 0, 0},
        FormCase{"2147483648*uint8", false, 0, 0, 0, 0, 0},
        FormCase{"2147483647*uint8", true, 7, 12, 0, 0, 2147483647},
        FormCase{"*3uint8", false, 0, 0, 0, 0, 0}, FormCase{"3uint8", false, 0, 0, 0, 0, 0},
        FormCase{"int16=>int16", true, 4, 4, 0, 0, 1}, FormCase{"int16=>char", true, 4, 2, 0, 0, 1},
        FormCase{"uint8=> single", true, 7, 11, 0, 0, 1},
        FormCase{"uint8=>nonsense", true, 7, 12, 0, 0, 1},
        FormCase{"uint8=>int8x", true, 7, 12, 0, 0, 1},
        FormCase{"uint8=>ubit3", false, 0, 0, 0, 0, 0},
        FormCase{"uint8=>bit8", true, 7, 3, 0, 0, 1},
        FormCase{"uint8=>ubit64", true, 7, 10, 0, 0, 1},
        FormCase{"uint8=>int64", true, 7, 6, 0, 0, 1},
        FormCase{"uint8->double", false, 0, 0, 0, 0, 0}, FormCase{"uint8=", false, 0, 0, 0, 0, 0},
        FormCase{"nonsense", false, 0, 0, 0, 0, 0}, FormCase{"", false, 0, 0, 0, 0, 0},
        FormCase{"uint8 ", false, 0, 0, 0, 0, 0}, FormCase{"UINT8", false, 0, 0, 0, 0, 0},
        FormCase{"ubit3", true, 7, 12, 3, 0, 1}, FormCase{"bit12", true, 4, 12, 12, 0, 1},
        FormCase{"bit5in8", true, 3, 12, 5, 8, 1}, FormCase{"ubit12in16", true, 8, 12, 12, 16, 1},
        FormCase{"ubit1", true, 7, 12, 1, 0, 1}, FormCase{"bit8", true, 3, 12, 8, 0, 1},
        FormCase{"bit9", true, 4, 12, 9, 0, 1}, FormCase{"ubit17", true, 9, 12, 17, 0, 1},
        FormCase{"ubit33", true, 10, 12, 33, 0, 1}, FormCase{"bit64", true, 6, 12, 64, 0, 1},
        FormCase{"ubit0", false, 0, 0, 0, 0, 0}, FormCase{"ubit65", false, 0, 0, 0, 0, 0},
        FormCase{"bit", false, 0, 0, 0, 0, 0}, FormCase{"bit9in8", false, 0, 0, 0, 0, 0},
        FormCase{"bit5in65", false, 0, 0, 0, 0, 0}, FormCase{"bit5in", false, 0, 0, 0, 0, 0},
        FormCase{"bit5x", false, 0, 0, 0, 0, 0}, FormCase{"4*ubit3", true, 7, 12, 3, 0, 4},
        FormCase{"*ubit3", true, 7, 7, 3, 0, 1}, FormCase{"int12", true, 4, 12, 12, 0, 1},
        FormCase{"uint7", true, 7, 12, 7, 0, 1}));

TEST(PrecisionWarnings, IntegerSpellingsOfBitFieldsWarn) {
  files_test::CaughtWarnings caught;
  EXPECT_TRUE(parseRead("int12").ok);
  EXPECT_TRUE(parseRead("uint7").ok);
  EXPECT_TRUE(parseRead("bit12").ok);
  EXPECT_EQ(caught.ids(), (std::vector<std::string>{"KORVAN:FileIO:InvalidIntPrecision",
                                                    "KORVAN:FileIO:InvalidUIntPrecision"}));
}

TEST(PrecisionWrite, TypeInTheFileAndClassOfTheData) {
  struct Case {
    const char* text;
    bool ok;
    int outputCode, bitCount;
  };
  const Case cases[] = {
      {"uint8", true, 7, 0},          {"int16", true, 4, 0},     {"double", true, 12, 0},
      {"ubit3", true, 7, 3},          {"bit12", true, 4, 12},    {"char", true, 2, 0},
      {"uint8=>double", false, 0, 0}, {"nonsense", false, 0, 0}, {"2*uint8", true, 7, 0}};
  for (const Case& c : cases) {
    PrecisionString p(kxINT32_CLASS);
    EXPECT_EQ(p.parse(c.text), c.ok) << c.text;
    EXPECT_EQ(p.inputCode, kxINT32_CLASS) << c.text;
    if (!c.ok) continue;
    EXPECT_EQ(p.outputCode, c.outputCode) << c.text;
    EXPECT_EQ(p.bitCount, c.bitCount) << c.text;
  }
}

TEST(PrecisionDefaults, ReadingAndWriting) {
  PrecisionString read;
  EXPECT_EQ(read.inputCode, 7);
  EXPECT_EQ(read.outputCode, 12);
  EXPECT_TRUE(read.allowOutputSpec);
  EXPECT_EQ(read.value, "uchar");
  PrecisionString write(kxDOUBLE_CLASS);
  EXPECT_EQ(write.outputCode, 7);
  EXPECT_EQ(write.inputCode, kxDOUBLE_CLASS);
  EXPECT_FALSE(write.allowOutputSpec);
}

TEST(PrecisionTable, ClassesAndBytesOfEveryCode) {
  const kxClassID classes[] = {kxLOGICAL_CLASS, kxCHAR_CLASS,   kxINT8_CLASS,   kxINT16_CLASS,
                               kxINT32_CLASS,   kxINT64_CLASS,  kxUINT8_CLASS,  kxUINT16_CLASS,
                               kxUINT32_CLASS,  kxUINT64_CLASS, kxSINGLE_CLASS, kxDOUBLE_CLASS};
  const size_t bytes[] = {1, 2, 1, 2, 4, 8, 1, 2, 4, 8, 4, 8};
  for (int code = 1; code <= 12; ++code) {
    EXPECT_EQ(precisionClass(code), classes[code - 1]) << code;
    EXPECT_EQ(precisionBytes(code), bytes[code - 1]) << code;
    EXPECT_EQ(precisionCodeOfClass(classes[code - 1]), code) << code;
  }
  EXPECT_EQ(precisionClass(13), kxUNKNOWN_CLASS);
  EXPECT_EQ(precisionBytes(13), 0u);
  EXPECT_EQ(precisionClass(0), kxUNKNOWN_CLASS);
}

}  // namespace

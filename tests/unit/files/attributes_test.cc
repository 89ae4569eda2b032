// Permission, machine format, size and skip attributes: every form the
// parsers accept, and the error each refusal reports at validate().
#include "fileio/attributes.h"

#include <cmath>
#include <limits>

#include "files_test_support.h"
#include "twhost/kx_data.h"

namespace {

using namespace Tarnwicks::FileIO;
using files_test::raisedBy;

struct PermissionCase {
  const char* text;
  const char* error;  // "" when good
  bool read, write, append, update, autoFlush;
  const char* cMode;
  const char* shown;  // what fopen(fid) reports
};

PermissionCase refused(const char* text, const char* error) {
  return {text, error, false, false, false, false, false, "", ""};
}

class Permissions : public ::testing::TestWithParam<PermissionCase> {};

TEST_P(Permissions, ParseAndValidate) {
  const PermissionCase& c = GetParam();
  FilePermission p;
  kxOwned text(kxCreateString(c.text));
  p.load(text.get());
  EXPECT_EQ(raisedBy([&] { p.validate(); }), c.error) << c.text;
  if (*c.error) return;
  EXPECT_EQ(p.read, c.read) << c.text;
  EXPECT_EQ(p.write, c.write) << c.text;
  EXPECT_EQ(p.append, c.append) << c.text;
  EXPECT_EQ(p.update, c.update) << c.text;
  EXPECT_EQ(p.autoFlush, c.autoFlush) << c.text;
  EXPECT_STREQ(p.cMode, c.cMode) << c.text;
  EXPECT_EQ(p.value, c.shown) << c.text;
}

const char* kBadPerm = "KORVAN:legacy_two_part:badpermission_mx";
const char* kBadMode = "KORVAN:fopen:IncorrectFileMode";
const char* kConflict = "KORVAN:fopen:ConflictingExclusiveFileModes";

INSTANTIATE_TEST_SUITE_P(
    AllForms, Permissions,
    ::testing::Values(PermissionCase{"r", "", true, false, false, false, true, "rb", "r"},
                      PermissionCase{"w", "", false, true, false, false, true, "wb", "w"},
                      PermissionCase{"a", "", false, false, true, false, true, "ab", "a"},
                      PermissionCase{"r+", "", true, false, false, true, true, "r+b", "r+"},
                      PermissionCase{"w+", "", false, true, false, true, true, "w+b", "w+"},
                      PermissionCase{"a+", "", false, false, true, true, true, "a+b", "a+"},
                      PermissionCase{"W", "", false, true, false, false, false, "wb", "W"},
                      PermissionCase{"A", "", false, false, true, false, false, "ab", "A"},
                      PermissionCase{"rb", "", true, false, false, false, true, "rb", "rb"},
                      PermissionCase{"rt", "", true, false, false, false, true, "rb", "r"},
                      PermissionCase{"wt+", "", false, true, false, true, true, "w+b", "w+"},
                      refused("rw", kConflict), refused("ra", kConflict), refused("wA", kConflict),
                      refused("rz", kBadMode), refused("r x", kBadMode), refused("z", kBadPerm),
                      refused("", kBadPerm), refused("+r", kBadPerm), refused("b", kBadPerm),
                      refused("R", kBadPerm)));

TEST(PermissionTest, NonCharArgumentIsBadPermission) {
  FilePermission p;
  kxOwned five(kxCreateDoubleScalar(5));
  p.load(five.get());
  EXPECT_EQ(raisedBy([&] { p.validate(); }), kBadPerm);
}

TEST(PermissionTest, DefaultIsReadWithAutomaticFlush) {
  FilePermission p;
  EXPECT_TRUE(p.read);
  EXPECT_TRUE(p.autoFlush);
  EXPECT_STREQ(p.cMode, "rb");
  EXPECT_EQ(p.value, "r");
  EXPECT_EQ(raisedBy([&] { p.validate(); }), "");
}

struct FormatCase {
  const char* text;
  int format;  // -1: refused
};

class MachineFormats : public ::testing::TestWithParam<FormatCase> {};

TEST_P(MachineFormats, Parse) {
  const FormatCase& c = GetParam();
  MachineFormat m;
  kxOwned text(kxCreateString(c.text));
  m.load(text.get());
  const int none = utGetNumDataSizeTypes() - 1;
  if (c.format < 0) {
    EXPECT_FALSE(m.valid) << c.text;
    EXPECT_EQ(m.format, none) << c.text;
    EXPECT_EQ(raisedBy([&] { m.validate(); }), "KORVAN:legacy_two_part:badmachformat_mx");
  } else {
    EXPECT_TRUE(m.valid) << c.text;
    EXPECT_EQ(m.format, c.format) << c.text;
  }
}

INSTANTIATE_TEST_SUITE_P(
    AllForms, MachineFormats,
    ::testing::Values(FormatCase{"n", 0}, FormatCase{"N", 0}, FormatCase{"native", 0},
                      FormatCase{"NATIVE", 0}, FormatCase{"l", 0}, FormatCase{"L", 0},
                      FormatCase{"b", 1}, FormatCase{"B", 1}, FormatCase{"a", 5},
                      FormatCase{"s", 6}, FormatCase{"ieee-le", 0}, FormatCase{"IEEE-LE", 0},
                      FormatCase{"ieee-be", 1}, FormatCase{"ieee-le.l64", 5},
                      FormatCase{"ieee-be.l64", 6}, FormatCase{"", -1}, FormatCase{" ", -1},
                      FormatCase{"x", -1}, FormatCase{"c", -1}, FormatCase{"ieee", -1},
                      FormatCase{"ieee-le ", -1}, FormatCase{"vaxd", -1}));

TEST(MachineFormatTest, DefaultIsNativeAndValid) {
  MachineFormat m;
  EXPECT_TRUE(m.valid);
  EXPECT_EQ(m.format, utGetDataSizeType());
  EXPECT_EQ(m.messageNumber, 34);
}

// ---- numbers -----------------------------------------------------------------

kxOwned row(std::initializer_list<double> values) {
  kxOwned a(kxCreateDoubleMatrix(1, values.size(), kxREAL));
  size_t i = 0;
  for (double v : values) kxGetPr(a.get())[i++] = v;
  return a;
}

TEST(NumericScalarTest, CommonRule) {
  const double inf = std::numeric_limits<double>::infinity();
  struct Case {
    kxOwned array;
    bool result;
    int64_t value;
    bool nan, isInf;
  };
  kxOwned i8(kxCreateNumericMatrix(1, 1, kxINT8_CLASS, kxREAL));
  *static_cast<int8_t*>(kxGetData(i8.get())) = -7;
  kxOwned u64(kxCreateNumericMatrix(1, 1, kxUINT64_CLASS, kxREAL));
  *static_cast<uint64_t*>(kxGetData(u64.get())) = uint64_t(1) << 63;
  kxOwned single(kxCreateNumericMatrix(1, 1, kxSINGLE_CLASS, kxREAL));
  *static_cast<float*>(kxGetData(single.get())) = 2.5f;
  std::vector<Case> cases;
  cases.push_back({row({3}), true, 3, false, false});
  cases.push_back({row({3.5}), false, 3, false, false});
  cases.push_back({row({-2.5}), false, -2, false, false});
  cases.push_back({row({NAN}), false, 0, true, false});
  cases.push_back({row({inf}), false, 1, false, true});
  cases.push_back({row({-inf}), false, -1, false, true});
  cases.push_back({row({1e300}), true, std::numeric_limits<int64_t>::max(), false, false});
  cases.push_back({std::move(i8), true, -7, false, false});
  cases.push_back({std::move(single), false, 2, false, false});
  for (auto& c : cases) {
    int64_t v = 99;
    bool nan = false, isInf = false;
    EXPECT_EQ(numericScalarValue(c.array.get(), v, &nan, &isInf), c.result);
    EXPECT_EQ(v, c.value);
    EXPECT_EQ(nan, c.nan);
    EXPECT_EQ(isInf, c.isInf);
  }
  int64_t v = 0;
  EXPECT_FALSE(numericScalarValue(u64.get(), v));
  kxOwned empty(kxCreateDoubleMatrix(0, 0, kxREAL));
  EXPECT_FALSE(numericScalarValue(empty.get(), v));
  kxOwned text(kxCreateString("3"));
  EXPECT_FALSE(numericScalarValue(text.get(), v));
  kxOwned flag(kxCreateLogicalScalar(true));
  EXPECT_FALSE(numericScalarValue(flag.get(), v));
}

struct SizeCase {
  std::vector<double> dims;  // a row of these values
  const char* error;
  int64_t rows, columns;
  bool unbounded, isMatrix;
};

SizeCase badSize(std::vector<double> dims);

class Sizes : public ::testing::TestWithParam<SizeCase> {};

TEST_P(Sizes, Parse) {
  const SizeCase& c = GetParam();
  kxOwned a(kxCreateDoubleMatrix(c.dims.empty() ? 0 : 1, c.dims.size(), kxREAL));
  for (size_t i = 0; i < c.dims.size(); ++i) kxGetPr(a.get())[i] = c.dims[i];
  SizeAttribute s;
  s.parse(a.get());
  EXPECT_EQ(raisedBy([&] { s.validate(); }), c.error);
  if (*c.error) return;
  EXPECT_EQ(s.rows, c.rows);
  EXPECT_EQ(s.columns, c.columns);
  EXPECT_EQ(s.unbounded, c.unbounded);
  EXPECT_EQ(s.isMatrix, c.isMatrix);
}

const double kInf = std::numeric_limits<double>::infinity();
const char* kBadSize = "KORVAN:legacy_two_part:badsize_mx";

SizeCase badSize(std::vector<double> dims) {
  return {std::move(dims), kBadSize, 0, 0, false, false};
}

INSTANTIATE_TEST_SUITE_P(
    AllForms, Sizes,
    ::testing::Values(SizeCase{{5}, "", 5, 1, false, false}, SizeCase{{0}, "", 0, 0, false, false},
                      SizeCase{{2.5}, "", 3, 1, false, false},
                      SizeCase{{281474976710655.0}, "", 281474976710655, 1, false, false},
                      SizeCase{{281474976710656.0}, "", 1, 0, true, false},
                      SizeCase{{kInf}, "", 1, 0, true, false},
                      SizeCase{{2, 3}, "", 2, 3, false, true},
                      SizeCase{{2, kInf}, "", 2, 0, true, true},
                      SizeCase{{0, kInf}, "", 0, 0, false, true}, badSize({kInf, 2}),
                      badSize({NAN}), badSize({-1}), badSize({2, -1}), badSize({2, NAN}),
                      badSize({}), badSize({1, 2, 3}), badSize({281474976710655.0, 2})));

TEST(SizeTest, NonNumericAndColumnShapes) {
  SizeAttribute s;
  kxOwned text(kxCreateString("5"));
  s.parse(text.get());
  EXPECT_EQ(raisedBy([&] { s.validate(); }), "KORVAN:FileIO:sizeMustBeNumeric");
  kxOwned column(kxCreateDoubleMatrix(2, 1, kxREAL));
  s.parse(column.get());
  EXPECT_EQ(raisedBy([&] { s.validate(); }), kBadSize);
  kxOwned i16(kxCreateNumericMatrix(1, 1, kxINT16_CLASS, kxREAL));
  *static_cast<int16_t*>(kxGetData(i16.get())) = 7;
  s.parse(i16.get());
  EXPECT_EQ(s.rows, 7);
  EXPECT_EQ(s.columns, 1);
}

TEST(SizeTest, NoConvertCountsElementsOfTheSize) {
  SizeAttribute s;
  kxOwned a = row({3, 5});
  s.parse(a.get());
  s.adjustForNoConvert(4);  // 15 bytes in elements of 4: 4 elements
  EXPECT_EQ(s.rows, 1);
  EXPECT_EQ(s.columns, 4);
  SizeAttribute all;
  all.adjustForNoConvert(8);
  EXPECT_EQ(all.rows, 1);
  EXPECT_TRUE(all.unbounded);
}

TEST(SkipTest, OnlyWholeNonNegativeNumbers) {
  struct Case {
    kxOwned a;
    bool valid;
    int64_t rows;
  };
  std::vector<Case> cases;
  cases.push_back({row({0}), true, 0});
  cases.push_back({row({8193}), true, 8193});
  cases.push_back({row({1.5}), false, 0});
  cases.push_back({row({-1}), false, 0});
  cases.push_back({row({NAN}), false, 0});
  cases.push_back({row({kInf}), false, 0});
  cases.push_back({kxOwned(kxCreateDoubleMatrix(0, 0, kxREAL)), false, 0});
  cases.push_back({kxOwned(kxCreateString("2")), false, 0});
  for (auto& c : cases) {
    SkipAttribute s;
    s.parse(c.a.get());
    EXPECT_EQ(s.valid, c.valid);
    EXPECT_EQ(s.rows, c.rows);
    EXPECT_EQ(raisedBy([&] { s.validate(); }), c.valid ? "" : "KORVAN:legacy_two_part:badskip_mx");
  }
}

}  // namespace

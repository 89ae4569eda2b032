// The console form of values: headers, aligned columns, nesting, and the
// short and long forms of numbers.
#include "display.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "value.h"

namespace tw {
namespace {

const DisplayOptions kLong{NumberFormat::Long, 80};

kxArray* matrix(size_t m, size_t n, std::initializer_list<double> columnMajor) {
  kxArray* a = kxCreateDoubleMatrix(m, n, kxREAL);
  size_t i = 0;
  for (double v : columnMajor) kxGetPr(a)[i++] = v;
  return a;
}

kxArray* row(std::initializer_list<double> values) {
  return matrix(1, values.size(), values);
}

TEST(Display, ScalarsInlineWithTheClassWhenNotDouble) {
  kxOwned d(kxCreateDoubleScalar(2.5));
  EXPECT_EQ(displayText("x", d.get()), "x = 2.5000\n");
  kxOwned i(kxMustBe(d.get(), kxINT8_CLASS));
  EXPECT_EQ(displayText("x", i.get()), "x = 3 (int8)\n");
  kxOwned b(kxCreateLogicalScalar(true));
  EXPECT_EQ(displayText("b", b.get()), "b = 1 (logical)\n");
}

TEST(Display, ColumnsAreRightAlignedToOneWidth) {
  kxOwned m(matrix(2, 2, {1, -100, 0.5, NAN}));
  EXPECT_EQ(displayText("m", m.get()),
            "m = 2x2 double\n"
            "       1.0000      0.5000\n"
            "    -100.0000         NaN\n");
  EXPECT_EQ(displayText("m", m.get(), kLong),
            "m = 2x2 double\n"
            "       1    0.5\n"
            "    -100    NaN\n");
}

TEST(Display, ShortAndLongFormsOfScalars) {
  struct Case {
    double value;
    const char* shortForm;
    const char* longForm;
  };
  const Case cases[] = {
      {M_PI, "3.1416", "3.141592653589793"},
      {-0.5, "-0.5000", "-0.5"},
      {7, "7", "7"},
      {-0.0, "0", "0"},
      {123456.789, "1.2346e+05", "123456.789"},
      {0.0001234, "1.2340e-04", "0.0001234"},
      {99999.5, "99999.5000", "99999.5"},
      {12345678901.0, "1.2346e+10", "12345678901"},
      {1e20, "1.0000e+20", "1e+20"},
      {NAN, "NaN", "NaN"},
      {-INFINITY, "-Inf", "-Inf"},
  };
  for (const Case& c : cases) {
    kxOwned v(kxCreateDoubleScalar(c.value));
    EXPECT_EQ(dispText(v.get()), std::string(c.shortForm) + "\n") << c.longForm;
    EXPECT_EQ(dispText(v.get(), kLong), std::string(c.longForm) + "\n") << c.longForm;
  }
}

TEST(Display, SinglesAndIntegerClassesInBothForms) {
  kxOwned d(kxCreateDoubleScalar(0.1));
  kxOwned s(kxMustBe(d.get(), kxSINGLE_CLASS));
  EXPECT_EQ(displayText("s", s.get()), "s = 0.1000 (single)\n");
  EXPECT_EQ(displayText("s", s.get(), kLong), "s = 0.1 (single)\n");
  kxOwned big(kxCreateDoubleScalar(3e9));
  kxOwned i(kxMustBe(big.get(), kxINT32_CLASS));
  EXPECT_EQ(displayText("i", i.get()), "i = 2147483647 (int32)\n");
}

TEST(Display, LargeOrSmallMatricesShareOneFactor) {
  kxOwned big(matrix(2, 2, {1500.25, 3, 2, 4}));
  EXPECT_EQ(displayText("big", big.get()),
            "big = 2x2 double\n"
            "    1.0e+03 *\n"
            "    1.5003   0.0020\n"
            "    0.0030   0.0040\n");
  kxOwned small(row({0.00012, 0.0005}));
  EXPECT_EQ(displayText("small", small.get()),
            "small = 1x2 double\n"
            "    1.0e-04 *\n"
            "    1.2000   5.0000\n");
  // Whole numbers need no factor, however wide.
  kxOwned whole(row({1, 123456789}));
  EXPECT_EQ(displayText("w", whole.get()),
            "w = 1x2 double\n"
            "            1   123456789\n");
}

TEST(Display, MagnitudesTooFarApartForOneFactorTakeExponents) {
  kxOwned wide(row({1e-8, 1, -250}));
  EXPECT_EQ(displayText("wide", wide.get()),
            "wide = 1x3 double\n"
            "     1.0000e-08    1.0000e+00   -2.5000e+02\n");
}

TEST(Display, ColumnsWrapToTheWidthOfTheLine) {
  kxArray* a = kxCreateDoubleMatrix(2, 5, kxREAL);
  for (int k = 0; k < 10; ++k) kxGetPr(a)[k] = k + 10;
  kxOwned m(a);
  // Columns of width 2 with a gap of 3, after an indent of 4: three fit in 20.
  EXPECT_EQ(displayText("m", m.get(), {NumberFormat::Short, 20}),
            "m = 2x5 double\n"
            "    Columns 1 to 3\n"
            "    10   12   14\n"
            "    11   13   15\n"
            "    Columns 4 to 5\n"
            "    16   18\n"
            "    17   19\n");
  kxOwned r(row({1, 2}));
  EXPECT_EQ(displayText("r", r.get(), {NumberFormat::Short, 8}),
            "r = 1x2 double\n"
            "    Column 1\n"
            "    1\n"
            "    Column 2\n"
            "    2\n");
}

TEST(Display, EmptyValuesShowTheirSizeAndClass) {
  kxOwned e(kxCreateDoubleMatrix(0, 0, kxREAL));
  EXPECT_EQ(displayText("e", e.get()), "e = [] (0x0 double)\n");
  kxOwned c(kxCreateCellMatrix(0, 3));
  EXPECT_EQ(displayText("c", c.get()), "c = {} (0x3 cell)\n");
  kxOwned t(kxCreateCharMatrix(1, 0));
  EXPECT_EQ(displayText("t", t.get()), "t = '' (1x0 char)\n");
}

TEST(Display, TextIsQuotedAndCharMatricesGoRowByRow) {
  kxOwned t(kxCreateString("hello"));
  EXPECT_EQ(displayText("t", t.get()), "t = 'hello'\n");
  kxOwned m(kxCreateCharMatrixFromRows({u"ab", u"c"}));
  EXPECT_EQ(displayText("m", m.get()),
            "m = 2x2 char\n"
            "    'ab'\n"
            "    'c '\n");
}

TEST(Display, CellsAndStructsNest) {
  kxOwned c(kxCreateCellMatrix(1, 2));
  kxSetCell(c.get(), 0, kxCreateDoubleScalar(1));
  kxSetCell(c.get(), 1, row({1, 2}));
  const char* names[] = {"inner"};
  kxOwned s(kxCreateStructMatrix(1, 1, 1, names));
  kxSetField(s.get(), 0, "inner", c.release());
  EXPECT_EQ(displayText("s", s.get()),
            "s = 1x1 struct\n"
            "    inner = 1x2 cell\n"
            "        {1,1} = 1\n"
            "        {1,2} = 1x2 double\n"
            "            1   2\n");
}

TEST(Display, PagesOfThreeDimensionalArrays) {
  size_t dims[3] = {1, 2, 2};
  kxOwned a(kxCreateNumericArray(3, dims, kxDOUBLE_CLASS, kxREAL));
  for (int i = 0; i < 4; ++i) kxGetPr(a.get())[i] = i + 1;
  EXPECT_EQ(displayText("a", a.get()),
            "a = 1x2x2 double\n"
            "    (:,:,1)\n"
            "    1   2\n"
            "    (:,:,2)\n"
            "    3   4\n");
}

TEST(Display, ComplexAndSixtyFourBitValuesAreExact) {
  kxOwned z(kxCreateDoubleMatrix(1, 1, kxCOMPLEX));
  kxGetPr(z.get())[0] = 1;
  kxGetPi(z.get())[0] = -0.5;
  EXPECT_EQ(displayText("z", z.get()), "z = 1.0000 - 0.5000i\n");
  EXPECT_EQ(displayText("z", z.get(), kLong), "z = 1 - 0.5i\n");
  kxOwned u(kxCreateNumericMatrix(1, 1, kxUINT64_CLASS, kxREAL));
  static_cast<uint64_t*>(kxGetData(u.get()))[0] = 18446744073709551615ull;
  EXPECT_EQ(displayText("u", u.get()), "u = 18446744073709551615 (uint64)\n");
}

// A datetime column of the instants (high, low), with the format if one
// is given.
kxOwned datetimeOf(const std::vector<std::pair<double, double>>& instants,
                   const char* format = nullptr) {
  kxArray* data = kxCreateDoubleMatrix(instants.size(), 1, kxCOMPLEX);
  for (size_t i = 0; i < instants.size(); ++i) {
    kxGetPr(data)[i] = instants[i].first;
    kxGetPi(data)[i] = instants[i].second;
  }
  kxArray* props = kxCreateStructMatrix(1, 1, 0, nullptr);
  if (format) kxSetField(props, 0, "Format", kxCreateString(format));
  kxSetField(props, 0, "Data", data);
  size_t dims[2] = {instants.size(), 1};
  return kxOwned(kxCreateObjectArray("datetime", 2, dims, props));
}

constexpr double kLeapDayAtOneOhTwo = 951782400000.0 + 3723004;  // 2000-02-29 01:02:03.004

TEST(Display, DatetimesWithoutAFormatAsCalendarTimesInUtc) {
  kxOwned d = datetimeOf({{kLeapDayAtOneOhTwo, 0}, {NAN, 0}});
  EXPECT_EQ(displayText("d", d.get()),
            "d = 2x1 datetime\n"
            "    2000-02-29 01:02:03.004\n"
            "    NaT\n");
}

TEST(Display, DatetimesInTheirOwnFormat) {
  // The low part adds 567 nanoseconds.
  kxOwned d = datetimeOf({{kLeapDayAtOneOhTwo, 0.000567}, {-INFINITY, 0}, {NAN, 0}},
                         "d MMM yyyy, HH:mm:ss.SSSSSSSSS");
  EXPECT_EQ(displayText("d", d.get()),
            "d = 3x1 datetime\n"
            "    29 Feb 2000, 01:02:03.004000567\n"
            "    -Inf\n"
            "    NaT\n");
}

TEST(Display, DispShowsTextPlainAndNumbersWithoutAName) {
  kxOwned t(kxCreateString("plain"));
  EXPECT_EQ(dispText(t.get()), "plain\n");
  kxOwned n(kxCreateDoubleScalar(7));
  EXPECT_EQ(dispText(n.get()), "7\n");
  kxOwned e(kxCreateDoubleMatrix(0, 0, kxREAL));
  EXPECT_EQ(dispText(e.get()), "");
}

}  // namespace
}  // namespace tw

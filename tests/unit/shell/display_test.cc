// The console form of values: headers, aligned columns, nesting.
#include "display.h"

#include <gtest/gtest.h>

#include <cmath>

#include "value.h"

namespace tw {
namespace {

kxArray* row(std::initializer_list<double> values) {
  kxArray* a = kxCreateDoubleMatrix(1, values.size(), kxREAL);
  size_t i = 0;
  for (double v : values) kxGetPr(a)[i++] = v;
  return a;
}

TEST(Display, ScalarsInlineWithTheClassWhenNotDouble) {
  kxOwned d(kxCreateDoubleScalar(2.5));
  EXPECT_EQ(displayText("x", d.get()), "x = 2.5\n");
  kxOwned i(kxMustBe(d.get(), kxINT8_CLASS));
  EXPECT_EQ(displayText("x", i.get()), "x = 3 (int8)\n");
  kxOwned b(kxCreateLogicalScalar(true));
  EXPECT_EQ(displayText("b", b.get()), "b = 1 (logical)\n");
}

TEST(Display, ColumnsAreRightAligned) {
  kxOwned m(kxCreateDoubleMatrix(2, 2, kxREAL));
  double* p = kxGetPr(m.get());
  p[0] = 1;
  p[1] = -100;
  p[2] = 0.5;
  p[3] = NAN;
  EXPECT_EQ(displayText("m", m.get()),
            "m = 2x2 double\n"
            "       1   0.5\n"
            "    -100   NaN\n");
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
  EXPECT_EQ(displayText("z", z.get()), "z = 1 - 0.5i\n");
  kxOwned u(kxCreateNumericMatrix(1, 1, kxUINT64_CLASS, kxREAL));
  static_cast<uint64_t*>(kxGetData(u.get()))[0] = 18446744073709551615ull;
  EXPECT_EQ(displayText("u", u.get()), "u = 18446744073709551615 (uint64)\n");
}

TEST(Display, DatetimesAsCalendarTimesInUtc) {
  kxArray* data = kxCreateDoubleMatrix(1, 2, kxCOMPLEX);
  kxGetPr(data)[0] = 951782400000.0 + 3723004;  // 2000-02-29 01:02:03.004
  kxGetPr(data)[1] = NAN;
  kxArray* props = kxCreateStructMatrix(1, 1, 0, nullptr);
  kxSetField(props, 0, "Data", data);
  size_t dims[2] = {1, 2};
  kxOwned d(kxCreateObjectArray("datetime", 2, dims, props));
  EXPECT_EQ(displayText("d", d.get()),
            "d = 1x2 datetime\n"
            "    2000-02-29 01:02:03.004\n"
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

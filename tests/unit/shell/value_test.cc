// Sharing and copy-on-write of values, and the host's element rules as the
// shell applies them.
#include "value.h"

#include <gtest/gtest.h>

#include <cmath>

#include "indexing.h"
#include "twhost/errors.h"

namespace tw {
namespace {

Subscripts linear(double k) {
  Subscripts s(1);
  s[0].value = makeScalar(k);
  return s;
}

TEST(Value, CopiesShareUntilOneIsChanged) {
  Value a = makeNumeric({1, 3}, kxDOUBLE_CLASS);
  Value b = a;
  EXPECT_FALSE(a.unique());
  Value changed = assignParen(b, linear(2), makeScalar(7));
  EXPECT_NE(changed.get(), a.get());
  EXPECT_EQ(kxGetPr(a.get())[1], 0.0);
  EXPECT_EQ(kxGetPr(changed.get())[1], 7.0);
}

TEST(Value, SoleHolderIsChangedInPlace) {
  Value a = makeNumeric({1, 3}, kxDOUBLE_CLASS);
  kxArray* before = a.get();
  Value changed = assignParen(a, linear(3), makeScalar(5));
  EXPECT_EQ(changed.get(), before);
}

TEST(Value, ViewKeepsItsContainerAlive) {
  Value inner;
  {
    Value cell = makeCell({1, 1});
    kxSetCell(cell.get(), 0, kxCreateDoubleScalar(4));
    inner = cellElement(cell, 0);
    EXPECT_FALSE(cell.unique());
  }
  EXPECT_EQ(kxGetPr(inner.get())[0], 4.0);
}

TEST(Value, ChangingAViewCopiesIt) {
  Value cell = makeCell({1, 1});
  kxSetCell(cell.get(), 0, kxCreateDoubleMatrix(1, 2, kxREAL));
  Value inner = cellElement(cell, 0);
  Value changed = assignParen(inner, linear(1), makeScalar(9));
  EXPECT_NE(changed.get(), inner.get());
  EXPECT_EQ(kxGetPr(kxGetCell(cell.get(), 0))[0], 0.0);
}

TEST(Value, StoreElementRoundsHalfAwayAndSaturates) {
  Value a = makeNumeric({1, 1}, kxINT8_CLASS);
  auto stored = [&](long double v) {
    storeElement(a.get(), 0, v);
    return static_cast<int>(static_cast<int8_t*>(kxGetData(a.get()))[0]);
  };
  EXPECT_EQ(stored(2.5L), 3);
  EXPECT_EQ(stored(-2.5L), -3);
  EXPECT_EQ(stored(1000), 127);
  EXPECT_EQ(stored(-1000), -128);
  EXPECT_EQ(stored(NAN), 0);
}

TEST(Value, SixtyFourBitIntegersStayExact) {
  Value a = makeNumeric({1, 1}, kxUINT64_CLASS);
  storeElement(a.get(), 0, 18446744073709551615.0L);
  EXPECT_EQ(static_cast<uint64_t*>(kxGetData(a.get()))[0], 18446744073709551615ull);
  EXPECT_EQ(elementAsLongDouble(a.get(), 0), 18446744073709551615.0L);
}

TEST(Value, ConditionNeedsEveryElementNonZero) {
  EXPECT_FALSE(isTrue(makeEmpty().get()));
  EXPECT_TRUE(isTrue(makeScalar(-1).get()));
  Value v = makeNumeric({1, 2}, kxDOUBLE_CLASS);
  kxGetPr(v.get())[0] = 1;
  EXPECT_FALSE(isTrue(v.get()));
  EXPECT_THROW(isTrue(makeCell({1, 1}).get()), fl::except::IUserException);
}

TEST(Value, EqualityComparesAcrossNumericClasses) {
  Value i = makeNumeric({1, 1}, kxINT16_CLASS);
  static_cast<int16_t*>(kxGetData(i.get()))[0] = 65;
  EXPECT_TRUE(valuesEqual(i.get(), makeScalar(65).get()));
  EXPECT_TRUE(valuesEqual(i.get(), makeCharRowUtf8("A").get()));
  EXPECT_FALSE(valuesEqual(makeScalar(NAN).get(), makeScalar(NAN).get()));
}

}  // namespace
}  // namespace tw

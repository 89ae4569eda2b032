// The store of category codes: it narrows to the class of the largest code
// and keeps every code through each widening.
#include "datetime/code_store.h"

#include <gtest/gtest.h>

#include <vector>

#include "twhost/kx_data.h"

namespace {

using datetime::CodeStore;

struct Widening {
  uint64_t largest;
  kxClassID cls;
};

class CodeStoreWidening : public ::testing::TestWithParam<Widening> {};

TEST_P(CodeStoreWidening, KeepsEveryCodeInTheClassOfTheLargest) {
  const Widening& w = GetParam();
  CodeStore store;
  std::vector<uint64_t> pushed;
  // Each new code once, in order, with undefined fields and repeats of
  // early codes between them, as a column gives them.
  for (uint64_t code = 1; code <= w.largest; ++code) {
    pushed.push_back(code);
    if (code % 7 == 0) pushed.push_back(0);
    if (code % 5 == 0) pushed.push_back(code / 2);
  }
  for (uint64_t code : pushed) store.push(code);
  EXPECT_EQ(store.codeClass(), w.cls);
  ASSERT_EQ(store.size(), pushed.size());
  EXPECT_EQ(store.back(), pushed.back());
  kxOwned codes(store.release());
  EXPECT_EQ(store.size(), 0u);
  EXPECT_EQ(kxGetClassID(codes.get()), w.cls);
  ASSERT_EQ(kxGetM(codes.get()), pushed.size());
  ASSERT_EQ(kxGetN(codes.get()), 1u);
  KxData data(codes.get());
  for (size_t i = 0; i < pushed.size(); ++i) {
    ASSERT_EQ(data.asDouble(i), static_cast<double>(pushed[i])) << "at " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Limits, CodeStoreWidening,
    ::testing::Values(Widening{1, kxUINT8_CLASS},
                      Widening{CodeStore::kLargestUint8Code, kxUINT8_CLASS},
                      Widening{CodeStore::kLargestUint8Code + 1, kxUINT16_CLASS},
                      Widening{CodeStore::kLargestUint16Code, kxUINT16_CLASS},
                      Widening{CodeStore::kLargestUint16Code + 1, kxUINT32_CLASS}));

TEST(CodeStore, ClassForTheLargestCode) {
  EXPECT_EQ(CodeStore::classFor(0), kxUINT8_CLASS);
  EXPECT_EQ(CodeStore::classFor(CodeStore::kLargestUint32Code), kxUINT32_CLASS);
  EXPECT_EQ(CodeStore::classFor(CodeStore::kLargestUint32Code + 1), kxUINT64_CLASS);
}

TEST(CodeStore, AnEmptyStoreGivesAnEmptyColumn) {
  CodeStore store;
  kxOwned codes(store.release());
  EXPECT_EQ(kxGetClassID(codes.get()), kxUINT8_CLASS);
  EXPECT_EQ(kxGetM(codes.get()), 0u);
  EXPECT_EQ(kxGetN(codes.get()), 1u);
}

}  // namespace

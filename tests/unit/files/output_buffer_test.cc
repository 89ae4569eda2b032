// OutputBuffer: blocks that grow and never move, and the array they become.
#include "fileio/output_buffer.h"

#include <numeric>
#include <string>

#include "files_test_support.h"

namespace {

using Tarnwicks::FileIO::OutputBuffer;

TEST(OutputBufferTest, EmptyBufferGivesOneByZero) {
  OutputBuffer b(kxDOUBLE_CLASS, 1024, 64, 8388608);
  EXPECT_EQ(b.totalElements(), 0u);
  kxOwned a(b.toArray());
  EXPECT_EQ(kxGetM(a.get()), 1u);
  EXPECT_EQ(kxGetN(a.get()), 0u);
  EXPECT_EQ(kxGetClassID(a.get()), kxDOUBLE_CLASS);
}

TEST(OutputBufferTest, ReserveCommitKeepsOnlyWhatWasUsed) {
  OutputBuffer b(kxINT32_CLASS, 16, 8, 64);
  size_t want = 10;
  auto* p = static_cast<int32_t*>(b.reserve(want));
  for (int i = 0; i < 4; ++i) p[i] = i;
  b.commit(4);
  want = 3;
  p = static_cast<int32_t*>(b.reserve(want));
  for (int i = 0; i < 3; ++i) p[i] = 10 + i;
  b.commit(3);
  EXPECT_EQ(b.totalElements(), 7u);
  kxOwned a(b.toArray());
  const auto* v = static_cast<const int32_t*>(kxGetData(a.get()));
  EXPECT_EQ(std::vector<int32_t>(v, v + 7), (std::vector<int32_t>{0, 1, 2, 3, 10, 11, 12}));
}

// A line of 10 MiB, one character at a time: the blocks grow, nothing is
// lost at their seams, and the result is one row.
TEST(OutputBufferTest, LongLineGrowsBlocksAndJoinsThem) {
  OutputBuffer b(kxCHAR_CLASS, 1024, 64, 8388608);
  const size_t n = 10 * 1024 * 1024;
  for (size_t i = 0; i < n; ++i) {
    char16_t c = char16_t('a' + i % 26);
    b.push(&c);
  }
  EXPECT_EQ(b.totalElements(), n);
  EXPECT_GT(b.getBlockSize(), 1024u);
  EXPECT_LE(b.getBlockSize(), 8388608u);
  kxOwned a(b.toArray());
  ASSERT_EQ(kxGetM(a.get()), 1u);
  ASSERT_EQ(kxGetN(a.get()), n);
  const char16_t* c = kxGetChars(a.get());
  for (size_t i = 0; i < n; i += 4099) ASSERT_EQ(c[i], char16_t('a' + i % 26)) << i;
  EXPECT_EQ(c[n - 1], char16_t('a' + (n - 1) % 26));
  EXPECT_EQ(b.totalElements(), 0u);
}

TEST(OutputBufferTest, GrowDoublesUpToTheMaximum) {
  OutputBuffer b(kxUINT8_CLASS, 10, 4, 32);
  b.grow();
  EXPECT_EQ(b.getBlockSize(), 20u);
  b.grow();
  EXPECT_EQ(b.getBlockSize(), 32u);
  b.grow();
  EXPECT_EQ(b.getBlockSize(), 32u);
  OutputBuffer zeroMax(kxUINT8_CLASS, 4, 8, 0);  // a maximum of 0 means the minimum
  zeroMax.grow();
  EXPECT_EQ(zeroMax.getBlockSize(), 8u);
}

TEST(OutputBufferTest, LastElementsAcrossBlocks) {
  OutputBuffer b(kxCHAR_CLASS, 2, 2, 2);
  std::u16string text = u"abcde";
  for (char16_t c : text) b.push(&c);
  char16_t last[3];
  b.copyLast(3, last);
  EXPECT_EQ(std::u16string(last, 3), u"cde");
  b.removeLast(3);
  EXPECT_EQ(b.totalElements(), 2u);
  char16_t f = u'f';
  b.push(&f);
  kxOwned a(b.toArray());
  EXPECT_EQ(kxArrayToUString(a.get()), u"abf");
}

TEST(OutputBufferTest, DropFromMarkCutsTheCurrentUnit) {
  OutputBuffer b(kxDOUBLE_CLASS, 4, 4, 4);
  double one[] = {1, 2, 3};
  b.append(one, 3);
  b.markPointer = nullptr;  // a new unit begins
  double two[] = {4, 5, 6, 7, 8};
  b.append(two, 5);  // the unit spans a new block
  b.dropFromMark();
  EXPECT_EQ(b.totalElements(), 3u);
  kxOwned a(b.toArray());
  const double* v = kxGetPr(a.get());
  EXPECT_EQ(std::vector<double>(v, v + 3), (std::vector<double>{1, 2, 3}));
}

TEST(OutputBufferTest, ShapedArrayPadsWithZeros) {
  OutputBuffer b(kxDOUBLE_CLASS, 8, 8, 8);
  double v[] = {1, 2, 3, 4, 5};
  b.append(v, 5);
  kxOwned a(b.toArray(2, 3));
  EXPECT_EQ(kxGetM(a.get()), 2u);
  EXPECT_EQ(kxGetN(a.get()), 3u);
  const double* d = kxGetPr(a.get());
  EXPECT_EQ(std::vector<double>(d, d + 6), (std::vector<double>{1, 2, 3, 4, 5, 0}));
}

}  // namespace

// The string streams of sscanf and sprintf.
#include "fileio/string_streams.h"

#include "files_test_support.h"

namespace {

using namespace Tarnwicks::FileIO;

TEST(InputStringStreamTest, ReadCountsBytesAndEndIsImmediate) {
  const std::string text = "h\xc3\xa9llo";
  inputStringStream in(text.data(), text.size());
  uint16_t two[4];
  EXPECT_EQ(in.read(2, two, 2), 4u);  // bytes, not elements
  EXPECT_EQ(in.read(10, two, 1), 2u);
  EXPECT_TRUE(in.atEnd());
  EXPECT_EQ(in.read(1, two, 1), 0u);
  int64_t pos = 0;
  in.getPosition(pos);
  EXPECT_EQ(pos, 6);
  EXPECT_TRUE(in.unread(3));
  EXPECT_FALSE(in.atEnd());
  EXPECT_EQ(in.unitCount(), 5u);
  EXPECT_EQ(files_test::raisedBy([&] { in.write(1, "x", 1); }),
            "KORVAN:legacy_two_part:notimplemented_mx");
}

TEST(InputStringStreamTest, CharactersDecodeAsUtf8) {
  const std::string text = "a\xe2\x82\xac";
  inputStringStream in(text.data(), text.size());
  char16_t out[4];
  size_t bytes = 0;
  EXPECT_EQ(in.readChars(out, 4, bytes), 2u);
  EXPECT_EQ(std::u16string(out, 2), u"a\u20ac");
  EXPECT_EQ(bytes, 4u);
}

TEST(OutputStringStreamTest, CollectsUnitsAndGivesUpTheBlock) {
  outputStringStream out;
  std::u16string text = u"x = ";
  EXPECT_EQ(out.writeChars(text.size(), text.data()), text.size());
  out.format("%d", 42);  // narrow bytes, as they stand
  EXPECT_EQ(out.size(), 10u);
  EXPECT_TRUE(out.unread(2));
  int64_t pos = 0;
  out.getPosition(pos);
  EXPECT_EQ(pos, 8);
  size_t bytes = 0;
  void* block = out.release(bytes);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(std::u16string(static_cast<char16_t*>(block), bytes / 2), text);
  kxFreeEx(block);
  EXPECT_EQ(out.size(), 0u);
  EXPECT_EQ(out.release(bytes), nullptr);
}

TEST(OutputStringStreamTest, LargeOutputGrows) {
  outputStringStream out;
  std::u16string piece(1000, u'z');
  for (int i = 0; i < 1000; ++i) out.writeChars(piece.size(), piece.data());
  EXPECT_EQ(out.size(), 2000000u);
  EXPECT_EQ(out.bytesWritten, 2000000u);
}

}  // namespace

// CarryByte: a held part-byte keeps the file's other bits when flushed, and
// the permission decides whether those bits can be fetched.
#include "fileio/carry_byte.h"

#include "fileio/attributes.h"
#include "fileio/file_stream.h"
#include "files_test_support.h"

namespace {

using namespace Tarnwicks::FileIO;

class CarryTest : public files_test::StreamOnFile {
 protected:
  fileStream& open(const std::string& bytes, const char* mode) {
    return openStream("c", bytes, mode, "");
  }
  // Holds `count` written bits in the given byte order, then flushes.
  bool flush(uint8_t bits, int count, int order) {
    CarryByte& c = s->getCarry();
    c.restart(false, order);
    c.active = true;
    c.bits = bits;
    c.bitCount = count;
    return c.finish();
  }
};

TEST_F(CarryTest, FlushKeepsTheFilesOtherBits) {
  struct Case {
    const char* mode;
    uint8_t bits;
    int order;
    uint8_t expected;
  };
  const Case cases[] = {
      {"r+", 0xA0, 1, 0xBF},  // high bits held: the low five come from the file
      {"r+", 0x05, 0, 0xFD},  // low bits held: the high five come from the file
      {"w", 0xA0, 1, 0xA0},   // nothing to keep in a file being written
  };
  for (const Case& c : cases) {
    open("\xff", c.mode);
    EXPECT_TRUE(flush(c.bits, 3, c.order)) << c.mode;
    EXPECT_FALSE(s->getCarry().active);
    close();
    EXPECT_EQ(uint8_t(readFile("c")[0]), c.expected) << c.mode;
  }
}

TEST_F(CarryTest, PastTheEndTheByteIsZero) {
  open("", "w+");
  EXPECT_TRUE(flush(0xE0, 3, 1));
  close();
  EXPECT_EQ(readFile("c"), "\xe0");
}

TEST_F(CarryTest, AppendWithoutUpdateCantFetch) {
  open("x", "a");
  EXPECT_FALSE(flush(0x01, 3, 0));
  EXPECT_EQ(s->errorCode, -5);
}

TEST_F(CarryTest, PrepareContinuesOrRestarts) {
  open("ab", "r+");
  CarryByte& c = s->getCarry();
  ASSERT_TRUE(c.prepare(3, 1, true));  // big-endian read
  c.active = true;
  c.bits = 0x80;
  c.bitCount = 2;
  EXPECT_TRUE(c.prepare(5, 1, true));  // same direction and order: continues
  EXPECT_EQ(c.bitCount, 2);
  EXPECT_TRUE(c.prepare(5, 1, false));  // reading to writing: restarts, no flush
  EXPECT_EQ(c.bitCount, 0);
  EXPECT_EQ(c.mode, 1);
  c.bits = 0xC0;
  c.bitCount = 2;
  EXPECT_TRUE(c.prepare(0, 0, true));  // a byte transfer flushes
  EXPECT_FALSE(c.active);
  close();
  EXPECT_EQ(readFile("c"),
            "\xe1"
            "b");  // 'a' is 0x61: its low six bits stay
}

TEST_F(CarryTest, HeldBitsMeanNotYetAtTheEnd) {
  open("z", "r");
  char c;
  s->read(2, &c, 1);
  ASSERT_TRUE(s->atEnd());
  CarryByte& carry = s->getCarry();
  carry.active = true;
  carry.bitCount = 3;
  carry.beforeEofTest();
  EXPECT_FALSE(s->atEnd());
}

}  // namespace

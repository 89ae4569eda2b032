// fread through its slot: result shapes, skips, byte orders, bit fields and
// the error state it leaves, on real files.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "transfer_test_support.h"

namespace {

using namespace transfer_test;

class Fread : public TransferTest {
 protected:
  // Opens `name` holding bytes 1..n for reading.
  double openCounting(int n) {
    std::string s;
    for (int i = 1; i <= n; ++i) s.push_back(static_cast<char>(i));
    writeFile("count.bin", s);
    return open("count.bin", "r");
  }
};

struct ShapeCase {
  const char* what;
  int bytes;
  std::vector<double> size;  // empty: no size input
  const char* precision;
  std::vector<size_t> want;
  std::vector<double> values;
  double count;
};

TEST_F(Fread, ResultShapesFollowTheSize) {
  const ShapeCase cases[] = {
      {"all, as a column", 3, {}, nullptr, {3, 1}, {1, 2, 3}, 3},
      {"Inf", 3, {INFINITY}, nullptr, {3, 1}, {1, 2, 3}, 3},
      {"a count", 5, {3}, nullptr, {3, 1}, {1, 2, 3}, 3},
      {"more than there is", 3, {5}, nullptr, {3, 1}, {1, 2, 3}, 3},
      {"[2 Inf] pads the last column", 5, {2, INFINITY}, nullptr, {2, 3}, {1, 2, 3, 4, 5, 0}, 5},
      {"[1 3] is a row", 5, {1, 3}, nullptr, {1, 3}, {1, 2, 3}, 3},
      {"[1 Inf] is a row", 4, {1, INFINITY}, nullptr, {1, 4}, {1, 2, 3, 4}, 4},
      {"[3 2] short", 4, {3, 2}, nullptr, {3, 2}, {1, 2, 3, 4, 0, 0}, 4},
      {"[5 2] on less than a column", 3, {5, 2}, nullptr, {3, 1}, {1, 2, 3}, 3},
      {"char read as a column", 3, {INFINITY}, "*char", {3, 1}, {1, 2, 3}, 3},
      {"char [1 Inf]", 3, {1, INFINITY}, "*char", {1, 3}, {1, 2, 3}, 3},
      {"empty file", 0, {}, nullptr, {0, 0}, {}, 0},
      {"empty file [2 Inf]", 0, {2, INFINITY}, nullptr, {0, 0}, {}, 0},
  };
  for (const ShapeCase& c : cases) {
    double fid = openCounting(c.bytes);
    Outcome r;
    kxArray* size = nullptr;
    if (!c.size.empty()) {
      size = kxCreateDoubleMatrix(1, c.size.size(), kxREAL);
      std::copy(c.size.begin(), c.size.end(), kxGetPr(size));
    }
    if (size && c.precision) {
      r = call(kSlotFread, 2, {num(fid), size, str(c.precision)});
    } else if (size) {
      r = call(kSlotFread, 2, {num(fid), size});
    } else {
      r = call(kSlotFread, 2, {num(fid)});
    }
    ASSERT_EQ(r.error, "") << c.what;
    EXPECT_EQ(r.size(), c.want) << c.what;
    EXPECT_EQ(r.values(), c.values) << c.what;
    EXPECT_EQ(r.number(1), c.count) << c.what;
    close(fid);
  }
}

TEST_F(Fread, ZeroSizeLeavesTheFileAlone) {
  double fid = openCounting(4);
  call(kSlotFread, 1, {num(fid), num(2), str("uint8")});
  call(kSlotFread, 1, {num(fid), num(9)});
  ASSERT_EQ(lastError(fid), -4);
  Outcome r = call(kSlotFread, 2, {num(fid), num(0)});
  EXPECT_EQ(r.size(), (std::vector<size_t>{0, 0}));
  EXPECT_EQ(r.number(1), 0);
  EXPECT_EQ(lastError(fid), -4);
  Outcome empty = call(kSlotFread, 1, {num(fid), row({3, 0}), str("*int16")});
  EXPECT_EQ(empty.size(), (std::vector<size_t>{3, 0}));
  EXPECT_EQ(empty.cls(), kxINT16_CLASS);
}

TEST_F(Fread, TheEndOfTheFileIsReportedOnlyWhenReached) {
  double fid = openCounting(4);
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(4)}).values(), (std::vector<double>{1, 2, 3, 4}));
  EXPECT_EQ(lastError(fid), 0);
  EXPECT_FALSE(atEnd(fid));
  EXPECT_EQ(call(kSlotFread, 2, {num(fid), num(1)}).number(1), 0);
  EXPECT_EQ(lastError(fid), -4);
  EXPECT_TRUE(atEnd(fid));
}

// A pipe has no size to plan by: the result grows block by block, and the
// blocks are joined at the end.
TEST_F(Fread, ReadsAStreamOfUnknownSizeToItsEnd) {
  const std::string fifo = path("pipe");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const size_t n = 3 * 1024 * 1024 + 5;
  std::thread writer([&] {
    FILE* f = std::fopen(fifo.c_str(), "wb");
    for (size_t i = 0; i < n; ++i) std::fputc(static_cast<int>(i % 251), f);
    std::fclose(f);
  });
  double fid = open("pipe", "r");
  Outcome r = call(kSlotFread, 2, {num(fid), num(INFINITY), str("*uint8")});
  writer.join();
  ASSERT_EQ(r.number(1), n);
  const auto* bytes = static_cast<const unsigned char*>(kxGetData(r.at()));
  size_t wrong = 0;
  for (size_t i = 0; i < n; ++i) wrong += bytes[i] != i % 251;
  EXPECT_EQ(wrong, 0u);
  EXPECT_EQ(lastError(fid), -4);
}

TEST_F(Fread, ClassesAndConversions) {
  writeFile("v.bin", {0xFF, 0x7F, 0x00, 0x80});
  double fid = open("v.bin", "r");
  struct {
    const char* precision;
    kxClassID cls;
    std::vector<double> values;
  } cases[] = {
      {"uint8", kxDOUBLE_CLASS, {255, 127, 0, 128}},
      {"*int8", kxINT8_CLASS, {-1, 127, 0, -128}},
      {"int16=>int8", kxINT8_CLASS, {127, -128}},
      {"uint16=>uint8", kxUINT8_CLASS, {255, 255}},
      {"int8=>logical", kxLOGICAL_CLASS, {1, 1, 0, 1}},
      {"*uint16", kxUINT16_CLASS, {0x7FFF, 0x8000}},
      {"int32=>single", kxSINGLE_CLASS, {static_cast<float>(-2147450881.0)}},
      {"uint8=>nonsense", kxDOUBLE_CLASS, {255, 127, 0, 128}},
  };
  for (const auto& c : cases) {
    call(kSlotFseek, 1, {num(fid), num(0), str("bof")});
    Outcome r = call(kSlotFread, 1, {num(fid), num(INFINITY), str(c.precision)});
    ASSERT_EQ(r.error, "") << c.precision;
    EXPECT_EQ(r.cls(), c.cls) << c.precision;
    EXPECT_EQ(r.values(), c.values) << c.precision;
  }
}

TEST_F(Fread, BigEndianSwapsEveryClassButChar) {
  writeFile("be.bin", {0x01, 0x02, 0x03, 0x04});
  double fid = open("be.bin", "r", "b");
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(2), str("uint16")}).values(),
            (std::vector<double>{0x0102, 0x0304}));
  call(kSlotFseek, 1, {num(fid), num(0), str("bof")});
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(1), str("uint32"), num(0), str("l")}).values(),
            (std::vector<double>{0x04030201}));
  call(kSlotFseek, 1, {num(fid), num(0), str("bof")});
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(2), str("char")}).values(),
            (std::vector<double>{1, 2}));
}

TEST_F(Fread, SkipsFollowEachGroup) {
  double fid = openCounting(12);
  // Three bytes, pass two, and so on.
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(INFINITY), str("3*uint8"), num(2)}).values(),
            (std::vector<double>{1, 2, 3, 6, 7, 8, 11, 12}));
  call(kSlotFseek, 1, {num(fid), num(0), str("bof")});
  // Without a skip a repeat count means nothing.
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(5), str("3*uint8"), num(0)}).values(),
            (std::vector<double>{1, 2, 3, 4, 5}));
  call(kSlotFseek, 1, {num(fid), num(0), str("bof")});
  // A skip follows every whole group, the last one too...
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(4), str("2*uint8=>int8"), num(1)}).values(),
            (std::vector<double>{1, 2, 4, 5}));
  EXPECT_EQ(position(fid), 6);
  call(kSlotFseek, 1, {num(fid), num(0), str("bof")});
  // ...but not a group that the count cut short.
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(3), str("2*uint8=>int8"), num(1)}).values(),
            (std::vector<double>{1, 2, 4}));
  EXPECT_EQ(position(fid), 4);
}

TEST_F(Fread, LongSkipsSeekAndNeverPastTheEnd) {
  std::string s(20000, '\0');
  s[0] = 1;
  s[8193] = 2;
  s[16386] = 3;
  s[8194] = 7;
  writeFile("long.bin", s);
  double fid = open("long.bin", "r");
  // 8192 is read past; from the one group the next starts 8193 bytes on.
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(3), str("uint8"), num(8192)}).values(),
            (std::vector<double>{1, 2, 3}));
  call(kSlotFseek, 1, {num(fid), num(0), str("bof")});
  // 8193 seeks: the second group starts at 8194.
  Outcome r = call(kSlotFread, 2, {num(fid), num(INFINITY), str("uint8"), num(8193)});
  EXPECT_EQ(r.values(), (std::vector<double>{1, 7, 0}));
  // The third skip would pass the end: the read stops there with the end
  // of file raised, and says that it could not skip.
  EXPECT_EQ(lastError(fid), -45);
  EXPECT_TRUE(atEnd(fid));
  EXPECT_EQ(position(fid), 20000);
}

TEST_F(Fread, BitFieldsCarryThePartByteBetweenCalls) {
  writeFile("bits.bin", {0xE5, 0x0F});
  double fid = open("bits.bin", "r", "b");
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(2), str("ubit3")}).values(),
            (std::vector<double>{7, 1}));
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(1), str("ubit2")}).values(),
            (std::vector<double>{1}));
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(1), str("ubit4")}).values(),
            (std::vector<double>{0}));
  // A byte read drops the rest of a part-byte.
  call(kSlotFseek, 1, {num(fid), num(0), str("bof")});
  call(kSlotFread, 1, {num(fid), num(1), str("ubit3")});
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(1), str("uint8")}).values(),
            (std::vector<double>{0x0F}));
  close(fid);

  fid = open("bits.bin", "r", "l");
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(2), str("ubit3")}).values(),
            (std::vector<double>{5, 4}));
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(1), str("ubit6")}).values(),
            (std::vector<double>{0x3F}));
}

TEST_F(Fread, BitFieldEdgeCases) {
  writeFile("e.bin", {0xE0, 0xFF});
  double fid = open("e.bin", "r", "b");
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(1), str("bit3")}).values(),
            (std::vector<double>{-1}));
  call(kSlotFseek, 1, {num(fid), num(1), str("bof")});
  // A 10-bit field cut off after 8 bits still counts, and saturates.
  Outcome r = call(kSlotFread, 2, {num(fid), num(INFINITY), str("ubit10=>uint8")});
  EXPECT_EQ(r.values(), (std::vector<double>{255}));
  EXPECT_EQ(r.number(1), 1);
  EXPECT_EQ(lastError(fid), -4);
  call(kSlotFseek, 1, {num(fid), num(0), str("bof")});
  // "bit4in8": in order 1 the value is the low half of each byte.
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(2), str("ubit4in8")}).values(),
            (std::vector<double>{0, 15}));
  // Groups of two 4-bit fields with 4 bits passed after each.
  call(kSlotFseek, 1, {num(fid), num(0), str("bof")});
  writeFile("g.bin", {0x12, 0x34, 0x56, 0x78});
  double g = open("g.bin", "r", "b");
  EXPECT_EQ(call(kSlotFread, 1, {num(g), num(INFINITY), str("2*ubit4"), num(4)}).values(),
            (std::vector<double>{1, 2, 4, 5, 7, 8}));
}

TEST_F(Fread, NoconvertMovesBytesAsTheyStand) {
  double v[2] = {1.5, -2.25};
  writeFile("d.bin", std::string(reinterpret_cast<const char*>(v), sizeof v));
  double fid = open("d.bin", "r", "b");
  Outcome r = call(kSlotFread, 2, {num(fid), num(16), str("noconvert")});
  EXPECT_EQ(r.values(), (std::vector<double>{1.5, -2.25}));
  EXPECT_EQ(r.number(1), 16);
  call(kSlotFseek, 1, {num(fid), num(0), str("bof")});
  Outcome raw = call(kSlotFread, 1, {num(fid), num(INFINITY), str("*noconvert")});
  EXPECT_EQ(raw.cls(), kxUINT8_CLASS);
  EXPECT_EQ(raw.size(), (std::vector<size_t>{16, 1}));
}

TEST_F(Fread, ArgumentsTakeTheirMeaningFromTheirPlace) {
  writeFile("a.bin", {1, 0, 2, 0, 3, 0});
  double fid = open("a.bin", "r");
  auto rewind = [&] { call(kSlotFseek, 1, {num(fid), num(0), str("bof")}); };
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), str("int16")}).values(), (std::vector<double>{1, 2, 3}));
  rewind();
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), str("int16"), str("b")}).values(),
            (std::vector<double>{256, 512, 768}));
  rewind();
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), str("uint8"), num(1)}).values(),
            (std::vector<double>{1, 2, 3}));
  rewind();
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), str("uint8"), num(1), str("b")}).values(),
            (std::vector<double>{1, 2, 3}));
  rewind();
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(2), str("int16"), str("b")}).values(),
            (std::vector<double>{256, 512}));
  rewind();
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(2), str("uint8"), num(1)}).values(),
            (std::vector<double>{1, 2}));
}

TEST_F(Fread, BadArgumentsRaise) {
  writeFile("a.bin", {1});
  double fid = open("a.bin", "r");
  struct {
    std::initializer_list<kxArray*> args;
    const char* id;
  } cases[] = {
      {{num(fid), num(1), str("uint77")}, "KORVAN:legacy_two_part:badprecision_mx"},
      {{num(fid), num(-1)}, "KORVAN:legacy_two_part:badsize_mx"},
      {{num(fid), row({INFINITY, 2})}, "KORVAN:legacy_two_part:badsize_mx"},
      {{num(fid), kxCreateCellMatrix(1, 1), str("uint8")}, "KORVAN:FileIO:sizeMustBeNumeric"},
      {{num(fid), num(1), str("uint8"), num(0.5)}, "KORVAN:legacy_two_part:badskip_mx"},
      {{num(fid), num(1), str("uint8"), num(0), str("q")}, "KORVAN:legacy:34"},
      // The size is checked before the precision, that before the skip.
      {{num(fid), num(-1), str("uint77"), num(-1)}, "KORVAN:legacy_two_part:badsize_mx"},
      {{num(fid), num(1), str("uint77"), num(-1)}, "KORVAN:legacy_two_part:badprecision_mx"},
      {{num(0)}, "KORVAN:legacy_two_part:notimplemented_mx"},
  };
  for (const auto& c : cases) EXPECT_EQ(call(kSlotFread, 1, c.args).error, c.id) << c.id;
}

}  // namespace

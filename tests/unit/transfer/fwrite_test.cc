// fwrite through its slot: conversion, gaps before groups, byte orders, bit
// fields with their part-byte, and what the file reports.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "transfer_test_support.h"

namespace {

using namespace transfer_test;

class Fwrite : public TransferTest {
 protected:
  // Writes with the given inputs after the fid into a new file, closes it,
  // and gives its bytes.
  std::vector<int> written(std::initializer_list<kxArray*> rest, const char* format = "n") {
    double fid = open("out.bin", "w", format);
    std::vector<kxArray*> in = {num(fid)};
    in.insert(in.end(), rest.begin(), rest.end());
    Outcome r;
    switch (in.size()) {
      case 2:
        r = call(kSlotFwrite, 1, {in[0], in[1]});
        break;
      case 3:
        r = call(kSlotFwrite, 1, {in[0], in[1], in[2]});
        break;
      case 4:
        r = call(kSlotFwrite, 1, {in[0], in[1], in[2], in[3]});
        break;
      default:
        r = call(kSlotFwrite, 1, {in[0], in[1], in[2], in[3], in[4]});
        break;
    }
    EXPECT_EQ(r.error, "");
    lastCount = r.number();
    close(fid);
    return fileBytes("out.bin");
  }
  double lastCount = 0;
};

using Bytes = std::vector<int>;

TEST_F(Fwrite, ConvertsAndSaturates) {
  EXPECT_EQ(written({row({300, -1, 2.5, -2.5, NAN})}), (Bytes{255, 0, 3, 0, 0}));
  EXPECT_EQ(lastCount, 5);
  EXPECT_EQ(written({row({-2.5, 200}), str("int8")}), (Bytes{0xFD, 127}));
  EXPECT_EQ(written({row({1, 258}), str("uint16")}), (Bytes{1, 0, 2, 1}));
  EXPECT_EQ(written({row({1, 258}), str("uint16"), str("b")}), (Bytes{0, 1, 1, 2}));
  EXPECT_EQ(written({row({1.5}), str("float32"), str("b")}), (Bytes{0x3F, 0xC0, 0, 0}));
  EXPECT_EQ(written({rowOf(kxINT16_CLASS, {-2}), str("int16")}), (Bytes{0xFE, 0xFF}));
  EXPECT_EQ(written({str("Ab"), str("char")}), (Bytes{'A', 'b'}));
  // "noconvert" writes the data's own bytes, in the machine's order.
  EXPECT_EQ(written({rowOf(kxUINT16_CLASS, {0x0102}), str("noconvert"), str("b")}), (Bytes{2, 1}));
  EXPECT_EQ(lastCount, 2);
}

TEST_F(Fwrite, NothingToWriteClearsTheError) {
  double fid = open("out.bin", "w");
  call(kSlotFread, 1, {num(fid)});
  ASSERT_NE(lastError(fid), 0);
  Outcome r = call(kSlotFwrite, 1, {num(fid), kxCreateDoubleMatrix(0, 0, kxREAL)});
  EXPECT_EQ(r.number(), 0);
  EXPECT_EQ(lastError(fid), 0);
}

TEST_F(Fwrite, GapsComeBeforeEachGroup) {
  EXPECT_EQ(written({row({1, 2, 3}), str("uint8"), num(2)}), (Bytes{0, 0, 1, 0, 0, 2, 0, 0, 3}));
  EXPECT_EQ(written({row({1, 2, 3, 4}), str("2*uint8"), num(1)}), (Bytes{0, 1, 2, 0, 3, 4}));
  EXPECT_EQ(written({row({1, 2, 3}), str("2*uint8"), num(1)}), (Bytes{0, 1, 2, 0, 3}));
  EXPECT_EQ(written({row({1, 2, 3}), str("2*uint16"), num(1), str("b")}),
            (Bytes{0, 0, 1, 0, 2, 0, 0, 3}));
  EXPECT_EQ(lastCount, 3);
}

TEST_F(Fwrite, AGapInsideTheFileKeepsItsBytes) {
  writeFile("out.bin", std::string(4, '\x77'));
  double fid = open("out.bin", "r+");
  EXPECT_EQ(call(kSlotFwrite, 1, {num(fid), row({1, 2, 3}), str("uint8"), num(1)}).number(), 3);
  close(fid);
  // Inside the file the gap passes over what is there; beyond, zeros.
  EXPECT_EQ(fileBytes("out.bin"), (Bytes{0x77, 1, 0x77, 2, 0, 3}));
  // A long gap is sought past inside the file, then filled beyond it.
  writeFile("out.bin", std::string(10000, '\x77'));
  fid = open("out.bin", "r+");
  call(kSlotFwrite, 1, {num(fid), row({5, 6}), str("uint8"), num(9000)});
  close(fid);
  Bytes b = fileBytes("out.bin");
  ASSERT_EQ(b.size(), 18002u);
  EXPECT_EQ(b[8999], 0x77);
  EXPECT_EQ(b[9000], 5);
  EXPECT_EQ(b[9001], 0x77);
  EXPECT_EQ(b[9999], 0x77);
  EXPECT_EQ(b[10000], 0);
  EXPECT_EQ(b[18001], 6);
}

TEST_F(Fwrite, BitFieldsSaturateAndPack) {
  // Byte order 1 packs from the top of each byte.
  EXPECT_EQ(written({row({9}), str("ubit3")}, "b"), (Bytes{0b11100000}));
  EXPECT_EQ(written({row({5}), str("bit3")}, "b"), (Bytes{0b01100000}));
  EXPECT_EQ(written({row({-9}), str("bit3")}, "b"), (Bytes{0b10000000}));
  EXPECT_EQ(written({row({NAN}), str("ubit3")}, "b"), (Bytes{0}));
  EXPECT_EQ(written({row({1, 2, 3}), str("ubit4")}, "b"), (Bytes{0x12, 0x30}));
  // The other order packs from the bottom.
  EXPECT_EQ(written({row({1, 2, 3}), str("ubit4")}, "l"), (Bytes{0x21, 0x03}));
  EXPECT_EQ(written({row({0x123}), str("ubit12")}, "b"), (Bytes{0x12, 0x30}));
  EXPECT_EQ(written({row({0x123}), str("ubit12")}, "l"), (Bytes{0x23, 0x01}));
  // A container puts zeros before the value in order 1, after it otherwise.
  EXPECT_EQ(written({row({15, 15}), str("ubit4in6")}, "b"), (Bytes{0b00111100, 0b11110000}));
  EXPECT_EQ(written({row({15, 15}), str("ubit4in6")}, "l"), (Bytes{0b11001111, 0b00000011}));
  // A gap of bits comes before each group.
  EXPECT_EQ(written({row({1, 1}), str("ubit2"), num(2)}, "b"), (Bytes{0b00010001}));
}

TEST_F(Fwrite, TheLastPartByteWaitsInTheCarry) {
  double fid = open("out.bin", "w", "b");
  call(kSlotFwrite, 1, {num(fid), row({1}), str("ubit3")});
  call(kSlotFwrite, 1, {num(fid), row({3}), str("ubit3")});
  // Nothing has reached the file yet: 6 bits wait.
  EXPECT_EQ(call(kSlotFtell, 1, {num(fid)}).number(), 0);
  call(kSlotFwrite, 1, {num(fid), row({2}), str("ubit4")});
  EXPECT_EQ(fileBytes("out.bin"), (Bytes{0b00101100}));  // the byte completed
  call(kSlotFwrite, 1, {num(fid), row({7}), str("ubit2")});
  close(fid);
  // 001 011 0010 11 (padded): the last part-byte was flushed by fclose.
  EXPECT_EQ(fileBytes("out.bin"), (Bytes{0b00101100, 0b10110000}));
}

TEST_F(Fwrite, AByteWriteFlushesThePartByteFirst) {
  double fid = open("out.bin", "w", "b");
  call(kSlotFwrite, 1, {num(fid), row({5}), str("ubit3")});
  call(kSlotFwrite, 1, {num(fid), row({9}), str("uint8")});
  close(fid);
  EXPECT_EQ(fileBytes("out.bin"), (Bytes{0b10100000, 9}));
}

TEST_F(Fwrite, ASeekFlushesThePartByte) {
  double fid = open("out.bin", "w+", "b");
  call(kSlotFwrite, 1, {num(fid), row({5}), str("ubit3")});
  call(kSlotFseek, 1, {num(fid), num(0), str("bof")});
  EXPECT_EQ(call(kSlotFread, 1, {num(fid), num(INFINITY), str("*uint8")}).values(),
            (std::vector<double>{0b10100000}));
}

TEST_F(Fwrite, ABitGapKeepsTheBitsOfTheFile) {
  writeFile("out.bin", {0xFF, 0xFF});
  double fid = open("out.bin", "r+", "b");
  call(kSlotFwrite, 1, {num(fid), row({0, 0}), str("ubit4"), num(4)});
  close(fid);
  EXPECT_EQ(fileBytes("out.bin"), (Bytes{0xF0, 0xF0}));
}

TEST_F(Fwrite, ABitWriteInAppendModeFailsWhenReadAfter) {
  double fid = open("out.bin", "a");
  call(kSlotFwrite, 1, {num(fid), row({5}), str("ubit3")});
  call(kSlotFread, 1, {num(fid)});
  EXPECT_EQ(lastError(fid), -5);
}

TEST_F(Fwrite, FailuresOfTheFileAreReportedNotRaised) {
  writeFile("ro.bin", "abc");
  double fid = open("ro.bin", "r");
  Outcome r = call(kSlotFwrite, 1, {num(fid), row({1, 2})});
  EXPECT_EQ(r.error, "");
  EXPECT_EQ(r.number(), 0);
  EXPECT_NE(lastError(fid), 0);
}

TEST_F(Fwrite, TheScreenGetsNoResultUnlessAsked) {
  testing::internal::CaptureStdout();
  Outcome none = call(kSlotFwrite, 0, {num(1), str("abc")});
  Outcome one = call(kSlotFwrite, 1, {num(1), str("de")});
  std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(none.at(0), nullptr);
  EXPECT_EQ(one.number(), 2);
  EXPECT_EQ(printed, "abcde");
  // A file gives its count even without an output asked for.
  double fid = open("out.bin", "w");
  EXPECT_EQ(call(kSlotFwrite, 0, {num(fid), str("abc")}).number(), 3);
}

TEST_F(Fwrite, BadArgumentsRaiseBeforeAnythingIsWritten) {
  double fid = open("out.bin", "w");
  const char* sparseId = "KORVAN:fwrite:UnsupportedAttribute";
  struct {
    std::initializer_list<kxArray*> args;
    const char* id;
  } cases[] = {
      {{num(fid), kxCreateCellMatrix(1, 1)}, "KORVAN:fwrite:UnsupportedClass"},
      {{num(fid), kxCreateSparseDouble(2, 2)}, sparseId},
      // The data are looked at before the other inputs.
      {{num(fid), kxCreateCellMatrix(1, 1), str("uint77")}, "KORVAN:fwrite:UnsupportedClass"},
      {{num(fid), num(1), str("uint77")}, "KORVAN:legacy_two_part:badprecision_mx"},
      {{num(fid), num(1), str("uint8=>double")}, "KORVAN:legacy_two_part:badprecision_mx"},
      {{num(fid), num(1), str("uint8"), str("q")}, "KORVAN:legacy:34"},
      {{num(fid), num(1), str("uint8"), num(-1)}, "KORVAN:legacy_two_part:badskip_mx"},
      {{num(fid), num(1), str("uint8"), num(-1), str("q")}, "KORVAN:legacy:34"},
  };
  for (const auto& c : cases) EXPECT_EQ(call(kSlotFwrite, 1, c.args).error, c.id) << c.id;
  close(fid);
  EXPECT_EQ(fileBytes("out.bin").size(), 0u);
}

}  // namespace

// fprintf, sprintf and sprintfc as a host calls them, through the table of
// built-ins: outputs, their shapes, error texts, file errors and the
// argument errors that do raise.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "fileio/file_manager.h"
#include "print_test_support.h"
#include "support/scratch_dir.h"

namespace {

using namespace print_test;
using E = Tarnwicks::FileIO::StreamError;
using Tarnwicks::FileIO::FileMgr;
using Tarnwicks::FileIO::kSlotFprintf;
using Tarnwicks::FileIO::kSlotSprintf;
using Tarnwicks::FileIO::kSlotSprintfc;

// ---- sprintf ----------------------------------------------------------------

TEST(Sprintf, TextAndErrorText) {
  Outcome r = call(kSlotSprintf, 2, {str("%d %d"), doubles({1, 2, 3})});
  ASSERT_EQ(r.error, "");
  EXPECT_EQ(r.utf8(0), "1 23 ");
  EXPECT_EQ(r.utf8(1), codeText(E::NotEnoughArgs));
  EXPECT_EQ(r.status, 0);

  r = call(kSlotSprintf, 2, {str("abc"), num(1)});
  EXPECT_EQ(r.utf8(0), "abc");
  EXPECT_EQ(r.utf8(1), codeText(E::MatchingFailure));

  r = call(kSlotSprintf, 2, {str("%y")});
  EXPECT_EQ(r.utf8(1), codeText(E::InvalidFormat));
  // A clean run gives the empty text (0 by 0) as its error.
  r = call(kSlotSprintf, 2, {str("%d"), num(1)});
  EXPECT_EQ(kxGetM(r.at(1)), 0u);
  EXPECT_EQ(kxGetN(r.at(1)), 0u);
}

TEST(Sprintf, EmptyResultIsOneRowNoColumns) {
  Outcome r = call(kSlotSprintf, 2, {str("%s")});
  EXPECT_EQ(kxGetM(r.at(0)), 1u);
  EXPECT_EQ(kxGetN(r.at(0)), 0u);
  EXPECT_EQ(r.utf8(1), codeText(E::NotEnoughArgs));
  r = call(kSlotSprintf, 1, {kxCreateString("")});
  EXPECT_EQ(kxGetM(r.at(0)), 1u);
  EXPECT_EQ(kxGetN(r.at(0)), 0u);
}

TEST(Sprintf, ResultIsUtf16Units) {
  std::u16string units = u"\u00e9\u20ac%s";
  Outcome r = call(kSlotSprintf, 1,
                   {kxCreateStringFromNChars_UTF16(units.data(), units.size()),
                    array(kxCHAR_CLASS, {0xD83D, 0xDE00})});
  EXPECT_EQ(kxArrayToUString(r.at(0)), u"\u00e9\u20ac\U0001F600");
  EXPECT_EQ(kxGetN(r.at(0)), 4u);
}

TEST(Sprintf, BadEscapeWarnsAndUsesWhatWasTranslated) {
  CaughtWarnings warnings;
  Outcome r = call(kSlotSprintf, 1, {str("a%d\\qb"), num(7)});
  EXPECT_EQ(r.utf8(0), "a7");
  EXPECT_EQ(r.status, 1);
  ASSERT_EQ(warnings.ids().size(), 1u);
  EXPECT_EQ(warnings.ids()[0], "KORVAN:printf:BadEscapeSequenceInFormat");
}

TEST(Sprintf, ArgumentErrors) {
  EXPECT_EQ(call(kSlotSprintf, 1, {}).error, "KORVAN:legacy:2");
  EXPECT_EQ(call(kSlotSprintf, 3, {str("x")}).error, "KORVAN:legacy:3");
  EXPECT_EQ(call(kSlotSprintf, 1, {num(1)}).error, "KORVAN:legacy:27");
  EXPECT_EQ(call(kSlotSprintf, 1, {str("%d"), kxCreateCellMatrix(1, 1)}).error,
            "KORVAN:printf:invalidInputType");
  EXPECT_EQ(call(kSlotSprintf, 1, {str("%d"), kxCreateSparseDouble(2, 2)}).error,
            "KORVAN:printf:invalidInputAttribute");
  // Checked before anything prints, however late the bad value stands.
  EXPECT_EQ(
      call(kSlotSprintf, 1, {str("%d"), num(1), kxCreateStructMatrix(1, 1, 0, nullptr)}).error,
      "KORVAN:printf:invalidInputType");
}

TEST(Sprintf, ExportedForOtherLibraries) {
  kxArray* in[] = {str("%05.1f"), num(2.25)};
  kxArray* out[2] = {nullptr, nullptr};
  builtins::util::fiSprintf(1, out, 2, in);
  EXPECT_EQ(kxArrayToUTF8StdString(out[0]), "002.2");
  for (kxArray* a : in) kxDestroyArray(a);
  kxDestroyArray(out[0]);
}

// ---- sprintfc ---------------------------------------------------------------

std::vector<std::string> cells(const kxArray* cell) {
  std::vector<std::string> v;
  for (size_t i = 0; i < kxGetNumberOfElements(cell); ++i) {
    v.push_back(kxArrayToUTF8StdString(kxGetCell(cell, i)));
  }
  return v;
}

TEST(Sprintfc, OneNumberACell) {
  Outcome r = call(kSlotSprintfc, 3, {str("%d"), doubles({1, 2, 3, 4, 5, 6}, 2)});
  ASSERT_EQ(r.error, "");
  EXPECT_EQ(kxGetM(r.at(0)), 2u);
  EXPECT_EQ(kxGetN(r.at(0)), 3u);
  EXPECT_EQ(cells(r.at(0)), (std::vector<std::string>{"1", "2", "3", "4", "5", "6"}));
  EXPECT_EQ(r.utf8(1), "");
  EXPECT_FALSE(kxIsLogicalScalarTrue(r.at(2)));
}

TEST(Sprintfc, WrappedFormatEndsWithoutFault) {
  Outcome r = call(kSlotSprintfc, 2, {str("%d %d"), doubles({1, 2, 3})});
  EXPECT_EQ(cells(r.at(0)), (std::vector<std::string>{"1 2", "3 "}));
  EXPECT_EQ(r.utf8(1), "");
}

TEST(Sprintfc, StringConversionTakesTheRow) {
  Outcome r = call(kSlotSprintfc, 2, {str("%s"), doubles({72, 72, 105, 105, 33, 33}, 2)});
  EXPECT_EQ(kxGetN(r.at(0)), 1u);
  EXPECT_EQ(cells(r.at(0)), (std::vector<std::string>{"Hi!", "Hi!"}));
}

TEST(Sprintfc, AlwaysSignedWritesImaginaryParts) {
  Outcome r =
      call(kSlotSprintfc, 1, {str("%5.2f"), doubles({1.5, -2.25}), kxCreateLogicalScalar(true)});
  EXPECT_EQ(cells(r.at(0)), (std::vector<std::string>{"+1.50i", "-2.25i"}));
}

TEST(Sprintfc, LeftJustifiedEndAndRowErrors) {
  Outcome r = call(kSlotSprintfc, 3, {str("%-4d "), doubles({1, NAN, 2, 3}, 2)});
  EXPECT_EQ(cells(r.at(0)), (std::vector<std::string>{"1    ", "NaN  ", "2    ", "3    "}));
  EXPECT_TRUE(kxIsLogicalScalarTrue(r.at(2)));
  // A bad star fails its row; later rows still print, and the last failing
  // row is reported.
  r = call(kSlotSprintfc, 2, {str("%*d"), doubles({NAN, 3, 1, 4}, 2)});
  EXPECT_EQ(cells(r.at(0)), (std::vector<std::string>{"", "  4"}));
  EXPECT_EQ(r.utf8(1), codeText(E::BadWidthNaN));
}

TEST(Sprintfc, FormatsThatCantStart) {
  Outcome r = call(kSlotSprintfc, 3, {str("%y"), doubles({1, 2}, 2)});
  EXPECT_EQ(cells(r.at(0)), (std::vector<std::string>{"", ""}));
  EXPECT_EQ(r.utf8(1), codeText(E::InvalidFormat));
  r = call(kSlotSprintfc, 1, {str("%1$d"), num(1)});
  EXPECT_EQ(r.error, "KORVAN:sprintfc:invalidFormatType");
  EXPECT_EQ(call(kSlotSprintfc, 1, {str("%d"), kxCreateCellMatrix(1, 1)}).error,
            "KORVAN:sprintfc:invalidInputType");
  EXPECT_EQ(call(kSlotSprintfc, 1, {str("%d"), kxCreateSparseDouble(1, 1)}).error,
            "KORVAN:sprintfc:invalidInputAttribute");
  EXPECT_EQ(call(kSlotSprintfc, 1, {str("%d"), num(1), num(1)}).error,
            "KORVAN:sprintfc:invalidThirdInputType");
  EXPECT_EQ(call(kSlotSprintfc, 1, {num(1), num(1)}).error, "KORVAN:legacy:27");
}

// ---- fprintf ----------------------------------------------------------------

class Fprintf : public test_support::ScratchDir {
 protected:
  // Files are opened through the file table directly, which does what
  // fopen does once its arguments are settled.
  double open(const std::string& name, const char* mode, const char* encoding = "") {
    Tarnwicks::FileIO::FilePermission permission;
    permission.parse(mode);
    Tarnwicks::FileIO::EncodingAttribute enc;
    enc.parse(encoding);
    int error = 0;
    int fid = FileMgr::instance().open(fl::i18n::to_ustring(path(name)), permission,
                                       Tarnwicks::FileIO::MachineFormat(), enc, error);
    EXPECT_GE(fid, 3) << "open " << name << ": " << error;
    return fid;
  }
  void close(double fid) { FileMgr::instance().close(static_cast<int>(fid)); }
  std::string ferrorText(double fid) {
    int code = FileMgr::instance().lookup(static_cast<int>(fid))->lastError;
    return codeText(code);
  }
};

TEST_F(Fprintf, WritesAndCountsBytes) {
  double fid = open("a.txt", "w");
  Outcome r = call(kSlotFprintf, 1, {num(fid), str("%.6f\n"), doubles({1, -2.5, 1e-7})});
  ASSERT_EQ(r.error, "");
  EXPECT_EQ(kxGetScalar(r.at(0)), 28);
  close(fid);
  EXPECT_EQ(readFile("a.txt"), "1.000000\n-2.500000\n0.000000\n");
}

TEST_F(Fprintf, NoOutputAskedStillGivesTheCountForAFile) {
  double fid = open("b.txt", "w");
  Outcome r = call(kSlotFprintf, 0, {num(fid), str("ab")});
  ASSERT_NE(r.at(0), nullptr);
  EXPECT_EQ(kxGetScalar(r.at(0)), 2);
  // The screen gives it only when asked for.
  r = call(kSlotFprintf, 0, {num(1), str("")});
  EXPECT_EQ(r.at(0), nullptr);
  r = call(kSlotFprintf, 0, {str("")});
  EXPECT_EQ(r.at(0), nullptr);
}

TEST_F(Fprintf, FaultsGoToTheFileError) {
  double fid = open("c.txt", "w");
  Outcome r = call(kSlotFprintf, 1, {num(fid), str("%d %d\n"), doubles({1, 2, 3})});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(kxGetScalar(r.at(0)), 6);
  EXPECT_EQ(ferrorText(fid), codeText(E::NotEnoughArgs));
  r = call(kSlotFprintf, 1, {num(fid), str("ok\n")});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(ferrorText(fid), "");
  {
    CaughtWarnings warnings;
    r = call(kSlotFprintf, 1, {num(fid), str("x\\y")});
  }
  EXPECT_EQ(ferrorText(fid), codeText(E::InvalidFormat));
  close(fid);
  EXPECT_EQ(readFile("c.txt"), "1 2\n3 ok\nx");
}

TEST_F(Fprintf, ReadOnlyFileCantBeWritten) {
  std::ofstream(dir + "/r.txt") << "data";
  double fid = open("r.txt", "r");
  Outcome r = call(kSlotFprintf, 1, {num(fid), str("%d"), num(5)});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(kxGetScalar(r.at(0)), 0);
  EXPECT_NE(ferrorText(fid), "");
}

TEST_F(Fprintf, EncodedLiteralsAndRawNumbers) {
  double fid = open("e.txt", "w", "ISO-8859-1");
  call(kSlotFprintf, 0, {num(fid), str("\xC3\xA9=%d\n"), num(5)});
  close(fid);
  EXPECT_EQ(readFile("e.txt"), "\xE9=5\n");
  fid = open("u.txt", "w", "UTF-8");
  call(kSlotFprintf, 0, {num(fid), str("\xE2\x82\xAC%s|%5.1f\n"), str("\xC3\xA9"), num(2)});
  close(fid);
  EXPECT_EQ(readFile("u.txt"), "\xE2\x82\xAC\xC3\xA9|  2.0\n");
}

TEST_F(Fprintf, LookupAndArgumentErrors) {
  EXPECT_EQ(call(kSlotFprintf, 0, {num(99), str("x")}).error, "KORVAN:legacy:26");
  EXPECT_EQ(call(kSlotFprintf, 0, {num(3.5), str("x")}).error, "KORVAN:legacy:26");
  EXPECT_EQ(call(kSlotFprintf, 0, {num(1)}).error, "KORVAN:legacy:35");
  EXPECT_EQ(call(kSlotFprintf, 0, {num(1), num(2)}).error, "KORVAN:legacy:27");
  EXPECT_EQ(call(kSlotFprintf, 0, {array(kxINT8_CLASS, {1}), str("x")}).error,
            "KORVAN:FileIO:InvalidFid");
  EXPECT_EQ(call(kSlotFprintf, 0, {num(1), str("%d"), kxCreateCellMatrix(0, 0)}).error,
            "KORVAN:printf:invalidInputType");
}

}  // namespace

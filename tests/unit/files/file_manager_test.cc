// FileMgr: fid allocation, the standard files, closing, and fid arguments.
#include "fileio/file_manager.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cmath>

#include "files_test_support.h"

namespace {

using namespace Tarnwicks::FileIO;

class FileMgrTest : public files_test::ScratchDir {
 protected:
  int open(const std::string& name, const char* mode = "w") {
    FilePermission p(mode, 0);
    int error = 0;
    return FileMgr::instance().open(
        kxArrayToUString(kxOwned(kxCreateString(path(name).c_str())).get()), p, MachineFormat(),
        EncodingAttribute(), error);
  }
  FileMgr& table = FileMgr::instance();
};

TEST_F(FileMgrTest, StandardFilesAreThereFromTheStart) {
  ASSERT_NE(table.lookup(0), nullptr);
  EXPECT_EQ(table.lookup(0)->name, u"\"stdin\"");
  EXPECT_EQ(table.lookup(1)->name, u"\"stdout\"");
  EXPECT_EQ(table.lookup(2)->name, u"\"stderr\"");
  EXPECT_EQ(table.lookup(1)->permission.value, "a");
  EXPECT_EQ(table.lookup(0)->getStream()->encodingName(), "UTF-16");
  EXPECT_EQ(table.getFirstUserFid(), 3);
  EXPECT_TRUE(table.list(1).empty());
  EXPECT_FALSE(table.close(1));
  EXPECT_NE(table.lookup(1), nullptr);
}

TEST_F(FileMgrTest, LowestVacatedFidFirst) {
  EXPECT_EQ(open("a"), 3);
  EXPECT_EQ(open("b"), 4);
  EXPECT_EQ(open("c"), 5);
  EXPECT_TRUE(table.close(4));
  EXPECT_EQ(table.lookup(4), nullptr);
  EXPECT_EQ(table.list(1), (std::vector<int>{3, 5}));
  EXPECT_EQ(open("d"), 4);
  EXPECT_TRUE(table.closeAll());
  EXPECT_TRUE(table.list(1).empty());
  EXPECT_EQ(open("e"), 3);
  EXPECT_TRUE(table.list(2).empty());  // only the list of user files exists
}

// The process ends with files still open: each is written out and closed by
// the table, and one whose data the system refuses is reported with the
// reason, never lost in silence.
TEST_F(FileMgrTest, FilesLeftOpenAreWrittenOutAtExit) {
  EXPECT_EXIT(
      {
        int fid = open("kept.bin", "W");
        table.lookup(fid)->getStream()->write(3, "abc", 1);
        FilePermission p("W", 0);
        int error = 0;
        int full = table.open(u"/dev/full", p, MachineFormat(), EncodingAttribute(), error);
        table.lookup(full)->getStream()->write(5, "lost!", 1);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "/dev/full.*No space left on device");
  EXPECT_EQ(readFile("kept.bin"), "abc");
}

// "link/../data.txt", where link points into another folder, names two
// files: the modes of an existing file ('r', 'r+') let the system follow
// the link and then go up from where it points; the modes that may create
// the file ('w', 'a', their '+' and buffered forms) drop "link/.." from the
// name first, as text. Each mode writes its mark, and the mark shows which
// file it opened.
TEST_F(FileMgrTest, DotDotAfterALinkDependsOnWhetherTheModeReads) {
  ASSERT_EQ(mkdir(path("real").c_str(), 0700), 0);
  ASSERT_EQ(mkdir(path("real/sub").c_str(), 0700), 0);
  ASSERT_EQ(symlink("real/sub", path("link").c_str()), 0);
  struct Case {
    const char* mode;
    const char* opened;  // "real/data.txt" or "data.txt"
  };
  const Case cases[] = {{"r+", "real/data.txt"}, {"w", "data.txt"},  {"a", "data.txt"},
                        {"w+", "data.txt"},      {"a+", "data.txt"}, {"W", "data.txt"},
                        {"A", "data.txt"}};
  for (const Case& c : cases) {
    writeFile("real/data.txt", "");
    writeFile("data.txt", "");
    FilePermission p(c.mode, 0);
    int error = 0;
    const std::string name = path("link/../data.txt");
    int fid = table.open(kxArrayToUString(kxOwned(kxCreateString(name.c_str())).get()), p,
                         MachineFormat(), EncodingAttribute(), error);
    ASSERT_GE(fid, 0) << c.mode;
    table.lookup(fid)->getStream()->write(4, "mark", 1);
    EXPECT_TRUE(table.close(fid));
    EXPECT_EQ(readFile(c.opened), "mark") << c.mode;
    const std::string other = std::string(c.opened) == "data.txt" ? "real/data.txt" : "data.txt";
    EXPECT_EQ(readFile(other), "") << c.mode;
  }
  // Reading goes where the system goes.
  writeFile("real/data.txt", "real");
  writeFile("data.txt", "top");
  FilePermission r("r", 0);
  int error = 0;
  int fid =
      table.open(kxArrayToUString(kxOwned(kxCreateString(path("link/../data.txt").c_str())).get()),
                 r, MachineFormat(), EncodingAttribute(), error);
  ASSERT_GE(fid, 0);
  char got[8] = {};
  EXPECT_EQ(table.lookup(fid)->getStream()->read(sizeof got, got, 1), 4u);
  EXPECT_EQ(std::string(got), "real");
  EXPECT_TRUE(table.close(fid));
}

TEST_F(FileMgrTest, FailedOpenTakesNoFid) {
  FilePermission p("r", 0);
  int error = 0;
  EXPECT_EQ(table.open(u"/no/such/file", p, MachineFormat(), EncodingAttribute(), error), -1);
  EXPECT_EQ(error, ENOENT);
  FilePermission w("w", 0);
  EXPECT_EQ(table.open(u"folder/", w, MachineFormat(), EncodingAttribute(), error), -1);
  EXPECT_EQ(error, -2);
  EXPECT_EQ(open("x"), 3);
}

TEST_F(FileMgrTest, BadEncodingLeavesNoFid) {
  EncodingAttribute bad;
  bad.parse("no-such-encoding");
  FilePermission w("w", 0);
  int error = 0;
  EXPECT_EQ(files_test::raisedBy([&] { table.open(u"/tmp/x", w, MachineFormat(), bad, error); }),
            "KORVAN:iofun:InvalidEncoding");
  EXPECT_EQ(table.allocateFid(), 3);
}

TEST(FidArgumentTest, OnlyExactNonNegativeDoubleScalars) {
  struct Case {
    kxArray* a;
    int fid;  // -1: refused
  };
  kxArray* i32 = kxCreateNumericMatrix(1, 1, kxINT32_CLASS, kxREAL);
  *static_cast<int32_t*>(kxGetData(i32)) = 1;
  Case cases[] = {{kxCreateDoubleScalar(1), 1},
                  {kxCreateDoubleScalar(0), 0},
                  {kxCreateDoubleScalar(3.5), -1},
                  {kxCreateDoubleScalar(-1), -1},
                  {kxCreateDoubleScalar(NAN), -1},
                  {kxCreateDoubleScalar(1e300), -1},
                  {kxCreateDoubleScalar(INFINITY), -1},
                  {kxCreateDoubleScalar(-INFINITY), -1},
                  {kxCreateDoubleScalar(-0.5), -1},
                  {kxCreateDoubleScalar(-0.0), 0},
                  {kxCreateDoubleScalar(2147483647.0), 2147483647},
                  {kxCreateDoubleScalar(2147483648.0), -1},
                  {kxCreateDoubleScalar(2147483647.5), -1},
                  {i32, -1},
                  {kxCreateString("1"), -1},
                  {kxCreateDoubleMatrix(1, 2, kxREAL), -1},
                  {kxCreateDoubleMatrix(0, 0, kxREAL), -1}};
  for (Case& c : cases) {
    kxOwned hold(c.a);
    int got = -1;
    std::string id = files_test::raisedBy([&] { got = fidFromArray(c.a); });
    if (c.fid < 0) {
      EXPECT_EQ(id, "KORVAN:FileIO:InvalidFid");
    } else {
      EXPECT_EQ(id, "");
      EXPECT_EQ(got, c.fid);
    }
  }
  kxOwned unknown(kxCreateDoubleScalar(99));
  EXPECT_EQ(files_test::raisedBy([&] { fileFromArray(unknown.get()); }), "KORVAN:legacy:26");
}

}  // namespace

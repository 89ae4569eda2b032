// Names of files: cleaning, tilde expansion, and the order in which a file
// is looked for when it is opened for reading.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "twhost/paths.h"
#include "twhost/text.h"

namespace {

namespace fs = std::filesystem;
using fl::i18n::to_string;
using fl::i18n::to_ustring;

TEST(HostPaths, FixDotsAndSlashesCleansNames) {
  struct Row {
    const char* in;
    const char* out;
  };
  const Row rows[] = {
      {"/a//b/./c", "/a/b/c"}, {"/a/b/../c", "/a/c"},
      {"/../a", "/a"},         {"a/../../b", "../b"},
      {"./a/", "a/"},          {"/", "/"},
      {"a/./", "a/"},          {"/a/b/c/../../d", "/a/d"},
  };
  for (const auto& r : rows) {
    ustring name = to_ustring(r.in);
    PathNameResolver::fixDotsAndSlashes(name);
    EXPECT_EQ(to_string(name), r.out) << r.in;
  }
}

TEST(HostPaths, TildeBecomesTheHomeFolderOnlyAtTheStart) {
  const char* home = std::getenv("HOME");
  ASSERT_NE(home, nullptr);
  EXPECT_EQ(to_string(kpTildeExpansion(u"~/x.txt")), std::string(home) + "/x.txt");
  EXPECT_EQ(to_string(kpTildeExpansion(u"~")), home);
  EXPECT_EQ(to_string(kpTildeExpansion(u"a~/x")), "a~/x");
  EXPECT_EQ(to_string(kpTildeExpansion(u"~other/x")), "~other/x");
}

class SearchOrder : public ::testing::Test {
 protected:
  void SetUp() override {
    root_ = fs::temp_directory_path() / ("tw_paths_" + std::to_string(::getpid()));
    fs::create_directories(root_ / "cwd");
    fs::create_directories(root_ / "onpath");
    old_ = fs::current_path();
    fs::current_path(root_ / "cwd");
  }
  void TearDown() override {
    fs::current_path(old_);
    fs::remove_all(root_);
  }
  static void write(const fs::path& p, const char* text) { std::ofstream(p) << text; }
  static std::string readAll(FILE* f) {
    char buf[64] = {};
    size_t n = std::fread(buf, 1, sizeof buf - 1, f);
    std::fclose(f);
    return std::string(buf, n);
  }
  fs::path root_, old_;
};

TEST_F(SearchOrder, CurrentFolderComesBeforeTheSearchPath) {
  write(root_ / "onpath" / "data.txt", "path");
  kpAddPath((root_ / "onpath").string());
  ustring found;
  int err = -1;
  FILE* f = PathNameResolver::openFileThroughFullPathOrCWDThenKVPath(u"data.txt", "rb", found, err);
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(readAll(f), "path");
  EXPECT_EQ(to_string(found), (root_ / "onpath" / "data.txt").string());
  EXPECT_EQ(err, 0);

  write(root_ / "cwd" / "data.txt", "cwd");
  f = PathNameResolver::openFileThroughFullPathOrCWDThenKVPath(u"data.txt", "rb", found, err);
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(readAll(f), "cwd");
  EXPECT_EQ(to_string(found), (root_ / "cwd" / "data.txt").string());

  char buffer[4353];
  ASSERT_NE(kpFullPath(buffer, "data.txt", sizeof buffer), 0);
  EXPECT_EQ(std::string(buffer), (root_ / "cwd" / "data.txt").string());
}

TEST_F(SearchOrder, MissingFileGivesErrnoAndNoName) {
  ustring found;
  int err = 0;
  EXPECT_EQ(
      PathNameResolver::openFileThroughFullPathOrCWDThenKVPath(u"absent.txt", "rb", found, err),
      nullptr);
  EXPECT_EQ(err, ENOENT);
  EXPECT_TRUE(found.empty());
  char buffer[64];
  EXPECT_EQ(kpFullPath(buffer, "absent.txt", sizeof buffer), 0);
}

TEST_F(SearchOrder, FoldersAreNotOpenedAsFiles) {
  fs::create_directories(root_ / "cwd" / "sub");
  ustring found;
  int err = 0;
  EXPECT_EQ(PathNameResolver::openFileThroughFullPathOrCWDThenKVPath(u"sub", "rb", found, err),
            nullptr);
}

TEST(HostFileSystem, LoneSurrogatesCannotBeFileNames) {
  EXPECT_EQ(fl::filesystem::to_filesystem(u"caf\u00e9"), "caf\xc3\xa9");
  EXPECT_EQ(fl::filesystem::to_filesystem(u"\U0001F600"), "\xf0\x9f\x98\x80");
  EXPECT_THROW(fl::filesystem::to_filesystem(ustring(1, char16_t(0xD800))),
               fl::filesystem::CvtInvalidCharacter);
  EXPECT_THROW(fl::filesystem::to_filesystem(ustring(u"a") + char16_t(0xDC00)),
               fl::filesystem::CvtInvalidCharacter);
}

}  // namespace

// A scratch folder per test, for the unit tests that read and write files.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fileio/file_manager.h"

namespace test_support {

// A folder of its own per test, removed afterwards; every user file the
// test left open is closed first.
class ScratchDir : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/tw_test_XXXXXX";
    dir = mkdtemp(pattern);
  }
  void TearDown() override {
    Tarnwicks::FileIO::FileMgr::instance().closeAll();
    std::filesystem::remove_all(dir);
  }
  std::string path(const std::string& name) const { return dir + "/" + name; }
  std::string writeFile(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
  }
  std::string readFile(const std::string& name) const {
    std::ifstream in(path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  std::string dir;
};

}  // namespace test_support

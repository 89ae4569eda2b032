// Helpers of the file layer's tests: a scratch folder, files with given
// bytes, calls of the built-ins through their slots, and caught warnings.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

#include "fileio/builtin_table.h"
#include "fileio/file_manager.h"
#include "host/errors.h"
#include "host/kx_frame.h"

namespace files_test {

// A folder of its own per test, removed afterwards; every user file the
// test left open is closed.
class ScratchDir : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/tw_files_test_XXXXXX";
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

inline kxArray* str(const std::string& utf8) {
  return kxCreateString(utf8.c_str());
}
inline kxArray* num(double v) {
  return kxCreateDoubleScalar(v);
}
inline kxArray* u16(const std::u16string& s) {
  return kxCreateStringFromNChars_UTF16(s.data(), s.size());
}

// The outcome of one call: the outputs, or the identifier of the error.
struct Outcome {
  std::vector<kxOwned> out;
  std::string error;
  int status = 0;

  double number(size_t i = 0) const { return kxGetScalar(out.at(i).get()); }
  std::u16string text(size_t i = 0) const { return kxArrayToUString(out.at(i).get()); }
  std::string utf8(size_t i = 0) const { return kxArrayToUTF8StdString(out.at(i).get()); }
  const kxArray* at(size_t i = 0) const { return out.at(i).get(); }
};

// Calls a slot; the inputs are destroyed afterwards.
inline Outcome call(Tarnwicks::FileIO::BuiltinSlot slot, int nlhs,
                    std::initializer_list<kxArray*> args) {
  std::vector<kxArray*> in(args);
  std::vector<kxArray*> out(static_cast<size_t>(std::max(nlhs, 1)) + 1, nullptr);
  Outcome r;
  try {
    r.status = kxCallBuiltin(QueryKVFcnTable_fileio()->entries[slot], nlhs, out.data(),
                             static_cast<int>(in.size()), in.data());
  } catch (...) {
    r.error = kxDescribeException(std::current_exception()).identifier;
  }
  for (kxArray* a : in) kxDestroyArray(a);
  for (kxArray* a : out) r.out.emplace_back(a);
  return r;
}

// Collects warnings while alive.
class CaughtWarnings {
 public:
  CaughtWarnings() {
    previous = kxSetWarningHandler(&record);
    ids().clear();
  }
  ~CaughtWarnings() { kxSetWarningHandler(previous); }
  static std::vector<std::string>& ids() {
    static std::vector<std::string> seen;
    return seen;
  }

 private:
  static void record(const std::string& id, const std::string&) { ids().push_back(id); }
  kxWarningHandler previous;
};

// The identifier a callable raises, "" when it doesn't.
template <class F>
std::string raisedBy(F&& f) {
  try {
    f();
  } catch (...) {
    return kxDescribeException(std::current_exception()).identifier;
  }
  return "";
}

}  // namespace files_test

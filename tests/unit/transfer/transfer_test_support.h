// Helpers of the transfer tests: a scratch folder, files with given bytes,
// the built-ins called through their slots, and results as plain vectors.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

#include "fileio/builtin_table.h"
#include "host/errors.h"
#include "host/kx_data.h"
#include "host/kx_frame.h"

namespace transfer_test {

using Tarnwicks::FileIO::BuiltinSlot;
using Tarnwicks::FileIO::kSlotFclose;
using Tarnwicks::FileIO::kSlotFeof;
using Tarnwicks::FileIO::kSlotFerror;
using Tarnwicks::FileIO::kSlotFopen;
using Tarnwicks::FileIO::kSlotFread;
using Tarnwicks::FileIO::kSlotFseek;
using Tarnwicks::FileIO::kSlotFtell;
using Tarnwicks::FileIO::kSlotFwrite;

inline kxArray* str(const std::string& utf8) {
  return kxCreateString(utf8.c_str());
}
inline kxArray* num(double v) {
  return kxCreateDoubleScalar(v);
}
inline kxArray* row(std::initializer_list<double> values) {
  kxArray* a = kxCreateDoubleMatrix(1, values.size(), kxREAL);
  std::copy(values.begin(), values.end(), kxGetPr(a));
  return a;
}
// A 1-by-n array of class `cls` holding `values` converted by the host.
inline kxArray* rowOf(kxClassID cls, const std::vector<double>& values) {
  kxArray* a = kxCreateNumericMatrix(1, values.size(), cls, kxREAL);
  AssignToVoidBuffer(cls, kxGetData(a), kxDOUBLE_CLASS, values.data(), values.size());
  return a;
}

// The outcome of one call: the outputs, or the identifier of the error.
struct Outcome {
  std::vector<kxOwned> out;
  std::string error;

  const kxArray* at(size_t i = 0) const { return out.at(i).get(); }
  double number(size_t i = 0) const { return kxGetScalar(at(i)); }
  // The elements of output i as doubles, column-major.
  std::vector<double> values(size_t i = 0) const {
    const kxArray* a = at(i);
    std::vector<double> v(kxGetNumberOfElements(a));
    AssignToVoidBuffer(kxDOUBLE_CLASS, v.data(), kxGetClassID(a), kxGetData(a), v.size());
    return v;
  }
  std::vector<size_t> size(size_t i = 0) const {
    const kxArray* a = at(i);
    return {kxGetM(a), kxGetN(a)};
  }
  kxClassID cls(size_t i = 0) const { return kxGetClassID(at(i)); }
};

// The built-ins of the shared library, as a host sees them. The library is
// loaded the way the shell loads it, so that every body is the one it ships
// (a static link would let the placeholders of bodies win).
inline const Tarnwicks::FileIO::BuiltinTable* library() {
  static const Tarnwicks::FileIO::BuiltinTable* table = [] {
    void* handle = dlopen(TW_BINARY_DIR "/libtwfileio.so", RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
      ADD_FAILURE() << dlerror();
      return QueryKVFcnTable_fileio();
    }
    reinterpret_cast<void (*)()>(dlsym(handle, "KVInitialize_fileio"))();
    using Query = const Tarnwicks::FileIO::BuiltinTable* (*)();
    return reinterpret_cast<Query>(dlsym(handle, "QueryKVFcnTable_fileio"))();
  }();
  return table;
}

// Calls a slot; the inputs are destroyed afterwards.
inline Outcome call(BuiltinSlot slot, int nlhs, std::initializer_list<kxArray*> args) {
  std::vector<kxArray*> in(args);
  std::vector<kxArray*> out(static_cast<size_t>(std::max(nlhs, 1)) + 1, nullptr);
  Outcome r;
  try {
    kxCallBuiltin(library()->entries[slot], nlhs, out.data(), static_cast<int>(in.size()),
                  in.data());
  } catch (...) {
    r.error = kxDescribeException(std::current_exception()).identifier;
  }
  for (kxArray* a : in) kxDestroyArray(a);
  for (kxArray* a : out) r.out.emplace_back(a);
  return r;
}

// A folder of its own per test, removed afterwards with every file left
// open closed.
class TransferTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/tw_transfer_test_XXXXXX";
    dir = mkdtemp(pattern);
  }
  void TearDown() override {
    call(kSlotFclose, 1, {str("all")});
    std::filesystem::remove_all(dir);
  }
  std::string path(const std::string& name) const { return dir + "/" + name; }
  void writeFile(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
  }
  void writeFile(const std::string& name, std::initializer_list<int> bytes) const {
    std::string s;
    for (int b : bytes) s.push_back(static_cast<char>(b));
    writeFile(name, s);
  }
  std::string readFile(const std::string& name) const {
    std::ifstream in(path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  std::vector<int> fileBytes(const std::string& name) const {
    std::string s = readFile(name);
    return std::vector<int>(reinterpret_cast<const unsigned char*>(s.data()),
                            reinterpret_cast<const unsigned char*>(s.data()) + s.size());
  }
  // fopen; fails the test when the file doesn't open.
  double open(const std::string& name, const std::string& mode, const std::string& format = "n") {
    Outcome r = call(kSlotFopen, 1, {str(path(name)), str(mode), str(format)});
    EXPECT_EQ(r.error, "");
    EXPECT_GE(r.number(), 3) << name << " " << mode;
    return r.number();
  }
  void close(double fid) { call(kSlotFclose, 1, {num(fid)}); }
  // The error number that ferror reports.
  double lastError(double fid) { return call(kSlotFerror, 2, {num(fid)}).number(1); }
  bool atEnd(double fid) { return call(kSlotFeof, 1, {num(fid)}).number() != 0; }
  double position(double fid) { return call(kSlotFtell, 1, {num(fid)}).number(); }

  std::string dir;
};

}  // namespace transfer_test

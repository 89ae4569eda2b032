// Helpers of the transfer tests: a scratch folder, files with given bytes,
// the built-ins called through their slots, and results as plain vectors.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "support/builtin_calls.h"
#include "support/scratch_dir.h"
#include "twhost/kx_data.h"

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
using test_support::call;
using test_support::num;
using test_support::Outcome;
using test_support::str;

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

// The scratch folder, with files written from byte values and the stream
// built-ins at hand.
class TransferTest : public test_support::ScratchDir {
 protected:
  using ScratchDir::writeFile;
  void writeFile(const std::string& name, std::initializer_list<int> bytes) const {
    std::string s;
    for (int b : bytes) s.push_back(static_cast<char>(b));
    writeFile(name, s);
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
};

}  // namespace transfer_test

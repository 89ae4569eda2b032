// Calls of the built-ins through their slots, as the unit tests of every
// module make them: inputs from plain values, the outcome of one call, and
// the warnings raised meanwhile.
#pragma once

#include <algorithm>
#include <exception>
#include <initializer_list>
#include <string>
#include <vector>

#include "fileio/builtin_table.h"
#include "twhost/errors.h"
#include "twhost/kx_data.h"
#include "twhost/kx_frame.h"

namespace test_support {

inline kxArray* str(const std::string& utf8) {
  return kxCreateString(utf8.c_str());
}
inline kxArray* num(double v) {
  return kxCreateDoubleScalar(v);
}

// The identifier of the error a callable raises, "" when it raises none.
template <class F>
std::string raisedBy(F&& f) {
  try {
    f();
  } catch (...) {
    return kxDescribeException(std::current_exception()).identifier;
  }
  return "";
}

// The outcome of one call through a slot: the outputs and the status, or
// the identifier of the error.
struct Outcome {
  std::vector<kxOwned> out;
  std::string error;
  int status = 0;

  const kxArray* at(size_t i = 0) const { return out.at(i).get(); }
  double number(size_t i = 0) const { return kxGetScalar(at(i)); }
  std::u16string text16(size_t i = 0) const { return kxArrayToUString(at(i)); }
  std::string utf8(size_t i = 0) const { return kxArrayToUTF8StdString(at(i)); }
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

// Calls a slot of the library's table; the inputs are destroyed afterwards.
inline Outcome call(Tarnwicks::FileIO::BuiltinSlot slot, int nlhs,
                    std::initializer_list<kxArray*> args) {
  std::vector<kxArray*> in(args);
  std::vector<kxArray*> out(static_cast<size_t>(std::max(nlhs, 1)) + 1, nullptr);
  Outcome r;
  r.error = raisedBy([&] {
    r.status = kxCallBuiltin(QueryKVFcnTable_fileio()->entries[slot], nlhs, out.data(),
                             static_cast<int>(in.size()), in.data());
  });
  for (kxArray* a : in) kxDestroyArray(a);
  for (kxArray* a : out) r.out.emplace_back(a);
  return r;
}

// Collects the identifiers of the warnings raised while it lives.
class CaughtWarnings {
 public:
  CaughtWarnings() {
    ids().clear();
    previous_ = kxSetWarningHandler(&record);
  }
  ~CaughtWarnings() { kxSetWarningHandler(previous_); }
  CaughtWarnings(const CaughtWarnings&) = delete;
  CaughtWarnings& operator=(const CaughtWarnings&) = delete;

  static std::vector<std::string>& ids() {
    static std::vector<std::string> seen;
    return seen;
  }

 private:
  static void record(const std::string& id, const std::string&) { ids().push_back(id); }
  kxWarningHandler previous_;
};

}  // namespace test_support

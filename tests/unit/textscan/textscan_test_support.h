// Inputs of textscan calls for the tests of its options and format: arrays
// made from plain values, and the outcome of building Options from them.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "support/builtin_calls.h"
#include "textscan/options.h"
#include "twhost/errors.h"

namespace textscan_test {

using test_support::num;
using test_support::str;

inline kxArray* u16(std::u16string_view text) {
  return kxCreateStringFromNChars_UTF16(text.data(), text.size());
}
inline kxArray* flag(bool v) {
  return kxCreateLogicalScalar(v);
}
inline kxArray* emptyChar() {
  return kxCreateString("");
}
inline kxArray* cellOf(std::initializer_list<kxArray*> items) {
  kxArray* cell = kxCreateCellMatrix(1, items.size());
  size_t i = 0;
  for (kxArray* a : items) kxSetCell(cell, i++, a);
  return cell;
}
inline kxArray* typed(kxClassID cls, double v) {
  kxArray* a = kxCreateNumericMatrix(1, 1, cls, kxREAL);
  AssignToVoidBuffer(cls, kxGetData(a), kxDOUBLE_CLASS, &v, 1);
  return a;
}

// The identifier and the arguments of a failure.
struct Failure {
  std::string id;
  std::vector<resource_core::MsgArg> args;
};

template <class F>
std::optional<Failure> failureOf(F&& f) {
  try {
    f();
  } catch (const fl::except::IMsgIDException& e) {
    return Failure{e.get_error_id(), e.msgId().args};
  }
  return std::nullopt;
}

// The inputs of one call, owned; Options built from them point into them.
class OptionCall {
 public:
  OptionCall(std::initializer_list<kxArray*> args) {
    for (kxArray* a : args) owned_.emplace_back(a);
  }
  textscan::Options build() const {
    std::vector<kxArray*> raw;
    for (const kxOwned& a : owned_) raw.push_back(a.get());
    return textscan::Options(1, static_cast<int>(raw.size()), raw.data());
  }
  // "" when the options are good.
  std::string error() const {
    auto f = failureOf([&] { build(); });
    return f ? f->id : "";
  }
  std::optional<Failure> failure() const {
    return failureOf([&] { build(); });
  }

 private:
  std::vector<kxOwned> owned_;
};

inline std::u16string textArg(const resource_core::MsgArg& arg) {
  if (auto* s = std::get_if<std::u16string>(&arg)) return *s;
  if (auto* s = std::get_if<std::string>(&arg)) return std::u16string(s->begin(), s->end());
  return u"<number>";
}

}  // namespace textscan_test

// Calls of the built-ins by name for C++ programs that embed the library.
#include <algorithm>
#include <exception>
#include <new>

#include "twfileio/twfileio.h"
#include "twhost/errors.h"
#include "twhost/kx_frame.h"

namespace twfileio {

namespace {

using Tarnwicks::FileIO::BuiltinEntry;

// No built-in gives more outputs than this; asking for more is the same
// error as asking one built-in for more than it gives.
constexpr int kMaxOutputs = 64;
// Room past the outputs asked for, so that a built-in that fills one output
// more than it was asked for (its `ans`) never writes outside the array.
constexpr int kSpareOutputs = 4;

int slotOf(std::string_view name) {
  auto names = builtinNames();
  auto it = std::find(names.begin(), names.end(), name);
  return it == names.end() ? -1 : static_cast<int>(it - names.begin());
}

const Tarnwicks::FileIO::BuiltinTable& table() {
  // Initialising is idempotent; doing it here spares embedders a step.
  static const Tarnwicks::FileIO::BuiltinTable* t = [] {
    KVInitialize_fileio();
    return QueryKVFcnTable_fileio();
  }();
  return *t;
}

[[noreturn]] void throwError(std::exception_ptr e) {
  kxErrorReport r = kxDescribeException(e);
  throw Error(std::move(r.identifier), r.message);
}

}  // namespace

Error::Error(std::string identifier, const std::string& message)
    : std::runtime_error(message), identifier_(std::move(identifier)) {}
Error::~Error() = default;

Input::Input(const char* utf8) : made_(kxCreateString(utf8)) {
  array_ = made_.get();
}
Input::Input(bool value) : made_(kxCreateLogicalScalar(value)) {
  array_ = made_.get();
}
Input::Input(Number n) : made_(kxCreateDoubleScalar(n.value)) {
  array_ = made_.get();
}

bool isBuiltin(std::string_view name) {
  return slotOf(name) >= 0;
}

std::vector<kxOwned> callArrays(std::string_view name, std::span<const kxArray* const> inputs,
                                int nargout) {
  int slot = slotOf(name);
  if (slot < 0) {
    throwError(kxMakeError(kxMsg("KORVAN:twfileio", "UnknownBuiltin", std::string(name))));
  }
  if (nargout < 0) {
    throwError(kxMakeError(kxMsg("KORVAN:twfileio", "NegativeOutputCount", long{nargout})));
  }
  if (nargout > kMaxOutputs) throwError(kxMakeError(kxMsg("KORVAN", "maxlhs")));
  BuiltinEntry entry = table().entries[slot];

  int filled = std::max(nargout, 1);
  std::vector<kxArray*> plhs(filled + kSpareOutputs, nullptr);
  // The calling form takes kxArray**; built-ins never write into their inputs.
  std::vector<kxArray*> prhs;
  prhs.reserve(inputs.size());
  for (const kxArray* a : inputs) prhs.push_back(const_cast<kxArray*>(a));
  // Reserved first: once the call has returned nothing may fail before
  // every output has its owner.
  std::vector<kxOwned> out;
  out.reserve(filled);
  try {
    kxCallBuiltin(entry, nargout, plhs.data(), static_cast<int>(prhs.size()), prhs.data());
  } catch (const fl::except::IUserException&) {
    throwError(std::current_exception());
  } catch (const std::bad_alloc&) {
    throwError(std::current_exception());
  }
  for (size_t i = 0; i < plhs.size(); ++i) {
    kxReleaseFromFrames(plhs[i]);
    kxOwned owned(plhs[i]);
    if (static_cast<int>(i) < filled) out.push_back(std::move(owned));
  }
  return out;
}

std::vector<kxOwned> call(std::string_view name, std::initializer_list<Input> inputs, int nargout) {
  std::vector<const kxArray*> arrays;
  arrays.reserve(inputs.size());
  for (const Input& in : inputs) arrays.push_back(in.get());
  return callArrays(name, arrays, nargout);
}

}  // namespace twfileio

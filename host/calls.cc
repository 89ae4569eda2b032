// Functions by name, and the package registry.
#include "twhost/calls.h"

#include <algorithm>
#include <unordered_map>

#include "twhost/errors.h"
#include "twhost/kx_frame.h"

namespace {

std::unordered_map<std::string, kxFunction>& functionTable() {
  static std::unordered_map<std::string, kxFunction> table;
  return table;
}

}  // namespace

void kxRegisterFunction(const std::string& name, kxFunction fn) {
  functionTable()[name] = std::move(fn);
}

const kxFunction* kxFindFunction(const std::string& name) {
  auto& table = functionTable();
  auto it = table.find(name);
  return it == table.end() ? nullptr : &it->second;
}

int inCallFcn(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs, const char* name) {
  const kxFunction* fn = kxFindFunction(name);
  if (!fn) kxThrowId("KORVAN:shell", "UndefinedFunction", std::string(name));
  int outputs = nlhs > 0 ? nlhs : 1;
  for (int i = 0; i < outputs; ++i) plhs[i] = nullptr;
  try {
    kxCallFrame frame;
    (*fn)(nlhs, plhs, nrhs, prhs);
  } catch (...) {
    for (int i = 0; i < outputs; ++i) plhs[i] = nullptr;
    throw;
  }
  return 0;
}

std::exception_ptr inCallFcnWithTrap(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs,
                                     const char* name) {
  try {
    inCallFcn(nlhs, plhs, nrhs, prhs, name);
    return nullptr;
  } catch (...) {
    return std::current_exception();
  }
}

namespace kcos {

COSMethodInfo::~COSMethodInfo() = default;

Package::Package(std::string name) : name_(std::move(name)) {}
Package::~Package() = default;

Package* Package::subPackage(const std::string& name) {
  for (auto& c : children_) {
    if (c->name() == name) return c.get();
  }
  children_.push_back(std::make_unique<Package>(name));
  return children_.back().get();
}

void Package::addMethod(COSMethodInfo* method) {
  std::string n = method->name();
  auto it =
      std::find_if(methods_.begin(), methods_.end(), [&](const auto& m) { return m->name() == n; });
  if (it != methods_.end()) {
    it->reset(method);
  } else {
    methods_.emplace_back(method);
  }
}

COSMethodInfo* Package::findMethod(const std::string& name) const {
  for (const auto& m : methods_) {
    if (m->name() == name) return m.get();
  }
  return nullptr;
}

namespace {
Package& rootPackage() {
  static Package root("");
  return root;
}
}  // namespace

Package* omGetGlobalPackage(const std::string& name) {
  return rootPackage().subPackage(name);
}

Package* omGetSubPackage(Package* package, const std::string& name) {
  return package->subPackage(name);
}

COSMethodInfo* omFindMethod(const std::string& dottedName) {
  Package* p = &rootPackage();
  size_t start = 0;
  for (size_t dot; (dot = dottedName.find('.', start)) != std::string::npos; start = dot + 1) {
    p = p->subPackage(dottedName.substr(start, dot - start));
  }
  return p->findMethod(dottedName.substr(start));
}

}  // namespace kcos

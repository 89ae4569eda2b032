// Calls by name: the functions of the interpreter (here, the shell and the
// host) and the built-ins, and the package registry through which a library
// offers a method under a dotted name.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "twhost/export.h"
#include "twhost/kx_array.h"

// A callable function: fills up to max(nlhs, 1) outputs.
using kxFunction = std::function<void(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs)>;

TW_HOST void kxRegisterFunction(const std::string& name, kxFunction fn);
TW_HOST const kxFunction* kxFindFunction(const std::string& name);

// Calls a registered function under a call frame; an error passes through.
// Returns 0.
TW_HOST int inCallFcn(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs, const char* name);
// The same, but an error is handed back instead of passing: null on success.
TW_HOST std::exception_ptr inCallFcnWithTrap(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs,
                                             const char* name);

namespace kcos {

// A method with one input and one output, offered in a package.
class TW_HOST COSMethodInfo {
 public:
  virtual ~COSMethodInfo();
  virtual std::string name() const = 0;
  // Fills plhs[0] and sets nlhs to the count of outputs made.
  virtual void invoke(int& nlhs, kxArray** plhs, int nrhs, kxArray** prhs) = 0;
};

class TW_HOST Package {
 public:
  explicit Package(std::string name);
  ~Package();
  const std::string& name() const { return name_; }
  Package* subPackage(const std::string& name);
  // The package takes the method.
  void addMethod(COSMethodInfo* method);
  COSMethodInfo* findMethod(const std::string& name) const;

 private:
  std::string name_;
  std::vector<std::unique_ptr<Package>> children_;
  std::vector<std::unique_ptr<COSMethodInfo>> methods_;
};

TW_HOST Package* omGetGlobalPackage(const std::string& name);
TW_HOST Package* omGetSubPackage(Package* package, const std::string& name);
// "korvan.iofun.internal.formatParser"; null when there is none.
TW_HOST COSMethodInfo* omFindMethod(const std::string& dottedName);

}  // namespace kcos

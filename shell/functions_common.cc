// What the function files share: registration by name, argument checks, and
// the console's output stream.
#include "functions.h"
#include "shell_errors.h"
#include "twhost/console.h"

namespace tw {

namespace {

std::vector<std::string>& registeredNames() {
  static std::vector<std::string> names;
  return names;
}

}  // namespace

void registerShellFunction(const std::string& name, kxFunction fn) {
  if (!kxFindFunction(name)) registeredNames().push_back(name);
  kxRegisterFunction(name, std::move(fn));
}

const std::vector<std::string>& shellFunctionNames() {
  return registeredNames();
}

void writeOut(const std::string& text) {
  services::io::writeConsoleBytes(services::io::KVStream::KVOut, text.data(), text.size());
}

void checkArgCount(const char* fn, int nrhs, int min, int max) {
  if (nrhs < min) shellError("TooFewInputs", std::string(fn));
  if (max >= 0 && nrhs > max) shellError("TooManyInputs", std::string(fn));
}

void checkOutCount(const char* fn, int nlhs, int max) {
  if (nlhs > max) shellError("TooManyOutputs", std::string(fn));
}

}  // namespace tw

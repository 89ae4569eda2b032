// The library is opened with dlopen and found through its three exported
// functions; nothing else of it is linked in.
#include "library.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

#include "fileio/builtin_table.h"
#include "interpreter.h"

namespace tw {

std::string defaultLibraryPath() {
  char buf[PATH_MAX];
  ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
  if (n <= 0) return "libtwfileio.so";
  std::string exe(buf, static_cast<size_t>(n));
  size_t slash = exe.rfind('/');
  return (slash == std::string::npos ? std::string(".") : exe.substr(0, slash)) + "/libtwfileio.so";
}

namespace {

// The compiler's date pads a day below 10 with a space: "Jan  5 2025".
std::string singleSpaced(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == ' ' && (out.empty() || out.back() == ' ')) continue;
    out += c;
  }
  return out;
}

}  // namespace

std::string readLibraryVersion(const std::string& path, LibraryVersion& out) {
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) return dlerror();
  auto version = static_cast<const char* const*>(dlsym(handle, "libtwfileio_version"));
  auto date = static_cast<const char* const*>(dlsym(handle, "libtwfileio_build_date"));
  if (!version || !date) return path + " does not say its version";
  out.version = *version;
  out.buildDate = singleSpaced(*date);
  char resolved[PATH_MAX];
  out.path = realpath(path.c_str(), resolved) ? resolved : path;
  return "";
}

std::string loadLibrary(const std::string& path, Interpreter& interp) {
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (!handle) return dlerror();
  using Init = void (*)();
  using Query = const Tarnwicks::FileIO::BuiltinTable* (*)();
  auto init = reinterpret_cast<Init>(dlsym(handle, "KVInitialize_fileio"));
  auto query = reinterpret_cast<Query>(dlsym(handle, "QueryKVFcnTable_fileio"));
  if (!init || !query) return path + " does not export the library's entry points";
  init();
  const Tarnwicks::FileIO::BuiltinTable* table = query();
  if (!table || !table->entries || table->fileioBuiltinCount != 16) {
    return path + " does not hold a table of sixteen built-ins";
  }
  for (int slot = 0; slot < 16; ++slot) {
    interp.addBuiltin(Tarnwicks::FileIO::kBuiltinNames[slot], table->entries[slot]);
  }
  return "";
}

}  // namespace tw

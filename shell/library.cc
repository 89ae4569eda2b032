// The library is opened with dlopen and found through its three exported
// functions; nothing else of it is linked in.
#include "library.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>

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

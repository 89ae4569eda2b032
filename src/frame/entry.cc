// The library's exported entry points and its self-pinning load.
#include <string>

#include "fileio/builtin_table.h"
#include "gateways.h"
#include "package_methods.h"
#include "print/bodies.h"
#include "twhost/paths.h"

#ifndef TW_FILEIO_VERSION
#define TW_FILEIO_VERSION "0.0.0.0"
#endif

namespace Tarnwicks::FileIO {

namespace {

const std::string kLibraryPrefix = "libtw";

constexpr BuiltinTable fileioBuiltinTable = {kBuiltinEntries, kFileioTableIdA, kFileioTableIdB,
                                             kFileioBuiltinCount};

// Made once by KVInitialize_fileio. Loading our own file a second time keeps
// its reference count above zero for the life of the process, so the table
// of open files survives any attempt to unload the library.
struct LibraryPin {
  std::string name;
  void (*onLoad)();
  void* handle = nullptr;
  bool addPrefix;

  LibraryPin(std::string n, void (*load)(), bool prefix)
      : name(std::move(n)), onLoad(load), addPrefix(prefix) {
    if (onLoad) onLoad();
    std::string file = name;
    if (addPrefix && file.compare(0, kLibraryPrefix.size(), kLibraryPrefix) != 0) {
      file = kLibraryPrefix + file;
    }
    file += ".so";
    utLoadLibrary(file, &handle);  // a failure only means we are not pinned
  }
};

}  // namespace

}  // namespace Tarnwicks::FileIO

using namespace Tarnwicks::FileIO;

extern "C" {

const char* const libtwfileio_version = TW_FILEIO_VERSION;
const char* const libtwfileio_build_date = __DATE__;

void KVInitialize_fileio() {
  // A throwing onLoad leaves the static unbuilt, and the next call retries.
  static LibraryPin pin(std::string("fileio"), registerPackageMethods, true);
  (void)pin;
}

// Deliberately empty: the library stays loaded, and open files stay open.
void KVTerminate_fileio() {}

const BuiltinTable* QueryKVFcnTable_fileio() {
  return &fileioBuiltinTable;
}

}  // extern "C"

namespace builtins::util {
int fiSprintf(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  return sprintfBody(nlhs, plhs, nrhs, prhs);
}
}  // namespace builtins::util

// The library as a host loads it, for the benchmarks: dlopen the shared
// object, initialise it once and take its table of built-ins.
#pragma once

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "fileio/builtin_table.h"

namespace twbench {

// Loads libtwfileio.so from `folder`; exits with dlerror's text on failure.
inline const Tarnwicks::FileIO::BuiltinEntry* loadLibrary(const std::string& folder) {
  void* lib = dlopen((folder + "/libtwfileio.so").c_str(), RTLD_NOW | RTLD_LOCAL);
  if (lib == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::exit(1);
  }
  reinterpret_cast<void (*)()>(dlsym(lib, "KVInitialize_fileio"))();
  using Query = const Tarnwicks::FileIO::BuiltinTable* (*)();
  return reinterpret_cast<Query>(dlsym(lib, "QueryKVFcnTable_fileio"))()->entries;
}

}  // namespace twbench

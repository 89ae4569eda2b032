// Times fwrite of a double array through the library's table:
//
//   fwrite_bench --lib DIR --file PATH [--mb N] [--precision P] [--repeat N]
//
// Prints "seconds S": the best of --repeat runs of fopen(PATH, "w"),
// fwrite(fid, data, P), fclose(fid) on an array of N MiB of doubles made
// once beforehand. Before each run the file is removed and the file system
// synced, so that each write makes its file anew on a quiet disk (a peer
// measured beside it should do the same just before its write).
#include <dlfcn.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fileio/builtin_table.h"
#include "library_loader.h"
#include "twhost/kx_array.h"
#include "twhost/kx_frame.h"

namespace {

using Clock = std::chrono::steady_clock;
using Tarnwicks::FileIO::kSlotFclose;
using Tarnwicks::FileIO::kSlotFopen;
using Tarnwicks::FileIO::kSlotFwrite;

const Tarnwicks::FileIO::BuiltinEntry* slots = nullptr;

// Calls a slot; the inputs named in `owned` are destroyed afterwards.
kxArray* callOne(int slot, std::initializer_list<kxArray*> args, kxArray* keep = nullptr) {
  kxArray* in[6];
  int n = 0;
  for (kxArray* a : args) in[n++] = a;
  kxArray* out[2] = {nullptr, nullptr};
  kxCallBuiltin(slots[slot], 1, out, n, in);
  for (int i = 0; i < n; ++i) {
    if (in[i] != keep) kxDestroyArray(in[i]);
  }
  return out[0];
}

}  // namespace

int main(int argc, char** argv) {
  std::string lib = ".", file, precision = "double";
  double mb = 512;
  int repeat = 3;
  for (int i = 1; i + 1 < argc; i += 2) {
    std::string a = argv[i], v = argv[i + 1];
    if (a == "--lib") lib = v;
    if (a == "--file") file = v;
    if (a == "--mb") mb = std::atof(v.c_str());
    if (a == "--precision") precision = v;
    if (a == "--repeat") repeat = std::atoi(v.c_str());
  }
  if (file.empty()) {
    std::fprintf(stderr, "fwrite_bench: --file is required\n");
    return 2;
  }
  slots = twbench::loadLibrary(lib);
  const size_t n = static_cast<size_t>(mb * 1048576 / 8);
  kxArray* data = kxCreateDoubleMatrix(n, 1, kxREAL);
  double* p = kxGetPr(data);
  for (size_t i = 0; i < n; ++i) p[i] = std::sin(static_cast<double>(i));

  double best = 1e300;
  for (int r = 0; r < repeat; ++r) {
    unlink(file.c_str());
    sync();
    auto start = Clock::now();
    kxArray* fid = callOne(kSlotFopen, {kxCreateString(file.c_str()), kxCreateString("w")});
    double f = kxGetScalar(fid);
    kxDestroyArray(fid);
    kxDestroyArray(callOne(
        kSlotFwrite, {kxCreateDoubleScalar(f), data, kxCreateString(precision.c_str())}, data));
    kxDestroyArray(callOne(kSlotFclose, {kxCreateDoubleScalar(f)}));
    best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
  }
  kxDestroyArray(data);
  std::printf("seconds %.6f\n", best);
  return 0;
}

// Times fread of one file through the library's table, as a host calls it:
//
//   fread_bench --lib DIR --file PATH --precision P [--format F]
//               [--count N] [--repeat N] [--peak]
//
// Prints "seconds S elements E": the best of --repeat calls of
// fread(fid, Inf or N, P, 0, F), each on a freshly opened file, with the
// result freed outside the timing. With --peak, one read runs in a child
// process instead and "peak_bytes B result_bytes R" gives the child's
// largest resident size above what it held before the read, and the size
// of the result. The file should be in the page cache (read it once first).
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
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
using Tarnwicks::FileIO::kSlotFread;

const Tarnwicks::FileIO::BuiltinEntry* slots = nullptr;

kxArray* callOne(int slot, std::initializer_list<kxArray*> args) {
  kxArray* in[6];
  int n = 0;
  for (kxArray* a : args) in[n++] = a;
  kxArray* out[2] = {nullptr, nullptr};
  kxCallBuiltin(slots[slot], 1, out, n, in);
  for (int i = 0; i < n; ++i) kxDestroyArray(in[i]);
  return out[0];
}

struct Options {
  std::string lib = ".", file, precision = "double", format = "n";
  double count = INFINITY;
  int repeat = 3;
  bool peak = false;
};

// One read: returns the result (the caller frees it) and the seconds taken.
kxArray* readOnce(const Options& o, double& seconds) {
  kxArray* fid = callOne(kSlotFopen, {kxCreateString(o.file.c_str()), kxCreateString("r")});
  double f = kxGetScalar(fid);
  kxDestroyArray(fid);
  auto start = Clock::now();
  kxArray* result =
      callOne(kSlotFread, {kxCreateDoubleScalar(f), kxCreateDoubleScalar(o.count),
                           kxCreateString(o.precision.c_str()), kxCreateDoubleScalar(0),
                           kxCreateString(o.format.c_str())});
  seconds = std::chrono::duration<double>(Clock::now() - start).count();
  kxDestroyArray(callOne(kSlotFclose, {kxCreateDoubleScalar(f)}));
  return result;
}

long residentKiB() {
  FILE* f = std::fopen("/proc/self/status", "r");
  char line[256];
  long kib = 0;
  while (f && std::fgets(line, sizeof line, f)) {
    if (std::strncmp(line, "VmHWM:", 6) == 0) kib = std::atol(line + 6);
  }
  if (f) std::fclose(f);
  return kib;
}

}  // namespace

int main(int argc, char** argv) {
  Options o;
  for (int i = 1; i < argc; ++i) {
    std::string a = argv[i];
    if (a == "--peak") {
      o.peak = true;
      continue;
    }
    if (i + 1 >= argc) break;
    std::string v = argv[++i];
    if (a == "--lib") o.lib = v;
    if (a == "--file") o.file = v;
    if (a == "--precision") o.precision = v;
    if (a == "--format") o.format = v;
    if (a == "--count") o.count = std::atof(v.c_str());
    if (a == "--repeat") o.repeat = std::atoi(v.c_str());
  }
  if (o.file.empty()) {
    std::fprintf(stderr, "fread_bench: --file is required\n");
    return 2;
  }
  slots = twbench::loadLibrary(o.lib);

  if (o.peak) {
    int pipeFds[2];
    if (pipe(pipeFds) != 0) return 1;
    pid_t pid = fork();
    if (pid == 0) {
      long before = residentKiB();
      double seconds = 0;
      kxArray* r = readOnce(o, seconds);
      long after = residentKiB();
      long long result = static_cast<long long>(kxGetNumberOfElements(r) * kxGetElementSize(r));
      char text[128];
      int n = std::snprintf(text, sizeof text, "peak_bytes %lld result_bytes %lld\n",
                            (after - before) * 1024LL, result);
      if (write(pipeFds[1], text, static_cast<size_t>(n)) != n) _exit(1);
      _exit(0);
    }
    close(pipeFds[1]);
    char text[128] = {};
    ssize_t n = read(pipeFds[0], text, sizeof text - 1);
    waitpid(pid, nullptr, 0);
    if (n > 0) std::fputs(text, stdout);
    return n > 0 ? 0 : 1;
  }

  double best = 1e300;
  size_t elements = 0;
  for (int i = 0; i < o.repeat; ++i) {
    double seconds = 0;
    kxArray* r = readOnce(o, seconds);
    elements = kxGetNumberOfElements(r);
    kxDestroyArray(r);
    best = std::min(best, seconds);
  }
  std::printf("seconds %.6f elements %zu\n", best, elements);
  return 0;
}

// Times sscanf or fscanf of one file of text through the library's table,
// as a host calls it:
//
//   scan_bench --lib DIR --file PATH --mode sscanf|fscanf [--format F]
//              [--repeat N] [--peak]
//
// sscanf reads the file's text from a char array made before the timing;
// fscanf reads the file itself, freshly opened each time. Prints "seconds S
// elements E": the best of --repeat calls, the result freed outside the
// timing. With --peak, one call runs in a child process instead, and
// "peak_bytes B result_bytes R input_bytes I" gives the child's largest
// resident size during the call above what it held just before it, the
// size of the result, and the size of the input (the char array for sscanf,
// the file for fscanf). The file should be in the page cache.
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "fileio/builtin_table.h"
#include "library_loader.h"
#include "twhost/kx_array.h"
#include "twhost/kx_frame.h"

namespace {

using Clock = std::chrono::steady_clock;
using Tarnwicks::FileIO::kSlotFclose;
using Tarnwicks::FileIO::kSlotFopen;
using Tarnwicks::FileIO::kSlotFscanf;
using Tarnwicks::FileIO::kSlotSscanf;

const Tarnwicks::FileIO::BuiltinEntry* slots = nullptr;

// Calls a slot; the inputs in `keep` are not destroyed.
kxArray* callOne(int slot, std::initializer_list<kxArray*> args, const kxArray* keep = nullptr) {
  kxArray* in[4];
  int n = 0;
  for (kxArray* a : args) in[n++] = a;
  kxArray* out[2] = {nullptr, nullptr};
  kxCallBuiltin(slots[slot], 1, out, n, in);
  for (int i = 0; i < n; ++i) {
    if (in[i] != keep) kxDestroyArray(in[i]);
  }
  return out[0];
}

struct Options {
  std::string lib = ".", file, mode = "sscanf", format = "%f";
  int repeat = 3;
  bool peak = false;
};

// One call: the result (the caller frees it) and the seconds taken.
kxArray* scanOnce(const Options& o, const kxArray* text, double& seconds) {
  if (o.mode == "sscanf") {
    auto start = Clock::now();
    kxArray* r =
        callOne(kSlotSscanf, {const_cast<kxArray*>(text), kxCreateString(o.format.c_str())}, text);
    seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return r;
  }
  kxArray* fid = callOne(kSlotFopen, {kxCreateString(o.file.c_str()), kxCreateString("r")});
  double f = kxGetScalar(fid);
  kxDestroyArray(fid);
  auto start = Clock::now();
  kxArray* r = callOne(kSlotFscanf, {kxCreateDoubleScalar(f), kxCreateString(o.format.c_str())});
  seconds = std::chrono::duration<double>(Clock::now() - start).count();
  kxDestroyArray(callOne(kSlotFclose, {kxCreateDoubleScalar(f)}));
  return r;
}

// A line of /proc/self/status in KiB.
long statusKiB(const char* key) {
  FILE* f = std::fopen("/proc/self/status", "r");
  char line[256];
  long kib = 0;
  const size_t n = std::strlen(key);
  while (f && std::fgets(line, sizeof line, f)) {
    if (std::strncmp(line, key, n) == 0) kib = std::atol(line + n);
  }
  if (f) std::fclose(f);
  return kib;
}

// Starts a new high-water mark of the resident size at what is resident now.
void resetPeak() {
  FILE* f = std::fopen("/proc/self/clear_refs", "w");
  if (f) {
    std::fputs("5", f);
    std::fclose(f);
  }
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
    if (a == "--mode") o.mode = v;
    if (a == "--format") o.format = v;
    if (a == "--repeat") o.repeat = std::atoi(v.c_str());
  }
  if (o.file.empty() || (o.mode != "sscanf" && o.mode != "fscanf")) {
    std::fprintf(stderr, "scan_bench: --file and --mode sscanf|fscanf are required\n");
    return 2;
  }
  slots = twbench::loadLibrary(o.lib);

  kxArray* text = nullptr;
  long long inputBytes = 0;
  {
    std::ifstream in(o.file, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), {});
    inputBytes = static_cast<long long>(bytes.size());
    if (o.mode == "sscanf") {
      text = kxCreateString(bytes.c_str());
      inputBytes = static_cast<long long>(kxGetNumberOfElements(text) * kxGetElementSize(text));
    }
  }

  if (o.peak) {
    int pipeFds[2];
    if (pipe(pipeFds) != 0) return 1;
    pid_t pid = fork();
    if (pid == 0) {
      resetPeak();
      long before = statusKiB("VmRSS:");
      double seconds = 0;
      kxArray* r = scanOnce(o, text, seconds);
      long after = statusKiB("VmHWM:");
      long long result = static_cast<long long>(kxGetNumberOfElements(r) * kxGetElementSize(r));
      char line[160];
      int n =
          std::snprintf(line, sizeof line, "peak_bytes %lld result_bytes %lld input_bytes %lld\n",
                        (after - before) * 1024LL, result, inputBytes);
      if (write(pipeFds[1], line, static_cast<size_t>(n)) != n) _exit(1);
      _exit(0);
    }
    close(pipeFds[1]);
    char line[160] = {};
    ssize_t n = read(pipeFds[0], line, sizeof line - 1);
    waitpid(pid, nullptr, 0);
    if (n > 0) std::fputs(line, stdout);
    return n > 0 ? 0 : 1;
  }

  double best = 1e300;
  size_t elements = 0;
  for (int i = 0; i < o.repeat; ++i) {
    double seconds = 0;
    kxArray* r = scanOnce(o, text, seconds);
    elements = kxGetNumberOfElements(r);
    kxDestroyArray(r);
    best = std::min(best, seconds);
  }
  std::printf("seconds %.6f elements %zu\n", best, elements);
  kxDestroyArray(text);
  return 0;
}

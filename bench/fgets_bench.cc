// Reading a 100 MB file of 80-character lines three ways, in one run:
//   1. a C getline loop (the floor),
//   2. fgets called directly from C++ through the library's table,
//   3. fgets in a loop of a tw script,
// and the ratios of 2 and 3 to 1.
//
//   fgets_bench [--tw PATH] [--file PATH] [--mb N] [--repeat N]
//
// The file is made once (kept in /tmp) and read once before timing, so that
// every way reads from the page cache. Each way's best of --repeat runs is
// reported. The library is loaded from beside tw, as a host would load it.
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "fileio/builtin_table.h"
#include "library_loader.h"
#include "twhost/kx_array.h"

namespace {

using Clock = std::chrono::steady_clock;
using Tarnwicks::FileIO::kSlotFclose;
using Tarnwicks::FileIO::kSlotFgets;
using Tarnwicks::FileIO::kSlotFopen;

constexpr size_t kLineChars = 80;

std::string makeFile(const std::string& path, size_t megabytes) {
  const size_t bytes = megabytes * 1000 * 1000;
  std::error_code ec;
  if (std::filesystem::file_size(path, ec) >= bytes && !ec) return path;
  std::ofstream out(path, std::ios::binary);
  std::string line(kLineChars, ' ');
  for (size_t written = 0, n = 0; written < bytes; ++n) {
    for (size_t i = 0; i < kLineChars; ++i) line[i] = char('!' + (n * 7 + i * 13) % 90);
    out << line << '\n';
    written += kLineChars + 1;
  }
  return path;
}

struct Timing {
  double wall = 1e300;
  double cpu = 1e300;  // user + system, of this process and of children
};

double cpuSeconds() {
  double total = 0;
  for (int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage u{};
    getrusage(who, &u);
    total += double(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
             double(u.ru_utime.tv_usec + u.ru_stime.tv_usec) * 1e-6;
  }
  return total;
}

// The best of `repeat` runs, by wall clock and by processor time. On a busy
// machine the processor time is the steadier of the two.
template <class F>
Timing bestOf(int repeat, F&& run) {
  Timing best;
  for (int i = 0; i < repeat; ++i) {
    double cpu0 = cpuSeconds();
    auto start = Clock::now();
    run();
    best.wall = std::min(best.wall, std::chrono::duration<double>(Clock::now() - start).count());
    best.cpu = std::min(best.cpu, cpuSeconds() - cpu0);
  }
  return best;
}

size_t getlineLoop(const std::string& path) {
  FILE* f = std::fopen(path.c_str(), "rb");
  char* line = nullptr;
  size_t capacity = 0, lines = 0;
  ssize_t n;
  while ((n = getline(&line, &capacity, f)) > 0) lines += size_t(n) > 0;
  std::free(line);
  std::fclose(f);
  return lines;
}

// The library as a host loads it: the shared object beside tw.
const Tarnwicks::FileIO::BuiltinEntry* slots = nullptr;

size_t directLoop(const std::string& path) {
  kxArray* name = kxCreateString(path.c_str());
  kxArray* fid = nullptr;
  slots[kSlotFopen](1, &fid, 1, &name);
  size_t lines = 0;
  for (;;) {
    kxArray* line = nullptr;
    slots[kSlotFgets](1, &line, 1, &fid);
    bool isText = kxIsChar(line);
    kxDestroyArray(line);
    if (!isText) break;
    ++lines;
  }
  kxArray* result = nullptr;
  slots[kSlotFclose](1, &result, 1, &fid);
  kxDestroyArray(result);
  kxDestroyArray(fid);
  kxDestroyArray(name);
  return lines;
}

void twLoop(const std::string& tw, const std::string& script) {
  pid_t pid = fork();
  if (pid == 0) {
    execl(tw.c_str(), tw.c_str(), script.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    std::fprintf(stderr, "tw failed (status %d)\n", status);
    std::exit(1);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::string tw = (std::filesystem::path(argv[0]).parent_path().parent_path() / "tw").string();
  std::string file = "/tmp/tw_fgets_bench.txt";
  size_t megabytes = 100;
  int repeat = 3;
  for (int i = 1; i + 1 < argc; i += 2) {
    if (!std::strcmp(argv[i], "--tw")) tw = argv[i + 1];
    if (!std::strcmp(argv[i], "--file")) file = argv[i + 1];
    if (!std::strcmp(argv[i], "--mb")) megabytes = std::strtoul(argv[i + 1], nullptr, 10);
    if (!std::strcmp(argv[i], "--repeat")) repeat = std::atoi(argv[i + 1]);
  }
  makeFile(file, megabytes);
  slots = twbench::loadLibrary(std::filesystem::path(tw).parent_path().string());

  size_t expected = getlineLoop(file);  // also warms the page cache
  size_t direct = directLoop(file);
  if (direct != expected) {
    std::fprintf(stderr, "fgets read %zu lines, getline %zu\n", direct, expected);
    return 1;
  }
  std::string script = file + ".tw";
  std::ofstream(script) << "fid = fopen(\"" << file << "\");\n"
                        << "n = 0;\nl = fgets(fid);\n"
                        << "while ischar(l)\n  n = n + 1;\n  l = fgets(fid);\nend\n"
                        << "fclose(fid);\n";

  Timing c = bestOf(repeat, [&] { getlineLoop(file); });
  Timing d = bestOf(repeat, [&] { directLoop(file); });
  Timing t = bestOf(repeat, [&] { twLoop(tw, script); });
  std::printf("%zu lines of %zu characters, %.0f MB, best of %d\n", expected, kLineChars,
              double(std::filesystem::file_size(file)) / 1e6, repeat);
  std::printf("%-22s %9s %9s %9s %9s\n", "", "wall s", "ratio", "cpu s", "ratio");
  auto row = [&](const char* what, const Timing& x) {
    std::printf("%-22s %9.3f %8.2fx %9.3f %8.2fx\n", what, x.wall, x.wall / c.wall, x.cpu,
                x.cpu / c.cpu);
  };
  row("C getline loop", c);
  row("fgets direct from C++", d);
  row("fgets in a tw loop", t);
  std::remove(script.c_str());
  return 0;
}

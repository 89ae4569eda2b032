// Formatted output of ten million doubles, in one run:
//   fprintf(fid, "%.6f\n", x), fprintf(fid, "%g\n", x), sprintf("%d,", x)
// through the library's table, against the same work done by
//   - a C loop of fprintf with the same format, into a file,
//   - a loop of std::to_chars into a buffer (the floor for exact digits),
//   - numpy.savetxt (processor times handed in by print_bench.sh),
// and the ratios, with the targets: at least 5 times the C loop, 10 times
// savetxt, and 0.6 of the to_chars loop.
//
//   print_bench [--lib DIR] [--n N] [--repeat N] [--savetxt S1,S2,S3]
//
// The library is loaded from DIR (default: the build folder above this
// program), as a host loads it. The text the library writes is checked
// against the C loop's before any number is reported.
#include <dlfcn.h>
#include <time.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "fileio/builtin_table.h"
#include "library_loader.h"
#include "twhost/kx_array.h"

namespace {

using Tarnwicks::FileIO::kSlotFclose;
using Tarnwicks::FileIO::kSlotFopen;
using Tarnwicks::FileIO::kSlotFprintf;
using Tarnwicks::FileIO::kSlotSprintf;

const Tarnwicks::FileIO::BuiltinEntry* slots = nullptr;

// Processor time of the process (user and system), so that other work on a
// shared machine doesn't count against whichever case it overlaps.
double cpuSeconds() {
  timespec t;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

template <class F>
double bestOf(int repeat, F&& run) {
  double best = 1e300;
  for (int i = 0; i < repeat; ++i) {
    double start = cpuSeconds();
    run();
    best = std::min(best, cpuSeconds() - start);
  }
  return best;
}

std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// ---- the library ---------------------------------------------------------------

void twFprintf(const std::string& path, const char* format, kxArray* values) {
  kxArray* in[3] = {kxCreateString(path.c_str()), kxCreateString("w"), nullptr};
  kxArray* fid = nullptr;
  slots[kSlotFopen](1, &fid, 2, in);
  kxArray* args[3] = {fid, kxCreateString(format), values};
  kxArray* count = nullptr;
  slots[kSlotFprintf](1, &count, 3, args);
  kxArray* closed = nullptr;
  slots[kSlotFclose](1, &closed, 1, &fid);
  for (kxArray* a : {in[0], in[1], fid, args[1], count, closed}) kxDestroyArray(a);
}

std::u16string twSprintf(const char* format, kxArray* values, bool keep) {
  kxArray* args[2] = {kxCreateString(format), values};
  kxArray* text = nullptr;
  slots[kSlotSprintf](1, &text, 2, args);
  std::u16string result;
  if (keep) result = kxArrayToUString(text);
  kxDestroyArray(text);
  kxDestroyArray(args[0]);
  return result;
}

// ---- the others -------------------------------------------------------------------

void cFprintf(const std::string& path, const char* format, const std::vector<double>& x) {
  FILE* f = std::fopen(path.c_str(), "w");
  for (double v : x) std::fprintf(f, format, v);
  std::fclose(f);
}

// "%d," as the library hands it to the C library: "%ld," of the whole value.
void cFprintfInts(const std::string& path, const std::vector<double>& x) {
  FILE* f = std::fopen(path.c_str(), "w");
  for (double v : x) std::fprintf(f, "%ld,", static_cast<long>(v));
  std::fclose(f);
}

size_t toCharsLoop(const std::vector<double>& x, std::vector<char>& buffer, int which) {
  char* p = buffer.data();
  char* end = buffer.data() + buffer.size();
  for (double v : x) {
    if (which == 0) {
      p = std::to_chars(p, end, v, std::chars_format::fixed, 6).ptr;
      *p++ = '\n';
    } else if (which == 1) {
      p = std::to_chars(p, end, v, std::chars_format::general, 6).ptr;
      *p++ = '\n';
    } else {
      p = std::to_chars(p, end, static_cast<long long>(v)).ptr;
      *p++ = ',';
    }
  }
  return static_cast<size_t>(p - buffer.data());
}

struct Row {
  const char* name;
  double tw, c, toChars, savetxt;
};

}  // namespace

int main(int argc, char** argv) {
  std::string lib = std::filesystem::absolute(argv[0]).parent_path().parent_path().string();
  size_t n = 10000000;
  int repeat = 3;
  double savetxt[3] = {0, 0, 0};
  for (int i = 1; i + 1 < argc; i += 2) {
    if (!std::strcmp(argv[i], "--lib")) lib = argv[i + 1];
    if (!std::strcmp(argv[i], "--n")) n = std::strtoul(argv[i + 1], nullptr, 10);
    if (!std::strcmp(argv[i], "--repeat")) repeat = std::atoi(argv[i + 1]);
    if (!std::strcmp(argv[i], "--savetxt")) {
      std::sscanf(argv[i + 1], "%lf,%lf,%lf", &savetxt[0], &savetxt[1], &savetxt[2]);
    }
  }
  slots = twbench::loadLibrary(lib);

  // Values of a spread of magnitudes and signs, and whole ones for "%d,".
  std::mt19937_64 rng(42);
  std::normal_distribution<double> normal(0.0, 1000.0);
  std::vector<double> reals(n), wholes(n);
  for (size_t i = 0; i < n; ++i) {
    reals[i] = normal(rng);
    wholes[i] = std::round(reals[i] * 1000.0);
  }
  kxArray* realArray = kxCreateDoubleMatrix(1, n, kxREAL);
  kxArray* wholeArray = kxCreateDoubleMatrix(1, n, kxREAL);
  std::copy(reals.begin(), reals.end(), kxGetPr(realArray));
  std::copy(wholes.begin(), wholes.end(), kxGetPr(wholeArray));
  std::vector<char> buffer(n * 40);

  const std::string ours = "/tmp/tw_print_bench_lib.txt";
  const std::string theirs = "/tmp/tw_print_bench_c.txt";
  Row rows[3] = {{"fprintf %.6f\\n", 0, 0, 0, savetxt[0]},
                 {"fprintf %g\\n", 0, 0, 0, savetxt[1]},
                 {"sprintf %d,", 0, 0, 0, savetxt[2]}};
  const char* formats[2] = {"%.6f\n", "%g\n"};

  for (int k = 0; k < 2; ++k) {
    cFprintf(theirs, formats[k], reals);
    twFprintf(ours, formats[k], realArray);
    if (slurp(ours) != slurp(theirs)) {
      std::fprintf(stderr, "%s: the library's text differs from printf's\n", rows[k].name);
      return 1;
    }
    rows[k].tw = bestOf(repeat, [&] { twFprintf(ours, formats[k], realArray); });
    rows[k].c = bestOf(1, [&] { cFprintf(theirs, formats[k], reals); });
    rows[k].toChars = bestOf(repeat, [&] { toCharsLoop(reals, buffer, k); });
  }
  {
    cFprintfInts(theirs, wholes);
    std::string expected = slurp(theirs);
    std::u16string text = twSprintf("%d,", wholeArray, true);
    if (text.size() != expected.size() || !std::equal(text.begin(), text.end(), expected.begin())) {
      std::fprintf(stderr, "sprintf %%d,: the library's text differs from printf's\n");
      return 1;
    }
    rows[2].tw = bestOf(repeat, [&] { twSprintf("%d,", wholeArray, false); });
    rows[2].c = bestOf(1, [&] { cFprintfInts(theirs, wholes); });
    rows[2].toChars = bestOf(repeat, [&] { toCharsLoop(wholes, buffer, 2); });
  }
  std::remove(ours.c_str());
  std::remove(theirs.c_str());

  double m = static_cast<double>(n) / 1e6;
  std::printf("%zu values; million values a second of processor time, and the library's ratios\n",
              n);
  std::printf("%-16s %8s %8s %8s %8s   %8s %9s %9s\n", "case", "library", "C loop", "to_chars",
              "savetxt", "/C (>=5)", "/savetxt", "/to_chars");
  bool met = true;
  for (const Row& r : rows) {
    double vsC = r.c / r.tw, vsChars = r.toChars / r.tw;
    std::printf("%-16s %8.2f %8.2f %8.2f ", r.name, m / r.tw, m / r.c, m / r.toChars);
    if (r.savetxt > 0) {
      std::printf("%8.2f   %8.2f %9.2f %9.2f\n", m / r.savetxt, vsC, r.savetxt / r.tw, vsChars);
      met = met && r.savetxt / r.tw >= 10;
    } else {
      std::printf("%8s   %8.2f %9s %9.2f\n", "-", vsC, "-", vsChars);
    }
    met = met && vsC >= 5 && vsChars >= 0.6;
  }
  std::printf("targets (>=5x C, >=10x savetxt, >=0.6 to_chars): %s\n", met ? "met" : "NOT met");
  kxDestroyArray(realArray);
  kxDestroyArray(wholeArray);
  return 0;
}

// Times one textscan read of a file through the library's table, as a host
// makes it: fopen, textscan with the given format and options, fclose, and
// the result destroyed. Prints the best wall time in seconds of the rounds.
// bench/datetime_vs_pandas.py runs it beside pandas.
//
//   datetime_textscan_bench LIBRARY_DIR FILE FORMAT ROUNDS [NAME VALUE]...
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "library_loader.h"
#include "twhost/kx_array.h"

namespace {

using Tarnwicks::FileIO::kSlotFclose;
using Tarnwicks::FileIO::kSlotFopen;
using Tarnwicks::FileIO::kSlotTextscan;

constexpr int kFixedArguments = 5;

double readOnce(const Tarnwicks::FileIO::BuiltinEntry* table, const std::string& file,
                const std::vector<std::string>& textscanArgs) {
  auto start = std::chrono::steady_clock::now();
  kxArray* name = kxCreateString(file.c_str());
  kxArray* fid = nullptr;
  table[kSlotFopen](1, &fid, 1, &name);
  std::vector<kxArray*> in{fid};
  for (const std::string& a : textscanArgs) in.push_back(kxCreateString(a.c_str()));
  kxArray* result = nullptr;
  table[kSlotTextscan](1, &result, static_cast<int>(in.size()), in.data());
  kxArray* status = nullptr;
  table[kSlotFclose](1, &status, 1, &fid);
  kxDestroyArray(result);
  kxDestroyArray(status);
  for (kxArray* a : in) kxDestroyArray(a);
  kxDestroyArray(name);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < kFixedArguments) {
    std::fprintf(stderr, "usage: %s LIBRARY_DIR FILE FORMAT ROUNDS [NAME VALUE]...\n", argv[0]);
    return 2;
  }
  const Tarnwicks::FileIO::BuiltinEntry* table = twbench::loadLibrary(argv[1]);
  std::vector<std::string> textscanArgs{argv[3]};
  for (int i = kFixedArguments; i < argc; ++i) textscanArgs.push_back(argv[i]);
  int rounds = std::atoi(argv[4]);
  double best = 1e300;
  for (int r = 0; r < rounds; ++r) {
    double t = readOnce(table, argv[2], textscanArgs);
    if (t < best) best = t;
  }
  std::printf("%.6f\n", best);
  return 0;
}

// textscan timed as a host calls it, for the driver
// bench/textscan_vs_pandas.py: of text held in a char array (the file's
// UTF-8 made into a char array once), or with "file" of the file itself
// through fopen. textscan reads it in several rounds and the best time is
// printed, in seconds.
//
//     textscan_text_bench LIBDIR FILE FORMAT DELIMITER ROUNDS [file]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "library_loader.h"
#include "twhost/kx_array.h"
#include "twhost/kx_frame.h"

int main(int argc, char** argv) {
  if (argc != 6 && argc != 7) {
    std::fprintf(stderr, "usage: %s LIBDIR FILE FORMAT DELIMITER ROUNDS [file]\n", argv[0]);
    return 2;
  }
  const Tarnwicks::FileIO::BuiltinEntry* table = twbench::loadLibrary(argv[1]);
  std::ifstream in(argv[2], std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(in)), {});
  // The benchmark's files are ASCII: a unit per byte.
  std::u16string units(bytes.begin(), bytes.end());
  kxOwned text(kxCreateStringFromNChars_UTF16(units.data(), units.size()));
  bytes.clear();
  units.clear();
  kxOwned format(kxCreateString(argv[3]));
  kxOwned name(kxCreateString("Delimiter"));
  kxOwned delimiter(kxCreateString(argv[4]));
  int rounds = std::atoi(argv[5]);
  double best = 1e300;
  bool fromFile = argc == 7 && std::string(argv[6]) == "file";
  kxOwned path(kxCreateString(argv[2]));
  for (int r = 0; r < rounds; ++r) {
    kxArray* plhs[2] = {nullptr, nullptr};
    kxArray* fid = nullptr;
    auto start = std::chrono::steady_clock::now();
    if (fromFile) {
      kxArray* openArgs[] = {path.get()};
      kxCallBuiltin(table[Tarnwicks::FileIO::kSlotFopen], 1, &fid, 1, openArgs);
    }
    kxArray* prhs[] = {fromFile ? fid : text.get(), format.get(), name.get(), delimiter.get()};
    kxCallBuiltin(table[Tarnwicks::FileIO::kSlotTextscan], 1, plhs, 4, prhs);
    if (fromFile) {
      kxArray* closed = nullptr;
      kxCallBuiltin(table[Tarnwicks::FileIO::kSlotFclose], 1, &closed, 1, &fid);
      kxDestroyArray(closed);
      kxDestroyArray(fid);
    }
    double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    kxDestroyArray(plhs[0]);
    if (seconds < best) best = seconds;
  }
  std::printf("%.6f\n", best);
  return 0;
}

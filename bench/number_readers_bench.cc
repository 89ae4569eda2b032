// The number readers of fscanf against the C library's fscanf, reading the
// same file of numbers in one run, and the ratio of the two:
//   doubles   readDouble        against fscanf("%le")
//   integers  readSigned        against fscanf("%lld")
// A strtod/strtoll loop over the text in memory is shown as the floor.
//
//   number_readers_bench [--count N] [--repeat N]
//
// The files are written to /tmp, read once before timing so that every way
// reads from the page cache, and removed at the end. Each way's best of
// --repeat runs is reported.
#include <unistd.h>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

#include "fileio/attributes.h"
#include "fileio/file_stream.h"
#include "fileio/number_readers.h"

namespace {

using namespace Tarnwicks::FileIO;
using Clock = std::chrono::steady_clock;

std::string writeNumbers(const std::string& path, size_t count, bool doubles) {
  FILE* f = std::fopen(path.c_str(), "wb");
  uint64_t x = 88172645463325252ull;
  for (size_t i = 0; i < count; ++i) {
    x ^= x << 13;
    x ^= x >> 7;
    x ^= x << 17;
    if (doubles) {
      std::fprintf(f, "%.17g\n", static_cast<double>(x % 2000000) / 7.0 - 1e5);
    } else {
      std::fprintf(f, "%" PRId64 "\n", static_cast<int64_t>(x % 4000000000ull) - 2000000000);
    }
  }
  std::fclose(f);
  FILE* in = std::fopen(path.c_str(), "rb");
  std::string text;
  char block[65536];
  for (size_t n; (n = std::fread(block, 1, sizeof block, in)) > 0;) text.append(block, n);
  std::fclose(in);
  return text;
}

// Best wall time of `repeat` runs of `work`, which returns a checksum.
double best(int repeat, const std::function<double()>& work, double& checksum) {
  double fastest = 1e300;
  for (int i = 0; i < repeat; ++i) {
    auto start = Clock::now();
    checksum = work();
    fastest = std::min(fastest, std::chrono::duration<double>(Clock::now() - start).count());
  }
  return fastest;
}

double viaReaders(const std::string& path, bool doubles) {
  FILE* f = std::fopen(path.c_str(), "rb");
  static const FilePermission permission("r", 0);
  fileStream s(f, "", &permission);
  double sum = 0;
  for (;;) {
    if (doubles) {
      int status = kReadSuccess;
      double v = readDouble(s, -1, status);
      if (status != kReadSuccess) break;
      sum += v;
    } else {
      int error = 0;
      bool negative = false;
      uint64_t v = readSigned(s, -1, error, negative);
      if (error != 0) break;
      sum += negative ? -static_cast<double>(v) : static_cast<double>(v);
    }
  }
  std::fclose(f);
  return sum;
}

double viaFscanf(const std::string& path, bool doubles) {
  FILE* f = std::fopen(path.c_str(), "rb");
  double sum = 0;
  if (doubles) {
    double v;
    while (std::fscanf(f, "%le", &v) == 1) sum += v;
  } else {
    long long v;
    while (std::fscanf(f, "%lld", &v) == 1) sum += static_cast<double>(v);
  }
  std::fclose(f);
  return sum;
}

double viaMemory(const std::string& text, bool doubles) {
  const char* p = text.c_str();
  double sum = 0;
  for (char* end = nullptr;; p = end) {
    double v = doubles ? std::strtod(p, &end) : static_cast<double>(std::strtoll(p, &end, 10));
    if (end == p) break;
    sum += v;
  }
  return sum;
}

}  // namespace

int main(int argc, char** argv) {
  size_t count = 2000000;
  int repeat = 5;
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::strcmp(argv[i], "--count") == 0) count = std::strtoull(argv[i + 1], nullptr, 10);
    if (std::strcmp(argv[i], "--repeat") == 0) repeat = std::atoi(argv[i + 1]);
  }
  std::printf("%zu numbers, best of %d\n", count, repeat);
  for (bool doubles : {true, false}) {
    const std::string path =
        "/tmp/number_readers_bench_" + std::to_string(getpid()) + (doubles ? ".dbl" : ".int");
    const std::string text = writeNumbers(path, count, doubles);
    double a = 0, b = 0, c = 0;
    const double readers = best(
        repeat, [&] { return viaReaders(path, doubles); }, a);
    const double fscanf = best(
        repeat, [&] { return viaFscanf(path, doubles); }, b);
    const double memory = best(
        repeat, [&] { return viaMemory(text, doubles); }, c);
    std::remove(path.c_str());
    const double perNumber = 1e9 / static_cast<double>(count);
    std::printf(
        "%-8s readers %6.1f ns  fscanf %6.1f ns  (fscanf / readers %.2f)  in memory %6.1f ns%s\n",
        doubles ? "doubles" : "integers", readers * perNumber, fscanf * perNumber, fscanf / readers,
        memory * perNumber, a == b && b == c ? "" : "  CHECKSUMS DIFFER");
  }
  return 0;
}

// Google Benchmark micro-benchmarks of the costs every call pays: the host's
// call frame, a built-in called through the table, the class conversions,
// and the per-value rate of the print and read paths on small and large
// arrays. The comparisons with numpy and the C library live in the scripts
// beside this file; these numbers are for spotting regressions.
//
//   micro_bench [--lib DIR] [benchmark flags]   (DIR defaults to the build)
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "fileio/builtin_table.h"
#include "library_loader.h"
#include "twhost/kx_array.h"
#include "twhost/kx_data.h"
#include "twhost/kx_frame.h"

namespace {

using namespace Tarnwicks::FileIO;

const BuiltinEntry* slots = nullptr;

// Calls a slot with borrowed inputs and frees the first output.
void call(int slot, int nlhs, std::initializer_list<kxArray*> inputs) {
  std::vector<kxArray*> in(inputs);
  kxArray* out[4] = {};
  kxCallBuiltin(slots[slot], nlhs, out, static_cast<int>(in.size()), in.data());
  for (kxArray* a : out) kxDestroyArray(a);
}

kxArray* doubles(size_t n) {
  kxArray* a = kxCreateDoubleMatrix(1, n, kxREAL);
  double* p = kxGetPr(a);
  for (size_t i = 0; i < n; ++i) p[i] = std::sin(static_cast<double>(i)) * 1000.0;
  return a;
}

void BM_CallFrameAlone(benchmark::State& state) {
  for (auto _ : state) {
    kxCallFrame frame;
    benchmark::DoNotOptimize(&frame);
  }
}
BENCHMARK(BM_CallFrameAlone);

void BM_FtellThroughTable(benchmark::State& state) {
  kxArray* fid = kxCreateDoubleScalar(1);
  for (auto _ : state) call(kSlotFtell, 1, {fid});
  kxDestroyArray(fid);
}
BENCHMARK(BM_FtellThroughTable);

void BM_SprintfDoubles(benchmark::State& state) {
  kxArray* format = kxCreateString("%.6f\n");
  kxArray* values = doubles(static_cast<size_t>(state.range(0)));
  for (auto _ : state) call(kSlotSprintf, 1, {format, values});
  state.SetItemsProcessed(state.iterations() * state.range(0));
  kxDestroyArray(format);
  kxDestroyArray(values);
}
BENCHMARK(BM_SprintfDoubles)->Arg(1)->Arg(1000)->Arg(1000000);

void BM_SprintfIntegers(benchmark::State& state) {
  kxArray* format = kxCreateString("%d,");
  kxArray* values = doubles(static_cast<size_t>(state.range(0)));
  for (double* p = kxGetPr(values); p != kxGetPr(values) + state.range(0); ++p) *p = std::round(*p);
  for (auto _ : state) call(kSlotSprintf, 1, {format, values});
  state.SetItemsProcessed(state.iterations() * state.range(0));
  kxDestroyArray(format);
  kxDestroyArray(values);
}
BENCHMARK(BM_SprintfIntegers)->Arg(1)->Arg(1000)->Arg(1000000);

// A file of `n` doubles, written once, read back whole per iteration.
void BM_FreadDoubles(benchmark::State& state) {
  const size_t n = static_cast<size_t>(state.range(0));
  std::string path = "/tmp/tw_micro_" + std::to_string(::getpid()) + ".bin";
  {
    std::vector<double> data(n, 1.5);
    FILE* f = std::fopen(path.c_str(), "wb");
    std::fwrite(data.data(), sizeof(double), n, f);
    std::fclose(f);
  }
  kxArray* name = kxCreateString(path.c_str());
  kxArray* mode = kxCreateString("r");
  kxArray* size = kxCreateDoubleScalar(INFINITY);
  kxArray* precision = kxCreateString("double");
  for (auto _ : state) {
    kxArray* fid = nullptr;
    kxArray* in[2] = {name, mode};
    kxCallBuiltin(slots[kSlotFopen], 1, &fid, 2, in);
    call(kSlotFread, 1, {fid, size, precision});
    call(kSlotFclose, 1, {fid});
    kxDestroyArray(fid);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(n * sizeof(double)));
  for (kxArray* a : {name, mode, size, precision}) kxDestroyArray(a);
  std::remove(path.c_str());
}
BENCHMARK(BM_FreadDoubles)->Arg(1000)->Arg(1 << 20);

void BM_ConvertDoubleToInt16(benchmark::State& state) {
  const size_t n = static_cast<size_t>(state.range(0));
  std::vector<double> src(n);
  for (size_t i = 0; i < n; ++i) src[i] = std::sin(static_cast<double>(i)) * 40000.0;
  std::vector<int16_t> dst(n);
  for (auto _ : state) {
    AssignToVoidBuffer(kxINT16_CLASS, dst.data(), kxDOUBLE_CLASS, src.data(), n);
    benchmark::DoNotOptimize(dst.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ConvertDoubleToInt16)->Arg(1 << 16);

}  // namespace

int main(int argc, char** argv) {
  std::string lib = std::filesystem::absolute(argv[0]).parent_path().parent_path().string();
  std::vector<char*> rest;
  for (int i = 0; i < argc; ++i) {
    if (i + 1 < argc && std::strcmp(argv[i], "--lib") == 0) {
      lib = argv[++i];
    } else {
      rest.push_back(argv[i]);
    }
  }
  slots = twbench::loadLibrary(lib);
  int n = static_cast<int>(rest.size());
  benchmark::Initialize(&n, rest.data());
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

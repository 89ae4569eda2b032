// The number lexer of textscan's numeric fields against the C library and
// fast_float on the same comma-separated text: how much of a field's cost
// finding its end takes. The lexer only finds ends and parts; strtod and
// from_chars also convert, so their time is the budget a reader has for a
// field, and the lexer should take a small part of it.
//
//   textscan_lexer_bench [benchmark flags]
#include <benchmark/benchmark.h>
#include <fast_float/fast_float.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "textscan/number_lexer.h"

namespace {

constexpr size_t kFields = 1 << 20;

// Numbers as a CSV writer prints them: mixed magnitudes, signs, exponents.
const std::string& csvText() {
  static const std::string text = [] {
    std::mt19937_64 random(42);
    std::uniform_real_distribution<double> mantissa(-1000, 1000);
    std::string s;
    char buffer[32];
    for (size_t i = 0; i < kFields; ++i) {
      double v = mantissa(random) * (i % 7 == 0 ? 1e-9 : 1.0);
      int n = (i % 3 == 0) ? std::snprintf(buffer, sizeof buffer, "%.17g", v)
                           : std::snprintf(buffer, sizeof buffer, "%.6f", v);
      s.append(buffer, n);
      s.push_back(i % 8 == 7 ? '\n' : ',');
    }
    return s;
  }();
  return text;
}

const std::u16string& csvUnits() {
  static const std::u16string units(csvText().begin(), csvText().end());
  return units;
}

template <class CharT>
void lexAll(benchmark::State& state, const std::basic_string<CharT>& text) {
  textscan::NumberSyntax syntax(u"eEdD");
  for (auto _ : state) {
    const CharT* p = text.data();
    const CharT* end = p + text.size();
    size_t total = 0;
    while (p < end) {
      textscan::LexedNumber n = textscan::lexNumber(p, end, syntax);
      total += n.length;
      p += n.length + 1;  // the delimiter
    }
    benchmark::DoNotOptimize(total);
  }
  state.SetItemsProcessed(state.iterations() * kFields);
}

void BM_LexerBytes(benchmark::State& state) {
  lexAll(state, csvText());
}
BENCHMARK(BM_LexerBytes)->Unit(benchmark::kMillisecond);

void BM_LexerUnits(benchmark::State& state) {
  lexAll(state, csvUnits());
}
BENCHMARK(BM_LexerUnits)->Unit(benchmark::kMillisecond);

// Peer: the C library finds the end and converts.
void BM_StrtodPeer(benchmark::State& state) {
  const std::string& text = csvText();
  for (auto _ : state) {
    const char* p = text.c_str();
    const char* end = p + text.size();
    double sum = 0;
    while (p < end) {
      char* stop = nullptr;
      sum += std::strtod(p, &stop);
      p = stop + 1;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kFields);
}
BENCHMARK(BM_StrtodPeer)->Unit(benchmark::kMillisecond);

// Peer: fast_float, the fastest conversion at hand, also finds the end.
void BM_FromCharsPeer(benchmark::State& state) {
  const std::string& text = csvText();
  for (auto _ : state) {
    const char* p = text.data();
    const char* end = p + text.size();
    double sum = 0;
    while (p < end) {
      double v = 0;
      auto r = fast_float::from_chars(p, end, v);
      sum += v;
      p = r.ptr + 1;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kFields);
}
BENCHMARK(BM_FromCharsPeer)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

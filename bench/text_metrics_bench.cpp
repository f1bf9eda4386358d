// String width with the built-in metrics: 10^6 strings of 20 printable
// characters per iteration, for a kerning face and for Courier.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "qvgui/text.h"

namespace {

constexpr int kStrings = 1000000;
constexpr int kLength = 20;

// The strings back to back, each NUL-terminated.
const std::vector<char>& corpus() {
  static const std::vector<char> text = [] {
    std::vector<char> t(static_cast<std::size_t>(kStrings) * (kLength + 1));
    std::mt19937 rng(3);
    std::uniform_int_distribution<int> printable(32, 126);
    for (int s = 0; s < kStrings; ++s) {
      char* p = &t[static_cast<std::size_t>(s) * (kLength + 1)];
      for (int i = 0; i < kLength; ++i) p[i] = static_cast<char>(printable(rng));
      p[kLength] = '\0';
    }
    return t;
  }();
  return text;
}

// range(0): AFM index (32 Times-Roman kerns, 8 Courier does not); range(1): table set.
void BM_StringWidthDPI(benchmark::State& state) {
  const std::vector<char>& text = corpus();
  const int index = static_cast<int>(state.range(0)), flag = static_cast<int>(state.range(1));
  for (auto _ : state) {
    long total = 0;
    for (int s = 0; s < kStrings; ++s) {
      total += guiStringWidthDPI(&text[static_cast<std::size_t>(s) * (kLength + 1)], flag, index, 10.0, 96.0);
    }
    benchmark::DoNotOptimize(total);
  }
  state.SetItemsProcessed(state.iterations() * kStrings * kLength);
  state.SetLabel("items = characters");
}
BENCHMARK(BM_StringWidthDPI)->Args({32, 0})->Args({32, 1})->Args({8, 0})->Unit(benchmark::kMillisecond);

// The same bytes measured with their lengths known (the handlers' path).
void BM_AfmStringWidth(benchmark::State& state) {
  const std::vector<char>& text = corpus();
  const int index = static_cast<int>(state.range(0));
  for (auto _ : state) {
    double total = 0;
    for (int s = 0; s < kStrings; ++s) {
      total += gui_objects::font::afmStringWidth(index, 1, &text[static_cast<std::size_t>(s) * (kLength + 1)],
                                                 kLength);
    }
    benchmark::DoNotOptimize(total);
  }
  state.SetItemsProcessed(state.iterations() * kStrings * kLength);
}
BENCHMARK(BM_AfmStringWidth)->Arg(32)->Unit(benchmark::kMillisecond);

}  // namespace

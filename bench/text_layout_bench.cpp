// Text layout throughput: a three-line plain label, the same label as TeX
// with scripts and symbols, and validation alone; characters per second.
#include <benchmark/benchmark.h>

#include <string>

#include "qvgui/text.h"

namespace {

using namespace gui_objects::font;

const std::string kPlainLabel =
    "Temperature at the inlet (\xC2\xB0"
    "C)\nmeasured every 15 minutes\nstation 42, AVG";
const std::string kTexLabel = "T_{inlet} (\\circ{}C)\n\\Delta t = 15 min, \\sigma^2_{n-1}\n\\bf station 42";

StringProps labelProps() {
  StringProps p;
  p.faceName = "Helvetica";
  p.size = 11;
  p.dpi = 96;
  p.horzAlign = TEXT_HALIGN_CENTER;
  p.vertAlign = TEXT_VALIGN_MIDDLE;
  p.rotation = 90;
  return p;
}

void BM_Layout_PlainThreeLines(benchmark::State& state) {
  const TextHandler handler(TextKind::Plain);
  const StringProps p = labelProps();
  for (auto _ : state) benchmark::DoNotOptimize(handler.layout(kPlainLabel, p));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kPlainLabel.size()));
}
BENCHMARK(BM_Layout_PlainThreeLines);

void BM_Layout_TexThreeLines(benchmark::State& state) {
  const TextHandler handler(TextKind::Tex);
  const StringProps p = labelProps();
  for (auto _ : state) benchmark::DoNotOptimize(handler.layout(kTexLabel, p));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kTexLabel.size()));
}
BENCHMARK(BM_Layout_TexThreeLines);

void BM_Validate_Tex(benchmark::State& state) {
  const TextHandler handler(TextKind::Tex);
  for (auto _ : state) benchmark::DoNotOptimize(handler.validate(kTexLabel));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kTexLabel.size()));
}
BENCHMARK(BM_Validate_Tex);

}  // namespace

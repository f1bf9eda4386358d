// Whole figures end to end: the sample filled-contour and surface figures
// laid out, drawn and written as 1600 x 1200 PNG files.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "qvgui/plot.h"

namespace {

void renderSample(benchmark::State& state, const char* name) {
  const std::string path =
      (std::filesystem::temp_directory_path() / (std::string("qvgui_bench_") + name + ".png")).string();
  for (auto _ : state) {
    qvgui::plot::sampleFigure(name, 1600, 1200, 200).save(path);
  }
  std::remove(path.c_str());
}

void BM_FigureContourf(benchmark::State& state) { renderSample(state, "contourf"); }
void BM_FigureSurface(benchmark::State& state) { renderSample(state, "surface"); }

BENCHMARK(BM_FigureContourf)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FigureSurface)->Unit(benchmark::kMillisecond);

}  // namespace

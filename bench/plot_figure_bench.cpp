// Whole figures end to end: the sample filled-contour and surface figures
// laid out, drawn and written as 1600 x 1200 PNG files; and what a legend
// placed in the emptiest corner adds to drawing a long noisy line.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

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

// A random walk of 200 000 points drawn and written as an 800 x 600 PNG,
// without a legend (0) and with one placed by Best (1).
void BM_NoisyLineLegend(benchmark::State& state) {
  using namespace qvgui::plot;
  std::vector<double> x(200000);
  std::vector<double> y(x.size());
  std::mt19937 rng(7);
  std::normal_distribution<double> step(0, 1);
  double walk = 0;
  for (std::size_t k = 0; k < x.size(); ++k) {
    x[k] = static_cast<double>(k);
    walk += step(rng);
    y[k] = walk;
  }
  Figure f(800, 600, 100);
  Axes& ax = f.addAxes();
  LineOptions o;
  o.label = "random walk";
  ax.plot(x, y, o);
  ax.legend(state.range(0) != 0 ? Legend::Best : Legend::Off);
  const std::string path = (std::filesystem::temp_directory_path() / "qvgui_bench_walk.png").string();
  for (auto _ : state) f.save(path);
  std::remove(path.c_str());
}

BENCHMARK(BM_NoisyLineLegend)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace

// Point-in-polygon on a 1,000-vertex polygon, and a marker hit test.
// Figures: queries per second.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "qvgui/raster.h"
#include "qvgui/window.h"

namespace {

// A star-shaped ring of n vertices with random radii around (500, 500).
std::vector<qvpoint32> ring(int n) {
  std::mt19937 rng(1);
  std::uniform_real_distribution<double> radius(200.0, 480.0);
  std::vector<qvpoint32> pts;
  for (int i = 0; i < n; ++i) {
    const double a = 2.0 * 3.14159265358979 * i / n, r = radius(rng);
    pts.push_back(
        qvpoint32{static_cast<int>(500 + r * std::cos(a)), static_cast<int>(500 + r * std::sin(a))});
  }
  return pts;
}

std::vector<qvpoint32> queries() {
  std::mt19937 rng(2);
  std::uniform_int_distribution<int> coord(0, 1000);
  std::vector<qvpoint32> q(4096);
  for (qvpoint32& p : q) p = qvpoint32{coord(rng), coord(rng)};
  return q;
}

void BM_PtInPolygon(benchmark::State& state) {
  std::vector<qvpoint32> pts = ring(static_cast<int>(state.range(0)));
  const Polygon2 poly{pts.data(), static_cast<std::int32_t>(pts.size())};
  const std::vector<qvpoint32> q = queries();
  std::size_t i = 0;
  int hits = 0;
  for (auto _ : state) {
    hits += geoPtInPolygon(q[i++ & 4095], 1, &poly);
  }
  benchmark::DoNotOptimize(hits);
  state.counters["queries_per_s"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_PtInPolygon)->Arg(1000);

void BM_MarkerHit(benchmark::State& state) {
  winMethods_tag* methods = wm_Create();
  WinRec_tag* win = wr_Create(0, nullptr);
  swr_winMethods(win, methods);
  swm_PixelsPerPoint(methods, [](WinRec_tag*) { return 1.5; });
  const std::vector<qvpoint32> q = queries();
  std::size_t i = 0;
  int hits = 0;
  for (auto _ : state) {
    const qvpoint32 p{500 + q[i & 4095].x % 16, 500 + q[i & 4095].y % 16};
    hits += geoIsPtInMarkerTerritory(win, p, static_cast<int>(i % 13), 8, 1, qvpoint32{508, 508});
    ++i;
  }
  benchmark::DoNotOptimize(hits);
  state.counters["queries_per_s"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
  wr_Destroy(win);
  wm_Destroy(methods);
}
BENCHMARK(BM_MarkerHit);

}  // namespace

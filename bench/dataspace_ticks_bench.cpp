// Tick-picker speed in calls per second: calculateLinearTicks over 2..11 tick
// counts, and a full nicefyLimits + computeAxisTicks pass per axis. The ranges
// come from the file named by QVGUI_TICK_RANGES (one "lower upper" pair per
// line, as bench/ticks_vs_d3.sh writes it for both sides of the comparison),
// else from a fixed-seed generator.
#include <benchmark/benchmark.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <random>
#include <utility>
#include <vector>

#include "qvgui/dataspace.h"

namespace {

using namespace gui_objects::tickpicker;

const std::vector<std::pair<double, double>>& ranges() {
  static const std::vector<std::pair<double, double>> data = [] {
    std::vector<std::pair<double, double>> out;
    if (const char* path = std::getenv("QVGUI_TICK_RANGES")) {
      std::ifstream in(path);
      double lo = 0, hi = 0;
      while (in >> lo >> hi) out.emplace_back(lo, hi);
    }
    if (out.empty()) {
      std::mt19937_64 rng(2026);
      std::uniform_real_distribution<double> unit(0, 1);
      for (int i = 0; i < 100000; ++i) {
        const double scale = std::pow(10.0, std::floor(unit(rng) * 13) - 6);
        const double lo = (unit(rng) * 2 - 1) * scale;
        out.emplace_back(lo, lo + unit(rng) * scale + 1e-3 * scale);
      }
    }
    return out;
  }();
  return data;
}

void BM_CalculateLinearTicks(benchmark::State& state, InOut mode) {
  const auto& r = ranges();
  std::size_t i = 0;
  for (auto _ : state) {
    double lo = r[i].first, hi = r[i].second;
    benchmark::DoNotOptimize(calculateLinearTicks(&lo, &hi, 2, 11, mode));
    benchmark::DoNotOptimize(lo);
    if (++i == r.size()) i = 0;
  }
  state.SetItemsProcessed(state.iterations());
  state.SetLabel(std::to_string(r.size()) + " ranges");
}
BENCHMARK_CAPTURE(BM_CalculateLinearTicks, enclosing, kEnclosing);
BENCHMARK_CAPTURE(BM_CalculateLinearTicks, inside, kInside);

// A linear axes object with automatic limits and ticks.
class BenchAxis : public test::NullAxisDescriptor {
 public:
  double render[2] = {0, 1};
  int ticksInRange = 0;
  int offset = 0;

  bool isAxisLimitModeAuto(AxisType) const override { return true; }
  bool isAxisTickModeAuto(AxisType) const override { return true; }
  double getRenderLimit(AxisType, OuterLimitIndices i) const override { return render[i]; }
  void setRenderLimit(AxisType, OuterLimitIndices i, double v) override { render[i] = v; }
  void normalized3ToNumTics(AxisType, int* lo, int* hi) override {
    *lo = 2;
    *hi = 11;
  }
  double getInnerLimit(AxisType, InnerLimitIndices i) const override { return i == 0 ? -DBL_MAX : DBL_MAX; }
  void setNumTicksInRange(AxisType, int n) override { ticksInRange = n; }
  void incrementNumTicksInRange(AxisType) override { ++ticksInRange; }
  int getNumTicksInRange(AxisType) const override { return ticksInRange; }
  void setOffsetToGoodTick(AxisType, int o) override { offset = o; }
  int getOffsetToGoodTick(AxisType) const override { return offset; }
};

void BM_AxisPass(benchmark::State& state, AxisScale scale) {
  const auto& r = ranges();
  struct Axis : BenchAxis {
    AxisScale scale = kLinearScale;
    AxisScale getAxisScale(AxisType) const override { return scale; }
  } axis;
  axis.scale = scale;
  std::size_t i = 0;
  for (auto _ : state) {
    double lo = r[i].first, hi = r[i].second;
    if (scale == kLogScale) {
      lo = std::fabs(lo) + 1e-300;
      hi = lo + std::fabs(hi - lo) * 1e3;
    }
    axis.render[0] = lo;
    axis.render[1] = hi;
    nicefyLimits(axis, kXAxis);
    computeAxisTicks(axis, kXAxis, 3, 8);  // the null descriptor deletes the ticks
    if (++i == r.size()) i = 0;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(BM_AxisPass, linear, kLinearScale);
BENCHMARK_CAPTURE(BM_AxisPass, log, kLogScale);

}  // namespace

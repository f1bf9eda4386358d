// Fuzzes the tick picker: any limits (NaN, infinities, subnormals, the ends
// of the range), any counts and biases, and whole axis passes through a
// descriptor whose answers come from the input. Results must stay within the
// tick-count cap; the sanitizers catch overflow, and libFuzzer's timeout any
// search that no longer ends.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "fuzz/fuzz_reader.h"
#include "qvgui/dataspace.h"

namespace {

using namespace gui_objects::tickpicker;

// Plain state behind the descriptor interface, filled from the input.
class FuzzAxes : public AxisDescriptor {
 public:
  explicit FuzzAxes(fuzz_input::Reader& in) {
    for (State& s : axis_) {
      s.scale = static_cast<AxisScale>(in.in(-1, 2));
      s.autoLimits = in.byte() % 2 == 0;
      s.aspectFixed = in.byte() % 4 == 0;
      s.autoTicks = in.byte() % 4 != 0;
      s.render[0] = in.anyDouble();
      s.render[1] = in.anyDouble();
      s.inner[0] = in.anyDouble();
      s.inner[1] = in.anyDouble();
      s.minTicks = in.anyInt();
      s.maxTicks = in.anyInt();
      s.numTicks = static_cast<int>(in.in(-2, 40));
      s.userTicks.resize(static_cast<std::size_t>(in.in(0, 12)));
      for (double& t : s.userTicks) t = in.anyDouble();
    }
  }

  bool isAxisLimitModeAuto(AxisType a) const override { return axis_[a].autoLimits; }
  AxisScale getAxisScale(AxisType a) const override { return axis_[a].scale; }
  bool isPbarDarInManual(AxisType a) const override { return axis_[a].aspectFixed; }
  double getRenderLimit(AxisType a, OuterLimitIndices i) const override { return axis_[a].render[i]; }
  void normalized3ToNumTics(AxisType a, int* lo, int* hi) override {
    *lo = axis_[a].minTicks;
    *hi = axis_[a].maxTicks;
  }
  double getInnerLimit(AxisType a, InnerLimitIndices i) const override { return axis_[a].inner[i]; }
  void setRenderLimit(AxisType a, OuterLimitIndices i, double v) override { axis_[a].render[i] = v; }
  void setAxisLimitsData(AxisType, double, double) override {}
  void setNumTicksInRange(AxisType a, int n) override { axis_[a].numTicks = n; }
  void setOffsetToGoodTick(AxisType a, int o) override { axis_[a].offset = o; }
  void setMinorTickSpacing(AxisType, AxisScale) override {}
  void setAxisTickData(AxisType a, NReals* t) override {
    axis_[a].ticks.reset(t);
    if (t != nullptr && (t->count < 0 || t->count > t->capacity())) __builtin_trap();
  }
  int getAxisPlane(AxisType, AxisType) const override { return 0; }
  double getNormalizedAxisLength(AxisType) const override { return 1.0; }
  int getAxisTickDir() const override { return 0; }
  double getCurrentDimensionTickLength() const override { return 0.01; }
  AxisType getAdjacentAxis(AxisType) const override { return kYAxis; }
  bool isAxisTickModeAuto(AxisType a) const override { return axis_[a].autoTicks; }
  double getTickMarkPos(AxisType a, int i) override {
    return axis_[a].userTicks.at(static_cast<std::size_t>(i));
  }
  int getNumTickMarkPos(AxisType a) override { return static_cast<int>(axis_[a].userTicks.size()); }
  int getOffsetToGoodTick(AxisType a) const override { return axis_[a].offset; }
  void incrementNumTicksInRange(AxisType a) override { ++axis_[a].numTicks; }
  int getNumTicksInRange(AxisType a) const override { return axis_[a].numTicks; }

  const NReals* ticks(AxisType a) const { return axis_[a].ticks.get(); }

 private:
  struct State {
    AxisScale scale = kLinearScale;
    bool autoLimits = true, aspectFixed = false, autoTicks = true;
    double render[2] = {0, 1}, inner[2] = {0, 0};
    int minTicks = 2, maxTicks = 11, numTicks = 0, offset = 0;
    std::vector<double> userTicks;
    std::unique_ptr<NReals> ticks;
  };
  State axis_[3];
};

// Linear counts are never negative; a logarithmic range inside one decade
// reports maxTicks - 1, negative for a negative maximum.
void checkCount(int n, int lowest = 0) {
  if (n < lowest || n > kMaxTickCount) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz_input::Reader in(data, size);
  const double lower = in.anyDouble(), upper = in.anyDouble();
  const int minTicks = in.anyInt(), maxTicks = in.anyInt(), biasLow = in.anyInt(), biasHigh = in.anyInt();
  const auto mode = static_cast<InOut>(in.in(0, 2));

  double lo = lower, hi = upper;
  checkCount(calculateLinearTicks(&lo, &hi, minTicks, maxTicks, mode));
  lo = lower, hi = upper;
  checkCount(pickBiasedTickAndLimits(kXAxis, &lo, &hi, minTicks, maxTicks, biasLow, biasHigh));
  lo = lower, hi = upper;
  checkCount(calculateLogTicks(&lo, &hi, maxTicks, static_cast<LimitType>(in.in(0, 1))), -kMaxTickCount - 1);
  int outMin = 0, outMax = 0;
  estimateNumberOfTicks(&outMin, &outMax, minTicks, maxTicks, gui_objects::Point2d(lower, upper),
                        gui_objects::Point2d(in.anyDouble(), in.anyDouble()), in.anyDouble(), in.anyDouble(),
                        in.byte() % 2 == 0);

  FuzzAxes axes(in);
  nicefyLimits(axes);
  computeAxisTicks(axes, biasLow, biasHigh);

  // Minor ticks between the major ones just made, or between the input's.
  std::vector<double> majors(static_cast<std::size_t>(in.in(0, 16)));
  for (double& m : majors) m = in.anyDouble();
  if (const NReals* t = axes.ticks(kXAxis); t != nullptr && in.byte() % 2 == 0) {
    majors.assign(t->values, t->values + t->count);
  }
  TickGeometryDescriptor geometry;
  geometry.scale = static_cast<AxisScale>(in.in(0, 1));
  geometry.renderLower = in.anyDouble();
  geometry.renderUpper = in.anyDouble();
  geometry.linearSubdivisions = in.anyInt();
  std::vector<double> minors(static_cast<std::size_t>(in.in(0, 200)));
  calculateMinorTickMarkPos(axes, kXAxis, majors.data(), static_cast<int>(majors.size()), minors.data(),
                            geometry, static_cast<int>(minors.size()));
  return 0;
}

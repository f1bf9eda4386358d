// An in-memory axes object for the tick-picker tests: plain fields behind the
// AxisDescriptor interface, and the last tick record it was handed.
#pragma once

#include <cfloat>
#include <memory>
#include <vector>

#include "qvgui/dataspace.h"

namespace tickpicker_testing {

using namespace gui_objects::tickpicker;

struct FakeAxisState {
  AxisScale scale = kLinearScale;
  bool autoLimits = true, aspectFixed = false, limitsPublished = false, autoTicks = true;
  double render[2] = {0, 1}, inner[2] = {-DBL_MAX, DBL_MAX}, limitsData[2] = {0, 0};
  int minTicks = 2, maxTicks = 11, numTicksInRange = 0, offset = 0, minorSpacingCalls = 0;
  std::vector<double> userTicks;
  std::unique_ptr<NReals> ticks;
};

class FakeAxes : public AxisDescriptor {
 public:
  FakeAxisState axis[3];

  bool isAxisLimitModeAuto(AxisType a) const override { return axis[a].autoLimits; }
  AxisScale getAxisScale(AxisType a) const override { return axis[a].scale; }
  bool isPbarDarInManual(AxisType a) const override { return axis[a].aspectFixed; }
  double getRenderLimit(AxisType a, OuterLimitIndices i) const override { return axis[a].render[i]; }
  void normalized3ToNumTics(AxisType a, int* lo, int* hi) override {
    *lo = axis[a].minTicks;
    *hi = axis[a].maxTicks;
  }
  double getInnerLimit(AxisType a, InnerLimitIndices i) const override { return axis[a].inner[i]; }
  void setRenderLimit(AxisType a, OuterLimitIndices i, double v) override { axis[a].render[i] = v; }
  void setAxisLimitsData(AxisType a, double lo, double hi) override {
    axis[a].limitsData[0] = lo;
    axis[a].limitsData[1] = hi;
    axis[a].limitsPublished = true;
  }
  void setNumTicksInRange(AxisType a, int n) override { axis[a].numTicksInRange = n; }
  void setOffsetToGoodTick(AxisType a, int o) override { axis[a].offset = o; }
  void setMinorTickSpacing(AxisType a, AxisScale) override { ++axis[a].minorSpacingCalls; }
  void setAxisTickData(AxisType a, NReals* t) override { axis[a].ticks.reset(t); }
  int getAxisPlane(AxisType, AxisType) const override { return 0; }
  double getNormalizedAxisLength(AxisType) const override { return 1.0; }
  int getAxisTickDir() const override { return 0; }
  double getCurrentDimensionTickLength() const override { return 0.01; }
  AxisType getAdjacentAxis(AxisType) const override { return kYAxis; }
  bool isAxisTickModeAuto(AxisType a) const override { return axis[a].autoTicks; }
  double getTickMarkPos(AxisType a, int i) override {
    return axis[a].userTicks.at(static_cast<std::size_t>(i));
  }
  int getNumTickMarkPos(AxisType a) override { return static_cast<int>(axis[a].userTicks.size()); }
  int getOffsetToGoodTick(AxisType a) const override { return axis[a].offset; }
  void incrementNumTicksInRange(AxisType a) override { ++axis[a].numTicksInRange; }
  int getNumTicksInRange(AxisType a) const override { return axis[a].numTicksInRange; }
};

inline std::vector<double> valuesOf(const NReals* r) {
  return r == nullptr ? std::vector<double>{} : std::vector<double>(r->begin(), r->end());
}

}  // namespace tickpicker_testing

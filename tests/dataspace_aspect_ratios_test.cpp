// Aspect-ratio rules: restricting elongated boxes, and how plot-box ratio,
// data ratio and automatic limits settle one another for every mode.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

namespace ds = gui_objects::data_space_utils;
using gui_objects::Vector3d;

namespace {

Vector3d unit(double x, double y, double z) {
  Vector3d v(x, y, z);
  v.normalize();
  return v;
}

void expectNear(const Vector3d& actual, const Vector3d& expected, double tol = 1e-12) {
  EXPECT_NEAR(actual.getX(), expected.getX(), tol) << actual << " vs " << expected;
  EXPECT_NEAR(actual.getY(), expected.getY(), tol) << actual << " vs " << expected;
  EXPECT_NEAR(actual.getZ(), expected.getZ(), tol) << actual << " vs " << expected;
}

// The restriction written the slow way: sort the ratios, rebuild, normalise.
Vector3d referenceRestrict(const Vector3d& v, double limit) {
  std::array<double, 3> c = {v.getX(), v.getY(), v.getZ()};
  const double m = *std::min_element(c.begin(), c.end());
  std::array<double, 3> r;
  for (int k = 0; k < 3; ++k) r[k] = c[k] / m;
  std::array<int, 3> order = {0, 1, 2};
  std::sort(order.begin(), order.end(), [&](int a, int b) { return r[a] < r[b]; });
  const double largest = r[order[2]];
  if (largest <= limit) return v;
  const double mid = r[order[1]];
  std::array<double, 3> out;
  out[order[0]] = 1.0;
  out[order[2]] = limit;
  out[order[1]] = mid * mid > largest ? std::max(mid / largest * limit, 1.0) : std::min(mid, limit);
  return unit(out[0], out[1], out[2]);
}

}  // namespace

TEST(RestrictAspectRatios, HandComputedCases) {
  struct Case {
    const char* label;
    Vector3d in;
    double limit;
    Vector3d expected;
  };
  const Case cases[] = {
      {"within the limit: returned as given", Vector3d(2, 4, 6), 10, Vector3d(2, 4, 6)},
      {"exactly at the limit is within it", Vector3d(3, 3, 30), 10, Vector3d(3, 3, 30)},
      {"middle equal to smallest", Vector3d(1, 1, 100), 10, unit(1, 1, 10)},
      {"middle nearer the largest is scaled", Vector3d(1, 50, 100), 10, unit(1, 5, 10)},
      {"middle nearer the smallest keeps its ratio", Vector3d(1, 3, 100), 10, unit(1, 3, 10)},
      {"kept middle capped at the limit", Vector3d(1, 20, 1000), 10, unit(1, 10, 10)},
      {"middle just past the geometric mean is scaled", Vector3d(1, 9, 80), 8, unit(1, 1, 8)},
      {"scaled middle floored at 1", Vector3d(1, 50, 1000), 10, unit(1, 1, 10)},
      {"middle tied with largest", Vector3d(1, 100, 100), 10, unit(1, 10, 10)},
      {"unnormalised input", Vector3d(0.5, 25, 50), 10, unit(1, 5, 10)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const Vector3d got = ds::restrictAspectRatios(c.in, c.limit);
    expectNear(got, c.expected);
  }
}

TEST(RestrictAspectRatios, EveryOrderOfComponents) {
  // (1, 50, 100) in all six arrangements exercises each branch of the
  // largest/middle/smallest decision.
  const double v[3] = {1, 50, 100};
  const double e[3] = {1, 5, 10};
  const int perms[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
  for (const auto& p : perms) {
    std::ostringstream label;
    label << v[p[0]] << "," << v[p[1]] << "," << v[p[2]];
    SCOPED_TRACE(label.str());
    expectNear(ds::restrictAspectRatios(Vector3d(v[p[0]], v[p[1]], v[p[2]]), 10),
               unit(e[p[0]], e[p[1]], e[p[2]]));
  }
}

TEST(RestrictAspectRatios, MatchesSortingReference) {
  std::mt19937_64 rng(31337);
  std::uniform_real_distribution<double> decades(-3.0, 3.0);
  std::uniform_real_distribution<double> limits(1.5, 50.0);
  for (int i = 0; i < 5000; ++i) {
    const Vector3d v(std::pow(10.0, decades(rng)), std::pow(10.0, decades(rng)),
                     std::pow(10.0, decades(rng)));
    const double limit = limits(rng);
    SCOPED_TRACE(testing::Message() << v << " limit " << limit);
    const Vector3d got = ds::restrictAspectRatios(v, limit);
    const Vector3d want = referenceRestrict(v, limit);
    ASSERT_TRUE(gui_objects::nearlyEqual(got, want)) << got << " vs " << want;
    // A restricted box is exactly as elongated as the limit allows.
    const double hi = std::max({got.getX(), got.getY(), got.getZ()});
    const double lo = std::min({got.getX(), got.getY(), got.getZ()});
    ASSERT_LE(hi / lo, limit * (1 + 1e-12));
  }
}

TEST(RestrictAspectRatios, DegenerateInputGivesNaNNotAnException) {
  const Vector3d got = ds::restrictAspectRatios(Vector3d(0, 1, 2), 10);
  EXPECT_TRUE(std::isnan(got.getX()) || std::isnan(got.getY()) || std::isnan(got.getZ())) << got;
}

namespace {

// An axes object behind both proxies; it records every update in order.
class FakeAxes : public ds::RenderLimitsProxy, public ds::AxisLimitsProxy {
 public:
  double render[3][2] = {{0, 10}, {0, 20}, {-1, 1}};
  bool manual[3] = {false, false, false};
  bool log[3] = {false, false, false};
  bool normal[3] = {true, true, true};
  Vector3d plotBox{1, 1, 1};
  Vector3d dataRatio{1, 1, 1};
  bool plotBoxAuto = false;
  bool dataRatioAuto = false;
  double axisLimits[3][2] = {};
  double oldStyle[2] = {};
  std::vector<std::string> calls;

  double getRenderLimit(int axis, int which) const override { return render[axis][which]; }
  void setRenderLimits(int axis, double lo, double hi) override {
    record("render", axis, lo, hi);
    render[axis][0] = lo;
    render[axis][1] = hi;
  }
  void setBothPlotAndDataAspectRatio_manual(int axis, bool both) override {
    record(both ? "both+" : "both-", axis);
  }
  bool isLimitStateNormal(int axis) override { return normal[axis]; }

  void setAxisLimits(int axis, double lo, double hi) override {
    record("limits", axis, lo, hi);
    axisLimits[axis][0] = lo;
    axisLimits[axis][1] = hi;
  }
  double getAxisLimit(int axis, int which) const override { return axisLimits[axis][which]; }
  bool isManual(int axis) const override { return manual[axis]; }
  bool getAxisScaleIsLog(int axis) const override { return log[axis]; }
  Vector3d getPlotBoxAspectRatio() const override { return plotBox; }
  void setPlotBoxAspectRatio(const Vector3d& v) override {
    calls.push_back("plotbox");
    plotBox = v;
  }
  Vector3d getDataAspectRatio() const override { return dataRatio; }
  void setDataAspectRatio(const Vector3d& v) override {
    calls.push_back("dataratio");
    dataRatio = v;
  }
  bool getPlotBoxAspectRatioModeIsAuto() const override { return plotBoxAuto; }
  bool getDataAspectRatioModeIsAuto() const override { return dataRatioAuto; }
  void setOldStyleAspectRatio(double a, double b) override {
    calls.push_back("oldstyle");
    oldStyle[0] = a;
    oldStyle[1] = b;
  }

 private:
  void record(const char* what, int axis, double lo = 0, double hi = 0) {
    std::ostringstream s;
    s << what << " " << axis;
    if (std::string(what) == "render" || std::string(what) == "limits") s << " [" << lo << ", " << hi << "]";
    calls.push_back(s.str());
  }
};

using Calls = std::vector<std::string>;
const Calls kResetBoth = {"both- 0", "both- 1", "both- 2"};

Calls concat(Calls a, const Calls& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}
const Calls kFinish = {"plotbox", "dataratio", "oldstyle"};

Calls limitsFor(int axis, const char* range) {
  const std::string r = range;
  return {"render " + std::to_string(axis) + " " + r, "limits " + std::to_string(axis) + " " + r,
          "both+ " + std::to_string(axis)};
}

}  // namespace

TEST(ComputeAspectRatios, RatioModesWithoutLimitChanges) {
  // Render spans (10, 20, 2): relative spans q = (5, 10, 1).
  struct Case {
    const char* label;
    bool plotBoxAuto;
    bool dataRatioAuto;
    bool manual[3];
    Vector3d plotBox;
    Vector3d dataRatio;
    double limit;
    Vector3d wantPlotBox;
    Vector3d wantDataRatio;
  };
  const Case cases[] = {
      {"both automatic",
       true,
       true,
       {},
       Vector3d(3, 2, 1),
       Vector3d(7, 8, 9),
       10,
       Vector3d(1, 1, 1),
       Vector3d(5, 10, 1)},
      {"data ratio automatic",
       false,
       true,
       {},
       Vector3d(1, 2, 1),
       Vector3d(7, 8, 9),
       10,
       Vector3d(1, 2, 1),
       Vector3d(5, 5, 1)},
      {"plot box automatic, within limit",
       true,
       false,
       {},
       Vector3d(3, 2, 1),
       Vector3d(1, 1, 1),
       20,
       Vector3d(5, 10, 1),
       Vector3d(1, 1, 1)},
      {"plot box automatic, restricted",
       true,
       false,
       {},
       Vector3d(3, 2, 1),
       Vector3d(1, 1, 1),
       4,
       unit(2, 4, 1),
       Vector3d(1, 1, 1)},
      // The data ratio goes in as given, not normalised: q / (2, 4, 2).
      {"both fixed, x and y limits manual",
       false,
       false,
       {true, true, false},
       Vector3d(9, 9, 9),
       Vector3d(2, 4, 2),
       10,
       Vector3d(2.5, 2.5, 0.5),
       Vector3d(2, 4, 2)},
      {"both fixed, x and z limits manual",
       false,
       false,
       {true, false, true},
       Vector3d(9, 9, 9),
       Vector3d(1, 1, 1),
       4,
       unit(2, 4, 1),
       Vector3d(1, 1, 1)},
      {"both fixed, y and z limits manual",
       false,
       false,
       {false, true, true},
       Vector3d(9, 9, 9),
       Vector3d(1, 1, 1),
       20,
       Vector3d(5, 10, 1),
       Vector3d(1, 1, 1)},
      {"both fixed, all limits manual",
       false,
       false,
       {true, true, true},
       Vector3d(9, 9, 9),
       Vector3d(5, 1, 1),
       20,
       Vector3d(1, 10, 1),
       Vector3d(5, 1, 1)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FakeAxes axes;
    axes.plotBoxAuto = c.plotBoxAuto;
    axes.dataRatioAuto = c.dataRatioAuto;
    std::copy(std::begin(c.manual), std::end(c.manual), axes.manual);
    axes.plotBox = c.plotBox;
    axes.dataRatio = c.dataRatio;
    ds::computeAspectRatios(axes, axes, c.limit);
    expectNear(axes.plotBox, c.wantPlotBox);
    expectNear(axes.dataRatio, c.wantDataRatio);
    EXPECT_DOUBLE_EQ(axes.oldStyle[0], c.wantPlotBox.getX() / c.wantPlotBox.getY());
    EXPECT_DOUBLE_EQ(axes.oldStyle[1], c.wantDataRatio.getY() / c.wantDataRatio.getX());
    EXPECT_EQ(axes.calls, concat(kResetBoth, kFinish));
  }
}

TEST(ComputeAspectRatios, BothRatiosFixedStretchAutomaticLimits) {
  struct Case {
    const char* label;
    bool manual[3];
    bool normal[3];
    bool log[3];
    double render[3][2];
    Vector3d plotBox;
    Vector3d dataRatio;
    Calls limitCalls;
  };
  const Case cases[] = {
      {"all automatic: widest span sets the scale",
       {},
       {true, true, true},
       {},
       {{0, 10}, {0, 20}, {-1, 1}},
       Vector3d(1, 1, 1),
       Vector3d(1, 1, 1),
       concat(concat(limitsFor(0, "[-5, 15]"), limitsFor(1, "[0, 20]")), limitsFor(2, "[-10, 10]"))},
      {"all automatic: an abnormal axis does not vote",
       {},
       {true, false, true},
       {},
       {{0, 10}, {0, 20}, {-1, 1}},
       Vector3d(1, 1, 1),
       Vector3d(1, 1, 1),
       concat(concat(limitsFor(0, "[0, 10]"), limitsFor(1, "[5, 15]")), limitsFor(2, "[-5, 5]"))},
      {"all automatic: no normal axis means scale 1",
       {},
       {false, false, false},
       {},
       {{0, 10}, {0, 20}, {-1, 1}},
       Vector3d(1, 1, 1),
       Vector3d(1, 1, 1),
       concat(concat(limitsFor(0, "[4.5, 5.5]"), limitsFor(1, "[9.5, 10.5]")), limitsFor(2, "[-0.5, 0.5]"))},
      // pn = (2, 1, 1), dn = (1, 2, 4): w = (2, 2, 4), spans / w = (5, 10, 0.5).
      {"all automatic: unequal ratios",
       {},
       {true, true, true},
       {},
       {{0, 10}, {0, 20}, {-1, 1}},
       Vector3d(4, 2, 2),
       Vector3d(0.5, 1, 2),
       concat(concat(limitsFor(0, "[-5, 15]"), limitsFor(1, "[0, 20]")), limitsFor(2, "[-20, 20]"))},
      // Centre 5.5, half 10: the log axis would cross zero, so it keeps its
      // lower end and its size: [1, 21].
      {"all automatic: log axis keeps its positive lower end",
       {},
       {true, true, true},
       {true, false, false},
       {{1, 10}, {0, 20}, {-1, 1}},
       Vector3d(1, 1, 1),
       Vector3d(1, 1, 1),
       concat(concat(limitsFor(0, "[1, 21]"), limitsFor(1, "[0, 20]")), limitsFor(2, "[-10, 10]"))},
      {"all automatic: log axis clear of zero is centred",
       {},
       {true, true, true},
       {true, false, false},
       {{100, 110}, {0, 20}, {-1, 1}},
       Vector3d(1, 1, 1),
       Vector3d(1, 1, 1),
       concat(concat(limitsFor(0, "[95, 115]"), limitsFor(1, "[0, 20]")), limitsFor(2, "[-10, 10]"))},
      {"x manual",
       {true, false, false},
       {true, true, true},
       {},
       {{0, 10}, {0, 20}, {-1, 1}},
       Vector3d(1, 1, 1),
       Vector3d(1, 1, 1),
       concat(limitsFor(1, "[5, 15]"), limitsFor(2, "[-5, 5]"))},
      {"y manual",
       {false, true, false},
       {true, true, true},
       {},
       {{0, 10}, {0, 20}, {-1, 1}},
       Vector3d(1, 1, 1),
       Vector3d(1, 1, 1),
       concat(limitsFor(0, "[-5, 15]"), limitsFor(2, "[-10, 10]"))},
      {"z manual",
       {false, false, true},
       {true, true, true},
       {},
       {{0, 10}, {0, 20}, {-1, 1}},
       Vector3d(1, 1, 1),
       Vector3d(1, 1, 1),
       concat(limitsFor(0, "[4, 6]"), limitsFor(1, "[9, 11]"))},
      // S = 10 / (1 * 2) = 5; y half 5 * 1 * 2 / 2, z half 5 * 1 * 4 / 2.
      {"x manual, unequal ratios",
       {true, false, false},
       {true, true, true},
       {},
       {{0, 10}, {0, 20}, {-1, 1}},
       Vector3d(4, 2, 2),
       Vector3d(0.5, 1, 2),
       concat(limitsFor(1, "[5, 15]"), limitsFor(2, "[-10, 10]"))},
      {"x manual: no positivity guard on a log axis",
       {true, false, false},
       {true, true, true},
       {false, false, true},
       {{0, 10}, {0, 20}, {1, 3}},
       Vector3d(1, 1, 1),
       Vector3d(1, 1, 1),
       concat(limitsFor(1, "[5, 15]"), limitsFor(2, "[-3, 7]"))},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FakeAxes axes;
    std::copy(std::begin(c.manual), std::end(c.manual), axes.manual);
    std::copy(std::begin(c.normal), std::end(c.normal), axes.normal);
    std::copy(std::begin(c.log), std::end(c.log), axes.log);
    for (int k = 0; k < 3; ++k) {
      axes.render[k][0] = c.render[k][0];
      axes.render[k][1] = c.render[k][1];
    }
    axes.plotBox = c.plotBox;
    axes.dataRatio = c.dataRatio;
    ds::computeAspectRatios(axes, axes, 10);
    EXPECT_EQ(axes.calls, concat(concat(kResetBoth, c.limitCalls), kFinish));
    // The ratios themselves stay as the user fixed them.
    EXPECT_EQ(axes.plotBox, c.plotBox);
    EXPECT_EQ(axes.dataRatio, c.dataRatio);
  }
}

TEST(ComputeAspectRatios, StretchedLimitsHonourBothRatios) {
  // Property: with both ratios fixed and all limits automatic, the new spans
  // are proportional to plot box times data ratio, and every normal axis
  // still covers its old range.
  std::mt19937_64 rng(5);
  std::uniform_real_distribution<double> ratio(0.1, 10.0);
  std::uniform_real_distribution<double> pos(-100.0, 100.0);
  std::uniform_real_distribution<double> span(0.01, 50.0);
  for (int i = 0; i < 1000; ++i) {
    FakeAxes axes;
    axes.plotBox = Vector3d(ratio(rng), ratio(rng), ratio(rng));
    axes.dataRatio = Vector3d(ratio(rng), ratio(rng), ratio(rng));
    double before[3][2];
    for (int k = 0; k < 3; ++k) {
      axes.render[k][0] = pos(rng);
      axes.render[k][1] = axes.render[k][0] + span(rng);
      before[k][0] = axes.render[k][0];
      before[k][1] = axes.render[k][1];
    }
    SCOPED_TRACE(i);
    ds::computeAspectRatios(axes, axes, 10);
    const double p[3] = {axes.plotBox.getX(), axes.plotBox.getY(), axes.plotBox.getZ()};
    const double d[3] = {axes.dataRatio.getX(), axes.dataRatio.getY(), axes.dataRatio.getZ()};
    const double unitSpan = (axes.render[0][1] - axes.render[0][0]) / (p[0] * d[0]);
    for (int k = 0; k < 3; ++k) {
      ASSERT_NEAR((axes.render[k][1] - axes.render[k][0]) / (p[k] * d[k]), unitSpan, 1e-9 * unitSpan);
      ASSERT_LE(axes.render[k][0], before[k][0] + 1e-9);
      ASSERT_GE(axes.render[k][1], before[k][1] - 1e-9);
      ASSERT_EQ(axes.axisLimits[k][0], axes.render[k][0]);
      ASSERT_EQ(axes.axisLimits[k][1], axes.render[k][1]);
    }
  }
}

TEST(AspectTestDoubles, NullProxiesDoNothing) {
  ds::test::NullRenderLimitsProxy render;
  ds::test::NullAxisLimitsProxy limits;
  // The null axes have all-zero ratios and spans: the rules must run through
  // without throwing.
  EXPECT_NO_THROW(ds::computeAspectRatios(render, limits, 10));
}

// Aspect-ratio rules: restricting elongated boxes, and how plot-box ratio,
// data ratio and automatic limits settle one another for every mode.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>

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

// The restriction written the slow way: sort the ratios, rebuild, normalise.
// (Ties need no care: tied roles get equal results.)
Vector3d referenceRestrict(const Vector3d& v, double limit) {
  const std::array<double, 3> c = {v.getX(), v.getY(), v.getZ()};
  const double m = *std::min_element(c.begin(), c.end());
  std::array<int, 3> order = {0, 1, 2};
  std::sort(order.begin(), order.end(), [&](int a, int b) { return c[a] < c[b]; });
  const double largest = c[order[2]] / m, mid = c[order[1]] / m;
  if (largest <= limit) return v;
  std::array<double, 3> out;
  out[order[0]] = 1.0;
  out[order[2]] = limit;
  out[order[1]] = mid * mid > largest ? std::max(mid / largest * limit, 1.0) : std::min(mid, limit);
  return unit(out[0], out[1], out[2]);
}

}  // namespace

TEST(RestrictAspectRatios, BoundariesAndTies) {
  // clang-format off
  struct Case { const char* label; Vector3d in; double limit; Vector3d expected; };
  const Case cases[] = {
      {"exactly at the limit is within it", {3, 3, 30}, 10, {3, 3, 30}},
      {"middle just past the geometric mean", {1, 9, 80}, 8, unit(1, 1, 8)},
      {"middle tied with largest", {1, 100, 100}, 10, unit(1, 10, 10)},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const Vector3d got = ds::restrictAspectRatios(c.in, c.limit);
    EXPECT_TRUE(gui_objects::nearlyEqual(got, c.expected)) << got;
  }
  const Vector3d degenerate = ds::restrictAspectRatios(Vector3d(0, 1, 2), 10);  // NaN, no exception
  EXPECT_TRUE(std::isnan(degenerate.getX() + degenerate.getY() + degenerate.getZ()));
}

TEST(RestrictAspectRatios, MatchesSortingReference) {
  std::mt19937_64 rng(31337);
  std::uniform_real_distribution<double> decades(-3.0, 3.0), limits(1.5, 50.0);
  for (int i = 0; i < 5000; ++i) {
    const Vector3d v(std::pow(10.0, decades(rng)), std::pow(10.0, decades(rng)),
                     std::pow(10.0, decades(rng)));
    const double limit = limits(rng);
    SCOPED_TRACE(testing::Message() << v << " limit " << limit);
    const Vector3d got = ds::restrictAspectRatios(v, limit);
    ASSERT_TRUE(gui_objects::nearlyEqual(got, referenceRestrict(v, limit))) << got;
    const double hi = std::max({got.getX(), got.getY(), got.getZ()});
    ASSERT_LE(hi / std::min({got.getX(), got.getY(), got.getZ()}), limit * (1 + 1e-12));
  }
}

namespace {

// An axes object behind both proxies; it records the order of the updates.
class FakeAxes : public ds::RenderLimitsProxy, public ds::AxisLimitsProxy {
 public:
  double render[3][2] = {{0, 10}, {0, 20}, {-1, 1}};  // spans 10, 20, 2: q = (5, 10, 1)
  double published[3][2] = {};
  bool manual[3] = {}, log[3] = {}, normal[3] = {true, true, true};
  bool plotBoxAuto = false, dataRatioAuto = false;
  Vector3d plotBox{1, 1, 1}, dataRatio{1, 1, 1};
  double oldStyle[2] = {};
  std::string calls;

  template <typename T>
  void record(const std::string& tag, T& field, const T& value) {
    calls += tag;
    field = value;
  }
  void recordPair(const std::string& tag, double* field, double a, double b) {
    calls += tag;
    field[0] = a;
    field[1] = b;
  }

  double getRenderLimit(int axis, int which) const override { return render[axis][which]; }
  void setRenderLimits(int k, double lo, double hi) override {
    recordPair("r" + std::to_string(k), render[k], lo, hi);
  }
  void setBothPlotAndDataAspectRatio_manual(int k, bool both) override {
    calls += (both ? "B" : "b") + std::to_string(k);
  }
  bool isLimitStateNormal(int axis) override { return normal[axis]; }
  void setAxisLimits(int k, double lo, double hi) override {
    recordPair("a" + std::to_string(k), published[k], lo, hi);
  }
  double getAxisLimit(int axis, int which) const override { return published[axis][which]; }
  bool isManual(int axis) const override { return manual[axis]; }
  bool getAxisScaleIsLog(int axis) const override { return log[axis]; }
  Vector3d getPlotBoxAspectRatio() const override { return plotBox; }
  void setPlotBoxAspectRatio(const Vector3d& v) override { record(" P", plotBox, v); }
  Vector3d getDataAspectRatio() const override { return dataRatio; }
  void setDataAspectRatio(const Vector3d& v) override { record("D", dataRatio, v); }
  bool getPlotBoxAspectRatioModeIsAuto() const override { return plotBoxAuto; }
  bool getDataAspectRatioModeIsAuto() const override { return dataRatioAuto; }
  void setOldStyleAspectRatio(double a, double b) override { recordPair("O", oldStyle, a, b); }
};

}  // namespace

TEST(ComputeAspectRatios, RatioModesWithoutLimitChanges) {
  // clang-format off
  struct Case {
    const char* label; bool plotBoxAuto, dataRatioAuto, manual[3];
    Vector3d plotBox, dataRatio; double limit; Vector3d wantPlotBox, wantDataRatio;
  };
  const Case cases[] = {
      {"both automatic", true, true, {}, {3, 2, 1}, {7, 8, 9}, 10, {1, 1, 1}, {5, 10, 1}},
      {"data ratio automatic", false, true, {}, {1, 2, 1}, {7, 8, 9}, 10, {1, 2, 1}, {5, 5, 1}},
      {"plot box automatic, within limit", true, false, {}, {3, 2, 1}, {1, 1, 1}, 20, {5, 10, 1}, {1, 1, 1}},
      {"plot box automatic, restricted", true, false, {}, {3, 2, 1}, {1, 1, 1}, 4, unit(2, 4, 1), {1, 1, 1}},
      // The data ratio goes in as given, not normalised: q / (2, 4, 2).
      {"both fixed, x y manual", false, false, {true, true, false}, {9, 9, 9}, {2, 4, 2}, 10, {2.5, 2.5, 0.5}, {2, 4, 2}},
      {"both fixed, x z manual", false, false, {true, false, true}, {9, 9, 9}, {1, 1, 1}, 4, unit(2, 4, 1), {1, 1, 1}},
      {"both fixed, y z manual", false, false, {false, true, true}, {9, 9, 9}, {1, 1, 1}, 20, {5, 10, 1}, {1, 1, 1}},
      {"both fixed, all manual", false, false, {true, true, true}, {9, 9, 9}, {5, 1, 1}, 20, {1, 10, 1}, {5, 1, 1}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FakeAxes axes;
    axes.plotBoxAuto = c.plotBoxAuto;
    axes.dataRatioAuto = c.dataRatioAuto;
    std::copy(std::begin(c.manual), std::end(c.manual), axes.manual);
    axes.plotBox = c.plotBox;
    axes.dataRatio = c.dataRatio;
    ds::computeAspectRatios(axes, axes, c.limit);
    EXPECT_TRUE(gui_objects::nearlyEqual(axes.plotBox, c.wantPlotBox)) << axes.plotBox;
    EXPECT_TRUE(gui_objects::nearlyEqual(axes.dataRatio, c.wantDataRatio)) << axes.dataRatio;
    EXPECT_DOUBLE_EQ(axes.oldStyle[0], c.wantPlotBox.getX() / c.wantPlotBox.getY());
    EXPECT_DOUBLE_EQ(axes.oldStyle[1], c.wantDataRatio.getY() / c.wantDataRatio.getX());
    EXPECT_EQ(axes.calls, "b0b1b2 PDO");
  }
}

TEST(ComputeAspectRatios, BothRatiosFixedStretchAutomaticLimits) {
  constexpr double kSame = 1e300;  // marks an axis that must keep its limits
  const char* all = "b0b1b2r0a0B0r1a1B1r2a2B2 PDO";
  // clang-format off
  struct Case {
    const char* label; bool manual[3], normal[3], log[3]; double render[3][2];
    Vector3d plotBox, dataRatio; double want[3][2]; const char* calls;
  };
  const Case cases[] = {
      {"widest span sets the scale", {}, {true, true, true}, {}, {{0, 10}, {0, 20}, {-1, 1}}, {1, 1, 1}, {1, 1, 1},
       {{-5, 15}, {0, 20}, {-10, 10}}, all},
      {"an abnormal axis does not vote", {}, {true, false, true}, {}, {{0, 10}, {0, 20}, {-1, 1}}, {1, 1, 1},
       {1, 1, 1}, {{0, 10}, {5, 15}, {-5, 5}}, all},
      {"no normal axis: scale 1", {}, {false, false, false}, {}, {{0, 10}, {0, 20}, {-1, 1}}, {1, 1, 1}, {1, 1, 1},
       {{4.5, 5.5}, {9.5, 10.5}, {-0.5, 0.5}}, all},
      // pn = (2, 1, 1), dn = (1, 2, 4): w = (2, 2, 4), spans / w = (5, 10, 0.5).
      {"unequal ratios", {}, {true, true, true}, {}, {{0, 10}, {0, 20}, {-1, 1}}, {4, 2, 2}, {0.5, 1, 2},
       {{-5, 15}, {0, 20}, {-20, 20}}, all},
      // Centre 5.5, half 10 would cross zero: keep the lower end and the size.
      {"log axis keeps its positive lower end", {}, {true, true, true}, {true, false, false},
       {{1, 10}, {0, 20}, {-1, 1}}, {1, 1, 1}, {1, 1, 1}, {{1, 21}, {0, 20}, {-10, 10}}, all},
      {"log axis clear of zero is centred", {}, {true, true, true}, {true, false, false},
       {{100, 110}, {0, 20}, {-1, 1}}, {1, 1, 1}, {1, 1, 1}, {{95, 115}, {0, 20}, {-10, 10}}, all},
      {"x manual", {true, false, false}, {true, true, true}, {}, {{0, 10}, {0, 20}, {-1, 1}}, {1, 1, 1}, {1, 1, 1},
       {{kSame, 0}, {5, 15}, {-5, 5}}, "b0b1b2r1a1B1r2a2B2 PDO"},
      {"y manual", {false, true, false}, {true, true, true}, {}, {{0, 10}, {0, 20}, {-1, 1}}, {1, 1, 1}, {1, 1, 1},
       {{-5, 15}, {kSame, 0}, {-10, 10}}, "b0b1b2r0a0B0r2a2B2 PDO"},
      {"z manual", {false, false, true}, {true, true, true}, {}, {{0, 10}, {0, 20}, {-1, 1}}, {1, 1, 1}, {1, 1, 1},
       {{4, 6}, {9, 11}, {kSame, 0}}, "b0b1b2r0a0B0r1a1B1 PDO"},
      // S = 10 / (1 * 2) = 5; y half 5 * 1 * 2 / 2, z half 5 * 1 * 4 / 2.
      {"x manual, unequal ratios", {true, false, false}, {true, true, true}, {}, {{0, 10}, {0, 20}, {-1, 1}},
       {4, 2, 2}, {0.5, 1, 2}, {{kSame, 0}, {5, 15}, {-10, 10}}, "b0b1b2r1a1B1r2a2B2 PDO"},
      {"x manual: no positivity guard on log z", {true, false, false}, {true, true, true}, {false, false, true},
       {{0, 10}, {0, 20}, {1, 3}}, {1, 1, 1}, {1, 1, 1}, {{kSame, 0}, {5, 15}, {-3, 7}}, "b0b1b2r1a1B1r2a2B2 PDO"},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FakeAxes axes;
    std::copy(std::begin(c.manual), std::end(c.manual), axes.manual);
    std::copy(std::begin(c.normal), std::end(c.normal), axes.normal);
    std::copy(std::begin(c.log), std::end(c.log), axes.log);
    std::copy(&c.render[0][0], &c.render[0][0] + 6, &axes.render[0][0]);
    axes.plotBox = c.plotBox;
    axes.dataRatio = c.dataRatio;
    ds::computeAspectRatios(axes, axes, 10);
    EXPECT_EQ(axes.calls, c.calls);
    for (int k = 0; k < 3; ++k) {
      const bool same = c.want[k][0] == kSame;
      for (int w = 0; w < 2; ++w) {
        EXPECT_DOUBLE_EQ(axes.render[k][w], same ? c.render[k][w] : c.want[k][w]) << "axis " << k;
        if (!same) {
          EXPECT_EQ(axes.published[k][w], axes.render[k][w]) << "axis " << k;
        }
      }
    }
    // The ratios themselves stay as the user fixed them.
    EXPECT_EQ(axes.plotBox, c.plotBox);
    EXPECT_EQ(axes.dataRatio, c.dataRatio);
  }
}

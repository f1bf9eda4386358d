// Per-axis tick passes through an AxisDescriptor: nice limits, automatic and
// manual ticks, logarithmic decades and minor ticks.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "dataspace_ticks_fake_axis.h"

namespace {

using namespace tickpicker_testing;
using ::testing::Message;

// Compared with the correctly rounded decimal literal (std::pow is one unit in
// the last place off at a few exponents, 10^210 among them).
bool isPowerOfTen(double v) {
  const double m = std::fabs(v);
  if (!(m > 0) || !std::isfinite(m)) return false;
  return m == std::stod("1e" + std::to_string(std::lround(std::log10(m))));
}

FakeAxisState& setX(FakeAxes& axes, AxisScale scale, double lo, double hi) {
  FakeAxisState& x = axes.axis[kXAxis];
  x.scale = scale;
  x.render[0] = lo;
  x.render[1] = hi;
  return x;
}

TEST(LogTicks, DecadeLimits) {
  // clang-format off
  struct Case {
    const char* label; double lower, upper; int maxTicks; LimitType type; int n; double outLo, outHi;
  };
  const Case cases[] = {
      {"decades", 1, 1000, 11, kLimitValues, 4, 1, 1000},
      {"widened to decades", 0.5, 100, 11, kLimitValues, 4, 0.1, 100},
      {"a hair beyond a decade keeps it", 1.004, 99.6, 11, kLimitValues, 3, 1, 100},
      {"exponents", 1e-5, 1e5, 11, kLimitExponents, 11, -5, 5},
      {"long range thinned", 1e-100, 1e100, 11, kLimitExponents, 11, -100, 100},
      {"overflow trims the top", 1e300, 1.7e308, 11, kLimitExponents, 9, 300, 308},
      {"overflowing values clamp", 1e300, 1.7e308, 11, kLimitValues, 10, 1e300, DBL_MAX},
      {"underflowing values clamp", 5e-324, 1e-300, 30, kLimitValues, 25, DBL_EPSILON * DBL_MIN, 1e-300},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    double lo = c.lower, hi = c.upper;
    EXPECT_EQ(calculateLogTicks(&lo, &hi, c.maxTicks, c.type), c.n);
    EXPECT_DOUBLE_EQ(lo, c.outLo);
    EXPECT_DOUBLE_EQ(hi, c.outHi);
  }
  double lo = 0, hi = 10;
  EXPECT_EQ(calculateLogTicks(&lo, &hi, 11, kLimitValues), 0);
  EXPECT_EQ(lo, 0);
}

TEST(NicefyLimits, LinearAndManualAxes) {
  FakeAxes axes;
  setX(axes, kLinearScale, -0.37, 12.9);
  axes.axis[kYAxis].autoLimits = false;
  axes.axis[kYAxis].render[1] = 0.77;
  axes.axis[kZAxis].aspectFixed = true;
  axes.axis[kZAxis].render[1] = 0.77;
  nicefyLimits(axes);
  EXPECT_EQ(axes.axis[kXAxis].render[0], -2);
  EXPECT_EQ(axes.axis[kXAxis].render[1], 14);
  EXPECT_EQ(axes.axis[kXAxis].numTicksInRange, 9);
  EXPECT_TRUE(axes.axis[kXAxis].limitsPublished);
  for (AxisType a : {kYAxis, kZAxis}) {
    SCOPED_TRACE(a);
    EXPECT_EQ(axes.axis[a].render[1], 0.77);
    EXPECT_FALSE(axes.axis[a].limitsPublished);
  }
}

TEST(NicefyLimits, LogAxesKeepOneSignSide) {
  // clang-format off
  struct Case { const char* label; bool autoLimits; double lo, hi, maxNeg, minPos; double outLo, outHi; };
  const Case cases[] = {
      {"from zero, no positive data", false, 0, 100, -DBL_MAX, DBL_MAX, 1, 100},
      {"from zero, small range", false, 0, 0.5, -DBL_MAX, DBL_MAX, 0.05, 0.5},
      {"from zero, smallest positive known", false, 0, 100, -DBL_MAX, 0.5, 0.5, 100},
      {"manual above the data", false, -1, 0.2, -DBL_MAX, 0.5, 0.02, 0.2},
      {"auto above the data stays within a decade", true, -1, 0.2, -DBL_MAX, 0.5, 0.5, 5},
      {"auto decades", true, 0, 100, -DBL_MAX, 0.5, 0.1, 100},
      {"negative side, unknown data", true, -50, 0, -DBL_MAX, DBL_MAX, -100, -1},
      {"negative side, small", false, -0.5, 0, -DBL_MAX, DBL_MAX, -0.5, -0.05},
      {"negative side, known", false, -50, 0, -2, DBL_MAX, -50, -2},
      {"all positive", true, 3, 700, -DBL_MAX, DBL_MAX, 1, 1000},
      {"zero range", true, 0, 0, -DBL_MAX, DBL_MAX, 0, 0},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FakeAxes axes;
    FakeAxisState& x = setX(axes, kLogScale, c.lo, c.hi);
    x.autoLimits = c.autoLimits;
    x.aspectFixed = true;  // does not stop a logarithmic axis
    x.inner[0] = c.maxNeg;
    x.inner[1] = c.minPos;
    nicefyLimits(axes, kXAxis);
    EXPECT_DOUBLE_EQ(x.render[0], c.outLo);
    EXPECT_DOUBLE_EQ(x.render[1], c.outHi);
    EXPECT_EQ(x.limitsPublished, c.autoLimits);
  }
}

TEST(ComputeAxisTicks, ManualTicksCountOnlyThoseInside) {
  FakeAxes axes;
  FakeAxisState& x = setX(axes, kLinearScale, 0, 10);
  x.autoTicks = false;
  x.numTicksInRange = 99;
  x.userTicks = {-5, 0.5, 1, 10, 12};
  computeAxisTicks(axes, kXAxis, 3, 8);
  EXPECT_EQ(x.numTicksInRange, 3);
  EXPECT_EQ(x.offset, 1);
  EXPECT_EQ(x.ticks, nullptr);
}

TEST(ComputeAxisTicks, AutomaticTicksByScale) {
  // clang-format off
  struct Case { const char* label; AxisScale scale; double lo, hi, minPos; std::vector<double> ticks; };
  const Case cases[] = {
      {"linear", kLinearScale, -0.37, 12.9, DBL_MAX, {0, 2, 4, 6, 8, 10, 12}},
      {"log decades", kLogScale, 1, 1e5, DBL_MAX, {1, 10, 100, 1e3, 1e4, 1e5}},
      {"log inside a decade range", kLogScale, 0.5, 2e3, DBL_MAX, {1, 10, 100, 1e3}},
      {"log negative", kLogScale, -1e3, -1, DBL_MAX, {-1e3, -100, -10, -1}},
      {"log across zero", kLogScale, -5, 100, 0.5, {1, 10, 100}},
      {"log across zero, nothing known", kLogScale, -5, 100, DBL_MAX, {1, 10, 100}},
      {"log within one decade", kLogScale, 2, 8, DBL_MAX, {2, 5}},
      {"log short, 1..9", kLogScale, 2.5, 4.5, DBL_MAX, {3, 4}},
      {"other scale", static_cast<AxisScale>(7), 0, 1, DBL_MAX, {0, 1}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FakeAxes axes;
    FakeAxisState& x = setX(axes, c.scale, c.lo, c.hi);
    x.inner[1] = c.minPos;
    x.maxTicks = 7;
    computeAxisTicks(axes, kXAxis, 3, 8);
    ASSERT_NE(x.ticks, nullptr);
    const std::vector<double> got = valuesOf(x.ticks.get());
    ASSERT_EQ(got.size(), c.ticks.size()) << *x.ticks;
    for (std::size_t i = 0; i < got.size(); ++i)
      EXPECT_NEAR(got[i], c.ticks[i], 1e-12 * std::fabs(c.ticks[i]));
  }
}

TEST(TickMarkPositions, RenderLimitsAStepAwayBecomeTicks) {
  // clang-format off
  struct Case { const char* label; double lo, hi, renderLo, renderHi; std::vector<double> want; };
  const Case cases[] = {
      {"render limits a step beyond", 0, 2, 1.5, 3.5, {1.5, 0, 1, 2, 3.5}},
      {"render limits within a step", 0, 2, 0.5, 2.5, {0, 1, 2}},
      // An overflowing span is spaced as multiples of the lower tick; its step is
      // negative, so both render limits count as a step beyond.
      {"overflowing span", -DBL_MAX, DBL_MAX, -DBL_MAX, DBL_MAX, {-DBL_MAX, -DBL_MAX, 0, DBL_MAX, DBL_MAX}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FakeAxes axes;
    axes.axis[kXAxis].numTicksInRange = 3;
    std::unique_ptr<NReals> r(
        calculateTickMarkPos(axes, kXAxis, 3, c.lo, c.hi, c.renderLo, c.renderHi, kLinearScale));
    EXPECT_EQ(valuesOf(r.get()), c.want);
    EXPECT_EQ(axes.axis[kXAxis].numTicksInRange, static_cast<int>(c.want.size()));
  }
  // A descriptor that counts nothing gets an empty record, never an overrun.
  test::NullAxisDescriptor null;
  std::unique_ptr<NReals> none(calculateTickMarkPos(null, kXAxis, 4, 0, 3, 5, 9, kLinearScale));
  EXPECT_EQ(none->count, 0);
  computeAxisTicks(null, 0, 0);
  nicefyLimits(null);
}

// A full automatic pass on random logarithmic data: the ticks are powers of
// ten within the limits and never more than allowed.
TEST(ComputeAxisTicks, LogTicksArePowersOfTenOnRandomRanges) {
  std::mt19937_64 rng(31337);
  std::uniform_real_distribution<double> exponent(-250, 250), span(1.2, 120);
  std::uniform_int_distribution<int> counts(4, 12);
  for (int i = 0; i < 3000; ++i) {
    const double a = exponent(rng);
    const double b = std::min(a + span(rng), 300.0);
    const bool negative = i % 3 == 0;
    FakeAxes axes;
    FakeAxisState& x = setX(axes, kLogScale, negative ? -std::pow(10.0, b) : std::pow(10.0, a),
                            negative ? -std::pow(10.0, a) : std::pow(10.0, b));
    x.maxTicks = counts(rng);
    SCOPED_TRACE(Message() << "range " << i << " [" << x.render[0] << ", " << x.render[1] << "] max "
                           << x.maxTicks);
    nicefyLimits(axes, kXAxis);
    computeAxisTicks(axes, kXAxis, 3, 8);
    ASSERT_NE(x.ticks, nullptr);
    const std::vector<double> t = valuesOf(x.ticks.get());
    ASSERT_GE(t.size(), 2u) << *x.ticks;
    ASSERT_LE(static_cast<int>(t.size()), x.maxTicks) << *x.ticks;
    for (std::size_t k = 0; k < t.size(); ++k) {
      ASSERT_TRUE(isPowerOfTen(t[k])) << *x.ticks;
      ASSERT_GE(t[k], x.render[0]);
      ASSERT_LE(t[k], x.render[1]);
      if (k > 0) {
        ASSERT_LT(t[k - 1], t[k]);
      }
    }
  }
}

std::vector<double> minors(const std::vector<double>& majors, const TickGeometryDescriptor& g, int capacity,
                           int* written = nullptr) {
  test::NullAxisDescriptor null;
  std::vector<double> out(static_cast<std::size_t>(capacity), 0.0);
  std::vector<double> m = majors;
  calculateMinorTickMarkPos(null, kXAxis, m.data(), static_cast<int>(m.size()), out.data(), g, capacity);
  std::vector<double> kept;
  for (double v : out) {
    if (!std::isnan(v)) kept.push_back(v);
  }
  if (written) *written = static_cast<int>(kept.size());
  // Every slot after the last minor tick is NaN.
  for (std::size_t i = kept.size(); i < out.size(); ++i) EXPECT_TRUE(std::isnan(out[i]));
  return kept;
}

TEST(MinorTicks, LinearAndLogarithmicRules) {
  // clang-format off
  struct Case {
    const char* label; std::vector<double> majors; TickGeometryDescriptor g; int capacity;
    std::vector<double> want;
  };
  const Case cases[] = {
      {"step 1 in fifths", {0, 1, 2}, {kLinearScale, 0, 2, 0}, 50, {0.2, 0.4, 0.6, 0.8, 1.2, 1.4, 1.6, 1.8}},
      {"step 2 in quarters", {0, 2}, {kLinearScale, -1, 2, 0}, 50, {-1, -0.5, 0.5, 1, 1.5}},
      {"explicit halves", {0, 10, 20}, {kLinearScale, 0, 20, 2}, 50, {5, 15}},
      {"capacity bounds the output", {0, 1, 2}, {kLinearScale, 0, 2, 0}, 3, {0.2, 0.4, 0.6}},
      {"extra render tick does not set the step", {-0.3, 0, 1}, {kLinearScale, -0.3, 1, 0}, 50, {-0.2, 0.2, 0.4, 0.6, 0.8}},
      {"log decades", {1, 10, 100}, {kLogScale, 1, 100, 0}, 50, {2, 3, 4, 5, 6, 7, 8, 9, 20, 30, 40, 50, 60, 70, 80, 90}},
      {"log beyond the majors", {10}, {kLogScale, 5, 30, 0}, 50, {5, 6, 7, 8, 9, 20, 30}},
      {"log skipped decades", {1, 100, 1e4}, {kLogScale, 1, 1e4, 0}, 50, {10, 1000}},
      {"log negative", {-100, -10}, {kLogScale, -100, -10, 0}, 50, {-90, -80, -70, -60, -50, -40, -30, -20}},
      {"log non-decade majors", {2, 5}, {kLogScale, 2, 8, 0}, 50, {3, 4, 6, 7, 8}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const std::vector<double> got = minors(c.majors, c.g, c.capacity);
    ASSERT_EQ(got.size(), c.want.size());
    for (std::size_t i = 0; i < got.size(); ++i)
      EXPECT_NEAR(got[i], c.want[i], 1e-12 * std::fabs(c.want[i]) + 1e-15);
  }
}

TEST(MinorTicks, TellsTheDescriptorItsSpacing) {
  FakeAxes axes;
  double majors[2] = {0, 1};
  double out[8];
  calculateMinorTickMarkPos(axes, kZAxis, majors, 2, out, TickGeometryDescriptor{}, 8);
  EXPECT_EQ(axes.axis[kZAxis].minorSpacingCalls, 1);
  calculateMinorTickMarkPos(axes, kZAxis, nullptr, 0, out, TickGeometryDescriptor{}, 8);
  for (double v : out) EXPECT_TRUE(std::isnan(v));
}

}  // namespace

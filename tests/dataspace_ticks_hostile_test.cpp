// The tick picker fed counts, biases and ranges no axes object would send:
// no overflow, bounded work, and a descriptor left whole when memory runs out.
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <random>
#include <vector>

#include "dataspace_ticks_fake_axis.h"
#include "qvgui/host.h"
#include "qvhost/testing.h"

namespace {

using namespace tickpicker_testing;
using gui_objects::Point2d;

constexpr int kCounts[] = {INT_MIN, INT_MIN + 1,   -kMaxTickCount - 1, -1,          0,      1, 2, 3,
                           11,      kMaxTickCount, kMaxTickCount + 1,  INT_MAX - 1, INT_MAX};
constexpr double kRanges[][2] = {
    {0, 1},
    {-0.37, 12.9},
    {3, 3},
    {0, 1e-310},
    {4.9e-324, 1e-323},
    {-DBL_MAX, DBL_MAX},
    {1e300, 1.0000001e300},
};

int clampedMax(int maxTicks) { return std::min(maxTicks, kMaxTickCount); }

// Every pairing of extreme counts: the result is a count the picker could have
// chosen from the clamped bounds, and lowering a huge maximum to the cap is
// invisible.
TEST(HostileTicks, ExtremeCountsGiveClampedResults) {
  for (const auto& r : kRanges) {
    for (int minTicks : kCounts) {
      for (int maxTicks : kCounts) {
        for (InOut mode : {kEnclosing, kInside}) {
          SCOPED_TRACE(::testing::Message() << "[" << r[0] << ", " << r[1] << "] " << minTicks << ".."
                                            << maxTicks << " mode " << mode);
          double lo = r[0], hi = r[1];
          const int n = calculateLinearTicks(&lo, &hi, minTicks, maxTicks, mode);
          if (n != 0 && n != 3) {
            EXPECT_GE(n, std::max(minTicks, 2));
            EXPECT_LE(n, clampedMax(maxTicks));
          }
          double clo = r[0], chi = r[1];
          EXPECT_EQ(calculateLinearTicks(&clo, &chi, minTicks, clampedMax(maxTicks), mode), n);
          EXPECT_EQ(clo, lo);
          EXPECT_EQ(chi, hi);
        }
      }
    }
  }
}

TEST(HostileTicks, ExtremeBiasesEnd) {
  for (const auto& r : kRanges) {
    for (int count : kCounts) {
      for (int bias : kCounts) {
        SCOPED_TRACE(::testing::Message()
                     << "[" << r[0] << ", " << r[1] << "] count " << count << " bias " << bias);
        double lo = r[0], hi = r[1];
        const int n = pickBiasedTickAndLimits(kXAxis, &lo, &hi, count, INT_MAX, bias, bias);
        EXPECT_GE(n, 0);
        EXPECT_LE(n, kMaxTickCount);
        lo = r[0], hi = r[1];
        EXPECT_LE(pickBiasedTickAndLimits(kXAxis, &lo, &hi, INT_MIN, count, INT_MIN, bias), kMaxTickCount);
        lo = r[0], hi = r[1];
        EXPECT_LE(pickBiasedTickAndLimits(kXAxis, &lo, &hi, count, count, bias, INT_MIN), kMaxTickCount);
      }
      for (int maxTicks : {INT_MIN, 0, 11, INT_MAX}) {
        double lo = r[0] > 0 ? r[0] : 1e-300, hi = r[1] > lo ? r[1] : lo * 10;
        const int n = calculateLogTicks(&lo, &hi, maxTicks, kLimitExponents);
        EXPECT_LE(n, kMaxTickCount);
      }
    }
  }
}

// The widening written plainly, every step searching its whole count range:
// the slow reference for the picker, which searches only the new count when
// the range shrinks.
int referenceBiased(double* lower, double* upper, int minTicks, int maxTicks, int biasLow, int biasHigh) {
  const double savedLower = *lower, savedUpper = *upper;
  int n = calculateLinearTicks(lower, upper, minTicks, maxTicks, kInside);
  int curMin = minTicks, curMax = maxTicks, limit = biasHigh, lowBound = biasLow, shrink = 0;
  while (n == 0 && limit < 100) {
    if (curMax < limit) {
      curMin = curMax += 1;
    } else if (curMin <= lowBound || minTicks - shrink <= 2) {
      shrink = 0;
      curMax = limit + 1;
      lowBound = minTicks + 1;
      curMin = maxTicks + 1;
      limit = std::max(limit + 1, static_cast<int>(limit * 1.5));
    } else {
      shrink += 1;
      curMax = maxTicks;
      curMin = minTicks - shrink;
    }
    *lower = savedLower;
    *upper = savedUpper;
    n = calculateLinearTicks(lower, upper, curMin, curMax, kInside);
  }
  return n;
}

TEST(HostileTicks, BiasedSearchMatchesThePlainWidening) {
  std::mt19937_64 rng(1414);
  std::uniform_real_distribution<double> unit(0, 1), exponent(-6, 6);
  std::uniform_int_distribution<int> count(-3, 40), bias(-30, 120);
  int widened = 0;
  for (int i = 0; i < 20000; ++i) {
    const double scale = std::pow(10.0, exponent(rng));
    const double L = (unit(rng) * 2 - 1) * scale;
    const double H = L + unit(rng) * scale;
    const int minTicks = count(rng), maxTicks = count(rng), biasLow = bias(rng), biasHigh = bias(rng);
    SCOPED_TRACE(::testing::Message() << "[" << L << ", " << H << "] " << minTicks << ".." << maxTicks
                                      << " biases " << biasLow << ", " << biasHigh);
    double lo = L, hi = H, rlo = L, rhi = H;
    const int n = pickBiasedTickAndLimits(kXAxis, &lo, &hi, minTicks, maxTicks, biasLow, biasHigh);
    ASSERT_EQ(n, referenceBiased(&rlo, &rhi, minTicks, maxTicks, biasLow, biasHigh));
    ASSERT_EQ(lo, rlo);
    ASSERT_EQ(hi, rhi);
    double plo = L, phi = H;
    if (calculateLinearTicks(&plo, &phi, minTicks, maxTicks, kInside) == 0 && n != 0) ++widened;
  }
  EXPECT_GT(widened, 100);
}

TEST(HostileTicks, EstimateTakesTheExtremeLows) {
  // clang-format off
  struct Case { const char* label; int low, cap; bool inclusive; int outMin, outMax; };
  const Case cases[] = {
      {"lowest low, exclusive", INT_MIN, 11, false, INT_MIN + 1, 11},
      {"lowest low and cap", INT_MIN, INT_MIN, false, INT_MIN, INT_MIN + 1},
      {"highest cap", 2, INT_MAX, true, 2, 101},
      {"highest low, exclusive", INT_MAX, 11, false, INT_MAX - 1, INT_MAX},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    int lo = 0, hi = 0;
    estimateNumberOfTicks(&lo, &hi, c.low, c.cap, Point2d(0, 0), Point2d(100, 0), 1, 1, c.inclusive);
    EXPECT_EQ(lo, c.outMin);
    EXPECT_EQ(hi, c.outMax);
  }
}

// Decades down to the subnormal range: a tenth of the smallest major tick is
// no longer a double, and the decade ratio of the extremes overflows.
TEST(HostileTicks, MinorTicksAtTheEndsOfTheDoubleRange) {
  struct Case {
    const char* label;
    std::vector<double> majors;
  };
  const Case cases[] = {
      {"subnormal major", {4.9e-324, 1e-323}},
      {"smallest decades", {1e-323, 1e-322, 1e-321}},
      {"whole range of decades", {1e-320, 1e308}},
      {"negative subnormal", {-1e-322, -1e-323}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    test::NullAxisDescriptor null;
    TickGeometryDescriptor g;
    g.scale = kLogScale;
    std::vector<double> out(64);
    std::vector<double> majors = c.majors;
    calculateMinorTickMarkPos(null, kXAxis, majors.data(), static_cast<int>(majors.size()), out.data(), g,
                              static_cast<int>(out.size()));
    double previous = -DBL_MAX;
    for (double v : out) {
      if (std::isnan(v)) break;
      EXPECT_GT(v, previous);
      previous = v;
    }
  }
}

// A subdivision finer than the doubles between two majors rounds every minor
// onto a major: the walk gives up instead of visiting 2^31 positions.
TEST(HostileTicks, MinorsFinerThanTheDoublesEnd) {
  test::NullAxisDescriptor null;
  TickGeometryDescriptor g;
  g.renderLower = 1e16;
  g.renderUpper = 1e16 + 2;
  g.linearSubdivisions = INT_MAX;
  std::vector<double> majors = {1e16, 1e16 + 2};
  std::vector<double> out(8);
  calculateMinorTickMarkPos(null, kXAxis, majors.data(), 2, out.data(), g, 8);
  for (double v : out) EXPECT_TRUE(std::isnan(v));
}

// Every allocation of one automatic tick pass fails in turn: the pass raises
// the host's out-of-memory error and leaves count, offset and record as they
// were, or completes.
TEST(HostileTicks, FailedTickRecordLeavesTheDescriptorAlone) {
  for (AxisScale scale : {kLinearScale, kLogScale}) {
    bool completed = false;
    for (std::int64_t budget = 0; !completed && budget < 50; ++budget) {
      SCOPED_TRACE(::testing::Message() << "scale " << scale << " budget " << budget);
      FakeAxes axes;
      FakeAxisState& x = axes.axis[kXAxis];
      x.scale = scale;
      x.render[0] = scale == kLogScale ? 0.5 : 0;
      x.render[1] = scale == kLogScale ? 2e3 : 10;
      x.numTicksInRange = -7;
      x.offset = -9;
      try {
        const HostAllocationFailureScope failAfter(budget);
        computeAxisTicks(axes, kXAxis, 3, 8);
        completed = true;
      } catch (const HostError& e) {
        EXPECT_EQ(e.identifier(), kHostOutOfMemoryId);
      }
      if (completed) {
        EXPECT_NE(x.ticks, nullptr);
        EXPECT_GT(x.numTicksInRange, 0);
      } else {
        EXPECT_EQ(x.numTicksInRange, -7);
        EXPECT_EQ(x.offset, -9);
        EXPECT_EQ(x.ticks, nullptr);
      }
    }
    EXPECT_TRUE(completed);
  }
}

}  // namespace

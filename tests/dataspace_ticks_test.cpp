// Linear tick search: nice limits and counts, the biased widening, and the
// tick-count estimate; properties over many random ranges.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

#include "qvgui/dataspace.h"

namespace {

using namespace gui_objects::tickpicker;
using gui_objects::Point2d;

constexpr double kInf = std::numeric_limits<double>::infinity();

// True when step is 1, 2 or 5 times a power of ten (to rounding).
bool isNiceStep(double step) {
  if (!(step > 0) || !std::isfinite(step)) return false;
  const double e = std::floor(std::log10(step));
  for (double shift : {-1.0, 0.0, 1.0}) {
    const double mantissa = step / std::pow(10.0, e + shift);
    for (double nice : {1.0, 2.0, 5.0}) {
      if (std::fabs(mantissa - nice) <= 1e-9 * nice) return true;
    }
  }
  return false;
}

TEST(LinearTicks, FixedCases) {
  // clang-format off
  struct Case {
    const char* label; double lower, upper; int minTicks, maxTicks; InOut mode; int n; double outLo, outHi;
  };
  const Case cases[] = {
      {"unit range, enclosing", 0, 1, 2, 11, kEnclosing, 11, 0, 1},
      {"unit range, few ticks", 0, 1, 2, 4, kEnclosing, 3, 0, 1},
      {"grows to nice limits", -0.37, 12.9, 2, 11, kEnclosing, 9, -2, 14},
      {"inside stays within", -0.37, 12.9, 2, 11, kInside, 7, 0, 12},
      {"reversed limits swap and widen", 5, -5, 2, 11, kEnclosing, 7, -6, 6},
      {"lower infinite", -kInf, 1, 2, 11, kEnclosing, 3, -kInf, 1},
      {"upper infinite", 0, kInf, 2, 11, kInside, 3, 0, kInf},
      {"no counts", 0, 1, 5, 4, kEnclosing, 0, 0, 1},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    double lo = c.lower, hi = c.upper;
    EXPECT_EQ(calculateLinearTicks(&lo, &hi, c.minTicks, c.maxTicks, c.mode), c.n);
    for (auto [got, want] : {std::pair{lo, c.outLo}, std::pair{hi, c.outHi}}) {
      if (std::isinf(want)) {
        EXPECT_EQ(got, want);
      } else {
        EXPECT_NEAR(got, want, 1e-12);
      }
    }
  }
}

TEST(LinearTicks, DegenerateLimits) {
  double lo = 3, hi = 3;  // searched as a widened range
  const int n = calculateLinearTicks(&lo, &hi, 2, 11, kEnclosing);
  EXPECT_LE(lo, 2.95);
  EXPECT_GE(hi, 3.05);
  EXPECT_TRUE(isNiceStep((hi - lo) / (n - 1))) << lo << " " << hi << " " << n;
  double nan = std::nan(""), one = 1;
  EXPECT_EQ(calculateLinearTicks(&nan, &one, 2, 11, kEnclosing), 0);
}

// Enclosing limits contain the data (the first window may start up to half a
// percent of a step late), inside limits lie within it; steps are nice.
TEST(LinearTicks, PropertiesOnRandomRanges) {
  std::mt19937_64 rng(424242);
  std::uniform_real_distribution<double> unit(0, 1), exponent(-12, 12);
  std::uniform_int_distribution<int> counts(2, 12);
  for (int i = 0; i < 20000; ++i) {
    const double scale = std::pow(10.0, exponent(rng));
    double L = (unit(rng) * 2 - 1) * scale;
    double H = L + unit(rng) * scale * std::pow(10.0, std::floor(exponent(rng) / 4));
    if (H <= L) H = L + scale;
    const int minTicks = counts(rng);
    const int maxTicks = minTicks + counts(rng) - 2;
    SCOPED_TRACE(::testing::Message()
                 << "range " << i << " [" << L << ", " << H << "] " << minTicks << ".." << maxTicks);
    double lo = L, hi = H;
    const int n = calculateLinearTicks(&lo, &hi, minTicks, maxTicks, kEnclosing);
    ASSERT_GE(n, minTicks);
    ASSERT_LE(n, maxTicks);
    const double step = (hi - lo) / (n - 1);
    ASSERT_TRUE(isNiceStep(step)) << step;
    ASSERT_LE(lo, L + 0.0051 * step);
    ASSERT_GE(hi, H - 1e-12 * std::fabs(H) - 1e-300);

    double ilo = L, ihi = H;
    const int m = calculateLinearTicks(&ilo, &ihi, minTicks, maxTicks, kInside);
    if (m == 0) continue;
    ASSERT_GE(m, minTicks);
    ASSERT_LE(m, maxTicks);
    ASSERT_GE(ilo, L);
    ASSERT_LE(ihi, H + 1e-12 * std::fabs(H));
    if (m > 1) {
      ASSERT_TRUE(isNiceStep((ihi - ilo) / (m - 1)));
    }
  }
}

TEST(BiasedTicks, WidensTheSearchUntilACountFits) {
  std::mt19937_64 rng(5);
  std::uniform_real_distribution<double> unit(0, 1);
  int widened = 0;
  for (int i = 0; i < 5000; ++i) {
    const double L = unit(rng) * 10 - 5;
    const double H = L + 0.01 + unit(rng) * 20;
    double lo = L, hi = H;
    double plainLo = L, plainHi = H;
    const bool plainFits = calculateLinearTicks(&plainLo, &plainHi, 4, 4, kInside) != 0;
    const int n = pickBiasedTickAndLimits(kXAxis, &lo, &hi, 4, 4, 3, 8);
    SCOPED_TRACE(::testing::Message() << "[" << L << ", " << H << "]");
    ASSERT_NE(n, 0);
    ASSERT_GE(lo, L);
    ASSERT_LE(hi, H + 1e-12);
    if (n > 1) {
      ASSERT_TRUE(isNiceStep((hi - lo) / (n - 1)));
    }
    if (plainFits) {
      ASSERT_EQ(n, 4);
      ASSERT_EQ(lo, plainLo);
    } else {
      ++widened;
    }
  }
  EXPECT_GT(widened, 0);  // the table above must exercise the widening
}

TEST(BiasedTicks, DegenerateBiasesStillEnd) {
  double lo = 0, hi = 1;
  // A fixed count that cannot fit inside and biases that would never grow.
  EXPECT_GE(pickBiasedTickAndLimits(kYAxis, &lo, &hi, 7, 7, -1000000, 0), 0);
  lo = 0;
  hi = 1e-310;
  EXPECT_GE(pickBiasedTickAndLimits(kYAxis, &lo, &hi, 3, 2, 1, 1), 0);
}

TEST(TickCountEstimate, FixedCases) {
  // clang-format off
  struct Case {
    const char* label; int low, cap; Point2d p0, p1; double spacingY, spacingX; bool inclusive;
    int outMin, outMax;
  };
  const Case cases[] = {
      {"room for many", 2, 11, {0, 0}, {100, 0}, 10, 20, true, 2, 6},
      {"capped", 2, 4, {0, 0}, {100, 0}, 10, 5, true, 2, 4},
      {"zero spacing fills to the cap", 3, 9, {0, 0}, {1, 0}, 10, 0, true, 3, 9},
      {"short, exclusive", 3, 11, {0, 0}, {0, 15}, 10, 10, false, 2, 3},
      {"short, inclusive", 3, 11, {0, 0}, {0, 15}, 10, 10, true, 3, 3},
      {"exactly low, exclusive", 3, 11, {0, 0}, {0, 25}, 10, 10, false, 2, 3},
      {"below low after the cap", 5, 3, {0, 0}, {0, 100}, 1, 1, true, 5, 5},
      {"below low, exclusive", 5, 3, {0, 0}, {0, 100}, 1, 1, false, 4, 5},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    int lo = -1, hi = -1;
    estimateNumberOfTicks(&lo, &hi, c.low, c.cap, c.p0, c.p1, c.spacingY, c.spacingX, c.inclusive);
    EXPECT_EQ(lo, c.outMin);
    EXPECT_EQ(hi, c.outMax);
  }
}

}  // namespace

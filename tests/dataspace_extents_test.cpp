// Data extents: checked constructors, samples, merging, queries and bundles.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

#include "qvgui/dataspace.h"

namespace {

using gui_objects::ColorAlphaDataExtents;
using gui_objects::DataExtents;
using gui_objects::InvalidDataExtentsException;
using gui_objects::XYZDataExtents;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

void expectFields(const DataExtents& e, double min, double maxNeg, double minPos, double max) {
  EXPECT_TRUE(e.initialized()) << e;
  EXPECT_TRUE(same(e.getMinValue(), min) && same(e.getMaxNegative(), maxNeg) &&
              same(e.getMinPositive(), minPos) && same(e.getMaxValue(), max))
      << e;
}

TEST(DataExtents, EmptyStateUsesTheSignedQuietNaN) {
  const DataExtents e;
  EXPECT_FALSE(e.initialized());
  EXPECT_TRUE(e.empty());
  EXPECT_EQ(e.getMinValue(), 0.0);
  EXPECT_EQ(e.getMaxValue(), 0.0);
  std::uint64_t bits = 0;
  const double v = e.getMaxNegative();
  std::memcpy(&bits, &v, sizeof bits);
  EXPECT_EQ(bits, 0xFFF8000000000000u);
  EXPECT_TRUE(std::isnan(e.getMinPositive()));
}

TEST(DataExtents, TwoBoundConstructorDerivesTrackedValues) {
  // clang-format off
  struct Case { const char* label; double min, max, maxNeg, minPos; };
  const Case cases[] = {
      {"zero point", 0, 0, kNaN, kNaN},     {"positive point", 2, 2, kNaN, 2},
      {"negative point", -2, -2, -2, kNaN}, {"from zero", 0, 5, kNaN, 5},
      {"positive range", 1, 5, kNaN, 1},    {"across zero keeps the ends", -2, 3, -2, 3},
      {"negative range", -5, -1, -1, kNaN}, {"up to zero", -5, 0, -5, kNaN},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    expectFields(DataExtents(c.min, c.max), c.min, c.maxNeg, c.minPos, c.max);
  }
  EXPECT_TRUE(DataExtents(0, 0).empty());
  EXPECT_FALSE(DataExtents(0, 0).crossesZero());
  for (auto [lo, hi] : {std::pair{kNaN, 1.0}, {0.0, kInf}, {-kInf, 0.0}, {2.0, 1.0}}) {
    EXPECT_THROW(DataExtents(lo, hi), InvalidDataExtentsException) << lo << ".." << hi;
  }
}

TEST(DataExtents, FourValueConstructorChecksExactlyItsRules) {
  // clang-format off
  struct Case { const char* label; double min, maxNeg, minPos, max; bool throws; };
  const Case cases[] = {
      {"non-finite min", kNaN, kNaN, kNaN, 1, true},
      {"non-finite max", 0, kNaN, 1, kInf, true},
      {"non-negative with a negative", 0, -1, 1, 2, true},
      {"from zero with zero minPos", 0, kNaN, 0, 2, true},
      {"from zero without known positive (lenient)", 0, kNaN, kNaN, 2, false},
      {"from zero", 0, kNaN, 1, 2, false},
      {"positive needs minPos == min", 1, kNaN, 1.5, 2, true},
      {"positive with NaN minPos", 1, kNaN, kNaN, 2, true},
      {"positive", 1, kNaN, 1, 2, false},
      {"max below min caught via minPos", 3, kNaN, 3, 2, true},
      {"max below zero min passes (lenient)", 0, kNaN, kNaN, -1, false},
      {"non-positive with a positive", -2, -1, 1, 0, true},
      {"up to zero with zero maxNeg", -2, 0, kNaN, 0, true},
      {"up to zero without known negative (lenient)", -2, kNaN, kNaN, 0, false},
      {"negative needs maxNeg == max", -2, -1.5, kNaN, -1, true},
      {"negative", -2, -1, kNaN, -1, false},
      {"up to zero with maxNeg below min", -2, -3, kNaN, 0, true},
      {"across zero", -2, -1, 1, 2, false},
      {"across zero maxNeg below min", -2, -3, 1, 2, true},
      {"across zero minPos above max", -2, -1, 3, 2, true},
      {"across zero maxNeg above minPos", -2, 1, 0.5, 2, true},
      {"across zero NaN maxNeg", -2, kNaN, 1, 2, true},
      {"across zero NaN minPos", -2, -1, kNaN, 2, true},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    if (c.throws) {
      EXPECT_THROW(DataExtents(c.min, c.maxNeg, c.minPos, c.max), InvalidDataExtentsException);
    } else {
      expectFields(DataExtents(c.min, c.maxNeg, c.minPos, c.max), c.min, c.maxNeg, c.minPos, c.max);
    }
  }
}

// The obvious definition: every finite sample, minimum, maximum, largest below
// zero and smallest above zero.
DataExtents referenceOf(const std::vector<double>& v) {
  double lo = kInf, hi = -kInf, neg = -kInf, pos = kInf;
  bool any = false;
  for (double x : v) {
    if (!std::isfinite(x)) continue;
    any = true;
    lo = std::min(lo, x);
    hi = std::max(hi, x);
    if (x < 0) neg = std::max(neg, x);
    if (x > 0) pos = std::min(pos, x);
  }
  if (!any) return DataExtents();
  return DataExtents(lo, lo < 0 ? neg : kNaN, hi > 0 ? pos : kNaN, hi);
}

// Short runs with NaN, infinities and zeros; often all on one side of zero.
std::vector<double> randomSamples(std::mt19937_64& rng) {
  std::uniform_int_distribution<int> len(0, 12), kind(0, 9);
  std::uniform_real_distribution<double> val(-100, 100);
  const double bias = std::uniform_int_distribution<int>(0, 2)(rng) == 0 ? 0 : (rng() % 2 ? 150 : -150);
  std::vector<double> v(len(rng));
  for (double& x : v) {
    const int k = kind(rng);
    x = k == 0 ? kNaN : k == 1 ? ((rng() % 2) ? kInf : -kInf) : k == 2 ? 0.0 : val(rng) + bias;
  }
  return v;
}

TEST(DataExtents, SamplesAndMergesMatchTheDefinitionOnRandomData) {
  std::mt19937_64 rng(20261121);
  for (int trial = 0; trial < 4000; ++trial) {
    const std::vector<double> a = randomSamples(rng);
    const std::vector<double> b = randomSamples(rng);
    DataExtents ea, eb;
    for (double x : a) ea += x;
    for (double x : b) eb += x;
    std::vector<double> both = a;
    both.insert(both.end(), b.begin(), b.end());
    ASSERT_EQ(ea, referenceOf(a)) << "trial " << trial;
    ASSERT_EQ(ea + eb, referenceOf(both)) << "trial " << trial << " " << ea << " + " << eb;
    DataExtents merged = eb;
    merged += ea;
    ASSERT_EQ(merged, referenceOf(both)) << "trial " << trial;
  }
}

TEST(DataExtents, MergeKeepsThisSideOnTiesAndSkipsUninitialized) {
  DataExtents a(-0.0, 0.0);  // a zero range stored as -0 .. 0
  a += DataExtents(0.0, 0.0);
  EXPECT_TRUE(std::signbit(a.getMinValue()));
  DataExtents c(1, 2);
  c += DataExtents();
  expectFields(c, 1, kNaN, 1, 2);
  DataExtents d;
  d += c;
  EXPECT_EQ(d, c);
}

TEST(DataExtents, QueriesFollowTheStoredBounds) {
  // clang-format off
  struct Case { const char* label; DataExtents e; bool neg, pos, nonPos, nonNeg, crosses; };
  const Case cases[] = {
      {"positive", DataExtents(1, 2), false, true, false, true, false},
      {"from zero", DataExtents(0, 2), false, true, true, true, true},
      {"up to zero", DataExtents(-2, 0), true, false, true, true, true},
      {"negative", DataExtents(-2, -1), true, false, true, false, false},
      {"zero", DataExtents(0, 0), false, false, true, true, false},
      {"across", DataExtents(-1, 1), true, true, true, true, true},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(c.e.containsNegatives(), c.neg);
    EXPECT_EQ(c.e.containsPositives(), c.pos);
    EXPECT_EQ(c.e.containsNonPositives(), c.nonPos);
    EXPECT_EQ(c.e.containsNonNegatives(), c.nonNeg);
    EXPECT_EQ(c.e.crossesZero(), c.crosses);
  }
}

TEST(DataExtents, NearlyEqualComparesOnlyTheSidesReached) {
  // clang-format off
  struct Case { const char* label; DataExtents a, b; bool equal; };
  const Case cases[] = {
      {"both empty", DataExtents(), DataExtents(), true},
      {"one empty", DataExtents(), DataExtents(0, 0), false},
      {"within tolerance", DataExtents(1, 2), DataExtents(1 + 1e-9, 2), true},
      {"bounds differ", DataExtents(1, 2), DataExtents(1, 2.01), false},
      {"sign sides differ", DataExtents(0, 2), DataExtents(-1e-9, 2), false},
      {"min positive differs", DataExtents(-1, -0.5, 0.5, 2), DataExtents(-1, -0.5, 0.7, 2), false},
      {"max negative differs", DataExtents(-1, -0.5, 0.5, 2), DataExtents(-1, -0.6, 0.5, 2), false},
      {"absent against known min positive", DataExtents(0, kNaN, kNaN, 2), DataExtents(0, kNaN, 1e-300, 2), false},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(nearlyEqual(c.a, c.b), c.equal);
    EXPECT_EQ(nearlyEqual(c.b, c.a), c.equal);
  }
}

TEST(DataExtents, BundlesMergeAxisByAxis) {
  XYZDataExtents xyz(DataExtents(0, 1), DataExtents(), DataExtents(-1, -1));
  xyz += XYZDataExtents(DataExtents(-1, 0), DataExtents(2, 3), DataExtents());
  EXPECT_EQ(xyz.getXDataExtents(), DataExtents(-1, -1, 1, 1));
  EXPECT_EQ(xyz.getYDataExtents(), DataExtents(2, 3));
  EXPECT_EQ(xyz.getZDataExtents(), DataExtents(-1, -1));
  ColorAlphaDataExtents ca;
  ca += ColorAlphaDataExtents(DataExtents(0, 1), DataExtents(0.5, 0.5));
  EXPECT_EQ(ca.getColorDataExtents(), DataExtents(0, 1));
  EXPECT_EQ(ca.getAlphaDataExtents(), DataExtents(0.5, 0.5));
}

}  // namespace

// Points, the scalar tolerance test and the point free functions.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <tuple>

#include "geometry_test_support.h"

namespace {

using namespace gui_objects;

TEST(NearlyEqual, SignedZerosStrictThresholdAndNonFinite) {
  struct Case {
    const char* label;
    double a, b;
    bool expected;
  };
  const Case cases[] = {
      {"two zeros of different sign", 0.0, -0.0, true},
      {"threshold itself is not enough (strict)", 1e-7, 0.0, false},
      {"NaN with NaN", kNaN, kNaN, false},
      {"NaN with a number", kNaN, 1.0, false},
      {"equal infinities", -kInf, -kInf, true},
      {"opposite infinities", kInf, -kInf, false},
      {"infinity and the largest double", kInf, std::numeric_limits<double>::max(), false},
      {"opposite signs near zero", 4e-8, -4e-8, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(nearlyEqual(c.a, c.b), c.expected);
    EXPECT_EQ(nearlyEqual(c.b, c.a), c.expected);
  }
}

TEST(NearlyEqual, MatchesDefinitionOnRandomPairs) {
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> exponent(-12, 12);
  std::uniform_real_distribution<double> relative(-3e-7, 3e-7);
  for (int i = 0; i < 20000; ++i) {
    const double a = std::pow(10.0, exponent(rng)) * (i % 2 ? -1 : 1);
    const double b = a + relative(rng) * std::max(std::fabs(a), 1.0);
    const long double diff = std::fabs(static_cast<long double>(a) - b);
    const long double scale = std::max<long double>(std::max(std::fabs(a), std::fabs(b)), 1.0L);
    const long double ratio = diff / scale;
    // Skip pairs too close to the threshold for the two precisions to agree.
    if (std::fabs(ratio - 1e-7L) < 1e-15L) continue;
    ASSERT_EQ(nearlyEqual(a, b), ratio < 1e-7L) << a << " " << b;
  }
}

TEST(NearlyEqual, SignTests) {
  EXPECT_FALSE(nearlyPositive(1e-6));
  EXPECT_TRUE(nearlyPositive(1.0000001e-6));
  EXPECT_FALSE(nearlyNegative(-1e-6));
  EXPECT_TRUE(nearlyNegative(-1.0000001e-6));
  EXPECT_FALSE(nearlyPositive(kNaN));
  EXPECT_FALSE(nearlyNegative(kNaN));
}

TEST(Points, TruncationTowardZero) {
  struct Case {
    const char* label;
    double x, y;
    Point2i expected;
  };
  const Case cases[] = {
      {"fractions of both signs", -1.7, 2.9, Point2i(-1, 2)},
      {"just below one in magnitude", 0.999, -0.999, Point2i(0, 0)},
      {"NaN becomes zero", kNaN, 3.0, Point2i(0, 3)},
      {"beyond the 32-bit range saturates", 3e9, -3e9, Point2i(2147483647, -2147483647 - 1)},
      {"infinities saturate", kInf, -kInf, Point2i(2147483647, -2147483647 - 1)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(Point2d(c.x, c.y).asPoint2i(), c.expected);
    EXPECT_EQ(Point2f(static_cast<float>(c.x), static_cast<float>(c.y)).asPoint2i(), c.expected);
  }
}

TEST(Points, SixteenBitConversion) {
  const qvpoint corner = Point2i(32767, -32768);
  EXPECT_EQ(corner.h, 32767);
  EXPECT_EQ(corner.v, -32768);
  EXPECT_EQ(Point2i(qvpoint{5, -7}), Point2i(-7, 5));  // v is y, h is x

  const Point2i outside[] = {{32768, 0}, {0, 32768}, {-32769, 0}, {0, -32769}, {70000, 70000}};
  for (const Point2i& p : outside) {
    SCOPED_TRACE(::testing::PrintToString(p));
    EXPECT_THROW(static_cast<void>(static_cast<qvpoint>(p)), ShortOverflowException);
  }
}

TEST(Points, LexicographicOrderWithNaNTies) {
  struct Case {
    const char* label;
    Point3d a, b;
    bool less;
  };
  const Case cases[] = {
      {"NaN y is a tie, z decides", {1, kNaN, 0}, {1, 5, 1}, true},
      {"NaN y is a tie, z decides the other way", {1, 5, 1}, {1, kNaN, 0}, false},
      {"NaN x is a tie too", {kNaN, 2, 0}, {1, 2, 1}, true},
      {"all NaN", {kNaN, kNaN, kNaN}, {kNaN, kNaN, kNaN}, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(c.a < c.b, c.less);
    EXPECT_EQ(c.a.asPoint3f() < c.b.asPoint3f(), c.less);
  }
}

TEST(Points, OrderMatchesTupleOrderWithoutNaN) {
  std::mt19937 rng(11);
  std::uniform_int_distribution<int> small(-2, 2);  // many ties
  for (int i = 0; i < 5000; ++i) {
    const Point3d a(small(rng), small(rng), small(rng));
    const Point3d b(small(rng), small(rng), small(rng));
    ASSERT_EQ(a < b,
              std::make_tuple(a.getX(), a.getY(), a.getZ()) < std::make_tuple(b.getX(), b.getY(), b.getZ()))
        << a << " " << b;
    const Point2i ai(small(rng), small(rng)), bi(small(rng), small(rng));
    ASSERT_EQ(ai < bi, std::make_pair(ai.getX(), ai.getY()) < std::make_pair(bi.getX(), bi.getY()));
    const Point2d ad = ai.asPoint2d(), bd = bi.asPoint2d();
    ASSERT_EQ(ad < bd, ai < bi);
    ASSERT_EQ(ad.asPoint2f() < bd.asPoint2f(), ai < bi);
  }
}

TEST(Points, ExactEqualityAndWrappingArithmetic) {
  EXPECT_NE(Point2d(kNaN, 0), Point2d(kNaN, 0));
  EXPECT_NE(Point3d(1, 2, 3), Point3d(1, 2, 3 + 1e-15));
  EXPECT_TRUE(nearlyEqual(Point3d(1, 2, 3), Point3d(1, 2, 3 + 1e-15)));
  EXPECT_FALSE(nearlyEqual(Point4d(1, 2, 3, 1), Point4d(1, 2, 3, 1.001)));
  Point2i p(2147483647, 0);
  p += Vector2i(1, 0);
  EXPECT_EQ(p, Point2i(-2147483647 - 1, 0));
}

TEST(Points, Distances) {
  // hypot keeps the 2-D forms finite where the squares would overflow.
  EXPECT_DOUBLE_EQ(Point2d(1e200, 0).distance(Point2d(-1e200, 0)), 2e200);
  EXPECT_DOUBLE_EQ(Point2f(3e38f, 0).distance(Point2f(-3e38f, 0)), 2.0 * static_cast<double>(3e38f));
  // The integer form works in double: no 32-bit overflow of the difference.
  EXPECT_EQ(Point2i(2147483647, 0).distance(Point2i(-2147483647 - 1, 0)), 4294967295.0);
  // Point3d uses the plain square root of the sum of squares.
  EXPECT_TRUE(std::isinf(Point3d(1e200, 0, 0).distance(Point3d())));
  EXPECT_EQ(Point3f(1, 2, 2).distance(Point3f()), 3.0);
}

TEST(Points, ProjectDividesByPositiveWOnly) {
  double r = 0.0;
  const Point3d p = Point4d(5, 7, 10, 3).project(&r);
  // One reciprocal multiplied in: 5 * (1/3), not 5 / 3.
  EXPECT_EQ(p.getX(), 1.6666666666666665);
  EXPECT_EQ(r, 1.0 / 3.0);
  EXPECT_EQ(Point4d(2, 4, 6, 2).project(nullptr), Point3d(1, 2, 3));
  for (double w : {0.0, -2.0, -0.0}) {
    double untouched = 42.0;
    EXPECT_THROW(static_cast<void>(Point4d(1, 2, 3, w).project(&untouched)), InvalidWException) << w;
    EXPECT_EQ(untouched, 42.0);
  }
}

TEST(Points, Interpolation) {
  EXPECT_EQ(interpolate(-1.0, Point3d(1, 1, 1), Point3d(2, 3, 4)), Point3d(0, -1, -2));
  EXPECT_EQ(interpolate(1.5, Point4d(0, 0, 0, 1), Point4d(2, 2, 2, 3)), Point4d(3, 3, 3, 4));
  // The float difference is rounded to float before it is scaled; a
  // difference taken in double would give 11744051.
  EXPECT_EQ(interpolate(0.7, Point2f(0.3f, 0.0f), Point2f(16777216.0f, 0.0f)).getX(), 11744052.0f);
  EXPECT_EQ(interpolate(0.7, Point3f(0.3f, 0, 0), Point3f(16777216.0f, 0, 0)).getX(), 11744052.0f);
}

TEST(Points, MinMaxKeepFirstOnTiesAndNaN) {
  struct Case {
    const char* label;
    Point2d a, b, min, max;
  };
  const Case cases[] = {
      {"plain", {1, 5}, {2, 3}, {1, 3}, {2, 5}},
      {"NaN in the second keeps the first", {1, 5}, {kNaN, kNaN}, {1, 5}, {1, 5}},
      {"NaN in the first stays", {kNaN, 5}, {0, 9}, {kNaN, 5}, {kNaN, 9}},
  };
  auto same = [](double a, double b) { return (std::isnan(a) && std::isnan(b)) || a == b; };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const Point2d lo = min_point(c.a, c.b), hi = max_point(c.a, c.b);
    EXPECT_TRUE(same(lo.getX(), c.min.getX()) && same(lo.getY(), c.min.getY())) << lo;
    EXPECT_TRUE(same(hi.getX(), c.max.getX()) && same(hi.getY(), c.max.getY())) << hi;
  }
  // A tie keeps the first argument's component, visible through the sign of zero.
  EXPECT_TRUE(std::signbit(min_point(Point3d(-0.0, 0, 0), Point3d(0.0, 0, 0)).getX()));
  EXPECT_FALSE(std::signbit(max_point(Point3d(0.0, 0, 0), Point3d(-0.0, 0, 0)).getX()));
  EXPECT_EQ(min_point(Point2i(1, -3), Point2i(0, 4)), Point2i(0, -3));
  EXPECT_EQ(max_point(Point3f(1, -3, 2), Point3f(0, 4, 2)), Point3f(1, 4, 2));
}

TEST(Points, NewellSumIsTwiceAreaTimesNormal) {
  std::mt19937_64 rng(3);
  std::uniform_real_distribution<double> u(-10, 10);
  for (int i = 0; i < 1000; ++i) {
    const Point3d p[3] = {{u(rng), u(rng), u(rng)}, {u(rng), u(rng), u(rng)}, {u(rng), u(rng), u(rng)}};
    const Vector3d sum = newell_area(p[0], p[1]) + newell_area(p[1], p[2]) + newell_area(p[2], p[0]);
    const Vector3d reference = (p[1] - p[0]).cross(p[2] - p[0]);
    ASSERT_NEAR((sum - reference).length(), 0.0, 1e-9);
  }
}

}  // namespace

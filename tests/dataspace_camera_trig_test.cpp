// Degree trigonometry, the 2-D view test, up-vector choice and the viewing
// direction of the camera utilities.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

namespace cu = gui_objects::camera_utils;
using gui_objects::Vector3d;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kSqrtHalf = 0.70710678118654752440;

long double referenceSin(double degrees) {
  const long double pi = 3.141592653589793238462643383279502884L;
  return std::sin(std::fmod(static_cast<long double>(degrees), 360.0L) * pi / 180.0L);
}
long double referenceCos(double degrees) {
  const long double pi = 3.141592653589793238462643383279502884L;
  return std::cos(std::fmod(static_cast<long double>(degrees), 360.0L) * pi / 180.0L);
}

}  // namespace

TEST(DegreeTrig, QuarterTurnsAreExact) {
  struct Case {
    const char* label;
    double degrees;
    double sin;
    double cos;
  };
  const Case cases[] = {
      {"0", 0.0, 0.0, 1.0},
      {"90", 90.0, 1.0, 0.0},
      {"180", 180.0, 0.0, -1.0},
      {"270", 270.0, -1.0, 0.0},
      {"360", 360.0, 0.0, 1.0},
      {"-90", -90.0, -1.0, 0.0},
      {"-180", -180.0, 0.0, -1.0},
      {"-270", -270.0, 1.0, 0.0},
      {"-0", -0.0, 0.0, 1.0},
      {"450", 450.0, 1.0, 0.0},
      {"-1080", -1080.0, 0.0, 1.0},
      {"9e6 (a whole number of turns)", 9e6, 0.0, 1.0},
      {"2^40 * 360 + 90", std::ldexp(360.0, 40) + 90.0, 1.0, 0.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(cu::sind(c.degrees), c.sin);
    EXPECT_EQ(cu::cosd(c.degrees), c.cos);
    EXPECT_EQ(cu::sind45(c.degrees), c.sin);
    EXPECT_EQ(cu::cosd45(c.degrees), c.cos);
    // A zero result is +0, never -0.
    if (c.sin == 0.0) {
      EXPECT_FALSE(std::signbit(cu::sind(c.degrees)));
    }
    if (c.cos == 0.0) {
      EXPECT_FALSE(std::signbit(cu::cosd(c.degrees)));
    }
  }
}

TEST(DegreeTrig, OddEighthsAreExactOnlyInThe45Variant) {
  struct Case {
    const char* label;
    double degrees;
    double sin;
    double cos;
  };
  const Case cases[] = {
      {"45", 45.0, kSqrtHalf, kSqrtHalf},     {"135", 135.0, kSqrtHalf, -kSqrtHalf},
      {"225", 225.0, -kSqrtHalf, -kSqrtHalf}, {"315", 315.0, -kSqrtHalf, kSqrtHalf},
      {"-45", -45.0, -kSqrtHalf, kSqrtHalf},  {"-135", -135.0, -kSqrtHalf, -kSqrtHalf},
      {"765", 765.0, kSqrtHalf, kSqrtHalf},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(cu::sind45(c.degrees), c.sin);
    EXPECT_EQ(cu::cosd45(c.degrees), c.cos);
    // The plain variants go through the radian functions but stay within an ulp.
    EXPECT_NEAR(cu::sind(c.degrees), c.sin, 2e-16);
    EXPECT_NEAR(cu::cosd(c.degrees), c.cos, 2e-16);
  }
  // The radian sine of pi/4 is one unit short, so the plain sine cannot be exact here.
  EXPECT_NE(cu::sind(45.0), kSqrtHalf);
}

TEST(DegreeTrig, MatchesExtendedPrecisionReference) {
  std::mt19937_64 rng(20261121);
  std::uniform_real_distribution<double> wide(-1e5, 1e5);
  std::uniform_real_distribution<double> near(-1.0, 1.0);
  for (int i = 0; i < 20000; ++i) {
    // Half the samples sit just beside a multiple of 45, where reduction slips show.
    const double deg = (i % 2 == 0) ? wide(rng) : 45.0 * std::round(wide(rng) / 45.0) + near(rng) * 1e-6;
    SCOPED_TRACE(deg);
    ASSERT_NEAR(cu::sind(deg), static_cast<double>(referenceSin(deg)), 1e-15);
    ASSERT_NEAR(cu::cosd(deg), static_cast<double>(referenceCos(deg)), 1e-15);
    ASSERT_NEAR(cu::sind45(deg), static_cast<double>(referenceSin(deg)), 1e-15);
    ASSERT_NEAR(cu::cosd45(deg), static_cast<double>(referenceCos(deg)), 1e-15);
  }
}

TEST(DegreeTrig, NonFiniteAnglesGiveNaN) {
  for (double deg : {kNaN, kInf, -kInf}) {
    SCOPED_TRACE(deg);
    EXPECT_TRUE(std::isnan(cu::sind(deg)));
    EXPECT_TRUE(std::isnan(cu::cosd(deg)));
    EXPECT_TRUE(std::isnan(cu::sind45(deg)));
    EXPECT_TRUE(std::isnan(cu::cosd45(deg)));
  }
}

TEST(Is2D, TruncationDecides) {
  struct Case {
    const char* label;
    double az;
    double el;
    bool expected;
  };
  const Case cases[] = {
      {"top view", 0.0, 90.0, true},
      {"default 3-D view", -37.5, 30.0, false},
      {"89.9 truncates to 89", 89.9, 0.0, false},
      {"90.9 truncates to 90", 90.9, 0.0, true},
      {"-90.5 truncates to -90", -90.5, -180.7, true},
      {"-0.5 truncates to 0", -0.5, 0.0, true},
      {"45 is no multiple of 90", 45.0, 0.0, false},
      {"elevation alone off", 0.0, 30.0, false},
      {"large multiple", 90.0 * 1e7, 0.0, true},
      {"NaN azimuth", kNaN, 0.0, false},
      {"infinite elevation", 0.0, kInf, false},
      {"beyond int range", 1e20, 0.0, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(cu::is2D(c.az, c.el), c.expected);
  }
}

TEST(ChooseUpVector2D, EveryRowOfTheRule) {
  struct Case {
    const char* label;
    double az;
    double el;
    Vector3d expected;
  };
  const Case cases[] = {
      {"side view", 30.0, 0.0, Vector3d(0, 0, 1)},
      {"side view, el 360", 0.0, 360.0, Vector3d(0, 0, 1)},
      {"upside down", 0.0, 180.0, Vector3d(0, 0, -1)},
      {"upside down, el -180", 90.0, -180.0, Vector3d(0, 0, -1)},
      {"top, az 0", 0.0, 90.0, Vector3d(0, 1, 0)},
      {"top, az 90", 90.0, 90.0, Vector3d(-1, 0, 0)},
      {"top, az 180", 180.0, 90.0, Vector3d(0, -1, 0)},
      {"top, az 270", 270.0, 90.0, Vector3d(1, 0, 0)},
      {"top, az -90 is 270", -90.0, 90.0, Vector3d(1, 0, 0)},
      {"top, az 450 is 90", 450.0, 90.0, Vector3d(-1, 0, 0)},
      {"top, el -270 is 90", 0.0, -270.0, Vector3d(0, 1, 0)},
      {"bottom, az 0", 0.0, 270.0, Vector3d(0, -1, 0)},
      {"bottom, az 90", 90.0, 270.0, Vector3d(1, 0, 0)},
      {"bottom, az 180", 180.0, 270.0, Vector3d(0, 1, 0)},
      {"bottom, az 270", 270.0, 270.0, Vector3d(-1, 0, 0)},
      {"bottom, el -90", -180.0, -90.0, Vector3d(0, 1, 0)},
      {"top, truncated az 90.8", 90.8, 90.3, Vector3d(-1, 0, 0)},
      {"top, az 45: zero vector", 45.0, 90.0, Vector3d(0, 0, 0)},
      {"el 30: zero vector", 0.0, 30.0, Vector3d(0, 0, 0)},
      {"el 89.9 truncates to 89: zero vector", 0.0, 89.9, Vector3d(0, 0, 0)},
      {"NaN: zero vector", kNaN, 90.0, Vector3d(0, 0, 0)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(cu::chooseUpVector2D(c.az, c.el), c.expected);
  }
}

TEST(ChooseUpVector3D, OnlyAnExactlyVerticalDirectionTurnsTheUpVector) {
  struct Case {
    const char* label;
    Vector3d direction;
    double az;
    Vector3d expected;
  };
  const Case cases[] = {
      {"looking down, az 0", Vector3d(0, 0, -1), 0.0, Vector3d(0, 1, 0)},
      {"looking up, az 0", Vector3d(0, 0, 2), 0.0, Vector3d(0, 1, 0)},
      {"looking down, az 90", Vector3d(0, 0, -1), 90.0, Vector3d(-1, 0, 0)},
      {"looking down, az -90", Vector3d(0, 0, -1), -90.0, Vector3d(1, 0, 0)},
      {"looking down, az 180", Vector3d(0, 0, -1), 180.0, Vector3d(0, -1, 0)},
      {"looking down, az 45", Vector3d(0, 0, -1), 45.0, Vector3d(-kSqrtHalf, kSqrtHalf, 0)},
      {"looking down, az -135", Vector3d(0, 0, -1), -135.0, Vector3d(kSqrtHalf, -kSqrtHalf, 0)},
      {"horizontal", Vector3d(1, 0, 0), 0.0, Vector3d(0, 0, 1)},
      {"almost vertical", Vector3d(1e-300, 0, -1), 90.0, Vector3d(0, 0, 1)},
      {"zero direction", Vector3d(0, 0, 0), 90.0, Vector3d(0, 0, 1)},
      {"NaN x counts as nonzero", Vector3d(kNaN, 0, -1), 90.0, Vector3d(0, 0, 1)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(cu::chooseUpVector3D(c.direction, c.az), c.expected);
  }
}

TEST(ConvertAnglesToDirection, PointsFromTargetToViewer) {
  EXPECT_TRUE(gui_objects::nearlyEqual(cu::convertAnglesToDirection(0, 90), Vector3d(0, 0, 1)));
  EXPECT_TRUE(gui_objects::nearlyEqual(cu::convertAnglesToDirection(0, 0), Vector3d(0, -1, 0)));
  EXPECT_TRUE(gui_objects::nearlyEqual(cu::convertAnglesToDirection(90, 0), Vector3d(1, 0, 0)));
  EXPECT_TRUE(gui_objects::nearlyEqual(cu::convertAnglesToDirection(0, -90), Vector3d(0, 0, -1)));

  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> az(-720.0, 720.0);
  std::uniform_real_distribution<double> el(-180.0, 180.0);
  for (int i = 0; i < 2000; ++i) {
    const double a = az(rng);
    const double e = el(rng);
    SCOPED_TRACE(testing::Message() << "az " << a << " el " << e);
    const double ar = a * M_PI / 180.0;
    const double er = e * M_PI / 180.0;
    const Vector3d d = cu::convertAnglesToDirection(a, e);
    ASSERT_NEAR(d.getX(), std::sin(ar) * std::cos(er), 1e-12);
    ASSERT_NEAR(d.getY(), -std::cos(ar) * std::cos(er), 1e-12);
    ASSERT_NEAR(d.getZ(), std::sin(er), 1e-12);
  }
}

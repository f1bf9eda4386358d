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
constexpr double kH = 0.70710678118654752440;  // 1/sqrt(2), correctly rounded
}  // namespace

TEST(DegreeTrig, ExactAtQuarterAndEighthTurns) {
  // clang-format off
  struct Case { double deg, sin, cos; bool eighth; };  // eighth: exact only in the 45-degree variants
  const Case cases[] = {
      {0, 0, 1, false}, {90, 1, 0, false}, {180, 0, -1, false}, {270, -1, 0, false}, {-0.0, 0, 1, false},
      {-90, -1, 0, false}, {-270, 1, 0, false}, {450, 1, 0, false}, {-1080, 0, 1, false}, {9e6, 0, 1, false},
      {std::ldexp(360.0, 40) + 90, 1, 0, false},
      {45, kH, kH, true}, {135, kH, -kH, true}, {225, -kH, -kH, true}, {-45, -kH, kH, true}, {765, kH, kH, true},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.deg);
    EXPECT_EQ(cu::sind45(c.deg), c.sin);
    EXPECT_EQ(cu::cosd45(c.deg), c.cos);
    if (c.eighth) {
      EXPECT_NEAR(cu::sind(c.deg), c.sin, 2e-16);
      continue;
    }
    EXPECT_EQ(cu::sind(c.deg), c.sin);
    EXPECT_EQ(cu::cosd(c.deg), c.cos);
    // Zeros come out as +0.
    EXPECT_FALSE(std::signbit(cu::sind(c.deg)) && c.sin == 0);
    EXPECT_FALSE(std::signbit(cu::cosd(c.deg)) && c.cos == 0);
  }
  EXPECT_NE(cu::sind(45.0), kH);  // the radian sine of pi/4 is an ulp short
  for (double deg : {kNaN, kInf, -kInf}) {
    EXPECT_TRUE(std::isnan(cu::sind(deg)) && std::isnan(cu::cosd(deg)) && std::isnan(cu::sind45(deg)));
  }
}

TEST(DegreeTrig, MatchesExtendedPrecisionReference) {
  const long double pi = 3.141592653589793238462643383279502884L;
  std::mt19937_64 rng(20261121);
  std::uniform_real_distribution<double> wide(-1e5, 1e5), tiny(-1e-6, 1e-6);
  for (int i = 0; i < 20000; ++i) {
    // Every other sample sits just beside a multiple of 45, where reduction slips show.
    const double deg = (i % 2 == 0) ? wide(rng) : 45.0 * std::round(wide(rng) / 45.0) + tiny(rng);
    const long double rad = std::fmod(static_cast<long double>(deg), 360.0L) * pi / 180.0L;
    SCOPED_TRACE(deg);
    ASSERT_NEAR(cu::sind(deg), static_cast<double>(std::sin(rad)), 1e-15);
    ASSERT_NEAR(cu::cosd(deg), static_cast<double>(std::cos(rad)), 1e-15);
    ASSERT_NEAR(cu::sind45(deg), static_cast<double>(std::sin(rad)), 1e-15);
    ASSERT_NEAR(cu::cosd45(deg), static_cast<double>(std::cos(rad)), 1e-15);
  }
}

TEST(Is2D, TruncationDecides) {
  // clang-format off
  struct Case { const char* label; double az, el; bool expected; };
  const Case cases[] = {
      {"top view", 0, 90, true},           {"default 3-D view", -37.5, 30, false},
      {"89.9 truncates to 89", 89.9, 0, false}, {"90.9 truncates to 90", 90.9, 0, true},
      {"negatives truncate up", -90.5, -180.7, true}, {"45", 45, 0, false},
      {"large multiple", 9e8, 0, true},    {"NaN", kNaN, 0, false},
      {"infinite", 0, kInf, false},        {"beyond int", 1e20, 0, false},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(cu::is2D(c.az, c.el), c.expected);
  }
}

TEST(ChooseUpVector2D, EveryRowOfTheRule) {
  // clang-format off
  struct Case { double az, el; Vector3d up; };
  const Case cases[] = {
      {30, 0, {0, 0, 1}},    {0, 360, {0, 0, 1}},    {0, 180, {0, 0, -1}},   {90, -180, {0, 0, -1}},
      {0, 90, {0, 1, 0}},    {90, 90, {-1, 0, 0}},   {180, 90, {0, -1, 0}},  {270, 90, {1, 0, 0}},
      {-90, 90, {1, 0, 0}},  {450, 90, {-1, 0, 0}},  {0, -270, {0, 1, 0}},   {90.8, 90.3, {-1, 0, 0}},
      {0, 270, {0, -1, 0}},  {90, 270, {1, 0, 0}},   {180, 270, {0, 1, 0}},  {270, 270, {-1, 0, 0}},
      {-180, -90, {0, 1, 0}},
      // Not two-dimensional: deliberately the zero vector.
      {45, 90, {0, 0, 0}},   {0, 30, {0, 0, 0}},     {0, 89.9, {0, 0, 0}},   {kNaN, 90, {0, 0, 0}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "az " << c.az << " el " << c.el);
    EXPECT_EQ(cu::chooseUpVector2D(c.az, c.el), c.up);
  }
}

TEST(ChooseUpVector3D, OnlyAnExactlyVerticalDirectionTurnsTheUpVector) {
  // clang-format off
  struct Case { Vector3d direction; double az; Vector3d up; };
  const Case cases[] = {
      {{0, 0, -1}, 0, {0, 1, 0}},    {{0, 0, 2}, 0, {0, 1, 0}},      {{0, 0, -1}, 90, {-1, 0, 0}},
      {{0, 0, -1}, -90, {1, 0, 0}},  {{0, 0, -1}, 180, {0, -1, 0}},  {{0, 0, -1}, 45, {-kH, kH, 0}},
      {{0, 0, -1}, -135, {kH, -kH, 0}},
      {{1, 0, 0}, 0, {0, 0, 1}},     {{1e-300, 0, -1}, 90, {0, 0, 1}}, {{0, 0, 0}, 90, {0, 0, 1}},
      {{kNaN, 0, -1}, 90, {0, 0, 1}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.direction << " az " << c.az);
    EXPECT_EQ(cu::chooseUpVector3D(c.direction, c.az), c.up);
  }
}

TEST(ConvertAnglesToDirection, PointsFromTargetToViewer) {
  EXPECT_TRUE(gui_objects::nearlyEqual(cu::convertAnglesToDirection(0, 0), Vector3d(0, -1, 0)));
  EXPECT_TRUE(gui_objects::nearlyEqual(cu::convertAnglesToDirection(90, 0), Vector3d(1, 0, 0)));
  EXPECT_TRUE(gui_objects::nearlyEqual(cu::convertAnglesToDirection(0, 90), Vector3d(0, 0, 1)));
}

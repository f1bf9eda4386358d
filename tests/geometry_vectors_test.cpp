// Vectors: integer wrap-around, products, the four normalisations, reflection.
#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <random>

#include "geometry_test_support.h"

namespace {

using namespace gui_objects;

TEST(Vectors, FourNormalisationsDifferOnPurpose) {
  const double h = std::sqrt(0.5);
  struct Case {
    const char* label;
    Vector3d input;
    std::optional<Vector3d> plain;    // normalize(); nullopt: throws
    std::optional<Vector3d> careful;  // normalize_carefully(); nullopt: throws
    Vector3d noException;             // normalize_noexception()
  };
  const Case cases[] = {
      {"ordinary", {3, 4, 0}, Vector3d(0.6, 0.8, 0), Vector3d(0.6, 0.8, 0), {0.6, 0.8, 0}},
      {"zero", {0, 0, 0}, std::nullopt, std::nullopt, {0, 0, 0}},
      // The squares overflow: the plain form multiplies by 1/inf.
      {"huge", {1e200, 1e200, 0}, Vector3d(0, 0, 0), Vector3d(h, h, 0), {0, 0, 0}},
      // The squares underflow: only the careful form sees a length.
      {"tiny", {1e-200, 0, 0}, std::nullopt, Vector3d(1, 0, 0), {1e-200, 0, 0}},
      // A squared length nearlyEqual to 1 is left alone by the lenient form.
      {"almost unit", {1 + 1e-8, 0, 0}, Vector3d(1, 0, 0), Vector3d(1, 0, 0), {1 + 1e-8, 0, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Vector3d v = c.input;
    if (c.plain) {
      v.normalize();
      EXPECT_TRUE(nearlyEqual(v, *c.plain)) << v;
    } else {
      EXPECT_THROW(v.normalize(), ZeroLengthException);
      EXPECT_EQ(v, c.input) << "a failed normalisation leaves the vector alone";
    }
    v = c.input;
    if (c.careful) {
      v.normalize_carefully();
      EXPECT_TRUE(nearlyEqual(v, *c.careful)) << v;
    } else {
      EXPECT_THROW(v.normalize_carefully(), ZeroLengthException);
    }
    v = c.input;
    v.normalize_noexception();
    if (c.noException == c.input)
      EXPECT_EQ(v, c.input) << "left alone";
    else
      EXPECT_TRUE(nearlyEqual(v, c.noException)) << v;
  }
}

TEST(Vectors, CarefulNormalisationDividesWhilePlainMultiplies) {
  Vector3d plain(9, 10, 11), careful(9, 10, 11);
  plain.normalize();
  careful.normalize_carefully();
  EXPECT_EQ(careful.getX(), 0.51789180388359246);
  EXPECT_EQ(plain.getX(), 0.51789180388359235);
}

TEST(Vectors, NormalizeEdges) {
  Vector3d v(kNaN, 1, 1);
  EXPECT_NO_THROW(v.normalize());
  EXPECT_TRUE(std::isnan(v.getY()));
  // The 2-D length uses hypot, so huge vectors still normalise.
  Vector2d w(1e200, 1e200);
  w.normalize();
  EXPECT_TRUE(nearlyEqual(w, Vector2d(std::sqrt(0.5), std::sqrt(0.5)))) << w;
  Vector2d zero;
  EXPECT_THROW(zero.normalize(), ZeroLengthException);
}

TEST(Vectors, ReflectionAboutAxis) {
  EXPECT_TRUE(nearlyEqual(Vector3d(0, 5, 0).reflect(Vector3d(1, 1, 0)), Vector3d(-1, 1, 0)));
  EXPECT_TRUE(nearlyEqual(Vector2d(2, 0).reflect(Vector2d(1, 1)), Vector2d(1, -1)));
  EXPECT_THROW(static_cast<void>(Vector3d().reflect(Vector3d(1, 0, 0))), ZeroLengthException);
  EXPECT_THROW(static_cast<void>(Vector2d().reflect(Vector2d(1, 0))), ZeroLengthException);

  std::mt19937_64 rng(5);
  std::uniform_real_distribution<double> u(-3, 3);
  for (int i = 0; i < 1000; ++i) {
    const Vector3d axis(u(rng), u(rng), u(rng)), v(u(rng), u(rng), u(rng));
    if (axis.lengthSquared() < 1e-3) continue;
    const Vector3d r = axis.reflect(v);
    // A mirror keeps length, keeps the component along the axis, and is its own inverse.
    ASSERT_NEAR(r.length(), v.length(), 1e-12);
    ASSERT_NEAR(r.dot(axis), v.dot(axis), 1e-11);
    ASSERT_TRUE(nearlyEqual(axis.reflect(r), v));
  }
}

TEST(Vectors, IntegerArithmeticWrapsAround) {
  // 46341^2 exceeds 2^31 - 1: the 32-bit square wraps negative and the length is NaN.
  EXPECT_EQ(Vector2i(46341, 0).lengthSquared(), -2147479015);
  EXPECT_TRUE(std::isnan(Vector2i(46341, 0).length()));
  EXPECT_EQ(Vector2i(46340, 0).lengthSquared(), 2147395600);
  EXPECT_EQ(-Vector2i(-2147483647 - 1, 1), Vector2i(-2147483647 - 1, -1));
  EXPECT_EQ(Vector2i(2, 3).perpDot(), Vector2i(-3, 2));
  Vector2i v(65536, 1);
  v *= 65536;
  EXPECT_EQ(v, Vector2i(0, 65536));
}

TEST(Vectors, ProductsAndScalars) {
  EXPECT_EQ(Vector3d(0, 1, 0).cross(Vector3d(0, 0, 1)), Vector3d(1, 0, 0));
  // Summed left to right from zero: 1e16 absorbs the 1 before -1e16 cancels it.
  EXPECT_EQ(Vector3d(1e16, 1, -1e16).dot(Vector3d(1, 1, 1)), 0.0);
  EXPECT_EQ(Vector2d(1, 2).cross(Vector2d(3, 4)), -2.0);
  EXPECT_EQ(Vector2d(1, 2).perpDot(), Vector2d(-2, 1));
  // Division multiplies by the reciprocal and does not check for zero.
  EXPECT_EQ((Vector3d(5, 7, 10) / 3.0).getX(), 1.6666666666666665);
  EXPECT_EQ((Vector2d(5, 7) / 3.0).getX(), 1.6666666666666665);
  EXPECT_TRUE(std::isinf((Vector3d(1, 2, 3) / 0.0).getX()));
}

}  // namespace

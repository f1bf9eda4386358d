// Transformer: classification, and every mode against full matrix arithmetic.
#include <gtest/gtest.h>

#include <random>

#include "geometry_test_support.h"

namespace {

using namespace gui_objects;

Matrix4x4d withElement(Matrix4x4d m, int element, double value) {
  double e[16];
  for (int k = 0; k < 16; ++k) e[k] = m.getPointer()[k];
  e[element] = value;
  return Matrix4x4d(e);
}

TEST(Transformer, Classification) {
  struct Case {
    const char* label;
    Matrix4x4d m;
    Transformer::TransformMode mode;
  };
  // The host tolerance is a few units in the last place: far tighter than nearlyEqual.
  const Case cases[] = {
      {"identity", Matrix4x4d(), Transformer::Identity},
      {"identity within an ulp", withElement(Matrix4x4d(), 5, 1 + 2.3e-16), Transformer::Identity},
      {"scale", Matrix4x4d::createScale(Vector3d(2, 3, 4)), Transformer::ScaleOffset},
      {"translation", Matrix4x4d::createTranslation(Vector3d(0, 0, 1)), Transformer::ScaleOffset},
      {"diagonal 1e-12 off one", withElement(Matrix4x4d(), 10, 1 + 1e-12), Transformer::ScaleOffset},
      {"zero and negative scale", Matrix4x4d::createScale(Vector3d(0, -1, 1)), Transformer::ScaleOffset},
      {"tiny off-diagonal", withElement(Matrix4x4d(), 9, 1e-20), Transformer::Identity},
      {"small off-diagonal", withElement(Matrix4x4d(), 9, 1e-12), Transformer::Affine},
      {"rotation", Matrix4x4d::createZRotation(0.1), Transformer::Affine},
      {"frustum", Matrix4x4d::createFrustum(-1, 1, -1, 1, 1, 10), Transformer::General},
      {"bottom row 1e-12", withElement(Matrix4x4d(), 7, 1e-12), Transformer::General},
      {"bottom row NaN", withElement(Matrix4x4d(), 11, kNaN), Transformer::General},
      {"w within an ulp of one", withElement(Matrix4x4d(), 15, 1 + 2.3e-16), Transformer::Identity},
      {"w 1e-12 off one", withElement(Matrix4x4d(), 15, 1 + 1e-12), Transformer::General},
      {"bottom row tiny", withElement(Matrix4x4d(), 3, 1e-20), Transformer::Identity},
      {"w two", withElement(Matrix4x4d::createZRotation(0.1), 15, 2), Transformer::General},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const Transformer t(c.m);
    EXPECT_EQ(t.getMode(), c.mode);
    EXPECT_EQ(c.m.isAffine(), c.mode != Transformer::General);
  }
}

// Every mode agrees with the full homogeneous product, points behind the eye
// included (they come out as the origin).
TEST(Transformer, EveryModeMatchesFullMatrixArithmetic) {
  std::mt19937_64 rng(31);
  std::uniform_real_distribution<double> u(-5, 5);
  auto randomPoint = [&] { return Point3d(u(rng), u(rng), u(rng)); };
  const Matrix4x4d matrices[] = {
      Matrix4x4d(),
      Matrix4x4d::createTranslation(Vector3d(1, -2, 3)) * Matrix4x4d::createScale(Vector3d(2, -0.5, 0)),
      Matrix4x4d::createTranslation(Vector3d(1, -2, 3)) * Matrix4x4d::createRotation(Vector3d(1, 2, 3), 0.8),
      Matrix4x4d::createFrustum(-1, 2, -1, 1, 0.5, 20) * Matrix4x4d::createTranslation(Vector3d(0, 0, -1)),
  };
  int behindEye = 0;
  for (const Matrix4x4d& m : matrices) {
    const Transformer t(m);
    SCOPED_TRACE(::testing::PrintToString(t.getMode()));
    for (int i = 0; i < 2000; ++i) {
      const Point3d p = randomPoint();
      const Point4d h = transform(m, p);
      Point3d expected;
      if (h.getW() > 0)
        expected = Point3d(h.getX() / h.getW(), h.getY() / h.getW(), h.getZ() / h.getW());
      else
        ++behindEye;
      ASSERT_TRUE(nearlyEqual(t.transform(p), expected))
          << p << " -> " << t.transform(p) << " vs " << expected;

      const Vector3d d(u(rng), u(rng), u(rng));
      const Point4d hd = transform(m, Point4d(d));
      ASSERT_TRUE(nearlyEqual(t.transformVector(d), Vector3d(hd.getX(), hd.getY(), hd.getZ())));
    }
  }
  EXPECT_GT(behindEye, 100);  // the property did meet points with w <= 0
}

TEST(Transformer, PointOnEyePlaneBecomesOrigin) {
  const Transformer t(Matrix4x4d::createFrustum(-1, 1, -1, 1, 1, 10));
  EXPECT_EQ(t.transform(Point3d(3, 4, 0)), Point3d(0, 0, 0));  // w == 0 exactly
}

}  // namespace

// Matrix4x4d: storage, the standard transforms against hand-built matrices,
// and inverse, normal transform and rotation against slow references.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <type_traits>

#include "geometry_test_support.h"

namespace {

using namespace gui_objects;
using Rows = std::array<std::array<double, 4>, 4>;

// Builds a matrix from rows as written on paper.
Matrix4x4d fromRows(const Rows& rows) {
  double e[16];
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) e[r + 4 * c] = rows[r][c];
  return Matrix4x4d(e);
}

Matrix4x4d randomMatrix(std::mt19937_64& rng, double lo = -2, double hi = 2) {
  std::uniform_real_distribution<double> u(lo, hi);
  double e[16];
  for (double& v : e) v = u(rng);
  return Matrix4x4d(e);
}

// Gauss-Jordan elimination with partial pivoting: slow and obviously correct.
Matrix4x4d referenceInverse(const Matrix4x4d& m) {
  double a[4][8];
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 8; ++c) a[r][c] = c < 4 ? m.get(r + 1, c + 1) : (c - 4 == r ? 1.0 : 0.0);
  for (int col = 0; col < 4; ++col) {
    int pivot = col;
    for (int r = col + 1; r < 4; ++r)
      if (std::fabs(a[r][col]) > std::fabs(a[pivot][col])) pivot = r;
    std::swap(a[col], a[pivot]);
    const double p = a[col][col];
    for (double& v : a[col]) v /= p;
    for (int r = 0; r < 4; ++r) {
      if (r == col) continue;
      const double f = a[r][col];
      for (int c = 0; c < 8; ++c) a[r][c] -= f * a[col][c];
    }
  }
  Rows rows{};
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) rows[r][c] = a[r][c + 4];
  return fromRows(rows);
}

Matrix4x4d transposed(Matrix4x4d m) {
  m.transpose();
  return m;
}

double det3(const Matrix4x4d& m) {
  auto g = [&](int r, int c) { return m.get(r, c); };
  return g(1, 1) * (g(2, 2) * g(3, 3) - g(2, 3) * g(3, 2)) -
         g(1, 2) * (g(2, 1) * g(3, 3) - g(2, 3) * g(3, 1)) +
         g(1, 3) * (g(2, 1) * g(3, 2) - g(2, 2) * g(3, 1));
}

// Elements agree within an absolute tolerance scaled by the largest element.
::testing::AssertionResult closeTo(const Matrix4x4d& a, const Matrix4x4d& b, double tolerance) {
  for (int k = 0; k < 16; ++k)
    if (!(std::fabs(a.getPointer()[k] - b.getPointer()[k]) <= tolerance))
      return ::testing::AssertionFailure() << "element " << k << ": " << a << " vs " << b;
  return ::testing::AssertionSuccess();
}

TEST(Matrix, StorageIsColumnMajorAndOneBased) {
  double e[16];
  for (int k = 0; k < 16; ++k) e[k] = k;
  const Matrix4x4d m(e);
  EXPECT_EQ(m.get(1, 1), 0.0);
  EXPECT_EQ(m.get(2, 1), 1.0);
  EXPECT_EQ(m.get(1, 2), 4.0);
  EXPECT_EQ(Matrix4x4d::createTranslation(Vector3d(7, 8, 9)).get(1, 4), 7.0);
  Matrix4x4d copy;
  static_assert(std::is_same_v<decltype(copy = m), const Matrix4x4d>);
  EXPECT_EQ(copy = m, m);
  copy.setIdentity();
  EXPECT_TRUE(copy.isIdentity());
}

TEST(Matrix, CompositionOrder) {
  const Vector3d t(1, 2, 3);
  const Point3d p(4, 5, 6);
  const Point3d translatedAfterScaling =
      (Matrix4x4d::createTranslation(t) * Matrix4x4d::createScale(2)).transform(Point4d(p)).project();
  EXPECT_EQ(translatedAfterScaling, Point3d(9, 12, 15));
  const Point3d scaledAfterTranslating =
      transform(Matrix4x4d::createScale(2) * Matrix4x4d::createTranslation(t), p).project();
  EXPECT_EQ(scaledAfterTranslating, Point3d(10, 14, 18));
  Matrix4x4d m = Matrix4x4d::createTranslation(t);
  m *= Matrix4x4d::createScale(Vector3d(2, 3, 4));
  EXPECT_EQ(transform(m, Point4d(1, 1, 1, 1)), Point4d(3, 5, 7, 1));
}

TEST(Matrix, RotationsTurnCounterClockwise) {
  const double a = kPi / 2;
  struct Case {
    const char* label;
    Matrix4x4d m;
    Point3d from, to;
  };
  const Case cases[] = {
      {"x axis", Matrix4x4d::createXRotation(a), {0, 1, 0}, {0, 0, 1}},
      {"y axis", Matrix4x4d::createYRotation(a), {0, 0, 1}, {1, 0, 0}},
      {"z axis", Matrix4x4d::createZRotation(a), {1, 0, 0}, {0, 1, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const Point3d moved = transform(c.m, c.from).project();
    EXPECT_TRUE(nearlyEqual(moved, c.to)) << moved;
    EXPECT_TRUE(c.m.isRightHanded());
  }
}

TEST(Matrix, RodriguesMatchesConjugatedAxisRotation) {
  std::mt19937_64 rng(17);
  std::uniform_real_distribution<double> u(-1, 1);
  for (int i = 0; i < 500; ++i) {
    Vector3d n(u(rng), u(rng), u(rng));
    if (n.lengthSquared() < 1e-2) continue;
    const double angle = 4 * u(rng);
    n.normalize();
    // An orthonormal frame (e1, e2, n); F maps frame coordinates to world.
    const Vector3d notParallel = std::fabs(n.getX()) < 0.9 ? Vector3d(1, 0, 0) : Vector3d(0, 1, 0);
    Vector3d e1 = notParallel.cross(n);
    e1.normalize();
    const Vector3d e2 = n.cross(e1);
    const Matrix4x4d frame = fromRows({{{e1.getX(), e2.getX(), n.getX(), 0},
                                        {e1.getY(), e2.getY(), n.getY(), 0},
                                        {e1.getZ(), e2.getZ(), n.getZ(), 0},
                                        {0, 0, 0, 1}}});
    const Matrix4x4d reference = frame * Matrix4x4d::createZRotation(angle) * transposed(frame);
    ASSERT_TRUE(
        closeTo(Matrix4x4d::createRotation(n * (1 + 3 * std::fabs(u(rng))), angle), reference, 1e-12));
  }
}

TEST(Matrix, RotationAxisThreshold) {
  EXPECT_THROW(static_cast<void>(Matrix4x4d::createRotation(Vector3d(0, 0, 1e-6), 1)), InvalidAxisException);
  EXPECT_THROW(static_cast<void>(Matrix4x4d::createRotation(Vector3d(), 1)), InvalidAxisException);
  // (1e-5)^2 rounds to just above 1e-10, so it is long enough.
  EXPECT_NO_THROW(static_cast<void>(Matrix4x4d::createRotation(Vector3d(0, 0, 1e-5), 1)));
}

// Opposite corners of the view volume land on the clip-space corners, and the
// frustum's w is the distance in front of the eye.
TEST(Matrix, ProjectionsMapTheViewVolumeCorners) {
  const double l = -1, r = 3, b = -2, t = 2, n = 1, f = 11;
  const Matrix4x4d frustum = Matrix4x4d::createFrustum(l, r, b, t, n, f);
  const Matrix4x4d ortho = Matrix4x4d::createOrtho(l, r, b, t, n, f);
  EXPECT_TRUE(nearlyEqual(transform(frustum, Point3d(l, b, -n)), Point4d(-n, -n, -n, n)));
  EXPECT_TRUE(nearlyEqual(transform(frustum, Point3d(r * f / n, t * f / n, -f)), Point4d(f, f, f, f)));
  EXPECT_TRUE(nearlyEqual(transform(ortho, Point3d(l, b, -n)), Point4d(-1, -1, -1, 1)));
  EXPECT_TRUE(nearlyEqual(transform(ortho, Point3d(r, t, -f)), Point4d(1, 1, 1, 1)));
}

TEST(Matrix, ProjectionBoundsChecks) {
  struct Case {
    const char* label;
    double l, r, b, t, n, f;
    bool frustumThrows, orthoThrows;
  };
  const Case cases[] = {
      {"valid", 0, 1, 0, 1, 1, 2, false, false},
      {"empty x", 1, 1, 0, 1, 1, 2, true, true},
      {"reversed y", 0, 1, 1, 0, 1, 2, true, true},
      {"empty depth", 0, 1, 0, 1, 5, 5, true, false},
      {"reversed depth", 0, 1, 0, 1, 6, 5, true, false},
      {"NaN passes", kNaN, 1, 0, 1, 1, 2, false, false},
      {"negative near is not checked", 0, 1, 0, 1, -1, 2, false, false},
  };
  auto throwsBounds = [](auto create) {
    try {
      static_cast<void>(create());
    } catch (const InvalidBoundsException&) {
      return true;
    }
    return false;
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(throwsBounds([&] { return Matrix4x4d::createFrustum(c.l, c.r, c.b, c.t, c.n, c.f); }),
              c.frustumThrows);
    EXPECT_EQ(throwsBounds([&] { return Matrix4x4d::createOrtho(c.l, c.r, c.b, c.t, c.n, c.f); }),
              c.orthoThrows);
  }
  EXPECT_TRUE(std::isinf(Matrix4x4d::createOrtho(0, 1, 0, 1, 5, 5).get(3, 3)));
}

TEST(Matrix, CoordinateFrame) {
  const Vector3d x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
  EXPECT_TRUE(Matrix4x4d::createCoordinateFrame(x, y, z).isIdentity());
  EXPECT_THROW(static_cast<void>(Matrix4x4d::createCoordinateFrame(x, y, -z)),
               InvalidCoordinateFrameException);
  EXPECT_THROW(static_cast<void>(Matrix4x4d::createCoordinateFrame(x, Vector3d(0.1, 1, 0), z)),
               InvalidCoordinateFrameException);
  // Orthogonality is judged with nearlyEqual: tiny dot products pass.
  EXPECT_NO_THROW(static_cast<void>(Matrix4x4d::createCoordinateFrame(x, Vector3d(5e-8, 1, 0), z)));
  // A zero triple product passes the handedness test.
  EXPECT_NO_THROW(static_cast<void>(Matrix4x4d::createCoordinateFrame(x, y, Vector3d())));
  // Maps a point to its coordinates along u, v, w (not normalised).
  const Matrix4x4d frame = Matrix4x4d::createCoordinateFrame(y, Vector3d(0, 0, 2), x);
  EXPECT_EQ(transform(frame, Point3d(3, 4, 5)), Point4d(4, 10, 3, 1));
}

TEST(Matrix, Jacobian) {
  const Matrix4x4d m = Matrix4x4d::createTranslation(Vector3d(1, 2, 3)) * Matrix4x4d::createXRotation(0.3);
  EXPECT_EQ(Matrix4x4d::createJacobian(m), Matrix4x4d::createXRotation(0.3));
  EXPECT_THROW(static_cast<void>(Matrix4x4d::createJacobian(Matrix4x4d::createFrustum(0, 1, 0, 1, 1, 2))),
               InvalidJacobianException);
}

TEST(Matrix, InverseAgainstEliminationOnRandomMatrices) {
  std::mt19937_64 rng(23);
  int checked = 0;
  for (int i = 0; i < 500; ++i) {
    const Matrix4x4d m = randomMatrix(rng);
    Matrix4x4d inverse = m;
    inverse.invert();
    const Matrix4x4d reference = referenceInverse(m);
    double largest = 0;
    for (int k = 0; k < 16; ++k) largest = std::max(largest, std::fabs(reference.getPointer()[k]));
    if (largest > 1e3) continue;  // ill-conditioned: the two methods may rightly differ
    ++checked;
    ASSERT_TRUE(closeTo(inverse, reference, 1e-9 * largest));
    ASSERT_TRUE(closeTo(m * inverse, Matrix4x4d(), 1e-9 * largest));
    ASSERT_TRUE(closeTo(m.createInverseTranspose(), transposed(reference), 1e-9 * largest));
  }
  EXPECT_GT(checked, 400);
}

TEST(Matrix, SingularInverseGivesNonFiniteWithoutThrowing) {
  Matrix4x4d m = Matrix4x4d::createScale(Vector3d(1, 0, 1));
  EXPECT_NO_THROW(m.invert());
  bool nonFinite = false;
  for (int k = 0; k < 16; ++k) nonFinite = nonFinite || !std::isfinite(m.getPointer()[k]);
  EXPECT_TRUE(nonFinite);
}

TEST(Matrix, NormalTransformIsDeterminantTimesInverseTranspose) {
  std::mt19937_64 rng(29);
  for (int i = 0; i < 300; ++i) {
    const Matrix4x4d m = randomMatrix(rng);
    const Matrix4x4d normal = m.createNormalTransform();
    // Reference from the upper-left block alone.
    Rows block{};
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c) block[r][c] = m.get(r + 1, c + 1);
    block[3][3] = 1;
    const Matrix4x4d a = fromRows(block);
    const double det = det3(a);
    if (std::fabs(det) < 1e-3) continue;
    const Matrix4x4d it = a.createInverseTranspose();
    for (int r = 1; r <= 3; ++r)
      for (int c = 1; c <= 3; ++c) ASSERT_NEAR(normal.get(r, c), det * it.get(r, c), 1e-9) << r << "," << c;
    for (int k : {3, 7, 11, 12, 13, 14}) ASSERT_EQ(normal.getPointer()[k], 0.0);
    ASSERT_EQ(normal.get(4, 4), 1.0);
  }
  // Works for a singular block and keeps the scale.
  const Matrix4x4d flat = Matrix4x4d::createScale(Vector3d(2, 0, 1)).createNormalTransform();
  EXPECT_EQ(flat, fromRows({{{0, 0, 0, 0}, {0, 2, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 1}}}));
}

TEST(Matrix, ExactQueries) {
  Matrix4x4d m;
  m.set(2, 3, -0.0);
  EXPECT_TRUE(m.isIdentity());  // -0 == 0
  m.set(2, 3, kNaN);
  EXPECT_FALSE(m.isIdentity());
  EXPECT_NE(m, m);  // NaN is never equal
  EXPECT_TRUE(nearlyEqual(Matrix4x4d::createScale(1 + 1e-9), Matrix4x4d()));
  EXPECT_NE(Matrix4x4d::createScale(1 + 1e-9), Matrix4x4d());
  EXPECT_FALSE(Matrix4x4d::createScale(-1).isRightHanded());
  EXPECT_FALSE(Matrix4x4d::createScale(Vector3d(1, 1, 0)).isRightHanded());
}

}  // namespace

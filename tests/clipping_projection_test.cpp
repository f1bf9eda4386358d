// Planar projection of vertex sets and the view frustum.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "geometry_test_support.h"

using namespace gui_objects;

// ---- Projector -----------------------------------------------------------------------

TEST(Projector, FramesOfAxisPlanes) {
  struct Case {
    const char* label;
    Plane3d plane;
    Vector3d u, v;
    Point3d origin;
  };
  const Case cases[] = {
      {"z = 2", Plane3d(Vector3d(0, 0, 1), 2), Vector3d(1, 0, 0), Vector3d(0, 1, 0), Point3d(0, 0, 2)},
      {"x = -3 takes the y reference", Plane3d(Vector3d(1, 0, 0), -3), Vector3d(0, 1, 0), Vector3d(0, 0, 1),
       Point3d(-3, 0, 0)},
      {"facing -z", Plane3d(Vector3d(0, 0, -1), 1), Vector3d(1, 0, 0), Vector3d(0, -1, 0), Point3d(0, 0, -1)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Projector p;
    p.setProjection(c.plane);
    EXPECT_TRUE(nearlyEqual(p.getUAxis(), c.u)) << p.getUAxis();
    EXPECT_TRUE(nearlyEqual(p.getVAxis(), c.v)) << p.getVAxis();
    EXPECT_TRUE(nearlyEqual(p.getOrigin(), c.origin)) << p.getOrigin();
  }
  // A plane with a NaN normal keeps the previous frame.
  Projector z;
  z.setProjection(Plane3d(Vector3d(0, 0, 1), 2));
  z.setProjection(Plane3d(Vector3d(kNaN, 0, 1), 0));
  EXPECT_TRUE(nearlyEqual(z.getOrigin(), Point3d(0, 0, 2)));
  EXPECT_EQ(z.getUAxis(), Vector3d(1, 0, 0));
}

TEST(Projector, RoundTripIsOrthogonalProjection) {
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  for (int i = 0; i < 300; ++i) {
    const Plane3d plane(Vector3d(u(rng), u(rng), u(rng) + (i % 3 == 0 ? 0.0 : 0.5)) + Vector3d(1e-3, 0, 0),
                        5 * u(rng));
    Projector p;
    p.setProjection(plane);
    const Vector3d a = p.getUAxis(), b = p.getVAxis(), n = plane.getNormal();
    SCOPED_TRACE(::testing::Message() << plane);
    ASSERT_NEAR(a.length(), 1.0, 1e-12);
    ASSERT_NEAR(b.length(), 1.0, 1e-12);
    ASSERT_NEAR(a.dot(b), 0.0, 1e-12);
    ASSERT_NEAR(a.cross(b).dot(n), 1.0, 1e-12);  // right-handed with the normal
    const Projector copy(p);
    for (int k = 0; k < 5; ++k) {
      const Point3d q(10 * u(rng), 10 * u(rng), 10 * u(rng));
      const Point3d back = copy.unproject(copy.project(q));
      EXPECT_NEAR(plane.distance(back), 0.0, 1e-9);
      EXPECT_NEAR((q - back).cross(n).length(), 0.0, 1e-9);
    }
  }
}

TEST(ProjectedVertexSet, ExactLookupFirstIndexWins) {
  const PointList points({{1, 2, 0}, {5, 5, 1}, {1, 2, 9}, {1, 2.0000000001, 0}});
  Projector p;
  p.setProjection(Plane3d(Vector3d(0, 0, 1), 0));
  ProjectedVertexSet set(points, p);
  EXPECT_EQ(set.addVertex(0), Point2d(1, 2));
  EXPECT_EQ(set.addVertex(2), Point2d(1, 2));  // same 2-D position
  EXPECT_EQ(set.findVert(Point2d(1, 2)), 0u);
  set.addVertex(3);
  EXPECT_EQ(set.findVert(Point2d(1, 2.0000000001)), 3u);  // no tolerance in the lookup
  EXPECT_EQ(set.findVert(Point2d(5, 5)), ProjectedVertexSet::kNotFound);
  ProjectedVertexSet copy(set);
  copy.addVertex(1);
  EXPECT_EQ(copy.findVert(Point2d(5, 5)), 1u);
  EXPECT_EQ(set.findVert(Point2d(5, 5)), ProjectedVertexSet::kNotFound);
}

// ---- ViewFrustum -------------------------------------------------------------------------

TEST(ViewFrustum, RejectsDegenerateCameras) {
  const double nan = kNaN;
  const Point3d eye(0, 0, 5), target(0, 0, 0);
  const Vector3d up(0, 1, 0);
  struct Case {
    const char* label;
    bool perspective;
    Point3d eye, target;
    Vector3d up;
    double angleOrExtent, aspect, nearD, farD;
  };
  const Case cases[] = {
      {"eye on target", true, target, target, up, 60, 1, 1, 10},
      {"up along the view", true, eye, target, Vector3d(0, 0, 3), 60, 1, 1, 10},
      {"zero up", false, eye, target, Vector3d(), 2, 1, 1, 10},
      {"zero view angle", true, eye, target, up, 0, 1, 1, 10},
      {"straight view angle", true, eye, target, up, 180, 1, 1, 10},
      {"NaN view angle", true, eye, target, up, nan, 1, 1, 10},
      {"zero aspect", true, eye, target, up, 60, 0, 1, 10},
      {"near at the eye", true, eye, target, up, 60, 1, 0, 10},
      {"near beyond far", true, eye, target, up, 60, 1, 10, 1},
      {"near equals far", false, eye, target, up, 2, 1, 3, 3},
      {"zero extent", false, eye, target, up, 0, 1, -1, 1},
      {"infinite far", false, eye, target, up, 2, 1, -1, kInf},
      {"NaN eye", true, Point3d(nan, 0, 5), target, up, 60, 1, 1, 10},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const auto make = c.perspective ? ViewFrustum::perspective : ViewFrustum::orthographic;
    EXPECT_THROW((void)make(c.eye, c.target, c.up, c.angleOrExtent, c.aspect, c.nearD, c.farD),
                 InvalidFrustumException);
  }
  // An orthographic view may start behind the eye.
  EXPECT_NO_THROW((void)ViewFrustum::orthographic(eye, target, up, 2, 1, -1, 1));
}

TEST(ViewFrustum, PerspectiveAxesAndNearPlane) {
  const ViewFrustum f =
      ViewFrustum::perspective(Point3d(0, 0, 5), Point3d(0, 0, 0), Vector3d(0, 2, 0.5), 90, 2, 1, 10);
  EXPECT_TRUE(nearlyEqual(f.getUp(), Vector3d(0, 1, 0)));
  EXPECT_TRUE(nearlyEqual(f.getRight(), Vector3d(1, 0, 0)));
  // The random comparison with the clip-space outcodes stays clear of the faces.
  EXPECT_TRUE(f.isInside(Point3d(0, 0, 4))) << "on the near plane";
}

TEST(ViewFrustum, AgreesWithClipSpaceOutcodes) {
  std::mt19937 rng(123);
  std::uniform_real_distribution<double> u(-1.0, 1.0), angle(10.0, 150.0), aspect(0.3, 3.0);
  int inside = 0, outside = 0;
  for (int i = 0; i < 200; ++i) {
    const Point3d eye(10 * u(rng), 10 * u(rng), 10 * u(rng));
    const Point3d target(u(rng), u(rng), u(rng));
    const Vector3d up(u(rng), u(rng), u(rng));
    if ((target - eye).cross(up).length() < 0.1 * up.length() * (target - eye).length()) continue;
    const double nearD = 0.5 + u(rng) * 0.4, farD = 20 + 5 * u(rng);
    const bool perspective = i % 2 == 0;
    const ViewFrustum f =
        perspective ? ViewFrustum::perspective(eye, target, up, angle(rng), aspect(rng), nearD, farD)
                    : ViewFrustum::orthographic(eye, target, up, 8 + 4 * u(rng), aspect(rng), nearD, farD);
    const Matrix4x4d toClip = f.getProjectionMatrix() * f.getViewMatrix();
    SCOPED_TRACE(::testing::Message() << f);
    for (int k = 0; k < 200; ++k) {
      const Point3d p = target + Vector3d(15 * u(rng), 15 * u(rng), 15 * u(rng));
      double margin = kInf;
      for (std::size_t j = 0; j < 6; ++j) margin = std::min(margin, std::fabs(f.getPlanes()[j].distance(p)));
      if (margin < 1e-6) continue;  // too close to a face to call
      const Point4d c = transform(toClip, p);
      const bool clipInside = c.getW() > 0 && c.calculateOutcodes(nullptr) == 0;
      ASSERT_EQ(f.isInside(p), clipInside) << p << " clip " << c;
      (clipInside ? inside : outside) += 1;
    }
  }
  EXPECT_GT(inside, 500);
  EXPECT_GT(outside, 500);
}

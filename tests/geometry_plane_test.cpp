// Planes, lines, segments, quads, insets and the polygon plane fit.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "geometry_test_support.h"

using namespace gui_objects;

namespace {

Plane3d fit(const std::vector<Point3d>& points) {
  PointList list(points);
  std::vector<std::size_t> idx(points.size());
  for (std::size_t i = 0; i < idx.size(); ++i) idx[i] = i;
  return fitPlaneThroughPoints(list, idx.data(), idx.size());
}

}  // namespace

// ---- Plane3d ---------------------------------------------------------------------------

TEST(Plane3d, ConstructorsRenormalise) {
  struct Case {
    const char* label;
    Plane3d plane;
    Vector3d normal;
    double offset;
  };
  const Case cases[] = {
      {"scaled normal scales the offset", Plane3d(Vector3d(0, 0, 2), 4), Vector3d(0, 0, 1), 2},
      {"point and normal", Plane3d(Point3d(1, 2, 3), Vector3d(0, -5, 0)), Vector3d(0, -1, 0), -2},
      {"counter-clockwise points face +z", Plane3d(Point3d(0, 0, 1), Point3d(1, 0, 1), Point3d(0, 1, 1)),
       Vector3d(0, 0, 1), 1},
      {"clockwise points face -z", Plane3d(Point3d(0, 0, 1), Point3d(0, 1, 1), Point3d(1, 0, 1)),
       Vector3d(0, 0, -1), -1},
      {"default", Plane3d(), Vector3d(0, 0, 1), 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_TRUE(nearlyEqual(c.plane.getNormal(), c.normal)) << c.plane;
    EXPECT_DOUBLE_EQ(c.plane.getOffset(), c.offset);
  }
  EXPECT_THROW(Plane3d(Vector3d(0, 0, 1e-9), 1), ZeroLengthException);  // |n|^2 within eps of 0
  EXPECT_THROW(Plane3d(Point3d(), Vector3d()), ZeroLengthException);
  EXPECT_THROW(Plane3d(Point3d(0, 0, 0), Point3d(1, 1, 1), Point3d(2, 2, 2)), ZeroLengthException);
  EXPECT_THROW(Plane3d(Point3d(1, 1, 1), Point3d(1, 1, 1), Point3d(2, 0, 2)), ZeroLengthException);
}

TEST(Plane3d, DistancesOffsetsAndIntersections) {
  const Plane3d p(Vector3d(0, 3, 4), 10);  // unit normal (0, .6, .8), offset 2
  EXPECT_NEAR(p.distance(Point3d(7, 0, 5)), 2.0, 1e-15);
  EXPECT_NEAR(p.evaluate(Point4d(0, 0, 10, 2)), 8.0 - 4.0, 1e-15);
  const Point3d q = p.nearestPointOnPlane(Point3d(7, 0, 5));
  EXPECT_NEAR(p.distance(q), 0.0, 1e-15);
  EXPECT_EQ(q.getX(), 7.0);
  EXPECT_NEAR(p.offset(1.5).distance(Point3d(7, 0, 5)), 0.5, 1e-15);
  EXPECT_TRUE(nearlyEqual(p.negate(), Plane3d(Vector3d(0, -0.6, -0.8), -2)));

  const Line3d down(Point3d(1, 1, 10), Point3d(1, 1, 8));
  const Plane3d floor(Vector3d(0, 0, 1), 2);
  EXPECT_DOUBLE_EQ(floor.intersectionParameter(down), 4.0);
  EXPECT_TRUE(nearlyEqual(floor.intersect(down), Point3d(1, 1, 2)));
  EXPECT_THROW((void)floor.intersect(Line3d(Point3d(0, 0, 5), Vector3d(1, 1, 0))), ParallelException);
}

TEST(Plane3d, TransformKeepsIncidenceAndSide) {
  std::mt19937 rng(99);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  for (int i = 0; i < 200; ++i) {
    const Plane3d plane(Vector3d(u(rng), u(rng), u(rng) + 2.0), 3.0 * u(rng));
    const Matrix4x4d m = Matrix4x4d::createTranslation(Vector3d(u(rng), u(rng), u(rng))) *
                         Matrix4x4d::createRotation(Vector3d(u(rng), u(rng), 1.0), 3.0 * u(rng)) *
                         Matrix4x4d::createScale(Vector3d(1.5 + u(rng), 1.5 + u(rng), -1.5 - u(rng)));
    const Plane3d moved = transform(m, plane);
    SCOPED_TRACE(::testing::Message() << plane << " -> " << moved);
    ASSERT_NEAR(moved.getNormal().length(), 1.0, 1e-12);
    for (int k = 0; k < 10; ++k) {
      const Point3d p(3 * u(rng), 3 * u(rng), 3 * u(rng));
      const Point3d onPlane = plane.nearestPointOnPlane(p);
      const Point3d image = transform(m, p).project();
      ASSERT_NEAR(moved.distance(transform(m, onPlane).project()), 0.0, 1e-9);
      if (std::fabs(plane.distance(p)) > 1e-6) {
        ASSERT_EQ(moved.distance(image) > 0, plane.distance(p) > 0);
      }
    }
  }
}

// ---- Lines -----------------------------------------------------------------------------

TEST(Line2d, Intersect) {
  struct Case {
    const char* label;
    Line2d other;
    bool parallel;
    Point2d expected;
  };
  const Line2d xAxis(Point2d(0, 0), Point2d(1, 0));
  const Case cases[] = {
      {"sine squared 2.5e-7 is parallel", Line2d(Point2d(0, 1), Point2d(1, 1.0005)), true, {}},
      {"exactly parallel", Line2d(Point2d(0, 1), Vector2d(-3, 0)), true, {}},
      {"shallow but not parallel", Line2d(Point2d(0, 1), Point2d(1, 1.01)), false, Point2d(-100, 0)},
      {"perpendicular", Line2d(Point2d(2, 5), Vector2d(0, 1)), false, Point2d(2, 0)},
      {"through a far point", Line2d(Point2d(3, 3), Point2d(4, 2)), false, Point2d(6, 0)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    if (c.parallel) {
      EXPECT_THROW((void)xAxis.intersect(c.other), ParallelException);
    } else {
      const Point2d p = xAxis.intersect(c.other);
      EXPECT_NEAR(p.getX(), c.expected.getX(), 1e-9);
      EXPECT_NEAR(p.getY(), c.expected.getY(), 1e-9);
    }
  }
}

TEST(Line2d, OffsetDistanceAndNormalise) {
  Line2d l(Point2d(1, 1), Vector2d(2, 0));
  EXPECT_EQ(l.evaluate(-0.5), Point2d(0, 1));
  EXPECT_DOUBLE_EQ(l.distance(Point2d(10, -3)), 4.0);
  EXPECT_EQ(l.nearestPointOnLine(Point2d(10, -3)), Point2d(10, 1));
  l.offset(1.0);  // left of the direction, scaled by the tangent's length
  EXPECT_EQ(l.getEnd(), Point2d(3, 3));
  l.normalize();
  EXPECT_EQ(l.getEnd(), Point2d(2, 3));
  // On the line the radicand often rounds below zero; the distance must not
  // become NaN.
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> u(-10.0, 10.0);
  for (int i = 0; i < 1000; ++i) {
    const Line2d line(Point2d(u(rng), u(rng)), Point2d(u(rng), u(rng)));
    const double d = line.distance(line.evaluate(u(rng)));
    ASSERT_FALSE(std::isnan(d));
    ASSERT_LT(d, 1e-5);  // the formula cancels: about sqrt(eps) * length
  }
  EXPECT_THROW(Line2d(Point2d(1, 1), Vector2d(1e-9, 0)), ZeroLengthException);
}

TEST(Line3d, Basics) {
  Line3d l(Point3d(0, 0, 0), Point3d(0, 0, 4));
  EXPECT_DOUBLE_EQ(l.distance(Point3d(3, 4, 9)), 5.0);
  EXPECT_EQ(l.nearestPointOnLine(Point3d(3, 4, 9)), Point3d(0, 0, 9));
  l.offset(Vector3d(1, 0, 0));
  l.normalize();
  EXPECT_EQ(l.getEnd(), Point3d(1, 0, 1));
  EXPECT_THROW(Line3d(Point3d(1, 2, 3), Point3d(1, 2, 3)), ZeroLengthException);

  const LineSegment3d none;
  EXPECT_FALSE(none.isValid());
  EXPECT_THROW((void)none.getDirection(), ZeroLengthException);
  const LineSegment3d s(Point3d(1, 1, 1), Point3d(1, 4, 5));
  EXPECT_DOUBLE_EQ(s.getLength(), 5.0);
  EXPECT_TRUE(nearlyEqual(s.getDirection(), Vector3d(0, 0.6, 0.8)));
}

// ---- Quad3d ----------------------------------------------------------------------------

TEST(Quad3d, RangesAndValidation) {
  EXPECT_FALSE(Quad3d().isValid());
  EXPECT_THROW(Quad3d(Point3d(), Vector3d(1, 0, 0), Vector3d(1, 1, 0)), InvalidQuadException);
  EXPECT_THROW(Quad3d(Point3d(), Vector3d(1, 0, 0), Vector3d(0, 1, 0), Point2d(1, 0), Point2d(0, 1)),
               InvalidQuadException);
  EXPECT_THROW(
      Quad3d(Point3d(), Vector3d(1, 0, 0), Vector3d(0, 1, 0), Point2d(0, 1), Point2d(0, std::nan(""))),
      InvalidQuadException);

  const Quad3d q(Point3d(1, 1, 1), Vector3d(2, 0, 0), Vector3d(0, 0, 3), Point2d(2, 3), Point2d(-1, 1));
  ASSERT_TRUE(q.isValid());
  EXPECT_EQ(q.getOrigin(), Point3d(5, 1, -2));
  EXPECT_EQ(q.getUVBounds().getBounds(), Rectangle2d(2, -1, 3, 1));
  EXPECT_EQ(q.evaluate(3, 1), Point3d(7, 1, 4));
  const Quad3d r = q.reparameterize();  // the same rectangle in space over [0, 1]^2
  EXPECT_EQ(r.getVRange(), Point2d(0, 1));
  EXPECT_TRUE(nearlyEqual(r.evaluate(1, 1), q.evaluate(3, 1)));
  EXPECT_TRUE(nearlyEqual(r.evaluate(0, 0), q.evaluate(2, -1)));
  const Quad3d narrowed(q, Point2d(0, 0.5), Point2d(0, 1));
  EXPECT_EQ(narrowed.getUBasis(), q.getUBasis());
  EXPECT_EQ(narrowed.getURange(), Point2d(0, 0.5));
}

TEST(Quad3d, Transform) {
  const Quad3d q(Point3d(0, 0, 0), Vector3d(1, 0, 0), Vector3d(0, 2, 0), Point2d(0, 2), Point2d(1, 3));
  const Quad3d turned = transform(Matrix4x4d::createZRotation(kPi / 2), q);
  ASSERT_TRUE(turned.isValid());
  EXPECT_TRUE(nearlyEqual(turned.getUBasis(), Vector3d(0, 1, 0)));
  EXPECT_TRUE(nearlyEqual(turned.getVBasis(), Vector3d(-2, 0, 0)));
  EXPECT_EQ(turned.getVRange(), Point2d(1, 3));
  Matrix4x4d shear;
  shear.set(1, 2, 1.0);  // x += y
  EXPECT_FALSE(transform(shear, q).isValid());
}

// ---- Inset2d ---------------------------------------------------------------------------

TEST(Inset2d, ApplyScaleAndRenormalise) {
  EXPECT_THROW(Inset2d(-0.1, 0, 0, 0), InvalidInsetException);
  const Inset2d in(1, 2, 3, 4);
  const Rectangle2d r(0, 0, 10, 10);
  EXPECT_EQ(in.apply(r), Rectangle2d(1, 2, 7, 6));
  EXPECT_EQ(in.unapply(in.apply(r)), r);
  EXPECT_EQ(Inset2d(4, 0, 6, 0).apply(r), Rectangle2d(4, 0, 4, 10));  // exactly fills
  EXPECT_THROW((void)Inset2d(4, 0, 6.5, 0).apply(r), InvalidInsetException);
  EXPECT_THROW((void)Inset2d(0, 5, 0, 5.5).apply(r), InvalidInsetException);

  Inset2d s(in);
  s.scaleby(2, 0.5);
  EXPECT_THROW(s.scaleby(-1, 1), InvalidInsetException);
  EXPECT_EQ(s, Inset2d(2, 1, 6, 2));

  Inset2d frac(0.1, 0.2, 0.1, 0.2);
  frac.renormalize(80, 60);  // an 80 x 60 box inside a 100 x 100 one
  EXPECT_TRUE(nearlyEqual(frac, Inset2d(10, 20, 10, 20))) << frac;
  Inset2d almost(0.5, 0, 0.5 - 1e-17, 0);  // sums to 1 in double
  EXPECT_THROW(almost.renormalize(1, 1), InvalidInsetException);

  EXPECT_EQ(Inset2d(1, 5, 0, 2).max(Inset2d(2, 1, 0, 3)), Inset2d(2, 5, 0, 3));
  EXPECT_EQ(interpolate(0.5, Inset2d(0, 0, 0, 0), Inset2d(2, 4, 6, 8)), Inset2d(1, 2, 3, 4));
  EXPECT_THROW((void)interpolate(-1.0, Inset2d(0, 0, 0, 0), Inset2d(2, 4, 6, 8)), InvalidInsetException);
}

// ---- Fitting ---------------------------------------------------------------------------

TEST(FitPlane, SpecialCounts) {
  struct Case {
    const char* label;
    std::vector<Point3d> points;
    Vector3d normal;
    double offset;
  };
  const Case cases[] = {
      {"two points", {{1, 2, 3}, {4, 5, 6}}, Vector3d(0, 0, 1), 0},
      {"quad with p0 == p2 falls back to z",
       {{1, 1, 1}, {2, 3, 4}, {1, 1, 1}, {5, 0, 2}},
       Vector3d(0, 0, 1),
       (1 + 4 + 1 + 2) / 4.0},
      {"collinear pentagon", {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}, {4, 4, 4}}, Vector3d(0, 0, 1), 2},
      {"vertical hexagon",
       {{0, 0, 0}, {0, 1, 0}, {0, 2, 1}, {0, 2, 2}, {0, 1, 2}, {0, 0, 1}},
       Vector3d(1, 0, 0),
       0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const Plane3d p = fit(c.points);
    EXPECT_TRUE(nearlyEqual(p.getNormal(), c.normal)) << p;
    EXPECT_NEAR(p.getOffset(), c.offset, 1e-12);
  }
}

TEST(FitPlane, RecoversThePlaneOfRandomPlanarPolygons) {
  std::mt19937 rng(2024);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::uniform_int_distribution<int> sides(3, 12);
  for (int i = 0; i < 300; ++i) {
    // A convex polygon, counter-clockwise in a random frame (a, b, n).
    Vector3d n(u(rng), u(rng), u(rng));
    if (n.length() < 0.1) continue;
    n.normalize();
    Vector3d a = n.cross(std::fabs(n.getX()) < 0.5 ? Vector3d(1, 0, 0) : Vector3d(0, 1, 0));
    a.normalize();
    const Vector3d b = n.cross(a);
    const Point3d center(5 * u(rng), 5 * u(rng), 5 * u(rng));
    const int count = sides(rng);
    std::vector<Point3d> pts;
    for (int k = 0; k < count; ++k) {
      const double angle = 2 * kPi * (k + 0.4 * u(rng)) / count;
      const double radius = 1.0 + 0.5 * u(rng);
      pts.push_back(center + a * (radius * std::cos(angle)) + b * (radius * std::sin(angle)));
    }
    const Plane3d p = fit(pts);
    SCOPED_TRACE(::testing::Message() << count << " sides, expected normal " << n << ", got " << p);
    EXPECT_TRUE(nearlyEqual(p.getNormal(), n));
    for (const Point3d& q : pts) EXPECT_NEAR(p.distance(q), 0.0, 1e-12);
  }
}

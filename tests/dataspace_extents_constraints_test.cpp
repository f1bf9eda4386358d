// Limit constraints: bound tests, one-sign-side constraints for logarithmic
// axes, the bundle reset and segment clipping.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <random>

#include "qvgui/dataspace.h"

namespace {

using gui_objects::DataConstraints;
using gui_objects::DataExtents;
using gui_objects::Point3d;
using gui_objects::XYZDataConstraints;

constexpr double kInf = std::numeric_limits<double>::infinity();

DataConstraints constrained(double lo, double hi, bool zeroCrossing = true) {
  DataConstraints c(zeroCrossing);
  c.setConstraint(lo, hi);
  return c;
}

TEST(DataConstraints, DefaultsAndFlags) {
  const DataConstraints c;
  EXPECT_EQ(c.getMin(), 0.0);
  EXPECT_EQ(c.getMax(), 1.0);
  EXPECT_TRUE(c.allowZeroCrossing());
  EXPECT_FALSE(c.hasConstraint());
  EXPECT_FALSE(DataConstraints(false).allowZeroCrossing());
  const XYZDataConstraints none;
  EXPECT_FALSE(none.hasConstraint());
  EXPECT_TRUE(XYZDataConstraints(DataConstraints(), constrained(1, 2), DataConstraints()).hasConstraint());
  EXPECT_FALSE(
      XYZDataConstraints(DataConstraints(false), DataConstraints(), DataConstraints()).hasConstraint());
}

TEST(DataConstraints, BoundQueries) {
  struct Case {
    const char* label;
    DataConstraints c;
    double a, b;
    bool spans;
  };
  const Case cases[] = {
      {"no constraint", DataConstraints(), -10, 10, false},
      {"contains min", constrained(1, 5), 0, 2, true},
      {"contains max, reversed", constrained(1, 5), 6, 4, true},
      {"touching min only", constrained(1, 5), 1, 3, false},
      {"inside", constrained(1, 5), 2, 3, false},
      {"around both", constrained(1, 5), 0, 6, true},
      {"log axis across zero", constrained(-0.5, 0.5, false), -1, 1, false},
      {"log axis touching zero", constrained(0.5, 2, false), 0, 1, false},
      {"log axis one side", constrained(0.5, 2, false), 0.1, 1, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(c.c.spansBounds(c.a, c.b), c.spans);
  }
  const DataConstraints c = constrained(1, 5);
  EXPECT_FALSE(c.outOfBounds(1));
  EXPECT_FALSE(c.outOfBounds(5));
  EXPECT_TRUE(c.outOfBounds(0.999));
  EXPECT_TRUE(c.outOfBounds(5.001));
  EXPECT_FALSE(DataConstraints().outOfBounds(100));
  EXPECT_DOUBLE_EQ(c.interpolate(0, 2), 0.5);  // rising: enters at min
  EXPECT_DOUBLE_EQ(c.interpolate(7, 3), 0.5);  // falling: enters at max
  EXPECT_EQ(c.interpolate(3, 3), 0.0);
}

TEST(DataConstraints, ZeroCrossingConstraintKeepsOneSignSide) {
  struct Case {
    const char* label;
    DataConstraints before;
    DataExtents data;
    bool changes;
    double min, max;
  };
  const Case cases[] = {
      {"linear axis", DataConstraints(true), DataExtents(-5, 10), false, 0, 1},
      {"from zero", DataConstraints(false), DataExtents(0, 10), true, DBL_MIN, kInf},
      {"up to zero", DataConstraints(false), DataExtents(-5, 0), true, -kInf, -DBL_MIN},
      {"across zero takes the positive side", DataConstraints(false), DataExtents(-5, 10), true, DBL_MIN,
       kInf},
      {"all positive", DataConstraints(false), DataExtents(1, 10), false, 0, 1},
      {"all negative", DataConstraints(false), DataExtents(-10, -1), false, 0, 1},
      {"only zero", DataConstraints(false), DataExtents(0, 0), false, 0, 1},
      {"existing constraint keeps its far bound", constrained(-3, 7, false), DataExtents(-5, 10), true,
       DBL_MIN, 7},
      {"existing constraint, negative side", constrained(-3, 7, false), DataExtents(-5, 0), true, -3,
       -DBL_MIN},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    DataConstraints k = c.before;
    EXPECT_EQ(k.updateConstraintForZeroCrossing(c.data), c.changes);
    EXPECT_EQ(k.getMin(), c.min);
    EXPECT_EQ(k.getMax(), c.max);
    EXPECT_EQ(k.hasConstraint(), c.changes || c.before.hasConstraint());
  }
}

TEST(XYZDataConstraints, ResetReplacesEveryExtentAfterAChange) {
  XYZDataConstraints c(DataConstraints(false), DataConstraints(false), DataConstraints(false));
  DataExtents x(1, 2), y(-5, 10), z(-3, -1);
  EXPECT_TRUE(c.updateConstraintForZeroCrossingAndResetExtents(x, y, z));
  EXPECT_TRUE(c.hasConstraint());
  EXPECT_FALSE(x.initialized());
  EXPECT_FALSE(z.initialized());
  DataExtents minusOne;
  minusOne += -1.0;
  EXPECT_EQ(y, minusOne);

  XYZDataConstraints d(DataConstraints(false), DataConstraints(), DataConstraints());
  DataExtents a(0, 3), b(-1, 1), e(2, 4);
  EXPECT_TRUE(d.updateConstraintForZeroCrossingAndResetExtents(a, b, e));
  EXPECT_EQ(a, DataExtents(0, 0));  // old minimum not below zero: the sample 0
  EXPECT_FALSE(b.initialized());

  XYZDataConstraints unchanged;
  DataExtents p(-1, 1), q(-1, 1), r(-1, 1);
  EXPECT_FALSE(unchanged.updateConstraintForZeroCrossingAndResetExtents(p, q, r));
  EXPECT_EQ(p, DataExtents(-1, 1));
  EXPECT_FALSE(unchanged.hasConstraint());
}

TEST(XYZDataConstraints, NearlyEqualNeedsMatchingFlags) {
  EXPECT_TRUE(nearlyEqual(DataConstraints(), DataConstraints()));
  EXPECT_FALSE(nearlyEqual(DataConstraints(), DataConstraints(false)));
  EXPECT_TRUE(nearlyEqual(constrained(1, 2), constrained(1 + 1e-9, 2)));
  EXPECT_FALSE(nearlyEqual(constrained(1, 2), constrained(1.1, 2)));
  EXPECT_FALSE(nearlyEqual(constrained(1, 2), DataConstraints()));
  const XYZDataConstraints a(constrained(1, 2), DataConstraints(), DataConstraints());
  const XYZDataConstraints b(constrained(1, 2 + 1e-9), DataConstraints(), DataConstraints());
  EXPECT_TRUE(nearlyEqual(a, b));
  EXPECT_FALSE(nearlyEqual(a, XYZDataConstraints()));
}

TEST(XYZDataConstraints, IntersectSegmentClipsBothEnds) {
  const XYZDataConstraints box(constrained(0, 1), constrained(0, 1), DataConstraints());
  Point3d p0(-1, 0.5, 3), p1(2, 0.5, 6);
  box.intersectSegment(p0, p1);
  EXPECT_TRUE(nearlyEqual(p0, Point3d(0, 0.5, 4))) << p0.getX() << " " << p0.getZ();
  EXPECT_TRUE(nearlyEqual(p1, Point3d(1, 0.5, 5))) << p1.getX() << " " << p1.getZ();

  Point3d q0(0.5, 2, 0), q1(0.5, -1, 0);  // falling along y
  box.intersectSegment(q0, q1);
  EXPECT_TRUE(nearlyEqual(q0, Point3d(0.5, 1, 0)));
  EXPECT_TRUE(nearlyEqual(q1, Point3d(0.5, 0, 0)));

  Point3d inside0(0.2, 0.2, 0), inside1(0.8, 0.9, 0);
  box.intersectSegment(inside0, inside1);
  EXPECT_EQ(inside0, Point3d(0.2, 0.2, 0));
  EXPECT_EQ(inside1, Point3d(0.8, 0.9, 0));
}

// Property: a segment with both ends outside that crosses the box ends with
// both points on the box (inside within tolerance) and on the original line.
TEST(XYZDataConstraints, ClippedEndsLieInTheBoxOnRandomSegments) {
  std::mt19937_64 rng(99);
  std::uniform_real_distribution<double> inner(0.1, 0.9), dir(-1, 1);
  const XYZDataConstraints box(constrained(0, 1), constrained(0, 1), constrained(0, 1));
  for (int i = 0; i < 2000; ++i) {
    const Point3d mid(inner(rng), inner(rng), inner(rng));
    const double dx = dir(rng), dy = dir(rng), dz = dir(rng);
    const Point3d a(mid.getX() - 3 * dx, mid.getY() - 3 * dy, mid.getZ() - 3 * dz);
    const Point3d b(mid.getX() + 3 * dx, mid.getY() + 3 * dy, mid.getZ() + 3 * dz);
    Point3d p0 = a, p1 = b;
    box.intersectSegment(p0, p1);
    for (const Point3d& p : {p0, p1}) {
      for (double v : {p.getX(), p.getY(), p.getZ()}) {
        ASSERT_GE(v, -1e-9) << "segment " << i;
        ASSERT_LE(v, 1 + 1e-9) << "segment " << i;
      }
    }
    ASSERT_LE(p0.distance(a) + p0.distance(p1) + p1.distance(b), a.distance(b) + 1e-9) << "segment " << i;
  }
}

}  // namespace

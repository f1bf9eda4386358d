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

TEST(DataConstraints, BoundQueries) {
  // clang-format off
  struct Case { const char* label; DataConstraints c; double a, b; bool spans; };
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
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(c.c.spansBounds(c.a, c.b), c.spans);
  }
  const DataConstraints c = constrained(1, 5);
  EXPECT_FALSE(c.outOfBounds(1) || c.outOfBounds(5) || DataConstraints().outOfBounds(100));
  EXPECT_TRUE(c.outOfBounds(0.999) && c.outOfBounds(5.001));
  EXPECT_DOUBLE_EQ(c.interpolate(0, 2), 0.5);  // rising: enters at min
  EXPECT_DOUBLE_EQ(c.interpolate(7, 3), 0.5);  // falling: enters at max
  EXPECT_EQ(c.interpolate(3, 3), 0.0);
}

TEST(DataConstraints, ZeroCrossingConstraintKeepsOneSignSide) {
  const DataConstraints logAxis(false);
  // clang-format off
  struct Case { const char* label; DataConstraints before; DataExtents data; bool changes; double min, max; };
  const Case cases[] = {
      {"linear axis", DataConstraints(true), DataExtents(-5, 10), false, 0, 1},
      {"from zero", logAxis, DataExtents(0, 10), true, DBL_MIN, kInf},
      {"up to zero", logAxis, DataExtents(-5, 0), true, -kInf, -DBL_MIN},
      {"across zero takes the positive side", logAxis, DataExtents(-5, 10), true, DBL_MIN, kInf},
      {"all positive", logAxis, DataExtents(1, 10), false, 0, 1},
      {"all negative", logAxis, DataExtents(-10, -1), false, 0, 1},
      {"only zero", logAxis, DataExtents(0, 0), false, 0, 1},
      {"existing constraint keeps its far bound", constrained(-3, 7, false), DataExtents(-5, 10), true, DBL_MIN, 7},
      {"existing constraint, negative side", constrained(-3, 7, false), DataExtents(-5, 0), true, -3, -DBL_MIN},
  };
  // clang-format on
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
  const DataConstraints logAxis(false), linear;
  XYZDataConstraints c(logAxis, logAxis, logAxis);
  DataExtents x(1, 2), y(-5, 10), z(-3, -1), minusOne;
  minusOne += -1.0;
  EXPECT_TRUE(c.updateConstraintForZeroCrossingAndResetExtents(x, y, z));
  EXPECT_TRUE(c.hasConstraint());
  EXPECT_FALSE(x.initialized() || z.initialized());
  EXPECT_EQ(y, minusOne);

  XYZDataConstraints d(logAxis, linear, linear);
  DataExtents a(0, 3), b(-1, 1), e(2, 4);
  EXPECT_TRUE(d.updateConstraintForZeroCrossingAndResetExtents(a, b, e));
  EXPECT_EQ(a, DataExtents(0, 0));  // old minimum not below zero: the sample 0
  EXPECT_FALSE(b.initialized());

  // A zero-crossing flag alone is not a constraint.
  XYZDataConstraints unchanged(logAxis, linear, linear);
  EXPECT_FALSE(unchanged.hasConstraint());
  DataExtents p(1, 2), q(-1, 1), r(-1, 1);
  EXPECT_FALSE(unchanged.updateConstraintForZeroCrossingAndResetExtents(p, q, r));
  EXPECT_EQ(q, DataExtents(-1, 1));
  EXPECT_FALSE(unchanged.hasConstraint());
}

TEST(XYZDataConstraints, NearlyEqualNeedsMatchingFlags) {
  EXPECT_TRUE(nearlyEqual(DataConstraints(), DataConstraints()));
  EXPECT_FALSE(nearlyEqual(DataConstraints(), DataConstraints(false)));
  EXPECT_TRUE(nearlyEqual(constrained(1, 2), constrained(1 + 1e-9, 2)));
  EXPECT_FALSE(nearlyEqual(constrained(1, 2), constrained(1.1, 2)));
  EXPECT_FALSE(nearlyEqual(constrained(1, 2), DataConstraints()));
  const XYZDataConstraints a(constrained(1, 2), DataConstraints(), DataConstraints());
  EXPECT_TRUE(
      nearlyEqual(a, XYZDataConstraints(constrained(1, 2 + 1e-9), DataConstraints(), DataConstraints())));
  EXPECT_FALSE(nearlyEqual(a, XYZDataConstraints()));
}

TEST(XYZDataConstraints, IntersectSegmentClipsBothEnds) {
  const XYZDataConstraints box(constrained(0, 1), constrained(0, 1), DataConstraints());
  // clang-format off
  struct Case { const char* label; Point3d a, b, wantA, wantB; };
  const Case cases[] = {
      {"rising along x, z free", {-1, 0.5, 3}, {2, 0.5, 6}, {0, 0.5, 4}, {1, 0.5, 5}},
      {"falling along y", {0.5, 2, 0}, {0.5, -1, 0}, {0.5, 1, 0}, {0.5, 0, 0}},
      {"inside is untouched", {0.2, 0.2, 0}, {0.8, 0.9, 0}, {0.2, 0.2, 0}, {0.8, 0.9, 0}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Point3d p0 = c.a, p1 = c.b;
    box.intersectSegment(p0, p1);
    EXPECT_TRUE(nearlyEqual(p0, c.wantA)) << p0;
    EXPECT_TRUE(nearlyEqual(p1, c.wantB)) << p1;
  }
}

// A segment with both ends outside that crosses the box ends with both points
// in the box (within tolerance) and on the original segment.
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

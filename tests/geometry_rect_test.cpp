// Rectangles, the flat qvrect functions, bounding boxes and gridded bounds.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "qvgui/geometry.h"

using namespace gui_objects;

namespace {

bool sameRect(const qvrect& a, const qvrect& b) { return guiEqualRect(&a, &b); }

qvpoint pt(int h, int v) { return qvpoint{static_cast<std::int16_t>(v), static_cast<std::int16_t>(h)}; }

}  // namespace

// ---- Flat interface ---------------------------------------------------------------

TEST(FlatRect, SectRectEdgeRules) {
  struct Case {
    const char* label;
    qvrect a, b, expected;
    bool intersects;
  };
  // Fields are top, left, bottom, right.
  const Case cases[] = {
      {"touching along a vertical edge", {0, 0, 10, 10}, {0, 10, 10, 20}, {0, 10, 10, 10}, true},
      {"same, operands swapped", {0, 10, 10, 20}, {0, 0, 10, 10}, {0, 10, 10, 10}, true},
      {"touching along a horizontal edge", {0, 0, 10, 10}, {10, 0, 20, 10}, {0, 0, 0, 0}, false},
      {"horizontal edge, swapped", {10, 0, 20, 10}, {0, 0, 10, 10}, {0, 0, 0, 0}, false},
      {"one pixel apart in x", {0, 0, 10, 10}, {0, 11, 10, 20}, {0, 0, 0, 0}, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    qvrect out{-1, -1, -1, -1};
    EXPECT_EQ(guiSectRect(&c.a, &c.b, &out), c.intersects);
    EXPECT_TRUE(sameRect(out, c.expected)) << out;
    EXPECT_EQ(guiSectRect(&c.a, &c.b, nullptr), c.intersects);
  }
  // The result may overwrite an operand.
  qvrect a{0, 0, 10, 10};
  const qvrect b{5, 5, 15, 15};
  ASSERT_TRUE(guiSectRect(&a, &b, &a));
  EXPECT_TRUE(sameRect(a, qvrect{5, 5, 10, 10})) << a;
}

TEST(FlatRect, PointTestsDifferInClosedness) {
  qvrect r;
  guiSetRect(&r, 10, 20, 30, 40);  // left, top, right, bottom
  ASSERT_TRUE(sameRect(r, qvrect{20, 10, 40, 30})) << r;
  struct Case {
    const char* label;
    int h, v, halfOpen, closed;
  };
  const Case cases[] = {
      {"top-left corner", 10, 20, 1, 1},    {"top-right corner", 30, 20, 0, 1},
      {"bottom-left corner", 10, 40, 0, 1}, {"interior", 29, 39, 1, 1},
      {"left of left", 9, 25, 0, 0},        {"above top", 15, 19, 0, 0},
      {"below bottom", 15, 41, 0, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const qvpoint p = pt(c.h, c.v);
    EXPECT_EQ(guiPtInRect(p, &r), c.halfOpen);
    EXPECT_EQ(guiPointInRect(&p, &r), c.closed);
  }
}

TEST(FlatRect, SizeOffsetInsetAndEmptiness) {
  const qvrect r{2, 1, 7, 11};
  EXPECT_EQ(guiRectWidth(&r), 10);
  EXPECT_EQ(guiRectHeight(&r), 5);
  qvrect moved;
  guiCopyRect(&moved, &r);
  guiOffsetRect(&moved, -3, 4);
  guiInsetRect(&moved, 1, 2);
  EXPECT_TRUE(sameRect(moved, qvrect{8, -1, 9, 7})) << moved;
  EXPECT_FALSE(guiAreRectsSameSize(&r, &moved));
  // Over-insetting is not checked: the rectangle simply crosses.
  guiInsetRect(&moved, 10, 0);
  EXPECT_TRUE(sameRect(moved, qvrect{8, 9, 9, -3})) << moved;

  const qvrect zeroHeight{0, 0, 0, 5};
  EXPECT_TRUE(guiIsEmptyRect(&zeroHeight));
  EXPECT_FALSE(Rectangle2i(zeroHeight).isEmpty());  // needs both directions degenerate
  EXPECT_TRUE(Rectangle2i(3, 4, 3, 4).isEmpty());

  // Extreme offsets wrap instead of being undefined.
  qvrect far{0, std::numeric_limits<std::int32_t>::max(), 0, std::numeric_limits<std::int32_t>::max()};
  guiOffsetRect(&far, 1, 0);
  EXPECT_EQ(far.left, std::numeric_limits<std::int32_t>::min());
}

TEST(FlatRect, RotateRect) {
  struct Case {
    const char* label;
    qvrect in;
    int degrees;
    qvrect expected;
  };
  const Case cases[] = {
      {"90 degrees", {0, 0, 10, 20}, 90, {-20, 0, 0, 10}},
      {"180 degrees", {0, 0, 10, 20}, 180, {0, 0, -10, -20}},
      {"full turn", {3, 4, 10, 20}, 360, {3, 4, 10, 20}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    qvrect r = c.in;
    guiRotateRect(&r, c.degrees);
    EXPECT_TRUE(sameRect(r, c.expected)) << r;
  }
}

TEST(FlatRect, SectAndUnionAgreeWithPixelSets) {
  std::mt19937 rng(1234);
  std::uniform_int_distribution<int> coord(0, 12);
  for (int iteration = 0; iteration < 400; ++iteration) {
    qvrect a, b;
    int x0 = coord(rng), x1 = coord(rng), y0 = coord(rng), y1 = coord(rng);
    guiSetRect(&a, std::min(x0, x1), std::min(y0, y1), std::max(x0, x1) + 1, std::max(y0, y1) + 1);
    x0 = coord(rng), x1 = coord(rng), y0 = coord(rng), y1 = coord(rng);
    guiSetRect(&b, std::min(x0, x1), std::min(y0, y1), std::max(x0, x1) + 1, std::max(y0, y1) + 1);
    qvrect sect, uni;
    const bool meets = guiSectRect(&a, &b, &sect);
    guiUnionRect(&a, &b, &uni);
    SCOPED_TRACE(::testing::Message() << a << " " << b);
    for (int h = -1; h <= 14; ++h) {
      for (int v = -1; v <= 14; ++v) {
        const qvpoint p = pt(h, v);
        const bool inA = guiPtInRect(p, &a) != 0, inB = guiPtInRect(p, &b) != 0;
        if (inA && inB) {
          ASSERT_TRUE(meets);
          ASSERT_EQ(guiPtInRect(p, &sect), 1);
        }
        if (meets) {
          ASSERT_EQ(guiPtInRect(p, &sect) == 1, inA && inB) << h << "," << v;
        }
        if (inA || inB) {
          ASSERT_EQ(guiPtInRect(p, &uni), 1);
        }
      }
    }
  }
}

// ---- Rectangle2i / Rectangle2d ------------------------------------------------------

TEST(Rectangle2i, ConstructionAndConversion) {
  EXPECT_THROW(Rectangle2i(1, 0, 0, 0), RectangleCrossedPointsException);
  EXPECT_THROW(Rectangle2i(qvrect{5, 0, 4, 10}), RectangleCrossedPointsException);
  EXPECT_THROW(Rectangle2i(Point2i(0, 0), -1, 3), RectangleCrossedPointsException);

  const Rectangle2i fromCorners(Point2i(5, -1), Point2i(2, 7));
  EXPECT_EQ(fromCorners, Rectangle2i(2, -1, 5, 7));
  const qvrect q = fromCorners;
  EXPECT_TRUE(sameRect(q, qvrect{-1, 2, 7, 5})) << q;
  EXPECT_EQ(Rectangle2i(Point2i(2, -1), 3, 8), fromCorners);
  EXPECT_EQ(Rectangle2i(-3, -3, 0, 0).getCenter(), Point2i(-1, -1));  // truncated toward zero
  EXPECT_TRUE(fromCorners.isInside(Point2i(5, 7)));
  EXPECT_FALSE(fromCorners.isInside(Point2i(6, 7)));
  EXPECT_EQ(unionRect(Rectangle2i(0, 0, 1, 1), Rectangle2i(5, -2, 6, 0)), Rectangle2i(0, -2, 6, 1));
}

TEST(Rectangle2i, InsetKeepsRectangleOnFailure) {
  Rectangle2i r(0, 0, 10, 4);
  r.inset(Vector2i(5, 2));  // exactly degenerate is fine
  EXPECT_EQ(r, Rectangle2i(5, 2, 5, 2));
  EXPECT_THROW(r.inset(Vector2i(1, 0)), RectangleCrossedPointsException);
  EXPECT_EQ(r, Rectangle2i(5, 2, 5, 2));
  r.outset(Vector2i(5, 2));
  EXPECT_EQ(r, Rectangle2i(0, 0, 10, 4));
  Rectangle2i d(0, 0, 10, 10);
  EXPECT_THROW(d.outset(Vector2i(std::numeric_limits<std::int32_t>::max(), 0)),
               RectangleCrossedPointsException);
  EXPECT_EQ(d, Rectangle2i(0, 0, 10, 10));

  Rectangle2d f(0, 0, 1, 1);
  EXPECT_THROW(f.inset(Vector2d(0.6, 0)), RectangleCrossedPointsException);
  EXPECT_EQ(f, Rectangle2d(0, 0, 1, 1));
  EXPECT_THROW(Rectangle2d(std::nan(""), 0, 1, 1), RectangleCrossedPointsException);
}

TEST(Rectangle2d, AsRectangle2iRoundsOutwardWithTwoUlpSlack) {
  const double two = 2.0;
  const double up1 = std::nextafter(two, 3.0);
  const double up2 = std::nextafter(up1, 3.0);
  const double down1 = std::nextafter(two, 1.0);
  const double down3 = std::nextafter(std::nextafter(down1, 1.0), 1.0);
  struct Case {
    const char* label;
    double v;
    int asMin, asMax;
  };
  // Above 2 the spacing is 2^-51; below it 2^-52, but the slack is measured
  // with the spacing at v itself.
  const Case cases[] = {
      {"exact 2", two, 2, 2},
      {"2 + 1 ulp", up1, 2, 2},
      {"2 + 2 ulp", up2, 2, 3},
      {"2 - 1 ulp", down1, 2, 2},
      {"2 - 3 ulp", down3, 1, 2},
      {"beyond int32", 1e12, std::numeric_limits<std::int32_t>::max(),
       std::numeric_limits<std::int32_t>::max()},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(Rectangle2d(c.v, c.v, c.v, c.v).asRectangle2i(),
              Rectangle2i(c.asMin, c.asMin, c.asMax, c.asMax));
  }
}

TEST(Rectangle2d, AsRectangle2iContainsTheRectangle) {
  std::mt19937 rng(77);
  std::uniform_real_distribution<double> coord(-1000.0, 1000.0);
  for (int i = 0; i < 2000; ++i) {
    const double a = coord(rng), b = coord(rng), c = coord(rng), d = coord(rng);
    const Rectangle2d r(Point2d(a, b), Point2d(c, d));
    const Rectangle2i q = r.asRectangle2i();
    SCOPED_TRACE(::testing::Message() << r << " -> " << q);
    // Random doubles are never within two ulps of an integer, so plain
    // floor and ceil are the expected answer.
    EXPECT_EQ(
        q, Rectangle2i(static_cast<int>(std::floor(r.getXMin())), static_cast<int>(std::floor(r.getYMin())),
                       static_cast<int>(std::ceil(r.getXMax())), static_cast<int>(std::ceil(r.getYMax()))));
  }
}

TEST(Rectangle2d, RealRectFieldOrder) {
  Real_rect rr;
  guiSetRealRect(&rr, 1.0, 2.0, 3.0, 4.0);  // top, left, bottom, right
  EXPECT_EQ(Rectangle2d(rr), Rectangle2d(2.0, 1.0, 4.0, 3.0));
  EXPECT_EQ(static_cast<Real_rect>(Rectangle2d(rr)).right, 4.0);
  EXPECT_THROW(Rectangle2d(Real_rect{1, 0, 0, 1}), RectangleCrossedPointsException);
}

// ---- AABB2d and BoundingVolume ---------------------------------------------------------

TEST(AABB2d, UnsetBoxAndGrowth) {
  AABB2d box;
  EXPECT_FALSE(box.isValid());
  EXPECT_THROW((void)box.getXMin(), InvalidAxisAlignedBoundingBoxException);
  EXPECT_THROW((void)box.getUpperRight(), InvalidAxisAlignedBoundingBoxException);
  EXPECT_EQ(box.getWidth(), 0.0);
  EXPECT_FALSE(box.contains(Point2d(0, 0)));

  box += Point2d(2, 3);
  ASSERT_TRUE(box.isValid());
  EXPECT_EQ(box.getBounds(), Rectangle2d(2, 3, 2, 3));
  box += Point2d(-1, 5);
  EXPECT_EQ(box.getBounds(), Rectangle2d(-1, 3, 2, 5));
  EXPECT_TRUE(box.contains(Point2d(2, 5)));

  AABB2d other;
  box += other;  // unset operand ignored
  EXPECT_EQ(box.getBounds(), Rectangle2d(-1, 3, 2, 5));
  other += box;  // unset box takes the other
  EXPECT_EQ(other, box);
}

TEST(BoundingVolume, ConstructionAndQueries) {
  EXPECT_THROW(BoundingVolume(Point3d(), -1, 1, 1), InvalidWidthException);
  EXPECT_NO_THROW(BoundingVolume(Point3d(), std::nan(""), 1, 1));
  BoundingVolume v(Point3d(1, 2, 3), 2, 4, 6);
  EXPECT_EQ(v, BoundingVolume(Point3d(0, 0, 0), Point3d(2, 4, 6)));
  EXPECT_TRUE(v.isInside(Point3d(2, 4, 6)));
  EXPECT_FALSE(v.isStrictlyInside(Point3d(2, 4, 5)));
  EXPECT_TRUE(v.isStrictlyInside(Point3d(1, 1, 1)));
  v.inflate(0.5);
  EXPECT_EQ(v, BoundingVolume(Point3d(-1, -2, -3), Point3d(3, 6, 9)));

  EXPECT_FALSE(BoundingVolume(nullptr, 3).isValid());
  const Point3d pts[] = {{1, 5, -1}, {-2, 0, 4}, {0, 9, 0}};
  EXPECT_EQ(BoundingVolume(pts, 3), BoundingVolume(Point3d(-2, 0, -1), Point3d(1, 9, 4)));
  EXPECT_TRUE(BoundingVolume(Point3d(0, 0, 0), Point3d(1, 1, 1e-9)).isEmpty());
  EXPECT_TRUE(BoundingVolume().isEmpty());

  BoundingVolume acc;
  acc += BoundingVolume();
  EXPECT_FALSE(acc.isValid());
  acc += BoundingVolume(pts, 1);
  acc += BoundingVolume(pts + 1, 2);
  EXPECT_EQ(acc, BoundingVolume(pts, 3));
}

TEST(BoundingVolume, Transform) {
  const BoundingVolume v(Point3d(-1, -1, -1), Point3d(1, 1, 1));
  const BoundingVolume moved = transform(Matrix4x4d::createTranslation(Vector3d(1, 2, 3)), v);
  EXPECT_TRUE(nearlyEqual(moved, BoundingVolume(Point3d(0, 1, 2), Point3d(2, 3, 4))));
  const BoundingVolume turned = transform(Matrix4x4d::createZRotation(0.7853981633974483), v);
  EXPECT_NEAR(turned.getXMax(), std::sqrt(2.0), 1e-12);
  EXPECT_FALSE(transform(Matrix4x4d(), BoundingVolume()).isValid());
  // A perspective matrix puts the corners with z >= 0 behind the eye.
  EXPECT_THROW((void)transform(Matrix4x4d::createFrustum(-1, 1, -1, 1, 1, 10), v), InvalidWException);
}

// ---- Gridded bounds --------------------------------------------------------------------

// A degenerate box on a cell boundary still gets a whole cell: the one above.
TEST(GriddedBounds, DegenerateBoxAndBadInput) {
  const GriddedBounds g = expand_bounds_to_grid(AABB2d(Rectangle2d(4, 4, 4, 4)), 0, 0, 2, 2);
  EXPECT_EQ(g.getGrid(), Rectangle2i(2, 2, 3, 3)) << g;
  EXPECT_EQ(g.getXStride(), 2u);
  EXPECT_THROW((void)expand_bounds_to_grid(AABB2d(), 0, 0, 1, 1), InvalidAxisAlignedBoundingBoxException);
  EXPECT_THROW((void)expand_bounds_to_grid(AABB2d(Rectangle2d(0, 0, 1, 1)), 0, 0, 0, 1),
               InvalidWidthException);
  EXPECT_THROW((void)expand_bounds_to_grid(AABB2d(Rectangle2d(0, 0, 1e300, 1)), 0, 0, 1, 1),
               InvalidAxisAlignedBoundingBoxException);
}

TEST(GriddedBounds, RandomBoxesAreCoveredMinimally) {
  std::mt19937 rng(4242);
  std::uniform_real_distribution<double> coord(-500.0, 500.0);
  std::uniform_int_distribution<std::size_t> stride(1, 17), origin(0, 40);
  for (int i = 0; i < 3000; ++i) {
    const Rectangle2d box(Point2d(coord(rng), coord(rng)), Point2d(coord(rng), coord(rng)));
    const std::size_t sx = stride(rng), sy = stride(rng), ox = origin(rng), oy = origin(rng);
    const GriddedBounds g = expand_bounds_to_grid(AABB2d(box), ox, oy, sx, sy);
    SCOPED_TRACE(::testing::Message() << box << " -> " << g);
    const Rectangle2d b = g.getBounds().getBounds();
    const Rectangle2i c = g.getGrid();
    // The bounds contain the box and are exactly the cells' extent.
    ASSERT_LE(b.getXMin(), box.getXMin());
    ASSERT_LE(b.getYMin(), box.getYMin());
    ASSERT_GE(b.getXMax(), box.getXMax());
    ASSERT_GE(b.getYMax(), box.getYMax());
    ASSERT_EQ(b.getXMin(), double(ox) + c.getXMin() * double(sx));
    ASSERT_EQ(b.getXMax(), double(ox) + c.getXMax() * double(sx));
    ASSERT_EQ(b.getYMin(), double(oy) + c.getYMin() * double(sy));
    ASSERT_EQ(b.getYMax(), double(oy) + c.getYMax() * double(sy));
    // No cell could be dropped on either side.
    ASSERT_GT(b.getXMin() + double(sx), box.getXMin());
    ASSERT_LT(b.getXMax() - double(sx), box.getXMax());
    ASSERT_GT(b.getYMin() + double(sy), box.getYMin());
    ASSERT_LT(b.getYMax() - double(sy), box.getYMax());
  }
}

// Data-space transforms: the normalising transform, picking pixels back into
// render space, clipping a pick line to the axes box, and the main-axes corner.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

namespace cu = gui_objects::camera_utils;
namespace ds = gui_objects::data_space_utils;
using gui_objects::LineSegment3d;
using gui_objects::Matrix4x4d;
using gui_objects::Point2d;
using gui_objects::Point3d;
using gui_objects::Point4d;
using gui_objects::Rectangle2d;
using gui_objects::Rectangle2i;
using gui_objects::Vector3d;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class FakeTransformProxy : public ds::TransformProxy {
 public:
  FakeTransformProxy(bool rx, bool ry, bool rz) : TransformProxy(rx, ry, rz) {}
  double limits[3][2] = {{0, 1}, {0, 1}, {0, 1}};
  bool log[3] = {};
  Vector3d box{1, 1, 1};
  double getRenderLimit(int axis, int which) const override { return limits[axis][which]; }
  bool isLog(int axis) const override { return log[axis]; }
  Vector3d getPlotBoxAspectRatio() const override { return box; }
};

Point3d apply(const Matrix4x4d& m, const Point3d& p) { return transform(m, p).project(); }

}  // namespace

TEST(MakeNormalizingTransform, MapsRenderLimitsOntoThePlotBox) {
  // clang-format off
  // low, high: where the minimum and maximum corners land
  struct Case {
    const char* label; double limits[3][2]; bool log[3], reverse[3]; Vector3d box; Point3d low, high;
  };
  const Case cases[] = {
      {"unit cube", {{0, 1}, {0, 1}, {0, 1}}, {}, {}, {1, 1, 1}, {-0.5, -0.5, -0.5}, {0.5, 0.5, 0.5}},
      {"elongated box", {{0, 10}, {-5, 5}, {100, 200}}, {}, {}, {1, 2, 1}, {-0.25, -0.5, -0.25}, {0.25, 0.5, 0.25}},
      {"reversed x", {{0, 10}, {-5, 5}, {100, 200}}, {}, {true}, {1, 1, 1}, {0.5, -0.5, -0.5}, {-0.5, 0.5, 0.5}},
      // Log axes take log10 coordinates: 1..1000 is 0..3.
      {"log z", {{0, 1}, {0, 1}, {1, 1000}}, {false, false, true}, {}, {1, 1, 1}, {-0.5, -0.5, -0.5}, {0.5, 0.5, 0.5}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FakeTransformProxy proxy(c.reverse[0], c.reverse[1], c.reverse[2]);
    std::copy(&c.limits[0][0], &c.limits[0][0] + 6, &proxy.limits[0][0]);
    std::copy(std::begin(c.log), std::end(c.log), proxy.log);
    proxy.box = c.box;
    const Matrix4x4d m = ds::makeNormalizingTransform(proxy);
    double lo[3], hi[3];
    for (int k = 0; k < 3; ++k) {
      lo[k] = c.log[k] ? std::log10(c.limits[k][0]) : c.limits[k][0];
      hi[k] = c.log[k] ? std::log10(c.limits[k][1]) : c.limits[k][1];
    }
    EXPECT_TRUE(gui_objects::nearlyEqual(apply(m, Point3d(lo[0], lo[1], lo[2])), c.low));
    EXPECT_TRUE(gui_objects::nearlyEqual(apply(m, Point3d(hi[0], hi[1], hi[2])), c.high));
  }
  // Unusable limits or plot box: zero span, decreasing, NaN, infinite, log from 0.
  // clang-format off
  const struct { double lo, hi; bool log; Vector3d box; } bad[] = {
      {2, 2, false, {1, 1, 1}}, {3, 2, false, {1, 1, 1}}, {kNaN, 2, false, {1, 1, 1}}, {0, HUGE_VAL, false, {1, 1, 1}},
      {0, 10, true, {1, 1, 1}}, {0, 1, false, {1, 0, 1}}, {0, 1, false, {1, 1, kNaN}},
  };
  // clang-format on
  for (const auto& b : bad) {
    SCOPED_TRACE(testing::Message() << b.lo << ".." << b.hi << " box " << b.box);
    FakeTransformProxy proxy(false, false, false);
    proxy.limits[1][0] = b.lo;
    proxy.limits[1][1] = b.hi;
    proxy.log[1] = b.log;
    proxy.box = b.box;
    EXPECT_THROW((void)ds::makeNormalizingTransform(proxy), gui_objects::InvalidBoundsException);
  }
}

namespace {

// An axes drawn in perspective into a 640 x 480 pixel rectangle that starts at
// (100, 50) in its window; render space reaches normalised space through a
// per-axis scale and offset.
class FakeScaleInfo : public ds::AxesScaleInfo {
 public:
  FakeScaleInfo() {
    const Matrix4x4d view = cu::makeViewTransform(Point3d(1.5, -2.5, 2), Point3d(0, 0, 0), Vector3d(0, 0, 1));
    const Matrix4x4d projection = Matrix4x4d::createFrustum(-0.4, 0.4, -0.3, 0.3, 1, 10);
    forward = cu::makeViewPortTransform(Rectangle2d(0, 0, 640, 480)) * projection * view;
    Matrix4x4d inverse = forward;
    inverse.invert();
    std::copy(inverse.getPointer(), inverse.getPointer() + 16, inv);
    zRange[0] = HUGE_VAL;
    zRange[1] = -HUGE_VAL;
    for (double x : {-0.5, 0.5})
      for (double y : {-0.5, 0.5})
        for (double z : {-0.5, 0.5}) {
          const double depth = apply(forward, Point3d(x, y, z)).getZ();
          zRange[0] = std::min(zRange[0], depth);
          zRange[1] = std::max(zRange[1], depth);
        }
  }

  Matrix4x4d forward;
  double inv[16];
  double offset[3] = {-0.5, 0.25, 3.0};
  double scale[3] = {0.1, 2.0, -0.5};
  Rectangle2i bounds{100, 50, 740, 530};
  double zRange[2];

  const double* getInvRenderTransform() override { return inv; }
  const double* getRenderOffset() override { return offset; }
  const double* getRenderScale() override { return scale; }
  Rectangle2i getSmallbounds() override { return bounds; }
  void getBoxZRange(double* out) override {
    out[0] = zRange[0];
    out[1] = zRange[1];
  }

  // Render space to window pixels with depth: the forward path.
  Point3d toPixel(const Point3d& d) const {
    const Point3d n(d.getX() * scale[0] + offset[0], d.getY() * scale[1] + offset[1],
                    d.getZ() * scale[2] + offset[2]);
    const Point3d local = apply(forward, n);
    return Point3d(local.getX() + bounds.getXMin(), local.getY() + bounds.getYMin(), local.getZ());
  }
};

// A render-space point inside the box that normalises into [-0.5, 0.5]^3.
Point3d randomInsideBox(std::mt19937_64& rng, const FakeScaleInfo& info) {
  std::uniform_real_distribution<double> u(-0.5, 0.5);
  return Point3d((u(rng) - info.offset[0]) / info.scale[0], (u(rng) - info.offset[1]) / info.scale[1],
                 (u(rng) - info.offset[2]) / info.scale[2]);
}

}  // namespace

// A pixel with depth maps back onto the render-space point; a pixel without
// depth gives a pick line from the box's near depth to its far depth, so the
// point lies on it, between its ends.
TEST(PixelToData, RoundTripsTheForwardTransform) {
  FakeScaleInfo info;
  std::mt19937_64 rng(11);
  for (int i = 0; i < 2000; ++i) {
    const Point3d d = randomInsideBox(rng, info);
    const Point3d px = info.toPixel(d);
    SCOPED_TRACE(testing::Message() << "data " << d << " pixel " << px);
    const Point3d back = ds::pixelToData(info, px);
    ASSERT_NEAR(back.getX(), d.getX(), 1e-9 * 10);  // x spans 10 units (scale 0.1)
    ASSERT_NEAR(back.getY(), d.getY(), 1e-9);
    ASSERT_NEAR(back.getZ(), d.getZ(), 1e-9 * 2);

    const LineSegment3d line = ds::pixelToData(info, Point2d(px.getX(), px.getY()));
    ASSERT_TRUE(line.isValid());
    const Vector3d along = line.getEnd() - line.getStart();
    const double t = (d - line.getStart()).dot(along) / along.dot(along);
    ASSERT_GE(t, -1e-9);
    ASSERT_LE(t, 1 + 1e-9);
    ASSERT_LT(((line.getStart() + along * t) - d).length(), 1e-8);
    ASSERT_NEAR(ds::pixelToData(info, Point3d(px.getX(), px.getY(), info.zRange[0])).getX(),
                line.getStart().getX(), 1e-12);
  }
}

TEST(PixelToData, BeyondTheEyeIsRejected) {
  FakeScaleInfo info;
  // With near 1 and far 10, pixel depths of 10/9 and more lie at or beyond
  // infinity: their homogeneous w is not positive.
  EXPECT_THROW((void)ds::pixelToData(info, Point3d(400, 300, 2.0)), gui_objects::InvalidWException);
  info.zRange[1] = 2.0;
  EXPECT_FALSE(ds::pixelToData(info, Point2d(400, 300)).isValid());
}

namespace {

class FakeBounds : public ds::AxesBounds {
 public:
  double limits[3][2] = {{0, 1}, {0, 1}, {0, 1}};
  bool log[3] = {};
  Point3d position{-3, -4, 5};
  Point3d target{0.5, 0.5, 0.5};
  double getRenderLimit(int axis, int which) override { return limits[axis][which]; }
  bool isLog(int axis) override { return log[axis]; }
  Point3d getCameraPosition() override { return position; }
  Point3d getCameraTarget() override { return target; }
};

}  // namespace

TEST(IntersectWithAxesBounds, HandPickedSegments) {
  // clang-format off
  struct Case {
    const char* label; Point3d a, b; double limits[3][2]; bool log[3], valid; Point3d start, end;
  };
  const Case cases[] = {
      {"runs along an edge", {-1, 1, 1}, {2, 1, 1}, {{0, 1}, {0, 1}, {0, 1}}, {}, true, {0, 1, 1}, {1, 1, 1}},
      {"touches an edge", {-1, 0, .5}, {1, 2, .5}, {{0, 1}, {0, 1}, {0, 1}}, {}, true, {0, 1, .5}, {0, 1, .5}},
      {"a point inside", {.5, .5, .5}, {.5, .5, .5}, {{0, 1}, {0, 1}, {0, 1}}, {}, true, {.5, .5, .5}, {.5, .5, .5}},
      {"limits high to low", {-1, .5, .5}, {2, .5, .5}, {{1, 0}, {0, 1}, {0, 1}}, {}, true, {0, .5, .5}, {1, .5, .5}},
      {"log x: 1..100 is 0..2", {-1, .5, .5}, {3, .5, .5}, {{1, 100}, {0, 1}, {0, 1}}, {true}, true, {0, .5, .5},
       {2, .5, .5}},
      {"log axis with a zero limit", {.5, .5, .5}, {.6, .5, .5}, {{0, 1}, {0, 1}, {0, 1}}, {false, true}, false, {},
       {}},
      {"NaN limit", {.5, .5, .5}, {.6, .5, .5}, {{0, 1}, {0, kNaN}, {0, 1}}, {}, false, {}, {}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FakeBounds bounds;
    std::copy(&c.limits[0][0], &c.limits[0][0] + 6, &bounds.limits[0][0]);
    std::copy(std::begin(c.log), std::end(c.log), bounds.log);
    const LineSegment3d got = ds::intersectWithAxesBounds(LineSegment3d(c.a, c.b), bounds);
    ASSERT_EQ(got.isValid(), c.valid);
    if (!c.valid) continue;
    EXPECT_TRUE(gui_objects::nearlyEqual(got.getStart(), c.start)) << got.getStart();
    EXPECT_TRUE(gui_objects::nearlyEqual(got.getEnd(), c.end)) << got.getEnd();
  }
  FakeBounds bounds;
  EXPECT_FALSE(ds::intersectWithAxesBounds(LineSegment3d(), bounds).isValid());
}

TEST(IntersectWithAxesBounds, AgreesWithDenseSampling) {
  // Reference: the first and last of many even steps along the segment inside the box.
  std::mt19937_64 rng(2718);
  std::uniform_real_distribution<double> coord(-2.0, 3.0);
  const int steps = 4000;
  FakeBounds bounds;
  bounds.limits[0][1] = 2.0;
  bounds.limits[2][0] = -0.5;
  const auto inside = [&](const Point3d& p) {
    return p.getX() >= 0 && p.getX() <= 2 && p.getY() >= 0 && p.getY() <= 1 && p.getZ() >= -0.5 &&
           p.getZ() <= 1;
  };
  int hits = 0;
  for (int i = 0; i < 3000; ++i) {
    const Point3d a(coord(rng), coord(rng), coord(rng));
    const Point3d b(coord(rng), coord(rng), coord(rng));
    const LineSegment3d seg(a, b);
    SCOPED_TRACE(testing::Message() << a << " -> " << b);
    int first = -1, last = -1;
    for (int s = 0; s <= steps; ++s) {
      if (inside(seg.evaluate(static_cast<double>(s) / steps))) {
        if (first < 0) first = s;
        last = s;
      }
    }
    const LineSegment3d got = ds::intersectWithAxesBounds(seg, bounds);
    const double length = seg.getLength();
    if (first < 0) {
      // Nothing sampled inside: at most a sliver between two samples.
      ASSERT_TRUE(!got.isValid() || got.getLength() <= length / steps);
      continue;
    }
    ++hits;
    ASSERT_TRUE(got.isValid());
    ASSERT_TRUE(inside(got.getStart()) && inside(got.getEnd()));
    const double t0 = (got.getStart() - a).length() / length;
    const double t1 = (got.getEnd() - a).length() / length;
    ASSERT_LE(t0, static_cast<double>(first) / steps + 1e-12);
    ASSERT_GE(t0, static_cast<double>(first - 1) / steps - 1e-12);
    ASSERT_GE(t1, static_cast<double>(last) / steps - 1e-12);
    ASSERT_LE(t1, static_cast<double>(last + 1) / steps + 1e-12);
  }
  EXPECT_GT(hits, 300);
}

TEST(ComputeMainAxesIntercepts, FollowsTheCamera) {
  // clang-format off
  struct Case { const char* label; Point3d position; double limits[3][2]; Point3d expected; };
  const Case cases[] = {
      {"default view: front left, from above", {-3, -4, 5}, {{0, 1}, {0, 2}, {0, 3}}, {0, 0, 0}},
      {"from behind, right and below", {4, 5, -6}, {{0, 1}, {0, 2}, {0, 3}}, {1, 2, 3}},
      {"from the right, above", {4, -1, 2}, {{0, 1}, {0, 2}, {0, 3}}, {1, 0, 0}},
      {"straight from above: level along x and y", {0.5, 0.5, 9}, {{0, 1}, {0, 2}, {0, 3}}, {0, 0, 0}},
      {"limits given high to low", {4, 5, -6}, {{1, 0}, {2, 0}, {3, 0}}, {1, 2, 3}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FakeBounds bounds;
    bounds.position = c.position;
    std::copy(&c.limits[0][0], &c.limits[0][0] + 6, &bounds.limits[0][0]);
    EXPECT_EQ(ds::computeMainAxesIntercepts(bounds), c.expected);
  }
}

// Clipping fed what no projection matrix should produce: coordinates near the
// ends of the double range, subnormal w, NaN and infinities. Output is either
// inside the view volume and finite, or absent.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "qvgui/clipping.h"

using namespace gui_objects;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

VertexVector make(const std::vector<Point4d>& pts, const Plane3d* const* planes = nullptr) {
  return VertexVector(pts.size(), pts.data(), planes);
}

// Every projected coordinate finite and in [-1, 1], every 1/w finite.
::testing::AssertionResult insideVolume(const VertexVector& v) {
  if (v.getSize() == 0) return ::testing::AssertionSuccess();
  const Point3d* p = v.getProjectedVertices();
  const double* r = v.getInverseWCoords();
  if (p == nullptr || r == nullptr) return ::testing::AssertionFailure() << "not projected";
  for (std::size_t i = 0; i < v.getSize(); ++i) {
    for (double c : {p[i].getX(), p[i].getY(), p[i].getZ()}) {
      if (!(std::fabs(c) <= 1)) return ::testing::AssertionFailure() << "vertex " << i << " coordinate " << c;
    }
    if (!std::isfinite(r[i])) return ::testing::AssertionFailure() << "vertex " << i << " 1/w " << r[i];
  }
  return ::testing::AssertionSuccess();
}

Point4d scaled(const Point4d& p, double s) {
  return Point4d(p.getX() * s, p.getY() * s, p.getZ() * s, p.getW() * s);
}

// Homogeneous coordinates scaled by a power of two name the same points, so
// clipping them must give the same projected polygon. At 2^1021 the crossing
// sums overflow and the interpolation differences too: the robust paths are
// checked against the ordinary one; at 2^-1070 only the volume is checked
// (the subnormals keep a few bits).
TEST(HostileClipping, ScaledPolygonsClipAlikeAndStayInside) {
  std::mt19937_64 rng(2026);
  std::uniform_real_distribution<double> coord(-3, 3), weight(0.2, 3);
  std::uniform_int_distribution<int> corners(3, 7);
  const Plane3d tilted(Vector3d(1, -1, 0.5), 0.1);
  const Plane3d* user[6] = {&tilted, nullptr, nullptr, nullptr, nullptr, nullptr};
  int compared = 0, agreeing = 0;
  for (int i = 0; i < 20000; ++i) {
    std::vector<Point4d> pts;
    for (int k = corners(rng); k > 0; --k) pts.emplace_back(coord(rng), coord(rng), coord(rng), weight(rng));
    const Plane3d* const* planes = i % 3 == 0 ? user : nullptr;
    VertexVector plain = make(pts, planes);
    const VertexVector base = clip_polygon(plain, planes);
    ASSERT_TRUE(insideVolume(base));
    for (int e : {1021, 1022, -1070}) {
      std::vector<Point4d> big;
      for (const Point4d& p : pts) big.push_back(scaled(p, std::ldexp(1.0, e)));
      VertexVector v = make(big, planes);
      const VertexVector out = clip_polygon(v, planes);
      SCOPED_TRACE(::testing::Message() << "polygon " << i << " scaled by 2^" << e);
      ASSERT_TRUE(insideVolume(out));
      if (e < 0 || planes != nullptr) continue;
      ++compared;
      if (out.getSize() != base.getSize()) continue;
      bool same = true;
      for (std::size_t k = 0; k < out.getSize(); ++k) {
        const Point3d a = out.getProjectedVertices()[k], b = base.getProjectedVertices()[k];
        same = same && std::fabs(a.getX() - b.getX()) < 1e-9 && std::fabs(a.getY() - b.getY()) < 1e-9 &&
               std::fabs(a.getZ() - b.getZ()) < 1e-9;
      }
      agreeing += same ? 1 : 0;
    }
  }
  EXPECT_GE(agreeing, compared - compared / 1000) << "of " << compared;
}

// Lines and strips over the extremes of the finite range, mixed with ordinary
// and subnormal values.
TEST(HostileClipping, ExtremeLinesAndStripsStayInside) {
  std::mt19937_64 rng(14);
  const double magnitudes[] = {1, 1e-310, 4.9e-324, 1e300, 1e308, std::numeric_limits<double>::max()};
  std::uniform_int_distribution<int> pick(0, 5), length(2, 6);
  std::uniform_real_distribution<double> unit(-1, 1);
  const auto value = [&] { return unit(rng) * magnitudes[pick(rng)]; };
  for (int i = 0; i < 20000; ++i) {
    std::vector<Point4d> pts;
    for (int k = length(rng); k > 0; --k) pts.emplace_back(value(), value(), value(), std::fabs(value()));
    SCOPED_TRACE(::testing::Message() << "strip " << i);
    VertexVector line = make(pts);
    ASSERT_TRUE(insideVolume(clip_line(line, nullptr)));
    VertexVector strip = make(pts);
    for (const VertexVector& run : clip_linestrip(strip, nullptr)) ASSERT_TRUE(insideVolume(run));
    VertexVector polygon = make(pts);
    ASSERT_TRUE(insideVolume(clip_polygon(polygon, nullptr)));
  }
}

// One rule for every primitive: a vertex with a NaN or infinite coordinate
// and everything that ends at it are invisible.
TEST(HostileClipping, NonFiniteVerticesAreNeverVisible) {
  struct Case {
    const char* label;
    Point4d bad;
  };
  const Case cases[] = {
      {"NaN x", {kNaN, 0, 0, 1}},   {"NaN w", {0, 0, 0, kNaN}},  {"+Inf x", {kInf, 0, 0, 1}},
      {"-Inf z", {0, 0, -kInf, 1}}, {"+Inf w", {0, 0, 0, kInf}},
  };
  const Point4d a(0, 0, 0, 1), b(0.5, 0, 0, 1), c(0, 0.5, 0, 1), d(-0.5, 0, 0, 1), far(3, 0, 0, 1);
  for (const Case& k : cases) {
    SCOPED_TRACE(k.label);
    VertexVector polygon = make({a, b, k.bad, c});
    EXPECT_EQ(clip_polygon(polygon, nullptr).getSize(), 0u);
    VertexVector straddling = make({a, far, k.bad});
    EXPECT_EQ(clip_polygon(straddling, nullptr).getSize(), 0u);
    for (const auto& ends :
         {std::vector<Point4d>{a, k.bad}, std::vector<Point4d>{k.bad, b}, std::vector<Point4d>{far, k.bad}}) {
      VertexVector line = make(ends);
      EXPECT_EQ(clip_line(line, nullptr).getSize(), 0u);
    }
    // a-b visible, b-bad-c dropped, c-d visible: two runs of two.
    VertexVector strip = make({a, b, k.bad, c, d});
    const std::vector<VertexVector> runs = clip_linestrip(strip, nullptr);
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_EQ(runs[0].getSize(), 2u);
    EXPECT_EQ(runs[1].getSize(), 2u);
    for (const VertexVector& run : runs) EXPECT_TRUE(insideVolume(run));
    VertexVector crossing = make({far, b, k.bad, far, c});
    for (const VertexVector& run : clip_linestrip(crossing, nullptr)) EXPECT_TRUE(insideVolume(run));
  }
}

// A subnormal w: 1/w overflows, so projecting by multiplication alone would
// give infinities and 0 * Inf.
TEST(HostileClipping, SubnormalWProjectsInsideTheVolume) {
  const double w = 1e-310;
  VertexVector inside = make({{0, 0, 0, w}, {w, 0, 0, w}, {0, -w, w / 2, w}});
  const VertexVector out = clip_polygon(inside, nullptr);
  ASSERT_EQ(out.getSize(), 3u);
  EXPECT_TRUE(insideVolume(out));
  EXPECT_EQ(out.getProjectedVertices()[1].getX(), 1.0);
  EXPECT_NEAR(out.getProjectedVertices()[2].getZ(), 0.5, 1e-9);
  // Crossing values that overflow in the table's sums.
  const double m = std::numeric_limits<double>::max();
  EXPECT_NEAR(calculate_line_t(Point4d(m, 0, 0, m / 2), Point4d(-m, 0, 0, m), 1, nullptr), 0.2, 1e-15);
  const double t = calculate_line_t(Point4d(-m, 0, 0, m / 4), Point4d(m, 0, 0, m), 0, nullptr);
  EXPECT_GE(t, 0.0);
  EXPECT_LE(t, 1.0);
}

}  // namespace

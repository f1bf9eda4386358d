// Hit tests: polygons against a brute-force ray cast, the grown and inverted
// bounds, circle and oval boundaries, and clicks on markers.
#include <gtest/gtest.h>

#include <vector>

#include "qvgui/window.h"
#include "raster_poly_test_support.h"

namespace {

using gui_objects::test::WindowMethodRecorder;
using raster_test::kMissing;
using raster_test::Poly;

TEST(RasterHit, BoundsGrowByHalfTheLineWidthAndInvertTopAndBottom) {
  Poly p{{{2, 3}, {10, -4}, {kMissing, 20}}};  // missing points still count here
  struct Case {
    int linewidth;
    qvrect want;  // top, left, bottom, right
  };
  const Case cases[] = {{0, {21, -32769, -5, 11}},
                        {1, {21, -32769, -5, 11}},
                        {2, {22, -32770, -6, 12}},
                        {3, {22, -32770, -6, 12}},
                        {4, {23, -32771, -7, 13}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.linewidth);
    Polygon2 v = p.view();
    qvrect r;
    geoFindPolyBounds(&v, c.linewidth, &r);
    EXPECT_TRUE(guiEqualRect(&r, &c.want)) << r.top << " " << r.left << " " << r.bottom << " " << r.right;
  }
}

// Classic ray casting from a point nudged right and down by less than any
// crossing can differ, which settles points on edges and vertices on the
// ray the same way as the half-open rule; plus the box rules.
bool referenceInPolygon(qvpoint32 pt, int linewidth, const std::vector<qvpoint32>& ring) {
  int minX = 1 << 30, maxX = -(1 << 30), minY = 1 << 30, maxY = -(1 << 30);
  for (const qvpoint32& p : ring) {
    minX = std::min(minX, p.x), maxX = std::max(maxX, p.x), minY = std::min(minY, p.y),
    maxY = std::max(maxY, p.y);
  }
  const int grow = linewidth / 2 + 1;
  if (pt.x < minX - grow || pt.x > maxX + grow || pt.y < minY - grow || pt.y > maxY + grow) return false;
  if (maxX - minX + 2 * grow < 5 || maxY - minY + 2 * grow < 5) return true;
  const double qx = pt.x + 1e-5, qy = pt.y + 1e-9;
  bool inside = false;
  for (std::size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
    const qvpoint32 a = ring[i], b = ring[j];
    if ((a.y > qy) == (b.y > qy)) continue;
    if (a.x + (qy - a.y) * (b.x - a.x) / (b.y - a.y) > qx) inside = !inside;
  }
  return inside;
}

TEST(RasterHit, PolygonMatchesBruteForceRayCast) {
  std::mt19937 rng(11);
  std::uniform_int_distribution<int> around(-10, 70), width(0, 6);
  for (int trial = 0; trial < 2000; ++trial) {
    Poly p = raster_test::randomPolygon(rng, 3 + trial % 10, 0, trial % 7 == 0 ? 3 : 60, trial % 2 == 0);
    Polygon2 v = p.view();
    const int lw = width(rng);
    for (int k = 0; k < 50; ++k) {
      // Vertices and their rows are where off-by-ones live: aim there often.
      const qvpoint32& corner = p.pts[static_cast<std::size_t>(k) % p.pts.size()];
      const qvpoint32 pt =
          k % 3 == 0 ? qvpoint32{around(rng), corner.y} : qvpoint32{around(rng), around(rng)};
      ASSERT_EQ(geoPtInPolygon(pt, lw, &v), referenceInPolygon(pt, lw, p.pts))
          << "trial " << trial << " point " << pt << " linewidth " << lw;
    }
  }
}

// Random polygons have no missing vertices: a gap in the ring is skipped.
TEST(RasterHit, PolygonSkipsMissingVertices) {
  Poly holed{{{0, 0}, {kMissing, 5}, {10, 0}, {10, 10}, {0, 10}}};
  Polygon2 v = holed.view();
  EXPECT_TRUE(geoPtInPolygon({5, 5}, 1, &v));
}

TEST(RasterHit, CircleIncludesItsBoundaryTheOvalDoesNot) {
  const qvpoint32 c{10, 10};
  EXPECT_TRUE(geoPtInCircle({13, 14}, c, 5));
  EXPECT_FALSE(geoPtInCircle({14, 14}, c, 5));
  EXPECT_FALSE(geoPtInOval({13, 10}, c, 3, 2));
  EXPECT_TRUE(geoPtInOval({12, 10}, c, 3, 2));
  EXPECT_FALSE(geoPtInOval({10, 12}, c, 3, 2));
  EXPECT_TRUE(geoPtInOval({10, 11}, c, 3, 2));
}

TEST(RasterHit, ClicksOnMarkers) {
  WindowMethodRecorder rec;
  rec.setResult("PixelsPerPoint", 2.0);  // size 6 points: m = 12, half = 6
  const qvpoint32 c{50, 50};
  struct Case {
    const char* label;
    int code;
    qvpoint32 pt;
    bool hit;
  };
  const Case cases[] = {
      {"plus: one pixel beside the bar", 0, {51, 55}, true},
      {"plus: two pixels beside the bar", 0, {52, 55}, false},
      {"plus: bar end padded", 0, {50, 57}, true},
      {"plus: beyond the reach", 0, {50, 58}, false},
      {"circle: radius half + width + 1", 1, {55, 55}, true},
      {"circle: outside", 1, {56, 56}, false},
      {"point: radius m / 6 + width + 1", 3, {52, 52}, true},
      {"point: outside", 3, {53, 53}, false},
      {"asterisk: on the diagonal", 2, {53, 53}, true},
      {"asterisk: between the strokes", 2, {54, 57}, false},
      {"cross: on the diagonal", 4, {47, 53}, true},
      {"cross: on a bar only", 4, {50, 56}, false},
      {"square: corner within reach", 5, {57, 57}, true},
      {"triangle below: just under its base", 7, {50, 43}, true},
      {"star: centre", 11, {50, 50}, true},
      {"no such code", 13, {50, 50}, false},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(k.label);
    EXPECT_EQ(geoIsPtInMarkerTerritory(rec.window(), k.pt, k.code, 6, 1, c), k.hit);
  }
  // Without a window the screen's 1 pixel per point applies: m = 6, reach 4.
  EXPECT_TRUE(geoIsPtInMarkerTerritory(nullptr, {54, 50}, 1, 6, 1, c));
  EXPECT_FALSE(geoIsPtInMarkerTerritory(nullptr, {55, 50}, 1, 6, 1, c));
}

}  // namespace

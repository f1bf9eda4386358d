// Interpolated outlines and the thinned Bresenham point list: exact small
// cases, the skip rules, and Bresenham properties on random lines.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "raster_poly_test_support.h"

namespace {

using raster_test::kMissing;
using raster_test::Pixmap;
using raster_test::Poly;

TEST(RasterOutline, SmallOutlinesAndSkipRules) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  struct Case {
    const char* label;
    Poly poly;
    std::vector<double> values;
    const char* picture;
  };
  const Case cases[] = {
      {"x-major line, both directions", {{{0, 0}, {4, 2}}}, {0, 40}, "#....\n.##..\n...##\n"},
      {"y-major line", {{{0, 0}, {1, 3}}}, {0, 30}, "#.\n#.\n.#\n.#\n"},
      {"a missing value skips both edges at its vertex",
       {{{0, 0}, {3, 0}, {3, 3}, {0, 3}}},
       {10, -32768.0, 10, 10},
       "#...\n#...\n#...\n####\n"},
      {"NaN is drawn", {{{0, 0}, {3, 0}}}, {nan, 90}, "####\n"},
      {"a missing x skips its edges",
       {{{0, 0}, {3, 0}, {kMissing, 3}, {0, 3}}},
       {1, 1, 1, 1},
       "####\n#...\n#...\n#...\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Poly p = c.poly;
    Polygon2 v = p.view();
    Pixmap pm(v);
    DrawInterpPoly(&v, c.values.data(), &pm.box, pm.pix, pm.mask);
    EXPECT_EQ(pm.picture(), c.picture);
  }
}

TEST(RasterOutline, EdgesAreBresenhamLinesWithLinearValues) {
  std::mt19937 rng(99);
  std::uniform_int_distribution<int> coord(-30, 30);
  std::uniform_real_distribution<double> value(0.0, 255.0);
  for (int trial = 0; trial < 2000; ++trial) {
    Poly p{{{coord(rng), coord(rng)}, {coord(rng), coord(rng)}}};  // one edge, drawn both ways
    const std::vector<double> values = {value(rng), value(rng)};
    Polygon2 v = p.view();
    Pixmap pm(v);
    DrawInterpPoly(&v, values.data(), &pm.box, pm.pix, pm.mask);
    const qvpoint32 a = p.pts[0], b = p.pts[1];
    const bool yMajor = std::abs(b.y - a.y) >= std::abs(b.x - a.x);
    const int n = std::max(std::abs(b.x - a.x), std::abs(b.y - a.y));
    int count = 0;
    for (int y = pm.box.top; y <= pm.box.bottom; ++y) {
      for (int x = pm.box.left; x <= pm.box.right; ++x) {
        if (!pm.written(x, y)) continue;
        ++count;
        // Within half a pixel of the ideal line across its minor axis, and the
        // value where the line's parameter puts it.
        const double t = n == 0   ? 0.0
                         : yMajor ? double(y - a.y) / (b.y - a.y)
                                  : double(x - a.x) / (b.x - a.x);
        const double minorIdeal = yMajor ? a.x + t * (b.x - a.x) : a.y + t * (b.y - a.y);
        ASSERT_LE(std::abs((yMajor ? x : y) - minorIdeal), 0.5 + 1e-9) << trial;
        // A single point is drawn twice: the later edge wins.
        const double want = n == 0 ? values[1] : values[0] + t * (values[1] - values[0]);
        ASSERT_NEAR(pm.value(x, y), want, 1.0) << trial;
      }
    }
    ASSERT_EQ(count, n + 1) << trial << "\n" << pm.picture();
  }
}

// ---- Thinned line -----------------------------------------------------------------------

std::vector<qvpoint32> bresenham(int x0, int y0, int x1, int y1, int limit) {
  const Polygon2* p =
      uiBresenhamPolygon2(qvpoint{static_cast<std::int16_t>(y0), static_cast<std::int16_t>(x0)},
                          qvpoint{static_cast<std::int16_t>(y1), static_cast<std::int16_t>(x1)}, limit);
  return std::vector<qvpoint32>(p->points, p->points + p->count);
}

TEST(RasterOutline, ThinnedLineExamples) {
  using V = std::vector<qvpoint32>;
  EXPECT_EQ(bresenham(0, 0, 100, 0, 4), (V{{20, 0}, {40, 0}, {60, 0}, {80, 0}}));
  EXPECT_EQ(bresenham(0, 0, 5, 0, 10), (V{{1, 0}, {2, 0}, {3, 0}, {4, 0}}));
  EXPECT_EQ(bresenham(0, 0, 0, -3, 10), (V{{0, -1}, {0, -2}}));
  EXPECT_EQ(bresenham(0, 0, 4, 2, 10), (V{{1, 1}, {2, 1}, {3, 2}}));
  EXPECT_EQ(bresenham(3, 3, 3, 3, 5), V{});
  EXPECT_EQ(bresenham(0, 0, 9, 0, 0), V{}) << "limit 0 keeps nothing";
  EXPECT_EQ(bresenham(0, 0, 90, 0, 100).size(), 15u) << "the static storage bounds the limit";
}

TEST(RasterOutline, ThinnedLinesKeepLimitPointsOnTheLine) {
  std::mt19937 rng(5);
  std::uniform_int_distribution<int> coord(-200, 200), lim(0, 15);
  for (int trial = 0; trial < 3000; ++trial) {
    const int x0 = coord(rng), y0 = coord(rng), x1 = coord(rng), y1 = coord(rng), limit = lim(rng);
    const std::vector<qvpoint32> pts = bresenham(x0, y0, x1, y1, limit);
    const int n = std::max(std::abs(x1 - x0), std::abs(y1 - y0));
    ASSERT_EQ(static_cast<int>(pts.size()), n == 0 ? 0 : n > limit ? limit : n - 1);
    const bool yMajor = std::abs(y1 - y0) >= std::abs(x1 - x0);
    int previous = 0, minGap = 1 << 20, maxGap = 0;
    for (const qvpoint32& q : pts) {
      const int major = yMajor ? std::abs(q.y - y0) : std::abs(q.x - x0);
      ASSERT_GT(major, previous) << "strictly between the ends, in order";
      ASSERT_LT(major, n);
      const double t = double(major) / n;
      const double minorIdeal = yMajor ? x0 + t * (x1 - x0) : y0 + t * (y1 - y0);
      ASSERT_LE(std::abs((yMajor ? q.x : q.y) - minorIdeal), 0.5 + 1e-9);
      // Evenly spread: successive gaps differ by at most one step.
      const int gap = major - previous;
      if (n > limit && &q != pts.data()) {
        minGap = std::min(minGap, gap);
        maxGap = std::max(maxGap, gap);
      }
      previous = major;
    }
    ASSERT_LE(maxGap - minGap, 1) << trial;
  }
}

}  // namespace

// Texture warp: the unsigned clamps, the colour limit, texel placement on an
// identity mapping, missing points; and the image sub-matrix resampler.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "raster_poly_test_support.h"

namespace {

using raster_test::kMissing;
using raster_test::Pixmap;
using raster_test::Poly;

// Texture of rows x columns with texel (r, c) = f(r, c).
template <typename F>
std::vector<int> texture(int rows, int columns, F f) {
  std::vector<int> t;
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < columns; ++c) t.push_back(f(r, c));
  }
  return t;
}

TEST(RasterWarp, ClampsAndColourLimit) {
  Poly tri{{{0, 0}, {6, 0}, {0, 6}}};
  const std::vector<int> tex = texture(3, 4, [](int r, int c) { return 10 * r + c; });
  struct Case {
    const char* label;
    double u, v;
    int ncolours;
    int expected;  // every written pixel; -1: nothing written
  };
  const Case cases[] = {
      {"inside", 1.2, 2.7, 64, 21},
      {"-0.5 texel lands on the last column", -0.5, 0.0, 64, 3},
      {"negative v lands on the last row", 0.0, -0.25, 64, 20},
      {"far right clamps to the last column", 50.0, 1.0, 64, 13},
      {"texel not below ncolours", 1.0, 2.0, 12, 11},
      {"only the low byte of ncolours counts", 1.0, 1.0, 256 + 5, 4},
      {"no colours draws nothing", 1.0, 1.0, 0, -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Polygon2 v = tri.view();
    Pixmap pm(v);
    const double coords[3][2] = {{c.u, c.v}, {c.u, c.v}, {c.u, c.v}};
    WarpTriangle(&v, &pm.box, nullptr, 3, 4, coords, tex.data(), c.ncolours, pm.pix, pm.mask);
    int written = 0;
    for (int y = 0; y <= 6; ++y) {
      for (int x = 0; x <= 6; ++x) {
        if (!pm.written(x, y)) continue;
        ++written;
        ASSERT_EQ(pm.value(x, y), c.expected) << x << ", " << y;
      }
    }
    EXPECT_EQ(written > 0, c.expected >= 0);
  }
}

TEST(RasterWarp, IdentityMappingPutsEachTexelUnderItsPixel) {
  // Texture coordinates equal to the pixel coordinates: the texel under a
  // pixel is the pixel's own column and row, to within the fixed-point steps.
  const int n = 40;
  const std::vector<int> cols = texture(n + 1, n + 1, [](int, int c) { return c; });
  const std::vector<int> rows = texture(n + 1, n + 1, [](int r, int) { return r; });
  std::mt19937 rng(3);
  for (int trial = 0; trial < 200; ++trial) {
    Poly tri = raster_test::randomPolygon(rng, 3, 0, n, false);
    const double coords[3][2] = {{tri.pts[0].x + 0.5, tri.pts[0].y + 0.5},
                                 {tri.pts[1].x + 0.5, tri.pts[1].y + 0.5},
                                 {tri.pts[2].x + 0.5, tri.pts[2].y + 0.5}};
    Polygon2 v = tri.view();
    Pixmap byCol(v), byRow(v), flat(v);
    WarpTriangle(&v, &byCol.box, nullptr, n + 1, n + 1, coords, cols.data(), 255, byCol.pix, byCol.mask);
    WarpTriangle(&v, &byRow.box, nullptr, n + 1, n + 1, coords, rows.data(), 255, byRow.pix, byRow.mask);
    const std::vector<double> ones(3, 1.0);
    FillInterpPoly(&v, ones.data(), &flat.box, flat.pix, flat.mask);
    for (int y = flat.box.top; y <= flat.box.bottom; ++y) {
      for (int x = flat.box.left; x <= flat.box.right; ++x) {
        // The warp's border rule differs from the fill's, but it covers the interior.
        if (flat.written(x, y) && !raster_test::nearAnEdge(tri.pts, x, y)) {
          ASSERT_TRUE(byCol.written(x, y)) << trial << "\n" << byCol.picture();
        }
        if (!byCol.written(x, y)) continue;
        ASSERT_NEAR(byCol.value(x, y), x, 1) << trial;
        ASSERT_NEAR(byRow.value(x, y), y, 1) << trial;
      }
    }
  }
}

TEST(RasterWarp, EdgesWithAMissingPointAreLeftOut) {
  Poly tri{{{0, 0}, {4, 0}, {kMissing, 4}}};  // only the top edge remains
  const std::vector<int> tex(1, 9);
  const double coords[3][2] = {{0, 0}, {0, 0}, {0, 0}};
  Polygon2 v = tri.view();
  Pixmap pm(v);
  WarpTriangle(&v, &pm.box, nullptr, 1, 1, coords, tex.data(), 16, pm.pix, pm.mask);
  EXPECT_EQ(pm.picture(), "#####\n.....\n.....\n.....\n.....\n");
}

// ---- Sub-matrix resampling ----------------------------------------------------------

TEST(RasterSubMatrix, ResamplesIntoTheDestination) {
  // 3 x 4 image, column-major, value 10 * row + column; a NaN at (2, 3).
  std::vector<double> image(12);
  for (int c = 0; c < 4; ++c) {
    for (int r = 0; r < 3; ++r) image[c * 3 + r] = 10 * r + c;
  }
  image[3 * 3 + 2] = std::numeric_limits<double>::quiet_NaN();
  Poly boxPoly{{{0, 0}, {7, 3}}};
  struct Case {
    const char* label;
    int firstRow, firstColumn, subRows, subColumns;
    qvrect dest;
    bool bilinear, ok;
    const char* row0;  // values of bounds row 0 as text, '.' unwritten
  };
  const Case cases[] = {
      {"nearest, doubled width", 0, 1, 2, 2, {0, 0, 1, 3}, false, true, "1 1 2 2 . . . ."},
      {"bilinear, doubled width", 0, 0, 1, 2, {0, 0, 0, 3}, true, true, "0 0 0 1 . . . ."},
      {"clipped to the bounds", 0, 0, 1, 4, {0, 4, 0, 11}, false, true, ". . . . 0 0 1 1"},
      {"NaN stays unwritten", 2, 2, 1, 2, {0, 0, 0, 1}, false, true, "22 . . . . . . ."},
      {"outside the image", 2, 3, 2, 1, {0, 0, 0, 1}, false, false, ". . . . . . . ."},
      {"empty", 0, 0, 0, 1, {0, 0, 0, 1}, false, false, ". . . . . . . ."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Polygon2 v = boxPoly.view();
    Pixmap pm(v);
    EXPECT_EQ(
        ExtractSubMatrixAndInterpolateIntoPixmap(image.data(), 3, 4, c.firstRow, c.firstColumn, c.subRows,
                                                 c.subColumns, &c.dest, c.bilinear, &pm.box, pm.pix, pm.mask),
        c.ok);
    std::string row0;
    for (int x = 0; x <= 7; ++x) {
      row0 += (x ? " " : "") + (pm.written(x, 0) ? std::to_string(pm.value(x, 0)) : std::string("."));
    }
    EXPECT_EQ(row0, c.row0);
  }
}

}  // namespace

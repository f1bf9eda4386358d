// Interpolating fills: exact pixels of small shapes, a slow pixel-centre
// reference on random polygons, value bounds, missing points, the pixmap
// allocation and its failure, and the true-colour and bilinear variants.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "host_test_support.h"
#include "raster_poly_test_support.h"

namespace {

using raster_test::kMissing;
using raster_test::Pixmap;
using raster_test::Poly;

std::string fill(Poly p, std::vector<double> values = {}) {
  values.resize(p.pts.size(), 100.0);
  Polygon2 v = p.view();
  Pixmap pm(v);
  FillInterpPoly(&v, values.data(), &pm.box, pm.pix, pm.mask);
  return pm.picture();
}

TEST(RasterFill, SmallShapesCoverExactPixels) {
  struct Case {
    const char* label;
    Poly poly;
    const char* picture;
  };
  const Case cases[] = {
      {"the lowest row belongs to no span",
       {{{0, 0}, {4, 0}, {0, 4}}},
       "#####\n####.\n###..\n##...\n.....\n"},
      {"square", {{{0, 0}, {3, 0}, {3, 3}, {0, 3}}}, "####\n####\n####\n....\n"},
      {"diamond: a peak fills one pixel",
       {{{2, 0}, {4, 2}, {2, 4}, {0, 2}}},
       "..#..\n.###.\n#####\n.###.\n.....\n"},
      {"shallow edge: first Bresenham x of the row",
       {{{0, 0}, {8, 2}, {0, 2}}},
       "#........\n###......\n.........\n"},
      {"missing vertices are dropped",
       {{{0, 0}, {kMissing, 9}, {3, 0}, {3, 3}, {7, kMissing}, {0, 3}}},
       "####....\n####....\n####....\n"
       "........\n........\n........\n........\n........\n........\n........\n"},
      {"bow tie, even-odd", {{{0, 0}, {4, 4}, {4, 0}, {0, 4}}}, "#...#\n##.##\n#####\n##.##\n.....\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(fill(c.poly), c.picture);
  }
}

TEST(RasterFill, ValuesRunLinearlyAcrossSpans) {
  Poly square{{{0, 0}, {10, 0}, {10, 10}, {0, 10}}};
  const std::vector<double> values = {0, 100, 100, 0};
  Polygon2 v = square.view();
  Pixmap pm(v);
  FillInterpPoly(&v, values.data(), &pm.box, pm.pix, pm.mask);
  for (int y = 0; y < 10; ++y) {
    for (int x = 0; x <= 10; ++x) ASSERT_EQ(pm.value(x, y), 10 * x) << x << ", " << y;
  }
}

// ---- Against a slow reference ------------------------------------------------------

// Row Y is cut at the exact crossings of the edges covering it half-open
// (upper end included, lower end not); pixel centres between the 1st and 2nd,
// 3rd and 4th ... crossing (ends included) are inside.
std::vector<char> referenceFill(const std::vector<qvpoint32>& ring, const qvrect& box) {
  const int w = box.right - box.left + 1;
  std::vector<char> in(static_cast<std::size_t>(w * (box.bottom - box.top + 1)), 0);
  for (int y = box.top; y <= box.bottom; ++y) {
    std::vector<double> xs;
    for (std::size_t i = 0; i < ring.size(); ++i) {
      const qvpoint32 a = ring[i], b = ring[(i + 1) % ring.size()];
      if (std::min(a.y, b.y) <= y && y < std::max(a.y, b.y)) {
        xs.push_back(a.x + (y - a.y) * static_cast<double>(b.x - a.x) / (b.y - a.y));
      }
    }
    std::sort(xs.begin(), xs.end());
    for (std::size_t k = 0; k + 1 < xs.size(); k += 2) {
      for (int x = static_cast<int>(std::ceil(xs[k])); x <= std::floor(xs[k + 1]); ++x) {
        in[static_cast<std::size_t>((y - box.top) * w + (x - box.left))] = 1;
      }
    }
  }
  return in;
}

TEST(RasterFill, MatchesPixelCentreReferenceAwayFromEdges) {
  std::mt19937 rng(20261123);
  std::uniform_real_distribution<double> value(0.0, 255.0);
  int mismatches = 0, filled = 0;
  for (int trial = 0; trial < 3000; ++trial) {
    const bool ordered = trial % 2 == 0;
    Poly p = raster_test::randomPolygon(rng, 3 + trial % 9, -20, 40 + trial % 60, ordered);
    std::vector<double> values;
    for (std::size_t i = 0; i < p.pts.size(); ++i) values.push_back(value(rng));
    const double lo = *std::min_element(values.begin(), values.end());
    const double hi = *std::max_element(values.begin(), values.end());

    Polygon2 v = p.view();
    Pixmap pm(v);
    FillInterpPoly(&v, values.data(), &pm.box, pm.pix, pm.mask);
    const std::vector<char> ref = referenceFill(p.pts, pm.box);
    for (int y = pm.box.top; y <= pm.box.bottom; ++y) {
      for (int x = pm.box.left; x <= pm.box.right; ++x) {
        const bool got = pm.written(x, y);
        const bool want = ref[static_cast<std::size_t>((y - pm.box.top) * pm.width() + (x - pm.box.left))];
        filled += got;
        if (got != want) {
          ++mismatches;
          ASSERT_TRUE(raster_test::nearAnEdge(p.pts, x, y))
              << "trial " << trial << " pixel " << x << ", " << y << "\n"
              << pm.picture();
        }
        if (got) {
          ASSERT_GE(pm.value(x, y), std::floor(lo) - 1) << trial;
          ASSERT_LE(pm.value(x, y), hi) << trial;
        } else {
          ASSERT_EQ(pm.value(x, y), 0);
        }
      }
    }

    // The same polygon with missing points spliced in fills the same pixels.
    Poly holed;
    for (const qvpoint32& q : p.pts) {
      holed.pts.push_back(q);
      if (rng() % 3 == 0)
        holed.pts.push_back(rng() % 2 ? qvpoint32{kMissing, q.y} : qvpoint32{q.x, kMissing});
    }
    std::vector<double> holedValues;
    for (std::size_t i = 0, k = 0; i < holed.pts.size(); ++i) {
      const bool missing = holed.pts[i].x == kMissing || holed.pts[i].y == kMissing;
      holedValues.push_back(missing ? 7.0 : values[k++]);
    }
    Polygon2 hv = holed.view();
    Pixmap hm(hv);
    ASSERT_TRUE(guiEqualRect(&hm.box, &pm.box));
    FillInterpPoly(&hv, holedValues.data(), &hm.box, hm.pix, hm.mask);
    ASSERT_EQ(hm.picture(), pm.picture()) << trial;
    ASSERT_TRUE(std::equal(hm.pix, hm.pix + hm.stride() * hm.height(), pm.pix)) << trial;
  }
  // Bresenham edges stray from the exact crossings by a fraction of the fill.
  EXPECT_LT(mismatches, filled / 8);
}

// ---- Buffers -------------------------------------------------------------------------

TEST(RasterFill, AllocatePolygonPixmapBoxAndBuffers) {
  struct Case {
    const char* label;
    Poly poly;
    qvrect box;  // top, left, bottom, right
    bool buffers;
  };
  const Case cases[] = {
      {"coordinates skipped one by one",
       {{{3, 5}, {10, kMissing}, {kMissing, 7}, {6, 9}}},
       {5, 3, 9, 10},
       true},
      {"no usable x", {{{kMissing, 5}, {kMissing, 9}}}, {0, 0, 0, 0}, false},
      {"empty polygon", {}, {0, 0, 0, 0}, false},
      {"one pixel", {{{-4, -2}}}, {-2, -4, -2, -4}, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Pixmap pm(Poly(c.poly).view());
    EXPECT_TRUE(guiEqualRect(&pm.box, &c.box));
    EXPECT_EQ(pm.pix != nullptr, c.buffers);
    EXPECT_EQ(pm.mask != nullptr, c.buffers);
    if (!c.buffers) continue;
    // Zeroed, and large enough up to the last padded byte.
    EXPECT_EQ(pm.pix[pm.stride() * pm.height() - 1], 0);
    EXPECT_EQ(pm.mask[pm.width() * pm.height() - 1], 0);
    EXPECT_EQ(pm.stride() % 4, 0);
  }
}

TEST(RasterFill, AllocationFailureLeavesOutputsAlone) {
  Poly tri{{{0, 0}, {50, 0}, {0, 50}}};
  for (int budget : {0, 1}) {
    SCOPED_TRACE(budget);
    Polygon2 v = tri.view();
    qvrect box{1, 2, 3, 4};
    unsigned char sentinel = 0;
    unsigned char* pix = &sentinel;
    unsigned char* mask = &sentinel;
    HostAllocationFailureScope failing(budget);
    EXPECT_EQ(host_test::errorId([&] { AllocatePolygonPixmap(&v, &box, &pix, &mask); }), kHostOutOfMemoryId);
    EXPECT_EQ(box.top, 1);
    EXPECT_EQ(box.right, 4);
    EXPECT_EQ(pix, &sentinel);
    EXPECT_EQ(mask, &sentinel);
  }
}

// ---- Variants ------------------------------------------------------------------------

TEST(RasterFill, TrueColourMatchesThreeIndexFills) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> channel(-0.1, 1.1);  // clamped to 0..1
  for (int trial = 0; trial < 300; ++trial) {
    Poly p = raster_test::randomPolygon(rng, 3 + trial % 5, 0, 30, trial % 2 == 0);
    std::vector<double> rgb;
    for (std::size_t i = 0; i < 3 * p.pts.size(); ++i) rgb.push_back(channel(rng));
    Polygon2 v = p.view();
    Pixmap pm(v);
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(pm.width() * pm.height()), 0);
    std::vector<unsigned char> rgbMask(pixels.size(), 0);
    FillInterpPolyRGB(&v, rgb.data(), &pm.box, pixels.data(), rgbMask.data());
    for (int c = 0; c < 3; ++c) {
      Pixmap one(v);
      std::vector<double> values;
      for (std::size_t i = 0; i < p.pts.size(); ++i)
        values.push_back(std::clamp(rgb[3 * i + c], 0.0, 1.0) * 255 + 0.5);
      FillInterpPoly(&v, values.data(), &one.box, one.pix, one.mask);
      for (int y = one.box.top; y <= one.box.bottom; ++y) {
        for (int x = one.box.left; x <= one.box.right; ++x) {
          const std::size_t at =
              static_cast<std::size_t>((y - one.box.top) * one.width() + (x - one.box.left));
          ASSERT_EQ(rgbMask[at] != 0, one.written(x, y));
          if (!one.written(x, y)) continue;
          ASSERT_EQ(pixels[at] >> 24, 0xFFu);
          ASSERT_EQ(static_cast<int>((pixels[at] >> (16 - 8 * c)) & 0xFF), one.value(x, y)) << trial;
        }
      }
    }
  }
}

TEST(RasterFill, BilinearModeBlendsCornersOnParallelograms) {
  // A sheared parallelogram: (s, t) along the edges is exact, so every pixel
  // must match the bilinear blend at its own parameter position.
  Poly quad{{{0, 0}, {40, 0}, {60, 30}, {20, 30}}};
  const double c[4] = {0, 200, 40, 120};
  Polygon2 v = quad.view();
  Pixmap pm(v), flat(v);
  FillBilinearPoly(&v, c, &pm.box, pm.pix, pm.mask);
  const std::vector<double> ones(4, 1.0);
  FillInterpPoly(&v, ones.data(), &flat.box, flat.pix, flat.mask);
  EXPECT_EQ(pm.picture(), flat.picture());
  for (int y = 0; y < 30; ++y) {
    for (int x = pm.box.left; x <= pm.box.right; ++x) {
      if (!pm.written(x, y)) continue;
      const double t = y / 30.0, s = (x - 20.0 * t) / 40.0;
      const double want = (1 - s) * (1 - t) * c[0] + s * (1 - t) * c[1] + s * t * c[2] + (1 - s) * t * c[3];
      // Bresenham edges stand up to a pixel off the true edge: 5 units per pixel.
      ASSERT_NEAR(pm.value(x, y), want, 6.0) << x << ", " << y;
    }
  }
  Poly triangle{{{0, 0}, {4, 0}, {0, 4}}};
  Polygon2 tv = triangle.view();
  Pixmap none(tv);
  FillBilinearPoly(&tv, c, &none.box, none.pix, none.mask);
  EXPECT_EQ(none.picture(), ".....\n.....\n.....\n.....\n.....\n") << "not a quadrilateral";
}

}  // namespace

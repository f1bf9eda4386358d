// Offscreen back end: what the drawing slots put into the image, checked
// pixel by pixel and against area and length references.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <random>

#include "offscreen_test_support.h"
#include "qvgui/text.h"

namespace {

using offscreen_test::inkSum;
using offscreen_test::Poly;
using offscreen_test::rgb;
using qvgui::offscreen::Canvas;
using qvgui::offscreen::Format;
using qvgui::offscreen::Pixel;

constexpr Pixel kWhite{255, 255, 255, 255};
constexpr Pixel kBlack{0, 0, 0, 255};

void black(WinRec_tag* win) {
  Color_tag c = rgb(0, 0, 0);
  wm_SetFGColorPtr(win, &c);
}

// Filled rectangles cover left .. right - 1 and top .. bottom - 1: the pixels
// just inside each edge are ink, the pixels just outside are paper.
TEST(OffscreenDraw, PaintRectCoversExactlyItsPixels) {
  struct Case {
    const char* label;
    qvrect r;
    int expectedInk;
  };
  const Case cases[] = {
      {"square", {2, 3, 7, 9}, 5 * 6},          {"one pixel", {4, 4, 5, 5}, 1},
      {"empty width", {4, 4, 9, 4}, 0},         {"inverted", {9, 4, 4, 9}, 0},
      {"past the edge", {-5, -5, 3, 2}, 3 * 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Canvas canvas(Format::Png, 16, 12, 72.0);
    black(canvas.window());
    wm_PaintRect(canvas.window(), &c.r);
    EXPECT_NEAR(inkSum(canvas), c.expectedInk, 1e-9);
    if (c.expectedInk > 0) {
      const int top = std::max(c.r.top, 0), left = std::max(c.r.left, 0);
      EXPECT_EQ(canvas.pixel(left, top), kBlack);
      EXPECT_EQ(canvas.pixel(c.r.right - 1, c.r.bottom - 1), kBlack);
      EXPECT_EQ(canvas.pixel(c.r.right, c.r.bottom - 1), kWhite);
      EXPECT_EQ(canvas.pixel(c.r.right - 1, c.r.bottom), kWhite);
    }
  }
}

// A one-pixel line at integer coordinates runs through pixel centres: crisp
// across, and along it the cap decides how far past the end points it reaches.
TEST(OffscreenDraw, IntegerLinesAreCrispAcross) {
  struct Case {
    const char* label;
    LineCaps cap;
    double ink;     // of the line from x = 2 to x = 12
    bool fullEnds;  // pixels 2 and 12 wholly inked (else half)
  };
  const Case cases[] = {{"butt", LINE_CAP_BUTT, 10.0, false}, {"square", LINE_CAP_SQUARE, 11.0, true}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Canvas canvas(Format::Png, 20, 10, 72.0);  // one pixel per point
    WinRec_tag* win = canvas.window();
    black(win);
    wm_SetLineWidth(win, 1.0);
    wm_SetLineCap(win, c.cap);
    wm_MoveTo(win, 2, 4);
    wm_LineTo(win, 12, 4);
    EXPECT_NEAR(inkSum(canvas), c.ink, 0.01);
    for (int x = 3; x < 12; ++x) EXPECT_EQ(canvas.pixel(x, 4), kBlack) << x;
    for (int x : {2, 12}) EXPECT_NEAR(canvas.pixel(x, 4).r, c.fullEnds ? 0 : 128, 1) << x;
    EXPECT_EQ(canvas.pixel(1, 4), kWhite);
    EXPECT_EQ(canvas.pixel(13, 4), kWhite);
  }
}

// Property: the ink of an anti-aliased butt-capped segment is its length
// times its width, wherever it lies and however thick it is (width in points
// scaled by dpi / 72).
TEST(OffscreenDraw, LineCoverageMatchesLengthTimesWidth) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> pos(10.0, 90.0);
  std::uniform_real_distribution<double> widthPt(0.5, 3.0);
  for (int trial = 0; trial < 40; ++trial) {
    const double dpi = trial % 2 ? 144.0 : 72.0;
    Canvas canvas(Format::Png, 100, 100, dpi);
    WinRec_tag* win = canvas.window();
    black(win);
    const double w = widthPt(rng);
    wm_SetLineWidth(win, w);
    Real_point3 pts[2] = {{pos(rng), pos(rng), 0.0}, {pos(rng), pos(rng), 0.0}};
    wm_PolyLineRP3(win, pts, 2);
    const double length = std::hypot(pts[1].x - pts[0].x, pts[1].y - pts[0].y);
    const double expected = length * w * dpi / 72.0;
    SCOPED_TRACE(trial);
    EXPECT_NEAR(inkSum(canvas), expected, 0.02 * expected + 1.0);
  }
}

double shoelace(const std::vector<std::int32_t>& xy) {
  double twice = 0.0;
  const std::size_t n = xy.size() / 2;
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t j = (i + 1) % n;
    twice += double(xy[2 * i]) * xy[2 * j + 1] - double(xy[2 * j]) * xy[2 * i + 1];
  }
  return std::abs(twice) / 2.0;
}

// Property: a filled triangle's ink equals its area, and its outline lies on
// its edge (outline ink stays within width / 2 of the area's boundary).
TEST(OffscreenDraw, PolygonFillMatchesShoelaceArea) {
  std::mt19937 rng(11);
  std::uniform_int_distribution<int> pos(2, 77);
  for (int trial = 0; trial < 40; ++trial) {
    std::vector<std::int32_t> xy;
    for (int i = 0; i < 3; ++i) xy.insert(xy.end(), {pos(rng), pos(rng)});
    if (shoelace(xy) < 1.0) continue;
    Canvas canvas(Format::Png, 80, 80, 72.0);
    black(canvas.window());
    Poly poly(xy);
    wm_PaintPoly(canvas.window(), poly.get(), nullptr, nullptr);
    SCOPED_TRACE(trial);
    EXPECT_NEAR(inkSum(canvas), shoelace(xy), 0.01 * shoelace(xy) + 0.5);
  }
}

// Fills meet without seams: a polygon sharing an edge with a rectangle, and
// two triangles sharing a diagonal, leave no paper showing along the edge.
TEST(OffscreenDraw, AdjacentFillsTileWithoutSeams) {
  Canvas canvas(Format::Png, 30, 30, 72.0);
  WinRec_tag* win = canvas.window();
  black(win);
  const qvrect left{0, 0, 20, 10};
  wm_PaintRect(win, &left);
  Poly right({10, 0, 20, 0, 20, 20, 10, 20});
  wm_PaintPoly(win, right.get(), nullptr, nullptr);
  for (int y = 0; y < 20; ++y)
    for (int x = 0; x < 20; ++x) ASSERT_EQ(canvas.pixel(x, y), kBlack) << x << "," << y;
  EXPECT_EQ(canvas.pixel(20, 5), kWhite);
  EXPECT_EQ(canvas.pixel(5, 20), kWhite);
  EXPECT_NEAR(inkSum(canvas), 400.0, 1e-9);

  // Along a diagonal, anti-aliased fills each cover part of the pixels and
  // the paper shows through; painted as one shape, or without
  // anti-aliasing, they tile exactly.
  for (bool antialias : {true, false}) {
    for (bool joined : {true, false}) {
      SCOPED_TRACE(::testing::Message() << "antialias " << antialias << ", joined " << joined);
      Canvas diag(Format::Png, 30, 30, 72.0);
      diag.setFillAntialias(antialias);
      diag.setJoinFills(joined);
      black(diag.window());
      Poly upper({5, 5, 25, 5, 25, 25}), lower({5, 5, 25, 25, 5, 25});
      wm_PaintPoly(diag.window(), upper.get(), nullptr, nullptr);
      wm_PaintPoly(diag.window(), lower.get(), nullptr, nullptr);
      if (antialias && !joined)
        EXPECT_LT(inkSum(diag), 399.0);
      else
        EXPECT_NEAR(inkSum(diag), 400.0, 1e-9);
    }
  }
}

// Joined fills must give the picture that painting them one by one gives,
// whatever the polygons: overlapping, turning either way, crossing or
// touching themselves, with repeated or missing vertices, in two colours that
// take turns. Only the anti-aliased pixels along edges that fills share may
// differ (one shape covers them, two shapes painted apart let some paper
// through), and by less than a whole pixel's worth: a wrongly filled area
// differs fully.
TEST(OffscreenDraw, FillsPaintedTogetherMatchFillsPaintedApart) {
  std::mt19937 rng(31);
  std::uniform_int_distribution<std::int32_t> coord(-4, 44), count(0, 9), pick(0, 9);
  const Color_tag colours[2] = {rgb(0, 0, 0), rgb(0.5, 0.5, 0.5)};
  for (int run = 0; run < 80; ++run) {
    Canvas together(Format::Png, 40, 40, 72.0), apart(Format::Png, 40, 40, 72.0);
    together.setJoinFills(true);
    int current = -1;
    std::string shapes;
    for (int k = 0, shapesInRun = 1 + static_cast<int>(rng() % 10); k < shapesInRun; ++k) {
      const int colour = pick(rng) < 8 ? (current < 0 ? 0 : current) : 1 - std::max(current, 0);
      if (colour != current) {
        wm_SetFGColorPtr(together.window(), const_cast<Color_tag*>(&colours[colour]));
        wm_SetFGColorPtr(apart.window(), const_cast<Color_tag*>(&colours[colour]));
      }
      current = colour;
      shapes += std::to_string(colour) + ":";
      if (pick(rng) < 3) {
        const qvrect r{coord(rng), coord(rng), coord(rng), coord(rng)};
        wm_PaintRect(together.window(), &r);
        wm_PaintRect(apart.window(), &r);
        shapes += "rect ";
        continue;
      }
      // Random vertices mostly cross; taken by angle round their mean they
      // make a simple polygon, turning one way or the other.
      std::vector<std::array<double, 2>> raw(static_cast<std::size_t>(count(rng)));
      std::array<double, 2> mean{0, 0};
      for (auto& v : raw) {
        v = {double(coord(rng)), double(coord(rng))};
        mean = {mean[0] + v[0] / double(raw.size()), mean[1] + v[1] / double(raw.size())};
      }
      if (rng() % 3 != 0) {
        std::sort(raw.begin(), raw.end(), [&](const auto& a, const auto& b) {
          return std::atan2(a[1] - mean[1], a[0] - mean[0]) < std::atan2(b[1] - mean[1], b[0] - mean[0]);
        });
        if (rng() % 2 != 0) std::reverse(raw.begin(), raw.end());
      }
      std::vector<std::int32_t> xy;
      for (const auto& v : raw) {
        const int what = pick(rng);
        if (what == 0 && !xy.empty()) {
          xy.push_back(xy[xy.size() - 2]);  // a repeated vertex
          xy.push_back(xy[xy.size() - 2]);
        } else if (what == 1) {
          xy.push_back(-32768);  // a missing one
          xy.push_back(-32768);
        }
        xy.push_back(static_cast<std::int32_t>(v[0]));
        xy.push_back(static_cast<std::int32_t>(v[1]));
      }
      Poly p(xy);
      wm_PaintPoly(together.window(), p.get(), nullptr, nullptr);
      wm_PaintPoly(apart.window(), p.get(), nullptr, nullptr);
      shapes += std::to_string(xy.size() / 2) + "-gon ";
    }
    SCOPED_TRACE(::testing::Message() << "run " << run << ": " << shapes);
    for (int y = 0; y < 40; ++y) {
      for (int x = 0; x < 40; ++x) {
        const Pixel a = together.pixel(x, y), b = apart.pixel(x, y);
        ASSERT_LE(std::abs(a.g - b.g), 100) << x << "," << y;
      }
    }
  }
}

// Missing points break lines and drop out of polygons.
TEST(OffscreenDraw, MissingPointsAreSkipped) {
  constexpr std::int32_t kMissing = -32768;
  Canvas canvas(Format::Png, 30, 30, 72.0);
  WinRec_tag* win = canvas.window();
  black(win);
  wm_SetLineWidth(win, 1.0);
  int xs[] = {2, 12, kMissing, 14, 24};
  int ys[] = {5, 5, kMissing, 5, 5};
  wm_PolyLine(win, xs, ys, 5);
  EXPECT_EQ(canvas.pixel(11, 5), kBlack);
  EXPECT_EQ(canvas.pixel(13, 5), kWhite);  // no segment across the gap
  EXPECT_EQ(canvas.pixel(15, 5), kBlack);
  EXPECT_NEAR(inkSum(canvas), 20.0, 0.05);

  Poly square({10, 10, 20, 10, kMissing, kMissing, 20, 20, 10, 20});
  wm_PaintPoly(win, square.get(), nullptr, nullptr);
  EXPECT_NEAR(inkSum(canvas), 20.0 + 100.0, 0.2);
}

// Clip regions: a union of two rectangles lets paint through both and
// nowhere else; the intersection of two regions leaves only the overlap;
// clearing the clip paints everywhere again.
TEST(OffscreenDraw, ClipRegionsLimitPainting) {
  Canvas canvas(Format::Png, 40, 40, 72.0);
  WinRec_tag* win = canvas.window();
  black(win);
  void* a = wm_CreateClipRegion(win);
  const qvrect r1{0, 0, 10, 10}, r2{5, 5, 20, 20}, r3{30, 30, 35, 35};
  wm_UnionRectRegion(win, &r1, a);
  wm_UnionRectRegion(win, &r2, a);
  wm_SetClipRegion(win, a);
  const qvrect all{0, 0, 40, 40};
  wm_PaintRect(win, &all);
  EXPECT_NEAR(inkSum(canvas), 100 + 225 - 25, 1e-9);  // overlap counted once
  EXPECT_EQ(canvas.pixel(19, 19), kBlack);
  EXPECT_EQ(canvas.pixel(20, 19), kWhite);
  EXPECT_EQ(canvas.pixel(12, 2), kWhite);

  EXPECT_FALSE(wm_RectInRegion(win, &r3, a));

  void* b = wm_CreateClipRegion(win);
  const qvrect r4{8, 8, 40, 40};
  wm_UnionRectRegion(win, &r4, b);
  wm_IntersectRegions(win, a, b);  // b = a & b: 8..19 in both axes
  Color_tag white = rgb(1, 1, 1);
  wm_SetFigureBackgroundColor(win, &white);
  wm_SetClipRegion(win, b);
  wm_PaintRect(win, &all);
  EXPECT_NEAR(inkSum(canvas), 12 * 12, 1e-9);

  wm_SetClipRegion(win, nullptr);
  wm_PaintRect(win, &all);
  EXPECT_NEAR(inkSum(canvas), 40 * 40, 1e-9);
  wm_DestroyClipRegion(win, a);
  wm_DestroyClipRegion(win, b);
}

}  // namespace

namespace {

// Input no figure should send (the fuzzer tries the rest): none of it may
// crash, and the canvas must still draw afterwards (Cairo's errors are
// sticky, so one bad call could otherwise blank every later one).
TEST(OffscreenDraw, HostileInputLeavesTheCanvasUsable) {
  struct Case {
    const char* label;
    void (*run)(WinRec_tag*);
  };
  const Case cases[] = {
      {"font of 1e300 points",
       [](WinRec_tag* w) {
         zrFont* f = create_font();
         font_set_size(f, 1e300);
         wm_SetWindowFont(w, f);
         destroy_font(f);
         wm_DrawString(w, "Hi");
       }},
      {"font of 1e-300 points",
       [](WinRec_tag* w) {
         zrFont* f = create_font();
         font_set_size(f, 1e-300);
         wm_SetWindowFont(w, f);
         destroy_font(f);
         wm_DrawString(w, "Hi");
       }},
      {"huge shaded face",
       [](WinRec_tag* w) {
         Poly tri({0, 0, 100000, 0, 0, 100000});
         double rgbs[9] = {NAN, 2, -1, 0, 0, 0, 1, 1, 1};
         wm_FillInterpPoly(w, tri.get(), rgbs, nullptr);
         wm_DrawInterpPoly(w, tri.get(), rgbs, nullptr);
       }},
      {"null and foreign pointers",
       [](WinRec_tag* w) {
         wm_PaintPoly(w, nullptr, nullptr, nullptr);
         wm_PolyLineRP3(w, nullptr, 3);
         wm_DrawString(w, nullptr);
         wm_SetClipRegion(w, reinterpret_cast<void*>(&w));  // not a region of this canvas
       }},
  };
  for (Format f : {Format::Png, Format::Pdf})
    for (const Case& c : cases) {
      SCOPED_TRACE(c.label);
      Canvas canvas(f, 10, 10, 72.0);
      WinRec_tag* win = canvas.window();
      c.run(win);
      if (f != Format::Png) continue;
      Color_tag k = rgb(0, 0, 0);
      wm_SetFGColorPtr(win, &k);
      const qvrect r{1, 1, 3, 3};
      wm_PaintRect(win, &r);
      EXPECT_EQ(canvas.pixel(2, 2), kBlack);
    }

  // The dashes of a shape reaching far off the canvas would take gigabytes of
  // a document; such a stroke is drawn solid.
  Canvas pdf(Format::Pdf, 10, 10, 72.0);
  wm_SetLineType(pdf.window(), LINE_DASHED);
  const qvrect huge{-45, 20, 25, 620756991};
  wm_FrameOval(pdf.window(), &huge);
  const std::string path = ::testing::TempDir() + "offscreen_far_dashes.pdf";
  pdf.save(path);
  EXPECT_LT(std::filesystem::file_size(path), 100000u);
  std::filesystem::remove(path);
}

}  // namespace

// Layout of the sample figures measured with the library's metrics, colour
// maps against their purpose, and rejected input leaving the axes untouched.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "qvgui/plot.h"
#include "qvgui/window.h"

namespace {

using gui_objects::test::WindowMethodRecorder;
using namespace qvgui::plot;

std::vector<TextBox> drawnBoxes(Figure& f, std::size_t* calls = nullptr) {
  WindowMethodRecorder rec;
  int region = 0;
  rec.setPointerResult("CreateClipRegion", &region);
  rec.setResult("PixelsPerPoint", f.dpi() / 72.0);
  std::vector<TextBox> boxes = f.draw(rec.window());
  if (calls != nullptr) *calls = rec.calls().size();
  return boxes;
}

bool overlap(const TextBox& a, const TextBox& b) {
  constexpr double kSlack = 0.5;  // touching boxes do not overlap
  return a.left < b.right - kSlack && b.left < a.right - kSlack && a.top < b.bottom - kSlack &&
         b.top < a.bottom - kSlack;
}

TEST(PlotLayout, SampleTextStaysInsideAndTickLabelsDoNotOverlap) {
  struct Size {
    int w, h;
    double dpi;
  };
  const Size sizes[] = {{800, 600, 100}, {1600, 1200, 200}, {640, 400, 100}, {400, 300, 72}};
  for (const std::string& name : sampleNames()) {
    for (const Size& sz : sizes) {
      SCOPED_TRACE(name + " " + std::to_string(sz.w) + "x" + std::to_string(sz.h));
      Figure f = sampleFigure(name, sz.w, sz.h, sz.dpi);
      const std::vector<TextBox> boxes = drawnBoxes(f);
      std::size_t ticks = 0;
      for (const TextBox& b : boxes) {
        SCOPED_TRACE(b.text);
        EXPECT_GE(b.left, 0);
        EXPECT_GE(b.top, 0);
        EXPECT_LE(b.right, sz.w);
        EXPECT_LE(b.bottom, sz.h);
        EXPECT_LT(b.left, b.right);
        ticks += b.role == kTickLabel;
      }
      EXPECT_GE(ticks, name == "surface" ? 9u : 6u);
      for (std::size_t i = 0; i < boxes.size(); ++i) {
        for (std::size_t j = i + 1; j < boxes.size(); ++j) {
          const bool tickLike = (boxes[i].role == kTickLabel || boxes[i].role == kColorbarLabel) &&
                                (boxes[j].role == kTickLabel || boxes[j].role == kColorbarLabel);
          const bool oneLegend = (boxes[i].role == kLegend) != (boxes[j].role == kLegend);
          if (tickLike || oneLegend) {
            EXPECT_FALSE(overlap(boxes[i], boxes[j])) << boxes[i].text << " / " << boxes[j].text;
          }
        }
      }
    }
  }
}

// ---- Legends ------------------------------------------------------------------------

struct Rect {
  double top = 0, left = 0, bottom = 0, right = 0;
};

Rect parseRect(const std::string& arg) {
  Rect r;
  EXPECT_EQ(std::sscanf(arg.c_str(), "[%lf %lf %lf %lf]", &r.top, &r.left, &r.bottom, &r.right), 4) << arg;
  return r;
}

// What a drawing shows of the legend: the plot box (the data's clip rectangle),
// the legend's white box (the only filled rectangle a figure of lines and
// points paints) and the text.
struct LegendScene {
  Rect plot;
  std::vector<Rect> legendBoxes;
  std::vector<TextBox> text;
  std::vector<std::string> rows;
};

LegendScene drawLegendScene(Figure& f) {
  WindowMethodRecorder rec;
  int region = 0;
  rec.setPointerResult("CreateClipRegion", &region);
  rec.setResult("PixelsPerPoint", f.dpi() / 72.0);
  LegendScene s;
  s.text = f.draw(rec.window());
  const auto clips = rec.callsTo("UnionRectRegion");
  EXPECT_EQ(clips.size(), 1u);
  if (!clips.empty()) s.plot = parseRect(clips[0].args[0]);
  for (const auto& c : rec.callsTo("PaintRect")) s.legendBoxes.push_back(parseRect(c.args[0]));
  for (const TextBox& b : s.text)
    if (b.role == kLegend) s.rows.push_back(b.text);
  return s;
}

bool within(const TextBox& t, const Rect& r) {
  return t.left >= r.left && t.right <= r.right && t.top >= r.top && t.bottom <= r.bottom;
}

TEST(PlotLegend, BoxLiesInsideThePlotAndHoldsItsText) {
  struct Size {
    int w, h;
    double dpi;
  };
  const Size sizes[] = {{800, 600, 100}, {400, 300, 100}, {400, 300, 72}, {1600, 1200, 200}, {480, 360, 150}};
  for (const Size& sz : sizes) {
    SCOPED_TRACE(std::to_string(sz.w) + "x" + std::to_string(sz.h) + " at " + std::to_string(sz.dpi));
    Figure f = sampleFigure("lines", sz.w, sz.h, sz.dpi);
    const LegendScene s = drawLegendScene(f);
    ASSERT_EQ(s.legendBoxes.size(), 1u);
    const Rect& L = s.legendBoxes[0];
    EXPECT_GT(L.left, s.plot.left);
    EXPECT_GT(L.top, s.plot.top);
    EXPECT_LT(L.right, s.plot.right);
    EXPECT_LT(L.bottom, s.plot.bottom);
    EXPECT_EQ(s.rows, (std::vector<std::string>{"f_c = 30 Hz", "f_c = 300 Hz", "f_c = 3000 Hz"}));
    for (const TextBox& t : s.text) {
      if (t.role == kLegend) {
        EXPECT_TRUE(within(t, L)) << t.text;
      } else {
        EXPECT_FALSE(within(t, L)) << t.text;
      }
    }
  }
}

// Best keeps the legend off the data; explicit places are obeyed whatever
// lies there; unlabelled children add no row and no labels mean no box.
TEST(PlotLegend, PlacementAndRows) {
  enum Corner { kNone, kUR, kUL, kLL, kLR };
  struct Case {
    const char* label;
    std::vector<double> x, y;
    bool scatter;
    Legend where;
    std::vector<std::string> labels;  // one child per label, all on the same data
    Corner expected;
  };
  const std::vector<double> up = {0, 0.25, 0.5, 0.75, 1};
  const std::vector<double> down = {1, 0.75, 0.5, 0.25, 0};
  // Many points in three corners, the lower right empty.
  std::vector<double> cx;
  std::vector<double> cy;
  const double crowded[3][2] = {{0.02, 0.82}, {0.82, 0.82}, {0.02, 0.02}};
  for (int k = 0; k < 100; ++k) {
    for (const auto& corner : crowded) {
      cx.push_back(corner[0] + (k % 10) / 60.0);
      cy.push_back(corner[1] + (k / 10) / 60.0);
    }
  }
  // clang-format off
  const Case cases[] = {
      {"rising line: upper left before lower right", up, up, false, Legend::Best, {"a"}, kUL},
      {"falling line: upper right", up, down, false, Legend::Best, {"a"}, kUR},
      {"two vertices along the top", {0, 1}, {0.93, 0.93}, false, Legend::Best, {"a"}, kLL},
      {"points crowd three corners", cx, cy, true, Legend::Best, {"a"}, kLR},
      {"upper left asked for, data there", up, down, false, Legend::UpperLeft, {"a"}, kUL},
      {"lower right asked for", up, up, false, Legend::LowerRight, {"a"}, kLR},
      {"unlabelled children add no row", up, down, false, Legend::Best, {"a", "", "c"}, kUR},
      {"no labels, no box", up, down, false, Legend::Best, {"", ""}, kNone},
      {"off", up, down, false, Legend::Off, {"a"}, kNone},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Figure f(500, 400, 100);
    Axes& ax = f.addAxes();
    ax.setXLimits(0, 1);
    ax.setYLimits(0, 1);
    std::vector<std::string> rows;
    for (const std::string& l : c.labels) {
      LineOptions o;
      o.label = l;
      if (c.scatter) {
        ax.scatter(c.x, c.y, {}, o);
      } else {
        ax.plot(c.x, c.y, o);
      }
      if (!l.empty()) rows.push_back(l);
    }
    ax.legend(c.where);
    const LegendScene s = drawLegendScene(f);
    if (c.expected == kNone) {
      EXPECT_TRUE(s.legendBoxes.empty());
      EXPECT_TRUE(s.rows.empty());
      continue;
    }
    ASSERT_EQ(s.legendBoxes.size(), 1u);
    EXPECT_EQ(s.rows, rows);
    const Rect& L = s.legendBoxes[0];
    const bool right = L.left + L.right > s.plot.left + s.plot.right;
    const bool upper = L.top + L.bottom < s.plot.top + s.plot.bottom;
    const Corner got = upper ? (right ? kUR : kUL) : (right ? kLR : kLL);
    EXPECT_EQ(got, c.expected);
  }

  // A legend too big for its plot is left out; 3-D axes draw none; an
  // out-of-range place is rejected.
  Figure tiny(60, 50, 100);
  Axes& ax = tiny.addAxes();
  LineOptions o;
  o.label = "a label far wider than the plot";
  ax.plot(up, up, o);
  ax.legend();
  EXPECT_TRUE(drawLegendScene(tiny).rows.empty());
  Figure solid(400, 300, 100);
  Axes& ax3 = solid.addAxes(true);
  ax3.plot(up, up, o);
  ax3.legend(Legend::UpperLeft);
  EXPECT_TRUE(drawnBoxes(solid).size() > 0);
  for (const TextBox& b : drawnBoxes(solid)) EXPECT_NE(b.role, kLegend);
  EXPECT_THROW(ax.legend(static_cast<Legend>(9)), std::invalid_argument);
}

// Relative luminance of a colour given in sRGB.
double luminance(const Rgb& c) {
  auto lin = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
  return 0.2126 * lin(c.r) + 0.7152 * lin(c.g) + 0.0722 * lin(c.b);
}

// The sequential maps must read as ordered: luminance rises strictly from end
// to end, and out-of-range and NaN inputs clamp to the ends.
TEST(PlotColorMaps, SequentialMapsRiseInLuminanceAndClamp) {
  for (ColorMap map : {ColorMap::Viridis, ColorMap::Magma, ColorMap::Gray}) {
    SCOPED_TRACE(static_cast<int>(map));
    double last = -1;
    for (int k = 0; k <= 512; ++k) {
      const double l = luminance(colorAt(map, k / 512.0));
      EXPECT_GT(l, last) << k;
      last = l;
    }
    const Rgb lo = colorAt(map, 0);
    const Rgb hi = colorAt(map, 1);
    for (double t : {-1.0, -1e300, static_cast<double>(NAN)}) {
      EXPECT_EQ(colorAt(map, t).g, lo.g);
    }
    EXPECT_EQ(colorAt(map, 7.0).g, hi.g);
  }
  EXPECT_EQ(colorMapByName("Magma"), ColorMap::Magma);
  EXPECT_THROW((void)colorMapByName("jet"), std::invalid_argument);
}

// A rejected call throws and leaves the axes drawing exactly what it drew before.
TEST(PlotAxes, RejectedInputLeavesTheAxesUnchanged) {
  const std::vector<double> two = {1, 2};
  const std::vector<double> three = {1, 2, 3};
  const std::vector<double> z6 = {1, 2, 3, 4, 5, 6};
  const std::vector<double> zInf = {1, 2, 3, INFINITY, 5, 6};
  const std::vector<double> zNaN = {NAN, NAN, NAN, NAN, NAN, NAN};
  const std::vector<double> xDown = {3, 2, 1};
  struct Case {
    const char* label;
    std::function<void(Axes&)> call;
  };
  const Case cases[] = {
      {"plot lengths differ", [&](Axes& a) { a.plot(two, three); }},
      {"scatter colours short", [&](Axes& a) { a.scatter(three, three, two); }},
      {"grid size mismatch",
       [&](Axes& a) {
         a.contourf(Grid{z6, 3, 3, {}, {}});
       }},
      {"grid with infinity",
       [&](Axes& a) {
         a.contour(Grid{zInf, 2, 3, {}, {}});
       }},
      {"grid all holes",
       [&](Axes& a) {
         a.image(Grid{zNaN, 2, 3, {}, {}});
       }},
      {"x not increasing",
       [&](Axes& a) {
         a.contour(Grid{z6, 2, 3, xDown, {}});
       }},
      {"x wrong length",
       [&](Axes& a) {
         a.contour(Grid{z6, 2, 3, two, {}});
       }},
      {"one level only",
       [&](Axes& a) {
         a.contourf(Grid{z6, 2, 3, {}, {}}, {2.0});
       }},
      {"surface in 2-D",
       [&](Axes& a) {
         a.surface(Grid{z6, 2, 3, {}, {}});
       }},
      {"reversed limits", [&](Axes& a) { a.setXLimits(2, 1); }},
      {"level count",
       [&](Axes& a) {
         a.contour(Grid{z6, 2, 3, {}, {}}, {}, 0);
       }},
      {"elevation", [&](Axes& a) { a.setView(0, 120); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Figure f(300, 200, 72);
    Axes& ax = f.addAxes();
    ax.plot(three, three);
    std::size_t before = 0;
    const std::vector<TextBox> b0 = drawnBoxes(f, &before);
    EXPECT_THROW(c.call(ax), std::invalid_argument);
    std::size_t after = 0;
    const std::vector<TextBox> b1 = drawnBoxes(f, &after);
    EXPECT_EQ(before, after);
    ASSERT_EQ(b0.size(), b1.size());
  }
  EXPECT_THROW(Figure(8, 100), std::invalid_argument);
  EXPECT_THROW(Figure(100, 100, 0), std::invalid_argument);
  Figure f(100, 100);
  EXPECT_THROW((void)f.subplot(2, 2, 4), std::invalid_argument);
  EXPECT_THROW(f.save("/tmp/figure.bmp"), std::invalid_argument);
}

}  // namespace

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

// What a drawing shows: its text, the plot box (the data's clip rectangle) and
// the legend's box (the only filled rectangle a figure of lines and points
// paints; rectangles are recorded as "[top left bottom right]").
struct Scene {
  std::vector<TextBox> text;
  std::vector<std::string> legendRows;
  TextBox plot;
  std::vector<TextBox> legendBoxes;
};

Scene drawScene(Figure& f, std::size_t* calls = nullptr) {
  WindowMethodRecorder rec;
  int region = 0;
  rec.setPointerResult("CreateClipRegion", &region);
  rec.setResult("PixelsPerPoint", f.dpi() / 72.0);
  Scene s;
  s.text = f.draw(rec.window());
  if (calls != nullptr) *calls = rec.calls().size();
  for (const TextBox& b : s.text)
    if (b.role == kLegend) s.legendRows.push_back(b.text);
  auto rect = [](const std::string& arg) {
    TextBox r;
    EXPECT_EQ(std::sscanf(arg.c_str(), "[%lf %lf %lf %lf]", &r.top, &r.left, &r.bottom, &r.right), 4);
    return r;
  };
  for (const auto& c : rec.callsTo("UnionRectRegion")) s.plot = rect(c.args[0]);
  for (const auto& c : rec.callsTo("PaintRect")) s.legendBoxes.push_back(rect(c.args[0]));
  return s;
}

std::vector<TextBox> drawnBoxes(Figure& f, std::size_t* calls = nullptr) { return drawScene(f, calls).text; }

bool overlap(const TextBox& a, const TextBox& b) {
  constexpr double kSlack = 0.5;  // touching boxes do not overlap
  return a.left < b.right - kSlack && b.left < a.right - kSlack && a.top < b.bottom - kSlack &&
         b.top < a.bottom - kSlack;
}

bool within(const TextBox& t, const TextBox& r) {
  return t.left >= r.left && t.right <= r.right && t.top >= r.top && t.bottom <= r.bottom;
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
      const Scene scene = drawScene(f);
      const std::vector<TextBox>& boxes = scene.text;
      // The lines sample's legend: inside the plot box, holding its own text
      // and no other.
      if (name == "lines") {
        ASSERT_EQ(scene.legendBoxes.size(), 1u);
        const TextBox& L = scene.legendBoxes[0];
        EXPECT_TRUE(L.left > scene.plot.left && L.right < scene.plot.right && L.top > scene.plot.top &&
                    L.bottom < scene.plot.bottom);
        EXPECT_EQ(scene.legendRows,
                  (std::vector<std::string>{"f_c = 30 Hz", "f_c = 300 Hz", "f_c = 3000 Hz"}));
        for (const TextBox& t : boxes) EXPECT_EQ(within(t, L), t.role == kLegend) << t.text;
      }
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
  std::vector<double> cx;  // points crowding every corner but the lower right
  std::vector<double> cy;
  for (int k = 0; k < 300; ++k) {
    cx.push_back((k % 3 == 1 ? 0.82 : 0.02) + (k / 3 % 10) / 60.0);
    cy.push_back((k % 3 == 2 ? 0.02 : 0.82) + (k / 30) / 60.0);
  }
  // clang-format off
  const Case cases[] = {
      {"rising line: upper left before lower right", up, up, false, Legend::Best, {"a"}, kUL},
      {"falling line: upper right", up, down, false, Legend::Best, {"a"}, kUR},
      {"one segment across the upper right", {0.5, 1.2}, {1.15, 0.74}, false, Legend::Best, {"a"}, kUL},
      {"points crowd three corners", cx, cy, true, Legend::Best, {"a"}, kLR},
      {"upper left asked for, data there", up, down, false, Legend::UpperLeft, {"a"}, kUL},
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
      c.scatter ? ax.scatter(c.x, c.y, {}, o) : ax.plot(c.x, c.y, o);
      if (!l.empty() && c.expected != kNone) rows.push_back(l);
    }
    ax.legend(c.where);
    const Scene s = drawScene(f);
    EXPECT_EQ(s.legendRows, rows);
    ASSERT_EQ(s.legendBoxes.size(), c.expected == kNone ? 0u : 1u);
    if (c.expected == kNone) continue;
    const TextBox& L = s.legendBoxes[0];
    const bool right = L.left + L.right > s.plot.left + s.plot.right;
    const bool upper = L.top + L.bottom < s.plot.top + s.plot.bottom;
    EXPECT_EQ(upper ? (right ? kUR : kUL) : (right ? kLR : kLL), c.expected);
  }

  // A legend too big for its plot is left out; 3-D axes draw none; an
  // out-of-range place is rejected.
  LineOptions o;
  o.label = "a label far wider than the plot";
  for (bool threeD : {false, true}) {
    Figure f(threeD ? 400 : 60, threeD ? 300 : 50, 100);
    Axes& ax = f.addAxes(threeD);
    ax.plot(up, up, o);
    ax.legend(Legend::UpperLeft);
    EXPECT_TRUE(drawScene(f).legendRows.empty());
    EXPECT_THROW(ax.legend(static_cast<Legend>(9)), std::invalid_argument);
  }
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

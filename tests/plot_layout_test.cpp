// Layout of the sample figures measured with the library's metrics, colour
// maps against their purpose, and rejected input leaving the axes untouched.
#include <gtest/gtest.h>

#include <cmath>
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
          if (tickLike) {
            EXPECT_FALSE(overlap(boxes[i], boxes[j])) << boxes[i].text << " / " << boxes[j].text;
          }
        }
      }
    }
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

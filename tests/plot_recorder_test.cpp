// The figure layer as a back end sees it: the wm_ calls a tiny scene issues,
// recorded, and the data lines checked against the frame they are drawn in.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "qvgui/geometry.h"
#include "qvgui/plot.h"
#include "qvgui/window.h"

namespace {

using gui_objects::test::WindowMethodRecorder;
using namespace qvgui::plot;

// Every PolyLineRP3 call's points, captured before the figure reuses its buffer.
std::vector<std::vector<Real_point3>> gPolylines;
WindowMethodRecorder* gRecorder = nullptr;

void capturePolyLine(WinRec_tag*, Real_point3* pts, int n) {
  gPolylines.emplace_back(pts, pts + n);
  gRecorder->record({"PolyLineRP3", {std::to_string(n)}});
}

struct Scene {
  WindowMethodRecorder rec;
  int region = 0;
  Scene() {
    gPolylines.clear();
    gRecorder = &rec;
    rec.setPointerResult("CreateClipRegion", &region);
    rec.setResult("PixelsPerPoint", 1.0);
    swm_PolyLineRP3(rec.methods(), &capturePolyLine);
  }
  // Slot names of the calls, runs of the same slot collapsed, keeping only the
  // slots that show the drawing order.
  std::vector<std::string> outline() const {
    static const std::vector<std::string> kShown = {"SetClipRegion", "DestroyClipRegion", "PolyLineRP3",
                                                    "DrawString"};
    std::vector<std::string> out;
    for (const auto& c : rec.calls()) {
      bool shown = false;
      for (const auto& s : kShown) shown = shown || c.slot == s;
      if (shown && (out.empty() || out.back() != c.slot)) out.push_back(c.slot);
    }
    return out;
  }
};

TEST(PlotRecorder, TinyLineSceneIssuesClippedDataThenFrameThenTicks) {
  Scene s;
  Figure f(200, 150, 72);
  Axes& ax = f.addAxes();
  const std::vector<double> x = {0, 1};
  const std::vector<double> y = {0, 1};
  ax.plot(x, y);
  const std::vector<TextBox> boxes = f.draw(s.rec.window());

  // Clip on, the data line, clip off, the frame, then one tick mark before each label.
  std::vector<std::string> want = {"SetClipRegion", "PolyLineRP3", "SetClipRegion", "DestroyClipRegion"};
  for (std::size_t k = 0; k < boxes.size(); ++k) {
    want.push_back("PolyLineRP3");
    want.push_back("DrawString");
  }
  EXPECT_EQ(s.outline(), want);
  const auto clips = s.rec.callsTo("SetClipRegion");
  ASSERT_EQ(clips.size(), 2u);
  EXPECT_EQ(clips[0].args[0], WindowMethodRecorder::formatPointer(&s.region));
  EXPECT_EQ(clips[1].args[0], WindowMethodRecorder::formatPointer(nullptr));
  for (const auto& c : s.rec.callsTo("SetTextAlignment")) {
    EXPECT_EQ(c.args, (std::vector<std::string>{std::to_string(TEXT_HALIGN_LEFT),
                                                std::to_string(TEXT_VALIGN_BASELINE)}));
  }

  // The nice limits of [0, 1] are [0, 1]: the line runs corner to corner.
  ASSERT_GE(gPolylines.size(), 2u);
  const auto& data = gPolylines[0];
  const auto& frame = gPolylines[1];
  ASSERT_EQ(data.size(), 2u);
  ASSERT_EQ(frame.size(), 5u);  // closed rectangle: top-left, top-right, bottom-right, bottom-left
  EXPECT_NEAR(data[0].x, frame[3].x, 1e-9);
  EXPECT_NEAR(data[0].y, frame[3].y, 1e-9);
  EXPECT_NEAR(data[1].x, frame[1].x, 1e-9);
  EXPECT_NEAR(data[1].y, frame[1].y, 1e-9);
}

// Data lines break at NaN, lose what a logarithmic axis cannot show, and are
// cut by manual limits at the frame.
TEST(PlotRecorder, DataRunsAreBrokenAndClipped) {
  const double nan = NAN;
  struct Case {
    const char* label;
    std::vector<double> x, y;
    bool logY;
    double xlo, xhi;  // NaN: automatic
    std::vector<std::size_t> runSizes;
  };
  // clang-format off
  const Case cases[] = {
      {"plain", {0, 1, 2, 3}, {1, 2, 3, 4}, false, nan, nan, {4}},
      {"NaN breaks", {0, 1, 2, 3, 4}, {1, 2, nan, 3, 4}, false, nan, nan, {2, 2}},
      {"lone point between holes", {0, 1, 2, 3, 4}, {1, nan, 2, nan, 3}, false, nan, nan, {}},
      {"log drops non-positive", {0, 1, 2, 3, 4}, {1, 10, 0, 100, 1000}, true, nan, nan, {2, 2}},
      {"manual limits cut", {-1, 2}, {0.5, 0.5}, false, 0, 1, {2}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Scene s;
    Figure f(300, 200, 72);
    Axes& ax = f.addAxes();
    ax.plot(c.x, c.y);
    if (c.logY) ax.setYScale(Scale::Log);
    ax.setXLimits(c.xlo, c.xhi);
    f.draw(s.rec.window());
    // Data runs come before the clip is cleared; the frame is the first line after.
    const auto calls = s.rec.calls();
    std::size_t runs = 0;
    for (const auto& call : calls) {
      if (call.slot == "DestroyClipRegion") break;
      if (call.slot == "PolyLineRP3") ++runs;
    }
    ASSERT_EQ(runs, c.runSizes.size());
    for (std::size_t k = 0; k < runs; ++k) EXPECT_EQ(gPolylines[k].size(), c.runSizes[k]);
    if (c.xlo == 0) {
      const auto& frame = gPolylines[runs];
      EXPECT_NEAR(gPolylines[0].front().x, frame[0].x, 1e-9);
      EXPECT_NEAR(gPolylines[0].back().x, frame[1].x, 1e-9);
    }
  }
}

}  // namespace

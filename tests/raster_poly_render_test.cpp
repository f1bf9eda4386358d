// The small drawing routines: rectangle corners, clip regions, point mapping
// between rectangles, CMYK, and drRenderPoly's calls through the method table.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qvgui/window.h"
#include "raster_poly_test_support.h"

namespace {

using gui_objects::test::WindowMethodRecorder;

TEST(RasterRender, RectangleCornersAndClipRegion) {
  const qvrect r{1, 2, 30, 40};  // top, left, bottom, right
  const Polygon2* p = drRect2Polygon2(&r);
  ASSERT_EQ(p->count, 4);
  EXPECT_EQ(std::vector<qvpoint32>(p->points, p->points + 4),
            (std::vector<qvpoint32>{{2, 1}, {2, 30}, {40, 30}, {40, 1}}));

  WindowMethodRecorder rec;
  int region = 0;
  rec.setPointerResult("CreateClipRegion", &region);
  EXPECT_EQ(drRect2ClipRegion(rec.window(), &r), &region);
  ASSERT_EQ(rec.calls().size(), 2u);
  EXPECT_EQ(rec.calls()[1].toString(),
            "UnionRectRegion([1 2 30 40], " + WindowMethodRecorder::formatPointer(&region) + ")");
}

TEST(RasterRender, Local2GlobalScalesAndFlips) {
  struct Case {
    const char* label;
    qvrect local, global;  // top, left, bottom, right
    std::int16_t x, y, wantX, wantY;
  };
  const Case cases[] = {
      {"same rectangle", {0, 0, 10, 10}, {0, 0, 10, 10}, 3, 7, 3, 7},
      {"doubled and shifted", {0, 0, 10, 10}, {100, 50, 120, 70}, 3, 7, 56, 114},
      {"truncated toward zero", {0, 0, 3, 3}, {0, 0, 10, 10}, 1, 2, 3, 6},
      {"global flipped: y mirrors", {0, 0, 10, 10}, {20, 0, 0, 10}, 3, 7, 3, 6},
      {"both flipped", {10, 0, 0, 10}, {20, 0, 0, 10}, 3, 7, 3, 14},
      {"zero-width local", {0, 5, 10, 5}, {0, 0, 10, 10}, 9, 0, 0, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::int16_t x = c.x, y = c.y;
    drLocal2Global(&c.local, &c.global, &x, &y);
    EXPECT_EQ(x, c.wantX);
    EXPECT_EQ(y, c.wantY);
  }
}

TEST(RasterRender, Rgb2CmykTakesBlackOutWithoutRescaling) {
  struct Case {
    double r, g, b, c, m, y, k;
  };
  const Case cases[] = {{0.2, 0.4, 0.6, 0.4, 0.2, 0.0, 0.4},
                        {1, 1, 1, 0, 0, 0, 0},
                        {0, 0, 0, 0, 0, 0, 1},
                        {1, 0, 0, 0, 1, 1, 0}};
  for (const Case& t : cases) {
    Color_tag* colour = create_ColorPtrFromRGB(t.r, t.g, t.b);
    double c, m, y, k;
    drRgb2Cmyk(colour, &c, &m, &y, &k);
    destroy_ColorPtr(colour);
    EXPECT_NEAR(c, t.c, 1e-12);
    EXPECT_NEAR(m, t.m, 1e-12);
    EXPECT_NEAR(y, t.y, 1e-12);
    EXPECT_NEAR(k, t.k, 1e-12);
  }
}

TEST(RasterRender, RenderPolySetsColoursThenPaintsAndFrames) {
  Color_tag* red = create_ColorPtrFromRGB(1, 0, 0);
  int faceData = 0, edgeData = 0;
  raster_test::Poly square{{{0, 0}, {3, 0}, {3, 3}, {0, 3}}};
  Polygon2 poly = square.view();
  const std::string P = WindowMethodRecorder::formatPointer(&poly);
  const std::string F = WindowMethodRecorder::formatPointer(&faceData);
  const std::string E = WindowMethodRecorder::formatPointer(&edgeData);
  const std::string R = WindowMethodRecorder::formatPointer(red);
  const std::string N = WindowMethodRecorder::formatPointer(nullptr);
  struct Case {
    const char* label;
    std::int16_t faceKind, edgeKind;
    GOEraseMode mode;
    std::vector<std::string> calls;
  };
  const std::vector<Case> cases = {
      {"nothing to draw", 0, 0, GO_NORMAL_MODE, {}},
      {"index face, record edge",
       1,
       2,
       GO_NORMAL_MODE,
       {"SetFGColormapIndex(7)", "PaintPoly(" + P + ", " + F + ", " + N + ")", "SetFGColorPtr(" + R + ")",
        "DrawPoly(" + P + ", " + E + ", " + N + ")"}},
      {"erase mode keeps its colour",
       2,
       1,
       GO_ERASE_MODE,
       {"PaintPoly(" + P + ", " + F + ", " + N + ")", "DrawPoly(" + P + ", " + E + ", " + N + ")"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    WindowMethodRecorder rec;
    wm_SetDrawMode(rec.window(), c.mode);
    rec.clear();
    tagRenderCData render{};
    render.faceColorKind = c.faceKind;
    render.edgeColorKind = c.edgeKind;
    if (c.faceKind == 1) render.faceColor.index = 7;
    if (c.faceKind == 2) render.faceColor.color = red;
    if (c.edgeKind == 1) render.edgeColor.index = 7;
    if (c.edgeKind == 2) render.edgeColor.color = red;
    render.faceData = &faceData;
    render.edgeData = &edgeData;
    drRenderPoly(rec.window(), &poly, &render);
    std::vector<std::string> calls;
    for (const auto& call : rec.calls()) calls.push_back(call.toString());
    EXPECT_EQ(calls, c.calls);
  }
  destroy_ColorPtr(red);
}

}  // namespace

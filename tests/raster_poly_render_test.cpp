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
  Color_tag* colour = create_ColorPtrFromRGB(0.2, 0.4, 0.6);
  double cmyk[4];
  drRgb2Cmyk(colour, &cmyk[0], &cmyk[1], &cmyk[2], &cmyk[3]);
  destroy_ColorPtr(colour);
  const double want[4] = {0.4, 0.2, 0.0, 0.4};
  for (int i = 0; i < 4; ++i) EXPECT_NEAR(cmyk[i], want[i], 1e-12) << i;
  drRgb2Cmyk(nullptr, &cmyk[0], &cmyk[1], &cmyk[2], &cmyk[3]);
  EXPECT_EQ(cmyk[3], 1.0) << "a null colour is black";
}

TEST(RasterRender, RenderPolySetsColoursThenPaintsAndFrames) {
  Color_tag* red = create_ColorPtrFromRGB(1, 0, 0);
  int faceData = 0, edgeData = 0;
  raster_test::Poly square{{{0, 0}, {3, 0}, {3, 3}, {0, 3}}};
  Polygon2 poly = square.view();
  struct Case {
    std::int16_t faceKind, edgeKind;
    GOEraseMode mode;
    const char* calls;  // slot names, each call's first argument after '='
  };
  const Case cases[] = {
      {0, 0, GO_NORMAL_MODE, ""},
      {1, 2, GO_NORMAL_MODE, "SetFGColormapIndex=7 PaintPoly=P SetFGColorPtr=R DrawPoly=P "},
      {2, 1, GO_ERASE_MODE, "PaintPoly=P DrawPoly=P "},  // erase mode keeps its own colour
  };
  for (const Case& c : cases) {
    WindowMethodRecorder rec;
    wm_SetDrawMode(rec.window(), c.mode);
    rec.clear();
    tagRenderCData render{c.faceKind, c.edgeKind, {}, {}, nullptr, &faceData, &edgeData};
    (c.faceKind == 1 ? render.faceColor.index : render.edgeColor.index) = 7;
    (c.faceKind == 2 ? render.faceColor.color : render.edgeColor.color) = red;
    drRenderPoly(rec.window(), &poly, &render);
    std::string calls;
    for (const auto& call : rec.calls()) {
      std::string first = call.args.at(0);
      if (first == WindowMethodRecorder::formatPointer(&poly)) first = "P";
      if (first == WindowMethodRecorder::formatPointer(red)) first = "R";
      calls += call.slot + "=" + first + " ";
      const void* data = call.slot == "PaintPoly" ? &faceData : call.slot == "DrawPoly" ? &edgeData : nullptr;
      if (data != nullptr) {
        EXPECT_EQ(call.args.at(1), WindowMethodRecorder::formatPointer(data));
      }
    }
    EXPECT_EQ(calls, c.calls);
  }
  destroy_ColorPtr(red);
}

}  // namespace

// Small drawing routines of the software back ends: rectangles as polygons
// and clip regions, point mapping between rectangles, CMYK conversion and the
// filled-and-outlined polygon through the window-method table.
#include <algorithm>
#include <cstdlib>

#include "qvgui/geometry.h"
#include "qvgui/raster.h"
#include "qvgui/window.h"
#include "raster/poly_p.h"

using namespace qvgui_raster;

namespace {
qvpoint32 g_rectPoints[4];
Polygon2 g_rectPoly{g_rectPoints, 4};
}  // namespace

Polygon2* drRect2Polygon2(const qvrect* rect) {
  const qvrect r = rect != nullptr ? *rect : qvrect{0, 0, 0, 0};
  g_rectPoints[0] = qvpoint32{r.left, r.top};
  g_rectPoints[1] = qvpoint32{r.left, r.bottom};
  g_rectPoints[2] = qvpoint32{r.right, r.bottom};
  g_rectPoints[3] = qvpoint32{r.right, r.top};
  g_rectPoly.count = 4;
  return &g_rectPoly;
}

void* drRect2ClipRegion(WinRec_tag* win, const qvrect* rect) {
  void* region = wm_CreateClipRegion(win);
  wm_UnionRectRegion(win, rect, region);
  return region;
}

void drLocal2Global(const qvrect* local, const qvrect* global, std::int16_t* x, std::int16_t* y) {
  if (local == nullptr || global == nullptr || x == nullptr || y == nullptr) return;
  const qvrect& l = *local;
  const qvrect& g = *global;
  const double localWidth = static_cast<double>(l.right) - l.left;
  const double localHeight = std::abs(static_cast<double>(l.bottom) - l.top);
  const double xScale = localWidth != 0.0 ? (static_cast<double>(g.right) - g.left) / localWidth : 0.0;
  const double yScale =
      localHeight != 0.0 ? std::abs(static_cast<double>(g.bottom) - g.top) / localHeight : 0.0;
  const bool localFlipped = l.top > l.bottom;
  const bool globalFlipped = g.top > g.bottom;

  *x = low16(truncToInt32((*x - static_cast<double>(l.left)) * xScale) + g.left);
  const std::int32_t localBase = localFlipped ? l.bottom : l.top;
  const std::int16_t d = low16(truncToInt32((*y - static_cast<double>(localBase)) * yScale));
  if (localFlipped == globalFlipped) {
    *y = low16((globalFlipped ? g.bottom : g.top) + d);
  } else {
    *y = low16((globalFlipped ? g.top : g.bottom) - d);
  }
}

void drRgb2Cmyk(const Color_tag* colour, double* c, double* m, double* y, double* k) {
  const double cc = 1.0 - get_ColorPtr_red(colour);
  const double mm = 1.0 - get_ColorPtr_green(colour);
  const double yy = 1.0 - get_ColorPtr_blue(colour);
  const double kk = std::min({cc, mm, yy});
  if (c != nullptr) *c = cc - kk;
  if (m != nullptr) *m = mm - kk;
  if (y != nullptr) *y = yy - kk;
  if (k != nullptr) *k = kk;
}

namespace {

// In GO_ERASE_MODE the window draws in its own colour: leave the foreground.
void setForeground(WinRec_tag* win, std::int16_t kind, const RenderColor_tag& colour) {
  if (wm_GetDrawMode(win) == GO_ERASE_MODE) return;
  if (kind == 1) {
    wm_SetFGColormapIndex(win, colour.index);
  } else if (kind == 2) {
    wm_SetFGColorPtr(win, colour.color);
  }
}

}  // namespace

void drRenderPoly(WinRec_tag* win, const Polygon2* poly, tagRenderCData* render) {
  if (render == nullptr) return;
  if (render->faceColorKind != 0) {
    setForeground(win, render->faceColorKind, render->faceColor);
    wm_PaintPoly(win, poly, render->faceData, render->colortable);
  }
  if (render->edgeColorKind != 0) {
    setForeground(win, render->edgeColorKind, render->edgeColor);
    wm_DrawPoly(win, poly, render->edgeData, render->colortable);
  }
}

// Hit tests on polygons, circles, ovals and markers, and the 5-pixel grid.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "qvgui/geometry.h"
#include "qvgui/raster.h"
#include "qvgui/window.h"
#include "raster/poly_p.h"

using namespace qvgui_raster;

void geoFindPolyBounds(const Polygon2* poly, int linewidth, qvrect* rect) {
  if (rect == nullptr) return;
  std::int32_t minX = 32767, minY = 32767, maxX = -32768, maxY = -32768;
  const std::int32_t n = (poly != nullptr && poly->points != nullptr) ? poly->count : 0;
  for (std::int32_t i = 0; i < n; ++i) {
    minX = std::min(minX, poly->points[i].x);
    maxX = std::max(maxX, poly->points[i].x);
    minY = std::min(minY, poly->points[i].y);
    maxY = std::max(maxY, poly->points[i].y);
  }
  const std::int32_t t = truncToInt32(linewidth * -0.5);  // at or below 0
  rect->left = minX + t - 1;
  rect->bottom = minY + t - 1;
  rect->right = maxX + 1 - t;
  rect->top = maxY + 1 - t;
}

bool geoPtInPolygon(qvpoint32 pt, int linewidth, const Polygon2* poly) {
  if (poly == nullptr || poly->points == nullptr || poly->count <= 0) return false;
  qvrect box;
  geoFindPolyBounds(poly, linewidth, &box);
  if (pt.x < box.left || pt.x > box.right || pt.y < box.bottom || pt.y > box.top) return false;
  // A tiny polygon is hard to hit exactly: its whole box counts.
  if (std::int64_t{box.right} - box.left < 5 || std::int64_t{box.top} - box.bottom < 5) return true;

  // Even-odd count of crossings of the ray towards +x. An edge counts when
  // one end is on or above the point's row and the other below it, so a
  // vertex on the ray's row counts as above it once. Products are exact.
  const std::int32_t n = poly->count;
  const qvpoint32* p = poly->points;
  std::int32_t last = -1;
  for (std::int32_t i = n - 1; i >= 0 && last < 0; --i) {
    if (!isMissing(p[i])) last = i;
  }
  if (last < 0) return false;
  bool inside = false;
  std::int64_t xj = std::int64_t{p[last].x} - pt.x, yj = std::int64_t{p[last].y} - pt.y;
  for (std::int32_t i = 0; i < n; ++i) {
    if (isMissing(p[i])) continue;
    const std::int64_t xi = std::int64_t{p[i].x} - pt.x, yi = std::int64_t{p[i].y} - pt.y;
    if ((yi < 1) != (yj < 1)) {
      const double cross = static_cast<double>(xj * yi - yj * xi) / static_cast<double>(yi - yj);
      if (cross > 0.0) inside = !inside;
    }
    xj = xi;
    yj = yi;
  }
  return inside;
}

bool geoPtInCircle(qvpoint32 pt, qvpoint32 centre, int radius) {
  const double dx = static_cast<double>(pt.x) - centre.x, dy = static_cast<double>(pt.y) - centre.y;
  return std::pow(dx, 2.0) + std::pow(dy, 2.0) <= std::pow(static_cast<double>(radius), 2.0);
}

bool geoPtInOval(qvpoint32 pt, qvpoint32 centre, int a, int b) {
  const double dx = static_cast<double>(pt.x) - centre.x, dy = static_cast<double>(pt.y) - centre.y;
  return std::pow(dx / a, 2.0) + std::pow(dy / b, 2.0) < 1.0;
}

namespace {

// Bars of the plus, padded by one pixel so a click just beside a thin bar
// still hits.
bool inPlusBars(qvpoint32 pt, qvpoint32 c, std::int32_t half, int linewidth) {
  const std::int32_t w = low16(linewidth / 2);
  const bool vertical =
      c.x - w - 1 <= pt.x && pt.x <= c.x + w + 1 && c.y - half - 1 <= pt.y && pt.y <= c.y + half + 1;
  const bool horizontal =
      c.x - half - 1 <= pt.x && pt.x <= c.x + half + 1 && c.y - w - 1 <= pt.y && pt.y <= c.y + w + 1;
  return vertical || horizontal;
}

// The diagonal cross as a twelve-vertex outline around both strokes.
bool inDiagonalCross(qvpoint32 pt, qvpoint32 c, std::int32_t half, int linewidth) {
  const double root2 = std::sqrt(2.0);
  const double A = half / root2, B = linewidth / root2, C = linewidth * 0.5 / root2;
  const std::int32_t e = truncToInt32(B) + 2;
  const std::int32_t cq = truncToInt32(C);
  const std::int32_t i = low16(truncToInt32(A - cq));
  const std::int32_t o = low16(truncToInt32(cq + A + 2.0));
  qvpoint32 v[12] = {{c.x - i, c.y + o}, {c.x, c.y + e},     {c.x + i, c.y + o}, {c.x + o, c.y + i},
                     {c.x + e, c.y},     {c.x + o, c.y - i}, {c.x + i, c.y - o}, {c.x, c.y - e},
                     {c.x - i, c.y - o}, {c.x - o, c.y - i}, {c.x - e, c.y},     {c.x - o, c.y + i}};
  const Polygon2 cross{v, 12};
  return geoPtInPolygon(pt, linewidth, &cross);
}

// The window's pixels per point; a window without a table or without the
// slot installed answers for the screen rather than crashing.
double pixelsPerPoint(WinRec_tag* win) {
  const winMethods_tag* methods = gwr_winMethods(win);
  if (methods == nullptr || methods->PixelsPerPoint == nullptr) return ws_GetScreenPixelsPerPoint();
  return wm_PixelsPerPoint(win);
}

}  // namespace

bool geoIsPtInMarkerTerritory(WinRec_tag* win, qvpoint32 pt, int code, std::int16_t size, int linewidth,
                              qvpoint32 centre) {
  if (code < 0 || code > 12) return false;
  const std::int32_t m = low16(truncToInt32(pixelsPerPoint(win) * size));
  const std::int32_t half = m / 2;
  const std::int64_t reach = std::int64_t{half} + linewidth;
  if (std::abs(std::int64_t{pt.x} - centre.x) > reach || std::abs(std::int64_t{pt.y} - centre.y) > reach) {
    return false;
  }
  switch (code) {
    case 1:
      return geoPtInCircle(pt, centre, half + linewidth + 1);
    case 3:
      return geoPtInCircle(pt, centre, m / 6 + linewidth + 1);
    case 0:
      return inPlusBars(pt, centre, half, linewidth);
    case 2:
      return inPlusBars(pt, centre, half, linewidth) || inDiagonalCross(pt, centre, half, linewidth);
    case 4:
      return inDiagonalCross(pt, centre, half, linewidth);
    default: {
      qvpoint32 v[kMarkerPolyMaxPoints];
      Polygon2 marker{v, 0};
      geoGetMarkerPoly(code, low16(m), centre, &marker);
      return geoPtInPolygon(pt, linewidth, &marker);
    }
  }
}

std::int16_t grid(qvpoint* point) {
  if (point == nullptr) return 0;
  auto snap = [](std::int16_t v) {
    const std::int32_t r = v % 5;  // the sign of v
    std::int32_t s = v - r;
    if (r > 3) s += 5;
    return static_cast<std::int16_t>(s);
  };
  point->v = snap(point->v);
  point->h = snap(point->h);
  return point->v;
}

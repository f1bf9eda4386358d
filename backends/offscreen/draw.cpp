// Drawing slots of the offscreen back end: colours, line attributes, lines,
// rectangles, ovals and polygons, and the device queries.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "backends/offscreen/canvas_p.h"
#include "qvgui/raster.h"

namespace qvgui::offscreen::detail {
namespace {

// ---- Pen and fill state ---------------------------------------------------------

double lineWidthPx(const CanvasState& st) {
  const double w = st.lineWidthPt * st.pixelsPerPoint();
  return std::isfinite(w) && w > 0.0 ? w : 1.0;
}

// An upper bound of the current path's length: its control polygon.
double pathLengthBound(cairo_t* cr) {
  cairo_path_t* path = cairo_copy_path(cr);
  double length = 0.0, x = 0.0, y = 0.0;
  for (int i = 0; i < path->num_data; i += path->data[i].header.length) {
    const cairo_path_data_t& head = path->data[i];
    for (int k = 1; k < head.header.length; ++k) {
      const double px = path->data[i + k].point.x, py = path->data[i + k].point.y;
      if (head.header.type != CAIRO_PATH_MOVE_TO) length += std::hypot(px - x, py - y);
      x = px, y = py;
    }
  }
  cairo_path_destroy(path);
  return length;
}

// Dash lengths in points per point of line width, so thick dashed lines keep
// their look. A stroke that would need more than a million dashes (a shape
// reaching far off the canvas) is drawn solid: the document back ends cut the
// dashes themselves, and that many would take gigabytes.
void applyDashes(CanvasState& st, LineTypes type, double widthPx) {
  constexpr double kMaxDashes = 1e6;
  static const double kDashed[] = {4.0, 2.5};
  static const double kDotted[] = {1.0, 2.0};
  static const double kDashDot[] = {4.0, 2.0, 1.0, 2.0};
  const double* pattern = nullptr;
  int n = 0;
  switch (type) {
    case LINE_DASHED:
      pattern = kDashed, n = 2;
      break;
    case LINE_DOTTED:
      pattern = kDotted, n = 2;
      break;
    case LINE_DASHDOT:
      pattern = kDashDot, n = 4;
      break;
    default:
      break;
  }
  if (!pattern) {
    cairo_set_dash(st.cr, nullptr, 0, 0.0);
    return;
  }
  // A dash is never shorter than a pixel, or hairlines would vanish.
  const double unit = std::max(widthPx, st.pixelsPerPoint());
  double scaled[4];
  double period = 0.0;
  for (int i = 0; i < n; ++i) period += scaled[i] = std::max(1.0, pattern[i] * unit);
  if (!(pathLengthBound(st.cr) <= kMaxDashes * period)) {
    cairo_set_dash(st.cr, nullptr, 0, 0.0);
    return;
  }
  cairo_set_dash(st.cr, scaled, n, 0.0);
}

// Sets up a stroke in the pen colour; false when the line type draws nothing.
bool beginStroke(CanvasState& st) {
  const LineTypes type = wm_GetLineType(st.win);
  if (!wmi_IsRealLineType(type)) return false;
  const double w = lineWidthPx(st);
  cairo_set_line_width(st.cr, w);
  cairo_set_line_join(st.cr, st.join == LINE_JOIN_ROUND   ? CAIRO_LINE_JOIN_ROUND
                             : st.join == LINE_JOIN_BEVEL ? CAIRO_LINE_JOIN_BEVEL
                                                          : CAIRO_LINE_JOIN_MITER);
  cairo_set_line_cap(st.cr, st.cap == LINE_CAP_ROUND    ? CAIRO_LINE_CAP_ROUND
                            : st.cap == LINE_CAP_SQUARE ? CAIRO_LINE_CAP_SQUARE
                                                        : CAIRO_LINE_CAP_BUTT);
  applyDashes(st, type, w);
  setSourceRgb(st, st.fg);
  return true;
}

void strokePath(CanvasState& st) {
  if (beginStroke(st))
    cairo_stroke(st.cr);
  else
    cairo_new_path(st.cr);
}

void fillPath(CanvasState& st, const Rgb& c) {
  setSourceRgb(st, c);
  if (!st.fillAntialias) cairo_set_antialias(st.cr, CAIRO_ANTIALIAS_NONE);
  if (st.format != Format::Png) {
    // A viewer smooths the edges of each vector piece on its own, so abutting
    // fills (filled bands, colour bars) show hairline seams; a hairline of
    // the fill's own colour closes them.
    cairo_fill_preserve(st.cr);
    cairo_save(st.cr);
    cairo_set_line_width(st.cr, 0.5);
    cairo_set_line_join(st.cr, CAIRO_LINE_JOIN_MITER);
    cairo_set_dash(st.cr, nullptr, 0, 0);
    cairo_stroke(st.cr);
    cairo_restore(st.cr);
  } else {
    cairo_fill(st.cr);
  }
  if (!st.fillAntialias) cairo_set_antialias(st.cr, CAIRO_ANTIALIAS_DEFAULT);
}

Rgb rgbOf(const Color_tag* c) { return Rgb{c->red, c->green, c->blue}; }

void SetFGColorPtr(WinRec_tag* win, Color_tag* c) {
  if (c) stateOf(win).fg = rgbOf(c);
}

void SetBGColorPtr(WinRec_tag* win, Color_tag* c) {
  if (c) stateOf(win).bg = rgbOf(c);
}

Rgb rgbOfPixel(long pixel) {
  return Rgb{((pixel >> 16) & 0xff) / 255.0, ((pixel >> 8) & 0xff) / 255.0, (pixel & 0xff) / 255.0};
}

void SetFGColor(WinRec_tag* win, long pixel) { stateOf(win).fg = rgbOfPixel(pixel); }
void SetBGColor(WinRec_tag* win, long pixel) { stateOf(win).bg = rgbOfPixel(pixel); }

// The background covers the whole surface, whatever the clip.
void SetFigureBackgroundColor(WinRec_tag* win, Color_tag* c) {
  if (!c) return;
  CanvasState& st = stateOf(win);
  cairo_save(st.cr);
  cairo_reset_clip(st.cr);
  setSourceRgb(st, rgbOf(c));
  cairo_paint(st.cr);
  cairo_restore(st.cr);
}

void SetLineWidth(WinRec_tag* win, double points) { stateOf(win).lineWidthPt = points; }
void SetLineJoin(WinRec_tag* win, LineJoins join) { stateOf(win).join = join; }
void SetLineCap(WinRec_tag* win, LineCaps cap) { stateOf(win).cap = cap; }
// The wm_ layer records the line type; nothing more to keep.
void SetLineType(WinRec_tag*, LineTypes) {}

// ---- Lines ---------------------------------------------------------------------

void MoveTo(WinRec_tag* win, short h, short v) {
  CanvasState& st = stateOf(win);
  st.penX = h;
  st.penY = v;
}

void LineTo(WinRec_tag* win, short h, short v) {
  CanvasState& st = stateOf(win);
  cairo_move_to(st.cr, st.penX + kCentre, st.penY + kCentre);
  cairo_line_to(st.cr, h + kCentre, v + kCentre);
  st.penX = h;
  st.penY = v;
  strokePath(st);
}

void PolyLine(WinRec_tag* win, int* xs, int* ys, int count) {
  if (!xs || !ys || count < 2) return;
  CanvasState& st = stateOf(win);
  bool open = false;
  for (int i = 0; i < count; ++i) {
    if (xs[i] == kMissingPoint || ys[i] == kMissingPoint) {
      open = false;
      continue;
    }
    if (open)
      cairo_line_to(st.cr, xs[i] + kCentre, ys[i] + kCentre);
    else
      cairo_move_to(st.cr, xs[i] + kCentre, ys[i] + kCentre);
    open = true;
  }
  strokePath(st);
}

void PolyLineRP3(WinRec_tag* win, Real_point3* points, int count) {
  if (!points || count < 2) return;
  CanvasState& st = stateOf(win);
  bool open = false;
  for (int i = 0; i < count; ++i) {
    const double x = points[i].x, y = points[i].y;
    if (!std::isfinite(x) || !std::isfinite(y)) {
      open = false;
      continue;
    }
    if (open)
      cairo_line_to(st.cr, x + kCentre, y + kCentre);
    else
      cairo_move_to(st.cr, x + kCentre, y + kCentre);
    open = true;
  }
  strokePath(st);
}

// ---- Rectangles and ovals ----------------------------------------------------------

bool isEmpty(const qvrect* r) { return !r || r->right <= r->left || r->bottom <= r->top; }

// Rectangles join the pending fills as they are: cairo_rectangle turns the
// way addToPendingFills turns every polygon.
void PaintRect(WinRec_tag* win, const qvrect* r) {
  if (isEmpty(r)) return;
  CanvasState& st = fillingStateOf(win);
  cairo_rectangle(st.cr, r->left, r->top, double(r->right) - r->left, double(r->bottom) - r->top);
  if (st.joinFills)
    st.fillPending = true;
  else
    fillPath(st, st.fg);
}

void EraseRect(WinRec_tag* win, qvrect* r) {
  if (isEmpty(r)) return;
  CanvasState& st = stateOf(win);
  cairo_rectangle(st.cr, r->left, r->top, double(r->right) - r->left, double(r->bottom) - r->top);
  fillPath(st, st.bg);
}

void FrameRect(WinRec_tag* win, const qvrect* r) {
  if (isEmpty(r)) return;
  CanvasState& st = stateOf(win);
  cairo_rectangle(st.cr, r->left + kCentre, r->top + kCentre, double(r->right) - r->left - 1.0,
                  double(r->bottom) - r->top - 1.0);
  strokePath(st);
}

// An ellipse inscribed in the box x0 .. x1, y0 .. y1.
void ovalPath(cairo_t* cr, double x0, double y0, double x1, double y1) {
  const double rx = (x1 - x0) / 2.0, ry = (y1 - y0) / 2.0;
  if (rx <= 0.0 || ry <= 0.0) return;
  cairo_save(cr);
  cairo_translate(cr, x0 + rx, y0 + ry);
  cairo_scale(cr, rx, ry);
  cairo_new_sub_path(cr);
  cairo_arc(cr, 0.0, 0.0, 1.0, 0.0, 2.0 * M_PI);
  cairo_close_path(cr);
  cairo_restore(cr);
}

void PaintOval(WinRec_tag* win, const qvrect* r) {
  if (isEmpty(r)) return;
  CanvasState& st = stateOf(win);
  ovalPath(st.cr, r->left, r->top, r->right, r->bottom);
  fillPath(st, st.fg);
}

void FrameOval(WinRec_tag* win, const qvrect* r) {
  if (isEmpty(r)) return;
  CanvasState& st = stateOf(win);
  ovalPath(st.cr, r->left + kCentre, r->top + kCentre, r->right - kCentre, r->bottom - kCentre);
  strokePath(st);
}

// A box with corners rounded by ellipses of ow x oh pixels.
void roundRectPath(cairo_t* cr, double x0, double y0, double x1, double y1, int ow, int oh) {
  const double rx = std::min(std::max(ow, 0) / 2.0, (x1 - x0) / 2.0);
  const double ry = std::min(std::max(oh, 0) / 2.0, (y1 - y0) / 2.0);
  if (rx <= 0.0 || ry <= 0.0) {
    cairo_rectangle(cr, x0, y0, x1 - x0, y1 - y0);
    return;
  }
  auto corner = [&](double cx, double cy, double from) {
    cairo_save(cr);
    cairo_translate(cr, cx, cy);
    cairo_scale(cr, rx, ry);
    cairo_arc(cr, 0.0, 0.0, 1.0, from, from + M_PI / 2.0);
    cairo_restore(cr);
  };
  cairo_new_sub_path(cr);
  corner(x1 - rx, y0 + ry, -M_PI / 2.0);
  corner(x1 - rx, y1 - ry, 0.0);
  corner(x0 + rx, y1 - ry, M_PI / 2.0);
  corner(x0 + rx, y0 + ry, M_PI);
  cairo_close_path(cr);
}

void PaintRoundRect(WinRec_tag* win, const qvrect* r, int ow, int oh) {
  if (isEmpty(r)) return;
  CanvasState& st = stateOf(win);
  roundRectPath(st.cr, r->left, r->top, r->right, r->bottom, ow, oh);
  fillPath(st, st.fg);
}

void FrameRoundRect(WinRec_tag* win, const qvrect* r, int ow, int oh) {
  if (isEmpty(r)) return;
  CanvasState& st = stateOf(win);
  roundRectPath(st.cr, r->left + kCentre, r->top + kCentre, r->right - kCentre, r->bottom - kCentre, ow, oh);
  strokePath(st);
}

// ---- Polygons ------------------------------------------------------------------

// Adds the polygon's present vertices, moved by `offset`, as one closed ring;
// false when fewer than two are left.
bool polygonPath(cairo_t* cr, const Polygon2* poly, double offset) {
  if (!poly || !poly->points) return false;
  int used = 0;
  for (std::int32_t i = 0; i < poly->count; ++i) {
    const std::int32_t x = poly->points[i].x, y = poly->points[i].y;
    if (x == kMissingPoint || y == kMissingPoint) continue;
    if (used++ == 0)
      cairo_move_to(cr, x + offset, y + offset);
    else
      cairo_line_to(cr, x + offset, y + offset);
  }
  if (used < 2) {
    cairo_new_path(cr);
    return false;
  }
  cairo_close_path(cr);
  return true;
}

// Twice the signed area of the triangle a, b, c: positive when it turns the
// way cairo_rectangle does (y down).
std::int64_t turn(const qvpoint32& a, const qvpoint32& b, const qvpoint32& c) {
  return std::int64_t{b.x - a.x} * (c.y - a.y) - std::int64_t{b.y - a.y} * (c.x - a.x);
}

int sign(std::int64_t v) { return (v > 0) - (v < 0); }

// Whether the closed segments ab and cd share a point.
bool segmentsMeet(const qvpoint32& a, const qvpoint32& b, const qvpoint32& c, const qvpoint32& d) {
  const int d1 = sign(turn(a, b, c)), d2 = sign(turn(a, b, d));
  const int d3 = sign(turn(c, d, a)), d4 = sign(turn(c, d, b));
  if (d1 * d2 < 0 && d3 * d4 < 0) return true;
  const auto within = [](const qvpoint32& p, const qvpoint32& q, const qvpoint32& r) {
    return std::min(p.x, q.x) <= r.x && r.x <= std::max(p.x, q.x) && std::min(p.y, q.y) <= r.y &&
           r.y <= std::max(p.y, q.y);
  };
  return (d1 == 0 && within(a, b, c)) || (d2 == 0 && within(a, b, d)) || (d3 == 0 && within(c, d, a)) ||
         (d4 == 0 && within(c, d, b));
}

// Adds the polygon to the pending fills, or paints nothing when fewer than
// two of its vertices are present; false leaves the path alone and the
// polygon to be painted by itself. It joins them when its boundary does not
// touch itself, turned the way rectangles turn: then its even-odd area is its
// nonzero area, and the nonzero area of all the pending fills is their union,
// whatever overlaps. A polygon on one line joins them as it is: no area, but
// an outline on vector canvases. Small polygons only (the test is
// quadratic), with coordinates small enough for exact products.
bool addToPendingFills(cairo_t* cr, const Polygon2* poly) {
  constexpr std::int32_t kMaxVertices = 32;
  constexpr std::int32_t kFar = 1 << 24;
  if (!poly || !poly->points || poly->count > 2 * kMaxVertices) return false;
  qvpoint32 v[2 * kMaxVertices];
  std::int32_t present = 0, n = 0;
  for (std::int32_t i = 0; i < poly->count; ++i) {
    const qvpoint32 p = poly->points[i];
    if (p.x == kMissingPoint || p.y == kMissingPoint) continue;
    if (p.x < -kFar || p.x > kFar || p.y < -kFar || p.y > kFar) return false;
    ++present;
    if (n > 0 && p.x == v[n - 1].x && p.y == v[n - 1].y) continue;
    v[n++] = p;
  }
  if (present < 2) return true;
  while (n > 1 && v[n - 1].x == v[0].x && v[n - 1].y == v[0].y) --n;
  bool onOneLine = true;
  for (std::int32_t i = 2; i < n && onOneLine; ++i) onOneLine = turn(v[0], v[1], v[i]) == 0;
  if (onOneLine) return polygonPath(cr, poly, 0.0);
  if (n > kMaxVertices) return false;
  // Edges that are not neighbours may not meet at all. (An edge folding back
  // over its neighbour ends on the edge after that.)
  for (std::int32_t i = 0; i < n; ++i) {
    for (std::int32_t j = i + 2; j < n; ++j) {
      if (i == 0 && j == n - 1) continue;
      if (segmentsMeet(v[i], v[i + 1], v[j], v[(j + 1) % n])) return false;
    }
  }
  std::int64_t area = 0;
  for (std::int32_t i = 1; i + 1 < n; ++i) area += turn(v[0], v[i], v[i + 1]);
  const bool reverse = area < 0;
  for (std::int32_t k = 0; k < n; ++k) {
    const qvpoint32& p = v[reverse ? n - 1 - k : k];
    if (k == 0)
      cairo_move_to(cr, p.x, p.y);
    else
      cairo_line_to(cr, p.x, p.y);
  }
  cairo_close_path(cr);
  return true;
}

void PaintPoly(WinRec_tag* win, const Polygon2* poly, int*, Colortable_tag*) {
  CanvasState& st = fillingStateOf(win);
  // Filled vertices sit on pixel corners, like rectangle edges, so a polygon
  // meets a rectangle or another polygon along a shared edge without a seam.
  if (st.joinFills && addToPendingFills(st.cr, poly)) {
    st.fillPending = cairo_has_current_point(st.cr) != 0;
    return;
  }
  paintPendingFills(st);
  if (!polygonPath(st.cr, poly, 0.0)) return;
  cairo_set_fill_rule(st.cr, CAIRO_FILL_RULE_EVEN_ODD);
  fillPath(st, st.fg);
}

void DrawPoly(WinRec_tag* win, const Polygon2* poly, int*, Colortable_tag*) {
  CanvasState& st = stateOf(win);
  if (polygonPath(st.cr, poly, kCentre)) strokePath(st);
}

// ---- Device queries --------------------------------------------------------------

void deviceRect(WinRec_tag* win, qvrect* out) {
  if (!out) return;
  const CanvasState& st = stateOf(win);
  *out = qvrect{0, 0, st.height, st.width};
}

double PixelsPerInch(WinRec_tag* win) { return stateOf(win).dpi; }
double PixelsPerPoint(WinRec_tag* win) { return stateOf(win).pixelsPerPoint(); }
bool IsWindowVisible(WinRec_tag*) { return true; }
void Flush(WinRec_tag* win) { cairo_surface_flush(stateOf(win).surface); }

}  // namespace

// The pen colour cannot have changed since the first pending fill: setting it
// goes through stateOf, which paints them.
void paintPendingFills(CanvasState& st) noexcept {
  if (!st.fillPending) return;
  st.fillPending = false;
  cairo_set_fill_rule(st.cr, CAIRO_FILL_RULE_WINDING);
  fillPath(st, st.fg);
}

void installDrawing(winMethods_tag* m) {
  swm_SetFGColorPtr(m, SetFGColorPtr);
  swm_SetBGColorPtr(m, SetBGColorPtr);
  swm_SetFGColor(m, SetFGColor);
  swm_SetBGColor(m, SetBGColor);
  swm_SetFigureBackgroundColor(m, SetFigureBackgroundColor);
  swm_SetLineWidth(m, SetLineWidth);
  swm_SetLineJoin(m, SetLineJoin);
  swm_SetLineCap(m, SetLineCap);
  swm_SetLineType(m, SetLineType);
  swm_MoveTo(m, MoveTo);
  swm_LineTo(m, LineTo);
  swm_PolyLine(m, PolyLine);
  swm_PolyLineRP3(m, PolyLineRP3);
  swm_PaintRect(m, PaintRect);
  swm_EraseRect(m, EraseRect);
  swm_FrameRect(m, FrameRect);
  swm_PaintOval(m, PaintOval);
  swm_FrameOval(m, FrameOval);
  swm_PaintRoundRect(m, PaintRoundRect);
  swm_FrameRoundRect(m, FrameRoundRect);
  swm_PaintPoly(m, PaintPoly);
  swm_DrawPoly(m, DrawPoly);
  swm_GetWindowRect(m, deviceRect);
  swm_GetDrawableRect(m, deviceRect);
  swm_GetVisibleRect(m, deviceRect);
  swm_PixelWidthPerIn(m, PixelsPerInch);
  swm_PixelHeightPerIn(m, PixelsPerInch);
  swm_PixelsPerPoint(m, PixelsPerPoint);
  swm_IsWindowVisible(m, IsWindowVisible);
  swm_Flush(m, Flush);
}

}  // namespace qvgui::offscreen::detail

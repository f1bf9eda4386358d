// Labels and markers: TeX-subset text laid out run by run at the library's
// measured advances, and the marker shapes of lines and scatter plots.
#include <algorithm>
#include <cmath>

#include "plot/render_p.h"
#include "qvgui/raster.h"

namespace qvgui::plot::detail {

namespace {

FontChoice runFont(const TextRun& run, const TextStyle& style) {
  FontChoice f;
  f.face = run.symbol ? "Symbol" : "Helvetica";
  f.sizePt = style.sizePt * run.scale;
  f.bold = style.bold && !run.symbol;
  f.italic = run.italic;
  return f;
}

struct Laid {
  std::vector<TextRun> runs;
  std::vector<double> advance;  // pixel x of each run from the start
  Renderer::Extent extent;
};

Laid lay(Painter& p, const std::string& text, const TextStyle& style) {
  Laid l;
  l.runs = layoutTex(text);
  double x = 0;
  for (const TextRun& run : l.runs) {
    p.setFont(runFont(run, style));
    l.advance.push_back(x);
    x += p.textWidth(run.bytes);
    const double risePx = run.rise * style.sizePt * p.pixelsPerPoint();
    l.extent.ascent = std::max(l.extent.ascent, p.textAscent() + risePx);
    l.extent.descent = std::max(l.extent.descent, p.textDescent() - risePx);
  }
  l.extent.width = x;
  return l;
}

}  // namespace

Renderer::Extent Renderer::measure(const std::string& text, const TextStyle& style) {
  return lay(painter, text, style).extent;
}

bool Renderer::label(const std::string& text, Pt anchor, TextHorzAlign h, TextVertAlign v,
                     const TextStyle& style, int rotationDeg, int role, bool avoidTicks) {
  if (text.empty()) return false;
  const Laid l = lay(painter, text, style);
  const Extent& e = l.extent;
  const double theta = rotationDeg * M_PI / 180.0;
  const Pt along{std::cos(theta), -std::sin(theta)};
  const Pt up{-std::sin(theta), -std::cos(theta)};
  const double hoff = h == TEXT_HALIGN_LEFT ? 0.0 : h == TEXT_HALIGN_CENTER ? -e.width / 2 : -e.width;
  double down = 0;  // how far the baseline lies below the anchor, along -up
  switch (v) {
    case TEXT_VALIGN_TOP:
    case TEXT_VALIGN_CAP:
      down = e.ascent;
      break;
    case TEXT_VALIGN_MIDDLE:
      down = (e.ascent - e.descent) / 2;
      break;
    case TEXT_VALIGN_BASELINE:
      down = 0;
      break;
    case TEXT_VALIGN_BOTTOM:
      down = -e.descent;
      break;
  }
  const Pt base{anchor.x + along.x * hoff - up.x * down, anchor.y + along.y * hoff - up.y * down};
  // The box of the laid-out text, from its four corners.
  const Pt corners[4] = {
      {base.x + up.x * e.ascent, base.y + up.y * e.ascent},
      {base.x - up.x * e.descent, base.y - up.y * e.descent},
      {base.x + along.x * e.width + up.x * e.ascent, base.y + along.y * e.width + up.y * e.ascent},
      {base.x + along.x * e.width - up.x * e.descent, base.y + along.y * e.width - up.y * e.descent}};
  TextBox box{text, corners[0].x, corners[0].y, corners[0].x, corners[0].y, role};
  for (const Pt& c : corners) {
    box.left = std::min(box.left, c.x);
    box.right = std::max(box.right, c.x);
    box.top = std::min(box.top, c.y);
    box.bottom = std::max(box.bottom, c.y);
  }
  if (avoidTicks) {
    for (const TextBox& other : boxes) {
      if (other.role == kTickLabel && box.left < other.right && other.left < box.right &&
          box.top < other.bottom && other.top < box.bottom)
        return false;
    }
  }
  painter.setColor(style.color);
  for (std::size_t k = 0; k < l.runs.size(); ++k) {
    const TextRun& run = l.runs[k];
    const double risePx = run.rise * style.sizePt * painter.pixelsPerPoint();
    const Pt at{base.x + along.x * l.advance[k] + up.x * risePx,
                base.y + along.y * l.advance[k] + up.y * risePx};
    painter.setFont(runFont(run, style));
    painter.text(at, run.bytes, TEXT_HALIGN_LEFT, TEXT_VALIGN_BASELINE, rotationDeg);
  }
  boxes.push_back(box);
  return true;
}

void Renderer::marker(Marker m, Pt c, double sizePt, const Rgb& color, bool filled) {
  if (m == Marker::None) return;
  const double r = pt(sizePt) / 2;
  painter.setColor(color);
  painter.setLine(0.75);
  std::vector<Pt> shape;
  switch (m) {
    case Marker::Circle:
      if (filled) painter.fillOval(c, r);
      painter.strokeOval(c, r);
      return;
    case Marker::Plus:
      painter.segment({c.x - r, c.y}, {c.x + r, c.y});
      painter.segment({c.x, c.y - r}, {c.x, c.y + r});
      return;
    case Marker::Cross: {
      const double d = r * 0.7071;
      painter.segment({c.x - d, c.y - d}, {c.x + d, c.y + d});
      painter.segment({c.x - d, c.y + d}, {c.x + d, c.y - d});
      return;
    }
    case Marker::Square:
    case Marker::Diamond:
    case Marker::TriangleUp:
    case Marker::TriangleDown: {
      // The library's marker shapes, in whole pixels around the nearest pixel.
      const int code = m == Marker::Square ? 5 : m == Marker::Diamond ? 6 : m == Marker::TriangleDown ? 7 : 8;
      qvpoint32 points[kMarkerPolyMaxPoints];
      Polygon2 poly{points, 0};
      const auto size = static_cast<std::int16_t>(std::clamp(std::lround(r), 1L, 2000L));
      geoGetMarkerPoly(
          code, size,
          qvpoint32{static_cast<std::int32_t>(std::lround(c.x)), static_cast<std::int32_t>(std::lround(c.y))},
          &poly);
      for (int k = 0; k < poly.count; ++k) shape.push_back(Pt{double(points[k].x), double(points[k].y)});
      if (shape.size() > 3 && shape.front().x == shape.back().x && shape.front().y == shape.back().y)
        shape.pop_back();
      break;
    }
    case Marker::None:
      return;
  }
  if (filled) painter.fillPolygon(shape);
  // The outline runs at sub-pixel precision and smooths the filled shape's
  // whole-pixel vertices.
  painter.strokePolygon(shape);
}

}  // namespace qvgui::plot::detail

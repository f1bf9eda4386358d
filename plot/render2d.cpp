// Two-dimensional axes: limits and ticks, the data mapped and clipped in
// homogeneous clip space, then children, frame, ticks, labels and colour bar.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "plot/render_p.h"
#include "qvgui/clipping.h"
#include "qvgui/geometry.h"

namespace qvgui::plot::detail {

using namespace gui_objects;
using tickpicker::kXAxis;
using tickpicker::kYAxis;

std::vector<std::vector<Pt>> outsideCircle(const std::vector<Pt>& run, Pt c, double r) {
  std::vector<std::vector<Pt>> parts;
  std::vector<Pt> piece;
  const auto flush = [&] {
    if (piece.size() >= 2) parts.push_back(piece);
    piece.clear();
  };
  if (!run.empty()) piece.push_back(run[0]);
  for (std::size_t k = 1; k < run.size(); ++k) {
    const Pt p = run[k - 1], q = run[k];
    const double dx = q.x - p.x, dy = q.y - p.y, fx = p.x - c.x, fy = p.y - c.y;
    // |f + t d|^2 = r^2: the segment is inside between the roots.
    const double a = dx * dx + dy * dy, half = fx * dx + fy * dy, rest = fx * fx + fy * fy - r * r;
    const double disc = half * half - a * rest;
    const double root = disc > 0 ? std::sqrt(disc) : 0;
    const double t0 = a > 0 ? std::max(0.0, (-half - root) / a) : 0;
    const double t1 = a > 0 ? std::min(1.0, (-half + root) / a) : 0;
    if (a == 0 || disc <= 0 || t0 >= t1) {
      if (rest >= 0) piece.push_back(q);  // wholly outside
      continue;
    }
    if (t0 > 0) piece.push_back(Pt{p.x + t0 * dx, p.y + t0 * dy});
    flush();
    if (t1 < 1) piece = {Pt{p.x + t1 * dx, p.y + t1 * dy}, q};
  }
  flush();
  return parts;
}

namespace {

constexpr double kTickLenPt = 3.5;
constexpr double kPadPt = 4;

// Data to pixels for one axes: logarithmic axes map through log10, then an
// orthographic box takes the limits to clip space and the viewport to pixels.
class Map2D {
 public:
  Map2D(const AxesDescriptor& d, const Box& plot)
      : logx_(d.axis[kXAxis].scale == Scale::Log), logy_(d.axis[kYAxis].scale == Scale::Log), plot_(plot) {
    const double u0 = u(d.axis[kXAxis].render[0], logx_);
    const double u1 = u(d.axis[kXAxis].render[1], logx_);
    const double v0 = u(d.axis[kYAxis].render[0], logy_);
    const double v1 = u(d.axis[kYAxis].render[1], logy_);
    clip_ = Matrix4x4d::createOrtho(u0, u1, v0, v1, -1, 1);
    viewport_ =
        camera_utils::makeViewPortTransform(Rectangle2d(plot.left, plot.top, plot.right, plot.bottom));
    const Matrix4x4d all = viewport_ * clip_;
    sx_ = all.get(1, 1);
    ox_ = all.get(1, 4);
    sy_ = all.get(2, 2);
    oy_ = all.get(2, 4);
  }

  static double u(double v, bool log) noexcept {
    if (!log) return v;
    return v > 0 ? std::log10(v) : NAN;
  }
  [[nodiscard]] double px(double x) const noexcept { return sx_ * u(x, logx_) + ox_; }
  [[nodiscard]] double py(double y) const noexcept { return sy_ * u(y, logy_) + oy_; }
  [[nodiscard]] Pt pixel(double x, double y) const noexcept { return Pt{px(x), py(y)}; }

  // The visible runs of a polyline in data units, in pixels. NaN and points a
  // logarithmic axis cannot show break the line.
  [[nodiscard]] std::vector<std::vector<Pt>> clipPolyline(const std::vector<Pt>& data) const {
    std::vector<std::vector<Pt>> runs;
    std::vector<Point4d> strip;
    auto flush = [&]() {
      if (strip.size() >= 2) {
        VertexVector vv(strip.size(), strip.data(), nullptr);
        for (VertexVector& piece : clip_linestrip(vv, nullptr)) {
          const Point3d* ndc = piece.getProjectedVertices();
          std::vector<Pt> run(piece.getSize());
          for (std::size_t k = 0; k < run.size(); ++k) {
            const Point4d q = viewport_.transform(Point4d(ndc[k].getX(), ndc[k].getY(), 0, 1));
            run[k] = Pt{q.getX(), q.getY()};
          }
          runs.push_back(std::move(run));
        }
      }
      strip.clear();
    };
    for (const Pt& p : data) {
      const double a = u(p.x, logx_);
      const double b = u(p.y, logy_);
      if (!std::isfinite(a) || !std::isfinite(b)) {
        flush();
        continue;
      }
      strip.push_back(clip_.transform(Point4d(a, b, 0, 1)));
    }
    flush();
    return runs;
  }

  [[nodiscard]] bool inside(const Pt& p) const noexcept {
    return p.x >= plot_.left - 0.5 && p.x <= plot_.right + 0.5 && p.y >= plot_.top - 0.5 &&
           p.y <= plot_.bottom + 0.5;
  }

 private:
  bool logx_;
  bool logy_;
  Box plot_;
  Matrix4x4d clip_;
  Matrix4x4d viewport_;
  double sx_ = 1, ox_ = 0, sy_ = 1, oy_ = 0;
};

std::vector<double> cellEdges(const std::vector<double>& centres) {
  std::vector<double> e(centres.size() + 1);
  if (centres.size() == 1) {
    e[0] = centres[0] - 0.5;
    e[1] = centres[0] + 0.5;
    return e;
  }
  for (std::size_t k = 1; k < centres.size(); ++k) e[k] = (centres[k - 1] + centres[k]) / 2;
  e.front() = centres[0] - (e[1] - centres[0]);
  e.back() = centres.back() + (centres.back() - e[centres.size() - 1]);
  return e;
}

bool gridKind(Kind k) noexcept { return k == Kind::Image || k == Kind::Contour || k == Kind::Filled; }

// Extents of every child on x and y through the library's scan, and whether
// only gridded children are present (their limits then fit the data tightly).
void gatherExtents(const Axes::Impl& axes, DataExtents* ex, DataExtents* ey, bool* tight) {
  *tight = !axes.children.empty();
  for (const Child& c : axes.children) {
    if (gridKind(c.kind)) {
      const bool image = c.kind == Kind::Image;
      *ex += extentsOf(image ? cellEdges(c.grid.x) : c.grid.x);
      *ey += extentsOf(image ? cellEdges(c.grid.y) : c.grid.y);
    } else {
      *tight = false;
      *ex += extentsOf(c.x);
      *ey += extentsOf(c.y);
    }
  }
}

double maxWidth(Renderer& r, const std::vector<std::string>& labels, const TextStyle& st) {
  double w = 0;
  for (const std::string& s : labels) w = std::max(w, r.measure(s, st).width);
  return w;
}

void settle(Renderer& r, AxesDescriptor& d, const DataExtents& ex, const DataExtents& ey, bool tight,
            const Box& plot, const TextStyle& tickStyle) {
  const Renderer::Extent digits = r.measure("-0.00", tickStyle);
  for (AxisType a : {kXAxis, kYAxis}) {
    AxisState& s = d.axis[a];
    const DataExtents& e = a == kXAxis ? ex : ey;
    const bool wasManual = s.manual;
    if (tight && !wasManual && e.initialized() && e.getMinValue() < e.getMaxValue()) {
      s.manual = true;
      s.manualLimits[0] =
          s.scale == Scale::Log && !std::isnan(e.getMinPositive()) ? e.getMinPositive() : e.getMinValue();
      s.manualLimits[1] = e.getMaxValue();
    }
    const double length = a == kXAxis ? plot.width() : plot.height();
    const double spacing = a == kXAxis ? digits.width * 1.8 : (digits.ascent + digits.descent) * 2.5;
    settleAxis(d, a, e, length, spacing);
    s.manual = wasManual;
  }
}

// ---- Children -------------------------------------------------------------------

void drawImage(Renderer& r, const Child& c, const Map2D& m, ColorMap map, const ColorScale& cs) {
  const std::vector<double> ex = cellEdges(c.grid.x);
  const std::vector<double> ey = cellEdges(c.grid.y);
  std::vector<double> px(ex.size());
  std::vector<double> py(ey.size());
  for (std::size_t j = 0; j < ex.size(); ++j) px[j] = std::round(m.px(ex[j]));
  for (std::size_t i = 0; i < ey.size(); ++i) py[i] = std::round(m.py(ey[i]));
  const double span = cs.hi > cs.lo ? cs.hi - cs.lo : 1;
  for (std::size_t i = 0; i < c.grid.rows; ++i) {
    for (std::size_t j = 0; j < c.grid.columns; ++j) {
      const double v = c.grid.at(i, j);
      if (std::isnan(v)) continue;
      r.painter.setColor(colorAt(map, (v - cs.lo) / span));
      r.painter.fillRect(std::min(px[j], px[j + 1]), std::min(py[i], py[i + 1]), std::max(px[j], px[j + 1]),
                         std::max(py[i], py[i + 1]));
    }
  }
}

// Filled bands are painted as a stack: level k paints every part of the grid
// at or above it in band k's colour over the bands below, so the hairlines an
// anti-aliased shared edge leaves show the neighbouring band, not the paper.
// Whole cells at or above the level merge into one rectangle per row run;
// cut cells are clipped against the level as linear quadrilaterals.
void drawFilled(Renderer& r, const Child& c, const Map2D& m, ColorMap map) {
  const GridData& g = c.grid;
  const std::vector<double>& L = c.levels;
  if (L.size() < 2 || g.rows < 2 || g.columns < 2) return;
  std::vector<double> px(g.columns);
  std::vector<double> py(g.rows);
  for (std::size_t j = 0; j < g.columns; ++j) px[j] = m.px(g.x[j]);
  for (std::size_t i = 0; i < g.rows; ++i) py[i] = m.py(g.y[i]);
  const std::size_t bands = L.size() - 1;
  for (std::size_t k = 0; k < bands; ++k) {
    const double t = k == 0 ? -INFINITY : L[k];
    r.painter.setColor(colorAt(map, (k + 0.5) / static_cast<double>(bands)));
    for (std::size_t i = 0; i + 1 < g.rows; ++i) {
      std::size_t runStart = g.columns;
      auto flush = [&](std::size_t end) {
        // Whole-pixel rectangles, so that neighbouring rows meet without a seam.
        if (runStart < end) {
          r.painter.fillRect(
              std::round(std::min(px[runStart], px[end])), std::round(std::min(py[i], py[i + 1])),
              std::round(std::max(px[runStart], px[end])), std::round(std::max(py[i], py[i + 1])));
        }
        runStart = g.columns;
      };
      for (std::size_t j = 0; j + 1 < g.columns; ++j) {
        const std::vector<double> v = {g.at(i, j), g.at(i, j + 1), g.at(i + 1, j + 1), g.at(i + 1, j)};
        if (std::isnan(v[0]) || std::isnan(v[1]) || std::isnan(v[2]) || std::isnan(v[3])) {
          flush(j);
          continue;
        }
        const double lo = std::min(std::min(v[0], v[1]), std::min(v[2], v[3]));
        const double hi = std::max(std::max(v[0], v[1]), std::max(v[2], v[3]));
        if (lo >= t) {
          if (runStart == g.columns) runStart = j;
          continue;
        }
        flush(j);
        if (hi < t) continue;
        const std::vector<Pt> quad = {
            {px[j], py[i]}, {px[j + 1], py[i]}, {px[j + 1], py[i + 1]}, {px[j], py[i + 1]}};
        const std::vector<Pt> piece = clipToBand(quad, v, t, INFINITY);
        if (!piece.empty()) r.painter.fillPolygon(piece);
      }
      flush(g.columns - 1);
    }
  }
}

std::string levelText(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.3g", v);
  return buf;
}

// Where a contour label goes on a run: the candidate point farthest from the
// labels placed so far and clear of the plot edges; false when the run is too
// short to carry its label.
bool placeLabel(const std::vector<Pt>& run, double width, double height, const Box& plot,
                const std::vector<Pt>& placed, std::size_t* at) {
  double length = 0;
  for (std::size_t k = 1; k < run.size(); ++k)
    length += std::hypot(run[k].x - run[k - 1].x, run[k].y - run[k - 1].y);
  if (length < 4 * width) return false;
  // Near the middle of the run, well inside the plot and away from the labels
  // placed so far; failing that, the freest point.
  double best = -1;
  double freest = -1;
  std::size_t freestAt = 0;
  for (std::size_t k = 0; k < run.size(); ++k) {
    const Pt& p = run[k];
    if (p.x - 1.5 * width < plot.left || p.x + 1.5 * width > plot.right || p.y - 3 * height < plot.top ||
        p.y + 3 * height > plot.bottom)
      continue;
    double nearest = 1e300;
    for (const Pt& q : placed) nearest = std::min(nearest, std::hypot(p.x - q.x, p.y - q.y));
    const double middle = 1.0 - std::fabs(static_cast<double>(k) / static_cast<double>(run.size()) - 0.5);
    if (nearest > 6 * width && middle > best) {
      best = middle;
      *at = k;
    }
    if (nearest > freest) {
      freest = nearest;
      freestAt = k;
    }
  }
  if (best >= 0) return true;
  *at = freestAt;
  return freest > 3 * width;
}

void drawContour(Renderer& r, const Child& c, const Map2D& m, ColorMap map, bool overFill,
                 const ColorScale& cs, const Box& plot) {
  const std::vector<IsoLine> lines = traceContours(c.grid, c.levels);
  const double span = cs.hi > cs.lo ? cs.hi - cs.lo : 1;
  const TextStyle labelStyle{8, false, {0, 0, 0}};
  std::vector<Pt> placed;
  for (const IsoLine& line : lines) {
    const Rgb color = overFill ? Rgb{0.1, 0.1, 0.1} : colorAt(map, (line.level - cs.lo) / span);
    const std::string text = levelText(line.level);
    const Renderer::Extent e = r.measure(text, labelStyle);
    for (const std::vector<Pt>& run : m.clipPolyline(line.points)) {
      std::size_t at = 0;
      const bool labelled = c.labels && placeLabel(run, e.width, e.ascent, plot, placed, &at);
      r.painter.setColor(color);
      r.painter.setLine(overFill ? 0.6 : 1.2);
      if (!labelled) {
        r.painter.polyline(run);
        continue;
      }
      // The line breaks on a circle about the label that clears its corners
      // whichever way the line runs.
      const Pt centre = run[at];
      const double clear = std::hypot(e.width / 2, (e.ascent + e.descent) / 2) + r.pt(1.5);
      for (const std::vector<Pt>& piece : outsideCircle(run, centre, clear)) r.painter.polyline(piece);
      placed.push_back(centre);
      r.label(text, centre, TEXT_HALIGN_CENTER, TEXT_VALIGN_MIDDLE, labelStyle, 0, kContourLabel);
    }
  }
}

// The drawn runs go to `keep` when a legend needs to know where they lie.
void drawLine(Renderer& r, const Child& c, const Map2D& m, Drawn* keep) {
  if (c.kind != Kind::Line || c.options.style == LineStyle::None) return;
  std::vector<Pt> data(c.x.size());
  for (std::size_t k = 0; k < data.size(); ++k) data[k] = Pt{c.x[k], c.y[k]};
  r.painter.setColor(c.options.color);
  r.painter.setLine(c.options.widthPt, c.options.style);
  for (std::vector<Pt>& run : m.clipPolyline(data)) {
    r.painter.polyline(run);
    if (keep != nullptr) keep->runs.push_back(std::move(run));
  }
}

// Markers are drawn whole, outside the plot box's clip, wherever their centre
// is inside it: a point on the limit would otherwise show as half a marker.
void drawMarkers(Renderer& r, const Child& c, const Map2D& m, ColorMap map, const ColorScale& cs) {
  Marker mk = c.options.marker;
  if (c.kind == Kind::Scatter && mk == Marker::None) mk = Marker::Circle;
  if (mk == Marker::None) return;
  const double span = cs.hi > cs.lo ? cs.hi - cs.lo : 1;
  for (std::size_t k = 0; k < c.x.size(); ++k) {
    const Pt p = m.pixel(c.x[k], c.y[k]);
    if (!std::isfinite(p.x) || !std::isfinite(p.y) || !m.inside(p)) continue;
    const Rgb color = c.c.empty() ? c.options.color : colorAt(map, (c.c[k] - cs.lo) / span);
    r.marker(mk, p, c.options.markerSizePt, color, c.options.markerFilled);
  }
}

// Where scatter points and the vertices of marker-only lines lie in pixels,
// for a legend to keep off.
void keepPoints(const Axes::Impl& axes, const Map2D& m, Drawn* keep) {
  for (const Child& c : axes.children) {
    if (c.kind != Kind::Scatter && !(c.kind == Kind::Line && c.options.style == LineStyle::None)) continue;
    for (std::size_t k = 0; k < c.x.size(); ++k) {
      const Pt p = m.pixel(c.x[k], c.y[k]);
      if (std::isfinite(p.x) && std::isfinite(p.y) && m.inside(p)) keep->points.push_back(p);
    }
  }
}

}  // namespace

// ---- The axes ---------------------------------------------------------------------

void drawAxes2D(Renderer& r, Axes::Impl& axes, const Box& cell) {
  AxesDescriptor& d = axes.desc;
  const TextStyle tickStyle{10, false, {0, 0, 0}};
  const TextStyle labelStyle{11, false, {0, 0, 0}};
  const TextStyle titleStyle{12, true, {0, 0, 0}};
  const double pad = r.pt(kPadPt);
  const double tickLen = r.pt(kTickLenPt);

  DataExtents ex;
  DataExtents ey;
  bool tight = false;
  gatherExtents(axes, &ex, &ey, &tight);
  ColorScale cs;
  const bool colored = colorScaleOf(axes, &cs);
  const bool bar = colored && axes.colorbar;

  // Pass one with provisional margins, pass two with the measured ones.
  Box plot{cell.left + cell.width() * 0.12, cell.top + cell.height() * 0.08, cell.right - cell.width() * 0.05,
           cell.bottom - cell.height() * 0.12};
  std::vector<std::string> xl;
  std::vector<std::string> yl;
  for (int pass = 0; pass < 2; ++pass) {
    settle(r, d, ex, ey, tight, plot, tickStyle);
    xl = tickLabels(d.axis[kXAxis].ticks, d.axis[kXAxis].scale);
    yl = tickLabels(d.axis[kYAxis].ticks, d.axis[kYAxis].scale);
    const Renderer::Extent th = r.measure("0123456789", tickStyle);
    const Renderer::Extent lh = r.measure("Xg", labelStyle);
    const Renderer::Extent tt = r.measure("Xg", titleStyle);
    const double lastX = xl.empty() ? 0 : r.measure(xl.back(), tickStyle).width;
    double right = std::max(pad, lastX / 2 + pad);
    if (bar) {
      AxesDescriptor bd;
      bd.axis[0].manual = true;
      bd.axis[0].manualLimits[0] = cs.lo;
      bd.axis[0].manualLimits[1] = cs.hi;
      settleAxis(bd, kXAxis, DataExtents(), plot.height(), (th.ascent + th.descent) * 2.5);
      const double bw = maxWidth(r, tickLabels(bd.axis[0].ticks, Scale::Linear), tickStyle);
      right = r.pt(10) + r.pt(12) + tickLen + pad + bw + pad;
      if (!axes.colorbarLabel.empty()) right += lh.ascent + lh.descent + pad;
    }
    const double left = pad + (d.axis[kYAxis].label.empty() ? 0 : lh.ascent + lh.descent + pad) +
                        maxWidth(r, yl, tickStyle) + tickLen + pad;
    const double bottom = tickLen + pad + th.ascent + th.descent + pad +
                          (d.axis[kXAxis].label.empty() ? 0 : lh.ascent + lh.descent + pad);
    const double top = pad + (axes.title.empty() ? th.ascent : tt.ascent + tt.descent + pad);
    plot = Box{std::round(cell.left + left), std::round(cell.top + top), std::round(cell.right - right),
               std::round(cell.bottom - bottom)};
    if (plot.width() < 10 || plot.height() < 10) {
      plot = Box{cell.left, cell.top, std::max(cell.left + 10, cell.right),
                 std::max(cell.top + 10, cell.bottom)};
    }
  }
  const Map2D m(d, plot);

  // Grid lines under the data, then the children clipped to the plot box.
  if (axes.grid) {
    r.painter.setColor(Rgb{0.85, 0.85, 0.85});
    r.painter.setLine(0.5);
    for (double t : d.axis[kXAxis].ticks) r.painter.segment({m.px(t), plot.top}, {m.px(t), plot.bottom});
    for (double t : d.axis[kYAxis].ticks) r.painter.segment({plot.left, m.py(t)}, {plot.right, m.py(t)});
  }
  r.painter.clip(plot.left, plot.top, plot.right, plot.bottom);
  Drawn drawn;
  Drawn* keep = axes.legend == Legend::Off ? nullptr : &drawn;
  bool hasFill = false;
  for (const Child& c : axes.children) hasFill = hasFill || c.kind == Kind::Filled || c.kind == Kind::Image;
  for (Kind pass : {Kind::Image, Kind::Filled, Kind::Contour, Kind::Line}) {
    for (const Child& c : axes.children) {
      if (pass == Kind::Line ? (c.kind != Kind::Line && c.kind != Kind::Scatter) : c.kind != pass) continue;
      switch (c.kind) {
        case Kind::Image:
          drawImage(r, c, m, axes.map, cs);
          break;
        case Kind::Filled:
          drawFilled(r, c, m, axes.map);
          break;
        case Kind::Contour:
          drawContour(r, c, m, axes.map, hasFill, cs, plot);
          break;
        default:
          drawLine(r, c, m, keep);
          break;
      }
    }
  }
  r.painter.unclip();
  for (const Child& c : axes.children) {
    if (c.kind == Kind::Line || c.kind == Kind::Scatter) drawMarkers(r, c, m, axes.map, cs);
  }

  // Frame and ticks.
  const Rgb black{0, 0, 0};
  r.painter.setColor(black);
  r.painter.setLine(0.8);
  r.painter.strokePolygon(
      {{plot.left, plot.top}, {plot.right, plot.top}, {plot.right, plot.bottom}, {plot.left, plot.bottom}});
  for (std::size_t k = 0; k < d.axis[kXAxis].ticks.size(); ++k) {
    const double x = m.px(d.axis[kXAxis].ticks[k]);
    r.painter.setColor(black);
    r.painter.segment({x, plot.bottom}, {x, plot.bottom + tickLen});
    r.label(xl[k], {x, plot.bottom + tickLen + pad}, TEXT_HALIGN_CENTER, TEXT_VALIGN_TOP, tickStyle, 0,
            kTickLabel);
  }
  double yLabelsLeft = plot.left;
  for (std::size_t k = 0; k < d.axis[kYAxis].ticks.size(); ++k) {
    const double y = m.py(d.axis[kYAxis].ticks[k]);
    r.painter.setColor(black);
    r.painter.segment({plot.left - tickLen, y}, {plot.left, y});
    r.label(yl[k], {plot.left - tickLen - pad, y}, TEXT_HALIGN_RIGHT, TEXT_VALIGN_MIDDLE, tickStyle, 0,
            kTickLabel);
    yLabelsLeft = std::min(yLabelsLeft, r.boxes.back().left);
  }
  const Renderer::Extent th = r.measure("0123456789", tickStyle);
  if (!d.axis[kXAxis].label.empty()) {
    r.label(d.axis[kXAxis].label,
            {(plot.left + plot.right) / 2, plot.bottom + tickLen + pad + th.ascent + th.descent + pad},
            TEXT_HALIGN_CENTER, TEXT_VALIGN_TOP, labelStyle, 0, kAxisLabel);
  }
  if (!d.axis[kYAxis].label.empty()) {
    r.label(d.axis[kYAxis].label, {yLabelsLeft - pad, (plot.top + plot.bottom) / 2}, TEXT_HALIGN_CENTER,
            TEXT_VALIGN_BOTTOM, labelStyle, 90, kAxisLabel);
  }
  if (!axes.title.empty()) {
    r.label(axes.title, {(plot.left + plot.right) / 2, plot.top - pad}, TEXT_HALIGN_CENTER,
            TEXT_VALIGN_BOTTOM, titleStyle, 0, kTitle);
  }
  if (keep != nullptr) {
    keepPoints(axes, m, keep);
    drawLegend(r, axes, plot, drawn);
  }
  if (bar)
    drawColorbar(r, axes, cs, Box{plot.right + r.pt(10), plot.top, plot.right + r.pt(22), plot.bottom});
}

// ---- Colour bar -------------------------------------------------------------------

bool colorScaleOf(const Axes::Impl& axes, ColorScale* out) {
  for (auto it = axes.children.rbegin(); it != axes.children.rend(); ++it) {
    const Child& c = *it;
    const std::vector<double>* values = nullptr;
    if (c.kind == Kind::Scatter && !c.c.empty()) values = &c.c;
    if (c.kind == Kind::Image || c.kind == Kind::Contour || c.kind == Kind::Filled || c.kind == Kind::Surface)
      values = &c.grid.z;
    if (values == nullptr) continue;
    const DataExtents e = extentsOf(*values);
    out->lo = e.initialized() ? e.getMinValue() : 0;
    out->hi = e.initialized() ? e.getMaxValue() : 1;
    out->levels.clear();
    if (c.kind == Kind::Filled && c.levels.size() >= 2) {
      out->levels = c.levels;
      out->lo = c.levels.front();
      out->hi = c.levels.back();
    } else if (c.kind == Kind::Contour && c.levels.size() >= 2) {
      out->lo = c.levels.front();
      out->hi = c.levels.back();
    }
    if (!(out->lo < out->hi)) {
      out->lo -= 0.5;
      out->hi += 0.5;
    }
    return true;
  }
  return false;
}

void drawColorbar(Renderer& r, const Axes::Impl& axes, const ColorScale& cs, const Box& bar) {
  const TextStyle tickStyle{10, false, {0, 0, 0}};
  const TextStyle labelStyle{11, false, {0, 0, 0}};
  const double pad = r.pt(kPadPt);
  const double tickLen = r.pt(kTickLenPt);
  auto yOf = [&](double v) { return bar.bottom - (v - cs.lo) / (cs.hi - cs.lo) * bar.height(); };
  if (!cs.levels.empty()) {
    const std::size_t bands = cs.levels.size() - 1;
    for (std::size_t k = 0; k < bands; ++k) {
      r.painter.setColor(colorAt(axes.map, (k + 0.5) / static_cast<double>(bands)));
      r.painter.fillRect(bar.left, std::round(yOf(cs.levels[k + 1])), bar.right,
                         std::round(yOf(cs.levels[k])));
    }
  } else {
    const int steps = std::max(2, static_cast<int>(bar.height() / 2));
    for (int k = 0; k < steps; ++k) {
      r.painter.setColor(colorAt(axes.map, (k + 0.5) / steps));
      r.painter.fillRect(bar.left, std::round(bar.bottom - bar.height() * (k + 1) / steps), bar.right,
                         std::round(bar.bottom - bar.height() * k / steps));
    }
  }
  AxesDescriptor bd;
  bd.axis[0].manual = true;
  bd.axis[0].manualLimits[0] = cs.lo;
  bd.axis[0].manualLimits[1] = cs.hi;
  const Renderer::Extent th = r.measure("0", tickStyle);
  settleAxis(bd, kXAxis, DataExtents(), bar.height(), (th.ascent + th.descent) * 2.5);
  const std::vector<std::string> labels = tickLabels(bd.axis[0].ticks, Scale::Linear);
  r.painter.setColor(Rgb{0, 0, 0});
  r.painter.setLine(0.8);
  r.painter.strokePolygon(
      {{bar.left, bar.top}, {bar.right, bar.top}, {bar.right, bar.bottom}, {bar.left, bar.bottom}});
  double labelsRight = bar.right;
  for (std::size_t k = 0; k < labels.size(); ++k) {
    const double y = yOf(bd.axis[0].ticks[k]);
    r.painter.setColor(Rgb{0, 0, 0});
    r.painter.segment({bar.right, y}, {bar.right + tickLen, y});
    r.label(labels[k], {bar.right + tickLen + pad, y}, TEXT_HALIGN_LEFT, TEXT_VALIGN_MIDDLE, tickStyle, 0,
            kColorbarLabel);
    labelsRight = std::max(labelsRight, r.boxes.back().right);
  }
  if (!axes.colorbarLabel.empty()) {
    r.label(axes.colorbarLabel, {labelsRight + pad, (bar.top + bar.bottom) / 2}, TEXT_HALIGN_CENTER,
            TEXT_VALIGN_TOP, labelStyle, 90, kAxisLabel);
  }
}

}  // namespace qvgui::plot::detail

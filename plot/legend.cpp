// The legend of a 2-D axes: a framed box in a corner of the plot box with one
// row per labelled line or scatter child, a sample of its style and its label.
#include <algorithm>
#include <cmath>

#include "plot/render_p.h"

namespace qvgui::plot::detail {

namespace {

constexpr double kInsetPt = 5;     // frame of the plot box to the legend box
constexpr double kPadPt = 4;       // legend box to its contents
constexpr double kSamplePt = 24;   // shortest line sample
constexpr double kGapPt = 5;       // sample to label
constexpr double kRowGapPt = 2.5;  // between rows
constexpr double kTextPt = 9;

struct Row {
  const Child* child;
  double height;
};

bool legendKind(const Child& c) noexcept {
  return (c.kind == Kind::Line || c.kind == Kind::Scatter) && !c.options.label.empty();
}

// Length of a line sample that shows two periods of the child's dash pattern.
// Dash patterns scale with the line width (never below a point's width); a
// period is about 6.5 widths dashed, 3 dotted and 9 dash-dotted.
double samplePt(const Child& c) noexcept {
  if (c.kind != Kind::Line) return kSamplePt;
  const double period = c.options.style == LineStyle::Dashed    ? 6.5
                        : c.options.style == LineStyle::Dotted  ? 3
                        : c.options.style == LineStyle::DashDot ? 9
                                                                : 0;
  return std::clamp(2 * period * std::max(c.options.widthPt, 1.0), kSamplePt, 4 * kSamplePt);
}

Marker markerOf(const Child& c) noexcept {
  if (c.kind == Kind::Scatter && c.options.marker == Marker::None) return Marker::Circle;
  return c.options.marker;
}

// Length of the segment from a to z inside box b (Liang-Barsky).
double lengthInside(Pt a, Pt z, const Box& b) {
  const double dx = z.x - a.x;
  const double dy = z.y - a.y;
  double t0 = 0;
  double t1 = 1;
  const double p[4] = {-dx, dx, -dy, dy};
  const double q[4] = {a.x - b.left, b.right - a.x, a.y - b.top, b.bottom - a.y};
  for (int k = 0; k < 4; ++k) {
    if (p[k] == 0) {
      if (q[k] < 0) return 0;
      continue;
    }
    const double t = q[k] / p[k];
    if (p[k] < 0) {
      t0 = std::max(t0, t);
    } else {
      t1 = std::min(t1, t);
    }
  }
  return t1 > t0 ? (t1 - t0) * std::hypot(dx, dy) : 0;
}

// How much of the data a legend box would hide: one per point or line vertex
// in it, and one per `step` pixels of line through it, so that a long segment
// across a corner counts although its ends lie outside. The box is grown by
// `margin`: a legend that touches a curve, or a curve along the frame just
// beside it, reads as hiding it.
double covered(Box b, double margin, double step, const Drawn& drawn) {
  b = Box{b.left - margin, b.top - margin, b.right + margin, b.bottom + margin};
  auto in = [&](const Pt& p) { return p.x >= b.left && p.x <= b.right && p.y >= b.top && p.y <= b.bottom; };
  double n = 0;
  for (const Pt& p : drawn.points) n += in(p);
  for (const std::vector<Pt>& run : drawn.runs) {
    for (std::size_t k = 0; k < run.size(); ++k) {
      n += in(run[k]);
      if (k + 1 == run.size()) break;
      const Pt& a = run[k];
      const Pt& z = run[k + 1];
      // Most segments of a long line lie wholly to one side of a corner box.
      if (std::max(a.x, z.x) < b.left || std::min(a.x, z.x) > b.right || std::max(a.y, z.y) < b.top ||
          std::min(a.y, z.y) > b.bottom)
        continue;
      n += lengthInside(a, z, b) / step;
    }
  }
  return n;
}

// The box of a width x height legend in one corner of the plot box.
Box cornerBox(Legend where, const Box& plot, double width, double height, double inset) {
  const bool right = where == Legend::UpperRight || where == Legend::LowerRight;
  const bool upper = where == Legend::UpperRight || where == Legend::UpperLeft;
  const double left = right ? plot.right - inset - width : plot.left + inset;
  const double top = upper ? plot.top + inset : plot.bottom - inset - height;
  return Box{std::round(left), std::round(top), std::round(left + width), std::round(top + height)};
}

}  // namespace

void drawLegend(Renderer& r, const Axes::Impl& axes, const Box& plot, const Drawn& drawn) {
  if (axes.legend == Legend::Off) return;
  const TextStyle style{kTextPt, false, {0, 0, 0}};
  const double pad = r.pt(kPadPt);
  double sample = r.pt(kSamplePt);
  const double gap = r.pt(kGapPt);
  const double rowGap = r.pt(kRowGapPt);

  std::vector<Row> rows;
  double textWidth = 0;
  double height = 2 * pad;
  for (const Child& c : axes.children) {
    if (!legendKind(c)) continue;
    const Renderer::Extent e = r.measure(c.options.label, style);
    const Marker mk = markerOf(c);
    const double markerPx = mk == Marker::None ? 0 : r.pt(c.options.markerSizePt);
    const double linePx = c.kind == Kind::Line ? r.pt(c.options.widthPt) : 0;
    const double rowHeight = std::max({e.ascent + e.descent, markerPx, linePx});
    height += rowHeight + (rows.empty() ? 0 : rowGap);
    textWidth = std::max(textWidth, e.width);
    sample = std::max(sample, r.pt(samplePt(c)));
    rows.push_back(Row{&c, rowHeight});
  }
  if (rows.empty()) return;
  const double width = pad + sample + gap + textWidth + pad;
  const double inset = r.pt(kInsetPt);
  if (width + 2 * inset > plot.width() || height + 2 * inset > plot.height()) return;

  Legend where = axes.legend;
  if (where == Legend::Best) {
    double fewest = 0;
    bool first = true;
    for (Legend corner : {Legend::UpperRight, Legend::UpperLeft, Legend::LowerLeft, Legend::LowerRight}) {
      const double n = covered(cornerBox(corner, plot, width, height, inset), 1.5 * inset, r.pt(3), drawn);
      if (first || n < fewest) {
        fewest = n;
        where = corner;
        first = false;
      }
    }
  }
  const Box box = cornerBox(where, plot, width, height, inset);

  r.painter.setColor(Rgb{1, 1, 1});
  r.painter.fillRect(box.left, box.top, box.right, box.bottom);
  r.painter.setColor(Rgb{0.6, 0.6, 0.6});
  r.painter.setLine(0.6);
  r.painter.strokePolygon(
      {{box.left, box.top}, {box.right, box.top}, {box.right, box.bottom}, {box.left, box.bottom}});

  double y = box.top + pad;
  for (const Row& row : rows) {
    const Child& c = *row.child;
    const double mid = y + row.height / 2;
    const Pt centre{box.left + pad + sample / 2, mid};
    if (c.kind == Kind::Line && c.options.style != LineStyle::None) {
      r.painter.setColor(c.options.color);
      r.painter.setLine(c.options.widthPt, c.options.style);
      r.painter.segment({box.left + pad, mid}, {box.left + pad + sample, mid});
    }
    // A scatter coloured through the map shows the map's middle colour.
    const Rgb color = c.kind == Kind::Scatter && !c.c.empty() ? colorAt(axes.map, 0.5) : c.options.color;
    r.marker(markerOf(c), centre, c.options.markerSizePt, color, c.options.markerFilled);
    r.label(c.options.label, {box.left + pad + sample + gap, mid}, TEXT_HALIGN_LEFT, TEXT_VALIGN_MIDDLE,
            style, 0, kLegend);
    y += row.height + rowGap;
  }
}

}  // namespace qvgui::plot::detail

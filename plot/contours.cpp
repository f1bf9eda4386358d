// Contour lines through the library's engine, level choice and the band
// clipping that filled contours are built from.
#include <algorithm>
#include <cmath>

#include "plot/plot_p.h"
#include "qvgui/bridge.h"
#include "qvgui/host.h"
#include "qvgui/surface.h"

namespace qvgui::plot::detail {

std::vector<IsoLine> traceContours(const GridData& g, const std::vector<double>& levels) {
  std::vector<IsoLine> out;
  if (g.rows < 2 || g.columns < 2 || levels.empty()) return out;
  const std::size_t rows = g.rows;
  const std::size_t cols = g.columns;
  // The engine reads columns and lists rows against the y array reversed.
  std::vector<double> z(rows * cols);
  double zmin = INFINITY;
  double zmax = -INFINITY;
  for (std::size_t j = 0; j < cols; ++j) {
    for (std::size_t i = 0; i < rows; ++i) {
      const double v = g.at(rows - 1 - i, j);
      z[j * rows + i] = v;
      if (std::isfinite(v)) {
        zmin = std::min(zmin, v);
        zmax = std::max(zmax, v);
      }
    }
  }
  if (!(zmin <= zmax)) return out;
  gui_objects::ContourEngine engine(static_cast<int>(rows), static_cast<int>(cols));
  engine.setXYZPtrsAndZMinMax(g.x.data(), g.y.data(), z.data(), zmin, zmax);
  engine.allocWorkSpace(static_cast<int>(2 * (rows + cols)));
  gui_objects::ContourResult result;
  engine.plotContours(levels.data(), static_cast<int>(levels.size()), result);
  gui_objects::ZrArrayPtr matrix(result.release());
  if (!matrix) return out;
  const double* m = zrGetPr(matrix.get());
  const std::size_t n = zrGetN(matrix.get());
  for (std::size_t c = 0; c < n;) {
    IsoLine line;
    line.level = m[2 * c];
    const auto count = static_cast<std::size_t>(m[2 * c + 1]);
    line.points.reserve(count);
    for (std::size_t k = 1; k <= count && c + k < n; ++k)
      line.points.push_back(Pt{m[2 * (c + k)], m[2 * (c + k) + 1]});
    c += count + 1;
    if (line.points.size() >= 2) out.push_back(std::move(line));
  }
  return out;
}

namespace {

// Sutherland-Hodgman against one side of a value threshold: keeps v >= t when
// above, else v < t.
void clipHalf(std::vector<Pt>& poly, std::vector<double>& v, double t, bool above) {
  std::vector<Pt> outP;
  std::vector<double> outV;
  const std::size_t n = poly.size();
  for (std::size_t k = 0; k < n; ++k) {
    const std::size_t next = (k + 1) % n;
    const bool inA = above ? v[k] >= t : v[k] < t;
    const bool inB = above ? v[next] >= t : v[next] < t;
    if (inA) {
      outP.push_back(poly[k]);
      outV.push_back(v[k]);
    }
    if (inA != inB) {
      const double f = (t - v[k]) / (v[next] - v[k]);
      outP.push_back(
          Pt{poly[k].x + f * (poly[next].x - poly[k].x), poly[k].y + f * (poly[next].y - poly[k].y)});
      outV.push_back(t);
    }
  }
  poly.swap(outP);
  v.swap(outV);
}

}  // namespace

std::vector<Pt> clipToBand(const std::vector<Pt>& poly, const std::vector<double>& v, double lo, double hi) {
  std::vector<Pt> p = poly;
  std::vector<double> w = v;
  if (std::isfinite(lo)) clipHalf(p, w, lo, true);
  if (p.size() >= 3 && std::isfinite(hi)) clipHalf(p, w, hi, false);
  if (p.size() < 3) p.clear();
  return p;
}

std::vector<double> niceLevels(const std::vector<double>& z, int count) {
  double lo = INFINITY;
  double hi = -INFINITY;
  for (double v : z) {
    if (std::isfinite(v)) {
      lo = std::min(lo, v);
      hi = std::max(hi, v);
    }
  }
  if (!(lo < hi)) return std::isfinite(lo) ? std::vector<double>{lo} : std::vector<double>{};
  double a = lo;
  double b = hi;
  count = std::clamp(count, 2, 64);
  const int n = gui_objects::tickpicker::calculateLinearTicks(&a, &b, std::max(2, count / 2), count + 2,
                                                              gui_objects::tickpicker::kInside);
  std::vector<double> levels;
  if (n < 2) {
    for (int k = 0; k <= count; ++k) levels.push_back(k == count ? hi : lo + (hi - lo) * k / count);
    return levels;
  }
  for (int k = 0; k < n; ++k) {
    double t = k == n - 1 ? b : a + (b - a) * k / (n - 1);
    if (std::fabs(t) < 1e-12 * (b - a)) t = 0;
    // Rounding must not push a level past the data: the engine traces nothing
    // outside [zmin, zmax].
    levels.push_back(std::clamp(t, lo, hi));
  }
  return levels;
}

}  // namespace qvgui::plot::detail

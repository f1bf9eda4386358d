// The user's side of the figure layer: figures own axes, axes own copies of
// the data given to them, and every input is checked before it is stored.
#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "plot/render_p.h"
#include "qvgui/offscreen.h"

namespace qvgui::plot {

using namespace detail;

namespace {

[[noreturn]] void reject(const std::string& what) { throw std::invalid_argument(what); }

std::vector<double> copyOf(Values v) { return std::vector<double>(v.begin(), v.end()); }

void checkPair(Values x, Values y, const char* call) {
  if (x.size() != y.size()) {
    reject(std::string(call) + ": x has " + std::to_string(x.size()) + " values but y has " +
           std::to_string(y.size()));
  }
}

std::vector<double> axisValues(Values given, std::size_t n, const char* name) {
  if (given.empty()) {
    std::vector<double> v(n);
    for (std::size_t k = 0; k < n; ++k) v[k] = static_cast<double>(k);
    return v;
  }
  if (given.size() != n) {
    reject(std::string("grid: ") + name + " has " + std::to_string(given.size()) + " values, expected " +
           std::to_string(n));
  }
  for (std::size_t k = 0; k < n; ++k) {
    if (!std::isfinite(given[k]))
      reject(std::string("grid: ") + name + "[" + std::to_string(k) + "] is not finite");
    if (k > 0 && !(given[k] > given[k - 1]))
      reject(std::string("grid: ") + name + " must increase strictly (at index " + std::to_string(k) + ")");
  }
  return copyOf(given);
}

GridData gridOf(const Grid& g, std::size_t minSide) {
  if (g.rows < minSide || g.columns < minSide) {
    reject("grid: needs at least " + std::to_string(minSide) + " rows and columns, got " +
           std::to_string(g.rows) + " x " + std::to_string(g.columns));
  }
  if (g.z.size() != g.rows * g.columns) {
    reject("grid: z has " + std::to_string(g.z.size()) + " values, expected " + std::to_string(g.rows) +
           " x " + std::to_string(g.columns));
  }
  GridData d;
  d.rows = g.rows;
  d.columns = g.columns;
  d.x = axisValues(g.x, g.columns, "x");
  d.y = axisValues(g.y, g.rows, "y");
  d.z = copyOf(g.z);
  bool any = false;
  for (double v : d.z) {
    if (std::isinf(v)) reject("grid: z holds an infinite value");
    any = any || !std::isnan(v);
  }
  if (!any) reject("grid: z has no finite value");
  return d;
}

std::vector<double> checkedLevels(std::vector<double> levels, int count, const std::vector<double>& z) {
  if (levels.empty()) {
    if (count < 1 || count > 100)
      reject("contour: level count " + std::to_string(count) + " is outside 1..100");
    return niceLevels(z, count);
  }
  for (double v : levels)
    if (!std::isfinite(v)) reject("contour: levels must be finite");
  std::sort(levels.begin(), levels.end());
  levels.erase(std::unique(levels.begin(), levels.end()), levels.end());
  return levels;
}

void checkLimits(double lo, double hi) {
  if (std::isnan(lo) && std::isnan(hi)) return;
  if (!std::isfinite(lo) || !std::isfinite(hi) || !(lo < hi)) reject("limits: need finite lower < upper");
}

}  // namespace

// ---- Axes -------------------------------------------------------------------------

Axes::Axes(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
Axes::~Axes() = default;

bool Axes::is3D() const noexcept { return impl_->threeD; }

void Axes::plot(Values x, Values y, const LineOptions& options) {
  checkPair(x, y, "plot");
  if (!(options.widthPt >= 0) || !(options.markerSizePt >= 0)) reject("plot: widths and sizes must be >= 0");
  Child c;
  c.kind = Kind::Line;
  c.x = copyOf(x);
  c.y = copyOf(y);
  c.options = options;
  impl_->children.push_back(std::move(c));
}

void Axes::scatter(Values x, Values y, Values c, const LineOptions& options) {
  checkPair(x, y, "scatter");
  if (!c.empty() && c.size() != x.size()) reject("scatter: c must have one value per point");
  Child ch;
  ch.kind = Kind::Scatter;
  ch.x = copyOf(x);
  ch.y = copyOf(y);
  ch.c = copyOf(c);
  ch.options = options;
  impl_->children.push_back(std::move(ch));
}

void Axes::image(const Grid& grid) {
  Child c;
  c.kind = Kind::Image;
  c.grid = gridOf(grid, 1);
  impl_->children.push_back(std::move(c));
}

void Axes::contour(const Grid& grid, std::vector<double> levels, int count, bool labels) {
  Child c;
  c.kind = Kind::Contour;
  c.grid = gridOf(grid, 2);
  c.levels = checkedLevels(std::move(levels), count, c.grid.z);
  c.labels = labels;
  impl_->children.push_back(std::move(c));
}

void Axes::contourf(const Grid& grid, std::vector<double> levels, int count) {
  Child c;
  c.kind = Kind::Filled;
  c.grid = gridOf(grid, 2);
  c.levels = checkedLevels(std::move(levels), count, c.grid.z);
  if (c.levels.size() < 2) reject("contourf: needs at least two distinct levels");
  impl_->children.push_back(std::move(c));
}

void Axes::surface(const Grid& grid) {
  if (!impl_->threeD) reject("surface: needs 3-D axes");
  Child c;
  c.kind = Kind::Surface;
  c.grid = gridOf(grid, 2);
  impl_->children.push_back(std::move(c));
}

void Axes::colorbar(const std::string& label) {
  impl_->colorbar = true;
  impl_->colorbarLabel = label;
}

void Axes::legend(Legend where) {
  if (static_cast<int>(where) < static_cast<int>(Legend::Best) ||
      static_cast<int>(where) > static_cast<int>(Legend::Off))
    reject("legend: unknown place " + std::to_string(static_cast<int>(where)));
  impl_->legend = where;
}

void Axes::setTitle(std::string text) { impl_->title = std::move(text); }
void Axes::setXLabel(std::string text) { impl_->desc.axis[0].label = std::move(text); }
void Axes::setYLabel(std::string text) { impl_->desc.axis[1].label = std::move(text); }
void Axes::setZLabel(std::string text) { impl_->desc.axis[2].label = std::move(text); }
void Axes::setXScale(Scale scale) { impl_->desc.axis[0].scale = scale; }
void Axes::setYScale(Scale scale) { impl_->desc.axis[1].scale = scale; }
void Axes::setZScale(Scale scale) { impl_->desc.axis[2].scale = scale; }

void Axes::setXLimits(double lower, double upper) {
  checkLimits(lower, upper);
  impl_->desc.axis[0].manual = !std::isnan(lower);
  impl_->desc.axis[0].manualLimits[0] = lower;
  impl_->desc.axis[0].manualLimits[1] = upper;
}

void Axes::setYLimits(double lower, double upper) {
  checkLimits(lower, upper);
  impl_->desc.axis[1].manual = !std::isnan(lower);
  impl_->desc.axis[1].manualLimits[0] = lower;
  impl_->desc.axis[1].manualLimits[1] = upper;
}

void Axes::setColorMap(ColorMap map) { impl_->map = map; }
void Axes::setGrid(bool on) { impl_->grid = on; }

void Axes::setView(double azimuth, double elevation) {
  if (!std::isfinite(azimuth) || !std::isfinite(elevation) || elevation < -90 || elevation > 90)
    reject("view: azimuth must be finite and elevation within -90..90");
  impl_->azimuth = azimuth;
  impl_->elevation = elevation;
}

// ---- Figure -----------------------------------------------------------------------

struct Figure::Impl {
  int width = 0;
  int height = 0;
  double dpi = 100;
  std::vector<std::unique_ptr<Axes>> axes;
};

Figure::Figure(int widthPx, int heightPx, double dpi) : impl_(std::make_unique<Impl>()) {
  if (widthPx < 16 || widthPx > 20000 || heightPx < 16 || heightPx > 20000)
    reject("figure: size " + std::to_string(widthPx) + " x " + std::to_string(heightPx) +
           " is outside 16..20000");
  if (!(dpi >= 10 && dpi <= 2400)) reject("figure: dpi must be within 10..2400");
  impl_->width = widthPx;
  impl_->height = heightPx;
  impl_->dpi = dpi;
}

Figure::~Figure() = default;
Figure::Figure(Figure&&) noexcept = default;
Figure& Figure::operator=(Figure&&) noexcept = default;

int Figure::width() const noexcept { return impl_->width; }
int Figure::height() const noexcept { return impl_->height; }
double Figure::dpi() const noexcept { return impl_->dpi; }

Axes& Figure::addAxes(bool threeD) { return subplot(1, 1, 0, threeD); }

Axes& Figure::subplot(int rows, int columns, int index, bool threeD) {
  if (rows < 1 || columns < 1 || rows > 64 || columns > 64 || index < 0 || index >= rows * columns)
    reject("subplot: cell " + std::to_string(index) + " of " + std::to_string(rows) + " x " +
           std::to_string(columns) + " does not exist");
  auto impl = std::make_unique<Axes::Impl>();
  impl->threeD = threeD;
  const int r = index / columns;
  const int c = index % columns;
  impl->cell[0] = static_cast<double>(c) / columns;
  impl->cell[1] = static_cast<double>(r) / rows;
  impl->cell[2] = static_cast<double>(c + 1) / columns;
  impl->cell[3] = static_cast<double>(r + 1) / rows;
  impl_->axes.push_back(std::make_unique<Axes>(std::move(impl)));
  return *impl_->axes.back();
}

std::vector<TextBox> Figure::draw(WinRec_tag* win) {
  Renderer r(win);
  for (const std::unique_ptr<Axes>& a : impl_->axes) {
    Axes::Impl& ax = a->impl();
    const double margin = r.pt(6);
    const Box cell{ax.cell[0] * impl_->width + margin, ax.cell[1] * impl_->height + margin,
                   ax.cell[2] * impl_->width - margin, ax.cell[3] * impl_->height - margin};
    if (ax.threeD) {
      drawAxes3D(r, ax, cell);
    } else {
      drawAxes2D(r, ax, cell);
    }
  }
  return std::move(r.boxes);
}

void Figure::save(const std::string& path) {
  const offscreen::Format format = offscreen::formatForPath(path);
  offscreen::Canvas canvas(format, impl_->width, impl_->height, impl_->dpi);
  draw(canvas.window());
  canvas.save(path);
}

}  // namespace qvgui::plot

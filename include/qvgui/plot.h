// Figures for people: a figure of axes holding lines, scatter points, images,
// contours and lit surfaces, drawn through a window's method table and saved
// as PNG, PDF or SVG.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

struct WinRec_tag;

#if defined(_WIN32)
#if defined(QVGUI_PLOT_BUILDING)
#define QVGUI_PLOT_API __declspec(dllexport)
#else
#define QVGUI_PLOT_API __declspec(dllimport)
#endif
#else
#define QVGUI_PLOT_API __attribute__((visibility("default")))
#endif

namespace qvgui::plot {

// A borrowed run of values (C++17 stand-in for std::span). The viewed storage
// must outlive the call that takes the view; nothing keeps it afterwards.
template <class T>
class View {
 public:
  constexpr View() noexcept = default;
  constexpr View(T* data, std::size_t size) noexcept : data_(data), size_(size) {}
  template <class Container>
  constexpr View(Container& c) noexcept : data_(c.data()), size_(c.size()) {}  // NOLINT: implicit by design
  [[nodiscard]] constexpr T* data() const noexcept { return data_; }
  [[nodiscard]] constexpr std::size_t size() const noexcept { return size_; }
  [[nodiscard]] constexpr bool empty() const noexcept { return size_ == 0; }
  constexpr T& operator[](std::size_t i) const noexcept { return data_[i]; }
  constexpr T* begin() const noexcept { return data_; }
  constexpr T* end() const noexcept { return data_ + size_; }

 private:
  T* data_ = nullptr;
  std::size_t size_ = 0;
};
using Values = View<const double>;

// Gridded data: z holds rows x columns values, row-major (z[i * columns + j]
// is row i, column j). x has one value per column and y one per row; empty x
// or y stand for 0, 1, 2, ... . NaN in z is a hole.
struct Grid {
  Values z;
  std::size_t rows = 0;
  std::size_t columns = 0;
  Values x;
  Values y;
};

struct Rgb {
  double r = 0, g = 0, b = 0;
};

enum class Scale { Linear, Log };
enum class ColorMap { Viridis, Magma, Gray, CoolWarm };
enum class LineStyle { Solid, Dashed, Dotted, DashDot, None };
enum class Marker { None, Circle, Square, Diamond, TriangleUp, TriangleDown, Plus, Cross };

// The colour a map gives to t in [0, 1] (clamped; NaN gives the low end).
[[nodiscard]] QVGUI_PLOT_API Rgb colorAt(ColorMap map, double t) noexcept;
// "viridis", "magma", "gray", "coolwarm"; throws std::invalid_argument naming
// the unknown name.
[[nodiscard]] QVGUI_PLOT_API ColorMap colorMapByName(const std::string& name);

struct LineOptions {
  Rgb color{0.0, 0.447, 0.741};
  double widthPt = 1.5;
  LineStyle style = LineStyle::Solid;
  Marker marker = Marker::None;
  double markerSizePt = 6;
  bool markerFilled = true;
  // The child's row in the legend (TeX subset, as titles); empty keeps the
  // child out of the legend.
  std::string label;
};

// Where an axes' legend goes: a corner inside the plot box, or Best, the
// corner whose box (and a few points around it) covers the least of the data
// as drawn: scatter points, line vertices and the length of line through it.
// Ties go to upper right, upper left, lower left, lower right, in that order.
// Off is the default.
enum class Legend { Best, UpperRight, UpperLeft, LowerLeft, LowerRight, Off };

// Every plotting call validates its input and throws std::invalid_argument
// (naming the argument and what is wrong) before anything is stored, so a
// rejected call leaves the axes as they were.
class QVGUI_PLOT_API Axes {
 public:
  ~Axes();
  Axes(const Axes&) = delete;
  Axes& operator=(const Axes&) = delete;

  // ---- Plot kinds ----
  // A polyline through (x[k], y[k]); x and y must have the same length. NaN
  // breaks the line; points that a logarithmic axis cannot show are dropped.
  void plot(Values x, Values y, const LineOptions& options = {});
  // Markers only, one per point, coloured by c through the colour map when
  // c is given (same length as x), else in options.color.
  void scatter(Values x, Values y, Values c = {}, const LineOptions& options = {});
  // Each value a cell coloured through the map, cell centres at x and y.
  void image(const Grid& grid);
  // Iso-lines at `levels` (empty: about `count` nice levels), optionally
  // labelled with their values.
  void contour(const Grid& grid, std::vector<double> levels = {}, int count = 8, bool labels = false);
  // Filled bands between consecutive levels (empty: about `count` nice levels).
  void contourf(const Grid& grid, std::vector<double> levels = {}, int count = 10);
  // A lit surface z(x, y) (3-D axes only), coloured by height.
  void surface(const Grid& grid);
  // A colour bar beside the axes for the last coloured child (image, contour,
  // filled contour, surface or coloured scatter).
  void colorbar(const std::string& label = {});
  // A legend with one row per labelled line or scatter child, in the order
  // they were added; Legend::Off removes it. 2-D axes only: 3-D axes ignore
  // it. A legend that does not fit inside the plot box is left out.
  void legend(Legend where = Legend::Best);

  // ---- Decoration ----
  // Titles and labels accept a TeX subset: ^{..} and _{..} (or one character),
  // Greek letters and a few symbols (\alpha .. \omega, \Alpha .. \Omega,
  // \infty, \pm, \times, \cdot, \circ, \partial, \nabla), \it and \rm.
  void setTitle(std::string text);
  void setXLabel(std::string text);
  void setYLabel(std::string text);
  void setZLabel(std::string text);
  void setXScale(Scale scale);
  void setYScale(Scale scale);
  void setZScale(Scale scale);
  // Manual limits; NaN on both sides returns to automatic limits.
  void setXLimits(double lower, double upper);
  void setYLimits(double lower, double upper);
  void setColorMap(ColorMap map);
  void setGrid(bool on);
  // Azimuth and elevation in degrees (3-D axes).
  void setView(double azimuth, double elevation);

  [[nodiscard]] bool is3D() const noexcept;

  struct Impl;
  explicit Axes(std::unique_ptr<Impl> impl);
  Impl& impl() noexcept { return *impl_; }
  const Impl& impl() const noexcept { return *impl_; }

 private:
  std::unique_ptr<Impl> impl_;
};

// One drawn text string, in device pixels (y down), for layout checks.
struct TextBox {
  std::string text;
  double left = 0, top = 0, right = 0, bottom = 0;
  int role = 0;  // TextRole
};
enum TextRole : int {
  kTickLabel = 0,
  kAxisLabel = 1,
  kTitle = 2,
  kColorbarLabel = 3,
  kContourLabel = 4,
  kLegend = 5
};

class QVGUI_PLOT_API Figure {
 public:
  // Size in device pixels at `dpi`; throws std::invalid_argument for a size
  // outside 16..20000 pixels or dpi outside 10..2400.
  Figure(int widthPx, int heightPx, double dpi = 100);
  ~Figure();
  Figure(const Figure&) = delete;
  Figure& operator=(const Figure&) = delete;
  Figure(Figure&&) noexcept;
  Figure& operator=(Figure&&) noexcept;

  // Axes filling the figure (less its margins), or cell `index` (0-based,
  // row by row) of a rows x columns grid. The figure owns them.
  Axes& addAxes(bool threeD = false);
  Axes& subplot(int rows, int columns, int index, bool threeD = false);

  [[nodiscard]] int width() const noexcept;
  [[nodiscard]] int height() const noexcept;
  [[nodiscard]] double dpi() const noexcept;

  // Lays the figure out and draws it into a window whose pixel size matches
  // the figure. Returns the boxes of the text it drew.
  std::vector<TextBox> draw(WinRec_tag* win);
  // Draws into a new offscreen canvas and writes it; the format follows the
  // extension (.png, .pdf, .svg). Throws std::invalid_argument for another
  // extension and std::runtime_error when the file cannot be written.
  void save(const std::string& path);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// The figures the library shows itself with: "contourf" (filled contours
// with lines and a colour bar), "surface" (a lit 3-D surface) and "lines"
// (logarithmic axes, markers, TeX labels and a legend). Throws std::invalid_argument
// for another name.
[[nodiscard]] QVGUI_PLOT_API Figure sampleFigure(const std::string& name, int widthPx = 800,
                                                 int heightPx = 600, double dpi = 100);
[[nodiscard]] QVGUI_PLOT_API std::vector<std::string> sampleNames();

}  // namespace qvgui::plot

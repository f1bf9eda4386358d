// Internals of the figure layer: the axes object the tick picker talks to, the
// children of an axes, and the pieces each update is built from.
#pragma once

#include <cfloat>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "plot/painter_p.h"
#include "qvgui/dataspace.h"
#include "qvgui/plot.h"

// The few internals below marked QVGUI_PLOT_API are exported for the tests
// only; they are not part of the figure layer's interface.
namespace qvgui::plot::detail {

using gui_objects::tickpicker::AxisType;

// ---- One axis and the axes object --------------------------------------------

struct AxisState {
  Scale scale = Scale::Linear;
  bool manual = false;
  double manualLimits[2] = {0, 1};
  double render[2] = {0, 1};  // data units, also for logarithmic axes
  double inner[2] = {-DBL_MAX, DBL_MAX};
  double limitsData[2] = {0, 1};
  int minTicks = 3;
  int maxTicks = 8;
  int ticksInRange = 0;
  int offset = 0;
  std::vector<double> ticks;
  std::string label;
};

// The axes object as the tick picker sees it: three axes of plain state.
class AxesDescriptor final : public gui_objects::tickpicker::AxisDescriptor {
 public:
  AxisState axis[3];
  bool aspectFixed = false;

  bool isAxisLimitModeAuto(AxisType a) const override { return !axis[a].manual; }
  gui_objects::tickpicker::AxisScale getAxisScale(AxisType a) const override;
  bool isPbarDarInManual(AxisType) const override { return aspectFixed; }
  double getRenderLimit(AxisType a, gui_objects::tickpicker::OuterLimitIndices i) const override {
    return axis[a].render[i];
  }
  void normalized3ToNumTics(AxisType a, int* lo, int* hi) override {
    *lo = axis[a].minTicks;
    *hi = axis[a].maxTicks;
  }
  double getInnerLimit(AxisType a, gui_objects::tickpicker::InnerLimitIndices i) const override {
    return axis[a].inner[i];
  }
  void setRenderLimit(AxisType a, gui_objects::tickpicker::OuterLimitIndices i, double v) override {
    axis[a].render[i] = v;
  }
  void setAxisLimitsData(AxisType a, double lo, double hi) override {
    axis[a].limitsData[0] = lo;
    axis[a].limitsData[1] = hi;
  }
  void setNumTicksInRange(AxisType a, int n) override { axis[a].ticksInRange = n; }
  void setOffsetToGoodTick(AxisType a, int o) override { axis[a].offset = o; }
  void setMinorTickSpacing(AxisType, gui_objects::tickpicker::AxisScale) override {}
  void setAxisTickData(AxisType a, NReals* ticks) override;
  int getAxisPlane(AxisType, AxisType) const override { return 0; }
  double getNormalizedAxisLength(AxisType) const override { return 1.0; }
  int getAxisTickDir() const override { return 0; }
  double getCurrentDimensionTickLength() const override { return 0.01; }
  AxisType getAdjacentAxis(AxisType a) const override {
    return a == gui_objects::tickpicker::kXAxis ? gui_objects::tickpicker::kYAxis
                                                : gui_objects::tickpicker::kXAxis;
  }
  bool isAxisTickModeAuto(AxisType) const override { return true; }
  double getTickMarkPos(AxisType, int) override { return 0.0; }
  int getNumTickMarkPos(AxisType) override { return 0; }
  int getOffsetToGoodTick(AxisType a) const override { return axis[a].offset; }
  void incrementNumTicksInRange(AxisType a) override { ++axis[a].ticksInRange; }
  int getNumTicksInRange(AxisType a) const override { return axis[a].ticksInRange; }
};

// Merged extents of the given values through the library's host-array scan.
[[nodiscard]] gui_objects::DataExtents extentsOf(const std::vector<double>& values);
// Limits and ticks of one axis from its merged extents: one sign side on a
// logarithmic axis, nice limits, then the ticks.
void settleAxis(AxesDescriptor& desc, AxisType a, const gui_objects::DataExtents& extents, double lengthPx,
                double labelSpacingPx);
// Tick label text: shortest of %g forms that tells neighbouring ticks apart;
// powers of ten on logarithmic axes as 10^{n}.
[[nodiscard]] QVGUI_PLOT_API std::vector<std::string> tickLabels(const std::vector<double>& ticks,
                                                                 Scale scale);

// ---- Children -------------------------------------------------------------------

enum class Kind { Line, Scatter, Image, Contour, Filled, Surface };

struct GridData {
  std::vector<double> z;  // row-major rows x columns
  std::vector<double> x;  // columns
  std::vector<double> y;  // rows
  std::size_t rows = 0, columns = 0;
  [[nodiscard]] double at(std::size_t i, std::size_t j) const noexcept { return z[i * columns + j]; }
};

struct Child {
  Kind kind = Kind::Line;
  std::vector<double> x, y, c;
  GridData grid;
  LineOptions options;
  std::vector<double> levels;
  int levelCount = 8;
  bool labels = false;
};

// ---- TeX subset -----------------------------------------------------------------

// A run of text in one font at one baseline offset (in ems, up positive).
struct TextRun {
  std::string bytes;  // Latin-1 for text faces, Symbol encoding for "Symbol"
  bool symbol = false;
  bool italic = false;
  double scale = 1.0;
  double rise = 0.0;
};
// Splits a label into runs; plain text stays one run. Unknown control words
// are kept as written.
[[nodiscard]] QVGUI_PLOT_API std::vector<TextRun> layoutTex(const std::string& text);

// ---- Contours --------------------------------------------------------------------

// Traced iso-lines of a grid, in data units.
struct IsoLine {
  double level = 0;
  std::vector<Pt> points;
};
[[nodiscard]] QVGUI_PLOT_API std::vector<IsoLine> traceContours(const GridData& g,
                                                                const std::vector<double>& levels);
// The part of a convex polygon (with a value at each vertex) where lo <= v < hi,
// vertices on the cut interpolated linearly; empty when nothing remains.
[[nodiscard]] QVGUI_PLOT_API std::vector<Pt> clipToBand(const std::vector<Pt>& poly,
                                                        const std::vector<double>& v, double lo, double hi);
// About `count` nice levels over the grid's finite range.
[[nodiscard]] QVGUI_PLOT_API std::vector<double> niceLevels(const std::vector<double>& z, int count);

}  // namespace qvgui::plot::detail

namespace qvgui::plot {

struct Axes::Impl {
  bool threeD = false;
  double cell[4] = {0, 0, 1, 1};  // left, top, right, bottom as figure fractions
  detail::AxesDescriptor desc;
  std::vector<detail::Child> children;
  std::string title;
  ColorMap map = ColorMap::Viridis;
  bool grid = false;
  bool colorbar = false;
  std::string colorbarLabel;
  Legend legend = Legend::Off;
  double azimuth = -37.5;
  double elevation = 30;
};

}  // namespace qvgui::plot

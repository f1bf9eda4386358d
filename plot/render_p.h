// Drawing one axes: the shared text and marker routines and the 2-D and 3-D
// renderers.
#pragma once

#include <vector>

#include "plot/plot_p.h"

namespace qvgui::plot::detail {

struct Box {
  double left = 0, top = 0, right = 0, bottom = 0;
  [[nodiscard]] double width() const noexcept { return right - left; }
  [[nodiscard]] double height() const noexcept { return bottom - top; }
};

struct TextStyle {
  double sizePt = 10;
  bool bold = false;
  Rgb color{0, 0, 0};
};

class Renderer {
 public:
  explicit Renderer(WinRec_tag* win) : painter(win) {}

  Painter painter;
  std::vector<TextBox> boxes;

  // Width, ascent and descent of a TeX-subset label, in pixels.
  struct Extent {
    double width = 0, ascent = 0, descent = 0;
  };
  Extent measure(const std::string& text, const TextStyle& style);
  // Draws a label with its anchor aligned as asked; rotation 0 or 90 degrees
  // (reading upwards). Records its box under `role`. With avoidTicks a label
  // that would overlap a tick label already drawn is left out (false).
  bool label(const std::string& text, Pt anchor, TextHorzAlign h, TextVertAlign v, const TextStyle& style,
             int rotationDeg, int role, bool avoidTicks = false);
  void marker(Marker m, Pt centre, double sizePt, const Rgb& color, bool filled);

  [[nodiscard]] double pt(double points) const noexcept { return points * painter.pixelsPerPoint(); }
};

void drawAxes2D(Renderer& r, Axes::Impl& axes, const Box& cell);
void drawAxes3D(Renderer& r, Axes::Impl& axes, const Box& cell);

// The colour range and level set of the last coloured child; false when none.
struct ColorScale {
  double lo = 0, hi = 1;
  std::vector<double> levels;  // filled contours: band edges
};
// The data of a 2-D axes as drawn, in pixels: visible runs of lines and
// lone points (scatter, lines of markers only).
struct Drawn {
  std::vector<std::vector<Pt>> runs;
  std::vector<Pt> points;
};
// The legend of a 2-D axes over its plot box; Legend::Best keeps it off `drawn`.
void drawLegend(Renderer& r, const Axes::Impl& axes, const Box& plot, const Drawn& drawn);

bool colorScaleOf(const Axes::Impl& axes, ColorScale* out);
void drawColorbar(Renderer& r, const Axes::Impl& axes, const ColorScale& scale, const Box& bar);

// The parts of a polyline outside the circle about c of radius r, cut
// exactly where they cross it (contour lines break so around their labels).
[[nodiscard]] QVGUI_PLOT_API std::vector<std::vector<Pt>> outsideCircle(const std::vector<Pt>& run, Pt c,
                                                                        double r);

}  // namespace qvgui::plot::detail

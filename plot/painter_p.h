// The figure layer's only way to the screen: a thin stateful wrapper over the
// wm_ calls of one window, in device pixels (y down) and points.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "qvgui/geometry.h"
#include "qvgui/plot.h"
#include "qvgui/raster.h"
#include "qvgui/window.h"

struct Color_tag;

namespace qvgui::plot::detail {

struct Pt {
  double x = 0, y = 0;
};

struct FontChoice {
  std::string face = "Helvetica";  // "Symbol" for Greek and mathematical signs
  double sizePt = 10;
  bool bold = false;
  bool italic = false;
};

class Painter {
 public:
  explicit Painter(WinRec_tag* win);
  ~Painter();
  Painter(const Painter&) = delete;
  Painter& operator=(const Painter&) = delete;

  [[nodiscard]] WinRec_tag* window() const noexcept { return win_; }
  [[nodiscard]] double pixelsPerPoint() const noexcept { return ppp_; }

  void setColor(const Rgb& c);
  void setLine(double widthPt, LineStyle style = LineStyle::Solid);
  void polyline(const std::vector<Pt>& pts);
  void segment(Pt a, Pt b) { polyline({a, b}); }
  // Filled in the current colour; vertices rounded to whole pixels.
  void fillPolygon(const std::vector<Pt>& pts);
  void strokePolygon(const std::vector<Pt>& pts);
  // Colours interpolated across the face from three components (0..1) per
  // vertex, by the back end's software rasteriser.
  void fillShaded(const std::vector<Pt>& pts, std::vector<double>& rgb);
  void fillRect(double left, double top, double right, double bottom);
  void fillOval(Pt centre, double radiusPx);
  void strokeOval(Pt centre, double radiusPx);

  void setFont(const FontChoice& font);
  // Width, ascent (height above the baseline) and descent of s in the current
  // font, in pixels.
  [[nodiscard]] double textWidth(const std::string& s);
  [[nodiscard]] double textAscent();
  [[nodiscard]] double textDescent();
  void text(Pt anchor, const std::string& s, TextHorzAlign h, TextVertAlign v, int rotationDeg = 0);

  void clip(double left, double top, double right, double bottom);
  void unclip();

 private:
  WinRec_tag* win_;
  double ppp_;
  Color_tag* color_;
  struct CachedFont {
    FontChoice choice;
    zrFont* font;
    int afmIndex;
  };
  std::deque<CachedFont> fonts_;  // few distinct fonts per figure; destroyed with the painter
  const CachedFont* current_ = nullptr;
  void* clipRegion_ = nullptr;
  Polygon2 toPolygon(const std::vector<Pt>& pts);
  std::vector<qvpoint32> polyBuffer_;
  std::vector<Real_point3> lineBuffer_;
};

}  // namespace qvgui::plot::detail

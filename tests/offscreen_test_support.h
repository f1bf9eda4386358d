// Shared pieces of the offscreen back-end tests: colours, polygons and
// coverage sums over a canvas's pixels.
#pragma once

#include <cstdint>
#include <vector>

#include "backends/offscreen/polygon_p.h"
#include "qvgui/offscreen.h"
#include "qvgui/raster.h"

namespace offscreen_test {

inline Color_tag rgb(double r, double g, double b) { return Color_tag{r, g, b, -1, false}; }

// Owns the points of a polygon record made from x, y pairs.
class Poly {
 public:
  explicit Poly(std::vector<std::int32_t> xy)
      : xy_(std::move(xy)), layout_{xy_.data(), static_cast<std::int32_t>(xy_.size() / 2)} {}
  const Polygon2* get() const { return reinterpret_cast<const Polygon2*>(&layout_); }

 private:
  std::vector<std::int32_t> xy_;
  qvgui::offscreen::detail::PolygonLayout layout_;
};

// Ink of black on white summed over the image, in pixels: 1 per fully black pixel.
inline double inkSum(const qvgui::offscreen::Canvas& c) {
  double sum = 0.0;
  for (int y = 0; y < c.height(); ++y)
    for (int x = 0; x < c.width(); ++x) sum += (255 - c.pixel(x, y).r) / 255.0;
  return sum;
}

}  // namespace offscreen_test

// Shared pieces of the offscreen back-end tests: colours, polygons and
// coverage sums over a canvas's pixels.
#pragma once

#include <cstdint>
#include <vector>

#include "qvgui/offscreen.h"
#include "qvgui/raster.h"

namespace offscreen_test {

inline Color_tag rgb(double r, double g, double b) { return Color_tag{r, g, b, -1, false}; }

// Owns the points of a polygon record made from x, y pairs.
class Poly {
 public:
  explicit Poly(const std::vector<std::int32_t>& xy) {
    for (std::size_t i = 0; i + 1 < xy.size(); i += 2) points_.push_back(qvpoint32{xy[i], xy[i + 1]});
    poly_ = Polygon2{points_.data(), static_cast<std::int32_t>(points_.size())};
  }
  Poly(const Poly&) = delete;
  Poly& operator=(const Poly&) = delete;
  Polygon2* get() { return &poly_; }

 private:
  std::vector<qvpoint32> points_;
  Polygon2 poly_{};
};

// Ink of black on white summed over the image, in pixels: 1 per fully black pixel.
inline double inkSum(const qvgui::offscreen::Canvas& c) {
  double sum = 0.0;
  for (int y = 0; y < c.height(); ++y)
    for (int x = 0; x < c.width(); ++x) sum += (255 - c.pixel(x, y).r) / 255.0;
  return sum;
}

}  // namespace offscreen_test

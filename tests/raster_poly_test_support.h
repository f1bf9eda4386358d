// Helpers the rasteriser, marker and hit tests share: an owned pixmap with its
// mask, polygons from coordinate lists, and seeded random polygons.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "qvgui/geometry.h"
#include "qvgui/host.h"
#include "qvgui/raster.h"

inline std::ostream& operator<<(std::ostream& os, const qvpoint32& p) {
  return os << '(' << p.x << ", " << p.y << ')';
}
inline bool operator==(const qvpoint32& a, const qvpoint32& b) { return a.x == b.x && a.y == b.y; }

namespace raster_test {

constexpr std::int32_t kMissing = -32768;

// A polygon that owns its vertices.
struct Poly {
  std::vector<qvpoint32> pts;
  Polygon2 view() { return Polygon2{pts.data(), static_cast<std::int32_t>(pts.size())}; }
};

// The buffers AllocatePolygonPixmap makes for a polygon, freed on scope exit.
struct Pixmap {
  qvrect box{};
  unsigned char* pix = nullptr;
  unsigned char* mask = nullptr;
  explicit Pixmap(Polygon2 poly) { AllocatePolygonPixmap(&poly, &box, &pix, &mask); }
  ~Pixmap() {
    zrFree(pix);
    zrFree(mask);
  }
  Pixmap(const Pixmap&) = delete;
  Pixmap& operator=(const Pixmap&) = delete;
  int width() const { return box.right - box.left + 1; }
  int height() const { return box.bottom - box.top + 1; }
  int stride() const { return (width() + 3) & ~3; }
  bool written(int x, int y) const { return mask[(y - box.top) * width() + (x - box.left)] != 0; }
  int value(int x, int y) const { return pix[(y - box.top) * stride() + (x - box.left)]; }
  // Written pixels row by row as text ('#' written, '.' not), for readable failures.
  std::string picture() const {
    std::string s;
    for (int y = box.top; y <= box.bottom; ++y) {
      for (int x = box.left; x <= box.right; ++x) s += written(x, y) ? '#' : '.';
      s += '\n';
    }
    return s;
  }
};

// n vertices in [lo, hi]^2: a star-shaped (convex when `convex`) ring around
// the middle, or anything at all otherwise (self-intersecting).
inline Poly randomPolygon(std::mt19937& rng, int n, int lo, int hi, bool ordered) {
  std::uniform_int_distribution<int> coord(lo, hi);
  Poly p;
  if (!ordered) {
    for (int i = 0; i < n; ++i) p.pts.push_back(qvpoint32{coord(rng), coord(rng)});
    return p;
  }
  std::uniform_real_distribution<double> radius(0.2, 1.0);
  const double cx = (lo + hi) / 2.0, r = (hi - lo) / 2.0;
  for (int i = 0; i < n; ++i) {
    const double a = 2.0 * 3.14159265358979 * (i + 0.5) / n, k = radius(rng);
    p.pts.push_back(
        qvpoint32{static_cast<int>(cx + r * k * std::cos(a)), static_cast<int>(cx + r * k * std::sin(a))});
  }
  return p;
}

// Whether an edge passes within one pixel (in both x and y) of (x, y).
inline bool nearAnEdge(const std::vector<qvpoint32>& ring, int x, int y) {
  for (std::size_t i = 0; i < ring.size(); ++i) {
    const qvpoint32 a = ring[i], b = ring[(i + 1) % ring.size()];
    double t0 = 0.0, t1 = 1.0;  // clip the segment to the square
    const double p[4] = {-(b.x - a.x) * 1.0, (b.x - a.x) * 1.0, -(b.y - a.y) * 1.0, (b.y - a.y) * 1.0};
    const double q[4] = {a.x - (x - 1.0), (x + 1.0) - a.x, a.y - (y - 1.0), (y + 1.0) - a.y};
    bool hit = true;
    for (int k = 0; k < 4 && hit; ++k) {
      if (p[k] == 0.0) {
        hit = q[k] >= 0.0;
      } else if (p[k] < 0.0) {
        t0 = std::max(t0, q[k] / p[k]);
      } else {
        t1 = std::min(t1, q[k] / p[k]);
      }
    }
    if (hit && t0 <= t1) return true;
  }
  return false;
}

}  // namespace raster_test

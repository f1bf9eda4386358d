// Interpolated polygon outlines and the thinned Bresenham point list.
#include <algorithm>
#include <boost/numeric/conversion/cast.hpp>
#include <cmath>
#include <cstdlib>

#include "geometry/messages_p.h"
#include "qvgui/geometry.h"
#include "qvgui/host.h"
#include "qvgui/raster.h"
#include "raster/poly_p.h"

using namespace qvgui_raster;

namespace {

// Walks one edge as a Bresenham line of max(|dx|, |dy|) + 1 pixels, calling
// put(x, y, v) with the N channel values running from one end to the other.
// Lines are walked from the end with the larger y (y-major) or the smaller x
// (x-major), so an edge draws the same pixels in either direction.
template <int N, class Put>
void walkEdge(const qvpoint32& a, const double* va, const qvpoint32& b, const double* vb, Put&& put) {
  const std::int32_t dx = b.x - a.x, dy = b.y - a.y;
  const std::int32_t adx = std::abs(dx), ady = std::abs(dy);
  const std::int32_t n = std::max(adx, ady);
  double step[N];
  for (int k = 0; k < N; ++k) step[k] = n > 0 ? (vb[k] - va[k]) / n : 0.0;
  const std::int32_t diag = ((dx > 0 && dy > 0) || (dx < 0 && dy < 0)) ? 1 : -1;
  const bool startAtA = ady >= adx ? a.y >= b.y : a.x <= b.x;
  std::int32_t x = startAtA ? a.x : b.x;
  std::int32_t y = startAtA ? a.y : b.y;
  double v[N];
  for (int k = 0; k < N; ++k) {
    v[k] = startAtA ? va[k] : vb[k];
    if (!startAtA) step[k] = -step[k];
  }
  put(x, y, v);
  if (ady >= adx) {
    std::int32_t err = 2 * adx - ady;
    for (std::int32_t i = 0; i < ady; ++i) {
      --y;
      if (err >= 0) {
        x -= diag;
        err += 2 * (adx - ady);
      } else {
        err += 2 * adx;
      }
      for (int k = 0; k < N; ++k) v[k] += step[k];
      put(x, y, v);
    }
  } else {
    std::int32_t err = 2 * ady - adx;
    for (std::int32_t i = 0; i < adx; ++i) {
      ++x;
      if (err >= 0) {
        y += diag;
        err += 2 * (ady - adx);
      } else {
        err += 2 * ady;
      }
      for (int k = 0; k < N; ++k) v[k] += step[k];
      put(x, y, v);
    }
  }
}

}  // namespace

void DrawInterpPoly(const Polygon2* poly, const double* values, const qvrect* bounds, unsigned char* pixmap,
                    unsigned char* mask) {
  if (poly == nullptr || poly->points == nullptr || values == nullptr || bounds == nullptr ||
      pixmap == nullptr || mask == nullptr) {
    return;
  }
  const qvrect box = *bounds;
  const std::int32_t stride = pixmapStride(box), width = boxWidth(box);
  auto put = [&](std::int32_t x, std::int32_t y, const double* v) {
    const std::ptrdiff_t row = y - box.top, col = x - box.left;
    pixmap[row * stride + col] = valueToByte(v[0]);
    mask[row * width + col] = 1;
  };
  const std::int32_t n = poly->count;
  for (std::int32_t i = 0; i < n; ++i) {
    const std::int32_t j = (i + 1) % n;
    const qvpoint32 &a = poly->points[i], &b = poly->points[j];
    // NaN is not a missing value: it is drawn.
    if (values[i] == kMissingValue || values[j] == kMissingValue || isMissing(a) || isMissing(b)) continue;
    walkEdge<1>(a, &values[i], b, &values[j], put);
  }
}

void DrawInterpPolyRGB(const Polygon2* poly, const double* rgb, const qvrect* bounds, std::uint32_t* pixels,
                       unsigned char* mask) {
  if (poly == nullptr || poly->points == nullptr || rgb == nullptr || bounds == nullptr ||
      pixels == nullptr) {
    return;
  }
  const qvrect box = *bounds;
  const std::int32_t width = boxWidth(box);
  auto put = [&](std::int32_t x, std::int32_t y, const double* v) {
    const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(y - box.top) * width + (x - box.left);
    pixels[at] = packOpaque(valueToByte(v[0]), valueToByte(v[1]), valueToByte(v[2]));
    if (mask != nullptr) mask[at] = 1;
  };
  const std::int32_t n = poly->count;
  for (std::int32_t i = 0; i < n; ++i) {
    const std::int32_t j = (i + 1) % n;
    const qvpoint32 &a = poly->points[i], &b = poly->points[j];
    if (isMissing(a) || isMissing(b)) continue;
    const double va[3] = {channelToValue(rgb[3 * i]), channelToValue(rgb[3 * i + 1]),
                          channelToValue(rgb[3 * i + 2])};
    const double vb[3] = {channelToValue(rgb[3 * j]), channelToValue(rgb[3 * j + 1]),
                          channelToValue(rgb[3 * j + 2])};
    walkEdge<3>(a, va, b, vb, put);
  }
}

// ---- Thinned line ---------------------------------------------------------------------

namespace {
constexpr int kBresenhamCapacity = 15;
qvpoint32 g_bresenhamPoints[kBresenhamCapacity];
Polygon2 g_bresenhamPoly{g_bresenhamPoints, 0};
}  // namespace

Polygon2* uiBresenhamPolygon2(qvpoint from, qvpoint to, int limit) {
  g_bresenhamPoly.count = 0;
  if (from.h == to.h && from.v == to.v) return &g_bresenhamPoly;
  limit = std::clamp(limit, 0, kBresenhamCapacity);

  std::int32_t x = from.h, y = from.v;
  const std::int32_t dx = std::int32_t{to.h} - from.h, dy = std::int32_t{to.v} - from.v;
  const std::int32_t sx = (dx > 0) - (dx < 0), sy = (dy > 0) - (dy < 0);
  const std::int32_t adx2 = 2 * std::abs(dx), ady2 = 2 * std::abs(dy);
  const std::int32_t n = std::max(std::abs(dx), std::abs(dy));
  const bool thinning = n > limit;
  const double spacing = std::max(1.0, n / (limit + 1.0));
  double nextKept = std::ceil(spacing);
  int k = 1;

  std::size_t emitted = 0;
  std::int32_t counter = 0;
  auto emit = [&] {
    ++counter;
    if (thinning) {
      if (counter != nextKept) return;
      ++k;
      nextKept = std::ceil(k * spacing);
    }
    if (emitted < kBresenhamCapacity) g_bresenhamPoints[emitted++] = qvpoint32{x, y};
  };
  // The two end points themselves are never emitted.
  if (adx2 <= ady2) {
    std::int32_t err = adx2 - std::abs(dy);
    for (y += sy; y != to.v; y += sy) {
      if (err >= 0) {
        x += sx;
        err -= ady2;
      }
      err += adx2;
      emit();
    }
  } else {
    std::int32_t err = ady2 - std::abs(dx);
    for (x += sx; x != to.h; x += sx) {
      if (err >= 0) {
        y += sy;
        err -= adx2;
      }
      err += ady2;
      emit();
    }
  }
  try {
    g_bresenhamPoly.count = boost::numeric_cast<std::int32_t>(emitted);
  } catch (const boost::numeric::bad_numeric_cast&) {
    qvgui_messages::raise::pointCountOverflow();
  }
  return &g_bresenhamPoly;
}

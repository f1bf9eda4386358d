// Interpolating polygon fills into the pixmap-and-mask layout: colormap
// values, true colour and the bilinear corner-colour mode.
#include <cstring>

#include "qvgui/geometry.h"
#include "qvgui/host.h"
#include "qvgui/raster.h"
#include "raster/poly_p.h"
#include "raster/poly_scan_p.h"

using namespace qvgui_raster;

// ---- Buffers ------------------------------------------------------------------

void AllocatePolygonPixmap(const Polygon2* poly, qvrect* bounds, unsigned char** pixmap,
                           unsigned char** mask) {
  // Kept as 16-bit values: a box is never wider than device coordinates.
  std::int16_t minX = 32767, minY = 32767, maxX = -32768, maxY = -32768;
  const std::int32_t n = (poly != nullptr && poly->points != nullptr) ? poly->count : 0;
  for (std::int32_t i = 0; i < n; ++i) {
    const qvpoint32& p = poly->points[i];
    if (p.x != kMissing) {
      const std::int16_t x = low16(p.x);
      minX = std::min(minX, x);
      maxX = std::max(maxX, x);
    }
    if (p.y != kMissing) {
      const std::int16_t y = low16(p.y);
      minY = std::min(minY, y);
      maxY = std::max(maxY, y);
    }
  }
  if (minX == 32767 || minY == 32767 || maxX == -32768 || maxY == -32768) {
    if (bounds != nullptr) *bounds = qvrect{0, 0, 0, 0};
    if (pixmap != nullptr) *pixmap = nullptr;
    if (mask != nullptr) *mask = nullptr;
    return;
  }
  qvrect box;
  guiSetRect(&box, minX, minY, maxX, maxY);
  const std::size_t w = static_cast<std::size_t>(boxWidth(box));
  const std::size_t h = static_cast<std::size_t>(box.bottom - box.top + 1);
  auto* m = static_cast<unsigned char*>(zrCalloc(w * h, 1));
  unsigned char* p = nullptr;
  try {
    p = static_cast<unsigned char*>(zrCalloc(static_cast<std::size_t>(pixmapStride(box)) * h, 1));
  } catch (...) {
    zrFree(m);
    throw;
  }
  if (bounds != nullptr) *bounds = box;
  if (pixmap != nullptr) {
    *pixmap = p;
  } else {
    zrFree(p);
  }
  if (mask != nullptr) {
    *mask = m;
  } else {
    zrFree(m);
  }
}

// ---- Span writers -----------------------------------------------------------------

namespace {

// Runs the value from vl to vr across the span: the ends get exactly their
// own values, the pixels between the running sum, one division per span.
struct IndexSpan {
  const qvrect& box;
  std::int32_t stride, width;
  unsigned char* pixmap;
  unsigned char* mask;

  void operator()(std::int32_t y, std::int32_t xl, const double* vl, std::int32_t xr,
                  const double* vr) const {
    const std::int32_t row = y - box.top;
    unsigned char* out = pixmap + static_cast<std::ptrdiff_t>(row) * stride + (xl - box.left);
    const std::int32_t len = xr - xl;
    out[0] = valueToByte(vl[0]);
    if (len > 0) {
      const double step = (vr[0] - vl[0]) / len;
      double v = vl[0];
      for (std::int32_t i = 1; i < len; ++i) {
        v += step;
        out[i] = valueToByte(v);
      }
      out[len] = valueToByte(vr[0]);
    }
    std::memset(mask + static_cast<std::ptrdiff_t>(row) * width + (xl - box.left), 1,
                static_cast<std::size_t>(len) + 1);
  }
};

struct TrueColorSpan {
  const qvrect& box;
  std::int32_t width;
  std::uint32_t* pixels;
  unsigned char* mask;

  void operator()(std::int32_t y, std::int32_t xl, const double* vl, std::int32_t xr,
                  const double* vr) const {
    const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(y - box.top) * width + (xl - box.left);
    std::uint32_t* out = pixels + offset;
    const std::int32_t len = xr - xl;
    out[0] = packOpaque(valueToByte(vl[0]), valueToByte(vl[1]), valueToByte(vl[2]));
    if (len > 0) {
      const double sr = (vr[0] - vl[0]) / len, sg = (vr[1] - vl[1]) / len, sb = (vr[2] - vl[2]) / len;
      double r = vl[0], g = vl[1], b = vl[2];
      for (std::int32_t i = 1; i < len; ++i) {
        r += sr;
        g += sg;
        b += sb;
        out[i] = packOpaque(valueToByte(r), valueToByte(g), valueToByte(b));
      }
      out[len] = packOpaque(valueToByte(vr[0]), valueToByte(vr[1]), valueToByte(vr[2]));
    }
    if (mask != nullptr) std::memset(mask + offset, 1, static_cast<std::size_t>(len) + 1);
  }
};

// Carries the (s, t) position in the quadrilateral across the span and blends
// the corner values there.
struct BilinearSpan {
  IndexSpan target;
  double c0, c1, c2, c3;

  [[nodiscard]] double blend(double s, double t) const noexcept {
    return (1.0 - s) * (1.0 - t) * c0 + s * (1.0 - t) * c1 + s * t * c2 + (1.0 - s) * t * c3;
  }

  void operator()(std::int32_t y, std::int32_t xl, const double* vl, std::int32_t xr,
                  const double* vr) const {
    const std::int32_t row = y - target.box.top;
    unsigned char* out =
        target.pixmap + static_cast<std::ptrdiff_t>(row) * target.stride + (xl - target.box.left);
    const std::int32_t len = xr - xl;
    out[0] = valueToByte(blend(vl[0], vl[1]));
    if (len > 0) {
      const double ss = (vr[0] - vl[0]) / len, st = (vr[1] - vl[1]) / len;
      double s = vl[0], t = vl[1];
      for (std::int32_t i = 1; i < len; ++i) {
        s += ss;
        t += st;
        out[i] = valueToByte(blend(s, t));
      }
      out[len] = valueToByte(blend(vr[0], vr[1]));
    }
    std::memset(target.mask + static_cast<std::ptrdiff_t>(row) * target.width + (xl - target.box.left), 1,
                static_cast<std::size_t>(len) + 1);
  }
};

}  // namespace

// ---- Fills -------------------------------------------------------------------------

void FillInterpPoly(const Polygon2* poly, const double* values, const qvrect* bounds, unsigned char* pixmap,
                    unsigned char* mask) {
  if (bounds == nullptr || pixmap == nullptr || mask == nullptr) return;
  scanConvert<1>(poly, values, IndexSpan{*bounds, pixmapStride(*bounds), boxWidth(*bounds), pixmap, mask});
}

void FillInterpPolyRGB(const Polygon2* poly, const double* rgb, const qvrect* bounds, std::uint32_t* pixels,
                       unsigned char* mask) {
  if (poly == nullptr || poly->points == nullptr || poly->count <= 0 || rgb == nullptr || bounds == nullptr ||
      pixels == nullptr) {
    return;
  }
  // Scaled once per vertex so the per-pixel work is a truncation.
  const std::int32_t n = poly->count;
  ScratchArray<double, 48> scaled(3 * n);
  for (std::int32_t i = 0; i < 3 * n; ++i) scaled[i] = channelToValue(rgb[i]);
  scanConvert<3>(poly, scaled.data(), TrueColorSpan{*bounds, boxWidth(*bounds), pixels, mask});
}

void FillBilinearPoly(const Polygon2* poly, const double* corners, const qvrect* bounds,
                      unsigned char* pixmap, unsigned char* mask) {
  if (poly == nullptr || poly->points == nullptr || corners == nullptr || bounds == nullptr ||
      pixmap == nullptr || mask == nullptr) {
    return;
  }
  // The four usable vertices and their parameter positions.
  qvpoint32 quad[4];
  double st[8];
  static constexpr double kCornerS[4] = {0.0, 1.0, 1.0, 0.0};
  static constexpr double kCornerT[4] = {0.0, 0.0, 1.0, 1.0};
  int used = 0;
  for (std::int32_t i = 0; i < poly->count; ++i) {
    if (isMissing(poly->points[i])) continue;
    if (used == 4) return;
    quad[used] = poly->points[i];
    st[2 * used] = kCornerS[used];
    st[2 * used + 1] = kCornerT[used];
    ++used;
  }
  if (used != 4) return;
  const Polygon2 ring{quad, 4};
  const IndexSpan target{*bounds, pixmapStride(*bounds), boxWidth(*bounds), pixmap, mask};
  scanConvert<2>(&ring, st, BilinearSpan{target, corners[0], corners[1], corners[2], corners[3]});
}

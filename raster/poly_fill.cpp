// Interpolating polygon fills into the pixmap-and-mask layout: colormap
// values, true colour and the bilinear corner-colour mode.
#include <cstring>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define QVGUI_RASTER_SSE2 1
#else
#define QVGUI_RASTER_SSE2 0
#endif

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

// ---- Span interpolation ------------------------------------------------------------
//
// Pixel i of a span gets left value + i * step, in single precision: the
// result is truncated to a byte, so float's 2^-16 resolution at 255 is ample,
// and it lets the x86-64 baseline (SSE2) work on 4 pixels per instruction.
// Products rather than a running sum keep rounding from building up along
// long spans and make the pixels independent. The vector and scalar paths
// compute the same floats and clamp the same way, so they write the same
// bytes; the callers set the two ends of each span exactly.

namespace {

[[nodiscard]] inline unsigned char floatToByte(float v) noexcept {
  if (!(v > 0.0f)) return 0;  // NaN too
  if (v >= 255.0f) return 255;
  return static_cast<unsigned char>(static_cast<int>(v));
}

#if QVGUI_RASTER_SSE2
// Four pixels' values from their indices, clamped to 0..255 (max(v, 0)
// answers 0 for NaN, as floatToByte does) and truncated.
inline __m128i spanInts(__m128 index, __m128 base, __m128 step) noexcept {
  const __m128 v = _mm_add_ps(base, _mm_mul_ps(index, step));
  return _mm_cvttps_epi32(_mm_min_ps(_mm_max_ps(v, _mm_setzero_ps()), _mm_set1_ps(255.0f)));
}
#endif

// Pixels 0 .. len of a span of colormap values. Spans of 8 pixels or more
// run entirely in blocks of 8, the last block overlapping the one before
// rather than running past the span.
void interpolateBytes(unsigned char* out, std::int32_t len, double vl, double step) {
  const std::int32_t n = len + 1;
  const float base = static_cast<float>(vl), st = static_cast<float>(step);
#if QVGUI_RASTER_SSE2
  if (n >= 8) {
    const __m128 b = _mm_set1_ps(base), s = _mm_set1_ps(st), lanes = _mm_set_ps(3.0f, 2.0f, 1.0f, 0.0f);
    auto block = [&](std::int32_t i) {
      const __m128 i0 = _mm_add_ps(_mm_set1_ps(static_cast<float>(i)), lanes);
      const __m128 i1 = _mm_add_ps(i0, _mm_set1_ps(4.0f));
      const __m128i words = _mm_packs_epi32(spanInts(i0, b, s), spanInts(i1, b, s));
      _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(words, words));
    };
    std::int32_t i = 0;
    for (; i + 8 <= n; i += 8) block(i);
    if (i < n) block(n - 8);
    return;
  }
#endif
  for (std::int32_t i = 0; i < n; ++i) out[i] = floatToByte(base + static_cast<float>(i) * st);
}

// Pixels 0 .. len of a true-colour span, in blocks of 4 as above.
void interpolatePixels(std::uint32_t* out, std::int32_t len, const double* vl, const double* step) {
  const std::int32_t n = len + 1;
  const float base[3] = {static_cast<float>(vl[0]), static_cast<float>(vl[1]), static_cast<float>(vl[2])};
  const float st[3] = {static_cast<float>(step[0]), static_cast<float>(step[1]), static_cast<float>(step[2])};
#if QVGUI_RASTER_SSE2
  if (n >= 4) {
    const __m128 b0 = _mm_set1_ps(base[0]), b1 = _mm_set1_ps(base[1]), b2 = _mm_set1_ps(base[2]);
    const __m128 s0 = _mm_set1_ps(st[0]), s1 = _mm_set1_ps(st[1]), s2 = _mm_set1_ps(st[2]);
    const __m128 lanes = _mm_set_ps(3.0f, 2.0f, 1.0f, 0.0f);
    const __m128i alpha = _mm_set1_epi32(static_cast<int>(0xFF000000u));
    auto block = [&](std::int32_t i) {
      const __m128 index = _mm_add_ps(_mm_set1_ps(static_cast<float>(i)), lanes);
      const __m128i r = _mm_slli_epi32(spanInts(index, b0, s0), 16);
      const __m128i g = _mm_slli_epi32(spanInts(index, b1, s1), 8);
      const __m128i b = spanInts(index, b2, s2);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i),
                       _mm_or_si128(_mm_or_si128(r, g), _mm_or_si128(b, alpha)));
    };
    std::int32_t i = 0;
    for (; i + 4 <= n; i += 4) block(i);
    if (i < n) block(n - 4);
    return;
  }
#endif
  for (std::int32_t i = 0; i < n; ++i) {
    const float k = static_cast<float>(i);
    out[i] = packOpaque(floatToByte(base[0] + k * st[0]), floatToByte(base[1] + k * st[1]),
                        floatToByte(base[2] + k * st[2]));
  }
}

// ---- Span writers -----------------------------------------------------------------

// The ends get exactly their own values, the pixels between the interpolated
// ones; one division per span and channel.
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
    if (len > 0) {
      interpolateBytes(out, len, vl[0], (vr[0] - vl[0]) / len);
      out[len] = valueToByte(vr[0]);
    }
    out[0] = valueToByte(vl[0]);
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
    if (len > 0) {
      const double step[3] = {(vr[0] - vl[0]) / len, (vr[1] - vl[1]) / len, (vr[2] - vl[2]) / len};
      interpolatePixels(out, len, vl, step);
      out[len] = packOpaque(valueToByte(vr[0]), valueToByte(vr[1]), valueToByte(vr[2]));
    }
    out[0] = packOpaque(valueToByte(vl[0]), valueToByte(vl[1]), valueToByte(vl[2]));
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
      for (std::int32_t i = 1; i < len; ++i) out[i] = valueToByte(blend(vl[0] + i * ss, vl[1] + i * st));
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

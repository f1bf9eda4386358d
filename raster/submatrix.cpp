// Resampling a sub-matrix of image data into the rasteriser's pixmap and mask.
#include <algorithm>
#include <cmath>
#include <vector>

#include "qvgui/geometry.h"
#include "qvgui/raster.h"
#include "raster/poly_p.h"

using namespace qvgui_raster;

namespace {

// Where one destination pixel samples along an axis: the two nearest element
// indices and the weight of the second. Nearest sampling uses i0 alone.
struct Tap {
  std::int32_t i0;
  std::int32_t i1;
  double f;
};

// Element centres sit at the centres of `pixels` equal cells spanning the
// `elements` elements; positions outside clamp to the border elements.
std::vector<Tap> axisTaps(std::int32_t first, std::int32_t last, std::int32_t destStart, std::int32_t pixels,
                          std::int32_t elements, bool bilinear) {
  std::vector<Tap> taps;
  taps.reserve(static_cast<std::size_t>(last - first + 1));
  const double scale = static_cast<double>(elements) / pixels;
  for (std::int32_t p = first; p <= last; ++p) {
    const double centre = (static_cast<double>(p - destStart) + 0.5) * scale;
    if (!bilinear) {
      const auto i = std::clamp(static_cast<std::int32_t>(std::floor(centre)), 0, elements - 1);
      taps.push_back(Tap{i, i, 0.0});
      continue;
    }
    const double u = centre - 0.5;
    const double base = std::floor(u);
    const auto i0 = static_cast<std::int32_t>(base);
    taps.push_back(Tap{std::clamp(i0, 0, elements - 1), std::clamp(i0 + 1, 0, elements - 1), u - base});
  }
  return taps;
}

}  // namespace

bool ExtractSubMatrixAndInterpolateIntoPixmap(const double* image, std::int32_t rows, std::int32_t columns,
                                              std::int32_t firstRow, std::int32_t firstColumn,
                                              std::int32_t subRows, std::int32_t subColumns,
                                              const qvrect* dest, bool bilinear, const qvrect* bounds,
                                              unsigned char* pixmap, unsigned char* mask) {
  if (image == nullptr || dest == nullptr || bounds == nullptr || pixmap == nullptr || mask == nullptr) {
    return false;
  }
  if (rows <= 0 || columns <= 0 || subRows <= 0 || subColumns <= 0 || firstRow < 0 || firstColumn < 0 ||
      std::int64_t{firstRow} + subRows > rows || std::int64_t{firstColumn} + subColumns > columns) {
    return false;
  }
  const qvrect d = *dest, box = *bounds;
  const std::int64_t destW = std::int64_t{d.right} - d.left + 1, destH = std::int64_t{d.bottom} - d.top + 1;
  if (destW <= 0 || destH <= 0 || destW > 0x7FFFFFFF || destH > 0x7FFFFFFF) return false;

  const std::int32_t x0 = std::max(d.left, box.left), x1 = std::min(d.right, box.right);
  const std::int32_t y0 = std::max(d.top, box.top), y1 = std::min(d.bottom, box.bottom);
  if (x0 > x1 || y0 > y1) return true;

  const std::vector<Tap> colTaps =
      axisTaps(x0, x1, d.left, static_cast<std::int32_t>(destW), subColumns, bilinear);
  const std::vector<Tap> rowTaps =
      axisTaps(y0, y1, d.top, static_cast<std::int32_t>(destH), subRows, bilinear);
  const std::int32_t stride = pixmapStride(box), width = boxWidth(box);
  // Column-major: element (r, c) of the sub-matrix at (firstColumn + c) * rows + firstRow + r.
  auto at = [&](std::int32_t r, std::int32_t c) {
    return image[(static_cast<std::ptrdiff_t>(firstColumn) + c) * rows + firstRow + r];
  };
  for (std::int32_t y = y0; y <= y1; ++y) {
    const Tap& ty = rowTaps[static_cast<std::size_t>(y - y0)];
    unsigned char* out = pixmap + static_cast<std::ptrdiff_t>(y - box.top) * stride;
    unsigned char* m = mask + static_cast<std::ptrdiff_t>(y - box.top) * width;
    for (std::int32_t x = x0; x <= x1; ++x) {
      const Tap& tx = colTaps[static_cast<std::size_t>(x - x0)];
      double v = at(ty.i0, tx.i0);
      if (bilinear) {
        const double top = v + (at(ty.i0, tx.i1) - v) * tx.f;
        const double below = at(ty.i1, tx.i0) + (at(ty.i1, tx.i1) - at(ty.i1, tx.i0)) * tx.f;
        v = top + (below - top) * ty.f;
      }
      if (std::isnan(v)) continue;
      out[x - box.left] = valueToByte(v);
      m[x - box.left] = 1;
    }
  }
  return true;
}

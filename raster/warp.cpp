// Texture mapping of a triangle in 13.19 fixed point.
#include <cmath>
#include <cstdlib>

#include "qvgui/geometry.h"
#include "qvgui/host.h"
#include "qvgui/raster.h"
#include "raster/poly_p.h"

using namespace qvgui_raster;

namespace {

constexpr int kFractionBits = 19;
constexpr double kOneTexel = 524288.0;  // 1 << kFractionBits

// Rounded half away from zero and kept as an unsigned value, so a coordinate
// left of the texture wraps to a huge one and clamps to the last column.
std::uint32_t toFixed(double texels) noexcept {
  const double f = std::round(texels * kOneTexel);
  if (!std::isfinite(f)) return 0;
  const double clamped = std::fmin(std::fmax(f, -2147483648.0), 4294967295.0);
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(clamped));
}

// Signed difference of two fixed-point values, wrapping like the registers
// they stand for.
std::int32_t fixedDelta(std::uint32_t to, std::uint32_t from) noexcept {
  return static_cast<std::int32_t>(to - from);
}

// The extent of one row of the triangle and the texture position at each end.
struct WarpSpan {
  std::int32_t left;
  std::int32_t right;
  std::uint32_t uLeft, uRight, vLeft, vRight;
};

struct TexVertex {
  std::int32_t x, y;
  std::uint32_t u, v;
};

// Walks one edge and widens the spans of the rows it touches. The minor
// coordinate moves only while the error is above zero (the outline moves at
// zero too); that decides which pixels the triangle's border covers.
void walkWarpEdge(TexVertex a, TexVertex b, const qvrect& box, WarpSpan* spans) {
  const std::int32_t width = boxWidth(box), height = box.bottom - box.top + 1;
  auto visit = [&](std::int32_t x, std::int32_t y, std::uint32_t u, std::uint32_t v) {
    const std::int32_t row = y - box.top, col = x - box.left;
    if (row < 0 || row >= height || col < 0 || col >= width) return;
    WarpSpan& s = spans[row];
    if (col < s.left) {
      s.left = col;
      s.uLeft = u;
      s.vLeft = v;
    }
    if (col > s.right) {
      s.right = col;
      s.uRight = u;
      s.vRight = v;
    }
  };
  const std::int32_t adx = std::abs(b.x - a.x), ady = std::abs(b.y - a.y);
  const bool yMajor = ady >= adx;
  if (yMajor ? a.y < b.y : a.x > b.x) std::swap(a, b);  // a: larger y, or smaller x
  const std::int32_t n = yMajor ? ady : adx;
  const std::int32_t du = n > 0 ? fixedDelta(b.u, a.u) / n : 0;
  const std::int32_t dv = n > 0 ? fixedDelta(b.v, a.v) / n : 0;
  std::int32_t x = a.x, y = a.y;
  std::uint32_t u = a.u, v = a.v;
  visit(x, y, u, v);
  if (yMajor) {
    const std::int32_t sx = (b.x > a.x) - (b.x < a.x);
    std::int32_t err = 2 * adx - ady;
    for (std::int32_t i = 0; i < n; ++i) {
      --y;
      if (err > 0) {
        x += sx;
        err -= 2 * ady;
      }
      err += 2 * adx;
      u += static_cast<std::uint32_t>(du);
      v += static_cast<std::uint32_t>(dv);
      visit(x, y, u, v);
    }
  } else {
    const std::int32_t sy = (b.y > a.y) - (b.y < a.y);
    std::int32_t err = 2 * ady - adx;
    for (std::int32_t i = 0; i < n; ++i) {
      ++x;
      if (err > 0) {
        y += sy;
        err -= 2 * adx;
      }
      err += 2 * ady;
      u += static_cast<std::uint32_t>(du);
      v += static_cast<std::uint32_t>(dv);
      visit(x, y, u, v);
    }
  }
}

}  // namespace

void WarpTriangle(const Polygon2* tri, const qvrect* bounds, Colortable_tag* /*colortable*/,
                  unsigned long rows, unsigned long columns, const double (*texcoords)[2], const int* texture,
                  int ncolours, unsigned char* pixmap, unsigned char* mask) {
  if (ncolours < 1) return;
  if (tri == nullptr || tri->points == nullptr || tri->count < 3 || bounds == nullptr ||
      texcoords == nullptr || texture == nullptr || pixmap == nullptr || mask == nullptr || rows == 0 ||
      columns == 0) {
    return;
  }
  const qvrect box = *bounds;
  const std::int32_t height = box.bottom - box.top + 1;
  if (height <= 0 || boxWidth(box) <= 0) return;

  TexVertex vert[3];
  for (int i = 0; i < 3; ++i) {
    vert[i] =
        TexVertex{tri->points[i].x, tri->points[i].y, toFixed(texcoords[i][0]), toFixed(texcoords[i][1])};
  }
  auto* spans = static_cast<WarpSpan*>(zrMalloc(sizeof(WarpSpan) * static_cast<std::size_t>(height)));
  for (std::int32_t r = 0; r < height; ++r) spans[r] = WarpSpan{32767, -1, 0, 0, 0, 0};
  for (int i = 0; i < 3; ++i) {
    const qvpoint32 &a = tri->points[i], &b = tri->points[(i + 1) % 3];
    if (isMissing(a) || isMissing(b)) continue;
    walkWarpEdge(vert[i], vert[(i + 1) % 3], box, spans);
  }

  const std::int32_t stride = pixmapStride(box), width = boxWidth(box);
  const unsigned char colourLimit = static_cast<unsigned char>(ncolours);
  const unsigned char lastColour = static_cast<unsigned char>(ncolours - 1);
  for (std::int32_t r = 0; r < height; ++r) {
    const WarpSpan& s = spans[r];
    if (s.right == -1) continue;
    const std::int32_t len = s.right - s.left;
    const std::int32_t du = len > 0 ? fixedDelta(s.uRight, s.uLeft) / len : 0;
    const std::int32_t dv = len > 0 ? fixedDelta(s.vRight, s.vLeft) / len : 0;
    std::uint32_t u = s.uLeft, v = s.vLeft;
    unsigned char* out = pixmap + static_cast<std::ptrdiff_t>(r) * stride + s.left;
    unsigned char* m = mask + static_cast<std::ptrdiff_t>(r) * width + s.left;
    for (std::int32_t i = 0; i <= len; ++i) {
      unsigned long column = u >> kFractionBits;
      unsigned long row = v >> kFractionBits;
      if (column >= columns) column = columns - 1;
      if (row >= rows) row = rows - 1;
      const auto texel = static_cast<unsigned char>(texture[row * columns + column]);
      out[i] = texel < colourLimit ? texel : lastColour;
      m[i] = 1;
      u += static_cast<std::uint32_t>(du);
      v += static_cast<std::uint32_t>(dv);
    }
  }
  zrFree(spans);
}

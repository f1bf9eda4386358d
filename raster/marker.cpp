// Marker shapes as device-pixel polygons.
#include <cmath>

#include "qvgui/raster.h"
#include "raster/poly_p.h"

using namespace qvgui_raster;

namespace {

// The lengths a marker polygon is built from, each vertex coordinate being
// the centre plus or minus one of them.
enum Len : std::int8_t { kZero, kSquare, kLong, kSize, kHalf, kHigh, kStarA, kStarB, kStarC };

struct Offset {
  std::int8_t xSign;
  Len x;
  std::int8_t ySign;
  Len y;
};

struct MarkerShape {
  int count;
  Offset v[kMarkerPolyMaxPoints];
};

constexpr Offset O(int xs, Len x, int ys, Len y) {
  return Offset{static_cast<std::int8_t>(xs), x, static_cast<std::int8_t>(ys), y};
}

// Codes 5 to 10 and 12; y grows downwards, so +y is below the centre.
// clang-format off
constexpr MarkerShape kShapes[] = {
  // 5 square
  {5, {O(-1, kSquare, -1, kSquare), O(1, kSquare, -1, kSquare), O(1, kSquare, 1, kSquare),
       O(-1, kSquare, 1, kSquare), O(-1, kSquare, -1, kSquare)}},
  // 6 diamond: deliberately taller (kLong) than wide (kSize)
  {5, {O(0, kZero, 1, kLong), O(1, kSize, 0, kZero), O(0, kZero, -1, kLong), O(-1, kSize, 0, kZero),
       O(0, kZero, 1, kLong)}},
  // 7 triangle, apex below
  {4, {O(0, kZero, 1, kLong), O(1, kHigh, -1, kHalf), O(-1, kHigh, -1, kHalf), O(0, kZero, 1, kLong)}},
  // 8 triangle, apex above
  {4, {O(-1, kHigh, 1, kHalf), O(1, kHigh, 1, kHalf), O(0, kZero, -1, kLong), O(-1, kHigh, 1, kHalf)}},
  // 9 triangle, apex right
  {4, {O(-1, kHalf, 1, kHigh), O(1, kLong, 0, kZero), O(-1, kHalf, -1, kHigh), O(-1, kHalf, 1, kHigh)}},
  // 10 triangle, apex left
  {4, {O(-1, kLong, 0, kZero), O(1, kHalf, 1, kHigh), O(1, kHalf, -1, kHigh), O(-1, kLong, 0, kZero)}},
  // 11 five-pointed star: built from kStar5 below
  {11, {}},
  // 12 six-pointed star; the inner side vertices sit at kStarA, not at a
  // regular hexagram's distance
  {13, {O(-1, kStarC, -1, kStarA), O(-1, kStarB, -1, kStarA), O(0, kZero, -1, kSize),
        O(1, kStarB, -1, kStarA), O(1, kStarC, -1, kStarA), O(1, kStarA, 0, kZero),
        O(1, kStarC, 1, kStarA), O(1, kStarB, 1, kStarA), O(0, kZero, 1, kSize),
        O(-1, kStarB, 1, kStarA), O(-1, kStarC, 1, kStarA), O(-1, kStarA, 0, kZero),
        O(-1, kStarC, -1, kStarA)}},
};
// clang-format on
constexpr int kFirstPolygonCode = 5;
constexpr int kLastPolygonCode = 12;

// The five-pointed star in multiples of the size; each coordinate is the
// integer part of centre + factor * size, so its points are not exact mirrors.
constexpr double kStar5[11][2] = {
    {-0.95106, -0.30902}, {-0.235116, -0.30902}, {0.0, -1.0},          {0.235116, -0.30902},
    {0.95106, -0.30902},  {0.380424, 0.123608},  {0.58779, 0.80902},   {0.0, 0.4},
    {-0.58779, 0.80902},  {-0.380424, 0.123608}, {-0.95106, -0.30902},
};

}  // namespace

void geoGetMarkerPoly(int code, std::int16_t size, qvpoint32 centre, Polygon2* poly) {
  if (poly == nullptr || code < kFirstPolygonCode || code > kLastPolygonCode) return;
  const double r = size;
  qvpoint32* out = poly->points;
  if (code == 11) {
    for (int i = 0; i < 11; ++i) {
      out[i] =
          qvpoint32{truncToInt32(centre.x + kStar5[i][0] * r), truncToInt32(centre.y + kStar5[i][1] * r)};
    }
    poly->count = 11;
    return;
  }
  const std::int32_t s = truncToInt32(r * 1.333);
  std::int32_t len[9];
  len[kZero] = 0;
  len[kSquare] = low16(static_cast<std::int32_t>(std::ceil(r * 0.78)));
  len[kLong] = s;
  len[kSize] = size;
  len[kHalf] = static_cast<std::int32_t>(std::ceil(s * 0.5));
  len[kHigh] = static_cast<std::int32_t>(std::ceil(s * 0.866));
  len[kStarA] = truncToInt32(0.5 * r);
  len[kStarB] = truncToInt32(0.288675 * r);
  len[kStarC] = truncToInt32(0.8660254 * r);
  const MarkerShape& shape = kShapes[code - kFirstPolygonCode];
  for (int i = 0; i < shape.count; ++i) {
    const Offset& o = shape.v[i];
    out[i] = qvpoint32{centre.x + o.xSign * len[o.x], centre.y + o.ySign * len[o.y]};
  }
  poly->count = shape.count;
}

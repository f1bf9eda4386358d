// Marker polygons: exact vertices, codes without a polygon, symmetry and
// extent over sizes; and the 5-pixel grid snap.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "raster_poly_test_support.h"

namespace {

using V = std::vector<qvpoint32>;

V marker(int code, int size, qvpoint32 centre = {100, 100}) {
  qvpoint32 buffer[kMarkerPolyMaxPoints + 1];
  std::fill(std::begin(buffer), std::end(buffer), qvpoint32{-1, -1});
  Polygon2 poly{buffer, -7};
  geoGetMarkerPoly(code, static_cast<std::int16_t>(size), centre, &poly);
  if (poly.count == -7) return V{};
  EXPECT_EQ(buffer[kMarkerPolyMaxPoints].x, -1) << "wrote past the largest marker";
  return V(buffer, buffer + poly.count);
}

TEST(RasterMarkers, ExactVertices) {
  struct Case {
    int code;
    V expected;
  };
  const Case cases[] = {
      {5, {{92, 92}, {108, 92}, {108, 108}, {92, 108}, {92, 92}}},
      {6, {{100, 113}, {110, 100}, {100, 87}, {90, 100}, {100, 113}}},
      {7, {{100, 113}, {112, 93}, {88, 93}, {100, 113}}},
      {8, {{88, 107}, {112, 107}, {100, 87}, {88, 107}}},
      {9, {{93, 112}, {113, 100}, {93, 88}, {93, 112}}},
      {10, {{87, 100}, {107, 112}, {107, 88}, {87, 100}}},
      // Truncated coordinates: the left points sit one pixel further out.
      {11,
       {{90, 96},
        {97, 96},
        {100, 90},
        {102, 96},
        {109, 96},
        {103, 101},
        {105, 108},
        {100, 104},
        {94, 108},
        {96, 101},
        {90, 96}}},
      {12,
       {{92, 95},
        {98, 95},
        {100, 90},
        {102, 95},
        {108, 95},
        {105, 100},
        {108, 105},
        {102, 105},
        {100, 110},
        {98, 105},
        {92, 105},
        {95, 100},
        {92, 95}}},
      {0, {}},
      {4, {}},
      {13, {}},
      {-1, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.code);
    EXPECT_EQ(marker(c.code, 10), c.expected);
  }
}

TEST(RasterMarkers, ShapesAreClosedSymmetricAndBounded) {
  for (int size = 0; size <= 80; ++size) {
    for (int code = 5; code <= 12; ++code) {
      SCOPED_TRACE(testing::Message() << "code " << code << " size " << size);
      const V v = marker(code, size);
      ASSERT_FALSE(v.empty());
      EXPECT_EQ(v.front(), v.back()) << "closed";
      const int reach = std::max(size, static_cast<int>(size * 1.333));
      for (const qvpoint32& p : v) {
        ASSERT_LE(std::abs(p.x - 100), reach + 1);
        ASSERT_LE(std::abs(p.y - 100), reach + 1);
        if (size == 0) {
          ASSERT_EQ(p, (qvpoint32{100, 100}));
        }
      }
      if (code == 11) continue;  // truncation makes the five-pointed star lopsided
      // Mirror images: left-right for all but the sideways triangles, which
      // mirror top-bottom.
      const bool sideways = code == 9 || code == 10;
      for (const qvpoint32& p : v) {
        const qvpoint32 m = sideways ? qvpoint32{p.x, 200 - p.y} : qvpoint32{200 - p.x, p.y};
        ASSERT_NE(std::find(v.begin(), v.end(), m), v.end()) << p;
      }
    }
  }
}

TEST(RasterMarkers, GridSnapsFourUpAndTheRestDown) {
  struct Case {
    std::int16_t h, v, wantH, wantV;
  };
  const Case cases[] = {
      {13, 14, 10, 15}, {-7, 4, -5, 5}, {-9, 0, -5, 0}, {19, 20, 20, 20}, {32764, -32768, 32765, -32765}};
  for (const Case& c : cases) {
    qvpoint p{c.v, c.h};
    EXPECT_EQ(grid(&p), c.wantV);
    EXPECT_EQ(p.h, c.wantH);
    EXPECT_EQ(p.v, c.wantV);
  }
}

}  // namespace

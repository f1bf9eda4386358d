// Fuzzes the hit tests and marker shapes: polygons of up to 32 vertices
// (missing points included) anywhere in 16-bit device space, line widths up
// to 100, every marker code and size, pixels per point up to 10.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "qvgui/geometry.h"
#include "qvgui/raster.h"
#include "qvgui/window.h"

namespace {

struct Input {
  const std::uint8_t* data;
  std::size_t size;
  std::size_t at = 0;
  std::uint8_t byte() { return at < size ? data[at++] : 0; }
  int range(int lo, int hi) { return lo + static_cast<int>((byte() << 8 | byte()) % (hi - lo + 1)); }
};

double g_pixelsPerPoint = 1.0;

WinRec_tag* window() {
  static WinRec_tag* win = [] {
    winMethods_tag* methods = wm_Create();
    WinRec_tag* w = wr_Create(0, nullptr);
    swr_winMethods(w, methods);
    swm_PixelsPerPoint(methods, [](WinRec_tag*) { return g_pixelsPerPoint; });
    return w;
  }();
  return win;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in{data, size};
  const int n = in.range(0, 32);
  std::vector<qvpoint32> pts;
  for (int i = 0; i < n; ++i) {
    qvpoint32 p{in.range(-32767, 32767), in.range(-32767, 32767)};
    if (in.range(0, 15) == 0) p.x = -32768;
    pts.push_back(p);
  }
  const Polygon2 poly{pts.data(), n};
  const qvpoint32 pt{in.range(-32767, 32767), in.range(-32767, 32767)};
  const int linewidth = in.range(0, 100);
  qvrect bounds;
  geoFindPolyBounds(&poly, linewidth, &bounds);
  if (n > 0 && (bounds.top < bounds.bottom || bounds.right < bounds.left)) __builtin_trap();
  const bool inside = geoPtInPolygon(pt, linewidth, &poly);
  if (inside && (pt.x < bounds.left || pt.x > bounds.right || pt.y < bounds.bottom || pt.y > bounds.top)) {
    __builtin_trap();
  }
  const qvpoint32 centre{in.range(-30000, 30000), in.range(-30000, 30000)};
  (void)geoPtInCircle(pt, centre, in.range(-50000, 50000));
  (void)geoPtInOval(pt, centre, in.range(-100, 100), in.range(-100, 100));

  const int code = in.range(-2, 14);
  const auto markerSize = static_cast<std::int16_t>(in.range(-32768, 32767));
  qvpoint32 room[kMarkerPolyMaxPoints + 1];
  room[kMarkerPolyMaxPoints] = qvpoint32{7, 7};
  Polygon2 marker{room, 0};
  geoGetMarkerPoly(code, markerSize, centre, &marker);
  if (marker.count > kMarkerPolyMaxPoints || room[kMarkerPolyMaxPoints].x != 7) __builtin_trap();

  g_pixelsPerPoint = in.range(0, 1000) / 100.0;
  (void)geoIsPtInMarkerTerritory(window(), pt, in.range(0, 12), static_cast<std::int16_t>(in.range(0, 500)),
                                 linewidth, centre);
  qvpoint snap{static_cast<std::int16_t>(in.range(-32768, 32767)),
               static_cast<std::int16_t>(in.range(-32768, 32767))};
  (void)grid(&snap);
  if (snap.v % 5 != 0 || snap.h % 5 != 0) __builtin_trap();
  return 0;
}

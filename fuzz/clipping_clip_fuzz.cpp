// Fuzzes homogeneous clipping: polygons, lines and strips of any vertices,
// finite extremes and non-finite values included, with and without user
// planes and attributes. Clipped output must be finite and inside the view
// volume, or absent.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "fuzz/fuzz_reader.h"
#include "qvgui/clipping.h"
#include "qvgui/host.h"

using namespace gui_objects;

namespace {

void checkInside(const VertexVector& v) {
  if (v.getSize() == 0) return;
  const Point3d* p = v.getProjectedVertices();
  const double* r = v.getInverseWCoords();
  if (p == nullptr || r == nullptr) __builtin_trap();
  for (std::size_t i = 0; i < v.getSize(); ++i) {
    if (!(std::fabs(p[i].getX()) <= 1 && std::fabs(p[i].getY()) <= 1 && std::fabs(p[i].getZ()) <= 1))
      __builtin_trap();
    if (!std::isfinite(r[i])) __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz_input::Reader in(data, size);
  const bool finiteOnly = in.byte() < 192;
  std::vector<Point4d> pts(static_cast<std::size_t>(in.in(0, 10)));
  for (Point4d& p : pts) {
    double c[4];
    for (double& v : c) v = finiteOnly ? in.finiteDouble() : in.anyDouble();
    p = Point4d(c[0], c[1], c[2], c[3]);
  }
  std::vector<std::optional<Plane3d>> storage(kUserClipPlanes);
  const Plane3d* planes[kUserClipPlanes] = {};
  const bool withPlanes = in.byte() % 2 == 0;
  for (std::size_t k = 0; withPlanes && k < kUserClipPlanes; ++k) {
    if (in.byte() % 3 != 0) continue;
    try {
      storage[k].emplace(Vector3d(in.finiteDouble(), in.finiteDouble(), in.finiteDouble()),
                         in.finiteDouble());
      planes[k] = &*storage[k];
    } catch (...) {  // a zero normal is no plane
    }
  }
  const Plane3d* const* user = withPlanes ? planes : nullptr;
  const bool colours = in.byte() % 2 == 0;
  std::vector<Color4b> rgba(pts.size(), Color4b(10, 20, 30, 40));

  const auto make = [&] {
    VertexVector v(pts.size(), pts.data(), user);
    if (colours) v.addRGBAColors(rgba.data());
    return v;
  };
  VertexVector polygon = make();
  checkInside(clip_polygon(polygon, user));
  VertexVector line = make();
  checkInside(clip_line(line, user));
  VertexVector strip = make();
  for (const VertexVector& run : clip_linestrip(strip, user)) {
    if (run.getSize() < 2) __builtin_trap();
    checkInside(run);
  }
  return 0;
}

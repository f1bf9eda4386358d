// Sutherland-Hodgman clipping of a polygon against the canonical view volume
// and the user planes, in homogeneous clip space.
#include "clipping/vertex_vector_p.h"

namespace gui_objects {

namespace {

// One Sutherland-Hodgman pass: the part of input on the inner side of plane.
void clipAgainstPlane(const VertexVector& input, VertexVector& output, std::size_t plane,
                      const Plane3d* const* userPlanes) {
  const Outcode bit = Point4d::outCodeForPlane(static_cast<int>(plane));
  const std::size_t n = input.getSize();
  std::size_t prev = n - 1;
  bool prevOut = (input.getOutcode(prev) & bit) != 0;
  for (std::size_t cur = 0; cur < n; ++cur) {
    const bool curOut = (input.getOutcode(cur) & bit) != 0;
    // The fraction always runs from prev towards cur, whichever way the edge
    // crosses, so an edge shared by two polygons is cut at the same point.
    if (prevOut != curOut) output.clipVertexToPlane(input, prev, cur, plane, userPlanes);
    if (!curOut) output.addVertex(input, cur);
    prev = cur;
    prevOut = curOut;
  }
}

unsigned outsideAny(const VertexVector& v) {
  unsigned any = 0;
  for (std::size_t i = 0; i < v.getSize(); ++i) any |= v.getOutcode(i);
  return any;
}

}  // namespace

VertexVector clip_polygon(VertexVector& polygon, const Plane3d* const* userPlanes) {
  try {
    if (polygon.getReject() || !detail::allFinite(polygon)) return VertexVector();
    if (polygon.getAccept()) {
      polygon.project();
      return polygon;
    }
    VertexVector input(polygon);
    VertexVector output;
    for (std::size_t plane = 0; plane < kClipPlanes; ++plane) {
      // A plane no vertex lies outside would copy the polygon unchanged.
      if ((outsideAny(input) & Point4d::outCodeForPlane(static_cast<int>(plane))) == 0) continue;
      output.removeVertices();
      clipAgainstPlane(input, output, plane, userPlanes);
      input.swap(output);
      if (input.getSize() == 0) return input;
    }
    if (input.getSize() < 3) return VertexVector();
    detail::settleIntoVolume(input, userPlanes);
    input.project();
    return input;
  } catch (const InvalidWException&) {
    // Only reachable for a degenerate vertex with w == 0 at the origin.
    return VertexVector();
  }
}

}  // namespace gui_objects

// Outcodes of homogeneous points and the crossing fraction of a segment with
// one clipping plane.
#include "qvgui/clipping.h"

namespace gui_objects {

std::uint16_t Point4d::calculateOutcodes(const Plane3d* const* userPlanes) const {
  const Point4d& p = *this;
  const double x = x_, y = y_, z = z_, w = w_;
  unsigned code = 0;
  // Strict comparisons: a point on a canonical boundary is inside.
  if (x < -w) code |= 0x001;
  if (x > w) code |= 0x002;
  if (y < -w) code |= 0x004;
  if (y > w) code |= 0x008;
  if (z < -w) code |= 0x010;
  if (z > w) code |= 0x020;
  if (userPlanes != nullptr) {
    for (std::size_t i = 0; i < kUserClipPlanes; ++i) {
      const Plane3d* plane = userPlanes[i];
      // <= 0: a point on a user plane is outside, unlike the canonical planes.
      if (plane != nullptr && plane->evaluate(p) <= 0.0) code |= 0x040u << i;
    }
  }
  return static_cast<std::uint16_t>(code);
}

double calculate_line_t(const Point4d& p0, const Point4d& p1, std::size_t planeIndex,
                        const Plane3d* const* userPlanes) {
  const double x0 = p0.getX(), y0 = p0.getY(), z0 = p0.getZ(), w0 = p0.getW();
  const double x1 = p1.getX(), y1 = p1.getY(), z1 = p1.getZ(), w1 = p1.getW();
  switch (planeIndex) {
    case 0:
      return (x0 + w0) / ((w0 - w1) + (x0 - x1));
    case 1:
      return (x0 - w0) / ((x0 - x1) - (w0 - w1));
    case 2:
      return (y0 + w0) / ((y0 - y1) + (w0 - w1));
    case 3:
      return (y0 - w0) / ((y0 - y1) - (w0 - w1));
    case 4:
      return (z0 + w0) / ((z0 - z1) + (w0 - w1));
    case 5:
      return (z0 - w0) / ((z0 - z1) - (w0 - w1));
    default:
      break;
  }
  if (planeIndex >= kClipPlanes || userPlanes == nullptr) return 0.0;
  const Plane3d* plane = userPlanes[planeIndex - kCanonicalClipPlanes];
  if (plane == nullptr) return 0.0;
  const double e0 = plane->evaluate(p0);
  const double e1 = plane->evaluate(p1);
  return (0.0 - e0) / (e1 - e0);
}

}  // namespace gui_objects

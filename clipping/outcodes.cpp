// Outcodes of homogeneous points and the crossing fraction of a segment with
// one clipping plane.
#include <cmath>

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

namespace {

// The table's quotients lose their meaning where the sums in them overflow or
// cancel: coordinates near +-DBL_MAX, or a denominator that rounds to zero.
// The crossing is then taken from the two sides' signed distances, computed on
// both points scaled by one power of two so that the largest coordinate is
// near 1 (exact, away from the subnormals). Two distances of opposite signs
// put the quotient in [0, 1]; when both round to zero it is 0.
double robustFraction(const Point4d& p0, const Point4d& p1, std::size_t planeIndex, const Plane3d* plane) {
  double m = 0;
  for (const Point4d* p : {&p0, &p1}) {
    for (double c : {p->getX(), p->getY(), p->getZ(), p->getW()}) m = std::fmax(m, std::fabs(c));
  }
  const double s = m > 0 && std::isfinite(m) ? std::ldexp(1.0, -std::ilogb(m)) : 1.0;
  const auto side = [&](const Point4d& p) {
    Point4d const q(p.getX() * s, p.getY() * s, p.getZ() * s, p.getW() * s);
    if (plane != nullptr) return plane->evaluate(q);
    double const c = planeIndex < 2 ? q.getX() : planeIndex < 4 ? q.getY() : q.getZ();
    return planeIndex % 2 == 0 ? c + q.getW() : q.getW() - c;
  };
  const double d0 = side(p0);
  const double d1 = side(p1);
  const double t = d0 / (d0 - d1);
  return t >= 0 ? std::fmin(t, 1.0) : 0.0;
}

}  // namespace

double calculate_line_t(const Point4d& p0, const Point4d& p1, std::size_t planeIndex,
                        const Plane3d* const* userPlanes) {
  const double x0 = p0.getX(), y0 = p0.getY(), z0 = p0.getZ(), w0 = p0.getW();
  const double x1 = p1.getX(), y1 = p1.getY(), z1 = p1.getZ(), w1 = p1.getW();
  double numerator = 0.0;
  double denominator = 1.0;
  const Plane3d* plane = nullptr;
  switch (planeIndex) {
    case 0:
      numerator = x0 + w0, denominator = (w0 - w1) + (x0 - x1);
      break;
    case 1:
      numerator = x0 - w0, denominator = (x0 - x1) - (w0 - w1);
      break;
    case 2:
      numerator = y0 + w0, denominator = (y0 - y1) + (w0 - w1);
      break;
    case 3:
      numerator = y0 - w0, denominator = (y0 - y1) - (w0 - w1);
      break;
    case 4:
      numerator = z0 + w0, denominator = (z0 - z1) + (w0 - w1);
      break;
    case 5:
      numerator = z0 - w0, denominator = (z0 - z1) - (w0 - w1);
      break;
    default: {
      if (planeIndex >= kClipPlanes || userPlanes == nullptr) return 0.0;
      plane = userPlanes[planeIndex - kCanonicalClipPlanes];
      if (plane == nullptr) return 0.0;
      const double e0 = plane->evaluate(p0);
      const double e1 = plane->evaluate(p1);
      numerator = 0.0 - e0, denominator = e1 - e0;
    }
  }
  // An overflowed sum can still leave a finite quotient, so the parts are
  // checked, not only the result.
  const double t = numerator / denominator;
  if (std::isfinite(numerator) && std::isfinite(denominator) && t >= 0.0 && t <= 1.0) return t;
  return robustFraction(p0, p1, planeIndex, plane);
}

}  // namespace gui_objects

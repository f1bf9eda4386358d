// Data-space transforms of an axes: normalising render space into the plot
// box, picking (pixels back to data), clipping a pick line to the box, and the
// corner where the main axis lines meet.
#include <algorithm>
#include <cmath>
#include <utility>

#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

namespace gui_objects::data_space_utils {

TransformProxy::~TransformProxy() = default;
AxesScaleInfo::~AxesScaleInfo() = default;
AxesBounds::~AxesBounds() = default;

namespace {

[[noreturn]] void raiseInvalidBounds() { throw InvalidBoundsException(); }

bool isFinite(const Point3d& p) noexcept {
  return std::isfinite(p.getX()) && std::isfinite(p.getY()) && std::isfinite(p.getZ());
}

double component(const Point3d& p, int axis) noexcept {
  return axis == 0 ? p.getX() : (axis == 1 ? p.getY() : p.getZ());
}

}  // namespace

Matrix4x4d makeNormalizingTransform(const TransformProxy& proxy) {
  const Vector3d box = proxy.getPlotBoxAspectRatio();
  const double p[3] = {box.getX(), box.getY(), box.getZ()};
  for (double v : p) {
    if (!(v > 0.0 && std::isfinite(v))) raiseInvalidBounds();
  }
  const double largest = std::max(p[0], std::max(p[1], p[2]));
  double m[16] = {};
  m[15] = 1.0;
  for (int k = 0; k < 3; ++k) {
    double lo = proxy.getRenderLimit(k, 0);
    double hi = proxy.getRenderLimit(k, 1);
    if (proxy.isLog(k)) {
      if (!(lo > 0.0 && hi > 0.0)) raiseInvalidBounds();
      lo = std::log10(lo);
      hi = std::log10(hi);
    }
    if (!(lo < hi && std::isfinite(lo) && std::isfinite(hi))) raiseInvalidBounds();
    // [lo, hi] onto [-p_k/2, p_k/2] around the centre; a reversed axis flips.
    double scale = (p[k] / largest) / (hi - lo);
    if (proxy.isAxisReverse(k)) scale = -scale;
    m[5 * k] = scale;
    m[12 + k] = -(lo + hi) * 0.5 * scale;
  }
  return Matrix4x4d(m);
}

Point3d pixelToData(AxesScaleInfo& info, const Point3d& pixel) {
  const Matrix4x4d inverse(info.getInvRenderTransform());
  const Rectangle2i bounds = info.getSmallbounds();
  const Point4d local(pixel.getX() - bounds.getXMin(), pixel.getY() - bounds.getYMin(), pixel.getZ(), 1.0);
  const Point3d n = transform(inverse, local).project();
  const double* offset = info.getRenderOffset();
  const double* scale = info.getRenderScale();
  return Point3d((n.getX() - offset[0]) / scale[0], (n.getY() - offset[1]) / scale[1],
                 (n.getZ() - offset[2]) / scale[2]);
}

LineSegment3d pixelToData(AxesScaleInfo& info, const Point2d& pixel) {
  double zRange[2] = {0.0, 0.0};
  info.getBoxZRange(zRange);
  try {
    const Point3d nearEnd = pixelToData(info, Point3d(pixel.getX(), pixel.getY(), zRange[0]));
    const Point3d farEnd = pixelToData(info, Point3d(pixel.getX(), pixel.getY(), zRange[1]));
    if (!isFinite(nearEnd) || !isFinite(farEnd)) return LineSegment3d();
    return LineSegment3d(nearEnd, farEnd);
  } catch (const InvalidWException&) {
    return LineSegment3d();  // the pixel's line passes behind the eye
  }
}

LineSegment3d intersectWithAxesBounds(const LineSegment3d& segment, AxesBounds& bounds) {
  if (!segment.isValid()) return LineSegment3d();
  const Point3d start = segment.getStart();
  const Point3d end = segment.getEnd();
  double lo[3];
  double hi[3];
  // Slab clipping (Liang-Barsky): the parameter range [t0, t1] of the segment
  // shrinks to the part inside each pair of axis planes.
  double t0 = 0.0;
  double t1 = 1.0;
  for (int k = 0; k < 3; ++k) {
    double a = bounds.getRenderLimit(k, 0);
    double b = bounds.getRenderLimit(k, 1);
    if (bounds.isLog(k)) {
      if (!(a > 0.0 && b > 0.0)) return LineSegment3d();
      a = std::log10(a);
      b = std::log10(b);
    }
    if (std::isnan(a) || std::isnan(b)) return LineSegment3d();
    if (a > b) std::swap(a, b);
    lo[k] = a;
    hi[k] = b;
    const double s = component(start, k);
    const double d = component(end, k) - s;
    if (d == 0.0) {
      if (!(s >= a && s <= b)) return LineSegment3d();
      continue;
    }
    double ta = (a - s) / d;
    double tb = (b - s) / d;
    if (ta > tb) std::swap(ta, tb);
    t0 = std::max(t0, ta);
    t1 = std::min(t1, tb);
    if (!(t0 <= t1)) return LineSegment3d();
  }
  // Evaluated points may round a hair outside the box; clamp them onto it.
  const auto at = [&](double t) {
    double c[3];
    for (int k = 0; k < 3; ++k) {
      const double s = component(start, k);
      c[k] = std::clamp(s + (component(end, k) - s) * t, lo[k], hi[k]);
    }
    return Point3d(c[0], c[1], c[2]);
  };
  return LineSegment3d(at(t0), at(t1));
}

Point3d computeMainAxesIntercepts(AxesBounds& bounds) {
  const Point3d position = bounds.getCameraPosition();
  const Point3d target = bounds.getCameraTarget();
  double c[3];
  for (int k = 0; k < 3; ++k) {
    const double a = bounds.getRenderLimit(k, 0);
    const double b = bounds.getRenderLimit(k, 1);
    const double lo = std::min(a, b);
    const double hi = std::max(a, b);
    const double toward = component(position, k) - component(target, k);
    // x and y lines run along the faces nearest the viewer; z takes the far
    // side, so the lines sit on the floor when seen from above.
    const bool upper = k < 2 ? toward > 0.0 : toward < 0.0;
    c[k] = upper ? hi : lo;
  }
  return Point3d(c[0], c[1], c[2]);
}

}  // namespace gui_objects::data_space_utils

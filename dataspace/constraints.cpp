// Limit constraints of the axes: bound tests, the one-sign-side constraint of
// logarithmic axes, and clipping of segments to the constrained box.
#include <cfloat>
#include <cmath>
#include <limits>
#include <ostream>
#include <utility>

#include "qvgui/dataspace.h"

namespace gui_objects {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// Moves t towards the far end when the candidate lies strictly ahead of it
// but not beyond the other end of the segment.
void advance(double& t, double candidate) noexcept {
  if (candidate > t && candidate <= 1.0) t = candidate;
}

}  // namespace

// ---- One axis ----------------------------------------------------------------------------------

bool DataConstraints::outOfBounds(double v) const noexcept {
  return hasConstraint_ && (min_ > v || v > max_);
}

bool DataConstraints::spansBounds(double a, double b) const noexcept {
  if (!hasConstraint_) return false;
  if (a > b) std::swap(a, b);
  if (!allowZeroCrossing_ && a <= 0 && 0 <= b) return false;
  return (a < min_ && min_ < b) || (a < max_ && max_ < b);
}

double DataConstraints::interpolate(double a, double b) const noexcept {
  if (b > a) return (min_ - a) / (b - a);
  if (a > b) return (a - max_) / (a - b);
  return 0.0;
}

bool DataConstraints::updateConstraintForZeroCrossing(const DataExtents& extents) noexcept {
  if (allowZeroCrossing_) return false;
  const double m = extents.getMinValue();
  const double M = extents.getMaxValue();
  if (!((m < 0 && M >= 0) || (m == 0 && M > 0))) return false;
  if (M == 0) {
    // Non-positive data: keep the negative side, just short of zero.
    max_ = -DBL_MIN;
    if (!hasConstraint_) min_ = -kInf;
  } else {
    // Data reaching above zero keeps its positive side, also when it crosses.
    min_ = DBL_MIN;
    if (!hasConstraint_) max_ = kInf;
  }
  hasConstraint_ = true;
  return true;
}

bool operator==(const DataConstraints& a, const DataConstraints& b) noexcept {
  return a.getMin() == b.getMin() && a.getMax() == b.getMax() &&
         a.allowZeroCrossing() == b.allowZeroCrossing() && a.hasConstraint() == b.hasConstraint();
}

bool nearlyEqual(const DataConstraints& a, const DataConstraints& b) noexcept {
  if (a.allowZeroCrossing() != b.allowZeroCrossing() || a.hasConstraint() != b.hasConstraint()) return false;
  if (!a.hasConstraint()) return true;
  return nearlyEqual(a.getMin(), b.getMin()) && nearlyEqual(a.getMax(), b.getMax());
}

std::ostream& operator<<(std::ostream& os, const DataConstraints& c) {
  os << "DataConstraints(";
  if (c.hasConstraint()) {
    os << "[" << c.getMin() << ", " << c.getMax() << "]";
  } else {
    os << "none";
  }
  return os << (c.allowZeroCrossing() ? ", zero crossing" : ", one sign") << ")";
}

// ---- Three axes --------------------------------------------------------------------------------

XYZDataConstraints::XYZDataConstraints(const DataConstraints& x, const DataConstraints& y,
                                       const DataConstraints& z) noexcept
    : x_(x), y_(y), z_(z), anyConstraint_(x.hasConstraint() || y.hasConstraint() || z.hasConstraint()) {}

void XYZDataConstraints::intersectSegment(Point3d& p0, Point3d& p1) const noexcept {
  const DataConstraints* axes[3] = {&x_, &y_, &z_};
  const double a0[3] = {p0.getX(), p0.getY(), p0.getZ()};
  const double b0[3] = {p1.getX(), p1.getY(), p1.getZ()};
  double t0 = 0.0;  // from p0 towards p1
  double t1 = 0.0;  // from p1 towards p0
  for (int i = 0; i < 3; ++i) {
    const DataConstraints& c = *axes[i];
    if (!c.hasConstraint()) continue;
    const double a = a0[i];
    const double b = b0[i];
    if (a < b) {
      advance(t0, (c.getMin() - a) / (b - a));
      advance(t1, (b - c.getMax()) / (b - a));
    } else if (a > b) {
      advance(t0, (a - c.getMax()) / (a - b));
      advance(t1, (c.getMin() - b) / (a - b));
    }
  }
  p0 = Point3d(a0[0] + t0 * (b0[0] - a0[0]), a0[1] + t0 * (b0[1] - a0[1]), a0[2] + t0 * (b0[2] - a0[2]));
  p1 = Point3d(b0[0] + t1 * (a0[0] - b0[0]), b0[1] + t1 * (a0[1] - b0[1]), b0[2] + t1 * (a0[2] - b0[2]));
}

bool XYZDataConstraints::updateConstraintForZeroCrossingAndResetExtents(DataExtents& x, DataExtents& y,
                                                                        DataExtents& z) noexcept {
  const bool changed[3] = {x_.updateConstraintForZeroCrossing(x), y_.updateConstraintForZeroCrossing(y),
                           z_.updateConstraintForZeroCrossing(z)};
  const bool any = changed[0] || changed[1] || changed[2];
  anyConstraint_ = anyConstraint_ || any;
  if (!any) return false;
  // Every extent is replaced, the unchanged axes included: after a constraint
  // change the caller must rescan its data.
  DataExtents* extents[3] = {&x, &y, &z};
  for (int i = 0; i < 3; ++i) {
    DataExtents fresh;
    if (changed[i]) fresh += extents[i]->getMinValue() < 0 ? -1.0 : 0.0;
    *extents[i] = fresh;
  }
  return true;
}

bool operator==(const XYZDataConstraints& a, const XYZDataConstraints& b) noexcept {
  return a.hasConstraint() == b.hasConstraint() && a.getXDataConstraints() == b.getXDataConstraints() &&
         a.getYDataConstraints() == b.getYDataConstraints() &&
         a.getZDataConstraints() == b.getZDataConstraints();
}

bool nearlyEqual(const XYZDataConstraints& a, const XYZDataConstraints& b) noexcept {
  return a.hasConstraint() == b.hasConstraint() &&
         nearlyEqual(a.getXDataConstraints(), b.getXDataConstraints()) &&
         nearlyEqual(a.getYDataConstraints(), b.getYDataConstraints()) &&
         nearlyEqual(a.getZDataConstraints(), b.getZDataConstraints());
}

std::ostream& operator<<(std::ostream& os, const XYZDataConstraints& c) {
  return os << "{x " << c.getXDataConstraints() << ", y " << c.getYDataConstraints() << ", z "
            << c.getZDataConstraints() << (c.hasConstraint() ? ", constrained}" : "}");
}

}  // namespace gui_objects

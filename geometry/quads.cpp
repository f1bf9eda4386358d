// Parameterised rectangles in space (Quad3d).
#include <ostream>

#include "geometry/shapes_p.h"

namespace gui_objects {

namespace {
// False for NaN limits, so NaN ranges are refused too.
bool ordered(const Point2d& range) noexcept { return range.getX() <= range.getY(); }
}  // namespace

Quad3d::Quad3d(const Point3d& origin, const Vector3d& u, const Vector3d& v)
    : Quad3d(origin, u, v, Point2d(0.0, 1.0), Point2d(0.0, 1.0)) {}

Quad3d::Quad3d(const Point3d& origin, const Vector3d& u, const Vector3d& v, const Point2d& uRange,
               const Point2d& vRange)
    : origin_(origin), u_(u), v_(v), uRange_(uRange), vRange_(vRange) {
  if (!nearlyEqual(u.dot(v), 0.0)) raiseTag<InvalidQuadException>();
  if (!ordered(uRange) || !ordered(vRange)) raiseTag<InvalidQuadException>();
  valid_ = true;
}

Quad3d::Quad3d(const Quad3d& other, const Point2d& uRange, const Point2d& vRange)
    : Quad3d(other.origin_, other.u_, other.v_, uRange, vRange) {}

AABB2d Quad3d::getUVBounds() const {
  if (!ordered(uRange_) || !ordered(vRange_)) return AABB2d();
  return AABB2d(Rectangle2d(uRange_.getX(), vRange_.getX(), uRange_.getY(), vRange_.getY()));
}

Point3d Quad3d::getOrigin() const {
  if (!getUVBounds().isValid()) return origin_;
  return origin_ + u_ * uRange_.getX() + v_ * vRange_.getX();
}

Vector3d Quad3d::getUVector() const {
  if (!getUVBounds().isValid()) return u_;
  return u_ * (uRange_.getY() - uRange_.getX());
}

Vector3d Quad3d::getVVector() const {
  if (!getUVBounds().isValid()) return v_;
  return v_ * (vRange_.getY() - vRange_.getX());
}

Point3d Quad3d::evaluate(double s, double t) const noexcept { return origin_ + u_ * s + v_ * t; }

Quad3d Quad3d::reparameterize() const {
  if (!getUVBounds().isValid()) return *this;
  return Quad3d(getOrigin(), getUVector(), getVVector());
}

Quad3d transform(const Matrix4x4d& m, const Quad3d& q) {
  const Point3d o = transform(m, q.getRawOrigin()).project();
  const Point3d pu = transform(m, q.getRawOrigin() + q.getUBasis()).project();
  const Point3d pv = transform(m, q.getRawOrigin() + q.getVBasis()).project();
  try {
    return Quad3d(o, pu - o, pv - o, q.getURange(), q.getVRange());
  } catch (const InvalidQuadException&) {
    return Quad3d();
  }
}

bool nearlyEqual(const Quad3d& a, const Quad3d& b) {
  return nearlyEqual(a.getOrigin(), b.getOrigin()) && nearlyEqual(a.getUBasis(), b.getUBasis()) &&
         nearlyEqual(a.getVBasis(), b.getVBasis()) && nearlyEqual(a.getURange(), b.getURange()) &&
         nearlyEqual(a.getVRange(), b.getVRange());
}

std::ostream& operator<<(std::ostream& os, const Quad3d& q) {
  return os << "Quad3d(origin " << q.getRawOrigin() << ", u " << q.getUBasis() << " over " << q.getURange()
            << ", v " << q.getVBasis() << " over " << q.getVRange() << (q.isValid() ? "" : ", invalid")
            << ")";
}

}  // namespace gui_objects

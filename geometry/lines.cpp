// Infinite 2-D and 3-D lines and 3-D line segments.
#include <cmath>
#include <ostream>

#include "geometry/exceptions_p.h"
#include "geometry/shapes_p.h"

namespace gui_objects {

namespace {
void requireNonZero(double lengthSquared) {
  if (isZeroWithinEps(lengthSquared)) raise<ZeroLengthException>();
}

// Normalises a copy first, so a zero tangent throws with the line untouched.
template <class P, class V>
void makeUnitTangent(const P& point, V& tangent, P& end) {
  V t(tangent);
  t.normalize();
  tangent = t;
  end = point + tangent;
}

template <class P, class V>
P nearestOnLine(const P& point, const V& tangent, const P& p) noexcept {
  const double s = (p - point).dot(tangent) / tangent.dot(tangent);
  return point + s * tangent;
}

// On the line the radicand can round below zero; that distance is 0, not NaN.
template <class P, class V>
double distanceToLine(const P& point, const V& tangent, const P& p) noexcept {
  const V d = p - point;
  const double along = d.dot(tangent);
  const double radicand = d.lengthSquared() - along * along / tangent.lengthSquared();
  return radicand > 0.0 ? std::sqrt(radicand) : 0.0;
}
}  // namespace

// ---- Line2d -------------------------------------------------------------------------

Line2d::Line2d(const Point2d& a, const Point2d& b) : point_(a), tangent_(b - a), end_(b) {
  requireNonZero(tangent_.lengthSquared());
}

Line2d::Line2d(const Point2d& point, const Vector2d& tangent)
    : point_(point), tangent_(tangent), end_(point + tangent) {
  requireNonZero(tangent_.lengthSquared());
}

Line2d& Line2d::normalize() {
  makeUnitTangent(point_, tangent_, end_);
  return *this;
}

Point2d Line2d::evaluate(double t) const noexcept {
  return Point2d((1.0 - t) * point_.getX() + t * end_.getX(), (1.0 - t) * point_.getY() + t * end_.getY());
}

Point2d Line2d::nearestPointOnLine(const Point2d& p) const noexcept {
  return nearestOnLine(point_, tangent_, p);
}

double Line2d::distance(const Point2d& p) const noexcept { return distanceToLine(point_, tangent_, p); }

Line2d& Line2d::offset(const Vector2d& d) noexcept {
  point_ += d;
  end_ += d;
  return *this;
}

Line2d& Line2d::offset(double s) noexcept { return offset(s * tangent_.perpDot()); }

Point2d Line2d::intersect(const Line2d& other) const {
  const Vector2d t1 = tangent_;
  const Vector2d t2 = other.tangent_;
  const Vector2d delta = other.point_ - point_;
  const double c = t1.cross(t2);
  // Written as a negation so that NaN counts as parallel too.
  if (!(c * c > 1e-6 * t1.lengthSquared() * t2.lengthSquared())) raiseTag<ParallelException>();
  const double s = delta.cross(t2) / c;
  return point_ + s * t1;
}

std::ostream& operator<<(std::ostream& os, const Line2d& l) {
  return os << "Line2d(" << l.getPoint() << " -> " << l.getEnd() << ")";
}

// ---- Line3d -------------------------------------------------------------------------

Line3d::Line3d(const Point3d& a, const Point3d& b) : point_(a), tangent_(b - a), end_(b) {
  requireNonZero(tangent_.lengthSquared());
}

Line3d::Line3d(const Point3d& point, const Vector3d& tangent)
    : point_(point), tangent_(tangent), end_(point + tangent) {
  requireNonZero(tangent_.lengthSquared());
}

Line3d& Line3d::normalize() {
  makeUnitTangent(point_, tangent_, end_);
  return *this;
}

Point3d Line3d::evaluate(double t) const noexcept {
  const double s = 1.0 - t;
  return Point3d(s * point_.getX() + t * end_.getX(), s * point_.getY() + t * end_.getY(),
                 s * point_.getZ() + t * end_.getZ());
}

Point3d Line3d::nearestPointOnLine(const Point3d& p) const noexcept {
  return nearestOnLine(point_, tangent_, p);
}

double Line3d::distance(const Point3d& p) const noexcept { return distanceToLine(point_, tangent_, p); }

Line3d& Line3d::offset(const Vector3d& d) noexcept {
  point_ += d;
  end_ += d;
  return *this;
}

std::ostream& operator<<(std::ostream& os, const Line3d& l) {
  return os << "Line3d(" << l.getPoint() << " -> " << l.getEnd() << ")";
}

// ---- LineSegment3d ---------------------------------------------------------------------

Vector3d LineSegment3d::getDirection() const {
  Vector3d d = end_ - start_;
  d.normalize();
  return d;
}

double LineSegment3d::getLength() const noexcept { return (end_ - start_).length(); }

Point3d LineSegment3d::evaluate(double t) const noexcept {
  const double s = 1.0 - t;
  return Point3d(s * start_.getX() + t * end_.getX(), s * start_.getY() + t * end_.getY(),
                 s * start_.getZ() + t * end_.getZ());
}

Line3d LineSegment3d::asLine3d() const { return Line3d(start_, end_); }

bool nearlyEqual(const LineSegment3d& a, const LineSegment3d& b) noexcept {
  return nearlyEqual(a.getStart(), b.getStart()) && nearlyEqual(a.getEnd(), b.getEnd());
}

std::ostream& operator<<(std::ostream& os, const LineSegment3d& s) {
  return os << "LineSegment3d(" << s.getStart() << " -> " << s.getEnd() << (s.isValid() ? "" : ", invalid")
            << ")";
}

}  // namespace gui_objects

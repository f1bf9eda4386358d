// Oriented planes and the plane fitted through a polygon.
#include <cfloat>
#include <ostream>

#include "geometry/exceptions_p.h"
#include "geometry/shapes_p.h"
#include "qvgui/clipping.h"

namespace gui_objects {

// ---- Plane3d ----------------------------------------------------------------------

Plane3d::Plane3d() : Plane3d(Vector3d(0.0, 0.0, 1.0), 0.0) {}

Plane3d::Plane3d(const Vector3d& normal, double offset)
    : a_(normal.getX()), b_(normal.getY()), c_(normal.getZ()), d_(offset) {
  renormalize();
}

Plane3d::Plane3d(const Point3d& p, const Vector3d& normal) {
  Vector3d n(normal);
  n.normalize();
  a_ = n.getX();
  b_ = n.getY();
  c_ = n.getZ();
  d_ = n.dot(Vector3d(p));
  renormalize();
}

Plane3d::Plane3d(const Point3d& p0, const Point3d& p1, const Point3d& p2) {
  const Vector3d e1 = p1 - p0;
  const Vector3d e2 = p2 - p0;
  if (isZeroWithinEps(e1.lengthSquared()) || isZeroWithinEps(e2.lengthSquared()))
    raise<ZeroLengthException>();
  const Vector3d n = e1.cross(e2);
  a_ = n.getX();
  b_ = n.getY();
  c_ = n.getZ();
  d_ = n.dot(Vector3d(p0));
  renormalize();  // collinear points end here with ZeroLengthException
}

void Plane3d::renormalize() {
  Vector3d n(a_, b_, c_);
  if (isZeroWithinEps(n.lengthSquared())) raise<ZeroLengthException>();
  const double length = n.length();
  n.normalize();
  a_ = n.getX();
  b_ = n.getY();
  c_ = n.getZ();
  d_ /= length;
}

double Plane3d::distance(const Point3d& p) const noexcept { return getNormal().dot(Vector3d(p)) - d_; }

double Plane3d::evaluate(const Point4d& p) const noexcept {
  return a_ * p.getX() + b_ * p.getY() + c_ * p.getZ() - d_ * p.getW();
}

Point3d Plane3d::nearestPointOnPlane(const Point3d& p) const noexcept {
  return p - getNormal() * distance(p);
}

Plane3d Plane3d::offset(double delta) const { return Plane3d(getNormal(), d_ + delta); }

Plane3d Plane3d::negate() const { return Plane3d(-getNormal(), -d_); }

double Plane3d::intersectionParameter(const Line3d& l) const {
  const Vector3d n = getNormal();
  const double nt = n.dot(l.getTangent());
  if (isZeroWithinEps(nt)) raiseTag<ParallelException>();
  return (d_ - n.dot(Vector3d(l.evaluate(0.0)))) / nt;
}

Point3d Plane3d::intersect(const Line3d& l) const { return l.evaluate(intersectionParameter(l)); }

Plane3d transform(const Matrix4x4d& m, const Plane3d& p) {
  const Vector3d n = p.getNormal();
  const Point4d q =
      m.createInverseTranspose().transform(Point4d(n.getX(), n.getY(), n.getZ(), -p.getOffset()));
  return Plane3d(Vector3d(q.getX(), q.getY(), q.getZ()), -q.getW());
}

bool nearlyEqual(const Plane3d& a, const Plane3d& b) noexcept {
  return nearlyEqual(a.getNormal(), b.getNormal()) && nearlyEqual(a.getOffset(), b.getOffset());
}

bool operator==(const Plane3d& a, const Plane3d& b) noexcept {
  return a.getNormal() == b.getNormal() && a.getOffset() == b.getOffset();
}
bool operator!=(const Plane3d& a, const Plane3d& b) noexcept { return !(a == b); }

std::ostream& operator<<(std::ostream& os, const Plane3d& p) {
  return os << "Plane3d(n " << p.getNormal() << ", d " << p.getOffset() << ")";
}

// ---- Fitting --------------------------------------------------------------------------

// Defined here rather than with the clipping code so that the kernel, which
// fits planes through vertex sets, links on its own.
VertexSet::~VertexSet() = default;

Plane3d fitPlaneThroughPoints(const VertexSet& vertices, const std::size_t* indices, std::size_t count) {
  if (count < 3 || indices == nullptr) return Plane3d(Vector3d(0.0, 0.0, 1.0), 0.0);
  // Twice the double epsilon: below this the polygon has no usable orientation.
  constexpr double kDegenerate = 2.0 * DBL_EPSILON;

  Vector3d sum;
  Vector3d n;
  if (count == 4) {
    const Point3d p0 = vertices.getVertex(indices[0]);
    const Point3d p1 = vertices.getVertex(indices[1]);
    const Point3d p2 = vertices.getVertex(indices[2]);
    const Point3d p3 = vertices.getVertex(indices[3]);
    sum = Vector3d(p0) + Vector3d(p1) + Vector3d(p2) + Vector3d(p3);
    // The diagonals' cross product is exact for planar quads and the
    // least-squares-like choice for warped ones.
    n = (p2 - p0).cross(p3 - p1);
    if (n.lengthSquared() < kDegenerate) n = (p1 - p0).cross(p2 - p0);
  } else {
    Point3d prev = vertices.getVertex(indices[count - 1]);
    for (std::size_t i = 0; i < count; ++i) {
      const Point3d cur = vertices.getVertex(indices[i]);
      sum += Vector3d(cur);
      n += newell_area(prev, cur);
      prev = cur;
    }
  }
  if (n.lengthSquared() <= kDegenerate)
    n = Vector3d(0.0, 0.0, 1.0);
  else
    n.normalize();
  const double offset = n.dot(sum) / static_cast<double>(count);
  return Plane3d(n, offset);
}

}  // namespace gui_objects

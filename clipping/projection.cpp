// Planar projection of vertex sets: a 2-D frame laid into a plane and the
// exact reverse lookup from projected positions to vertex indices.
#include <cmath>

#include "qvgui/clipping.h"

namespace gui_objects {

namespace {
bool allFinite(const Vector3d& v) noexcept {
  return std::isfinite(v.getX()) && std::isfinite(v.getY()) && std::isfinite(v.getZ());
}
}  // namespace

// ---- Projector ----------------------------------------------------------------------

struct Projector::Impl {
  Vector3d u{1.0, 0.0, 0.0};
  Vector3d v{0.0, 1.0, 0.0};
  Point3d origin;
  Plane3d plane;
};

Projector::Projector() : impl_(std::make_unique<Impl>()) {}
Projector::Projector(const Projector& other) : impl_(std::make_unique<Impl>(*other.impl_)) {}
Projector& Projector::operator=(const Projector& other) {
  if (this != &other) *impl_ = *other.impl_;
  return *this;
}
Projector::~Projector() = default;

void Projector::setProjection(const Plane3d& plane) noexcept {
  impl_->plane = plane;
  try {
    Vector3d n = plane.getNormal();
    n.normalize();
    // Any reference not along the normal works; x unless the normal nearly is x.
    const Vector3d reference =
        std::fabs(n.getX()) > 0.9999 ? Vector3d(0.0, 1.0, 0.0) : Vector3d(1.0, 0.0, 0.0);
    Vector3d v = n.cross(reference);
    v.normalize();
    const Vector3d u = v.cross(n);
    const Point3d origin = plane.nearestPointOnPlane(Point3d(0.0, 0.0, 0.0));
    // A NaN normal normalises without complaint; treat it as degenerate too.
    if (!allFinite(u) || !allFinite(v) || !allFinite(Vector3d(origin))) return;
    impl_->u = u;
    impl_->v = v;
    impl_->origin = origin;
  } catch (const ZeroLengthException&) {
    // A plane without a usable normal keeps the previous frame.
  }
}

Point2d Projector::project(const Point3d& p) const noexcept {
  const Vector3d d = p - impl_->origin;
  return Point2d(impl_->u.dot(d), impl_->v.dot(d));
}

Point3d Projector::unproject(const Point2d& q) const noexcept {
  return impl_->origin + impl_->u * q.getX() + impl_->v * q.getY();
}

Vector3d Projector::getUAxis() const noexcept { return impl_->u; }
Vector3d Projector::getVAxis() const noexcept { return impl_->v; }
Point3d Projector::getOrigin() const noexcept { return impl_->origin; }
Plane3d Projector::getPlane() const noexcept { return impl_->plane; }

// ---- ProjectedVertexSet ------------------------------------------------------------

struct ProjectedVertexSet::Impl {
  const VertexSet* vertices;
  Projector projector;
  // Keyed exactly, ordered lexicographically by Point2d's operator<.
  std::map<Point2d, std::size_t> lookup;
};

ProjectedVertexSet::ProjectedVertexSet(const VertexSet& vertices, const Projector& projector)
    : impl_(std::make_unique<Impl>(Impl{&vertices, projector, {}})) {}
ProjectedVertexSet::ProjectedVertexSet(const ProjectedVertexSet& other)
    : impl_(std::make_unique<Impl>(*other.impl_)) {}
ProjectedVertexSet& ProjectedVertexSet::operator=(const ProjectedVertexSet& other) {
  if (this != &other) *impl_ = *other.impl_;
  return *this;
}
ProjectedVertexSet::~ProjectedVertexSet() = default;

Point2d ProjectedVertexSet::addVertex(std::size_t index) {
  const Point2d q = impl_->projector.project(impl_->vertices->getVertex(index));
  impl_->lookup.emplace(q, index);  // keeps an existing entry: the first index wins
  return q;
}

std::size_t ProjectedVertexSet::findVert(const Point2d& q) const {
  const auto it = impl_->lookup.find(q);
  return it == impl_->lookup.end() ? kNotFound : it->second;
}

}  // namespace gui_objects

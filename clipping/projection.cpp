// Planar projection of vertex sets: a 2-D frame laid into a plane and the
// exact reverse lookup from projected positions to vertex indices.
#include <cmath>

#include "qvgui/clipping.h"

namespace gui_objects {

namespace {
bool allFinite(Vector3d const& v) noexcept {
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
Projector::Projector(Projector const& other) : impl_(std::make_unique<Impl>(*other.impl_)) {}
Projector& Projector::operator=(Projector const& other) {
  if (this != &other) *impl_ = *other.impl_;
  return *this;
}
Projector::~Projector() = default;

void Projector::setProjection(Plane3d const& plane) noexcept {
  impl_->plane = plane;
  try {
    Vector3d n = plane.getNormal();
    n.normalize();
    // Any reference not along the normal works; x unless the normal nearly is x.
    Vector3d const reference =
        std::fabs(n.getX()) > 0.9999 ? Vector3d(0.0, 1.0, 0.0) : Vector3d(1.0, 0.0, 0.0);
    Vector3d v = n.cross(reference);
    v.normalize();
    Vector3d const u = v.cross(n);
    Point3d const origin = plane.nearestPointOnPlane(Point3d(0.0, 0.0, 0.0));
    // A NaN normal normalises without complaint; treat it as degenerate too.
    if (!allFinite(u) || !allFinite(v) || !allFinite(Vector3d(origin))) return;
    impl_->u = u;
    impl_->v = v;
    impl_->origin = origin;
  } catch (ZeroLengthException const&) {
    // A plane without a usable normal keeps the previous frame.
  }
}

Point2d Projector::project(Point3d const& p) const noexcept {
  Vector3d const d = p - impl_->origin;
  return Point2d(impl_->u.dot(d), impl_->v.dot(d));
}

Point3d Projector::unproject(Point2d const& q) const noexcept {
  return impl_->origin + impl_->u * q.getX() + impl_->v * q.getY();
}

Vector3d Projector::getUAxis() const noexcept { return impl_->u; }
Vector3d Projector::getVAxis() const noexcept { return impl_->v; }
Point3d Projector::getOrigin() const noexcept { return impl_->origin; }
Plane3d Projector::getPlane() const noexcept { return impl_->plane; }

// ---- ProjectedVertexSet ------------------------------------------------------------

struct ProjectedVertexSet::Impl {
  VertexSet const* vertices;
  Projector projector;
  // Keyed exactly, ordered lexicographically by Point2d's operator<.
  std::map<Point2d, std::size_t> lookup;
};

ProjectedVertexSet::ProjectedVertexSet(VertexSet const& vertices, Projector const& projector)
    : impl_(std::make_unique<Impl>(Impl{&vertices, projector, {}})) {}
ProjectedVertexSet::ProjectedVertexSet(ProjectedVertexSet const& other)
    : impl_(std::make_unique<Impl>(*other.impl_)) {}
ProjectedVertexSet& ProjectedVertexSet::operator=(ProjectedVertexSet const& other) {
  if (this != &other) *impl_ = *other.impl_;
  return *this;
}
ProjectedVertexSet::~ProjectedVertexSet() = default;

Point2d ProjectedVertexSet::addVertex(std::size_t index) {
  Point2d const q = impl_->projector.project(impl_->vertices->getVertex(index));
  impl_->lookup.emplace(q, index);  // keeps an existing entry: the first index wins
  return q;
}

std::size_t ProjectedVertexSet::findVert(Point2d const& q) const {
  auto const it = impl_->lookup.find(q);
  return it == impl_->lookup.end() ? kNotFound : it->second;
}

}  // namespace gui_objects

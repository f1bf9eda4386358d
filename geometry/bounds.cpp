// Boxes that may be unset (AABB2d, BoundingVolume), boxes snapped to a cell
// grid, and the region root class.
#include <cmath>
#include <limits>
#include <ostream>
#include <utility>

#include "geometry/exceptions_p.h"
#include "geometry/shapes_p.h"

namespace gui_objects {

// ---- AABB2d ---------------------------------------------------------------------------

AABB2d& AABB2d::operator+=(const Point2d& p) noexcept {
  if (!valid_) {
    bounds_ = Rectangle2d(p, p);
    valid_ = true;
  } else {
    bounds_ = Rectangle2d(min_point(Point2d(bounds_.getXMin(), bounds_.getYMin()), p),
                          max_point(Point2d(bounds_.getXMax(), bounds_.getYMax()), p));
  }
  return *this;
}

AABB2d& AABB2d::operator+=(const AABB2d& other) noexcept {
  if (!other.valid_) return *this;
  if (!valid_) {
    *this = other;
  } else {
    bounds_ = unionRect(bounds_, other.bounds_);
  }
  return *this;
}

bool AABB2d::contains(const Point2d& p) const noexcept { return valid_ && bounds_.isInside(p); }

namespace {
void requireValid(bool valid) {
  if (!valid) raise<InvalidAxisAlignedBoundingBoxException>();
}
}  // namespace

double AABB2d::getXMin() const {
  requireValid(valid_);
  return bounds_.getXMin();
}
double AABB2d::getXMax() const {
  requireValid(valid_);
  return bounds_.getXMax();
}
double AABB2d::getYMin() const {
  requireValid(valid_);
  return bounds_.getYMin();
}
double AABB2d::getYMax() const {
  requireValid(valid_);
  return bounds_.getYMax();
}
Point2d AABB2d::getLowerLeft() const { return Point2d(getXMin(), getYMin()); }
Point2d AABB2d::getLowerRight() const { return Point2d(getXMax(), getYMin()); }
Point2d AABB2d::getUpperLeft() const { return Point2d(getXMin(), getYMax()); }
Point2d AABB2d::getUpperRight() const { return Point2d(getXMax(), getYMax()); }
Rectangle2d AABB2d::getBounds() const {
  requireValid(valid_);
  return bounds_;
}

bool operator==(const AABB2d& a, const AABB2d& b) noexcept {
  if (a.isValid() != b.isValid()) return false;
  return !a.isValid() || a.getBounds() == b.getBounds();
}
bool operator!=(const AABB2d& a, const AABB2d& b) noexcept { return !(a == b); }

bool nearlyEqual(const AABB2d& a, const AABB2d& b) noexcept {
  if (a.isValid() != b.isValid()) return false;
  return !a.isValid() || nearlyEqual(a.getBounds(), b.getBounds());
}

std::ostream& operator<<(std::ostream& os, const AABB2d& b) {
  if (!b.isValid()) return os << "AABB2d(unset)";
  return os << "AABB2d(" << b.getBounds() << ")";
}

// ---- BoundingVolume -------------------------------------------------------------------

BoundingVolume::BoundingVolume(const Point3d& center, double xWidth, double yWidth, double zWidth) {
  // "< 0" rather than "!(>= 0)": a NaN width is let through on purpose.
  if (xWidth < 0.0 || yWidth < 0.0 || zWidth < 0.0) raise<InvalidWidthException>();
  xMin_ = center.getX() - xWidth / 2.0;
  xMax_ = center.getX() + xWidth / 2.0;
  yMin_ = center.getY() - yWidth / 2.0;
  yMax_ = center.getY() + yWidth / 2.0;
  zMin_ = center.getZ() - zWidth / 2.0;
  zMax_ = center.getZ() + zWidth / 2.0;
  valid_ = true;
}

BoundingVolume::BoundingVolume(const Point3d& a, const Point3d& b) noexcept {
  const Point3d lo = min_point(a, b);
  const Point3d hi = max_point(a, b);
  xMin_ = lo.getX();
  yMin_ = lo.getY();
  zMin_ = lo.getZ();
  xMax_ = hi.getX();
  yMax_ = hi.getY();
  zMax_ = hi.getZ();
  valid_ = true;
}

BoundingVolume::BoundingVolume(const Point3d* points, std::size_t count) noexcept {
  if (points == nullptr || count == 0) return;
  Point3d lo = points[0], hi = points[0];
  for (std::size_t i = 1; i < count; ++i) {
    lo = min_point(lo, points[i]);
    hi = max_point(hi, points[i]);
  }
  *this = BoundingVolume(lo, hi);
}

Point3d BoundingVolume::getCenter() const noexcept {
  return Point3d((xMin_ + xMax_) * 0.5, (yMin_ + yMax_) * 0.5, (zMin_ + zMax_) * 0.5);
}

bool BoundingVolume::isInside(const Point3d& p) const noexcept {
  return valid_ && xMin_ <= p.getX() && p.getX() <= xMax_ && yMin_ <= p.getY() && p.getY() <= yMax_ &&
         zMin_ <= p.getZ() && p.getZ() <= zMax_;
}

bool BoundingVolume::isStrictlyInside(const Point3d& p) const noexcept {
  return valid_ && xMin_ < p.getX() && p.getX() < xMax_ && yMin_ < p.getY() && p.getY() < yMax_ &&
         zMin_ < p.getZ() && p.getZ() < zMax_;
}

bool BoundingVolume::isEmpty() const noexcept {
  return !valid_ || nearlyEqual(std::fabs(xMax_ - xMin_), 0.0) ||
         nearlyEqual(std::fabs(yMax_ - yMin_), 0.0) || nearlyEqual(std::fabs(zMax_ - zMin_), 0.0);
}

void BoundingVolume::inflate(double f) noexcept {
  const double dx = f * getXWidth(), dy = f * getYWidth(), dz = f * getZWidth();
  xMin_ -= dx;
  xMax_ += dx;
  yMin_ -= dy;
  yMax_ += dy;
  zMin_ -= dz;
  zMax_ += dz;
}

BoundingVolume& BoundingVolume::operator+=(const BoundingVolume& other) noexcept {
  if (!other.valid_) return *this;
  if (!valid_) {
    *this = other;
    return *this;
  }
  *this =
      BoundingVolume(min_point(Point3d(xMin_, yMin_, zMin_), Point3d(other.xMin_, other.yMin_, other.zMin_)),
                     max_point(Point3d(xMax_, yMax_, zMax_), Point3d(other.xMax_, other.yMax_, other.zMax_)));
  return *this;
}

void BoundingVolume::swap(BoundingVolume& other) noexcept { std::swap(*this, other); }

bool operator==(const BoundingVolume& a, const BoundingVolume& b) noexcept {
  return a.isValid() == b.isValid() && a.getXMin() == b.getXMin() && a.getXMax() == b.getXMax() &&
         a.getYMin() == b.getYMin() && a.getYMax() == b.getYMax() && a.getZMin() == b.getZMin() &&
         a.getZMax() == b.getZMax();
}
bool operator!=(const BoundingVolume& a, const BoundingVolume& b) noexcept { return !(a == b); }

bool nearlyEqual(const BoundingVolume& a, const BoundingVolume& b) noexcept {
  return nearlyEqual(a.getXMin(), b.getXMin()) && nearlyEqual(a.getXMax(), b.getXMax()) &&
         nearlyEqual(a.getYMin(), b.getYMin()) && nearlyEqual(a.getYMax(), b.getYMax()) &&
         nearlyEqual(a.getZMin(), b.getZMin()) && nearlyEqual(a.getZMax(), b.getZMax());
}

BoundingVolume transform(const Matrix4x4d& m, const BoundingVolume& v) {
  if (!v.isValid()) return v;
  Point3d corners[8];
  for (int k = 0; k < 8; ++k) {
    const Point3d c((k & 1) ? v.getXMax() : v.getXMin(), (k & 2) ? v.getYMax() : v.getYMin(),
                    (k & 4) ? v.getZMax() : v.getZMin());
    corners[k] = transform(m, c).project();
  }
  return BoundingVolume(corners, 8);
}

std::ostream& operator<<(std::ostream& os, const BoundingVolume& v) {
  if (!v.isValid()) return os << "BoundingVolume(unset)";
  return os << "BoundingVolume(x " << v.getXMin() << ".." << v.getXMax() << ", y " << v.getYMin() << ".."
            << v.getYMax() << ", z " << v.getZMin() << ".." << v.getZMax() << ")";
}

// ---- GriddedBounds ------------------------------------------------------------------------

namespace {

struct CellRange {
  std::int32_t first;  // first covering cell
  std::int32_t end;    // one past the last
  double lo, hi;       // the cells' extent
};

// The smallest run of cells [origin + i s, origin + (i + 1) s] covering [a, b].
CellRange coverAxis(double a, double b, double origin, double stride) {
  constexpr double lo32 = std::numeric_limits<std::int32_t>::min();
  constexpr double hi32 = std::numeric_limits<std::int32_t>::max();
  const double qa = (a - origin) / stride, qb = (b - origin) / stride;
  // Also keeps the correction steps below finite: far beyond 2^31 they would
  // no longer change the value.
  if (!(qa >= lo32 && qb <= hi32 - 1.0)) raise<InvalidAxisAlignedBoundingBoxException>();
  double first = std::floor(qa);
  double end = std::ceil(qb);
  // The divisions round; step until the cells really contain the box.
  while (origin + first * stride > a) first -= 1.0;
  while (origin + end * stride < b) end += 1.0;
  if (end <= first) end = first + 1.0;
  if (!(first >= lo32 && end <= hi32)) raise<InvalidAxisAlignedBoundingBoxException>();
  return CellRange{static_cast<std::int32_t>(first), static_cast<std::int32_t>(end), origin + first * stride,
                   origin + end * stride};
}

}  // namespace

GriddedBounds expand_bounds_to_grid(const AABB2d& bounds, std::size_t xOrigin, std::size_t yOrigin,
                                    std::size_t xStride, std::size_t yStride) {
  if (xStride == 0 || yStride == 0) raise<InvalidWidthException>();
  const Rectangle2d box = bounds.getBounds();  // throws when unset
  const CellRange x =
      coverAxis(box.getXMin(), box.getXMax(), static_cast<double>(xOrigin), static_cast<double>(xStride));
  const CellRange y =
      coverAxis(box.getYMin(), box.getYMax(), static_cast<double>(yOrigin), static_cast<double>(yStride));
  return GriddedBounds(AABB2d(Rectangle2d(x.lo, y.lo, x.hi, y.hi)),
                       Rectangle2i(x.first, y.first, x.end, y.end), xStride, yStride);
}

std::ostream& operator<<(std::ostream& os, const GriddedBounds& g) {
  return os << "GriddedBounds(" << g.getBounds() << ", cells " << g.getGrid() << ", stride " << g.getXStride()
            << " x " << g.getYStride() << ")";
}

// ---- RegionBase ---------------------------------------------------------------------------

RegionBase::~RegionBase() = default;

}  // namespace gui_objects

// Transformer: a matrix classified once, so that data points take the
// cheapest correct path (copy, scale and offset, affine or projective).
#include "qvgui/geometry.h"
#include "qvgui/host.h"

namespace gui_objects {
namespace {

// The same tolerance as Matrix4x4d::isAffine.
bool isZero(double v) noexcept { return utEqualWithinEps(v, 0.0); }
bool isOne(double v) noexcept { return utEqualWithinEps(v, 1.0); }

}  // namespace

Transformer::Transformer(const Matrix4x4d& matrix) noexcept : matrix_(matrix), mode_(determine_mode(matrix)) {
  initialize_scale_and_offset();
}

Transformer::TransformMode Transformer::determine_mode(const Matrix4x4d& matrix) noexcept {
  const double* m = matrix.getPointer();
  if (!isZero(m[3]) || !isZero(m[7]) || !isZero(m[11]) || !isOne(m[15])) return General;
  for (int k : {1, 2, 4, 6, 8, 9})
    if (!isZero(m[k])) return Affine;
  if (isOne(m[0]) && isOne(m[5]) && isOne(m[10]) && isZero(m[12]) && isZero(m[13]) && isZero(m[14]))
    return Identity;
  return ScaleOffset;
}

void Transformer::initialize_scale_and_offset() noexcept {
  if (mode_ != ScaleOffset) return;
  const double* m = matrix_.getPointer();
  scale_[0] = m[0];
  scale_[1] = m[5];
  scale_[2] = m[10];
  offset_[0] = m[12];
  offset_[1] = m[13];
  offset_[2] = m[14];
}

Point3d Transformer::transform(const Point3d& p) const noexcept {
  const double* m = matrix_.getPointer();
  const double x = p.getX(), y = p.getY(), z = p.getZ();
  switch (mode_) {
    case Identity:
      return p;
    case ScaleOffset:
      return Point3d(scale_[0] * x + offset_[0], scale_[1] * y + offset_[1], scale_[2] * z + offset_[2]);
    case Affine:
      return Point3d(m[0] * x + m[4] * y + m[8] * z + m[12], m[1] * x + m[5] * y + m[9] * z + m[13],
                     m[2] * x + m[6] * y + m[10] * z + m[14]);
    case General:
      break;
  }
  const Point4d h = matrix_.transform(Point4d(p));
  // The same test as Point4d::project, made here instead of catching its
  // InvalidWException: points on or behind the eye plane map to the origin.
  if (0.0 >= h.getW()) return Point3d();
  const double r = 1.0 / h.getW();
  return Point3d(h.getX() * r, h.getY() * r, h.getZ() * r);
}

Vector3d Transformer::transformVector(const Vector3d& d) const noexcept {
  const double* m = matrix_.getPointer();
  const double x = d.getX(), y = d.getY(), z = d.getZ();
  switch (mode_) {
    case Identity:
      return d;
    case ScaleOffset:
      return Vector3d(scale_[0] * x, scale_[1] * y, scale_[2] * z);
    case Affine:
    case General:
      break;
  }
  // M (d, 0) with w dropped is exactly the 3x3 block times d.
  return Vector3d(m[0] * x + m[4] * y + m[8] * z, m[1] * x + m[5] * y + m[9] * z,
                  m[2] * x + m[6] * y + m[10] * z);
}

}  // namespace gui_objects

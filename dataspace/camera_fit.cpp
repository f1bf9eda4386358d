// Camera fitting: look-at and viewport transforms, and orthographic and
// perspective projections that frame a bounding volume in a viewport.
#include <algorithm>
#include <array>
#include <cmath>

#include "dataspace/camera_p.h"
#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

namespace gui_objects::camera_utils {

namespace detail {

void raiseCouldNotFit() { throw CouldNotFitCameraException(); }

}  // namespace detail

namespace {

using detail::raiseCouldNotFit;

bool isFinite(const Point3d& p) noexcept {
  return std::isfinite(p.getX()) && std::isfinite(p.getY()) && std::isfinite(p.getZ());
}

bool isFinite(const Vector3d& v) noexcept {
  return std::isfinite(v.getX()) && std::isfinite(v.getY()) && std::isfinite(v.getZ());
}

bool isFinite(const Matrix4x4d& m) noexcept {
  const double* e = m.getPointer();
  return std::all_of(e, e + 16, [](double x) { return std::isfinite(x); });
}

// A viewport that can hold a picture: positive, finite width and height.
void checkViewport(const Rectangle2d& viewport) {
  const double w = viewport.getWidth();
  const double h = viewport.getHeight();
  if (!(w > 0.0 && h > 0.0 && std::isfinite(w) && std::isfinite(h))) raiseCouldNotFit();
}

std::array<Point3d, 8> cornersOf(const BoundingVolume& volume) {
  if (!volume.isValid()) raiseCouldNotFit();
  const double xs[2] = {volume.getXMin(), volume.getXMax()};
  const double ys[2] = {volume.getYMin(), volume.getYMax()};
  const double zs[2] = {volume.getZMin(), volume.getZMax()};
  std::array<Point3d, 8> corners;
  for (int i = 0; i < 8; ++i) {
    corners[i] = Point3d(xs[i & 1], ys[(i >> 1) & 1], zs[(i >> 2) & 1]);
    if (!isFinite(corners[i])) raiseCouldNotFit();
  }
  return corners;
}

// The eye-space extent of the corners: largest |x| and |y| off the line of
// sight and the z range (the eye looks down -z).
struct EyeExtent {
  double halfWidth = 0.0;
  double halfHeight = 0.0;
  double zMin = 0.0;
  double zMax = 0.0;
};

EyeExtent eyeExtent(const Matrix4x4d& view, const std::array<Point3d, 8>& corners) {
  if (!isFinite(view)) raiseCouldNotFit();
  EyeExtent e;
  e.zMin = HUGE_VAL;
  e.zMax = -HUGE_VAL;
  for (const Point3d& c : corners) {
    const Point4d p = transform(view, c);
    e.halfWidth = std::max(e.halfWidth, std::fabs(p.getX()));
    e.halfHeight = std::max(e.halfHeight, std::fabs(p.getY()));
    e.zMin = std::min(e.zMin, p.getZ());
    e.zMax = std::max(e.zMax, p.getZ());
  }
  return e;
}

// The rows r0, r1, r2 with translations t0, t1, t2; bottom row (0, 0, 0, 1).
Matrix4x4d fromRows(const Vector3d& r0, double t0, const Vector3d& r1, double t1, const Vector3d& r2,
                    double t2) {
  Matrix4x4d m;
  const Vector3d* rows[3] = {&r0, &r1, &r2};
  const double translation[3] = {t0, t1, t2};
  for (int i = 0; i < 3; ++i) {
    m.set(i + 1, 1, rows[i]->getX());
    m.set(i + 1, 2, rows[i]->getY());
    m.set(i + 1, 3, rows[i]->getZ());
    m.set(i + 1, 4, translation[i]);
  }
  return m;
}

}  // namespace

Matrix4x4d makeViewTransform(const Point3d& position, const Point3d& target, const Vector3d& up) {
  if (!isFinite(position) || !isFinite(target) || !isFinite(up)) raiseCouldNotFit();
  Vector3d back = position - target;
  if (!(back.lengthSquared() > 0.0) || !(up.lengthSquared() > 0.0)) raiseCouldNotFit();
  back.normalize_carefully();
  Vector3d right = up.cross(back);
  // An up vector within about 1e-10 radians of the line of sight leaves no
  // usable sideways direction.
  Vector3d unitUp = up;
  unitUp.normalize_carefully();
  if (!(unitUp.cross(back).length() > 1e-10)) raiseCouldNotFit();
  right.normalize_carefully();
  const Vector3d trueUp = back.cross(right);
  const Vector3d eye(position);
  const Matrix4x4d view = fromRows(right, -right.dot(eye), trueUp, -trueUp.dot(eye), back, -back.dot(eye));
  if (!isFinite(view)) raiseCouldNotFit();
  return view;
}

Matrix4x4d makeViewPortTransform(const Rectangle2d& viewport) noexcept {
  const double hw = viewport.getWidth() * 0.5;
  const double hh = viewport.getHeight() * 0.5;
  // Pixel y grows downwards, so NDC +1 goes to the top edge (yMin).
  Matrix4x4d m;
  m.set(1, 1, hw);
  m.set(1, 4, viewport.getXMin() + hw);
  m.set(2, 2, -hh);
  m.set(2, 4, viewport.getYMin() + hh);
  m.set(3, 3, 0.5);
  m.set(3, 4, 0.5);
  return m;
}

Matrix4x4d makeWorldToPixelTransform(const ViewPortTransformProxy& viewport) {
  return makeViewPortTransform(viewport.getPosition()) * viewport.getProjectionTransform() *
         viewport.getViewTransform();
}

double computeHeight(const Matrix4x4d& view, const BoundingVolume& volume, double aspectRatio) {
  if (!(aspectRatio > 0.0 && std::isfinite(aspectRatio))) raiseCouldNotFit();
  const EyeExtent e = eyeExtent(view, cornersOf(volume));
  return 2.0 * std::max(e.halfHeight, e.halfWidth / aspectRatio);
}

Matrix4x4d fitOrthographicCamera(const ViewPortTransformProxy& viewport, const BoundingVolume& volume) {
  const Rectangle2d rect = viewport.getPosition();
  checkViewport(rect);
  const double aspect = rect.getWidth() / rect.getHeight();
  const EyeExtent e = eyeExtent(viewport.getViewTransform(), cornersOf(volume));
  double halfWidth = e.halfWidth;
  double halfHeight = e.halfHeight;
  if (viewport.isWarpToFillOff()) {
    halfHeight = std::max(e.halfHeight, e.halfWidth / aspect);
    halfWidth = halfHeight * aspect;
  } else if (halfWidth == 0.0) {
    halfWidth = halfHeight * aspect;  // a volume seen edge-on still gets a window
  } else if (halfHeight == 0.0) {
    halfHeight = halfWidth / aspect;
  }
  if (!(halfWidth > 0.0 && halfHeight > 0.0) || !std::isfinite(halfWidth) || !std::isfinite(halfHeight)) {
    raiseCouldNotFit();  // the volume projects to a single point
  }
  // Depth: the volume's eye-space z range with a margin of 1% of its size,
  // which also separates near and far for a volume flat along the view.
  const double zNear = -e.zMax;
  const double zFar = -e.zMin;
  const double margin = 0.01 * std::max(zFar - zNear, 2.0 * std::max(halfWidth, halfHeight));
  return Matrix4x4d::createOrtho(-halfWidth, halfWidth, -halfHeight, halfHeight, zNear - margin,
                                 zFar + margin);
}

Matrix4x4d fitPerspectiveCameraByPosition(const ViewPortTransformProxy& viewport, CameraPositionProxy& camera,
                                          const BoundingVolume& volume, const Point3d& position,
                                          const Point3d& target, const Vector3d& up, double viewAngle) {
  const Rectangle2d rect = viewport.getPosition();
  checkViewport(rect);
  if (!(viewAngle > 0.0 && viewAngle < 180.0)) raiseCouldNotFit();
  const std::array<Point3d, 8> corners = cornersOf(volume);
  const Matrix4x4d view = makeViewTransform(position, target, up);
  const double diagonal = (corners[7] - corners[0]).length();
  if (!(diagonal > 0.0) || !std::isfinite(diagonal)) raiseCouldNotFit();

  const double tanY = sind(viewAngle * 0.5) / cosd(viewAngle * 0.5);
  const double tanX = tanY * (rect.getWidth() / rect.getHeight());
  // Work relative to the target, which stays on the line of sight: a corner's
  // eye-space x and y do not depend on where along that line the eye sits,
  // and its depth is the eye's distance D from the target plus the corner's
  // depth behind the target. (Measuring from the old eye instead would lose
  // all precision when a small volume is seen from far away.) A corner is
  // framed when |x| <= tanX * depth and |y| <= tanY * depth; the target and
  // every corner must also stay a thousandth of the diagonal in front of the eye.
  const Vector3d right(view.get(1, 1), view.get(1, 2), view.get(1, 3));
  const Vector3d trueUp(view.get(2, 1), view.get(2, 2), view.get(2, 3));
  const Vector3d back(view.get(3, 1), view.get(3, 2), view.get(3, 3));
  const double clearance = 1e-3 * diagonal;
  double distance = clearance;
  double behindMin = HUGE_VAL;
  double behindMax = -HUGE_VAL;
  for (const Point3d& c : corners) {
    const Vector3d offset = c - target;
    const double behind = -back.dot(offset);
    const double needed =
        std::max({std::fabs(right.dot(offset)) / tanX, std::fabs(trueUp.dot(offset)) / tanY, clearance});
    distance = std::max(distance, needed - behind);
    behindMin = std::min(behindMin, behind);
    behindMax = std::max(behindMax, behind);
  }
  if (!std::isfinite(distance)) raiseCouldNotFit();

  const double zNear = (distance + behindMin) * 0.99;
  const double zFar = (distance + behindMax) * 1.01;
  const Matrix4x4d projection =
      Matrix4x4d::createFrustum(-tanX * zNear, tanX * zNear, -tanY * zNear, tanY * zNear, zNear, zFar);
  camera.setPosition(target + back * distance);
  return projection;
}

}  // namespace gui_objects::camera_utils

// The view frustum: six inward-facing world-space planes built from camera
// parameters, with the matching view and projection matrices.
#include <cmath>
#include <ostream>

#include "qvgui/clipping.h"

namespace gui_objects {

namespace {

[[noreturn]] void raiseInvalidFrustum() { throw InvalidFrustumException(); }

constexpr double kPi = 3.14159265358979323846;

bool finite(const Point3d& p) noexcept {
  return std::isfinite(p.getX()) && std::isfinite(p.getY()) && std::isfinite(p.getZ());
}
bool finite(const Vector3d& v) noexcept {
  return std::isfinite(v.getX()) && std::isfinite(v.getY()) && std::isfinite(v.getZ());
}

struct CameraAxes {
  Vector3d forward, right, up;
};

// Right-handed camera axes: forward towards the target, right = forward x up,
// true up = right x forward.
CameraAxes cameraAxes(const Point3d& eye, const Point3d& target, const Vector3d& up) {
  if (!finite(eye) || !finite(target) || !finite(up)) raiseInvalidFrustum();
  Vector3d forward = target - eye;
  Vector3d upDir(up);
  // Relative tests, so that the scale of the scene does not matter.
  const double fLen = forward.length(), uLen = upDir.length();
  if (!(fLen > 0.0) || !(uLen > 0.0)) raiseInvalidFrustum();
  forward *= 1.0 / fLen;
  upDir *= 1.0 / uLen;
  Vector3d right = forward.cross(upDir);
  // Up within about 0.06 degrees of the view direction fixes no roll.
  if (!(right.length() > 1e-6)) raiseInvalidFrustum();
  right.normalize();
  Vector3d trueUp = right.cross(forward);
  trueUp.normalize();
  return CameraAxes{forward, right, trueUp};
}

void checkDepth(double nearDistance, double farDistance) {
  if (!std::isfinite(nearDistance) || !std::isfinite(farDistance) || !(nearDistance < farDistance))
    raiseInvalidFrustum();
}

}  // namespace

ViewFrustum ViewFrustum::framed(Kind kind, const Point3d& eye, const Point3d& target, const Vector3d& up,
                                double nearDistance, double farDistance, double halfHeight, double aspect) {
  const CameraAxes axes = cameraAxes(eye, target, up);
  ViewFrustum f;
  f.kind_ = kind;
  f.eye_ = eye;
  f.forward_ = axes.forward;
  f.right_ = axes.right;
  f.up_ = axes.up;
  f.near_ = nearDistance;
  f.far_ = farDistance;
  f.halfHeight_ = halfHeight;
  f.halfWidth_ = halfHeight * aspect;
  return f;
}

ViewFrustum ViewFrustum::perspective(const Point3d& eye, const Point3d& target, const Vector3d& up,
                                     double viewAngleDegrees, double aspect, double nearDistance,
                                     double farDistance) {
  if (!(viewAngleDegrees > 0.0 && viewAngleDegrees < 180.0)) raiseInvalidFrustum();
  if (!(aspect > 0.0) || !std::isfinite(aspect)) raiseInvalidFrustum();
  checkDepth(nearDistance, farDistance);
  if (!(nearDistance > 0.0)) raiseInvalidFrustum();
  ViewFrustum f = framed(Kind::Perspective, eye, target, up, nearDistance, farDistance,
                         std::tan(viewAngleDegrees * kPi / 360.0), aspect);
  const CameraAxes axes{f.forward_, f.right_, f.up_};
  // A direction forward + a right + b up is inside the left plane when
  // a >= -halfWidth, i.e. (right + halfWidth forward) . dir >= 0.
  f.planes_[Left] = Plane3d(eye, axes.right + axes.forward * f.halfWidth_);
  f.planes_[Right] = Plane3d(eye, -axes.right + axes.forward * f.halfWidth_);
  f.planes_[Bottom] = Plane3d(eye, axes.up + axes.forward * f.halfHeight_);
  f.planes_[Top] = Plane3d(eye, -axes.up + axes.forward * f.halfHeight_);
  f.planes_[Near] = Plane3d(eye + axes.forward * nearDistance, axes.forward);
  f.planes_[Far] = Plane3d(eye + axes.forward * farDistance, -axes.forward);
  return f;
}

ViewFrustum ViewFrustum::orthographic(const Point3d& eye, const Point3d& target, const Vector3d& up,
                                      double extent, double aspect, double nearDistance, double farDistance) {
  if (!(extent > 0.0) || !std::isfinite(extent)) raiseInvalidFrustum();
  if (!(aspect > 0.0) || !std::isfinite(aspect)) raiseInvalidFrustum();
  checkDepth(nearDistance, farDistance);
  ViewFrustum f =
      framed(Kind::Orthographic, eye, target, up, nearDistance, farDistance, extent / 2.0, aspect);
  const CameraAxes axes{f.forward_, f.right_, f.up_};
  f.planes_[Left] = Plane3d(eye - axes.right * f.halfWidth_, axes.right);
  f.planes_[Right] = Plane3d(eye + axes.right * f.halfWidth_, -axes.right);
  f.planes_[Bottom] = Plane3d(eye - axes.up * f.halfHeight_, axes.up);
  f.planes_[Top] = Plane3d(eye + axes.up * f.halfHeight_, -axes.up);
  f.planes_[Near] = Plane3d(eye + axes.forward * nearDistance, axes.forward);
  f.planes_[Far] = Plane3d(eye + axes.forward * farDistance, -axes.forward);
  return f;
}

bool ViewFrustum::isInside(const Point3d& p) const noexcept {
  for (const Plane3d& plane : planes_)
    if (!(plane.distance(p) >= 0.0)) return false;
  return true;
}

Matrix4x4d ViewFrustum::getViewMatrix() const {
  return Matrix4x4d::createCoordinateFrame(right_, up_, -forward_) *
         Matrix4x4d::createTranslation(-Vector3d(eye_));
}

Matrix4x4d ViewFrustum::getProjectionMatrix() const {
  if (kind_ == Kind::Perspective) {
    const double w = halfWidth_ * near_, h = halfHeight_ * near_;
    return Matrix4x4d::createFrustum(-w, w, -h, h, near_, far_);
  }
  return Matrix4x4d::createOrtho(-halfWidth_, halfWidth_, -halfHeight_, halfHeight_, near_, far_);
}

std::ostream& operator<<(std::ostream& os, const ViewFrustum& f) {
  os << (f.getKind() == ViewFrustum::Kind::Perspective ? "ViewFrustum(perspective"
                                                       : "ViewFrustum(orthographic")
     << ", eye " << f.getEye() << ", forward " << f.getForward() << ", up " << f.getUp() << ", half size "
     << f.getHalfWidth() << " x " << f.getHalfHeight() << ", depth " << f.getNear() << ".." << f.getFar()
     << ")";
  return os;
}

}  // namespace gui_objects

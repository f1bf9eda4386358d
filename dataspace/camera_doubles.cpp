// Do-nothing implementations of the camera proxies, for tests.
#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

namespace gui_objects::camera_utils::test {

NullCameraModeProxy::~NullCameraModeProxy() = default;
bool NullCameraModeProxy::isCameraTargetModeAuto() const { return false; }
bool NullCameraModeProxy::isCameraPositionModeAuto() const { return false; }
bool NullCameraModeProxy::isCameraUpVectorModeAuto() const { return false; }
bool NullCameraModeProxy::isCamera2D() const { return false; }
void NullCameraModeProxy::setCameraTarget(const Point3d&) {}
void NullCameraModeProxy::setCameraPosition(const Point3d&) {}
void NullCameraModeProxy::setCameraUpVector(const Vector3d&) {}
Point3d NullCameraModeProxy::getCameraPosition() const { return Point3d(); }
Point3d NullCameraModeProxy::getCameraTarget() const { return Point3d(); }
Vector3d NullCameraModeProxy::getCameraUpVector() const { return Vector3d(); }
Point3d NullCameraModeProxy::getPlotBoxAspectRatio() const { return Point3d(); }
void NullCameraModeProxy::setView(double, double) {}
double NullCameraModeProxy::getViewAzimuth() const { return 0.0; }
double NullCameraModeProxy::getViewElevation() const { return 0.0; }
bool NullCameraModeProxy::isAxisReverse(int) const { return false; }

NullCameraPositionProxy::~NullCameraPositionProxy() = default;
void NullCameraPositionProxy::setPosition(const Point3d&) {}
void NullCameraPositionProxy::setTarget(const Point3d&) {}
void NullCameraPositionProxy::setUpVector(const Vector3d&) {}

NullViewPortTransformProxy::~NullViewPortTransformProxy() = default;
Rectangle2d NullViewPortTransformProxy::getPosition() const { return Rectangle2d(); }
Matrix4x4d NullViewPortTransformProxy::getProjectionTransform() const { return Matrix4x4d(); }
Matrix4x4d NullViewPortTransformProxy::getViewTransform() const { return Matrix4x4d(); }
bool NullViewPortTransformProxy::isWarpToFillOff() const { return false; }
bool NullViewPortTransformProxy::isCameraViewAngleModeAuto() const { return false; }
bool NullViewPortTransformProxy::isXConstraint() const { return false; }

}  // namespace gui_objects::camera_utils::test

// The automatic camera of a three-dimensional axes: target, position, view
// angles and up vector derived from limits and plot-box aspect ratio.
#include <cmath>

#include "dataspace/camera_p.h"
#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

namespace gui_objects::camera_utils {

namespace detail {

void raiseBadLimits() { throw BadLimitsException(); }

}  // namespace detail

CameraModeProxy::~CameraModeProxy() = default;
CameraPositionProxy::~CameraPositionProxy() = default;
ViewPortTransformProxy::~ViewPortTransformProxy() = default;

namespace {

constexpr double kPi = 3.141592653589793;

struct Triple {
  double v[3];
};

Triple components(const Point3d& p) noexcept { return Triple{{p.getX(), p.getY(), p.getZ()}}; }

// The two centre forms round differently; a logarithmic axis keeps the one
// that cannot overflow for huge limits.
double centreOf(const CameraModeProxy& proxy, int axis) noexcept {
  const double lo = proxy.getRenderLimit(axis, 0);
  const double hi = proxy.getRenderLimit(axis, 1);
  return proxy.isAxisScaleFirst(axis) ? hi * 0.5 + lo * 0.5 : (hi + lo) * 0.5;
}

// A length in plot-box units converted to data units of the axis.
double toDataUnits(const CameraModeProxy& proxy, int axis, double length) noexcept {
  const double lo = proxy.getRenderLimit(axis, 0);
  const double hi = proxy.getRenderLimit(axis, 1);
  return proxy.isAxisScaleFirst(axis) ? length * (hi / lo - 1.0) * lo : length * (hi - lo);
}

// Reversed axes mirror the camera about the centre of the box.
void mirrorReversed(const CameraModeProxy& proxy, const Triple& centre, Triple& p) {
  for (int k = 0; k < 3; ++k) {
    if (proxy.isAxisReverse(k)) p.v[k] = centre.v[k] - (p.v[k] - centre.v[k]);
  }
}

Triple automaticPosition(const CameraModeProxy& proxy, const Triple& centre) {
  const Point3d box = proxy.getPlotBoxAspectRatio();
  const double az = proxy.getViewAzimuth();
  const double el = proxy.getViewElevation();
  const double d = Vector3d(box).length();
  // The camera sits at five times the plot-box diagonal.
  const double offset[3] = {cosd(el) * sind(az) * 5.0 * d / box.getX(),
                            -cosd(el) * cosd(az) * 5.0 * d / box.getY(), sind(el) * 5.0 * d / box.getZ()};
  Triple position{};
  for (int k = 0; k < 3; ++k) {
    position.v[k] = centre.v[k] + toDataUnits(proxy, k, offset[k]);
    if (std::isinf(position.v[k])) detail::raiseBadLimits();
  }
  mirrorReversed(proxy, centre, position);
  return position;
}

// View angles of a user-placed camera, measured in plot-box units so that
// they agree with the angles the automatic position would be built from.
// Returns whether the new view is two-dimensional.
bool deriveViewFromPosition(CameraModeProxy& proxy, const Triple& centre) {
  Triple q = components(proxy.getCameraPosition());
  mirrorReversed(proxy, centre, q);
  const Triple box = components(proxy.getPlotBoxAspectRatio());
  const Triple target = components(proxy.getCameraTarget());
  double v[3];
  for (int k = 0; k < 3; ++k) v[k] = (target.v[k] - q.v[k]) / toDataUnits(proxy, k, box.v[k]);
  Vector3d view(v[0], v[1], v[2]);
  view.normalize();  // a camera on its target throws ZeroLengthException here
  const double azimuth = -std::atan2(view.getX(), view.getY()) * 180.0 / kPi;
  const double elevation = std::asin(-view.getZ()) * 180.0 / kPi;
  proxy.setView(azimuth, elevation);
  return is2D(azimuth, elevation);
}

}  // namespace

void setAutoCameraModes(CameraModeProxy& proxy) {
  Triple centre{};
  for (int k = 0; k < 3; ++k) centre.v[k] = centreOf(proxy, k);

  if (proxy.isCameraTargetModeAuto()) proxy.setCameraTarget(Point3d(centre.v[0], centre.v[1], centre.v[2]));

  bool twoD;
  if (proxy.isCameraPositionModeAuto()) {
    const Triple p = automaticPosition(proxy, centre);
    proxy.setCameraPosition(Point3d(p.v[0], p.v[1], p.v[2]));
    twoD = proxy.isCamera2D();
  } else {
    twoD = deriveViewFromPosition(proxy, centre);
  }

  if (proxy.isCameraUpVectorModeAuto()) {
    if (twoD) {
      proxy.setCameraUpVector(chooseUpVector2D(proxy.getViewAzimuth(), proxy.getViewElevation()));
    } else {
      proxy.setCameraUpVector(
          chooseUpVector3D(proxy.getCameraTarget() - proxy.getCameraPosition(), proxy.getViewAzimuth()));
    }
  }
}

}  // namespace gui_objects::camera_utils

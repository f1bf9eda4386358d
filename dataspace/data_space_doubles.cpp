// Do-nothing implementations of the data-space proxies, for tests.
#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

namespace gui_objects::data_space_utils::test {

NullAxisLimitsProxy::~NullAxisLimitsProxy() = default;
void NullAxisLimitsProxy::setAxisLimits(int, double, double) {}
double NullAxisLimitsProxy::getAxisLimit(int, int) const { return 0.0; }
bool NullAxisLimitsProxy::isManual(int) const { return false; }
bool NullAxisLimitsProxy::getAxisScaleIsLog(int) const { return false; }
Vector3d NullAxisLimitsProxy::getPlotBoxAspectRatio() const { return Vector3d(); }
void NullAxisLimitsProxy::setPlotBoxAspectRatio(const Vector3d&) {}
Vector3d NullAxisLimitsProxy::getDataAspectRatio() const { return Vector3d(); }
void NullAxisLimitsProxy::setDataAspectRatio(const Vector3d&) {}
bool NullAxisLimitsProxy::getPlotBoxAspectRatioModeIsAuto() const { return false; }
bool NullAxisLimitsProxy::getDataAspectRatioModeIsAuto() const { return false; }
void NullAxisLimitsProxy::setOldStyleAspectRatio(double, double) {}

NullRenderLimitsProxy::~NullRenderLimitsProxy() = default;
double NullRenderLimitsProxy::getRenderLimit(int, int) const { return 0.0; }
void NullRenderLimitsProxy::setRenderLimits(int, double, double) {}
void NullRenderLimitsProxy::setBothPlotAndDataAspectRatio_manual(int, bool) {}
bool NullRenderLimitsProxy::isLimitStateNormal(int) { return false; }

NullTransformProxy::~NullTransformProxy() = default;
double NullTransformProxy::getRenderLimit(int, int which) const { return which == 0 ? 0.0 : 1.0; }
bool NullTransformProxy::isLog(int) const { return false; }
Vector3d NullTransformProxy::getPlotBoxAspectRatio() const { return Vector3d(1.0, 1.0, 1.0); }

namespace {
const double kIdentity[16] = {1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0};
const double kZero[3] = {0.0, 0.0, 0.0};
const double kOne[3] = {1.0, 1.0, 1.0};
}  // namespace

NullAxesScaleInfo::~NullAxesScaleInfo() = default;
const double* NullAxesScaleInfo::getInvRenderTransform() { return kIdentity; }
const double* NullAxesScaleInfo::getRenderOffset() { return kZero; }
const double* NullAxesScaleInfo::getRenderScale() { return kOne; }
Rectangle2i NullAxesScaleInfo::getSmallbounds() { return Rectangle2i(); }
void NullAxesScaleInfo::getBoxZRange(double* out) {
  out[0] = -1.0;
  out[1] = 1.0;
}

NullAxesBounds::~NullAxesBounds() = default;
double NullAxesBounds::getRenderLimit(int, int) { return 0.0; }
bool NullAxesBounds::isLog(int) { return false; }
Point3d NullAxesBounds::getCameraPosition() { return Point3d(); }
Point3d NullAxesBounds::getCameraTarget() { return Point3d(); }

}  // namespace gui_objects::data_space_utils::test

// Data space, camera and axes: data extents and limit constraints, camera and
// aspect-ratio rules, and the tick picker that chooses nice limits and ticks.
//
// Raises: the InvalidArrayException family and InvalidDataExtentsException
// from extents and constraints; camera_utils::BadLimitsException,
// camera_utils::CouldNotFitCameraException and ZeroLengthException from the
// camera utilities; HostError with the host's out-of-memory identifier where
// tick positions are allocated.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <limits>

#include "qvgui/export.h"
#include "qvgui/geometry.h"

struct zrArray_tag;
enum zrClassID : int;

// ---- Counted arrays of doubles -----------------------------------------------------------------
//
// `count` values at `values`. The record owns its storage (host checked
// allocator), which has room for capacity() values; a holder may change
// `count` and the values within that room. Copies are deep. The tick picker
// returns `new`-allocated records; whoever receives one deletes it.
class QVGUI_API NReals {
 public:
  NReals() noexcept = default;
  // Room for `capacity` values (a negative capacity counts as 0), count 0.
  explicit NReals(int capacity);
  // A copy of `count` values.
  NReals(const double* first, int count);
  NReals(std::initializer_list<double> values);
  NReals(const NReals& other);
  NReals(NReals&& other) noexcept;
  NReals& operator=(const NReals& other);
  NReals& operator=(NReals&& other) noexcept;
  ~NReals();

  [[nodiscard]] int capacity() const noexcept { return capacity_; }
  [[nodiscard]] bool empty() const noexcept { return count <= 0; }
  // Appends one value; returns false and stores nothing when the record is full.
  bool append(double value) noexcept;

  [[nodiscard]] const double* begin() const noexcept { return values; }
  [[nodiscard]] const double* end() const noexcept { return values + (count > 0 ? count : 0); }

  int count = 0;
  double* values = nullptr;

 private:
  int capacity_ = 0;
};

// Same count and the same values (exact; NaN equals NaN here so that records
// holding absent values still compare equal to themselves).
[[nodiscard]] QVGUI_API bool operator==(const NReals& a, const NReals& b) noexcept;
[[nodiscard]] inline bool operator!=(const NReals& a, const NReals& b) noexcept { return !(a == b); }
QVGUI_API std::ostream& operator<<(std::ostream& os, const NReals& r);

namespace gui_objects {

// ---- Data extents ------------------------------------------------------------------------------
//
// A data range that also tracks the largest negative and the smallest positive
// value, so that a logarithmic axis finds the usable side of a range that holds
// zero or negatives without rescanning the data. NaN marks an absent tracked
// value; the algorithms rely on every comparison with NaN being false. All
// queries compare the stored fields exactly.
class QVGUI_API DataExtents {
 public:
  // The absent-value marker: a quiet NaN with the sign bit set (0xFFF8000000000000).
  static constexpr double kAbsent = -std::numeric_limits<double>::quiet_NaN();

  // Empty: minimum = maximum = 0, both tracked values absent, not initialized.
  constexpr DataExtents() noexcept = default;
  // A range without sample knowledge; the tracked values are derived from the
  // bounds (a range across zero records its ends, the only values known to
  // exist). Throws InvalidDataExtentsException when a bound is not finite or
  // min > max.
  DataExtents(double min, double max);
  // All four values given. Throws InvalidDataExtentsException when they are
  // inconsistent; the checks are deliberately lenient (with min == 0 an absent
  // minPositive passes, and max < min is caught only through minPositive).
  DataExtents(double min, double maxNegative, double minPositive, double max);

  // Adds one sample; NaN and infinities are ignored.
  DataExtents& operator+=(double value) noexcept;
  // Merges another range; an uninitialized side contributes nothing. On a tie
  // of minimum or maximum this object's value is kept.
  DataExtents& operator+=(const DataExtents& other) noexcept;

  [[nodiscard]] constexpr double getMinValue() const noexcept { return min_; }
  [[nodiscard]] constexpr double getMaxNegative() const noexcept { return maxNegative_; }
  [[nodiscard]] constexpr double getMinPositive() const noexcept { return minPositive_; }
  [[nodiscard]] constexpr double getMaxValue() const noexcept { return max_; }
  [[nodiscard]] constexpr bool initialized() const noexcept { return initialized_; }

  [[nodiscard]] constexpr bool containsNegatives() const noexcept { return min_ < 0; }
  [[nodiscard]] constexpr bool containsPositives() const noexcept { return max_ > 0; }
  [[nodiscard]] constexpr bool containsNonPositives() const noexcept { return min_ <= 0; }
  [[nodiscard]] constexpr bool containsNonNegatives() const noexcept { return max_ >= 0; }
  [[nodiscard]] constexpr bool crossesZero() const noexcept {
    return (min_ < 0 && max_ >= 0) || (max_ > 0 && min_ <= 0);
  }
  // A zero-width range (NaN compares unequal, so a NaN range is not empty).
  [[nodiscard]] constexpr bool empty() const noexcept { return min_ == max_; }

 private:
  double min_ = 0.0;
  double maxNegative_ = kAbsent;
  double minPositive_ = kAbsent;
  double max_ = 0.0;
  bool initialized_ = false;
};

[[nodiscard]] QVGUI_API DataExtents operator+(const DataExtents& a, const DataExtents& b) noexcept;
// Exact: the same flag and every field equal, an absent value matching only an
// absent value. (Signed zeros compare equal.)
[[nodiscard]] QVGUI_API bool operator==(const DataExtents& a, const DataExtents& b) noexcept;
[[nodiscard]] inline bool operator!=(const DataExtents& a, const DataExtents& b) noexcept {
  return !(a == b);
}
// Within the library tolerance; tracked values are compared only on the sides
// the ranges actually reach.
[[nodiscard]] QVGUI_API bool nearlyEqual(const DataExtents& a, const DataExtents& b) noexcept;
QVGUI_API std::ostream& operator<<(std::ostream& os, const DataExtents& e);

// x, y and z extents of one object.
class QVGUI_API XYZDataExtents {
 public:
  constexpr XYZDataExtents() noexcept = default;
  constexpr XYZDataExtents(const DataExtents& x, const DataExtents& y, const DataExtents& z) noexcept
      : x_(x), y_(y), z_(z) {}

  XYZDataExtents& operator+=(const XYZDataExtents& other) noexcept;

  [[nodiscard]] constexpr const DataExtents& getXDataExtents() const noexcept { return x_; }
  [[nodiscard]] constexpr const DataExtents& getYDataExtents() const noexcept { return y_; }
  [[nodiscard]] constexpr const DataExtents& getZDataExtents() const noexcept { return z_; }

 private:
  DataExtents x_;
  DataExtents y_;
  DataExtents z_;
};

[[nodiscard]] QVGUI_API bool operator==(const XYZDataExtents& a, const XYZDataExtents& b) noexcept;
[[nodiscard]] inline bool operator!=(const XYZDataExtents& a, const XYZDataExtents& b) noexcept {
  return !(a == b);
}
QVGUI_API std::ostream& operator<<(std::ostream& os, const XYZDataExtents& e);

// Colour and alpha extents of one object.
class QVGUI_API ColorAlphaDataExtents {
 public:
  constexpr ColorAlphaDataExtents() noexcept = default;
  constexpr ColorAlphaDataExtents(const DataExtents& color, const DataExtents& alpha) noexcept
      : color_(color), alpha_(alpha) {}

  ColorAlphaDataExtents& operator+=(const ColorAlphaDataExtents& other) noexcept;

  [[nodiscard]] constexpr const DataExtents& getColorDataExtents() const noexcept { return color_; }
  [[nodiscard]] constexpr const DataExtents& getAlphaDataExtents() const noexcept { return alpha_; }

 private:
  DataExtents color_;
  DataExtents alpha_;
};

[[nodiscard]] QVGUI_API bool operator==(const ColorAlphaDataExtents& a,
                                        const ColorAlphaDataExtents& b) noexcept;
[[nodiscard]] inline bool operator!=(const ColorAlphaDataExtents& a,
                                     const ColorAlphaDataExtents& b) noexcept {
  return !(a == b);
}
QVGUI_API std::ostream& operator<<(std::ostream& os, const ColorAlphaDataExtents& e);

// ---- Data constraints --------------------------------------------------------------------------
//
// The allowed data range of one axis. A logarithmic axis does not allow zero
// crossing and gets constrained to one sign side of its data.
class QVGUI_API DataConstraints {
 public:
  // min 0, max 1, zero crossing allowed, no constraint in force.
  constexpr DataConstraints() noexcept = default;
  constexpr explicit DataConstraints(bool allowZeroCrossing) noexcept
      : allowZeroCrossing_(allowZeroCrossing) {}

  // Stores both bounds (in any order, not checked) and puts them in force.
  void setConstraint(double min, double max) noexcept {
    min_ = min;
    max_ = max;
    hasConstraint_ = true;
  }

  [[nodiscard]] constexpr double getMin() const noexcept { return min_; }
  [[nodiscard]] constexpr double getMax() const noexcept { return max_; }
  [[nodiscard]] constexpr bool allowZeroCrossing() const noexcept { return allowZeroCrossing_; }
  [[nodiscard]] constexpr bool hasConstraint() const noexcept { return hasConstraint_; }

  // A constraint is in force and v lies outside [min, max].
  [[nodiscard]] bool outOfBounds(double v) const noexcept;
  // The open interval between a and b strictly contains min or max. Always
  // false without a constraint, and false for an interval that touches zero
  // when zero crossing is not allowed.
  [[nodiscard]] bool spansBounds(double a, double b) const noexcept;
  // The fraction of the way from a to b at which the segment meets the bound
  // it enters through (min when rising, max when falling); 0 when a == b.
  [[nodiscard]] double interpolate(double a, double b) const noexcept;
  // For an axis without zero crossing whose data touches or crosses zero:
  // constrains it to one sign side (the positive side when the data reaches
  // above zero) and returns true. Otherwise changes nothing and returns false.
  bool updateConstraintForZeroCrossing(const DataExtents& extents) noexcept;

 private:
  double min_ = 0.0;
  double max_ = 1.0;
  bool allowZeroCrossing_ = true;
  bool hasConstraint_ = false;
};

[[nodiscard]] QVGUI_API bool operator==(const DataConstraints& a, const DataConstraints& b) noexcept;
[[nodiscard]] inline bool operator!=(const DataConstraints& a, const DataConstraints& b) noexcept {
  return !(a == b);
}
[[nodiscard]] QVGUI_API bool nearlyEqual(const DataConstraints& a, const DataConstraints& b) noexcept;
QVGUI_API std::ostream& operator<<(std::ostream& os, const DataConstraints& c);

// The constraints of the x, y and z axes and whether any of them is in force.
class QVGUI_API XYZDataConstraints {
 public:
  constexpr XYZDataConstraints() noexcept = default;
  XYZDataConstraints(const DataConstraints& x, const DataConstraints& y, const DataConstraints& z) noexcept;

  [[nodiscard]] constexpr const DataConstraints& getXDataConstraints() const noexcept { return x_; }
  [[nodiscard]] constexpr const DataConstraints& getYDataConstraints() const noexcept { return y_; }
  [[nodiscard]] constexpr const DataConstraints& getZDataConstraints() const noexcept { return z_; }
  [[nodiscard]] constexpr bool hasConstraint() const noexcept { return anyConstraint_; }

  // Shortens the segment p0-p1 to the constrained box, moving each end
  // inwards. A segment wholly outside is not detected (callers test that with
  // outOfBounds/spansBounds first).
  void intersectSegment(Point3d& p0, Point3d& p1) const noexcept;
  // Applies updateConstraintForZeroCrossing to every axis. When any axis
  // changed, all three extents are replaced (the caller must rescan): a changed
  // axis gets the single sample -1 or 0 by the sign of its old minimum, an
  // unchanged one becomes empty. Returns whether any axis changed.
  bool updateConstraintForZeroCrossingAndResetExtents(DataExtents& x, DataExtents& y,
                                                      DataExtents& z) noexcept;

 private:
  DataConstraints x_;
  DataConstraints y_;
  DataConstraints z_;
  bool anyConstraint_ = false;
};

[[nodiscard]] QVGUI_API bool operator==(const XYZDataConstraints& a, const XYZDataConstraints& b) noexcept;
[[nodiscard]] inline bool operator!=(const XYZDataConstraints& a, const XYZDataConstraints& b) noexcept {
  return !(a == b);
}
[[nodiscard]] QVGUI_API bool nearlyEqual(const XYZDataConstraints& a, const XYZDataConstraints& b) noexcept;
QVGUI_API std::ostream& operator<<(std::ostream& os, const XYZDataConstraints& c);

// ---- Camera utilities --------------------------------------------------------------------------

// Kernel types, complete in qvgui/geometry.h (include it to call these).
class Vector3d;
class Matrix4x4d;
class Rectangle2i;
class Rectangle2d;
class BoundingVolume;
class LineSegment3d;

namespace camera_utils {

// Thrown when the automatic camera position comes out infinite (infinite
// limits, a zero plot-box component). A tag: no base, no data, no message.
class QVGUI_API BadLimitsException {};

// Thrown when a camera cannot frame a bounding volume: the volume is unset or
// not finite, it has no extent (perspective) or projects to a single point
// (orthographic), the viewport is empty, the view angle is not in (0, 180)
// degrees, or the camera is degenerate (eye on the target, up vector zero or
// along the line of sight). A tag like BadLimitsException.
class QVGUI_API CouldNotFitCameraException {};

// ---- Degree trigonometry
//
// The angle is first reduced by whole quarter turns (exactly: fmod by 360 is
// exact, and so is the subtraction of the nearest multiple of 90), and only the
// remainder in [-45, 45] goes through the radian functions. Multiples of 90
// therefore give 0 and +-1 exactly, and a zero result is always +0. sind45 and
// cosd45 additionally give the correctly rounded +-1/sqrt(2) at the odd
// multiples of 45 (the radian sine of pi/4 is one unit in the last place
// short). A NaN or infinite angle gives NaN.
[[nodiscard]] QVGUI_API double sind(double degrees) noexcept;
[[nodiscard]] QVGUI_API double cosd(double degrees) noexcept;
[[nodiscard]] QVGUI_API double sind45(double degrees) noexcept;
[[nodiscard]] QVGUI_API double cosd45(double degrees) noexcept;

// ---- View angles and up vectors
//
// The angle tests truncate toward zero (89.9 counts as 89, so it is not a
// multiple of 90). An angle that is NaN, infinite or outside the range of int
// has no truncation and is never a multiple of anything: such a view is not
// two-dimensional and chooseUpVector2D gives the zero vector for it.
[[nodiscard]] QVGUI_API bool is2D(double azimuth, double elevation) noexcept;
// Up vector of a two-dimensional view; the zero vector when the elevation is
// not a multiple of 90 or, looking along z, the azimuth is not.
[[nodiscard]] QVGUI_API Vector3d chooseUpVector2D(double azimuth, double elevation) noexcept;
// (0, 0, 1) unless the viewing direction lies exactly along z (x and y exactly
// zero, z not zero; a NaN counts as nonzero); then (sin -az, cos -az, 0).
[[nodiscard]] QVGUI_API Vector3d chooseUpVector3D(const Vector3d& direction, double azimuth) noexcept;
// Unit vector from the target towards the viewer:
// (sin az cos el, -cos az cos el, sin el), built from the kernel's rotations.
[[nodiscard]] QVGUI_API Vector3d convertAnglesToDirection(double azimuth, double elevation) noexcept;

// ---- Caller-implemented interfaces

// What the automatic camera rules read from and write to an axes object. The
// render limits and logarithmic flags are plain data that the implementing
// subclass fills (the flags through the protected constructor, the limits
// through setRenderLimits).
class QVGUI_API CameraModeProxy {
 public:
  virtual ~CameraModeProxy();

  [[nodiscard]] virtual bool isCameraTargetModeAuto() const = 0;
  [[nodiscard]] virtual bool isCameraPositionModeAuto() const = 0;
  [[nodiscard]] virtual bool isCameraUpVectorModeAuto() const = 0;
  [[nodiscard]] virtual bool isCamera2D() const = 0;
  virtual void setCameraTarget(const Point3d& target) = 0;
  virtual void setCameraPosition(const Point3d& position) = 0;
  virtual void setCameraUpVector(const Vector3d& up) = 0;
  [[nodiscard]] virtual Point3d getCameraPosition() const = 0;
  [[nodiscard]] virtual Point3d getCameraTarget() const = 0;
  [[nodiscard]] virtual Vector3d getCameraUpVector() const = 0;
  [[nodiscard]] virtual Point3d getPlotBoxAspectRatio() const = 0;
  virtual void setView(double azimuth, double elevation) = 0;
  [[nodiscard]] virtual double getViewAzimuth() const = 0;
  [[nodiscard]] virtual double getViewElevation() const = 0;
  [[nodiscard]] virtual bool isAxisReverse(int axis) const = 0;

  // axis 0..2 (x, y, z), which 0 = minimum, 1 = maximum; not range-checked.
  [[nodiscard]] double getRenderLimit(int axis, int which) const noexcept {
    return renderLimits_[axis][which];
  }
  // True when the axis is logarithmic.
  [[nodiscard]] bool isAxisScaleFirst(int axis) const noexcept { return logScale_[axis]; }

 protected:
  CameraModeProxy() noexcept = default;
  CameraModeProxy(bool xIsLog, bool yIsLog, bool zIsLog) noexcept : logScale_{xIsLog, yIsLog, zIsLog} {}
  CameraModeProxy(const CameraModeProxy&) = default;
  CameraModeProxy& operator=(const CameraModeProxy&) = default;

  void setRenderLimits(int axis, double min, double max) noexcept {
    renderLimits_[axis][0] = min;
    renderLimits_[axis][1] = max;
  }

 private:
  double renderLimits_[3][2] = {};
  bool logScale_[3] = {};
};

// Where the camera fitting publishes a camera placement.
class QVGUI_API CameraPositionProxy {
 public:
  virtual ~CameraPositionProxy();
  virtual void setPosition(const Point3d& position) = 0;
  virtual void setTarget(const Point3d& target) = 0;
  virtual void setUpVector(const Vector3d& up) = 0;

 protected:
  CameraPositionProxy() noexcept = default;
  CameraPositionProxy(const CameraPositionProxy&) = default;
  CameraPositionProxy& operator=(const CameraPositionProxy&) = default;
};

// What the camera fitting reads about the viewport: its rectangle in pixels
// (y down), the current transforms and the fitting options.
class QVGUI_API ViewPortTransformProxy {
 public:
  virtual ~ViewPortTransformProxy();
  [[nodiscard]] virtual Rectangle2d getPosition() const = 0;
  [[nodiscard]] virtual Matrix4x4d getProjectionTransform() const = 0;
  [[nodiscard]] virtual Matrix4x4d getViewTransform() const = 0;
  [[nodiscard]] virtual bool isWarpToFillOff() const = 0;
  [[nodiscard]] virtual bool isCameraViewAngleModeAuto() const = 0;
  [[nodiscard]] virtual bool isXConstraint() const = 0;

 protected:
  ViewPortTransformProxy() noexcept = default;
  ViewPortTransformProxy(const ViewPortTransformProxy&) = default;
  ViewPortTransformProxy& operator=(const ViewPortTransformProxy&) = default;
};

// ---- Automatic camera
//
// Derives target, position and up vector of an axes from its limits, plot-box
// aspect ratio and view angles, for whichever of them is automatic. Throws
// BadLimitsException when the automatic position is infinite (an automatic
// target has been set by then, the position has not); a user position equal
// to the target throws ZeroLengthException before anything is set.
QVGUI_API void setAutoCameraModes(CameraModeProxy& proxy);

// ---- View, projection and viewport transforms
//
// Coordinates: world -> eye (right-handed, the eye at the origin looking down
// -z, up along +y) -> clip/normalised device coordinates in [-1, 1]^3 ->
// pixels. The pixel rectangle has y growing downwards, so NDC +y maps to the
// rectangle's yMin; NDC depth -1..1 maps to 0..1.

// Look-at transform. Throws CouldNotFitCameraException when position and
// target coincide, the up vector is zero or along the line of sight, or the
// result would not be finite.
[[nodiscard]] QVGUI_API Matrix4x4d makeViewTransform(const Point3d& position, const Point3d& target,
                                                     const Vector3d& up);
// Normalised device coordinates to the pixels of the viewport.
[[nodiscard]] QVGUI_API Matrix4x4d makeViewPortTransform(const Rectangle2d& viewport) noexcept;
// World to pixels: makeViewPortTransform(getPosition) x projection x view.
[[nodiscard]] QVGUI_API Matrix4x4d makeWorldToPixelTransform(const ViewPortTransformProxy& viewport);

// Full height of the smallest orthographic view window, centred on the line
// of sight of `view`, that holds every corner of `volume` when the window is
// `aspectRatio` (width / height) times as wide as high. Zero for a volume that
// projects to the line of sight. Throws CouldNotFitCameraException for an
// unset or non-finite volume, a non-finite view, or an aspect ratio that is
// not finite and positive.
[[nodiscard]] QVGUI_API double computeHeight(const Matrix4x4d& view, const BoundingVolume& volume,
                                             double aspectRatio);

// Orthographic projection through which every corner of `volume`, seen
// through viewport.getViewTransform(), lands inside viewport.getPosition().
// With warp-to-fill off the window keeps the viewport's aspect ratio; with it
// on, width and height are fitted independently (the picture stretches to
// fill). Near and far enclose the volume with a margin of 1% of its size.
// Fits exactly: some corner touches the viewport's edge. Throws
// CouldNotFitCameraException (see above). isCameraViewAngleModeAuto and
// isXConstraint are not consulted.
[[nodiscard]] QVGUI_API Matrix4x4d fitOrthographicCamera(const ViewPortTransformProxy& viewport,
                                                         const BoundingVolume& volume);

// Perspective fit that keeps the target, the up vector, the line of sight and
// the vertical view angle (degrees, in (0, 180)) and moves the camera along
// the line of sight, nearer or farther, until every corner of `volume` lands
// inside viewport.getPosition(); the frustum keeps the viewport's aspect
// ratio. The new position goes to camera.setPosition (target and up vector
// are left alone) and the perspective projection is returned; the camera
// stays in front of the target and of the volume. Throws
// CouldNotFitCameraException (see above) without publishing anything.
[[nodiscard]] QVGUI_API Matrix4x4d fitPerspectiveCameraByPosition(
    const ViewPortTransformProxy& viewport, CameraPositionProxy& camera, const BoundingVolume& volume,
    const Point3d& position, const Point3d& target, const Vector3d& up, double viewAngle);

// ---- Do-nothing implementations for tests
namespace test {

// Every query answers false or a zero value; every setter ignores its input.
class QVGUI_API NullCameraModeProxy : public CameraModeProxy {
 public:
  NullCameraModeProxy() noexcept = default;
  ~NullCameraModeProxy() override;
  bool isCameraTargetModeAuto() const override;
  bool isCameraPositionModeAuto() const override;
  bool isCameraUpVectorModeAuto() const override;
  bool isCamera2D() const override;
  void setCameraTarget(const Point3d&) override;
  void setCameraPosition(const Point3d&) override;
  void setCameraUpVector(const Vector3d&) override;
  Point3d getCameraPosition() const override;
  Point3d getCameraTarget() const override;
  Vector3d getCameraUpVector() const override;
  Point3d getPlotBoxAspectRatio() const override;
  void setView(double, double) override;
  double getViewAzimuth() const override;
  double getViewElevation() const override;
  bool isAxisReverse(int) const override;
};

class QVGUI_API NullCameraPositionProxy : public CameraPositionProxy {
 public:
  NullCameraPositionProxy() noexcept = default;
  ~NullCameraPositionProxy() override;
  void setPosition(const Point3d&) override;
  void setTarget(const Point3d&) override;
  void setUpVector(const Vector3d&) override;
};

// An empty viewport, identity transforms, every flag false.
class QVGUI_API NullViewPortTransformProxy : public ViewPortTransformProxy {
 public:
  NullViewPortTransformProxy() noexcept = default;
  ~NullViewPortTransformProxy() override;
  Rectangle2d getPosition() const override;
  Matrix4x4d getProjectionTransform() const override;
  Matrix4x4d getViewTransform() const override;
  bool isWarpToFillOff() const override;
  bool isCameraViewAngleModeAuto() const override;
  bool isXConstraint() const override;
};

}  // namespace test
}  // namespace camera_utils

// ---- Data-space utilities ----------------------------------------------------------------------

namespace data_space_utils {

// ---- Caller-implemented interfaces

// The limits and aspect ratios of an axes object, as the aspect-ratio rules
// read and publish them. Axis 0..2 is x, y, z; which 0 = minimum, 1 = maximum.
class QVGUI_API AxisLimitsProxy {
 public:
  virtual ~AxisLimitsProxy();
  virtual void setAxisLimits(int axis, double min, double max) = 0;
  [[nodiscard]] virtual double getAxisLimit(int axis, int which) const = 0;
  [[nodiscard]] virtual bool isManual(int axis) const = 0;
  [[nodiscard]] virtual bool getAxisScaleIsLog(int axis) const = 0;
  [[nodiscard]] virtual Vector3d getPlotBoxAspectRatio() const = 0;
  virtual void setPlotBoxAspectRatio(const Vector3d& ratio) = 0;
  [[nodiscard]] virtual Vector3d getDataAspectRatio() const = 0;
  virtual void setDataAspectRatio(const Vector3d& ratio) = 0;
  [[nodiscard]] virtual bool getPlotBoxAspectRatioModeIsAuto() const = 0;
  [[nodiscard]] virtual bool getDataAspectRatioModeIsAuto() const = 0;
  // The two-number form: plot box x / y and data aspect y / x.
  virtual void setOldStyleAspectRatio(double plotBoxXOverY, double dataYOverX) = 0;

 protected:
  AxisLimitsProxy() noexcept = default;
  AxisLimitsProxy(const AxisLimitsProxy&) = default;
  AxisLimitsProxy& operator=(const AxisLimitsProxy&) = default;
};

// The render limits (the limits actually drawn) of an axes object.
class QVGUI_API RenderLimitsProxy {
 public:
  virtual ~RenderLimitsProxy();
  [[nodiscard]] virtual double getRenderLimit(int axis, int which) const = 0;
  virtual void setRenderLimits(int axis, double min, double max) = 0;
  // Marks that both the plot-box and the data aspect ratio constrain the axis.
  virtual void setBothPlotAndDataAspectRatio_manual(int axis, bool both) = 0;
  // True when the axis' limits take part in the common scale.
  virtual bool isLimitStateNormal(int axis) = 0;

 protected:
  RenderLimitsProxy() noexcept = default;
  RenderLimitsProxy(const RenderLimitsProxy&) = default;
  RenderLimitsProxy& operator=(const RenderLimitsProxy&) = default;
};

// What makeNormalizingTransform reads. The reverse flags are plain data set
// through the protected constructor.
class QVGUI_API TransformProxy {
 public:
  virtual ~TransformProxy();
  [[nodiscard]] virtual double getRenderLimit(int axis, int which) const = 0;
  [[nodiscard]] virtual bool isLog(int axis) const = 0;
  [[nodiscard]] virtual Vector3d getPlotBoxAspectRatio() const = 0;

  // axis 0..2; not range-checked.
  [[nodiscard]] bool isAxisReverse(int axis) const noexcept { return reverse_[axis]; }

 protected:
  TransformProxy() noexcept = default;
  TransformProxy(bool xReverse, bool yReverse, bool zReverse) noexcept
      : reverse_{xReverse, yReverse, zReverse} {}
  TransformProxy(const TransformProxy&) = default;
  TransformProxy& operator=(const TransformProxy&) = default;

 private:
  bool reverse_[3] = {};
};

// How an axes object maps render-space data to its pixels.
//
// Render space is data space with log10 applied on logarithmic axes. A
// render-space point d goes to normalised coordinates n = d * scale + offset
// (per axis), and the render transform R (column-major 4x4, whose inverse
// getInvRenderTransform returns) takes n to pixels relative to the minimum
// corner of getSmallbounds (the axes' pixel rectangle in its window, y down),
// with depth in the box's z range reported by getBoxZRange (out[0] near,
// out[1] far, in R's depth units).
class QVGUI_API AxesScaleInfo {
 public:
  virtual ~AxesScaleInfo();
  [[nodiscard]] virtual const double* getInvRenderTransform() = 0;  // 16 values
  [[nodiscard]] virtual const double* getRenderOffset() = 0;        // 3 values
  [[nodiscard]] virtual const double* getRenderScale() = 0;         // 3 values
  [[nodiscard]] virtual Rectangle2i getSmallbounds() = 0;
  virtual void getBoxZRange(double* out) = 0;  // writes 2 values

 protected:
  AxesScaleInfo() noexcept = default;
  AxesScaleInfo(const AxesScaleInfo&) = default;
  AxesScaleInfo& operator=(const AxesScaleInfo&) = default;
};

// The box of an axes in data units and where its camera looks from. The
// camera is given in data units as well (only the side of the box it is on
// matters).
class QVGUI_API AxesBounds {
 public:
  virtual ~AxesBounds();
  [[nodiscard]] virtual double getRenderLimit(int axis, int which) = 0;
  [[nodiscard]] virtual bool isLog(int axis) = 0;
  [[nodiscard]] virtual Point3d getCameraPosition() = 0;
  [[nodiscard]] virtual Point3d getCameraTarget() = 0;

 protected:
  AxesBounds() noexcept = default;
  AxesBounds(const AxesBounds&) = default;
  AxesBounds& operator=(const AxesBounds&) = default;
};

// ---- Aspect ratios
//
// Keeps a box from growing more elongated than `limit` (largest over smallest
// component). Returns `ratios` itself, unnormalised, when it already is within
// the limit; otherwise a unit vector whose largest ratio is `limit`. The
// components are expected positive; zero or NaN components give NaN, never an
// exception.
[[nodiscard]] QVGUI_API Vector3d restrictAspectRatios(const Vector3d& ratios, double limit);

// Settles plot-box aspect ratio, data aspect ratio and automatic limits of an
// axes against one another, according to which of them the user fixed.
// Nothing is validated: zero spans and zero ratios propagate as infinities or
// NaN into what is published.
QVGUI_API void computeAspectRatios(RenderLimitsProxy& render, AxisLimitsProxy& limits, double limit);

// ---- Data-space transforms

// Render space (see AxesScaleInfo) to the normalised plot box: axis k's
// render limits map onto [-p_k / 2, p_k / 2], with p the plot-box aspect ratio
// divided by its largest component, so the box fits the cube [-0.5, 0.5]^3; a
// reversed axis maps its minimum to the upper end. Throws InvalidBoundsException
// for limits that are not finite, not increasing, or not positive on a
// logarithmic axis, and for a plot-box ratio that is not finite and positive.
[[nodiscard]] QVGUI_API Matrix4x4d makeNormalizingTransform(const TransformProxy& proxy);

// The pick line under a window pixel: the render-space segment from the
// box's near depth to its far depth (getBoxZRange) through that pixel. An
// invalid (default) segment when the inverse transform sends either end to or
// behind the eye (w <= 0) or the result is not finite.
[[nodiscard]] QVGUI_API LineSegment3d pixelToData(AxesScaleInfo& info, const Point2d& pixel);
// A window pixel with depth (in the render transform's depth units) back to
// render space. Throws InvalidWException when the inverse sends it to w <= 0.
[[nodiscard]] QVGUI_API Point3d pixelToData(AxesScaleInfo& info, const Point3d& pixel);

// The part of a render-space segment inside the axes box (render limits,
// log10 on logarithmic axes), in the segment's direction, in render space.
// An invalid segment when it misses the box, the input is invalid, or a limit
// is unusable (NaN, not positive on a logarithmic axis). Touching counts.
[[nodiscard]] QVGUI_API LineSegment3d intersectWithAxesBounds(const LineSegment3d& segment,
                                                              AxesBounds& bounds);

// The corner of the axes box where the main x and y axis lines meet, in data
// units: x and y take the limit on the camera's side of the box, z the limit
// away from the camera (the floor as seen from above). The x axis is drawn
// along (t, c.y, c.z), the y axis along (c.x, t, c.z). Where the camera is level
// with the target along an axis the minimum is taken.
[[nodiscard]] QVGUI_API Point3d computeMainAxesIntercepts(AxesBounds& bounds);

// ---- Do-nothing implementations for tests
namespace test {

class QVGUI_API NullAxisLimitsProxy : public AxisLimitsProxy {
 public:
  NullAxisLimitsProxy() noexcept = default;
  ~NullAxisLimitsProxy() override;
  void setAxisLimits(int, double, double) override;
  double getAxisLimit(int, int) const override;
  bool isManual(int) const override;
  bool getAxisScaleIsLog(int) const override;
  Vector3d getPlotBoxAspectRatio() const override;
  void setPlotBoxAspectRatio(const Vector3d&) override;
  Vector3d getDataAspectRatio() const override;
  void setDataAspectRatio(const Vector3d&) override;
  bool getPlotBoxAspectRatioModeIsAuto() const override;
  bool getDataAspectRatioModeIsAuto() const override;
  void setOldStyleAspectRatio(double, double) override;
};

class QVGUI_API NullRenderLimitsProxy : public RenderLimitsProxy {
 public:
  NullRenderLimitsProxy() noexcept = default;
  ~NullRenderLimitsProxy() override;
  double getRenderLimit(int, int) const override;
  void setRenderLimits(int, double, double) override;
  void setBothPlotAndDataAspectRatio_manual(int, bool) override;
  bool isLimitStateNormal(int) override;
};

// Render limits [0, 1], linear axes, plot box (1, 1, 1), nothing reversed.
class QVGUI_API NullTransformProxy : public TransformProxy {
 public:
  NullTransformProxy() noexcept = default;
  ~NullTransformProxy() override;
  double getRenderLimit(int, int which) const override;
  bool isLog(int) const override;
  Vector3d getPlotBoxAspectRatio() const override;
};

// Identity transforms, unit scale, zero offset, an empty pixel rectangle and
// the depth range [-1, 1].
class QVGUI_API NullAxesScaleInfo : public AxesScaleInfo {
 public:
  NullAxesScaleInfo() noexcept = default;
  ~NullAxesScaleInfo() override;
  const double* getInvRenderTransform() override;
  const double* getRenderOffset() override;
  const double* getRenderScale() override;
  Rectangle2i getSmallbounds() override;
  void getBoxZRange(double* out) override;
};

// Limits zero, linear axes, camera and target at the origin.
class QVGUI_API NullAxesBounds : public AxesBounds {
 public:
  NullAxesBounds() noexcept = default;
  ~NullAxesBounds() override;
  double getRenderLimit(int, int) override;
  bool isLog(int) override;
  Point3d getCameraPosition() override;
  Point3d getCameraTarget() override;
};

}  // namespace test
}  // namespace data_space_utils

// ---- Tick picker -------------------------------------------------------------------------------
//
// Chooses nice axis limits and tick positions. It keeps no axis state: it
// reads and writes everything through the caller's AxisDescriptor.
namespace tickpicker {

// The numeric values of these enumerations are the contract with the caller.
enum AxisType : int { kXAxis = 0, kYAxis = 1, kZAxis = 2 };
// Any value other than linear or logarithmic gets neither treatment.
enum AxisScale : int { kLinearScale = 0, kLogScale = 1 };
enum OuterLimitIndices : int { kLowerRenderLimit = 0, kUpperRenderLimit = 1 };
// The largest negative and the smallest positive data value of the axis.
enum InnerLimitIndices : int { kMaxNegativeData = 0, kMinPositiveData = 1 };
// Enclosing: the ticks include the limits, which may grow. Inside: the ticks
// stay within the limits. Any nonzero value selects inside behaviour; exactly
// kInside also steps the step mantissa down one nice value.
enum InOut : int { kEnclosing = 0, kInside = 1 };
enum LimitType : int { kLimitValues = 0, kLimitExponents = 1 };

// No axis shows more ticks than this. Tick counts, bounds and biases handed to
// the picker are held within it at every entry point, so that no count can
// overflow and every search ends in time proportional to it: a maximum count
// above it is lowered to it (a minimum above it then leaves nothing to
// search), a count or bias below -kMaxTickCount is raised to it, and the
// biased search's upper bias is taken at most as 100, where the search stops
// widening anyway.
inline constexpr int kMaxTickCount = 1000;

// How calculateMinorTickMarkPos lays minor ticks between the major ones.
struct TickGeometryDescriptor {
  // Linear: an even subdivision of every major step. Logarithmic: 2..9 times
  // each decade, or the skipped decades when the major ticks skip decades.
  AxisScale scale = kLinearScale;
  // Minor ticks continue beyond the outer major ticks up to these limits and
  // never leave them.
  double renderLower = 0.0;
  double renderUpper = 0.0;
  // Intervals per major step on linear axes; 0 chooses by the step's nice
  // mantissa (4 for a step of 2 times a power of ten, 5 otherwise).
  int linearSubdivisions = 0;
};

// The caller's view of its axes object. Operations keep this slot order.
class QVGUI_API AxisDescriptor {
 public:
  virtual ~AxisDescriptor();

  virtual bool isAxisLimitModeAuto(AxisType axis) const = 0;
  virtual AxisScale getAxisScale(AxisType axis) const = 0;
  // The plot-box or data aspect ratio is fixed by the user.
  virtual bool isPbarDarInManual(AxisType axis) const = 0;
  virtual double getRenderLimit(AxisType axis, OuterLimitIndices which) const = 0;
  // The allowed tick-count range of the axis.
  virtual void normalized3ToNumTics(AxisType axis, int* minTicks, int* maxTicks) = 0;
  // The largest negative (index 0) or smallest positive (index 1) data value;
  // -DBL_MAX or +DBL_MAX respectively when unknown.
  virtual double getInnerLimit(AxisType axis, InnerLimitIndices which) const = 0;
  virtual void setRenderLimit(AxisType axis, OuterLimitIndices which, double value) = 0;
  // Publishes the chosen limits.
  virtual void setAxisLimitsData(AxisType axis, double lower, double upper) = 0;
  virtual void setNumTicksInRange(AxisType axis, int count) = 0;
  // Index of the first tick inside the range.
  virtual void setOffsetToGoodTick(AxisType axis, int offset) = 0;
  virtual void setMinorTickSpacing(AxisType axis, AxisScale scale) = 0;
  // Hands over the tick positions; the receiver owns (and deletes) the record.
  virtual void setAxisTickData(AxisType axis, NReals* ticks) = 0;
  virtual int getAxisPlane(AxisType axis, AxisType other) const = 0;
  virtual double getNormalizedAxisLength(AxisType axis) const = 0;
  virtual int getAxisTickDir() const = 0;
  virtual double getCurrentDimensionTickLength() const = 0;
  virtual AxisType getAdjacentAxis(AxisType axis) const = 0;
  virtual bool isAxisTickModeAuto(AxisType axis) const = 0;
  // A user-given tick and the number of them.
  virtual double getTickMarkPos(AxisType axis, int index) = 0;
  virtual int getNumTickMarkPos(AxisType axis) = 0;
  virtual int getOffsetToGoodTick(AxisType axis) const = 0;
  virtual void incrementNumTicksInRange(AxisType axis) = 0;
  virtual int getNumTicksInRange(AxisType axis) const = 0;

 protected:
  AxisDescriptor() = default;
  AxisDescriptor(const AxisDescriptor&) = default;
  AxisDescriptor& operator=(const AxisDescriptor&) = default;
};

// Nice limits and tick count for a linear range. lower/upper are in/out. The
// tick counts minTicks..maxTicks are all searched; returns the chosen count, 0
// when none qualifies (or minTicks > maxTicks), 3 for an infinite limit (the
// limits are then left alone). A reversed or zero-width range is searched as
// [upper - 0.05, lower + 0.05].
QVGUI_API int calculateLinearTicks(double* lower, double* upper, int minTicks, int maxTicks, InOut mode);
// Decade limits for a logarithmic range given in data units; with
// kLimitExponents the limits come back as base-10 exponents.
QVGUI_API int calculateLogTicks(double* lower, double* upper, int maxTicks, LimitType limitType);
// Inside-mode linear ticks; when no count in minTicks..maxTicks fits, widens
// the search (biased by biasLow/biasHigh) until one does. 0 when none does.
QVGUI_API int pickBiasedTickAndLimits(AxisType axis, double* lower, double* upper, int minTicks, int maxTicks,
                                      int biasLow, int biasHigh);
// The tick-count range that fits a segment p0-p1 drawn with the given label
// spacings, capped at `cap`.
QVGUI_API void estimateNumberOfTicks(int* outMin, int* outMax, int low, int cap, const Point2d& p0,
                                     const Point2d& p1, double spacingY, double spacingX, bool inclusive);
// Makes the automatic limits of one axis (or of x, y and z) nice.
QVGUI_API void nicefyLimits(AxisDescriptor& desc, AxisType axis);
QVGUI_API void nicefyLimits(AxisDescriptor& desc);
// Chooses the ticks of one axis (or of x, y and z) and hands them over with
// setAxisTickData.
QVGUI_API void computeAxisTicks(AxisDescriptor& desc, AxisType axis, int biasLow, int biasHigh);
QVGUI_API void computeAxisTicks(AxisDescriptor& desc, int biasLow, int biasHigh);
// The major tick positions; the caller owns the returned record. Linear axes:
// numTicks evenly spaced values from tickLower, plus a render limit lying a
// full step or more beyond them. Logarithmic axes (tick limits are exponents):
// powers of ten inside the render limits, every decade or every few decades
// for long ranges; a range within about one decade gets 1-2-5 (then 1..9)
// multiples of powers of ten, or linear nice ticks; a range that reaches zero
// shows decades on one sign side only, from its smallest known data value.
[[nodiscard]] QVGUI_API NReals* calculateTickMarkPos(AxisDescriptor& desc, AxisType axis, int numTicks,
                                                     double tickLower, double tickUpper, double renderLower,
                                                     double renderUpper, AxisScale scale);
// Writes the minor tick positions, ascending, into out[0 .. capacity); the
// slots after the last minor tick are set to NaN.
QVGUI_API void calculateMinorTickMarkPos(AxisDescriptor& desc, AxisType axis, double* majorTicks,
                                         int numMajor, double* out, const TickGeometryDescriptor& geometry,
                                         int capacity);

namespace test {

// Answers false, 0 or 0.0 to every query and ignores every update; a handed-over
// tick record is deleted.
class QVGUI_API NullAxisDescriptor : public AxisDescriptor {
 public:
  NullAxisDescriptor() = default;
  ~NullAxisDescriptor() override;

  bool isAxisLimitModeAuto(AxisType) const override { return false; }
  AxisScale getAxisScale(AxisType) const override { return kLinearScale; }
  bool isPbarDarInManual(AxisType) const override { return false; }
  double getRenderLimit(AxisType, OuterLimitIndices) const override { return 0.0; }
  void normalized3ToNumTics(AxisType, int*, int*) override {}
  double getInnerLimit(AxisType, InnerLimitIndices) const override { return 0.0; }
  void setRenderLimit(AxisType, OuterLimitIndices, double) override {}
  void setAxisLimitsData(AxisType, double, double) override {}
  void setNumTicksInRange(AxisType, int) override {}
  void setOffsetToGoodTick(AxisType, int) override {}
  void setMinorTickSpacing(AxisType, AxisScale) override {}
  void setAxisTickData(AxisType, NReals* ticks) override;
  int getAxisPlane(AxisType, AxisType) const override { return 0; }
  double getNormalizedAxisLength(AxisType) const override { return 0.0; }
  int getAxisTickDir() const override { return 0; }
  double getCurrentDimensionTickLength() const override { return 0.0; }
  AxisType getAdjacentAxis(AxisType) const override { return kXAxis; }
  bool isAxisTickModeAuto(AxisType) const override { return false; }
  double getTickMarkPos(AxisType, int) override { return 0.0; }
  int getNumTickMarkPos(AxisType) override { return 0; }
  int getOffsetToGoodTick(AxisType) const override { return 0; }
  void incrementNumTicksInRange(AxisType) override {}
  int getNumTicksInRange(AxisType) const override { return 0; }
};

}  // namespace test
}  // namespace tickpicker
}  // namespace gui_objects

// ---- Extents of host arrays --------------------------------------------------------------------
namespace gk {

// Extents of the numeric host arrays (classes double, single, int8 .. uint64).
class QVGUI_API Limits {
 public:
  Limits() = delete;

  [[nodiscard]] static bool isSupportedType(zrClassID classId) noexcept;
  // Every element converted to double and added as a sample: NaN and infinite
  // elements are skipped. A null, unsupported or empty array gives empty
  // extents.
  [[nodiscard]] static gui_objects::DataExtents computeExtents(const zrArray_tag* array);
  // The same over column `column` of the M x N view of the array. Empty
  // extents unless the array has elements, N > 1 and column < N (a single
  // column therefore gives empty extents).
  [[nodiscard]] static gui_objects::DataExtents computeExtents(const zrArray_tag* array,
                                                               std::uint64_t column);
};

}  // namespace gk

// Data space, camera and axes: data extents and limit constraints, camera and
// aspect-ratio rules, and the tick picker that chooses nice limits and ticks.
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

// ---- Data-space utilities ----------------------------------------------------------------------

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
// The major tick positions; the caller owns the returned record.
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

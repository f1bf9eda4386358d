// Data extents: a range that also tracks the largest negative and smallest
// positive value, its checked constructors, sample accumulation and merging.
#include <cmath>
#include <ostream>

#include "qvgui/dataspace.h"

namespace gui_objects {
namespace {

// The single place where inconsistent extents are rejected.
[[noreturn]] void throwInvalidDataExtents() { throw InvalidDataExtentsException(); }

// Extents wholly on one side of zero, written for the positive side (the
// negative side passes its values negated): the other side's value is absent,
// and the nearest value to zero is the bound nearest zero, except that a range
// from zero may leave it unknown (never zero).
void checkOneSided(double otherSide, double nearBound, double nearest, double farBound) {
  if (!std::isnan(otherSide)) throwInvalidDataExtents();
  if (nearBound == 0 ? nearest == 0 : !(nearest == nearBound)) throwInvalidDataExtents();
  if (nearest > farBound) throwInvalidDataExtents();
}

// Exact equality where an absent value matches only an absent value.
bool sameValue(double a, double b) noexcept { return a == b || (std::isnan(a) && std::isnan(b)); }

}  // namespace

// ---- Construction ------------------------------------------------------------------------------

DataExtents::DataExtents(double min, double max) : initialized_(true) {
  if (!std::isfinite(min) || !std::isfinite(max) || min > max) throwInvalidDataExtents();
  min_ = min;
  max_ = max;
  if (min == max) {
    maxNegative_ = min < 0 ? min : kAbsent;
    minPositive_ = min > 0 ? min : kAbsent;
  } else if (min == 0) {
    minPositive_ = max;
  } else if (min > 0) {
    minPositive_ = min;
  } else if (max > 0) {
    // Nothing is known about the samples nearest zero; the ends are the only
    // values known to exist.
    maxNegative_ = min;
    minPositive_ = max;
  } else if (max < 0) {
    maxNegative_ = max;
  } else {
    maxNegative_ = min;
  }
}

// The checks are deliberately exactly these and no stricter: callers build
// extents from partial knowledge (for example min == 0 with no known positive).
DataExtents::DataExtents(double min, double maxNegative, double minPositive, double max)
    : initialized_(true) {
  if (!std::isfinite(min) || !std::isfinite(max)) throwInvalidDataExtents();
  if (min >= 0) {
    checkOneSided(maxNegative, min, minPositive, max);
  } else if (max <= 0) {
    checkOneSided(minPositive, -max, -maxNegative, -min);
  } else {
    if (min > maxNegative || maxNegative > minPositive || minPositive > max || std::isnan(maxNegative) ||
        std::isnan(minPositive)) {
      throwInvalidDataExtents();
    }
  }
  min_ = min;
  maxNegative_ = maxNegative;
  minPositive_ = minPositive;
  max_ = max;
}

// ---- Accumulation ------------------------------------------------------------------------------

DataExtents& DataExtents::operator+=(double v) noexcept {
  if (!std::isfinite(v)) return *this;
  if (!initialized_) {
    min_ = max_ = v;
    maxNegative_ = v < 0 ? v : kAbsent;
    minPositive_ = v > 0 ? v : kAbsent;
    initialized_ = true;
    return *this;
  }
  // The first value on either side of zero is captured here, when it extends
  // the range across zero; the tracked values are NaN until then and every
  // comparison below with them is false.
  if (min_ > v) {
    if (v < 0 && !(min_ < 0)) maxNegative_ = v;
    min_ = v;
  } else if (v > max_) {
    if (v > 0 && !(max_ > 0)) minPositive_ = v;
    max_ = v;
  }
  if (v < 0 && v > maxNegative_) maxNegative_ = v;
  if (v > 0 && minPositive_ > v) minPositive_ = v;
  return *this;
}

DataExtents& DataExtents::operator+=(const DataExtents& o) noexcept {
  if (!initialized_) {
    *this = o;
    return *this;
  }
  if (!o.initialized_) return *this;
  if (o.min_ < 0) maxNegative_ = min_ < 0 ? std::fmax(maxNegative_, o.maxNegative_) : o.maxNegative_;
  if (o.max_ > 0) minPositive_ = max_ > 0 ? std::fmin(minPositive_, o.minPositive_) : o.minPositive_;
  if (o.min_ < min_) min_ = o.min_;
  if (o.max_ > max_) max_ = o.max_;
  return *this;
}

DataExtents operator+(const DataExtents& a, const DataExtents& b) noexcept {
  DataExtents result(a);
  result += b;
  return result;
}

// ---- Comparison and printing -------------------------------------------------------------------

bool operator==(const DataExtents& a, const DataExtents& b) noexcept {
  return a.initialized() == b.initialized() && sameValue(a.getMinValue(), b.getMinValue()) &&
         sameValue(a.getMaxNegative(), b.getMaxNegative()) &&
         sameValue(a.getMinPositive(), b.getMinPositive()) && sameValue(a.getMaxValue(), b.getMaxValue());
}

bool nearlyEqual(const DataExtents& a, const DataExtents& b) noexcept {
  if (!a.initialized() && !b.initialized()) return true;
  if (a.initialized() != b.initialized()) return false;
  const bool positive = a.getMaxValue() > 0;
  const bool negative = a.getMinValue() < 0;
  if (positive != (b.getMaxValue() > 0) || negative != (b.getMinValue() < 0)) return false;
  if (positive && !nearlyEqual(a.getMinPositive(), b.getMinPositive())) return false;
  if (negative && !nearlyEqual(a.getMaxNegative(), b.getMaxNegative())) return false;
  return nearlyEqual(a.getMinValue(), b.getMinValue()) && nearlyEqual(a.getMaxValue(), b.getMaxValue());
}

std::ostream& operator<<(std::ostream& os, const DataExtents& e) {
  if (!e.initialized()) return os << "DataExtents(uninitialized)";
  return os << "DataExtents(min " << e.getMinValue() << ", maxNeg " << e.getMaxNegative() << ", minPos "
            << e.getMinPositive() << ", max " << e.getMaxValue() << ")";
}

// ---- Bundles -----------------------------------------------------------------------------------

XYZDataExtents& XYZDataExtents::operator+=(const XYZDataExtents& other) noexcept {
  x_ += other.x_;
  y_ += other.y_;
  z_ += other.z_;
  return *this;
}

bool operator==(const XYZDataExtents& a, const XYZDataExtents& b) noexcept {
  return a.getXDataExtents() == b.getXDataExtents() && a.getYDataExtents() == b.getYDataExtents() &&
         a.getZDataExtents() == b.getZDataExtents();
}

std::ostream& operator<<(std::ostream& os, const XYZDataExtents& e) {
  return os << "{x " << e.getXDataExtents() << ", y " << e.getYDataExtents() << ", z " << e.getZDataExtents()
            << "}";
}

ColorAlphaDataExtents& ColorAlphaDataExtents::operator+=(const ColorAlphaDataExtents& other) noexcept {
  color_ += other.color_;
  alpha_ += other.alpha_;
  return *this;
}

bool operator==(const ColorAlphaDataExtents& a, const ColorAlphaDataExtents& b) noexcept {
  return a.getColorDataExtents() == b.getColorDataExtents() &&
         a.getAlphaDataExtents() == b.getAlphaDataExtents();
}

std::ostream& operator<<(std::ostream& os, const ColorAlphaDataExtents& e) {
  return os << "{color " << e.getColorDataExtents() << ", alpha " << e.getAlphaDataExtents() << "}";
}

}  // namespace gui_objects

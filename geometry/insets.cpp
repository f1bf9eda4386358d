// Insets of rectangles: applying, scaling and renormalising fractional insets.
#include <cfloat>
#include <ostream>

#include "geometry/shapes_p.h"

namespace gui_objects {

namespace {
[[noreturn]] void raiseInset() { raiseTag<InvalidInsetException>(); }
}  // namespace

Inset2d::Inset2d(double xMin, double yMin, double xMax, double yMax)
    : xMin_(xMin), yMin_(yMin), xMax_(xMax), yMax_(yMax) {
  if (xMin < 0.0 || yMin < 0.0 || xMax < 0.0 || yMax < 0.0) raiseInset();
}

Rectangle2d Inset2d::apply(const Rectangle2d& r) const {
  if (xMin_ + xMax_ > r.getWidth() || yMin_ + yMax_ > r.getHeight()) raiseInset();
  const double x0 = r.getXMin() + xMin_, x1 = r.getXMax() - xMax_;
  const double y0 = r.getYMin() + yMin_, y1 = r.getYMax() - yMax_;
  // Insets that fill the rectangle exactly can still cross by rounding.
  if (!(x0 <= x1) || !(y0 <= y1)) raiseInset();
  return Rectangle2d(x0, y0, x1, y1);
}

Rectangle2d Inset2d::unapply(const Rectangle2d& r) const {
  return Rectangle2d(Point2d(r.getXMin() - xMin_, r.getYMin() - yMin_),
                     Point2d(r.getXMax() + xMax_, r.getYMax() + yMax_));
}

Inset2d& Inset2d::scaleby(double sx, double sy) {
  if (sx < 0.0 || sy < 0.0) raiseInset();
  xMin_ *= sx;
  xMax_ *= sx;
  yMin_ *= sy;
  yMax_ *= sy;
  return *this;
}

Inset2d& Inset2d::renormalize(double w, double h) {
  // One double epsilon of margin keeps the divisions below well away from 0.
  if (xMin_ + xMax_ + DBL_EPSILON >= 1.0 || yMin_ + yMax_ + DBL_EPSILON >= 1.0) raiseInset();
  return scaleby(w / (1.0 - xMin_ - xMax_), h / (1.0 - yMin_ - yMax_));
}

Inset2d Inset2d::max(const Inset2d& other) const noexcept {
  Inset2d out(*this);
  if (other.xMin_ > out.xMin_) out.xMin_ = other.xMin_;
  if (other.yMin_ > out.yMin_) out.yMin_ = other.yMin_;
  if (other.xMax_ > out.xMax_) out.xMax_ = other.xMax_;
  if (other.yMax_ > out.yMax_) out.yMax_ = other.yMax_;
  return out;
}

bool operator==(const Inset2d& a, const Inset2d& b) noexcept {
  return a.getXMin() == b.getXMin() && a.getYMin() == b.getYMin() && a.getXMax() == b.getXMax() &&
         a.getYMax() == b.getYMax();
}
bool operator!=(const Inset2d& a, const Inset2d& b) noexcept { return !(a == b); }

bool nearlyEqual(const Inset2d& a, const Inset2d& b) noexcept {
  return nearlyEqual(a.getXMin(), b.getXMin()) && nearlyEqual(a.getYMin(), b.getYMin()) &&
         nearlyEqual(a.getXMax(), b.getXMax()) && nearlyEqual(a.getYMax(), b.getYMax());
}

Inset2d interpolate(double t, const Inset2d& a, const Inset2d& b) {
  auto lerp = [t](double x, double y) { return x + (y - x) * t; };
  return Inset2d(lerp(a.getXMin(), b.getXMin()), lerp(a.getYMin(), b.getYMin()),
                 lerp(a.getXMax(), b.getXMax()), lerp(a.getYMax(), b.getYMax()));
}

std::ostream& operator<<(std::ostream& os, const Inset2d& i) {
  return os << "Inset2d(" << i.getXMin() << ", " << i.getYMin() << ", " << i.getXMax() << ", " << i.getYMax()
            << ")";
}

}  // namespace gui_objects

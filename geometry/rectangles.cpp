// Integer and floating rectangles: construction with the crossing check,
// insets, unions and the outward rounding from floating to integer.
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>

#include "geometry/integer_p.h"
#include "geometry/shapes_p.h"

namespace gui_objects {

template <class E>
void raiseTag() {
  throw E();
}
template void raiseTag<ParallelException>();
template void raiseTag<InvalidQuadException>();
template void raiseTag<InvalidInsetException>();
template void raiseTag<RectangleCrossedPointsException>();

namespace {

[[noreturn]] void raiseCrossed() { raiseTag<RectangleCrossedPointsException>(); }

// Exact comparison of the four edges, for either rectangle type.
template <class R>
bool sameEdges(const R& a, const R& b) noexcept {
  return a.getXMin() == b.getXMin() && a.getYMin() == b.getYMin() && a.getXMax() == b.getXMax() &&
         a.getYMax() == b.getYMax();
}

// Written as !(a <= b) so that NaN limits count as crossed.
bool crossed(double lo, double hi) noexcept { return !(lo <= hi); }

}  // namespace

// ---- Rectangle2i ------------------------------------------------------------------

Rectangle2i::Rectangle2i(std::int32_t xMin, std::int32_t yMin, std::int32_t xMax, std::int32_t yMax)
    : yMin_(yMin), xMin_(xMin), yMax_(yMax), xMax_(xMax) {
  if (xMin > xMax || yMin > yMax) raiseCrossed();
}

Rectangle2i::Rectangle2i(const Point2i& a, const Point2i& b) noexcept {
  const Point2i lo = min_point(a, b);
  const Point2i hi = max_point(a, b);
  xMin_ = lo.getX();
  yMin_ = lo.getY();
  xMax_ = hi.getX();
  yMax_ = hi.getY();
}

Rectangle2i::Rectangle2i(const Point2i& origin, std::int32_t width, std::int32_t height)
    : Rectangle2i(origin.getX(), origin.getY(), wrap::add(origin.getX(), width),
                  wrap::add(origin.getY(), height)) {
  // A size that wraps past the 32-bit range crosses as surely as a negative one.
  if (width < 0 || height < 0) raiseCrossed();
}

Rectangle2i::Rectangle2i(const qvrect& r) : yMin_(r.top), xMin_(r.left), yMax_(r.bottom), xMax_(r.right) {
  if (xMin_ > xMax_ || yMin_ > yMax_) raiseCrossed();
}

std::int32_t Rectangle2i::getWidth() const noexcept { return wrap::sub(xMax_, xMin_); }
std::int32_t Rectangle2i::getHeight() const noexcept { return wrap::sub(yMax_, yMin_); }

Point2i Rectangle2i::getCenter() const noexcept {
  auto mid = [](std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>((static_cast<std::int64_t>(a) + b) / 2);
  };
  return Point2i(mid(xMin_, xMax_), mid(yMin_, yMax_));
}

bool Rectangle2i::isInside(const Point2i& p) const noexcept {
  return xMin_ <= p.getX() && p.getX() <= xMax_ && yMin_ <= p.getY() && p.getY() <= yMax_;
}

bool Rectangle2i::sameSize(const Rectangle2i& other) const noexcept {
  return getWidth() == other.getWidth() && getHeight() == other.getHeight();
}

Rectangle2i& Rectangle2i::operator+=(const Vector2i& d) noexcept {
  xMin_ = wrap::add(xMin_, d.getX());
  xMax_ = wrap::add(xMax_, d.getX());
  yMin_ = wrap::add(yMin_, d.getY());
  yMax_ = wrap::add(yMax_, d.getY());
  return *this;
}

Rectangle2i& Rectangle2i::operator-=(const Vector2i& d) noexcept {
  xMin_ = wrap::sub(xMin_, d.getX());
  xMax_ = wrap::sub(xMax_, d.getX());
  yMin_ = wrap::sub(yMin_, d.getY());
  yMax_ = wrap::sub(yMax_, d.getY());
  return *this;
}

void Rectangle2i::inset(const Vector2i& d) {
  // 64-bit so that a huge outset cannot wrap into a valid-looking rectangle.
  const std::int64_t x0 = std::int64_t{xMin_} + d.getX(), x1 = std::int64_t{xMax_} - d.getX();
  const std::int64_t y0 = std::int64_t{yMin_} + d.getY(), y1 = std::int64_t{yMax_} - d.getY();
  constexpr std::int64_t lo = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t hi = std::numeric_limits<std::int32_t>::max();
  if (x0 > x1 || y0 > y1 || x0 < lo || y0 < lo || x1 > hi || y1 > hi) raiseCrossed();
  xMin_ = static_cast<std::int32_t>(x0);
  xMax_ = static_cast<std::int32_t>(x1);
  yMin_ = static_cast<std::int32_t>(y0);
  yMax_ = static_cast<std::int32_t>(y1);
}

void Rectangle2i::outset(const Vector2i& d) {
  const std::int64_t x0 = std::int64_t{xMin_} - d.getX(), x1 = std::int64_t{xMax_} + d.getX();
  const std::int64_t y0 = std::int64_t{yMin_} - d.getY(), y1 = std::int64_t{yMax_} + d.getY();
  constexpr std::int64_t lo = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t hi = std::numeric_limits<std::int32_t>::max();
  if (x0 > x1 || y0 > y1 || x0 < lo || y0 < lo || x1 > hi || y1 > hi) raiseCrossed();
  xMin_ = static_cast<std::int32_t>(x0);
  xMax_ = static_cast<std::int32_t>(x1);
  yMin_ = static_cast<std::int32_t>(y0);
  yMax_ = static_cast<std::int32_t>(y1);
}

Rectangle2d Rectangle2i::asRectangle2d() const noexcept {
  return Rectangle2d(Point2d(xMin_, yMin_), Point2d(xMax_, yMax_));
}

bool operator==(const Rectangle2i& a, const Rectangle2i& b) noexcept { return sameEdges(a, b); }
bool operator!=(const Rectangle2i& a, const Rectangle2i& b) noexcept { return !(a == b); }

Rectangle2i operator+(const Rectangle2i& r, const Vector2i& d) noexcept {
  Rectangle2i moved = r;
  return moved += d;
}
Rectangle2i operator-(const Rectangle2i& r, const Vector2i& d) noexcept {
  Rectangle2i moved = r;
  return moved -= d;
}

Rectangle2i unionRect(const Rectangle2i& a, const Rectangle2i& b) noexcept {
  return Rectangle2i(Point2i(std::min(a.getXMin(), b.getXMin()), std::min(a.getYMin(), b.getYMin())),
                     Point2i(std::max(a.getXMax(), b.getXMax()), std::max(a.getYMax(), b.getYMax())));
}

std::ostream& operator<<(std::ostream& os, const Rectangle2i& r) {
  return os << "Rectangle2i(x " << r.getXMin() << ".." << r.getXMax() << ", y " << r.getYMin() << ".."
            << r.getYMax() << ")";
}

// ---- Rectangle2d ------------------------------------------------------------------

Rectangle2d::Rectangle2d(double xMin, double yMin, double xMax, double yMax)
    : yMin_(yMin), xMin_(xMin), yMax_(yMax), xMax_(xMax) {
  if (crossed(xMin, xMax) || crossed(yMin, yMax)) raiseCrossed();
}

Rectangle2d::Rectangle2d(const Point2d& a, const Point2d& b) noexcept {
  const Point2d lo = min_point(a, b);
  const Point2d hi = max_point(a, b);
  xMin_ = lo.getX();
  yMin_ = lo.getY();
  xMax_ = hi.getX();
  yMax_ = hi.getY();
}

Rectangle2d::Rectangle2d(const Point2d& origin, double width, double height)
    : Rectangle2d(origin.getX(), origin.getY(), origin.getX() + width, origin.getY() + height) {}

Rectangle2d::Rectangle2d(const Real_rect& r) : Rectangle2d(r.left, r.top, r.right, r.bottom) {}

Point2d Rectangle2d::getCenter() const noexcept {
  return Point2d(xMin_ + (xMax_ - xMin_) * 0.5, yMin_ + (yMax_ - yMin_) * 0.5);
}

bool Rectangle2d::isInside(const Point2d& p) const noexcept {
  return xMin_ <= p.getX() && p.getX() <= xMax_ && yMin_ <= p.getY() && p.getY() <= yMax_;
}

bool Rectangle2d::sameSize(const Rectangle2d& other) const noexcept {
  return getWidth() == other.getWidth() && getHeight() == other.getHeight();
}

Rectangle2d& Rectangle2d::operator+=(const Vector2d& d) noexcept {
  xMin_ += d.getX();
  xMax_ += d.getX();
  yMin_ += d.getY();
  yMax_ += d.getY();
  return *this;
}

Rectangle2d& Rectangle2d::operator-=(const Vector2d& d) noexcept {
  xMin_ -= d.getX();
  xMax_ -= d.getX();
  yMin_ -= d.getY();
  yMax_ -= d.getY();
  return *this;
}

void Rectangle2d::inset(const Vector2d& d) {
  const double x0 = xMin_ + d.getX(), x1 = xMax_ - d.getX();
  const double y0 = yMin_ + d.getY(), y1 = yMax_ - d.getY();
  if (crossed(x0, x1) || crossed(y0, y1)) raiseCrossed();
  xMin_ = x0;
  xMax_ = x1;
  yMin_ = y0;
  yMax_ = y1;
}

void Rectangle2d::outset(const Vector2d& d) { inset(-d); }

namespace {

// The spacing of doubles at v: 2^(e - 53) for v = m 2^e, m in [0.5, 1); the
// smallest subnormal at 0 and wherever the spacing would underflow.
double ulp(double v) noexcept {
  int e = 0;
  std::frexp(v, &e);
  const double spacing = std::ldexp(1.0, e - 53);
  return spacing > 0.0 ? spacing : std::numeric_limits<double>::denorm_min();
}

// Truncation to 32 bits that saturates instead of being undefined; NaN cannot
// reach here (the rectangle would be crossed).
std::int32_t toInt32(double v) noexcept {
  if (v <= static_cast<double>(std::numeric_limits<std::int32_t>::min()))
    return std::numeric_limits<std::int32_t>::min();
  if (v >= static_cast<double>(std::numeric_limits<std::int32_t>::max()))
    return std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(v);
}

double roundMaxOutward(double v) noexcept {
  const double r = std::round(v);
  return r + 2.0 * ulp(v) > v ? r : r + 1.0;
}

double roundMinOutward(double v) noexcept {
  const double r = std::round(v);
  return v > r - 2.0 * ulp(v) ? r : r - 1.0;
}

}  // namespace

Rectangle2i Rectangle2d::asRectangle2i() const {
  return Rectangle2i(toInt32(roundMinOutward(xMin_)), toInt32(roundMinOutward(yMin_)),
                     toInt32(roundMaxOutward(xMax_)), toInt32(roundMaxOutward(yMax_)));
}

bool operator==(const Rectangle2d& a, const Rectangle2d& b) noexcept { return sameEdges(a, b); }
bool operator!=(const Rectangle2d& a, const Rectangle2d& b) noexcept { return !(a == b); }

Rectangle2d operator+(const Rectangle2d& r, const Vector2d& d) noexcept { return Rectangle2d(r) += d; }
Rectangle2d operator-(const Rectangle2d& r, const Vector2d& d) noexcept { return Rectangle2d(r) -= d; }

Rectangle2d unionRect(const Rectangle2d& a, const Rectangle2d& b) noexcept {
  return Rectangle2d(min_point(Point2d(a.getXMin(), a.getYMin()), Point2d(b.getXMin(), b.getYMin())),
                     max_point(Point2d(a.getXMax(), a.getYMax()), Point2d(b.getXMax(), b.getYMax())));
}

bool nearlyEqual(const Rectangle2d& a, const Rectangle2d& b) noexcept {
  return nearlyEqual(a.getXMin(), b.getXMin()) && nearlyEqual(a.getYMin(), b.getYMin()) &&
         nearlyEqual(a.getXMax(), b.getXMax()) && nearlyEqual(a.getYMax(), b.getYMax());
}

std::ostream& operator<<(std::ostream& os, const Rectangle2d& r) {
  return os << "Rectangle2d(x " << r.getXMin() << ".." << r.getXMax() << ", y " << r.getYMin() << ".."
            << r.getYMax() << ")";
}

}  // namespace gui_objects

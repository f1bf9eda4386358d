// Point classes: conversions, distances, comparisons, interpolation and the
// component-wise minimum and maximum.
#include <cmath>
#include <limits>

#include "geometry/exceptions_p.h"
#include "geometry/integer_p.h"
#include "qvgui/geometry.h"

namespace gui_objects {
namespace {

// Truncation toward zero that is defined for every input: NaN gives 0 and
// values beyond the 32-bit range stick at its ends.
std::int32_t truncateToInt(double v) noexcept {
  if (std::isnan(v)) return 0;
  if (v >= 2147483647.0) return std::numeric_limits<std::int32_t>::max();
  if (v <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(v);
}

// One component of the lexicographic order: 1 decides "less", -1 decides
// "not less", 0 defers (equal or unordered because of NaN).
template <class T>
int orderStep(T a, T b) noexcept {
  if (a < b) return 1;
  if (a > b) return -1;
  return 0;
}

template <class T>
bool lexicographicLess(std::initializer_list<T> a, std::initializer_list<T> b) noexcept {
  auto ib = b.begin();
  for (T av : a) {
    const int step = orderStep(av, *ib++);
    if (step != 0) return step > 0;
  }
  return false;
}

template <class T>
T takeIfLess(T a, T b) noexcept {
  return b < a ? b : a;
}
template <class T>
T takeIfGreater(T a, T b) noexcept {
  return b > a ? b : a;
}

// The float rule: difference in float, the rest in double, narrowed at the end.
float lerpFloat(double t, float a, float b) noexcept {
  const float difference = b - a;
  return static_cast<float>(static_cast<double>(a) + static_cast<double>(difference) * t);
}

double lerp(double t, double a, double b) noexcept { return a + (b - a) * t; }

}  // namespace

// ---- Point2i ---------------------------------------------------------------------

Point2i::operator qvpoint() const {
  if (x_ < -32768 || x_ > 32767 || y_ < -32768 || y_ > 32767) raise<ShortOverflowException>();
  return qvpoint{static_cast<std::int16_t>(y_), static_cast<std::int16_t>(x_)};
}

Point2f Point2i::asPoint2f() const noexcept {
  return Point2f(static_cast<float>(x_), static_cast<float>(y_));
}
Point2d Point2i::asPoint2d() const noexcept { return Point2d(x_, y_); }

double Point2i::distance(const Point2i& other) const noexcept {
  return std::hypot(static_cast<double>(x_) - other.x_, static_cast<double>(y_) - other.y_);
}

Point2i& Point2i::operator+=(const Vector2i& v) noexcept {
  x_ = wrap::add(x_, v.getX());
  y_ = wrap::add(y_, v.getY());
  return *this;
}

Point2i& Point2i::operator-=(const Vector2i& v) noexcept {
  x_ = wrap::sub(x_, v.getX());
  y_ = wrap::sub(y_, v.getY());
  return *this;
}

// ---- Point2f, Point2d ------------------------------------------------------------

Point2i Point2f::asPoint2i() const noexcept { return Point2i(truncateToInt(x_), truncateToInt(y_)); }
Point2d Point2f::asPoint2d() const noexcept { return Point2d(x_, y_); }

double Point2f::distance(const Point2f& other) const noexcept {
  return std::hypot(static_cast<double>(x_) - other.x_, static_cast<double>(y_) - other.y_);
}

Point2i Point2d::asPoint2i() const noexcept { return Point2i(truncateToInt(x_), truncateToInt(y_)); }
Point2f Point2d::asPoint2f() const noexcept {
  return Point2f(static_cast<float>(x_), static_cast<float>(y_));
}
double Point2d::distance(const Point2d& other) const noexcept {
  return std::hypot(x_ - other.x_, y_ - other.y_);
}

Point2d& Point2d::operator+=(const Vector2d& v) noexcept {
  x_ += v.getX();
  y_ += v.getY();
  return *this;
}

Point2d& Point2d::operator-=(const Vector2d& v) noexcept {
  x_ -= v.getX();
  y_ -= v.getY();
  return *this;
}

// ---- Point3f, Point3d ------------------------------------------------------------

Point3d Point3f::asPoint3d() const noexcept { return Point3d(x_, y_, z_); }
double Point3f::distance(const Point3f& other) const noexcept {
  return asPoint3d().distance(other.asPoint3d());
}

Point3f Point3d::asPoint3f() const noexcept {
  return Point3f(static_cast<float>(x_), static_cast<float>(y_), static_cast<float>(z_));
}
double Point3d::distance(const Point3d& other) const noexcept { return (*this - other).length(); }

Point3d& Point3d::operator+=(const Vector3d& v) noexcept {
  x_ += v.getX();
  y_ += v.getY();
  z_ += v.getZ();
  return *this;
}

Point3d& Point3d::operator-=(const Vector3d& v) noexcept {
  x_ -= v.getX();
  y_ -= v.getY();
  z_ -= v.getZ();
  return *this;
}

// ---- Point4d ---------------------------------------------------------------------

Point4d::Point4d(const Point3d& p) noexcept : x_(p.getX()), y_(p.getY()), z_(p.getZ()), w_(1.0) {}
Point4d::Point4d(const Vector3d& v) noexcept : x_(v.getX()), y_(v.getY()), z_(v.getZ()), w_(0.0) {}

Point3d Point4d::project() const { return project(nullptr); }

Point3d Point4d::project(double* inverseW) const {
  // Written as 0 >= w so that negative w is refused too; NaN w passes.
  if (0.0 >= w_) raise<InvalidWException>();
  const double r = 1.0 / w_;
  if (inverseW != nullptr) *inverseW = r;
  return Point3d(x_ * r, y_ * r, z_ * r);
}

// ---- Comparisons -----------------------------------------------------------------

#define QVGUI_POINT2_COMPARISONS(T)                                                                         \
  bool operator==(const T& a, const T& b) noexcept { return a.getX() == b.getX() && a.getY() == b.getY(); } \
  bool operator!=(const T& a, const T& b) noexcept { return !(a == b); }                                    \
  bool operator<(const T& a, const T& b) noexcept {                                                         \
    return lexicographicLess({a.getX(), a.getY()}, {b.getX(), b.getY()});                                   \
  }
#define QVGUI_POINT3_COMPARISONS(T)                                                           \
  bool operator==(const T& a, const T& b) noexcept {                                          \
    return a.getX() == b.getX() && a.getY() == b.getY() && a.getZ() == b.getZ();              \
  }                                                                                           \
  bool operator!=(const T& a, const T& b) noexcept { return !(a == b); }                      \
  bool operator<(const T& a, const T& b) noexcept {                                           \
    return lexicographicLess({a.getX(), a.getY(), a.getZ()}, {b.getX(), b.getY(), b.getZ()}); \
  }
QVGUI_POINT2_COMPARISONS(Point2i)
QVGUI_POINT2_COMPARISONS(Point2f)
QVGUI_POINT2_COMPARISONS(Point2d)
QVGUI_POINT3_COMPARISONS(Point3f)
QVGUI_POINT3_COMPARISONS(Point3d)
#undef QVGUI_POINT2_COMPARISONS
#undef QVGUI_POINT3_COMPARISONS

bool operator==(const Point4d& a, const Point4d& b) noexcept {
  return a.getX() == b.getX() && a.getY() == b.getY() && a.getZ() == b.getZ() && a.getW() == b.getW();
}
bool operator!=(const Point4d& a, const Point4d& b) noexcept { return !(a == b); }

// ---- Tolerance comparisons -------------------------------------------------------

bool nearlyEqual(const Point2f& a, const Point2f& b) noexcept {
  return nearlyEqual(static_cast<double>(a.getX()), static_cast<double>(b.getX())) &&
         nearlyEqual(static_cast<double>(a.getY()), static_cast<double>(b.getY()));
}
bool nearlyEqual(const Point2d& a, const Point2d& b) noexcept {
  return nearlyEqual(a.getX(), b.getX()) && nearlyEqual(a.getY(), b.getY());
}
bool nearlyEqual(const Point3f& a, const Point3f& b) noexcept {
  return nearlyEqual(a.asPoint3d(), b.asPoint3d());
}
bool nearlyEqual(const Point3d& a, const Point3d& b) noexcept {
  return nearlyEqual(a.getX(), b.getX()) && nearlyEqual(a.getY(), b.getY()) &&
         nearlyEqual(a.getZ(), b.getZ());
}
bool nearlyEqual(const Point4d& a, const Point4d& b) noexcept {
  return nearlyEqual(a.getX(), b.getX()) && nearlyEqual(a.getY(), b.getY()) &&
         nearlyEqual(a.getZ(), b.getZ()) && nearlyEqual(a.getW(), b.getW());
}

// ---- Point and vector arithmetic -------------------------------------------------

Vector2i operator-(const Point2i& a, const Point2i& b) noexcept {
  return Vector2i(wrap::sub(a.getX(), b.getX()), wrap::sub(a.getY(), b.getY()));
}
Vector2d operator-(const Point2d& a, const Point2d& b) noexcept {
  return Vector2d(a.getX() - b.getX(), a.getY() - b.getY());
}
Vector3d operator-(const Point3d& a, const Point3d& b) noexcept {
  return Vector3d(a.getX() - b.getX(), a.getY() - b.getY(), a.getZ() - b.getZ());
}

Point2i operator+(const Point2i& p, const Vector2i& v) noexcept { return Point2i(p) += v; }
Point2d operator+(const Point2d& p, const Vector2d& v) noexcept { return Point2d(p) += v; }
Point3d operator+(const Point3d& p, const Vector3d& v) noexcept { return Point3d(p) += v; }
Point2i operator-(const Point2i& p, const Vector2i& v) noexcept { return Point2i(p) -= v; }
Point2d operator-(const Point2d& p, const Vector2d& v) noexcept { return Point2d(p) -= v; }
Point3d operator-(const Point3d& p, const Vector3d& v) noexcept { return Point3d(p) -= v; }

// ---- Interpolation ---------------------------------------------------------------

Point2f interpolate(double t, const Point2f& a, const Point2f& b) noexcept {
  return Point2f(lerpFloat(t, a.getX(), b.getX()), lerpFloat(t, a.getY(), b.getY()));
}
Point2d interpolate(double t, const Point2d& a, const Point2d& b) noexcept {
  return Point2d(lerp(t, a.getX(), b.getX()), lerp(t, a.getY(), b.getY()));
}
Point3f interpolate(double t, const Point3f& a, const Point3f& b) noexcept {
  return Point3f(lerpFloat(t, a.getX(), b.getX()), lerpFloat(t, a.getY(), b.getY()),
                 lerpFloat(t, a.getZ(), b.getZ()));
}
Point3d interpolate(double t, const Point3d& a, const Point3d& b) noexcept {
  return Point3d(lerp(t, a.getX(), b.getX()), lerp(t, a.getY(), b.getY()), lerp(t, a.getZ(), b.getZ()));
}
Point4d interpolate(double t, const Point4d& a, const Point4d& b) noexcept {
  return Point4d(lerp(t, a.getX(), b.getX()), lerp(t, a.getY(), b.getY()), lerp(t, a.getZ(), b.getZ()),
                 lerp(t, a.getW(), b.getW()));
}

// ---- Minimum and maximum ---------------------------------------------------------

#define QVGUI_MIN_MAX_POINT2(T)                                                     \
  T min_point(const T& a, const T& b) noexcept {                                    \
    return T(takeIfLess(a.getX(), b.getX()), takeIfLess(a.getY(), b.getY()));       \
  }                                                                                 \
  T max_point(const T& a, const T& b) noexcept {                                    \
    return T(takeIfGreater(a.getX(), b.getX()), takeIfGreater(a.getY(), b.getY())); \
  }
#define QVGUI_MIN_MAX_POINT3(T)                                                    \
  T min_point(const T& a, const T& b) noexcept {                                   \
    return T(takeIfLess(a.getX(), b.getX()), takeIfLess(a.getY(), b.getY()),       \
             takeIfLess(a.getZ(), b.getZ()));                                      \
  }                                                                                \
  T max_point(const T& a, const T& b) noexcept {                                   \
    return T(takeIfGreater(a.getX(), b.getX()), takeIfGreater(a.getY(), b.getY()), \
             takeIfGreater(a.getZ(), b.getZ()));                                   \
  }
QVGUI_MIN_MAX_POINT2(Point2i)
QVGUI_MIN_MAX_POINT2(Point2f)
QVGUI_MIN_MAX_POINT2(Point2d)
QVGUI_MIN_MAX_POINT3(Point3f)
QVGUI_MIN_MAX_POINT3(Point3d)
#undef QVGUI_MIN_MAX_POINT2
#undef QVGUI_MIN_MAX_POINT3

Vector3d newell_area(const Point3d& p, const Point3d& q) noexcept {
  return Vector3d((p.getY() - q.getY()) * (p.getZ() + q.getZ()),
                  (p.getZ() - q.getZ()) * (p.getX() + q.getX()),
                  (p.getX() - q.getX()) * (p.getY() + q.getY()));
}

}  // namespace gui_objects

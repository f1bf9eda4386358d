// Vector classes: products, lengths, the four normalisations and reflection.
#include <cmath>

#include "geometry/exceptions_p.h"
#include "geometry/integer_p.h"
#include "qvgui/geometry.h"

namespace gui_objects {

// ---- Vector2i --------------------------------------------------------------------

Vector2i Vector2i::operator-() const noexcept { return Vector2i(wrap::neg(x_), wrap::neg(y_)); }
Vector2i Vector2i::perpDot() const noexcept { return Vector2i(wrap::neg(y_), x_); }
std::int32_t Vector2i::dot(const Vector2i& b) const noexcept {
  return wrap::add(wrap::mul(x_, b.x_), wrap::mul(y_, b.y_));
}
std::int32_t Vector2i::cross(const Vector2i& b) const noexcept {
  return wrap::sub(wrap::mul(x_, b.y_), wrap::mul(y_, b.x_));
}
std::int32_t Vector2i::lengthSquared() const noexcept { return dot(*this); }
// A wrapped negative square gives NaN, as the integer arithmetic asks for.
double Vector2i::length() const noexcept { return std::sqrt(static_cast<double>(lengthSquared())); }

Vector2i& Vector2i::operator*=(std::int32_t s) noexcept {
  x_ = wrap::mul(x_, s);
  y_ = wrap::mul(y_, s);
  return *this;
}

// ---- Vector2d --------------------------------------------------------------------

double Vector2d::length() const noexcept { return std::hypot(x_, y_); }

Vector2d& Vector2d::normalize() {
  const double len = std::hypot(x_, y_);
  if (len <= 0.0) raise<ZeroLengthException>();
  return *this *= 1.0 / len;
}

Vector2d Vector2d::reflect(const Vector2d& v) const {
  Vector2d n(*this);
  n.normalize();
  return n * (2.0 * n.dot(v)) - v;
}

Vector2d& Vector2d::operator*=(double s) noexcept {
  x_ *= s;
  y_ *= s;
  return *this;
}
Vector2d& Vector2d::operator+=(const Vector2d& b) noexcept {
  x_ += b.x_;
  y_ += b.y_;
  return *this;
}
Vector2d& Vector2d::operator-=(const Vector2d& b) noexcept {
  x_ -= b.x_;
  y_ -= b.y_;
  return *this;
}

// ---- Vector3d --------------------------------------------------------------------

double Vector3d::dot(const Vector3d& b) const noexcept {
  double sum = 0.0;
  sum += x_ * b.x_;
  sum += y_ * b.y_;
  sum += z_ * b.z_;
  return sum;
}

Vector3d Vector3d::cross(const Vector3d& b) const noexcept {
  return Vector3d(y_ * b.z_ - z_ * b.y_, z_ * b.x_ - x_ * b.z_, x_ * b.y_ - y_ * b.x_);
}

double Vector3d::lengthSquared() const noexcept { return x_ * x_ + y_ * y_ + z_ * z_; }
double Vector3d::length() const noexcept { return std::sqrt(lengthSquared()); }

Vector3d& Vector3d::normalize() {
  const double len = length();
  // A NaN length is not <= 0: it passes and spreads into the components.
  if (len <= 0.0) raise<ZeroLengthException>();
  return *this *= 1.0 / len;
}

Vector3d& Vector3d::normalize_noexception() noexcept {
  const double squared = lengthSquared();
  if (squared > 0.0 && !nearlyEqual(squared, 1.0)) *this *= 1.0 / std::sqrt(squared);
  return *this;
}

Vector3d& Vector3d::normalize_carefully() {
  const double len = std::hypot(std::hypot(x_, y_), z_);
  if (len <= 0.0) raise<ZeroLengthException>();
  // True division rather than a reciprocal: the last bit matters here.
  x_ /= len;
  y_ /= len;
  z_ /= len;
  return *this;
}

Vector3d Vector3d::reflect(const Vector3d& v) const {
  Vector3d n(*this);
  n.normalize();
  return n * (2.0 * n.dot(v)) - v;
}

Vector3d& Vector3d::operator*=(double s) noexcept {
  x_ *= s;
  y_ *= s;
  z_ *= s;
  return *this;
}
Vector3d& Vector3d::operator+=(const Vector3d& b) noexcept {
  x_ += b.x_;
  y_ += b.y_;
  z_ += b.z_;
  return *this;
}
Vector3d& Vector3d::operator-=(const Vector3d& b) noexcept {
  x_ -= b.x_;
  y_ -= b.y_;
  z_ -= b.z_;
  return *this;
}

// ---- Free functions --------------------------------------------------------------

bool operator==(const Vector2i& a, const Vector2i& b) noexcept {
  return a.getX() == b.getX() && a.getY() == b.getY();
}
bool operator!=(const Vector2i& a, const Vector2i& b) noexcept { return !(a == b); }
bool operator==(const Vector2d& a, const Vector2d& b) noexcept {
  return a.getX() == b.getX() && a.getY() == b.getY();
}
bool operator!=(const Vector2d& a, const Vector2d& b) noexcept { return !(a == b); }
bool operator==(const Vector3d& a, const Vector3d& b) noexcept {
  return a.getX() == b.getX() && a.getY() == b.getY() && a.getZ() == b.getZ();
}
bool operator!=(const Vector3d& a, const Vector3d& b) noexcept { return !(a == b); }

bool nearlyEqual(const Vector2d& a, const Vector2d& b) noexcept {
  return nearlyEqual(a.getX(), b.getX()) && nearlyEqual(a.getY(), b.getY());
}
bool nearlyEqual(const Vector3d& a, const Vector3d& b) noexcept {
  return nearlyEqual(a.getX(), b.getX()) && nearlyEqual(a.getY(), b.getY()) &&
         nearlyEqual(a.getZ(), b.getZ());
}

Vector2d operator+(const Vector2d& a, const Vector2d& b) noexcept { return Vector2d(a) += b; }
Vector2d operator-(const Vector2d& a, const Vector2d& b) noexcept { return Vector2d(a) -= b; }
Vector2d operator*(const Vector2d& v, double s) noexcept { return Vector2d(v) *= s; }
Vector2d operator*(double s, const Vector2d& v) noexcept { return Vector2d(v) *= s; }
Vector2d operator/(const Vector2d& v, double s) noexcept { return Vector2d(v) *= 1.0 / s; }
Vector3d operator+(const Vector3d& a, const Vector3d& b) noexcept { return Vector3d(a) += b; }
Vector3d operator-(const Vector3d& a, const Vector3d& b) noexcept { return Vector3d(a) -= b; }
Vector3d operator*(const Vector3d& v, double s) noexcept { return Vector3d(v) *= s; }
Vector3d operator*(double s, const Vector3d& v) noexcept { return Vector3d(v) *= s; }
Vector3d operator/(const Vector3d& v, double s) noexcept { return Vector3d(v) *= 1.0 / s; }

Vector2d interpolate(double t, const Vector2d& a, const Vector2d& b) noexcept {
  return Vector2d(a.getX() + (b.getX() - a.getX()) * t, a.getY() + (b.getY() - a.getY()) * t);
}
Vector3d interpolate(double t, const Vector3d& a, const Vector3d& b) noexcept {
  return Vector3d(a.getX() + (b.getX() - a.getX()) * t, a.getY() + (b.getY() - a.getY()) * t,
                  a.getZ() + (b.getZ() - a.getZ()) * t);
}

}  // namespace gui_objects

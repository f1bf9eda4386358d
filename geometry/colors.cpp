// Colour classes: byte conversions, opacity, comparisons and interpolation.
#include "qvgui/geometry.h"

namespace gui_objects {
namespace {

// trunc(c * 255 + 0.5); c is already clamped into [0, 1], so the cast is safe.
std::uint8_t toByte(double c) noexcept { return static_cast<std::uint8_t>(c * 255.0 + 0.5); }

// The double nearest 1/255, multiplied in rather than divided by 255.
constexpr double kByteToUnit = 0.00392156862745098;

double clampT(double t) noexcept {
  const double upper = t > 1.0 ? 1.0 : t;
  return upper > 0.0 ? upper : 0.0;
}

double mix(double t, double a, double b) noexcept { return (1.0 - t) * a + t * b; }

}  // namespace

Color4d Color3d::asColor4d() const noexcept { return Color4d(r_, g_, b_, 1.0); }
Color4b Color3d::asColor4b() const noexcept { return Color4b(toByte(r_), toByte(g_), toByte(b_), 255); }

bool Color4d::isOpaque() const noexcept { return nearlyEqual(a_, 1.0); }
Color4b Color4d::asColor4b() const noexcept {
  return Color4b(toByte(r_), toByte(g_), toByte(b_), toByte(a_));
}

Color4d Color4b::asColor4d() const noexcept {
  return Color4d(r_ * kByteToUnit, g_ * kByteToUnit, b_ * kByteToUnit, a_ * kByteToUnit);
}

bool operator==(const Color3d& a, const Color3d& b) noexcept {
  return a.getRed() == b.getRed() && a.getGreen() == b.getGreen() && a.getBlue() == b.getBlue();
}
bool operator!=(const Color3d& a, const Color3d& b) noexcept { return !(a == b); }
bool operator==(const Color4d& a, const Color4d& b) noexcept {
  return a.getRed() == b.getRed() && a.getGreen() == b.getGreen() && a.getBlue() == b.getBlue() &&
         a.getAlpha() == b.getAlpha();
}
bool operator!=(const Color4d& a, const Color4d& b) noexcept { return !(a == b); }
bool operator==(const Color4b& a, const Color4b& b) noexcept {
  return a.getRed() == b.getRed() && a.getGreen() == b.getGreen() && a.getBlue() == b.getBlue() &&
         a.getAlpha() == b.getAlpha();
}
bool operator!=(const Color4b& a, const Color4b& b) noexcept { return !(a == b); }

bool nearlyEqual(const Color3d& a, const Color3d& b) noexcept {
  return nearlyEqual(a.getRed(), b.getRed()) && nearlyEqual(a.getGreen(), b.getGreen()) &&
         nearlyEqual(a.getBlue(), b.getBlue());
}
bool nearlyEqual(const Color4d& a, const Color4d& b) noexcept {
  return nearlyEqual(a.getRed(), b.getRed()) && nearlyEqual(a.getGreen(), b.getGreen()) &&
         nearlyEqual(a.getBlue(), b.getBlue()) && nearlyEqual(a.getAlpha(), b.getAlpha());
}

Color3d interpolate(double t, const Color3d& a, const Color3d& b) noexcept {
  const double u = clampT(t);
  return Color3d(mix(u, a.getRed(), b.getRed()), mix(u, a.getGreen(), b.getGreen()),
                 mix(u, a.getBlue(), b.getBlue()));
}

Color4d interpolate(double t, const Color4d& a, const Color4d& b) noexcept {
  const double u = clampT(t);
  return Color4d(mix(u, a.getRed(), b.getRed()), mix(u, a.getGreen(), b.getGreen()),
                 mix(u, a.getBlue(), b.getBlue()), mix(u, a.getAlpha(), b.getAlpha()));
}

Color4b interpolate(double t, const Color4b& a, const Color4b& b) noexcept {
  return interpolate(t, a.asColor4d(), b.asColor4d()).asColor4b();
}

}  // namespace gui_objects

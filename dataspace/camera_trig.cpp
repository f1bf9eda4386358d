// Degree trigonometry that is exact at quarter (and eighth) turns, and the
// view-angle rules built on it: 2-D view test, up vectors, viewing direction.
#include <climits>
#include <cmath>

#include "dataspace/camera_p.h"
#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

namespace gui_objects::camera_utils {

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kSqrtHalf = 0.70710678118654752440;  // correctly rounded 1/sqrt(2)

// degrees = 90 * quadrant + rest with quadrant in 0..3 and rest in [-45, 45].
// fmod is exact, and so is subtracting the nearest multiple of 90 from a value
// below 360 in magnitude, so the multiples of 90 leave rest exactly 0.
struct QuarterTurns {
  int quadrant;
  double rest;
};

QuarterTurns reduce(double degrees) noexcept {
  const double r = std::fmod(degrees, 360.0);
  const double q = std::nearbyint(r / 90.0);
  const int quadrant = ((static_cast<int>(q) % 4) + 4) % 4;
  return QuarterTurns{quadrant, r - 90.0 * q};
}

struct SinCos {
  double s;
  double c;
};

SinCos sinCosDegrees(double degrees, bool exactEighths) noexcept {
  if (!std::isfinite(degrees)) {
    const double nan = std::nan("");
    return SinCos{nan, nan};
  }
  const QuarterTurns t = reduce(degrees);
  double s;
  double c;
  if (exactEighths && std::fabs(t.rest) == 45.0) {
    s = std::copysign(kSqrtHalf, t.rest);
    c = kSqrtHalf;
  } else {
    const double radians = t.rest * kPi / 180.0;
    s = std::sin(radians);
    c = std::cos(radians);
  }
  SinCos out{};
  switch (t.quadrant) {
    case 0:
      out = SinCos{s, c};
      break;
    case 1:
      out = SinCos{c, -s};
      break;
    case 2:
      out = SinCos{-s, -c};
      break;
    default:
      out = SinCos{-c, s};
      break;
  }
  // Adding +0 turns a negative zero into +0 and leaves every other value alone.
  out.s += 0.0;
  out.c += 0.0;
  return out;
}

// a == k modulo 360 with truncating division, so -90 is congruent to 270.
constexpr bool congruent(long long a, long long k) noexcept { return (a - k) % 360 == 0; }

}  // namespace

namespace detail {

bool truncateDegrees(double degrees, long long* out) noexcept {
  // The bounds are exact doubles; anything strictly between them truncates
  // into int, and NaN fails both comparisons.
  if (!(degrees > static_cast<double>(INT_MIN) - 1.0 && degrees < static_cast<double>(INT_MAX) + 1.0)) {
    return false;
  }
  *out = static_cast<long long>(static_cast<int>(degrees));
  return true;
}

}  // namespace detail

double sind(double degrees) noexcept { return sinCosDegrees(degrees, false).s; }
double cosd(double degrees) noexcept { return sinCosDegrees(degrees, false).c; }
double sind45(double degrees) noexcept { return sinCosDegrees(degrees, true).s; }
double cosd45(double degrees) noexcept { return sinCosDegrees(degrees, true).c; }

bool is2D(double azimuth, double elevation) noexcept {
  long long a = 0;
  long long e = 0;
  return detail::truncateDegrees(azimuth, &a) && detail::truncateDegrees(elevation, &e) && a % 90 == 0 &&
         e % 90 == 0;
}

Vector3d chooseUpVector2D(double azimuth, double elevation) noexcept {
  long long a = 0;
  long long e = 0;
  if (!detail::truncateDegrees(azimuth, &a) || !detail::truncateDegrees(elevation, &e)) {
    return Vector3d(0.0, 0.0, 0.0);
  }
  if (congruent(e, 0)) return Vector3d(0.0, 0.0, 1.0);
  if (congruent(e, 180)) return Vector3d(0.0, 0.0, -1.0);
  // Looking straight down (90) or up (270) the z axis: the up vector turns
  // with the azimuth, in opposite senses for the two directions.
  if (congruent(e, 90)) {
    if (congruent(a, 0)) return Vector3d(0.0, 1.0, 0.0);
    if (congruent(a, 90)) return Vector3d(-1.0, 0.0, 0.0);
    if (congruent(a, 180)) return Vector3d(0.0, -1.0, 0.0);
    if (congruent(a, 270)) return Vector3d(1.0, 0.0, 0.0);
  } else if (congruent(e, 270)) {
    if (congruent(a, 0)) return Vector3d(0.0, -1.0, 0.0);
    if (congruent(a, 90)) return Vector3d(1.0, 0.0, 0.0);
    if (congruent(a, 180)) return Vector3d(0.0, 1.0, 0.0);
    if (congruent(a, 270)) return Vector3d(-1.0, 0.0, 0.0);
  }
  // Not a two-dimensional view: the zero vector tells the caller so.
  return Vector3d(0.0, 0.0, 0.0);
}

Vector3d chooseUpVector3D(const Vector3d& direction, double azimuth) noexcept {
  // Exact comparisons: only a direction exactly along z has no usable
  // projection of +z; NaN components compare unequal to 0 and keep the default.
  if (direction.getX() == 0.0 && direction.getY() == 0.0 && direction.getZ() != 0.0) {
    return Vector3d(sind45(-azimuth), cosd45(-azimuth), 0.0);
  }
  return Vector3d(0.0, 0.0, 1.0);
}

Vector3d convertAnglesToDirection(double azimuth, double elevation) noexcept {
  const double az = kPi * azimuth / 180.0;
  const double el = kPi * elevation / 180.0;
  const Matrix4x4d m = Matrix4x4d::createXRotation(el - kPi / 2.0) * Matrix4x4d::createZRotation(-az);
  return Vector3d(transform(m, Point4d(1.0, 0.0, 0.0, 1.0)).getZ(),
                  transform(m, Point4d(0.0, 1.0, 0.0, 1.0)).getZ(),
                  transform(m, Point4d(0.0, 0.0, 1.0, 1.0)).getZ());
}

}  // namespace gui_objects::camera_utils

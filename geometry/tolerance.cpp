// The library-wide scalar tolerance tests on which every nearlyEqual rests.
#include <cmath>

#include "qvgui/geometry.h"

namespace gui_objects {

bool nearlyEqual(double a, double b) noexcept {
  if (a == 0.0 && b == 0.0) return true;
  if (std::isnan(a) || std::isnan(b)) return false;
  // Equal infinities would otherwise give inf - inf = NaN below.
  if (std::isinf(a) && a == b) return true;
  const double larger = std::fabs(a) >= std::fabs(b) ? std::fabs(a) : std::fabs(b);
  // Absolute below magnitude 1, relative above it.
  const double scale = larger > 1.0 ? larger : 1.0;
  return std::fabs(a - b) / scale < 1e-7;
}

bool nearlyPositive(double x) noexcept { return x > 1e-6; }
bool nearlyNegative(double x) noexcept { return x < -1e-6; }

}  // namespace gui_objects

// Radiance conversions to colours and printing of the lighting value types.
#include <ostream>

#include "qvgui/lighting.h"

namespace gui_objects {

// Color3d and Color4d clamp into [0, 1] on construction, which is exactly the
// conversion rule for radiance.
Color3d Radiance::asColor3d() const noexcept { return Color3d(red_, green_, blue_); }

Color4d Radiance::asColor4d() const noexcept { return Color4d(red_, green_, blue_, 1.0); }

std::ostream& operator<<(std::ostream& os, const Radiance& r) {
  return os << "Radiance(" << r.getRed() << ", " << r.getGreen() << ", " << r.getBlue() << ")";
}

std::ostream& operator<<(std::ostream& os, const RadianceFilter& f) {
  return os << "RadianceFilter(" << f.getRed() << ", " << f.getGreen() << ", " << f.getBlue() << ")";
}

}  // namespace gui_objects

// Shared by the colour-table, quantiser and dithering code: the 8-bit colour rule.
#pragma once

#include <cmath>
#include <cstdint>

namespace qvgui_raster {

// A component in 8-bit units: (int)(x * 255 + 0.5), truncated toward zero.
// Components are not range-checked anywhere, so out-of-range values saturate
// instead of overflowing the conversion, and NaN counts as 0.
[[nodiscard]] inline std::int32_t eightBit(double x) noexcept {
  const double v = x * 255.0 + 0.5;
  if (!(v > -1.0e9)) return v < 0.0 ? -1000000000 : 0;
  if (v > 1.0e9) return 1000000000;
  return static_cast<std::int32_t>(v);
}

}  // namespace qvgui_raster

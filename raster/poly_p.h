// Private helpers shared by the rasteriser, the marker shapes and the hit
// tests: the missing-point marker, buffer addressing and value conversion.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "qvgui/geometry.h"
#include "qvgui/raster.h"

namespace qvgui_raster {

// The library-wide marker of a missing device coordinate.
inline constexpr std::int32_t kMissing = -32768;
// The value that marks a missing vertex value in DrawInterpPoly.
inline constexpr double kMissingValue = -32768.0;

[[nodiscard]] inline bool isMissing(const qvpoint32& p) noexcept {
  return p.x == kMissing || p.y == kMissing;
}

// Row strides of the two buffers of a bounding box.
[[nodiscard]] inline std::int32_t boxWidth(const qvrect& r) noexcept { return r.right - r.left + 1; }
[[nodiscard]] inline std::int32_t pixmapStride(const qvrect& r) noexcept { return (boxWidth(r) + 3) & ~3; }

// Integer part of a value meant to lie in 0..255; outside values clamp, NaN
// gives 0, so no input can make the conversion undefined.
[[nodiscard]] inline unsigned char valueToByte(double v) noexcept {
  if (!(v > 0.0)) return 0;
  if (v >= 255.0) return 255;
  return static_cast<unsigned char>(static_cast<int>(v));
}

// A colour channel in 0..1 scaled to 0..255 plus one half, so that the
// truncation of valueToByte rounds.
[[nodiscard]] inline double channelToValue(double c) noexcept {
  if (!(c > 0.0)) return 0.5;
  if (c >= 1.0) return 255.5;
  return c * 255.0 + 0.5;
}

[[nodiscard]] inline std::uint32_t packOpaque(unsigned char r, unsigned char g, unsigned char b) noexcept {
  return 0xFF000000u | (std::uint32_t{r} << 16) | (std::uint32_t{g} << 8) | std::uint32_t{b};
}

// Narrows a double to int32 by truncation toward zero, saturating instead of
// being undefined for values out of range (NaN gives 0).
[[nodiscard]] inline std::int32_t truncToInt32(double v) noexcept {
  if (!(v == v)) return 0;
  if (v >= 2147483647.0) return 2147483647;
  if (v <= -2147483648.0) return -2147483647 - 1;
  return static_cast<std::int32_t>(v);
}

// The low 16 bits of an integer, as the 16-bit device coordinates keep them.
[[nodiscard]] inline std::int16_t low16(std::int32_t v) noexcept {
  return static_cast<std::int16_t>(static_cast<std::uint16_t>(static_cast<std::uint32_t>(v) & 0xFFFFu));
}

}  // namespace qvgui_raster

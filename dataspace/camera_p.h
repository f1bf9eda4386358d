// Private helpers of the camera sources: one raise helper per failure kind and
// the whole-degree truncation the two-dimensional view rules are built on.
#pragma once

namespace gui_objects::camera_utils::detail {

[[noreturn]] void raiseBadLimits();
[[noreturn]] void raiseCouldNotFit();

// Truncates toward zero into *out. False (and *out untouched) for NaN,
// infinities and values outside the range of int, which have no truncation.
[[nodiscard]] bool truncateDegrees(double degrees, long long* out) noexcept;

}  // namespace gui_objects::camera_utils::detail

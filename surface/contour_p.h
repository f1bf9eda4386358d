// The contour engine's catalogue identifiers and the helper that raises them.
#pragma once

namespace gui_objects::surface_detail {

inline constexpr const char* kContourArraySizeMismatchId = "Tavrix::gui::surface::ContourArraySizeMismatch";

// Raises ContourArraySizeMismatch: `array` holds `given` values where the grid
// needs `needed`.
[[noreturn]] void raiseContourArraySizeMismatch(const char* array, int rows, int columns,
                                                unsigned long long needed, unsigned long long given);

}  // namespace gui_objects::surface_detail

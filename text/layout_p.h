// Placing interpreted text: lines, baselines, alignment and rotation.
#pragma once

#include <vector>

#include "qvgui/text.h"

namespace gui_objects::font::detail {

// The layout of atoms as the interpreter produced them for props; the
// result's error is left for the caller.
[[nodiscard]] TextLayout layoutAtoms(const std::vector<TextAtom>& atoms, const StringProps& props);

// StringProps values as they are laid out. The caps keep every position of a
// layout finite.
[[nodiscard]] constexpr double inRangeOr(double v, double upper, double fallback) noexcept {
  return v > 0.0 && v <= upper ? v : fallback;  // false for NaN
}
[[nodiscard]] constexpr double layoutSize(double points) noexcept { return inRangeOr(points, 10000.0, 10.0); }
[[nodiscard]] constexpr double layoutDpi(double dpi) noexcept { return inRangeOr(dpi, 100000.0, 72.0); }
[[nodiscard]] constexpr double layoutLineSpacing(double f) noexcept { return inRangeOr(f, 1000.0, 1.0); }

// Symbol and ZapfDingbats, whose bytes are in their own encodings.
[[nodiscard]] constexpr bool isPictorialFace(int afmIndex) noexcept {
  return (afmIndex >= 28 && afmIndex < 32) || (afmIndex >= 40 && afmIndex < 44);
}

}  // namespace gui_objects::font::detail

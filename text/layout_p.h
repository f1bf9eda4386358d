// Placing interpreted text: lines, baselines, alignment and rotation.
#pragma once

#include <vector>

#include "qvgui/text.h"

namespace gui_objects::font::detail {

// The layout of atoms as the interpreter produced them for props; the
// result's error is left for the caller.
[[nodiscard]] TextLayout layoutAtoms(const std::vector<TextAtom>& atoms, const StringProps& props);

// Symbol and ZapfDingbats, whose bytes are in their own encodings.
[[nodiscard]] constexpr bool isPictorialFace(int afmIndex) noexcept {
  return (afmIndex >= 28 && afmIndex < 32) || (afmIndex >= 40 && afmIndex < 44);
}

}  // namespace gui_objects::font::detail

// Shared pieces of the plane, line, quad and rectangle code: the throw point
// of the tag exceptions and the host tolerance test against zero.
#pragma once

#include "qvgui/geometry.h"
#include "qvgui/host.h"

namespace gui_objects {

// Throws a default-constructed tag exception E (ParallelException,
// InvalidQuadException, InvalidInsetException, RectangleCrossedPointsException).
template <class E>
[[noreturn]] void raiseTag();

// "Equals 0 within the host's tolerance", the degeneracy test of lines and planes.
inline bool isZeroWithinEps(double v) noexcept { return utEqualWithinEps(v, 0.0); }

}  // namespace gui_objects

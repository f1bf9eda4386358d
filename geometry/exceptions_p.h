// The one place the geometry kernel throws from, so a single breakpoint on
// raise<E>() catches every kernel failure.
#pragma once

namespace gui_objects {

// Throws a default-constructed E. Instantiated for every internal-error class.
template <class E>
[[noreturn]] void raise();

}  // namespace gui_objects

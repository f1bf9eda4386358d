// Reading host arrays of any numeric class as doubles.
#pragma once

#include <cstdint>

#include "common/numeric_class_p.h"
#include "qvgui/host.h"

namespace gui_objects::detail {

// Calls visit(const T* data) with the element type of a numeric array; false
// (and no call) for any other class.
template <typename Visit>
bool visitNumeric(const zrArray_tag* array, Visit&& visit) {
  const void* data = zrGetData(array);
  return qvgui_numeric::visitNumericClass(
      zrGetClassID(array),
      [&](auto tag) {
        visit(static_cast<const typename decltype(tag)::type*>(data));
        return true;
      },
      [] { return false; });
}

}  // namespace gui_objects::detail

// Reading host arrays of any numeric class as doubles.
#pragma once

#include <cstdint>

#include "qvgui/host.h"

namespace gui_objects::surface_detail {

// Calls visit(const T* data) with the element type of a numeric array; false
// (and no call) for any other class.
template <typename Visit>
bool visitNumeric(const zrArray_tag* array, Visit&& visit) {
  const void* data = zrGetData(array);
  switch (zrGetClassID(array)) {
#define QVGUI_VISIT_CLASS(id, T)        \
  case id:                              \
    visit(static_cast<const T*>(data)); \
    return true;
    QVGUI_VISIT_CLASS(zrDOUBLE_CLASS, double)
    QVGUI_VISIT_CLASS(zrSINGLE_CLASS, float)
    QVGUI_VISIT_CLASS(zrINT8_CLASS, std::int8_t)
    QVGUI_VISIT_CLASS(zrUINT8_CLASS, std::uint8_t)
    QVGUI_VISIT_CLASS(zrINT16_CLASS, std::int16_t)
    QVGUI_VISIT_CLASS(zrUINT16_CLASS, std::uint16_t)
    QVGUI_VISIT_CLASS(zrINT32_CLASS, std::int32_t)
    QVGUI_VISIT_CLASS(zrUINT32_CLASS, std::uint32_t)
    QVGUI_VISIT_CLASS(zrINT64_CLASS, std::int64_t)
    QVGUI_VISIT_CLASS(zrUINT64_CLASS, std::uint64_t)
#undef QVGUI_VISIT_CLASS
    default:
      return false;
  }
}

}  // namespace gui_objects::surface_detail

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
    case zrDOUBLE_CLASS:
      visit(static_cast<const double*>(data));
      return true;
    case zrSINGLE_CLASS:
      visit(static_cast<const float*>(data));
      return true;
    case zrINT8_CLASS:
      visit(static_cast<const std::int8_t*>(data));
      return true;
    case zrUINT8_CLASS:
      visit(static_cast<const std::uint8_t*>(data));
      return true;
    case zrINT16_CLASS:
      visit(static_cast<const std::int16_t*>(data));
      return true;
    case zrUINT16_CLASS:
      visit(static_cast<const std::uint16_t*>(data));
      return true;
    case zrINT32_CLASS:
      visit(static_cast<const std::int32_t*>(data));
      return true;
    case zrUINT32_CLASS:
      visit(static_cast<const std::uint32_t*>(data));
      return true;
    case zrINT64_CLASS:
      visit(static_cast<const std::int64_t*>(data));
      return true;
    case zrUINT64_CLASS:
      visit(static_cast<const std::uint64_t*>(data));
      return true;
    default:
      return false;
  }
}

}  // namespace gui_objects::surface_detail

// The raise helpers and untyped element access shared by the conversions.
#include "bridge/array_p.h"

namespace gk::detail {

void raiseNullArray() { throw gui_objects::NullArrayException(); }
void raiseArrayClass() { throw gui_objects::InvalidArrayClassException(); }
void raiseArrayShape() { throw gui_objects::InvalidArrayShapeException(); }
void raiseArrayData() { throw gui_objects::InvalidArrayDataException(); }
void raiseWidth() { throw gui_objects::InvalidWidthException(); }
void raiseCDataType() { throw gui_objects::invalidCDataTypeException(); }
void raiseRGBAData() { throw gui_objects::cdata::InvalidRGBADataException(); }

double numericElement(const zrArray_tag* array, std::size_t i) {
  return dispatchNumeric(zrGetClassID(array), [&](auto tag) {
    using T = typename decltype(tag)::type;
    return static_cast<double>(static_cast<const T*>(zrGetData(array))[i]);
  });
}

}  // namespace gk::detail

// The host's ten numeric classes and their element types, and the one
// dispatch from a class identifier to the element type that the library and
// the reference host share.
#pragma once

#include <cstdint>
#include <type_traits>

#include "qvgui/host.h"

namespace qvgui_numeric {

template <class T>
struct TypeTag {
  using type = T;
};

// In the host's class numbering order.
#define QVGUI_NUMERIC_CLASSES(X)   \
  X(double, zrDOUBLE_CLASS)        \
  X(float, zrSINGLE_CLASS)         \
  X(std::int8_t, zrINT8_CLASS)     \
  X(std::uint8_t, zrUINT8_CLASS)   \
  X(std::int16_t, zrINT16_CLASS)   \
  X(std::uint16_t, zrUINT16_CLASS) \
  X(std::int32_t, zrINT32_CLASS)   \
  X(std::uint32_t, zrUINT32_CLASS) \
  X(std::int64_t, zrINT64_CLASS)   \
  X(std::uint64_t, zrUINT64_CLASS)

template <class T>
struct ClassOf;
#define QVGUI_NUMERIC_CLASS_OF(T, ID)   \
  template <>                           \
  struct ClassOf<T> {                   \
    static constexpr zrClassID id = ID; \
  };
QVGUI_NUMERIC_CLASSES(QVGUI_NUMERIC_CLASS_OF)
#undef QVGUI_NUMERIC_CLASS_OF

[[nodiscard]] constexpr bool isNumericClass(zrClassID id) noexcept {
  return id >= zrDOUBLE_CLASS && id <= zrUINT64_CLASS;
}

// visit(TypeTag<T>{}) with the element type T of a numeric class; otherwise()
// for any other class. Both must return the same type.
template <class Visit, class Otherwise>
decltype(auto) visitNumericClass(zrClassID id, Visit&& visit, Otherwise&& otherwise) {
  switch (id) {
#define QVGUI_NUMERIC_CASE(T, ID) \
  case ID:                        \
    return visit(TypeTag<T>{});
    QVGUI_NUMERIC_CLASSES(QVGUI_NUMERIC_CASE)
#undef QVGUI_NUMERIC_CASE
    default:
      return otherwise();
  }
}

}  // namespace qvgui_numeric

// Typed access to host arrays for the conversions: the class of each element
// type, dispatch on an array's class, and the raise helpers of the bridge.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "qvgui/bridge.h"

namespace gk::detail {

// One helper per failure, out of line, so a single breakpoint sees each kind.
[[noreturn]] void raiseNullArray();
[[noreturn]] void raiseArrayClass();
[[noreturn]] void raiseArrayShape();
[[noreturn]] void raiseArrayData();
[[noreturn]] void raiseWidth();
[[noreturn]] void raiseCDataType();
[[noreturn]] void raiseRGBAData();

template <class T>
struct ClassOf;
#define QVGUI_BRIDGE_NUMERIC_TYPES(X) \
  X(double, zrDOUBLE_CLASS)           \
  X(float, zrSINGLE_CLASS)            \
  X(std::int8_t, zrINT8_CLASS)        \
  X(std::uint8_t, zrUINT8_CLASS)      \
  X(std::int16_t, zrINT16_CLASS)      \
  X(std::uint16_t, zrUINT16_CLASS)    \
  X(std::int32_t, zrINT32_CLASS)      \
  X(std::uint32_t, zrUINT32_CLASS)    \
  X(std::int64_t, zrINT64_CLASS)      \
  X(std::uint64_t, zrUINT64_CLASS)
#define QVGUI_BRIDGE_CLASS_OF(T, ID)    \
  template <>                           \
  struct ClassOf<T> {                   \
    static constexpr zrClassID id = ID; \
  };
QVGUI_BRIDGE_NUMERIC_TYPES(QVGUI_BRIDGE_CLASS_OF)
#undef QVGUI_BRIDGE_CLASS_OF

template <class T>
struct TypeTag {
  using type = T;
};

// Calls f(TypeTag<T>{}) with the element type of a numeric class; any other
// class raises InvalidArrayClassException.
template <class F>
decltype(auto) dispatchNumeric(zrClassID id, F&& f) {
  switch (id) {
#define QVGUI_BRIDGE_CASE(T, ID) \
  case ID:                       \
    return std::forward<F>(f)(TypeTag<T>{});
    QVGUI_BRIDGE_NUMERIC_TYPES(QVGUI_BRIDGE_CASE)
#undef QVGUI_BRIDGE_CASE
    default:
      raiseArrayClass();
  }
}

// Element i of a numeric array, converted to double. The array must be numeric.
[[nodiscard]] double numericElement(const zrArray_tag* array, std::size_t i);

// Null throws NullArrayException; otherwise the class must be exactly T's.
template <class T>
void requireClass(const zrArray_tag* array) {
  if (array == nullptr) raiseNullArray();
  if (zrGetClassID(array) != ClassOf<T>::id) raiseArrayClass();
}

[[nodiscard]] inline bool isMatrix(const zrArray_tag* array, std::size_t m, std::size_t n) {
  return zrGetNumberOfDimensions(array) == 2 && zrGetM(array) == m && zrGetN(array) == n;
}

// A new numeric matrix filled from values (column-major), owned by the result.
template <class T>
ZrArrayPtr makeMatrix(std::size_t m, std::size_t n, const T* values) {
  ZrArrayPtr array(zrCreateNumericMatrix(m, n, ClassOf<T>::id));
  T* out = static_cast<T*>(zrGetData(array.get()));
  for (std::size_t k = 0; k < m * n; ++k) out[k] = values[k];
  return array;
}

}  // namespace gk::detail

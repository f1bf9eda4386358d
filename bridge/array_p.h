// Typed access to host arrays for the conversions: the class of each element
// type, dispatch on an array's class, and the raise helpers of the bridge.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "common/numeric_class_p.h"
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

using qvgui_numeric::ClassOf;
using qvgui_numeric::TypeTag;

// Calls f(TypeTag<T>{}) with the element type of a numeric class; any other
// class raises InvalidArrayClassException.
template <class F>
decltype(auto) dispatchNumeric(zrClassID id, F&& f) {
  using Result = decltype(f(TypeTag<double>{}));
  return qvgui_numeric::visitNumericClass(id, f, []() -> Result { raiseArrayClass(); });
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

// The host array record and the class table shared by the array sources.
#pragma once

#include <string>
#include <vector>

#include "common/numeric_class_p.h"
#include "host_p.h"

// Element storage: numeric, logical and char arrays keep their elements in
// `data` (zrMalloc storage, column-major). Cell arrays keep `slots` owned
// element pointers (null = empty cell); struct arrays keep one slot per field
// per element, element-major: slot (e, f) is slots[e * fieldCount + f].
// `slotCapacity` counts the allocated slots, which may exceed what the shape
// needs (shapes shrink without destroying anything).
struct zrArray_tag {
  zrClassID classID = zrUNKNOWN_CLASS;
  std::vector<zrSize> dims;  // at least two; no trailing 1 beyond the second
  void* data = nullptr;
  zrArray_tag** slots = nullptr;
  zrSize slotCapacity = 0;
  std::vector<std::string> fieldNames;
  std::string functionName;
  // Links records awaiting destruction, so that freeing a nest of any depth
  // needs neither recursion nor an allocation.
  zrArray_tag* nextToFree = nullptr;
};

namespace qvhost {

// Class table: identifier, name, element size in bytes (0: no element storage).
#define QVHOST_ARRAY_CLASSES(X)    \
  X(zrUNKNOWN_CLASS, "unknown", 0) \
  X(zrCELL_CLASS, "cell", 0)       \
  X(zrSTRUCT_CLASS, "struct", 0)   \
  X(zrLOGICAL_CLASS, "logical", 1) \
  X(zrCHAR_CLASS, "char", 2)       \
  X(zrVOID_CLASS, "void", 0)       \
  X(zrDOUBLE_CLASS, "double", 8)   \
  X(zrSINGLE_CLASS, "single", 4)   \
  X(zrINT8_CLASS, "int8", 1)       \
  X(zrUINT8_CLASS, "uint8", 1)     \
  X(zrINT16_CLASS, "int16", 2)     \
  X(zrUINT16_CLASS, "uint16", 2)   \
  X(zrINT32_CLASS, "int32", 4)     \
  X(zrUINT32_CLASS, "uint32", 4)   \
  X(zrINT64_CLASS, "int64", 8)     \
  X(zrUINT64_CLASS, "uint64", 8)   \
  X(zrFUNCTION_CLASS, "function_handle", 0)

const char* className(zrClassID id) noexcept;
zrSize classElementSize(zrClassID id) noexcept;
using qvgui_numeric::isNumericClass;
// Classes whose elements live in `data`.
inline bool hasElementStorage(zrClassID id) noexcept {
  return isNumericClass(id) || id == zrLOGICAL_CLASS || id == zrCHAR_CLASS;
}

// Raises NullArray naming the caller when `a` is null; returns `a`.
const zrArray_tag* require(const zrArray_tag* a, const char* caller);
zrArray_tag* require(zrArray_tag* a, const char* caller);
[[noreturn]] void throwInvalidClass(const char* caller, const zrArray_tag* a);

// Product of the dimensions, raising out-of-memory on overflow.
zrSize elementCount(const zrSize* dims, zrSize ndim);
zrSize elementCount(const zrArray_tag* a) noexcept;  // of a valid record
// The canonical shape: ndim 0 and 1 read as 1 x 1 and d0 x 1; trailing 1s dropped.
std::vector<zrSize> canonicalDims(const zrSize* dims, zrSize ndim);

// A new record of the class and shape with zeroed element storage or empty slots.
zrArray_tag* newArray(zrClassID id, std::vector<zrSize> dims);
// Reads element `i` of a numeric, logical or char array as a double.
double elementAsDouble(const zrArray_tag* a, zrSize i) noexcept;

}  // namespace qvhost

// Fuzzes the extents of host arrays: every class (numeric ones with raw
// element bits, the others unsupported), any shape, every column. The fast
// scans must agree with adding the elements one by one.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "fuzz/fuzz_reader.h"
#include "qvgui/dataspace.h"
#include "qvgui/host.h"
#include "qvhost/runtime.h"

namespace {

double element(const zrArray_tag* a, std::size_t i) {
  const void* d = zrGetData(a);
  switch (zrGetClassID(a)) {
    case zrDOUBLE_CLASS:
      return static_cast<const double*>(d)[i];
    case zrSINGLE_CLASS:
      return static_cast<const float*>(d)[i];
    case zrINT8_CLASS:
      return static_cast<const std::int8_t*>(d)[i];
    case zrUINT8_CLASS:
      return static_cast<const std::uint8_t*>(d)[i];
    case zrINT16_CLASS:
      return static_cast<const std::int16_t*>(d)[i];
    case zrUINT16_CLASS:
      return static_cast<const std::uint16_t*>(d)[i];
    case zrINT32_CLASS:
      return static_cast<const std::int32_t*>(d)[i];
    case zrUINT32_CLASS:
      return static_cast<const std::uint32_t*>(d)[i];
    case zrINT64_CLASS:
      return static_cast<double>(static_cast<const std::int64_t*>(d)[i]);
    default:
      return static_cast<double>(static_cast<const std::uint64_t*>(d)[i]);
  }
}

bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

void compare(const gui_objects::DataExtents& got, const gui_objects::DataExtents& want) {
  if (got.initialized() != want.initialized() || !same(got.getMinValue(), want.getMinValue()) ||
      !same(got.getMaxValue(), want.getMaxValue()) || !same(got.getMaxNegative(), want.getMaxNegative()) ||
      !same(got.getMinPositive(), want.getMinPositive())) {
    __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz_input::Reader in(data, size);
  const auto cls = static_cast<zrClassID>(in.in(zrUNKNOWN_CLASS, zrFUNCTION_CLASS));
  const auto m = static_cast<zrSize>(in.in(0, 40));
  const auto n = static_cast<zrSize>(in.in(0, 40));
  zrArray_tag* a = nullptr;
  if (gk::Limits::isSupportedType(cls)) {
    a = zrCreateNumericMatrix(m, n, cls);
    auto* bytes = static_cast<std::uint8_t*>(zrGetData(a));
    const std::size_t total = m * n * zrGetElementSize(a);
    const bool doubles = cls == zrDOUBLE_CLASS && in.byte() % 2 == 0;
    for (std::size_t k = 0; k < m * n && doubles; ++k) zrGetPr(a)[k] = in.anyDouble();
    for (std::size_t k = 0; k < total && !doubles; ++k) bytes[k] = in.byte();
  } else if (cls == zrCELL_CLASS) {
    a = zrCreateCellMatrix(m, n);
  } else if (cls == zrCHAR_CLASS) {
    const zrSize dims[2] = {m, n};
    a = zrCreateCharArray(2, dims);
  } else if (cls == zrLOGICAL_CLASS) {
    a = zrCreateLogicalMatrix(m, n);
  } else if (cls == zrFUNCTION_CLASS) {
    a = zrCreateFunctionHandle("f");
  }

  gui_objects::DataExtents want;
  if (a != nullptr && gk::Limits::isSupportedType(cls)) {
    for (std::size_t k = 0; k < m * n; ++k) want += element(a, k);
  }
  compare(gk::Limits::computeExtents(a), want);

  // Every column of the M x N view, and one past the end.
  for (std::uint64_t column = 0; a != nullptr && column <= n; ++column) {
    gui_objects::DataExtents col;
    if (gk::Limits::isSupportedType(cls) && n > 1 && column < n) {
      for (std::size_t i = 0; i < m; ++i) col += element(a, column * m + i);
    }
    compare(gk::Limits::computeExtents(a, column), col);
  }
  zrDestroyArray(a);
  return 0;
}

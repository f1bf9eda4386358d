// gk::Limits: extents of numeric host arrays, dispatched by element class to
// the fastest scan this processor runs.
#include <atomic>
#include <cstdint>

#include "common/numeric_class_p.h"
#include "dataspace/limits_simd_p.h"
#include "qvgui/dataspace.h"
#include "qvgui/host.h"

namespace gk {
namespace detail {
namespace {

// 0 until the first scan resolves the automatic choice.
std::atomic<int> gKernel{0};

ExtentsKernel bestKernel() noexcept {
#if defined(QVGUI_EXTENTS_X86)
  return cpuHasAvx2() ? ExtentsKernel::kAvx2 : ExtentsKernel::kSse2;
#else
  return ExtentsKernel::kScalar;
#endif
}

bool runs(ExtentsKernel kernel) noexcept {
  switch (kernel) {
    case ExtentsKernel::kAuto:
    case ExtentsKernel::kScalar:
      return true;
#if defined(QVGUI_EXTENTS_X86)
    case ExtentsKernel::kSse2:
      return true;
    case ExtentsKernel::kAvx2:
      return cpuHasAvx2();
#endif
    default:
      return false;
  }
}

ExtentsKernel currentKernel() noexcept {
  int k = gKernel.load(std::memory_order_relaxed);
  if (k == 0) {
    k = static_cast<int>(bestKernel());
    gKernel.store(k, std::memory_order_relaxed);
  }
  return static_cast<ExtentsKernel>(k);
}

}  // namespace

bool selectExtentsKernel(ExtentsKernel kernel) noexcept {
  if (!runs(kernel)) return false;
  if (kernel == ExtentsKernel::kAuto) kernel = bestKernel();
  gKernel.store(static_cast<int>(kernel), std::memory_order_relaxed);
  return true;
}

ExtentsKernel selectedExtentsKernel() noexcept { return currentKernel(); }

}  // namespace detail

namespace {

using detail::ExtentsKernel;
using detail::ExtentsScan;
using gui_objects::DataExtents;

template <typename T>
ExtentsScan scanPortable(const T* p, std::size_t n) noexcept {
  if constexpr (std::is_floating_point_v<T>) {
    return detail::scanFloatingScalar(p, n);
  } else {
    return detail::scanIntegerScalar(p, n);
  }
}

template <typename T>
ExtentsScan scan(const T* p, std::size_t n) noexcept {
  return scanPortable(p, n);
}

#if defined(QVGUI_EXTENTS_X86)
// The element types with vector scans: the selected kernel's, else the portable one.
template <typename T>
ExtentsScan dispatch(const T* p, std::size_t n, ExtentsScan (*avx2)(const T*, std::size_t) noexcept,
                     ExtentsScan (*sse2)(const T*, std::size_t) noexcept) noexcept {
  switch (detail::currentKernel()) {
    case ExtentsKernel::kAvx2:
      return avx2(p, n);
    case ExtentsKernel::kSse2:
      return sse2(p, n);
    default:
      return scanPortable(p, n);
  }
}

template <>
ExtentsScan scan<double>(const double* p, std::size_t n) noexcept {
  return dispatch(p, n, detail::scanDoubleAvx2, detail::scanDoubleSse2);
}

template <>
ExtentsScan scan<float>(const float* p, std::size_t n) noexcept {
  return dispatch(p, n, detail::scanFloatAvx2, detail::scanFloatSse2);
}

template <>
ExtentsScan scan<std::int16_t>(const std::int16_t* p, std::size_t n) noexcept {
  return dispatch(p, n, detail::scanInt16Avx2, detail::scanInt16Sse2);
}
#endif

template <typename T>
DataExtents extentsOf(const void* data, std::size_t offset, std::size_t n) {
  const T* p = static_cast<const T*>(data) + offset;
  const ExtentsScan s = scan(p, n);
  if (!(s.min <= s.max)) return DataExtents();  // nothing finite
  double lo = s.min;
  double hi = s.max;
  if constexpr (std::is_floating_point_v<T>) {
    // Sample by sample, a zero minimum or maximum is the first zero met (a
    // later zero of the other sign never replaces it); the vector scans do not
    // keep that order, so the sign is looked up.
    if (lo == 0 || hi == 0) {
      std::size_t i = 0;
      while (!(p[i] == 0)) ++i;
      const double zero = static_cast<double>(p[i]);
      if (lo == 0) lo = zero;
      if (hi == 0) hi = zero;
    }
  }
  return DataExtents(lo, lo < 0 ? s.maxNegative : DataExtents::kAbsent,
                     hi > 0 ? s.minPositive : DataExtents::kAbsent, hi);
}

DataExtents extentsOfRun(zrClassID cls, const void* data, std::size_t offset, std::size_t n) {
  return qvgui_numeric::visitNumericClass(
      cls, [&](auto tag) { return extentsOf<typename decltype(tag)::type>(data, offset, n); },
      [] { return DataExtents(); });
}

}  // namespace

bool Limits::isSupportedType(zrClassID classId) noexcept { return qvgui_numeric::isNumericClass(classId); }

DataExtents Limits::computeExtents(const zrArray_tag* array) {
  if (array == nullptr) return DataExtents();
  const zrClassID cls = zrGetClassID(array);
  if (!isSupportedType(cls)) return DataExtents();
  const std::size_t n = zrGetNumberOfElements(array);
  if (n == 0) return DataExtents();
  return extentsOfRun(cls, zrGetData(array), 0, n);
}

// A single column gives empty extents on purpose: callers use this form only
// for matrices whose columns are separate series.
DataExtents Limits::computeExtents(const zrArray_tag* array, std::uint64_t column) {
  if (array == nullptr) return DataExtents();
  const zrClassID cls = zrGetClassID(array);
  if (!isSupportedType(cls)) return DataExtents();
  if (zrGetNumberOfElements(array) == 0) return DataExtents();
  const std::size_t m = zrGetM(array);
  const std::size_t columns = zrGetN(array);
  if (columns <= 1 || column >= columns) return DataExtents();
  return extentsOfRun(cls, zrGetData(array), m * static_cast<std::size_t>(column), m);
}

}  // namespace gk

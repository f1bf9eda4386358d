// The scans behind gk::Limits::computeExtents: minimum, maximum, largest
// negative and smallest positive of a run of elements, in scalar and SIMD forms.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "common/compiler_p.h"
#include "qvgui/export.h"

namespace gk::detail {

// The raw result of one scan. Absent values keep their sentinels: +inf for the
// minimum and the smallest positive, -inf for the maximum and the largest
// negative. Infinite elements are skipped like NaN, so a sentinel that survives
// means "none seen", and two scans merge by plain minimum and maximum. The sign
// of a zero minimum or maximum is not settled by the scan.
struct ExtentsScan {
  double min = std::numeric_limits<double>::infinity();
  double maxNegative = -std::numeric_limits<double>::infinity();
  double minPositive = std::numeric_limits<double>::infinity();
  double max = -std::numeric_limits<double>::infinity();
};

inline ExtentsScan merge(const ExtentsScan& a, const ExtentsScan& b) noexcept {
  ExtentsScan s;
  s.min = b.min < a.min ? b.min : a.min;
  s.maxNegative = b.maxNegative > a.maxNegative ? b.maxNegative : a.maxNegative;
  s.minPositive = b.minPositive < a.minPositive ? b.minPositive : a.minPositive;
  s.max = b.max > a.max ? b.max : a.max;
  return s;
}

enum class ExtentsKernel : int { kAuto = 0, kScalar = 1, kSse2 = 2, kAvx2 = 3 };

// Chooses the kernel later scans use (kAuto: the best this processor runs).
// Returns false and changes nothing when the processor cannot run it. Meant for
// tests and benchmarks that compare the kernels.
QVGUI_API bool selectExtentsKernel(ExtentsKernel kernel) noexcept;
QVGUI_API ExtentsKernel selectedExtentsKernel() noexcept;

// ---- Portable scans ----------------------------------------------------------------------------

template <typename F>
ExtentsScan scanFloatingScalar(const F* p, std::size_t n) noexcept {
  ExtentsScan s;
  for (std::size_t i = 0; i < n; ++i) {
    const double v = static_cast<double>(p[i]);
    if (!std::isfinite(v)) continue;
    if (v < s.min) s.min = v;
    if (v > s.max) s.max = v;
    if (v < 0 && v > s.maxNegative) s.maxNegative = v;
    if (v > 0 && v < s.minPositive) s.minPositive = v;
  }
  return s;
}

// Integers need no finiteness test, and the two tracked values reduce to plain
// unsigned extremes, which compilers vectorise: viewed as unsigned, every
// negative lies above every non-negative, so the largest unsigned value is the
// negative nearest zero; and x - 1 maps the positives onto [0, max - 1] while
// zero and the negatives land above, so the smallest unsigned x - 1 is one
// below the smallest positive.
template <typename T>
ExtentsScan scanIntegerScalar(const T* p, std::size_t n) noexcept {
  using U = std::make_unsigned_t<T>;
  ExtentsScan s;
  if (n == 0) return s;
  T lo = p[0];
  T hi = p[0];
  U umax = 0;
  U uminPred = std::numeric_limits<U>::max();
  for (std::size_t i = 0; i < n; ++i) {
    const T v = p[i];
    lo = v < lo ? v : lo;
    hi = v > hi ? v : hi;
    const U u = static_cast<U>(v);
    umax = u > umax ? u : umax;
    const U pred = static_cast<U>(u - 1u);
    uminPred = pred < uminPred ? pred : uminPred;
  }
  s.min = static_cast<double>(lo);
  s.max = static_cast<double>(hi);
  if (lo < 0) s.maxNegative = static_cast<double>(static_cast<T>(umax));
  if (hi > 0) s.minPositive = static_cast<double>(static_cast<T>(static_cast<U>(uminPred + 1u)));
  return s;
}

// ---- x86-64 scans (SSE2 is the baseline there; AVX2 only after a CPU check) --------------------

#if defined(QVGUI_X86_64)
#define QVGUI_EXTENTS_X86 1
ExtentsScan scanDoubleSse2(const double* p, std::size_t n) noexcept;
ExtentsScan scanFloatSse2(const float* p, std::size_t n) noexcept;
ExtentsScan scanInt16Sse2(const std::int16_t* p, std::size_t n) noexcept;
ExtentsScan scanDoubleAvx2(const double* p, std::size_t n) noexcept;
ExtentsScan scanFloatAvx2(const float* p, std::size_t n) noexcept;
ExtentsScan scanInt16Avx2(const std::int16_t* p, std::size_t n) noexcept;
using qvgui_bits::cpuHasAvx2;
#endif

}  // namespace gk::detail

// SSE2 and AVX2 scans for computeExtents over double, single and int16 data.
// AVX2 code is compiled per function and only reached after a CPU check.
#include "dataspace/limits_simd_p.h"

#if defined(QVGUI_EXTENTS_X86)

#include <immintrin.h>

#include <cstring>

namespace gk::detail {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr float kInfF = std::numeric_limits<float>::infinity();

// The scans do a dozen operations per vector where a plain sum does one, which
// leaves fewer loads in flight; prefetching this far ahead at every loop turn
// keeps the memory reads at the speed of the sum. Prefetches past
// the end are harmless.
constexpr std::size_t kPrefetchBytes = 4096;

inline void prefetch(const void* p) noexcept {
  _mm_prefetch(static_cast<const char*>(p) + kPrefetchBytes, _MM_HINT_T0);
}

// The floating-point scans make every lane that must not count NaN (by OR-ing
// all ones into it) and rely on MIN/MAX returning their second operand when an
// operand is NaN: min(candidate, accumulator) then leaves the accumulator alone
// for such lanes. Non-finite elements are dropped from the minimum and maximum,
// elements that are not strictly negative (positive) from the largest negative
// (smallest positive); -inf and +inf may reach the tracked values but never
// beat a finite value there, and alone they read as "none seen".

// Folds the lanes of the four stored accumulators: minimum, largest negative,
// smallest positive, maximum.
template <typename T, int N>
ExtentsScan foldLanes(const T (&a)[4][N]) noexcept {
  ExtentsScan s;
  for (int i = 0; i < N; ++i) s = detail::merge(s, ExtentsScan{a[0][i], a[1][i], a[2][i], a[3][i]});
  return s;
}

// ---- SSE2 --------------------------------------------------------------------------------------

struct Sse2Double {
  __m128d mn = _mm_set1_pd(kInf), mx = _mm_set1_pd(-kInf), ng = _mm_set1_pd(-kInf), ps = _mm_set1_pd(kInf);

  void add(__m128d x) noexcept {
    const __m128d absMask = _mm_castsi128_pd(_mm_set1_epi64x(0x7FFFFFFFFFFFFFFF));
    const __m128d zero = _mm_setzero_pd();
    const __m128d finite = _mm_or_pd(x, _mm_cmpnlt_pd(_mm_and_pd(x, absMask), _mm_set1_pd(kInf)));
    mn = _mm_min_pd(finite, mn);
    mx = _mm_max_pd(finite, mx);
    ng = _mm_max_pd(_mm_or_pd(x, _mm_cmpnlt_pd(x, zero)), ng);
    ps = _mm_min_pd(_mm_or_pd(x, _mm_cmpngt_pd(x, zero)), ps);
  }
  void merge(const Sse2Double& o) noexcept {
    mn = _mm_min_pd(o.mn, mn);
    mx = _mm_max_pd(o.mx, mx);
    ng = _mm_max_pd(o.ng, ng);
    ps = _mm_min_pd(o.ps, ps);
  }
  ExtentsScan reduce() const noexcept {
    alignas(16) double a[4][2];
    _mm_store_pd(a[0], mn);
    _mm_store_pd(a[1], ng);
    _mm_store_pd(a[2], ps);
    _mm_store_pd(a[3], mx);
    return foldLanes(a);
  }
};

struct Sse2Float {
  __m128 mn = _mm_set1_ps(kInfF), mx = _mm_set1_ps(-kInfF), ng = _mm_set1_ps(-kInfF), ps = _mm_set1_ps(kInfF);

  void add(__m128 x) noexcept {
    const __m128 absMask = _mm_castsi128_ps(_mm_set1_epi32(0x7FFFFFFF));
    const __m128 zero = _mm_setzero_ps();
    const __m128 finite = _mm_or_ps(x, _mm_cmpnlt_ps(_mm_and_ps(x, absMask), _mm_set1_ps(kInfF)));
    mn = _mm_min_ps(finite, mn);
    mx = _mm_max_ps(finite, mx);
    ng = _mm_max_ps(_mm_or_ps(x, _mm_cmpnlt_ps(x, zero)), ng);
    ps = _mm_min_ps(_mm_or_ps(x, _mm_cmpngt_ps(x, zero)), ps);
  }
  void merge(const Sse2Float& o) noexcept {
    mn = _mm_min_ps(o.mn, mn);
    mx = _mm_max_ps(o.mx, mx);
    ng = _mm_max_ps(o.ng, ng);
    ps = _mm_min_ps(o.ps, ps);
  }
  ExtentsScan reduce() const noexcept {
    alignas(16) float a[4][4];
    _mm_store_ps(a[0], mn);
    _mm_store_ps(a[1], ng);
    _mm_store_ps(a[2], ps);
    _mm_store_ps(a[3], mx);
    return foldLanes(a);
  }
};

// int16 in the unsigned-extreme form of scanIntegerScalar. SSE2 compares only
// signed 16-bit lanes, so the unsigned values are biased by 0x8000 first.
struct Int16Accumulator {
  std::int16_t lo = std::numeric_limits<std::int16_t>::max();
  std::int16_t hi = std::numeric_limits<std::int16_t>::min();
  std::uint16_t umax = 0;
  std::uint16_t uminPred = 0xFFFF;

  void add(std::int16_t v) noexcept {
    lo = v < lo ? v : lo;
    hi = v > hi ? v : hi;
    const auto u = static_cast<std::uint16_t>(v);
    umax = u > umax ? u : umax;
    const auto pred = static_cast<std::uint16_t>(u - 1u);
    uminPred = pred < uminPred ? pred : uminPred;
  }
  // Takes in the stored lanes of the vector accumulators.
  template <int N>
  void foldLanes(const std::int16_t (&l)[N], const std::int16_t (&h)[N], const std::uint16_t (&um)[N],
                 const std::uint16_t (&up)[N]) noexcept {
    for (int k = 0; k < N; ++k) {
      lo = l[k] < lo ? l[k] : lo;
      hi = h[k] > hi ? h[k] : hi;
      umax = um[k] > umax ? um[k] : umax;
      uminPred = up[k] < uminPred ? up[k] : uminPred;
    }
  }
  ExtentsScan finish(bool any) const noexcept {
    ExtentsScan s;
    if (!any) return s;
    s.min = lo;
    s.max = hi;
    if (lo < 0) s.maxNegative = static_cast<std::int16_t>(umax);
    if (hi > 0) s.minPositive = static_cast<std::int16_t>(static_cast<std::uint16_t>(uminPred + 1u));
    return s;
  }
};

}  // namespace

ExtentsScan scanDoubleSse2(const double* p, std::size_t n) noexcept {
  Sse2Double a, b;
  std::size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    prefetch(p + i);
    a.add(_mm_loadu_pd(p + i));
    b.add(_mm_loadu_pd(p + i + 2));
  }
  a.merge(b);
  return merge(a.reduce(), scanFloatingScalar(p + i, n - i));
}

ExtentsScan scanFloatSse2(const float* p, std::size_t n) noexcept {
  Sse2Float a, b;
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    prefetch(p + i);
    a.add(_mm_loadu_ps(p + i));
    b.add(_mm_loadu_ps(p + i + 4));
  }
  a.merge(b);
  return merge(a.reduce(), scanFloatingScalar(p + i, n - i));
}

ExtentsScan scanInt16Sse2(const std::int16_t* p, std::size_t n) noexcept {
  const __m128i bias = _mm_set1_epi16(static_cast<short>(0x8000));
  const __m128i one = _mm_set1_epi16(1);
  __m128i lo = _mm_set1_epi16(0x7FFF), hi = _mm_set1_epi16(static_cast<short>(0x8000));
  __m128i umax = bias;                        // biased unsigned 0
  __m128i uminPred = _mm_set1_epi16(0x7FFF);  // biased unsigned 0xFFFF
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    prefetch(p + i);
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    lo = _mm_min_epi16(lo, x);
    hi = _mm_max_epi16(hi, x);
    umax = _mm_max_epi16(umax, _mm_xor_si128(x, bias));
    uminPred = _mm_min_epi16(uminPred, _mm_xor_si128(_mm_sub_epi16(x, one), bias));
  }
  Int16Accumulator acc;
  alignas(16) std::int16_t l[8], h[8];
  alignas(16) std::uint16_t um[8], up[8];
  _mm_store_si128(reinterpret_cast<__m128i*>(l), lo);
  _mm_store_si128(reinterpret_cast<__m128i*>(h), hi);
  _mm_store_si128(reinterpret_cast<__m128i*>(um), _mm_xor_si128(umax, bias));
  _mm_store_si128(reinterpret_cast<__m128i*>(up), _mm_xor_si128(uminPred, bias));
  if (i > 0) acc.foldLanes(l, h, um, up);
  for (; i < n; ++i) acc.add(p[i]);
  return acc.finish(n > 0);
}

// ---- AVX2 --------------------------------------------------------------------------------------

QVGUI_TARGET_AVX2 ExtentsScan scanDoubleAvx2(const double* p, std::size_t n) noexcept {
  const __m256d inf = _mm256_set1_pd(kInf);
  const __m256d absMask = _mm256_castsi256_pd(_mm256_set1_epi64x(0x7FFFFFFFFFFFFFFF));
  const __m256d zero = _mm256_setzero_pd();
  const __m256d ninf = _mm256_set1_pd(-kInf);
  __m256d mn[2] = {inf, inf}, mx[2] = {ninf, ninf}, ng[2] = {ninf, ninf}, ps[2] = {inf, inf};
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    prefetch(p + i);
    for (int k = 0; k < 2; ++k) {
      const __m256d x = _mm256_loadu_pd(p + i + 4 * k);
      const __m256d finite = _mm256_or_pd(x, _mm256_cmp_pd(_mm256_and_pd(x, absMask), inf, _CMP_NLT_UQ));
      mn[k] = _mm256_min_pd(finite, mn[k]);
      mx[k] = _mm256_max_pd(finite, mx[k]);
      ng[k] = _mm256_max_pd(_mm256_or_pd(x, _mm256_cmp_pd(x, zero, _CMP_NLT_UQ)), ng[k]);
      ps[k] = _mm256_min_pd(_mm256_or_pd(x, _mm256_cmp_pd(x, zero, _CMP_NGT_UQ)), ps[k]);
    }
  }
  alignas(32) double a[4][4];
  _mm256_store_pd(a[0], _mm256_min_pd(mn[0], mn[1]));
  _mm256_store_pd(a[1], _mm256_max_pd(ng[0], ng[1]));
  _mm256_store_pd(a[2], _mm256_min_pd(ps[0], ps[1]));
  _mm256_store_pd(a[3], _mm256_max_pd(mx[0], mx[1]));
  return merge(foldLanes(a), scanFloatingScalar(p + i, n - i));
}

QVGUI_TARGET_AVX2 ExtentsScan scanFloatAvx2(const float* p, std::size_t n) noexcept {
  const __m256 inf = _mm256_set1_ps(kInfF);
  const __m256 absMask = _mm256_castsi256_ps(_mm256_set1_epi32(0x7FFFFFFF));
  const __m256 zero = _mm256_setzero_ps();
  const __m256 ninf = _mm256_set1_ps(-kInfF);
  __m256 mn[2] = {inf, inf}, mx[2] = {ninf, ninf}, ng[2] = {ninf, ninf}, ps[2] = {inf, inf};
  std::size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    prefetch(p + i);
    for (int k = 0; k < 2; ++k) {
      const __m256 x = _mm256_loadu_ps(p + i + 8 * k);
      const __m256 finite = _mm256_or_ps(x, _mm256_cmp_ps(_mm256_and_ps(x, absMask), inf, _CMP_NLT_UQ));
      mn[k] = _mm256_min_ps(finite, mn[k]);
      mx[k] = _mm256_max_ps(finite, mx[k]);
      ng[k] = _mm256_max_ps(_mm256_or_ps(x, _mm256_cmp_ps(x, zero, _CMP_NLT_UQ)), ng[k]);
      ps[k] = _mm256_min_ps(_mm256_or_ps(x, _mm256_cmp_ps(x, zero, _CMP_NGT_UQ)), ps[k]);
    }
  }
  alignas(32) float a[4][8];
  _mm256_store_ps(a[0], _mm256_min_ps(mn[0], mn[1]));
  _mm256_store_ps(a[1], _mm256_max_ps(ng[0], ng[1]));
  _mm256_store_ps(a[2], _mm256_min_ps(ps[0], ps[1]));
  _mm256_store_ps(a[3], _mm256_max_ps(mx[0], mx[1]));
  return merge(foldLanes(a), scanFloatingScalar(p + i, n - i));
}

QVGUI_TARGET_AVX2 ExtentsScan scanInt16Avx2(const std::int16_t* p, std::size_t n) noexcept {
  const __m256i one = _mm256_set1_epi16(1);
  __m256i lo = _mm256_set1_epi16(0x7FFF), hi = _mm256_set1_epi16(static_cast<short>(0x8000));
  __m256i umax = _mm256_setzero_si256();
  __m256i uminPred = _mm256_set1_epi16(static_cast<short>(0xFFFF));
  std::size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    prefetch(p + i);
    const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i));
    lo = _mm256_min_epi16(lo, x);
    hi = _mm256_max_epi16(hi, x);
    umax = _mm256_max_epu16(umax, x);
    uminPred = _mm256_min_epu16(uminPred, _mm256_sub_epi16(x, one));
  }
  alignas(32) std::int16_t l[16], h[16];
  alignas(32) std::uint16_t um[16], up[16];
  _mm256_store_si256(reinterpret_cast<__m256i*>(l), lo);
  _mm256_store_si256(reinterpret_cast<__m256i*>(h), hi);
  _mm256_store_si256(reinterpret_cast<__m256i*>(um), umax);
  _mm256_store_si256(reinterpret_cast<__m256i*>(up), uminPred);
  Int16Accumulator acc;
  if (i > 0) acc.foldLanes(l, h, um, up);
  for (; i < n; ++i) acc.add(p[i]);
  return acc.finish(n > 0);
}

}  // namespace gk::detail

#endif  // QVGUI_EXTENTS_X86

// computeExtents throughput on 10^7-element host arrays of double, single and
// int16, beside a vectorised plain sum of the same array (the memory-read
// yardstick). Compare the bytes_per_second columns.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

#include "dataspace/limits_simd_p.h"
#include "qvgui/dataspace.h"
#include "qvhost/runtime.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

constexpr std::size_t kElements = 10'000'000;

template <typename T>
zrArray_tag* makeData(zrClassID cls) {
  static zrArray_tag* array = [cls] {
    zrArray_tag* a = zrCreateNumericMatrix(kElements, 1, cls);
    T* p = static_cast<T*>(zrGetData(a));
    std::mt19937_64 rng(1);
    std::uniform_real_distribution<double> val(-30000, 30000);
    for (std::size_t i = 0; i < kElements; ++i) {
      p[i] = static_cast<T>(val(rng));
      if constexpr (std::is_floating_point_v<T>) {
        if (i % 1000 == 7) p[i] = std::numeric_limits<T>::quiet_NaN();
      }
    }
    return a;
  }();
  return array;
}

#if defined(__x86_64__)
// ---- The yardstick: a plain sum with several vector accumulators -----------------------------

__attribute__((target("avx2"), noinline)) double sumAvx2(const double* p, std::size_t n) {
  __m256d a0 = _mm256_setzero_pd(), a1 = a0, a2 = a0, a3 = a0;
  std::size_t i = 0;
  for (const std::size_t body = n - n % 16; i < body; i += 16) {
    a0 = _mm256_add_pd(a0, _mm256_loadu_pd(p + i));
    a1 = _mm256_add_pd(a1, _mm256_loadu_pd(p + i + 4));
    a2 = _mm256_add_pd(a2, _mm256_loadu_pd(p + i + 8));
    a3 = _mm256_add_pd(a3, _mm256_loadu_pd(p + i + 12));
  }
  alignas(32) double t[4];
  _mm256_store_pd(t, _mm256_add_pd(_mm256_add_pd(a0, a1), _mm256_add_pd(a2, a3)));
  double s = t[0] + t[1] + t[2] + t[3];
  for (; i < n; ++i) s += p[i];
  return s;
}

__attribute__((target("avx2"), noinline)) double sumAvx2(const float* p, std::size_t n) {
  __m256 a0 = _mm256_setzero_ps(), a1 = a0, a2 = a0, a3 = a0;
  std::size_t i = 0;
  for (const std::size_t body = n - n % 32; i < body; i += 32) {
    a0 = _mm256_add_ps(a0, _mm256_loadu_ps(p + i));
    a1 = _mm256_add_ps(a1, _mm256_loadu_ps(p + i + 8));
    a2 = _mm256_add_ps(a2, _mm256_loadu_ps(p + i + 16));
    a3 = _mm256_add_ps(a3, _mm256_loadu_ps(p + i + 24));
  }
  alignas(32) float t[8];
  _mm256_store_ps(t, _mm256_add_ps(_mm256_add_ps(a0, a1), _mm256_add_ps(a2, a3)));
  double s = 0;
  for (float v : t) s += v;
  for (; i < n; ++i) s += p[i];
  return s;
}

__attribute__((target("avx2"), noinline)) double sumAvx2(const std::int16_t* p, std::size_t n) {
  const __m256i ones = _mm256_set1_epi16(1);
  __m256i a0 = _mm256_setzero_si256(), a1 = a0;
  std::size_t i = 0;
  for (const std::size_t body = n - n % 32; i < body; i += 32) {
    a0 = _mm256_add_epi32(
        a0, _mm256_madd_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i)), ones));
    a1 = _mm256_add_epi32(
        a1, _mm256_madd_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i + 16)), ones));
  }
  alignas(32) std::int32_t t[8];
  _mm256_store_si256(reinterpret_cast<__m256i*>(t), _mm256_add_epi32(a0, a1));
  double s = 0;
  for (std::int32_t v : t) s += v;
  for (; i < n; ++i) s += p[i];
  return s;
}

#endif

template <typename T>
double sumScalar(const T* p, std::size_t n) {
  double s = 0;
  for (std::size_t i = 0; i < n; ++i) s += static_cast<double>(p[i]);
  return s;
}

template <typename T>
void runSum(benchmark::State& state, zrClassID cls) {
  zrArray_tag* a = makeData<T>(cls);
  const T* p = static_cast<const T*>(zrGetData(a));
#if defined(__x86_64__)
  const bool avx2 = __builtin_cpu_supports("avx2");
#else
  const bool avx2 = false;
#endif
  if (!avx2) state.SetLabel("scalar sum (no AVX2)");
  for (auto _ : state) {
#if defined(__x86_64__)
    if (avx2) {
      benchmark::DoNotOptimize(sumAvx2(p, kElements));
      continue;
    }
#endif
    benchmark::DoNotOptimize(sumScalar(p, kElements));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kElements * sizeof(T));
}

template <typename T>
void runExtents(benchmark::State& state, zrClassID cls, gk::detail::ExtentsKernel kernel) {
  zrArray_tag* a = makeData<T>(cls);
  if (!gk::detail::selectExtentsKernel(kernel)) {
    state.SkipWithError("kernel not supported on this processor");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(gk::Limits::computeExtents(a));
  }
  gk::detail::selectExtentsKernel(gk::detail::ExtentsKernel::kAuto);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kElements * sizeof(T));
}

using gk::detail::ExtentsKernel;

void BM_Sum_double(benchmark::State& s) { runSum<double>(s, zrDOUBLE_CLASS); }
void BM_Sum_single(benchmark::State& s) { runSum<float>(s, zrSINGLE_CLASS); }
void BM_Sum_int16(benchmark::State& s) { runSum<std::int16_t>(s, zrINT16_CLASS); }
void BM_Extents_double(benchmark::State& s, ExtentsKernel k) { runExtents<double>(s, zrDOUBLE_CLASS, k); }
void BM_Extents_single(benchmark::State& s, ExtentsKernel k) { runExtents<float>(s, zrSINGLE_CLASS, k); }
void BM_Extents_int16(benchmark::State& s, ExtentsKernel k) { runExtents<std::int16_t>(s, zrINT16_CLASS, k); }

BENCHMARK(BM_Sum_double)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Extents_double, auto, ExtentsKernel::kAuto) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Extents_double, sse2, ExtentsKernel::kSse2)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Extents_double, scalar, ExtentsKernel::kScalar)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sum_single)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Extents_single, auto, ExtentsKernel::kAuto) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Extents_single, sse2, ExtentsKernel::kSse2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sum_int16)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Extents_int16, auto, ExtentsKernel::kAuto) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Extents_int16, sse2, ExtentsKernel::kSse2)->Unit(benchmark::kMillisecond);

}  // namespace

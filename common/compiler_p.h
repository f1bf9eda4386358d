// Compiler attributes, bit operations and CPU-feature checks, each with a
// portable fallback, so that no other file needs a compiler's builtins.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#if defined(_MSC_VER) && !defined(__clang__)
#include <intrin.h>
#endif

#if defined(__GNUC__) || defined(__clang__)
#define QVGUI_LIKELY(x) __builtin_expect(!!(x), 1)
#define QVGUI_UNLIKELY(x) __builtin_expect(!!(x), 0)
#define QVGUI_ALWAYS_INLINE inline __attribute__((always_inline))
#define QVGUI_NOINLINE __attribute__((noinline))
#elif defined(_MSC_VER)
#define QVGUI_LIKELY(x) (x)
#define QVGUI_UNLIKELY(x) (x)
#define QVGUI_ALWAYS_INLINE __forceinline
#define QVGUI_NOINLINE __declspec(noinline)
#else
#define QVGUI_LIKELY(x) (x)
#define QVGUI_UNLIKELY(x) (x)
#define QVGUI_ALWAYS_INLINE inline
#define QVGUI_NOINLINE
#endif

// Code in a function so marked may use AVX2 instructions; call it only after
// cpuHasAvx2() said yes. MSVC needs no mark to emit them.
#if defined(__GNUC__) || defined(__clang__)
#define QVGUI_TARGET_AVX2 __attribute__((target("avx2")))
#else
#define QVGUI_TARGET_AVX2
#endif

#if defined(__x86_64__) || defined(_M_X64)
#define QVGUI_X86_64 1
#endif

namespace qvgui_bits {

// The index of the lowest set bit; bits must not be zero.
QVGUI_ALWAYS_INLINE int countTrailingZeros(std::uint64_t bits) noexcept {
#if defined(__GNUC__) || defined(__clang__)
  return __builtin_ctzll(bits);
#elif defined(_MSC_VER) && defined(_M_X64)
  unsigned long index;
  _BitScanForward64(&index, bits);
  return static_cast<int>(index);
#else
  int n = 0;
  while ((bits & 1u) == 0) {
    bits >>= 1;
    ++n;
  }
  return n;
#endif
}

// a * b into product; true when the product does not fit (product is then
// unspecified).
QVGUI_ALWAYS_INLINE bool multiplyOverflows(std::size_t a, std::size_t b, std::size_t* product) noexcept {
#if defined(__GNUC__) || defined(__clang__)
  return __builtin_mul_overflow(a, b, product);
#else
  *product = a * b;
  return a != 0 && *product / a != b;
#endif
}

// Whether this processor runs AVX2 instructions (asked once per call; callers
// keep the answer).
inline bool cpuHasAvx2() noexcept {
#if defined(QVGUI_X86_64) && (defined(__GNUC__) || defined(__clang__))
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2");
#elif defined(QVGUI_X86_64) && defined(_MSC_VER)
  int regs[4];
  __cpuid(regs, 0);
  if (regs[0] < 7) return false;
  __cpuid(regs, 1);
  const bool osSavesYmm = (regs[2] & (1 << 27)) != 0 && (_xgetbv(0) & 6) == 6;
  __cpuidex(regs, 7, 0);
  return osSavesYmm && (regs[1] & (1 << 5)) != 0;
#else
  return false;
#endif
}

}  // namespace qvgui_bits

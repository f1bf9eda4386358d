// The portable bit operations against plain loops and division, over seeded
// random operands weighted towards the edges where a fallback slips.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>

#include "common/compiler_p.h"

namespace {

int slowTrailingZeros(std::uint64_t bits) {
  int n = 0;
  while (((bits >> n) & 1u) == 0) ++n;
  return n;
}

TEST(Bits, CountTrailingZerosMatchesALoop) {
  for (int k = 0; k < 64; ++k) {
    const std::uint64_t bit = std::uint64_t{1} << k;
    EXPECT_EQ(qvgui_bits::countTrailingZeros(bit), k);
    EXPECT_EQ(qvgui_bits::countTrailingZeros(~std::uint64_t{0} << k), k);
  }
  std::mt19937_64 random(7);
  for (int i = 0; i < 10000; ++i) {
    // Clear a random number of low bits so every answer from 0 to 63 comes up.
    const std::uint64_t bits = (random() | 1u) << (random() % 64);
    ASSERT_EQ(qvgui_bits::countTrailingZeros(bits), slowTrailingZeros(bits)) << bits;
  }
}

TEST(Bits, MultiplyOverflowsMatchesDivision) {
  constexpr std::size_t kMax = std::numeric_limits<std::size_t>::max();
  std::mt19937_64 random(11);
  auto operand = [&] {
    // Mostly values near 2^(bits/2) and the extremes, where overflow starts.
    switch (random() % 4) {
      case 0:
        return static_cast<std::size_t>(random());
      case 1:
        return static_cast<std::size_t>(random() % 4);
      case 2:
        return kMax - static_cast<std::size_t>(random() % 4);
      default:
        return (std::size_t{1} << (sizeof(std::size_t) * 4)) + static_cast<std::size_t>(random() % 5) - 2;
    }
  };
  for (int i = 0; i < 20000; ++i) {
    const std::size_t a = operand(), b = operand();
    const bool expected = a != 0 && b > kMax / a;
    std::size_t product = 0;
    ASSERT_EQ(qvgui_bits::multiplyOverflows(a, b, &product), expected) << a << " * " << b;
    if (!expected) {
      ASSERT_EQ(product, a * b);
    }
  }
}

}  // namespace

// Reads a fuzzer's bytes as the values a harness needs; past the end every
// read gives zero, so any input, even an empty one, is a complete case.
#pragma once

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace fuzz_input {

class Reader {
 public:
  Reader(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  [[nodiscard]] bool empty() const noexcept { return pos_ >= size_; }

  std::uint8_t byte() noexcept { return pos_ < size_ ? data_[pos_++] : 0; }

  // An integer in [lo, hi] (hi - lo below 2^32).
  std::int64_t in(std::int64_t lo, std::int64_t hi) noexcept {
    const std::uint64_t span = static_cast<std::uint64_t>(hi - lo) + 1;
    return lo + static_cast<std::int64_t>(u32() % span);
  }

  std::uint32_t u32() noexcept {
    std::uint32_t v = 0;
    for (int k = 0; k < 4; ++k) v = (v << 8) | byte();
    return v;
  }

  // Any int, with the extremes and the small counts an axis uses made likely.
  int anyInt() noexcept {
    static constexpr int kSpecial[] = {std::numeric_limits<int>::min(),
                                       std::numeric_limits<int>::min() + 1,
                                       -1001,
                                       -1,
                                       0,
                                       1,
                                       2,
                                       3,
                                       5,
                                       11,
                                       100,
                                       1000,
                                       1001,
                                       std::numeric_limits<int>::max() - 1,
                                       std::numeric_limits<int>::max()};
    const std::uint8_t how = byte();
    if (how < 96) return kSpecial[how % (sizeof kSpecial / sizeof kSpecial[0])];
    if (how < 192) return static_cast<int>(in(-20, 40));
    return static_cast<int>(u32());
  }

  // Any double: special values, ordinary ones, or raw bits (every NaN and
  // subnormal included).
  double anyDouble() noexcept {
    static constexpr double kSpecial[] = {0.0,
                                          -0.0,
                                          1.0,
                                          -1.0,
                                          0.5,
                                          DBL_MAX,
                                          -DBL_MAX,
                                          DBL_MIN,
                                          DBL_TRUE_MIN,
                                          -DBL_TRUE_MIN,
                                          1e308,
                                          -1e308,
                                          1e-310,
                                          std::numeric_limits<double>::infinity(),
                                          -std::numeric_limits<double>::infinity(),
                                          std::numeric_limits<double>::quiet_NaN()};
    const std::uint8_t how = byte();
    if (how < 64) return kSpecial[how % (sizeof kSpecial / sizeof kSpecial[0])];
    if (how < 192) return static_cast<double>(static_cast<std::int32_t>(u32())) / 65536.0;
    return rawDouble();
  }

  // A finite double: ordinary values, the ends of the range and subnormals.
  double finiteDouble() noexcept {
    const double v = anyDouble();
    return std::isfinite(v) ? v : 0.0;
  }

  double rawDouble() noexcept {
    std::uint64_t bits = (static_cast<std::uint64_t>(u32()) << 32) | u32();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    return v;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t pos_ = 0;
};

}  // namespace fuzz_input

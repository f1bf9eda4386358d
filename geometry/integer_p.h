// 32-bit integer arithmetic that wraps around instead of overflowing, for the
// integer points and vectors whose results are defined modulo 2^32.
#pragma once

#include <cstdint>

namespace gui_objects::wrap {

constexpr std::int32_t fromBits(std::uint32_t bits) noexcept { return static_cast<std::int32_t>(bits); }
constexpr std::uint32_t bits(std::int32_t v) noexcept { return static_cast<std::uint32_t>(v); }

constexpr std::int32_t add(std::int32_t a, std::int32_t b) noexcept { return fromBits(bits(a) + bits(b)); }
constexpr std::int32_t sub(std::int32_t a, std::int32_t b) noexcept { return fromBits(bits(a) - bits(b)); }
constexpr std::int32_t mul(std::int32_t a, std::int32_t b) noexcept { return fromBits(bits(a) * bits(b)); }
constexpr std::int32_t neg(std::int32_t a) noexcept { return fromBits(0u - bits(a)); }

}  // namespace gui_objects::wrap

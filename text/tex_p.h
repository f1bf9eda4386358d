// Character and command tables shared by the markup interpreter and the
// plain-text path: UTF-8 reading, the Symbol-face characters, colour names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "qvgui/geometry.h"

namespace gui_objects::font::detail {

// The Symbol face's slot in the AFM font table.
constexpr int kSymbolAfmIndex = 28;

// Decodes one character at text[i] (i < size) and advances i. A byte that does
// not start a well-formed sequence (overlong forms and surrogates included)
// counts as the Latin-1 character of its own code and advances one byte.
[[nodiscard]] std::uint32_t decodeUtf8(std::string_view text, std::size_t& i) noexcept;

// Symbol-face code of a command name (without the backslash) or of a Unicode
// code point above 255; -1 when there is none. The command's own code point
// goes to codePoint when that is not null.
[[nodiscard]] int symbolCodeForCommand(std::string_view name, std::uint32_t* codePoint = nullptr) noexcept;
[[nodiscard]] int symbolCodeForCodePoint(std::uint32_t codePoint) noexcept;

// How a character spaces in a formula: binary operators get a medium space
// on each side, relations a thick one, when something ordinary is beside them.
enum class MathClass : std::uint8_t { None, Ordinary, Binary, Relation, Opening };
[[nodiscard]] MathClass mathClassOf(std::uint32_t codePoint) noexcept;

// A named colour, case-sensitive as written in markup; false when unknown.
[[nodiscard]] bool colorByName(std::string_view name, Color3d* out) noexcept;

}  // namespace gui_objects::font::detail

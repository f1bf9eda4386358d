// Shared pieces of the property-string parsers: the tokeniser rules that the
// number lists, the matrix forms and the string lists all follow.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "qvgui/bridge.h"

namespace gui_objects::convert_from_string_utils::detail {

// The one way a parser fails; out of line so a single breakpoint sees them all.
[[noreturn]] void raiseParse();

[[nodiscard]] constexpr bool isSeparator(char c) noexcept { return c == ' ' || c == '\t' || c == ','; }

// Drops leading characters of `leading` and trailing ones of `trailing`;
// fails on null, empty, or nothing left.
[[nodiscard]] std::string_view trimOrFail(std::string_view text, std::string_view leading = " \t[(",
                                          std::string_view trailing = " \t])");
[[nodiscard]] std::string_view textOrFail(const char* text);

// Converts one token: a decimal number at its start (the rest of the token is
// ignored) or exactly "nan", "inf", "-inf". False when it is neither.
[[nodiscard]] bool convertToken(std::string_view token, double& value) noexcept;

// Exactly `count` values from one number list (trimmed here).
void readNumberList(std::string_view text, double* values, std::size_t count);
// All values of one number list (trimmed here); at least one.
void readNumberRow(std::string_view text, std::vector<double>& values);

// Splits at ';' into rows; an empty row (';' first, last or doubled) fails.
[[nodiscard]] std::vector<std::string_view> splitRows(std::string_view text);

}  // namespace gui_objects::convert_from_string_utils::detail

// Strict reading of numbers for the command-line tools: grids and tables of
// values from text files, and single values from the command line, with
// complaints that name the file, line and column (or the option).
#pragma once

#include <cstddef>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qvgui::tools {

// A complaint about the input or an option; a tool prints it and exits 2.
struct InputError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Table {
  std::vector<std::vector<double>> rows;
  [[nodiscard]] std::size_t columns() const { return rows.empty() ? 0 : rows.front().size(); }
};

enum class NumberStatus { Ok, NotANumber, OutOfRange };

// The whole of text must be one number (no blanks around it). Infinities and
// values that overflow a double are OutOfRange, because none of the tools can
// draw or place them; "nan" parses, and the caller decides whether a hole is
// acceptable. Underflow to zero or a subnormal is accepted.
[[nodiscard]] NumberStatus parseNumber(std::string_view text, double* value);

// "file:line:column: " with 1-based line and column.
[[nodiscard]] std::string where(const std::string& file, std::size_t line, std::size_t column);

// One value per cell; cells are separated by commas, or by blanks when the
// line holds no comma. Blank lines and lines starting with '#' are skipped.
// NaN ("nan") is accepted only where allowNaN says a hole can be drawn.
// name is used in messages only. Throws InputError; an empty input is an error.
[[nodiscard]] Table readTable(std::istream& in, const std::string& name, bool allowNaN);
// Reads a file by path; "-" reads standard input.
[[nodiscard]] Table readTable(const std::string& file, bool allowNaN);

}  // namespace qvgui::tools

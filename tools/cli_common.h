// Command-line handling that every tool does the same way, so that options
// are checked, and bad ones reported, alike across the tools.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

namespace qvgui::tools {

// Accepts only a whole, finite number; nanMessage says why NaN is no use to
// the option that it checks.
[[nodiscard]] CLI::Validator finiteNumber(const std::string& nanMessage);

// Parses the command line. Returns the exit code when the tool should stop
// here: 0 after printing the help, 2 after reporting a bad command line
// prefixed with the tool's name. Returns nothing when the tool should go on.
[[nodiscard]] std::optional<int> parseCommandLine(CLI::App& app, int argc, char** argv, const char* tool);

}  // namespace qvgui::tools

#include "cli_common.h"

#include <cmath>
#include <iostream>

#include "table_reader.h"

namespace qvgui::tools {

CLI::Validator finiteNumber(const std::string& nanMessage) {
  return CLI::Validator(
      [nanMessage](std::string& text) -> std::string {
        double v = 0;
        switch (parseNumber(text, &v)) {
          case NumberStatus::NotANumber:
            return "not a number: '" + text + "'";
          case NumberStatus::OutOfRange:
            return "value out of range: '" + text + "'";
          case NumberStatus::Ok:
            break;
        }
        return std::isnan(v) ? nanMessage : std::string();
      },
      "NUMBER", "finite number");
}

std::optional<int> parseCommandLine(CLI::App& app, int argc, char** argv, const char* tool) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return 0;
  } catch (const CLI::ParseError& e) {
    std::cerr << tool << ": " << e.what() << "\n";
    return 2;
  }
  return std::nullopt;
}

}  // namespace qvgui::tools

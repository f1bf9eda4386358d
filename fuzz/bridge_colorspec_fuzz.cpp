// Fuzzes plot-format parsing: it never throws for any text, and whatever it
// accepts holds only known codes.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "qvgui/bridge.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::string colour, lineStyle, marker;
  const bool ok = gui_objects::convert_from_string_utils::stringToColorMarkerLineStyle(text.c_str(), colour,
                                                                                       lineStyle, marker);
  auto oneOf = [](const std::string& value, std::initializer_list<const char*> allowed) {
    if (value.empty()) return true;
    for (const char* a : allowed) {
      if (value == a) return true;
    }
    return false;
  };
  if (!oneOf(colour, {"b", "c", "g", "k", "m", "r", "w", "y"})) __builtin_trap();
  if (!oneOf(lineStyle, {"-", "--", ":", "-."})) __builtin_trap();
  if (!oneOf(marker, {"*", "+", ".", "<", ">", "^", "o", "v", "x", "d", "h", "p", "s"})) __builtin_trap();
  (void)ok;
  return 0;
}

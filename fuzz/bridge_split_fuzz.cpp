// Fuzzes delimited-string splitting: the first two bytes choose delimiter and
// escape; joining the pieces back never yields more text than went in, and
// the flat interface agrees with the class.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "qvgui/bridge.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const char delimiter = static_cast<char>(data[0]);
  const char escape = static_cast<char>(data[1]);
  const std::string text(reinterpret_cast<const char*>(data + 2), size - 2);
  try {
    NStrings list(text.c_str(), delimiter, escape);
    std::size_t total = 0;
    for (std::int32_t i = 0; i < list.getNumStrings(); ++i) total += std::strlen(list[i]);
    if (total > std::strlen(text.c_str())) __builtin_trap();

    const char delimiterText[2] = {delimiter, '\0'};
    const char escapeText[2] = {escape, '\0'};
    NStrings* flat = delimited_string_to_NStrings(text.c_str(), delimiterText, escapeText);
    if (delimiter != '\0' && !text.empty() && text[0] != '\0' && !(*flat == list)) __builtin_trap();
    free_NStrings(flat);

    list.applyDelimiter(escape);
    zrDestroyArray(list.toCellArray());
    zrDestroyArray(list.toMatrix());
    char* joined = list.toString('|');
    utFree(joined);
  } catch (const HostError&) {
  }
  return 0;
}

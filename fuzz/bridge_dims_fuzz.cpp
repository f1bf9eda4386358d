// Fuzzes the matrix-literal dimension counter, with and without brackets
// added around the input.
#include <cstddef>
#include <cstdint>
#include <string>

#include "qvgui/bridge.h"

namespace cfs = gui_objects::convert_from_string_utils;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  for (const std::string& s : {text, "[" + text + "]"}) {
    try {
      const cfs::MxN dims = cfs::parse_array_dimensions(s.c_str());
      if (dims.m == 0 || dims.m > s.size() + 1 || dims.n > s.size()) __builtin_trap();
    } catch (const cfs::ParseException&) {
    }
  }
  return 0;
}

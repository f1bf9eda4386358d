// Fuzzes the numeric property parsers: any text either parses or throws
// ParseException; parsed matrices must have the shape they report.
#include <cstddef>
#include <cstdint>
#include <string>

#include "qvgui/bridge.h"
#include "qvhost/testing.h"

namespace cfs = gui_objects::convert_from_string_utils;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);  // stops at an embedded NUL
  const char* s = text.c_str();
  auto attempt = [](auto&& parse) {
    try {
      parse();
    } catch (const cfs::ParseException&) {
    } catch (const HostError&) {  // out of memory on absurd sizes
    }
  };
  attempt([&] { (void)cfs::parse_double_scalar(s); });
  attempt([&] { (void)cfs::parse_1x2_double(s); });
  attempt([&] { (void)cfs::parse_1x3_double(s); });
  attempt([&] { (void)cfs::parse_1x4_double(s); });
  attempt([&] { (void)cfs::parse_2x3_double(s); });
  attempt([&] { (void)cfs::parse_4x4_double(s); });
  attempt([&] {
    cfs::MxN dims;
    const auto values = cfs::parse_mxn(s, dims);
    if (values.size() != dims.m * dims.n || values.empty()) __builtin_trap();
  });
  attempt([&] {
    const std::int64_t live = hostLiveArrayCount();
    {
      gui_objects::ZrArrayPtr a = cfs::parse_mxn_float(s);
      gui_objects::ZrArrayPtr b = cfs::parse_strings(s);
    }
    if (hostLiveArrayCount() != live) __builtin_trap();
  });
  attempt([&] { gui_objects::ZrArrayPtr b = cfs::parse_strings(s); });
  return 0;
}

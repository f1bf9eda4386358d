// Fuzzes the markup interpreter and layout: the first byte picks the kind and
// the alignment; whatever the markup, the error lies inside the string,
// validation agrees with layout, and every position is finite.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "qvgui/text.h"

using namespace gui_objects::font;

namespace {

void check(bool ok) {
  if (!ok) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
  const TextHandler handler(static_cast<TextKind>(data[0] % 3));
  StringProps props;
  props.horzAlign = static_cast<TextHorzAlign>((data[0] >> 2) % 3);
  props.vertAlign = static_cast<TextVertAlign>((data[0] >> 4) % 5);
  props.rotation = data[0] * 7.0;

  const TextError error = handler.validate(text);
  check(error.ok() || error.offset < text.size());
  const TextLayout layout = handler.layout(text, props);
  check(layout.error.offset == error.offset && layout.error.message == error.message);
  check(std::isfinite(layout.width) && std::isfinite(layout.ascent) && std::isfinite(layout.descent));
  for (const GlyphRun& run : layout.runs) {
    check(run.glyphX.size() == run.bytes.size() && !run.bytes.empty());
    check(std::isfinite(run.x) && std::isfinite(run.y) && run.line < layout.lineCount);
  }
  return 0;
}

// Reading the rasteriser's polygon record: int32 (x, y) pairs and a count.
#pragma once

#include <cstdint>

#include "qvgui/window.h"

namespace qvgui::offscreen::detail {

struct PolygonView {
  const std::int32_t* xy;  // x0, y0, x1, y1, ...
  std::int32_t count;
};

// The record's layout is fixed by the interchange with the back ends: a
// pointer to the points, then the count.
struct PolygonLayout {
  const std::int32_t* points;
  std::int32_t count;
};

[[nodiscard]] inline PolygonView viewOf(const Polygon2* poly) noexcept {
  if (!poly) return PolygonView{nullptr, 0};
  const auto* layout = reinterpret_cast<const PolygonLayout*>(poly);
  if (!layout->points || layout->count <= 0) return PolygonView{nullptr, 0};
  return PolygonView{layout->points, layout->count};
}

}  // namespace qvgui::offscreen::detail

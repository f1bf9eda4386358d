// Fuzzes the contour engine: grids of any values (NaN holes, infinities,
// subnormals), any levels and limits, arrays that may be too short. The
// result must be a well-formed contour matrix and nothing may leak.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz/fuzz_reader.h"
#include "qvgui/host.h"
#include "qvgui/surface.h"
#include "qvhost/testing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz_input::Reader in(data, size);
  const int rows = static_cast<int>(in.in(-1, 24));
  const int columns = static_cast<int>(in.in(-1, 24));
  const std::size_t r = rows > 0 ? static_cast<std::size_t>(rows) : 0;
  const std::size_t c = columns > 0 ? static_cast<std::size_t>(columns) : 0;
  const bool ordinaryAxes = in.byte() < 200;
  std::vector<double> x(c), y(r), z(r * c);
  for (std::size_t j = 0; j < c; ++j) x[j] = ordinaryAxes ? static_cast<double>(j) : in.anyDouble();
  for (std::size_t i = 0; i < r; ++i) y[i] = ordinaryAxes ? static_cast<double>(i) : in.anyDouble();
  for (double& v : z) v = in.anyDouble();
  std::vector<double> levels(static_cast<std::size_t>(in.in(0, 8)));
  for (double& v : levels) v = in.anyDouble();
  double zmin = in.anyDouble(), zmax = in.anyDouble();
  if (in.byte() < 200) {
    zmin = HUGE_VAL, zmax = -HUGE_VAL;
    for (double v : z) {
      if (!std::isnan(v)) zmin = std::fmin(zmin, v), zmax = std::fmax(zmax, v);
    }
  }
  // Now and then one array is given as shorter than the grid needs.
  const int shorten = static_cast<int>(in.in(0, 15));
  const std::size_t xCount = x.size() - (shorten == 1 && !x.empty() ? 1 : 0);
  const std::size_t yCount = y.size() - (shorten == 2 && !y.empty() ? 1 : 0);
  const std::size_t zCount = z.size() - (shorten == 3 && !z.empty() ? 1 : 0);
  const bool refused = (xCount < x.size() || yCount < y.size() || zCount < z.size()) && !z.empty();

  const std::int64_t live = hostLiveArrayCount();
  {
    gui_objects::ContourEngine engine(rows, columns);
    engine.allocWorkSpace(static_cast<int>(in.in(-1, 64)));
    try {
      engine.setXYZAndZMinMax(x.data(), xCount, y.data(), yCount, z.data(), zCount, zmin, zmax);
      if (refused) __builtin_trap();
    } catch (const HostError& e) {
      if (!refused) __builtin_trap();
      if (e.identifier() != "Tavrix::gui::surface::ContourArraySizeMismatch") __builtin_trap();
      return 0;
    }
    gui_objects::ContourResult result;
    engine.plotContours(levels.data(), static_cast<int>(levels.size()), result);
    zrArray_tag* m = result.release();
    if (m == nullptr || zrGetM(m) != 2) __builtin_trap();
    // Header columns (level, count) each followed by exactly count points.
    const double* d = zrGetPr(m);
    const std::size_t n = zrGetN(m);
    for (std::size_t k = 0; k < n;) {
      const double count = d[2 * k + 1];
      if (!(count >= 1) || count != std::floor(count) || count > static_cast<double>(n - k - 1))
        __builtin_trap();
      k += static_cast<std::size_t>(count) + 1;
    }
    zrDestroyArray(m);
  }
  if (hostLiveArrayCount() != live) __builtin_trap();
  return 0;
}

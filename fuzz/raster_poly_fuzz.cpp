// Fuzzes the rasteriser on polygons of up to 24 vertices within +-60 pixels,
// some of them missing, with values in 0..255 (and a NaN now and then):
// every fill, outline, warp and resampler must stay inside the buffers
// AllocatePolygonPixmap made, and write pixmap bytes only where the mask says.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "qvgui/geometry.h"
#include "qvgui/host.h"
#include "qvgui/raster.h"

namespace {

struct Input {
  const std::uint8_t* data;
  std::size_t size;
  std::size_t at = 0;
  std::uint8_t byte() { return at < size ? data[at++] : 0; }
  int range(int lo, int hi) { return lo + byte() % (hi - lo + 1); }
};

void checkMask(const qvrect& box, const unsigned char* pix, const unsigned char* mask) {
  const int w = box.right - box.left + 1, h = box.bottom - box.top + 1, stride = (w + 3) & ~3;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      if (mask[y * w + x] > 1) __builtin_trap();
      if (mask[y * w + x] == 0 && pix[y * stride + x] != 0) __builtin_trap();
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in{data, size};
  const int n = in.range(0, 24);
  std::vector<qvpoint32> pts;
  std::vector<double> values, rgb;
  for (int i = 0; i < n; ++i) {
    const int kind = in.range(0, 15);
    qvpoint32 p{in.range(-60, 60), in.range(-60, 60)};
    if (kind == 0) p.x = -32768;
    if (kind == 1) p.y = -32768;
    pts.push_back(p);
    values.push_back(kind == 2 ? std::numeric_limits<double>::quiet_NaN() : in.byte() + in.byte() / 256.0);
    for (int c = 0; c < 3; ++c) rgb.push_back(in.byte() / 255.0);
  }
  Polygon2 poly{pts.data(), n};
  qvrect box;
  unsigned char* pix = nullptr;
  unsigned char* mask = nullptr;
  AllocatePolygonPixmap(&poly, &box, &pix, &mask);
  if (pix == nullptr) return 0;
  const int w = box.right - box.left + 1, h = box.bottom - box.top + 1;

  switch (in.range(0, 5)) {
    case 0:
      FillInterpPoly(&poly, values.data(), &box, pix, mask);
      break;
    case 1:
      DrawInterpPoly(&poly, values.data(), &box, pix, mask);
      break;
    case 2: {
      const double corners[4] = {values.empty() ? 0.0 : values[0], 40.0, 250.0, 7.0};
      FillBilinearPoly(&poly, corners, &box, pix, mask);
      break;
    }
    case 3: {
      if (n < 3) break;
      const unsigned long rows = static_cast<unsigned long>(in.range(1, 8));
      const unsigned long columns = static_cast<unsigned long>(in.range(1, 8));
      std::vector<int> texture(rows * columns);
      for (int& t : texture) t = in.range(-300, 300);
      double coords[3][2];
      for (auto& c : coords) {
        c[0] = (in.range(0, 255) - 128) * 32.0 + in.byte() / 256.0;
        c[1] = (in.range(0, 255) - 128) * 32.0 + in.byte() / 256.0;
      }
      WarpTriangle(&poly, &box, nullptr, rows, columns, coords, texture.data(), in.range(-1, 300), pix, mask);
      break;
    }
    case 4: {
      const int rows = in.range(1, 6), columns = in.range(1, 6);
      std::vector<double> image(static_cast<std::size_t>(rows * columns));
      for (double& v : image) v = in.range(0, 20) == 0 ? std::nan("") : in.byte();
      const qvrect dest{in.range(-70, 70), in.range(-70, 70), in.range(-70, 70), in.range(-70, 70)};
      ExtractSubMatrixAndInterpolateIntoPixmap(image.data(), rows, columns, in.range(-1, 6), in.range(-1, 6),
                                               in.range(0, 6), in.range(0, 6), &dest, in.byte() & 1, &box,
                                               pix, mask);
      break;
    }
    default: {
      std::vector<std::uint32_t> pixels(static_cast<std::size_t>(w * h));
      std::vector<unsigned char> rgbMask(pixels.size());
      FillInterpPolyRGB(&poly, rgb.data(), &box, pixels.data(), rgbMask.data());
      DrawInterpPolyRGB(&poly, rgb.data(), &box, pixels.data(), nullptr);
      for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (pixels[i] != 0 && (pixels[i] >> 24) != 0xFF) __builtin_trap();
      }
      break;
    }
  }
  checkMask(box, pix, mask);
  zrFree(pix);
  zrFree(mask);

  const qvpoint from{static_cast<std::int16_t>(in.range(-128, 127) * 200),
                     static_cast<std::int16_t>(in.byte())};
  const qvpoint to{static_cast<std::int16_t>(in.range(-128, 127) * 200),
                   static_cast<std::int16_t>(in.byte())};
  const Polygon2* line = uiBresenhamPolygon2(from, to, in.range(-3, 40));
  if (line->count < 0 || line->count > 15) __builtin_trap();
  return 0;
}

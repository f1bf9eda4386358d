// Dithering a 2048x2048 true-colour image (and a 32x32 icon) to a fixed
// 256-colour table, and the fast quantiser on 4-megapixel images of 64 and
// 200 colours. Figures: pixels per second. bench/dither_vs_pillow.sh runs the
// same 2048x2048 dithering image and palette through Pillow.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "qvgui/dataspace.h"
#include "qvgui/host.h"
#include "qvgui/raster.h"
#include "qvgui/window.h"

namespace {

constexpr int kSide = 2048;

// The same formulas are in dither_vs_pillow.py: change both or neither.
std::vector<std::uint32_t> testImage(std::uint32_t side) {
  std::vector<std::uint32_t> image(static_cast<std::size_t>(side) * side);
  for (std::uint32_t y = 0; y < side; ++y) {
    for (std::uint32_t x = 0; x < side; ++x) {
      const std::uint32_t r = (x + y) * 255 / (2 * (side - 1));
      const std::uint32_t g = (x * 7 + y * 13) & 255;
      const std::uint32_t b = ((x * y) >> 6) & 255;
      image[static_cast<std::size_t>(y) * side + x] = (r << 16) | (g << 8) | b;
    }
  }
  return image;
}

// 8 reds x 8 greens x 4 blues, colour k = (red level, green level, blue level)
// = (k >> 5, (k >> 2) & 7, k & 3).
NReals testPalette() {
  std::vector<double> planar(3 * 256);
  for (int k = 0; k < 256; ++k) {
    planar[k] = ((k >> 5) & 7) * 255 / 7 / 255.0;
    planar[256 + k] = ((k >> 2) & 7) * 255 / 7 / 255.0;
    planar[512 + k] = (k & 3) * 255 / 3 / 255.0;
  }
  return NReals(planar.data(), static_cast<int>(planar.size()));
}

_TrueColorPixelInfo_tag g_info{255.0, 255.0, 255.0, 16, 8, 0};

struct BenchWindow {
  winMethods_tag* methods = wm_Create();
  WinRec_tag* win = wr_Create(0, nullptr);
  BenchWindow() {
    swm_GetTrueColorPixelInfo(methods, [](WinRec_tag*, _TrueColorPixelInfo_tag* info) { *info = g_info; });
    swm_AllocateFixedColors(methods, [](WinRec_tag*, Color_tag** colours, int n, Colortable_tag*) {
      for (int i = 0; i < n; ++i) colours[i]->pixel = i;
    });
    swr_winMethods(win, methods);
  }
  ~BenchWindow() {
    wr_Destroy(win);
    wm_Destroy(methods);
  }
};

void BM_DitherWrapper(benchmark::State& state) {
  const auto side = static_cast<int>(state.range(0));
  BenchWindow w;
  Colortable_tag* t = create_ColortablePtr();
  set_ColortablePtr_colormap_data(t, testPalette());
  const std::vector<std::uint32_t> image = testImage(static_cast<std::uint32_t>(side));
  std::vector<unsigned char> out(image.size());
  for (auto _ : state) {
    dither_wrapper(w.win, side, side, image.data(), out.data(), t);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(image.size()));
  destroy_ColortablePtr(t);
}
BENCHMARK(BM_DitherWrapper)->Arg(kSide)->Arg(32)->Unit(benchmark::kMicrosecond);

// Horizontal bands of `colours` distinct values. With more than 64 the
// quantiser walks until the 65th band, then puts every pixel back.
void BM_FastQuantize(benchmark::State& state) {
  const int colours = static_cast<int>(state.range(0));
  BenchWindow w;
  Colortable_tag* t = create_ColortablePtr();
  std::vector<std::uint32_t> image(static_cast<std::size_t>(kSide) * kSide);
  for (std::size_t p = 0; p < image.size(); ++p) {
    const auto band = static_cast<std::uint32_t>(p * static_cast<std::size_t>(colours) / image.size());
    image[p] = band * 0x010305u;
  }
  const std::vector<std::uint32_t> original = image;
  for (auto _ : state) {
    state.PauseTiming();
    std::memcpy(image.data(), original.data(), image.size() * sizeof(std::uint32_t));
    state.ResumeTiming();
    Color_tag** out = nullptr;
    int count = 0;
    const bool gaveUp = fast_quantize(kSide, kSide, image.data(), &out, &count, w.win, t, &g_info);
    benchmark::DoNotOptimize(gaveUp);
    for (int i = 0; i < count; ++i) destroy_ColorPtr(out[i]);
    utFree(out);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(image.size()));
  destroy_ColortablePtr(t);
}
BENCHMARK(BM_FastQuantize)->Arg(64)->Arg(200)->Unit(benchmark::kMillisecond);

}  // namespace

// Offscreen back end: the costs a figure pays in it at 1600 x 1200 pixels:
// shaded faces through the rasteriser, anti-aliased polylines, labels, and
// writing the PNG at several compression levels.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "qvgui/offscreen.h"
#include "qvgui/raster.h"
#include "qvgui/text.h"

namespace {

using qvgui::offscreen::Canvas;
using qvgui::offscreen::Format;

constexpr int kWidth = 1600, kHeight = 1200;

// A 80 x 60 grid of quadrilateral faces of 17 x 16 pixels with smoothly
// varying vertex colours, as a lit surface seen from above gives.
void shadedGrid(WinRec_tag* win) {
  for (int i = 0; i < 80; ++i)
    for (int j = 0; j < 60; ++j) {
      qvpoint32 p[4] = {{100 + i * 17, 100 + j * 16},
                        {117 + i * 17, 100 + j * 16},
                        {117 + i * 17, 116 + j * 16},
                        {100 + i * 17, 116 + j * 16}};
      Polygon2 poly{p, 4};
      double rgb[12];
      for (int k = 0; k < 4; ++k) {
        const double v = 0.5 + 0.5 * std::sin(p[k].x / 90.0 + p[k].y / 70.0);
        rgb[3 * k] = v;
        rgb[3 * k + 1] = 0.4 * v;
        rgb[3 * k + 2] = 1.0 - v;
      }
      wm_FillInterpPoly(win, &poly, rgb, nullptr);
    }
}

// 50 wavy lines of 400 points, one point wide: contour lines of a figure.
void wavyLines(WinRec_tag* win) {
  Color_tag black{0, 0, 0, -1, false};
  wm_SetFGColorPtr(win, &black);
  wm_SetLineWidth(win, 1.0);
  std::vector<Real_point3> pts(400);
  for (int l = 0; l < 50; ++l) {
    for (int i = 0; i < 400; ++i) pts[i] = {100 + i * 3.5, 200 + l * 15 + 20 * std::sin(i / 20.0 + l), 0.0};
    wm_PolyLineRP3(win, pts.data(), 400);
  }
}

void BM_ShadedFaces(benchmark::State& state) {
  Canvas canvas(Format::Png, kWidth, kHeight, 100.0);
  for (auto _ : state) shadedGrid(canvas.window());
  state.SetItemsProcessed(state.iterations() * 80 * 60);
}
BENCHMARK(BM_ShadedFaces)->Unit(benchmark::kMillisecond);

void BM_Polylines(benchmark::State& state) {
  Canvas canvas(Format::Png, kWidth, kHeight, 100.0);
  for (auto _ : state) wavyLines(canvas.window());
  state.SetItemsProcessed(state.iterations() * 50 * 400);
}
BENCHMARK(BM_Polylines)->Unit(benchmark::kMillisecond);

void BM_Labels(benchmark::State& state) {
  Canvas canvas(Format::Png, kWidth, kHeight, 100.0);
  WinRec_tag* win = canvas.window();
  zrFont* font = create_font();
  font_set_name(font, "Helvetica");
  font_set_size(font, 10.0);
  wm_SetWindowFont(win, font);
  wm_SetTextAlignment(win, TEXT_HALIGN_CENTER, TEXT_VALIGN_TOP);
  for (auto _ : state)
    for (int i = 0; i < 200; ++i) {
      wm_MoveTo(win, static_cast<short>(100 + (i % 20) * 70), static_cast<short>(100 + (i / 20) * 100));
      wm_DrawString(win, "10^{-3} 0.25");
    }
  destroy_font(font);
  state.SetItemsProcessed(state.iterations() * 200);
}
BENCHMARK(BM_Labels)->Unit(benchmark::kMillisecond);

// Writing a figure-like image (shaded area, lines, white margins) at a zlib
// level; the file size is reported as a counter.
void BM_SavePng(benchmark::State& state) {
  Canvas canvas(Format::Png, kWidth, kHeight, 100.0);
  shadedGrid(canvas.window());
  wavyLines(canvas.window());
  canvas.setPngCompression(static_cast<int>(state.range(0)));
  const std::string path = "/tmp/qvgui_offscreen_bench.png";
  for (auto _ : state) canvas.save(path);
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (f) {
    std::fseek(f, 0, SEEK_END);
    state.counters["bytes"] = static_cast<double>(std::ftell(f));
    std::fclose(f);
  }
  std::remove(path.c_str());
}
BENCHMARK(BM_SavePng)->Arg(1)->Arg(3)->Arg(6)->Arg(9)->Unit(benchmark::kMillisecond);

}  // namespace

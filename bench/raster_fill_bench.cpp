// Interpolating fills of 10,000 triangles of about 100 x 100 pixels, in
// colormap values and in true colour. Figure: filled pixels per second.
// bench/fill_vs_pillow.py draws the same triangles with Pillow.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "qvgui/geometry.h"
#include "qvgui/raster.h"

namespace {

// The generator bench/fill_vs_pillow.py repeats, so both sides draw the same
// triangles.
struct Lcg {
  std::uint32_t state = 12345;
  std::int32_t next(std::int32_t n) {
    state = state * 1664525u + 1013904223u;
    return static_cast<std::int32_t>((state >> 8) % static_cast<std::uint32_t>(n));
  }
};

struct Triangle {
  qvpoint32 p[3];
  double value[3];
  double rgb[9];
  qvrect box;
};

constexpr int kTriangles = 10000;
constexpr int kCanvas = 1024;
constexpr int kMaxBox = 112;

// A right triangle spanning a 100 x 100 box in one of four orientations, each
// vertex jittered by up to 10 pixels, placed anywhere on a 1024 x 1024 canvas.
const std::vector<Triangle>& triangles() {
  static const std::vector<Triangle> all = [] {
    std::vector<Triangle> out;
    Lcg rng;
    for (int i = 0; i < kTriangles; ++i) {
      const std::int32_t ox = rng.next(kCanvas - kMaxBox), oy = rng.next(kCanvas - kMaxBox);
      const int corner = i % 4;
      const std::int32_t cx[4] = {0, 100, 100, 0}, cy[4] = {0, 0, 100, 100};
      Triangle t{};
      for (int k = 0; k < 3; ++k) {
        const int c = (corner + k) % 4;
        t.p[k] = qvpoint32{ox + cx[c] + rng.next(10), oy + cy[c] + rng.next(10)};
        t.value[k] = rng.next(256);
        for (int ch = 0; ch < 3; ++ch) t.rgb[3 * k + ch] = rng.next(256) / 255.0;
      }
      std::int32_t minX = t.p[0].x, maxX = minX, minY = t.p[0].y, maxY = minY;
      for (const qvpoint32& q : t.p) {
        minX = std::min(minX, q.x), maxX = std::max(maxX, q.x);
        minY = std::min(minY, q.y), maxY = std::max(maxY, q.y);
      }
      guiSetRect(&t.box, minX, minY, maxX, maxY);
      out.push_back(t);
    }
    return out;
  }();
  return all;
}

// Pixels the fill writes over all triangles, counted once from the masks.
std::int64_t filledPixels() {
  static const std::int64_t count = [] {
    std::int64_t n = 0;
    std::vector<unsigned char> pix(kMaxBox * kMaxBox), mask(kMaxBox * kMaxBox);
    for (const Triangle& t : triangles()) {
      std::fill(mask.begin(), mask.end(), 0);
      Polygon2 poly{const_cast<qvpoint32*>(t.p), 3};
      FillInterpPoly(&poly, t.value, &t.box, pix.data(), mask.data());
      n += std::count(mask.begin(), mask.end(), 1);
    }
    return n;
  }();
  return count;
}

void report(benchmark::State& state) {
  const double pixels = static_cast<double>(filledPixels());
  state.counters["pixels"] = pixels;
  state.counters["pixels_per_s"] =
      benchmark::Counter(pixels * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_FillInterpPoly(benchmark::State& state) {
  const std::vector<Triangle>& all = triangles();
  std::vector<unsigned char> pix(kMaxBox * kMaxBox), mask(kMaxBox * kMaxBox);
  for (auto _ : state) {
    for (const Triangle& t : all) {
      Polygon2 poly{const_cast<qvpoint32*>(t.p), 3};
      FillInterpPoly(&poly, t.value, &t.box, pix.data(), mask.data());
    }
    benchmark::DoNotOptimize(pix.data());
    benchmark::ClobberMemory();
  }
  report(state);
}
BENCHMARK(BM_FillInterpPoly)->Unit(benchmark::kMillisecond);

void BM_FillInterpPolyRGB(benchmark::State& state) {
  const std::vector<Triangle>& all = triangles();
  std::vector<std::uint32_t> pixels(kMaxBox * kMaxBox);
  std::vector<unsigned char> mask(kMaxBox * kMaxBox);
  for (auto _ : state) {
    for (const Triangle& t : all) {
      Polygon2 poly{const_cast<qvpoint32*>(t.p), 3};
      FillInterpPolyRGB(&poly, t.rgb, &t.box, pixels.data(), mask.data());
    }
    benchmark::DoNotOptimize(pixels.data());
    benchmark::ClobberMemory();
  }
  report(state);
}
BENCHMARK(BM_FillInterpPolyRGB)->Unit(benchmark::kMillisecond);

}  // namespace

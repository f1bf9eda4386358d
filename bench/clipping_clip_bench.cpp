// Throughput of polygon and line clipping on a mix of trivially accepted,
// trivially rejected and straddling primitives.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "qvgui/clipping.h"

using namespace gui_objects;

namespace {

enum class Mix { Accepted, Rejected, Straddling, Mixed };

// A primitive of `count` vertices around a centre chosen for the mix.
std::vector<Point4d> primitive(std::mt19937& rng, Mix mix, int count) {
  std::uniform_real_distribution<double> jitter(-0.3, 0.3), side(-1.0, 1.0);
  Mix kind = mix;
  if (mix == Mix::Mixed) kind = static_cast<Mix>(rng() % 3);
  double cx = 0.0;
  if (kind == Mix::Rejected) cx = 3.0;
  if (kind == Mix::Straddling) cx = 1.0;
  std::vector<Point4d> pts;
  for (int k = 0; k < count; ++k) pts.emplace_back(cx + jitter(rng), 0.5 * side(rng), 0.5 * side(rng), 1.0);
  return pts;
}

std::vector<VertexVector> makeSet(Mix mix, int vertices) {
  std::mt19937 rng(17);
  std::vector<VertexVector> set;
  for (int i = 0; i < 256; ++i) {
    const std::vector<Point4d> pts = primitive(rng, mix, vertices);
    set.emplace_back(pts.size(), pts.data(), nullptr);
    std::vector<Color4b> colors(pts.size(), Color4b(10, 20, 30, 255));
    set.back().addRGBAColors(colors.data());
  }
  return set;
}

void BM_ClipPolygon(benchmark::State& state) {
  std::vector<VertexVector> set = makeSet(static_cast<Mix>(state.range(0)), 4);
  std::size_t i = 0;
  for (auto _ : state) {
    VertexVector out = clip_polygon(set[i++ % set.size()], nullptr);
    benchmark::DoNotOptimize(out.getSize());
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_ClipLine(benchmark::State& state) {
  std::vector<VertexVector> set = makeSet(static_cast<Mix>(state.range(0)), 2);
  std::size_t i = 0;
  for (auto _ : state) {
    VertexVector out = clip_line(set[i++ % set.size()], nullptr);
    benchmark::DoNotOptimize(out.getSize());
  }
  state.SetItemsProcessed(state.iterations());
}

void mixes(benchmark::internal::Benchmark* b) {
  b->ArgName("mix");  // 0 accepted, 1 rejected, 2 straddling, 3 mixed
  for (int m = 0; m <= 3; ++m) b->Arg(m);
}

}  // namespace

BENCHMARK(BM_ClipPolygon)->Apply(mixes);
BENCHMARK(BM_ClipLine)->Apply(mixes);

// fitPlaneThroughPoints on planar polygons of 3 to 64 vertices.
#include <benchmark/benchmark.h>

#include <cmath>
#include <numeric>
#include <vector>

#include "qvgui/clipping.h"
#include "qvgui/geometry.h"

using namespace gui_objects;

namespace {

class Ring : public VertexSet {
 public:
  explicit Ring(int count) {
    for (int k = 0; k < count; ++k) {
      const double a = 6.283185307179586 * k / count;
      points_.emplace_back(std::cos(a), std::sin(a), 0.3 * std::cos(a) + 0.1 * std::sin(a) + 2.0);
    }
  }
  Point3d getVertex(std::size_t index) const override { return points_[index]; }
  std::size_t getNumVertices() const override { return points_.size(); }

 private:
  std::vector<Point3d> points_;
};

void BM_FitPlane(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  const Ring ring(count);
  std::vector<std::size_t> indices(static_cast<std::size_t>(count));
  std::iota(indices.begin(), indices.end(), std::size_t{0});
  for (auto _ : state) {
    Plane3d plane = fitPlaneThroughPoints(ring, indices.data(), indices.size());
    benchmark::DoNotOptimize(plane);
  }
  state.SetItemsProcessed(state.iterations());
}

}  // namespace

BENCHMARK(BM_FitPlane)->Arg(3)->Arg(4)->Arg(5)->Arg(8)->Arg(16)->Arg(32)->Arg(64);

// Contour tracing of a large smooth surface, and patch normals of a large
// patch. Figures: grid points and output points per second.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "qvgui/surface.h"
#include "qvhost/runtime.h"

namespace {

using namespace gui_objects;

// z = sin(3x) cos(2y) + 0.5 exp(-(x^2 + y^2)) on [-3, 3]^2, n x n points.
struct Surface {
  int n;
  std::vector<double> x, y, z;
  double zmin = 0, zmax = 0;

  explicit Surface(int size) : n(size), x(size), y(size), z(static_cast<std::size_t>(size) * size) {
    for (int k = 0; k < n; ++k) x[k] = y[k] = -3.0 + 6.0 * k / (n - 1);
    zmin = 1e300;
    zmax = -1e300;
    // Row i holds y[n - 1 - i] (the engine reads rows in reverse order of y).
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        const double xx = x[j], yy = y[n - 1 - i];
        const double v = std::sin(3 * xx) * std::cos(2 * yy) + 0.5 * std::exp(-(xx * xx + yy * yy));
        z[static_cast<std::size_t>(j) * n + i] = v;
        zmin = std::min(zmin, v);
        zmax = std::max(zmax, v);
      }
  }

  // count levels evenly spaced strictly inside the data range.
  std::vector<double> levels(int count) const {
    std::vector<double> out;
    for (int k = 1; k <= count; ++k) out.push_back(zmin + (zmax - zmin) * k / (count + 1));
    return out;
  }
};

const Surface& surface1000() {
  static const Surface s(1000);
  return s;
}

void BM_ContourTrace(benchmark::State& state) {
  const Surface& s = surface1000();
  const std::vector<double> levels = s.levels(static_cast<int>(state.range(0)));
  double points = 0;
  for (auto _ : state) {
    ContourEngine engine(s.n, s.n);
    engine.allocWorkSpace(1000);
    engine.setXYZPtrsAndZMinMax(s.x.data(), s.y.data(), s.z.data(), s.zmin, s.zmax);
    ContourResult result;
    engine.plotContours(levels.data(), static_cast<int>(levels.size()), result);
    zrArray_tag* m = result.release();
    const double* d = zrGetPr(m);
    const std::size_t columns = zrGetN(m);
    std::size_t lines = 0;
    for (std::size_t c = 0; c < columns; c += static_cast<std::size_t>(d[2 * c + 1]) + 1) ++lines;
    points = static_cast<double>(columns - lines);
    benchmark::DoNotOptimize(d);
    zrDestroyArray(m);
  }
  const double grid = static_cast<double>(s.n) * s.n * static_cast<double>(levels.size());
  state.counters["grid_pts/s"] = benchmark::Counter(grid, benchmark::Counter::kIsIterationInvariantRate);
  state.counters["out_pts/s"] = benchmark::Counter(points, benchmark::Counter::kIsIterationInvariantRate);
  state.counters["out_pts"] = points;
}
BENCHMARK(BM_ContourTrace)->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);

// ---- Patch normals -------------------------------------------------------------------

class GridPatch final : public PatchProxy {
 public:
  explicit GridPatch(int n) {
    descriptor_ = createFaceVertexDescriptor(n, n);
    double* v = zrGetPr(descriptor_.vertices);
    const std::size_t nv = static_cast<std::size_t>(n) * n;
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        const std::size_t k = static_cast<std::size_t>(j) * n + i;
        v[k] = j;
        v[k + nv] = i;
        v[k + 2 * nv] = std::sin(0.01 * i) * std::cos(0.02 * j);
      }
  }
  ~GridPatch() override {
    destroyFaceVertexDescriptor(descriptor_);
    zrDestroyArray(vertexNormals_);
    zrDestroyArray(faceNormals_);
  }
  const zrArray_tag* getFaces() override { return descriptor_.faces; }
  const zrArray_tag* getVertices() override { return descriptor_.vertices; }
  void setVertexNormals(zrArray_tag* n) override {
    zrDestroyArray(vertexNormals_);
    vertexNormals_ = zrDuplicateArray(n);
  }
  zrArray_tag* getVertexNormals() override { return vertexNormals_; }
  void setFaceNormals(zrArray_tag* n) override {
    zrDestroyArray(faceNormals_);
    faceNormals_ = zrDuplicateArray(n);
  }
  zrArray_tag* getFaceNormals() override { return faceNormals_; }
  std::int32_t getNormalsMode() override { return 0; }
  void setNormalsMode(std::int32_t) override {}

 private:
  FaceVertexDescriptor descriptor_;
  zrArray_tag* vertexNormals_ = nullptr;
  zrArray_tag* faceNormals_ = nullptr;
};

void BM_PatchNormals(benchmark::State& state) {
  GridPatch patch(1000);  // 10^6 vertices, about 10^6 quads
  for (auto _ : state) {
    computePatchNormals(patch);
    benchmark::DoNotOptimize(zrGetPr(patch.getVertexNormals()));
  }
  state.counters["vertices/s"] = benchmark::Counter(1e6, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_PatchNormals)->Unit(benchmark::kMillisecond);

}  // namespace

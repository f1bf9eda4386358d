// Per-vertex lighting: one integrator per vertex, summing 1, 4 or 8 lights.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "qvgui/lighting.h"

namespace {

using namespace gui_objects;

constexpr int kVertices = 1 << 16;

struct Scene {
  std::vector<Point3d> points;
  std::vector<Vector3d> normals;
  std::vector<std::unique_ptr<Light>> lights;

  explicit Scene(int lightCount) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (int k = 0; k < kVertices; ++k) {
      points.emplace_back(u(rng), u(rng), u(rng));
      Vector3d n(u(rng), u(rng), 1.0 + u(rng));
      n.normalize_noexception();
      normals.push_back(n);
    }
    // Half directional, half point lights, all above the surface.
    for (int k = 0; k < lightCount; ++k) {
      const Radiance d(0.5 + 0.1 * k, 0.4, 0.3), s(0.2, 0.2, 0.2);
      if (k % 2 == 0)
        lights.emplace_back(new DirectionalLight(d, s, Vector3d(u(rng), u(rng), 2.0)));
      else
        lights.emplace_back(new PointLight(d, s, Point3d(3 * u(rng), 3 * u(rng), 5.0)));
    }
  }
};

void BM_LightIntegratorPerVertex(benchmark::State& state) {
  const Scene scene(static_cast<int>(state.range(0)));
  Material material;
  material.setSpecularShininess(12.0);
  const Vector3d view(0, 0, 1);
  for (auto _ : state) {
    double total = 0;
    for (int v = 0; v < kVertices; ++v) {
      LightIntegrator integrator(material);
      for (const auto& light : scene.lights)
        integrator.addLightContribution(scene.points[v], scene.normals[v], view, *light);
      total += integrator.getDiffuseContribution().getRed() + integrator.getSpecularContribution().getBlue();
    }
    benchmark::DoNotOptimize(total);
  }
  state.counters["vertices/s"] = benchmark::Counter(kVertices, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_LightIntegratorPerVertex)->Arg(1)->Arg(4)->Arg(8)->Unit(benchmark::kMillisecond);

}  // namespace

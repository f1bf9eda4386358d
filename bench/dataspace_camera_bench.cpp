// Cost of the exact degree functions against the plain radian ones, and of
// the camera fits that run on every redraw of a three-dimensional axes.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "qvgui/dataspace.h"
#include "qvgui/geometry.h"

using namespace gui_objects;
namespace cu = gui_objects::camera_utils;

namespace {

std::vector<double> angles() {
  std::mt19937_64 rng(3);
  std::uniform_real_distribution<double> a(-720.0, 720.0);
  std::vector<double> out(1024);
  for (double& x : out) x = a(rng);
  return out;
}

void BM_Sind(benchmark::State& state) {
  const std::vector<double> in = angles();
  for (auto _ : state) {
    for (double a : in) benchmark::DoNotOptimize(cu::sind(a));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(in.size()));
}
BENCHMARK(BM_Sind);

void BM_NaiveSin(benchmark::State& state) {
  const std::vector<double> in = angles();
  for (auto _ : state) {
    for (double a : in) benchmark::DoNotOptimize(std::sin(a * M_PI / 180.0));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(in.size()));
}
BENCHMARK(BM_NaiveSin);

class Viewport : public cu::ViewPortTransformProxy, public cu::CameraPositionProxy {
 public:
  Rectangle2d getPosition() const override { return Rectangle2d(0, 0, 640, 480); }
  Matrix4x4d getProjectionTransform() const override { return Matrix4x4d(); }
  Matrix4x4d getViewTransform() const override {
    return cu::makeViewTransform(position, Point3d(0, 0, 0), Vector3d(0, 0, 1));
  }
  bool isWarpToFillOff() const override { return true; }
  bool isCameraViewAngleModeAuto() const override { return true; }
  bool isXConstraint() const override { return false; }
  void setPosition(const Point3d& p) override { position = p; }
  void setTarget(const Point3d&) override {}
  void setUpVector(const Vector3d&) override {}
  Point3d position{-3, -4, 2};
};

void BM_FitOrthographic(benchmark::State& state) {
  Viewport vp;
  const BoundingVolume box(Point3d(0, 0, 0), 1, 2, 0.5);
  for (auto _ : state) benchmark::DoNotOptimize(cu::fitOrthographicCamera(vp, box));
}
BENCHMARK(BM_FitOrthographic);

void BM_FitPerspective(benchmark::State& state) {
  Viewport vp;
  const BoundingVolume box(Point3d(0, 0, 0), 1, 2, 0.5);
  const Point3d start = vp.position;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        cu::fitPerspectiveCameraByPosition(vp, vp, box, start, Point3d(0, 0, 0), Vector3d(0, 0, 1), 10.0));
  }
}
BENCHMARK(BM_FitPerspective);

}  // namespace

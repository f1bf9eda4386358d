// Cost of transforming data points per Transformer mode, and of the 4x4
// matrix product and inverse.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "qvgui/geometry.h"

namespace {

using namespace gui_objects;

Matrix4x4d matrixFor(int mode) {
  switch (mode) {
    case Transformer::Identity:
      return Matrix4x4d();
    case Transformer::ScaleOffset:
      return Matrix4x4d::createTranslation(Vector3d(1, 2, 3)) * Matrix4x4d::createScale(Vector3d(2, 3, 4));
    case Transformer::Affine:
      return Matrix4x4d::createTranslation(Vector3d(1, 2, 3)) *
             Matrix4x4d::createRotation(Vector3d(1, 1, 1), 0.5);
    default:
      return Matrix4x4d::createFrustum(-1, 1, -1, 1, 1, 100) *
             Matrix4x4d::createTranslation(Vector3d(0, 0, -10));
  }
}

std::vector<Point3d> randomPoints(std::size_t n) {
  std::mt19937_64 rng(1);
  std::uniform_real_distribution<double> u(-5, 5);
  std::vector<Point3d> points(n);
  for (Point3d& p : points) p = Point3d(u(rng), u(rng), u(rng));
  return points;
}

void TransformPoints(benchmark::State& state) {
  const Transformer t(matrixFor(static_cast<int>(state.range(0))));
  const std::vector<Point3d> points = randomPoints(4096);
  static const char* const kNames[] = {"Identity", "ScaleOffset", "Affine", "General"};
  state.SetLabel(kNames[t.getMode()]);
  for (auto _ : state) {
    for (const Point3d& p : points) benchmark::DoNotOptimize(t.transform(p));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(points.size()));
}

void TransformVectors(benchmark::State& state) {
  const Transformer t(matrixFor(static_cast<int>(state.range(0))));
  const std::vector<Point3d> points = randomPoints(4096);
  for (auto _ : state) {
    for (const Point3d& p : points) benchmark::DoNotOptimize(t.transformVector(Vector3d(p)));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(points.size()));
}

// The general path done by hand, for comparison with the classified paths.
void FullMatrixTransform(benchmark::State& state) {
  const Matrix4x4d m = matrixFor(static_cast<int>(state.range(0)));
  const std::vector<Point3d> points = randomPoints(4096);
  for (auto _ : state) {
    for (const Point3d& p : points) benchmark::DoNotOptimize(transform(m, p));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(points.size()));
}

void MatrixMultiply(benchmark::State& state) {
  Matrix4x4d a = matrixFor(Transformer::General);
  const Matrix4x4d b = matrixFor(Transformer::Affine);
  for (auto _ : state) {
    benchmark::DoNotOptimize(a * b);
    benchmark::ClobberMemory();
  }
}

void MatrixInvert(benchmark::State& state) {
  const Matrix4x4d m = matrixFor(Transformer::General) * matrixFor(Transformer::Affine);
  for (auto _ : state) {
    Matrix4x4d copy(m);
    copy.invert();
    benchmark::DoNotOptimize(copy);
  }
}

}  // namespace

BENCHMARK(TransformPoints)->DenseRange(Transformer::Identity, Transformer::General);
BENCHMARK(TransformVectors)->DenseRange(Transformer::Identity, Transformer::General);
BENCHMARK(FullMatrixTransform)->Arg(Transformer::General);
BENCHMARK(MatrixMultiply);
BENCHMARK(MatrixInvert);

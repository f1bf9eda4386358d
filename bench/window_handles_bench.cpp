// Handle table throughput: a churn of new / resolve / destroy on the
// process-wide table beside std::unordered_map doing the same work.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <deque>
#include <random>
#include <unordered_map>
#include <vector>

#include "qvgui/window.h"

namespace {

void* obj(std::uintptr_t n) { return reinterpret_cast<void*>(n * 16 + 16); }

// Each iteration: one new handle, one lookup of a random live handle, one
// destroy of the oldest live handle; the live set stays at range(0).
void BM_HandleTable_Churn(benchmark::State& state) {
  gui_objects::test::reset_handle_table();
  const auto live = static_cast<std::size_t>(state.range(0));
  std::vector<double> ring(live);
  for (std::size_t i = 0; i < live; ++i) ring[i] = new_handle(obj(i));
  std::minstd_rand rng(7);
  std::size_t oldest = 0;
  std::uintptr_t next = live;
  for (auto _ : state) {
    benchmark::DoNotOptimize(handle2pointer(ring[rng() % live]));
    destroy_handle(ring[oldest]);
    ring[oldest] = new_handle(obj(next++));
    oldest = oldest + 1 == live ? 0 : oldest + 1;
  }
  state.SetItemsProcessed(state.iterations() * 3);
  gui_objects::test::reset_handle_table();
}
BENCHMARK(BM_HandleTable_Churn)->Arg(100)->Arg(10000);

void BM_UnorderedMap_Churn(benchmark::State& state) {
  const auto live = static_cast<std::size_t>(state.range(0));
  std::unordered_map<double, void*> map;
  std::vector<double> ring(live);
  double key = 0.0;
  for (std::size_t i = 0; i < live; ++i) {
    ring[i] = key += 1.0001220703125;
    map.emplace(ring[i], obj(i));
  }
  std::minstd_rand rng(7);
  std::size_t oldest = 0;
  std::uintptr_t next = live;
  for (auto _ : state) {
    auto it = map.find(ring[rng() % live]);
    benchmark::DoNotOptimize(it == map.end() ? nullptr : it->second);
    map.erase(ring[oldest]);
    ring[oldest] = key += 1.0001220703125;
    map.emplace(ring[oldest], obj(next++));
    oldest = oldest + 1 == live ? 0 : oldest + 1;
  }
  state.SetItemsProcessed(state.iterations() * 3);
}
BENCHMARK(BM_UnorderedMap_Churn)->Arg(100)->Arg(10000);

// Resolution alone, the most frequent operation.
void BM_HandleTable_Resolve(benchmark::State& state) {
  gui_objects::test::reset_handle_table();
  std::vector<double> handles(10000);
  for (std::size_t i = 0; i < handles.size(); ++i) handles[i] = new_handle(obj(i));
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(handle2pointer(handles[i]));
    i = i + 1 == handles.size() ? 0 : i + 1;
  }
  state.SetItemsProcessed(state.iterations());
  gui_objects::test::reset_handle_table();
}
BENCHMARK(BM_HandleTable_Resolve);

void BM_UnorderedMap_Resolve(benchmark::State& state) {
  std::unordered_map<double, void*> map;
  std::vector<double> keys(10000);
  for (std::size_t i = 0; i < keys.size(); ++i) map.emplace(keys[i] = i + 0.0001220703125, obj(i));
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(map.find(keys[i])->second);
    i = i + 1 == keys.size() ? 0 : i + 1;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_UnorderedMap_Resolve);

}  // namespace

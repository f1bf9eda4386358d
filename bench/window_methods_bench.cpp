// Cost of a profiled wm_ call with profiling off and on, beside a plain
// indirect call of the same slot.
#include <benchmark/benchmark.h>

#include "qvgui/window.h"

namespace {

int g_calls = 0;

__attribute__((noinline)) void countingFrameRect(WinRec_tag*, const qvrect*) {
  ++g_calls;
  benchmark::ClobberMemory();
}

struct Window {
  Window() : methods(wm_Create()), win(wr_Create(0, nullptr)) {
    swm_FrameRect(methods, &countingFrameRect);
    swr_winMethods(win, methods);
  }
  ~Window() {
    wr_Destroy(win);
    wm_Destroy(methods);
  }
  winMethods_tag* methods;
  WinRec_tag* win;
};

void BM_PlainIndirectCall(benchmark::State& state) {
  Window w;
  const qvrect r{};
  wmFrameRectFcn fn = w.methods->FrameRect;
  for (auto _ : state) {
    benchmark::DoNotOptimize(fn);
    fn(w.win, &r);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PlainIndirectCall);

void BM_ProfiledCall(benchmark::State& state) {
  Window w;
  const qvrect r{};
  wm_ProfileEnable(state.range(0) != 0);
  for (auto _ : state) wm_FrameRect(w.win, &r);
  wm_ProfileEnable(false);
  wm_ProfileClear();
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ProfiledCall)->ArgName("profiling")->Arg(0)->Arg(1);

}  // namespace

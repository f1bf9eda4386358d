// Cost of the host services the library leans on in loops: the interrupt
// query, array creation and deep copies, UTF conversion and running callback
// text in the interpreter.
#include <benchmark/benchmark.h>

#include <string>

#include "qvhost/testing.h"

namespace {

void InterruptQuery(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(utIsInterruptPending());
}
BENCHMARK(InterruptQuery);

void CreateDestroyMatrix(benchmark::State& state) {
  const auto n = static_cast<zrSize>(state.range(0));
  for (auto _ : state) zrDestroyArray(zrCreateDoubleMatrix(n, n));
}
BENCHMARK(CreateDestroyMatrix)->Arg(1)->Arg(64);

void DuplicateNestedCell(benchmark::State& state) {
  zrArray_tag* cell = zrCreateCellMatrix(1, 16);
  for (zrSize i = 0; i < 16; ++i) zrSetCell(cell, i, zrCreateString("callback argument"));
  for (auto _ : state) zrDestroyArray(zrDuplicateArray(cell));
  zrDestroyArray(cell);
}
BENCHMARK(DuplicateNestedCell);

void UTF8RoundTrip(benchmark::State& state) {
  std::string text;
  for (int i = 0; i < 64; ++i) text += "Axis label \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80 ";
  for (auto _ : state) benchmark::DoNotOptimize(utUTF16ToUTF8(utUTF8ToUTF16(text)));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(UTF8RoundTrip);

void EvaluateCallbackText(benchmark::State& state) {
  hostRegisterFunction("noop", [](int, zrArray_tag**, int, const zrArray_tag* const*) {});
  for (auto _ : state) hostEvalString("x = [1 2 3] * 2 + 1; noop(x, 'text', @noop)");
  hostClearWorkspace();
  hostUnregisterFunction("noop");
}
BENCHMARK(EvaluateCallbackText);

}  // namespace

// What one recorded call costs while no time manager is installed.
#include <benchmark/benchmark.h>
#include <zarel/C_Trace.h>

namespace {

void workInAFrame() {
  char name[] = "C_MatMGe<T>::Factor";
  const Zarel::C_Trace frame(name, __FILE__, __LINE__, BegFunc(), EndFunc());
  benchmark::ClobberMemory();
}

void traceFrame(benchmark::State& state) {
  for (auto _ : state)
    workInAFrame();
}

BENCHMARK(traceFrame)->Name("C_Trace frame/measured");

} // namespace

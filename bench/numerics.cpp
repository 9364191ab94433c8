// What a call through the numerical interface costs over the direct one.
#include <vector>

#include <benchmark/benchmark.h>

#include <zarel/itf.h>

extern "C" double ddot_(const int*, const double*, const int*, const double*, const int*);

namespace {

struct Vectors {
  std::vector<double> x = std::vector<double>(1000, 1.5), y = std::vector<double>(1000, 0.25);
  int n = 1000;
} v; // the same memory on both sides

void interfaceDot(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(ITF_ddot(v.n, v.x.data(), 1, v.y.data(), 1));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(interfaceDot)->Name("ITF_ddot 1000/measured");

void directDot(benchmark::State& state) {
  const int one = 1;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ddot_(&v.n, v.x.data(), &one, v.y.data(), &one));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(directDot)->Name("ITF_ddot 1000/bound");

} // namespace

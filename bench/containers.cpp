// What a vector operation in core costs over the direct BLAS call, and a random number over the
// standard generator. Both sides of a row work on the same memory.
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include <zarel/C_RandNum.h>
#include <zarel/C_VecPi.h>

extern "C" {
void daxpy_(const int*, const double*, const double*, const int*, double*, const int*);
double ddot_(const int*, const double*, const int*, const double*, const int*);
void dscal_(const int*, const double*, double*, const int*);
}

namespace {

using Vec = C_VecPi<double, int, C_PtrInCore<double, int>>;

constexpr int kLength = 4096;
constexpr int kNumbers = 100000;
const int kOne = 1;

/** Two vectors, which the measured side sees through the class as a host would. */
struct Data {
  Vec x{kLength, 1.5}, y{kLength, 0.25};
  C_Vec<double, int>& first = x;
  C_Vec<double, int>& second = y;
  double alpha = 1e-12; // small: the values stay normal numbers however often it is added
  double flip = -1.0;   // scaling by 1 would be no work
  int n = kLength;
  double* px = x.Adr(0);
  double* py = y.Adr(0);
} d;

/** Runs one side of a row. */
template <class Operation>
void timed(benchmark::State& state, Operation operation) {
  for (auto _ : state) {
    operation();
    benchmark::ClobberMemory();
  }
}

void axpy(benchmark::State& state) {
  timed(state, [] { d.first.Axpy(d.second, d.alpha); });
}
void directAxpy(benchmark::State& state) {
  timed(state, [] { daxpy_(&d.n, &d.alpha, d.px, &kOne, d.py, &kOne); });
}
BENCHMARK(axpy)->Name("Axpy 4096/measured");
BENCHMARK(directAxpy)->Name("Axpy 4096/bound");

void dot(benchmark::State& state) {
  timed(state, [] { benchmark::DoNotOptimize(d.first * d.second); });
}
void directDot(benchmark::State& state) {
  timed(state, [] { benchmark::DoNotOptimize(ddot_(&d.n, d.px, &kOne, d.py, &kOne)); });
}
BENCHMARK(dot)->Name("vector dot 4096/measured");
BENCHMARK(directDot)->Name("vector dot 4096/bound");

void smlt(benchmark::State& state) {
  timed(state, [] { d.first.SMlt(d.flip, 0, -1); });
}
void directScal(benchmark::State& state) {
  timed(state, [] { dscal_(&d.n, &d.flip, d.px, &kOne); });
}
BENCHMARK(smlt)->Name("SMlt 4096/measured");
BENCHMARK(directScal)->Name("SMlt 4096/bound");

std::vector<double> numbers(kNumbers);

void randomNumbers(benchmark::State& state) {
  C_RandNum generator;
  generator.Init(E_SeedDefault, 0);
  timed(state, [&] { generator.GetRandNum(kNumbers, numbers.data()); });
}
void standardNumbers(benchmark::State& state) {
  std::mt19937 generator(123457);
  timed(state, [&] {
    for (double& number : numbers)
      number = (static_cast<double>(generator()) + 0.5) * (1.0 / 4294967296.0);
  });
}
BENCHMARK(randomNumbers)->Name("GetRandNum 100000 doubles/measured");
BENCHMARK(standardNumbers)->Name("GetRandNum 100000 doubles/bound");

} // namespace

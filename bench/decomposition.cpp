// What a decomposition costs over the calls that it cannot do without: one dgesvd in place with the
// workspace that it calls optimal, or the products with the set, as pairs of dgemv or as streaming
// passes over its bytes.
#include <algorithm>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

#include "decompositionData.h"

extern "C" {
void dgesvd_(const char*, const char*, const int*, const int*, double*, const int*, double*,
             double*, const int*, double*, const int*, double*, const int*, int*, std::size_t,
             std::size_t);
void dgemv_(const char*, const int*, const int*, const double*, const double*, const int*,
            const double*, const int*, const double*, double*, const int*, std::size_t);
}

namespace {

constexpr int rows = 20000, columns = 200, wanted = 20;
constexpr int longRows = 1000000, longColumns = 250;
constexpr std::size_t values = std::size_t(rows) * columns;

/** The set in core, and a copy that a run in place is refreshed from. */
struct InCore {
  InCore() {
    bench::fill(set);
    copy.assign(set.Adr(), set.Adr() + values);
  }
  bench::Set set{1, columns, rows, nullptr}, work{1, columns, rows, nullptr};
  std::vector<double> copy;
};

InCore& inCore() {
  static InCore data;
  return data;
}

void lapack(benchmark::State& state) {
  const std::vector<double>& source = inCore().copy;
  C_AlgoSvdLapack<double> svd;
  bench::Set& set = inCore().work;
  for (auto _ : state) {
    state.PauseTiming();
    std::copy(source.begin(), source.end(), set.Adr());
    state.ResumeTiming();
    if (svd.Run(set, 0, columns) != 0) state.SkipWithError("no decomposition");
  }
}

void directLapack(benchmark::State& state) {
  const std::vector<double>& source = inCore().copy;
  double* const a = inCore().work.Adr(); // both sides work on the same memory
  std::vector<double> s(columns), vt(std::size_t(columns) * columns), work(1);
  int info = 0, lwork = -1;
  const auto gesvd = [&] {
    double unused = 0;
    dgesvd_("O", "S", &rows, &columns, a, &rows, s.data(), &unused, &rows, vt.data(), &columns,
            work.data(), &lwork, &info, 1, 1);
  };
  gesvd();
  lwork = static_cast<int>(work[0]);
  work.assign(static_cast<std::size_t>(lwork), 0.0);
  for (auto _ : state) {
    state.PauseTiming();
    std::copy(source.begin(), source.end(), a);
    state.ResumeTiming();
    gesvd();
    if (info != 0) state.SkipWithError("no decomposition");
  }
}
BENCHMARK(lapack)
    ->Name("C_AlgoSvdLapack 20000x200/measured")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(directLapack)
    ->Name("C_AlgoSvdLapack 20000x200/bound")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

int arpackRun(bench::Set& set, int values_) {
  bench::Counted problem(set);
  C_AlgoSvdArpack svd;
  svd.SetThresholdValue(0);
  svd.SetNbEigenValuesToFind(values_);
  return svd.Run(problem) == 0 ? problem.products : -1;
}

/** The products of a run: the same in every run up to ARPACK's random start. */
int products(bench::Set& set, int values_) {
  static int ofSmall = 0, ofLarge = 0;
  int& count = set.InCore() ? ofSmall : ofLarge;
  if (count == 0) count = arpackRun(set, values_);
  return count;
}

void arpack(benchmark::State& state) {
  bench::Set& set = inCore().set;
  for (auto _ : state)
    if (arpackRun(set, wanted) < 0) state.SkipWithError("no decomposition");
}

void gemvPairs(benchmark::State& state) {
  bench::Set& set = inCore().set;
  std::vector<double> x(columns, 1e-3), y(columns), t(rows);
  const double one = 1, zero = 0;
  const int step = 1, count = products(set, wanted);
  for (auto _ : state)
    for (int k = 0; k < count; ++k) {
      dgemv_("N", &rows, &columns, &one, set.Adr(), &rows, x.data(), &step, &zero, t.data(), &step,
             1);
      dgemv_("T", &rows, &columns, &one, set.Adr(), &rows, t.data(), &step, &zero, y.data(), &step,
             1);
      benchmark::DoNotOptimize(y.data());
    }
}
BENCHMARK(arpack)
    ->Name("C_AlgoSvdArpack 20000x200 20 values/measured")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(gemvPairs)
    ->Name("C_AlgoSvdArpack 20000x200 20 values/bound")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

bench::Set& onFile() {
  static bench::Set set(2, longColumns, longRows, nullptr);
  static bool filled = false;
  if (!filled) bench::fill(set);
  filled = true;
  return set;
}

void arpackOnFile(benchmark::State& state) {
  bench::Set& set = onFile();
  products(set, wanted);
  for (auto _ : state)
    if (arpackRun(set, wanted) < 0) state.SkipWithError("no decomposition");
}

/** Eight sums side by side, so that the additions do not wait for each other. */
double sumOf(const double* values_, std::size_t count) {
  double sums[8] = {0};
  for (std::size_t i = 0; i + 8 <= count; i += 8)
    for (std::size_t k = 0; k < 8; ++k)
      sums[k] += values_[i + k];
  return sums[0] + sums[1] + sums[2] + sums[3] + sums[4] + sums[5] + sums[6] + sums[7];
}

void streamingPasses(benchmark::State& state) {
  bench::Set& set = onFile();
  const int count = products(set, wanted);
  set.MapAllBlocks();
  for (auto _ : state)
    for (int pass = 0; pass < 2 * count; ++pass)
      benchmark::DoNotOptimize(sumOf(set.Adr(), std::size_t(longRows) * longColumns));
  set.UnmapAllBlocks();
}
BENCHMARK(arpackOnFile)
    ->Name("C_AlgoSvdArpack mapped 1000000x250 20 values/measured")
    ->Iterations(1)
    ->Repetitions(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(streamingPasses)
    ->Name("C_AlgoSvdArpack mapped 1000000x250 20 values/bound")
    ->Iterations(1)
    ->Repetitions(1)
    ->Unit(benchmark::kMillisecond);

} // namespace

// The rows of the designs: random points against the plain loop over candidates and points.
#include <algorithm>
#include <cmath>
#include <vector>

#include <benchmark/benchmark.h>

#include <zarel/C_BaseDesign.h>
#include <zarel/C_RandNum.h>
#include <zarel/lm_mat.h>

namespace {

constexpr int kFactors = 10;
constexpr int kPoints = 200;

void randomPoints(benchmark::State& state) {
  Zarel::C_BaseDesign design(kFactors, 0);
  design.AllocateDesignMatrix(1);
  MAT* const target = LM_m_get("bench", 0, kPoints, kFactors, 0, nullptr, nullptr);
  for (auto _ : state)
    design.AddRandomPoints(kPoints, 0, 0, target);
  m_free(target);
}

double squaredDistance(const double* a, const double* b) {
  double sum = 0;
  for (int k = 0; k < kFactors; ++k)
    sum += (a[k] - b[k]) * (a[k] - b[k]);
  return sum;
}

// A candidate a row; a running minimum for each, lowered at every pick.
void plainLoop(benchmark::State& state) {
  const int count = static_cast<int>(10000 * std::sqrt(kFactors));
  std::vector<double> candidates(static_cast<std::size_t>(count) * kFactors);
  std::vector<double> nearest(static_cast<std::size_t>(count));
  const double centre[kFactors] = {};
  for (auto _ : state) {
    C_RandNum random;
    random.SetRangeValue(-1.0, 1.0);
    random.Init(E_SeedUser, 1);
    random.GetRandNum(count * kFactors, candidates.data());
    std::fill(nearest.begin(), nearest.end(), 1e30);
    const double* point = centre;
    for (int k = 0; k <= kPoints; ++k) {
      for (int i = 0; i < count; ++i)
        nearest[i] = std::min(nearest[i], squaredDistance(&candidates[i * kFactors], point));
      point = &candidates[(std::max_element(nearest.begin(), nearest.end()) - nearest.begin()) *
                          kFactors];
    }
    benchmark::DoNotOptimize(point);
  }
}

BENCHMARK(randomPoints)->Name("AddRandomPoints 10 factors 200 points/measured");
BENCHMARK(plainLoop)->Name("AddRandomPoints 10 factors 200 points/bound");

} // namespace

/**
 * @file krigingData.h
 * The data of the Kriging benchmarks: uniform points from a fixed seed, and models fitted to them.
 */
#ifndef ZAREL_BENCH_KRIGING_DATA_H
#define ZAREL_BENCH_KRIGING_DATA_H

#include <cmath>
#include <random>

#include <zarel/Kriging.h>

namespace bench {

constexpr int variables = 10;

/** Points of deviation 1 in each variable, as scaled samples are. */
inline C_MatMGe<double> uniformPoints(int count, unsigned seed) {
  std::mt19937 engine(seed);
  C_MatMGe<double> out(count, variables);
  for (int k = 0; k < variables; ++k)
    for (int i = 0; i < count; ++i)
      out(i, k) = std::sqrt(12.0) * (engine() / 4294967296.0 - 0.5);
  return out;
}

inline C_MatMGe<double> responses(C_MatMGe<double>& X) {
  C_MatMGe<double> out(X.NbRow(), 1);
  for (int i = 0; i < X.NbRow(); ++i) {
    double sum = 0.0;
    for (int k = 0; k < variables; ++k)
      sum += std::sin(X(i, k)) + 0.3 * X(i, k) * X(i, (k + 1) % variables);
    out(i, 0) = sum;
  }
  return out;
}

/** Samples in place, ten multipliers of 1 (what the start rule gives for such samples). */
template <class Model>
void prepare(Model& model, int count, int trend, int correlation) {
  C_MatMGe<double> X = uniformPoints(count, 1), Y = responses(X);
  model.PutNumVar(variables);
  model.PutNumSol(1, 1, nullptr);
  model.PutInpSampMtx(X);
  model.PutOutSampMtx(Y);
  model.PutPolynomType(trend);
  model.PutCorrFuncType(correlation);
  model.PutKrigingKernVarType(E_KernAnisotropic);
  typename Model::RealVec kernel(variables, 1.0);
  model.PutKernVec(kernel);
}

} // namespace bench

#endif

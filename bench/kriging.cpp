// Ratios of fits and predictions to what the same work costs written plainly, or to the BLAS and
// LAPACK routines at their heart.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <zarel/Kriging.h>
#include <zarel/itf.h>

#include "kriging/KrigingWorkspace.h"
#include "krigingData.h"

namespace {

using bench::variables;

// ----- the formulas, plainly
// ----------------------------------------------------------------------

struct Factor {
  static double linear(double x) { return std::max(0.0, 1.0 - x); }
  static double spherical(double x) {
    const double t = std::min(1.0, x);
    return 1.0 - 1.5 * t + 0.5 * t * t * t;
  }
  static double cubic(double x) {
    const double t = std::min(1.0, x);
    return 1.0 - 3.0 * t * t + 2.0 * t * t * t;
  }
  static double spline(double x) {
    const double rest = 1.0 - x;
    return x <= 0.2 ? 1.0 - 15.0 * x * x + 30.0 * x * x * x : 1.25 * rest * rest * rest;
  }
  static double quadratic(double x) { return 1.0 - x * x; }
  static double bessel(double x) { return (::j0(x) + 0.40275939569537544) * 0.7128806287583483; }
  static double sinc(double x) {
    if (std::fabs(x) <= 1e-6) return 1.0;
    return (std::sin(x) / x + 0.2122065907891938) * 0.8249418932369944;
  }
};

template <class F>
double plainProduct(const double* x, const double* y, const double* theta, F factor) {
  double r = 1.0;
  for (int k = 0; k < variables; ++k)
    r *= factor(theta[k] * std::fabs(x[k] - y[k]));
  return r;
}

template <class F>
double plainCut(const double* x, const double* y, const double* theta, bool inclusive, double cut,
                F factor) {
  double r = 1.0;
  for (int k = 0; k < variables; ++k) {
    const double xi = theta[k] * std::fabs(x[k] - y[k]);
    if (inclusive ? xi >= cut : xi > cut) return 0.0;
    r *= factor(xi);
  }
  return r;
}

template <int Type>
double plainCorrelation(const double* x, const double* y, const double* theta) {
  double sum = 0.0;
  switch (Type) {
  case E_CorrExp:
    for (int k = 0; k < variables; ++k)
      sum += theta[k] * std::fabs(x[k] - y[k]);
    return std::exp(-sum);
  case E_CorrGauss:
    for (int k = 0; k < variables; ++k)
      sum += theta[k] * (x[k] - y[k]) * (x[k] - y[k]);
    return std::exp(-sum);
  case E_CorrLin:
    return plainProduct(x, y, theta, [](double t) { return Factor::linear(t); });
  case E_CorrSpherical:
    return plainProduct(x, y, theta, [](double t) { return Factor::spherical(t); });
  case E_CorrCubic:
    return plainProduct(x, y, theta, [](double t) { return Factor::cubic(t); });
  case E_CorrMultiquadric:
    sum = 1.0;
    for (int k = 0; k < variables; ++k)
      sum *= std::sqrt(theta[k] * theta[k] + (x[k] - y[k]) * (x[k] - y[k]));
    return sum;
  case E_CorrSpline:
    return plainCut(x, y, theta, true, 1.0, [](double t) { return Factor::spline(t); });
  case E_CorrMatern52:
    for (int k = 0; k < variables; ++k) {
      const double t = std::sqrt(5.0) * theta[k] * std::fabs(x[k] - y[k]);
      sum += t - std::log(1.0 + t + t * t / 3.0);
    }
    return std::exp(-sum);
  case E_CorrQuadratic:
    return plainCut(x, y, theta, true, 1.0, [](double t) { return Factor::quadratic(t); });
  case E_CorrBessel:
    return plainCut(x, y, theta, false, 3.8317, [](double t) { return Factor::bessel(t); });
  default:
    return plainCut(x, y, theta, false, 4.71238898038469, [](double t) { return Factor::sinc(t); });
  }
}

/** Points by rows, as a plain loop would like them. */
std::vector<double> byRows(C_MatMGe<double>& X) {
  std::vector<double> out;
  for (int i = 0; i < X.NbRow(); ++i)
    for (int k = 0; k < variables; ++k)
      out.push_back(X(i, k));
  return out;
}

/** A model that lets its steps be timed. */
class Model : public Kriging<double> {
public:
  using Kriging<double>::FitAtKernel;
  using Kriging<double>::Status;
  using Kriging<double>::workspace;

  void keepWorkspace() { workspace = std::make_unique<Zarel::KrigingWorkspace<double>>(); }
};

// ----- correlation matrices
// -----------------------------------------------------------------------

constexpr int matrixOrder = 2000;

template <int Type>
void correlationMeasured(benchmark::State& state) {
  Model model;
  bench::prepare(model, matrixOrder, E_PolyConst, Type);
  C_MatMGe<double> X = bench::uniformPoints(matrixOrder, 1);
  C_MatMSym<double> R;
  model.EvalCorrMtx(X, R); // its pages are touched before the clock runs, as the bound's are
  for (auto _ : state)
    benchmark::DoNotOptimize(model.EvalCorrMtx(X, R));
}

template <int Type>
void correlationBound(benchmark::State& state) {
  C_MatMGe<double> X = bench::uniformPoints(matrixOrder, 1);
  const std::vector<double> points = byRows(X), theta(variables, 1.0);
  std::vector<double> R(matrixOrder * (matrixOrder + 1) / 2);
  for (auto _ : state) {
    double* out = R.data();
    for (int i = 0; i < matrixOrder; ++i)
      for (int j = 0; j <= i; ++j)
        *out++ =
            plainCorrelation<Type>(&points[i * variables], &points[j * variables], theta.data());
    benchmark::ClobberMemory();
  }
}

// ----- one evaluation of the criterion
// ------------------------------------------------------------

void criterionMeasured(benchmark::State& state, int m) {
  Model model;
  bench::prepare(model, m, E_PolyFullQuad, E_CorrGauss);
  model.Solve();
  model.keepWorkspace(); // as one search does from trial to trial
  model.Status = E_KrigingStatusReady;
  model.FitAtKernel(false);
  for (auto _ : state) {
    model.Status = E_KrigingStatusReady;
    benchmark::DoNotOptimize(model.FitAtKernel(false));
  }
}

void criterionBound(benchmark::State& state, int m) {
  Model model;
  bench::prepare(model, m, E_PolyConst, E_CorrGauss);
  C_MatMGe<double> X = bench::uniformPoints(m, 1), R(m, m), work(m, m);
  C_MatMSym<double> packed;
  model.EvalCorrMtx(X, packed);
  for (int j = 0; j < m; ++j)
    for (int i = 0; i < m; ++i)
      R(i, j) = packed(i, j) + (i == j ? 1e-6 : 0.0);
  char lower[] = "L";
  int info = 0;
  for (auto _ : state) {
    state.PauseTiming();
    work.Copy(R);
    state.ResumeTiming();
    ITF_dpotrf(lower, m, work.Adr(), m, &info);
    benchmark::DoNotOptimize(info);
  }
}

// ----- predictions
// --------------------------------------------------------------------------------

constexpr int samples = 1000;
constexpr int points = 10000;

void predictionBound(benchmark::State& state) {
  C_MatMGe<double> X = bench::uniformPoints(samples, 1), P = bench::uniformPoints(points, 2);
  const std::vector<double> x = byRows(X), p = byRows(P), theta(variables, 1.0);
  const std::vector<double> gamma(samples, 0.5);
  std::vector<double> y(points);
  for (auto _ : state) {
    for (int i = 0; i < points; ++i) {
      double sum = 0.0;
      for (int s = 0; s < samples; ++s)
        sum += gamma[s] *
               plainCorrelation<E_CorrGauss>(&p[i * variables], &x[s * variables], theta.data());
      y[i] = sum;
    }
    benchmark::ClobberMemory();
  }
}

void predictionMeasured(benchmark::State& state, bool errors) {
  Model model;
  bench::prepare(model, samples, E_PolyFullQuad, E_CorrGauss);
  model.Solve();
  C_MatMGe<double> P = bench::uniformPoints(points, 2), Y, E;
  for (auto _ : state)
    if (errors)
      benchmark::DoNotOptimize(model.EvalModelAndPredictor(P, Y, E));
    else
      benchmark::DoNotOptimize(model.EvalModel(P, Y));
}

/** 0.35 of the plain loop, of which the first 3500 points are a part of the same kind, and the
 *  triangular product of all points. */
void errorBound(benchmark::State& state) {
  C_MatMGe<double> X = bench::uniformPoints(samples, 1), P = bench::uniformPoints(points, 2);
  const std::vector<double> x = byRows(X), p = byRows(P), theta(variables, 1.0);
  const std::vector<double> gamma(samples, 0.5);
  std::vector<double> y(points);
  C_MatMGe<double> L(samples, samples), V(samples, points);
  L.Init(1e-3);
  V.Init(1.0);
  char left[] = "L", lower[] = "L", none[] = "N";
  for (auto _ : state) {
    for (int i = 0; i < points * 35 / 100; ++i) {
      double sum = 0.0;
      for (int s = 0; s < samples; ++s)
        sum += gamma[s] *
               plainCorrelation<E_CorrGauss>(&p[i * variables], &x[s * variables], theta.data());
      y[i] = sum;
    }
    ITF_dtrmm(left, lower, none, none, samples, points, 1.0, L.Adr(), samples, V.Adr(), samples);
    benchmark::ClobberMemory();
  }
}

// ----- rows
// ---------------------------------------------------------------------------------------

template <int Type>
void addCorrelation(const std::string& name) {
  const std::string row = "correlation-matrix-" + name + "-m2000-n10";
  benchmark::RegisterBenchmark((row + "/measured").c_str(), correlationMeasured<Type>)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark((row + "/bound").c_str(), correlationBound<Type>)
      ->Unit(benchmark::kMillisecond);
}

template <class Measured, class Bound>
void addRow(const std::string& row, Measured measured, Bound bound) {
  benchmark::RegisterBenchmark((row + "/measured").c_str(), measured)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark((row + "/bound").c_str(), bound)->Unit(benchmark::kMillisecond);
}

const bool registered = [] {
  addCorrelation<E_CorrExp>("exponential");
  addCorrelation<E_CorrGauss>("gauss");
  addCorrelation<E_CorrLin>("linear");
  addCorrelation<E_CorrSpherical>("spherical");
  addCorrelation<E_CorrCubic>("cubic");
  addCorrelation<E_CorrMultiquadric>("multiquadric");
  addCorrelation<E_CorrSpline>("spline");
  addCorrelation<E_CorrMatern52>("matern52");
  addCorrelation<E_CorrQuadratic>("quadratic");
  addCorrelation<E_CorrBessel>("bessel");
  addCorrelation<E_CorrSinc>("sinc");
  for (int m : {1000, 2000})
    addRow(
        "criterion-m" + std::to_string(m) + "-n10-p66",
        [m](benchmark::State& state) { criterionMeasured(state, m); },
        [m](benchmark::State& state) { criterionBound(state, m); });
  addRow(
      "predict-means-N10000-m1000-n10",
      [](benchmark::State& state) { predictionMeasured(state, false); }, predictionBound);
  addRow(
      "predict-errors-N10000-m1000-n10",
      [](benchmark::State& state) { predictionMeasured(state, true); }, errorBound);
  return true;
}();

} // namespace

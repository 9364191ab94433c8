// The fit at one kernel: generalised least squares in whitened form, and its criterion.
#include <algorithm>
#include <cmath>
#include <memory>

#include <zarel/Kriging.h>

#include "kriging/KrigingWorkspace.h"
#include "kriging/fitReport.h"
#include "kriging/instantiate.h"
#include "kriging/layout.h"

template <class T>
int Kriging<T>::Solve() {
  if (Status == E_KrigingStatusSolved) return 0;
  Status = CheckInputState();
  if (Status != E_KrigingStatusReady || SolnType != E_KrigingSolStandard || !SamplesFit()) return 1;
  const bool optimise = KernOptType != E_KernOptNone && NumSolves % SolveStep == 0;
  // Between optimisations the input scaling stays, so that cached test correlations stay valid.
  RescaleOnSolve = optimise || KernOptType == E_KernOptNone;
  Zarel::WorkspaceScope<T> scope(workspace);
  const int code = optimise ? OptimizeKernVec() : SolveForKernel();
  if (code != 0) return code;
  ++NumSolves;
  Status = E_KrigingStatusSolved;
  return 0;
}

template <class T>
int Kriging<T>::ReSolve() {
  Status = CheckInputState();
  return Status == E_KrigingStatusReady ? Solve() : 1;
}

template <class T>
int Kriging<T>::Solve(Matrix& X, Matrix& Y, double& maxRelErr, double& maxAbsErr, int& numNew,
                      Matrix& newPoints, int& numSamp, Matrix& allInputs, double toler) {
  if (Y.NbCol() != NumSol) return 1;
  int* ids = nullptr;
  const int checked = CheckNewPoints(X, newPoints, ids, toler);
  const std::unique_ptr<int[]> owned(ids);
  if (checked != 0) return 1;
  numNew = newPoints.NbRow();
  if (numNew == 0) return 0;
  if (Y.NbRow() < numNew) return 1;
  // The outputs of the accepted points are the first rows of Y, whichever rows were accepted.
  Matrix outputs(numNew, NumSol);
  for (int j = 0; j < NumSol; ++j)
    std::copy(Y[j], Y[j] + numNew, outputs[j]);
  int count = 0;
  if (AppendSampData(newPoints, outputs, false) != 0 || Solve() != 0 ||
      GetPredictorError(InpSampMtx, maxAbsErr, maxRelErr, count) != 0)
    return 1;
  numSamp = NumSamp;
  allInputs.Copy(InpSampMtx);
  return 0;
}

template <class T>
int Kriging<T>::EvalStartKernel(Matrix& Xs, RealVec& start) {
  if (KernVarType != E_KernIsotropic && KernVarType != E_KernAnisotropic) return 1;
  RealVec variances;
  if (DiagOfCovarMtx(Xs, variances) != 0) return 1;
  NumKern = KernVarType == E_KernIsotropic ? 1 : NumVar;
  start.Resize(NumKern);
  if (KernVarType == E_KernIsotropic) {
    start[0] = NumVar / variances.Sum(0, -1);
    return 0;
  }
  for (int i = 0; i < NumVar; ++i)
    start[i] = 1.0 / variances[i];
  return 0;
}

template <class T>
int Kriging<T>::StartKernelIfDue(Matrix& Xs, bool& done) {
  // A kernel of a length that no longer fits the model is as good as pending.
  const int length = KernVarType == E_KernIsotropic ? 1 : NumVar;
  done = KernStartPending == 1 || !KernelFits() || KernVec.Dim() != length;
  if (!done) return 0;
  if (EvalStartKernel(Xs, KernVec) != 0) return 1;
  KernStartPending = 0;
  return 0;
}

template <class T>
int Kriging<T>::PrepareSamples(Zarel::KrigingWorkspace<T>& work) {
  if (work.samplesReady) return 0;
  if (ScaleSampleData(work.inputs, work.outputs) != 0) return 1;
  work.samplesReady = true;
  return 0;
}

template <class T>
int Kriging<T>::PrepareTrend(Zarel::KrigingWorkspace<T>& work) {
  if (work.trendReady) return 0;
  int numCoef = -1;
  if (EvalQuadPolynomMtx(work.inputs, numCoef, work.trend, 0) != 0) return 1;
  work.numTerms = numCoef;
  work.trendReady = true;
  return 0;
}

template <class T>
int Kriging<T>::SolveForKernel() {
  return FitAtKernel(true);
}

template <class T>
int Kriging<T>::FitAtKernel(bool keepModel) {
  if (stopped()) return 1;
  if (Status == E_KrigingStatusSolved) return 0;
  if (Status != E_KrigingStatusReady) return 1;
  Zarel::WorkspaceScope<T> scope(workspace);
  Zarel::KrigingWorkspace<T>& work = *workspace;
  if (PrepareSamples(work) != 0) return 1;
  bool started = false;
  if (StartKernelIfDue(work.inputs, started) != 0) return 1;
  if (started) TestCorrStale = TestPolyStale = true;
  work.factor.shape(NumSamp, InvCholFactor);
  const auto fill = [&] { return FillCorrelationFactor(work.factor, work.inputs); };
  if (fill() != 0 || PrepareTrend(work) != 0 || work.factor.factorise(fill) != 0) return 1;
  if (SolveRegression(work, keepModel) != 0) return 1;
  if (keepModel) Status = E_KrigingStatusSolved; // a trial leaves no model behind
  return 0;
}

template <class T>
int Kriging<T>::SolveRegression(Zarel::KrigingWorkspace<T>& work, bool keepModel) {
  MLEValue = Zarel::fittingCriterion(NumSamp, work.factor.diagonal());
  WhitenSystem(work);
  if (SolveLeastSquares(work) != 0) return 1;
  if (keepModel) {
    SolveRequired = true; // until all of what follows belongs together
    KeepTrendFactors(work);
    SetErrorMeasures(work);
    KeepCoefficients(work);
    work.factor.invert();
    SolveRequired = false;
  } else {
    MLEValue *= SumOfVariances(work, nullptr);
  }
  Zarel::reportKernel(KernVec, MLEValue);
  return 0;
}

namespace {

/** Runs `solve` on columns of doubles: the values themselves, or their parts in `planes`. */
template <class Solve>
void onPlanes(double* values, int rows, int cols, Zarel::LongBuffer&, Solve solve) {
  (void)rows;
  solve(values, cols);
}

template <class Solve>
void onPlanes(Zarel::Complex* values, int rows, int cols, Zarel::LongBuffer& planes, Solve solve) {
  const long count = static_cast<long>(rows) * cols;
  planes.Resize(2 * count);
  double* const re = planes.Adr(0);
  double* const im = re + count;
  for (long i = 0; i < count; ++i) {
    re[i] = values[i].real();
    im[i] = values[i].imag();
  }
  solve(re, 2 * cols);
  for (long i = 0; i < count; ++i)
    values[i] = Zarel::Complex(re[i], im[i]);
}

} // namespace

template <class T>
void Kriging<T>::WhitenSystem(Zarel::KrigingWorkspace<T>& work) {
  const int p = work.numTerms;
  work.whitened.Resize(NumSamp, p + NumSol);
  for (int j = 0; j < p; ++j)
    std::copy(work.trend[j], work.trend[j] + NumSamp, work.whitened[j]);
  for (int j = 0; j < NumSol; ++j)
    std::copy(work.outputs[j], work.outputs[j] + NumSamp, work.whitened[p + j]);
  onPlanes(work.whitened.Adr(), NumSamp, p + NumSol, work.planes,
           [&](double* x, int count) { work.factor.solve(x, count); });
}

template <class T>
int Kriging<T>::SolveLeastSquares(Zarel::KrigingWorkspace<T>& work) {
  const int p = work.numTerms;
  const int m = NumSamp;
  if (p == 0) return 0;
  work.leastSquares.Copy(work.whitened);
  const long lwork = 64L * std::max({m, p, NumSol}) + std::min(m, p);
  work.gelsWork.Resize(static_cast<int>(lwork));
  T* const rhs = work.leastSquares[p];
  if (Zarel::gels(m, p, NumSol, work.leastSquares.Adr(), m, rhs, m, work.gelsWork.Adr(0),
                  static_cast<int>(lwork)) < 0)
    return 1;
  Zarel::Lapack::gemm('N', 'N', m, NumSol, p, T(-1.0), work.whitened.Adr(), m, rhs, m, T(1.0),
                      work.whitened[p], m);
  return 0;
}

template <class T>
double Kriging<T>::SumOfVariances(Zarel::KrigingWorkspace<T>& work, double* each) {
  double sum = 0.0;
  for (int j = 0; j < NumSol; ++j) {
    const double norm = std::sqrt(Zarel::sumOfSquares(NumSamp, work.whitened[work.numTerms + j]));
    const double variance = norm * norm / NumSamp;
    if (each != nullptr) each[j] = variance;
    sum += variance;
  }
  return sum;
}

template <class T>
void Kriging<T>::KeepTrendFactors(Zarel::KrigingWorkspace<T>& work) {
  const int p = work.numTerms;
  if (p == 0) return;
  WhitenedRegrT.Resize(p, NumSamp);
  for (int i = 0; i < NumSamp; ++i)
    for (int j = 0; j < p; ++j)
      WhitenedRegrT[i][j] = work.whitened[j][i];
  RegrFactor.Shape(p, 1);
  for (int i = 0; i < p; ++i)
    for (int j = 0; j <= i; ++j)
      RegrFactor(i, j) = work.leastSquares[i][j];
  RegrFactorIsTri = true;
  PolyCoeff.Resize(p, NumSol);
  for (int j = 0; j < NumSol; ++j)
    std::copy(work.leastSquares[p + j], work.leastSquares[p + j] + p, PolyCoeff[j]);
}

template <class T>
void Kriging<T>::SetErrorMeasures(Zarel::KrigingWorkspace<T>& work) {
  const double determinant = MLEValue;
  ProcVarnc.Resize(NumSol);
  MLEVec.Resize(NumSol);
  MLEValue = determinant * SumOfVariances(work, ProcVarnc.Adr(0));
  for (int j = 0; j < NumSol; ++j) {
    MLEVec[j] = ProcVarnc[j] * determinant;
    if (Zarel::scalesOutputs(ScalingType)) ProcVarnc[j] /= OutScaleVec[j] * OutScaleVec[j];
  }
}

template <class T>
void Kriging<T>::KeepCoefficients(Zarel::KrigingWorkspace<T>& work) {
  T* const residual = work.whitened[work.numTerms];
  onPlanes(residual, NumSamp, NumSol, work.planes,
           [&](double* x, int count) { work.factor.solveTransposed(x, count); });
  CorrCoeff.Resize(NumSamp, NumSol);
  std::copy(residual, residual + static_cast<long>(NumSamp) * NumSol, CorrCoeff.Adr());
}

template <class T>
int Kriging<T>::GetFittingCriteria(C_MatMSym<double>& factor) {
  RealVec diagonal(factor.NbRow());
  for (int i = 0; i < factor.NbRow(); ++i)
    diagonal[i] = factor(i, i);
  MLEValue = Zarel::fittingCriterion(factor.NbRow(), diagonal.Adr(0));
  return 0;
}

template <class T>
int Kriging<T>::GetMLE(double& value) const {
  if (Status != E_KrigingStatusSolved) return 1;
  value = MLEValue;
  return 0;
}

template <class T>
int Kriging<T>::GetMLE(RealVec& value) {
  if (Status != E_KrigingStatusSolved) return 1;
  value.Copy(MLEVec);
  return 0;
}

template <class T>
int Kriging<T>::GetProcVarnc(double& value, int index) const {
  if (Status != E_KrigingStatusSolved || index < 0 || index > NumSol) return 1;
  value = 1.0; // not the process variance: what callers have always been given
  return 0;
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)

// Predictions, in blocks of points.
#include <algorithm>

#include <zarel/Kriging.h>

#include "kriging/Correlation.h"
#include "kriging/KrigingWorkspace.h"
#include "kriging/PredictorError.h"
#include "kriging/dense.h"
#include "kriging/instantiate.h"
#include "kriging/layout.h"
#include "kriging/models.h"
#include "kriging/scaling.h"
#include "kriging/trend.h"

namespace {

/** Points predicted together: enough for the level-3 routines, few enough for the caches. */
constexpr int blockOfPoints = 256;

/** Below this many points, a point is correlated with all samples at once instead of the reverse.
 */
constexpr int fewPoints = 16;

/** values (rows x q, ldv) += C (rows x m, ldc) times gamma (m x q). */
void addCorrelated(int rows, int m, int q, double* C, int ldc, double* gamma, int ldg,
                   double* values, int ldv, Zarel::LongBuffer&) {
  Zarel::Lapack::gemm('N', 'N', rows, q, m, 1.0, C, ldc, gamma, ldg, 1.0, values, ldv);
}

/** The same with complex gamma: its real and imaginary parts are columns of their own. */
void addCorrelated(int rows, int m, int q, double* C, int ldc, Zarel::Complex* gamma, int ldg,
                   Zarel::Complex* values, int ldv, Zarel::LongBuffer& parts) {
  const long inputs = 2L * m * q;
  parts.Resize(inputs + 2L * rows * q);
  double* const in = parts.Adr(0);
  double* const out = in + inputs;
  for (int j = 0; j < q; ++j)
    for (int s = 0; s < m; ++s) {
      const Zarel::Complex g = gamma[static_cast<long>(j) * ldg + s];
      in[2L * j * m + s] = g.real();
      in[(2L * j + 1) * m + s] = g.imag();
    }
  Zarel::Lapack::gemm('N', 'N', rows, 2 * q, m, 1.0, C, ldc, in, m, 0.0, out, rows);
  for (int j = 0; j < q; ++j)
    for (int i = 0; i < rows; ++i)
      values[static_cast<long>(j) * ldv + i] +=
          Zarel::Complex(out[2L * j * rows + i], out[(2L * j + 1) * rows + i]);
}

/** corr (points x samples) := correlations of all points with all samples. */
template <class T>
void correlateBlock(Zarel::Correlator<T>& correlate, const Zarel::PointPlanes<T>& samples,
                    const Zarel::PointPlanes<T>& points, C_MatMGe<double>& corr,
                    C_VecPi<double, int, C_PtrInCore<double, int>>& row) {
  if (points.count() >= fewPoints) {
    for (int s = 0; s < samples.count(); ++s)
      correlate.run(samples, s, points, 0, points.count(), corr[s]);
    return;
  }
  for (int i = 0; i < points.count(); ++i) {
    correlate.run(points, i, samples, 0, samples.count(), row.Adr(0));
    for (int s = 0; s < samples.count(); ++s)
      corr[s][i] = row.Adr(0)[s];
  }
}

} // namespace

template <class T>
void Kriging<T>::ScaleBlock(Matrix& X, int first, int rows, Matrix& points) {
  points.Resize(rows, NumVar);
  for (int k = 0; k < NumVar; ++k)
    if (Zarel::scalesInputs(ScalingType))
      Zarel::scaleColumn(X[k] + first, rows, InpScaleVec[k], InpInterceptVec[k], points[k]);
    else
      std::copy(X[k] + first, X[k] + first + rows, points[k]);
}

template <class T>
int Kriging<T>::ScalePoints(Matrix& X, Matrix& scaled) {
  if (Zarel::scalesInputs(ScalingType)) return ScaleSample(X, InpScaleVec, InpInterceptVec, scaled);
  scaled.Copy(X);
  return 0;
}

template <class T>
int Kriging<T>::SolveIfReady() {
  if (Status == E_KrigingStatusReady && Solve() != 0) return 1;
  return Status == E_KrigingStatusSolved ? 0 : 1;
}

template <class T>
void Kriging<T>::RefitIfRequired() {
  if (!SolveRequired) return;
  Status = E_KrigingStatusReady;
  ReSolve(); // what is missing after a failure fails where it is needed
}

template <class T>
void Kriging<T>::AddTrend(int rows, const T* points, int ldp, Matrix& trend, T* values, int ldv) {
  const int p = PolyCoeff.NbRow();
  trend.Resize(rows, p);
  Zarel::fillTrend(Zarel::trendOfTerms(p, NumVar), NumVar, rows, points, ldp, trend.Adr(), rows);
  Zarel::Lapack::gemm('N', 'N', rows, NumSol, p, T(1.0), trend.Adr(), rows, PolyCoeff.Adr(),
                      PolyCoeff.LeadDim(), T(1.0), values, ldv);
}

template <class T>
int Kriging<T>::PredictPoints(Matrix& X, Matrix& Y, RealMatrix* E) {
  const int count = X.NbRow();
  const int p = PolyCoeff.NbRow();
  if (X.NbCol() != NumVar || count < 1 || !CoefficientsFit()) return 1;
  if (Zarel::trendOfTerms(p, NumVar) < 0) return 1;
  Zarel::Correlator<T> correlate(CorrFuncType, NumVar, KernVec.Adr(0), NumKern);
  if (!correlate.known()) return 1;
  Zarel::PredictorError<T> errors;
  if (E != nullptr) {
    if (SetUpPredictorError(errors, count, NumSamp, p) != 0) return 1;
    E->Resize(count, NumSol);
  }
  Matrix samples;
  if (ScalePoints(InpSampMtx, samples) != 0) return 1;
  Zarel::PointPlanes<T> samplePlanes, pointPlanes;
  samplePlanes.assign(samples.Adr(), samples.LeadDim(), NumSamp, NumVar);

  Y.Resize(count, NumSol);
  Y.Zero();
  Matrix points, trend;
  RealMatrix corr;
  RealVec row(NumSamp);
  Zarel::LongBuffer parts;
  for (int first = 0; first < count; first += blockOfPoints) {
    const int rows = std::min(blockOfPoints, count - first);
    corr.Resize(rows, NumSamp);
    ScaleBlock(X, first, rows, points);
    pointPlanes.assign(points.Adr(), rows, rows, NumVar);
    correlateBlock(correlate, samplePlanes, pointPlanes, corr, row);
    T* const values = Y.Adr() + first;
    addCorrelated(rows, NumSamp, NumSol, corr.Adr(), rows, CorrCoeff.Adr(), CorrCoeff.LeadDim(),
                  values, Y.LeadDim(), parts);
    if (p > 0) AddTrend(rows, points.Adr(), rows, trend, values, Y.LeadDim());
    if (E != nullptr)
      errors.estimate(rows, corr.Adr(), rows, trend.Adr(), rows, E->Adr() + first, E->LeadDim());
  }
  return ScaleBack(Y);
}

template <class T>
int Kriging<T>::ScaleBack(Matrix& Y) {
  if (!Zarel::scalesOutputs(ScalingType)) return 0;
  return InvScaleSample(Y, OutScaleVec, OutInterceptVec);
}

template <class T>
int Kriging<T>::UpdateTestCorrelations(Matrix& points) {
  const int count = points.NbRow();
  int known = TestCorrMtx.NbCol();
  const bool fresh = TestCorrStale || TestCorrMtx.NbRow() != count || known > NumSamp;
  TestCorrStale = true; // until the new columns are in
  if (fresh) {
    TestCorrMtx.Resize(count, NumSamp);
    known = 0;
  } else {
    TestCorrMtx.ResizeAndKeepValues(count, NumSamp);
  }
  Matrix samples;
  if (ScalePoints(InpSampMtx, samples) != 0) return 1;
  if (CorrelatePoints(points, samples, TestCorrMtx, known) != 0) return 1;
  TestCorrStale = false;
  return 0;
}

template <class T>
int Kriging<T>::UpdateTestTrend(Matrix& points) {
  int numCoef = PolyCoeff.NbRow();
  // The samples may carry a richer trend by now: its terms are not among those kept.
  const bool fresh =
      TestPolyStale || TestPolyMtx.NbRow() != points.NbRow() || TestPolyMtx.NbCol() != numCoef;
  TestPolyStale = true;
  if (EvalQuadPolynomMtx(points, numCoef, TestPolyMtx, fresh ? 0 : points.NbRow()) != 0) return 1;
  TestPolyStale = false;
  return 0;
}

template <class T>
int Kriging<T>::PredictTestPoints(Matrix& Y, RealMatrix* E) {
  const int count = InpTestMtx.NbRow();
  if (count < 1 || InpTestMtx.NbCol() != NumVar || !CoefficientsFit()) return 1;
  Matrix points;
  if (ScalePoints(InpTestMtx, points) != 0) return 1;
  if (UpdateTestCorrelations(points) != 0 || UpdateTestTrend(points) != 0) return 1;
  Y.Resize(count, NumSol);
  Y.Zero();
  Zarel::LongBuffer parts;
  addCorrelated(count, NumSamp, NumSol, TestCorrMtx.Adr(), TestCorrMtx.LeadDim(), CorrCoeff.Adr(),
                CorrCoeff.LeadDim(), Y.Adr(), Y.LeadDim(), parts);
  if (PolyCoeff.NbRow() > 0)
    Zarel::Lapack::gemm('N', 'N', count, NumSol, PolyCoeff.NbRow(), T(1.0), TestPolyMtx.Adr(),
                        TestPolyMtx.LeadDim(), PolyCoeff.Adr(), PolyCoeff.LeadDim(), T(1.0),
                        Y.Adr(), Y.LeadDim());
  if (ScaleBack(Y) != 0) return 1;
  return E == nullptr ? 0 : GetPredictorError(TestCorrMtx, TestPolyMtx, *E);
}

template <class T>
int Kriging<T>::EvalModel(Matrix& X, Matrix& Y) {
  return Zarel::predictOnly(*this, X, Y);
}

template <class T>
int Kriging<T>::EvalModel(Matrix& X, Matrix& Y, int& numNew, Matrix& newPoints, double& maxRelErr,
                          bool useTest) {
  if (&X == &Y) {
    Matrix points(X);
    return EvalModel(points, Y, numNew, newPoints, maxRelErr, useTest);
  }
  if (SolveIfReady() != 0) return 1;
  const bool wantErrors = numNew > 0 || KeepPredictorError;
  if (wantErrors) RefitIfRequired();
  if (useTest && !InpTestSet) return 1;
  RealMatrix errors;
  RealMatrix* const E = wantErrors ? &errors : nullptr;
  if ((useTest ? PredictTestPoints(Y, E) : PredictPoints(X, Y, E)) != 0) return 1;
  if (KeepPredictorError) LastPredictorError.Copy(errors);
  if (numNew < 1) return 0;
  return ProposePoints(useTest ? InpTestMtx : X, Y, errors, numNew, newPoints, maxRelErr);
}

template <class T>
int Kriging<T>::EvalModelAndPredictor(Matrix& X, Matrix& Y, RealMatrix& E) {
  if (SolveIfReady() != 0) return 1;
  RefitIfRequired();
  if (&X != &Y) return PredictPoints(X, Y, &E);
  Matrix points(X);
  return PredictPoints(points, Y, &E);
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)

// Correlations of points and samples.
#include <cmath>

#include <zarel/Kriging.h>

#include "kriging/Correlation.h"
#include "kriging/KrigingWorkspace.h"
#include "kriging/instantiate.h"

template <class T>
int Kriging<T>::EvalCorrVal(ScalarVec& x, ScalarVec& y, double& r) {
  if (!KernelFits() || x.Dim() < NumVar || y.Dim() < NumVar) return 1;
  const bool found = Zarel::correlationOf(CorrFuncType, NumVar, KernVec.Adr(0),
                                          NumKern == 1 ? 0 : 1, x.Adr(0), y.Adr(0), r);
  return found ? 0 : 1;
}

template <class T>
template <class Column>
int Kriging<T>::CorrelateRows(Matrix& X, Column column) {
  const int m = X.NbRow();
  if (X.NbCol() != NumVar || !KernelFits()) return 1;
  Zarel::Correlator<T> correlate(CorrFuncType, NumVar, KernVec.Adr(0), NumKern);
  if (!correlate.known()) return 1;
  Zarel::PointPlanes<T> points;
  points.assign(X.Adr(), X.LeadDim(), m, NumVar);
  for (int j = 0; j < m; ++j) {
    if (stopped()) return 1;
    correlate.run(points, j, points, j, m - j, column(j));
  }
  return 0;
}

template <class T>
int Kriging<T>::EvalCorrMtx(Matrix& X, C_MatMSym<double>& R) {
  if (Status == E_KrigingStatusInit || Status == E_KrigingStatusIncomplete) return 1;
  const int m = X.NbRow();
  R.Shape(m, 1);
  double* next = R.Adr();
  const int code = CorrelateRows(X, [&](int j) {
    double* const here = next;
    next += m - j;
    return here;
  });
  // A point is a column while correlations run, and an interrupted run leaves X that way.
  if (code != 0) X.TransposeInSitu();
  return code;
}

template <class T>
int Kriging<T>::FillCorrelationFactor(Zarel::CorrelationFactor& factor, Matrix& X) {
  const int m = X.NbRow();
  const double increment = std::sqrt(static_cast<double>(m)) * DropToler + (m + 10) * NuggetFactor;
  // Each finished column is still in the cache when its small values are dropped.
  int previous = -1;
  const auto finish = [&](int j) {
    double* const column = factor.column(j);
    column[0] += increment;
    for (int i = 1; i < m - j; ++i)
      column[i] = std::fabs(column[i]) < DropToler ? 0.0 : column[i];
  };
  const int code = CorrelateRows(X, [&](int j) {
    if (previous >= 0) finish(previous);
    previous = j;
    return factor.column(j);
  });
  if (code == 0) finish(m - 1);
  return code;
}

template <class T>
int Kriging<T>::EvalSampCorrAndPol(Matrix& X, RealMatrix& C, Matrix& F) {
  if (Status == E_KrigingStatusReady && SolveIfReady() != 0) return 1;
  RefitIfRequired();
  if (X.NbCol() != NumVar || !CoefficientsFit()) return 1;
  Matrix points, samples;
  if (ScalePoints(X, points) != 0 || ScalePoints(InpSampMtx, samples) != 0) return 1;
  C.Resize(X.NbRow(), NumSamp);
  if (CorrelatePoints(points, samples, C, 0) != 0) return 1;
  int numCoef = PolyCoeff.NbRow();
  return EvalQuadPolynomMtx(points, numCoef, F, 0);
}

template <class T>
int Kriging<T>::CorrelatePoints(Matrix& points, Matrix& samples, RealMatrix& C, int firstSample) {
  Zarel::Correlator<T> correlate(CorrFuncType, NumVar, KernVec.Adr(0), NumKern);
  if (!correlate.known()) return 1;
  Zarel::PointPlanes<T> pointPlanes, samplePlanes;
  pointPlanes.assign(points.Adr(), points.LeadDim(), points.NbRow(), NumVar);
  samplePlanes.assign(samples.Adr(), samples.LeadDim(), samples.NbRow(), NumVar);
  for (int s = firstSample; s < samples.NbRow(); ++s)
    correlate.run(samplePlanes, s, pointPlanes, 0, points.NbRow(), C[s]);
  return 0;
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)

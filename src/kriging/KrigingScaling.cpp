// Scaling of samples, and the column statistics that scaling and the start kernel need.
#include <cmath>

#include <zarel/Kriging.h>

#include "kriging/KrigingWorkspace.h"
#include "kriging/instantiate.h"
#include "kriging/layout.h"
#include "kriging/scaling.h"

template <class T>
int Kriging<T>::ScaleSample(Matrix& X, RealVec& scale, ScalarVec& intercept, Matrix& out) {
  const int rows = X.NbRow();
  const int cols = X.NbCol();
  if (scale.Dim() != cols || intercept.Dim() != cols) return 1;
  if (&out != &X) out.Resize(rows, cols);
  for (int j = 0; j < cols; ++j)
    Zarel::scaleColumn(X[j], rows, scale[j], intercept[j], out[j]);
  return 0;
}

template <class T>
int Kriging<T>::InvScaleSample(Matrix& Y, RealVec& scale, ScalarVec& intercept) {
  if (scale.Dim() != Y.NbCol() || intercept.Dim() != Y.NbCol() || NumSol > Y.NbCol()) return 1;
  for (int j = 0; j < NumSol; ++j) {
    const T shift = intercept[j];
    const double factor = std::fabs(scale[j]) > 1e-31 ? 1.0 / scale[j] : 1.0;
    for (int i = 0; i < Y.NbRow(); ++i)
      Y[j][i] = (Y[j][i] - shift) * factor;
  }
  return 0;
}

namespace {

template <class T>
T meanOf(const T* values, int count) {
  T sum(0.0);
  for (int i = 0; i < count; ++i)
    sum += values[i];
  return sum / static_cast<double>(count);
}

} // namespace

template <class T>
int Kriging<T>::ComputeColScaling(ScalarVec& column, double& scale, T& intercept) {
  const int count = column.Dim();
  const T* const values = column.Adr(0);
  const T mean = meanOf(values, count);
  double squares = 0.0;
  for (int i = 0; i < count; ++i)
    squares += Zarel::squared(values[i] - mean);
  // A constant column gives an infinite scale, and what follows from it follows: not guarded.
  scale = 1.0 / (std::sqrt(squares) / std::sqrt(count - 1.0));
  intercept = -scale * mean;
  return 0;
}

template <class T>
int Kriging<T>::ComputeInpScaling(Matrix& X, RealVec& scale, ScalarVec& intercept) {
  ScalarVec column;
  for (int j = 0; j < X.NbCol(); ++j) {
    X.GetCol(j, column);
    ComputeColScaling(column, scale[j], intercept[j]);
  }
  return 0;
}

template <class T>
int Kriging<T>::ComputeOutScaling(Matrix& Y, RealVec& scale, ScalarVec& intercept) {
  double largest = 0.0;
  ScalarVec column;
  for (int j = 0; j < Y.NbCol(); ++j) {
    Y.GetCol(j, column);
    const double norm = column.Nrm(E_NrmInf);
    if (norm > largest) largest = norm;
  }
  const double factor = DropToler > largest || largest > 1e30 ? 1.0 : 1.0 / largest;
  scale.Init(factor, 0, -1);
  intercept.Zero(0, -1);
  return 0;
}

template <class T>
int Kriging<T>::ScaleSampleData(Matrix& Xs, Matrix& Ys) {
  if (ScalingType < E_ScaleNone || ScalingType > E_ScaleBoth) return 1;
  if (Zarel::scalesInputs(ScalingType)) {
    if (RescaleOnSolve) {
      InpScaleVec.Resize(NumVar);
      InpInterceptVec.Resize(NumVar);
      ComputeInpScaling(InpSampMtx, InpScaleVec, InpInterceptVec);
      TestCorrStale = TestPolyStale = true;
    }
    if (ScaleSample(InpSampMtx, InpScaleVec, InpInterceptVec, Xs) != 0) return 1;
  } else {
    Xs.Copy(InpSampMtx);
  }
  if (!Zarel::scalesOutputs(ScalingType)) {
    Ys.Copy(OutSampMtx);
    return 0;
  }
  OutScaleVec.Resize(NumSol);
  OutInterceptVec.Resize(NumSol);
  ComputeOutScaling(OutSampMtx, OutScaleVec, OutInterceptVec);
  return ScaleSample(OutSampMtx, OutScaleVec, OutInterceptVec, Ys);
}

template <class T>
int Kriging<T>::DiagOfCovarMtx(Matrix& X, RealVec& variances) {
  const int rows = X.NbRow();
  if (X.NbCol() > rows) return 1;
  variances.Resize(X.NbCol());
  for (int j = 0; j < X.NbCol(); ++j) {
    double squares = 0.0;
    for (int i = 0; i < rows; ++i)
      squares += Zarel::squared(X[j][i]);
    const T mean = meanOf(X[j], rows);
    variances[j] = (squares - rows * Zarel::squared(mean)) / (rows - 1.0);
  }
  return 0;
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)

// How far predictions are from known values, absolutely and relative to the outputs' ranges.
#include <algorithm>
#include <cmath>

#include <zarel/Kriging.h>

#include "kriging/KrigingWorkspace.h"
#include "kriging/dense.h"
#include "kriging/instantiate.h"

namespace {

template <class First, class Second>
bool sameShape(First& a, Second& b) {
  return a.NbRow() == b.NbRow() && a.NbCol() == b.NbCol();
}

/** An error relative to a value; values near zero are measured against half their range. */
double relativeTo(double error, double value, double floor, double range) {
  if (value > floor) return error / value;
  const double substitute = range / 2 + value;
  return substitute > 1e-31 ? error / substitute : error;
}

/** Norm of row i over the columns from `first` to before `last`. */
template <class T>
double rowNorm(C_MatMGe<T>& M, int i, int first, int last) {
  double squares = 0.0;
  for (int j = first; j < last; ++j)
    squares += Zarel::squared(M[j][i]);
  return std::sqrt(squares);
}

using RealVec = C_VecPi<double, int, C_PtrInCore<double, int>>;
using RealMatrix = C_MatMGe<double>;

double largestOf(const double* values, int count) {
  double largest = 0.0;
  for (int i = 0; i < count; ++i)
    if (values[i] > largest) largest = values[i];
  return largest;
}

/** Column maxima of the errors that `measure` gives. out stays as it was if that fails. */
template <class Measure>
int largestOfEach(RealVec& out, Measure measure) {
  RealMatrix errors;
  if (measure(errors) != 0) return 1;
  out.Resize(errors.NbCol());
  for (int j = 0; j < errors.NbCol(); ++j)
    out[j] = largestOf(errors[j], errors.NbRow());
  return 0;
}

/** The largest of the errors that `measure` gives. e stays as it was if that fails. */
template <class Measure>
int largestOfAll(double& e, Measure measure) {
  RealVec errors;
  if (measure(errors) != 0) return 1;
  e = largestOf(errors.Adr(0), errors.Dim());
  return 0;
}

} // namespace

template <class T>
int Kriging<T>::GetRelativePredictorError(Matrix& M, RealMatrix& E, RealMatrix& out) {
  if (!sameShape(M, E) || M.NbCol() != NumSol || OutputRanges.NbRow() != NumSol ||
      OutputRanges.NbCol() != 3)
    return 1;
  out.Resize(M.NbRow(), NumSol);
  for (int j = 0; j < NumSol; ++j) {
    const double range = OutputRanges(j, 2);
    for (int i = 0; i < M.NbRow(); ++i)
      out[j][i] = relativeTo(E[j][i], std::abs(M[j][i]), 1e-4 * range, range);
  }
  return 0;
}

template <class T>
int Kriging<T>::GetRelativePredictorErrorNorm(Matrix& M, RealMatrix& E, RealMatrix& out) {
  if (!sameShape(M, E) || M.NbCol() != NumSol || !GroupsFit() ||
      OutputGlobalRange.Dim() != NumGlobalSol)
    return 1;
  out.Resize(M.NbRow(), NumGlobalSol);
  for (int g = 0, first = 0; g < NumGlobalSol; first += VecGlobalSol[g], ++g) {
    const int last = first + VecGlobalSol[g];
    const double range = OutputGlobalRange[g];
    const double atLeast = range > DropToler ? range : DropToler;
    for (int i = 0; i < M.NbRow(); ++i)
      out[g][i] =
          relativeTo(rowNorm(E, i, first, last), rowNorm(M, i, first, last), 1e-4 * range, atLeast);
  }
  return 0;
}

template <class T>
double Kriging<T>::MaxAbsOfMatrix(RealMatrix& M) {
  double largest = 0.0;
  for (int j = 0; j < M.NbCol() && M.NbRow() > 0; ++j) {
    const int at = ITF_idamax(M.NbRow(), M[j], 1) - 1;
    if (std::fabs(M[j][at]) > largest) largest = std::fabs(M[j][at]);
  }
  return largest;
}

template <class T>
void Kriging<T>::RowMaxOfMatrix(RealMatrix& M, RealVec& out) {
  out.Resize(M.NbRow());
  out.Zero(0, -1);
  for (int j = 0; j < M.NbCol(); ++j)
    for (int i = 0; i < M.NbRow(); ++i)
      if (M[j][i] > out[i]) out[i] = M[j][i];
}

template <class T>
int Kriging<T>::GetError(Matrix& A, Matrix& B, RealMatrix& D) {
  if (Status != E_KrigingStatusSolved || !sameShape(A, B)) return 1;
  D.Resize(A.NbRow(), A.NbCol());
  for (int j = 0; j < A.NbCol(); ++j)
    for (int i = 0; i < A.NbRow(); ++i)
      D[j][i] = std::abs(A[j][i] - B[j][i]);
  return 0;
}

template <class T>
int Kriging<T>::GetError(Matrix& A, Matrix& B, RealVec& V) {
  return largestOfEach(V, [&](RealMatrix& D) { return GetError(A, B, D); });
}

template <class T>
int Kriging<T>::GetError(Matrix& A, Matrix& B, double& e) {
  return largestOfAll(e, [&](RealVec& V) { return GetError(A, B, V); });
}

template <class T>
int Kriging<T>::GetRelativeError(Matrix& A, Matrix& B, RealMatrix& D) {
  RealMatrix differences;
  if (GetError(A, B, differences) != 0) return 1;
  return GetRelativePredictorErrorNorm(A, differences, D);
}

template <class T>
int Kriging<T>::GetRelativeError(Matrix& A, Matrix& B, RealVec& V) {
  return largestOfEach(V, [&](RealMatrix& D) { return GetRelativeError(A, B, D); });
}

template <class T>
int Kriging<T>::GetRelativeError(Matrix& A, Matrix& B, double& e) {
  return largestOfAll(e, [&](RealVec& V) { return GetRelativeError(A, B, V); });
}

template <class T>
int Kriging<T>::GetRelativeError(double& e) {
  e = 1.0;
  Matrix points(InpSampMtx), actual(OutSampMtx), predicted;
  if (EvalModel(points, predicted) != 0) return 1;
  return GetRelativeError(actual, predicted, e);
}

template <class T>
bool Kriging<T>::IsPointsAndValues(Matrix& X, Matrix& Y) {
  return X.NbRow() == Y.NbRow() && X.NbCol() == NumVar && Y.NbCol() == NumSol;
}

template <class T>
int Kriging<T>::CheckError(Matrix& X, Matrix& Y, double& e) {
  if (Status != E_KrigingStatusSolved) return 1;
  if (!IsPointsAndValues(X, Y)) return 0; // not reported
  Matrix predicted;
  if (EvalModel(X, predicted) != 0) return 1;
  return GetError(Y, predicted, e);
}

template <class T>
int Kriging<T>::CheckRelativeError(Matrix& X, Matrix& Y, double& e, double& maxPredicted) {
  if (Status != E_KrigingStatusSolved) return 1;
  if (!IsPointsAndValues(X, Y)) return 0; // not reported
  int numNew = 1;
  Matrix predicted, worst;
  if (EvalModel(X, predicted, numNew, worst, maxPredicted, false) != 0) return 1;
  return GetRelativeError(Y, predicted, e);
}

template <class T>
int Kriging<T>::getR2(ScalarVec& a, ScalarVec& b, double& r2) {
  r2 = 0.0;
  const int count = a.Dim();
  if (b.Dim() != count) return 1;
  const T mean = a.Sum(0, -1) / static_cast<double>(count);
  double residual = 0.0;
  double spread = 0.0; // of b around the mean of a: not the textbook's
  for (int i = 0; i < count; ++i) {
    residual += Zarel::squared(b[i] - a[i]);
    spread += Zarel::squared(b[i] - mean);
  }
  r2 = 1.0 - residual / spread;
  return 0;
}

template <class T>
int Kriging<T>::getR2(Matrix& A, Matrix& B, double& r2) {
  r2 = 0.0;
  if (!sameShape(A, B)) return 1;
  double smallest = 1.0;
  ScalarVec a, b;
  for (int j = 0; j < A.NbCol(); ++j) {
    A.GetCol(j, a);
    B.GetCol(j, b);
    double each = 0.0;
    getR2(a, b, each);
    if (each < smallest) smallest = each;
  }
  r2 = smallest;
  return 0;
}

template <class T>
int Kriging<T>::getR2(double& r2) {
  r2 = 0.0;
  Matrix points(InpSampMtx), actual(OutSampMtx), predicted;
  if (EvalModel(points, predicted) != 0) return 1;
  return getR2(actual, predicted, r2);
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)

// Which points deserve a sample.
#include <algorithm>
#include <cmath>
#include <memory>

#include <zarel/Kriging.h>

#include "kriging/KrigingWorkspace.h"
#include "kriging/columns.h"
#include "kriging/dense.h"
#include "kriging/instantiate.h"

namespace {

double norm(int n, double* x) {
  return ITF_dnrm2(n, x, 1);
}
double norm(int n, Zarel::Complex* x) {
  return ITF_dznrm2(n, x, 1);
}

/** Squared distance of row i of A from row k of B over n coordinates. */
template <class T>
double SquaredDistance(C_MatMGe<T>& A, int i, C_MatMGe<T>& B, int k, int n) {
  double sum = 0.0;
  for (int j = 0; j < n; ++j)
    sum += Zarel::squared(A[j][i] - B[j][k]);
  return sum;
}

} // namespace

template <class T>
bool Kriging<T>::IsInputPoint(Matrix& X, int row) {
  const int n = std::min(X.NbCol(), InpSampMtx.NbCol());
  if (row < 0 || row >= X.NbRow()) return false;
  DiffWorkVec.Resize(n);
  T* const difference = DiffWorkVec.Adr(0);
  for (int s = 0; s < InpSampMtx.NbRow(); ++s) {
    for (int k = 0; k < n; ++k)
      difference[k] = X[k][row] - InpSampMtx[k][s];
    if (norm(n, difference) < InputPointToler) return true;
  }
  return false;
}

template <class T>
int Kriging<T>::SelectLargestErrors(Matrix& points, RealVec& errors, int& k, IndexVec& ids,
                                    RealVec& values) {
  const int rows = points.NbRow();
  if (errors.Dim() != rows) return 1;
  ids.Resize(std::min(k, rows));
  int count = 0;
  for (int i = 0; i < rows; ++i) {
    const double e = errors[i];
    int pos = std::min(count, k);
    bool keep = true;
    // Only a strictly larger error stops the walk, so an equal one ranks above an earlier one. A
    // point that stops at once is taken without the test on samples.
    while (pos >= 1) {
      if (errors[ids[pos - 1]] > e) break;
      keep = !IsInputPoint(points, i);
      if (!keep) break;
      if (pos != k) ids[pos] = ids[pos - 1];
      --pos;
    }
    if (count == 0) keep = !IsInputPoint(points, i);
    if (pos == k || !keep) continue;
    ids[pos] = i;
    count = std::min(count + 1, k);
  }
  k = count;
  values.Resize(k);
  for (int j = 0; j < k; ++j)
    values[j] = errors[ids[j]];
  return 0;
}

template <class T>
int Kriging<T>::ProposePoints(Matrix& points, Matrix& Y, RealMatrix& E, int& numNew,
                              Matrix& newPoints, double& maxRelErr) {
  RealMatrix relative;
  if (GetRelativePredictorErrorNorm(Y, E, relative) != 0) return 1;
  RowMaxOfMatrix(relative, TestRelativeErrorVec);
  IndexVec ids;
  RealVec values;
  if (SelectLargestErrors(points, TestRelativeErrorVec, numNew, ids, values) != 0) return 1;
  maxRelErr = numNew == 0 ? 0.0 : values[0];
  if (numNew == 0) return 0;
  Matrix chosen(numNew, points.NbCol());
  for (int k = 0; k < numNew; ++k)
    Zarel::copyRow(points, ids[k], chosen, k);
  newPoints.Copy(chosen);
  return 0;
}

template <class T>
bool Kriging<T>::IsFarFromRows(Matrix& X, int row, Matrix& others, int count, double limit,
                               double& distance) {
  for (int s = 0; s < count; ++s) {
    distance = SquaredDistance(X, row, others, s, NumVar);
    if (limit > distance) break;
  }
  // A distance of exactly the limit stops nothing, but as the last one it rejects.
  return distance > limit;
}

template <class T>
int Kriging<T>::CheckNewPoints(Matrix& X, Matrix& accepted, int*& ids, double toler) {
  if (X.NbCol() < InpSampMtx.NbCol() || X.NbCol() < NumVar ||
      (InpSampMtx.NbRow() > 0 && InpSampMtx.NbCol() < NumVar))
    return 1;
  if (ids == nullptr) ids = new int[std::max(X.NbRow(), 1)];
  const double limit = toler * toler;
  Matrix chosen(X.NbRow(), X.NbCol());
  int count = 0;
  for (int i = 0; i < X.NbRow(); ++i) {
    double distance = toler; // holds as long as there is nothing to be close to
    if (!IsFarFromRows(X, i, InpSampMtx, InpSampMtx.NbRow(), limit, distance)) continue;
    if (!IsFarFromRows(X, i, chosen, count, limit, distance)) continue;
    Zarel::copyRow(X, i, chosen, count);
    ids[count++] = i;
  }
  if (count == 0) {
    accepted.Release();
    return 0;
  }
  Matrix packed(count, X.NbCol());
  for (int k = 0; k < count; ++k)
    Zarel::copyRow(chosen, k, packed, k);
  accepted.Copy(packed);
  return 0;
}

template <class T>
int Kriging<T>::GetTestRelativeErrorDim() const {
  return TestRelativeErrorVec.Dim();
}

template <class T>
double Kriging<T>::TestRelativeError(int i) {
  return TestRelativeErrorVec[i];
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)

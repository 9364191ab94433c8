// The regression matrix, and the reduction of the trend to what the samples carry.
#include <algorithm>
#include <cmath>

#include <zarel/Kriging.h>

#include "containers/finite.h"
#include "kriging/KrigingWorkspace.h"
#include "kriging/dense.h"
#include "kriging/instantiate.h"
#include "kriging/trend.h"

namespace {

template <class T>
bool allFinite(C_MatMGe<T>& F) {
  for (int j = 0; j < F.NbCol(); ++j)
    if (!Zarel::allFinite(F.Adr() + static_cast<std::ptrdiff_t>(j) * F.LeadDim(), F.NbRow()))
      return false;
  return true;
}

/**
 * Tells whether F (rows x terms) has full column rank: no singular value below 1e-14. One with
 * values that are not finite has it too: its singular values are NaN, which are below nothing, and
 * it is not given to LAPACK, which may look for them without end.
 */
template <class T>
bool hasFullRank(C_MatMGe<T>& F) {
  const int rows = F.NbRow();
  const int terms = F.NbCol();
  if (rows < terms) return false; // the missing singular values count as below the level
  if (!allFinite(F)) return true;
  const int lwork = std::max(3 * terms + rows, 5 * terms);
  // A column more than is used: OpenBLAS's zgemv for Haswell reads one step past its vector, which
  // here is a row, and the step a column. Copying keeps the larger block.
  C_MatMGe<T> copy(rows, terms + 1);
  copy.Copy(F);
  C_MatMGe<T> right(terms, terms + 1);
  C_VecPi<T, int, C_PtrInCore<T, int>> work(lwork);
  C_VecPi<double, int, C_PtrInCore<double, int>> values(terms, 1e-20);
  Zarel::singularValues(rows, terms, copy.Adr(), values.Adr(0), right.Adr(), work.Adr(0), lwork);
  for (int i = 0; i < terms; ++i)
    if (std::fabs(values[i]) < 1e-14) return false;
  return true;
}

} // namespace

template <class T>
void Kriging<T>::FillTrend(int type, Matrix& X, Matrix& F, int firstRow) {
  const int rows = X.NbRow();
  const int terms = static_cast<int>(Zarel::trendTerms(type, NumVar));
  const int first = std::max(firstRow, 0);
  if (first == 0)
    F.Resize(rows, terms);
  else
    F.ResizeAndKeepValues(rows, terms);
  if (first < rows)
    Zarel::fillTrend(type, NumVar, rows - first, X.Adr() + first, X.LeadDim(), F.Adr() + first,
                     F.LeadDim());
}

template <class T>
int Kriging<T>::EvalQuadPolynomMtx(Matrix& X, int& numCoef, Matrix& F, int firstRow) {
  if (X.NbRow() < 1 || X.NbCol() != NumVar) return 1;
  if (numCoef != -1) {
    const int type = Zarel::trendOfTerms(numCoef, NumVar);
    if (type < 0) return 1;
    if (type != E_PolyNone) FillTrend(type, X, F, firstRow);
    return 0;
  }
  int type = PolynomType;
  if (type < E_PolyNone || type > E_PolyFullQuad) return 1;
  for (;; --type) {
    if (Zarel::trendTerms(type, NumVar) > NumSamp) continue;
    numCoef = static_cast<int>(Zarel::trendTerms(type, NumVar));
    if (type == E_PolyNone) return 0;
    FillTrend(type, X, F, firstRow);
    // The constant needs no rank check, and a reduction down to it is not remembered.
    if (type == E_PolyConst) return 0;
    if (!hasFullRank(F)) continue;
    PolynomType = type;
    return 0;
  }
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)

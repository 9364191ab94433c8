// Standard errors of predictions.
#include "kriging/PredictorError.h"

#include <algorithm>
#include <cmath>

#include <zarel/Kriging.h>

#include "kriging/KrigingWorkspace.h"
#include "kriging/instantiate.h"

namespace Zarel {
namespace {

/** From this many points on, unpacking the inverse factor pays. */
constexpr int pointsWorthUnpacking = 16;

constexpr int blockOfPoints = 256;

template <class T>
void addSquares(int rows, const T* column, double* sums) {
  for (int i = 0; i < rows; ++i)
    sums[i] += squared(column[i]);
}

/** u := W^T v for every row, W being real. */
void project(int rows, int order, int terms, double* v, int ldv, C_MatMGe<double>& whitened,
             C_MatMGe<double>&, C_MatMGe<double>&, C_MatMGe<double>& u) {
  Lapack::gemm('N', 'T', rows, terms, order, 1.0, v, ldv, whitened.Adr(), whitened.LeadDim(), 0.0,
               u.Adr(), u.LeadDim());
}

/** The same with complex W, whose parts are rows of their own in `parts`. */
void project(int rows, int order, int terms, double* v, int ldv, C_MatMGe<Complex>&,
             C_MatMGe<double>& parts, C_MatMGe<double>& product, C_MatMGe<Complex>& u) {
  product.Resize(rows, 2 * terms);
  Lapack::gemm('N', 'T', rows, 2 * terms, order, 1.0, v, ldv, parts.Adr(), parts.LeadDim(), 0.0,
               product.Adr(), rows);
  for (int j = 0; j < terms; ++j)
    for (int i = 0; i < rows; ++i)
      u[j][i] = Complex(product[j][i], product[terms + j][i]);
}

void splitParts(C_MatMGe<double>&, C_MatMGe<double>&) {}

void splitParts(C_MatMGe<Complex>& whole, C_MatMGe<double>& parts) {
  const int terms = whole.NbRow();
  parts.Resize(2 * terms, whole.NbCol());
  for (int s = 0; s < whole.NbCol(); ++s)
    for (int j = 0; j < terms; ++j) {
      parts[s][j] = whole[s][j].real();
      parts[s][terms + j] = whole[s][j].imag();
    }
}

} // namespace

template <class T>
void PredictorError<T>::setUp(int points, C_MatMSym<double>& inverse, C_MatMGe<T>& whitenedTrend,
                              C_MatMSym<T>& trendFactor, int terms_, RealVec& variances_,
                              int outputs_) {
  order = inverse.NbRow();
  terms = terms_;
  outputs = outputs_;
  packed = &inverse;
  variances = &variances_;
  if (points >= pointsWorthUnpacking) {
    full.Resize(static_cast<__int64>(order) * order);
    unpackLower(order, inverse.Adr(), full.Adr(0), order);
  }
  if (terms < 1) return;
  whitened = &whitenedTrend;
  splitParts(whitenedTrend, whitenedParts);
  C_MatMSym<T> inverted(trendFactor);
  invertPackedLower(terms, inverted.Adr());
  inverseTrendFactor.Resize(terms, terms);
  unpackLower(terms, inverted.Adr(), inverseTrendFactor.Adr(), terms);
}

template <class T>
void PredictorError<T>::whiten(int rows, double* corr, int ldc) {
  if (full.Dim() > 0) {
    trmmRight('L', 'T', rows, order, full.Adr(0), order, corr, ldc);
    return;
  }
  for (int i = 0; i < rows; ++i)
    ITF_dtpmv(Option('L'), Option('N'), Option('N'), order, packed->Adr(), corr + i, ldc);
}

template <class T>
void PredictorError<T>::trendPart(int rows, double* corr, int ldc, const T* trend, int ldt) {
  deviation.Resize(rows, terms);
  project(rows, order, terms, corr, ldc, *whitened, whitenedParts, trendParts, deviation);
  for (int j = 0; j < terms; ++j)
    for (int i = 0; i < rows; ++i)
      deviation[j][i] -= trend[static_cast<long>(j) * ldt + i];
  trmmRight('L', 'T', rows, terms, inverseTrendFactor.Adr(), terms, deviation.Adr(), rows);
  added.Resize(rows);
  added.Zero(0, -1);
  for (int j = 0; j < terms; ++j)
    addSquares(rows, deviation[j], added.Adr(0));
}

template <class T>
void PredictorError<T>::estimate(int rows, double* corr, int ldc, const T* trend, int ldt,
                                 double* errors, int lde) {
  whiten(rows, corr, ldc);
  known.Resize(rows);
  known.Zero(0, -1);
  for (int s = 0; s < order; ++s)
    addSquares(rows, corr + static_cast<long>(s) * ldc, known.Adr(0));
  if (terms > 0) trendPart(rows, corr, ldc, trend, ldt);
  for (int j = 0; j < outputs; ++j)
    for (int i = 0; i < rows; ++i) {
      const double rest = 1.0 - known[i];
      // Without a trend neither the variance nor the magnitude is taken, and the result is NaN for
      // a negative rest: meant so.
      errors[static_cast<long>(j) * lde + i] =
          terms < 1 ? std::sqrt(rest) : std::sqrt(std::fabs((rest + added[i]) * (*variances)[j]));
    }
}

template class PredictorError<double>;
template class PredictorError<Complex>;

} // namespace Zarel

template <class T>
int Kriging<T>::SetUpPredictorError(Zarel::PredictorError<T>& errors, int points, int samples,
                                    int terms) {
  const int factorOrder = RegrFactorIsTri ? RegrFactor.NbRow() : DenseRegrFactor.NbRow();
  if (factorOrder != terms || WhitenedRegrT.NbRow() != terms) return 1;
  if (InvCholFactor.NbRow() != samples || ProcVarnc.Dim() != NumSol) return 1;
  // Nothing fills the dense alternative to the triangular factor.
  if (terms > 0 && (!RegrFactorIsTri || WhitenedRegrT.NbCol() != samples)) return 1;
  errors.setUp(points, InvCholFactor, WhitenedRegrT, RegrFactor, terms, ProcVarnc, NumSol);
  return 0;
}

template <class T>
int Kriging<T>::GetPredictorError(RealMatrix& C, Matrix& F, RealMatrix& E) {
  const int rows = C.NbRow();
  const int terms = F.NbCol();
  if (terms > 0 && F.NbRow() != rows) return 1;
  Zarel::PredictorError<T> errors;
  if (SetUpPredictorError(errors, rows, C.NbCol(), terms) != 0) return 1;
  E.Resize(rows, NumSol);
  RealMatrix block;
  for (int first = 0; first < rows; first += Zarel::blockOfPoints) {
    const int count = std::min(Zarel::blockOfPoints, rows - first);
    block.Resize(count, C.NbCol());
    for (int s = 0; s < C.NbCol(); ++s)
      std::copy(C[s] + first, C[s] + first + count, block[s]);
    const T* const trend = terms > 0 ? F.Adr() + first : nullptr;
    errors.estimate(count, block.Adr(), count, trend, F.LeadDim(), E.Adr() + first, E.LeadDim());
  }
  return 0;
}

template <class T>
int Kriging<T>::GetPredictorError(Matrix& X, double& maxAbs, double& maxRel, int& count) {
  const bool keep = KeepPredictorError;
  KeepPredictorError = true; // and so it stays after a failure
  Matrix values;
  RealMatrix relative;
  if (EvalModel(X, values) != 0) return 1;
  if (GetRelativePredictorError(values, LastPredictorError, relative) != 0) return 1;
  maxAbs = MaxAbsOfMatrix(LastPredictorError);
  maxRel = MaxAbsOfMatrix(relative);
  count = NumSamp;
  KeepPredictorError = keep;
  return 0;
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Kriging)

/**
 * @file PredictorError.h
 * Standard errors of predictions, a block of points at a time.
 */
#ifndef ZAREL_KRIGING_PREDICTOR_ERROR_H
#define ZAREL_KRIGING_PREDICTOR_ERROR_H

#include <zarel/C_MatMGe.h>
#include <zarel/C_MatMSym.h>

#include "kriging/dense.h"

namespace Zarel {

/**
 * The mean squared error of the universal predictor in its whitened form: with v = C^-1 r and
 * u = W^T v - f, where W is the whitened regression matrix and f the terms of the point, it is
 * (1 - |v|^2 + |G^-T u|^2) times the process variance.
 *
 * The packed inverse factor is unpacked once when many points are expected, so that the block
 * product runs at full speed; for a few points the packed product is the cheaper one.
 */
template <class T>
class PredictorError {
public:
  using RealVec = C_VecPi<double, int, C_PtrInCore<double, int>>;

  /// Takes the factors of a fit, which must stay: the inverse factor of order m; for p > 0 terms
  /// the whitened regression matrix (p x m) and its triangular factor of order p; variances of q.
  void setUp(int points, C_MatMSym<double>& inverse, C_MatMGe<T>& whitenedTrend,
             C_MatMSym<T>& trendFactor, int terms, RealVec& variances, int outputs);

  /// Standard errors of `rows` points from their correlations (rows x m), which are overwritten,
  /// and their regression terms (rows x p, read only if p > 0), into `errors` (rows x q).
  void estimate(int rows, double* corr, int ldc, const T* trend, int ldt, double* errors, int lde);

private:
  void whiten(int rows, double* corr, int ldc);
  void trendPart(int rows, double* corr, int ldc, const T* trend, int ldt);

  int order = 0;
  int terms = 0;
  int outputs = 0;
  C_MatMSym<double>* packed = nullptr;
  RealVec* variances = nullptr;
  LongBuffer full; ///< unpacked inverse factor, or empty
  C_MatMGe<T>* whitened = nullptr;
  C_MatMGe<double> whitenedParts; ///< real parts, then imaginary parts, for complex T
  C_MatMGe<T> inverseTrendFactor; ///< p x p, lower
  C_MatMGe<double> trendParts;
  C_MatMGe<T> deviation; ///< rows x p
  RealVec known;         ///< |v|^2 of each point
  RealVec added;         ///< |G^-T u|^2
};

} // namespace Zarel

#endif

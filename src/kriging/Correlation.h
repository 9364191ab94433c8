/**
 * @file Correlation.h
 * The correlation functions: the scalar formula, and the correlator that runs it over many points.
 */
#ifndef ZAREL_KRIGING_CORRELATION_H
#define ZAREL_KRIGING_CORRELATION_H

#include <complex>

#include <zarel/C_VecPi.h>

#include "kriging/CorrelationKernels.h"

namespace Zarel {

/** The formula of correlation function `type` for points of n values; docs/kriging.md has them.
 *  @param theta     multiplier of variable k at [k * thetaStep]; a step of 0 shares one.
 *  @return false, with r untouched, if there is no such function. */
template <class T>
bool correlationOf(int type, int n, const double* theta, int thetaStep, const T* x, const T* y,
                   double& r);

/** Kernels of the widest instruction set that processor and system offer. */
const CorrelationKernelSet& widestCorrelationKernels();

/** Points by variable, as the kernels read them. Real points are looked at where they stand,
 *  complex ones are split into real and imaginary parts. */
template <class T>
class PointPlanes {
public:
  /// Takes points (rows x cols, by columns, leading dimension ld), which must stay for real T.
  void assign(const T* points, int ld, int rows, int cols);
  /// Copies the coordinates of one point.
  void gather(int row, double* re, double* im) const;

  const double* re() const { return real; }
  const double* im() const { return imaginary; }
  long stride() const { return step; }
  int count() const { return rowCount; }

private:
  C_VecPi<double, __int64, C_PtrInCore<double, __int64>> planes;
  const double* real = nullptr;
  const double* imaginary = nullptr;
  long step = 0;
  int rowCount = 0;
  int colCount = 0;
};

/** One correlation function with its multipliers, ready to run over points. */
template <class T>
class Correlator {
public:
  /// @param theta thetaCount multipliers: numVar, or one for all variables.
  Correlator(int type, int numVar, const double* theta, int thetaCount);

  /// @return whether there is such a function; nothing else may be called otherwise.
  bool known() const { return kernel != nullptr; }

  /// out[i] := correlation of point `one` of `from` with point first + i of `others`, i < count.
  void run(const PointPlanes<T>& from, int one, const PointPlanes<T>& others, int first, int count,
           double* out);

private:
  void runScalar(const CorrelationRequest& request);

  int type;
  int numVar;
  CorrelationKernel kernel;
  bool scalarOnly; ///< arguments may lie outside the range of the kernels' polynomials
  C_VecPi<double, int, C_PtrInCore<double, int>> multipliers;
  C_VecPi<double, int, C_PtrInCore<double, int>> point;
  C_VecPi<T, int, C_PtrInCore<T, int>> scratch; ///< two points, for the scalar formula
};

} // namespace Zarel

#endif

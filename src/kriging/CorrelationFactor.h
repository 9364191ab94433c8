/**
 * @file CorrelationFactor.h
 * The triangular factor of a correlation matrix, and what a fit does with it.
 */
#ifndef ZAREL_KRIGING_CORRELATION_FACTOR_H
#define ZAREL_KRIGING_CORRELATION_FACTOR_H

#include <functional>

#include <zarel/C_MatMSym.h>

#include "kriging/dense.h"

namespace Zarel {

/** det(R)^(1/N) from the N diagonal entries of the Cholesky factor of R, multiplied up in groups of
 *  20 so that the product neither overflows nor underflows. */
double fittingCriterion(int order, const double* diagonal);

/**
 * C with C C^T = R, for a correlation matrix R of order m.
 *
 * The matrix is put in by columns, lower triangle, into a full square buffer, where the blocked
 * routines work; the buffer stays for the next matrix. A positive definite R is factored there, and
 * systems are solved with the factor; its inverse is formed only when it is asked for.
 *
 * An R that is not positive definite (or not finite) has no such factor, but fits go on with what
 * packed Cholesky leaves of it: the finished columns, then the partly reduced rest, with the pivot
 * that is not positive on its diagonal. This and its packed inverse are ill-conditioned enough for
 * a different order of operations to give different figures, so that here the packed routines
 * themselves are run, on the matrix that receives the inverse.
 */
class CorrelationFactor {
public:
  /// Puts the columns of R into the buffer again; needed when the blocked factorisation gave up.
  using Refill = std::function<int()>;

  /// Makes room for order m. The packed matrix takes the factors of matrices that are not positive
  /// definite; it must outlive the use of this factor.
  void shape(int m, C_MatMSym<double>& packed);

  /// @return row j and below of column j, m - j values, to be filled.
  double* column(int j) { return full.Adr(0) + static_cast<long>(j) * (order + 1L); }

  /// Factors what the columns hold. @return what `refill` returned, if it was not 0; 0 otherwise.
  int factorise(const Refill& refill);

  /// @return whether R was positive definite.
  bool positiveDefinite() const { return definite; }
  /// @return the m diagonal entries of the factor.
  const double* diagonal() { return diag.Adr(0); }

  /// x := C^-1 x, for `count` columns of m values.
  void solve(double* x, int count) { apply('N', x, count); }
  /// x := C^-T x.
  void solveTransposed(double* x, int count) { apply('T', x, count); }

  /// Leaves C^-1 in the packed matrix. The factor itself is used up.
  void invert();

private:
  bool factoriseFull();
  void factorisePacked();
  void apply(char trans, double* x, int count);

  int order = 0;
  bool definite = false;
  LongBuffer full;
  C_VecPi<double, int, C_PtrInCore<double, int>> diag;
  C_MatMSym<double>* inverse = nullptr;
};

} // namespace Zarel

#endif

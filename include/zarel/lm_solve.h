/**
 * @file lm_solve.h
 * Triangular systems and LU factors of the matrix kernel. C and C++.
 *
 * Conventions stand in lm_types.h. Names with a `z` are complex; where the real form works with a
 * transpose, the complex one works with the adjoint and has an `A` in place of the `T`.
 */
#ifndef ZAREL_LM_SOLVE_H
#define ZAREL_LM_SOLVE_H

#include <zarel/lm_types.h>

ZAREL_BEGIN_C

/**
 * @name Triangular systems
 * Only the triangle that the name tells is read. With `diagonal` 0 the diagonal of the matrix is
 * taken, any other value stands for every entry of it. `out` may be b.
 *
 * Error 1 unless the matrix is square and as large as b; 4 for a zero on the diagonal. After
 * error 4 nothing is changed.
 * @{
 */
/** Solves U x = b, U upper triangular. */
ZAREL_API VEC* LM_Usolve(const MAT* U, const VEC* b, VEC* out, double diagonal, LM_ARGS);
ZAREL_API ZVEC* LM_zUsolve(const ZMAT* U, const ZVEC* b, ZVEC* out, double diagonal, LM_ARGS);
/** Solves L x = b, L lower triangular. */
ZAREL_API VEC* LM_Lsolve(const MAT* L, const VEC* b, VEC* out, double diagonal, LM_ARGS);
ZAREL_API ZVEC* LM_zLsolve(const ZMAT* L, const ZVEC* b, ZVEC* out, double diagonal, LM_ARGS);
/** Solves U^T x = b, U upper triangular. */
ZAREL_API VEC* LM_UTsolve(const MAT* U, const VEC* b, VEC* out, double diagonal, LM_ARGS);
ZAREL_API ZVEC* LM_zUAsolve(const ZMAT* U, const ZVEC* b, ZVEC* out, double diagonal, LM_ARGS);
/** Solves L^T x = b, L lower triangular. */
ZAREL_API VEC* LM_LTsolve(const MAT* L, const VEC* b, VEC* out, double diagonal, LM_ARGS);
ZAREL_API ZVEC* LM_zLAsolve(const ZMAT* L, const ZVEC* b, ZVEC* out, double diagonal, LM_ARGS);
/** Solves D x = b with the diagonal D of the matrix. */
ZAREL_API VEC* LM_Dsolve(const MAT* A, const VEC* b, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zDsolve(const ZMAT* A, const ZVEC* b, ZVEC* out, LM_ARGS);
/** @} */

/**
 * Factors A in place into L (unit diagonal, below the diagonal of A) and U, with scaled partial
 * pivoting: row i of the factored matrix is row `pivot->pe[i]` of A as it was. Returns A.
 *
 * The scale of a row is the largest modulus in it at the start. In column k the row from k on with
 * the largest ratio of its modulus in the column to its scale becomes the pivot row, the first of
 * equal ones; a scale that is not positive and a ratio of 0 never win. Without a pivot the step is
 * skipped, and no error is reported: that A is singular shows in the solves. min(m, n) - 1 columns
 * are eliminated; A need not be square, and the last column of a tall matrix stays as it is.
 *
 * Error 1 unless `pivot->size` is the number of rows. The scales live in a work vector that stays
 * allocated, registered with `mem_stat_reg_list` as type 3 under the mark of the first call.
 */
ZAREL_API MAT* LM_LUfactor(MAT* A, PERM* pivot, LM_ARGS);
ZAREL_API ZMAT* LM_zLUfactor(ZMAT* A, PERM* pivot, LM_ARGS);

/** @name With the factors
 * Error 1 unless the factors are square and as large as b and the pivots; 4 for a zero on the
 * diagonal of U. `x` may be b. @{ */
/** Solves A x = b. */
ZAREL_API VEC* LM_LUsolve(const MAT* LU, const PERM* pivot, const VEC* b, VEC* x, LM_ARGS);
ZAREL_API ZVEC* LM_zLUsolve(const ZMAT* LU, const PERM* pivot, const ZVEC* b, ZVEC* x, LM_ARGS);
/** Solves A^T x = b. */
ZAREL_API VEC* LM_LUTsolve(const MAT* LU, const PERM* pivot, const VEC* b, VEC* x, LM_ARGS);
ZAREL_API ZVEC* LM_zLUAsolve(const ZMAT* LU, const PERM* pivot, const ZVEC* b, ZVEC* x, LM_ARGS);
/**
 * Estimates the condition of A in the 1-norm from its factors: the 1-norms of A and of its inverse
 * are each estimated from below by a few products (N. J. Higham, "FORTRAN codes for estimating the
 * one-norm of a real or complex matrix", ACM TOMS 14, 1988). Infinity for a zero on the diagonal
 * of U, 0 for a matrix without rows. Error 1 as above.
 */
ZAREL_API double LM_LUcondest(const MAT* LU, const PERM* pivot, LM_ARGS);
ZAREL_API double LM_zLUcondest(const ZMAT* LU, const PERM* pivot, LM_ARGS);
/** @} */

/** out := the inverse of A. `out` may be A. Error 9 if A is not square, 4 if it is singular. */
ZAREL_API MAT* LM_m_inverse(const MAT* A, MAT* out, LM_ARGS);
ZAREL_API ZMAT* LM_zm_inverse(const ZMAT* A, ZMAT* out, LM_ARGS);

ZAREL_END_C

#endif

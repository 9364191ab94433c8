/**
 * @file C_Lapack.h
 * LAPACK and BLAS by scalar, as the dense matrices call them.
 *
 * One overload set a routine over the `ITF_` functions; arguments as in the reference routine, with
 * complex factors by value. Integers have no such routines: the factorisation and its solver throw
 * 2871 for them, the products print a line on the standard error and end the process with exit code
 * -1.
 */
#ifndef ZAREL_C_LAPACK_H
#define ZAREL_C_LAPACK_H

#include <complex>

#include <zarel/export.h>
#include <zarel/scalars.h>

namespace Zarel {
namespace Lapack {

/// @cond
#define ZAREL_LAPACK(T)                                                                            \
  ZAREL_API void gemv(char trans, int m, int n, T alpha, T* a, int lda, T* x, int incx, T beta,    \
                      T* y, int incy);                                                             \
  ZAREL_API void gemm(char ta, char tb, int m, int n, int k, T alpha, T* a, int lda, T* b,         \
                      int ldb, T beta, T* c, int ldc);                                             \
  ZAREL_API void getrf(int m, int n, T* a, int lda, int* ipiv, int* info);                         \
  ZAREL_API void getrs(char trans, int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb,       \
                       int* info);
ZAREL_MATRIX_SCALARS(ZAREL_LAPACK)
#undef ZAREL_LAPACK

#define ZAREL_LAPACK(T)                                                                            \
  ZAREL_API void spmv(char uplo, int n, T alpha, T* ap, T* x, int incx, T beta, T* y, int incy);   \
  ZAREL_API void sptrs(char uplo, int n, int nrhs, T* ap, int* ipiv, T* b, int ldb, int* info);
ZAREL_SYMMETRIC_SCALARS(ZAREL_LAPACK)
#undef ZAREL_LAPACK
/// @endcond

} // namespace Lapack
} // namespace Zarel

#endif

// The BLAS routines that the kernel calls, overloaded by scalar. Arrays that a routine only reads
// are const here; its interface does not say so.
#ifndef ZAREL_KERNEL_BLAS_H
#define ZAREL_KERNEL_BLAS_H

#include <zarel/itf.h>
#include <zarel/lm_types.h>

namespace Zarel::kernel::blas {

inline char* option(const char* text) {
  return const_cast<char*>(text);
}
inline double* in(const double* p) {
  return const_cast<double*>(p);
}
inline void* in(const ZCOMPLEX* p) {
  return const_cast<ZCOMPLEX*>(p);
}

inline void gemm(const char* ta, const char* tb, int m, int n, int k, double alpha, const double* a,
                 int lda, const double* b, int ldb, double beta, double* c, int ldc) {
  ITF_dgemm(option(ta), option(tb), m, n, k, alpha, in(a), lda, in(b), ldb, beta, c, ldc);
}
inline void gemm(const char* ta, const char* tb, int m, int n, int k, ZCOMPLEX alpha,
                 const ZCOMPLEX* a, int lda, const ZCOMPLEX* b, int ldb, ZCOMPLEX beta, ZCOMPLEX* c,
                 int ldc) {
  ITF_zgemm(option(ta), option(tb), m, n, k, &alpha, in(a), lda, in(b), ldb, &beta, c, ldc);
}

inline void gemv(const char* t, int m, int n, double alpha, const double* a, int lda,
                 const double* x, double beta, double* y) {
  ITF_dgemv(option(t), m, n, alpha, in(a), lda, in(x), 1, beta, y, 1);
}
inline void gemv(const char* t, int m, int n, ZCOMPLEX alpha, const ZCOMPLEX* a, int lda,
                 const ZCOMPLEX* x, ZCOMPLEX beta, ZCOMPLEX* y) {
  ITF_zgemv(option(t), m, n, &alpha, in(a), lda, in(x), 1, &beta, y, 1);
}

inline void trsm(const char* side, const char* uplo, const char* diag, int m, int n,
                 const double* a, int lda, double* b, int ldb) {
  ITF_dtrsm(option(side), option(uplo), option("N"), option(diag), m, n, 1.0, in(a), lda, b, ldb);
}
inline void trsm(const char* side, const char* uplo, const char* diag, int m, int n,
                 const ZCOMPLEX* a, int lda, ZCOMPLEX* b, int ldb) {
  ZCOMPLEX one = {1.0, 0.0};
  ITF_ztrsm(option(side), option(uplo), option("N"), option(diag), m, n, &one, in(a), lda, b, ldb);
}

inline double nrm2(int n, const double* x) {
  return ITF_dnrm2(n, in(x), 1);
}
inline double nrm2(int n, const ZCOMPLEX* x) {
  return ITF_dznrm2(n, in(x), 1);
}

} // namespace Zarel::kernel::blas

#endif

#include <zarel/C_Lapack.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <zarel/itf.h>

#include "runtime/fail.h"

namespace {

using Complex = std::complex<double>;
using ComplexF = std::complex<float>;

int atLeastOne(int lead) {
  return std::max(lead, 1);
}

/** Ends the process: integer products have no routine, and no result could be returned. */
[[noreturn]] void endWithoutRoutine(char const* text) {
  std::fputs(text, stderr);
  std::fflush(stderr);
  std::exit(-1);
}

// The letters and the complex factors go by address.

#define ZAREL_GEMV(T, ROUTINE, FACTOR)                                                             \
  void gemvOf(char t, int m, int n, T alpha, T* a, int lda, T* x, int incx, T beta, T* y,          \
              int incy) {                                                                          \
    ROUTINE(&t, m, n, FACTOR alpha, a, lda, x, incx, FACTOR beta, y, incy);                        \
  }
#define ZAREL_GEMM(T, ROUTINE, FACTOR)                                                             \
  void gemmOf(char ta, char tb, int m, int n, int k, T alpha, T* a, int lda, T* b, int ldb,        \
              T beta, T* c, int ldc) {                                                             \
    ROUTINE(&ta, &tb, m, n, k, FACTOR alpha, a, lda, b, ldb, FACTOR beta, c, ldc);                 \
  }
#define ZAREL_NOTHING
ZAREL_GEMV(float, ITF_sgemv, ZAREL_NOTHING)
ZAREL_GEMV(double, ITF_dgemv, ZAREL_NOTHING)
ZAREL_GEMV(ComplexF, ITF_cgemv, &)
ZAREL_GEMV(Complex, ITF_zgemv, &)
ZAREL_GEMM(float, ITF_sgemm, ZAREL_NOTHING)
ZAREL_GEMM(double, ITF_dgemm, ZAREL_NOTHING)
ZAREL_GEMM(ComplexF, ITF_cgemm, &)
ZAREL_GEMM(Complex, ITF_zgemm, &)
#undef ZAREL_GEMV
#undef ZAREL_GEMM

} // namespace

namespace Zarel {
namespace Lapack {

#define ZAREL_WITH_ROUTINES(T, LETTER)                                                             \
  void gemv(char t, int m, int n, T alpha, T* a, int lda, T* x, int incx, T beta, T* y,            \
            int incy) {                                                                            \
    gemvOf(t, m, n, alpha, a, atLeastOne(lda), x, incx, beta, y, incy);                            \
  }                                                                                                \
  void gemm(char ta, char tb, int m, int n, int k, T alpha, T* a, int lda, T* b, int ldb, T beta,  \
            T* c, int ldc) {                                                                       \
    if (m == 0 || lda == 0) return;                                                                \
    gemmOf(ta, tb, m, n, k, alpha, a, lda, b, atLeastOne(ldb), beta, c, atLeastOne(ldc));          \
  }                                                                                                \
  void getrf(int m, int n, T* a, int lda, int* ipiv, int* info) {                                  \
    ITF_##LETTER##getrf(m, n, a, atLeastOne(lda), ipiv, info);                                     \
  }                                                                                                \
  void getrs(char t, int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb, int* info) {        \
    ITF_##LETTER##getrs(&t, n, nrhs, a, atLeastOne(lda), ipiv, b, atLeastOne(ldb), info);          \
  }
ZAREL_WITH_ROUTINES(float, s)
ZAREL_WITH_ROUTINES(double, d)
ZAREL_WITH_ROUTINES(ComplexF, c)
ZAREL_WITH_ROUTINES(Complex, z)
#undef ZAREL_WITH_ROUTINES

#define ZAREL_WITHOUT_ROUTINES(T)                                                                  \
  void gemv(char, int, int, T, T*, int, T*, int, T, T*, int) {                                     \
    endWithoutRoutine("Error : gemv with integers not yet implemented\n");                         \
  }                                                                                                \
  void gemm(char, char, int, int, int, T, T*, int, T*, int, T, T*, int) {                          \
    endWithoutRoutine("Error : gemm with integers not yet implemented\n");                         \
  }                                                                                                \
  void getrf(int, int, T*, int, int*, int*) {                                                      \
    fail(2871);                                                                                    \
  }                                                                                                \
  void getrs(char, int, int, T*, int, int*, T*, int, int*) {                                       \
    fail(2871);                                                                                    \
  }
ZAREL_WITHOUT_ROUTINES(short int)
ZAREL_WITHOUT_ROUTINES(int)
#undef ZAREL_WITHOUT_ROUTINES

void spmv(char uplo, int n, double alpha, double* ap, double* x, int incx, double beta, double* y,
          int incy) {
  ITF_dspmv(&uplo, n, alpha, ap, x, incx, beta, y, incy);
}
void spmv(char uplo, int n, Complex alpha, Complex* ap, Complex* x, int incx, Complex beta,
          Complex* y, int incy) {
  ITF_zspmv(&uplo, n, &alpha, ap, x, incx, &beta, y, incy);
}
void sptrs(char uplo, int n, int nrhs, double* ap, int* ipiv, double* b, int ldb, int* info) {
  ITF_dsptrs(&uplo, n, nrhs, ap, ipiv, b, atLeastOne(ldb), info);
}
void sptrs(char uplo, int n, int nrhs, Complex* ap, int* ipiv, Complex* b, int ldb, int* info) {
  ITF_zsptrs(&uplo, n, nrhs, ap, ipiv, b, atLeastOne(ldb), info);
}

} // namespace Lapack
} // namespace Zarel

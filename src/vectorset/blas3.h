// Matrix products by scalar, for sets.
#ifndef ZAREL_VECTORSET_BLAS3_H
#define ZAREL_VECTORSET_BLAS3_H

#include <complex>

#include <zarel/C_Lapack.h>
#include <zarel/itf.h>

namespace Zarel {
namespace Blas {

// The interface takes options through pointers, which it does not write to.
inline char* option(const char* letter) {
  return const_cast<char*>(letter);
}

// The upper triangle of C := A^H A + beta C, A m x n.

inline void gramUpper(int n, int m, float* a, int lda, double beta, float* c, int ldc) {
  ITF_ssyrk(option("U"), option("C"), n, m, 1, a, lda, static_cast<float>(beta), c, ldc);
}
inline void gramUpper(int n, int m, double* a, int lda, double beta, double* c, int ldc) {
  ITF_dsyrk(option("U"), option("C"), n, m, 1, a, lda, beta, c, ldc);
}
inline void gramUpper(int n, int m, std::complex<float>* a, int lda, double beta,
                      std::complex<float>* c, int ldc) {
  ITF_cherk(option("U"), option("C"), n, m, 1, a, lda, static_cast<float>(beta), c, ldc);
}
inline void gramUpper(int n, int m, std::complex<double>* a, int lda, double beta,
                      std::complex<double>* c, int ldc) {
  ITF_zherk(option("U"), option("C"), n, m, 1, a, lda, beta, c, ldc);
}

// A := A S^-1, A m x n, S upper triangular.

inline void divideByUpper(int m, int n, float* s, int lds, float* a, int lda) {
  ITF_strsm(option("R"), option("U"), option("N"), option("N"), m, n, 1, s, lds, a, lda);
}
inline void divideByUpper(int m, int n, double* s, int lds, double* a, int lda) {
  ITF_dtrsm(option("R"), option("U"), option("N"), option("N"), m, n, 1, s, lds, a, lda);
}
inline void divideByUpper(int m, int n, std::complex<float>* s, int lds, std::complex<float>* a,
                          int lda) {
  std::complex<float> one(1);
  ITF_ctrsm(option("R"), option("U"), option("N"), option("N"), m, n, &one, s, lds, a, lda);
}
inline void divideByUpper(int m, int n, std::complex<double>* s, int lds, std::complex<double>* a,
                          int lda) {
  std::complex<double> one(1);
  ITF_ztrsm(option("R"), option("U"), option("N"), option("N"), m, n, &one, s, lds, a, lda);
}

// x := x / a, whatever the size of a.

inline void divide(int n, double a, float* x) {
  ITF_srscl(n, static_cast<float>(a), x, 1);
}
inline void divide(int n, double a, double* x) {
  ITF_drscl(n, a, x, 1);
}
inline void divide(int n, double a, std::complex<float>* x) {
  ITF_csrscl(n, static_cast<float>(a), x, 1);
}
inline void divide(int n, double a, std::complex<double>* x) {
  ITF_zdrscl(n, a, x, 1);
}

} // namespace Blas
} // namespace Zarel

#endif

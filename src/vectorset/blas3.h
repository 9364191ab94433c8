// Matrix products, lengths and quotients by scalar, for sets.
#ifndef ZAREL_VECTORSET_BLAS3_H
#define ZAREL_VECTORSET_BLAS3_H

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>

#include <zarel/C_Lapack.h>
#include <zarel/itf.h>

#include "containers/blas.h"

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

// The length of a vector whose squares are too large or too small for a sum.

inline double scaledLength(int n, float* x) {
  return ITF_snrm2(n, x, 1);
}
inline double scaledLength(int n, double* x) {
  return ITF_dnrm2(n, x, 1);
}
inline double scaledLength(int n, std::complex<float>* x) {
  return ITF_scnrm2(n, x, 1);
}
inline double scaledLength(int n, std::complex<double>* x) {
  return ITF_dznrm2(n, x, 1);
}

/** The length of a vector, whatever the size of its values. */
template <class T>
double length(int n, T* x) {
  using Limits = std::numeric_limits<decltype(std::abs(T()))>;
  static const double exact = std::sqrt(Limits::min() / Limits::epsilon());
  const double plain = std::sqrt(sumOfSquares(n, x));
  return plain > exact && plain <= Limits::max() ? plain : scaledLength(n, x);
}

// x := x / a, whatever the size of a.

inline void reciprocalScale(int n, double a, float* x) {
  ITF_srscl(n, static_cast<float>(a), x, 1);
}
inline void reciprocalScale(int n, double a, double* x) {
  ITF_drscl(n, a, x, 1);
}
inline void reciprocalScale(int n, double a, std::complex<float>* x) {
  ITF_csrscl(n, static_cast<float>(a), x, 1);
}
inline void reciprocalScale(int n, double a, std::complex<double>* x) {
  ITF_zdrscl(n, a, x, 1);
}

/** Divides; a length that is 0 or not finite makes values that are no numbers. LAPACK would look
 * for a factor to an infinite one without end. */
template <class T>
void divide(int n, double a, T* x) {
  if (std::isfinite(a) && a != 0)
    reciprocalScale(n, a, x);
  else
    std::fill_n(x, n, T(std::numeric_limits<decltype(std::abs(T()))>::quiet_NaN()));
}

} // namespace Blas
} // namespace Zarel

#endif

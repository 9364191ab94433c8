/**
 * @file dense.h
 * The dense routines that differ by scalar, as overloads; arrays are by columns.
 */
#ifndef ZAREL_KRIGING_DENSE_H
#define ZAREL_KRIGING_DENSE_H

#include <complex>

#include <zarel/C_Lapack.h>
#include <zarel/C_MatMGe.h>
#include <zarel/C_VecPi.h>
#include <zarel/itf.h>

namespace Zarel {

using Complex = std::complex<double>;
using LongBuffer = C_VecPi<double, __int64, C_PtrInCore<double, __int64>>;

template <class T>
inline constexpr bool isComplexScalar = false;
template <>
inline constexpr bool isComplexScalar<Complex> = true;

/** How many doubles a scalar is made of. */
template <class T>
constexpr int planesOf = isComplexScalar<T> ? 2 : 1;

/** A character option, as the routines take it. */
class Option {
public:
  explicit Option(char letter) : text{letter, '\0'} {}
  operator char*() { return text; }

private:
  char text[2];
};

/** B := B op(A) for a triangular A; B is m x n. */
inline void trmmRight(char uplo, char trans, int m, int n, double* a, int lda, double* b, int ldb) {
  ITF_dtrmm(Option('R'), Option(uplo), Option(trans), Option('N'), m, n, 1.0, a, lda, b, ldb);
}

inline void trmmRight(char uplo, char trans, int m, int n, Complex* a, int lda, Complex* b,
                      int ldb) {
  Complex one(1.0);
  ITF_ztrmm(Option('R'), Option(uplo), Option(trans), Option('N'), m, n, &one, a, lda, b, ldb);
}

/** Least squares by QR; see LAPACK's gels. */
inline int gels(int m, int n, int nrhs, double* a, int lda, double* b, int ldb, double* work,
                int lwork) {
  int info = 0;
  ITF_dgels(Option('N'), m, n, nrhs, a, lda, b, ldb, work, lwork, &info);
  return info;
}

inline int gels(int m, int n, int nrhs, Complex* a, int lda, Complex* b, int ldb, Complex* work,
                int lwork) {
  int info = 0;
  ITF_zgels(Option('N'), m, n, nrhs, a, lda, b, ldb, work, lwork, &info);
  return info;
}

/** Inverts a packed lower triangle in place; one with a zero on its diagonal stays as it is. */
inline void invertPackedLower(int n, double* packed) {
  int info = 0;
  ITF_dtptri(Option('L'), Option('N'), n, packed, &info);
}

inline void invertPackedLower(int n, Complex* packed) {
  int info = 0;
  ITF_ztptri(Option('L'), Option('N'), n, packed, &info);
}

/** Singular values of a (m x n, destroyed) into s, with the vectors computed and thrown away.
 *  `right` holds min(m, n) x n values, work `lwork`. */
inline void singularValues(int m, int n, double* a, double* s, double* right, double* work,
                           int lwork) {
  int info = 0;
  const int k = m < n ? m : n;
  ITF_dgesvd(Option('O'), Option('S'), m, n, a, m, s, nullptr, 1, right, k, work, lwork, &info);
}

inline void singularValues(int m, int n, Complex* a, double* s, Complex* right, Complex* work,
                           int lwork) {
  int info = 0;
  const int k = m < n ? m : n;
  C_VecPi<double, int, C_PtrInCore<double, int>> realWork(5 * k);
  ITF_zgesvd(Option('O'), Option('S'), m, n, a, m, s, nullptr, 1, right, k, work, lwork,
             realWork.Adr(0), &info);
}

/** |x|^2. */
inline double squared(double x) {
  return x * x;
}
inline double squared(const Complex& x) {
  return x.real() * x.real() + x.imag() * x.imag();
}

/** Sum of the squared moduli of `count` values. */
inline double sumOfSquares(int count, double* x) {
  return ITF_ddot(count, x, 1, x, 1);
}

inline double sumOfSquares(int count, Complex* x) {
  double* const parts = reinterpret_cast<double*>(x);
  return ITF_ddot(2 * count, parts, 1, parts, 1);
}

/** Copies a packed lower triangle of order n into a full matrix, whose upper part it leaves. */
template <class T>
void unpackLower(int n, const T* packed, T* full, int ld) {
  for (int j = 0; j < n; ++j) {
    T* const column = full + static_cast<long>(j) * ld;
    for (int i = j; i < n; ++i)
      column[i] = *packed++;
  }
}

/** The reverse of unpackLower. */
template <class T>
void packLower(int n, const T* full, int ld, T* packed) {
  for (int j = 0; j < n; ++j) {
    const T* const column = full + static_cast<long>(j) * ld;
    for (int i = j; i < n; ++i)
      *packed++ = column[i];
  }
}

} // namespace Zarel

#endif

// BLAS level 1 by scalar: one overload set a routine over the ITF_ functions, with counts of any
// width, and the plain loops of the integers, which BLAS does not know.
#ifndef ZAREL_CONTAINERS_BLAS_H
#define ZAREL_CONTAINERS_BLAS_H

#include <algorithm>
#include <cstring>
#include <type_traits>

#include <zarel/itf.h>

#include "containers/blocks.h"
#include "containers/scalars.h"

namespace Zarel {
namespace Blas {

using Complex = std::complex<double>;
using ComplexF = std::complex<float>;

// One piece, all strides 1. The interface takes a real factor by value and a complex one by
// address.

#define ZAREL_BLAS_PIECES(T, LETTER, FACTOR)                                                       \
  inline void axpyPiece(int n, T a, T* x, T* y) {                                                  \
    ITF_##LETTER##axpy(n, FACTOR, x, 1, y, 1);                                                     \
  }                                                                                                \
  inline void scalPiece(int n, T a, T* x) {                                                        \
    ITF_##LETTER##scal(n, FACTOR, x, 1);                                                           \
  }                                                                                                \
  inline void copyPiece(int n, T* x, T* y) {                                                       \
    ITF_##LETTER##copy(n, x, 1, y, 1);                                                             \
  }                                                                                                \
  inline int imaxPiece(int n, T* x) {                                                              \
    return ITF_i##LETTER##amax(n, x, 1) - 1;                                                       \
  }                                                                                                \
  inline int iminPiece(int n, T* x) {                                                              \
    return ITF_i##LETTER##amin(n, x, 1) - 1;                                                       \
  }
ZAREL_BLAS_PIECES(float, s, a)
ZAREL_BLAS_PIECES(double, d, a)
ZAREL_BLAS_PIECES(ComplexF, c, &a)
ZAREL_BLAS_PIECES(Complex, z, &a)
#undef ZAREL_BLAS_PIECES

inline float dotPiece(int n, float* x, float* y) {
  return ITF_sdot(n, x, 1, y, 1);
}
inline double dotPiece(int n, double* x, double* y) {
  return ITF_ddot(n, x, 1, y, 1);
}
inline ComplexF dotPiece(int n, ComplexF* x, ComplexF* y) {
  ComplexF result(0);
  ITF_zarelcdot(n, x, y, &result, 1);
  return result;
}
inline Complex dotPiece(int n, Complex* x, Complex* y) {
  Complex result(0);
  ITF_zarelzdot(n, x, y, &result, 1);
  return result;
}

/** The measure by which the index searches compare: |re| + |im| for complex scalars. */
template <class T>
double searchMeasure(T value) {
  if constexpr (IsComplex<T>::value)
    return std::abs(static_cast<double>(value.real())) +
           std::abs(static_cast<double>(value.imag()));
  else
    return modulus(value);
}

// Any count.

/** y += a x */
template <class T>
void axpy(long long n, T a, T* x, T* y) {
  if constexpr (std::is_integral_v<T>) {
    for (long long i = 0; i < n; ++i)
      y[i] = plus(y[i], times(a, x[i]));
  } else {
    forEachIntPiece(n, [=](long long at, int len) { axpyPiece(len, a, x + at, y + at); });
  }
}

/** x *= a */
template <class T>
void scal(long long n, T a, T* x) {
  if constexpr (std::is_integral_v<T>) {
    for (long long i = 0; i < n; ++i)
      x[i] = times(a, x[i]);
  } else {
    forEachIntPiece(n, [=](long long at, int len) { scalPiece(len, a, x + at); });
  }
}

/** y = x; the two may be the same, else they do not overlap */
template <class T>
void copy(long long n, T* x, T* y) {
  if (n < 1 || x == y) return;
  if constexpr (std::is_integral_v<T>)
    std::memcpy(y, x, static_cast<std::size_t>(n) * sizeof(T));
  else
    forEachIntPiece(n, [=](long long at, int len) { copyPiece(len, x + at, y + at); });
}

/** sum of conj(x) y, in T */
template <class T>
T dot(long long n, T* x, T* y) {
  T sum(0);
  if constexpr (std::is_integral_v<T>) {
    for (long long i = 0; i < n; ++i)
      sum = plus(sum, times(x[i], y[i]));
  } else {
    forEachIntPiece(n, [&](long long at, int len) { sum += dotPiece(len, x + at, y + at); });
  }
  return sum;
}

/** sum of the squared moduli; integers in `double`, so that it cannot wrap */
template <class T>
double sumOfSquares(long long n, T* x) {
  if constexpr (std::is_integral_v<T>) {
    double sum = 0;
    for (long long i = 0; i < n; ++i)
      sum += widen(x[i]) * widen(x[i]);
    return sum;
  } else {
    return modulus(dot(n, x, x));
  }
}

/** sum of the moduli */
template <class T>
double sumOfModuli(long long n, T* x) {
  double sum = 0;
  if constexpr (std::is_same_v<T, double>) {
    forEachIntPiece(n, [&](long long at, int len) { sum += ITF_dasum(len, x + at, 1); });
  } else {
    for (long long i = 0; i < n; ++i)
      sum += modulus(x[i]);
  }
  return sum;
}

/** position of the first value for which better(its measure, best so far), -1 without values */
template <class T, class Better>
long long scan(long long n, T* x, Better better) {
  long long best = n < 1 ? -1 : 0;
  for (long long i = 1; i < n; ++i)
    if (better(searchMeasure(x[i]), searchMeasure(x[best]))) best = i;
  return best;
}

template <class T, class Better, class Piece>
long long search(long long n, T* x, Better better, Piece piece) {
  if constexpr (std::is_integral_v<T>) {
    return scan(n, x, better);
  } else {
    long long best = -1;
    forEachIntPiece(n, [&](long long at, int len) {
      const long long found = piece(len, x + at);
      if (found >= 0 && (best < 0 || better(searchMeasure(x[at + found]), searchMeasure(x[best]))))
        best = at + found;
    });
    return best;
  }
}

/** position of the largest modulus, -1 without values */
template <class T>
long long imax(long long n, T* x) {
  return search(
      n, x, [](double a, double b) { return a > b; },
      [](int len, auto* at) { return imaxPiece(len, at); });
}

/** position of the smallest modulus, -1 without values */
template <class T>
long long imin(long long n, T* x) {
  return search(
      n, x, [](double a, double b) { return a < b; },
      [](int len, auto* at) { return iminPiece(len, at); });
}

} // namespace Blas
} // namespace Zarel

#endif

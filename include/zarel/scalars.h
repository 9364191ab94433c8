/**
 * @file scalars.h
 * The scalars for which the container templates exist, each list written once.
 *
 * A list takes a macro and applies it to every entry. The lists drive the `extern template`
 * declarations of the public headers, the instantiations behind them and the typed tests.
 */
#ifndef ZAREL_SCALARS_H
#define ZAREL_SCALARS_H

#include <complex>

#include <zarel/export.h>

/** X(T): the scalars that BLAS knows. */
#define ZAREL_BLAS_SCALARS(X) X(float) X(double) X(std::complex<float>) X(std::complex<double>)

/** X(T): the scalars of dense matrices. */
#define ZAREL_MATRIX_SCALARS(X) X(short int) X(int) ZAREL_BLAS_SCALARS(X)

/** X(T): the scalars of packed symmetric matrices. */
#define ZAREL_SYMMETRIC_SCALARS(X) X(double) X(std::complex<double>)

/** X(T, I): storages and concrete vectors, of both index widths. */
#define ZAREL_STORAGE_SCALARS(X)                                                                   \
  X(char, int)                                                                                     \
  X(__int64, int)                                                                                  \
  X(short int, int)                                                                                \
  X(int, int)                                                                                      \
  X(float, int)                                                                                    \
  X(double, int)                                                                                   \
  X(std::complex<float>, int)                                                                      \
  X(std::complex<double>, int)                                                                     \
  X(short int, __int64)                                                                            \
  X(int, __int64)                                                                                  \
  X(float, __int64)                                                                                \
  X(double, __int64)                                                                               \
  X(std::complex<float>, __int64)                                                                  \
  X(std::complex<double>, __int64)

/** X(T, I): abstract vectors; wide integers with a wide index exist as an interface only. */
#define ZAREL_VECTOR_SCALARS(X) ZAREL_STORAGE_SCALARS(X) X(__int64, __int64)

#endif

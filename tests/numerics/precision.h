/**
 * @file precision.h
 * The interface's functions by scalar type, for tests that run in several precisions.
 */
#ifndef ZAREL_TESTS_NUMERICS_PRECISION_H
#define ZAREL_TESTS_NUMERICS_PRECISION_H

#include <complex>
#include <limits>
#include <type_traits>

#include <gtest/gtest.h>

#include <zarel/itf.h>

#include "support/Scalars.h"

namespace precision {

using ComplexFloat = std::complex<float>;
using ComplexDouble = std::complex<double>;

using support::conjugate;
using support::isComplex;
using support::Real;

/** The one of four functions that is for T. */
template <class T, class S, class D, class C, class Z>
auto pick(S s, D d, C c, Z z) {
  if constexpr (std::is_same_v<T, float>)
    return s;
  else if constexpr (std::is_same_v<T, double>)
    return d;
  else if constexpr (std::is_same_v<T, ComplexFloat>)
    return c;
  else
    return z;
}
#define ITF(T, name) ::precision::pick<T>(ITF_s##name, ITF_d##name, ITF_c##name, ITF_z##name)

/** A number as the interface takes it: real ones as they are, complex ones by address. */
template <class T>
auto input(T& number) {
  if constexpr (isComplex<T>)
    return static_cast<void*>(&number);
  else
    return number;
}

/** re + im i in the complex types, re in the real ones: hand cases give both. */
template <class T>
T number(double re, double im = 0) {
  return support::scalar<T>(re, im);
}

/** Rounding errors allowed to a handful of operations on numbers of size `scale`. */
template <class T>
double tolerance(double scale = 1) {
  return 32 * scale * support::epsilon<T>();
}

template <class T>
void expectNear(T actual, T expected, double scale = 1) {
  EXPECT_NEAR(std::abs(actual - expected), 0.0, tolerance<T>(scale))
      << actual << " vs " << expected;
}

/** A character option, as the interface takes it. */
inline char* option(const char* text) {
  return const_cast<char*>(text);
}

using All = testing::Types<float, double, ComplexFloat, ComplexDouble>;
using Doubles = testing::Types<double, ComplexDouble>;
using Complexes = testing::Types<ComplexFloat, ComplexDouble>;

} // namespace precision

#endif

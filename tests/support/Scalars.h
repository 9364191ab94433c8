// The scalars of typed tests: real parts, values, names and rounding, whatever the type.
#ifndef TESTS_SUPPORT_SCALARS_H
#define TESTS_SUPPORT_SCALARS_H

#include <complex>
#include <limits>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include <zarel/export.h>

namespace support {

/** A list of types for typed tests; the lists of scalars put a comma before each of theirs. */
template <class First, class... Rest>
using TypesAfter = ::testing::Types<Rest...>;

template <class T>
struct RealOf {
  using type = T;
};
template <class R>
struct RealOf<std::complex<R>> {
  using type = R;
};
template <class T>
using Real = typename RealOf<T>::type;
template <class T>
constexpr bool isComplex = !std::is_same_v<T, Real<T>>;

/** re + im i in the complex types, re in the others: hand cases give both. */
template <class T>
T scalar(double re, double im = 0) {
  if constexpr (isComplex<T>)
    return T(static_cast<Real<T>>(re), static_cast<Real<T>>(im));
  else
    return static_cast<T>(re);
}

template <class T>
T conjugate(T value) {
  if constexpr (isComplex<T>)
    return std::conj(value);
  else
    return value;
}

template <class T>
std::complex<double> wide(T value) {
  if constexpr (isComplex<T>)
    return static_cast<std::complex<double>>(value);
  else
    return static_cast<double>(value);
}

/** Rounding of a scalar; 0 for integers. */
template <class T>
double epsilon() {
  return static_cast<double>(std::numeric_limits<Real<T>>::epsilon());
}

/** How test names call a scalar. */
template <class T>
std::string scalarName() {
  if constexpr (isComplex<T>)
    return "complex_" + scalarName<Real<T>>();
  else if constexpr (std::is_same_v<T, __int64>)
    return "hyper";
  else if constexpr (std::is_integral_v<T>)
    return sizeof(T) == 1 ? "char" : sizeof(T) == 2 ? "short" : "int";
  else
    return sizeof(T) == sizeof(float) ? "float" : "double";
}

} // namespace support

#endif

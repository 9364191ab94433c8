// What differs by scalar and is data or a one-line rule, written once.
#ifndef ZAREL_CONTAINERS_SCALARS_H
#define ZAREL_CONTAINERS_SCALARS_H

#include <cmath>
#include <complex>
#include <cstdio>
#include <string>
#include <type_traits>

#include <zarel/C_Type.h>
#include <zarel/scalars.h>

namespace Zarel {

template <class T>
struct ScalarTraits;

#define ZAREL_SCALAR(T, ENUM, NAME)                                                                \
  template <>                                                                                      \
  struct ScalarTraits<T> {                                                                         \
    static constexpr C_Type::E_Type type = C_Type::ENUM;                                           \
    static constexpr char const* name = NAME;                                                      \
  };
ZAREL_SCALAR(char, E_TypeUnknown, "Unknown")
ZAREL_SCALAR(short int, E_TypeShort, "Short")
ZAREL_SCALAR(int, E_TypeInteger, "Integer")
ZAREL_SCALAR(__int64, E_TypeHyper, "Hyper")
ZAREL_SCALAR(float, E_TypeFloat, "Float")
ZAREL_SCALAR(double, E_TypeDouble, "Double")
ZAREL_SCALAR(std::complex<float>, E_TypeFloatComplex, "Float complex")
ZAREL_SCALAR(std::complex<double>, E_TypeDoubleComplex, "Double complex")
#undef ZAREL_SCALAR

template <class T>
struct IsComplex : std::false_type {};
template <class R>
struct IsComplex<std::complex<R>> : std::true_type {};

/** The type in which sums of squares and differences are taken: wide enough for any scalar. */
template <class T>
struct WideOf {
  using type = double;
};
template <class R>
struct WideOf<std::complex<R>> {
  using type = std::complex<double>;
};
template <class T>
using Wide = typename WideOf<T>::type;

template <class T>
Wide<T> widen(T value) {
  return static_cast<Wide<T>>(value);
}

template <class T>
double modulus(T value) {
  return std::abs(widen(value));
}

/** Integer results keep their low bits, whatever the operands; no scalar overflows undefined. */
template <class T>
T plus(T a, T b) {
  if constexpr (std::is_integral_v<T>)
    return static_cast<T>(static_cast<unsigned long long>(a) + static_cast<unsigned long long>(b));
  else
    return a + b;
}

template <class T>
T times(T a, T b) {
  if constexpr (std::is_integral_v<T>)
    return static_cast<T>(static_cast<unsigned long long>(a) * static_cast<unsigned long long>(b));
  else
    return a * b;
}

/** A real number as a scalar; what an integer cannot hold becomes 0. */
template <class T>
T fromReal(double value) {
  if constexpr (std::is_integral_v<T>) {
    const double limit = std::ldexp(1.0, 8 * static_cast<int>(sizeof(T)) - 1);
    return std::trunc(value) >= -limit && value < limit ? static_cast<T>(value) : T(0);
  } else if constexpr (IsComplex<T>::value) {
    return T(static_cast<typename T::value_type>(value));
  } else {
    return static_cast<T>(value);
  }
}

/** A scalar as Print and WriteMatlab write it. */
template <class T>
int formatScalar(T value, char* text, std::size_t size) {
  if constexpr (IsComplex<T>::value)
    return std::snprintf(text, size, "% 2.3E % 2.3E ", static_cast<double>(value.real()),
                         static_cast<double>(value.imag()));
  else
    return std::snprintf(text, size, "% 2.3e ", static_cast<double>(value));
}

template <class T>
std::string scalarText(T value) {
  char text[64];
  formatScalar(value, text, sizeof text);
  return text;
}

template <class T>
void printScalar(FILE* file, T value) {
  char text[64];
  formatScalar(value, text, sizeof text);
  std::fputs(text, file);
}

} // namespace Zarel

#endif

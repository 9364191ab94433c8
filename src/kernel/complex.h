// Arithmetic of the record's complex values, so that one template serves real and complex.
#ifndef ZAREL_KERNEL_COMPLEX_H
#define ZAREL_KERNEL_COMPLEX_H

#include <cmath>

#include <zarel/lm_types.h>

inline ZCOMPLEX operator+(ZCOMPLEX a, ZCOMPLEX b) {
  return {a.re + b.re, a.im + b.im};
}
inline ZCOMPLEX operator-(ZCOMPLEX a, ZCOMPLEX b) {
  return {a.re - b.re, a.im - b.im};
}
inline ZCOMPLEX operator-(ZCOMPLEX a) {
  return {-a.re, -a.im};
}
inline ZCOMPLEX operator*(ZCOMPLEX a, ZCOMPLEX b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
inline ZCOMPLEX operator*(double s, ZCOMPLEX a) {
  return {s * a.re, s * a.im};
}
inline ZCOMPLEX operator/(ZCOMPLEX a, double s) {
  return {a.re / s, a.im / s};
}
inline ZCOMPLEX& operator+=(ZCOMPLEX& a, ZCOMPLEX b) {
  return a = a + b;
}

// The quotient by the larger part of the divisor, which keeps the squares in range (R. L. Smith,
// "Algorithm 116: Complex division", Comm. ACM 5, 1962). b is not zero.
inline ZCOMPLEX operator/(ZCOMPLEX a, ZCOMPLEX b) {
  if (std::fabs(b.re) >= std::fabs(b.im)) {
    const double r = b.im / b.re;
    const double d = b.re + b.im * r;
    return {(a.re + a.im * r) / d, (a.im - a.re * r) / d};
  }
  const double r = b.re / b.im;
  const double d = b.re * r + b.im;
  return {(a.re * r + a.im) / d, (a.im * r - a.re) / d};
}

namespace Zarel::kernel {

inline double conjugate(double x) {
  return x;
}
inline ZCOMPLEX conjugate(ZCOMPLEX z) {
  return {z.re, -z.im};
}
inline double modulus(double x) {
  return std::fabs(x);
}
inline double modulus(ZCOMPLEX z) {
  return std::hypot(z.re, z.im);
}
inline bool isZero(double x) {
  return x == 0.0;
}
inline bool isZero(ZCOMPLEX z) {
  return z.re == 0.0 && z.im == 0.0;
}

// A value from a real one.
template <class T>
T scalar(double x);
template <>
inline double scalar<double>(double x) {
  return x;
}
template <>
inline ZCOMPLEX scalar<ZCOMPLEX>(double x) {
  return {x, 0.0};
}

} // namespace Zarel::kernel

#endif

#include <complex>

#include <zarel/lm_complex.h>

#include "kernel/call.h"
#include "kernel/complex.h"

namespace {

std::complex<double> standard(ZCOMPLEX z) {
  return {z.re, z.im};
}
ZCOMPLEX record(std::complex<double> z) {
  return {z.real(), z.imag()};
}

} // namespace

ZCOMPLEX zmake(double re, double im) {
  return {re, im};
}
double zabs(ZCOMPLEX z) {
  return Zarel::kernel::modulus(z);
}
ZCOMPLEX zadd(ZCOMPLEX a, ZCOMPLEX b) {
  return a + b;
}
ZCOMPLEX zsub(ZCOMPLEX a, ZCOMPLEX b) {
  return a - b;
}
ZCOMPLEX zmlt(ZCOMPLEX a, ZCOMPLEX b) {
  return a * b;
}
ZCOMPLEX zsmlt(double s, ZCOMPLEX z) {
  return s * z;
}
ZCOMPLEX zconj(ZCOMPLEX z) {
  return Zarel::kernel::conjugate(z);
}
ZCOMPLEX zneg(ZCOMPLEX z) {
  return -z;
}
ZCOMPLEX zsqrt(ZCOMPLEX z) {
  return record(std::sqrt(standard(z)));
}
ZCOMPLEX zexp(ZCOMPLEX z) {
  return record(std::exp(standard(z)));
}
ZCOMPLEX zlog(ZCOMPLEX z) {
  return record(std::log(standard(z)));
}

ZCOMPLEX zdiv(ZCOMPLEX a, ZCOMPLEX b, LM_ARGS) {
  LM_ENTER(zdiv);
  if (Zarel::kernel::isZero(b)) return call.fail(4);
  return a / b;
}

ZCOMPLEX zinv(ZCOMPLEX z, LM_ARGS) {
  LM_ENTER(zinv);
  if (Zarel::kernel::isZero(z)) return call.fail(4);
  return ZCOMPLEX{1.0, 0.0} / z;
}

/**
 * @file lm_complex.h
 * Complex scalars of the matrix kernel. C and C++.
 *
 * All are functions of values and keep no state. Moduli, quotients and roots are formed without
 * overflow or underflow in between.
 */
#ifndef ZAREL_LM_COMPLEX_H
#define ZAREL_LM_COMPLEX_H

#include <zarel/lm_types.h>

ZAREL_BEGIN_C

/** Makes re + i im. */
ZAREL_API ZCOMPLEX zmake(double re, double im);
/** The modulus. */
ZAREL_API double zabs(ZCOMPLEX z);
/** a + b. */
ZAREL_API ZCOMPLEX zadd(ZCOMPLEX a, ZCOMPLEX b);
/** a - b. */
ZAREL_API ZCOMPLEX zsub(ZCOMPLEX a, ZCOMPLEX b);
/** a b. */
ZAREL_API ZCOMPLEX zmlt(ZCOMPLEX a, ZCOMPLEX b);
/** s z, with a real s. */
ZAREL_API ZCOMPLEX zsmlt(double s, ZCOMPLEX z);
/** The conjugate. */
ZAREL_API ZCOMPLEX zconj(ZCOMPLEX z);
/** -z. */
ZAREL_API ZCOMPLEX zneg(ZCOMPLEX z);
/** a / b. Error 4 for b = 0; the result is then 0. */
ZAREL_API ZCOMPLEX zdiv(ZCOMPLEX a, ZCOMPLEX b, LM_ARGS);
/** 1 / z. Error 4 for z = 0; the result is then 0. */
ZAREL_API ZCOMPLEX zinv(ZCOMPLEX z, LM_ARGS);
/** The principal square root: real part at least 0; cut along the negative real axis. */
ZAREL_API ZCOMPLEX zsqrt(ZCOMPLEX z);
/** The exponential. */
ZAREL_API ZCOMPLEX zexp(ZCOMPLEX z);
/** The principal logarithm: imaginary part from -pi to pi. The real part of zlog(0) is minus
 * infinity. */
ZAREL_API ZCOMPLEX zlog(ZCOMPLEX z);

ZAREL_END_C

#endif

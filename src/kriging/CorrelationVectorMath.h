/**
 * @file CorrelationVectorMath.h
 * A short vector of doubles and the few functions that the correlation kernels need of it.
 *
 * Read only by the files that instantiate the kernels, each with its own target flags: everything
 * here stands in an unnamed namespace, so that nothing is shared between them.
 *
 * The coefficients come from tools/correlation_polynomials.py, which also bounds their errors:
 * 1.4e-17 relative for exp on half a binade, 3.2e-17 absolute for sin(x)/x on [0, 3 pi / 2] and
 * 9.6e-17 absolute for J0 on [0, 3.8317]. Rounding in the evaluation comes on top: exp stays within
 * 2 units in the last place, the other two within 4e-16 absolutely.
 */
#ifndef ZAREL_KRIGING_CORRELATION_VECTOR_MATH_H
#define ZAREL_KRIGING_CORRELATION_VECTOR_MATH_H

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace {

#if defined(__AVX512F__)
constexpr int lanes = 8;
#elif defined(__AVX2__)
constexpr int lanes = 4;
#else
constexpr int lanes = 2;
#endif

typedef double Vec __attribute__((vector_size(8 * lanes)));
typedef double VecUnaligned __attribute__((vector_size(8 * lanes), aligned(8), may_alias));
typedef long long Mask __attribute__((vector_size(8 * lanes)));

#define ZAREL_KERNEL_INLINE static inline __attribute__((always_inline))
#define ZAREL_KERNEL_INLINE_MEMBER inline __attribute__((always_inline))

ZAREL_KERNEL_INLINE Vec splat(double value) {
  return value - Vec{};
}

ZAREL_KERNEL_INLINE Vec load(const double* from) {
  return *reinterpret_cast<const VecUnaligned*>(from);
}

ZAREL_KERNEL_INLINE void store(double* to, Vec value) {
  *reinterpret_cast<VecUnaligned*>(to) = value;
}

/** a * b + c, in one rounding where the instruction set can. */
ZAREL_KERNEL_INLINE Vec multiplyAdd(Vec a, Vec b, Vec c) {
#if defined(__AVX512F__)
  return _mm512_fmadd_pd(a, b, c);
#elif defined(__AVX2__)
  return _mm256_fmadd_pd(a, b, c);
#else
  return a * b + c;
#endif
}

ZAREL_KERNEL_INLINE Vec squareRoot(Vec x) {
#if defined(__AVX512F__)
  return _mm512_maskz_sqrt_pd(0xff, x); // gcc 12 warns about the form without a mask
#elif defined(__AVX2__)
  return _mm256_sqrt_pd(x);
#elif defined(__SSE2__)
  return _mm_sqrt_pd(x);
#else
  for (int lane = 0; lane < lanes; ++lane)
    x[lane] = __builtin_sqrt(x[lane]);
  return x;
#endif
}

ZAREL_KERNEL_INLINE Vec absolute(Vec x) {
  return (Vec)((Mask)x & (Mask{} + 0x7fffffffffffffffLL));
}

template <int N>
ZAREL_KERNEL_INLINE Vec polynomial(const double (&coefficients)[N], Vec x) {
  Vec sum = splat(coefficients[N - 1]);
  for (int i = N - 2; i >= 0; --i)
    sum = multiplyAdd(sum, x, splat(coefficients[i]));
  return sum;
}

/** (exp(r) - 1 - r) / r^2 for |r| <= log(2) / 2, by powers of r. */
constexpr double expTail[] = {
    0.5000000000000001,     0.16666666666666669,    0.041666666666624164,   0.008333333333330065,
    0.0013888888917196719,  0.00019841269863040545, 2.4801521322368692e-05, 2.7557268480310024e-06,
    2.7620075879983367e-07, 2.5100375832561234e-08};

/** sin(x) / x for 0 <= x <= 3 pi / 2, by powers of x^2 - sincCentre. */
constexpr double sincCentre = 11.10330495122553;
constexpr double sincPowers[] = {
    -0.0568454214652024,    -0.041656565043359364,  0.003453755583056119,   -0.00010289183692830983,
    1.628084257616169e-06,  -1.613284252189326e-08, 1.0997357726352509e-10, -5.484400578361431e-13,
    2.0902861262411687e-15, -6.291222583564185e-18, 1.533877558862911e-20,  -3.092099848397585e-23,
    5.240966833622719e-26,  -7.579283517231843e-29, 9.450745838512638e-32};

/** J0(x) for 0 <= x <= 3.8317, by powers of x^2 - besselCentre. */
constexpr double besselCentre = 7.340962445;
constexpr double besselPowers[] = {
    -0.14659610308973997,  -0.0809594809902697,     0.008010428308539364,   -0.0002679449521551583,
    4.641733461667182e-06, -4.9594977514459494e-08, 3.6072051423719905e-10, -1.904493152939258e-12,
    7.63824507816922e-15,  -2.4074191091029215e-17, 6.122146814452688e-20,  -1.2829583813799363e-22,
    2.254967379084925e-25, -3.3697285671580034e-28};

ZAREL_KERNEL_INLINE Vec sincOf(Vec x) {
  return polynomial(sincPowers, x * x - sincCentre);
}

ZAREL_KERNEL_INLINE Vec besselOf(Vec x) {
  return polynomial(besselPowers, x * x - besselCentre);
}

/** Adding this to a small number rounds it to an integer, which then stands in the last bits. */
constexpr double roundingShift = 6755399441055744.0; // 1.5 * 2^52

/** 2^k for the integer k = shifted - roundingShift, -1022 <= k <= 1023. */
ZAREL_KERNEL_INLINE Vec powerOfTwo(Vec shifted) {
  return (Vec)(((Mask)shifted + 1023) << 52);
}

/**
 * exp(x). Overflows to infinity, underflows gradually to 0, keeps NaN. The power of two is applied
 * in two halves, so that results below the normal range are rounded once.
 */
ZAREL_KERNEL_INLINE Vec exponential(Vec x) {
  x = x > 1000.0 ? splat(1000.0) : x;
  x = x < -1000.0 ? splat(-1000.0) : x;
  const Vec n = x * 1.4426950408889634 + roundingShift - roundingShift;
  // log(2) in two parts; the first has 20 trailing zero bits, so its product with n is exact.
  Vec r = multiplyAdd(n, splat(-0x1.62e42fefp-1), x);
  r = multiplyAdd(n, splat(-0x1.473de6af278edp-34), r);
  const Vec tail = polynomial(expTail, r) * r;
  const Vec value = multiplyAdd(tail, r, r) + 1.0;
  const Vec half = n * 0.5 + roundingShift;
  const Vec rest = n - (half - roundingShift) + roundingShift;
  return value * powerOfTwo(half) * powerOfTwo(rest);
}

} // namespace

#endif

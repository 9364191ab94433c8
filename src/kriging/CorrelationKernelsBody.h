/**
 * @file CorrelationKernelsBody.h
 * The kernels themselves. A file that is compiled for one instruction set includes this, once and
 * as its whole content, and defines its table from `kernelSet`.
 */
#include "kriging/CorrelationKernels.h"
#include "kriging/CorrelationVectorMath.h"

namespace {

using Zarel::CorrelationRequest;

/** What a correlation function is fed with, for each variable. */
enum class Feed { Distance, Square };

/*
 * Each correlation function below keeps a running value for a vector of points. `step` takes one
 * variable: d is |x_k - y_k| or its square, as `feed` says. `result` gives the correlations.
 */

struct Exponential {
  static constexpr Feed feed = Feed::Distance;
  Vec sum = {};
  ZAREL_KERNEL_INLINE_MEMBER void step(Vec d, double theta) { sum += theta * d; }
  ZAREL_KERNEL_INLINE_MEMBER Vec result() const { return exponential(-sum); }
};

struct Gauss {
  static constexpr Feed feed = Feed::Square;
  Vec sum = {};
  ZAREL_KERNEL_INLINE_MEMBER void step(Vec d, double theta) { sum += theta * d; }
  ZAREL_KERNEL_INLINE_MEMBER Vec result() const { return exponential(-sum); }
};

struct Linear {
  static constexpr Feed feed = Feed::Distance;
  Vec product = splat(1.0);
  ZAREL_KERNEL_INLINE_MEMBER void step(Vec d, double theta) {
    const Vec t = 1.0 - theta * d;
    product *= t > 0.0 ? t : Vec{};
  }
  ZAREL_KERNEL_INLINE_MEMBER Vec result() const { return product; }
};

struct Spherical {
  static constexpr Feed feed = Feed::Distance;
  Vec product = splat(1.0);
  ZAREL_KERNEL_INLINE_MEMBER void step(Vec d, double theta) {
    Vec t = theta * d;
    t = t < 1.0 ? t : splat(1.0);
    product *= 1.0 - 1.5 * t + 0.5 * (t * t * t);
  }
  ZAREL_KERNEL_INLINE_MEMBER Vec result() const { return product; }
};

struct Cubic {
  static constexpr Feed feed = Feed::Distance;
  Vec product = splat(1.0);
  ZAREL_KERNEL_INLINE_MEMBER void step(Vec d, double theta) {
    Vec t = theta * d;
    t = t < 1.0 ? t : splat(1.0);
    product *= 1.0 - 3.0 * (t * t) + 2.0 * (t * t * t);
  }
  ZAREL_KERNEL_INLINE_MEMBER Vec result() const { return product; }
};

struct Multiquadric {
  static constexpr Feed feed = Feed::Square;
  Vec product = splat(1.0);
  ZAREL_KERNEL_INLINE_MEMBER void step(Vec d, double theta) {
    product *= squareRoot(theta * theta + d);
  }
  ZAREL_KERNEL_INLINE_MEMBER Vec result() const { return product; }
};

/** Base of the functions that are exactly 0 as soon as one variable reaches the cut-off. */
struct CutOff {
  static constexpr Feed feed = Feed::Distance;
  Vec product = splat(1.0);
  Mask beyond = {};
  ZAREL_KERNEL_INLINE_MEMBER Vec result() const { return beyond ? Vec{} : product; }
};

struct Spline : CutOff {
  ZAREL_KERNEL_INLINE_MEMBER void step(Vec d, double theta) {
    const Vec x = theta * d;
    const Vec rest = 1.0 - x;
    const Vec near = 1.0 - 15.0 * (x * x) + 30.0 * (x * x * x);
    const Vec far = 1.25 * (rest * rest * rest);
    beyond |= x >= 1.0;
    product *= x <= 0.2 ? near : far;
  }
};

struct Quadratic : CutOff {
  ZAREL_KERNEL_INLINE_MEMBER void step(Vec d, double theta) {
    const Vec x = theta * d;
    beyond |= x >= 1.0;
    product *= 1.0 - x * x;
  }
};

struct Bessel : CutOff {
  ZAREL_KERNEL_INLINE_MEMBER void step(Vec d, double theta) {
    const Vec x = theta * d;
    beyond |= x > 3.8317;
    product *= (besselOf(x) + 0.40275939569537544) * 0.7128806287583483;
  }
};

struct Sinc : CutOff {
  ZAREL_KERNEL_INLINE_MEMBER void step(Vec d, double theta) {
    const Vec x = theta * d;
    const Vec factor = (sincOf(x) + 0.2122065907891938) * 0.8249418932369944;
    beyond |= x > 4.71238898038469;
    product *= absolute(x) > 1e-6 ? factor : splat(1.0);
  }
};

/**
 * exp(-sum of t) times the product of 1 + t + t^2 / 3. The exponential is applied in two halves, a
 * group of variables at a time, so that neither factor leaves the range of doubles while their
 * product is within it: a group's product is at most exp(sum / 2 + 0.47 * 64), and a group whose
 * sum is above 1600 is 0.
 */
struct Matern52 {
  static constexpr Feed feed = Feed::Distance;
  static constexpr int groupSize = 64;
  Vec closed = splat(1.0);
  Vec product = splat(1.0);
  Vec sum = {};
  int open = 0;
  ZAREL_KERNEL_INLINE_MEMBER void step(Vec d, double theta) {
    if (open == groupSize) {
      closed = result();
      product = splat(1.0);
      sum = Vec{};
      open = 0;
    }
    const Vec t = 2.23606797749978969641 * (theta * d);
    product *= 1.0 + t + t * t / 3.0;
    sum += t;
    ++open;
  }
  ZAREL_KERNEL_INLINE_MEMBER Vec result() const {
    const Vec half = exponential(-0.5 * sum);
    return closed * (sum > 1600.0 ? Vec{} : half * product * half);
  }
};

/** |x - y|^2 or |x - y| of variable k for the points that start at `from`. */
template <bool Complex, Feed feed>
ZAREL_KERNEL_INLINE Vec distance(const CorrelationRequest& q, int k, Vec re, Vec im) {
  const Vec dRe = re - q.pointRe[k];
  if constexpr (!Complex) return feed == Feed::Square ? dRe * dRe : absolute(dRe);
  const Vec dIm = im - q.pointIm[k];
  const Vec square = dRe * dRe + dIm * dIm;
  return feed == Feed::Square ? square : squareRoot(square);
}

/** Correlations of `Vectors` times `lanes` points from number `at` on. */
template <class Function, bool Complex, int Vectors>
ZAREL_KERNEL_INLINE void block(const CorrelationRequest& q, long at) {
  Function f[Vectors];
  for (int k = 0; k < q.numVar; ++k) {
    const long from = k * q.stride + at;
    for (int v = 0; v < Vectors; ++v) {
      const Vec re = load(q.othersRe + from + v * lanes);
      const Vec im = Complex ? load(q.othersIm + from + v * lanes) : re;
      f[v].step(distance<Complex, Function::feed>(q, k, re, im), q.theta[k]);
    }
  }
  for (int v = 0; v < Vectors; ++v)
    store(q.out + at + v * lanes, f[v].result());
}

ZAREL_KERNEL_INLINE Vec loadSome(const double* from, long count) {
  Vec value = {};
  for (long i = 0; i < count; ++i)
    value[i] = from[i];
  return value;
}

/** The last points, fewer than a vector holds. */
template <class Function, bool Complex>
ZAREL_KERNEL_INLINE void remainder(const CorrelationRequest& q, long at) {
  const long count = q.count - at;
  Function f;
  for (int k = 0; k < q.numVar; ++k) {
    const long from = k * q.stride + at;
    const Vec re = loadSome(q.othersRe + from, count);
    const Vec im = Complex ? loadSome(q.othersIm + from, count) : re;
    f.step(distance<Complex, Function::feed>(q, k, re, im), q.theta[k]);
  }
  const Vec r = f.result();
  for (long i = 0; i < count; ++i)
    q.out[at + i] = r[i];
}

template <class Function, bool Complex>
void kernel(const CorrelationRequest& q) {
  long at = 0;
  for (; at + 4 * lanes <= q.count; at += 4 * lanes)
    block<Function, Complex, 4>(q, at);
  for (; at + lanes <= q.count; at += lanes)
    block<Function, Complex, 1>(q, at);
  if (at < q.count) remainder<Function, Complex>(q, at);
}

#define ZAREL_KERNELS_OF(complex)                                                                  \
  {                                                                                                \
    kernel<Exponential, complex>, kernel<Gauss, complex>, kernel<Linear, complex>,                 \
        kernel<Spherical, complex>, kernel<Cubic, complex>, kernel<Multiquadric, complex>,         \
        kernel<Spline, complex>, kernel<Matern52, complex>, kernel<Quadratic, complex>,            \
        kernel<Bessel, complex>, kernel<Sinc, complex>                                             \
  }

constexpr Zarel::CorrelationKernelSet kernelSet = {
    {ZAREL_KERNELS_OF(false), ZAREL_KERNELS_OF(true)}};

} // namespace

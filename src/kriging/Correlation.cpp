#include "kriging/Correlation.h"

#include <cmath>

#include <zarel/Kriging.h>

namespace Zarel {
namespace {

double squareOf(double x, double y) {
  return (x - y) * (x - y);
}

double squareOf(const std::complex<double>& x, const std::complex<double>& y) {
  const double re = x.real() - y.real();
  const double im = x.imag() - y.imag();
  return re * re + im * im;
}

double distanceOf(double x, double y) {
  return std::fabs(x - y);
}

double distanceOf(const std::complex<double>& x, const std::complex<double>& y) {
  return std::sqrt(squareOf(x, y));
}

/** What one variable adds to the sum in the exponent, for the functions of that form. */
template <class Term>
double exponentialOfSum(int n, Term term) {
  double sum = 0.0;
  for (int k = 0; k < n; ++k)
    sum += term(k);
  return std::exp(-sum);
}

template <class Factor>
double product(int n, Factor factor) {
  double result = 1.0;
  for (int k = 0; k < n; ++k)
    result *= factor(k);
  return result;
}

/** Product that is exactly 0, whatever the other factors, once `beyond` says so for a variable. */
template <class Xi, class Beyond, class Factor>
double productWithCutOff(int n, Xi xi, Beyond beyond, Factor factor) {
  double result = 1.0;
  for (int k = 0; k < n; ++k) {
    const double x = xi(k);
    if (beyond(x)) return 0.0;
    result *= factor(x);
  }
  return result;
}

double splineFactor(double x) {
  if (x <= 0.2) return 1.0 - 15.0 * (x * x) + 30.0 * (x * x * x);
  return 1.25 * ((1.0 - x) * (1.0 - x) * (1.0 - x));
}

// The constants below make the factor 1 at 0 and 0 at the cut-off, the first minimum of J0 and of
// sin(x) / x.
double besselFactor(double x) {
  return (::j0(x) + 0.40275939569537544) * 0.7128806287583483;
}

double sincFactor(double x) {
  if (!(std::fabs(x) > 1e-6)) return 1.0;
  return (std::sin(x) / x + 0.2122065907891938) * 0.8249418932369944;
}

double matern52Term(double xi) {
  const double t = 2.23606797749978969641 * xi;
  return t - std::log(1.0 + t + t * t / 3.0);
}

bool fromOne(double x) {
  return x >= 1.0;
}

} // namespace

template <class T>
bool correlationOf(int type, int n, const double* theta, int thetaStep, const T* x, const T* y,
                   double& r) {
  const auto mult = [=](int k) { return theta[k * thetaStep]; };
  const auto xi = [=](int k) { return mult(k) * distanceOf(x[k], y[k]); };
  const auto capped = [=](int k) { return xi(k) < 1.0 ? xi(k) : 1.0; };
  switch (type) {
  case E_CorrExp:
    r = exponentialOfSum(n, xi);
    return true;
  case E_CorrGauss:
    r = exponentialOfSum(n, [=](int k) { return mult(k) * squareOf(x[k], y[k]); });
    return true;
  case E_CorrLin:
    r = product(n, [=](int k) {
      const double t = 1.0 - xi(k);
      return t > 0.0 ? t : 0.0;
    });
    return true;
  case E_CorrSpherical:
    r = product(n, [=](int k) {
      const double t = capped(k);
      return 1.0 - 1.5 * t + 0.5 * (t * t * t);
    });
    return true;
  case E_CorrCubic:
    r = product(n, [=](int k) {
      const double t = capped(k);
      return 1.0 - 3.0 * (t * t) + 2.0 * (t * t * t);
    });
    return true;
  case E_CorrMultiquadric: // grows with the distance and is not 1 at 0: meant so
    r = product(n, [=](int k) { return std::sqrt(mult(k) * mult(k) + squareOf(x[k], y[k])); });
    return true;
  case E_CorrSpline:
    r = productWithCutOff(n, xi, fromOne, splineFactor);
    return true;
  case E_CorrMatern52:
    r = exponentialOfSum(n, [=](int k) { return matern52Term(xi(k)); });
    return true;
  case E_CorrQuadratic:
    r = productWithCutOff(n, xi, fromOne, [](double t) { return 1.0 - t * t; });
    return true;
  case E_CorrBessel:
    r = productWithCutOff(
        n, xi, [](double t) { return t > 3.8317; }, besselFactor);
    return true;
  case E_CorrSinc:
    r = productWithCutOff(
        n, xi, [](double t) { return t > 4.71238898038469; }, sincFactor);
    return true;
  default:
    return false;
  }
}

const CorrelationKernelSet& widestCorrelationKernels() {
#if defined(__x86_64__)
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("fma"))
    return correlationKernelsAvx512;
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
    return correlationKernelsAvx2;
#endif
  return correlationKernelsBaseline;
}

template <>
void PointPlanes<double>::assign(const double* points, int ld, int rows, int cols) {
  real = points;
  step = ld;
  rowCount = rows;
  colCount = cols;
}

template <>
void PointPlanes<std::complex<double>>::assign(const std::complex<double>* points, int ld, int rows,
                                               int cols) {
  planes.Resize(2LL * rows * cols);
  double* const re = planes.Adr(0);
  double* const im = re + static_cast<long>(rows) * cols;
  for (int k = 0; k < cols; ++k)
    for (int i = 0; i < rows; ++i) {
      const std::complex<double> value = points[static_cast<long>(k) * ld + i];
      re[static_cast<long>(k) * rows + i] = value.real();
      im[static_cast<long>(k) * rows + i] = value.imag();
    }
  real = re;
  imaginary = im;
  step = rows;
  rowCount = rows;
  colCount = cols;
}

template <class T>
void PointPlanes<T>::gather(int row, double* re, double* im) const {
  for (int k = 0; k < colCount; ++k) {
    re[k] = real[k * step + row];
    if (imaginary != nullptr) im[k] = imaginary[k * step + row];
  }
}

namespace {

template <class T>
constexpr bool isComplex = false;
template <>
constexpr bool isComplex<std::complex<double>> = true;

CorrelationKernel kernelOf(int type, bool complexPoints) {
  if (type < 1 || type > CorrelationFunctionCount) return nullptr;
  static const CorrelationKernelSet& set = widestCorrelationKernels();
  return set.kernel[complexPoints ? 1 : 0][type - 1];
}

template <class T>
T scalarAt(const double* re, const double* im, long at) {
  if constexpr (isComplex<T>)
    return T(re[at], im[at]);
  else
    return re[at];
}

} // namespace

template <class T>
Correlator<T>::Correlator(int type_, int numVar_, const double* theta, int thetaCount)
    : type(type_),
      numVar(numVar_),
      kernel(kernelOf(type_, isComplex<T>)),
      scalarOnly(false),
      multipliers(numVar_),
      point(2 * numVar_) {
  bool negative = false;
  for (int k = 0; k < numVar; ++k) {
    multipliers[k] = theta[thetaCount == 1 ? 0 : k];
    negative = negative || multipliers[k] < 0.0;
  }
  scalarOnly = negative && (type == E_CorrBessel || type == E_CorrSinc);
}

template <class T>
void Correlator<T>::run(const PointPlanes<T>& from, int one, const PointPlanes<T>& others,
                        int first, int count, double* out) {
  double* const re = point.Adr(0);
  double* const im = re + numVar;
  from.gather(one, re, im);
  const double* const othersIm = others.im() == nullptr ? nullptr : others.im() + first;
  const CorrelationRequest request = {numVar,
                                      multipliers.Adr(0),
                                      re,
                                      isComplex<T> ? im : nullptr,
                                      others.re() + first,
                                      othersIm,
                                      others.stride(),
                                      count,
                                      out};
  if (scalarOnly)
    runScalar(request);
  else
    kernel(request);
}

template <class T>
void Correlator<T>::runScalar(const CorrelationRequest& q) {
  scratch.Resize(2 * numVar);
  T* const x = scratch.Adr(0);
  T* const y = x + numVar;
  for (int k = 0; k < numVar; ++k)
    x[k] = scalarAt<T>(q.pointRe, q.pointIm, k);
  for (long i = 0; i < q.count; ++i) {
    for (int k = 0; k < numVar; ++k)
      y[k] = scalarAt<T>(q.othersRe, q.othersIm, k * q.stride + i);
    correlationOf(type, numVar, q.theta, 1, x, y, q.out[i]);
  }
}

template bool correlationOf(int, int, const double*, int, const double*, const double*, double&);
template bool correlationOf(int, int, const double*, int, const std::complex<double>*,
                            const std::complex<double>*, double&);
template class PointPlanes<double>;
template class PointPlanes<std::complex<double>>;
template class Correlator<double>;
template class Correlator<std::complex<double>>;

} // namespace Zarel

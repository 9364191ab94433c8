/**
 * @file CorrelationKernels.h
 * Correlations of one point with many, several at a time.
 *
 * The kernels are compiled three times, for the instruction sets below, and the widest one that
 * processor and system offer is taken at run time. Each does the arithmetic of the scalar formula
 * in the order of the scalar formula; only exp, sin(x)/x and J0 are evaluated by polynomials, and
 * the Matern function is evaluated as a product instead of a sum of logarithms. Results agree with
 * the scalar formula to a few units of rounding, cut-offs included, whatever the instruction set.
 *
 * This header is also read by the files compiled for wide instructions. It therefore includes
 * nothing of the standard library and defines no inline function, so that no wide code can take the
 * place of a common function at link time.
 */
#ifndef ZAREL_KRIGING_CORRELATION_KERNELS_H
#define ZAREL_KRIGING_CORRELATION_KERNELS_H

namespace Zarel {

/** One point against `count` points. Imaginary parts are null for real points. */
struct CorrelationRequest {
  int numVar;             ///< variables, at least 0
  const double* theta;    ///< numVar kernel multipliers
  const double* pointRe;  ///< numVar coordinates of the one point
  const double* pointIm;  ///< their imaginary parts, or null
  const double* othersRe; ///< variable k of point i at [k * stride + i]
  const double* othersIm; ///< the imaginary parts in the same order, or null
  long stride;            ///< distance between variables in the arrays of the others
  long count;             ///< number of other points
  double* out;            ///< count correlations
};

using CorrelationKernel = void (*)(const CorrelationRequest&);

/** Number of correlation functions; they are numbered from 1. */
enum { CorrelationFunctionCount = 11 };

/** Kernels of one instruction set: [0][f - 1] for real points, [1][f - 1] for complex ones. */
struct CorrelationKernelSet {
  CorrelationKernel kernel[2][CorrelationFunctionCount];
};

extern const CorrelationKernelSet correlationKernelsBaseline;
#if defined(__x86_64__)
extern const CorrelationKernelSet correlationKernelsAvx2;
extern const CorrelationKernelSet correlationKernelsAvx512;
#endif

} // namespace Zarel

#endif

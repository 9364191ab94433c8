/**
 * @file C_AlgoPower.h
 * The power iteration, and with it the spectral norm of a matrix.
 */
#ifndef ZAREL_C_ALGOPOWER_H
#define ZAREL_C_ALGOPOWER_H

#include <string>

#include <zarel/C_Algorithm.h>
#include <zarel/C_Mat.h>
#include <zarel/C_Vec.h>

/**
 * Estimates the dominant eigenvalue of a matrix by repeated products with it.
 *
 * Mathematics: docs/decompositions.md. The start is a fixed vector of random numbers between 0 and
 * 1, so two runs on one matrix give one result. A matrix with two dominant eigenvalues of opposite
 * sign has no dominant one, and the estimate then lies between them.
 *
 * Options, set by the constructor:
 *
 * | name           | type | at first | meaning                                                  |
 * |----------------|------|----------|----------------------------------------------------------|
 * | "A*A"          | bool | false    | iterate on A^H A instead of A                            |
 * | "StopCriteria" | int  | 0        | 0: residual or `maxIter`; 1: change of the estimate      |
 * |                |      |          | alone; 2: change or `maxIter`; any other: after a round  |
 *
 * The residual is the squared distance between A x and the estimate times x, for the scaled vector
 * x, relative to the estimate (C_Vec::Diff); the change is relative to the estimate, too.
 *
 * Messages: a line under debug scope 306, level 3, when a run ends.
 * Threads: an object belongs to one thread.
 * Exists for the scalars of ZAREL_MATRIX_SCALARS; with integers Run throws.
 */
template <class T>
class ZAREL_API C_AlgoPower : public C_Algorithm {
public:
  /** `tolerance` is what the residual or the change has to reach. */
  C_AlgoPower(std::string const& name, double tolerance);
  C_AlgoPower(const C_AlgoPower&) = default;
  C_AlgoPower& operator=(const C_AlgoPower&) = default;
  ~C_AlgoPower() override;

  using C_Algorithm::Run;

  /** Tells 306. */
  Zarel::E_DebugScope_enum GetDebugScope() override;
  /** Sets both options to what they are at first. */
  void InitOptions() override;
  /**
   * Returns the estimate. `x` and `y`, in core, take the number of columns and are work vectors;
   * `maxIter` -1 stands for the number of columns, any other below 1 for one round. The iteration
   * also ends when the estimate is below 1e-14 or not a number. Without "A*A" the matrix has to be
   * square.
   *
   * Returns 0 when the first estimate is 0. Throws 13202 when the vector's norm is above 1e100,
   * 2871 for integers, an `int` (-1) when a later estimate is 0, 2870 for a vector that is not in
   * core, 1001 without memory, and what the matrix's Mv throws.
   */
  T Run(C_Mat<T>& A, C_Vec<T, int>& x, C_Vec<T, int>& y, int maxIter);

private:
  bool reached(int rule, double residual, double change, int round, int maxIter) const;

  Zarel::C_ZarelMessage _message;
  double _tolerance;
};

/// @cond
#define ZAREL_EXTERN(T) extern template class C_AlgoPower<T>;
ZAREL_MATRIX_SCALARS(ZAREL_EXTERN)
#undef ZAREL_EXTERN
/// @endcond

namespace Zarel {
using ::C_AlgoPower;
}

#endif

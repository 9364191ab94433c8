/**
 * @file decompose.h
 * Singular value decompositions as the program runs them: the solver, what to keep, the results.
 */
#ifndef ZAREL_APP_SVD_DECOMPOSE_H
#define ZAREL_APP_SVD_DECOMPOSE_H

#include "console.h"
#include "svd/snapshots.h"

#include <functional>
#include <vector>
#include <zarel/C_AlgoSvd.h>

namespace app {

enum class SvdMethod { automatic, lapack, arpack };

struct SvdChoice {
  SvdMethod method = SvdMethod::automatic;
  long long keep = 0;      ///< vectors to keep; 0: the threshold decides
  double threshold = 1e-7; ///< on the error table
  long long largest = 0;   ///< values that the restarted solver looks for; 0: it decides
};

struct SvdResult {
  SvdMethod method = SvdMethod::lapack;
  int vectors = 0;
  int length = 0;
  int kept = 0;
  int products = 0; ///< with A^T A, of the restarted solver
  std::vector<double> values;
  std::vector<double> errors; ///< the error table, one entry a value
  C_MatMGe<double> coefficients;
};

/** Takes kept vector `i` of the basis, in order. */
using TakeVector = std::function<void(int i, const double* values)>;

/**
 * Decomposes a set. The direct solver works in place, so the set is used up; the other leaves it
 * alone. `take` is called for each kept vector; `start` is called before, when their count is
 * known. Failures: `badInput` with the first vector that holds no finite number, `usage` for
 * wishes that do not fit the set, `numerical`, `interrupted`.
 */
SvdResult decompose(VectorSet& set, const SvdChoice& choice, Console& console,
                    const std::function<void(int kept)>& start, const TakeVector& take);

} // namespace app

#endif

/**
 * @file decompose.h
 * Singular value decompositions as the program runs them: the solver, what to keep, the results.
 */
#ifndef ZAREL_APP_SVD_DECOMPOSE_H
#define ZAREL_APP_SVD_DECOMPOSE_H

#include "console.h"
#include "svd/snapshots.h"

#include <algorithm>
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
  bool inPlace = false;    ///< the set is the only place of its vectors
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

  /** Whether values are missing, so that the errors are relative to those that were found. */
  bool partial() const {
    return values.size() < static_cast<std::size_t>(std::min(vectors, length));
  }
};

/** What a decomposition calls. */
struct SvdCalls {
  /** Before the set is read once more; may throw when its file is no longer what it was. */
  std::function<void()> check;
  /** With all of the result, before the first vector. */
  std::function<void(SvdResult&)> start;
  /** With kept vector `i` of the basis, in order. */
  std::function<void(int i, const double* values)> take;
};

/** Refuses wishes that contradict each other, as `usage`. */
void checkChoice(const SvdChoice& choice);

/**
 * Decomposes a set. The direct solver works in place, so the set is used up; the other leaves it
 * alone, and a `take` may overwrite it. Failures, all of them before `start`: `badInput` with the
 * first vector that holds no finite number, `usage` for wishes that do not fit the set,
 * `numerical`, `interrupted`. A direct decomposition in place is not interrupted.
 */
SvdResult decompose(VectorSet& set, const SvdChoice& choice, Console& console,
                    const SvdCalls& calls);

} // namespace app

#endif

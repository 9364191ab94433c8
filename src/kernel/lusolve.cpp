// Systems and inverses with LU factors.
#include <algorithm>

#include <zarel/lm_solve.h>

#include "kernel/blas.h"
#include "kernel/lufactor.h"
#include "kernel/permutation.h"
#include "kernel/triangle.h"

using namespace Zarel::kernel;

namespace {

// Tests factors against a right-hand side; false after reporting.
template <class M>
bool areUsable(const Call& call, const M* LU, const PERM* pivot, const VectorOf<M>* b) {
  int number = 0;
  if (!LU || !pivot || !b)
    number = 8;
  else if (LU->m != LU->n || pivot->size != LU->m || rows(LU) != length(b))
    number = 1;
  else if (triangle::hasZeroDiagonal(LU))
    number = 4;
  if (number != 0) call.fail(number);
  return number == 0;
}

// x := U^-1 L^-1 P b.
template <class M>
VectorOf<M>* solved(const Call& call, const M* LU, const PERM* pivot, const VectorOf<M>* b,
                    VectorOf<M>* x) {
  if (!areUsable(call, LU, pivot, b)) return nullptr;
  x = permuted(call, pivot, b, x);
  if (!x) return nullptr;
  triangle::solveLower(LU, x->ve, 1.0);
  triangle::solveUpper(LU, x->ve, 0.0);
  return x;
}

// x := P^T L^-* U^-* b. The pivots are tried on b before anything is changed.
template <class M>
VectorOf<M>* solvedAdjoint(const Call& call, const M* LU, const PERM* pivot, const VectorOf<M>* b,
                           VectorOf<M>* x) {
  if (!areUsable(call, LU, pivot, b)) return nullptr;
  VectorOf<M>* const work = exactVector<VectorOf<M>>(call, nullptr, length(b));
  if (!work) return nullptr;
  std::copy_n(b->ve, length(b), work->ve);
  triangle::solveUpperAdjoint(LU, work->ve, 0.0);
  triangle::solveLowerAdjoint(LU, work->ve, 1.0);
  x = unpermuted(call, pivot, work, x);
  freeVector(work);
  return x;
}

// out := U^-1 L^-1 P, as by columns out^T := P^T L^-T U^-T.
template <class M>
void invertFactors(const M* LU, const PERM* pivot, M* out) {
  const int n = rows(LU);
  for (int i = 0; i < n; ++i) {
    std::fill_n(out->me[i], n, EntryOf<M>());
    out->me[i][pivot->pe[i]] = scalar<EntryOf<M>>(1.0);
  }
  blas::trsm("R", "U", "U", n, n, LU->base, stride(LU), out->base, stride(out));
  blas::trsm("R", "L", "N", n, n, LU->base, stride(LU), out->base, stride(out));
}

// Work records, released together.
template <class M>
struct Work {
  M* LU = nullptr;
  PERM* pivot = nullptr;
  ~Work() {
    freeMatrix(LU);
    freeVector(pivot);
  }
};

template <class M>
M* inverse(const Call& call, const M* A, M* out) {
  LM_NEED(A);
  if (A->m != A->n) return call.fail(9);
  const int n = rows(A);
  Work<M> work;
  work.LU = exactMatrix<M>(call, nullptr, n, n);
  if (!work.LU) return nullptr;
  work.pivot = exactVector<PERM>(call, nullptr, n);
  if (!work.pivot) return nullptr;
  for (int i = 0; i < n; ++i)
    std::copy_n(A->me[i], n, work.LU->me[i]);
  if (!factor(call, work.LU, work.pivot)) return nullptr;
  if (triangle::hasZeroDiagonal(work.LU)) return call.fail(4);
  LM_OUTPUT_MATRIX(out, n, n);
  invertFactors(work.LU, work.pivot, out);
  return out;
}

} // namespace

#define LM_DEFINE_LU_SOLVE(name, M, body)                                                          \
  VectorOf<M>* name(const M* LU, const PERM* pivot, const VectorOf<M>* b, VectorOf<M>* x,          \
                    LM_ARGS) {                                                                     \
    LM_ENTER(name);                                                                                \
    return body(call, LU, pivot, b, x);                                                            \
  }
LM_DEFINE_LU_SOLVE(LM_LUsolve, MAT, solved)
LM_DEFINE_LU_SOLVE(LM_zLUsolve, ZMAT, solved)
LM_DEFINE_LU_SOLVE(LM_LUTsolve, MAT, solvedAdjoint)
LM_DEFINE_LU_SOLVE(LM_zLUAsolve, ZMAT, solvedAdjoint)

#define LM_DEFINE_INVERSE(name, M)                                                                 \
  M* name(const M* A, M* out, LM_ARGS) {                                                           \
    LM_ENTER(name);                                                                                \
    return inverse(call, A, out);                                                                  \
  }
LM_DEFINE_INVERSE(LM_m_inverse, MAT)
LM_DEFINE_INVERSE(LM_zm_inverse, ZMAT)

// Triangular systems.
#include <algorithm>

#include <zarel/lm_solve.h>

#include "kernel/triangle.h"

using namespace Zarel::kernel;

namespace {

template <class M>
void solveDiagonal(const M* A, EntryOf<M>* x, double diagonal) {
  for (int i = 0; i < rows(A); ++i)
    x[i] = x[i] / triangle::diagonalOf(A, i, diagonal);
}

template <class M>
VectorOf<M>* solved(const Call& call, const M* A, const VectorOf<M>* b, VectorOf<M>* out,
                    double diagonal, void (*solve)(const M*, EntryOf<M>*, double)) {
  LM_NEED(A && b);
  if (A->m != A->n || rows(A) != length(b)) return call.fail(1);
  if (triangle::hasZeroDiagonal(A, diagonal)) return call.fail(4);
  LM_OUTPUT_VECTOR(out, rows(A));
  if (out != b) std::copy_n(b->ve, length(b), out->ve);
  solve(A, out->ve, diagonal);
  return out;
}

} // namespace

#define LM_DEFINE_SOLVE(name, M, body)                                                             \
  VectorOf<M>* name(const M* A, const VectorOf<M>* b, VectorOf<M>* out, double diagonal,           \
                    LM_ARGS) {                                                                     \
    LM_ENTER(name);                                                                                \
    return solved<M>(call, A, b, out, diagonal, body<M>);                                          \
  }
LM_DEFINE_SOLVE(LM_Usolve, MAT, triangle::solveUpper)
LM_DEFINE_SOLVE(LM_zUsolve, ZMAT, triangle::solveUpper)
LM_DEFINE_SOLVE(LM_Lsolve, MAT, triangle::solveLower)
LM_DEFINE_SOLVE(LM_zLsolve, ZMAT, triangle::solveLower)
LM_DEFINE_SOLVE(LM_UTsolve, MAT, triangle::solveUpperAdjoint)
LM_DEFINE_SOLVE(LM_zUAsolve, ZMAT, triangle::solveUpperAdjoint)
LM_DEFINE_SOLVE(LM_LTsolve, MAT, triangle::solveLowerAdjoint)
LM_DEFINE_SOLVE(LM_zLAsolve, ZMAT, triangle::solveLowerAdjoint)

#define LM_DEFINE_DIAGONAL_SOLVE(name, M)                                                          \
  VectorOf<M>* name(const M* A, const VectorOf<M>* b, VectorOf<M>* out, LM_ARGS) {                 \
    LM_ENTER(name);                                                                                \
    return solved<M>(call, A, b, out, 0.0, solveDiagonal<M>);                                      \
  }
LM_DEFINE_DIAGONAL_SOLVE(LM_Dsolve, MAT)
LM_DEFINE_DIAGONAL_SOLVE(LM_zDsolve, ZMAT)

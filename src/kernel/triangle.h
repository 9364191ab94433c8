// Triangular systems and products in place, on the rows of a matrix and a raw vector. `diagonal`
// 0 takes the diagonal of the matrix, any other value stands for all of it.
#ifndef ZAREL_KERNEL_TRIANGLE_H
#define ZAREL_KERNEL_TRIANGLE_H

#include "kernel/arrays.h"
#include "kernel/record.h"

namespace Zarel::kernel::triangle {

template <class M>
EntryOf<M> diagonalOf(const M* A, int i, double diagonal) {
  return diagonal == 0.0 ? A->me[i][i] : scalar<EntryOf<M>>(diagonal);
}

template <class M>
bool hasZeroDiagonal(const M* A, double diagonal = 0.0) {
  for (int i = 0; i < rows(A) && diagonal == 0.0; ++i)
    if (isZero(A->me[i][i])) return true;
  return false;
}

// x := U^-1 x.
template <class M>
void solveUpper(const M* U, EntryOf<M>* x, double diagonal) {
  const int n = rows(U);
  for (int i = n - 1; i >= 0; --i) {
    const auto known = loops::product(U->me[i] + i + 1, x + i + 1, n - 1 - i);
    x[i] = (x[i] - known) / diagonalOf(U, i, diagonal);
  }
}

// x := L^-1 x.
template <class M>
void solveLower(const M* L, EntryOf<M>* x, double diagonal) {
  for (int i = 0; i < rows(L); ++i)
    x[i] = (x[i] - loops::product(L->me[i], x, i)) / diagonalOf(L, i, diagonal);
}

// x := U^-* x.
template <class M>
void solveUpperAdjoint(const M* U, EntryOf<M>* x, double diagonal) {
  const int n = rows(U);
  for (int i = 0; i < n; ++i) {
    x[i] = x[i] / conjugate(diagonalOf(U, i, diagonal));
    loops::multiplyAdd<true>(x + i + 1, U->me[i] + i + 1, -x[i], n - 1 - i);
  }
}

// x := L^-* x.
template <class M>
void solveLowerAdjoint(const M* L, EntryOf<M>* x, double diagonal) {
  for (int i = rows(L) - 1; i >= 0; --i) {
    x[i] = x[i] / conjugate(diagonalOf(L, i, diagonal));
    loops::multiplyAdd<true>(x, L->me[i], -x[i], i);
  }
}

// x := U x.
template <class M>
void multiplyUpper(const M* U, EntryOf<M>* x) {
  const int n = rows(U);
  for (int i = 0; i < n; ++i)
    x[i] = loops::product(U->me[i] + i, x + i, n - i);
}

// x := L x, with ones on the diagonal of L.
template <class M>
void multiplyUnitLower(const M* L, EntryOf<M>* x) {
  for (int i = rows(L) - 1; i > 0; --i)
    x[i] += loops::product(L->me[i], x, i);
}

// x := U* x.
template <class M>
void multiplyUpperAdjoint(const M* U, EntryOf<M>* x) {
  const int n = rows(U);
  for (int i = n - 1; i >= 0; --i) {
    const EntryOf<M> factor = x[i];
    x[i] = conjugate(U->me[i][i]) * factor;
    loops::multiplyAdd<true>(x + i + 1, U->me[i] + i + 1, factor, n - 1 - i);
  }
}

// x := L* x, with ones on the diagonal of L.
template <class M>
void multiplyUnitLowerAdjoint(const M* L, EntryOf<M>* x) {
  for (int i = 1; i < rows(L); ++i)
    loops::multiplyAdd<true>(x, L->me[i], x[i], i);
}

} // namespace Zarel::kernel::triangle

#endif

// LU factorisation by rows with scaled partial pivoting.
//
// Columns are eliminated in panels: within a panel one after the other, as the pivots ask for;
// what stands right of the panel is then brought up to date at once, by a triangular solve and a
// product. The pivots, and up to rounding the factors, are those of the elimination column by
// column.
#include <algorithm>
#include <cmath>

#include <zarel/lm_memory.h>
#include <zarel/lm_solve.h>

#include "kernel/arrays.h"
#include "kernel/blas.h"
#include "kernel/lufactor.h"

namespace Zarel::kernel {

namespace {

enum { PanelWidth = 24 };

// The scales of the rows, kept from call to call.
void* scaleVector = nullptr;

double* rowScales(const Call& call, int m) {
  auto* const scales = outputVector(call, static_cast<VEC*>(scaleVector), std::max(m, 1));
  if (!scales) return nullptr;
  scaleVector = scales;
  mem_stat_reg_list(&scaleVector, LM_TYPE_VEC, 0);
  return scales->ve;
}

template <class M>
class Elimination {
public:
  Elimination(M* A, PERM* pivot, double* scales) : _A(A), _pivot(pivot), _scales(scales) {}

  void run() {
    setScales();
    const int steps = std::min(rows(_A), columns(_A)) - 1;
    for (int first = 0; first < steps; first += PanelWidth)
      eliminate(first, std::min<int>(first + PanelWidth, steps));
  }

private:
  using T = EntryOf<M>;

  void setScales() {
    for (int i = 0; i < rows(_A); ++i) {
      double largest = 0.0;
      for (int j = 0; j < columns(_A); ++j)
        largest = std::max(largest, modulus(_A->me[i][j]));
      _scales[i] = largest;
    }
  }

  // The row for column k, or -1: the first with the largest ratio of modulus to scale.
  int pivotRow(int k) const {
    int best = -1;
    double largest = 0.0;
    for (int i = k; i < rows(_A); ++i) {
      if (!(_scales[i] > 0.0)) continue;
      const double ratio = modulus(_A->me[i][k]) / _scales[i];
      if (ratio > largest) {
        largest = ratio;
        best = i;
      }
    }
    return best;
  }

  // Exchanges two rows, with all that belongs to them.
  void exchange(int i, int k) {
    if (i == k) return;
    std::swap(_pivot->pe[i], _pivot->pe[k]);
    std::swap(_scales[i], _scales[k]);
    std::swap_ranges(_A->me[i], _A->me[i] + columns(_A), _A->me[k]);
  }

  // Stores the multipliers of column k and updates the columns up to `end`.
  void eliminateColumn(int k, int end) {
    const T* const top = _A->me[k];
    for (int i = k + 1; i < rows(_A); ++i) {
      T* const line = _A->me[i];
      const T multiplier = line[k] / top[k];
      line[k] = multiplier;
      loops::multiplyAdd(line + k + 1, top + k + 1, -multiplier, end - k - 1);
    }
  }

  // Eliminates the columns from `first` to `end`. There is a row below and a column to the right of
  // them: the last one of either is never eliminated.
  void eliminate(int first, int end) {
    bool done[PanelWidth] = {};
    for (int k = first; k < end; ++k) {
      const int chosen = pivotRow(k);
      if (chosen < 0) continue; // nothing to divide by: the step is left out
      exchange(chosen, k);
      eliminateColumn(k, end);
      done[k - first] = true;
    }
    if (std::all_of(done, done + (end - first), [](bool d) { return d; }))
      updateRight(first, end);
    else
      updateRightOf(first, end, done);
  }

  // Right of the panel: A12 := L11^-1 A12, A22 := A22 - L21 A12, by columns and transposed.
  void updateRight(int first, int end) {
    const int width = end - first, right = columns(_A) - end, below = rows(_A) - end;
    T* const top = _A->me[first];
    blas::trsm("R", "U", "U", right, width, top + first, stride(_A), top + end, stride(_A));
    blas::gemm("N", "N", right, below, width, scalar<T>(-1.0), top + end, stride(_A),
               _A->me[end] + first, stride(_A), scalar<T>(1.0), _A->me[end] + end, stride(_A));
  }

  // The same for a panel with steps left out: what stands below such a pivot is no multiplier.
  void updateRightOf(int first, int end, const bool* done) {
    for (int k = first; k < end; ++k)
      for (int i = k + 1; i < rows(_A) && done[k - first]; ++i)
        loops::multiplyAdd(_A->me[i] + end, _A->me[k] + end, -_A->me[i][k], columns(_A) - end);
  }

  M* _A;
  PERM* _pivot;
  double* _scales;
};

template <class M>
M* factorChecked(const Call& call, M* A, PERM* pivot) {
  LM_NEED(A && pivot);
  if (pivot->size != A->m) return call.fail(1);
  return factor(call, A, pivot);
}

} // namespace

template <class M>
M* factor(const Call& call, M* A, PERM* pivot) {
  double* const scales = rowScales(call, rows(A));
  if (!scales) return nullptr;
  for (unsigned i = 0; i < pivot->size; ++i)
    pivot->pe[i] = i;
  Elimination<M>(A, pivot, scales).run();
  return A;
}

template MAT* factor<MAT>(const Call&, MAT*, PERM*);
template ZMAT* factor<ZMAT>(const Call&, ZMAT*, PERM*);

} // namespace Zarel::kernel

MAT* LM_LUfactor(MAT* A, PERM* pivot, LM_ARGS) {
  LM_ENTER(LM_LUfactor);
  return Zarel::kernel::factorChecked(call, A, pivot);
}

ZMAT* LM_zLUfactor(ZMAT* A, PERM* pivot, LM_ARGS) {
  LM_ENTER(LM_zLUfactor);
  return Zarel::kernel::factorChecked(call, A, pivot);
}

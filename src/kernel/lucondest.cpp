// The condition of a factored matrix, estimated in the 1-norm.
//
// N. J. Higham, "FORTRAN codes for estimating the one-norm of a real or complex matrix, with
// applications to condition estimation", ACM Trans. Math. Software 14 (1988), pp. 381-396.
#include <algorithm>
#include <cmath>
#include <limits>

#include <zarel/lm_solve.h>

#include "kernel/triangle.h"

using namespace Zarel::kernel;

namespace {

// Products with A = P^T L U, with its inverse, and with the adjoints of both. `spare` is as long as
// the vector.
template <class M>
class Operator {
public:
  using T = EntryOf<M>;
  Operator(const M* LU, const PERM* pivot, bool inverted, T* spare)
      : _LU(LU), _pivot(pivot), _inverted(inverted), _spare(spare) {}

  int size() const { return rows(_LU); }

  void apply(T* x) const {
    if (_inverted) {
      gather(x);
      triangle::solveLower(_LU, x, 1.0);
      triangle::solveUpper(_LU, x, 0.0);
    } else {
      triangle::multiplyUpper(_LU, x);
      triangle::multiplyUnitLower(_LU, x);
      scatter(x);
    }
  }

  void applyAdjoint(T* x) const {
    if (_inverted) {
      triangle::solveUpperAdjoint(_LU, x, 0.0);
      triangle::solveLowerAdjoint(_LU, x, 1.0);
      scatter(x);
    } else {
      gather(x);
      triangle::multiplyUnitLowerAdjoint(_LU, x);
      triangle::multiplyUpperAdjoint(_LU, x);
    }
  }

private:
  void gather(T* x) const {
    std::copy_n(x, size(), _spare);
    for (int i = 0; i < size(); ++i)
      x[i] = _spare[_pivot->pe[i]];
  }
  void scatter(T* x) const {
    std::copy_n(x, size(), _spare);
    for (int i = 0; i < size(); ++i)
      x[_pivot->pe[i]] = _spare[i];
  }

  const M* _LU;
  const PERM* _pivot;
  bool _inverted;
  T* _spare;
};

template <class T>
double norm1(const T* x, int n) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i)
    sum += modulus(x[i]);
  return sum;
}

template <class T>
int largestPlace(const T* x, int n) {
  int place = 0;
  for (int i = 1; i < n; ++i)
    if (modulus(x[i]) > modulus(x[place])) place = i;
  return place;
}

// x_i := x_i / |x_i|, 1 for 0.
template <class T>
void toSigns(T* x, int n) {
  for (int i = 0; i < n; ++i) {
    const double size = modulus(x[i]);
    x[i] = size > 0.0 ? x[i] / size : scalar<T>(1.0);
  }
}

enum { MaxTurns = 5 };

// From unit vectors to the column that promises the largest sum, until it promises no more.
template <class M>
double climb(const Operator<M>& op, EntryOf<M>* x) {
  using T = EntryOf<M>;
  const int n = op.size();
  std::fill_n(x, n, scalar<T>(1.0 / n));
  op.apply(x);
  double best = norm1(x, n);
  int place = -1;
  for (int turn = 1; turn < MaxTurns; ++turn) {
    toSigns(x, n);
    op.applyAdjoint(x);
    const int next = largestPlace(x, n);
    if (next == place) break;
    place = next;
    std::fill_n(x, n, T());
    x[place] = scalar<T>(1.0);
    op.apply(x);
    const double sum = norm1(x, n);
    if (!(sum > best)) break;
    best = sum;
  }
  return best;
}

// A vector of alternating signs and growing size catches what the climb can miss.
template <class M>
double alternating(const Operator<M>& op, EntryOf<M>* x) {
  const int n = op.size();
  for (int i = 0; i < n; ++i)
    x[i] = scalar<EntryOf<M>>((i % 2 == 0 ? 1.0 : -1.0) * (1.0 + i / std::max(n - 1.0, 1.0)));
  op.apply(x);
  return 2.0 * norm1(x, n) / (3.0 * n);
}

template <class M>
double condition(const Call& call, const M* LU, const PERM* pivot) {
  LM_NEED(LU && pivot);
  if (LU->m != LU->n || pivot->size != LU->m) return call.fail(1);
  const int n = rows(LU);
  if (std::any_of(pivot->pe, pivot->pe + n, [pivot](unsigned p) { return p >= pivot->size; }))
    return call.fail(2);
  if (n == 0) return 0.0;
  if (triangle::hasZeroDiagonal(LU)) return std::numeric_limits<double>::infinity();
  const Scratch<EntryOf<M>> x(call, n), spare(call, n);
  if (!x.get() || !spare.get()) return 0.0;
  double product = 1.0;
  for (const bool inverted : {false, true}) {
    const Operator<M> op(LU, pivot, inverted, spare.get());
    product *= std::max(climb(op, x.get()), alternating(op, x.get()));
  }
  return product;
}

} // namespace

double LM_LUcondest(const MAT* LU, const PERM* pivot, LM_ARGS) {
  LM_ENTER(LM_LUcondest);
  return condition(call, LU, pivot);
}

double LM_zLUcondest(const ZMAT* LU, const PERM* pivot, LM_ARGS) {
  LM_ENTER(LM_zLUcondest);
  return condition(call, LU, pivot);
}

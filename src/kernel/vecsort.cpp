// Sorting of vectors, with the permutation that it makes.
#include <algorithm>
#include <cmath>

#include <zarel/lm_ivec.h>
#include <zarel/lm_vec.h>

#include "kernel/complex.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

// Strict orders over all values; NaN stands behind everything else.
bool before(int a, int b) {
  return a < b;
}
bool before(double a, double b) {
  return a < b || (std::isnan(b) && !std::isnan(a));
}
bool before(ZCOMPLEX a, ZCOMPLEX b) {
  return before(a.re, b.re) || (!before(b.re, a.re) && before(a.im, b.im));
}

template <class V>
V* sortAlone(V* x) {
  using T = ValueOf<V>;
  std::stable_sort(values(x), values(x) + length(x), [](T a, T b) { return before(a, b); });
  return x;
}

// Sorts the indices, then fetches the values in that order.
template <class V>
V* sortWithOrder(const Call& call, V* x, PERM* order) {
  const int n = length(x);
  const Scratch<ValueOf<V>> old(call, n);
  if (!old.get()) return nullptr;
  if (!exactVector(call, order, n)) return nullptr;
  std::copy(values(x), values(x) + n, old.get());
  for (int i = 0; i < n; ++i)
    order->pe[i] = static_cast<unsigned>(i);
  std::stable_sort(order->pe, order->pe + n,
                   [from = old.get()](unsigned i, unsigned j) { return before(from[i], from[j]); });
  for (int i = 0; i < n; ++i)
    values(x)[i] = old.get()[order->pe[i]];
  return x;
}

template <class V>
V* sorted(const Call& call, V* x, PERM* order) {
  LM_NEED(x);
  return order ? sortWithOrder(call, x, order) : sortAlone(x);
}

} // namespace

#define LM_DEFINE_SORT(V, p)                                                                       \
  V* LM_##p##_sort(V* x, PERM* order, LM_ARGS) {                                                   \
    LM_ENTER(LM_##p##_sort);                                                                       \
    return sorted(call, x, order);                                                                 \
  }
LM_DEFINE_SORT(VEC, v)
LM_DEFINE_SORT(ZVEC, zv)
LM_DEFINE_SORT(IVEC, iv)
LM_DEFINE_SORT(LVEC, lv)

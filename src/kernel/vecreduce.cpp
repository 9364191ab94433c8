// What makes one number of a vector.
#include <algorithm>
#include <cmath>

#include <zarel/lm_ivec.h>
#include <zarel/lm_vec.h>

#include "kernel/arrays.h"
#include "kernel/blas.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

bool isNan(double x) {
  return std::isnan(x);
}
bool isNan(int) {
  return false;
}

// The first place of the value that `better` prefers to all others.
template <class V, class Better>
ValueOf<V> extreme(const Call& call, const V* x, int* index, Better better) {
  LM_NEED(x);
  if (length(x) == 0) return call.fail(1);
  const auto* const a = values(x);
  int best = 0;
  for (int i = 1; i < length(x); ++i)
    if (better(a[i], a[best]) || (isNan(a[best]) && !isNan(a[i]))) best = i;
  if (index) *index = best;
  return a[best];
}

template <class Sum, class V>
Sum total(const Call& call, const V* x) {
  LM_NEED(x);
  Sum sum = {};
  for (int i = 0; i < length(x); ++i)
    sum += values(x)[i];
  return sum;
}

template <bool conjugated, class V>
ValueOf<V> innerProduct(const Call& call, const V* x, const V* y, int from) {
  LM_NEED(x && y);
  if (length(x) != length(y)) return call.fail(1);
  if (from < 0 || from > length(x)) return call.fail(2);
  return loops::product<conjugated>(values(x) + from, values(y) + from, length(x) - from);
}

// The modulus of entry i over its scale.
template <class V>
double scaledModulus(const V* x, const VEC* scale, int i) {
  const double size = modulus(values(x)[i]);
  return scale && scale->ve[i] != 0.0 ? size / std::fabs(scale->ve[i]) : size;
}

template <class V>
double sumOfModuli(const V* x, const VEC* scale) {
  double sum = 0.0;
  for (int i = 0; i < length(x); ++i)
    sum += scaledModulus(x, scale, i);
  return sum;
}

template <class V>
double largestModulus(const V* x, const VEC* scale) {
  double largest = 0.0;
  for (int i = 0; i < length(x); ++i)
    largest = std::max(largest, scaledModulus(x, scale, i));
  return largest;
}

// The largest value is taken out, so that no square overflows or vanishes.
template <class V>
double euclidean(const V* x, const VEC* scale) {
  if (!scale) return length(x) == 0 ? 0.0 : blas::nrm2(length(x), values(x));
  const double largest = largestModulus(x, scale);
  if (std::isinf(largest)) return largest;
  const double unit = largest > 0.0 ? largest : 1.0;
  double sum = 0.0;
  for (int i = 0; i < length(x); ++i) {
    const double part = scaledModulus(x, scale, i) / unit;
    sum += part * part;
  }
  return unit * std::sqrt(sum);
}

template <class V>
double norm(const Call& call, const V* x, const VEC* scale, double (*f)(const V*, const VEC*)) {
  LM_NEED(x);
  if (scale && length(scale) != length(x)) return call.fail(1);
  return f(x, scale);
}

} // namespace

double LM_v_max(const VEC* x, int* index, LM_ARGS) {
  LM_ENTER(LM_v_max);
  return extreme(call, x, index, [](double a, double b) { return a > b; });
}

double LM_v_min(const VEC* x, int* index, LM_ARGS) {
  LM_ENTER(LM_v_min);
  return extreme(call, x, index, [](double a, double b) { return a < b; });
}

int LM_iv_max(const IVEC* x, int* index, LM_ARGS) {
  LM_ENTER(LM_iv_max);
  return extreme(call, x, index, [](int a, int b) { return a > b; });
}

double LM_v_sum(const VEC* x, LM_ARGS) {
  LM_ENTER(LM_v_sum);
  return total<double>(call, x);
}

ZCOMPLEX LM_zv_sum(const ZVEC* x, LM_ARGS) {
  LM_ENTER(LM_zv_sum);
  return total<ZCOMPLEX>(call, x);
}

__int64 LM_iv_sum(const IVEC* x, LM_ARGS) {
  LM_ENTER(LM_iv_sum);
  return total<__int64>(call, x);
}

double LM__in_prod(const VEC* x, const VEC* y, int from, LM_ARGS) {
  LM_ENTER(LM__in_prod);
  return innerProduct<false>(call, x, y, from);
}

ZCOMPLEX LM__zin_prod(const ZVEC* x, const ZVEC* y, int from, int conjugate, LM_ARGS) {
  LM_ENTER(LM__zin_prod);
  return conjugate ? innerProduct<true>(call, x, y, from) : innerProduct<false>(call, x, y, from);
}

int LM_iv_cmp(const IVEC* x, const IVEC* y, LM_ARGS) {
  LM_ENTER(LM_iv_cmp);
  LM_NEED(x && y);
  const int n = std::min(length(x), length(y));
  for (int i = 0; i < n; ++i)
    if (x->ive[i] != y->ive[i]) return x->ive[i] < y->ive[i] ? -1 : 1;
  return length(x) == length(y) ? 0 : length(x) < length(y) ? -1 : 1;
}

#define LM_DEFINE_NORMS(V, p)                                                                      \
  double LM__##p##_norm1(const V* x, const VEC* scale, LM_ARGS) {                                  \
    LM_ENTER(LM__##p##_norm1);                                                                     \
    return norm(call, x, scale, sumOfModuli<V>);                                                   \
  }                                                                                                \
  double LM__##p##_norm2(const V* x, const VEC* scale, LM_ARGS) {                                  \
    LM_ENTER(LM__##p##_norm2);                                                                     \
    return norm(call, x, scale, euclidean<V>);                                                     \
  }                                                                                                \
  double LM__##p##_norm_inf(const V* x, const VEC* scale, LM_ARGS) {                               \
    LM_ENTER(LM__##p##_norm_inf);                                                                  \
    return norm(call, x, scale, largestModulus<V>);                                                \
  }
LM_DEFINE_NORMS(VEC, v)
LM_DEFINE_NORMS(ZVEC, zv)

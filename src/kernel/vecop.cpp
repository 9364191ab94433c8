// Sums, multiples and entry-by-entry operations of vectors.
#include <algorithm>
#include <cstdarg>

#include <zarel/lm_ivec.h>
#include <zarel/lm_vec.h>

#include "kernel/arrays.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

struct Plus {
  template <class T>
  T operator()(T a, T b) const {
    return a + b;
  }
  int operator()(int a, int b) const {
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
  }
};

struct Minus {
  template <class T>
  T operator()(T a, T b) const {
    return a - b;
  }
  int operator()(int a, int b) const {
    return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
  }
};

struct Times {
  template <class T>
  T operator()(T a, T b) const {
    return a * b;
  }
};

struct Over {
  template <class T>
  T operator()(T a, T b) const {
    return a / b;
  }
};

// out_i := f(x_i, y_i).
template <class V, class F>
V* combine(const Call& call, const V* x, const V* y, V* out, F f) {
  LM_NEED(x && y);
  if (length(x) != length(y)) return call.fail(1);
  const int n = length(x);
  LM_OUTPUT_VECTOR(out, n);
  const auto *a = values(x), *b = values(y);
  auto* const to = values(out);
  for (int i = 0; i < n; ++i)
    to[i] = f(a[i], b[i]);
  return out;
}

// out_i := f(x_i).
template <class V, class F>
V* apply(const Call& call, const V* x, V* out, F f) {
  LM_NEED(x);
  const int n = length(x);
  LM_OUTPUT_VECTOR(out, n);
  const auto* const a = values(x);
  auto* const to = values(out);
  for (int i = 0; i < n; ++i)
    to[i] = f(a[i]);
  return out;
}

template <class V>
V* divide(const Call& call, const V* x, const V* y, V* out) {
  LM_NEED(x && y);
  if (length(x) != length(y)) return call.fail(1);
  const auto* const divisors = values(y);
  if (std::any_of(divisors, divisors + length(y), [](auto d) { return isZero(d); }))
    return call.fail(4);
  return combine(call, x, y, out, Over());
}

// The terms of a linear combination are added a piece at a time, all terms of a piece before it is
// stored, so that the output may be one of them.
enum { PieceLength = 256 };

template <class V>
class Piece {
public:
  Piece(int from, int n) : _from(from), _count(std::min<int>(PieceLength, n - from)) {}
  void add(const V* v, ValueOf<V> factor) {
    loops::multiplyAdd(_sum, values(v) + _from, factor, _count);
  }
  void store(V* out) const { std::copy(_sum, _sum + _count, values(out) + _from); }

private:
  ValueOf<V> _sum[PieceLength] = {};
  int _from;
  int _count;
};

template <class V>
V* combination(const Call& call, int n, const V* const* v, const ValueOf<V>* a, V* out) {
  if (n < 0) return call.fail(20);
  LM_NEED(v && a);
  if (n == 0) return call.fail(2);
  LM_NEED(std::all_of(v, v + n, [](const V* x) { return x != nullptr; }));
  const int dim = length(v[0]);
  if (std::any_of(v, v + n, [dim](const V* x) { return length(x) != dim; })) return call.fail(1);
  LM_OUTPUT_VECTOR(out, dim);
  for (int from = 0; from < dim; from += PieceLength) {
    Piece<V> piece(from, dim);
    for (int k = 0; k < n; ++k)
      piece.add(v[k], a[k]);
    piece.store(out);
  }
  return out;
}

} // namespace

#define LM_DEFINE_COMBINE(name, V, f)                                                              \
  V* name(const V* x, const V* y, V* out, LM_ARGS) {                                               \
    LM_ENTER(name);                                                                                \
    return combine(call, x, y, out, f());                                                          \
  }
LM_DEFINE_COMBINE(LM_v_add, VEC, Plus)
LM_DEFINE_COMBINE(LM_zv_add, ZVEC, Plus)
LM_DEFINE_COMBINE(LM_iv_add, IVEC, Plus)
LM_DEFINE_COMBINE(LM_lv_add, LVEC, Plus)
LM_DEFINE_COMBINE(LM_v_sub, VEC, Minus)
LM_DEFINE_COMBINE(LM_zv_sub, ZVEC, Minus)
LM_DEFINE_COMBINE(LM_iv_sub, IVEC, Minus)
LM_DEFINE_COMBINE(LM_lv_sub, LVEC, Minus)
LM_DEFINE_COMBINE(LM_v_star, VEC, Times)
LM_DEFINE_COMBINE(LM_zv_star, ZVEC, Times)

#define LM_DEFINE_VECTOR_ARITHMETIC(V, p, scaleName)                                               \
  V* scaleName(ValueOf<V> s, const V* x, V* out, LM_ARGS) {                                        \
    LM_ENTER(scaleName);                                                                           \
    return apply(call, x, out, [s](ValueOf<V> a) { return s * a; });                               \
  }                                                                                                \
  V* LM_##p##_mltadd(const V* x, const V* y, ValueOf<V> s, V* out, LM_ARGS) {                      \
    LM_ENTER(LM_##p##_mltadd);                                                                     \
    return combine(call, x, y, out, [s](ValueOf<V> a, ValueOf<V> b) { return a + s * b; });        \
  }                                                                                                \
  V* LM_##p##_lincomb(int n, const V* const* v, const ValueOf<V>* a, V* out, LM_ARGS) {            \
    LM_ENTER(LM_##p##_lincomb);                                                                    \
    return combination(call, n, v, a, out);                                                        \
  }                                                                                                \
  V* LM_##p##_map(ValueOf<V> (*f)(ValueOf<V>), const V* x, V* out, LM_ARGS) {                      \
    LM_ENTER(LM_##p##_map);                                                                        \
    LM_NEED(f);                                                                                    \
    return apply(call, x, out, f);                                                                 \
  }                                                                                                \
  V* LM__##p##_map(ValueOf<V> (*f)(void*, ValueOf<V>), void* parameters, const V* x, V* out,       \
                   LM_ARGS) {                                                                      \
    LM_ENTER(LM__##p##_map);                                                                       \
    LM_NEED(f);                                                                                    \
    return apply(call, x, out, [f, parameters](ValueOf<V> a) { return f(parameters, a); });        \
  }                                                                                                \
  V* LM_##p##_slash(const V* x, const V* y, V* out, LM_ARGS) {                                     \
    LM_ENTER(LM_##p##_slash);                                                                      \
    return divide(call, x, y, out);                                                                \
  }
LM_DEFINE_VECTOR_ARITHMETIC(VEC, v, LM_sv_mlt)
LM_DEFINE_VECTOR_ARITHMETIC(ZVEC, zv, LM_zv_mlt)

namespace {

// The pairs of a list: the first one is an argument, the others follow.
template <class F>
bool eachTerm(const ZVEC* v, ZCOMPLEX a, va_list list, F f) {
  va_list terms;
  va_copy(terms, list);
  bool good = true;
  while (v && good) {
    good = f(v, a);
    v = va_arg(terms, const ZVEC*);
    if (v) a = va_arg(terms, ZCOMPLEX);
  }
  va_end(terms);
  return good;
}

ZVEC* listCombination(const Call& call, ZVEC* out, const ZVEC* v1, ZCOMPLEX a1, va_list list) {
  LM_NEED(v1);
  const int dim = length(v1);
  if (!eachTerm(v1, a1, list, [dim](const ZVEC* v, ZCOMPLEX) { return length(v) == dim; }))
    return call.fail(1);
  LM_OUTPUT_VECTOR(out, dim);
  for (int from = 0; from < dim; from += PieceLength) {
    Piece<ZVEC> piece(from, dim);
    eachTerm(v1, a1, list, [&piece](const ZVEC* v, ZCOMPLEX a) {
      piece.add(v, a);
      return true;
    });
    piece.store(out);
  }
  return out;
}

} // namespace

ZVEC* LM_zv_linlist(ZVEC* out, LM_ARGS, const ZVEC* v1, ZCOMPLEX a1, ...) {
  LM_ENTER(LM_zv_linlist);
  va_list list;
  va_start(list, a1);
  ZVEC* const result = listCombination(call, out, v1, a1, list);
  va_end(list);
  return result;
}

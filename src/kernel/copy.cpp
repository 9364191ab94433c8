// Copying, moving and filling of vectors and matrices.
#include <algorithm>

#include <zarel/lm_ivec.h>
#include <zarel/lm_mat.h>
#include <zarel/lm_perm.h>
#include <zarel/lm_vec.h>
#include <zarel/mrand.h>

#include "kernel/complex.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

template <class T>
void copyRange(const T* from, int count, T* to) {
  if (from < to)
    std::copy_backward(from, from + count, to + count);
  else
    std::copy(from, from + count, to);
}

// A block of values within a matrix or, as its only row, within a vector.
struct Window {
  int row = 0;
  int column = 0;
  int m = 0;
  int n = 0;
  bool isNegative() const { return m < 0 || n < 0; }
  bool startsBelow() const { return row < 0 || column < 0; }
};

// Whether `count` entries from `start` on lie within 0 to `size`.
bool lies(int start, int count, int size) {
  return start <= size && count <= size - start;
}

bool ends(int start, int count) {
  return start > 2147483647 - count;
}

template <class V>
V* copyVector(const Call& call, const V* in, V* out, int from) {
  LM_NEED(in);
  const int n = length(in);
  if (from < 0 || from > n) return call.fail(2);
  if (in == out) return out;
  out = exactVector(call, out, n);
  if (out) std::copy(values(in) + from, values(in) + n, values(out) + from);
  return out;
}

// Room for entries `to` to `to + count` of a vector, and nothing less than it has.
template <class V>
V* reaching(const Call& call, V* out, int to, int count) {
  return outputVector(call, out, std::max(out ? length(out) : 0, to + count));
}

template <class V>
V* moveVector(const Call& call, const V* in, int from, int count, V* out, int to) {
  LM_NEED(in);
  if (count < 0) return call.fail(20);
  if (from < 0 || to < 0 || !lies(from, count, length(in)) || ends(to, count)) return call.fail(2);
  out = reaching(call, out, to, count);
  if (out) copyRange(values(in) + from, count, values(out) + to);
  return out;
}

template <class M>
M* copyMatrix(const Call& call, const M* in, M* out, int i0, int j0) {
  LM_NEED(in);
  if (i0 < 0 || j0 < 0 || i0 > rows(in) || j0 > columns(in)) return call.fail(2);
  if (in == out) return out;
  out = exactMatrix(call, out, rows(in), columns(in));
  if (!out) return nullptr;
  for (int i = i0; i < rows(in); ++i)
    std::copy(in->me[i] + j0, in->me[i] + columns(in), out->me[i] + j0);
  return out;
}

// The number of an error in the place of a block that is read, or 0.
template <class M>
int errorIn(const M* in, const Window& w) {
  if (w.isNegative()) return 20;
  if (w.startsBelow() || !lies(w.row, w.m, rows(in)) || !lies(w.column, w.n, columns(in))) return 2;
  return 0;
}

template <class M>
M* reaching(const Call& call, M* out, int i1, int j1, int m, int n) {
  return outputMatrix(call, out, std::max(out ? rows(out) : 0, i1 + m),
                      std::max(out ? columns(out) : 0, j1 + n));
}

template <class M>
M* moveMatrix(const Call& call, const M* in, const Window& w, M* out, int i1, int j1) {
  LM_NEED(in);
  if (const int number = errorIn(in, w)) return call.fail(number);
  if (i1 < 0 || j1 < 0 || ends(i1, w.m) || ends(j1, w.n)) return call.fail(2);
  out = reaching(call, out, i1, j1, w.m, w.n);
  if (!out) return nullptr;
  const bool downwards = in == out && i1 > w.row; // the last row first
  for (int step = 0; step < w.m; ++step) {
    const int i = downwards ? w.m - 1 - step : step;
    copyRange(in->me[w.row + i] + w.column, w.n, out->me[i1 + i] + j1);
  }
  return out;
}

// The values of an m x n block as the length of a vector; false if that is none.
bool countOf(const Window& w, int to, int& count) {
  const long long product = static_cast<long long>(w.m) * w.n;
  count = static_cast<int>(product);
  return product <= 2147483647 && !ends(to, count);
}

template <class M, class V>
V* matrixToVector(const Call& call, const M* in, const Window& w, V* out, int to) {
  LM_NEED(in);
  int count = 0;
  if (const int number = errorIn(in, w)) return call.fail(number);
  if (to < 0 || !countOf(w, to, count)) return call.fail(2);
  out = reaching(call, out, to, count);
  if (!out) return nullptr;
  for (int i = 0; i < w.m; ++i)
    std::copy_n(in->me[w.row + i] + w.column, w.n,
                values(out) + to + static_cast<std::size_t>(i) * w.n);
  return out;
}

template <class V, class M>
M* vectorToMatrix(const Call& call, const V* in, int from, M* out, const Window& w) {
  LM_NEED(in);
  int count = 0;
  if (w.isNegative()) return call.fail(20);
  if (from < 0 || w.startsBelow() || ends(w.row, w.m) || ends(w.column, w.n) ||
      !countOf(w, from, count) || !lies(from, count, length(in)))
    return call.fail(2);
  out = reaching(call, out, w.row, w.column, w.m, w.n);
  if (!out) return nullptr;
  for (int i = 0; i < w.m; ++i)
    std::copy_n(values(in) + from + static_cast<std::size_t>(i) * w.n, w.n,
                out->me[w.row + i] + w.column);
  return out;
}

template <class V>
V* fillVector(const Call& call, V* x, ValueOf<V> value) {
  LM_NEED(x);
  std::fill_n(values(x), length(x), value);
  return x;
}

template <class M>
M* fillMatrix(const Call& call, M* A, EntryOf<M> value) {
  LM_NEED(A);
  for (int i = 0; i < rows(A); ++i)
    std::fill_n(A->me[i], columns(A), value);
  return A;
}

void randomValues(double* x, int count) {
  mrandlist(x, count);
}
void randomValues(ZCOMPLEX* x, int count) {
  for (int i = 0; i < count; ++i) {
    x[i].re = mrand();
    x[i].im = mrand();
  }
}

template <class V>
V* randomVector(const Call& call, V* x) {
  LM_NEED(x);
  randomValues(values(x), length(x));
  return x;
}

template <class M>
M* randomMatrix(const Call& call, M* A) {
  LM_NEED(A);
  for (int i = 0; i < rows(A); ++i)
    randomValues(A->me[i], columns(A));
  return A;
}

} // namespace

#define LM_DEFINE_VECTOR_COPY(V, M, p, mp, mvp, vmp)                                               \
  V* LM__##p##_copy(const V* in, V* out, int from, LM_ARGS) {                                      \
    LM_ENTER(LM__##p##_copy);                                                                      \
    return copyVector(call, in, out, from);                                                        \
  }                                                                                                \
  V* LM_##p##_rand(V* x, LM_ARGS) {                                                                \
    LM_ENTER(LM_##p##_rand);                                                                       \
    return randomVector(call, x);                                                                  \
  }                                                                                                \
  M* LM__##mp##_copy(const M* in, M* out, int row, int column, LM_ARGS) {                          \
    LM_ENTER(LM__##mp##_copy);                                                                     \
    return copyMatrix(call, in, out, row, column);                                                 \
  }                                                                                                \
  M* LM_##mp##_move(const M* in, int i0, int j0, int m, int n, M* out, int i1, int j1, LM_ARGS) {  \
    LM_ENTER(LM_##mp##_move);                                                                      \
    return moveMatrix(call, in, {i0, j0, m, n}, out, i1, j1);                                      \
  }                                                                                                \
  V* LM_##mvp##_move(const M* in, int i0, int j0, int m, int n, V* out, int to, LM_ARGS) {         \
    LM_ENTER(LM_##mvp##_move);                                                                     \
    return matrixToVector(call, in, {i0, j0, m, n}, out, to);                                      \
  }                                                                                                \
  M* LM_##vmp##_move(const V* in, int from, M* out, int i1, int j1, int m, int n, LM_ARGS) {       \
    LM_ENTER(LM_##vmp##_move);                                                                     \
    return vectorToMatrix(call, in, from, out, {i1, j1, m, n});                                    \
  }                                                                                                \
  M* LM_##mp##_zero(M* A, LM_ARGS) {                                                               \
    LM_ENTER(LM_##mp##_zero);                                                                      \
    return fillMatrix(call, A, EntryOf<M>());                                                      \
  }                                                                                                \
  M* LM_##mp##_rand(M* A, LM_ARGS) {                                                               \
    LM_ENTER(LM_##mp##_rand);                                                                      \
    return randomMatrix(call, A);                                                                  \
  }
LM_DEFINE_VECTOR_COPY(VEC, MAT, v, m, mv, vm)
LM_DEFINE_VECTOR_COPY(ZVEC, ZMAT, zv, zm, zmv, zvm)

#define LM_DEFINE_WHOLE_COPY(V, p)                                                                 \
  V* LM_##p##_copy(const V* in, V* out, LM_ARGS) {                                                 \
    LM_ENTER(LM_##p##_copy);                                                                       \
    return copyVector(call, in, out, 0);                                                           \
  }
LM_DEFINE_WHOLE_COPY(IVEC, iv)
LM_DEFINE_WHOLE_COPY(LVEC, lv)
LM_DEFINE_WHOLE_COPY(PERM, px)

#define LM_DEFINE_MOVE(V, p)                                                                       \
  V* LM_##p##_move(const V* in, int from, int count, V* out, int to, LM_ARGS) {                    \
    LM_ENTER(LM_##p##_move);                                                                       \
    return moveVector(call, in, from, count, out, to);                                             \
  }
LM_DEFINE_MOVE(VEC, v)
LM_DEFINE_MOVE(ZVEC, zv)
LM_DEFINE_MOVE(IVEC, iv)
LM_DEFINE_MOVE(LVEC, lv)

#define LM_DEFINE_ZERO(V, p)                                                                       \
  V* LM_##p##_zero(V* x, LM_ARGS) {                                                                \
    LM_ENTER(LM_##p##_zero);                                                                       \
    return fillVector(call, x, ValueOf<V>());                                                      \
  }
LM_DEFINE_ZERO(VEC, v)
LM_DEFINE_ZERO(ZVEC, zv)
LM_DEFINE_ZERO(IVEC, iv)

VEC* LM_v_ones(VEC* x, LM_ARGS) {
  LM_ENTER(LM_v_ones);
  return fillVector(call, x, 1.0);
}

MAT* LM_m_ones(MAT* A, LM_ARGS) {
  LM_ENTER(LM_m_ones);
  return fillMatrix(call, A, 1.0);
}

MAT* LM_m_ident(MAT* A, LM_ARGS) {
  LM_ENTER(LM_m_ident);
  if (!fillMatrix(call, A, 0.0)) return nullptr;
  for (int i = 0; i < std::min(rows(A), columns(A)); ++i)
    A->me[i][i] = 1.0;
  return A;
}

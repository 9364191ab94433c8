// Transposition, exchanges, and rows, columns and parts of matrices.
#include <algorithm>
#include <utility>

#include <zarel/lm_mat.h>

#include "kernel/complex.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

// Side of the square pieces in which a matrix is transposed: the lines of both pieces stay in the
// cache.
enum { Side = 16 };

// A piece of `out` := the conjugate transpose of a piece of `in`; full pieces are unrolled.
template <class M>
void transposePiece(const M* in, M* out, int i0, int j0, int m, int n) {
  for (int j = 0; j < n; ++j) {
    EntryOf<M>* const to = out->me[j0 + j] + i0;
    for (int i = 0; i < m; ++i)
      to[i] = conjugate(in->me[i0 + i][j0 + j]);
  }
}

template <class M>
void transposeInto(const M* in, M* out) {
  const int m = rows(in), n = columns(in);
  for (int i = 0; i < m; i += Side)
    for (int j = 0; j < n; j += Side)
      transposePiece(in, out, i, j, std::min<int>(Side, m - i), std::min<int>(Side, n - j));
}

template <class M>
void transposeInPlace(M* A) {
  const int n = rows(A);
  for (int i0 = 0; i0 < n; i0 += Side)
    for (int j0 = 0; j0 <= i0; j0 += Side)
      for (int i = i0; i < std::min<int>(i0 + Side, n); ++i)
        for (int j = j0; j < std::min<int>(j0 + Side, i + 1); ++j) {
          const EntryOf<M> below = A->me[i][j];
          A->me[i][j] = conjugate(A->me[j][i]);
          A->me[j][i] = conjugate(below);
        }
}

template <class M>
M* transposed(const Call& call, const M* in, M* out) {
  LM_NEED(in);
  if (in == out && in->m != in->n) return call.fail(11);
  if (in == out) {
    transposeInPlace(out);
    return out;
  }
  LM_OUTPUT_MATRIX(out, columns(in), rows(in));
  transposeInto(in, out);
  return out;
}

bool within(int i, int count) {
  return i >= 0 && i < count;
}

// Whether the inclusive range is empty or lies within 0 to count - 1.
bool rangeWithin(int first, int last, int count) {
  return last < first || (first >= 0 && last < count);
}

template <class M>
M* swapRows(const Call& call, M* A, int i, int j, int first, int last) {
  LM_NEED(A);
  if (!within(i, rows(A)) || !within(j, rows(A)) || !rangeWithin(first, last, columns(A)))
    return call.fail(10);
  if (i != j && first <= last)
    std::swap_ranges(A->me[i] + first, A->me[i] + last + 1, A->me[j] + first);
  return A;
}

template <class M>
M* swapColumns(const Call& call, M* A, int i, int j, int first, int last) {
  LM_NEED(A);
  if (!within(i, columns(A)) || !within(j, columns(A)) || !rangeWithin(first, last, rows(A)))
    return call.fail(10);
  for (int k = first; k <= last; ++k)
    std::swap(A->me[k][i], A->me[k][j]);
  return A;
}

template <class M>
VectorOf<M>* getColumn(const Call& call, const M* A, int j, VectorOf<M>* out) {
  LM_NEED(A);
  if (!within(j, columns(A))) return call.fail(10);
  LM_OUTPUT_VECTOR(out, rows(A));
  for (int i = 0; i < rows(A); ++i)
    out->ve[i] = A->me[i][j];
  return out;
}

template <class M>
VectorOf<M>* getRow(const Call& call, const M* A, int i, VectorOf<M>* out) {
  LM_NEED(A);
  if (!within(i, rows(A))) return call.fail(10);
  LM_OUTPUT_VECTOR(out, columns(A));
  std::copy_n(A->me[i], columns(A), out->ve);
  return out;
}

template <class M>
M* setColumn(const Call& call, M* A, int j, const VectorOf<M>* v, int from) {
  LM_NEED(A && v);
  if (!within(j, columns(A)) || from < 0 || from > rows(A)) return call.fail(10);
  if (length(v) != rows(A)) return call.fail(1);
  for (int i = from; i < rows(A); ++i)
    A->me[i][j] = v->ve[i];
  return A;
}

template <class M>
M* setRow(const Call& call, M* A, int i, const VectorOf<M>* v, int from) {
  LM_NEED(A && v);
  if (!within(i, rows(A)) || from < 0 || from > columns(A)) return call.fail(10);
  if (length(v) != columns(A)) return call.fail(1);
  std::copy(v->ve + from, v->ve + columns(A), A->me[i] + from);
  return A;
}

} // namespace

#define LM_DEFINE_TRANSPOSE(name, M)                                                               \
  M* name(const M* in, M* out, LM_ARGS) {                                                          \
    LM_ENTER(name);                                                                                \
    return transposed(call, in, out);                                                              \
  }
LM_DEFINE_TRANSPOSE(LM_m_transp, MAT)
LM_DEFINE_TRANSPOSE(LM_zm_adjoint, ZMAT)

#define LM_DEFINE_SWAP(name, M, body)                                                              \
  M* name(M* A, int i, int j, int first, int last, LM_ARGS) {                                      \
    LM_ENTER(name);                                                                                \
    return body(call, A, i, j, first, last);                                                       \
  }
LM_DEFINE_SWAP(LM_swap_rows, MAT, swapRows)
LM_DEFINE_SWAP(LM_zswap_rows, ZMAT, swapRows)
LM_DEFINE_SWAP(LM_swap_cols, MAT, swapColumns)
LM_DEFINE_SWAP(LM_zswap_cols, ZMAT, swapColumns)

#define LM_DEFINE_GET(name, M, body)                                                               \
  VectorOf<M>* name(const M* A, int which, VectorOf<M>* out, LM_ARGS) {                            \
    LM_ENTER(name);                                                                                \
    return body(call, A, which, out);                                                              \
  }
LM_DEFINE_GET(LM_get_col, MAT, getColumn)
LM_DEFINE_GET(LM_zget_col, ZMAT, getColumn)
LM_DEFINE_GET(LM_get_row, MAT, getRow)
LM_DEFINE_GET(LM_zget_row, ZMAT, getRow)

#define LM_DEFINE_SET(name, M, body)                                                               \
  M* name(M* A, int which, const VectorOf<M>* v, int from, LM_ARGS) {                              \
    LM_ENTER(name);                                                                                \
    return body(call, A, which, v, from);                                                          \
  }
LM_DEFINE_SET(LM__set_col, MAT, setColumn)
LM_DEFINE_SET(LM_zset_col, ZMAT, setColumn)
LM_DEFINE_SET(LM__set_row, MAT, setRow)
LM_DEFINE_SET(LM_zset_row, ZMAT, setRow)

MAT* LM_sub_mat(const MAT* A, int row1, int column1, int row2, int column2, MAT* out, LM_ARGS) {
  LM_ENTER(LM_sub_mat);
  LM_NEED(A);
  if (!within(row1, rows(A)) || !within(row2, rows(A)) || !within(column1, columns(A)) ||
      !within(column2, columns(A)) || row2 < row1 || column2 < column1)
    return call.fail(10);
  if (out == A) return call.fail(12);
  const int m = row2 - row1 + 1, n = column2 - column1 + 1;
  LM_OUTPUT_MATRIX(out, m, n);
  for (int i = 0; i < m; ++i)
    std::copy_n(A->me[row1 + i] + column1, n, out->me[i]);
  return out;
}

VEC* LM_sub_vec(const VEC* x, int first, int last, VEC* out, LM_ARGS) {
  LM_ENTER(LM_sub_vec);
  LM_NEED(x);
  if (!within(first, length(x)) || !within(last, length(x)) || last < first) return call.fail(10);
  if (out == x) return call.fail(12);
  LM_OUTPUT_VECTOR(out, last - first + 1);
  std::copy(x->ve + first, x->ve + last + 1, out->ve);
  return out;
}

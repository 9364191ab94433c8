// Transposition, exchanges, and rows, columns and parts of matrices.
#include <algorithm>
#include <utility>

#include <zarel/lm_mat.h>

#include "kernel/complex.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

// A matrix is transposed by blocks, whose lines in both matrices stay in the cache and their pages
// in the translation table, and a block by pieces, which stay in registers.
enum { Block = 64, Piece = 8 };

// Asks for the entries of a block before they are needed: it starts in another page with each row.
template <class M>
void fetchBlock(const M* in, int i0, int i1, int j0) {
  constexpr int perLine = 64 / sizeof(EntryOf<M>);
  for (int i = i0; i < i1; ++i)
    for (int j = j0; j < std::min(j0 + Block, columns(in)); j += perLine)
      __builtin_prefetch(in->me[i] + j);
}

template <class M>
void transposePiece(const M* in, M* out, int i0, int j0) {
  EntryOf<M> piece[Piece][Piece];
  for (int i = 0; i < Piece; ++i)
    for (int j = 0; j < Piece; ++j)
      piece[i][j] = conjugate(in->me[i0 + i][j0 + j]);
  for (int j = 0; j < Piece; ++j)
    for (int i = 0; i < Piece; ++i)
      out->me[j0 + j][i0 + i] = piece[i][j];
}

// A piece cut off by the last row or column.
template <class M>
void transposeRest(const M* in, M* out, int i0, int i1, int j0, int j1) {
  for (int j = j0; j < j1; ++j)
    for (int i = i0; i < i1; ++i)
      out->me[j][i] = conjugate(in->me[i][j]);
}

// `out` := the conjugate transpose of `in` for rows i0 to i1 and columns j0 to j1 of `in`.
template <class M>
void transposeBlock(const M* in, M* out, int i0, int i1, int j0, int j1) {
  for (int j = j0; j < j1; j += Piece)
    for (int i = i0; i < i1; i += Piece) {
      const bool whole = i + Piece <= i1 && j + Piece <= j1;
      if (whole)
        transposePiece(in, out, i, j);
      else
        transposeRest(in, out, i, std::min(i + Piece, i1), j, std::min(j + Piece, j1));
    }
}

template <class M>
void transposeInto(const M* in, M* out) {
  const int m = rows(in), n = columns(in);
  for (int j = 0; j < n; j += Block)
    for (int i = 0; i < m; i += Block) {
      const int next = std::min(i + Block, m);
      fetchBlock(in, next, std::min(next + Block, m), j);
      transposeBlock(in, out, i, next, j, std::min(j + Block, n));
    }
}

template <class M>
void transposeInPlace(M* A) {
  const int n = rows(A);
  for (int i0 = 0; i0 < n; i0 += Block)
    for (int j0 = 0; j0 <= i0; j0 += Block)
      for (int i = i0; i < std::min<int>(i0 + Block, n); ++i)
        for (int j = j0; j < std::min<int>(j0 + Block, i + 1); ++j) {
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

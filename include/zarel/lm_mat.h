/**
 * @file lm_mat.h
 * Real and complex matrices of the matrix kernel. C and C++.
 *
 * Matrices are stored by rows (lm_types.h, which also has the conventions). Products go to BLAS
 * as products of transposes by columns; nothing is copied for that. Names with a `z` are complex.
 */
#ifndef ZAREL_LM_MAT_H
#define ZAREL_LM_MAT_H

#include <zarel/lm_types.h>

ZAREL_BEGIN_C

/**
 * @name Create, resize, free
 * `get` makes an m x n matrix of zeros; `max_m` and `max_n` are m and n, each at least 1. `resize`
 * keeps the values that both shapes have and sets added ones to zero; a size of 0 is taken as 1;
 * a null matrix is created. Rows move inside the block where the row stride has to grow. Error 20
 * for a negative size. The `_vars` and `free` forms are those of lm_vec.h.
 * @{
 */
ZAREL_API MAT* LM_m_get(LM_TAG, int m, int n, LM_ARGS);
ZAREL_API MAT* LM_m_resize(LM_TAG, MAT* A, int m, int n, LM_ARGS);
ZAREL_API int LM_m_get_vars(LM_TAG, int m, int n, LM_ARGS, MAT** first, ...);
ZAREL_API int LM_m_resize_vars(LM_TAG, int m, int n, LM_ARGS, MAT** first, ...);
ZAREL_API int m_free(MAT* A);
ZAREL_API int m_free_vars(MAT** first, ...);

ZAREL_API ZMAT* LM_zm_get(LM_TAG, int m, int n, LM_ARGS);
ZAREL_API ZMAT* LM_zm_resize(LM_TAG, ZMAT* A, int m, int n, LM_ARGS);
ZAREL_API int LM_zm_get_vars(LM_TAG, int m, int n, LM_ARGS, ZMAT** first, ...);
ZAREL_API int LM_zm_resize_vars(LM_TAG, int m, int n, LM_ARGS, ZMAT** first, ...);
ZAREL_API int zm_free(ZMAT* A);
ZAREL_API int zm_free_vars(ZMAT** first, ...);
/** @} */

/**
 * @name Copy
 * Makes `out` m x n, sizes of 0 included, and copies the values from row `row` and column `column`
 * on; the others stay.
 * Error 2 for a row or column below 0 or above the size.
 * @{
 */
ZAREL_API MAT* LM__m_copy(const MAT* in, MAT* out, int row, int column, LM_ARGS);
ZAREL_API ZMAT* LM__zm_copy(const ZMAT* in, ZMAT* out, int row, int column, LM_ARGS);
/** @} */

/**
 * @name Move
 * Copy a block of m x n values; `out` grows if it is too small and keeps its other values. Blocks
 * of one matrix may overlap. Error 20 for a negative size, 2 for an index below 0 or a block past
 * the end of `in`.
 * @{
 */
/** The block of `in` at (i0, j0) goes to (i1, j1) of `out`. */
ZAREL_API MAT* LM_m_move(const MAT* in, int i0, int j0, int m, int n, MAT* out, int i1, int j1,
                         LM_ARGS);
ZAREL_API ZMAT* LM_zm_move(const ZMAT* in, int i0, int j0, int m, int n, ZMAT* out, int i1, int j1,
                           LM_ARGS);
/** The block of `in` at (i0, j0) goes, row after row, to index `to` of the vector `out`. */
ZAREL_API VEC* LM_mv_move(const MAT* in, int i0, int j0, int m, int n, VEC* out, int to, LM_ARGS);
ZAREL_API ZVEC* LM_zmv_move(const ZMAT* in, int i0, int j0, int m, int n, ZVEC* out, int to,
                            LM_ARGS);
/** m n values of the vector `in` from index `from` on fill, row after row, the block of `out` at
 * (i1, j1). */
ZAREL_API MAT* LM_vm_move(const VEC* in, int from, MAT* out, int i1, int j1, int m, int n, LM_ARGS);
ZAREL_API ZMAT* LM_zvm_move(const ZVEC* in, int from, ZMAT* out, int i1, int j1, int m, int n,
                            LM_ARGS);
/** @} */

/** @name Fill
 * They fill the matrix and return it. @{ */
ZAREL_API MAT* LM_m_zero(MAT* A, LM_ARGS);
ZAREL_API MAT* LM_m_ones(MAT* A, LM_ARGS);
/** Ones on the diagonal, zeros elsewhere; the matrix need not be square. */
ZAREL_API MAT* LM_m_ident(MAT* A, LM_ARGS);
/** Numbers of `mrand`, row by row; complex ones as real and imaginary part in turn. */
ZAREL_API MAT* LM_m_rand(MAT* A, LM_ARGS);
ZAREL_API ZMAT* LM_zm_zero(ZMAT* A, LM_ARGS);
ZAREL_API ZMAT* LM_zm_rand(ZMAT* A, LM_ARGS);
/** @} */

/** @name Sums and multiples
 * Error 1 where the shapes differ. @{ */
/** out := A + B. */
ZAREL_API MAT* LM_m_add(const MAT* A, const MAT* B, MAT* out, LM_ARGS);
ZAREL_API ZMAT* LM_zm_add(const ZMAT* A, const ZMAT* B, ZMAT* out, LM_ARGS);
/** out := A - B. */
ZAREL_API MAT* LM_m_sub(const MAT* A, const MAT* B, MAT* out, LM_ARGS);
ZAREL_API ZMAT* LM_zm_sub(const ZMAT* A, const ZMAT* B, ZMAT* out, LM_ARGS);
/** out := s A. */
ZAREL_API MAT* LM_sm_mlt(double s, const MAT* A, MAT* out, LM_ARGS);
ZAREL_API ZMAT* LM_zsm_mlt(ZCOMPLEX s, const ZMAT* A, ZMAT* out, LM_ARGS);
/** out := A + s B. */
ZAREL_API MAT* LM_ms_mltadd(const MAT* A, const MAT* B, double s, MAT* out, LM_ARGS);
ZAREL_API ZMAT* LM_mz_mltadd(const ZMAT* A, const ZMAT* B, ZCOMPLEX s, ZMAT* out, LM_ARGS);
/** @} */

/** @name Products of matrices
 * Error 1 where the sizes do not fit; 12 if `out` is one of the factors. @{ */
/** out := A B. */
ZAREL_API MAT* LM_m_mlt(const MAT* A, const MAT* B, MAT* out, LM_ARGS);
ZAREL_API ZMAT* LM_zm_mlt(const ZMAT* A, const ZMAT* B, ZMAT* out, LM_ARGS);
/** out := A B^T; complex: A times the adjoint of B. */
ZAREL_API MAT* LM_mmtr_mlt(const MAT* A, const MAT* B, MAT* out, LM_ARGS);
ZAREL_API ZMAT* LM_zmma_mlt(const ZMAT* A, const ZMAT* B, ZMAT* out, LM_ARGS);
/** out := A^T B; complex: the adjoint of A times B. */
ZAREL_API MAT* LM_mtrm_mlt(const MAT* A, const MAT* B, MAT* out, LM_ARGS);
ZAREL_API ZMAT* LM_zmam_mlt(const ZMAT* A, const ZMAT* B, ZMAT* out, LM_ARGS);
/** out := A + s B C. `out` may be A. */
ZAREL_API MAT* LM_m_mltadd(const MAT* A, const MAT* B, const MAT* C, double s, MAT* out, LM_ARGS);
/** @} */

/** @name Products with vectors
 * Error 1 where the sizes do not fit; 12 if `out` is the vector that is multiplied. @{ */
/** out := A x. */
ZAREL_API VEC* LM_mv_mlt(const MAT* A, const VEC* x, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zmv_mlt(const ZMAT* A, const ZVEC* x, ZVEC* out, LM_ARGS);
/** out := A^T x; complex: the adjoint of A times x. */
ZAREL_API VEC* LM_vm_mlt(const MAT* A, const VEC* x, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zvm_mlt(const ZMAT* A, const ZVEC* x, ZVEC* out, LM_ARGS);
/** out := x + s A y. `out` may be x. */
ZAREL_API VEC* LM_mv_mltadd(const VEC* x, const VEC* y, const MAT* A, double s, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zmv_mltadd(const ZVEC* x, const ZVEC* y, const ZMAT* A, ZCOMPLEX s, ZVEC* out,
                              LM_ARGS);
/** out := x + s A^T y; complex: x + s times the adjoint of A times y. `out` may be x. */
ZAREL_API VEC* LM_vm_mltadd(const VEC* x, const VEC* y, const MAT* A, double s, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zvm_mltadd(const ZVEC* x, const ZVEC* y, const ZMAT* A, ZCOMPLEX s, ZVEC* out,
                              LM_ARGS);
/** @} */

/** @name Transposition and exchange @{ */
/** out := in^T, and for a complex matrix its adjoint. In place on a square matrix only: error 11
 * for another. */
ZAREL_API MAT* LM_m_transp(const MAT* in, MAT* out, LM_ARGS);
ZAREL_API ZMAT* LM_zm_adjoint(const ZMAT* in, ZMAT* out, LM_ARGS);
/** Exchanges the entries of rows i and j in the columns `first` to `last`, both included; a `last`
 * below `first` exchanges nothing. Returns A. Error 10 for a row or column out of range. */
ZAREL_API MAT* LM_swap_rows(MAT* A, int i, int j, int first, int last, LM_ARGS);
ZAREL_API ZMAT* LM_zswap_rows(ZMAT* A, int i, int j, int first, int last, LM_ARGS);
/** Exchanges the entries of columns i and j in the rows `first` to `last`. */
ZAREL_API MAT* LM_swap_cols(MAT* A, int i, int j, int first, int last, LM_ARGS);
ZAREL_API ZMAT* LM_zswap_cols(ZMAT* A, int i, int j, int first, int last, LM_ARGS);
/** @} */

/** @name Rows, columns, parts
 * All are copies. Error 10 for a row, column or corner out of range. @{ */
/** out := column j. */
ZAREL_API VEC* LM_get_col(const MAT* A, int j, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zget_col(const ZMAT* A, int j, ZVEC* out, LM_ARGS);
/** out := row i. */
ZAREL_API VEC* LM_get_row(const MAT* A, int i, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zget_row(const ZMAT* A, int i, ZVEC* out, LM_ARGS);
/** Sets column j from row `from` on: A(i,j) := v_i. Error 1 if v is not as long as a column. */
ZAREL_API MAT* LM__set_col(MAT* A, int j, const VEC* v, int from, LM_ARGS);
ZAREL_API ZMAT* LM_zset_col(ZMAT* A, int j, const ZVEC* v, int from, LM_ARGS);
/** Sets row i from column `from` on: A(i,j) := v_j. Error 1 if v is not as long as a row. */
ZAREL_API MAT* LM__set_row(MAT* A, int i, const VEC* v, int from, LM_ARGS);
ZAREL_API ZMAT* LM_zset_row(ZMAT* A, int i, const ZVEC* v, int from, LM_ARGS);
/** out := rows `row1` to `row2` and columns `column1` to `column2` of A, all included. Error 12 if
 * `out` is A. */
ZAREL_API MAT* LM_sub_mat(const MAT* A, int row1, int column1, int row2, int column2, MAT* out,
                          LM_ARGS);
/** out := entries `first` to `last` of x, both included. Error 10 for an index out of range, 12 if
 * `out` is x. */
ZAREL_API VEC* LM_sub_vec(const VEC* x, int first, int last, VEC* out, LM_ARGS);
/** @} */

/** @name Norms
 * 0 for a matrix without entries. @{ */
/** The largest sum of moduli of a column. */
ZAREL_API double LM_m_norm1(const MAT* A, LM_ARGS);
ZAREL_API double LM_zm_norm1(const ZMAT* A, LM_ARGS);
/** The largest sum of moduli of a row. */
ZAREL_API double LM_m_norm_inf(const MAT* A, LM_ARGS);
ZAREL_API double LM_zm_norm_inf(const ZMAT* A, LM_ARGS);
/** The root of the sum of squared moduli, without overflow in between. */
ZAREL_API double LM_m_norm_frob(const MAT* A, LM_ARGS);
ZAREL_API double LM_zm_norm_frob(const ZMAT* A, LM_ARGS);
/** @} */

ZAREL_END_C

#endif

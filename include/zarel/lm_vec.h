/**
 * @file lm_vec.h
 * Real and complex vectors of the matrix kernel. C and C++.
 *
 * Conventions of arguments, results, sizes and errors stand in lm_types.h. Names with a `z` are
 * the complex forms of the names without.
 */
#ifndef ZAREL_LM_VEC_H
#define ZAREL_LM_VEC_H

#include <zarel/lm_arrays.h>
#include <zarel/lm_types.h>

ZAREL_BEGIN_C

/**
 * @name Create, resize, free
 * `get` makes a vector of `dim` zeros. `resize` changes the length of `x` and keeps its values;
 * added values are zero; a null `x` is created; resizing to 0 gives length 1. Error 20 for a
 * negative length.
 *
 * The `_vars` forms take a list of addresses of pointers, ended by a null pointer of the same
 * type, and do the same to each. They return how many they made (or resized, or freed); on an
 * error -1, with the pointers before the failing one already set.
 *
 * The `free` functions release data and record and return 0; -1 for null.
 * @{
 */
ZAREL_API VEC* LM_v_get(LM_TAG, int dim, LM_ARGS);
ZAREL_API VEC* LM_v_resize(LM_TAG, VEC* x, int dim, LM_ARGS);
ZAREL_API int LM_v_get_vars(LM_TAG, int dim, LM_ARGS, VEC** first, ...);
ZAREL_API int LM_v_resize_vars(LM_TAG, int dim, LM_ARGS, VEC** first, ...);
ZAREL_API int v_free(VEC* x);
/** Frees each vector of the list and sets its pointer to null; null pointers are not counted. */
ZAREL_API int v_free_vars(VEC** first, ...);

ZAREL_API ZVEC* LM_zv_get(LM_TAG, int dim, LM_ARGS);
ZAREL_API ZVEC* LM_zv_resize(LM_TAG, ZVEC* x, int dim, LM_ARGS);
ZAREL_API int LM_zv_get_vars(LM_TAG, int dim, LM_ARGS, ZVEC** first, ...);
ZAREL_API int LM_zv_resize_vars(LM_TAG, int dim, LM_ARGS, ZVEC** first, ...);
ZAREL_API int zv_free(ZVEC* x);
ZAREL_API int zv_free_vars(ZVEC** first, ...);
/** @} */

/**
 * @name Copy and move
 * `copy` makes `out` as long as `in` and copies the values from index `from` on; those before it
 * stay. A copy of a vector of length 0 has length 0. Error 2 for a `from` below 0 or above the
 * length.
 *
 * `move` copies `count` values of `in` from index `from` to index `to` of `out`, which grows if it
 * is too short; its other values stay. `in` may be `out`, also with ranges that overlap. Error 20
 * for a negative count, 2 for an index below 0 or a range past the end of `in`.
 * @{
 */
ZAREL_API VEC* LM__v_copy(const VEC* in, VEC* out, int from, LM_ARGS);
ZAREL_API ZVEC* LM__zv_copy(const ZVEC* in, ZVEC* out, int from, LM_ARGS);
ZAREL_API VEC* LM_v_move(const VEC* in, int from, int count, VEC* out, int to, LM_ARGS);
ZAREL_API ZVEC* LM_zv_move(const ZVEC* in, int from, int count, ZVEC* out, int to, LM_ARGS);
/** @} */

/** @name Fill
 * They fill the vector and return it. `rand` takes its numbers from `mrand`, for a complex vector
 * real and imaginary parts in turn. @{ */
ZAREL_API VEC* LM_v_zero(VEC* x, LM_ARGS);
ZAREL_API VEC* LM_v_ones(VEC* x, LM_ARGS);
ZAREL_API VEC* LM_v_rand(VEC* x, LM_ARGS);
ZAREL_API ZVEC* LM_zv_zero(ZVEC* x, LM_ARGS);
ZAREL_API ZVEC* LM_zv_rand(ZVEC* x, LM_ARGS);
/** @} */

/** @name Sums and multiples
 * Error 1 where the lengths of two operands differ. @{ */
/** out := x + y. */
ZAREL_API VEC* LM_v_add(const VEC* x, const VEC* y, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zv_add(const ZVEC* x, const ZVEC* y, ZVEC* out, LM_ARGS);
/** out := x - y. */
ZAREL_API VEC* LM_v_sub(const VEC* x, const VEC* y, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zv_sub(const ZVEC* x, const ZVEC* y, ZVEC* out, LM_ARGS);
/** out := s x. */
ZAREL_API VEC* LM_sv_mlt(double s, const VEC* x, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zv_mlt(ZCOMPLEX s, const ZVEC* x, ZVEC* out, LM_ARGS);
/** out := x + s y. */
ZAREL_API VEC* LM_v_mltadd(const VEC* x, const VEC* y, double s, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zv_mltadd(const ZVEC* x, const ZVEC* y, ZCOMPLEX s, ZVEC* out, LM_ARGS);
/** out := a[0] v[0] + ... + a[n-1] v[n-1]. Error 20 for n below 0, 2 for n = 0. */
ZAREL_API VEC* LM_v_lincomb(int n, const VEC* const* v, const double* a, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zv_lincomb(int n, const ZVEC* const* v, const ZCOMPLEX* a, ZVEC* out, LM_ARGS);
/** out := a1 v1 + a2 v2 + ...: after `v1` and `a1` the list goes on with `const ZVEC*`, `ZCOMPLEX`
 * in turn and ends with a null `const ZVEC*`. */
ZAREL_API ZVEC* LM_zv_linlist(ZVEC* out, LM_ARGS, const ZVEC* v1, ZCOMPLEX a1, ...);
/** @} */

/** @name Entry by entry @{ */
/** out_i := f(x_i). */
ZAREL_API VEC* LM_v_map(double (*f)(double), const VEC* x, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zv_map(ZCOMPLEX (*f)(ZCOMPLEX), const ZVEC* x, ZVEC* out, LM_ARGS);
/** out_i := f(parameters, x_i); the parameters may be null. */
ZAREL_API VEC* LM__v_map(double (*f)(void*, double), void* parameters, const VEC* x, VEC* out,
                         LM_ARGS);
ZAREL_API ZVEC* LM__zv_map(ZCOMPLEX (*f)(void*, ZCOMPLEX), void* parameters, const ZVEC* x,
                           ZVEC* out, LM_ARGS);
/** out_i := x_i y_i. Error 1 where the lengths differ. */
ZAREL_API VEC* LM_v_star(const VEC* x, const VEC* y, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zv_star(const ZVEC* x, const ZVEC* y, ZVEC* out, LM_ARGS);
/** out_i := x_i / y_i. Error 1 where the lengths differ, 4 for a y_i that is zero; nothing is
 * changed then. */
ZAREL_API VEC* LM_v_slash(const VEC* x, const VEC* y, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_zv_slash(const ZVEC* x, const ZVEC* y, ZVEC* out, LM_ARGS);
/** @} */

/** @name Reductions @{ */
/** Returns the largest (smallest) value and, unless `index` is null, the first place where it
 * stands. A NaN is never chosen if there is another value. Error 1 for a vector of length 0. */
ZAREL_API double LM_v_max(const VEC* x, int* index, LM_ARGS);
ZAREL_API double LM_v_min(const VEC* x, int* index, LM_ARGS);
/** The sum of the values. */
ZAREL_API double LM_v_sum(const VEC* x, LM_ARGS);
ZAREL_API ZCOMPLEX LM_zv_sum(const ZVEC* x, LM_ARGS);
/** The sum of x_i y_i over i from `from` on. Error 1 where the lengths differ, 2 for a `from`
 * below 0 or above the length. */
ZAREL_API double LM__in_prod(const VEC* x, const VEC* y, int from, LM_ARGS);
/** The same; with `conjugate` LM_CONJ it is the sum of conj(x_i) y_i. */
ZAREL_API ZCOMPLEX LM__zin_prod(const ZVEC* x, const ZVEC* y, int from, int conjugate, LM_ARGS);
/** @} */

/**
 * @name Sort
 * Sorts the values of x into ascending order, in place, equal ones in their old order, and returns
 * x. Complex values are ordered by real part, those with equal real parts by imaginary part. NaN
 * goes to the end. Unless `order` is null it is resized to the length of x, and `order->pe[i]` is
 * the old index of the value that is now at i.
 * @{
 */
ZAREL_API VEC* LM_v_sort(VEC* x, PERM* order, LM_ARGS);
ZAREL_API ZVEC* LM_zv_sort(ZVEC* x, PERM* order, LM_ARGS);
/** @} */

/** @name Norms
 * Of the values x_i / scale_i, where a scale of 0 counts as 1; a null `scale` divides nothing.
 * Error 1 where the lengths differ. @{ */
/** The sum of the moduli. */
ZAREL_API double LM__v_norm1(const VEC* x, const VEC* scale, LM_ARGS);
ZAREL_API double LM__zv_norm1(const ZVEC* x, const VEC* scale, LM_ARGS);
/** The root of the sum of squares, without overflow in between. */
ZAREL_API double LM__v_norm2(const VEC* x, const VEC* scale, LM_ARGS);
ZAREL_API double LM__zv_norm2(const ZVEC* x, const VEC* scale, LM_ARGS);
/** The largest modulus; 0 for length 0. A NaN is never the largest. */
ZAREL_API double LM__v_norm_inf(const VEC* x, const VEC* scale, LM_ARGS);
ZAREL_API double LM__zv_norm_inf(const ZVEC* x, const VEC* scale, LM_ARGS);
/** @} */

ZAREL_END_C

#endif

/**
 * @file lm_ivec.h
 * Integer vectors of the matrix kernel. C and C++.
 *
 * `IVEC` and `LVEC` both hold 32-bit integers; they differ by the word with which files hold them.
 * Conventions stand in lm_types.h; what is told of a name in lm_vec.h holds for the same name
 * here. Sums and differences wrap in 32 bits.
 */
#ifndef ZAREL_LM_IVEC_H
#define ZAREL_LM_IVEC_H

#include <zarel/lm_types.h>

ZAREL_BEGIN_C

/** @name Create, resize, free @{ */
ZAREL_API IVEC* LM_iv_get(LM_TAG, int dim, LM_ARGS);
ZAREL_API IVEC* LM_iv_resize(LM_TAG, IVEC* x, int dim, LM_ARGS);
ZAREL_API int LM_iv_get_vars(LM_TAG, int dim, LM_ARGS, IVEC** first, ...);
ZAREL_API int LM_iv_resize_vars(LM_TAG, int dim, LM_ARGS, IVEC** first, ...);
ZAREL_API int iv_free(IVEC* x);
ZAREL_API int iv_free_vars(IVEC** first, ...);

ZAREL_API LVEC* LM_lv_get(LM_TAG, int dim, LM_ARGS);
ZAREL_API LVEC* LM_lv_resize(LM_TAG, LVEC* x, int dim, LM_ARGS);
ZAREL_API int LM_lv_get_vars(LM_TAG, int dim, LM_ARGS, LVEC** first, ...);
ZAREL_API int LM_lv_resize_vars(LM_TAG, int dim, LM_ARGS, LVEC** first, ...);
ZAREL_API int lv_free(LVEC* x);
ZAREL_API int lv_free_vars(LVEC** first, ...);
/** @} */

/** @name Copy, move, fill @{ */
/** Makes `out` equal to `in`. */
ZAREL_API IVEC* LM_iv_copy(const IVEC* in, IVEC* out, LM_ARGS);
ZAREL_API LVEC* LM_lv_copy(const LVEC* in, LVEC* out, LM_ARGS);
ZAREL_API IVEC* LM_iv_move(const IVEC* in, int from, int count, IVEC* out, int to, LM_ARGS);
ZAREL_API LVEC* LM_lv_move(const LVEC* in, int from, int count, LVEC* out, int to, LM_ARGS);
ZAREL_API IVEC* LM_iv_zero(IVEC* x, LM_ARGS);
/** @} */

/** @name Arithmetic @{ */
ZAREL_API IVEC* LM_iv_add(const IVEC* x, const IVEC* y, IVEC* out, LM_ARGS);
ZAREL_API LVEC* LM_lv_add(const LVEC* x, const LVEC* y, LVEC* out, LM_ARGS);
ZAREL_API IVEC* LM_iv_sub(const IVEC* x, const IVEC* y, IVEC* out, LM_ARGS);
ZAREL_API LVEC* LM_lv_sub(const LVEC* x, const LVEC* y, LVEC* out, LM_ARGS);
/** Compares entry by entry: -1 if the first entry that differs is smaller in x, 1 if it is larger,
 * 0 if all are equal. A vector that is the head of a longer one is the smaller of the two. */
ZAREL_API int LM_iv_cmp(const IVEC* x, const IVEC* y, LM_ARGS);
/** Returns the largest entry and, unless `index` is null, the first place where it stands. Error 1
 * for a vector of length 0. */
ZAREL_API int LM_iv_max(const IVEC* x, int* index, LM_ARGS);
/** The sum of the entries, in 64 bits. */
ZAREL_API __int64 LM_iv_sum(const IVEC* x, LM_ARGS);
ZAREL_API IVEC* LM_iv_sort(IVEC* x, PERM* order, LM_ARGS);
ZAREL_API LVEC* LM_lv_sort(LVEC* x, PERM* order, LM_ARGS);
/** @} */

ZAREL_END_C

#endif

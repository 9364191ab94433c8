/**
 * @file lm_perm.h
 * Permutations of the matrix kernel. C and C++.
 *
 * A permutation p of size n tells where entries come from: applied to a vector it gives
 * `out[i] = x[p[i]]`. A new one is the identity. Conventions stand in lm_types.h. An entry of p
 * that is not below its size is error 2 wherever it is used, as is an entry that stands twice
 * where an inverse is needed; nothing is changed then.
 */
#ifndef ZAREL_LM_PERM_H
#define ZAREL_LM_PERM_H

#include <zarel/lm_types.h>

ZAREL_BEGIN_C

/** @name Create, resize, free
 * As in lm_vec.h, but that a new permutation is the identity and added entries continue it: entry
 * i is i. (Cutting a permutation may leave entries that are out of range.) @{ */
ZAREL_API PERM* LM_px_get(LM_TAG, int size, LM_ARGS);
ZAREL_API PERM* LM_px_resize(LM_TAG, PERM* px, int size, LM_ARGS);
ZAREL_API int LM_px_get_vars(LM_TAG, int size, LM_ARGS, PERM** first, ...);
ZAREL_API int LM_px_resize_vars(LM_TAG, int size, LM_ARGS, PERM** first, ...);
ZAREL_API int px_free(PERM* px);
ZAREL_API int px_free_vars(PERM** first, ...);
/** @} */

/** @name Permutations among themselves @{ */
/** out := in. */
ZAREL_API PERM* LM_px_copy(const PERM* in, PERM* out, LM_ARGS);
/** Makes px the identity and returns it. */
ZAREL_API PERM* LM_px_ident(PERM* px, LM_ARGS);
/** out := the inverse of px. */
ZAREL_API PERM* LM_px_inv(const PERM* px, PERM* out, LM_ARGS);
/** out[i] := p[q[i]]: applying `out` is applying p, then q. Error 1 where the sizes differ, 12 if
 * `out` is p or q. */
ZAREL_API PERM* LM_px_mlt(const PERM* p, const PERM* q, PERM* out, LM_ARGS);
/** Exchanges entries i and j of px and returns it. Error 2 for an index out of range. */
ZAREL_API PERM* LM_px_transp(PERM* px, int i, int j, LM_ARGS);
/** Returns 1 for an even permutation, -1 for an odd one. */
ZAREL_API int LM_px_sign(const PERM* px, LM_ARGS);
/** @} */

/** @name Permutations of vectors and matrices
 * Error 1 where the sizes differ. `out` may be the input. @{ */
/** out[i] := x[px[i]]. */
ZAREL_API VEC* LM_px_vec(const PERM* px, const VEC* x, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_px_zvec(const PERM* px, const ZVEC* x, ZVEC* out, LM_ARGS);
/** out[px[i]] := x[i], the inverse of `LM_px_vec`. */
ZAREL_API VEC* LM_pxinv_vec(const PERM* px, const VEC* x, VEC* out, LM_ARGS);
ZAREL_API ZVEC* LM_pxinv_zvec(const PERM* px, const ZVEC* x, ZVEC* out, LM_ARGS);
/** Row i of `out` := row px[i] of A. */
ZAREL_API MAT* LM_px_rows(const PERM* px, const MAT* A, MAT* out, LM_ARGS);
/** Column j of `out` := column px[j] of A. */
ZAREL_API MAT* LM_px_cols(const PERM* px, const MAT* A, MAT* out, LM_ARGS);
/** @} */

ZAREL_END_C

#endif

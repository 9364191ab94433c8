/**
 * @file lm_morse.h
 * Sparse real vectors of the matrix kernel in three forms. C and C++.
 *
 * `VECM` is built for insertion: a binary search tree whose nodes lie in one block. `VECMP` is
 * packed: sorted indices and values. `VECMW` is the window form: runs of consecutive indices cost
 * two words.
 *
 * From a full vector an entry x is kept when |x| > m 1e-16, strictly, m being the largest modulus
 * of the vector.
 *
 * Status and errors are those of lm_types.h; most functions here end in a status alone, and their
 * errors carry the message arguments 0 and null. Errors: 1 lengths differ, 2 a count out of range,
 * 3 allocation failed, 8 a null record, 20 a negative size. A result record of another length is
 * rebuilt; the caller takes the return value.
 */
#ifndef ZAREL_LM_MORSE_H
#define ZAREL_LM_MORSE_H

#include <stdio.h>

#include <zarel/lm_types.h>

ZAREL_BEGIN_C

/** A node of the tree. */
typedef struct VECM_NODE {
  double value;
  int index;
  struct VECM_NODE* left;  ///< smaller indices
  struct VECM_NODE* right; ///< larger indices
} VECM_NODE;

/** The tree form. The tree keeps the shape that insertion gave it. */
typedef struct VECM {
  int dim;          ///< length of the vector
  int max_dim;      ///< equal to `dim`
  int nb;           ///< stored entries
  int max_nb;       ///< nodes allocated, at least 1
  VECM_NODE* nodes; ///< the block
  VECM_NODE* root;  ///< null while empty
  int room;         ///< nodes the block truly holds: below `max_nb` after a growth that failed
} VECM;

/** The packed form. */
typedef struct VECMP {
  int dim;     ///< length of the vector
  int nb;      ///< stored entries
  int* idx;    ///< indices, ascending; room for at least one
  double* val; ///< values; room for at least one
} VECMP;

/**
 * The window form. The values stand in index order. The words, from left to right: one word
 * i >= 0 is a value at index i; two words -s, n with s > 0 are a run of n >= 2 values from index s
 * on. A run from index 0 is written 0, n with `first_run` not 0. Without values there are no
 * arrays.
 */
typedef struct VECMW {
  int dim;       ///< length of the vector
  int nb;        ///< stored values
  int nw;        ///< words
  int first_run; ///< whether entries 0 and 1 are both stored
  int* words;
  double* val;
} VECMW;

/** @name Create and free
 * Error 20 for a negative `dim`, 2 for an `nb` below 0 or above `dim`. `free` of null does
 * nothing. @{ */
/** A tree without entries, with room for `nb`, at least 1. */
ZAREL_API VECM* LM_vecm_get(int dim, int nb, int* status);
/** A packed vector of `nb` entries, all indices and values zero. */
ZAREL_API VECMP* LM_vecmp_get(int dim, int nb, int* status);
ZAREL_API void vecm_free(VECM* v);
ZAREL_API void vecmp_free(VECMP* v);
ZAREL_API void vecmw_free(VECMW* v);
/** @} */

/** @name Entries of a tree @{ */
/**
 * Stores `value` at index i, or adds it to what is there if `accumulate` is not 0. Returns 0; -1
 * for an index out of range. Error 8 for a null vector. A full block grows by 10 nodes, but not
 * beyond `dim`; where that fails, error 3 and -1, with `max_nb` already raised. Pointers into
 * `nodes` are valid until the block grows.
 */
ZAREL_API int LM_vecm_addval(VECM* v, int i, double value, int accumulate);
/** The value at index i; 0 where none is stored and for an index out of range. */
ZAREL_API double LM_vecm_getval(const VECM* v, int i, int* status);
/** Removes all entries and keeps the block. */
ZAREL_API VECM* LM_vecm_zero(VECM* v, int* status);
/** Multiplies every value. */
ZAREL_API VECM* LM_vecm_scal(VECM* v, double alpha, int* status);
/** y := y + alpha x. Nothing for |alpha| < 1e-14. Where x is y its values are multiplied by
 * alpha + 1. */
ZAREL_API VECM* LM_vecm_daxpy(const VECM* x, double alpha, VECM* y, int* status);
/** @} */

/** @name Copies and conversions
 * Each makes a new record for a null `out` where it has one, and returns the result. A copy of a
 * record into itself returns it. @{ */
ZAREL_API VECM* LM_vecm_copy(const VECM* in, VECM* out, int* status);
ZAREL_API VECMP* LM_vecmp_copy(const VECMP* in, VECMP* out, int* status);
ZAREL_API VECMW* LM_vecmw_copy(const VECMW* in, VECMW* out, int* status);
ZAREL_API VECM* LM_vec2vecm(const VEC* v, int* status);
ZAREL_API VECMP* LM_vec2vecmp(const VEC* v, int* status);
ZAREL_API VECMW* LM_vec2vecmw(const VEC* v, int* status);
ZAREL_API VEC* LM_vecm2vec(const VECM* v, VEC* out, int* status);
ZAREL_API VEC* LM_vecmw2vec(const VECMW* v, VEC* out, int* status);
ZAREL_API VECMP* LM_vecm2vecmp(const VECM* v, int* status);
/** Indices that stand twice keep the last value; one out of range is left out. */
ZAREL_API VECM* LM_vecmp2vecm(const VECMP* v, int* status);
ZAREL_API VECM* LM_vecmw2vecm(const VECMW* v, int* status);
/** The indices must ascend and be in range: error 2. */
ZAREL_API VECMW* LM_vecmp2vecmw(const VECMP* v, int* status);
/** Walks a tree in index order and fills two arrays with room for its entries. */
ZAREL_API void BT_fill_pack(const VECM* v, int* indices, double* values);
/** @} */

/** @name Products and norms
 * Error 1 where the lengths differ. @{ */
ZAREL_API double LM_pscal_vecm(const VECM* a, const VECM* b, int* status);
ZAREL_API double LM_pscal_vvecm(const VEC* a, const VECM* b, int* status);
ZAREL_API double LM_pscal_vvecmp(const VEC* a, const VECMP* b, int* status);
ZAREL_API double LM_pscal_vvecmw(const VEC* a, const VECMW* b, int* status);
/** The Euclidean norm; -1.0 for a null record. */
ZAREL_API double LM_vecm_norm2(const VECM* v, int* status);
ZAREL_API double LM_vecmp_norm2(const VECMP* v, int* status);
ZAREL_API double LM_vecmw_norm2(const VECMW* v, int* status);
/** @} */

/** @name Combination with a full vector
 * out := v + alpha s. With alpha exactly 0 or an empty s it is a copy of v. `out` may be v. @{ */
ZAREL_API VEC* LM_vvecm_mltadd(const VEC* v, const VECM* s, double alpha, VEC* out, LM_ARGS);
ZAREL_API VEC* LM_vvecmp_mltadd(const VEC* v, const VECMP* s, double alpha, VEC* out, LM_ARGS);
ZAREL_API VEC* LM_vvecmw_mltadd(const VEC* v, const VECMW* s, double alpha, VEC* out, LM_ARGS);
/** `LM_vvecmw_mltadd` with a leading flag: with 1 the values outside s are copied from v; with 0
 * they are left as they stand in `out`, which is of use where `out` is v's copy already. */
ZAREL_API VEC* LM_vvecmw_mltadd2(int flag, const VEC* v, const VECMW* s, double alpha, VEC* out,
                                 LM_ARGS);
/**
 * Without `idx`, out has the length of s, and for each stored entry (i, x) out[i] := alpha x, or
 * out[i] += alpha x with `add` not 0; other entries stay.
 *
 * With `idx`, an ascending list of wanted indices, `out` is resized to the length of s all the same
 * and is filled from its head: out[k] belongs to idx[k]; a wanted index that is not stored leaves
 * out[k] alone. Nothing happens if the first wanted index is at or past the last stored one, or
 * the last wanted one at or before the first stored one: an overlap of one single index is left
 * out.
 *
 * An alpha within 1e-14 of 1 or -1 acts as exactly 1 or -1. Error 1 if `idx` is longer than s.
 */
ZAREL_API VEC* LM_vvecmp_daxpy_idx(const IVEC* idx, const VECMP* s, int add, double alpha, VEC* out,
                                   LM_ARGS);
ZAREL_API VEC* LM_vvecmw_daxpy_idx(const IVEC* idx, const VECMW* s, int add, double alpha, VEC* out,
                                   LM_ARGS);
/** @} */

/** @name Figures @{ */
/**
 * The share of the kept entries of v that lie in runs of two or more; 1 if nothing is kept.
 * `*mean_length` (which may be null) is set to 0 and receives c / g if g is above 0: c kept
 * entries; g counts from index 1 on each kept entry that is not yet inside a run, so that a lone
 * entry counts once and a run twice, through its first and its second entry; index 0 is not
 * counted.
 */
ZAREL_API double LM_v_RatioBloc(const VEC* v, double* mean_length, int* status);
/** The mean number of values in a group, a lone value being a group; 0 for an empty vector. */
ZAREL_API double LM_vecmw_sizebloc(const VECMW* v, int* status);
/** The share of the entries whose modulus is above `threshold`; 0 with status -1 for a vector of
 * length 0. */
ZAREL_API double v_RateCompletion(const VEC* v, double threshold, int* status);
/** Stored entries divided by the length; 0 with status -1 for a vector of length 0. */
ZAREL_API double vecm_RateCompletion(const VECM* v, int* status);
ZAREL_API double vecmp_RateCompletion(const VECMP* v, int* status);
/** @} */

/** @name Text
 * Heading, counts, a line for each value in index order. A null stream is standard output. @{ */
ZAREL_API void vecm_output(FILE* stream, const VECM* v);
ZAREL_API void vecmp_output(FILE* stream, const VECMP* v);
ZAREL_API void vecmw_output(FILE* stream, const VECMW* v);
/** @} */

/**
 * @name Binary form
 * docs/formats/kernel.md has the layouts. Writers return 0; -1 with status -1 for a null stream, a
 * null record, a `dim` below 1 and a failed write; a failed flush also calls `Erreur` ("CHKDISK").
 *
 * Readers take a record to fill, or null for a new one; null and status -1 on failure, with error
 * 6 for counts and indices that fit no vector, 7 if the input ends, 3 if memory does; the record
 * given is unchanged then. Memory grows with what has been read.
 * @{
 */
ZAREL_API int vecm_boutput(FILE* stream, const VECM* v, int* status);
ZAREL_API int vecmp_boutput(FILE* stream, const VECMP* v, int* status);
ZAREL_API int vecmw_boutput(FILE* stream, const VECMW* v, int* status);
/** Writes a full vector in the form of a `VECM` without making one. */
ZAREL_API int v_boutput_as_vecm(FILE* stream, const VEC* v, int* status);
/** Writes a tree in the form of a `VECMP`. */
ZAREL_API int vecm_boutput_as_vecmp(FILE* stream, const VECM* v, int* status);
/** The nodes are chained to the right in the order of the file. */
ZAREL_API VECM* LM_vecm_binput(FILE* stream, VECM* v, int* status);
ZAREL_API VECMP* LM_vecmp_binput(FILE* stream, VECMP* v, int* status);
ZAREL_API VECMW* LM_vecmw_binput(FILE* stream, VECMW* v, int* status);
/** @} */

ZAREL_END_C

#endif

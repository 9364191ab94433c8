/**
 * @file lm_bitvec.h
 * Bit vectors of the matrix kernel: sets of indices in 0 to dim - 1. C and C++.
 *
 * A set is held in one of five kinds, whichever fits it. All operations exist for all kinds unless
 * a function says so; sets of different kinds may be mixed.
 *
 * French words in the names: `suivant` next, `insere` insert, `ou dans` or into, `oppose`
 * complement, `inter` intersection, `bloc` block, `codage` coding, `tout` everything. "On" is set,
 * "off" is clear.
 *
 * Arguments and status are those of lm_types.h. A failure that has no error number sets the status
 * to -1 and leaves a trace (`fct_Trace`) with the function's own name.
 *
 * Result sets: `out` may be null, an operand, or a set of any kind. The result has the kind told at
 * the function; an `out` of that kind is filled, one of another kind is freed and replaced, so the
 * caller takes the return value.
 */
#ifndef ZAREL_LM_BITVEC_H
#define ZAREL_LM_BITVEC_H

#include <stdio.h>

#include <zarel/lm_types.h>

ZAREL_BEGIN_C

/** Storage kinds. */
enum {
  LM_BV_BLOC = 1,   ///< sorted runs of set bits, each with its first and last index
  LM_BV_CODAGE = 2, ///< packed: bit i is bit i % 32 of word i / 32
  LM_BV_IVEC = 3,   ///< sorted list of the set indices
  LM_BV_DIRECT = 4, ///< one integer a bit, not 0 for set
  LM_BV_TOUT = 5    ///< every bit set, no data
};

/** A set of indices. The vectors of data are held with room for `capacity` entries. */
typedef struct BVEC {
  int kind;     ///< storage kind
  int dim;      ///< number of bits
  int count;    ///< runs or entries in use; kind 2: number of words
  int capacity; ///< runs or entries allocated; -1 for kind 2
  IVEC* starts; ///< kind 1: first index of each run
  IVEC* ends;   ///< kind 1: last index of each run
  IVEC* bits;   ///< kinds 2, 3, 4: the data
  int position; ///< iterator: the next index to look at
  int state;    ///< iterator: where in the data that index was looked for last
} BVEC;

/** @name Create, free, copy, resize
 * New sets are empty, but for `tout`. Error 20 for a negative length or capacity. @{ */
/** Makes a set: `bloc` with capacity 100, `codage`, `direct`, `tout`. Kind 3 is refused with
 * status -1; an unknown kind gives `bloc`. */
ZAREL_API BVEC* LM_bv_get(LM_TAG, int kind, int dim, LM_ARGS);
ZAREL_API BVEC* LM_bv_get_bloc(LM_TAG, int dim, int capacity, LM_ARGS);
ZAREL_API BVEC* LM_bv_get_codage(LM_TAG, int dim, LM_ARGS);
ZAREL_API BVEC* LM_bv_get_ivec(LM_TAG, int dim, int capacity, LM_ARGS);
ZAREL_API BVEC* LM_bv_get_direct(LM_TAG, int dim, LM_ARGS);
ZAREL_API BVEC* LM_bv_get_tout(LM_TAG, int dim, LM_ARGS);
/** Releases the set and its vectors; 0, or -1 for null. */
ZAREL_API int LM_bv_free(BVEC* bv);
/** Copies a set, kind and iterator included. */
ZAREL_API BVEC* LM_bv_copy(const BVEC* in, BVEC* out, LM_ARGS);
/** Gives a `bloc` set `dim` bits and room for `capacity` runs, never fewer than it has. Bits past
 * the end go, added ones are clear. Null is created; another kind is refused with status -1. */
ZAREL_API BVEC* LM_bv_resize_bloc(LM_TAG, BVEC* bv, int dim, int capacity, LM_ARGS);
/** The same for a `codage` set. */
ZAREL_API BVEC* LM_bv_resize_codage(LM_TAG, BVEC* bv, int dim, LM_ARGS);
/** @} */

/** @name Single bits @{ */
/** Not 0 if bit i is set. `tout`, an unknown kind and a null set answer -1 for every index; the
 * others answer 0 for an index that is out of range. */
ZAREL_API int LM_bv_is_on(const BVEC* bv, int i);
/** The negation of `LM_bv_is_on`: 1 or 0. */
ZAREL_API int LM_bv_is_off(const BVEC* bv, int i);
/** Sets bit i of a `codage` set; 0. -1 and no change for another kind or an index out of range. */
ZAREL_API int LM_bv_set_on(BVEC* bv, int i);
/** Clears bit i of a `codage` set, as `LM_bv_set_on`. */
ZAREL_API int LM_bv_set_off(BVEC* bv, int i);
/** Adds an index. `bloc` and `ivec` take indices in ascending order only: one at or below the last
 * fails; a full table grows by 50. `tout` has them all. Returns 0; -1 with status -1 on failure,
 * also for an index out of range. */
ZAREL_API int LM_bv_insere(BVEC* bv, int i, int* status);
/** @} */

/** @name Counts @{ */
/** Number of set bits; 0 for null. A run of a `bloc` set that starts at the index where the one
 * before it ended counts that index once. */
ZAREL_API int LM_bv_nb_on(const BVEC* bv);
/** Number of clear bits; 0 for null. */
ZAREL_API int LM_bv_nb_off(const BVEC* bv);
/** Number of set bits among `first` to `last`, both included, as far as they exist. */
ZAREL_API int LM_bv_nb_on_segment(const BVEC* bv, int first, int last);
/** out[g] := number of set bits among the `size` bits from g `size` on; the last group may be
 * shorter. Error 20 for a size below 1. */
ZAREL_API IVEC* LM_bv_build_nb_active_bit_per(const BVEC* bv, int size, IVEC* out, LM_ARGS);
/** @} */

/** @name Iteration
 * A set carries one iterator; a walk over all of it takes time in proportion to its data.
 * @code
 * LM_bv_initialize(bv);
 * for (int i = LM_bv_on_suivant(bv); i >= 0; i = LM_bv_on_suivant(bv)) use(i);
 * @endcode
 * @{ */
/** Puts the iterator at index 0. */
ZAREL_API void LM_bv_initialize(BVEC* bv);
/** Puts the iterator at an index: the next answer is at or after it. Below 0 counts as 0. */
ZAREL_API void LM_bv_set_iterateur(BVEC* bv, int i);
/** Returns the next set index and moves past it; -1 at the end and for null. */
ZAREL_API int LM_bv_on_suivant(BVEC* bv);
/** Returns the next clear index and moves past it; -1 at the end and for null. */
ZAREL_API int LM_bv_off_suivant(BVEC* bv);
/** @} */

/** @name Filling
 * They return the set, or null on failure. A `tout` set can't lose bits: status -1. @{ */
/** Gives the set `dim` bits, all set. Error 20 for a negative length. */
ZAREL_API BVEC* LM_bv_set_all_on(BVEC* bv, int dim, LM_ARGS);
/** Gives the set `dim` bits, all clear. Error 20 for a negative length. */
ZAREL_API BVEC* LM_bv_set_all_off(BVEC* bv, int dim, LM_ARGS);
/** Sets the bits `first` to `last`, both included; nothing for last < first. Error 2 for a bit out
 * of range. */
ZAREL_API BVEC* LM_bv_set_to_on_segment(BVEC* bv, int first, int last, LM_ARGS);
/** Clears the bits `first` to `last`. Error 2 for a bit out of range. */
ZAREL_API BVEC* LM_bv_set_to_off_segment(BVEC* bv, int first, int last, LM_ARGS);
/** @} */

/** @name Sets of two sets
 * Error 1 where the lengths differ. @{ */
/** out := a or b. Kind: `tout` if one of them is, else the kind of a. */
ZAREL_API BVEC* LM_bv_union(const BVEC* a, const BVEC* b, BVEC* out, LM_ARGS);
/** out := a and b. Kind: that of a, but that of b where a is `tout`. */
ZAREL_API BVEC* LM_bv_inter(const BVEC* a, const BVEC* b, BVEC* out, LM_ARGS);
/** The same for two sets of the kind in the name; status -1 for others. @{ */
ZAREL_API BVEC* LM_bv_inter_bloc(const BVEC* a, const BVEC* b, BVEC* out, LM_ARGS);
ZAREL_API BVEC* LM_bv_inter_codage(const BVEC* a, const BVEC* b, BVEC* out, LM_ARGS);
ZAREL_API BVEC* LM_bv_inter_direct(const BVEC* a, const BVEC* b, BVEC* out, LM_ARGS);
ZAREL_API BVEC* LM_bv_inter_ivec(const BVEC* a, const BVEC* b, BVEC* out, LM_ARGS);
/** @} */
/** out := the complement of a. Kind: that of a, but `bloc` where a is `tout`. */
ZAREL_API BVEC* LM_bv_oppose(const BVEC* a, BVEC* out, LM_ARGS);
/** Sets in `into` the bits that are set in a, and returns it. */
ZAREL_API BVEC* LM_bv_ou_dans_bv(const BVEC* a, BVEC* into, LM_ARGS);
/** The same, word by word, for two `codage` sets; status -1 for others. */
ZAREL_API BVEC* LM_bv_ou_dans_bv_fast(const BVEC* a, BVEC* into, LM_ARGS);
/** Clears in b the bits that are set in a, and returns b. A `tout` b: status -1, unless a is
 * empty. */
ZAREL_API BVEC* LM_bv_on1_to_off2(const BVEC* a, BVEC* b, LM_ARGS);
/** Sets in b the bits that are clear in a, and returns b. */
ZAREL_API BVEC* LM_bv_off1_to_on2(const BVEC* a, BVEC* b, LM_ARGS);
/** @} */

/** @name Conversion @{ */
/** out := the set in another kind. Status -1 for an unknown kind, and for `tout` if a bit is
 * clear. */
ZAREL_API BVEC* LM_bv_to_bv(const BVEC* in, int kind, BVEC* out, LM_ARGS);
/** out := one integer a bit, 1 or 0. */
ZAREL_API IVEC* LM_bv_to_ivec(const BVEC* in, IVEC* out, LM_ARGS);
/** out := the set, of kind `kind`, of the places of `in` that are not 0. Status -1 as for
 * `LM_bv_to_bv`. */
ZAREL_API BVEC* LM_ivec_to_bv(const IVEC* in, int kind, BVEC* out, LM_ARGS);
/** out := the list of the set indices, `dim` 0 if there are none. */
ZAREL_API IVEC* LM_bv_on_to_ivec_compact(const BVEC* in, IVEC* out, LM_ARGS);
/** out := the list of the clear indices, `dim` 0 if there are none. */
ZAREL_API IVEC* LM_bv_off_to_ivec_compact(const BVEC* in, IVEC* out, LM_ARGS);
/** @} */

/** @name Files
 * A null stream of the printing functions is standard output. docs/formats/kernel.md has the
 * forms. @{ */
/** Prints kind, length, number of set bits and the runs of set bits. */
ZAREL_API void LM_bv_print(FILE* stream, const BVEC* bv);
/** Prints the set indices, ten a line. */
ZAREL_API void LM_bv_on_print(FILE* stream, const BVEC* bv);
/** Prints the clear indices, ten a line. */
ZAREL_API void LM_bv_off_print(FILE* stream, const BVEC* bv);
/** Writes the binary form. Returns 0; -1 with status -1 for a null stream or set and for a failed
 * write. A failed flush also calls `Erreur`. */
ZAREL_API int LM_bv_boutput(FILE* stream, const BVEC* bv, int* status);
/** Reads the binary form into `bv`, which is replaced if its kind differs, or a new set. The
 * iterator is put at 0. Null and status -1 for a null stream, with error 6 for a form that is
 * none, 7 if the input ends and 3 if memory does; `bv` is unchanged then. */
ZAREL_API BVEC* LM_bv_binput(FILE* stream, BVEC* bv, int* status);
/** @} */

ZAREL_END_C

#endif

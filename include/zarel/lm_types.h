/**
 * @file lm_types.h
 * Records of the matrix kernel and the conventions of its functions. C and C++.
 *
 * The kernel works on plain records: real and complex vectors and matrices, integer vectors,
 * permutations. Unlike the class containers it stores matrices **by rows**, reports errors through
 * a status pointer and a ring of error records (lm_error.h), and can account for its allocations
 * by type (lm_memory.h).
 *
 * ## Arguments
 * A kernel function ends its argument list with `LM_ARGS`: a number and a text that are handed on
 * to the message of every error it reports (they fill the placeholders `{0,d}` and `{1,s}`; 0 and
 * null will do), and the address of a status. The function sets the status to 0 on entry; after an
 * error it is -1 and the result is null (or 0). A null status is allowed. Functions that take a
 * variable list take these three values in front of the list.
 *
 * The creating and resizing functions take `LM_TAG` in front of all else: the name and the flag
 * that the memory layer receives with each allocation.
 *
 * ## Results
 * A function with an output record accepts null, a record of the wrong size or one of the right
 * size. A right one is filled; a wrong one is resized and stays the same record; for null a new
 * record is made, which belongs to the caller. So every caller takes the return value:
 * `out = LM_v_add(x, y, out, 0, 0, &status)`. Unless a function says so, the output may be one of
 * the inputs. An error that the arguments show leaves all records unchanged.
 *
 * ## Sizes
 * A size of 0 is allowed for creation: the record then has `dim` 0, and one element is allocated,
 * so that the data pointer is never null. **Resizing to 0 gives size 1**, also where a null record
 * is resized, and therefore where a result of size 0 needs a new record: such a result has one
 * element, which is zero. Functions take sizes and indices as `int`; a negative size is error 20.
 *
 * ## Errors
 * | number | meaning |
 * |---|---|
 * | 1 | operand sizes differ |
 * | 2 | index or offset out of bounds |
 * | 3 | allocation failed (also: more values than 32 bits count) |
 * | 4 | division by zero |
 * | 6 | input in a wrong format |
 * | 7 | input ended |
 * | 8 | null argument |
 * | 9 | matrix not square |
 * | 10 | row or column out of range |
 * | 11 | transposition in place of a matrix that is not square |
 * | 12 | output may not share storage with an input |
 * | 18 | end of file while reading a matrix |
 * | 20 | negative size |
 * | 21 | a list number that is already attached |
 *
 * Every function reports 8 for a null input and 3 when memory is short; these two are not repeated
 * below. Other numbers stand at the functions.
 *
 * ## Threads
 * Status, error ring, accounting and work vectors are process-wide and nothing locks them: one
 * thread at a time in the whole kernel.
 */
#ifndef ZAREL_LM_TYPES_H
#define ZAREL_LM_TYPES_H

#include <zarel/export.h>

/** The values that end the argument list of a kernel function. */
#define LM_ARGS int argument, const char *text, int *status
/** The values in front of the arguments of a function that allocates: name and flag. */
#define LM_TAG const char *tag, int flag

ZAREL_BEGIN_C

/** A complex value. */
typedef struct ZCOMPLEX {
  double re; ///< real part
  double im; ///< imaginary part
} ZCOMPLEX;

/** A real vector. */
typedef struct VEC {
  unsigned int dim;     ///< length
  unsigned int max_dim; ///< allocated length, at least 1
  double* ve;           ///< the values
} VEC;

/** An integer vector. */
typedef struct IVEC {
  unsigned int dim;
  unsigned int max_dim;
  int* ive;
} IVEC;

/** A vector of 32-bit integers that are written to files as `long` words. */
typedef struct LVEC {
  unsigned int dim;
  unsigned int max_dim;
  int* lve;
} LVEC;

/** A complex vector. */
typedef struct ZVEC {
  unsigned int dim;
  unsigned int max_dim;
  ZCOMPLEX* ve;
} ZVEC;

/** A permutation: `pe[i]` is where entry i comes from. */
typedef struct PERM {
  unsigned int size;
  unsigned int max_size;
  unsigned int* pe;
} PERM;

/** A real matrix: one block by rows, row i at `me[i]`, which is `base + i * max_n`. */
typedef struct MAT {
  unsigned int m;        ///< rows
  unsigned int n;        ///< columns
  unsigned int max_m;    ///< row pointers allocated, at least 1
  unsigned int max_n;    ///< row stride, at least 1
  unsigned int max_size; ///< values allocated
  double** me;           ///< one pointer a row
  double* base;          ///< the block
} MAT;

/** A complex matrix, laid out as `MAT`. */
typedef struct ZMAT {
  unsigned int m;
  unsigned int n;
  unsigned int max_m;
  unsigned int max_n;
  unsigned int max_size;
  ZCOMPLEX** me;
  ZCOMPLEX* base;
} ZMAT;

/** Type numbers: they index the accounting and the table of free functions. `BAND`, `ITER`,
 * `SPROW` and `SPMAT` are names without an implementation. */
enum {
  LM_TYPE_MAT = 0,
  LM_TYPE_BAND = 1,
  LM_TYPE_PERM = 2,
  LM_TYPE_VEC = 3,
  LM_TYPE_IVEC = 4,
  LM_TYPE_ITER = 5,
  LM_TYPE_SPROW = 6,
  LM_TYPE_SPMAT = 7,
  LM_TYPE_ZVEC = 8,
  LM_TYPE_ZMAT = 9,
  LM_TYPE_LVEC = 10,
  LM_TYPE_VECM = 11,
  LM_TYPE_VECMP = 12,
  LM_TYPE_VSTRUCT = 13,
  LM_TYPE_VECMW = 14,
  LM_TYPE_BVEC = 15,
  LM_TYPE_COUNT = 16
};

/** Start entry of the kernel. Nothing needs to be started: it does nothing. */
ZAREL_API void init_kernel(void);

ZAREL_END_C

#endif

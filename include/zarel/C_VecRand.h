/**
 * @file C_VecRand.h
 * Random fill of vectors.
 */
#ifndef ZAREL_C_VECRAND_H
#define ZAREL_C_VECRAND_H

#include <zarel/C_RandNum.h>
#include <zarel/C_Vec.h>

/**
 * Fills `v` with random numbers between 0 and 1 of a fresh C_RandNum.
 *
 * Complex vectors take real and imaginary parts in turn. `short` and `int` vectors become 0 by the
 * rule of C_RandNum. A refused seed leaves a trace and the values alone.
 *
 * Returns 0, or -1 after the trace. Throws 2870 unless `v` is in core and full.
 * Exists for all scalars of vectors but `char` and `__int64`, both index widths.
 */
template <class T, class I>
ZAREL_API int C_VecRand(C_Vec<T, I>& v, E_InitSeedType type, unsigned int seed);

#endif

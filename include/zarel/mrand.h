/**
 * @file mrand.h
 * The lagged subtractive generator of the matrix kernel. C and C++.
 *
 * State: 55 signed 32-bit words and two cursors, a from 0 and b from 31. For each number both
 * cursors move on by one (54 is followed by 0), w := table[a] - table[b] in 32 bits that wrap,
 * plus 2147483647 if w is negative; table[a] := w, and the number is w / 2147483647.
 * The generator has nothing to do with `C_RandNum`.
 *
 * Threads: one state for the process, without a lock.
 */
#ifndef ZAREL_MRAND_H
#define ZAREL_MRAND_H

#include <zarel/export.h>

ZAREL_BEGIN_C

/** Returns the next number, from 0 to 1. The first call seeds with 3127 unless `smrand` did. */
ZAREL_API double mrand(void);
/** Fills `out` with the next `count` numbers; a count below 1 does nothing. */
ZAREL_API void mrandlist(double* out, int count);
/**
 * Seeds the generator: table[0] := 123413 seed and table[i] := 123413 table[i-1], in 32 bits that
 * wrap, each then reduced to the remainder by 2147483647, which has the sign of the dividend. The
 * cursors stay where they are. 3025 numbers are drawn and dropped.
 */
ZAREL_API void smrand(int seed);

ZAREL_END_C

#endif

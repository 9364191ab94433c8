/**
 * @file lm_arrays.h
 * The kernel's loops on raw arrays. C and C++.
 *
 * They test nothing and report nothing. A length of 0 or less does nothing. Output and input are
 * the same array or do not overlap.
 */
#ifndef ZAREL_LM_ARRAYS_H
#define ZAREL_LM_ARRAYS_H

#include <zarel/lm_types.h>

ZAREL_BEGIN_C

/** Whether a complex operation conjugates, see there. */
enum { LM_NOCONJ = 0, LM_CONJ = 1 };

/** @name Real and integer @{ */
/** out := a + b. */
ZAREL_API void _add__(const double* a, const double* b, double* out, int length);
/** out := a - b. */
ZAREL_API void _sub__(const double* a, const double* b, double* out, int length);
/** out := s a. */
ZAREL_API void _smlt__(const double* a, double s, double* out, int length);
/** a := a + s b. */
ZAREL_API void _mltadd__(double* a, const double* b, double s, int length);
/** The sum of a_i b_i. */
ZAREL_API double _ip__(const double* a, const double* b, int length);
/** a := 0. */
ZAREL_API void _zero__(double* a, int length);
/** a := 0, integers. */
ZAREL_API void _izero__(int* a, int length);
/** @} */

/** @name Complex @{ */
/** out := a + b. */
ZAREL_API void _zadd__(const ZCOMPLEX* a, const ZCOMPLEX* b, ZCOMPLEX* out, int length);
/** out := a - b. */
ZAREL_API void _zsub__(const ZCOMPLEX* a, const ZCOMPLEX* b, ZCOMPLEX* out, int length);
/** out := s a. */
ZAREL_API void _zmlt__(const ZCOMPLEX* a, ZCOMPLEX s, ZCOMPLEX* out, int length);
/** a := a + s b, or a + s conj(b) with `conjugate` not 0. */
ZAREL_API void _zmltadd__(ZCOMPLEX* a, const ZCOMPLEX* b, ZCOMPLEX s, int length, int conjugate);
/** The sum of a_i b_i, or of conj(a_i) b_i with `conjugate` not 0. */
ZAREL_API ZCOMPLEX _zip__(const ZCOMPLEX* a, const ZCOMPLEX* b, int length, int conjugate);
/** a := conj(a). */
ZAREL_API void _zconj__(ZCOMPLEX* a, int length);
/** a := 0. */
ZAREL_API void _zzero__(ZCOMPLEX* a, int length);
/** @} */

ZAREL_END_C

#endif

/**
 * @file lm_io.h
 * Text input and output of kernel records. C and C++.
 *
 * `foutput` writes a record for people and for `finput`, `dump` adds the addresses, for debugging.
 * Values are written with 9 significant digits, so that a text keeps a record to that precision.
 * docs/formats/kernel.md has the forms. A null stream is standard output; a null record is
 * written as the word NULL behind the heading.
 *
 * `finput` reads the next record of a stream. White space is skipped, and so is the rest of a line
 * from a `#` on. The result replaces the content of `out`, or is a new record. Memory grows with
 * what has been read and not with the counts a file claims; a failure leaves `out` unchanged.
 * Error 6 for a text that is not the form of the record (among them `NULL`, a number with letters
 * in it, a count beyond 2147483647, a permutation that is none, a matrix of no rows and more than
 * 65536 columns); 7 if the input ends early, for a
 * matrix 18.
 */
#ifndef ZAREL_LM_IO_H
#define ZAREL_LM_IO_H

#include <stdio.h>

#include <zarel/lm_types.h>

ZAREL_BEGIN_C

ZAREL_API VEC* LM_v_finput(FILE* stream, VEC* out, LM_ARGS);
ZAREL_API MAT* LM_m_finput(FILE* stream, MAT* out, LM_ARGS);
ZAREL_API PERM* LM_px_finput(FILE* stream, PERM* out, LM_ARGS);
ZAREL_API IVEC* LM_iv_finput(FILE* stream, IVEC* out, LM_ARGS);
ZAREL_API LVEC* LM_lv_finput(FILE* stream, LVEC* out, LM_ARGS);

ZAREL_API void v_foutput(FILE* stream, const VEC* x);
ZAREL_API void m_foutput(FILE* stream, const MAT* A);
ZAREL_API void px_foutput(FILE* stream, const PERM* px);
ZAREL_API void iv_foutput(FILE* stream, const IVEC* x);
ZAREL_API void lv_foutput(FILE* stream, const LVEC* x);

ZAREL_API void v_dump(FILE* stream, const VEC* x);
ZAREL_API void m_dump(FILE* stream, const MAT* A);
ZAREL_API void px_dump(FILE* stream, const PERM* px);
ZAREL_API void iv_dump(FILE* stream, const IVEC* x);
ZAREL_API void lv_dump(FILE* stream, const LVEC* x);

/** Skips white space and comments (from `#` to the end of the line). Returns 0, or -1 where the
 * input ends or `stream` is null. */
ZAREL_API int skipjunk(FILE* stream);

ZAREL_END_C

#endif

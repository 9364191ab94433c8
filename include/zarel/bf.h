/**
 * @file bf.h
 * Binary file primitives. C and C++.
 *
 * The one place that decides what a number or a text looks like in a file.
 *
 * | suffix   | in memory   | bytes on disk |
 * |----------|-------------|---------------|
 * | `char`   | `char`      | 1             |
 * | `tchar`  | `wchar_t`   | 2             |
 * | `int`    | `int`       | 4             |
 * | `long`   | `long`      | 4             |
 * | `hyper`  | `__int64`   | 8             |
 * | `float`  | `float`     | 4             |
 * | `double` | `double`    | 8             |
 *
 * Words are little-endian, on every host, unless the stream is in the set of exceptions
 * (`AddFileException`): its words are big-endian. `docs/formats/primitives.md` has the layouts.
 *
 * A `long` that does not fit 4 bytes is cut to its low 32 bits, and read back with its sign. A
 * `tchar` is one 16-bit unit: of a wider `wchar_t` the low 16 bits are stored, and each unit read
 * fills one `wchar_t`. The wide strings (`tstr`) store a character beyond 16 bits as a surrogate
 * pair, two units, and join such pairs where `wchar_t` can hold them.
 *
 * Transfers on a `FILE*` go to the descriptor of the stream and round its buffer. They start where
 * the descriptor stands, which is where the stream stands as long as no buffered call has read
 * ahead or holds back output. Never mix both kinds on one stream without `fflush` between; a
 * plain `fflush` after writing is harmless.
 *
 * All `BF_` functions return 0 on success and -1 on failure. A null file, a null buffer or a
 * count below 1 is a failure too, and leaves a trace (`fct_Trace`): callers test for zero
 * elements themselves. A transfer that ends early is a failure; what arrived by then stays in the
 * buffer as it stands in the file.
 *
 * Threads: the set of exceptions has no lock; change it from one thread at a time.
 */
#ifndef ZAREL_BF_H
#define ZAREL_BF_H

#include <stddef.h>
#include <stdio.h>
#include <wchar.h>

#include <zarel/export.h>

ZAREL_BEGIN_C

/** @name Counted reads
 * Read `count` elements into `buffer`. @{ */
ZAREL_API int BF_fread_char(FILE* file, char* buffer, int count);
ZAREL_API int BF_fread_tchar(FILE* file, wchar_t* buffer, int count);
ZAREL_API int BF_fread_int(FILE* file, int* buffer, int count);
ZAREL_API int BF_fread_long(FILE* file, long* buffer, int count);
ZAREL_API int BF_fread_hyper(FILE* file, __int64* buffer, int count);
ZAREL_API int BF_fread_float(FILE* file, float* buffer, int count);
ZAREL_API int BF_fread_double(FILE* file, double* buffer, int count);
/** @} */

/** @name Counted writes
 * Write `count` elements of `buffer`, which stays as it is. Words whose bytes must be turned go
 * out through a stage of 256 elements, the others in one system call. @{ */
ZAREL_API int BF_fwrite_char(FILE* file, const char* buffer, int count);
ZAREL_API int BF_fwrite_tchar(FILE* file, const wchar_t* buffer, int count);
ZAREL_API int BF_fwrite_int(FILE* file, const int* buffer, int count);
ZAREL_API int BF_fwrite_long(FILE* file, const long* buffer, int count);
ZAREL_API int BF_fwrite_hyper(FILE* file, const __int64* buffer, int count);
ZAREL_API int BF_fwrite_float(FILE* file, const float* buffer, int count);
ZAREL_API int BF_fwrite_double(FILE* file, const double* buffer, int count);
/** @} */

/**
 * Writes an `int` length and the bytes of `text`, without its NUL. A failing write goes unnoticed:
 * the result is 0 for any valid file and text, and callers find out by their test of `fflush`.
 * A null file or text gives the trace and -1.
 */
ZAREL_API int BF_fwrite_str(FILE* file, const char* text);
/** Writes an `int` length in 16-bit units and the units of `text`; fails as `BF_fwrite_str`. */
ZAREL_API int BF_fwrite_tstr(FILE* file, const wchar_t* text);

/**
 * Reads a text of `BF_fwrite_str` into a new block, which the caller releases with
 * `zarelmem_free`. A stored empty text gives a null pointer and 0. -1 for a length below 0, which
 * leaves a null pointer, for a length that the file does not hold, for a text that ends early and
 * when there is no memory. No more memory is asked for than the file can fill.
 */
ZAREL_API int BF_fread_str(FILE* file, char** out);
/** Reads a text of `BF_fwrite_tstr`, as `BF_fread_str` does. */
ZAREL_API int BF_fread_tstr(FILE* file, wchar_t** out);

/** Writes the `int` 2, a character width, and `length` units of `text`. The length is not stored.
 */
ZAREL_API int BF_fwrite_multiplatform_char(FILE* file, const wchar_t* text, int length);
/**
 * Reads an `int` width w and then `length` units into `text`, `length` wide characters long.
 * w = 1 and 2: 2-byte units. w below 1: nothing more is read, the result is 0. w above 2:
 * `length` elements of w bytes are read, as far as they fit 1040 bytes, and the 16-bit units at
 * their head are copied up to a NUL, the rest of `text` is filled with NUL; the result is 0 even
 * if the file ended early.
 */
ZAREL_API int BF_fread_multiplatform_char(FILE* file, wchar_t* text, int length);

/** Tells whether the order of a stream that is no exception is the host's order, more precisely
 * that of the null stream: false after `AddFileException(NULL)` on a little-endian host. */
ZAREL_API int BF_EndianIsCorrect(void);
/** Makes the words of a stream big-endian from now on. Nothing happens on a big-endian host. */
ZAREL_API void AddFileException(FILE* file);
/** Makes the words of a stream little-endian again. Removing the last one frees the set. */
ZAREL_API void RemFileException(FILE* file);
/** Tells whether a stream is an exception. */
ZAREL_API int IsFileException(FILE* file);
/** Reverses `n` bytes in place; below 2 nothing happens. */
ZAREL_API void SwapBytes(void* p, size_t n);

/** @name Descriptors
 * 64-bit positions, wide paths (UTF-8 on disk), whole elements. Interrupted and partial transfers
 * go on until all is done, the file ends or the system refuses. @{ */

/** Opens a file with the flags of `open` and permission 0600; -1 on failure. */
ZAREL_API int CBF_open64(const wchar_t* path, int flags);
/** Closes a descriptor; 0, or -1 on failure. */
ZAREL_API int CBF_close64(int fd);
/** Opens a stream as `fopen` does; null on failure. */
ZAREL_API FILE* CBF_fopen64(const wchar_t* path, const wchar_t* mode);
/** Closes a stream as `fclose` does. */
ZAREL_API int CBF_fclose64(FILE* file);
/** Reads `count` elements of `size` bytes; returns the whole elements read, 0 for size 0. */
ZAREL_API size_t CBF_read64(void* buffer, size_t size, size_t count, int fd);
/** Writes `count` elements of `size` bytes; returns the whole elements written, 0 for size 0. */
ZAREL_API size_t CBF_write64(const void* buffer, size_t size, size_t count, int fd);
/** As `CBF_read64` on the descriptor of a stream, round its buffer. */
ZAREL_API size_t CBF_fread64(void* buffer, size_t size, size_t count, FILE* file);
/** As `CBF_write64` on the descriptor of a stream, round its buffer. */
ZAREL_API size_t CBF_fwrite64(const void* buffer, size_t size, size_t count, FILE* file);
/** Moves a descriptor; returns the new position, -1 on failure. */
ZAREL_API __int64 CBF_lseek64(int fd, __int64 offset, int whence);
/** Tells the position of a descriptor; -1 on failure. */
ZAREL_API __int64 CBF_tell64(int fd);
/** Moves the descriptor of a stream; 0, or -1 on failure. */
ZAREL_API int CBF_fseek64(FILE* file, __int64 offset, int whence);
/** Tells the position of a stream's descriptor; -1 on failure. */
ZAREL_API __int64 CBF_ftell64(FILE* file);
/** @} */

ZAREL_END_C

#endif

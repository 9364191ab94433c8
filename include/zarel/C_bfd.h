/**
 * @file C_bfd.h
 * Binary transfers by type, on a stream or a descriptor, with the byte order as an argument.
 */
#ifndef ZAREL_C_BFD_H
#define ZAREL_C_BFD_H

#include <complex>
#include <cstdio>

#include <zarel/export.h>

/**
 * Reads `count` elements into `buffer`; the `const` of the buffer is a habit of this interface,
 * the elements are written. `T` is `char`, `short`, `int`, `float`, `double`, `__int64` or
 * `std::complex` of `float` or `double`, which is two reals, the real part first.
 *
 * The bytes of each element are reversed when `bigEndian` differs from the host's order. On a
 * stream that is an exception (`AddFileException`) that decision is inverted; descriptors never
 * are exceptions.
 *
 * Returns 0, or -1 when fewer than `count` elements arrive (they stay as they stand in the file)
 * and, after a trace, for a null stream, a null buffer or a count below 1.
 *
 * `T_BF_read<char>` on a descriptor throws `C_ZarelException` 2871 after the read when its bytes
 * would have to be reversed; on a stream the bytes just stay.
 */
template <class T>
int T_BF_read(int fd, const T* buffer, int count, bool bigEndian);
template <class T>
int T_BF_read(FILE* file, const T* buffer, int count, bool bigEndian);

/**
 * Reads with a 64-bit count, in chunks of 0x7FFFFFFF elements. The results of the chunks are not
 * looked at: the result is 0. A count of 0 is one chunk of 0 elements, which leaves a trace.
 */
template <class T>
int T_BF_read(int fd, const T* buffer, __int64 count, bool bigEndian);
template <class T>
int T_BF_read(FILE* file, const T* buffer, __int64 count, bool bigEndian);

/**
 * Writes `count` elements of `buffer`, which stays as it is.
 *
 * On a descriptor the bytes are reversed when `bigEndian` differs from the host's order. On a
 * stream they go out as they are only if the stream is no exception and `bigEndian` is the host's
 * order; in every other case they are reversed. So on a little-endian host an exception stream
 * with `bigEndian` true is written reversed and read as it is: files depend on it. Bytes are
 * never reversed.
 *
 * Returns 0, or -1 when the system takes less and, after a trace, for a null stream, a null
 * buffer or a count below 1. Threads: one at a time, the reversing stage is shared.
 */
template <class T>
int T_BF_write(int fd, const T* buffer, int count, bool bigEndian);
template <class T>
int T_BF_write(FILE* file, const T* buffer, int count, bool bigEndian);

/**
 * Writes with a 64-bit count, in chunks of 0x7FFFFFFF elements. The first chunk that fails throws
 * `C_ZarelException` 22, and so does a count of 0.
 */
template <class T>
int T_BF_write(int fd, const T* buffer, __int64 count, bool bigEndian);
template <class T>
int T_BF_write(FILE* file, const T* buffer, __int64 count, bool bigEndian);

/** The scalars that the templates exist for. */
#define ZAREL_FOR_EACH_BF_SCALAR(apply)                                                            \
  apply(char) apply(short) apply(int) apply(float) apply(double) apply(__int64)                    \
      apply(std::complex<float>) apply(std::complex<double>)

#define ZAREL_BF_TEMPLATES(storage, T)                                                             \
  storage template ZAREL_API int T_BF_read<T>(int, const T*, int, bool);                           \
  storage template ZAREL_API int T_BF_read<T>(FILE*, const T*, int, bool);                         \
  storage template ZAREL_API int T_BF_read<T>(int, const T*, __int64, bool);                       \
  storage template ZAREL_API int T_BF_read<T>(FILE*, const T*, __int64, bool);                     \
  storage template ZAREL_API int T_BF_write<T>(int, const T*, int, bool);                          \
  storage template ZAREL_API int T_BF_write<T>(FILE*, const T*, int, bool);                        \
  storage template ZAREL_API int T_BF_write<T>(int, const T*, __int64, bool);                      \
  storage template ZAREL_API int T_BF_write<T>(FILE*, const T*, __int64, bool);

#define ZAREL_DECLARE_BF(T) ZAREL_BF_TEMPLATES(extern, T)
ZAREL_FOR_EACH_BF_SCALAR(ZAREL_DECLARE_BF)
#undef ZAREL_DECLARE_BF

#endif

/**
 * @file zarelsys.h
 * The system's services, each under one name. C and C++.
 *
 * Nothing else of the library names a platform call. Functions report as the system calls behind
 * them do: most return -1 and leave the reason in `errno`; nothing is thrown. Paths are wide and
 * stand as UTF-8 on disk; a null path is refused with `EINVAL`, and a path for whose conversion
 * there is no memory with `ENOMEM`.
 *
 * Threads: no state but what zarel_wgetenv says. Like the calls behind them, zarel_getenv and
 * zarel_wgetenv must not run while another thread changes the environment.
 */
#ifndef ZAREL_ZARELSYS_H
#define ZAREL_ZARELSYS_H

#include <stddef.h>
#include <stdio.h>
#include <wchar.h>

#include <zarel/export.h>

ZAREL_BEGIN_C

/** @name New texts
 * Each result is a block of its own, which the caller releases with `zarelmem_free`; null when
 * there is no memory. @{ */

/**
 * Converts narrow text (UTF-8, whatever the locale) to wide text. Null gives null. A byte that is
 * no UTF-8 becomes one of the lone surrogates U+DC80 to U+DCFF, of which zarel_Tchar2char makes the
 * same byte again, so that every file name survives the way there and back.
 */
ZAREL_API wchar_t* zarel_char2Tchar(const char* text);
/** Converts wide text to narrow text (UTF-8, whatever the locale). Null gives null. A value that is
 * no character becomes U+FFFD. */
ZAREL_API char* zarel_Tchar2char(const wchar_t* text);
/** Duplicates a text. `label` goes to the allocator as the name of the block. Null gives null. */
ZAREL_API char* zarel_strdup(const char* text, const char* label);
/**
 * Forms a path that nothing stands under: a directory, `prefix` and a random end. The directory is
 * the first of these that may be written to: the environment's `TMPDIR`, `directory`, the system's
 * `/tmp`; an empty or null one is left out, as is a null prefix. Nothing is created, so another
 * process may take the name first: create the file exclusively (`O_EXCL`). Null with `errno` set
 * when there is no such directory.
 */
ZAREL_API wchar_t* zarel_tempnam(const wchar_t* directory, const wchar_t* prefix);
/** @} */

/** @name Files @{ */

/** Tells whether something stands under a path: 1 or 0, 1 for a directory too, 0 for null. */
ZAREL_API int zarel_file_exist(const wchar_t* path);
/** Returns the time of the last change, in seconds since 1970; 0 for a null path or a failure. */
ZAREL_API __int64 zarel_file_mod_time(const wchar_t* path);
/**
 * Cuts or extends an open file to `size` bytes, however many: 0, or -1. The position of the
 * descriptor moves to the new end. New bytes read as zero and take no room on the disk yet.
 */
ZAREL_API int zarel_ftruncate(int fd, __int64 size);
/** Tests a path for existence (mode 0), writing (2), reading (4) or both (6): 0, or -1. */
ZAREL_API int zarel_access(const wchar_t* path, int mode);
/** Gives a file another path, in one step, and takes the place of a file there: 0, or -1. */
ZAREL_API int zarel_rename(const wchar_t* from, const wchar_t* to);
/** Removes a file: 0, or -1. */
ZAREL_API int zarel_unlink(const wchar_t* path);
/** Returns the descriptor of a stream; -1 for null. */
ZAREL_API int zarel_fileno(FILE* file);
/** @} */

/** @name Process @{ */

/** Returns a variable of the environment, null if it is not set. The text belongs to the
 * environment. */
ZAREL_API char* zarel_getenv(const char* name);
/**
 * As zarel_getenv with wide text. The text belongs to the calling thread and stays until that
 * thread asks for the same name again after the value has changed. Null also when there is no
 * memory.
 */
ZAREL_API wchar_t* zarel_wgetenv(const wchar_t* name);
/** Returns the number of the process. */
ZAREL_API int zarel_getpid(void);
/** Has the system's shell run `command` and returns what `system` does; `unused` plays no part. */
ZAREL_API int zarel_system(int unused, const char* command);
/** @} */

/** @name Text and numbers @{ */

/** Compares at most `n` characters whatever their case: below 0, 0 or above 0, as `strcmp`. */
ZAREL_API int zarel_strncasecmp(const char* a, const char* b, size_t n);
/** Returns the angle of the point (`x`, `y`), from -pi to pi. */
ZAREL_API double zarel_atan2(double y, double x);
/** @} */

ZAREL_END_C

#endif

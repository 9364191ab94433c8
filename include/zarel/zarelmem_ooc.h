/**
 * @file zarelmem_ooc.h
 * Blocks of memory out of core: units, each mapped on a file of its own. C and C++.
 *
 * A unit is held by the record of its mapping (zarel_mmap.h), whose `address` is the block. Its
 * file is only for its owner, and has its place on the disk before it is mapped. A unit without a
 * name has a temporary file, created exclusively in the system's temporary directory.
 *
 * `name`, `source` and `line` say who asks. Functions with `int* error` store 0 or -1 there unless
 * it is null. Nothing is thrown. Failures are reported through `Erreur` with the text of a message:
 *
 * | message | what failed                                        |
 * |---------|----------------------------------------------------|
 * | 3103    | no memory, or no name to adopt                     |
 * | 3122    | mapping                                            |
 * | 3123    | ending a mapping                                   |
 * | 3124    | creating, opening, sizing a file; a name in use    |
 * | 3125    | deleting a file                                    |
 * | 3126    | closing a file; no such mode of release            |
 * | 3127    | the list of units; a record that is none of them   |
 *
 * Threads: one at a time, for all units together.
 */
#ifndef ZAREL_ZARELMEM_OOC_H
#define ZAREL_ZARELMEM_OOC_H

#include <stddef.h>

#include <zarel/export.h>
#include <zarel/zarel_mmap.h>

ZAREL_BEGIN_C

enum {
  ZAREL_IN_CORE = 1,    /**< mode of zarelmem_setmode: blocks on the heap */
  ZAREL_OUT_OF_CORE = 2 /**< mode of zarelmem_setmode: units */
};
enum {
  ZAREL_OOC_DELETE = 1, /**< mode of zarelmem_free_ooc: the file goes */
  ZAREL_OOC_KEEP = 2    /**< mode of zarelmem_free_ooc: the file stays */
};

/**
 * Makes a unit of `number` elements of `size` bytes, all zero.
 *
 * @param file  the name of its file, which is created, or emptied if it exists; null for a
 * temporary file. A name that is a unit's already is refused with 3124, and that unit stays. So
 * is, and does, what is no regular file (a device, a pipe, a directory) or cannot be examined.
 * @return the unit's record; null on failure (3103, 3122, 3124, 3127), and the file that was opened
 * is deleted, whether it was new or not. No bytes cannot be mapped: 3122.
 */
ZAREL_API ZAREL_MMAP* zarelmem_calloc_ooc(unsigned __int64 number, unsigned __int64 size,
                                          const wchar_t* file, const char* name, const char* source,
                                          int line, int* error);
/** The same for `size` bytes; they are zero too. */
ZAREL_API ZAREL_MMAP* zarelmem_malloc_ooc(unsigned __int64 size, const wchar_t* file,
                                          const char* name, const char* source, int line,
                                          int* error);

/**
 * Gives a unit another size: its file is cut, or extended by zeros, and mapped anew. The result is
 * its new record, at a new address; the former one is released. `file` plays no part.
 *
 * On failure the result is null and the former record stays the unit's, unmapped, for
 * zarelmem_realloc_ooc or zarelmem_free_ooc: 3123 (still mapped), 3124, 3126, 3127 (no such unit,
 * status), 3122. When its file cannot be opened (3124) there is no such unit any more: its file
 * stays, and the caller releases the record with `zarelmem_free`. A file that cannot be cut is also
 * told on standard output.
 *
 * A null record adopts an existing file, which must have `size` bytes, as a unit. Its name is wide
 * text that is handed through the narrow parameter, and ends at its first zero byte all the same;
 * hardly any name survives that. zarelmem_adopt_ooc takes any.
 */
ZAREL_API ZAREL_MMAP* zarelmem_realloc_ooc(ZAREL_MMAP* record, unsigned __int64 size,
                                           const char* file, const char* name, const char* source,
                                           int line, int* error);

/** Makes a unit of an existing file with at least `size` bytes, which it keeps. Null on failure,
 * and the file stays: 3103 (also without a name), 3124 (no such file, a shorter one, a name that is
 * a unit's already), 3122, 3127. Names are compared as they are spelled. */
ZAREL_API ZAREL_MMAP* zarelmem_adopt_ooc(unsigned __int64 size, const wchar_t* file,
                                         const char* name, const char* source, int line,
                                         int* error);

/**
 * Releases a unit with its record, and its file by `mode`: ZAREL_OOC_DELETE, ZAREL_OOC_KEEP. A
 * record that is no unit's is a success. Failures: 3123, and the unit stays; 3125, and the file
 * stays; 3126 for any other mode, and the unit stays, unmapped; 3127.
 */
ZAREL_API void zarelmem_free_ooc(ZAREL_MMAP* record, int mode, const char* name, const char* source,
                                 int line, int* error);

/** Closes the file of a unit, which is open only after a zarelmem_realloc_ooc that failed: 0, also
 * for a record that is no unit's, or -1 (3126). */
ZAREL_API int zarelmem_close_mapped_unit(ZAREL_MMAP* record, const char* name, const char* source,
                                         int line, int* error);

/** Returns the name of a unit's file, as a block for `zarelmem_free`; null for a null record, or
 * without memory (3103). For a record that is no unit's it is the empty text, always the same one,
 * which must not be released: test for it. */
ZAREL_API wchar_t* zarelmem_get_mapped_filename(const ZAREL_MMAP* record, const char* source,
                                                int line, int* error);
/** Returns the bytes of a unit; 0 for a record that is none's. */
ZAREL_API unsigned __int64 zarelmem_get_mapped_size(const ZAREL_MMAP* record, const char* source,
                                                    int line, int* error);
/** Returns the descriptor of a unit's file; -1 while it is closed, and for a record that is no
 * unit's. */
ZAREL_API int zarelmem_get_mapped_unit(const ZAREL_MMAP* record, const char* source, int line,
                                       int* error);
/** Tells whether a record is a unit's: not 0. */
ZAREL_API int zarelmem_ismapped(const ZAREL_MMAP* record);

/** Sets where structures of the kernel are allocated: ZAREL_IN_CORE, as at first, or
 * ZAREL_OUT_OF_CORE. Other values change nothing. Returns `mode` less 1, not the former mode. */
ZAREL_API int zarelmem_setmode(int mode);
/** Returns the mode. */
ZAREL_API int zarelmem_getmode(void);

ZAREL_END_C

#endif

/**
 * @file zarel_mmap.h
 * Mapped files, each mapping by itself and in a register. C and C++.
 *
 * A mapping shows a byte range of a file at an address, for reading (mode 0) or for reading and
 * writing (mode 2). What is written is in the file at once. A range that is written has its place
 * on the disk before it is mapped, so that a full disk is a failure here and no signal later; a
 * range never reaches past the end of the file. A mapped file must not be cut.
 *
 * `name`, `source` and `line` say who asks. A mapping that cannot be made is told by its null
 * result alone; one that cannot be ended is reported through `Erreur` at that place, with the text
 * of message 3127. Functions with `int* error` store 0 or -1 there unless it is null. Nothing is
 * thrown.
 *
 * Threads: one at a time, for all mappings together.
 */
#ifndef ZAREL_ZAREL_MMAP_H
#define ZAREL_ZAREL_MMAP_H

#include <stddef.h>

#include <zarel/export.h>

ZAREL_BEGIN_C

/** A mapping, as its user holds it. */
typedef struct ZAREL_MMAP {
  void* address; ///< the byte that was asked for
  int id;        ///< the number of the mapping, from 1
  char mapped;   ///< 'Y' while mapped, 'N' after zarel_munmap
  int error;     ///< 0
} ZAREL_MMAP;

/** A mapping, as the system needs it to be ended. */
typedef struct ZAREL_MMAP_VIEW {
  void* view;              ///< where the view starts; null when it has ended
  void* address;           ///< the byte that was asked for
  unsigned __int64 length; ///< bytes of the view
  int file;                ///< the descriptor of the file, -1 when it is closed
} ZAREL_MMAP_VIEW;

/**
 * Maps a range of a file and registers the mapping.
 *
 * @param record  takes the mapping; null for a new one, which the caller releases with
 *                `zarelmem_free` after zarel_munmap
 * @param fd      plays no part
 * @param file    the file's name; mode 2 creates a file that does not exist, and an empty file
 *                cannot be mapped
 * @param mode    0 to read, 2 to read and write. Mode 0 serves at most 4294967295 bytes, counted
 *                from the page in which the range starts.
 * @param offset  the first byte, any
 * @param length  bytes, above 0
 * @return the record; null with error -1 on failure, and nothing is left open
 */
ZAREL_API ZAREL_MMAP* zarel_mmap(ZAREL_MMAP* record, int fd, const wchar_t* file, int mode,
                                 unsigned __int64 offset, unsigned __int64 length, const char* name,
                                 const char* source, int line, int* error);

/** The same without the register. Null for `record` gives a new one, released with `zarelmem_free`
 * after zarel_munmap_. */
ZAREL_API ZAREL_MMAP_VIEW* zarel_mmap_(ZAREL_MMAP_VIEW* record, int fd, const wchar_t* file,
                                       int mode, unsigned __int64 offset, unsigned __int64 length,
                                       const char* name, const char* source, int line, int* error);

/**
 * Ends a mapping and marks its record; does not release the record. A record that is not mapped any
 * more is a success. -1 for a null record or address, and when the system refuses: then what is
 * left of the mapping stays registered.
 */
ZAREL_API int zarel_munmap(ZAREL_MMAP* record, const char* name, const char* source, int line,
                           int* error);

/** Ends a mapping without a register: the view first, then the file, up to the first failure. 0,
 * also for a null record or one whose view has ended; -1 on failure, reported as 3127. Does not
 * release the record. */
ZAREL_API int zarel_munmap_(ZAREL_MMAP_VIEW* record, const char* name, const char* source,
                            int line);

/** Forgets all mappings: their files are closed, their addresses stay valid to the end of the
 * process, and zarel_munmap of their records does nothing. */
ZAREL_API void free_variables_zarel_mmap(void);

ZAREL_END_C

#endif

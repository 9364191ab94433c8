/**
 * @file lm_memory.h
 * Allocation accounting of the matrix kernel, and work objects in static pointers. C and C++.
 *
 * Both work on lists of types, numbered 0 to 4. List 0 holds the kernel's own types (lm_types.h)
 * and is attached from the start; a host may attach others for its own records.
 *
 * Accounting is off at start. While it is on, every create, resize and free of the kernel is
 * counted in list 0: the bytes of record, data and row pointers, and the number of records.
 */
#ifndef ZAREL_LM_MEMORY_H
#define ZAREL_LM_MEMORY_H

#include <stdio.h>

#include <zarel/export.h>

ZAREL_BEGIN_C

/** One entry of accounting, for one type. */
typedef struct MEM_ENTRY {
  long bytes; ///< bytes allocated
  int numvar; ///< number of variables
} MEM_ENTRY;

/** Releases an object of a type; 0, or -1 for null. */
typedef int (*MEM_FREE)(void* object);

enum {
  MEM_LISTS = 5,     ///< how many lists there are
  MEM_HASHSIZE = 509 ///< how many static variables can be registered
};

/** @name Accounting @{ */

/** Turns accounting on (not 0) or off (0) and returns the former state, 1 or 0. */
ZAREL_API int mem_info_on(int on);
/** Tells whether accounting is on. */
ZAREL_API int mem_info_is_on(void);

/**
 * Attaches a list: `count` types with their names, free functions and accounting entries. The
 * arrays stay the caller's and must outlive their use; the entries are set to zero. A null name
 * is skipped where lists are printed.
 *
 * Returns 0; -1 for a list outside 0 to 4, a null array or a negative count. An occupied list
 * reports error 21 and is replaced anyway.
 */
ZAREL_API int mem_attach_list(int list, int count, const char* const* names,
                              const MEM_FREE* free_functions, MEM_ENTRY* table);
/** Takes a list of the host off again; 0, or -1 for list 0, a list outside the range or one that
 * is not attached. */
ZAREL_API int mem_detach_list(int list);

/** Books the change of an object of `type` from `old_size` to `new_size` bytes, if accounting is
 * on. An unknown type or list is ignored. A total below 0 is warned of on both standard streams. */
ZAREL_API void mem_bytes_list(int type, long old_size, long new_size, int list);
/** Books `change` objects of `type` more (or fewer), under the same conditions. */
ZAREL_API void mem_numvar_list(int type, int change, int list);

/** Returns the bytes booked for a type; 0 for an unknown type or list. */
ZAREL_API long mem_info_bytes(int type, int list);
/** Returns the number of variables booked for a type; 0 for an unknown type or list. */
ZAREL_API int mem_info_numvar(int type, int list);
/** Prints a list: a heading, a line for every named type, a total. A null file is standard
 * output. Nothing is printed for a list that is not attached. */
ZAREL_API void mem_info_file(FILE* file, int list);
/** @} */

/**
 * @name Work objects in static pointers
 * A function may keep its work objects in static pointers and register these under the current
 * mark; `mem_stat_free_list` then releases all objects of a group together.
 * @code
 * static VEC* work = NULL;
 * work = LM_v_resize("mine", 0, work, n, 0, 0, &status);
 * mem_stat_reg_list((void**)&work, LM_TYPE_VEC, 0);
 * @endcode
 * @{
 */

/** Sets the mark. A positive one starts a group, raises the number of open groups and is returned;
 * 0 ends the current group (nothing more is registered) and returns 0; a negative one ends it and
 * returns -1. */
ZAREL_API int mem_stat_mark(int mark);
/**
 * Registers the pointer variable at `variable`, which holds an object of `type` of `list`, under
 * the current mark, and returns the mark. Mark 0 registers nothing and returns 0. A variable that
 * is already registered stays as it is. A type outside the list reports error 1, a null address
 * error 8; both, a list outside the range and a full table (509 variables) return -1.
 */
ZAREL_API int mem_stat_reg_list(void** variable, int type, int list);
/**
 * Releases the objects of all variables of `list` that are registered under `mark`, sets these to
 * null, forgets them and lowers the number of open groups; the current mark stays. Returns 0. A
 * mark of 0 only ends the current group (the mark becomes 0) and returns 0, a negative one ends it
 * and returns -1. With no open group it reports error 2 and returns -1; a list outside the range
 * or not attached returns -1.
 */
ZAREL_API int mem_stat_free_list(int mark, int list);
/** Returns the current mark. */
ZAREL_API int mem_stat_show_mark(void);
/** Returns how many groups are open. */
ZAREL_API int mem_stat_groups(void);
/** Prints the registered variables of a list. A null file is standard output. */
ZAREL_API void mem_stat_dump(FILE* file, int list);
/** @} */

ZAREL_END_C

#endif

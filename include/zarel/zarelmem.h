/**
 * @file zarelmem.h
 * The library's allocator. C and C++.
 *
 * All memory that passes between library and host comes from here: each function fetches the memory
 * manager (C_MemManager.h), which the first one creates, and forwards. The effect is that of the
 * standard allocators, with books on every block. `name`, `file` and `line` say who asks, to a
 * manager of the host; `count` is 1 by convention and plays no part. A block of this family is
 * released only through this family, and is aligned to 16 bytes.
 *
 * Nothing is thrown. A block takes 16 bytes more than were asked for.
 *
 * Threads: one at a time in the books; see C_MemManager.h.
 */
#ifndef ZAREL_ZARELMEM_H
#define ZAREL_ZARELMEM_H

#include <stddef.h>

#include <zarel/export.h>

ZAREL_BEGIN_C

/** Allocates `size` bytes; null on failure, also when the size and the block's header do not fit
 * 64 bits. The bytes have no defined content. No bytes are a block all the same. */
ZAREL_API void* zarelmem_malloc(size_t size, const char* name, int count, const char* file,
                                int line);

/** Allocates `number` elements of `size` bytes, all zero; null on failure, also when the product
 * and the header do not fit 64 bits. */
ZAREL_API void* zarelmem_calloc(size_t number, size_t size, const char* name, int count,
                                const char* file, int line);

/** Changes a block to `size` bytes and keeps its content; a null block is allocated. On failure
 * the result is null and the block stays as it was. A size of 0 leaves a block of no bytes. */
ZAREL_API void* zarelmem_realloc(void* block, size_t size, const char* name, int count,
                                 const char* file, int line);

/** Releases a block; null does nothing and creates no manager. A pointer to what is no block is
 * passed over, as far as the 16 bytes before it tell. */
ZAREL_API void zarelmem_free(void* block, const char* file, int line);

/** Sets the size, request and 16 bytes of header, from which on blocks come from the host's
 * allocator; 2147483647 at first. */
ZAREL_API void zarelmem_initialize(size_t size);

/** @name The same, without a place in the caller's source @{ */
ZAREL_API void* zarel_malloc(size_t size, const char* name, int count);
ZAREL_API void* zarel_calloc(size_t number, size_t size, const char* name, int count);
ZAREL_API void* zarel_realloc(void* block, size_t size, const char* name, int count);
ZAREL_API void zarel_free(void* block);
/** @} */

/** @name Tags
 * Each block is booked on the tag that is current when it is allocated. There are the tags 0 to
 * 999; others must not be given. @{ */
/** Returns the lowest tag from 1 that is not in use, without marking it; -1 if there is none. */
ZAREL_API int zarel_get_new_tag(void);
/** Makes a tag current and marks it in use. */
ZAREL_API void zarel_set_tag(int tag);
/** Marks a tag as not in use and forgets what was booked on it. It may stay the current one. */
ZAREL_API void zarel_free_tag(int tag);
/** Returns the bytes booked on all tags now, headers included. */
ZAREL_API unsigned __int64 zarel_sum_memsize(void);
/** Returns the sum of the peaks of all tags, which is no peak of the sum. */
ZAREL_API unsigned __int64 zarel_sum_maxmemsize(void);
/** Returns the bytes booked on a tag now. */
ZAREL_API unsigned __int64 zarel_tag_memsize(int tag);
/** Returns the most bytes that were booked on a tag at once. */
ZAREL_API unsigned __int64 zarel_tag_maxmemsize(int tag);
/** @} */

ZAREL_END_C

#endif

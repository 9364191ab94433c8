/**
 * @file zarelmem.h
 * The library's allocator. C and C++.
 *
 * All memory that passes between library and host comes from here. The effect is that of the
 * standard allocators; `name`, `count`, `file` and `line` say who asks and why, for the
 * accounting. A block of this family is released only through this family.
 */
#ifndef ZAREL_ZARELMEM_H
#define ZAREL_ZARELMEM_H

#include <stddef.h>

#include <zarel/export.h>

ZAREL_BEGIN_C

/** Allocates `size` bytes; null on failure. The bytes have no defined content. */
ZAREL_API void* zarelmem_malloc(size_t size, const char* name, int count, const char* file,
                                int line);

/** Allocates `number` elements of `size` bytes, all zero; null on failure, also when the product
 * does not fit a size. */
ZAREL_API void* zarelmem_calloc(size_t number, size_t size, const char* name, int count,
                                const char* file, int line);

/** Changes a block to `size` bytes and keeps its content; a null block is allocated. On failure
 * the result is null and the block stays as it was. A size of 0 leaves a block of no bytes. */
ZAREL_API void* zarelmem_realloc(void* block, size_t size, const char* name, int count,
                                 const char* file, int line);

/** Releases a block; null does nothing. */
ZAREL_API void zarelmem_free(void* block, const char* file, int line);

ZAREL_END_C

#endif

// The seam below the zarelmem_ family: tests replace these functions to make allocations fail.
#ifndef ZAREL_MEMORY_ALLOCATOR_H
#define ZAREL_MEMORY_ALLOCATOR_H

#include <cstddef>

namespace Zarel {

struct Allocator {
  void* (*malloc)(std::size_t size);
  void* (*calloc)(std::size_t number, std::size_t size);
  void* (*realloc)(void* block, std::size_t size);
  void (*free)(void* block);
};

// The functions in use.
Allocator& allocator();

} // namespace Zarel

#endif

// The process heap below the memory manager: tests replace these functions to make allocations
// fail.
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

extern Allocator processHeap;

// The functions in use.
inline Allocator& allocator() {
  return processHeap;
}

} // namespace Zarel

#endif

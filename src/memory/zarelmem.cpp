#include <zarel/zarelmem.h>

#include <cstdint>
#include <cstdlib>

#include "memory/allocator.h"

namespace Zarel {

Allocator& allocator() {
  static Allocator functions = {std::malloc, std::calloc, std::realloc, std::free};
  return functions;
}

} // namespace Zarel

using Zarel::allocator;

// A block of no bytes is a block all the same: a null result always means failure.
void* zarelmem_malloc(size_t size, const char*, int, const char*, int) {
  return allocator().malloc(size ? size : 1);
}

void* zarelmem_calloc(size_t number, size_t size, const char*, int, const char*, int) {
  const bool none = number == 0 || size == 0;
  if (!none && number > SIZE_MAX / size) return nullptr;
  return none ? allocator().calloc(1, 1) : allocator().calloc(number, size);
}

void* zarelmem_realloc(void* block, size_t size, const char* name, int count, const char* file,
                       int line) {
  if (!block) return zarelmem_malloc(size, name, count, file, line);
  return allocator().realloc(block, size ? size : 1);
}

void zarelmem_free(void* block, const char*, int) {
  if (block) allocator().free(block);
}

#include <zarel/zarelmem.h>

#include <cstdint>
#include <cstdlib>
#include <new>

#include <zarel/C_MemManager.h>

#include "memory/allocator.h"

namespace Zarel {

Allocator processHeap = {std::malloc, std::calloc, std::realloc, std::free};

} // namespace Zarel

namespace {

constexpr size_t header = 16;
constexpr const char* ownFile = __FILE__;
constexpr int ownLine = 1;

// Out of line, so that nothing of it burdens the calls that find a manager.
__attribute__((noinline, cold)) C_MemManager* freshManager() noexcept {
  try {
    return getGlobalMemManager();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

// The manager; null when there is none yet and no memory for one.
C_MemManager* manager() noexcept {
  C_MemManager* const instance = C_MemManager::Instance();
  return instance ? instance : freshManager();
}

void* tooLarge(C_MemManager& books) {
  books.HandleError();
  return nullptr;
}

// What a question about the books is answered without a manager to be had.
template <class Result, class... Arguments, class... Given>
Result ask(Result (C_MemManager::*question)(Arguments...) const, Result none, Given... given) {
  const C_MemManager* const books = manager();
  return books ? (books->*question)(given...) : none;
}

} // namespace

void* zarelmem_malloc(size_t size, const char* name, int, const char* file, int line) {
  C_MemManager* const books = manager();
  if (!books) return nullptr;
  if (size > SIZE_MAX - header) return tooLarge(*books);
  return books->Malloc(size, name, file, line);
}

void* zarelmem_calloc(size_t number, size_t size, const char* name, int, const char* file,
                      int line) {
  C_MemManager* const books = manager();
  if (!books) return nullptr;
  if (size != 0 && number > (SIZE_MAX - header) / size) return tooLarge(*books);
  return books->Calloc(number, size, name, file, line);
}

void* zarelmem_realloc(void* block, size_t size, const char* name, int count, const char* file,
                       int line) {
  if (!block) return zarelmem_malloc(size, name, count, file, line);
  C_MemManager* const books = manager();
  if (!books) return nullptr;
  if (size > SIZE_MAX - header) return tooLarge(*books);
  return books->Realloc(block, size, name, file, line);
}

void zarelmem_free(void* block, const char* file, int line) {
  if (!block) return;
  if (C_MemManager* const books = manager()) books->Free(block, file, line);
}

void zarelmem_initialize(size_t size) {
  if (C_MemManager* const books = manager()) books->SetMinSizeForExtAlloc(size);
}

void* zarel_malloc(size_t size, const char* name, int count) {
  return zarelmem_malloc(size, name, count, ownFile, ownLine);
}

void* zarel_calloc(size_t number, size_t size, const char* name, int count) {
  return zarelmem_calloc(number, size, name, count, ownFile, ownLine);
}

void* zarel_realloc(void* block, size_t size, const char* name, int count) {
  return zarelmem_realloc(block, size, name, count, ownFile, ownLine);
}

void zarel_free(void* block) {
  zarelmem_free(block, ownFile, ownLine);
}

int zarel_get_new_tag(void) {
  return ask(&C_MemManager::GetNewTag, -1);
}

void zarel_set_tag(int tag) {
  if (C_MemManager* const books = manager()) books->SetTag(tag);
}

void zarel_free_tag(int tag) {
  if (C_MemManager* const books = manager()) books->FreeTag(tag);
}

unsigned __int64 zarel_sum_memsize(void) {
  return ask(&C_MemManager::SumMemSize, 0ULL);
}

unsigned __int64 zarel_sum_maxmemsize(void) {
  return ask(&C_MemManager::SumMaxMemSize, 0ULL);
}

unsigned __int64 zarel_tag_memsize(int tag) {
  return ask(&C_MemManager::TagMemSize, 0ULL, tag);
}

unsigned __int64 zarel_tag_maxmemsize(int tag) {
  return ask(&C_MemManager::TagMaxMemSize, 0ULL, tag);
}

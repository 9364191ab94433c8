#include "support/FailingAllocation.h"

#include <atomic>
#include <cstdlib>

#include <zarel/C_MemManager.h>

#include "memory/allocator.h"

namespace {

std::atomic<long> left{0};
std::atomic<bool> failed{false};
std::atomic<bool> persistent{false};

// Counts one allocation and tells whether it is the one that fails, or a later one of memory that
// stays exhausted: the count then stays at 1.
bool failsNow() {
  if (left.load(std::memory_order_relaxed) <= 0) return false;
  if (--left != 0) return false;
  failed = true;
  if (persistent) left = 1;
  return true;
}

const Zarel::Allocator real = Zarel::allocator();
int living = 0;

void* countedMalloc(size_t size) {
  return failsNow() ? nullptr : real.malloc(size);
}
void* countedCalloc(size_t number, size_t size) {
  return failsNow() ? nullptr : real.calloc(number, size);
}
void* countedRealloc(void* block, size_t size) {
  return failsNow() ? nullptr : real.realloc(block, size);
}

void* counted(size_t size) {
  void* block = failsNow() ? nullptr : std::malloc(size ? size : 1);
  return block;
}

void* countedAligned(size_t size, std::align_val_t alignment) {
  const auto bytes = static_cast<size_t>(alignment);
  void* block = nullptr;
  if (failsNow() || posix_memalign(&block, bytes, size ? size : 1) != 0) return nullptr;
  return block;
}

void* orThrow(void* block) {
  if (!block) throw std::bad_alloc();
  return block;
}

} // namespace

void* operator new(size_t size) {
  return orThrow(counted(size));
}
void* operator new[](size_t size) {
  return orThrow(counted(size));
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return counted(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return counted(size);
}
void* operator new(size_t size, std::align_val_t alignment) {
  return orThrow(countedAligned(size, alignment));
}
void* operator new[](size_t size, std::align_val_t alignment) {
  return orThrow(countedAligned(size, alignment));
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, size_t) noexcept {
  std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete(void* block, size_t, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, size_t, std::align_val_t) noexcept {
  std::free(block);
}

namespace support {

// The memory manager's own tables are no allocations of what is tested.
FailingAllocation::FailingAllocation(long n, Duration duration) {
  getGlobalMemManager();
  persistent = duration == FromThenOn;
  ++living;
  Zarel::allocator() = {countedMalloc, countedCalloc, countedRealloc, real.free};
  failed = false;
  left = n;
}

FailingAllocation::~FailingAllocation() {
  left = 0;
  if (--living == 0) Zarel::allocator() = real;
}

bool FailingAllocation::happened() {
  return failed;
}

Unharmed::Unharmed() : _left(left.exchange(0)) {}
Unharmed::~Unharmed() {
  left = _left;
}

} // namespace support

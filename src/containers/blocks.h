// How a run of values is cut into blocks, and the work memory for one.
#ifndef ZAREL_CONTAINERS_BLOCKS_H
#define ZAREL_CONTAINERS_BLOCKS_H

#include <algorithm>
#include <climits>
#include <cstddef>

#include <zarel/zarelmem.h>

#include "runtime/fail.h"

namespace Zarel {

/** Values that a mixed path touches at one time. */
constexpr int kBlockSize = 4096;

/** `count` blocks of `length` values, but for the last of `last` values. */
struct BlockRule {
  long long count;
  long long length;
  long long last;

  BlockRule(long long n, long long size) {
    count = n / size + (n % size != 0 ? 1 : 0);
    if (n / size == 0) count = 1;
    length = count == 1 ? n : size;
    last = n - length * (count - 1);
  }
};

/** Calls visit(first, length) for the blocks of `n` values; a block without values is left out. */
template <class Visit>
void forEachBlock(long long n, long long size, Visit visit) {
  const BlockRule rule(n, size);
  for (long long b = 0; b < rule.count; ++b) {
    const long long length = b + 1 == rule.count ? rule.last : rule.length;
    if (length > 0) visit(b * rule.length, length);
  }
}

/** The same for blocks of the size that the mixed paths work in. */
template <class Visit>
void forEachBlock(long long n, Visit visit) {
  forEachBlock(n, kBlockSize, visit);
}

/** Calls visit(first, length) for pieces that a routine with `int` counts takes; once at least. */
template <class Visit>
void forEachIntPiece(long long n, Visit visit) {
  long long done = 0;
  do {
    const long long length = std::clamp<long long>(n - done, INT_MIN, INT_MAX);
    visit(done, static_cast<int>(length));
    done += length;
  } while (done < n);
}

/** The bytes of `n` values; throws 1001 for what no block can hold. */
inline std::size_t bytesOf(long long n, std::size_t width) {
  if (n < 0 || static_cast<unsigned long long>(n) > PTRDIFF_MAX / width) fail(1001);
  return static_cast<std::size_t>(n) * width;
}

/** Cleared values of the library's allocator. Throws 1001. */
template <class T>
T* newValues(long long n) {
  bytesOf(n, sizeof(T));
  void* block =
      zarelmem_calloc(static_cast<std::size_t>(n), sizeof(T), "values", 1, __FILE__, __LINE__);
  if (block == nullptr) fail(1001);
  return static_cast<T*>(block);
}

/** The block, or null, sized to `n` values. Throws 1001 and leaves the block then. */
template <class T>
T* resizedValues(T* values, long long n) {
  void* block = zarelmem_realloc(values, bytesOf(n, sizeof(T)), "values", 1, __FILE__, __LINE__);
  if (block == nullptr) fail(1001);
  return static_cast<T*>(block);
}

inline void freeValues(void* values) {
  zarelmem_free(values, __FILE__, __LINE__);
}

/** Owns a block of the library's allocator for the time of one function. */
template <class T>
class WorkBlock {
public:
  explicit WorkBlock(T* block) : block_(block) {}
  WorkBlock(const WorkBlock&) = delete;
  WorkBlock& operator=(const WorkBlock&) = delete;
  ~WorkBlock() { freeValues(block_); }
  T* get() const { return block_; }
  /** Takes what a storage gave for the block, which it may have moved. */
  void replace(T* block) { block_ = block; }

private:
  T* block_;
};

} // namespace Zarel

#endif

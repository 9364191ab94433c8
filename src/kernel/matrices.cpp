#include <algorithm>
#include <cstdint>
#include <limits>

#include <zarel/lm_mat.h>
#include <zarel/zarelmem.h>

#include "kernel/lists.h"
#include "kernel/record.h"

namespace Zarel::kernel {

namespace {

// The allocated extent of a matrix.
struct Extent {
  unsigned rows;
  unsigned stride;
  std::uint64_t size;
};

template <class M>
long bytes(const M* A) {
  return static_cast<long>(sizeof(M) + std::size_t{A->max_m} * sizeof(EntryOf<M>*) +
                           std::size_t{A->max_size} * sizeof(EntryOf<M>));
}

bool fits(std::uint64_t size) {
  return size <= std::numeric_limits<unsigned>::max();
}

// The extent that holds m x n values. It never shrinks the block; a stride that has to grow turns
// the room that the block has into rows of the new length.
template <class M>
Extent extentFor(const M* A, unsigned m, unsigned n) {
  Extent to = {A->max_m, A->max_n, A->max_size};
  if (n > to.stride) {
    to.stride = n;
    to.rows = std::max<unsigned>(m, static_cast<unsigned>(to.size / n));
  }
  to.rows = std::max(to.rows, m);
  to.size = std::max<std::uint64_t>(to.size, std::uint64_t{to.rows} * to.stride);
  return to;
}

template <class M>
bool growRows(M* A, const char* tag, int flag, unsigned count) {
  if (count <= A->max_m && A->me) return true;
  void* const block = zarelmem_realloc(A->me, std::size_t{count} * sizeof(EntryOf<M>*), tag, flag,
                                       __FILE__, __LINE__);
  if (!block) return false;
  A->me = static_cast<EntryOf<M>**>(block);
  return true;
}

template <class M>
void pointRows(M* A) {
  for (unsigned i = 0; i < A->max_m; ++i)
    A->me[i] = A->base + std::size_t{i} * A->max_n;
}

template <class M>
bool growBlock(M* A, const char* tag, int flag, std::uint64_t size) {
  if (size <= A->max_size && A->base) return true;
  void* const block = zarelmem_realloc(A->base, static_cast<std::size_t>(size) * sizeof(EntryOf<M>),
                                       tag, flag, __FILE__, __LINE__);
  if (!block) return false;
  A->base = static_cast<EntryOf<M>*>(block);
  A->max_size = static_cast<unsigned>(size);
  return true;
}

// Moves the first `m` rows of `n` values to a longer stride, the last row first.
template <class M>
void spreadRows(M* A, unsigned m, unsigned n, unsigned from, unsigned to) {
  if (from == to) return;
  for (unsigned i = m; i-- > 0;) {
    EntryOf<M>* const old = A->base + std::size_t{i} * from;
    std::copy_backward(old, old + n, A->base + std::size_t{i} * to + n);
  }
}

// Clears what m x n values have beyond the old ones.
template <class M>
void clearAdded(M* A, unsigned m, unsigned n) {
  for (unsigned i = 0; i < m; ++i)
    std::fill(A->me[i] + (i < A->m ? std::min(A->n, n) : 0), A->me[i] + n, EntryOf<M>());
}

// Allocates for the shape; on failure the matrix still has its old values at their places.
template <class M>
bool allocateFor(M* A, const char* tag, int flag, unsigned m, unsigned n) {
  const Extent to = extentFor(A, m, n);
  const unsigned oldStride = A->max_n;
  if (!fits(to.size) || !growRows(A, tag, flag, to.rows)) return false;
  if (!growBlock(A, tag, flag, to.size)) return false;
  A->max_m = to.rows;
  A->max_n = to.stride;
  spreadRows(A, std::min(A->m, m), A->n, oldStride, to.stride);
  pointRows(A);
  return true;
}

template <class M>
Failed discard(const Call& call, M* A, const char* file = __builtin_FILE(),
               int line = __builtin_LINE()) {
  zarelmem_free(A->base, file, line);
  zarelmem_free(A->me, file, line);
  zarelmem_free(A, file, line);
  return call.fail(3, file, line);
}

} // namespace

template <class M>
M* createMatrix(const Call& call, const char* tag, int flag, int m, int n) {
  using T = EntryOf<M>;
  if (m < 0 || n < 0) return call.fail(20);
  const unsigned maxM = std::max(m, 1), maxN = std::max(n, 1);
  const std::uint64_t size = std::uint64_t{maxM} * maxN;
  if (!fits(size)) return call.fail(3);
  auto* const A = static_cast<M*>(zarelmem_calloc(1, sizeof(M), tag, flag, __FILE__, __LINE__));
  if (!A) return call.fail(3);
  A->me = static_cast<T**>(zarelmem_calloc(maxM, sizeof(T*), tag, flag, __FILE__, __LINE__));
  if (!A->me) return discard(call, A);
  A->base = static_cast<T*>(
      zarelmem_calloc(static_cast<std::size_t>(size), sizeof(T), tag, flag, __FILE__, __LINE__));
  if (!A->base) return discard(call, A);
  A->m = static_cast<unsigned>(m);
  A->n = static_cast<unsigned>(n);
  A->max_m = maxM;
  A->max_n = maxN;
  A->max_size = static_cast<unsigned>(size);
  pointRows(A);
  account(MatrixTraits<M>::type, 0, bytes(A), 1);
  return A;
}

template <class M>
M* resizeMatrix(const Call& call, const char* tag, int flag, M* A, int m, int n) {
  if (m < 0 || n < 0) return call.fail(20);
  const unsigned newM = std::max(m, 1), newN = std::max(n, 1); // resizing to 0 gives 1
  if (!A) return createMatrix<M>(call, tag, flag, static_cast<int>(newM), static_cast<int>(newN));
  if (A->m == newM && A->n == newN) return A;
  if (A->max_m == 0 || A->max_n == 0)
    return createMatrix<M>(call, tag, flag, static_cast<int>(newM), static_cast<int>(newN));
  if (newM > A->max_m || newN > A->max_n) {
    const long before = bytes(A);
    const bool allocated = allocateFor(A, tag, flag, newM, newN);
    account(MatrixTraits<M>::type, before, bytes(A), 0);
    if (!allocated) {
      pointRows(A);
      return call.fail(3);
    }
  }
  clearAdded(A, newM, newN);
  A->m = newM;
  A->n = newN;
  return A;
}

template <class M>
int freeMatrix(M* A) {
  if (!A) return -1;
  account(MatrixTraits<M>::type, bytes(A), 0, -1);
  zarelmem_free(A->base, __FILE__, __LINE__);
  zarelmem_free(A->me, __FILE__, __LINE__);
  zarelmem_free(A, __FILE__, __LINE__);
  return 0;
}

template <class M>
M* outputMatrix(const Call& call, M* out, int m, int n) {
  if (out && rows(out) == m && columns(out) == n) return out;
  const Call resizing(MatrixTraits<M>::resizeTag, call);
  M* const sized = resizeMatrix(resizing, call.tag(), allocationFlag(), out, m, n);
  if (!sized) return call.pass();
  return sized;
}

template <class M>
M* exactMatrix(const Call& call, M* out, int m, int n) {
  M* const sized = outputMatrix(call, out, m, n);
  if (!sized) return nullptr;
  sized->m = static_cast<unsigned>(m);
  sized->n = static_cast<unsigned>(n);
  return sized;
}

#define LM_INSTANTIATE(M)                                                                          \
  template M* createMatrix<M>(const Call&, const char*, int, int, int);                            \
  template M* resizeMatrix<M>(const Call&, const char*, int, M*, int, int);                        \
  template int freeMatrix<M>(M*);                                                                  \
  template M* outputMatrix<M>(const Call&, M*, int, int);                                          \
  template M* exactMatrix<M>(const Call&, M*, int, int);
LM_INSTANTIATE(MAT)
LM_INSTANTIATE(ZMAT)
#undef LM_INSTANTIATE

} // namespace Zarel::kernel

using namespace Zarel::kernel;

#define LM_MATRIX_FAMILY(M, p)                                                                     \
  M* LM_##p##_get(LM_TAG, int m, int n, LM_ARGS) {                                                 \
    LM_ENTER(LM_##p##_get);                                                                        \
    return createMatrix<M>(call, tag, flag, m, n);                                                 \
  }                                                                                                \
  M* LM_##p##_resize(LM_TAG, M* A, int m, int n, LM_ARGS) {                                        \
    LM_ENTER(LM_##p##_resize);                                                                     \
    return resizeMatrix(call, tag, flag, A, m, n);                                                 \
  }                                                                                                \
  int LM_##p##_get_vars(LM_TAG, int m, int n, LM_ARGS, M** first, ...) {                           \
    LM_ENTER(LM_##p##_get_vars);                                                                   \
    LM_FOR_LIST(M, first, createMatrix<M>(call, tag, flag, m, n))                                  \
  }                                                                                                \
  int LM_##p##_resize_vars(LM_TAG, int m, int n, LM_ARGS, M** first, ...) {                        \
    LM_ENTER(LM_##p##_resize_vars);                                                                \
    LM_FOR_LIST(M, first, resizeMatrix(call, tag, flag, *entry, m, n))                             \
  }                                                                                                \
  int p##_free(M* A) {                                                                             \
    return freeMatrix(A);                                                                          \
  }                                                                                                \
  int p##_free_vars(M** first, ...) {                                                              \
    LM_FREE_LIST(M, first, freeMatrix)                                                             \
  }

LM_MATRIX_FAMILY(MAT, m)
LM_MATRIX_FAMILY(ZMAT, zm)

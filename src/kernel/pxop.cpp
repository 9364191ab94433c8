// Permutations, and their application to vectors and matrices.
#include <algorithm>
#include <utility>

#include <zarel/lm_perm.h>

#include "kernel/permutation.h"
#include "kernel/record.h"

namespace Zarel::kernel {

namespace {

bool inRange(const PERM* px) {
  return std::all_of(px->pe, px->pe + px->size, [px](unsigned p) { return p < px->size; });
}

// Marks the entries that occur; true if all do.
bool isBijective(const PERM* px, unsigned char* seen) {
  std::fill_n(seen, px->size, static_cast<unsigned char>(0));
  for (unsigned i = 0; i < px->size; ++i) {
    if (seen[px->pe[i]]) return false;
    seen[px->pe[i]] = 1;
  }
  return true;
}

// Tests that px has an inverse; false after reporting that it has none.
bool checkBijective(const Call& call, const PERM* px) {
  if (!inRange(px)) {
    call.fail(2);
    return false;
  }
  const Scratch<unsigned char> seen(call, length(px));
  if (!seen.get()) return false;
  if (isBijective(px, seen.get())) return true;
  call.fail(2);
  return false;
}

// to[i] := from[px[i]], or to[px[i]] := from[i]. The arrays are different ones.
template <class T>
void gather(const PERM* px, const T* from, T* to) {
  for (unsigned i = 0; i < px->size; ++i)
    to[i] = from[px->pe[i]];
}
template <class T>
void scatter(const PERM* px, const T* from, T* to) {
  for (unsigned i = 0; i < px->size; ++i)
    to[px->pe[i]] = from[i];
}

template <class V>
V* spread(const Call& call, const PERM* px, const V* x, V* out,
          void (*move)(const PERM*, const ValueOf<V>*, ValueOf<V>*)) {
  if (out != x) {
    LM_OUTPUT_VECTOR(out, length(x));
    move(px, values(x), values(out));
    return out;
  }
  const Scratch<ValueOf<V>> old(call, length(x));
  if (!old.get()) return nullptr;
  std::copy_n(values(x), length(x), old.get());
  move(px, old.get(), values(out));
  return out;
}

} // namespace

template <class V>
V* permuted(const Call& call, const PERM* px, const V* x, V* out) {
  LM_NEED(px && x);
  if (length(px) != length(x)) return call.fail(1);
  if (!inRange(px)) return call.fail(2);
  return spread(call, px, x, out, gather<ValueOf<V>>);
}

template <class V>
V* unpermuted(const Call& call, const PERM* px, const V* x, V* out) {
  LM_NEED(px && x);
  if (length(px) != length(x)) return call.fail(1);
  if (!checkBijective(call, px)) return nullptr;
  return spread(call, px, x, out, scatter<ValueOf<V>>);
}

template VEC* permuted<VEC>(const Call&, const PERM*, const VEC*, VEC*);
template ZVEC* permuted<ZVEC>(const Call&, const PERM*, const ZVEC*, ZVEC*);
template VEC* unpermuted<VEC>(const Call&, const PERM*, const VEC*, VEC*);
template ZVEC* unpermuted<ZVEC>(const Call&, const PERM*, const ZVEC*, ZVEC*);

namespace {

PERM* inverted(const Call& call, const PERM* px, PERM* out) {
  if (!checkBijective(call, px)) return nullptr;
  const Scratch<unsigned> inverse(call, length(px));
  if (!inverse.get()) return nullptr;
  for (unsigned i = 0; i < px->size; ++i)
    inverse.get()[px->pe[i]] = i;
  const int n = length(px);
  out = exactVector(call, out, n);
  if (out) std::copy_n(inverse.get(), n, out->pe);
  return out;
}

// The sign from the cycles: one of length l is l - 1 exchanges.
int signOf(const PERM* px, unsigned char* seen) {
  std::fill_n(seen, px->size, static_cast<unsigned char>(0));
  unsigned exchanges = 0;
  for (unsigned start = 0; start < px->size; ++start) {
    if (seen[start]) continue;
    unsigned entries = 0;
    for (unsigned i = start; !seen[i]; i = px->pe[i], ++entries)
      seen[i] = 1;
    exchanges += entries - 1;
  }
  return exchanges % 2 == 0 ? 1 : -1;
}

// Each row fetches its entries from a copy of itself.
MAT* permutedColumns(const Call& call, const PERM* px, const MAT* A, MAT* out) {
  const Scratch<double> old(call, columns(A));
  if (!old.get()) return nullptr;
  LM_OUTPUT_MATRIX(out, rows(A), columns(A));
  for (int i = 0; i < rows(A); ++i) {
    std::copy_n(A->me[i], columns(A), old.get());
    gather(px, old.get(), out->me[i]);
  }
  return out;
}

void gatherRows(const PERM* px, const MAT* A, MAT* out) {
  for (int i = 0; i < rows(A); ++i)
    std::copy_n(A->me[px->pe[i]], columns(A), out->me[i]);
}

MAT* permutedRows(const Call& call, const PERM* px, const MAT* A, MAT* out) {
  if (out != A) {
    LM_OUTPUT_MATRIX(out, rows(A), columns(A));
    gatherRows(px, A, out);
    return out;
  }
  MAT* const old = exactMatrix<MAT>(call, nullptr, rows(A), columns(A));
  if (!old) return nullptr;
  for (int i = 0; i < rows(A); ++i)
    std::copy_n(A->me[i], columns(A), old->me[i]);
  gatherRows(px, old, out);
  freeMatrix(old);
  return out;
}

} // namespace

} // namespace Zarel::kernel

using namespace Zarel::kernel;

PERM* LM_px_ident(PERM* px, LM_ARGS) {
  LM_ENTER(LM_px_ident);
  LM_NEED(px);
  for (unsigned i = 0; i < px->size; ++i)
    px->pe[i] = i;
  return px;
}

PERM* LM_px_inv(const PERM* px, PERM* out, LM_ARGS) {
  LM_ENTER(LM_px_inv);
  LM_NEED(px);
  return inverted(call, px, out);
}

PERM* LM_px_mlt(const PERM* p, const PERM* q, PERM* out, LM_ARGS) {
  LM_ENTER(LM_px_mlt);
  LM_NEED(p && q);
  if (p->size != q->size) return call.fail(1);
  if (out == p || out == q) return call.fail(12);
  if (!inRange(p) || !inRange(q)) return call.fail(2);
  LM_OUTPUT_VECTOR(out, length(p));
  gather(q, p->pe, out->pe);
  return out;
}

PERM* LM_px_transp(PERM* px, int i, int j, LM_ARGS) {
  LM_ENTER(LM_px_transp);
  LM_NEED(px);
  if (i < 0 || j < 0 || i >= length(px) || j >= length(px)) return call.fail(2);
  std::swap(px->pe[i], px->pe[j]);
  return px;
}

int LM_px_sign(const PERM* px, LM_ARGS) {
  LM_ENTER(LM_px_sign);
  LM_NEED(px);
  if (!checkBijective(call, px)) return 0;
  const Scratch<unsigned char> seen(call, length(px));
  return seen.get() ? signOf(px, seen.get()) : 0;
}

MAT* LM_px_rows(const PERM* px, const MAT* A, MAT* out, LM_ARGS) {
  LM_ENTER(LM_px_rows);
  LM_NEED(px && A);
  if (px->size != A->m) return call.fail(1);
  if (!inRange(px)) return call.fail(2);
  return permutedRows(call, px, A, out);
}

MAT* LM_px_cols(const PERM* px, const MAT* A, MAT* out, LM_ARGS) {
  LM_ENTER(LM_px_cols);
  LM_NEED(px && A);
  if (px->size != A->n) return call.fail(1);
  if (!inRange(px)) return call.fail(2);
  return permutedColumns(call, px, A, out);
}

#define LM_DEFINE_PERMUTE(name, V, body)                                                           \
  V* name(const PERM* px, const V* x, V* out, LM_ARGS) {                                           \
    LM_ENTER(name);                                                                                \
    return body(call, px, x, out);                                                                 \
  }
LM_DEFINE_PERMUTE(LM_px_vec, VEC, permuted)
LM_DEFINE_PERMUTE(LM_px_zvec, ZVEC, permuted)
LM_DEFINE_PERMUTE(LM_pxinv_vec, VEC, unpermuted)
LM_DEFINE_PERMUTE(LM_pxinv_zvec, ZVEC, unpermuted)

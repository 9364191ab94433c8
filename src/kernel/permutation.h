// Permutations of vectors, for the solvers.
#ifndef ZAREL_KERNEL_PERMUTATION_H
#define ZAREL_KERNEL_PERMUTATION_H

#include "kernel/call.h"
#include "kernel/record.h"

namespace Zarel::kernel {

// out[i] := x[px[i]].
template <class V>
V* permuted(const Call& call, const PERM* px, const V* x, V* out);

// out[px[i]] := x[i].
template <class V>
V* unpermuted(const Call& call, const PERM* px, const V* x, V* out);

} // namespace Zarel::kernel

#endif

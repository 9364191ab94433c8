// The LU factorisation behind lm_solve.h.
#ifndef ZAREL_KERNEL_LUFACTOR_H
#define ZAREL_KERNEL_LUFACTOR_H

#include "kernel/record.h"

namespace Zarel::kernel {

// Factors A in place, as `LM_LUfactor` tells; `pivot` has the size of its rows. Null after a
// failure.
template <class M>
M* factor(const Call& call, M* A, PERM* pivot);

} // namespace Zarel::kernel

#endif

/**
 * @file blas_core.h
 * The choice of OpenBLAS's kernels when the library is loaded.
 */
#ifndef ZAREL_NUMERICS_BLAS_CORE_H
#define ZAREL_NUMERICS_BLAS_CORE_H

#include <functional>
#include <string_view>

#include "numerics/cpu_features.h"

namespace Zarel::numerics {

/** The kernels to change to: the best that `offered` allows and `isBuilt` knows, if they are of a
 * higher level than `current`; empty if `current` should stay. A core whose name is not known here
 * stays: it is newer than this table. */
std::string_view betterCore(std::string_view current, VectorLevel offered,
                            const std::function<bool(std::string_view)>& isBuilt);

} // namespace Zarel::numerics

#endif

/**
 * @file keep_blas_core.h
 * Included by every source that calls the BLAS, so that a program which links the static library
 * gets the choice of kernels (blas_core.cpp) with it: nothing else there refers to that object.
 */
#ifndef ZAREL_NUMERICS_KEEP_BLAS_CORE_H
#define ZAREL_NUMERICS_KEEP_BLAS_CORE_H

namespace Zarel::numerics {
extern const char blasCoreIsChosen;
namespace {
[[gnu::used]] const char* const keptBlasCore = &blasCoreIsChosen;
}
} // namespace Zarel::numerics

#endif

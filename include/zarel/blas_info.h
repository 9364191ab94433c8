/**
 * @file blas_info.h
 * Which BLAS the library runs on. C and C++.
 *
 * An OpenBLAS with kernels for many processors picks one set when it is loaded. One that is older
 * than the processor does not know it and may fall back to kernels that reach a fraction of the
 * machine. So when this library is loaded, it has OpenBLAS choose again if all of this holds:
 *
 * - the BLAS in the process is OpenBLAS and can choose at run time;
 * - the variable `OPENBLAS_CORETYPE` is not set: a user's choice stands;
 * - the variable `ZAREL_BLAS_CORE` is not `keep`;
 * - the kernels in use are of an older instruction set than the processor and the operating system
 *   offer (SSE, AVX, AVX2 with FMA, AVX-512), and the better ones are in this OpenBLAS;
 * - no thread runs but the one that loads the library and those of OpenBLAS itself.
 *
 * The environment is afterwards as it was. Any other BLAS is left alone.
 *
 * The texts live as long as the process; none is null. Threads: any.
 */
#ifndef ZAREL_BLAS_INFO_H
#define ZAREL_BLAS_INFO_H

#include <zarel/export.h>

ZAREL_BEGIN_C

/** The name of the BLAS in the process: "OpenBLAS", or "BLAS" for one that does not tell. */
ZAREL_API const char* zarel_blas_name(void);

/** Its version, such as "0.3.21"; empty when it does not tell. */
ZAREL_API const char* zarel_blas_version(void);

/** What it says about its build, in one line; empty when it does not tell. */
ZAREL_API const char* zarel_blas_config(void);

/** The processor whose kernels are in use, such as "SkylakeX"; empty when it does not tell. */
ZAREL_API const char* zarel_blas_core(void);

/** The processor whose kernels the BLAS had picked by itself; empty when it does not tell. */
ZAREL_API const char* zarel_blas_initial_core(void);

/** 1 when this library had the BLAS choose again, else 0. */
ZAREL_API int zarel_blas_reselected(void);

ZAREL_END_C

#endif

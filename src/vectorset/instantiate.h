// The scalars of the vector sets, once: every source file that holds bodies of C_VSTRUCT ends with
// this macro.
#ifndef ZAREL_VECTORSET_INSTANTIATE_H
#define ZAREL_VECTORSET_INSTANTIATE_H

#include <zarel/C_vstruct.h>

#define ZAREL_VECTORSET_CLASS(T) template class Zarel::C_VSTRUCT<T>;
#define ZAREL_INSTANTIATE_VECTORSETS ZAREL_MATRIX_SCALARS(ZAREL_VECTORSET_CLASS)

#endif

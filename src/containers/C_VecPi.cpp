#include "containers/C_VecPi.tpp"

#define ZAREL_INSTANTIATE(T, I) template class C_VecPi<T, I, C_PtrInCore<T, I>>;
ZAREL_STORAGE_SCALARS(ZAREL_INSTANTIATE)

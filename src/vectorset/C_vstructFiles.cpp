// Vector sets: files.
#include <zarel/C_vstruct.h>

#include "vectorset/instantiate.h"
#include "vectorset/steps.h"

namespace Zarel {

template <class T>
int C_VSTRUCT<T>::Write(FILE*) {
  fail(NotForScalar);
}

template <class T>
int C_VSTRUCT<T>::Read(FILE*) {
  fail(NotForScalar);
}

} // namespace Zarel

ZAREL_INSTANTIATE_VECTORSETS

// The vectors of a file-resident set.
#ifndef ZAREL_VECTORSET_FILEVECTORS_H
#define ZAREL_VECTORSET_FILEVECTORS_H

#include <zarel/C_PtrOnFile.h>

#include "vectorset/steps.h"

namespace Zarel {

template <class T>
using FileVector = C_VecPi<T, int, C_PtrOnFile<T, int>>;

/** The entry of a file-resident set. */
template <class T>
FileVector<T>& onFile(C_Vec<T, int>* vector) {
  auto* const found = dynamic_cast<FileVector<T>*>(vector);
  if (found == nullptr) fail(OutOfRange);
  return *found;
}

} // namespace Zarel

#endif

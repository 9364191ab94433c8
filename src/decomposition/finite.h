// The search for the first vector that holds a value that is no finite number.
#ifndef ZAREL_DECOMPOSITION_FINITE_H
#define ZAREL_DECOMPOSITION_FINITE_H

#include "containers/finite.h"

namespace Zarel::decomposition {

/** The first of `columns` columns, one behind the other, that has a value that is not finite; -1 if
 * there is none. */
template <class T>
int firstNotFinite(const T* values, int rows, int columns) {
  for (int j = 0; j < columns; ++j)
    if (!allFinite(values + static_cast<long long>(j) * rows, rows)) return j;
  return -1;
}

} // namespace Zarel::decomposition

#endif

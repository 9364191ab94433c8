// The text that general and symmetric matrices share.
#ifndef ZAREL_CONTAINERS_MATRIXTEXT_H
#define ZAREL_CONTAINERS_MATRIXTEXT_H

#include <cstdio>

#include "containers/scalars.h"

namespace Zarel {

/** Writes all values, one line a row, each value followed by a blank of its own. */
template <class Matrix>
void writeMatlabRows(FILE* file, Matrix& matrix) {
  for (int i = 0; i < matrix.NbRow(); ++i) {
    for (int j = 0; j < matrix.NbCol(); ++j) {
      printScalar(file, matrix.GetVal(i, j));
      std::fputc(' ', file);
    }
    std::fputc('\n', file);
  }
}

} // namespace Zarel

#endif

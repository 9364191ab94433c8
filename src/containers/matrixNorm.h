// Norms that general and symmetric matrices share.
#ifndef ZAREL_CONTAINERS_MATRIXNORM_H
#define ZAREL_CONTAINERS_MATRIXNORM_H

#include <algorithm>

#include <zarel/C_Mat.h>
#include <zarel/C_VecPi.h>

#include "containers/scalars.h"
#include "runtime/fail.h"

namespace Zarel {

/** The spectral norm by the installed estimate; 0 for an empty matrix. */
template <class T>
double spectralNorm(C_Mat<T>& matrix);

/**
 * The estimate that is installed at first. A higher room defines it, by power iteration; naming it
 * here is what links it into every program that can ask for the norm.
 */
template <class T>
double powerNorm2(C_Mat<T>& matrix);

/** The largest row sum of moduli, by a walk over the rows. */
template <class T>
double walkedRowSum(C_Mat<T>& matrix) {
  double largest = 0;
  for (int row = matrix.NbCol() < 1 ? -1 : matrix.Row(0); row != -1; row = matrix.NextRow()) {
    double sum = 0;
    T value(0);
    for (int column = matrix.FirstCol(value); column != -1; column = matrix.NextCol(value))
      sum += modulus(value);
    largest = std::max(largest, sum);
  }
  return largest;
}

/** The same of a symmetric matrix: each stored value also counts for the row of its mirror. */
template <class T>
double mirroredRowSum(C_Mat<T>& matrix) {
  C_VecPi<double, int, C_PtrInCore<double, int>> sums(matrix.NbRow());
  for (int row = matrix.Row(0); row != -1; row = matrix.NextRow()) {
    T value(0);
    for (int column = matrix.FirstCol(value); column < row; column = matrix.NextCol(value)) {
      sums[row] += modulus(value);
      sums[column] += modulus(value);
    }
    sums[row] += modulus(value);
  }
  double largest = 0;
  for (int row = 0; row < matrix.NbRow(); ++row)
    largest = std::max(largest, sums[row]);
  return largest;
}

/** The largest column sum of moduli, over GetCol. */
template <class T>
double columnSum(C_Mat<T>& matrix) {
  double largest = 0;
  C_VecPi<T, int, C_PtrInCore<T, int>> column;
  for (int j = 0; j < matrix.NbCol(); ++j) {
    matrix.GetCol(j, column);
    largest = std::max(largest, column.Nrm(E_Nrm1));
  }
  return largest;
}

template <class T>
double matrixNorm(C_Mat<T>& matrix, E_NrmType kind) {
  switch (kind) {
  case E_NrmInf:
    return matrix.Sym() ? mirroredRowSum(matrix) : walkedRowSum(matrix);
  case E_Nrm1:
    return columnSum(matrix);
  case E_Nrm2:
    return spectralNorm(matrix);
  }
  fail(3);
}

} // namespace Zarel

#endif

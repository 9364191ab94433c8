// The vocabulary of the decomposition tests: sets with a spectrum that is known, and what a
// decomposition must hold.
#ifndef ZAREL_TESTS_DECOMPOSITION_SETS_H
#define ZAREL_TESTS_DECOMPOSITION_SETS_H

#include <algorithm>
#include <cmath>
#include <vector>

#include <zarel/C_AlgoSvd.h>
#include <zarel/C_vstruct.h>

#include "containers/support.h"

namespace sets {

using Zarel::C_VSTRUCT;

/** How the vectors of a set are kept. */
enum Mode { inCore = 1, onFile = 2 };

template <class T>
C_MatMGe<T> randomMatrix(int rows, int columns, Noise& noise) {
  C_MatMGe<T> m(rows, columns);
  for (int j = 0; j < columns; ++j)
    for (int i = 0; i < rows; ++i)
      m(i, j) = noise.value<T>();
  return m;
}

/** Makes the columns orthonormal, one after the other, each twice. */
template <class T>
void orthonormalise(C_MatMGe<T>& m) {
  for (int j = 0; j < m.NbCol(); ++j) {
    VecOf<T> v(m.NbRow(), m[j]);
    for (int k = 0; k < 2 * j; ++k) {
      VecOf<T> earlier(m.NbRow(), m[k % j]);
      earlier.Axpy(v, -(earlier * v));
    }
    v.Normalize(E_Nrm2, nullptr);
  }
}

/** A matrix with the given singular values: orthonormal times diagonal times unitary. */
template <class T>
C_MatMGe<T> withSpectrum(int rows, const std::vector<double>& s, unsigned long skip = 0) {
  const int n = static_cast<int>(s.size());
  Noise noise;
  while (skip-- > 0)
    noise.next();
  C_MatMGe<T> u = randomMatrix<T>(rows, n, noise), v = randomMatrix<T>(n, n, noise), a;
  orthonormalise(u);
  orthonormalise(v);
  for (int j = 0; j < n; ++j)
    VecOf<T>(rows, u[j]).SMlt(scalar<T>(s[static_cast<std::size_t>(j)]), 0, -1);
  a.MM('N', 'C', T(1), u, v, T(0));
  return a;
}

/** Gives a set the columns of a matrix. */
template <class T>
void fillFrom(C_VSTRUCT<T>& set, C_MatMGe<T>& m) {
  for (int j = 0; j < m.NbCol(); ++j) {
    VecOf<T> column(m.NbRow(), m[j]);
    set.AddVector(column, j, false, 0, nullptr);
  }
}

template <class T>
C_MatMGe<T> matrixOf(C_VSTRUCT<T>& set) {
  C_MatMGe<T> m(set.getDim1(), set.getDim());
  for (int j = 0; j < set.getDim(); ++j) {
    const auto id = static_cast<unsigned>(j);
    set.MapBlock(id, id);
    for (int i = 0; i < set.getDim1(); ++i)
      m(i, j) = (*set[j])[i];
  }
  return m;
}

template <class T>
double largestDifference(C_MatMGe<T>& a, C_MatMGe<T>& b) {
  double largest = 0;
  EXPECT_EQ(a.NbRow(), b.NbRow());
  EXPECT_EQ(a.NbCol(), b.NbCol());
  for (int j = 0; j < std::min(a.NbCol(), b.NbCol()); ++j)
    for (int i = 0; i < std::min(a.NbRow(), b.NbRow()); ++i)
      largest = std::max(largest, std::abs(wide(a(i, j)) - wide(b(i, j))));
  return largest;
}

/** How far U^H U is from the identity. */
template <class T>
double departure(C_MatMGe<T>& u) {
  C_MatMGe<T> product, identity(u.NbCol(), u.NbCol());
  product.MM('C', 'N', T(1), u, u, T(0));
  for (int i = 0; i < u.NbCol(); ++i)
    identity(i, i) = T(1);
  return largestDifference(product, identity);
}

/** The largest difference between A and U M^T, for the coefficients M of a run. */
template <class T>
double reconstructionError(C_AlgoSvd<T>& svd, C_MatMGe<T>& u, C_MatMGe<T>& a) {
  C_MatMGe<T> coefficients, product;
  EXPECT_EQ(svd.GetLinearComb(coefficients), 0);
  product.MM('N', 'T', T(1), u, coefficients, T(0));
  return largestDifference(product, a);
}

/** The largest difference between U and A M, for the inverse coefficients M of a run. */
template <class T>
double baseError(C_AlgoSvd<T>& svd, C_MatMGe<T>& u, C_MatMGe<T>& a) {
  C_MatMGe<T> coefficients, product;
  EXPECT_EQ(svd.GetLinearCombFromVecToBase(coefficients), 0);
  product.MM('N', 'N', T(1), a, coefficients, T(0));
  return largestDifference(product, u);
}

template <class T>
std::vector<double> valuesOf(C_AlgoSvd<T>& svd) {
  VecOf<T> values;
  EXPECT_EQ(svd.GetSingularValues(values), 0);
  std::vector<double> result;
  for (int i = 0; i < values.Dim(); ++i)
    result.push_back(wide(values[i]).real());
  return result;
}

template <class T>
std::vector<double> errorsOf(C_AlgoSvd<T>& svd) {
  VecOf<T> errors;
  EXPECT_EQ(svd.GetTabErr(errors), 0);
  std::vector<double> result;
  for (int i = 0; i < errors.Dim(); ++i)
    result.push_back(wide(errors[i]).real());
  return result;
}

/** s[0], s[0] * ratio, ... */
inline std::vector<double> graded(int count, double first, double ratio) {
  std::vector<double> s;
  for (int i = 0; i < count; ++i, first *= ratio)
    s.push_back(first);
  return s;
}

} // namespace sets

#endif

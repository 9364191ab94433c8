// Norms of matrices.
#include <algorithm>
#include <cmath>
#include <numeric>

#include <zarel/lm_mat.h>

#include "kernel/blas.h"
#include "kernel/complex.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

template <class M>
double rowSum(const M* A, int i) {
  double sum = 0.0;
  for (int j = 0; j < columns(A); ++j)
    sum += modulus(A->me[i][j]);
  return sum;
}

// Unlike std::max it hands a NaN on.
double larger(double a, double b) {
  return b > a || std::isnan(b) ? b : a;
}

template <class M>
double largestRowSum(const Call& call, const M* A) {
  LM_NEED(A);
  double largest = 0.0;
  for (int i = 0; i < rows(A); ++i)
    largest = larger(largest, rowSum(A, i));
  return largest;
}

// Columns are summed in groups, so that the matrix is read along its rows without a work vector.
enum { GroupLength = 64 };

template <class M>
double largestColumnSum(const Call& call, const M* A) {
  LM_NEED(A);
  double largest = 0.0;
  for (int j0 = 0; j0 < columns(A); j0 += GroupLength) {
    const int count = std::min<int>(GroupLength, columns(A) - j0);
    double sums[GroupLength] = {};
    for (int i = 0; i < rows(A); ++i)
      for (int j = 0; j < count; ++j)
        sums[j] += modulus(A->me[i][j0 + j]);
    largest = std::accumulate(sums, sums + count, largest, larger);
  }
  return largest;
}

template <class M>
double frobenius(const Call& call, const M* A) {
  LM_NEED(A);
  double norm = 0.0;
  for (int i = 0; i < rows(A); ++i)
    norm = std::hypot(norm, blas::nrm2(columns(A), A->me[i]));
  return norm;
}

} // namespace

#define LM_DEFINE_NORM(name, M, body)                                                              \
  double name(const M* A, LM_ARGS) {                                                               \
    LM_ENTER(name);                                                                                \
    return body(call, A);                                                                          \
  }
LM_DEFINE_NORM(LM_m_norm1, MAT, largestColumnSum)
LM_DEFINE_NORM(LM_zm_norm1, ZMAT, largestColumnSum)
LM_DEFINE_NORM(LM_m_norm_inf, MAT, largestRowSum)
LM_DEFINE_NORM(LM_zm_norm_inf, ZMAT, largestRowSum)
LM_DEFINE_NORM(LM_m_norm_frob, MAT, frobenius)
LM_DEFINE_NORM(LM_zm_norm_frob, ZMAT, frobenius)

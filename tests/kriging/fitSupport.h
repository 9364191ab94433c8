/**
 * @file fitSupport.h
 * What the tests of fits and predictions share: samples, and an independent fit by
 * plain elimination in extended precision.
 */
#ifndef ZAREL_TESTS_KRIGING_FIT_SUPPORT_H
#define ZAREL_TESTS_KRIGING_FIT_SUPPORT_H

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <random>
#include <vector>

#include "kriging/OpenModel.h"

namespace fit {

using Complex = std::complex<double>;
using Wide = std::complex<long double>;
using Table = std::vector<std::vector<Wide>>; // by rows

using kriging_test::matrix;
using kriging_test::Scalars;
using kriging_test::Vec;
using kriging_test::vector;

template <class T>
using Probe = kriging_test::OpenModel<T>;

inline double uniform(std::mt19937& engine, double low, double high) {
  return low + (high - low) * (engine() / 4294967296.0);
}

inline void fill(double& value, std::mt19937& engine, double low, double high) {
  value = uniform(engine, low, high);
}

inline void fill(Complex& value, std::mt19937& engine, double low, double high) {
  const double re = uniform(engine, low, high);
  value = Complex(re, uniform(engine, low, high));
}

template <class T>
C_MatMGe<T> randomMatrix(int rows, int cols, unsigned seed, double low = -1.0, double high = 1.0) {
  std::mt19937 engine(seed);
  C_MatMGe<T> out(rows, cols);
  for (int j = 0; j < cols; ++j)
    for (int i = 0; i < rows; ++i)
      fill(out(i, j), engine, low, high);
  return out;
}

/** A smooth response of n variables; the outputs differ in their weights. */
template <class T>
C_MatMGe<T> responseAt(C_MatMGe<T>& X, int outputs) {
  C_MatMGe<T> out(X.NbRow(), outputs);
  for (int j = 0; j < outputs; ++j)
    for (int i = 0; i < X.NbRow(); ++i) {
      T sum = 3.0 + j;
      for (int k = 0; k < X.NbCol(); ++k)
        sum += std::sin((1.0 + 0.3 * k + 0.2 * j) * X(i, k)) + 0.5 * X(i, k) * X(i, 0);
      out(i, j) = sum;
    }
  return out;
}

template <class T>
void load(Kriging<T>& model, C_MatMGe<T>& X, C_MatMGe<T>& Y) {
  ASSERT_EQ(model.PutNumVar(X.NbCol()), 0);
  ASSERT_EQ(model.PutNumSol(Y.NbCol(), Y.NbCol(), nullptr), 0);
  ASSERT_EQ(model.PutInpSampMtx(X), 0);
  ASSERT_EQ(model.PutOutSampMtx(Y), 0);
}

template <class T>
void setKernel(Kriging<T>& model, std::initializer_list<double> values) {
  model.PutKrigingKernVarType(values.size() == 1 ? E_KernIsotropic : E_KernAnisotropic);
  Vec<double> kernel = vector(values);
  ASSERT_EQ(model.PutKernVec(kernel), 0);
}

// ----- an independent fit -----------------------------------------------------------------------

template <class T>
Wide wide(const T& value) {
  return Wide(std::real(value), std::imag(value));
}

template <class T>
Table tableOf(C_MatMGe<T>& M) {
  Table out(M.NbRow(), std::vector<Wide>(M.NbCol()));
  for (int i = 0; i < M.NbRow(); ++i)
    for (int j = 0; j < M.NbCol(); ++j)
      out[i][j] = wide(M(i, j));
  return out;
}

inline std::size_t columnsOf(const Table& A) {
  return A.empty() ? 0 : A[0].size();
}

inline Table product(const Table& A, const Table& B) {
  Table out(A.size(), std::vector<Wide>(columnsOf(B)));
  for (std::size_t i = 0; i < A.size(); ++i)
    for (std::size_t k = 0; k < B.size(); ++k)
      for (std::size_t j = 0; j < columnsOf(B); ++j)
        out[i][j] += A[i][k] * B[k][j];
  return out;
}

inline Table transposed(const Table& A, bool conjugate) {
  Table out(columnsOf(A), std::vector<Wide>(A.size()));
  for (std::size_t i = 0; i < A.size(); ++i)
    for (std::size_t j = 0; j < A[i].size(); ++j)
      out[j][i] = conjugate ? std::conj(A[i][j]) : A[i][j];
  return out;
}

/** Solves A X = B by elimination with row pivots; also gives log |det A|. */
inline Table eliminate(Table A, Table B, long double* logDeterminant = nullptr) {
  const std::size_t n = A.size();
  long double logDet = 0.0L;
  for (std::size_t k = 0; k < n; ++k) {
    std::size_t pivot = k;
    for (std::size_t i = k + 1; i < n; ++i)
      if (std::abs(A[i][k]) > std::abs(A[pivot][k])) pivot = i;
    std::swap(A[k], A[pivot]);
    std::swap(B[k], B[pivot]);
    logDet += std::log(std::abs(A[k][k]));
    for (std::size_t i = k + 1; i < n; ++i) {
      const Wide f = A[i][k] / A[k][k];
      for (std::size_t j = k; j < n; ++j)
        A[i][j] -= f * A[k][j];
      for (std::size_t j = 0; j < B[i].size(); ++j)
        B[i][j] -= f * B[k][j];
    }
  }
  for (std::size_t k = n; k-- > 0;)
    for (std::size_t j = 0; j < B[k].size(); ++j) {
      for (std::size_t i = k + 1; i < n; ++i)
        B[k][j] -= A[k][i] * B[i][j];
      B[k][j] /= A[k][k];
    }
  if (logDeterminant != nullptr) *logDeterminant = logDet;
  return B;
}

/** Generalised least squares as its formulas say, for a given correlation matrix. */
struct DenseFit {
  Table R, F, Y, beta, gamma;
  std::vector<long double> variance; // of each output, in the units of Y
  long double determinantRoot = 0.0L;

  DenseFit(Table R_, Table F_, Table Y_) : R(std::move(R_)), F(std::move(F_)), Y(std::move(Y_)) {
    const std::size_t m = R.size();
    long double logDet = 0.0L;
    const Table RY = eliminate(R, Y, &logDet);
    determinantRoot = std::exp(logDet / m);
    Table rest = Y;
    if (columnsOf(F) > 0) {
      const Table FH = transposed(F, true);
      beta = eliminate(product(FH, eliminate(R, F)), product(FH, RY));
      const Table trend = product(F, beta);
      for (std::size_t i = 0; i < m; ++i)
        for (std::size_t j = 0; j < rest[i].size(); ++j)
          rest[i][j] -= trend[i][j];
    }
    gamma = eliminate(R, rest);
    for (std::size_t j = 0; j < rest[0].size(); ++j) {
      Wide sum = 0.0L;
      for (std::size_t i = 0; i < m; ++i)
        sum += std::conj(rest[i][j]) * gamma[i][j];
      variance.push_back(sum.real() / m);
    }
  }

  double criterion(int output) const {
    return static_cast<double>(determinantRoot * variance[output]);
  }
};

using Correlation = std::function<double(int, int)>;

/** Correlation matrix of m points with the diagonal increment and the drop level applied. */
inline Table correlationTable(int m, const Correlation& correlation, double dropToler = 1e-8,
                              double nugget = 1e-14) {
  const double increment = std::sqrt(double(m)) * dropToler + (m + 10) * nugget;
  Table R(m, std::vector<Wide>(m));
  for (int i = 0; i < m; ++i)
    for (int j = 0; j < m; ++j) {
      const double r = correlation(i, j);
      R[i][j] = i == j ? r + increment : std::fabs(r) < dropToler ? 0.0 : r;
    }
  return R;
}

/** Gaussian correlation of row i of A with row j of B. */
template <class T>
Correlation gaussOf(C_MatMGe<T>& A, C_MatMGe<T>& B, std::vector<double> theta) {
  return [&A, &B, theta](int i, int j) {
    double sum = 0.0;
    for (int k = 0; k < A.NbCol(); ++k)
      sum += theta[theta.size() == 1 ? 0 : k] * std::norm(A(i, k) - B(j, k));
    return std::exp(-sum);
  };
}

/** Constant and linear terms, written by hand. */
template <class T>
Table linearTerms(C_MatMGe<T>& X) {
  Table F(X.NbRow(), std::vector<Wide>(X.NbCol() + 1, Wide(1.0L)));
  for (int i = 0; i < X.NbRow(); ++i)
    for (int k = 0; k < X.NbCol(); ++k)
      F[i][k + 1] = wide(X(i, k));
  return F;
}

template <class T>
void expectNear(C_MatMGe<T>& actual, const Table& expected, double tolerance) {
  ASSERT_EQ(actual.NbRow(), static_cast<int>(expected.size()));
  ASSERT_EQ(actual.NbCol(), static_cast<int>(columnsOf(expected)));
  long double scale = 0.0L;
  for (const auto& row : expected)
    for (const Wide& value : row)
      scale = std::max(scale, std::abs(value));
  for (int i = 0; i < actual.NbRow(); ++i)
    for (int j = 0; j < actual.NbCol(); ++j)
      EXPECT_LE(static_cast<double>(std::abs(wide(actual(i, j)) - expected[i][j])),
                static_cast<double>(tolerance * scale))
          << "at (" << i << ", " << j << ")";
}

} // namespace fit

#endif

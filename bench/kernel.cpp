// The rows of the matrix kernel. Data: numbers of std::mt19937 seeded with 1, from -1 to 1.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include <zarel/itf.h>
#include <zarel/lm.h>

namespace {

void fill(double* x, std::size_t n) {
  std::mt19937 engine(1);
  std::uniform_real_distribution<double> number(-1.0, 1.0);
  for (std::size_t i = 0; i < n; ++i)
    x[i] = number(engine);
}

MAT* matrix(int m, int n) {
  MAT* const A = LM_m_get("bench", 0, m, n, 0, nullptr, nullptr);
  fill(A->base, std::size_t{A->m} * A->n);
  return A;
}

VEC* vector(int n) {
  VEC* const x = LM_v_get("bench", 0, n, 0, nullptr, nullptr);
  fill(x->ve, x->dim);
  return x;
}

char* option(const char* text) {
  return const_cast<char*>(text);
}

// Products of matrices, 500 x 500.
using Product = MAT* (*)(const MAT*, const MAT*, MAT*, LM_ARGS);

void product(benchmark::State& state, Product multiply) {
  MAT *A = matrix(500, 500), *B = matrix(500, 500), *out = matrix(500, 500);
  for (auto _ : state)
    benchmark::DoNotOptimize(multiply(A, B, out, 0, nullptr, nullptr));
  m_free_vars(&A, &B, &out, static_cast<MAT**>(nullptr));
}

void gemm(benchmark::State& state) {
  MAT *A = matrix(500, 500), *B = matrix(500, 500), *out = matrix(500, 500);
  for (auto _ : state)
    ITF_dgemm(option("N"), option("N"), 500, 500, 500, 1.0, A->base, 500, B->base, 500, 0.0,
              out->base, 500);
  m_free_vars(&A, &B, &out, static_cast<MAT**>(nullptr));
}

BENCHMARK_CAPTURE(product, m_mlt, LM_m_mlt)->Name("LM_m_mlt/measured");
BENCHMARK(gemm)->Name("LM_m_mlt/bound");
BENCHMARK_CAPTURE(product, mmtr, LM_mmtr_mlt)->Name("LM_mmtr_mlt/measured");
BENCHMARK(gemm)->Name("LM_mmtr_mlt/bound");
BENCHMARK_CAPTURE(product, mtrm, LM_mtrm_mlt)->Name("LM_mtrm_mlt/measured");
BENCHMARK(gemm)->Name("LM_mtrm_mlt/bound");

// Products with a vector, 2000 x 2000. The bound has the same way through the matrix.
using VectorProduct = VEC* (*)(const MAT*, const VEC*, VEC*, LM_ARGS);

void vectorProduct(benchmark::State& state, VectorProduct multiply) {
  MAT* const A = matrix(2000, 2000);
  VEC *x = vector(2000), *out = vector(2000);
  for (auto _ : state)
    benchmark::DoNotOptimize(multiply(A, x, out, 0, nullptr, nullptr));
  v_free_vars(&x, &out, static_cast<VEC**>(nullptr));
  m_free(A);
}

void gemv(benchmark::State& state, const char* trans) {
  MAT* const A = matrix(2000, 2000);
  VEC *x = vector(2000), *out = vector(2000);
  for (auto _ : state)
    ITF_dgemv(option(trans), 2000, 2000, 1.0, A->base, 2000, x->ve, 1, 0.0, out->ve, 1);
  v_free_vars(&x, &out, static_cast<VEC**>(nullptr));
  m_free(A);
}

BENCHMARK_CAPTURE(vectorProduct, mv, LM_mv_mlt)->Name("LM_mv_mlt/measured");
BENCHMARK_CAPTURE(gemv, mv, "T")->Name("LM_mv_mlt/bound");
BENCHMARK_CAPTURE(vectorProduct, vm, LM_vm_mlt)->Name("LM_vm_mlt/measured");
BENCHMARK_CAPTURE(gemv, vm, "N")->Name("LM_vm_mlt/bound");

// Transposition into another record, against one copy of the bytes.
void transposition(benchmark::State& state) {
  MAT *A = matrix(4000, 4000), *out = matrix(4000, 4000);
  for (auto _ : state)
    benchmark::DoNotOptimize(LM_m_transp(A, out, 0, nullptr, nullptr));
  m_free_vars(&A, &out, static_cast<MAT**>(nullptr));
}

void onePass(benchmark::State& state) {
  MAT *A = matrix(4000, 4000), *out = matrix(4000, 4000);
  for (auto _ : state) {
    std::memcpy(out->base, A->base, std::size_t{4000} * 4000 * sizeof(double));
    benchmark::ClobberMemory();
  }
  m_free_vars(&A, &out, static_cast<MAT**>(nullptr));
}

BENCHMARK(transposition)->Name("LM_m_transp/measured");
BENCHMARK(onePass)->Name("LM_m_transp/bound");

// LU of order 500, against the elimination row by row with the same pivots.
void plainFactor(MAT* A, PERM* pivot, std::vector<double>& scale) {
  const int n = static_cast<int>(A->m);
  for (int i = 0; i < n; ++i) {
    pivot->pe[i] = static_cast<unsigned>(i);
    scale[i] = 0;
    for (int j = 0; j < n; ++j)
      scale[i] = std::max(scale[i], std::abs(A->me[i][j]));
  }
  for (int k = 0; k < n - 1; ++k) {
    int best = -1;
    double largest = 0;
    for (int i = k; i < n; ++i)
      if (scale[i] > 0 && std::abs(A->me[i][k]) / scale[i] > largest) {
        largest = std::abs(A->me[i][k]) / scale[i];
        best = i;
      }
    if (best < 0) continue;
    std::swap(pivot->pe[k], pivot->pe[best]);
    std::swap(scale[k], scale[best]);
    for (int j = 0; j < n; ++j)
      std::swap(A->me[k][j], A->me[best][j]);
    for (int i = k + 1; i < n; ++i) {
      const double multiplier = A->me[i][k] /= A->me[k][k];
      for (int j = k + 1; j < n; ++j)
        A->me[i][j] -= multiplier * A->me[k][j];
    }
  }
}

template <class Factor>
void factorisation(benchmark::State& state, Factor factor) {
  MAT *A = matrix(500, 500), *LU = matrix(500, 500);
  PERM* const pivot = LM_px_get("bench", 0, 500, 0, nullptr, nullptr);
  for (auto _ : state) {
    LM__m_copy(A, LU, 0, 0, 0, nullptr, nullptr);
    factor(LU, pivot);
  }
  m_free_vars(&A, &LU, static_cast<MAT**>(nullptr));
  px_free(pivot);
}

void kernelFactorisation(benchmark::State& state) {
  factorisation(state, [](MAT* LU, PERM* pivot) { LM_LUfactor(LU, pivot, 0, nullptr, nullptr); });
}

void plainFactorisation(benchmark::State& state) {
  std::vector<double> scale(500);
  factorisation(state, [&scale](MAT* LU, PERM* pivot) { plainFactor(LU, pivot, scale); });
}

BENCHMARK(kernelFactorisation)->Name("LM_LUfactor/measured");
BENCHMARK(plainFactorisation)->Name("LM_LUfactor/bound");

// A sparse vector of 20000 entries of 80000, against one pass over its indices and values.
enum { SparseDim = 80000, SparseEntries = 20000 };

VECMP* sparse() {
  VECMP* const s = LM_vecmp_get(SparseDim, SparseEntries, nullptr);
  fill(s->val, SparseEntries);
  for (int k = 0; k < SparseEntries; ++k)
    s->idx[k] = 4 * k;
  return s;
}

void sparseProduct(benchmark::State& state) {
  VECMP* const s = sparse();
  VEC* const x = vector(SparseDim);
  for (auto _ : state)
    benchmark::DoNotOptimize(LM_pscal_vvecmp(x, s, nullptr));
  v_free(x);
  vecmp_free(s);
}

void sparsePass(benchmark::State& state) {
  VECMP* const s = sparse();
  for (auto _ : state) {
    double sum[4] = {};
    int indices[4] = {};
    for (int k = 0; k < SparseEntries; k += 4)
      for (int part = 0; part < 4; ++part) {
        sum[part] += s->val[k + part];
        indices[part] ^= s->idx[k + part];
      }
    benchmark::DoNotOptimize(sum);
    benchmark::DoNotOptimize(indices);
  }
  vecmp_free(s);
}

BENCHMARK(sparseProduct)->Name("LM_pscal_vvecmp/measured");
BENCHMARK(sparsePass)->Name("LM_pscal_vvecmp/bound");

} // namespace

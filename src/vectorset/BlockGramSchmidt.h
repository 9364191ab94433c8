// Gram-Schmidt by blocks of vectors.
//
// With Q the vectors kept so far and B the next block, unit vectors all:
//   1. B := B - Q H1, H1 = Q^H B
//   2. B is made orthonormal in itself, K S = B, and loses the vectors of which too little is left
//   3. K := K - Q H2, H2 = Q^H K, and K is made orthonormal in itself once more, K' S2 = K
// so that the block was Q (H1 + H2 S) + K' (S2 S). All of it is matrix products but for step 2 on
// vectors that nearly depend on each other.
#ifndef ZAREL_VECTORSET_BLOCKGRAMSCHMIDT_H
#define ZAREL_VECTORSET_BLOCKGRAMSCHMIDT_H

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <zarel/C_MatMGe.h>

#include "containers/blas.h"
#include "containers/scalars.h"
#include <zarel/C_Lapack.h>

#include "vectorset/RowPanels.h"
#include "vectorset/blas3.h"

namespace Zarel {

/** Vectors shorter than this are zero, whatever the scalar. */
constexpr double smallestNorm = 2.2250738585072014e-308;

template <class T>
T conjugated(T value) {
  if constexpr (IsComplex<T>::value)
    return std::conj(value);
  else
    return value;
}

/**
 * Makes a column of coefficients known: `coefficients` belong to the directions from `start` on,
 * and the last of them is the diagonal if the vector was kept.
 */
template <class T>
class CoefficientSink {
public:
  virtual ~CoefficientSink() = default;
  virtual void zeroVector(int input) = 0;
  virtual void column(int input, int directions, bool kept, T const* coefficients,
                      double norm0) = 0;
};

/** Vectors in a matrix by columns; `data` is the first of them, with the number `origin`. */
template <class T>
struct Columns {
  T* data;
  int rows;
  int lead;
  int origin;
  T* operator[](int j) const { return data + static_cast<std::ptrdiff_t>(j - origin) * lead; }
  /** The same with numbers that begin at vector `j`. */
  Columns from(int j) const { return {(*this)[j], rows, lead, 0}; }
};

template <class T>
class BlockGramSchmidt {
public:
  /** Vectors that are projected at a time. */
  static constexpr int blockSize = 48;

  BlockGramSchmidt(Columns<T> vectors, const RowPanels& panels, double tolerance, int start,
                   CoefficientSink<T>& sink)
      : all_(vectors),
        panels_(panels),
        tolerance_(tolerance),
        start_(start),
        kept_(start),
        sink_(sink) {}

  /** Treats the vectors up to `count` and returns how many are kept, those before start included.
   */
  int run(int count) {
    for (int i = start_; i < count; i += blockSize)
      treat(i, std::min(blockSize, count - i));
    return kept_;
  }

private:
  /** What becomes of an input vector of the block. */
  struct Input {
    int index;    // in the set
    double norm0; // before it was scaled
    bool zero;
    bool kept;
    int before; // vectors of the block that were kept before it
  };

  void treat(int first, int count) {
    scaleInputs(first, count);
    const int q = kept_ - start_;
    h_.Resize(q, width_);
    project(q, width_, h_);
    s_.Resize(width_, width_);
    s_.Zero();
    orthonormaliseBlock();
    if (blockKept_ > 0) secondPass(q, blockKept_);
    emit(first, count);
    if (first_ != kept_)
      for (int j = 0; j < blockKept_; ++j)
        std::copy_n(block_[j], all_.rows, all_[kept_ + j]);
    kept_ += blockKept_;
  }

  /** Scales the vectors to length 1 and moves those that are not zero together. */
  void scaleInputs(int first, int count) {
    first_ = first;
    block_ = all_.from(first);
    inputs_.clear();
    width_ = 0;
    for (int c = 0; c < count; ++c) {
      const double norm0 = Blas::length(all_.rows, block_[c]);
      const bool zero = norm0 <= smallestNorm;
      inputs_.push_back({first + c, norm0, zero, false, 0});
      if (zero) continue;
      if (width_ != c) std::copy_n(block_[c], all_.rows, block_[width_]);
      Blas::divide(all_.rows, norm0, block_[width_++]);
    }
    active_.clear();
    for (Input& input : inputs_)
      if (!input.zero) active_.push_back(&input);
  }

  /** H := Q^H B, B := B - Q H for the first `width` vectors of the block. */
  void project(int q, int width, C_MatMGe<T>& h) {
    if (q == 0 || width == 0) return;
    product({start_, q}, {first_, width}, h);
    subtractProduct({start_, q}, {first_, width}, h);
  }

  /** H := A^H B */
  void product(VectorRange a, VectorRange b, C_MatMGe<T>& h) {
    panels_.forEach(a, b, [&](int row, int rows) {
      Lapack::gemm('C', 'N', a.count, b.count, rows, T(1), all_[a.first] + row, all_.lead,
                   all_[b.first] + row, all_.lead, T(row == 0 ? 0 : 1), h.Adr(), a.count);
    });
  }

  /** B := B - A H */
  void subtractProduct(VectorRange a, VectorRange b, C_MatMGe<T>& h) {
    panels_.forEach(a, b, [&](int row, int rows) {
      Lapack::gemm('N', 'N', rows, b.count, a.count, T(-1), all_[a.first] + row, all_.lead, h.Adr(),
                   a.count, T(1), all_[b.first] + row, all_.lead);
    });
  }

  /** G := the upper triangle of B^H B for vectors of the block */
  void gram(int at, int count) {
    g_.Resize(count, count);
    panels_.forEach({first_ + at, count}, {0, 0}, [&](int row, int rows) {
      Blas::gramUpper(count, rows, block_[at] + row, all_.lead, row == 0 ? 0 : 1, g_.Adr(), count);
    });
  }

  /** B := B S^-1 for vectors of the block */
  void divide(int at, int count, C_MatMGe<T>& s) {
    panels_.forEach({first_ + at, count}, {0, 0}, [&](int row, int rows) {
      Blas::divideByUpper(rows, count, s.Adr(), count, block_[at] + row, all_.lead);
    });
  }

  // Step 2.

  /**
   * Takes the vectors in groups that a Cholesky factor of their Gram matrix orthonormalises
   * without loss: a group ends before a vector of which less than a tenth is left beside the others
   * of the group. The vectors behind a group are projected on it.
   */
  void orthonormaliseBlock() {
    blockKept_ = 0;
    for (int at = 0; at < width_;) {
      const int end = decideGroup(at);
      const int k = static_cast<int>(group_.size());
      if (k > 0) finishGroup(k);
      if (k > 0 && end < width_) projectRest(k, end);
      blockKept_ += k;
      at = end;
    }
  }

  /** Decides on vectors from `at` on; returns the first one on which the Gram matrix cannot. */
  int decideGroup(int at) {
    const int w = width_ - at;
    gram(at, w);
    group_.clear();
    for (int c = 0; c < w; ++c) {
      const double length2 = modulus(g_(c, c));
      const double rest2 = length2 - eliminate(c);
      const bool tooShort = isTooShort(std::sqrt(length2));
      if (!tooShort && !group_.empty() && !(rest2 >= 0.01 * length2)) return at + c;
      decide(at, c, tooShort ? 0 : std::sqrt(rest2), tooShort);
    }
    return width_;
  }

  bool isTooShort(double norm) const { return norm < smallestNorm || tolerance_ > norm; }

  /** Column c of the factor over the vectors of the group; returns the sum of their squares. */
  double eliminate(int c) {
    double sum = 0;
    for (std::size_t a = 0; a < group_.size(); ++a) {
      const int j = group_[a];
      T value = g_(j, c);
      for (std::size_t b = 0; b < a; ++b)
        value -= conjugated(g_(group_[b], j)) * g_(group_[b], c);
      value /= g_(j, j);
      g_(j, c) = value;
      sum += modulus(value) * modulus(value);
    }
    return sum;
  }

  void decide(int at, int c, double norm1, bool tooShort) {
    Input& input = *active_[static_cast<std::size_t>(at) + static_cast<std::size_t>(c)];
    const int k = static_cast<int>(group_.size());
    input.before = blockKept_ + k;
    for (int a = 0; a < k; ++a)
      s_(blockKept_ + a, at + c) += g_(group_[static_cast<std::size_t>(a)], c);
    if (tooShort || isTooShort(norm1)) return;
    input.kept = true;
    g_(c, c) = fromReal<T>(norm1);
    s_(blockKept_ + k, at + c) = fromReal<T>(norm1);
    group_.push_back(c);
    groupAt_ = at;
  }

  /** Brings the group behind the vectors kept before and makes it orthonormal. */
  void finishGroup(int k) {
    small_.Resize(k, k);
    for (int b = 0; b < k; ++b)
      for (int a = 0; a <= b; ++a)
        small_(a, b) = g_(group_[static_cast<std::size_t>(a)], group_[static_cast<std::size_t>(b)]);
    for (int a = 0; a < k; ++a) {
      const int from = groupAt_ + group_[static_cast<std::size_t>(a)];
      if (from != blockKept_ + a) std::copy_n(block_[from], all_.rows, block_[blockKept_ + a]);
    }
    divide(blockKept_, k, small_);
  }

  void projectRest(int k, int end) {
    const int w = width_ - end;
    small_.Resize(k, w);
    product({first_ + blockKept_, k}, {first_ + end, w}, small_);
    subtractProduct({first_ + blockKept_, k}, {first_ + end, w}, small_);
    for (int c = 0; c < w; ++c)
      for (int a = 0; a < k; ++a)
        s_(blockKept_ + a, end + c) += small_(a, c);
  }

  // Step 3.

  void secondPass(int q, int k) {
    h2_.Resize(q, k);
    project(q, k, h2_);
    if (q > 0) // H := H + H2 S
      Lapack::gemm('N', 'N', q, width_, k, T(1), h2_.Adr(), q, s_.Adr(), s_.LeadDim(), T(1),
                   h_.Adr(), q);
    gram(0, k);
    if (factorGram(k))
      divide(0, k, g_);
    else
      oneByOne(k);
    applyFactor(k);
    for (int a = k - 1; a >= 0; --a)
      if (g_(a, a) == T(0)) drop(a);
  }

  /** The Cholesky factor of G, near the identity; false if it is not. */
  bool factorGram(int k) {
    for (int c = 0; c < k; ++c) {
      double rest2 = modulus(g_(c, c));
      for (int j = 0; j < c; ++j) {
        T value = g_(j, c);
        for (int b = 0; b < j; ++b)
          value -= conjugated(g_(b, j)) * g_(b, c);
        g_(j, c) = value / g_(j, j);
        rest2 -= modulus(g_(j, c)) * modulus(g_(j, c));
      }
      if (!(rest2 > 0.25)) return false;
      g_(c, c) = fromReal<T>(std::sqrt(rest2));
    }
    return true;
  }

  /** For vectors that were rounding errors of their kind, which a tolerance near 0 lets pass. */
  void oneByOne(int k) {
    g_.Zero();
    for (int c = 0; c < k; ++c) {
      for (int j = 0; j < c; ++j)
        for (int pass = 0; pass < 2; ++pass) {
          const T h = Blas::dot(all_.rows, block_[j], block_[c]);
          Blas::axpy(all_.rows, -h, block_[j], block_[c]);
          g_(j, c) += h;
        }
      const double norm = Blas::length(all_.rows, block_[c]);
      const bool vanished = norm < smallestNorm;
      g_(c, c) = fromReal<T>(vanished ? 0 : norm);
      if (vanished)
        std::fill_n(block_[c], all_.rows, T(0));
      else
        Blas::divide(all_.rows, norm, block_[c]);
    }
  }

  /** S := S2 S */
  void applyFactor(int k) {
    for (int c = 0; c < width_; ++c)
      for (int a = 0; a < k; ++a) {
        T sum(0);
        for (int b = a; b < k; ++b)
          sum += g_(a, b) * s_(b, c);
        s_(a, c) = sum;
      }
  }

  /** Takes a vector of which the second pass left nothing out of the kept ones; its row of S is 0.
   */
  void drop(int a) {
    for (Input* input : active_) {
      if (input->kept && input->before == a) input->kept = false;
      if (input->before > a) --input->before;
    }
    --blockKept_;
    for (int b = a; b < blockKept_; ++b) {
      std::copy_n(block_[b + 1], all_.rows, block_[b]);
      for (int c = 0; c < width_; ++c)
        s_(b, c) = s_(b + 1, c);
    }
  }

  void emit(int first, int count) {
    const int q = kept_ - start_;
    std::vector<T> column(static_cast<std::size_t>(q + blockKept_ + 1));
    int c = 0;
    for (int i = 0; i < count; ++i) {
      const Input& input = inputs_[static_cast<std::size_t>(i)];
      if (input.zero) {
        sink_.zeroVector(first + i);
        continue;
      }
      std::copy_n(h_.Adr() + static_cast<std::ptrdiff_t>(c) * q, q, column.data());
      const int own = input.before + (input.kept ? 1 : 0);
      std::copy_n(s_[c], own, column.data() + q);
      sink_.column(first + i, kept_ + input.before, input.kept, column.data(), input.norm0);
      ++c;
    }
  }

  Columns<T> all_;
  RowPanels panels_;
  double tolerance_;
  int start_;
  int kept_;
  CoefficientSink<T>& sink_;

  Columns<T> block_{nullptr, 0, 0, 0};
  int first_ = 0;
  int width_ = 0;
  int blockKept_ = 0;
  std::vector<Input> inputs_;
  std::vector<Input*> active_;
  std::vector<int> group_;
  int groupAt_ = 0;
  C_MatMGe<T> h_, h2_, s_, g_, small_;
};

} // namespace Zarel

#endif

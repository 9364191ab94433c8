// The vocabulary of the vector set tests: sets in all three storages, and what they hold.
#ifndef ZAREL_TESTS_VECTORSET_SUPPORT_H
#define ZAREL_TESTS_VECTORSET_SUPPORT_H

#include <complex>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include <zarel/C_ZarelException.h>
#include <zarel/C_vstruct.h>

#include "support/Files.h"
#include "support/Scalars.h"

namespace vectorset {

enum class Storage { InCore, Mapped, FileResident };

template <class Scalar, Storage where>
struct Case {
  using T = Scalar;
  static constexpr Storage storage = where;
};

using support::isComplex;
using support::scalar;
using support::TypesAfter;
using support::wide;

// clang-format off
#define ZAREL_THREE_CASES(T)                                                                       \
  , Case<T, Storage::InCore>, Case<T, Storage::Mapped>, Case<T, Storage::FileResident>
// clang-format on
using AllCases = TypesAfter<void ZAREL_MATRIX_SCALARS(ZAREL_THREE_CASES)>;
using FloatCases = TypesAfter<void ZAREL_BLAS_SCALARS(ZAREL_THREE_CASES)>;

template <class T>
using Vec = C_VecPi<T, int, C_PtrInCore<T, int>>;
using Counts = Vec<int>;
using Wide = std::complex<double>;

class CaseNames {
public:
  template <class P>
  static std::string GetName(int) {
    using T = typename P::T;
    const std::string where = P::storage == Storage::InCore   ? "in_core"
                              : P::storage == Storage::Mapped ? "mapped"
                                                              : "file_resident";
    return support::scalarName<T>() + "_" + where;
  }
};

/** Deterministic values: small whole numbers for integers, between -1 and 1 for others. */
class Noise {
public:
  explicit Noise(unsigned long long seed = 42) : state_(seed) {}
  double next() {
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(state_ >> 11) / 4503599627370496.0 - 1.0;
  }
  template <class T>
  T value() {
    const double re = next();
    if constexpr (std::is_integral_v<T>) return static_cast<T>(5 * re);
    return scalar<T>(re, isComplex<T> ? next() : 0);
  }

private:
  unsigned long long state_;
};

/** A matrix as a list of columns: what a set is compared with. */
template <class T>
using Dense = std::vector<std::vector<T>>;

template <class T>
Dense<T> randomDense(int vectors, int length, unsigned long long seed = 42) {
  Noise noise(seed);
  Dense<T> dense(static_cast<std::size_t>(vectors));
  for (auto& column : dense)
    for (int i = 0; i < length; ++i)
      column.push_back(noise.value<T>());
  return dense;
}

template <class T>
std::vector<T> randomList(int n, unsigned long long seed = 7) {
  return randomDense<T>(1, n, seed)[0];
}

/** What a set holds, read element by element. */
template <class T>
Dense<T> contentOf(Zarel::C_VSTRUCT<T>& set) {
  Dense<T> dense(static_cast<std::size_t>(set.getDim()));
  for (int j = 0; j < set.getDim(); ++j)
    for (int i = 0; i < set.getDim1(); ++i)
      dense[static_cast<std::size_t>(j)].push_back(set.GetVal(i, j));
  return dense;
}

/** The rows `row0` to `row1` of the columns `col0` to `col1`, ends exclusive. */
template <class T>
Dense<T> partOf(const Dense<T>& dense, int col0, int col1, int row0, int row1) {
  Dense<T> part;
  for (int j = col0; j < col1; ++j) {
    const auto& column = dense[static_cast<std::size_t>(j)];
    part.emplace_back(column.begin() + row0, column.begin() + row1);
  }
  return part;
}

/** An unnamed file that a set reads its vectors from. */
class Stream {
public:
  Stream() : file_(std::tmpfile()) {
    if (file_ == nullptr) std::abort();
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() { std::fclose(file_); }
  FILE* get() const { return file_; }

private:
  FILE* file_;
};

template <class T>
void fillSet(Zarel::C_VSTRUCT<T>& set, const Dense<T>& values) {
  for (int j = 0; j < set.getDim(); ++j)
    for (int i = 0; i < set.getDim1(); ++i)
      set.SetVal(i, j, values[static_cast<std::size_t>(j)][static_cast<std::size_t>(i)]);
}

/** A set with given content; `gap` bytes lie between the vectors of one on a file. */
template <class T>
class MadeSet {
public:
  MadeSet(Storage storage, const Dense<T>& values, int length, int gap = 0) {
    const int vectors = static_cast<int>(values.size());
    if (storage == Storage::FileResident || (storage == Storage::Mapped && gap != 0)) {
      adopt(values, length, storage == Storage::Mapped, gap);
    } else {
      set_.Allocate(storage == Storage::InCore ? 1 : 2, vectors, length, nullptr);
      fillSet(set_, values);
    }
    set_.UnmapAllBlocks();
  }

  Zarel::C_VSTRUCT<T>& operator*() { return set_; }
  Zarel::C_VSTRUCT<T>* operator->() { return &set_; }

private:
  void adopt(const Dense<T>& values, int length, bool map, int gap) {
    const std::string between(static_cast<std::size_t>(gap), '\x5a');
    for (std::size_t j = 0; j < values.size(); ++j) {
      if (j > 0) std::fwrite(between.data(), 1, between.size(), stream_.get());
      std::fwrite(values[j].data(), sizeof(T), values[j].size(), stream_.get());
    }
    std::fflush(stream_.get());
    std::rewind(stream_.get());
    set_.Read(stream_.get(), 2, map, static_cast<int>(values.size()), length, gap);
  }

  Stream stream_; // outlives the set
  Zarel::C_VSTRUCT<T> set_;
};

/** A set that owns a file on which its vectors begin at byte 1: no address that suits a scalar. */
template <class T>
class AtOddByte {
public:
  AtOddByte(const Dense<T>& values, int length) {
    std::string bytes(1, '\x5a');
    for (const auto& column : values)
      bytes.append(reinterpret_cast<const char*>(column.data()), column.size() * sizeof(T));
    support::writeBytes(path_, bytes);
    std::wstring name(path_.begin(), path_.end());
    set_.Restore(name.data(), 1ULL, 2, static_cast<int>(values.size()), length);
    descriptor_ = set_.getDataFileDescriptor();
  }
  AtOddByte(const AtOddByte&) = delete;
  AtOddByte& operator=(const AtOddByte&) = delete;
  ~AtOddByte() {
    set_.Release(true);
    ::close(descriptor_);
  }

  Zarel::C_VSTRUCT<T>& operator*() { return set_; }
  Zarel::C_VSTRUCT<T>* operator->() { return &set_; }
  std::string bytes() const { return support::bytesOf(path_); }

private:
  support::TempDirectory directory_;
  const std::string path_ = directory_.file("odd.bin");
  Zarel::C_VSTRUCT<T> set_;
  int descriptor_ = -1;
};

/** The code of the exception that a call throws, 0 if none. */
template <class Call>
int codeOf(Call call) {
  try {
    call();
  } catch (const C_ZarelException& e) {
    return e.getExceptionCode();
  }
  return 0;
}

template <class T>
Vec<T> vecOf(const std::vector<T>& values) {
  Vec<T> v(static_cast<int>(values.size()));
  for (std::size_t i = 0; i < values.size(); ++i)
    v[static_cast<int>(i)] = values[i];
  return v;
}

template <class T>
std::vector<T> listOf(Vec<T>& v) {
  return std::vector<T>(v.Adr(0), v.Adr(0) + v.Dim());
}

/** sum of conj(a) b */
template <class T>
Wide dot(const std::vector<T>& a, const std::vector<T>& b) {
  Wide sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
    sum += std::conj(wide(a[i])) * wide(b[i]);
  return sum;
}

/** Rounding of a sum of `terms` products of numbers no larger than 1, generously. */
template <class T>
double roundingOf(int terms) {
  return 8 * support::epsilon<T>() * (terms + 1);
}

} // namespace vectorset

#endif

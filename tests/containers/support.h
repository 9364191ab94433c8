// The vocabulary of the container tests: scalars, values, error codes, temporary files and a
// storage that is not in core.
#ifndef ZAREL_TESTS_CONTAINERS_SUPPORT_H
#define ZAREL_TESTS_CONTAINERS_SUPPORT_H

#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <zarel/C_MatMGe.h>
#include <zarel/C_MatMSym.h>
#include <zarel/C_Trace.h>
#include <zarel/C_VecPi.h>
#include <zarel/C_ZarelException.h>

#include "memory/allocator.h"
#include "support/FrameProbe.h"
#include "support/Scalars.h"

using support::conjugate;
using support::epsilon;
using support::FrameProbe;
using support::isComplex;
using support::scalar;
using support::scalarName;
using support::TypesAfter;
using support::wide;

/** A scalar with an index, as the typed tests take them from the scalar lists. */
template <class Scalar, class Index>
struct Case {
  using T = Scalar;
  using I = Index;
  using Vec = C_VecPi<T, I, C_PtrInCore<T, I>>;
};

/** Names of typed tests: the scalar, and the index where there is one. */
class ScalarNames {
public:
  template <class Parameter>
  static std::string GetName(int) {
    return Name<Parameter>::text();
  }

private:
  template <class T>
  struct Name {
    static std::string text() { return scalarName<T>(); }
  };
  template <class T, class I>
  struct Name<Case<T, I>> {
    static std::string text() { return scalarName<T>() + "_by_" + scalarName<I>(); }
  };
};

#define ZAREL_CASE(T, I) , Case<T, I>
using StorageCases = TypesAfter<void ZAREL_STORAGE_SCALARS(ZAREL_CASE)>;
#define ZAREL_TYPE(T) , T
using MatrixScalars = TypesAfter<void ZAREL_MATRIX_SCALARS(ZAREL_TYPE)>;
using BlasScalars = TypesAfter<void ZAREL_BLAS_SCALARS(ZAREL_TYPE)>;
using SymmetricScalars = TypesAfter<void ZAREL_SYMMETRIC_SCALARS(ZAREL_TYPE)>;

template <class T>
using VecOf = C_VecPi<T, int, C_PtrInCore<T, int>>;
using Pivots = VecOf<int>;

template <class T>
constexpr bool isReal = std::is_floating_point_v<T>;

/** Expects a result within `units` roundings of a sum of terms as large as `scale`. */
template <class T>
void expectClose(T actual, std::complex<double> expected, double scale = 1, double units = 16) {
  EXPECT_LE(std::abs(wide(actual) - expected), units * epsilon<T>() * scale)
      << "actual " << wide(actual) << ", expected " << expected;
}

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

template <class Vec, class T>
void fill(Vec& v, std::initializer_list<T> values) {
  int i = 0;
  for (T value : values)
    v[i++] = value;
}

template <class T>
VecOf<T> vecOf(std::initializer_list<T> values) {
  VecOf<T> v(static_cast<int>(values.size()));
  fill(v, values);
  return v;
}

/** Values 1, 2, 3 ... with imaginary parts 2, 1, 0 ... */
template <class Vec>
void count(Vec& v) {
  using T = std::decay_t<decltype(v[0])>;
  for (int i = 0; i < static_cast<int>(v.Dim()); ++i)
    v[i] = scalar<T>(i + 1, 2 - i);
}

/** Matrix (i, j) = 10 i + j + 11, so 11, 12 ... in the first row. */
template <class T>
C_MatMGe<T> countedMatrix(int rows, int columns) {
  C_MatMGe<T> m(rows, columns);
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < columns; ++j)
      m(i, j) = scalar<T>(10 * i + j + 11, i - j);
  return m;
}

/** Deterministic values between -1 and 1 that have nothing to do with the library's generator. */
class Noise {
public:
  double next() {
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(state_ >> 11) / 4503599627370496.0 - 1.0;
  }
  template <class T>
  T value() {
    const double re = next();
    return scalar<T>(re, isComplex<T> ? next() : 0);
  }

private:
  unsigned long long state_ = 42;
};

/** An unnamed file with the bytes-for-bytes vocabulary of the format tests. */
class ScratchFile {
public:
  ScratchFile() : file_(std::tmpfile()) {
    if (file_ == nullptr) std::abort();
  }
  explicit ScratchFile(const std::string& bytes) : ScratchFile() {
    append(bytes);
    rewind();
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() { std::fclose(file_); }

  FILE* stream() const { return file_; }
  int handle() const { return fileno(file_); }
  void rewind() { lseek(handle(), 0, SEEK_SET); }
  void append(const std::string& bytes) {
    if (::write(handle(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
      std::abort();
  }
  /** All bytes, also those that still stand in the stream's buffer. */
  std::string bytes() {
    std::fflush(file_);
    const off_t size = lseek(handle(), 0, SEEK_END);
    std::string text(static_cast<std::size_t>(size), '\0');
    if (pread(handle(), text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
      std::abort();
    return text;
  }

private:
  FILE* file_;
};

/** What a call prints into a stream. */
template <class Call>
std::string printed(Call call) {
  ScratchFile file;
  call(file.stream());
  return file.bytes();
}

/** The bytes of values as they lie in memory, which is little-endian here. */
template <class... T>
std::string raw(T... values) {
  std::string bytes;
  (bytes.append(reinterpret_cast<const char*>(&values), sizeof values), ...);
  return bytes;
}

/** A folder that is removed with its files. */
class ScratchFolder {
public:
  ScratchFolder() {
    char name[] = "/tmp/zarel-containers-XXXXXX";
    path_ = mkdtemp(name);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() {
    for (const std::string& name : names_)
      ::unlink(name.c_str());
    ::rmdir(path_.c_str());
  }
  std::string file(const std::string& name) {
    names_.push_back(path_ + "/" + name);
    return names_.back();
  }

private:
  std::string path_;
  std::vector<std::string> names_;
};

inline std::string contentOf(const std::string& path) {
  std::string text;
  if (FILE* file = std::fopen(path.c_str(), "r")) {
    char part[256];
    std::size_t length;
    while ((length = std::fread(part, 1, sizeof part, file)) > 0)
      text.append(part, length);
    std::fclose(file);
  }
  return text;
}

/** Counts the library's allocations and lets the one after `allowed` more fail. */
class AllocatorProbe {
public:
  explicit AllocatorProbe(int allowed = std::numeric_limits<int>::max())
      : saved_(Zarel::allocator()) {
    taken = 0;
    left = allowed;
    real = saved_;
    Zarel::Allocator& a = Zarel::allocator();
    a.malloc = [](std::size_t size) { return take() ? real.malloc(size) : nullptr; };
    a.calloc = [](std::size_t n, std::size_t size) {
      return take() ? real.calloc(n, size) : nullptr;
    };
    a.realloc = [](void* p, std::size_t size) { return take() ? real.realloc(p, size) : nullptr; };
  }
  AllocatorProbe(const AllocatorProbe&) = delete;
  AllocatorProbe& operator=(const AllocatorProbe&) = delete;
  ~AllocatorProbe() { Zarel::allocator() = saved_; }
  int count() const { return taken; }

private:
  static bool take() {
    ++taken;
    return left-- > 0;
  }
  static inline int taken = 0;
  static inline int left = 0;
  static inline Zarel::Allocator real{};
  Zarel::Allocator saved_;
};

#endif

// What the tests of models and lists share: models that have coefficients without a fit, and a
// stream in memory with a descriptor of its own.
#ifndef ZAREL_TESTS_KRIGING_MODELFIXTURE_H
#define ZAREL_TESTS_KRIGING_MODELFIXTURE_H

#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <numeric>
#include <string>

#include <zarel/KrigingList.h>

#include "kriging/OpenModel.h"

namespace kriging_test {

/// Values that differ from place to place and have no pattern that a wrong index would keep.
template <class T>
C_MatMGe<T> pattern(int rows, int columns, double seed) {
  C_MatMGe<T> result(rows, columns);
  for (int j = 0; j < columns; ++j) {
    for (int i = 0; i < rows; ++i)
      result(i, j) = T(std::fmod(seed + 0.37 * (i + 1) * (i + 2) + 1.13 * (j + 1) * (i + 3), 7.0));
  }
  return result;
}

template <class T>
void expectEqual(C_MatMGe<T>& actual, C_MatMGe<T>& expected) {
  ASSERT_EQ(actual.NbRow(), expected.NbRow());
  ASSERT_EQ(actual.NbCol(), expected.NbCol());
  for (int j = 0; j < expected.NbCol(); ++j) {
    for (int i = 0; i < expected.NbRow(); ++i)
      EXPECT_EQ(actual(i, j), expected(i, j)) << "at " << i << ", " << j;
  }
}

template <class T>
std::vector<T> values(Vec<T>& vec) {
  return std::vector<T>(vec.Adr(0), vec.Adr(0) + vec.Dim());
}

/// Gives a model samples, and the coefficients that a fit would leave, without a fit.
template <class T>
void makeSolved(OpenModel<T>& model, int m, int n, int q, int scaling = E_ScaleNone,
                int trend = E_PolyLinear, int variation = E_KernIsotropic) {
  C_MatMGe<T> x = pattern<T>(m, n, 0.3);
  C_MatMGe<T> y = pattern<T>(m, q, 1.7);
  ASSERT_EQ(model.PutKrigingKernVarType(variation), 0);
  ASSERT_EQ(model.PutNumVar(n), 0);
  ASSERT_EQ(model.PutNumSol(q, 1, nullptr), 0);
  ASSERT_EQ(model.PutInpSampMtx(x), 0);
  ASSERT_EQ(model.PutOutSampMtx(y), 0);
  RealVec theta(model.NumKern, 0.0);
  for (int k = 0; k < theta.Dim(); ++k)
    theta[k] = 0.5 + 0.25 * k;
  ASSERT_EQ(model.PutKernVec(theta), 0);
  ASSERT_EQ(model.PutScalingType(scaling), 0);
  ASSERT_EQ(model.PutPolynomType(trend), 0);
  if (scaling == E_ScaleInputs || scaling == E_ScaleBoth) {
    model.InpScaleVec.Resize(n);
    model.InpScaleVec.Init(1.5, 0, -1);
    model.InpInterceptVec.Resize(n);
    model.InpInterceptVec.Init(T(-0.5), 0, -1);
  }
  if (scaling == E_ScaleOutputs || scaling == E_ScaleBoth) {
    model.OutScaleVec.Resize(q);
    model.OutScaleVec.Init(0.25, 0, -1);
    model.OutInterceptVec.Resize(q);
    model.OutInterceptVec.Init(T(0.0), 0, -1);
  }
  int const terms[] = {0, 1, n + 1, 2 * n + 1, (n + 1) * (n + 2) / 2};
  if (trend != E_PolyNone) {
    C_MatMGe<T> beta = pattern<T>(terms[trend], q, 2.9);
    model.PolyCoeff.Copy(beta);
  }
  C_MatMGe<T> gamma = pattern<T>(m, q, 4.1);
  model.CorrCoeff.Copy(gamma);
  model.Status = E_KrigingStatusSolved;
}

/// A file in memory: an open stream whose bytes a test reads, cuts and changes.
class MemoryFile {
public:
  MemoryFile() : file_(fdopen(memfd_create("model", MFD_CLOEXEC), "w+b")) {}
  explicit MemoryFile(std::string const& bytes) : MemoryFile() {
    EXPECT_EQ(pwrite(descriptor(), bytes.data(), bytes.size(), 0),
              static_cast<ssize_t>(bytes.size()));
  }
  MemoryFile(MemoryFile const&) = delete;
  MemoryFile& operator=(MemoryFile const&) = delete;
  ~MemoryFile() { std::fclose(file_); }

  FILE* get() { return file_; }

  void reopen() { lseek(descriptor(), 0, SEEK_SET); }

  long long position() { return lseek(descriptor(), 0, SEEK_CUR); }

  std::string bytes() {
    std::string result(static_cast<std::size_t>(lseekKeeping(SEEK_END)), '\0');
    EXPECT_EQ(pread(descriptor(), &result[0], result.size(), 0),
              static_cast<ssize_t>(result.size()));
    return result;
  }

private:
  int descriptor() { return fileno(file_); }

  long long lseekKeeping(int whence) {
    long long const here = position();
    long long const there = lseek(descriptor(), 0, whence);
    lseek(descriptor(), here, SEEK_SET);
    return there;
  }

  FILE* file_;
};

/// The bytes that a model or list writes.
template <class Written>
std::string written(Written& object) {
  MemoryFile file;
  EXPECT_EQ(object.Write(file.get()), 0);
  return file.bytes();
}

/// The result of reading those bytes.
template <class Read>
int readFrom(Read& object, std::string const& bytes) {
  MemoryFile file(bytes);
  return object.Read(file.get());
}

} // namespace kriging_test

#endif

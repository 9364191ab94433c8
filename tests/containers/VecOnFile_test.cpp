// Vectors on a file.
#include <limits>

#include "containers/onFile.h"

namespace {

template <class T>
using FileVec = C_VecPi<T, int, C_PtrOnFile<T, int>>;

/** A file with one vector after another, and the same values in core. */
template <class T>
class VecOnFile : public ::testing::Test {
protected:
  static constexpr int kCount = 5000;

  VecOnFile() : file_(pattern(1) + pattern(2)), a_(kCount), b_(kCount) {
    for (int i = 0; i < kCount; ++i) {
      a_[i] = patternAt(i, 1);
      b_[i] = patternAt(i, 2);
    }
  }
  /** Both vectors, with windows that are shorter than the blocks of the vectors. */
  void attach(int window = 100) {
    x_.Attach(kCount, file_.stream(), window);
    y_.Attach(kCount, file_.stream(), window);
  }
  static T patternAt(int i, int step) { return scalar<T>((i * step) % 3, (i * step) % 2); }
  static std::string pattern(int step) {
    std::string bytes;
    for (int i = 0; i < kCount; ++i)
      bytes += raw(patternAt(i, step));
    return bytes;
  }
  /** Expects the values that the file holds from `first` on. */
  template <class Expected>
  void expectOnFile(int first, int n, Expected expected) {
    const std::string bytes = file_.bytes();
    for (int i = 0; i < n; ++i) {
      T value;
      std::memcpy(&value, bytes.data() + static_cast<std::size_t>(first + i) * sizeof(T),
                  sizeof(T));
      ASSERT_EQ(value, static_cast<T>(expected(i))) << i;
    }
  }

  ScratchFile file_;
  VecOf<T> a_, b_;
  FileVec<T> x_, y_;
};
TYPED_TEST_SUITE(VecOnFile, MatrixScalars, ScalarNames);

TYPED_TEST(VecOnFile, FindsTheVectorBehindTheLastOne) {
  this->attach();

  EXPECT_EQ(this->x_.Dim(), 5000);
  EXPECT_EQ(this->y_.Capacity(), 0);
  EXPECT_EQ(this->x_.InCore(), 0);
  EXPECT_EQ(this->x_.Full(), 1);
  EXPECT_EQ(this->x_.MemSize(), static_cast<int>(5000 * sizeof(TypeParam)));
  for (int i = 0; i < 5000; ++i) {
    ASSERT_EQ(this->x_.GetVal(i), this->a_[i]) << i;
    ASSERT_EQ(this->y_[i], this->b_[i]) << i;
  }
}

TYPED_TEST(VecOnFile, DoesNotChangeItsSize) {
  using T = TypeParam;
  T block[3] = {};
  this->attach();

  EXPECT_EQ(this->x_.Resize(5000), 0);
  EXPECT_EQ(this->x_.Resize(10), 0);
  EXPECT_EQ(this->x_.Dim(), 10);
  EXPECT_EQ(codeOf([&] { this->x_.Resize(11); }), 2871);
  EXPECT_EQ(codeOf([&] { this->x_.Resize(0); }), 2871);
  EXPECT_EQ(codeOf([&] { this->x_.Resize(-1); }), 2);
  EXPECT_EQ(codeOf([&] { this->x_.Release(); }), 2871);
  EXPECT_EQ(codeOf([&] { this->x_.Attach(3, block); }), 2871);
  EXPECT_EQ(codeOf([&] { FileVec<T> made(3, block); }), 2871);
  EXPECT_EQ(codeOf([&] { FileVec<T> copy(this->x_); }), 2871);
  EXPECT_EQ(this->x_.Dim(), 10);
  EXPECT_EQ(this->x_.GetVal(1), this->a_[1]);
}

TYPED_TEST(VecOnFile, AxpyReadsItByBlocks) {
  using T = TypeParam;
  this->attach();
  VecOf<T> y(5000, scalar<T>(1));

  EXPECT_EQ(this->x_.Axpy(y, scalar<T>(2)), 0);

  for (int i = 0; i < 5000; ++i)
    ASSERT_EQ(y[i], static_cast<T>(scalar<T>(1) + scalar<T>(2) * this->a_[i]));
}

// An argument on a file is changed in its buffer alone.
TYPED_TEST(VecOnFile, AxpyOntoItChangesTheBufferAndNotTheFile) {
  using T = TypeParam;
  this->attach();
  const std::string before = this->file_.bytes();

  EXPECT_EQ(this->a_.Axpy(this->x_, scalar<T>(2)), 0);
  EXPECT_EQ(this->y_.Axpy(this->x_, scalar<T>(2)), 0);

  EXPECT_EQ(this->file_.bytes(), before);
  EXPECT_EQ(this->x_.Adr(0)[903], static_cast<T>(this->a_[4999] + scalar<T>(2) * this->b_[4999]));
}

TYPED_TEST(VecOnFile, DotProductsAreThoseInCore) {
  using T = TypeParam;
  this->attach();
  const T expected = this->a_ * this->b_;

  EXPECT_EQ(this->x_ * this->y_, expected);
  EXPECT_EQ(this->x_ * this->b_, expected);
  // With only the receiver in core the other vector is the first operand.
  EXPECT_EQ(this->a_ * this->y_, this->b_ * this->a_);
}

TYPED_TEST(VecOnFile, HadamardSquaresTheFirstFactor) {
  using T = TypeParam;
  this->attach();
  VecOf<T> z;

  EXPECT_EQ(z.Had(this->x_, this->y_), 0);

  for (int i = 0; i < 5000; ++i)
    ASSERT_EQ(z[i], static_cast<T>(this->a_[i] * this->a_[i]));
}

TYPED_TEST(VecOnFile, CopiesIntoCore) {
  this->attach();
  VecOf<TypeParam> copy;

  EXPECT_EQ(copy.Copy(this->y_), 0);

  EXPECT_TRUE(copy == this->b_);
}

TYPED_TEST(VecOnFile, CopyOntoItFillsTheBufferAndNotTheFile) {
  this->attach();
  const std::string before = this->file_.bytes();

  EXPECT_EQ(this->x_.Copy(this->b_), 0);
  EXPECT_EQ(this->x_.Copy(this->y_), 0);

  EXPECT_EQ(this->file_.bytes(), before);
  EXPECT_EQ(this->x_.Adr(0)[903], this->b_[4999]);
}

TYPED_TEST(VecOnFile, CopyOntoOneWithoutAFileThrows38) {
  FileVec<TypeParam> none(5000);

  EXPECT_EQ(codeOf([&] { none.Copy(this->a_); }), 38);
}

TYPED_TEST(VecOnFile, NormsAreThoseInCore) {
  this->attach();

  // Two orders of summing as many terms differ by as many roundings at most.
  const double one = this->a_.Nrm(E_Nrm1), two = this->a_.Nrm2();
  EXPECT_NEAR(this->x_.Nrm(E_Nrm1), one, 5000 * epsilon<double>() * one);
  EXPECT_NEAR(this->x_.Nrm2(), two, 5000 * epsilon<TypeParam>() * two);
  EXPECT_EQ(codeOf([&] { this->x_.NrmInf(); }), 38);
}

TYPED_TEST(VecOnFile, WhatNeedsAllValuesInMemoryThrows) {
  using T = TypeParam;
  this->attach();
  double result;

  EXPECT_EQ(codeOf([&] { EXPECT_TRUE(this->x_ == this->a_); }), 38);
  EXPECT_EQ(codeOf([&] { this->x_ += T(1); }), 38);
  EXPECT_EQ(codeOf([&] { this->x_.Diff(this->a_, result); }), 14014);
  EXPECT_EQ(codeOf([&] { this->x_.IMax(0, -1); }), 38);
  EXPECT_EQ(codeOf([&] { this->x_.IMin(0, -1); }), 38);
}

TYPED_TEST(VecOnFile, ChangesRangesOnTheFile) {
  using T = TypeParam;
  this->attach();

  EXPECT_EQ(this->x_.Init(scalar<T>(5), 1, 4998), 0);
  EXPECT_EQ(this->x_.SMlt(scalar<T>(2), 1, 10), 0);
  EXPECT_EQ(this->x_.Zero(4990, -1), 0);
  this->y_ *= scalar<T>(2);

  this->expectOnFile(0, 5000, [&](int i) {
    return i == 0 ? this->a_[0] : i <= 10 ? scalar<T>(10) : i < 4990 ? scalar<T>(5) : T(0);
  });
  this->expectOnFile(5000, 5000, [&](int i) { return this->b_[i] * scalar<T>(2); });
  EXPECT_EQ(this->x_.Sum(1, 20), scalar<T>(150));
}

TYPED_TEST(VecOnFile, NormalizesOnTheFile) {
  using T = TypeParam;
  if (std::is_integral_v<T>) return;
  ScratchFile file(raw(scalar<T>(3), scalar<T>(4)));
  FileVec<T> x;
  x.Attach(2, file.stream(), 1);
  double norm = 0;

  EXPECT_EQ(x.Normalize(E_Nrm2, &norm), 0);

  EXPECT_EQ(norm, 5);
  expectClose(inFile<T>(file, 1), 0.8);
}

TYPED_TEST(VecOnFile, LnkIsTheRestOnTheSameFile) {
  using T = TypeParam;
  this->attach();
  const auto rest = owned(this->x_.Lnk(10));
  const auto none = owned(this->x_.Lnk(5000));

  EXPECT_EQ(rest->Dim(), 4990);
  EXPECT_EQ(rest->InCore(), 0);
  EXPECT_EQ(none->Dim(), 0);
  for (int i : {0, 1, 99, 100, 4989})
    EXPECT_EQ(rest->GetVal(i), this->a_[i + 10]) << i;
  for (int i : {0, 9, 4999})
    EXPECT_EQ(this->x_.GetVal(i), this->a_[i]) << i;
  rest->SetVal(0, scalar<T>(77));
  EXPECT_EQ(inFile<T>(this->file_, 10), scalar<T>(77));
  EXPECT_EQ(codeOf([&] { this->x_.Lnk(5001); }), 2872);
  EXPECT_EQ(codeOf([&] { this->x_.Lnk(-1); }), 2872);
}

TYPED_TEST(VecOnFile, WritesTheBytesOfOneInCore) {
  this->attach();
  ScratchFile byStream, byHandle, inCore;

  EXPECT_EQ(this->x_.Write(byStream.stream()), 0);
  EXPECT_EQ(this->x_.Write(byHandle.handle()), 0);
  this->a_.Write(inCore.stream());

  EXPECT_EQ(byStream.bytes(), raw(5000) + this->pattern(1));
  EXPECT_EQ(byHandle.bytes(), byStream.bytes());
  EXPECT_EQ(inCore.bytes(), byStream.bytes());
}

TYPED_TEST(VecOnFile, WritesBehindItselfOnItsOwnStream) {
  this->attach();
  const std::string before = this->file_.bytes();

  EXPECT_EQ(this->x_.Write(this->file_.stream()), 0);

  EXPECT_EQ(this->file_.bytes(), before + raw(5000) + this->pattern(1));
}

TYPED_TEST(VecOnFile, ReadsAVectorOfItsSize) {
  this->attach();
  ScratchFile other(raw(5000) + this->pattern(2)),
      longer(raw(5001) + this->pattern(2) + this->pattern(2));

  EXPECT_EQ(this->x_.Read(other.stream()), 0);

  this->expectOnFile(0, 5000, [&](int i) { return this->b_[i]; });
  EXPECT_EQ(this->x_.GetVal(1), this->b_[1]);
  EXPECT_EQ(codeOf([&] { this->x_.Read(longer.stream()); }), 2871);
}

TYPED_TEST(VecOnFile, ReadsFromItsOwnStream) {
  this->attach();
  this->y_.Write(this->file_.stream());
  lseek(this->file_.handle(), static_cast<off_t>(10000 * sizeof(TypeParam)), SEEK_SET);

  EXPECT_EQ(this->x_.Read(this->file_.stream()), 0);

  this->expectOnFile(0, 5000, [&](int i) { return this->b_[i]; });
}

TYPED_TEST(VecOnFile, PrintsItsValues) {
  using T = TypeParam;
  ScratchFile file(raw(scalar<T>(1), scalar<T>(2)));
  FileVec<T> x;
  x.Attach(2, file.stream(), 1);
  VecOf<T> inCore = vecOf({scalar<T>(1), scalar<T>(2)});

  std::string text = printed([&](FILE* f) { x.Print(f); });
  const std::string expected = printed([&](FILE* f) { inCore.Print(f); });

  const std::size_t place = text.find("In Core : 0");
  ASSERT_NE(place, std::string::npos);
  text[place + 10] = '1';
  EXPECT_EQ(text, expected);
  EXPECT_EQ(printed([&](FILE* f) { x.WriteMatlab(f); }),
            printed([&](FILE* f) { inCore.WriteMatlab(f); }));
}

// Faults.

TEST(VecOnFileFaults, EveryAllocationMayFail) {
  const auto use = [] {
    ScratchFile file(counted<double>(6000));
    FileVec<double> x, y;
    VecOf<double> z(3000, 1.0);
    x.Attach(3000, file.stream(), 1000);
    lseek(file.handle(), 3000 * sizeof(double), SEEK_SET);
    y.Attach(3000, file.stream(), 4096);
    EXPECT_EQ(x.GetVal(2999), 3000);
    EXPECT_EQ(y.GetVal(0), 3001);
    z += x;
    EXPECT_EQ(z[2500], 2502);
    x.SMlt(2.0, 0, -1);
    EXPECT_EQ(x.Sum(0, 1), 6);
    const auto rest = owned(y.Lnk(2000));
    EXPECT_EQ(rest->GetVal(999), 6000);
    EXPECT_EQ(rest->Sum(0, 1), 10003);
    ScratchFile copy;
    x.Write(copy.stream());
  };

  EXPECT_GT(support::forEachFailingAllocation(use), 8);
}

TEST(VecOnFileFaults, EverySystemCallMayFail) {
  const auto use = [] {
    ScratchFile file(counted<double>(6000)), copy;
    FileVec<double> x, y;
    VecOf<double> z(3000, 1.0);
    x.Attach(3000, file.stream(), 1000);
    y.Attach(3000, file.stream(), 4096);
    EXPECT_EQ(x.GetVal(2999), 3000);
    x.SetVal(2999, 1.0);
    z += x;
    x.SMlt(2.0, 0, -1);
    x.Zero(5, 20);
    const auto rest = owned(y.Lnk(2000));
    EXPECT_EQ(rest->GetVal(999), 6000);
    x.Write(copy.stream());
    copy.rewind();
    x.Read(copy.stream());
    EXPECT_EQ(x.GetVal(30), 62);
  };

  EXPECT_GT(support::forEachFailingCall(use), 30);
}

/** The code with which an operation on a vector of a good file ends when its n-th call fails. */
template <class Operation>
int codeWithFailing(const char* call, long n, Operation operation) {
  ScratchFile file(counted<double>(100));
  FileVec<double> x;
  x.Attach(100, file.stream(), 10);
  int code;
  {
    const support::FailingCall failing(n, call);
    code = codeOf([&] { operation(x); });
    EXPECT_TRUE(support::FailingCall::happened());
  }
  for (int i = 0; i < 100; ++i) // the truth, whatever failed
    EXPECT_EQ(x.GetVal(i), inFile<double>(file, i));
  return code;
}

TEST(VecOnFileFaults, HaveTheirCodes) {
  using X = FileVec<double>;

  EXPECT_EQ(codeWithFailing("lseek", 1, [](X& x) { x.GetVal(50); }), 20);
  EXPECT_EQ(codeWithFailing("lseek", 1, [](X& x) { x.SetVal(50, 3.0); }), 20);
  EXPECT_EQ(codeWithFailing("read", 1, [](X& x) { x.GetVal(50); }), 21);
  EXPECT_EQ(codeWithFailing("read", 2, [](X& x) { x.Sum(0, -1); }), 21);
  EXPECT_EQ(codeWithFailing("write", 1, [](X& x) { x.SetVal(50, 3.0); }), 22);
  EXPECT_EQ(codeWithFailing("write", 2, [](X& x) { x.SMlt(3.0, 0, -1); }), 22);
  EXPECT_EQ(codeWithFailing("write", 1, [](X& x) { x.Zero(20, 30); }), 22);
  EXPECT_EQ(codeWithFailing("read", 1, [](X& x) { x.Lnk(5); }), 21);
  EXPECT_EQ(codeWithFailing("lseek", 1, [](X& x) { x.Lnk(5); }), 20);
  EXPECT_EQ(codeWithFailing("lseek", 2, [](X& x) { x.Lnk(5); }), 34);
}

// What the system said last is none of their reasons.
TEST(VecOnFileFaults, HaveNoReasons) {
  ScratchFile file(counted<double>(10));
  FileVec<double> x;
  x.Attach(10, file.stream(), 4);
  double block[1] = {};
  const auto told = [](auto operation) {
    errno = ENOSPC;
    try {
      operation();
    } catch (const C_ZarelException& e) {
      return std::pair(static_cast<int>(e.getExceptionCode()), static_cast<int>(e.getReasonCode()));
    }
    return std::pair(0, 0);
  };
  const auto failing = [&](const char* call, auto operation) {
    const support::FailingCall harm(1, call, ENOSPC);
    return told(operation);
  };

  EXPECT_EQ(failing("lseek", [&] { x.GetVal(7); }), std::pair(20, 0));
  EXPECT_EQ(failing("read", [&] { x.GetVal(7); }), std::pair(21, 0));
  EXPECT_EQ(failing("write", [&] { x.SetVal(7, 1.0); }), std::pair(22, 0));
  EXPECT_EQ(failing("lseek", [&] { x.Attach(10, file.stream(), 4); }), std::pair(34, 0));
  EXPECT_EQ(told([&] { x.Storage().Extract(0, -1, nullptr); }), std::pair(1001, 0));
  EXPECT_EQ(told([&] { x.Attach(1, block); }), std::pair(2871, 0));
}

TEST(VecOnFileFaults, ANegativeCountHoldsNothing) {
  ScratchFile file(counted<double>(10));
  C_PtrOnFile<double, int> values;
  values.Attach(file.stream(), -5, 0);
  EXPECT_EQ(codeOf([&] { values.SetVal(std::numeric_limits<int>::max(), 1.0); }), 22);
  EXPECT_EQ(codeOf([&] { values.SetVal(0, 1.0); }), 22);
}

TEST(VecOnFileFaults, AFileAtItsLimitThrows22AndKeepsWhatWasThere) {
  ScratchFile file(counted<double>(10));
  FileVec<double> x;
  x.Attach(10, file.stream(), 4);
  rlimit old, small;
  getrlimit(RLIMIT_FSIZE, &old);
  small = {16, old.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);

  const int code = codeOf([&] { x.SetVal(9, 1.0); });

  setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(code, 22);
  EXPECT_EQ(file.bytes(), counted<double>(10));
}

} // namespace

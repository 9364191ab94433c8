// The mixed paths: at least one operand is not in core and passes in blocks of 4096 values.
#include "containers/OffCore.h"
#include "containers/support.h"

namespace {

template <class C>
class MixedVec : public ::testing::Test {};
TYPED_TEST_SUITE(MixedVec, StorageCases, ScalarNames);

#define ZAREL_TYPES                                                                                \
  using T [[maybe_unused]] = typename TypeParam::T;                                                \
  using I [[maybe_unused]] = typename TypeParam::I;                                                \
  using V [[maybe_unused]] = typename TypeParam::Vec;                                              \
  using Off [[maybe_unused]] = OffCoreVec<T, I>;                                                   \
  constexpr I n [[maybe_unused]] = 5000

template <class Vec>
void pattern(Vec& v, int step) {
  using T = std::decay_t<decltype(v[0])>;
  for (int i = 0; i < static_cast<int>(v.Dim()); ++i)
    v.SetVal(i, scalar<T>((i * step) % 3, (i * step) % 2));
}

template <class A, class B>
auto plainDot(A& a, B& b) {
  auto sum = a.GetVal(0);
  sum = 0;
  for (int i = 0; i < static_cast<int>(a.Dim()); ++i)
    sum = static_cast<decltype(sum)>(sum + conjugate(a.GetVal(i)) * b.GetVal(i));
  return sum;
}

TYPED_TEST(MixedVec, AxpyReadsTheArgumentFirstAndChangesOneInCore) {
  ZAREL_TYPES;
  Off x(n);
  V y(n, scalar<T>(1));
  pattern(x, 1);

  EXPECT_EQ(x.Axpy(y, scalar<T>(2)), 0);

  for (I i = 0; i < n; ++i)
    EXPECT_EQ(y[i], static_cast<T>(scalar<T>(1) + scalar<T>(2) * x.GetVal(i)));
  EXPECT_EQ(x.Storage().reads.size(), 2U);
  EXPECT_EQ(x.Storage().reads[1].first, 4096);
  EXPECT_EQ(x.Storage().reads[1].count, 904);
}

// An argument off core is changed in its buffer, not where its values stand.
TYPED_TEST(MixedVec, AxpyOntoAVectorOffCoreChangesItsBuffer) {
  ZAREL_TYPES;
  V x(10, scalar<T>(3));
  Off y(10);
  pattern(y, 1);

  EXPECT_EQ(x.Axpy(y, scalar<T>(2)), 0);

  EXPECT_EQ(y.Adr(0)[1], static_cast<T>(y.GetVal(1) + scalar<T>(6)));
  EXPECT_EQ(y.GetVal(1), scalar<T>(1, 1));
}

TYPED_TEST(MixedVec, DotProductsKeepTheirOrder) {
  ZAREL_TYPES;
  Off x(n), z(n);
  V y(n);
  pattern(x, 1);
  pattern(y, 2);
  pattern(z, 2);

  EXPECT_EQ(x * y, plainDot(x, y));
  EXPECT_EQ(x * z, plainDot(x, z));
  // With only the receiver in core the other operand's class decides, as the first operand.
  EXPECT_EQ(y * x, plainDot(x, y));
}

// Off core both factors are read from x: the result is its square.
TYPED_TEST(MixedVec, HadamardOffCoreSquaresItsFirstFactor) {
  ZAREL_TYPES;
  Off x(n), y(n);
  V z, inCore(n);
  pattern(x, 1);
  pattern(y, 2);
  pattern(inCore, 1);

  EXPECT_EQ(z.Had(x, y), 0);
  for (I i = 0; i < n; ++i)
    EXPECT_EQ(z[i], static_cast<T>(x.GetVal(i) * x.GetVal(i)));
  EXPECT_TRUE(y.Storage().reads.empty());
  EXPECT_EQ(z.Had(inCore, y), 0);
  EXPECT_EQ(z[1], static_cast<T>(inCore[1] * inCore[1]));
}

TYPED_TEST(MixedVec, CopyIntoCoreGoesByBlocks) {
  ZAREL_TYPES;
  Off x(n);
  V y;
  pattern(x, 1);

  EXPECT_EQ(y.Copy(x), 0);

  for (I i = 0; i < n; ++i)
    EXPECT_EQ(y[i], x.GetVal(i));
  EXPECT_EQ(x.Storage().reads.size(), 2U);
}

TYPED_TEST(MixedVec, CopyOffCoreFillsTheBuffer) {
  ZAREL_TYPES;
  V x(10);
  Off y(10);
  pattern(x, 1);

  EXPECT_EQ(y.Copy(x), 0);

  EXPECT_EQ(y.Adr(0)[7], x[7]);
}

TYPED_TEST(MixedVec, NormsComeBlockByBlock) {
  ZAREL_TYPES;
  Off x(n);
  x.SetVal(17, scalar<T>(3));
  x.SetVal(4999, scalar<T>(4));

  EXPECT_DOUBLE_EQ(x.Nrm(E_Nrm1), 7);
  EXPECT_DOUBLE_EQ(x.Nrm(E_Nrm2), 5);
  EXPECT_EQ(codeOf([&] { x.Nrm(E_NrmInf); }), 38);
}

TYPED_TEST(MixedVec, WhatNeedsValuesInOnePieceThrows) {
  ZAREL_TYPES;
  Off x(3);
  V y(3);
  double result = 0;

  EXPECT_EQ(codeOf([&] { EXPECT_TRUE(x == y); }), 38);
  EXPECT_EQ(codeOf([&] { EXPECT_TRUE(y == x); }), 38);
  EXPECT_EQ(codeOf([&] { x += T(1); }), 38);
  EXPECT_EQ(codeOf([&] { x.Diff(y, result); }), 14014);
  EXPECT_EQ(codeOf([&] { y.Diff(x, result); }), 14014);
  EXPECT_EQ(codeOf([&] { x.IMax(0, -1); }), 38);
  EXPECT_EQ(codeOf([&] { x.IMin(2, 1); }), 38);
  EXPECT_EQ(x.IMax(2, 1), -1);
  EXPECT_EQ(codeOf([&] { x.Attach(3, y.Adr(0)); }), 2871);
  EXPECT_EQ(codeOf([&] { Off z(3, y.Adr(0)); }), 2871);
}

TYPED_TEST(MixedVec, LnkIsACopyOfTheRest) {
  ZAREL_TYPES;
  Off x(6);
  pattern(x, 1);
  std::unique_ptr<C_Vec<T, I>> rest(x.Lnk(2));

  EXPECT_EQ(rest->Dim(), 4);
  EXPECT_EQ(rest->InCore(), 0);
  EXPECT_EQ(rest->GetVal(1), x.GetVal(3));
  x.SetVal(3, scalar<T>(9));
  EXPECT_NE(rest->GetVal(1), scalar<T>(9));
  EXPECT_EQ(codeOf([&] { x.Lnk(7); }), 2872);
}

template <class T>
class Lender : public C_Ptr<T, int> {
public:
  Lender() = default;
  explicit Lender(int n) : values(n) {}
  explicit Lender(T*) {}
  C_Ptr<T, int>* Lnk(int first) override {
    return lends ? new C_PtrInCore<T, int>(values.Adr(first)) : nullptr;
  }
  int Copy(C_Ptr<T, int>&, int) override { return 0; }
  int InCore() override { return 0; }
  int Resize(int n) override { return values.Resize(n); }
  T GetVal(int i) override { return values.GetVal(i); }
  T& operator[](int i) override { return values[i]; }
  T Sum(int, int) override { return T(0); }
  int SMlt(T, int, int) override { return 0; }
  int Init(T, int, int) override { return 0; }
  int Attach(T*) { return 0; }
  int Release() { return 0; }
  C_PtrInCore<T, int> values;
  bool lends = true;
};

TEST(MixedVecLnk, OfARestInCoreIsAVectorInCore) {
  C_VecPi<double, int, Lender<double>> x(3);
  x[2] = 5;
  std::unique_ptr<C_Vec<double, int>> rest(x.Lnk(1));

  EXPECT_EQ(rest->InCore(), 1);
  EXPECT_EQ(rest->Dim(), 2);
  EXPECT_EQ(rest->GetVal(1), 5);
  x[2] = 6;
  EXPECT_EQ(rest->GetVal(1), 5);
  x.Storage().lends = false;
  EXPECT_EQ(codeOf([&] { x.Lnk(0); }), 2871);
}

TYPED_TEST(MixedVec, RangesReachTheStorage) {
  ZAREL_TYPES;
  Off x(4, scalar<T>(2));

  EXPECT_EQ(x.Init(scalar<T>(5), 1, 2), 0);
  EXPECT_EQ(x.SMlt(scalar<T>(2), 0, 1), 0);
  EXPECT_EQ(x.Zero(3, -1), 0);
  x *= scalar<T>(1);
  EXPECT_EQ(x.Sum(0, -1), scalar<T>(4 + 10 + 5));
}

TYPED_TEST(MixedVec, FilesAreTheSameAsInCore) {
  ZAREL_TYPES;
  Off x(n), back(n);
  V y(n);
  pattern(x, 1);
  pattern(y, 1);
  ScratchFile off, in;

  EXPECT_EQ(x.Write(off.stream()), 0);
  y.Write(in.stream());
  EXPECT_EQ(off.bytes(), in.bytes());
  off.rewind();
  EXPECT_EQ(back.Read(off.stream()), 0);
  for (I i = 0; i < n; ++i)
    EXPECT_EQ(back.GetVal(i), y[i]);
}

TYPED_TEST(MixedVec, TextGoesThroughSingleValues) {
  ZAREL_TYPES;
  Off x(2);

  EXPECT_NE(printed([&](FILE* f) { x.Print(f); }).find("- In Core : 0\n- Values : \n"),
            std::string::npos);
}

} // namespace

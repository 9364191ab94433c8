// What the abstract vectors answer when a derived class adds as little as it may.
#include "containers/support.h"
#include "runtime/fail.h"

namespace {

/** Only what is pure. */
template <class T, class I>
class BareVec : public C_Vec<T, I> {
public:
  explicit BareVec(I n = 0) : C_Vec<T, I>(n) {}
  BareVec(const BareVec&) = default;
  int MemSize() const override { return this->MemSizeOf(); }
  int InCore() override { return 0; }
  int Full() override { return 1; }
  T Sum(I, I) override { return T(0); }
  C_Vec<T, I>* Lnk(I) override { return nullptr; }
  int SMlt(T, I, I) override { return 0; }
};

/** Values in memory, but not a C_VecPi: it takes the operations of C_Vec as they are. */
template <class T>
class PlainVec : public BareVec<T, int> {
public:
  explicit PlainVec(std::vector<T> values, int room = 100)
      : BareVec<T, int>(static_cast<int>(values.size())), values_(std::move(values)) {
    values_.resize(static_cast<std::size_t>(room));
  }
  int InCore() override { return 1; }
  int Full() override { return full; }
  T* Adr(int i) override { return values_.data() + i; }
  T GetVal(int i) override { return values_[static_cast<std::size_t>(i)]; }
  int Resize(int n) override {
    if (fixed) return -1;
    this->dim_ = n;
    return 0;
  }
  int full = 1;
  bool fixed = false;

private:
  std::vector<T> values_;
};

/** Gives its values one at a time only. */
class OneByOneVec : public BareVec<double, int> {
public:
  using BareVec<double, int>::BareVec;
  double GetVal(int i) override { return 0.5 * i; }
  using BareVec<double, int>::GetVal;
};

/** Has an address, and no other way to its values. */
class AddressedVec : public PlainVec<double> {
public:
  using PlainVec<double>::PlainVec;
  double GetVal(int) override { Zarel::fail(2871); }
  using PlainVec<double>::GetVal;
};

/** A value at index 4, then the end. */
class OneValueVec : public BareVec<double, int> {
public:
  using BareVec<double, int>::BareVec;
  int FirstVal(double& value) override {
    value = 2;
    return 4;
  }
  int NextVal(double&) override { return -1; }
  using BareVec<double, int>::FirstVal;
  using BareVec<double, int>::NextVal;
};

class BareBaseVec : public C_BaseVec<int> {
public:
  explicit BareBaseVec(int n) : C_BaseVec<int>(n) {}
  int MemSize() const override { return 0; }
  int InCore() override { return 0; }
  int Full() override { return 0; }
  int Print(FILE* file) override { return std::fputs("bare\n", file) < 0; }
  using C_BaseVec<int>::Print;
  int GetVal(int, std::string&) override { return 0; }
  int FirstVal(std::string&) override { return -1; }
  int NextVal(std::string&) override { return -1; }
  double Nrm(E_NrmType) override { return 0; }
  int Normalize(E_NrmType, double*) override { return 0; }
};

TEST(BaseVec, AnswersAsTold) {
  BareBaseVec v(5);
  ScratchFolder folder;
  const std::string path = folder.file("bare.txt");

  EXPECT_STREQ(v.AffType(), "C_BaseVec");
  EXPECT_EQ(v.Type(), C_Type::E_TypeUnknown);
  EXPECT_EQ(v.Release(), 0);
  EXPECT_EQ(v.Resize(3), -1);
  EXPECT_EQ(v.Dim(), 5);
  EXPECT_EQ(codeOf([&] { v.Zero(0, 1); }), 2871);
  EXPECT_EQ(codeOf([&] { v.WriteMatlab(stdout); }), 2871);
  EXPECT_EQ(codeOf([&] { v.WriteMatlab(path.c_str()); }), 2871);
  EXPECT_EQ(v.Print(path.c_str(), false), 0);
  EXPECT_EQ(contentOf(path), "bare\n");
}

TEST(BaseVec, FilesHoldTheHeadAlone) {
  BareBaseVec v(5), w(0), x(0);
  ScratchFile file, byHandle;

  EXPECT_EQ(v.Write(file.stream()), 0);
  EXPECT_EQ(v.Write(byHandle.handle()), 0);

  EXPECT_EQ(file.bytes(), raw(5));
  EXPECT_EQ(byHandle.bytes(), raw(5));
  file.rewind();
  EXPECT_EQ(w.Read(file.stream()), 0);
  EXPECT_EQ(w.Dim(), 5);
  file.rewind();
  EXPECT_EQ(x.Read(file.handle()), 0);
  EXPECT_EQ(x.Dim(), 5);
  EXPECT_EQ(codeOf([&] { x.Read(file.handle()); }), 21);
  EXPECT_EQ(x.Dim(), 5);
  EXPECT_EQ(codeOf([&] { v.Write(0); }), 12);
}

template <class C>
class AbstractVec : public ::testing::Test {};
#define ZAREL_VECTOR_CASE(T, I) , Case<T, I>
struct WideCase {
  using T = __int64;
  using I = __int64;
};
TYPED_TEST_SUITE(AbstractVec, StorageCases, ScalarNames);

template <class T, class I>
void expectDefaults() {
  BareVec<T, I> v(3);
  T value(0);

  EXPECT_STREQ(v.AffType(), "C_Vec");
  EXPECT_EQ(v.MemSize(), static_cast<int>(3 * sizeof(T)));
  EXPECT_EQ(v.Adr(0), nullptr);
  EXPECT_EQ(v.Resize(1), -1);
  EXPECT_EQ(codeOf([&] { v.GetVal(0); }), 2871);
  EXPECT_EQ(codeOf([&] { v.SetVal(0, T(0)); }), 2871);
  EXPECT_EQ(codeOf([&] { v[0] = T(0); }), 2871);
  EXPECT_EQ(codeOf([&] { v.FirstVal(value); }), 2871);
  EXPECT_EQ(codeOf([&] { v.NextVal(value); }), 2871);
  EXPECT_EQ(codeOf([&] { v.Extract(0, -1, nullptr); }), 2871);
  EXPECT_EQ(codeOf([&] { v.Init(T(0), 0, -1); }), 2871);
  EXPECT_EQ(codeOf([&] { v.Attach(1, &value); }), 2871);
  EXPECT_EQ(codeOf([&] { v.Zero(0, -1); }), 2871);
  EXPECT_EQ(codeOf([&] { v *= T(2); }), 38);
  EXPECT_EQ(codeOf([&] { v += T(2); }), 38);
  EXPECT_EQ(codeOf([&] { v.IMin(0, -1); }), 38);
  EXPECT_EQ(codeOf([&] { v.IMax(0, -1); }), 38);
  EXPECT_EQ(codeOf([&] { v.Nrm(E_Nrm1); }), 38);
}

TYPED_TEST(AbstractVec, WhatOnlyAConcreteVectorOffersThrows2871) {
  expectDefaults<typename TypeParam::T, typename TypeParam::I>();
}

TEST(AbstractVecWide, ExistsForWideIntegersWithAWideIndex) {
  expectDefaults<__int64, __int64>();
}

// IMax tells an empty range before it asks where the values are; IMin does not look at the count.
TEST(AbstractVecOrder, OfTestsDiffersBetweenIMinAndIMax) {
  BareVec<double, int> v(3);

  EXPECT_EQ(v.IMax(2, 1), -1);
  EXPECT_EQ(codeOf([&] { v.IMin(2, 1); }), 38);
}

TYPED_TEST(AbstractVec, ACopyIsNotCountedAndItsEndIs) {
  using T = typename TypeParam::T;
  using I = typename TypeParam::I;
  using Counter = C_Counter<C_Vec<T, I>>;
  BareVec<T, I> v(3);
  const int created = Counter::objects_created;
  const int alive = Counter::objects_alive;
  {
    BareVec<T, I> copy(v);
    EXPECT_EQ(copy.Dim(), 3);
    EXPECT_EQ(Counter::objects_created, created);
    EXPECT_EQ(Counter::objects_alive, alive);
  }
  EXPECT_EQ(Counter::objects_created, created);
  EXPECT_EQ(Counter::objects_alive, alive - 1);
  Counter::objects_alive = alive;
}

TEST(AbstractVecFile, HeadAndValuesGoOutTheHeadAloneComesIn) {
  PlainVec<double> v({1.5, 2.5});
  OneByOneVec oneByOne(3);
  ScratchFile file, single;
  BareVec<double, int> w, x;

  v.Write(file.stream());
  oneByOne.Write(single.handle());

  EXPECT_EQ(file.bytes(), raw(2, 1.5, 2.5));
  EXPECT_EQ(single.bytes(), raw(3, 0.0, 0.5, 1.0));
  file.rewind();
  EXPECT_EQ(w.Read(file.stream(), 0), 0);
  EXPECT_EQ(w.Dim(), 2);
  file.rewind();
  EXPECT_EQ(x.Read(file.handle(), 0), 0);
  EXPECT_EQ(x.Dim(), 2);
  file.rewind();
  EXPECT_EQ(x.Read(file.handle()), 0);
}

TEST(AbstractVecFile, ValuesWithAnAddressGoOutInOnePiece) {
  AddressedVec v({1.5, 2.5});
  ScratchFile file;

  EXPECT_EQ(v.Write(file.stream()), 0);

  EXPECT_EQ(file.bytes(), raw(2, 1.5, 2.5));
}

TEST(AbstractVecText, FollowsTheIteratorAndLeavesTheTextAtItsEnd) {
  OneValueVec v(9);
  std::string text;

  EXPECT_EQ(v.FirstVal(text), 4);
  EXPECT_EQ(text, " 2.000e+00 ");
  EXPECT_EQ(v.NextVal(text), -1);
  EXPECT_EQ(text, " 2.000e+00 ");
}

TEST(AbstractVecText, WithoutAFileIsNothing) {
  BareVec<float, int> v(5);

  EXPECT_EQ(v.Print(static_cast<FILE*>(nullptr)), 0);
  EXPECT_EQ(codeOf([&] { v.WriteMatlab(static_cast<FILE*>(nullptr)); }), 12);
}

TEST(AbstractVecText, IsTheHeadAlone) {
  BareVec<float, __int64> v(5000000000LL);

  EXPECT_EQ(printed([&](FILE* f) { v.Print(f); }),
            "- Object : C_Vec\n- Scalar : Float\n- Dim : 5000000000\n- In Core : 0\n");
  EXPECT_EQ(printed([&](FILE* f) { v.WriteMatlab(f); }), "C_Vec\nFloat\n5000000000\n");
}

TEST(AbstractVecCopy, IsOneBlockBetweenVectorsInMemory) {
  PlainVec<double> v({1, 2}), w({7, 8, 9});

  EXPECT_EQ(v.Copy(w), 0);

  EXPECT_EQ(v.Dim(), 3);
  EXPECT_EQ(v.GetVal(2), 9);
  EXPECT_EQ(v.Copy(v), 0);
}

TEST(AbstractVecCopy, TestsFullnessThenSizesThenTestsAccess) {
  PlainVec<double> v({1, 2}), sparse({1, 2, 3, 4});
  BareVec<double, int> away(3);
  sparse.full = 0;

  EXPECT_EQ(codeOf([&] { v.Copy(sparse); }), 12);
  EXPECT_EQ(v.Dim(), 2);
  EXPECT_EQ(codeOf([&] { v.Copy(away); }), 38);
  EXPECT_EQ(v.Dim(), 3);
  v.full = 0;
  EXPECT_EQ(codeOf([&] { v.Copy(sparse); }), 38);
  EXPECT_EQ(codeOf([&] { away.Copy(sparse); }), 12);
  sparse.full = 1;
  EXPECT_EQ(codeOf([&] { away.Copy(sparse); }), 38);
  EXPECT_EQ(away.Copy(away), 0) << "there is nothing to do";
}

TEST(AbstractVecCopy, RefusesASizeThatTheVectorCannotTake) {
  PlainVec<double> v({1, 2}), w({7, 8, 9});
  v.fixed = true;

  EXPECT_EQ(codeOf([&] { v.Copy(w); }), 2872);
  EXPECT_EQ(v.GetVal(0), 1);
}

TEST(AbstractVecScale, GoesThroughTheWholeVectorInCore) {
  PlainVec<double> v({1, 2});

  v *= 3.0;

  EXPECT_EQ(v.GetVal(1), 6);
  v.full = 0;
  EXPECT_EQ(codeOf([&] { v *= 2.0; }), 38);
}

TEST(AbstractVecArith, WorksBetweenDifferentClassesInCore) {
  PlainVec<double> plain({1, 2, 3});
  VecOf<double> v(3, 10.0), shorter(2);
  C_Vec<double, int>& base = v;

  EXPECT_EQ(plain.Axpy(v, 2.0), 0);
  EXPECT_EQ(v[2], 16);
  EXPECT_EQ(base.Axpy(plain, 1.0), 0);
  EXPECT_EQ(plain.GetVal(0), 13);
  EXPECT_EQ(plain * v, 13 * 12 + 16 * 14 + 19 * 16);
  EXPECT_EQ(v * plain, 13 * 12 + 16 * 14 + 19 * 16);
  EXPECT_EQ(codeOf([&] { plain.Axpy(shorter, 1.0); }), 2872);
  plain.full = 0;
  EXPECT_EQ(codeOf([&] { plain.Axpy(v, 1.0); }), 2873);
  EXPECT_EQ(codeOf([&] { v.Axpy(plain, 1.0); }), 2873);
}

} // namespace

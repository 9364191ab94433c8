// What the abstract matrices answer when a derived class adds as little as it may.
#include "containers/support.h"

namespace {

class BareGeneric : public C_GenericMat {
public:
  using C_GenericMat::C_GenericMat;
  int MemSize() const override { return 0; }
  int InCore() override { return 0; }
  bool Sym() override { return false; }
  int GetVal(int, int, std::string&) override { return 0; }
  int FirstCol(std::string&) override { return 0; }
  int NextCol(std::string&) override { return -1; }
};

/** Values reached by GetVal alone: (i, j) = i + 2 j + 1 unless one was stored. */
template <class T>
class BareMat : public C_Mat<T> {
public:
  explicit BareMat(int rows = 0, int columns = 0) : C_Mat<T>(rows, columns) {}
  BareMat(const BareMat&) = default;
  int MemSize() const override { return 0; }
  int InCore() override { return 1; }
  bool Sym() override { return symmetric; }
  T GetVal(int i, int j) override { return scalar<T>(i + 2 * j + 1); }
  using C_Mat<T>::GetVal;
  bool symmetric = false;
};

/** The same with an address: general products go to the routine. */
template <class T>
class AddressedMat : public BareMat<T> {
public:
  using BareMat<T>::BareMat;
  T* Adr() override { return values; }
  T values[6] = {scalar<T>(1), scalar<T>(2), scalar<T>(3),
                 scalar<T>(4), scalar<T>(5), scalar<T>(6)};
};

TEST(GenericMat, AnswersAsTold) {
  BareGeneric m(3, 4);

  EXPECT_EQ(m.GetSide(), 3);
  EXPECT_EQ(m.NbVal(), 12);
  EXPECT_EQ(m.MaxLength(), -1);
  EXPECT_STREQ(m.AffType(), "C_GenericMat Type");
  EXPECT_STREQ(m.Version(), "0.1");
  EXPECT_EQ(m.Type(), C_Type::E_TypeUnknown);
  EXPECT_EQ(m.Print(stdout, -1), 0);
  EXPECT_EQ(m.Resize(5, 6), 0);
  EXPECT_EQ(m.NbRow(), 5);
  EXPECT_EQ(m.NbCol(), 6);
  EXPECT_EQ(codeOf([&] { m.WriteMatlab(stdout); }), 2871);
  EXPECT_EQ(codeOf([&] { m.ResizeAndKeepValues(1, 1); }), 2871);
  EXPECT_EQ(codeOf([&] { m.EraseCol(0, 0); }), 2871);
  EXPECT_EQ(codeOf([&] { m.EraseRow(0, 0); }), 2871);
  EXPECT_EQ(codeOf([&] { m.Zero(); }), 2871);
  EXPECT_EQ(codeOf([&] { m.Nrm(E_Nrm1); }), 2871);
}

TEST(GenericMat, CountsItsValuesIn32Bits) {
  EXPECT_EQ(BareGeneric(65536, 65536).NbVal(), 0);
  EXPECT_EQ(BareGeneric(65536, 32768).NbVal(), std::numeric_limits<int>::min());
}

TEST(GenericMat, CopiesTheShapeAlone) {
  BareGeneric source(3, 4), target;

  EXPECT_EQ(target.GenCopy(source), 0);

  EXPECT_EQ(target.NbRow(), 3);
  EXPECT_EQ(target.NbCol(), 4);
}

TEST(GenericMat, FilesHoldTheShapeAlone) {
  BareGeneric m(3, 4), back(7, 7);
  ScratchFile file, cut(raw(5) + "ab");

  EXPECT_EQ(m.Write(file.stream()), 0);
  EXPECT_EQ(file.bytes(), raw(3, 4));
  file.rewind();
  EXPECT_EQ(back.Read(file.stream()), 0);
  EXPECT_EQ(back.NbCol(), 4);
  EXPECT_EQ(codeOf([&] { back.Read(cut.stream()); }), 21);
  EXPECT_EQ(back.NbRow(), 3);
  EXPECT_EQ(codeOf([&] { m.Write(static_cast<FILE*>(nullptr)); }), 12);
  EXPECT_EQ(codeOf([&] { m.Read(nullptr); }), 12);
  FILE* full = std::fopen("/dev/full", "w");
  EXPECT_EQ(codeOf([&] { m.Write(full); }), 22);
  std::fclose(full);
}

TEST(GenericMat, KeepsFlagsForItsCaller) {
  BareGeneric m;

  EXPECT_FALSE(m.getFlag(0));
  m.setFlag(0, true);
  m.setFlag(31, true);
  m.setFlag(5, true);
  m.setFlag(5, false);
  m.setFlag(32, true);
  m.setFlag(-1, true);
  EXPECT_TRUE(m.getFlag(0));
  EXPECT_TRUE(m.getFlag(31));
  EXPECT_FALSE(m.getFlag(5));
  EXPECT_FALSE(m.getFlag(32));
  EXPECT_FALSE(m.getFlag(-1));
}

TEST(GenericMat, WithoutAFilePrintsNothing) {
  BareGeneric m;

  EXPECT_EQ(m.Print("/nowhere/at/all", -1, false), 0);
  EXPECT_EQ(m.Print(nullptr, -1, true), 0);
}

template <class T>
class AbstractMat : public ::testing::Test {};
TYPED_TEST_SUITE(AbstractMat, MatrixScalars, ScalarNames);

TYPED_TEST(AbstractMat, WhatOnlyAConcreteMatrixOffersThrows2871) {
  using T = TypeParam;
  BareMat<T> m(2, 2);
  VecOf<T> v(2);
  Pivots pivots(2);

  EXPECT_STREQ(m.AffType(), "C_Mat Base Type");
  EXPECT_EQ(m.Adr(), nullptr);
  EXPECT_EQ(codeOf([&] { m.Lnk(); }), 2871);
  EXPECT_EQ(codeOf([&] { m.Duplicate(); }), 2871);
  EXPECT_EQ(codeOf([&] { m.SetVal(0, 0, T(0)); }), 2871);
  EXPECT_EQ(codeOf([&] { m.GetCol(0, v); }), 2871);
  EXPECT_EQ(codeOf([&] { m.Init(T(0)); }), 2871);
  EXPECT_EQ(codeOf([&] { m.Zero(); }), 2871);
  EXPECT_EQ(codeOf([&] { m *= T(2); }), 2871);
  EXPECT_EQ(codeOf([&] { m.Factor(pivots, false); }), 2871);
  EXPECT_EQ(codeOf([&] { m.Solve(pivots, &v, nullptr); }), 2871);
  EXPECT_EQ(codeOf([&] { m.Nrm(E_Nrm1); }), 2871);
}

TYPED_TEST(AbstractMat, ACopyIsNotCountedAndItsEndIs) {
  using Counter = C_Counter<C_Mat<TypeParam>>;
  BareMat<TypeParam> m(2, 3);
  const int created = Counter::objects_created;
  const int alive = Counter::objects_alive;
  {
    BareMat<TypeParam> copy(m);
    EXPECT_EQ(copy.NbCol(), 3);
    EXPECT_EQ(Counter::objects_created, created);
    EXPECT_EQ(Counter::objects_alive, alive);
  }
  EXPECT_EQ(Counter::objects_alive, alive - 1);
  Counter::objects_alive = alive;
}

// Without an address the product is built from row sums: y[k] = beta y[k] + alpha x[k] sum of
// row k, or of column k for any letter but N and n.
TYPED_TEST(AbstractMat, TheProductOfLastResortMultipliesRowSums) {
  using T = TypeParam;
  BareMat<T> m(2, 2); // 1 3 / 2 4
  VecOf<T> x(2), y(2, scalar<T>(1));
  x[0] = scalar<T>(1);
  x[1] = scalar<T>(3);

  EXPECT_EQ(m.Mv(scalar<T>(2), x, scalar<T>(5), y, 'n'), 0);
  EXPECT_EQ(y[0], scalar<T>(5 + 2 * 1 * 4));
  EXPECT_EQ(y[1], scalar<T>(5 + 2 * 3 * 6));
  y.Init(scalar<T>(1), 0, -1);
  m.Mv(scalar<T>(2), x, scalar<T>(5), y, 'T');
  EXPECT_EQ(y[0], scalar<T>(5 + 2 * 1 * 3));
  EXPECT_EQ(y[1], scalar<T>(5 + 2 * 3 * 7));
}

TYPED_TEST(AbstractMat, ProductsTestTheVectorAndSizeTheResult) {
  using T = TypeParam;
  BareMat<T> m(2, 2), oblong(2, 3);
  VecOf<T> x(2, T(1)), three(3), y;

  EXPECT_EQ(codeOf([&] { m.Mv(T(1), three, T(0), y, 'N'); }), 2872);
  EXPECT_EQ(m.Mv(T(1), x, T(0), y, 'N'), 0);
  EXPECT_EQ(y.Dim(), 2);
  EXPECT_EQ(codeOf([&] { oblong.Mv(T(1), three, T(0), y, 'N'); }), 2872);
}

TYPED_TEST(AbstractMat, AddsElementByElement) {
  using T = TypeParam;
  BareMat<T> m(2, 2), wrong(2, 3);
  C_MatMGe<T> b(2, 2);
  b.Init(scalar<T>(1));

  EXPECT_EQ(m.Axpy(b, scalar<T>(2)), 0);
  EXPECT_EQ(b(1, 0), scalar<T>(5));
  EXPECT_EQ(b(0, 1), scalar<T>(7));
  EXPECT_EQ(codeOf([&] { wrong.Axpy(b, T(1)); }), 2872);
  // A general matrix adds to another class in the same way, which here cannot store.
  EXPECT_EQ(codeOf([&] { b.Axpy(m, T(1)); }), 2871);
}

TYPED_TEST(AbstractMat, CopyConstructionTakesGeneralMatricesOnly) {
  using T = TypeParam;
  BareMat<T> m(2, 2);
  C_MatMGe<T> general = countedMatrix<T>(2, 2), target;
  const C_Mat<T>& base = general;

  EXPECT_EQ(codeOf([&] { C_MatMGe<T> copy(static_cast<const C_Mat<T>&>(m)); }), 2871);
  EXPECT_EQ(codeOf([&] { target = static_cast<const C_Mat<T>&>(m); }), 2871);
  target = base;
  EXPECT_EQ(target(1, 0), scalar<T>(21, 1));
  EXPECT_EQ(C_MatMGe<T>(base)(1, 0), scalar<T>(21, 1));
}

TYPED_TEST(AbstractMat, CopiesIntoAMatrixThatKeepsItsShape) {
  using T = TypeParam;
  BareMat<T> m(2, 2);
  C_MatMGe<T> target;

  EXPECT_EQ(target.GenCopy(m), 0);
  EXPECT_EQ(target(1, 1), scalar<T>(4));
  EXPECT_EQ(codeOf([&] { m.GenCopy(target); }), 2871);
}

TYPED_TEST(AbstractMat, FormatsAndWalks) {
  BareMat<TypeParam> m(2, 2);
  std::string text;

  EXPECT_EQ(m.GetVal(1, 1, text), 0);
  EXPECT_EQ(text.substr(0, 3), " 4.");
  m.Row(1);
  EXPECT_EQ(m.FirstCol(text), 0);
  EXPECT_EQ(text.substr(0, 3), " 2.");
  EXPECT_EQ(m.NextCol(text), 1);
  EXPECT_EQ(text.substr(0, 3), " 4.");
  EXPECT_EQ(m.NextCol(text), -1);
}

template <class T>
class AddressedProduct : public ::testing::Test {};
TYPED_TEST_SUITE(AddressedProduct, BlasScalars, ScalarNames);

TYPED_TEST(AddressedProduct, GoesToTheRoutineWithTheRowsAsLeadingDimension) {
  using T = TypeParam;
  AddressedMat<T> m(2, 3); // 1 3 5 / 2 4 6
  VecOf<T> x(3, T(1)), y;

  EXPECT_EQ(m.Mv(T(1), x, T(0), y, 'N'), 0);
  EXPECT_EQ(y[0], T(9));
  EXPECT_EQ(y[1], T(12));
  y.Init(T(1), 0, -1);
  EXPECT_EQ(m.Mv(T(1), y, T(0), x, 'T'), 0);
  EXPECT_EQ(x[2], T(11));
}

TEST(AddressedProductOfIntegers, EndsTheProcess) {
  AddressedMat<int> m(2, 3);
  VecOf<int> x(3), y;

  EXPECT_EXIT(m.Mv(1, x, 0, y, 'N'), ::testing::ExitedWithCode(255), "gemv with integers");
}

} // namespace

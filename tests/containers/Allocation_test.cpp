// Operations in core allocate nothing; what allocates survives every failing allocation.
#include "containers/support.h"
#include "support/FailingAllocation.h"

namespace {

template <class Operation>
void expectNoAllocation(Operation operation) {
  EXPECT_EQ(support::forEachFailingAllocation(operation), 0);
}

template <class C>
class AllocationFree : public ::testing::Test {};
TYPED_TEST_SUITE(AllocationFree, StorageCases, ScalarNames);

TYPED_TEST(AllocationFree, VectorOperationsInCore) {
  using T = typename TypeParam::T;
  typename TypeParam::Vec x(5000, scalar<T>(1)), y(5000, scalar<T>(1)), z(5000);
  double norm = 0;

  expectNoAllocation([&] { x.Axpy(y, scalar<T>(1)); });
  expectNoAllocation([&] { x += y; });
  expectNoAllocation([&] { x -= y; });
  expectNoAllocation([&] { x += scalar<T>(1); });
  expectNoAllocation([&] { y *= scalar<T>(1); });
  expectNoAllocation([&] { x.SMlt(scalar<T>(1), 0, -1); });
  expectNoAllocation([&] { z.Copy(x); });
  expectNoAllocation([&] { z.Had(x, y); });
  expectNoAllocation([&] { x.Diff(y, norm); });
  expectNoAllocation([&] { norm = std::abs(x * y) + x.Nrm(E_Nrm1) + x.Nrm2() + x.NrmInf(); });
  expectNoAllocation([&] { x.Normalize(E_NrmInf, &norm); });
  expectNoAllocation([&] { norm = static_cast<double>(x.IMax(0, -1) + x.IMin(0, -1)); });
  expectNoAllocation([&] { x.Zero(0, -1); });
  expectNoAllocation([&] { x.Init(scalar<T>(1), 0, -1); });
  expectNoAllocation([&] { x.Resize(10); });
  expectNoAllocation([&] { x.Resize(5000); });
}

template <class T>
class AllocationFreeMatrix : public ::testing::Test {};
TYPED_TEST_SUITE(AllocationFreeMatrix, BlasScalars, ScalarNames);

TYPED_TEST(AllocationFreeMatrix, OperationsOfFittingShape) {
  using T = TypeParam;
  C_MatMGe<T> a = countedMatrix<T>(3, 3), b(3, 3), c(3, 3);
  VecOf<T> x(3, T(1)), y(3), column;

  expectNoAllocation([&] { a.Mv(T(1), x, T(0), y, 'N'); });
  expectNoAllocation([&] { c.MM('N', 'N', T(1), a, b, T(0)); });
  expectNoAllocation([&] { a.Axpy(b, T(1)); });
  expectNoAllocation([&] { b *= T(2); });
  expectNoAllocation([&] { b.Copy(a); });
  expectNoAllocation([&] { b.Init(T(2)); });
  expectNoAllocation([&] { a.GetCol(1, column); });
  expectNoAllocation([&] { y[0] = a(1, 2) + a[1][1]; });
}

TEST(AllocationFailures, OfVectorsAndMatricesLeakNothing) {
  ScratchFile file(raw(2, 1.5, 2.5));
  const auto vectors = [&] {
    VecOf<double> v(3, 1.0), copy(v), read;
    std::unique_ptr<C_Vec<double, int>> view(v.Lnk(1));
    file.rewind();
    read.Read(file.stream());
    v.Resize(100);
  };
  const auto matrices = [&] {
    C_MatMGe<double> a = countedMatrix<double>(3, 2);
    a.ResizeAndKeepValues(5, 4);
    a.TransposeInSitu();
    std::unique_ptr<C_MatMGe<double>> copy(a.Duplicate()), view(a.Lnk());
    C_MatMSym<double> s(4, 1), t(s);
    s.Resize(7, 7);
    std::unique_ptr<C_MatMSym<double>> look(s.Lnk());
    EXPECT_GE(s.Nrm(E_NrmInf), 0);
  };

  EXPECT_GT(support::forEachFailingAllocation(vectors), 3);
  EXPECT_GT(support::forEachFailingAllocation(matrices), 8);
}

/** Expects every failing allocation of a change of shape to leave all that a matrix shows. */
template <class Make, class Change>
void expectWholeAfterFailures(Make make, Change change) {
  for (long n = 1;; ++n) {
    C_MatMGe<double> a;
    make(a);
    const C_MatMGe<double> before(a);
    const int lead = a.LeadDim();
    bool failed = false;
    {
      const support::FailingAllocation failing(n);
      failed = codeOf([&] { change(a); }) == 1001;
      if (!support::FailingAllocation::happened()) {
        EXPECT_GT(n, 1);
        break;
      }
    }
    EXPECT_TRUE(failed) << n;
    ASSERT_EQ(a.NbRow(), before.NbRow());
    ASSERT_EQ(a.NbCol(), before.NbCol());
    EXPECT_EQ(a.LeadDim(), lead);
    for (int j = 0; j < a.NbCol(); ++j) {
      EXPECT_EQ(a[j], a.Adr() + j * lead);
      for (int i = 0; i < a.NbRow(); ++i)
        EXPECT_EQ(a(i, j), 10 * i + j + 11);
    }
  }
}

void packedMatrix(C_MatMGe<double>& a) {
  a = countedMatrix<double>(3, 2);
}

// Rows 3 to 7 of the block are cut off: the leading dimension stays 8.
void matrixWithAGap(C_MatMGe<double>& a) {
  a = countedMatrix<double>(8, 2);
  a.ResizeAndKeepValues(3, 2);
}

// Growing rows takes its memory beforehand: a failure leaves shape and values.
TEST(AllocationFailures, OfGrowingRowsLeaveTheMatrix) {
  expectWholeAfterFailures(packedMatrix, [](auto& a) { a.ResizeAndKeepValues(6, 2); });
  expectWholeAfterFailures(matrixWithAGap, [](auto& a) { a.ResizeAndKeepValues(5, 2); });
}

TEST(AllocationFailures, OfResizingLeaveTheMatrix) {
  expectWholeAfterFailures(packedMatrix, [](auto& a) {
    const __int64 values = a.NbVal();
    try {
      a.Resize(3, 40);
    } catch (const C_ZarelException&) {
      EXPECT_EQ(a.NbVal(), values);
      throw;
    }
  });
}

} // namespace

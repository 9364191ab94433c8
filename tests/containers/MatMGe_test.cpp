// Shape, views, copies and removals of dense matrices.
#include "containers/support.h"

namespace {

template <class T>
class MatMGe : public ::testing::Test {};
TYPED_TEST_SUITE(MatMGe, MatrixScalars, ScalarNames);

template <class T>
void expectCounted(C_MatMGe<T>& m, int rows, int columns) {
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < columns; ++j)
      EXPECT_EQ(m(i, j), scalar<T>(10 * i + j + 11, i - j)) << i << ", " << j;
}

template <class T>
T counted(int i, int j) {
  return scalar<T>(10 * i + j + 11, i - j);
}

TYPED_TEST(MatMGe, IsNothingAtFirst) {
  C_MatMGe<TypeParam> m;

  EXPECT_EQ(m.NbRow(), 0);
  EXPECT_EQ(m.NbLig(), 0);
  EXPECT_EQ(m.NbCol(), 0);
  EXPECT_EQ(m.LeadDim(), 0);
  EXPECT_EQ(m.NbVal(), 0);
  EXPECT_EQ(m.MaxLength(), 0);
  EXPECT_EQ(m.Adr(), nullptr);
  EXPECT_EQ(m.InCore(), 1);
  EXPECT_FALSE(m.Sym());
  EXPECT_EQ(m.GetSide(), 3);
  EXPECT_STREQ(m.AffType(), "C_MatMGe Type");
  EXPECT_STREQ(m.Version(), "0.1");
}

TYPED_TEST(MatMGe, IsStoredByColumns) {
  using T = TypeParam;
  C_MatMGe<T> m(2, 3);
  EXPECT_EQ(m.Adr()[5], T(0));
  m.SetVal(1, 2, scalar<T>(7, 1));

  EXPECT_EQ(m.Adr()[5], scalar<T>(7, 1));
  EXPECT_EQ(m.GetVal(1, 2), scalar<T>(7, 1));
  EXPECT_EQ(m(1, 2), scalar<T>(7, 1));
  EXPECT_EQ(m[2], m.Adr() + 4);
  const C_MatMGe<T>& constant = m;
  EXPECT_EQ(constant(1, 2), constant[2][1]);
  EXPECT_EQ(m.LeadDim(), 2);
  EXPECT_EQ(m.NbVal(), 6);
  EXPECT_EQ(m.MaxLength(), 3);
  EXPECT_EQ(m.MemSize(), static_cast<int>(6 * sizeof(T)));
}

TYPED_TEST(MatMGe, ViewsForeignMemoryWithALeadingDimension) {
  using T = TypeParam;
  T block[6] = {scalar<T>(1), scalar<T>(2), scalar<T>(3), scalar<T>(4), scalar<T>(5), scalar<T>(6)};
  C_MatMGe<T> gap(2, 2, block, 3), tight(2, 3, block, -1);

  EXPECT_EQ(gap(1, 1), scalar<T>(5));
  EXPECT_EQ(gap.LeadDim(), 3);
  EXPECT_EQ(gap.NbVal(), 6);
  EXPECT_EQ(tight(1, 2), scalar<T>(6));
  EXPECT_EQ(tight.LeadDim(), 2);
  std::unique_ptr<C_MatMGe<T>> view(gap.Lnk());
  (*view)(0, 1) = scalar<T>(9);
  EXPECT_EQ(block[3], scalar<T>(9));
  EXPECT_EQ(codeOf([&] { gap.Resize(4, 4); }), 2870);
  EXPECT_EQ(gap.NbRow(), 2);
  EXPECT_EQ(gap(1, 1), scalar<T>(5));
  EXPECT_EQ(codeOf([&] { C_MatMGe<T> bad(-1, 2, block, -1); }), 2);
}

TYPED_TEST(MatMGe, DuplicateAndCopyOwnTheirValues) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(3, 2);
  std::unique_ptr<C_MatMGe<T>> twin(m.Duplicate());
  C_MatMGe<T> copy(m), assigned;
  assigned = m;
  assigned = *&assigned;
  m.Init(T(0));

  expectCounted(*twin, 3, 2);
  expectCounted(copy, 3, 2);
  expectCounted(assigned, 3, 2);
}

TYPED_TEST(MatMGe, CopyFromAndToAGapGoesByColumns) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(5, 3), copy;
  m.ResizeAndKeepValues(2, 3);
  EXPECT_EQ(copy.Copy(m), 0);
  expectCounted(copy, 2, 3);
  EXPECT_EQ(copy.LeadDim(), 2);
  copy *= scalar<T>(2);

  EXPECT_EQ(m.Copy(copy), 0);

  EXPECT_EQ(m(1, 2), static_cast<T>(scalar<T>(2) * counted<T>(1, 2)));
  EXPECT_EQ(m.Adr()[2], counted<T>(2, 0)); // the gap is as it was
}

TYPED_TEST(MatMGe, CopiesAnyMatrixOfItsScalarElementByElement) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(3, 2), copy(5, 5);
  C_MatMGe<std::conditional_t<std::is_same_v<T, double>, float, double>> other(4, 4);

  EXPECT_EQ(copy.GenCopy(m), 0);
  expectCounted(copy, 3, 2);
  EXPECT_EQ(copy.GenCopy(other), 0);
  EXPECT_EQ(copy.NbRow(), 3);
  EXPECT_EQ(copy.GenCopy(copy), 0);
}

TYPED_TEST(MatMGe, ColumnsAreViews) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(3, 2);
  VecOf<T> v;
  C_Vec<T, int>& base = v;

  EXPECT_EQ(m.GetCol(1, v), 0);
  EXPECT_EQ(v.Dim(), 3);
  v[2] = scalar<T>(99);
  EXPECT_EQ(m(2, 1), scalar<T>(99));
  EXPECT_EQ(m.GetCol(0, base), 0);
  EXPECT_EQ(v[2], counted<T>(2, 0));
  EXPECT_EQ(codeOf([&] { m.GetCol(-1, v); }), 12);
  EXPECT_EQ(codeOf([&] { m.GetCol(2, v); }), 12);
}

TYPED_TEST(MatMGe, ResizeKeepsStoragePositions) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(2, 3);

  EXPECT_EQ(m.Resize(3, 2), 0);

  // 11 21 | 12 22 | 13 23 becomes 11 21 12 | 22 13 23
  EXPECT_EQ(m(2, 0), counted<T>(0, 1));
  EXPECT_EQ(m(0, 1), counted<T>(1, 1));
  EXPECT_EQ(m.LeadDim(), 3);
}

TYPED_TEST(MatMGe, ResizeRefusesNegativeAndHugeShapes) {
  C_MatMGe<TypeParam> m(2, 2);

  EXPECT_EQ(codeOf([&] { m.Resize(65536, 65536); }), 2880);
  EXPECT_EQ(codeOf([&] { m.Resize(65536, 32768); }), 2880);
  EXPECT_EQ(codeOf([&] { m.Resize(-1, 2); }), 2);
  EXPECT_EQ(codeOf([&] { m.Resize(-1, -1); }), 2);
  EXPECT_EQ(codeOf([&] { m.ResizeAndKeepValues(-1, 2); }), 2);
  EXPECT_EQ(codeOf([&] { m.ResizeAndKeepValues(65536, 65536); }), 2880);
  EXPECT_EQ(codeOf([] { C_MatMGe<TypeParam>(65536, 65536); }), 2880);
  EXPECT_EQ(m.NbRow(), 2);
  EXPECT_EQ(m.NbCol(), 2);
}

TYPED_TEST(MatMGe, AFailingResizeLeavesTheMatrix) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(2, 2);
  for (int allowed = 0; allowed < 2; ++allowed) {
    const AllocatorProbe probe(allowed);

    EXPECT_EQ(codeOf([&] { m.Resize(10, 10); }), 1001);

    EXPECT_EQ(m.LeadDim(), 2);
    expectCounted(m, 2, 2);
  }
}

TYPED_TEST(MatMGe, FewerRowsAreAViewInsideTheBlock) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(4, 3);
  const T* block = m.Adr();

  EXPECT_EQ(m.ResizeAndKeepValues(2, 3), 0);

  EXPECT_EQ(m.NbRow(), 2);
  EXPECT_EQ(m.LeadDim(), 4);
  EXPECT_EQ(m.Adr(), block);
  expectCounted(m, 2, 3);
  EXPECT_EQ(m.Resize(2, 3), 0); // the same shape changes nothing
  EXPECT_EQ(m.LeadDim(), 4);
}

TYPED_TEST(MatMGe, MoreRowsAreClearedAndKeepTheRest) {
  using T = TypeParam;
  for (int rows = 1; rows <= 5; ++rows)
    for (int columns = 1; columns <= 5; ++columns)
      for (int grown = rows + 1; grown <= 8; ++grown) {
        C_MatMGe<T> m = countedMatrix<T>(rows, columns);

        EXPECT_EQ(m.ResizeAndKeepValues(grown, columns), 0);

        expectCounted(m, rows, columns);
        for (int i = rows; i < grown; ++i)
          for (int j = 0; j < columns; ++j)
            EXPECT_EQ(m(i, j), T(0));
        EXPECT_EQ(m.LeadDim(), grown);
      }
}

// Rows that were cut off do not come back: growing clears them, also inside the old block.
TYPED_TEST(MatMGe, RowsGrowFromAGap) {
  using T = TypeParam;
  for (int grown = 3; grown <= 7; ++grown) {
    C_MatMGe<T> m = countedMatrix<T>(5, 3);
    m.ResizeAndKeepValues(2, 3);

    EXPECT_EQ(m.ResizeAndKeepValues(grown, 3), 0);

    ASSERT_EQ(m.NbRow(), grown);
    expectCounted(m, 2, 3);
    for (int i = 2; i < grown; ++i)
      for (int j = 0; j < 3; ++j)
        EXPECT_EQ(m(i, j), T(0)) << grown << ": " << i << ", " << j;
  }
}

TYPED_TEST(MatMGe, ColumnsComeClearedAndGo) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(2, 4);

  EXPECT_EQ(m.ResizeAndKeepValues(2, 2), 0);
  EXPECT_EQ(m.ResizeAndKeepValues(2, 4), 0);
  expectCounted(m, 2, 2);
  EXPECT_EQ(m(0, 2), T(0));
  EXPECT_EQ(m(1, 3), T(0));
  EXPECT_EQ(m.ResizeAndKeepValues(3, 5), 0);
  expectCounted(m, 2, 2);
  EXPECT_EQ(m(2, 0), T(0));
  EXPECT_EQ(m(1, 4), T(0));
}

TYPED_TEST(MatMGe, RowsAndColumnsGrowFromNothing) {
  using T = TypeParam;
  C_MatMGe<T> m;

  EXPECT_EQ(m.ResizeAndKeepValues(3, 2), 0);

  EXPECT_EQ(m.NbRow(), 3);
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 2; ++j)
      EXPECT_EQ(m(i, j), T(0));
}

// A change of columns takes the rows as leading dimension and moves nothing: from a gap the kept
// values fall under new indices.
TYPED_TEST(MatMGe, AChangeOfColumnsClosesAGapWithoutMoving) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(3, 3);
  m.ResizeAndKeepValues(2, 3);

  EXPECT_EQ(m.ResizeAndKeepValues(2, 2), 0);

  EXPECT_EQ(m.LeadDim(), 2);
  EXPECT_EQ(m(0, 1), counted<T>(2, 0));
}

// Removing columns moves only as many columns as it removes.
TYPED_TEST(MatMGe, EraseColMovesAsManyColumnsAsItRemoves) {
  using T = TypeParam;
  C_MatMGe<T> three = countedMatrix<T>(2, 3), two = countedMatrix<T>(2, 2),
              five = countedMatrix<T>(2, 5), six = countedMatrix<T>(2, 6);

  EXPECT_EQ(three.EraseCol(0, -1), 0);
  ASSERT_EQ(three.NbCol(), 2);
  EXPECT_EQ(three(0, 0), counted<T>(0, 1));
  EXPECT_EQ(three(0, 1), counted<T>(0, 1)); // stayed in place

  two.EraseCol(0, -1);
  ASSERT_EQ(two.NbCol(), 1);
  EXPECT_EQ(two(1, 0), counted<T>(1, 1));

  five.EraseCol(0, 2); // the tail is shorter: exact
  ASSERT_EQ(five.NbCol(), 2);
  EXPECT_EQ(five(1, 0), counted<T>(1, 3));
  EXPECT_EQ(five(1, 1), counted<T>(1, 4));

  six.EraseCol(1, 2); // 0 3 4 | 3 would be exact, 5 is lost
  ASSERT_EQ(six.NbCol(), 4);
  EXPECT_EQ(six(0, 0), counted<T>(0, 0));
  EXPECT_EQ(six(0, 1), counted<T>(0, 3));
  EXPECT_EQ(six(0, 2), counted<T>(0, 4));
  EXPECT_EQ(six(0, 3), counted<T>(0, 3));
}

TYPED_TEST(MatMGe, EraseColAtTheEndOnlyCuts) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(2, 3), all = countedMatrix<T>(2, 2);

  EXPECT_EQ(m.EraseCol(1, 2), 0);
  EXPECT_EQ(all.EraseCol(0, 1), 0);

  EXPECT_EQ(m.NbCol(), 1);
  expectCounted(m, 2, 1);
  EXPECT_EQ(all.NbCol(), 0);
  EXPECT_EQ(all.NbRow(), 2);
}

TYPED_TEST(MatMGe, EraseRowCompactsTheColumns) {
  using T = TypeParam;
  for (int first = 0; first < 5; ++first)
    for (int last = first; last < 5; ++last) {
      C_MatMGe<T> m = countedMatrix<T>(5, 3);

      EXPECT_EQ(m.EraseRow(first, last), 0);

      ASSERT_EQ(m.NbRow(), 4 - last + first);
      for (int i = 0; i < m.NbRow(); ++i)
        for (int j = 0; j < 3; ++j)
          EXPECT_EQ(m(i, j), counted<T>(i < first ? i : i + last - first + 1, j));
    }
}

TYPED_TEST(MatMGe, EraseRowClosesAGap) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(6, 3);
  m.ResizeAndKeepValues(3, 3);

  EXPECT_EQ(m.EraseRow(1, -1), 0);

  EXPECT_EQ(m.LeadDim(), 2);
  for (int j = 0; j < 3; ++j) {
    EXPECT_EQ(m(0, j), counted<T>(0, j));
    EXPECT_EQ(m(1, j), counted<T>(2, j));
  }
}

TYPED_TEST(MatMGe, EraseRefusesWhatIsNotThere) {
  C_MatMGe<TypeParam> m(3, 2);

  EXPECT_EQ(codeOf([&] { m.EraseCol(-1, 0); }), 12);
  EXPECT_EQ(codeOf([&] { m.EraseCol(1, 0); }), 12);
  EXPECT_EQ(codeOf([&] { m.EraseCol(0, 2); }), 12);
  EXPECT_EQ(codeOf([&] { m.EraseCol(2, -1); }), 12);
  EXPECT_EQ(codeOf([&] { m.EraseRow(-1, -1); }), 12);
  EXPECT_EQ(codeOf([&] { m.EraseRow(2, 1); }), 12);
  EXPECT_EQ(codeOf([&] { m.EraseRow(0, 3); }), 12);
  EXPECT_EQ(m.NbRow(), 3);
  EXPECT_EQ(m.NbCol(), 2);
}

TYPED_TEST(MatMGe, ReleaseGivesEverythingBack) {
  C_MatMGe<TypeParam> m(3, 2);

  EXPECT_EQ(m.Release(), 0);

  EXPECT_EQ(m.NbRow(), 0);
  EXPECT_EQ(m.NbCol(), 0);
  EXPECT_EQ(m.LeadDim(), 0);
  EXPECT_EQ(m.Adr(), nullptr);
  EXPECT_EQ(m.Resize(2, 2), 0);
  EXPECT_EQ(m(1, 1), TypeParam(0));
}

TYPED_TEST(MatMGe, ConnectColsFollowsTheBlock) {
  C_MatMGe<TypeParam> m(3, 2), none;

  EXPECT_EQ(m.ConnectCols(), 0);
  EXPECT_EQ(m[1], m.Adr() + 3);
  EXPECT_EQ(none.ConnectCols(), 0);
}

TYPED_TEST(MatMGe, InitAndZeroLeaveTheGap) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(3, 2), tight(2, 2);
  m.ResizeAndKeepValues(2, 2);

  EXPECT_EQ(m.Init(scalar<T>(4, 1)), 0);
  EXPECT_EQ(m(1, 1), scalar<T>(4, 1));
  EXPECT_EQ(m.Adr()[2], counted<T>(2, 0));
  EXPECT_EQ(m.Zero(), 0);
  EXPECT_EQ(m(0, 1), T(0));
  EXPECT_EQ(m.Adr()[2], counted<T>(2, 0));
  EXPECT_EQ(tight.Init(scalar<T>(3)), 0);
  EXPECT_EQ(tight(1, 1), scalar<T>(3));
}

TYPED_TEST(MatMGe, WalksARow) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(2, 2), none;
  T value(0);

  EXPECT_EQ(m.Row(1), 1);
  EXPECT_EQ(m.FirstCol(value), 0);
  EXPECT_EQ(value, counted<T>(1, 0));
  EXPECT_EQ(m.NextCol(value), 1);
  EXPECT_EQ(value, counted<T>(1, 1));
  EXPECT_EQ(m.NextCol(value), -1);
  EXPECT_EQ(m.Row(2), -1);
  EXPECT_EQ(m.Row(0), 0);
  EXPECT_EQ(m.NextRow(), 1);
  EXPECT_EQ(m.NextRow(), -1);
  EXPECT_EQ(codeOf([&] { m.FirstCol(value); }), 2872); // the cursor has left the rows
  EXPECT_EQ(codeOf([&] { none.FirstCol(value); }), 2872);
  EXPECT_EQ(m.Row(-1), -1); // the cursor goes where it is sent
  EXPECT_EQ(codeOf([&] { m.FirstCol(value); }), 2872);
  EXPECT_EQ(m.NextRow(), 0);
}

TYPED_TEST(MatMGe, CopiesAreCountedAsTheyAreDestroyed) {
  using Counter = C_Counter<C_Mat<TypeParam>>;
  const int created = Counter::objects_created;
  const int alive = Counter::objects_alive;
  {
    C_MatMGe<TypeParam> m(1, 1), copy(m);
    EXPECT_EQ(Counter::objects_created, created + 2);
  }
  EXPECT_EQ(Counter::objects_alive, alive);
}

TEST(MatMGeNothing, HasShapesWithoutValues) {
  C_MatMGe<double> rows(0, 3), columns(3, 0);

  EXPECT_EQ(rows.NbCol(), 3);
  EXPECT_EQ(columns.NbRow(), 3);
  EXPECT_EQ(rows.Nrm(E_NrmInf), 0);
  EXPECT_EQ(columns.Nrm(E_NrmInf), 0);
  EXPECT_EQ(columns.Nrm(E_Nrm1), 0);
  EXPECT_EQ(C_MatMGe<double>().Nrm(E_NrmInf), 0);
}

} // namespace

// Transposition in place against the naive one.
#include "containers/support.h"
#include "containers/transpose.h"

namespace {

template <class T>
class Transposition : public ::testing::Test {};
TYPED_TEST_SUITE(Transposition, MatrixScalars, ScalarNames);

template <class T>
void expectTransposed(int rows, int columns) {
  C_MatMGe<T> m(rows, columns);
  const auto value = [&](int i, int j) { return scalar<T>((i * columns + j) % 30011, j); };
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < columns; ++j)
      m(i, j) = value(i, j);

  ASSERT_EQ(m.TransposeInSitu(), 0);

  ASSERT_EQ(m.NbRow(), columns);
  ASSERT_EQ(m.NbCol(), rows);
  ASSERT_EQ(m.LeadDim(), columns);
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < columns; ++j)
      ASSERT_EQ(m(j, i), value(i, j)) << rows << " x " << columns << " at " << i << ", " << j;
}

TYPED_TEST(Transposition, OfAllShapesUpTo12) {
  for (int rows = 0; rows <= 12; ++rows)
    for (int columns = 0; columns <= 12; ++columns)
      expectTransposed<TypeParam>(rows, columns);
}

TYPED_TEST(Transposition, OfLargerShapes) {
  expectTransposed<TypeParam>(100, 37);
  expectTransposed<TypeParam>(37, 100);
  expectTransposed<TypeParam>(64, 128);
  expectTransposed<TypeParam>(3, 1000);
  expectTransposed<TypeParam>(1000, 2);
  expectTransposed<TypeParam>(129, 129);
  expectTransposed<TypeParam>(127, 131);
}

// The marks are a help, not a need: with fewer of them the search for starts must do.
TEST(TranspositionMarks, AreNotNeeded) {
  for (int rows = 2; rows <= 9; ++rows)
    for (int columns = 2; columns <= 9; ++columns)
      for (int remembered = 0; remembered <= 3; ++remembered) {
        std::vector<int> values, marks(3, 0);
        for (int j = 0; j < rows; ++j) // (columns x rows), by columns
          for (int i = 0; i < columns; ++i)
            values.push_back(100 * i + j);

        Zarel::CycleTransposition<int>(values.data(), rows, columns, marks.data(), remembered)
            .run();

        for (int j = 0; j < columns; ++j)
          for (int i = 0; i < rows; ++i)
            ASSERT_EQ(values[static_cast<std::size_t>(i + j * rows)], 100 * j + i);
      }
}

TEST(TranspositionOfAVector, OnlySwapsTheShape) {
  C_MatMGe<double> m(1, 4);
  const double* block = m.Adr();
  m(0, 3) = 7;

  m.TransposeInSitu();

  EXPECT_EQ(m.Adr(), block);
  EXPECT_EQ(m(3, 0), 7);
}

TEST(TranspositionFailure, LeavesTheMatrix) {
  C_MatMGe<double> m = countedMatrix<double>(3, 5);
  const AllocatorProbe none(0);

  EXPECT_EQ(codeOf([&] { m.TransposeInSitu(); }), 1001);

  EXPECT_EQ(m.NbRow(), 3);
  EXPECT_EQ(m(2, 4), 35);
}

} // namespace

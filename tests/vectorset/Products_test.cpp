// Products of sets against sums written out, in all storages.
#include <climits>

#include "support/Processes.h"
#include "vectorset/support.h"

using namespace vectorset;

namespace {

constexpr int kVectors = 5;
constexpr int kLength = 9;

template <class P>
class Products : public ::testing::Test {
protected:
  using Scalar = typename P::T;
  /** In core an integer product ends the process, as BLAS knows no integers. */
  static constexpr bool endsProcess = std::is_integral_v<Scalar> && P::storage == Storage::InCore;

  Dense<Scalar> values = randomDense<Scalar>(kVectors, kLength);
  MadeSet<Scalar> set{P::storage, values, kLength};
};
TYPED_TEST_SUITE(Products, AllCases, CaseNames);

/** Q x over the vectors first to last, or Q^H x. */
template <class T>
std::vector<Wide> denseMv(const Dense<T>& q, const std::vector<T>& x, bool transpose, int first,
                          int last) {
  std::vector<Wide> y;
  if (transpose) {
    for (int j = first; j <= last; ++j)
      y.push_back(dot(q[static_cast<std::size_t>(j)], x));
    return y;
  }
  y.assign(q[0].size(), 0);
  for (int j = first; j <= last; ++j)
    for (std::size_t i = 0; i < y.size(); ++i)
      y[i] +=
          wide(q[static_cast<std::size_t>(j)][i]) * wide(x[static_cast<std::size_t>(j - first)]);
  return y;
}

template <class T>
void expectEqual(Vec<T>& actual, const std::vector<Wide>& expected) {
  ASSERT_EQ(actual.Dim(), static_cast<int>(expected.size()));
  for (int i = 0; i < actual.Dim(); ++i)
    EXPECT_LE(std::abs(wide(actual[i]) - expected[static_cast<std::size_t>(i)]),
              roundingOf<T>(kLength))
        << "at " << i;
}

template <class T>
void expectMv(Zarel::C_VSTRUCT<T>& set, const Dense<T>& values, bool transpose, int first,
              int last) {
  const int count = last - first + 1;
  const auto x = randomList<T>(transpose ? static_cast<int>(values[0].size()) : count);
  Vec<T> operand = vecOf(x);
  Vec<T> y;

  EXPECT_EQ(set.Mv(operand, y, transpose, first, last), 0);

  expectEqual(y, denseMv(values, x, transpose, first, last));
}

TYPED_TEST(Products, VectorsTimesCoefficients) {
  if constexpr (!TestFixture::endsProcess) {
    expectMv(*this->set, this->values, false, 0, kVectors - 1);
    expectMv(*this->set, this->values, false, 1, 3);
  }
}

TYPED_TEST(Products, TransposedVectorsTimesVector) {
  if constexpr (!TestFixture::endsProcess) {
    expectMv(*this->set, this->values, true, 0, kVectors - 1);
    expectMv(*this->set, this->values, true, 2, 2);
  }
}

TYPED_TEST(Products, WholeMappedSetIsOneBlock) {
  if constexpr (!std::is_integral_v<typename TestFixture::Scalar>) {
    this->set->MapAllBlocks();
    expectMv(*this->set, this->values, false, 0, kVectors - 1);
    expectMv(*this->set, this->values, true, 1, 3);
  }
}

TYPED_TEST(Products, GapsAreSteppedOver) {
  using T = typename TestFixture::Scalar;
  if constexpr (TypeParam::storage != Storage::InCore) {
    for (const int elements : {1, 4}) {
      MadeSet<T> gapped(TypeParam::storage, this->values, kLength,
                        elements * static_cast<int>(sizeof(T)));
      expectMv(*gapped, this->values, false, 0, kVectors - 1);
      expectMv(*gapped, this->values, true, 0, kVectors - 1);
    }
  }
}

TYPED_TEST(Products, LinkIsARectangle) {
  if constexpr (!TestFixture::endsProcess) {
    Zarel::C_VSTRUCT<typename TestFixture::Scalar> link(*this->set, 1, 4, 2, 8);
    const auto part = partOf(this->values, 1, 4, 2, 8);

    expectMv(link, part, false, 0, 2);
    expectMv(link, part, true, 0, 2);
  }
}

TYPED_TEST(Products, ScaledProductIsAddedToScaledVector) {
  using T = typename TestFixture::Scalar;
  if constexpr (!TestFixture::endsProcess) {
    const auto x = randomList<T>(kVectors);
    const auto y0 = randomList<T>(kLength, 8);
    Vec<T> operand = vecOf(x);
    Vec<T> y = vecOf(y0);

    this->set->Mv(scalar<T>(2), operand, scalar<T>(3), y, 'N');

    auto expected = denseMv(this->values, x, false, 0, kVectors - 1);
    for (std::size_t i = 0; i < kLength; ++i)
      expected[i] = 2.0 * expected[i] + 3.0 * wide(y0[i]);
    expectEqual(y, expected);
  }
}

TYPED_TEST(Products, AnyLetterButNIsTransposed) {
  using T = typename TestFixture::Scalar;
  if constexpr (!TestFixture::endsProcess) {
    for (const char trans : {'T', 'C', 'n', 'x'}) {
      const auto x = randomList<T>(kLength);
      Vec<T> operand = vecOf(x);
      Vec<T> y(kVectors);
      this->set->Mv(T(1), operand, T(0), y, trans);
      expectEqual(y, denseMv(this->values, x, true, 0, kVectors - 1));
    }
  }
}

TYPED_TEST(Products, MatrixOperandIsTakenByColumns) {
  using T = typename TestFixture::Scalar;
  if constexpr (!TestFixture::endsProcess) {
    const auto b = randomDense<T>(3, kVectors, 9);
    C_MatMGe<T> B(kVectors, 3);
    for (int j = 0; j < 3; ++j)
      for (int i = 0; i < kVectors; ++i)
        B(i, j) = b[static_cast<std::size_t>(j)][static_cast<std::size_t>(i)];
    C_MatMGe<T> C;

    this->set->MM(T(1), B, T(0), C, 'N');

    ASSERT_EQ(C.NbRow(), kLength);
    ASSERT_EQ(C.NbCol(), 3);
    for (int j = 0; j < 3; ++j) {
      Vec<T> column;
      C.GetCol(j, column);
      expectEqual(column,
                  denseMv(this->values, b[static_cast<std::size_t>(j)], false, 0, kVectors - 1));
    }
  }
}

template <class T>
void expectGram(C_MatMGe<T>& M, const Dense<T>& values) {
  const int n = static_cast<int>(values.size());
  ASSERT_EQ(M.NbRow(), n);
  ASSERT_EQ(M.NbCol(), n);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i <= j; ++i) {
      const Wide expected =
          dot(values[static_cast<std::size_t>(i)], values[static_cast<std::size_t>(j)]);
      EXPECT_LE(std::abs(wide(M(i, j)) - expected), roundingOf<T>(kLength));
      EXPECT_EQ(M(j, i), M(i, j));
    }
}

TYPED_TEST(Products, GramMatrixIsMirroredWithoutConjugation) {
  C_MatMGe<typename TestFixture::Scalar> M;

  EXPECT_EQ(this->set->MatQtQ(M), 0);

  expectGram(M, this->values);
}

TYPED_TEST(Products, GramMatrixOfALinkIntoAGappedSet) {
  using T = typename TestFixture::Scalar;
  MadeSet<T> gapped(TypeParam::storage, this->values, kLength, static_cast<int>(2 * sizeof(T)));
  Zarel::C_VSTRUCT<T> link(*gapped, 1, 4, 4, kLength);
  C_MatMGe<T> M;

  link.MatQtQ(M);

  expectGram(M, partOf(this->values, 1, 4, 4, kLength));
}

TYPED_TEST(Products, GramMatrixOfVectorsThatAreNoMatrix) {
  // Half an element between the vectors: no leading dimension describes that.
  using T = typename TestFixture::Scalar;
  if constexpr (TypeParam::storage != Storage::InCore && isComplex<T>) {
    MadeSet<T> odd(TypeParam::storage, this->values, kLength, static_cast<int>(sizeof(T) / 2));
    C_MatMGe<T> M;

    odd->MatQtQ(M);

    expectGram(M, this->values);
  }
}

template <class T>
void expectMutual(C_MatMGe<T>& M, int n, const Dense<T>& left, const Dense<T>& right) {
  ASSERT_EQ(M.NbRow(), n);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i)
      EXPECT_LE(std::abs(wide(M(i, j)) - dot(left[static_cast<std::size_t>(i)],
                                             right[static_cast<std::size_t>(j)])),
                roundingOf<T>(kLength));
}

TYPED_TEST(Products, TwoSetsGiveTheirMutualProducts) {
  using T = typename TestFixture::Scalar;
  if constexpr (!std::is_integral_v<T> || TypeParam::storage == Storage::FileResident) {
    const auto others = randomDense<T>(kVectors, kLength, 11);
    MadeSet<T> q1(TypeParam::storage, others, kLength);
    C_MatMGe<T> M;

    EXPECT_EQ(this->set->MatQ1tQ(*q1, M, 3), 0);

    expectMutual(M, 3, others, this->values);
  }
}

TYPED_TEST(Products, PaddedResultIsFilledVectorByVector) {
  using T = typename TestFixture::Scalar;
  const auto others = randomDense<T>(kVectors, kLength, 11);
  MadeSet<T> q1(TypeParam::storage, others, kLength);
  std::vector<T> room(7 * kVectors, T(1));
  C_MatMGe<T> M(kVectors, kVectors, room.data(), 7);

  this->set->MatQ1tQ(*q1, M, -1);

  expectMutual(M, kVectors, others, this->values);
  for (std::size_t j = 0; j < kVectors; ++j)
    EXPECT_EQ(room[7 * j + kVectors], T(1)) << "padding";
}

TYPED_TEST(Products, SetTimesItselfNeedsTwoOfItsVectorsAtOnce) {
  using T = typename TestFixture::Scalar;
  std::vector<T> room(7 * kVectors);
  C_MatMGe<T> padded(kVectors, kVectors, room.data(), 7);
  this->set->MatQ1tQ(*this->set, padded, -1);
  expectMutual(padded, kVectors, this->values, this->values);

  if constexpr (!std::is_integral_v<T> || TypeParam::storage == Storage::FileResident) {
    C_MatMGe<T> M;
    this->set->MatQ1tQ(*this->set, M, -1);
    expectMutual(M, kVectors, this->values, this->values);
  }
}

TYPED_TEST(Products, MatrixResultIsStoredInASet) {
  using T = typename TestFixture::Scalar;
  if constexpr (!TestFixture::endsProcess) {
    const auto b = randomDense<T>(2, kLength, 9);
    const auto c = randomDense<T>(2, kVectors, 13);
    C_MatMGe<T> B(kLength, 2);
    for (int j = 0; j < 2; ++j)
      for (int i = 0; i < kLength; ++i)
        B(i, j) = b[static_cast<std::size_t>(j)][static_cast<std::size_t>(i)];
    MadeSet<T> result(TypeParam::storage, c, kVectors);

    this->set->MM(scalar<T>(2), B, scalar<T>(3), *result, 'T');

    const auto stored = contentOf(*result);
    for (std::size_t j = 0; j < 2; ++j) {
      auto expected = denseMv(this->values, b[j], true, 0, kVectors - 1);
      for (std::size_t i = 0; i < kVectors; ++i)
        expected[i] = 2.0 * expected[i] + 3.0 * wide(c[j][i]);
      Vec<T> column = vecOf(stored[j]);
      expectEqual(column, expected);
    }
  }
}

// Edges.

using Set = Zarel::C_VSTRUCT<double>;

TEST(VectorSetProducts, OperandOfWrongLengthIsRefused) {
  Set set(1, 3, 4, nullptr);
  Vec<double> x(2);
  Vec<double> y;

  EXPECT_EQ(codeOf([&] { set.Mv(x, y, false, 0, -1); }), 2872);
  EXPECT_EQ(codeOf([&] { set.Mv(x, y, true, 0, -1); }), 2872);
}

TEST(VectorSetProducts, VectorsThatDoNotExistAreRefused) {
  Set set(1, 3, 4, nullptr);
  Vec<double> x(4);
  Vec<double> y;

  EXPECT_EQ(codeOf([&] { set.Mv(x, y, true, 1, 3); }), 12);
  EXPECT_EQ(codeOf([&] { set.Mv(x, y, true, -1, 2); }), 12);
  EXPECT_EQ(codeOf([&] { set.Mv(x, y, true, 3, 1); }), 12);
  EXPECT_EQ(codeOf([&] { set.Mv(x, y, true, INT_MIN, 2); }), 12);
  EXPECT_EQ(codeOf([&] { set.Mv(x, y, true, 2, INT_MIN); }), 12);
}

TEST(VectorSetProducts, OperandWithoutDataIsRefused) {
  Set set(1, 3, 4, nullptr);
  Vec<double> x(4, static_cast<double*>(nullptr));
  Vec<double> y;

  EXPECT_EQ(codeOf([&] { set.Mv(x, y, true, 0, -1); }), 12);
}

TEST(VectorSetProducts, NoVectorsGiveAClearedResult) {
  for (const int mode : {1, 2}) {
    Set set(mode, 0, 4, nullptr);
    Vec<double> x;
    Vec<double> y(4, 1.0);

    set.Mv(x, y, false, 0, -1);

    EXPECT_EQ(listOf(y), std::vector<double>(4, 0.0));
  }
}

TEST(VectorSetProducts, ZeroCoefficientsCostNoMapping) {
  Set set(2, 3, 4, nullptr);
  set.MapBlock(1, 1);
  Vec<double> x(3);
  Vec<double> y(4, 1.0);

  set.Mv(x, y, false, 0, -1);

  EXPECT_EQ(listOf(y), std::vector<double>(4, 0.0));
  EXPECT_TRUE(set.isMapped(1)) << "the caller's range was not touched";
}

TEST(VectorSetProducts, ProductsLeaveNothingMappedButARangeThatHoldsAll) {
  Set set(2, 3, 4, nullptr);
  Vec<double> x(4, 1.0);
  Vec<double> y;

  set.MapBlock(1, 1);
  set.Mv(x, y, true, 0, -1);
  EXPECT_FALSE(set.isMapped(1));

  set.MapBlock(0, 2);
  set.Mv(x, y, true, 0, 1);
  EXPECT_TRUE(set.isMapped(0, 2));
}

TEST(VectorSetProducts, GramMatrixLeavesTheLastVectorMapped) {
  Set set(2, 3, 4, nullptr);
  C_MatMGe<double> M;

  set.MatQtQ(M);

  EXPECT_TRUE(set.isMapped(2));
  EXPECT_FALSE(set.isMapped(1));
  EXPECT_EQ(set.Adr(), nullptr);
}

TEST(VectorSetProducts, GramMatrixOfNothingIsEmpty) {
  Set set(1, 0, 4, nullptr);
  C_MatMGe<double> M(2, 2);

  set.MatQtQ(M);

  EXPECT_EQ(M.NbRow(), 0);
  EXPECT_EQ(M.NbCol(), 0);
}

TEST(VectorSetProducts, GramMatrixOfUnitVectorsIsTheIdentityAndOfEqualOnesIsFlat) {
  Set unit(1, 2, 2, nullptr);
  fillSet<double>(unit, {{1, 0}, {0, 1}});
  Set equal(1, 2, 2, nullptr);
  fillSet<double>(equal, {{3, 4}, {3, 4}});
  C_MatMGe<double> M;

  unit.MatQtQ(M);
  EXPECT_EQ(std::vector<double>(M.Adr(), M.Adr() + 4), (std::vector<double>{1, 0, 0, 1}));
  equal.MatQtQ(M);
  EXPECT_EQ(std::vector<double>(M.Adr(), M.Adr() + 4), std::vector<double>(4, 25.0));
}

TEST(VectorSetProducts, MutualProductOfUnequalSetsIsRefused) {
  Set a(1, 3, 4, nullptr);
  Set longer(1, 3, 5, nullptr);
  Set fewer(1, 2, 4, nullptr);
  C_MatMGe<double> M;

  EXPECT_EQ(codeOf([&] { a.MatQ1tQ(longer, M, -1); }), 12);
  EXPECT_EQ(codeOf([&] { a.MatQ1tQ(fewer, M, -1); }), 12);
  EXPECT_EQ(codeOf([&] { a.MatQ1tQ(a, M, 4); }), 12);
}

TEST(VectorSetProducts, MutualProductLeavesBothSetsMapped) {
  Set a(2, 3, 4, nullptr);
  Set b(2, 3, 4, nullptr);
  C_MatMGe<double> M;

  a.MatQ1tQ(b, M, 1);

  EXPECT_NE(a.Adr(), nullptr);
  EXPECT_NE(b.Adr(), nullptr);
}

TEST(VectorSetProducts, BlockOfALinkStartsAtTheLengthOfItsVectors) {
  // Vectors of the link are 2 long and 3 apart; the second one is looked for 2 values in.
  Set set(1, 2, 3, nullptr);
  fillSet<double>(set, {{1, 2, 3}, {4, 5, 6}});
  Set link(set, 0, 2, 0, 2);
  Vec<double> x = vecOf<double>({1, 0});
  Vec<double> y;

  link.Mv(x, y, true, 1, 1);

  EXPECT_EQ(y[0], 3);
}

TEST(VectorSetProducts, IntegersHaveNoBlasProduct) {
  Zarel::C_VSTRUCT<int> set(1, 2, 2, nullptr);
  Vec<int> x(2, 1);
  Vec<int> y;

  EXPECT_EXIT(set.Mv(x, y, true, 0, -1), ::testing::ExitedWithCode(255),
              "Error : gemm with integers not yet implemented");
}

TEST(VectorSetProducts, IntegersHaveNoMutualBlasProduct) {
  C_MatMGe<int> M;
  for (const int mode : {1, 2}) {
    Zarel::C_VSTRUCT<int> set(mode, 2, 2, nullptr);
    EXPECT_EXIT(set.MatQ1tQ(set, M, -1), ::testing::ExitedWithCode(255),
                "Error : gemm with integers not yet implemented");
  }
  Zarel::C_VSTRUCT<int> none(1, 0, 2, nullptr);
  EXPECT_EQ(none.MatQ1tQ(none, M, -1), 0);
}

TEST(VectorSetProducts, SetIsItsOwnOperand) {
  const Dense<double> q{{1, 2, 3}, {0, 1, 5}, {2, 0, 1}};
  const Dense<double> squared{{7, 4, 16}, {10, 1, 10}, {4, 4, 7}}; // Q Q
  for (const Storage storage : {Storage::InCore, Storage::Mapped, Storage::FileResident}) {
    MadeSet<double> set(storage, q, 3);
    C_MatMGe<double> C;

    set->MM(1, *set, 0, C, 'N');

    for (int j = 0; j < 3; ++j)
      EXPECT_EQ(std::vector<double>(C[j], C[j] + 3), squared[static_cast<std::size_t>(j)]);
    EXPECT_EQ(codeOf([&] { set->MM(1, C, 0, *set, 'N'); }), 12) << "but not its own result";
    EXPECT_EQ(contentOf(*set), q);
  }
}

TEST(VectorSetProducts, GramMatrixRespectsThePaddingOfItsResult) {
  for (const Storage storage : {Storage::InCore, Storage::Mapped, Storage::FileResident}) {
    MadeSet<double> set(storage, {{1, 2}, {3, 4}}, 2);
    double room[6] = {9, 9, 9, 9, 9, 9};
    C_MatMGe<double> M(2, 2, room, 3);

    set->MatQtQ(M);

    EXPECT_EQ(std::vector<double>(room, room + 6), (std::vector<double>{5, 11, 9, 11, 25, 9}));
  }
}

TEST(VectorSetProducts, TimesASetIsEmpty) {
  Set set(1, 2, 2, nullptr);
  EXPECT_EQ((set * set).Dim(), 0);
}

TEST(VectorSetProducts, InnerProductIsTheDotProduct) {
  using C = std::complex<double>;
  Zarel::C_FInnerProd<C> ip;
  Vec<C> a(1, C(0, 1));
  Vec<C> b(1, C(0, 2));

  EXPECT_EQ(ip(a, b), C(2, 0));
}

// Rows that are spread over processes.

template <class P>
class SpreadRows : public ::testing::Test {};
TYPED_TEST_SUITE(SpreadRows, FloatCases, CaseNames);

TYPED_TEST(SpreadRows, MutualProductIsSummedOverAllRanks) {
  using T = typename TypeParam::T;
  for (const int ranks : {2, 3, 4}) {
    const int rows = 3 * ranks;
    const auto left = randomDense<T>(4, rows, 5);
    const auto right = randomDense<T>(4, rows, 6);

    support::runProcesses(ranks, [&](int rank) {
      MadeSet<T> q1(TypeParam::storage, partOf(left, 0, 4, 3 * rank, 3 * rank + 3), 3);
      MadeSet<T> q(TypeParam::storage, partOf(right, 0, 4, 3 * rank, 3 * rank + 3), 3);
      C_MatMGe<T> M;

      q->MatQ1tQ(*q1, M, -1);

      expectMutual(M, 4, left, right);
    });
  }
}

TEST(VectorSetProducts, PaddedResultIsNotSummed) {
  support::runProcesses(2, [&](int rank) {
    Set set(1, 1, 1, nullptr);
    set.SetVal(0, 0, rank + 1);
    double room[2] = {0, 0};
    C_MatMGe<double> M(1, 1, room, 2);

    set.MatQ1tQ(set, M, -1);

    EXPECT_EQ(room[0], (rank + 1) * (rank + 1));
  });
}

} // namespace

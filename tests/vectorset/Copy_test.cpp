// Copies between sets, and of chosen rows.
#include <zarel/lm_bitvec.h>

#include "vectorset/support.h"

using namespace vectorset;

namespace {

constexpr int kVectors = 4;
constexpr int kLength = 6;

template <class P>
class Copies : public ::testing::Test {
protected:
  using Scalar = typename P::T;
  using Set = Zarel::C_VSTRUCT<Scalar>;
  Dense<Scalar> values = randomDense<Scalar>(kVectors, kLength);
  MadeSet<Scalar> set{P::storage, values, kLength};
};
TYPED_TEST_SUITE(Copies, AllCases, CaseNames);

TYPED_TEST(Copies, SetTakesVectorsOfAnother) {
  typename TestFixture::Set copy(2, 1, kLength, nullptr);

  copy.Copy(*this->set, 1, 3);

  EXPECT_EQ(contentOf(copy), partOf(this->values, 1, 3, 0, kLength));
  EXPECT_EQ(copy.getCoreMode(), 2) << "the storage stays";
}

TYPED_TEST(Copies, SetOfOtherLengthIsMadeAnewInCore) {
  typename TestFixture::Set copy(2, 2, kLength + 1, nullptr);

  copy = *this->set;

  EXPECT_EQ(contentOf(copy), this->values);
  EXPECT_EQ(copy.getCoreMode(), 1);
}

TYPED_TEST(Copies, InitializeKeepsTheStorage) {
  for (const int mode : {1, 2}) {
    typename TestFixture::Set copy(mode, 2, kLength + 1, nullptr);
    EXPECT_EQ(copy.Initialize(*this->set), 0);
    EXPECT_EQ(contentOf(copy), this->values);
    EXPECT_EQ(copy.getCoreMode(), mode);
  }
}

TYPED_TEST(Copies, InitializeTakesAnotherStorage) {
  typename TestFixture::Set copy(1, 2, kLength, nullptr);

  copy.Initialize(*this->set, 2);

  EXPECT_EQ(copy.getCoreMode(), 2);
  EXPECT_EQ(contentOf(copy), this->values);
}

TYPED_TEST(Copies, LinkIsInitializedFromItsRectangle) {
  typename TestFixture::Set link(*this->set, 1, 4, 2, 5);
  typename TestFixture::Set copy;

  copy.Initialize(link);

  EXPECT_EQ(contentOf(copy), partOf(this->values, 1, 4, 2, 5));
}

TYPED_TEST(Copies, MergedVectorsStandBehindTheOld) {
  for (const int mode : {1, 2}) {
    typename TestFixture::Set all(mode, 2, kLength, nullptr);
    const auto first = randomDense<typename TestFixture::Scalar>(2, kLength, 3);
    fillSet(all, first);

    all.Merge(*this->set);

    auto expected = first;
    expected.insert(expected.end(), this->values.begin(), this->values.end());
    EXPECT_EQ(contentOf(all), expected);
  }
}

TYPED_TEST(Copies, RowsAreTheElementsOfAllVectors) {
  using T = typename TestFixture::Scalar;
  Vec<T> row;

  EXPECT_EQ(this->set->GetRow(2, row), 0);

  ASSERT_EQ(row.Dim(), kVectors);
  for (int j = 0; j < kVectors; ++j)
    EXPECT_EQ(row[j], this->values[static_cast<std::size_t>(j)][2]);
}

TYPED_TEST(Copies, RowsOfLinksAndOfSetsWithGaps) {
  using T = typename TestFixture::Scalar;
  MadeSet<T> gapped(TypeParam::storage, this->values, kLength, static_cast<int>(3 * sizeof(T)));
  typename TestFixture::Set link(*gapped, 1, 3, 2, 6);
  Vec<T> row;

  link.GetRow(1, row);
  EXPECT_EQ(listOf(row), (std::vector<T>{this->values[1][3], this->values[2][3]}));

  gapped->MapAllBlocks();
  gapped->GetRow(5, row);
  EXPECT_EQ(row[3], this->values[3][5]);
}

TYPED_TEST(Copies, RectangleIsCopied) {
  using T = typename TestFixture::Scalar;
  C_MatMGe<T> M;
  const auto expectPart = [&](int col0, int col1, int row0, int row1) {
    const auto part = partOf(this->values, col0, col1, row0, row1);
    ASSERT_EQ(M.NbRow(), row1 - row0);
    ASSERT_EQ(M.NbCol(), col1 - col0);
    for (int j = 0; j < M.NbCol(); ++j)
      for (int i = 0; i < M.NbRow(); ++i)
        EXPECT_EQ(M(i, j), part[static_cast<std::size_t>(j)][static_cast<std::size_t>(i)]);
  };

  this->set->GetRows(M, 1, 4, 0, -1);
  expectPart(0, kVectors, 1, 4);
  this->set->GetRows(M, 2, -1, 1, 3);
  expectPart(1, 3, 2, kLength);
  this->set->MapAllBlocks();
  this->set->GetRows(M, 0, 2, 2, -1);
  expectPart(2, kVectors, 0, 2);
}

/** A set of row numbers that goes with the test. */
class Rows {
public:
  explicit Rows(std::initializer_list<int> on, int length = kLength) {
    int error = 0;
    set_ = LM_bv_get_codage("rows", 0, length, 0, "rows", &error);
    for (const int i : on)
      LM_bv_set_on(set_, i);
  }
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;
  ~Rows() { LM_bv_free(set_); }
  BVEC* get() { return set_; }

private:
  BVEC* set_;
};

TYPED_TEST(Copies, RowsUnderAMaskAreExtracted) {
  using T = typename TestFixture::Scalar;
  Rows rows{0, 3, 5};
  C_MatMGe<T> M;

  EXPECT_EQ(this->set->Extract(M, rows.get(), 0, -1), 0);

  ASSERT_EQ(M.NbRow(), 3);
  ASSERT_EQ(M.NbCol(), kVectors);
  for (int j = 0; j < kVectors; ++j) {
    const auto& column = this->values[static_cast<std::size_t>(j)];
    EXPECT_EQ((std::vector<T>{M(0, j), M(1, j), M(2, j)}),
              (std::vector<T>{column[0], column[3], column[5]}));
  }
}

TYPED_TEST(Copies, MaskedRowsAreCleared) {
  using T = typename TestFixture::Scalar;
  int mask[kLength] = {1, 0, 7, 1, 0, 1};
  if constexpr (TypeParam::storage == Storage::Mapped) this->set->setMasterDof(mask);

  this->set->ZeroNonMasterDof(TypeParam::storage == Storage::Mapped ? nullptr : mask);

  auto expected = this->values;
  for (auto& column : expected)
    column[1] = column[4] = T(0);
  EXPECT_EQ(contentOf(*this->set), expected);
}

TYPED_TEST(Copies, ClearingALinkLeavesTheRest) {
  using T = typename TestFixture::Scalar;
  typename TestFixture::Set link(*this->set, 1, 3, 2, 4);

  link.Zero();

  auto expected = this->values;
  for (const std::size_t j : {1, 2})
    expected[j][2] = expected[j][3] = T(0);
  EXPECT_EQ(contentOf(*this->set), expected);
}

TYPED_TEST(Copies, WritingThroughALinkReachesTheSet) {
  using T = typename TestFixture::Scalar;
  typename TestFixture::Set link(*this->set, 2, 4, 1, 5);

  link.SetVal(3, 1, T(9));

  auto expected = this->values;
  expected[3][4] = T(9);
  EXPECT_EQ(contentOf(*this->set), expected);
  Vec<T> row;
  this->set->GetRow(4, row);
  EXPECT_EQ(row[3], T(9));
}

TYPED_TEST(Copies, LinkOfALinkIsASmallerRectangle) {
  typename TestFixture::Set link(*this->set, 1, 4, 1, 6);
  typename TestFixture::Set inner(link, 1, 3, 2, -1);

  EXPECT_EQ(contentOf(inner), partOf(this->values, 2, 4, 3, 6));
}

// Edges.

using Set = Zarel::C_VSTRUCT<double>;

TEST(VectorSetCopies, FlatCopyInCoreBeginsAtTheStartOfTheBlock) {
  Set source(1, 3, 2, nullptr);
  fillSet<double>(source, {{1, 2}, {3, 4}, {5, 6}});
  Set copy(1, 1, 2, nullptr);

  copy.Copy(source, 1, 3);

  EXPECT_EQ(contentOf(copy), (Dense<double>{{1, 2}, {3, 4}}));
}

TEST(VectorSetCopies, FlatCopyOfALinkTakesWhatLiesBetweenItsVectors) {
  Set set(1, 2, 3, nullptr);
  fillSet<double>(set, {{1, 2, 3}, {4, 5, 6}});
  Set link(set, 0, 2, 0, 2);
  Set copy(1, 1, 2, nullptr);

  copy.Copy(link, 0, -1);
  EXPECT_EQ(contentOf(copy), (Dense<double>{{1, 2}, {3, 4}}));
  copy.Initialize(link);
  EXPECT_EQ(contentOf(copy), (Dense<double>{{1, 2}, {4, 5}}));
}

TEST(VectorSetCopies, NothingIsTakenFromASetThatIsNotValid) {
  Set none;
  for (const int mode : {1, 2}) {
    Set set(mode, 1, 2, nullptr);
    fillSet<double>(set, {{1, 2}});
    EXPECT_EQ(codeOf([&] { set.Initialize(none); }), 11);
    EXPECT_EQ(codeOf([&] { set.Initialize(none, mode); }), 11);
    EXPECT_EQ(codeOf([&] { set.Copy(none, 0, -1); }), 11);
    EXPECT_EQ(codeOf([&] { set.Merge(none); }), 11);
    EXPECT_EQ(contentOf(set), (Dense<double>{{1, 2}}));
  }
}

TEST(VectorSetCopies, GivenMaskCountsBeforeTheKeptOne) {
  for (const int mode : {1, 2}) {
    Set set(mode, 1, 3, nullptr);
    fillSet<double>(set, {{1, 2, 3}});
    int kept[] = {0, 1, 1};
    int given[] = {1, 1, 0};
    set.setMasterDof(kept);

    set.ZeroNonMasterDof(given);
    EXPECT_EQ(contentOf(set), (Dense<double>{{1, 2, 0}}));
    set.ZeroNonMasterDof(nullptr);
    EXPECT_EQ(contentOf(set), (Dense<double>{{0, 2, 0}}));
  }
}

/** A set and its link read the same file through windows of their own. */
TEST(VectorSetCopies, RowsShowWhatALinkHasStoredMeanwhile) {
  MadeSet<double> set(Storage::FileResident, {{1, 2, 3}, {4, 5, 6}}, 3);
  Set link(*set, 0, -1, 1, 3);
  Set inner(link, 1, -1, 0, -1);
  double row[2];

  inner.SetVal(0, 0, 77);
  set->GetRow(1, row);
  EXPECT_EQ(row[1], 77);
  set->SetVal(2, 0, 88);
  link.GetRow(1, row);
  EXPECT_EQ(row[0], 88);
}

TEST(VectorSetCopies, MergeWithItselfDoubles) {
  for (const int mode : {1, 2}) {
    Set set(mode, 2, 2, nullptr);
    fillSet<double>(set, {{1, 2}, {3, 4}});
    set.Merge(set);
    EXPECT_EQ(contentOf(set), (Dense<double>{{1, 2}, {3, 4}, {1, 2}, {3, 4}}));
  }
}

TEST(VectorSetCopies, MergeOnALinkIsRefused) {
  Set set(1, 2, 2, nullptr);
  Set link(set, 0, 2, 0, 2);

  EXPECT_EQ(codeOf([&] { link.Merge(set); }), 2870);
}

TEST(VectorSetCopies, RangesAreTested) {
  Set set(1, 3, 4, nullptr);
  Set other(1, 2, 5, nullptr);
  C_MatMGe<double> M;
  double row[3];

  EXPECT_EQ(codeOf([&] { set.GetRow(4, row); }), 12);
  EXPECT_EQ(codeOf([&] { set.GetRow(-1, row); }), 12);
  EXPECT_EQ(codeOf([&] { set.GetRows(M, 2, 1, 0, -1); }), 12);
  EXPECT_EQ(codeOf([&] { set.GetRows(M, 0, 5, 0, -1); }), 12);
  EXPECT_EQ(codeOf([&] { set.GetRows(M, 0, -1, 0, 4); }), 12);
  EXPECT_EQ(codeOf([&] { other.Copy(set, 0, 4); }), 12);
  EXPECT_EQ(codeOf([&] { set.Merge(other); }), 12);
  EXPECT_EQ(codeOf([&] { set.Extract(M, nullptr, 0, -1); }), 12);
}

TEST(VectorSetCopies, ExtractedColumnsStandWhereTheyStandInTheSet) {
  Set set(1, 3, 2, nullptr);
  fillSet<double>(set, {{1, 2}, {3, 4}, {5, 6}});
  Rows rows({1}, 2);
  C_MatMGe<double> roomy(1, 3);
  C_MatMGe<double> tight;

  set.Extract(roomy, rows.get(), 2, 3);
  EXPECT_EQ(roomy.Adr()[2], 6);
  EXPECT_EQ(codeOf([&] { set.Extract(tight, rows.get(), 2, 3); }), 12) << "no room for column 2";
}

TEST(VectorSetCopies, WithoutAMaskNothingIsCleared) {
  Set set(1, 1, 2, nullptr);
  fillSet<double>(set, {{1, 2}});

  set.ZeroNonMasterDof(nullptr);

  EXPECT_EQ(contentOf(set), (Dense<double>{{1, 2}}));
}

} // namespace

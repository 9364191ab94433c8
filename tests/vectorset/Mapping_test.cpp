// The mapped range of a set.
#include <cstdint>

#include "vectorset/support.h"

using namespace vectorset;

namespace {

using Set = Zarel::C_VSTRUCT<double>;

class MappedRange : public ::testing::Test {
protected:
  MappedRange() {
    fillSet(set, values);
    set.UnmapAllBlocks();
  }
  bool onlyMapped(unsigned int first, unsigned int last) {
    for (unsigned int j = 0; j < 10; ++j)
      if (set.isMapped(j) != (first <= j && j <= last)) return false;
    return true;
  }
  bool nothingMapped() { return onlyMapped(1, 0); }

  Dense<double> values = randomDense<double>(10, 7);
  Set set{2, 10, 7, nullptr};
};

TEST_F(MappedRange, HoldsWhatWasAskedFor) {
  EXPECT_EQ(set.MapBlock(3, 5), 1U);

  EXPECT_TRUE(onlyMapped(3, 5));
  EXPECT_TRUE(set.isMapped(3, 5));
  EXPECT_FALSE(set.isMapped(3, 6));
  EXPECT_TRUE(set.isMapped(6, 3)) << "an empty range";
  for (int j = 3; j <= 5; ++j)
    EXPECT_EQ(listOf(*set[j]), values[static_cast<std::size_t>(j)]);
}

TEST_F(MappedRange, StaysForAPartOfIt) {
  set.MapBlock(3, 5);

  EXPECT_EQ(set.MapBlock(4, 4), 0U);

  EXPECT_TRUE(onlyMapped(3, 5));
}

TEST_F(MappedRange, GoesForAVectorOutsideOfIt) {
  set.MapBlock(3, 5);

  EXPECT_NE(set.MapBlock(2, 2), 0U);

  EXPECT_TRUE(onlyMapped(2, 2));
}

TEST_F(MappedRange, GoesForAWiderOne) {
  set.MapBlock(3, 5);
  set.MapBlock(2, 6);
  EXPECT_TRUE(onlyMapped(2, 6));
}

TEST_F(MappedRange, EndsWithTheSet) {
  set.MapBlock(7, 4000000000U);
  EXPECT_TRUE(onlyMapped(7, 9));
}

TEST_F(MappedRange, LiesWithinTheSet) {
  int err = 3;
  EXPECT_EQ(codeOf([&] { set.MapBlock(10, 12, &err, false); }), 12);
  EXPECT_EQ(err, 0);
  EXPECT_EQ(codeOf([&] { set.MapBlock(5, 4); }), 12);
  EXPECT_TRUE(nothingMapped());
}

TEST_F(MappedRange, OfNoVectorsIsRefused) {
  Set none(2, 0, 3, nullptr);
  EXPECT_EQ(codeOf([&] { none.MapBlock(0, 0); }), 12);
}

TEST_F(MappedRange, IdsCountUpUntilAllIsUnmapped) {
  EXPECT_EQ(set.MapBlock(0, 0), 1U);
  EXPECT_EQ(set.MapBlock(0, 0), 0U);
  set.UnmapBlock(1U);
  EXPECT_EQ(set.MapBlock(1, 1), 2U);
  set.UnmapAllBlocks();
  EXPECT_EQ(set.MapBlock(2, 2), 1U);
}

TEST_F(MappedRange, IsUnmappedByItsId) {
  const unsigned int id = set.MapBlock(3, 5);
  int err = 1;

  set.UnmapBlock(id + 1);
  EXPECT_TRUE(onlyMapped(3, 5));
  set.UnmapBlock(id, &err);

  EXPECT_TRUE(nothingMapped());
  EXPECT_EQ(err, 0);
}

TEST_F(MappedRange, IsUnmappedByItsExactEnds) {
  set.MapBlock(3, 5);

  set.UnmapBlock(3, 4, nullptr);
  EXPECT_TRUE(onlyMapped(3, 5));
  set.UnmapBlock(3, 5, nullptr);

  EXPECT_TRUE(nothingMapped());
}

TEST_F(MappedRange, ZeroIsNoId) {
  set.MapAllBlocks();

  set.UnmapBlock(set.MapBlock(4, 4));

  EXPECT_TRUE(set.isMapped(0, 9));
  EXPECT_NE(set.Adr(), nullptr) << "what finds no block changes nothing";
}

TEST_F(MappedRange, HasABaseOnlyWhenItIsTheWholeSet) {
  set.MapBlock(0, 8);
  EXPECT_EQ(set.Adr(), nullptr);
  const unsigned int id = set.MapBlock(0, 9);
  ASSERT_NE(set.Adr(), nullptr);
  EXPECT_EQ(set.Adr()[7 * 9 + 2], values[9][2]);
  set.UnmapBlock(id);
  EXPECT_EQ(set.Adr(), nullptr);
}

TEST_F(MappedRange, WritesReachTheFile) {
  set.MapBlock(4, 4);
  (*set[4])[0] = 77;
  set.MapBlock(5, 5);
  EXPECT_EQ(set.GetVal(0, 4), 77);
}

TEST_F(MappedRange, VectorsAreMappedOneByOneOnRequest) {
  EXPECT_EQ((*set.GetVector(6, nullptr))[1], values[6][1]);
  EXPECT_TRUE(onlyMapped(6, 6));
}

TEST_F(MappedRange, GoesWhenTheSetIsResized) {
  set.MapAllBlocks();
  set.Resize(11, nullptr);
  EXPECT_TRUE(nothingMapped());
  EXPECT_FALSE(set.isMapped(10));
  EXPECT_EQ(set.GetVal(3, 10), 0);
}

TEST_F(MappedRange, RowsDoNotDisturbIt) {
  set.MapBlock(3, 5);
  double row[10];

  set.GetRow(2, row);

  EXPECT_TRUE(onlyMapped(3, 5));
  EXPECT_EQ(row[9], values[9][2]);
}

TEST(MappedLink, ReachesTheLastElementOfTheFile) {
  Set set(2, 3, 4, nullptr);
  fillSet<double>(set, {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}});
  Set link(set, 0, -1, 3, -1);

  link.MapAllBlocks();

  EXPECT_EQ((*link[2])[0], 12) << "a whole stride would lie past the end of the file";
}

// Vectors at addresses that no scalar may have: they are used in copies.

template <class T>
class OddPlaces : public ::testing::Test {
protected:
  static constexpr int vectors = 4;
  static constexpr int length = 5;

  Dense<T> values = randomDense<T>(vectors, length);
  AtOddByte<T> set{values, length};

  std::string file(const Dense<T>& content) const {
    std::string bytes(1, '\x5a');
    for (const auto& column : content)
      bytes.append(reinterpret_cast<const char*>(column.data()), column.size() * sizeof(T));
    return bytes;
  }
};
class ScalarNames {
public:
  template <class T>
  static std::string GetName(int i) {
    return CaseNames::GetName<Case<T, Storage::Mapped>>(i);
  }
};
#define ZAREL_SCALAR(T) , T
using Scalars = TypesAfter<void ZAREL_MATRIX_SCALARS(ZAREL_SCALAR)>;
TYPED_TEST_SUITE(OddPlaces, Scalars, ScalarNames);

TYPED_TEST(OddPlaces, AreShownAligned) {
  this->set->MapBlock(1, 3);

  for (int j = 1; j < 4; ++j) {
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>((*this->set)[j]->Adr(0)) % alignof(TypeParam), 0U);
    EXPECT_EQ(listOf(*(*this->set)[j]), this->values[static_cast<std::size_t>(j)]);
  }
  EXPECT_EQ(contentOf(*this->set), this->values);
}

TYPED_TEST(OddPlaces, TakeWhatIsStoredWhenTheRangeGoes) {
  this->set->MapBlock(1, 3);
  (*(*this->set)[2])[4] = TypeParam(9);
  this->values[2][4] = TypeParam(9);

  this->set->UnmapAllBlocks();

  EXPECT_EQ(this->set.bytes(), this->file(this->values));
  EXPECT_EQ(contentOf(*this->set), this->values);
}

TYPED_TEST(OddPlaces, GiveRowsWithWhatWasStoredMeanwhile) {
  this->set->MapBlock(1, 2);
  (*(*this->set)[2])[3] = TypeParam(9);
  this->values[2][3] = TypeParam(9);
  Vec<TypeParam> row;
  C_MatMGe<TypeParam> M;

  this->set->GetRow(3, row);
  this->set->GetRows(M, 2, 4, 0, -1);

  EXPECT_TRUE(this->set->isMapped(1, 2));
  for (int j = 0; j < 4; ++j) {
    const auto& column = this->values[static_cast<std::size_t>(j)];
    EXPECT_EQ(row[j], column[3]);
    EXPECT_EQ(std::vector<TypeParam>(M[j], M[j] + 2),
              (std::vector<TypeParam>{column[2], column[3]}));
  }
}

TYPED_TEST(OddPlaces, AreAMatrixWhenAllAreMapped) {
  this->set->MapAllBlocks();

  ASSERT_NE(this->set->Adr(), nullptr);
  for (int j = 0; j < 4; ++j)
    EXPECT_EQ(this->set->Adr()[j * this->set->LeadDim() + 1],
              this->values[static_cast<std::size_t>(j)][1]);
  this->set->UnmapAllBlocks();
  EXPECT_EQ(this->set->Adr(), nullptr);
}

TYPED_TEST(OddPlaces, AreMultiplied) {
  MadeSet<TypeParam> plain(Storage::FileResident, this->values, 5);
  Vec<TypeParam> x(5, TypeParam(2));
  Vec<TypeParam> y;
  Vec<TypeParam> z;
  C_MatMGe<TypeParam> M;
  C_MatMGe<TypeParam> N;

  plain->Mv(x, y, true, 0, -1);
  this->set->Mv(x, z, true, 0, -1);
  EXPECT_EQ(listOf(z), listOf(y));
  plain->Mv(y, x, false, 0, -1);
  this->set->Mv(y, z, false, 0, -1);
  EXPECT_EQ(listOf(z), listOf(x));
  plain->MatQtQ(M);
  this->set->MatQtQ(N);
  EXPECT_EQ(std::vector<TypeParam>(N.Adr(), N.Adr() + 16),
            std::vector<TypeParam>(M.Adr(), M.Adr() + 16));
}

TYPED_TEST(OddPlaces, AreLinkedAndResized) {
  using T = TypeParam;
  {
    Zarel::C_VSTRUCT<T> link(*this->set, 1, 3, 2, 4);
    EXPECT_EQ(contentOf(link), partOf(this->values, 1, 3, 2, 4));
    link.Zero();
  }
  this->set->Resize(5, nullptr);

  for (const std::size_t j : {1, 2})
    this->values[j][2] = this->values[j][3] = T(0);
  this->values.emplace_back(5, T(0));
  EXPECT_EQ(contentOf(*this->set), this->values);
}

TEST(OddGap, IsSteppedOver) {
  const auto values = randomDense<double>(3, 4);
  MadeSet<double> set(Storage::Mapped, values, 4, 3);
  Set link(*set, 1, 3, 1, 3);

  set->MapAllBlocks();
  EXPECT_EQ(contentOf(*set), values);
  EXPECT_EQ(set->Adr()[2 * set->LeadDim() + 1], values[2][1]) << "copies have no gap";
  EXPECT_EQ(contentOf(link), partOf(values, 1, 3, 1, 3));
  set->SetVal(3, 2, 77);
  set->UnmapAllBlocks();
  EXPECT_EQ(set->GetVal(3, 2), 77);
}

TEST(UnmappedStorage, NeedsNoMapping) {
  Set set(1, 3, 4, nullptr);

  EXPECT_EQ(set.MapBlock(0, 2), 0U);
  EXPECT_TRUE(set.isMapped(2));
  set.UnmapAllBlocks();
  EXPECT_NE(set.Adr(), nullptr);
}

TEST(UnmappedStorage, HasNoRangeWithoutLength) {
  for (const int mode : {1, 2}) {
    Set set(mode, 3, 0, nullptr);
    EXPECT_TRUE(set.isValid());
    EXPECT_EQ(set.MapBlock(0, 2), 0U);
  }
}

TEST(UnmappedStorage, FileResidentVectorsAreCopies) {
  MadeSet<double> set(Storage::FileResident, {{1, 2}, {3, 4}}, 2);

  EXPECT_FALSE(set->GetMapFile());
  EXPECT_EQ(set->MapBlock(0, 1), 0U);
  auto* const first = (*set)[0];
  EXPECT_EQ(listOf(*first), (std::vector<double>{1, 2}));
  EXPECT_EQ((*set)[1], first) << "the next call overwrites it";
  EXPECT_EQ(set->Adr(), nullptr);
  set->MapAllBlocks();
  EXPECT_EQ(set->Adr(), nullptr);
}

TEST(UnmappedStorage, LargeFileResidentVectorsAreReadWhole) {
  const auto values = randomDense<float>(2, 10000);
  MadeSet<float> set(Storage::FileResident, values, 10000);

  EXPECT_EQ(listOf(*(*set)[1]), values[1]);
  set->SetVal(9999, 1, 5);
  EXPECT_EQ(set->GetVal(9999, 1), 5);
}

} // namespace

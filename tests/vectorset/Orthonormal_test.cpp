// Orthonormal vectors: the set by identities, single vectors by their span, drops by construction.
#include <cmath>

#include "vectorset/support.h"

using namespace vectorset;

namespace {

template <class T>
double normOf(const std::vector<T>& v) {
  return std::sqrt(dot(v, v).real());
}

/** Expects v_i^H v_j to be 1 or 0. */
template <class T>
void expectOrthonormal(const Dense<T>& q, double allowed) {
  for (std::size_t j = 0; j < q.size(); ++j)
    for (std::size_t i = 0; i <= j; ++i)
      EXPECT_LE(std::abs(dot(q[i], q[j]) - (i == j ? 1.0 : 0.0)), allowed) << i << ", " << j;
}

/** Expects the packed coefficients to give the input vectors back, up to the dropped rest. */
template <class T>
void expectRebuilt(const Dense<T>& input, const Dense<T>& q, Counts& lengths, Vec<T>& r,
                   double allowed, int start = 0) {
  int position = 0;
  for (std::size_t i = static_cast<std::size_t>(start); i < input.size(); ++i) {
    const int length = lengths[static_cast<int>(i)];
    for (std::size_t row = 0; row < input[i].size(); ++row) {
      Wide sum = 0;
      for (int k = start; k < length; ++k)
        sum += wide(r[position + k]) * wide(q[static_cast<std::size_t>(k)][row]);
      EXPECT_LE(std::abs(sum - wide(input[i][row])), allowed) << "vector " << i << " row " << row;
    }
    position += length;
  }
  EXPECT_EQ(r.Dim(), position);
}

/** a v + b w */
template <class T>
std::vector<T> combine(T a, const std::vector<T>& v, T b, const std::vector<T>& w) {
  std::vector<T> sum;
  for (std::size_t i = 0; i < v.size(); ++i)
    sum.push_back(a * v[i] + b * w[i]);
  return sum;
}

template <class P>
class Orthonormal : public ::testing::Test {
protected:
  using Scalar = typename P::T;
  static double bound(int length) { return 64 * support::epsilon<Scalar>() * std::sqrt(length); }
};
TYPED_TEST_SUITE(Orthonormal, FloatCases, CaseNames);

TYPED_TEST(Orthonormal, SetSpansWhatItSpanned) {
  using T = typename TestFixture::Scalar;
  const auto input = randomDense<T>(7, 20);
  MadeSet<T> set(TypeParam::storage, input, 20);
  Counts lengths;
  Vec<T> r;

  EXPECT_EQ(set->GramSchmidt(1e-4, 0, &lengths, &r), 0);

  EXPECT_EQ(listOf(lengths), (std::vector<int>{1, 2, 3, 4, 5, 6, 7}));
  const auto q = contentOf(*set);
  expectOrthonormal(q, this->bound(20));
  expectRebuilt(input, q, lengths, r, this->bound(20) * 8);
}

TYPED_TEST(Orthonormal, ManyBlocksOfVectors) {
  using T = typename TestFixture::Scalar;
  if constexpr (TypeParam::storage != Storage::FileResident) {
    const auto input = randomDense<T>(130, 200);
    MadeSet<T> set(TypeParam::storage, input, 200);
    Counts lengths;
    Vec<T> r;

    set->GramSchmidt(1e-4, 0, &lengths, &r);

    ASSERT_EQ(set->getDim(), 130);
    const auto q = contentOf(*set);
    expectOrthonormal(q, this->bound(200));
    expectRebuilt(input, q, lengths, r, this->bound(200) * 130);
  }
}

TYPED_TEST(Orthonormal, DependentVectorsAreDropped) {
  using T = typename TestFixture::Scalar;
  if constexpr (TypeParam::storage != Storage::FileResident) {
    auto input = randomDense<T>(3, 10);
    const std::vector<T> a = input[0];
    const std::vector<T> b = input[1];
    const std::vector<T> c = input[2];
    // With factors that complex scalars turn as well as stretch.
    const T turn = scalar<T>(0.5, 2);
    input = {a, combine(turn, a, T(0), a), b, combine(turn, a, T(3), b), c};
    MadeSet<T> set(TypeParam::storage, input, 10);
    Counts lengths;
    Vec<T> r;

    set->GramSchmidt(1e-3, 0, &lengths, &r);

    EXPECT_EQ(set->getDim(), 3);
    EXPECT_EQ(listOf(lengths), (std::vector<int>{1, 1, 2, 2, 3}));
    const auto q = contentOf(*set);
    expectOrthonormal(q, this->bound(10));
    expectRebuilt(input, q, lengths, r, this->bound(10) * 32);
  }
}

TYPED_TEST(Orthonormal, NearlyEqualVectorsStayWhenTheToleranceAllows) {
  using T = typename TestFixture::Scalar;
  if constexpr (TypeParam::storage != Storage::FileResident) {
    // Snapshots of a slow process: each differs from the one before by a hundredth.
    auto input = randomDense<T>(60, 90);
    for (std::size_t j = 1; j < input.size(); ++j)
      input[j] = combine(T(1), input[j - 1], scalar<T>(0.01), input[j]);
    MadeSet<T> set(TypeParam::storage, input, 90);
    Counts lengths;
    Vec<T> r;

    set->GramSchmidt(1e-4, 0, &lengths, &r);

    ASSERT_EQ(set->getDim(), 60);
    const auto q = contentOf(*set);
    expectOrthonormal(q, this->bound(90));
    expectRebuilt(input, q, lengths, r, this->bound(90) * 60);
  }
}

/** Factors of vectors that are too long or too short for the sum of their squares. */
template <class T>
std::vector<double> extremes() {
  if constexpr (std::is_same_v<T, double> || std::is_same_v<T, std::complex<double>>)
    return {1e300, 1e-300};
  else
    return {1e37, 1e-37};
}

template <class T>
std::vector<T> scaled(double factor, const std::vector<T>& v) {
  return combine(scalar<T>(factor), v, T(0), v);
}

TYPED_TEST(Orthonormal, VectorsOfAnyLengthAreKept) {
  using T = typename TestFixture::Scalar;
  const auto plain = randomDense<T>(3, 12);
  for (const double factor : extremes<T>()) {
    auto input = plain;
    input[0] = scaled(factor, plain[0]);
    input[2] = scaled(factor, plain[2]);
    MadeSet<T> set(TypeParam::storage, input, 12);
    Counts lengths;
    Vec<T> r;

    set->GramSchmidt(1e-4, 0, &lengths, &r);

    EXPECT_EQ(listOf(lengths), (std::vector<int>{1, 2, 3})) << factor;
    expectOrthonormal(contentOf(*set), this->bound(12));
    EXPECT_LE(std::abs(wide(r[0]) / factor - normOf(plain[0])), this->bound(12) * 8);
  }
}

TYPED_TEST(Orthonormal, SingleVectorsOfAnyLengthAreStored) {
  using T = typename TestFixture::Scalar;
  const auto plain = randomDense<T>(2, 9);
  for (const double factor : extremes<T>()) {
    MadeSet<T> set(TypeParam::storage, plain, 9);
    Vec<T> x = vecOf(scaled(factor, plain[0]));
    Vec<T> y = vecOf(scaled(factor, plain[1]));

    EXPECT_EQ(set->AddVector(x, 0, true, 0, nullptr), 0);
    EXPECT_EQ(set->SetVector(y, 1, true, 1e-4, nullptr), 0);

    expectOrthonormal(contentOf(*set), this->bound(9));
  }
}

TYPED_TEST(Orthonormal, InfinityIsFoundAtItsVector) {
  using T = typename TestFixture::Scalar;
  auto input = randomDense<T>(4, 6);
  input[1][2] = scalar<T>(std::numeric_limits<double>::infinity());
  MadeSet<T> set(TypeParam::storage, input, 6);

  set->GramSchmidt(1e-4, 0, nullptr, nullptr);

  EXPECT_EQ(set->FirstNotFinite(), 1);
  Vec<T> x = vecOf(input[1]);
  EXPECT_EQ(codeOf([&] { set->SetVector(x, 1, true, 0, nullptr); }), 2866);
}

TYPED_TEST(Orthonormal, EarlierVectorsTakeNoPart) {
  using T = typename TestFixture::Scalar;
  const auto input = randomDense<T>(5, 12);
  MadeSet<T> set(TypeParam::storage, input, 12);
  Counts lengths;
  Vec<T> r;

  set->GramSchmidt(1e-4, 2, &lengths, &r);

  EXPECT_EQ(listOf(lengths), (std::vector<int>{0, 0, 3, 4, 5}));
  const auto q = contentOf(*set);
  EXPECT_EQ(partOf(q, 0, 2, 0, 12), partOf(input, 0, 2, 0, 12));
  expectOrthonormal(partOf(q, 2, 5, 0, 12), this->bound(12));
  expectRebuilt(input, q, lengths, r, this->bound(12) * 8, 2);
}

TYPED_TEST(Orthonormal, AddedVectorIsOrthogonalToTheEarlierOnes) {
  using T = typename TestFixture::Scalar;
  const auto input = randomDense<T>(4, 9);
  MadeSet<T> set(TypeParam::storage, input, 9);
  double ratio = -1;

  for (int i = 0; i < 4; ++i) {
    Vec<T> x = vecOf(input[static_cast<std::size_t>(i)]);
    EXPECT_EQ(set->AddVector(x, i, true, 1e-4, &ratio), 0);
  }

  EXPECT_GT(ratio, 0);
  EXPECT_LT(ratio, 1);
  expectOrthonormal(contentOf(*set), this->bound(9));
}

TYPED_TEST(Orthonormal, AddedVectorIsStoredAsItIsWithoutOrthogonalising) {
  using T = typename TestFixture::Scalar;
  MadeSet<T> set(TypeParam::storage, randomDense<T>(2, 5), 5);
  const auto x = randomList<T>(5);
  Vec<T> operand = vecOf(x);

  EXPECT_EQ(set->AddVector(operand, 1, false, 0, nullptr), 0);

  EXPECT_EQ(contentOf(*set)[1], x);
  EXPECT_EQ(listOf(operand), x);
}

TYPED_TEST(Orthonormal, AddVectorToldOfDependenceLeavesTheSet) {
  using T = typename TestFixture::Scalar;
  const auto input = randomDense<T>(3, 6);
  MadeSet<T> set(TypeParam::storage, input, 6);
  Vec<T> x = vecOf(input[0]);
  set->AddVector(x, 0, true, 1e-4, nullptr);
  const auto before = contentOf(*set);
  Vec<T> multiple = vecOf(combine(scalar<T>(0.5, 2), input[0], T(0), input[0]));
  double ratio = -1;

  EXPECT_EQ(set->AddVector(multiple, 1, true, 1e-4, &ratio), 12);

  EXPECT_LT(ratio, 1e-4);
  EXPECT_EQ(contentOf(*set), before);
}

TYPED_TEST(Orthonormal, AddVectorTakesAShortVectorForZero) {
  using T = typename TestFixture::Scalar;
  MadeSet<T> set(TypeParam::storage, randomDense<T>(2, 4), 4);
  const std::vector<T> tiny(4, scalar<T>(0.25));
  Vec<T> x = vecOf(tiny);

  EXPECT_EQ(set->AddVector(x, 0, true, 51, nullptr), 5); // length 0.5

  EXPECT_EQ(listOf(x), tiny);
}

TYPED_TEST(Orthonormal, SetVectorThrowsOnDependence) {
  using T = typename TestFixture::Scalar;
  const auto input = randomDense<T>(3, 6);
  MadeSet<T> set(TypeParam::storage, input, 6);
  for (int i = 0; i < 2; ++i) {
    Vec<T> x = vecOf(input[static_cast<std::size_t>(i)]);
    EXPECT_EQ(set->SetVector(x, i, true, 1e-4, nullptr), 0);
  }
  const auto before = contentOf(*set);
  expectOrthonormal(partOf(before, 0, 2, 0, 6), this->bound(6));
  Vec<T> sum = vecOf(combine(scalar<T>(1, 1), input[0], scalar<T>(2, -1), input[1]));
  double ratio = -1;

  EXPECT_EQ(codeOf([&] { set->SetVector(sum, 2, true, 1e-3, &ratio); }), 2866);

  EXPECT_LT(ratio, 1e-3);
  EXPECT_EQ(contentOf(*set), before);
}

TYPED_TEST(Orthonormal, DependenceByInnerProductIsToldWithItsRatio) {
  using T = typename TestFixture::Scalar;
  const auto input = randomDense<T>(2, 6);
  MadeSet<T> set(TypeParam::storage, input, 6);
  Zarel::C_FInnerProd<T> ip;
  Vec<T> coef;
  double ratio = -1;
  Vec<T> x = vecOf(input[0]);
  set->SetVector(x, 0, 1e-3, coef, &ratio, &ip);
  EXPECT_LE(std::abs(ratio - 1), 16 * support::epsilon<T>());
  x = vecOf(input[0]);

  EXPECT_EQ(codeOf([&] { set->SetVector(x, 1, 1e-3, coef, &ratio, &ip); }), 2866);

  EXPECT_LT(ratio, 1e-3);
}

TYPED_TEST(Orthonormal, ZeroVectorIsDependent) {
  using T = typename TestFixture::Scalar;
  MadeSet<T> set(TypeParam::storage, randomDense<T>(2, 4), 4);
  Vec<T> x(4);
  Vec<T> coef;
  Zarel::C_FInnerProd<T> ip;
  double ratio = -1;

  EXPECT_EQ(codeOf([&] { set->SetVector(x, 0, true, 0, &ratio); }), 2866);
  EXPECT_EQ(ratio, 0);
  EXPECT_EQ(codeOf([&] { set->SetVector(x, 0, 0, coef, &ratio, &ip); }), 2866);
}

TYPED_TEST(Orthonormal, FirstVectorByInnerProductIsScaled) {
  using T = typename TestFixture::Scalar;
  MadeSet<T> set(TypeParam::storage, randomDense<T>(2, 2), 2);
  Vec<T> x = vecOf<T>({T(3), T(4)});
  Vec<T> coef;
  Zarel::C_FInnerProd<T> ip;

  EXPECT_EQ(set->SetVector(x, 0, 0, coef, nullptr, &ip), 0);

  ASSERT_EQ(coef.Dim(), 1);
  EXPECT_LE(std::abs(wide(coef[0]) - 5.0), 16 * support::epsilon<T>());
  const auto stored = contentOf(*set)[0];
  EXPECT_LE(std::abs(wide(stored[0]) - 0.6), 4 * support::epsilon<T>());
  EXPECT_LE(std::abs(wide(stored[1]) - 0.8), 4 * support::epsilon<T>());
}

/** Weighs row i by i + 1. */
template <class T>
class Weighed : public Zarel::C_FInnerProd<T> {
public:
  T operator()(C_Vec<T, int>& a, C_Vec<T, int>& b) override {
    T sum(0);
    for (int i = 0; i < a.Dim(); ++i) {
      Vec<T> left(1, a.GetVal(i));
      Vec<T> right(1, b.GetVal(i));
      sum += scalar<T>(i + 1) * (left * right);
    }
    return sum;
  }
};

TYPED_TEST(Orthonormal, GivenInnerProductDecidesWhatIsOrthogonal) {
  using T = typename TestFixture::Scalar;
  const auto input = randomDense<T>(3, 5);
  MadeSet<T> set(TypeParam::storage, input, 5);
  Weighed<T> ip;
  Vec<T> coef;

  for (int i = 0; i < 3; ++i) {
    Vec<T> x = vecOf(input[static_cast<std::size_t>(i)]);
    EXPECT_EQ(set->SetVector(x, i, 1e-3, coef, nullptr, &ip), 0);
  }

  const auto q = contentOf(*set);
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j) {
      Vec<T> a = vecOf(q[i]);
      Vec<T> b = vecOf(q[j]);
      EXPECT_LE(std::abs(wide(ip(a, b)) - (i == j ? 1.0 : 0.0)), this->bound(5));
    }
  for (std::size_t row = 0; row < 5; ++row) { // the last coefficients rebuild the last vector
    Wide sum = 0;
    for (int k = 0; k < 3; ++k)
      sum += wide(coef[k]) * wide(q[static_cast<std::size_t>(k)][row]);
    EXPECT_LE(std::abs(sum - wide(input[2][row])), this->bound(5) * 4);
  }
}

// Edges.

using Set = Zarel::C_VSTRUCT<double>;

/** x = (1, 1e-17) beside the vector (0, 1): its part along that is below what a double can feel. */
class TinyCoefficient : public ::testing::Test {
protected:
  TinyCoefficient() { set.SetVal(1, 0, 1); }

  Set set{1, 2, 2, nullptr};
  Vec<double> x = vecOf<double>({1, 1e-17});
};

TEST_F(TinyCoefficient, IsLeftBySetVector) {
  set.SetVector(x, 1, true, 0, nullptr);

  EXPECT_EQ(set.GetVal(1, 1), 1e-17);
}

TEST_F(TinyCoefficient, IsLeftByTheInnerProductForm) {
  Zarel::C_FInnerProd<double> ip;
  Vec<double> coef;

  set.SetVector(x, 1, 0, coef, nullptr, &ip);

  EXPECT_EQ(set.GetVal(1, 1), 1e-17);
  EXPECT_EQ(coef[0], 2e-17) << "the coefficients count what was left, once a pass";
}

TEST_F(TinyCoefficient, IsTakenOutByAddVector) {
  set.AddVector(x, 1, true, 0, nullptr);

  EXPECT_EQ(set.GetVal(1, 1), 0);
}

/** The measure is the length before scaling, so a very long vector is stored as it points. */
TEST_F(TinyCoefficient, IsMeasuredByTheLengthBeforeScaling) {
  Zarel::C_FInnerProd<double> ip;
  Vec<double> coef;
  Vec<double> y = vecOf<double>({3e17, 4e17});

  set.SetVector(y, 1, 0, coef, nullptr, &ip);

  EXPECT_NEAR(set.GetVal(0, 1), 0.6, 1e-15);
  EXPECT_NEAR(set.GetVal(1, 1), 0.8, 1e-15);
}

Set& filled(Set& set, const Dense<double>& values) {
  fillSet(set, values);
  return set;
}

TEST(VectorSetOrthonormal, ZeroVectorIsDroppedWithoutAnEntry) {
  for (const int mode : {1, 2}) {
    Set set(mode, 3, 2, nullptr);
    filled(set, {{3, 4}, {0, 0}, {1, 0}});
    Counts lengths;
    Vec<double> r;

    set.GramSchmidt(1e-10, 0, &lengths, &r);

    EXPECT_EQ(set.getDim(), 2);
    EXPECT_EQ(listOf(lengths), (std::vector<int>{1, 0, 2}));
    ASSERT_EQ(r.Dim(), 3);
    EXPECT_NEAR(r[0], 5, 1e-14);
    EXPECT_NEAR(r[1], 0.6, 1e-15);
    EXPECT_NEAR(r[2], 0.8, 1e-15);
  }
}

TEST(VectorSetOrthonormal, DroppedVectorKeepsItsCoefficients) {
  Set set(1, 3, 2, nullptr);
  filled(set, {{3, 4}, {6, 8}, {1, 0}});
  Counts lengths;
  Vec<double> r;

  set.GramSchmidt(1e-10, 0, &lengths, &r);

  EXPECT_EQ(set.getDim(), 2);
  EXPECT_EQ(listOf(lengths), (std::vector<int>{1, 1, 2}));
  ASSERT_EQ(r.Dim(), 4);
  EXPECT_NEAR(r[1], 10, 1e-13);
}

/** Temperatures of a cooling rod: each vector adds less than the one before. */
Dense<double> coolingRod(int vectors, int length) {
  Dense<double> values(static_cast<std::size_t>(vectors));
  for (int j = 0; j < vectors; ++j)
    for (int i = 0; i < length; ++i) {
      double sum = 0;
      for (int k = 1; k < 20; ++k)
        sum +=
            std::exp(-0.05 * k * k * j) * std::sin(3.1415926535 * k * (i + 1) / (length + 1)) / k;
      values[static_cast<std::size_t>(j)].push_back(sum);
    }
  return values;
}

TEST(VectorSetOrthonormal, BlocksDropWhatSingleVectorsDrop) {
  const auto values = coolingRod(70, 100);
  for (const double tol : {1e-3, 1e-6, 1e-9}) {
    Set blocks(1, 70, 100, nullptr);
    MadeSet<double> single(Storage::FileResident, values, 100); // no matrix: one after the other
    Counts fromBlocks;
    Counts fromSingle;

    filled(blocks, values).GramSchmidt(tol, 0, &fromBlocks, nullptr);
    EXPECT_EQ(codeOf([&] { single->GramSchmidt(tol, 0, &fromSingle, nullptr); }), 2870)
        << "an adopted file is not cut";

    EXPECT_EQ(listOf(fromBlocks), listOf(fromSingle)) << "tolerance " << tol;
    expectOrthonormal(contentOf(blocks), 1e-14);
  }
}

TEST(VectorSetOrthonormal, OneOfTheTwoResultsMayBeMissing) {
  const Dense<double> values{{3, 4}, {6, 8}, {1, 0}};
  Set a(1, 3, 2, nullptr);
  Counts lengths;
  filled(a, values).GramSchmidt(1e-10, 0, &lengths, nullptr);
  EXPECT_EQ(listOf(lengths), (std::vector<int>{1, 1, 2}));

  Set b(1, 3, 2, nullptr);
  Vec<double> r;
  filled(b, values).GramSchmidt(1e-10, 0, nullptr, &r);
  EXPECT_EQ(r.Dim(), 6) << "without lengths nobody could read a shorter one";
  EXPECT_NEAR(r[1], 10, 1e-13);
}

TEST(VectorSetOrthonormal, StartAtTheEndDoesNothing) {
  Set set(1, 2, 2, nullptr);
  filled(set, {{3, 4}, {6, 8}});

  EXPECT_EQ(set.GramSchmidt(1e-10, 2, nullptr, nullptr), 0);

  EXPECT_EQ(contentOf(set), (Dense<double>{{3, 4}, {6, 8}}));
  EXPECT_EQ(codeOf([&] { set.GramSchmidt(1e-10, 3, nullptr, nullptr); }), 12);
  EXPECT_EQ(codeOf([&] { set.GramSchmidt(1e-10, -1, nullptr, nullptr); }), 12);
}

TEST(VectorSetOrthonormal, ToleranceIsMeasuredOnUnitVectors) {
  // A fraction of 0.1 / sqrt(1.01) of the second vector, however long, is left.
  for (const double tol : {0.09, 0.1}) {
    Set set(1, 2, 2, nullptr);
    filled(set, {{1e-3, 0}, {1e6, 1e5}});
    set.GramSchmidt(tol, 0, nullptr, nullptr);
    EXPECT_EQ(set.getDim(), tol < 0.0995 ? 2 : 1);
  }
}

TEST(VectorSetOrthonormal, SetThatOwnsNothingCannotDrop) {
  Set set(1, 2, 2, nullptr);
  filled(set, {{3, 4}, {6, 8}});
  Set link(set, 0, 2, 0, 2);

  EXPECT_EQ(codeOf([&] { link.GramSchmidt(1e-10, 0, nullptr, nullptr); }), 2870);
}

TEST(VectorSetOrthonormal, VectorsOfExtremeLengthAreScaledSafely) {
  Set set(1, 2, 2, nullptr);
  filled(set, {{3e-150, 4e-150}, {1e150, 0}});
  Counts lengths;
  Vec<double> r;

  set.GramSchmidt(1e-10, 0, &lengths, &r);

  EXPECT_EQ(set.getDim(), 2);
  EXPECT_NEAR(r[0] * 1e150, 5, 1e-13);
  expectOrthonormal(contentOf(set), 1e-14);
}

TEST(VectorSetOrthonormal, VectorsThatAreAllRoundingStillMakeASet) {
  // With no tolerance at all the rest of a dependent vector is a vector like any other.
  auto values = randomDense<double>(4, 30);
  for (std::size_t i = 0; i < 30; ++i)
    values[2][i] = values[0][i] / 3 + values[1][i] / 7;
  Set set(1, 4, 30, nullptr);
  Counts lengths;
  Vec<double> r;

  filled(set, values).GramSchmidt(0, 0, &lengths, &r);

  ASSERT_LE(set.getDim(), 4);
  expectRebuilt(values, contentOf(set), lengths, r, 1e-13);
}

TEST(VectorSetOrthonormal, NothingButUnitVectorsIsKept) {
  // Small whole numbers: with no tolerance a rest may vanish in the second pass alone.
  for (unsigned long long seed = 1; seed <= 2000; ++seed) {
    const int length = 1 + static_cast<int>(seed % 5);
    const int vectors = 2 + static_cast<int>(seed % 9);
    Noise noise(seed);
    Dense<double> values(static_cast<std::size_t>(vectors));
    for (auto& column : values)
      for (int i = 0; i < length; ++i)
        column.push_back(std::floor(3 * noise.next()));
    Set set(1, vectors, length, nullptr);
    Counts lengths;
    Vec<double> r;

    filled(set, values).GramSchmidt(0, 0, &lengths, &r);

    const auto q = contentOf(set);
    for (const auto& column : q)
      ASSERT_NEAR(normOf(column), 1, 1e-12) << "seed " << seed;
    expectRebuilt(values, q, lengths, r, 1e-11);
  }
}

/** What a set makes of vectors of which some are zero and some depend on others. */
template <class Made>
void expectDrops(Made& set, const Dense<double>& input) {
  Counts lengths;
  Vec<double> r;

  set->GramSchmidt(1e-10, 1, &lengths, &r);

  EXPECT_EQ(listOf(lengths), (std::vector<int>{0, 0, 2, 2, 0, 3, 3}));
  EXPECT_EQ(set->getDim(), 3);
  const auto q = contentOf(*set);
  EXPECT_EQ(q[0], input[0]);
  expectOrthonormal(partOf(q, 1, 3, 0, 4), 1e-14);
  expectRebuilt(input, q, lengths, r, 1e-13, 1);
}

TEST(VectorSetOrthonormal, OneAfterTheOtherDropsAndPacksAsBlocksDo) {
  const Dense<double> input{{9, 9, 9, 9}, {0, 0, 0, 0}, {3, 4, 0, 0}, {6, 8, 0, 0},
                            {0, 0, 0, 0}, {1, 0, 5, 0}, {4, 4, 5, 0}};
  AtOddByte<double> single(input, 4); // no matrix
  MadeSet<double> blocks(Storage::InCore, input, 4);

  expectDrops(single, input);
  expectDrops(blocks, input);
}

TEST(VectorSetOrthonormal, DropsOfASetThatCannotBeCutAreTold) {
  const Dense<double> input{{3, 4}, {0, 0}, {6, 8}, {1, 0}};
  MadeSet<double> set(Storage::FileResident, input, 2);
  Counts lengths;
  Vec<double> r;

  EXPECT_EQ(codeOf([&] { set->GramSchmidt(1e-10, 0, &lengths, &r); }), 2870);

  EXPECT_EQ(listOf(lengths), (std::vector<int>{1, 0, 1, 2}));
  ASSERT_EQ(r.Dim(), 10) << "not packed";
  const double packed[] = {5, 10, 0.6, 0.8};
  for (int k = 0; k < 4; ++k)
    EXPECT_NEAR(r[k], packed[k], 1e-14);
}

TEST(VectorSetOrthonormal, NothingIsStoredForAVectorOfNoLength) {
  Set set(1, 2, 2, nullptr);
  filled(set, {{1, 0}, {5, 6}});
  Vec<double> zero(2);
  Vec<double> twice = vecOf<double>({2, 0});

  EXPECT_EQ(set.AddVector(zero, 1, true, 0, nullptr), 5);
  EXPECT_EQ(set.AddVector(twice, 1, true, 0, nullptr), 12);

  EXPECT_EQ(contentOf(set)[1], (std::vector<double>{5, 6}));
}

/** No inner product: the square of a vector is negative. */
template <class T>
class Negative : public Zarel::C_FInnerProd<T> {
public:
  T operator()(C_Vec<T, int>& a, C_Vec<T, int>& b) override { return -(a * b); }
};

template <class T>
void expectRefused() {
  Zarel::C_VSTRUCT<T> set(1, 2, 2, nullptr);
  Negative<T> ip;
  Vec<T> coef;
  for (const int place : {0, 1}) {
    Vec<T> x(2, T(1));
    EXPECT_EQ(codeOf([&] { set.SetVector(x, place, 0, coef, nullptr, &ip); }), 2866);
  }
  EXPECT_EQ(contentOf(set), Dense<T>(2, std::vector<T>(2)));
}

TEST(VectorSetOrthonormal, NegativeSquaresOfAnInnerProductAreRefused) {
  expectRefused<double>();
  expectRefused<float>();
  expectRefused<std::complex<double>>();
}

TEST(VectorSetOrthonormal, NotANumberEnds) {
  Set set(1, 4, 5, nullptr);
  auto values = randomDense<double>(4, 5);
  values[1][3] = std::nan("");

  filled(set, values).GramSchmidt(1e-10, 0, nullptr, nullptr);

  EXPECT_EQ(set.FirstNotFinite(), 1);
}

TEST(VectorSetOrthonormal, IntegersCannotBeScaled) {
  Zarel::C_VSTRUCT<int> set(1, 2, 2, nullptr);
  fillSet<int>(set, {{3, 4}, {6, 8}});
  Vec<int> x(2, 1);
  Vec<int> coef;
  Zarel::C_FInnerProd<int> ip;

  EXPECT_EQ(codeOf([&] { set.GramSchmidt(1e-10, 0, nullptr, nullptr); }), 2871);
  EXPECT_EQ(codeOf([&] { set.AddVector(x, 0, true, 0, nullptr); }), 2871);
  EXPECT_EQ(codeOf([&] { set.SetVector(x, 0, true, 0, nullptr); }), 2871);
  EXPECT_EQ(codeOf([&] { set.SetVector(x, 0, 0, coef, nullptr, &ip); }), 2871);
  EXPECT_EQ(set.AddVector(x, 0, false, 0, nullptr), 0);
  EXPECT_EQ(contentOf(set)[0], (std::vector<int>{1, 1}));
}

TEST(VectorSetOrthonormal, PlacesAndLengthsAreTested) {
  Set set(1, 2, 3, nullptr);
  Vec<double> x(3, 1.0);
  Vec<double> longer(4, 1.0);
  Vec<double> coef;
  Zarel::C_FInnerProd<double> ip;

  EXPECT_EQ(codeOf([&] { set.AddVector(x, 2, false, 0, nullptr); }), 12);
  EXPECT_EQ(codeOf([&] { set.AddVector(x, -1, false, 0, nullptr); }), 12);
  EXPECT_EQ(codeOf([&] { set.SetVector(longer, 0, false, 0, nullptr); }), 12);
  EXPECT_EQ(codeOf([&] { set.SetVector(longer, 0, 0, coef, nullptr, &ip); }), 12);
  EXPECT_EQ(codeOf([&] { set.SetVector(x, 0, 0, coef, nullptr, nullptr); }), 12);
}

TEST(VectorSetOrthonormal, LeavesNothingMapped) {
  Set set(2, 3, 4, nullptr);
  filled(set, {{1, 0, 0, 1}, {1, 1, 0, 0}, {0, 0, 1, 1}});
  set.UnmapAllBlocks();
  Vec<double> x(4, 1.0);

  set.GramSchmidt(1e-10, 0, nullptr, nullptr);
  EXPECT_FALSE(set.isMapped(0) || set.isMapped(1) || set.isMapped(2));
  set.AddVector(x, 2, true, 1e-10, nullptr);
  EXPECT_FALSE(set.isMapped(0) || set.isMapped(1) || set.isMapped(2));
}

/** 72 MB, more than a pass over a mapped set takes at a time. */
class LargeMappedSet : public ::testing::Test {
protected:
  static constexpr int vectors = 3;
  static constexpr int length = 3000000;

  LargeMappedSet() {
    Noise noise;
    for (int j = 0; j < vectors; ++j) {
      double* const values = inCore[j]->Adr(0);
      for (int i = 0; i < length; ++i)
        values[i] = noise.next();
    }
    mapped.Initialize(inCore);
  }
  /** Expects two matrices to differ by the rounding of sums in another order. */
  static void expectEqual(C_MatMGe<double>& a, C_MatMGe<double>& b, double scale) {
    ASSERT_EQ(a.NbVal(), b.NbVal());
    for (__int64 k = 0; k < a.NbVal(); ++k)
      EXPECT_NEAR(a.Adr()[k], b.Adr()[k], 1e-12 * scale);
  }

  Set inCore{1, vectors, length, nullptr};
  Set mapped{2, vectors, length, nullptr};
};

TEST_F(LargeMappedSet, IsMultipliedInPieces) {
  C_MatMGe<double> expected;
  C_MatMGe<double> M;
  inCore.MatQtQ(expected);

  mapped.MatQtQ(M);
  expectEqual(M, expected, length);
  mapped.MatQ1tQ(mapped, M, -1);
  expectEqual(M, expected, length);
  inCore.MatQ1tQ(mapped, M, -1);
  expectEqual(M, expected, length);
  mapped.UnmapAllBlocks();

  Vec<double> x = vecOf<double>({1, -2, 3});
  Vec<double> y;
  Vec<double> z;
  inCore.Mv(x, y, false, 0, -1);
  mapped.Mv(x, z, false, 0, -1);
  EXPECT_LE((y -= z).NrmInf(), 1e-14);
  inCore.Mv(z, y, true, 0, -1);
  mapped.Mv(z, x, true, 0, -1);
  EXPECT_LE((y -= x).NrmInf(), 1e-12 * length);
}

TEST_F(LargeMappedSet, IsMadeOrthonormalInPieces) {
  Counts lengths;
  Vec<double> expected;
  Vec<double> r;
  inCore.GramSchmidt(1e-10, 0, &lengths, &expected);

  mapped.GramSchmidt(1e-10, 0, &lengths, &r);

  ASSERT_EQ(r.Dim(), 6);
  EXPECT_LE((expected -= r).NrmInf(), 1e-9);
  C_MatMGe<double> M;
  mapped.MatQtQ(M);
  for (int i = 0; i < vectors; ++i)
    for (int j = 0; j < vectors; ++j)
      EXPECT_NEAR(M(i, j), i == j ? 1 : 0, 1e-13);
}

} // namespace

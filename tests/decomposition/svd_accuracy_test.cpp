// Both decompositions on spectra of every kind, in every storage: against the spectrum that the
// vectors were made with, and against each other.
#include <limits>
#include <memory>
#include <utility>

#include "decomposition/sets.h"
#include "support/Files.h"

namespace {

using namespace sets;

using Set = C_VSTRUCT<double>;
using Matrix = C_MatMGe<double>;

constexpr double eps = std::numeric_limits<double>::epsilon();
constexpr int rows = 60;

struct Spectrum {
  const char* name;
  std::vector<double> values; // descending, the largest 1 or more
};

std::vector<double> randomSpectrum(int count) {
  Noise noise;
  std::vector<double> s;
  for (int i = 0; i < count; ++i)
    s.push_back(1 + std::abs(noise.next()));
  std::sort(s.rbegin(), s.rend());
  return s;
}

std::vector<Spectrum> spectra() {
  return {{"random", randomSpectrum(16)},
          {"clustered", {3, 3, 3, 1 + 1e-9, 1, 1 - 1e-9, 0.1, 0.1, 0.1, 0.1}},
          {"all equal", {2, 2, 2, 2, 2, 2}},
          {"rank-deficient", {4, 2, 1, 0.5, 0, 0, 0, 0, 0, 0}},
          {"of rank n - 1", {4, 2, 1, 0}},
          {"graded", graded(16, 1, 0.1)},
          {"slowly falling", graded(40, 1, 0.9)}};
}

template <class T>
class SvdAccuracy : public ::testing::Test {};
TYPED_TEST_SUITE(SvdAccuracy, BlasScalars, ScalarNames);

TYPED_TEST(SvdAccuracy, OfTheDirectSolverIsThatOfRoundingInTheLargestValue) {
  using T = TypeParam;
  for (const Spectrum& spectrum : spectra())
    for (int mode : {inCore, onFile}) {
      SCOPED_TRACE(spectrum.name);
      const int n = static_cast<int>(spectrum.values.size());
      const double rounding = 100 * epsilon<T>() * spectrum.values[0];
      C_MatMGe<T> a = withSpectrum<T>(rows, spectrum.values, 5);
      C_VSTRUCT<T> set(mode, n, rows, nullptr);
      fillFrom(set, a);
      C_AlgoSvdLapack<T> svd;
      svd.SetThresholdValue(-1); // keeps all

      ASSERT_EQ(svd.Run(set, 0, -1), 0);

      const std::vector<double> s = valuesOf(svd);
      ASSERT_EQ(s.size(), spectrum.values.size());
      for (std::size_t i = 0; i < s.size(); ++i)
        EXPECT_NEAR(s[i], spectrum.values[i], rounding) << i;
      C_MatMGe<T> u = matrixOf(set);
      ASSERT_EQ(u.NbCol(), n);
      EXPECT_LE(departure(u), 100 * epsilon<T>());
      EXPECT_LE(reconstructionError(svd, u, a), rounding);
    }
}

/** Keeps the basis that it is handed; the set stays as it is. */
class Collecting : public C_ItfSvdArpackCVstruct {
public:
  using C_ItfSvdArpackCVstruct::C_ItfSvdArpackCVstruct;
  int SetNewA(Set& q) override {
    basis = matrixOf(q);
    return 0;
  }
  Matrix basis;
};

/** The columns of a matrix as a set: in core, mapped, on a file that is never mapped. */
class Stored {
public:
  static constexpr int storages = 3;

  Stored(Matrix& a, int storage) {
    if (storage < storages - 1) {
      set.Allocate(storage == 0 ? inCore : onFile, a.NbCol(), a.NbRow(), nullptr);
      fillFrom(set, a);
      return;
    }
    std::string bytes = raw(a.NbCol(), a.NbRow());
    for (int j = 0; j < a.NbCol(); ++j)
      for (int i = 0; i < a.NbRow(); ++i)
        bytes += raw(a(i, j));
    support::writeBytes(name, bytes);
    file.reset(std::fopen(name.c_str(), "r+b"));
    set.Read(file.get(), 2, false, 0, 0, 0);
    EXPECT_FALSE(set.GetMapFile());
  }

private:
  struct Close {
    void operator()(std::FILE* f) const { std::fclose(f); }
  };
  support::TempDirectory directory;
  std::string name = directory.file("vectors");
  std::unique_ptr<std::FILE, Close> file;

public:
  Set set;
};

/** What A^T A, whose eigenvalues are exact up to a part of the largest one, can tell of a value. */
double reach(double value, double largest, int n) {
  const double lost = 10 * n * eps * largest * largest;
  return std::min(std::sqrt(lost), lost / value) + 100 * eps * largest;
}

void compare(const Spectrum& spectrum, int storage, int nev) {
  SCOPED_TRACE(std::string(spectrum.name) + ", storage " + std::to_string(storage) + ", values " +
               std::to_string(nev));
  Matrix a = withSpectrum<double>(rows, spectrum.values, 5), dense = a;
  C_AlgoSvdLapack<double> direct;
  direct.SetThresholdValue(-1);
  ASSERT_EQ(direct.Run(dense, 0), 0);
  const std::vector<double> expected = valuesOf<double>(direct);
  const int n = a.NbCol(), sought = nev == -1 ? n - 1 : nev;
  Stored stored(a, storage);
  Collecting problem(stored.set);
  C_AlgoSvdArpack svd;
  svd.SetNbEigenValuesToFind(nev);
  svd.SetThresholdValue(-1);

  ASSERT_EQ(svd.Run(static_cast<C_ItfAlgorithm&>(problem)), 0);

  const std::vector<double> s = valuesOf<double>(svd);
  ASSERT_EQ(s.size(), static_cast<std::size_t>(sought));
  for (std::size_t i = 0; i < s.size(); ++i)
    EXPECT_NEAR(s[i], expected[i], reach(expected[i], expected[0], n)) << i;
  const int kept = nev == -1 ? n : nev;
  ASSERT_EQ(problem.basis.NbCol(), kept);
  EXPECT_EQ(svd.GetNbRetained(), kept);
  EXPECT_LE(departure(problem.basis), 1e-11); // whatever the values are
  const double dropped = kept < n ? expected[static_cast<std::size_t>(kept)] : 0;
  EXPECT_LE(reconstructionError<double>(svd, problem.basis, a),
            1.01 * dropped + 1e3 * eps * expected[0]);
}

TEST(SvdAccuracyRestarted, FindsTheLargestValuesOfTheDirectSolver) {
  for (const Spectrum& spectrum : spectra())
    for (int storage = 0; storage < Stored::storages; ++storage)
      compare(spectrum, storage, static_cast<int>(spectrum.values.size()) / 2);
}

TEST(SvdAccuracyRestarted, WithAllVectorsIsADecompositionToo) {
  for (const Spectrum& spectrum : spectra())
    for (int storage = 0; storage < Stored::storages; ++storage)
      compare(spectrum, storage, -1);
}

/** The product of the last vector is rounding and points anywhere, also along the others. */
TEST(SvdAccuracyRestarted, ASetOfOneRankLessHasAnOrthonormalBasis) {
  Matrix a = withSpectrum<double>(rows, {4, 2, 1, 0});
  for (int mode : {inCore, onFile}) {
    Set set(mode, 4, rows, nullptr);
    fillFrom(set, a);
    C_AlgoSvdArpack svd;

    ASSERT_EQ(svd.Run(set, 0, -1), 0);

    Matrix u = matrixOf(set);
    ASSERT_EQ(u.NbCol(), 4); // three meet the threshold; with them comes the last
    EXPECT_LE(departure(u), 100 * eps);
    EXPECT_LE(reconstructionError<double>(svd, u, a), 100 * eps);
  }
}

/** The product of the last vector is a true 0, which has no direction at all. */
TEST(SvdAccuracyRestarted, AVectorWithoutADirectionIsGivenOne) {
  for (int tall : {3, 12}) {
    Matrix a(tall, 3);
    a(0, 0) = 4;
    a(1, 1) = 2;
    Set set(inCore, 3, tall, nullptr);
    fillFrom(set, a);
    C_AlgoSvdArpack svd;

    ASSERT_EQ(svd.Run(set, 0, -1), 0);

    Matrix u = matrixOf(set);
    ASSERT_EQ(u.NbCol(), 3);
    EXPECT_LE(departure(u), 100 * eps);
  }
}

/** Most rows are 0: all that products hold, their rounding too, lies along the other vectors. */
TEST(SvdAccuracyRestarted, AVectorOfNothingButTheOthersIsGivenADirection) {
  for (const auto& [used, n] : {std::pair(1, 5), {2, 5}, {3, 5}, {3, 40}}) {
    Matrix a(40, n);
    Noise noise;
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < used; ++i)
        a(7 * i, j) = noise.next();
    Set set(inCore, n, 40, nullptr);
    fillFrom(set, a);
    C_AlgoSvdArpack svd;
    svd.SetThresholdValue(-1);

    ASSERT_EQ(svd.Run(set, 0, -1), 0);

    Matrix u = matrixOf(set);
    ASSERT_EQ(u.NbCol(), n);
    EXPECT_LE(departure(u), 100 * eps) << used;
    EXPECT_LE(reconstructionError<double>(svd, u, a), 1000 * eps) << used;
  }
}

} // namespace

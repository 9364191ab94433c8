// The decomposition by implicit restart: against the direct one, step by step, and where it ends.
#include <cerrno>
#include <limits>
#include <typeinfo>

#include <zarel/C_MessageTool.h>

#include "decomposition/sets.h"
#include "support/Capture.h"
#include "support/FailingCall.h"
#include "support/Files.h"
#include "system/calls.h"

namespace {

using namespace sets;
using support::capture;
using Zarel::C_MessageTool;

constexpr double eps = std::numeric_limits<double>::epsilon();
/** What squaring the operator leaves of the digits. */
const double half = std::sqrt(eps);

using Set = C_VSTRUCT<double>;
using Matrix = C_MatMGe<double>;

/** Listens to the messages of the decompositions while it lives. */
class Listening {
public:
  Listening() { set(true); }
  ~Listening() { set(false); }
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;

private:
  static void set(bool on) {
    C_MessageTool* const tool = C_MessageTool::Instance("DefaultMessageTool");
    tool->setVerbosityLevel(on ? 3 : 0, Zarel::SCREEN);
    tool->ActivateDebugScope(451, on, Zarel::SCREEN);
  }
};

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/** Decomposes the columns of `a` and gives back the set. */
void decompose(C_AlgoSvdArpack& svd, Set& set, Matrix& a, int mode, int nev) {
  set.Allocate(mode, a.NbCol(), a.NbRow(), nullptr);
  fillFrom(set, a);
  svd.SetNbEigenValuesToFind(nev);
  EXPECT_EQ(svd.Run(set, 0, -1), 0);
}

TEST(AlgoSvdArpack, FindsTheLargestValuesAndTheirVectors) {
  Matrix a = withSpectrum<double>(60, graded(20, 1, 0.8));
  for (int mode : {inCore, onFile}) {
    C_AlgoSvdArpack svd;
    Set set;
    decompose(svd, set, a, mode, 6);

    const std::vector<double> s = valuesOf<double>(svd);
    ASSERT_EQ(s.size(), 6u);
    for (int i = 0; i < 6; ++i)
      EXPECT_NEAR(s[static_cast<std::size_t>(i)], std::pow(0.8, i), 100 * eps);
    EXPECT_EQ(set.getDim(), 6);
    EXPECT_EQ(svd.GetNbRetained(), 6);
    Matrix u = matrixOf(set);
    EXPECT_LE(departure(u), 1000 * eps);
    // What is missing are the values from the seventh on.
    EXPECT_LE(reconstructionError<double>(svd, u, a), std::pow(0.8, 6) * 1.01);
    EXPECT_LE((baseError<double>(svd, u, a)), 1000 * eps);
  }
}

/** The values and the subspace of both solvers, for the first `count` values. */
void compareWithLapack(const std::vector<double>& spectrum, int count, double tolerance,
                       double subspaceTolerance) {
  Matrix a = withSpectrum<double>(50, spectrum, 3), dense = a;
  C_AlgoSvdArpack svd;
  C_AlgoSvdLapack<double> direct;
  direct.SetThresholdValue(0);
  Set set;
  decompose(svd, set, a, inCore, count);
  ASSERT_EQ(direct.Run(dense, 0), 0);

  const std::vector<double> s = valuesOf<double>(svd), expected = valuesOf<double>(direct);
  ASSERT_EQ(s.size(), static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < s.size(); ++i)
    EXPECT_NEAR(s[i], expected[i], tolerance * expected[0]) << i;

  // Every kept vector lies in the span of as many direct ones.
  Matrix u = matrixOf(set), span(50, u.NbCol()), part;
  for (int j = 0; j < u.NbCol(); ++j)
    for (int i = 0; i < 50; ++i)
      span(i, j) = dense(i, j);
  part.MM('T', 'N', 1, span, u, 0);
  for (int j = 0; j < u.NbCol(); ++j)
    EXPECT_NEAR(VecOf<double>(part.NbRow(), part[j]).Nrm2(), 1, subspaceTolerance) << j;
}

TEST(AlgoSvdArpack, AgreesWithTheDirectSolverOnARandomMatrix) {
  Noise noise;
  std::vector<double> spectrum;
  for (int i = 0; i < 15; ++i)
    spectrum.push_back(1 + std::abs(noise.next()));
  std::sort(spectrum.rbegin(), spectrum.rend());

  compareWithLapack(spectrum, 7, 100 * eps, 1e-8);
}

TEST(AlgoSvdArpack, AgreesOnAClusteredSpectrum) {
  compareWithLapack({3, 3, 3, 1 + 1e-9, 1, 1 - 1e-9, 0.1, 0.1, 0.1, 0.05}, 6, 100 * eps, 1e-8);
}

TEST(AlgoSvdArpack, AgreesOnARankDeficientSetUpToHalfTheDigits) {
  Matrix a = withSpectrum<double>(50, {4, 2, 1, 0, 0, 0, 0, 0});
  C_AlgoSvdArpack svd;
  svd.SetThresholdValue(1e-5);
  Set set;
  decompose(svd, set, a, inCore, -1);

  const std::vector<double> s = valuesOf<double>(svd), errors = errorsOf<double>(svd);
  ASSERT_EQ(s.size(), 7u);
  const double expected[] = {4, 2, 1, 0, 0, 0, 0};
  for (std::size_t i = 0; i < s.size(); ++i) {
    EXPECT_NEAR(s[i], expected[i], 4 * half); // never NaN, though eigenvalues may be below 0
    EXPECT_TRUE(std::isfinite(errors[i]));
  }
  EXPECT_EQ(svd.GetNbRetained(), 3);
  Matrix u = matrixOf(set);
  EXPECT_LE(departure(u), 1000 * eps);
  EXPECT_LE(reconstructionError<double>(svd, u, a), 1000 * eps);
}

TEST(AlgoSvdArpack, AgreesOnAGradedSpectrumUpToHalfTheDigits) {
  compareWithLapack(graded(10, 1, 0.1), 5, half, 1e-6);
}

TEST(AlgoSvdArpack, EqualVectorsHaveOneValue) {
  Matrix a(10, 4);
  for (int j = 0; j < 4; ++j)
    a(3, j) = 2;
  C_AlgoSvdArpack svd;
  svd.SetThresholdValue(1e-5);
  Set set;
  decompose(svd, set, a, inCore, 2);

  EXPECT_NEAR(valuesOf<double>(svd)[0], 4, 100 * eps);
  ASSERT_EQ(set.getDim(), 1);
  EXPECT_NEAR(std::abs((*set[0])[3]), 1, 100 * eps);
}

TEST(AlgoSvdArpack, AThresholdMetEarlyMakesOnlyTheKeptVectors) {
  Matrix a = withSpectrum<double>(30, graded(12, 1, 0.1));
  C_AlgoSvdArpack svd;
  svd.SetThresholdValue(0.05);
  Set set;
  decompose(svd, set, a, inCore, 5);

  EXPECT_EQ(valuesOf<double>(svd).size(), 5u);
  EXPECT_EQ(svd.GetNbRetained(), 2); // a tenth is lost after one, a hundredth after two
  EXPECT_EQ(set.getDim(), 2);
}

TEST(AlgoSvdArpack, WithAllValuesTheLastVectorIsCompleted) {
  const std::vector<double> spectrum{5, 4, 3, 2, 1};
  for (int rows : {5, 20}) { // as many rows as vectors pass, too
    Matrix a = withSpectrum<double>(rows, spectrum);
    C_AlgoSvdArpack svd;
    Set set;
    decompose(svd, set, a, inCore, -1);

    EXPECT_EQ(valuesOf<double>(svd).size(), 4u); // one less than there are
    EXPECT_EQ(svd.GetNbRetained(), 5);
    ASSERT_EQ(set.getDim(), 5);
    Matrix u = matrixOf(set);
    EXPECT_LE(departure(u), 1000 * eps);
    EXPECT_LE(reconstructionError<double>(svd, u, a), 1000 * eps);
    EXPECT_LE(baseError<double>(svd, u, a), 1000 * eps);
  }
}

TEST(AlgoSvdArpack, ASetThatIsWiderThanTallIsRefused) {
  Set set(inCore, 4, 3, nullptr);
  C_AlgoSvdArpack svd;

  const auto said = capture([&] { EXPECT_EQ(svd.Run(set, 0, -1), -1); });

  EXPECT_TRUE(holds(said.err, "*** ERROR in C_AlgoSvdArpack::Run: The Algorithm assume that m > "
                              "n.Please transpose your matrix\n"));
  EXPECT_EQ(set.getDim(), 4);
}

TEST(AlgoSvdArpack, OneVectorIsTooFewForArpack) {
  Set set(inCore, 1, 3, nullptr);
  set.SetVal(0, 0, 1);
  C_AlgoSvdArpack svd;

  const auto said = capture([&] { EXPECT_EQ(svd.Run(set, 0, -1), -1); });

  EXPECT_TRUE(holds(said.err, " [SVD] Error with _saupd, info = -2 : Check documentation in "
                              "_saupd\n"))
      << said.err;
}

TEST(AlgoSvdArpack, NoValuesToFindAreTooFewForArpackToo) {
  for (int nev : {0, -3}) {
    Set set(inCore, 4, 9, nullptr);
    C_AlgoSvdArpack svd;
    svd.SetNbEigenValuesToFind(nev);

    const auto said = capture([&] { EXPECT_EQ(svd.Run(set, 0, -1), -1); });

    EXPECT_TRUE(holds(said.err, "_saupd, info = -2 ")) << said.err;
    EXPECT_EQ(set.getDim(), 4);
  }
}

TEST(AlgoSvdArpack, AnEmptySetEndsInTheSameError) {
  Set set(inCore, 0, 0, nullptr);
  C_AlgoSvdArpack svd;

  const auto said = capture([&] { EXPECT_EQ(svd.Run(set, 0, -1), -1); });

  EXPECT_TRUE(holds(said.err, "_saupd, info = -4 ")) << said.err; // no restarts are left
}

TEST(AlgoSvdArpack, MoreValuesThanOneLessThanTheVectorsAreRefused) {
  Set set(inCore, 4, 9, nullptr);
  C_AlgoSvdArpack svd;
  int nev = 4;
  svd.SetNbEigenValuesToFind(nev);

  const auto said = capture([&] { EXPECT_EQ(svd.Run(set, 0, -1), -1); });

  EXPECT_TRUE(holds(said.err, "ERROR in C_AlgoSvdArpack::Run: NEV is greater than MAXNEV\n"));
}

TEST(AlgoSvdArpack, VectorsCannotBeLeftOut) {
  Set set(inCore, 4, 9, nullptr);
  C_AlgoSvdArpack svd;

  const auto said = capture([&] { EXPECT_EQ(svd.Run(set, 1, -1), -1); });

  EXPECT_TRUE(holds(said.err, "Methode : C_AlgoSvdArpack::Run, Mode de fonctionnement Non prevu "
                              "pour le moment (ComputeQtQ && ifirst>0) \n"));
}

TEST(AlgoSvdArpack, FilledInDefaultsStayForTheNextRun) {
  Matrix small = withSpectrum<double>(20, {3, 2, 1}),
         large = withSpectrum<double>(20, graded(8, 1, 0.1));
  C_AlgoSvdArpack svd;
  svd.SetThresholdValue(0);
  for (Matrix* a : {&small, &large}) {
    Set set(inCore, a->NbCol(), 20, nullptr);
    fillFrom(set, *a);
    ASSERT_EQ(svd.Run(set, 0, -1), 0);
    EXPECT_EQ(valuesOf<double>(svd).size(), 2u); // 3 - 1, also of the eight
  }
}

TEST(AlgoSvdArpack, TooFewRestartsLeaveNothing) {
  Matrix small = withSpectrum<double>(20, {3, 2}),
         large = withSpectrum<double>(60, graded(50, 1, 0.999));
  C_AlgoSvdArpack svd;
  Set first(inCore, 2, 20, nullptr), second(inCore, 50, 60, nullptr);
  fillFrom(first, small);
  fillFrom(second, large);
  ASSERT_EQ(svd.Run(first, 0, -1), 0); // leaves one value to find and two restarts

  const auto said = capture([&] { EXPECT_EQ(svd.Run(second, 0, -1), -1); });

  EXPECT_TRUE(holds(said.err, "no value converged in 2 restarts")) << said.err;
  EXPECT_EQ(svd.GetNbRetained(), 0);
  EXPECT_EQ(second.getDim(), 50);
}

TEST(AlgoSvdArpack, ValuesThatConvergedBeforeTheLastRestartAreASuccessWithANote) {
  std::vector<double> spectrum{100, 10}; // far above a crowd
  for (const double value : graded(48, 1, 0.999))
    spectrum.push_back(value);
  Matrix small = withSpectrum<double>(20, {3, 2}), large = withSpectrum<double>(60, spectrum);
  C_AlgoSvdArpack svd;
  Set first(inCore, 2, 20, nullptr), second(inCore, 50, 60, nullptr);
  fillFrom(first, small);
  fillFrom(second, large);
  ASSERT_EQ(svd.Run(first, 0, -1), 0); // leaves two restarts
  int nev = 6;
  svd.SetNbEigenValuesToFind(nev);

  const auto said = capture([&] {
    const Listening listening;
    ASSERT_EQ(svd.Run(second, 0, -1), 0);
  });

  const std::vector<double> s = valuesOf<double>(svd);
  ASSERT_GE(s.size(), 2u);
  ASSERT_LT(s.size(), 6u);
  EXPECT_NEAR(s[0], 100, 1e-10);
  EXPECT_NEAR(s[1], 10, 1e-10);
  EXPECT_EQ(svd.GetNbRetained(), static_cast<int>(s.size()));
  EXPECT_EQ(second.getDim(), static_cast<int>(s.size()));
  EXPECT_TRUE(holds(said.out, "[SVD] Maximum number of iterations reached.\n")) << said.out;
  EXPECT_TRUE(holds(said.out, "The number of Ritz values requested is 6\n"));
  EXPECT_TRUE(
      holds(said.out, "The number of converged Ritz values is " + std::to_string(s.size()) + "\n"));
  EXPECT_FALSE(holds(said.out, "No shifts could be applied"));
}

TEST(AlgoSvdArpack, AFirstBelowZeroLeavesNothingOut) {
  Matrix a = withSpectrum<double>(20, {3, 2, 1, 0.5});
  Set set(inCore, 4, 20, nullptr);
  fillFrom(set, a);
  C_AlgoSvdArpack svd;

  ASSERT_EQ(svd.Run(set, -5, -1), 0);

  Matrix u = matrixOf(set);
  EXPECT_EQ(u.NbCol(), 4);
  EXPECT_LE(reconstructionError<double>(svd, u, a), 1000 * eps);
}

TEST(AlgoSvdArpack, KeepHasNoEffect) {
  Matrix a = withSpectrum<double>(20, {3, 2, 1, 0.5});
  Set set(inCore, 4, 20, nullptr);
  fillFrom(set, a);
  C_AlgoSvdArpack svd;

  ASSERT_EQ(svd.Run(set, 0, 1), 0);

  EXPECT_EQ(set.getDim(), 4);
}

TEST(AlgoSvdArpack, TellsItsStepsToThoseWhoListen) {
  Matrix a = withSpectrum<double>(20, {3, 2, 1, 0.5});
  Set set(inCore, 4, 20, nullptr);
  fillFrom(set, a);
  C_AlgoSvdArpack svd;
  int nev = 2;
  svd.SetNbEigenValuesToFind(nev);
  svd.SetThresholdValue(0);

  const auto said = capture([&] {
    const Listening listening;
    ASSERT_EQ(svd.Run(set, 0, -1), 0);
  });

  for (const char* text :
       {"\n[SVD] Taille de la matrice a traiter : [20,4]",
        "[SVD] Nombre de valeurs propres demandees : 2", "[SVD] Nombre maximum d'iterations : 4",
        "[SVD] Iteration 0", "[SVD] Iteration 1", "[SVD] Fin des iterations",
        "[SVD] Dimension Apres correction : 2",
        "[SVD] Vp No 0 (3.000000E+00) : Erreur Residuelle = ",
        "[SVD] Vp No 1 (2.000000E+00) : Erreur Residuelle = ",
        "\n _SVD \n ==== \n\n Size of the matrix is 4\n The number of Ritz values requested is 2\n"
        " The number of Arnoldi vectors generated (NCV) is 4\n What portion of the spectrum: LM\n"
        " The number of converged Ritz values is 2\n",
        " The convergence criterion is 0.000000E+00\n\n"})
    EXPECT_TRUE(holds(said.out, text)) << text << "\nin\n" << said.out;
}

TEST(AlgoSvdArpack, TakesTwiceAsManyLanczosVectorsAsValues) {
  Matrix a = withSpectrum<double>(20, graded(12, 1, 0.1));
  Set set(inCore, 12, 20, nullptr);
  fillFrom(set, a);
  C_AlgoSvdArpack svd;
  int nev = 3;
  svd.SetNbEigenValuesToFind(nev);

  const auto said = capture([&] {
    const Listening listening;
    ASSERT_EQ(svd.Run(set, 0, -1), 0);
  });

  EXPECT_TRUE(holds(said.out, "[SVD] Nombre maximum d'iterations : 12"));
  EXPECT_TRUE(holds(said.out, "Arnoldi vectors generated (NCV) is 6\n")) << said.out;
}

/** A diagonal operator, with a count of its products and a wish to fail at one of them. */
class Diagonal : public C_ItfSvdArpack {
public:
  explicit Diagonal(std::vector<double> eigenvalues) : eigenvalues_(std::move(eigenvalues)) {}
  int GetSize(int& m, int& n) override {
    m = n = static_cast<int>(eigenvalues_.size());
    return sizeFails ? -1 : 0;
  }
  int ProdAV(C_Vec<double, int>& x, C_Vec<double, int>& y) override {
    for (int i = 0; i < x.Dim(); ++i)
      y[i] = std::sqrt(std::abs(eigenvalues_[static_cast<std::size_t>(i)])) * x[i];
    return basisFails ? -1 : 0;
  }
  int ProdAtAV(C_Vec<double, int>& x, C_Vec<double, int>& y) override {
    if (++products == failAt) return -1;
    for (int i = 0; i < x.Dim(); ++i)
      y[i] = eigenvalues_[static_cast<std::size_t>(i)] * x[i];
    return 0;
  }
  int SetNewA(Set& q) override {
    basis = q.getDim();
    return newFails ? -1 : 0;
  }
  void listen(Zarel::C_ProgressEngine* engine) { _progress = engine; }

  int products = 0, failAt = 0, basis = -1;
  bool sizeFails = false, basisFails = false, newFails = false;

private:
  std::vector<double> eigenvalues_;
};

TEST(AlgoSvdArpack, WorksOnAnyInterface) {
  Diagonal problem({1, 16, 4, 9, 0.25});
  C_AlgoSvdArpack svd;
  int nev = 3;
  svd.SetNbEigenValuesToFind(nev);
  Matrix coefficients;

  ASSERT_EQ(svd.Run(problem), 0);

  const std::vector<double> s = valuesOf<double>(svd);
  EXPECT_NEAR(s[0], 4, 100 * eps);
  EXPECT_NEAR(s[1], 3, 100 * eps);
  EXPECT_NEAR(s[2], 2, 100 * eps);
  EXPECT_EQ(problem.basis, 3);
  svd.GetLinearComb(coefficients);
  EXPECT_EQ(coefficients.NbRow(), 5);
  EXPECT_NEAR(std::abs(coefficients(1, 0)), 4, 100 * eps);
  EXPECT_NEAR(coefficients(0, 0), 0, 100 * eps);
}

/** Makes vectors that are half as long as the values say. */
class Halved : public Diagonal {
public:
  using Diagonal::Diagonal;
  int ProdAV(C_Vec<double, int>& x, C_Vec<double, int>& y) override {
    const int result = Diagonal::ProdAV(x, y);
    for (int i = 0; i < y.Dim(); ++i)
      y[i] /= 2;
    return result;
  }
};

TEST(AlgoSvdArpack, TheResidualTellsHowFarAVectorIsFromItsValue) {
  Halved problem({1, 16, 4, 9, 0.25});
  C_AlgoSvdArpack svd;
  int nev = 3;
  svd.SetNbEigenValuesToFind(nev);

  const auto said = capture([&] {
    const Listening listening;
    ASSERT_EQ(svd.Run(problem), 0);
  });

  EXPECT_TRUE(holds(said.out, "[SVD] Vp No 0 (4.000000E+00) : Erreur Residuelle = 2.000000E+00"))
      << said.out;
}

TEST(AlgoSvdArpack, ANegativeEigenvalueGivesNoNumberAndKeepsAll) {
  Diagonal problem({1, -16, 4, 9, 0.25});
  C_AlgoSvdArpack svd;
  int nev = 3;
  svd.SetNbEigenValuesToFind(nev);

  ASSERT_EQ(svd.Run(problem), 0);

  const std::vector<double> s = valuesOf<double>(svd);
  EXPECT_NEAR(s[0], 3, 100 * eps);
  EXPECT_NEAR(s[1], 2, 100 * eps);
  EXPECT_TRUE(std::isnan(s[2])); // the smallest
  EXPECT_EQ(svd.GetNbRetained(), 3);
}

TEST(AlgoSvdArpack, AFailureOfTheInterfaceEndsTheRun) {
  const auto resultOf = [](auto change) {
    Diagonal problem({1, 16, 4, 9, 0.25});
    change(problem);
    C_AlgoSvdArpack svd;
    const int result = svd.Run(problem);
    EXPECT_EQ(svd.GetNbRetained(), result == 0 ? 5 : 0);
    return result;
  };

  EXPECT_EQ(resultOf([](Diagonal&) {}), 0);
  EXPECT_EQ(resultOf([](Diagonal& p) { p.sizeFails = true; }), -1);
  EXPECT_EQ(resultOf([](Diagonal& p) { p.failAt = 1; }), -1);
  EXPECT_EQ(resultOf([](Diagonal& p) { p.failAt = 3; }), -1);
  EXPECT_EQ(resultOf([](Diagonal& p) { p.basisFails = true; }), -1);
  EXPECT_EQ(resultOf([](Diagonal& p) { p.newFails = true; }), -1);
}

TEST(AlgoSvdArpack, AnInterfaceOfAnotherKindIsABadCast) {
  C_ItfAlgorithm other;
  C_AlgoSvdArpack svd;

  EXPECT_THROW(svd.Run(other), std::bad_cast);
}

TEST(AlgoSvdArpack, ARefusalLeavesNoResultsOfAnEarlierRun) {
  C_ItfAlgorithm other;
  Set set(inCore, 4, 9, nullptr);
  C_AlgoSvdArpack svd;
  const auto succeed = [&] {
    Diagonal problem({1, 16, 4, 9});
    ASSERT_EQ(svd.Run(problem), 0);
    ASSERT_EQ(svd.GetNbRetained(), 4);
  };

  succeed();
  EXPECT_THROW(svd.Run(other), std::bad_cast);
  EXPECT_EQ(svd.GetNbRetained(), 0);

  succeed();
  capture([&] { EXPECT_EQ(svd.Run(set, 1, -1), -1); });
  EXPECT_EQ(svd.GetNbRetained(), 0);
}

TEST(AlgoSvdArpack, AnOperatorThatGivesNoNumberEndsTheRun) {
  Diagonal problem({1, std::numeric_limits<double>::quiet_NaN(), 4});
  C_AlgoSvdArpack svd;

  const auto said = capture([&] { EXPECT_EQ(svd.Run(problem), -1); });

  EXPECT_TRUE(holds(said.err, "a product is not finite"));
}

/** Counts what it hears, and asks for an end. */
class Impatient : public Zarel::C_ProgressEngine {
public:
  void Update(int step) override { last = step; }
  void checkAbort() override {
    if (last == limit) throw 5;
  }
  int last = -1, limit = -1;
};

TEST(AlgoSvdArpack, ProgressHearsEachProductAndMayEndTheRun) {
  Diagonal problem({1, 16, 4, 9, 0.25});
  Impatient engine;
  problem.listen(&engine);
  C_AlgoSvdArpack svd;

  ASSERT_EQ(svd.Run(problem), 0);
  EXPECT_EQ(engine.last, problem.products - 1);

  engine.limit = 2;
  EXPECT_THROW(svd.Run(problem), int);
  EXPECT_EQ(engine.last, 2);
  engine.limit = -1;
  EXPECT_EQ(svd.Run(problem), 0); // a broken off run leaves ARPACK usable
}

/** Wants to stop once the iteration is over. */
class StopsAtTheBasis : public Diagonal, private Zarel::C_ProgressEngine {
public:
  using Diagonal::Diagonal;
  void watch() { listen(this); }
  int ProdAV(C_Vec<double, int>& x, C_Vec<double, int>& y) override {
    ++vectors;
    return Diagonal::ProdAV(x, y);
  }
  int vectors = 0;

private:
  void checkAbort() override {
    if (vectors > 0) throw 7;
  }
};

TEST(AlgoSvdArpack, ProgressMayEndTheRunWhileTheVectorsAreMade) {
  std::vector<double> eigenvalues;
  for (int i = 0; i < 80; ++i)
    eigenvalues.push_back(80 - i);
  StopsAtTheBasis problem(eigenvalues);
  C_AlgoSvdArpack svd;
  svd.SetThresholdValue(0);
  problem.watch();

  EXPECT_THROW(svd.Run(problem), int);

  EXPECT_GT(problem.vectors, 0);
  EXPECT_LT(problem.vectors, 80); // not all of them were made
  EXPECT_EQ(problem.basis, -1);   // and none was handed over
  EXPECT_EQ(svd.GetNbRetained(), 0);
}

TEST(AlgoSvdArpack, AFailedRunLetsItsViewGoAndKeepsThatOfTheCaller) {
  Matrix a = withSpectrum<double>(9, {4, 3, 2, 1});
  a(2, 3) = std::numeric_limits<double>::infinity();
  for (const bool mapped : {false, true}) {
    Set set(onFile, 4, 9, nullptr);
    fillFrom(set, a);
    set.UnmapAllBlocks();
    if (mapped) set.MapAllBlocks();
    C_AlgoSvdArpack svd;

    capture([&] { EXPECT_EQ(svd.Run(set, 0, -1), -1); });

    EXPECT_EQ(set.Adr() != nullptr, mapped);
    EXPECT_EQ(set.isMapped(0, 3), mapped);
  }
}

/** ARPACK has no direction to start from. */
TEST(AlgoSvdArpack, AZeroSetIsAnError) {
  Set set(inCore, 5, 9, nullptr);
  C_AlgoSvdArpack svd;

  const auto said = capture([&] { EXPECT_EQ(svd.Run(set, 0, -1), -1); });

  EXPECT_TRUE(holds(said.err, "[SVD] Error with _saupd, info = -9 ")) << said.err;
  EXPECT_EQ(svd.GetNbRetained(), 0);
  EXPECT_EQ(set.getDim(), 5);
}

TEST(ItfSvdArpackCVstruct, NamesTheFirstVectorThatHoldsNoFiniteNumber) {
  using Limits = std::numeric_limits<double>;
  for (int mode : {inCore, onFile})
    for (double bad : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()}) {
      Matrix a = withSpectrum<double>(9, {4, 3, 2, 1});
      a(8, 1) = a(0, 3) = bad;
      Set set(mode, 4, 9, nullptr);
      fillFrom(set, a);
      C_AlgoSvdArpack svd;

      const auto said = capture([&] { EXPECT_EQ(svd.Run(set, 0, -1), -1); });

      EXPECT_TRUE(holds(said.err, "vector 1 holds a value that is not a finite number"))
          << said.err;
      EXPECT_EQ(set.getDim(), 4);
      EXPECT_EQ(svd.GetNbRetained(), 0);
    }
}

TEST(ItfSvdArpackCVstruct, SquaresThatOverflowAreAnErrorOfTheirOwn) {
  Matrix a(9, 3);
  a(0, 0) = a(1, 1) = a(2, 2) = 1e200;
  Set set(inCore, 3, 9, nullptr);
  fillFrom(set, a);
  C_AlgoSvdArpack svd;

  const auto said = capture([&] { EXPECT_EQ(svd.Run(set, 0, -1), -1); });

  EXPECT_TRUE(holds(said.err, "the squares of the values overflow"));
}

/** Both products of an interface against the dense ones. */
void expectProducts(Set& set, Matrix& a) {
  C_ItfSvdArpackCVstruct itf(set);
  const int m = a.NbRow(), n = a.NbCol();
  VecOf<double> x(n), y(m), z(n), expected(m), gram(n);
  for (int j = 0; j < n; ++j)
    x[j] = j % 3 - 0.5;
  x[0] = 0;
  a.Mv(1, x, 0, expected, 'N');
  a.Mv(1, expected, 0, gram, 'T');
  int rows = 0, columns = 0;
  Matrix X(n, 2), Y(m, 2);
  VecOf<double>(n, X[1]).Copy(x);

  EXPECT_EQ(itf.GetSize(rows, columns), 0);
  EXPECT_EQ(itf.ProdAV(x, y), 0);
  EXPECT_EQ(itf.ProdAtAV(x, z), 0);
  EXPECT_EQ(itf.ProdAMat(X, Y), 0);

  EXPECT_EQ(rows, m);
  EXPECT_EQ(columns, n);
  for (int i = 0; i < m; ++i) {
    EXPECT_NEAR(y[i], expected[i], 100 * eps);
    EXPECT_NEAR(Y(i, 1), expected[i], 100 * eps);
    EXPECT_EQ(Y(i, 0), 0);
  }
  for (int j = 0; j < n; ++j)
    EXPECT_NEAR(z[j], gram[j], 1000 * eps);
}

TEST(ItfSvdArpackCVstruct, MultipliesSetsOfEveryStorage) {
  Matrix a = withSpectrum<double>(700, graded(7, 1, 0.7)); // more rows than a panel
  for (int mode : {inCore, onFile}) {
    Set set(mode, 7, 700, nullptr);
    fillFrom(set, a);
    expectProducts(set, a);

    Set link(set, 2, 6, 100, 650);
    Matrix part(550, 4);
    for (int j = 0; j < 4; ++j)
      for (int i = 0; i < 550; ++i)
        part(i, j) = a(i + 100, j + 2);
    expectProducts(link, part);
  }
}

/** While it lives, no view of `least` bytes or more is to be had. */
class NoViewsFrom {
public:
  explicit NoViewsFrom(std::size_t least) {
    real = Zarel::systemCalls().mmap;
    limit = least;
    refusals = 0;
    Zarel::systemCalls().mmap = mmap;
  }
  ~NoViewsFrom() { Zarel::systemCalls().mmap = real; }
  NoViewsFrom(const NoViewsFrom&) = delete;
  NoViewsFrom& operator=(const NoViewsFrom&) = delete;

  static int refusals;

private:
  static void* mmap(void* address, std::size_t bytes, int protection, int flags, int fd,
                    off_t offset) {
    if (bytes < limit) return real(address, bytes, protection, flags, fd, offset);
    ++refusals;
    errno = ENOMEM;
    return reinterpret_cast<void*>(-1); // MAP_FAILED
  }
  static decltype(Zarel::SystemCalls::mmap) real;
  static std::size_t limit;
};
int NoViewsFrom::refusals = 0;
decltype(Zarel::SystemCalls::mmap) NoViewsFrom::real = nullptr;
std::size_t NoViewsFrom::limit = 0;

/** A mapped set whose vectors lie so far apart, in a file with holes, that a walk over them has one
 * in view at a time. */
class FarApart : public ::testing::Test {
protected:
  static constexpr std::size_t gap = 64 << 20;

  void SetUp() override {
    support::writeBytes(name, raw(5, 30));
    file = std::fopen(name.c_str(), "r+b");
    ASSERT_NE(file, nullptr);
    std::fseek(file, 0, SEEK_END);
    for (int j = 0; j < 5; ++j) {
      ASSERT_EQ(std::fwrite(a[j], sizeof(double), 30, file), 30u);
      if (j < 4) std::fseek(file, gap, SEEK_CUR);
    }
    std::rewind(file);
    ASSERT_EQ(set.Read(file, 2, true, 0, 0, gap), 0);
  }
  ~FarApart() override {
    if (file != nullptr) std::fclose(file);
  }

  Matrix a = withSpectrum<double>(30, graded(5, 1, 0.5));
  support::TempDirectory directory;
  std::string name = directory.file("vectors");
  std::FILE* file = nullptr;
  Set set;
};

TEST_F(FarApart, VectorsAreMultipliedOneByOneWhereNoWholeViewFits) {
  capture([&] {
    const NoViewsFrom whole(gap);
    expectProducts(set, a);
    EXPECT_EQ(NoViewsFrom::refusals, 1);
  });
}

/** The problem as it is, with a basis that goes nowhere. */
class Kept : public C_ItfSvdArpackCVstruct {
public:
  using C_ItfSvdArpackCVstruct::C_ItfSvdArpackCVstruct;
  int SetNewA(Set&) override { return 0; }
};

TEST_F(FarApart, AViewThatIsRefusedIsNotAskedForAgainInARun) {
  Kept problem(set);
  C_AlgoSvdArpack svd;
  int nev = 3;
  svd.SetNbEigenValuesToFind(nev);

  capture([&] {
    const NoViewsFrom whole(gap);
    EXPECT_EQ(svd.Run(static_cast<C_ItfAlgorithm&>(problem)), 0);
    EXPECT_EQ(NoViewsFrom::refusals, 1);
  });

  const std::vector<double> s = valuesOf<double>(svd);
  ASSERT_EQ(s.size(), 3u);
  for (int i = 0; i < 3; ++i)
    EXPECT_NEAR(s[static_cast<std::size_t>(i)], std::pow(0.5, i), 100 * eps);
}

TEST(ItfSvdArpackCVstruct, TheNextRunAsksForAWholeViewAgain) {
  Matrix a = withSpectrum<double>(9, {4, 3});
  Set set(onFile, 2, 9, nullptr);
  fillFrom(set, a);
  C_ItfSvdArpackCVstruct itf(set);
  VecOf<double> x(2), y(9);
  x[0] = x[1] = 1;
  int m = 0, n = 0;
  capture([&] {
    const support::FailingCall refused(1, "mmap", ENOMEM);
    EXPECT_EQ(itf.ProdAV(x, y), 0);
  });
  EXPECT_EQ(itf.ProdAV(x, y), 0);
  EXPECT_EQ(set.Adr(), nullptr); // in parts for the rest of the run

  itf.GetSize(m, n);
  EXPECT_EQ(itf.ProdAV(x, y), 0);

  EXPECT_NE(set.Adr(), nullptr);
}

TEST(ItfSvdArpackCVstruct, OnlyARefusedViewSendsItToTheParts) {
  Matrix a = withSpectrum<double>(9, {4, 3, 2});
  Set set(onFile, 3, 9, nullptr);
  fillFrom(set, a);
  set.MapBlock(0, 0);
  C_ItfSvdArpackCVstruct itf(set);
  VecOf<double> x(3), y(9);
  x[0] = 1;

  capture([&] {
    const support::FailingCall stuck(1, "munmap", EIO); // of the vector that is mapped
    EXPECT_EQ(codeOf([&] { itf.ProdAV(x, y); }), 14);
  });
}

TEST(ItfSvdArpackCVstruct, WhatMappingThrowsIsReportedAndPassedOn) {
  Matrix a = withSpectrum<double>(9, {4, 3, 2});
  Set set(onFile, 3, 9, nullptr);
  fillFrom(set, a);
  C_ItfSvdArpackCVstruct itf(set);
  VecOf<double> x(3), y(9), z(3);
  Matrix X(3, 1), Y(9, 1);
  x[0] = X(0, 0) = 1;
  C_AlgoSvdArpack svd;
  const NoViewsFrom any(0);
  const auto reported = [](auto operation) {
    const auto said = capture([&] { EXPECT_EQ(codeOf(operation), 13); });
    EXPECT_TRUE(holds(said.err, "ID=13")) << said.err;
    EXPECT_EQ(said.err.find("ID=13"), said.err.rfind("ID=13")) << "told more than once";
  };

  reported([&] { itf.ProdAV(x, y); });
  reported([&] { itf.ProdAtAV(x, z); });
  reported([&] { itf.ProdAMat(X, Y); });
  reported([&] { svd.Run(set, 0, -1); });

  EXPECT_EQ(svd.GetNbRetained(), 0);
  EXPECT_EQ(set.getDim(), 3);
}

/** A problem that has A^T A at hand: here that of another A, to tell the two apart. */
class Prepared : public C_ItfSvdArpackCVstruct {
public:
  explicit Prepared(Set& set) : C_ItfSvdArpackCVstruct(set) {
    gram_.Resize(2, 2);
    gram_(0, 0) = 9;
    gram_(1, 1) = 4;
    gram_(1, 0) = 1;
  }
  void use() { useGram_ = true; }
};

TEST(ItfSvdArpackCVstruct, UsesAPreparedGramMatrixOnRequest) {
  Matrix a(5, 2);
  a(0, 0) = a(1, 1) = 2;
  Set set(inCore, 2, 5, nullptr);
  fillFrom(set, a);
  Prepared problem(set);
  VecOf<double> x(2), y(2);
  x[0] = 1;
  x[1] = 10;

  EXPECT_EQ(problem.ProdAtAV(x, y), 0);
  EXPECT_EQ(y[0], 4);
  EXPECT_EQ(y[1], 40);

  problem.use();
  EXPECT_EQ(problem.ProdAtAV(x, y), 0);
  EXPECT_EQ(y[0], 9);
  EXPECT_EQ(y[1], 41);
}

TEST(ItfSvdArpackCVstruct, RefusesVectorsThatDoNotFit) {
  Set set(inCore, 3, 9, nullptr), other(inCore, 2, 8, nullptr);
  C_ItfSvdArpackCVstruct itf(set);
  VecOf<double> x(2), y(9);
  Matrix X(2, 1), Y(9, 1), three(3, 1), pair(9, 2), low(8, 1);

  EXPECT_EQ(itf.ProdAMat(three, Y), 0);
  EXPECT_EQ(itf.ProdAMat(three, pair), -1);
  EXPECT_EQ(itf.ProdAMat(three, low), -1);
  EXPECT_EQ(itf.ProdAV(x, y), -1);
  EXPECT_EQ(itf.ProdAtAV(x, y), -1);
  EXPECT_EQ(itf.ProdAMat(X, Y), -1);
  EXPECT_EQ(itf.SetNewA(other), -1);
}

TEST(ItfSvdArpackCVstruct, TakesNewColumns) {
  Matrix a = withSpectrum<double>(9, {4, 3});
  for (int mode : {inCore, onFile}) {
    Set set(mode, 5, 9, nullptr), q(inCore, 2, 9, nullptr);
    fillFrom(q, a);
    C_ItfSvdArpackCVstruct itf(set);

    EXPECT_EQ(itf.SetNewA(q), 0);

    Matrix after = matrixOf(set);
    EXPECT_EQ(largestDifference(after, a), 0);
  }
}

TEST(ItfSvdArpackCVstruct, ASetThatOwnsNothingCannotTakeFewer) {
  Set set(inCore, 4, 9, nullptr), q(inCore, 2, 9, nullptr);
  Set link(set, 0, -1, 0, -1);
  C_ItfSvdArpackCVstruct itf(link);

  const auto said = capture([&] { EXPECT_EQ(codeOf([&] { itf.SetNewA(q); }), 2870); });

  EXPECT_TRUE(holds(said.err, "***")); // reported, then passed on
}

} // namespace

// What the decompositions ask of LAPACK and ARPACK, and what they make of each answer. This program
// brings its own dgesvd, dsaupd and dseupd, which note the question and answer as they are told.
#include <array>
#include <string>

#include <zarel/C_MessageTool.h>

#include "decomposition/sets.h"
#include "support/Capture.h"

namespace {

using namespace sets;

struct Asked {
  char bmat, which[2], howmny;
  int n, nev, ncv, ldv, lworkl, ido, info, rvec;
  double tol, sigma, sumOfWorkspace;
  std::array<int, 11> iparam;
};

Asked asked; // of dsaupd and, from howmny on, of dseupd
int gesvdInfo = 0, saupdInfo = 0, seupdInfo = 0, converged = 0;

double sumOf(const double* values, int count) {
  double sum = 0;
  for (int i = 0; i < count; ++i)
    sum += std::abs(values[i]);
  return sum;
}

} // namespace

#define ANSWERS extern "C" [[gnu::visibility("default")]] void

ANSWERS dgesvd_(char*, char*, int* m, int* n, double*, int*, double* s, double*, int*, double*,
                int*, double* work, int* lwork, int* info, std::size_t, std::size_t) {
  *info = *lwork == -1 ? 0 : gesvdInfo;
  if (*lwork == -1) {
    work[0] = 1;
    return;
  }
  for (int i = 0; i < std::min(*m, *n); ++i)
    s[i] = 1;
}

ANSWERS dsaupd_(int* ido, char* bmat, int* n, char* which, int* nev, double* tol, double* resid,
                int* ncv, double* v, int* ldv, int* iparam, int*, double* workd, double* workl,
                int* lworkl, int* info, std::size_t, std::size_t) {
  asked.bmat = *bmat;
  std::copy(which, which + 2, asked.which);
  asked.n = *n;
  asked.nev = *nev;
  asked.ncv = *ncv;
  asked.ldv = *ldv;
  asked.lworkl = *lworkl;
  asked.ido = *ido;
  asked.info = *info;
  asked.tol = *tol;
  asked.sumOfWorkspace =
      sumOf(resid, *n) + sumOf(v, *ldv * *ncv) + sumOf(workd, 3 * *n) + sumOf(workl, *lworkl);
  std::copy(iparam, iparam + 11, asked.iparam.begin());
  *ido = 99;
  *info = saupdInfo;
  iparam[2] = 4;
  iparam[4] = converged;
  iparam[8] = 17;
}

/** The values 1, 4, 9, ... in ascending order, and the axes as their vectors. */
ANSWERS dseupd_(int* rvec, char* howmny, int*, double* d, double* z, int* ldz, double* sigma, char*,
                int*, char*, int* nev, double*, double*, int*, double*, int*, int*, int*, double*,
                double*, int*, int* info, std::size_t, std::size_t, std::size_t) {
  asked.rvec = *rvec;
  asked.howmny = *howmny;
  asked.sigma = *sigma;
  for (int k = 0; k < *nev; ++k) {
    d[k] = (k + 1.0) * (k + 1.0);
    for (int i = 0; i < *ldz; ++i)
      z[k * *ldz + i] = i == k ? 1 : 0;
  }
  *info = seupdInfo;
}

namespace {

/** A with the singular values 1, 2, ... on its diagonal, as dseupd tells them. */
class Steps : public C_ItfSvdArpack {
public:
  int GetSize(int& m, int& n) override {
    m = 9;
    n = 7;
    return 0;
  }
  int ProdAV(C_Vec<double, int>& x, C_Vec<double, int>& y) override {
    y.Zero(0, -1);
    for (int i = 0; i < 7; ++i)
      y[i] = (i + 1) * x[i];
    return 0;
  }
  int ProdAtAV(C_Vec<double, int>&, C_Vec<double, int>&) override { return -1; }
  int SetNewA(C_VSTRUCT<double>& q) override {
    basis = matrixOf(q);
    return 0;
  }
  C_MatMGe<double> basis;
};

class SvdCalls : public ::testing::Test {
protected:
  void SetUp() override {
    gesvdInfo = saupdInfo = seupdInfo = 0;
    converged = nev;
    svd.SetNbEigenValuesToFind(nev);
    svd.SetThresholdValue(0);
  }

  /** Runs, with everything that is told, and gives the result. */
  int run() {
    Zarel::C_MessageTool* const tool = Zarel::C_MessageTool::Instance("DefaultMessageTool");
    tool->setVerbosityLevel(3, Zarel::SCREEN);
    tool->ActivateDebugScope(451, true, Zarel::SCREEN);
    int result = 0;
    const auto said = support::capture([&] { result = svd.Run(problem); });
    tool->ActivateDebugScope(451, false, Zarel::SCREEN);
    tool->setVerbosityLevel(0, Zarel::SCREEN);
    out = said.out;
    err = said.err;
    return result;
  }

  static bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
  }

  int nev = 3;
  Steps problem;
  C_AlgoSvdArpack svd;
  std::string out, err;
};

TEST_F(SvdCalls, ArpackIsAskedForTheLargestValuesOfAStandardProblem) {
  ASSERT_EQ(run(), 0);

  EXPECT_EQ(asked.ido, 0);
  EXPECT_EQ(asked.info, 0); // a random start
  EXPECT_EQ(asked.bmat, 'I');
  EXPECT_EQ(std::string(asked.which, 2), "LM");
  EXPECT_EQ(asked.n, 7);
  EXPECT_EQ(asked.nev, 3);
  EXPECT_EQ(asked.ncv, 6);
  EXPECT_EQ(asked.ldv, 7);
  EXPECT_EQ(asked.lworkl, 6 * (6 + 8));
  EXPECT_EQ(asked.tol, 0);
  EXPECT_EQ(asked.sumOfWorkspace, 0);
  EXPECT_EQ(asked.iparam, (std::array<int, 11>{1, 0, 7, 0, 0, 0, 1, 0, 0, 0, 0}));
  EXPECT_EQ(asked.rvec, 1);
  EXPECT_EQ(asked.howmny, 'A');
  EXPECT_EQ(asked.sigma, 0);
}

TEST_F(SvdCalls, AscendingValuesAreTurnedAndSummedUp) {
  ASSERT_EQ(run(), 0);

  EXPECT_EQ(valuesOf<double>(svd), (std::vector<double>{3, 2, 1}));
  ASSERT_EQ(problem.basis.NbCol(), 3);
  for (int j = 0; j < 3; ++j)
    EXPECT_EQ(problem.basis(2 - j, j), 1);
  EXPECT_TRUE(holds(out, " The number of converged Ritz values is 3\n"
                         " The number of Implicit Arnoldi update iterations taken is 4\n"
                         " The number of OP*x is 17\n The convergence criterion is 0.000000E+00"))
      << out;
  EXPECT_FALSE(holds(out, "Maximum number"));
  EXPECT_FALSE(holds(out, "No shifts"));
}

TEST_F(SvdCalls, NotesOfArpackAreNoErrors) {
  saupdInfo = 1;
  ASSERT_EQ(run(), 0);
  EXPECT_TRUE(holds(out, "[SVD] Maximum number of iterations reached.\n"));
  EXPECT_FALSE(holds(out, "No shifts"));

  saupdInfo = 3;
  ASSERT_EQ(run(), 0);
  EXPECT_TRUE(holds(out, "[SVD] No shifts could be applied during implicit Arnoldi update, try "
                         "increasing NCV."));
  EXPECT_FALSE(holds(out, "Maximum number"));
}

TEST_F(SvdCalls, FewerValuesMayConvergeThanWereSought) {
  saupdInfo = 1;
  converged = 2;

  ASSERT_EQ(run(), 0);

  EXPECT_EQ(valuesOf<double>(svd), (std::vector<double>{2, 1}));
  EXPECT_EQ(problem.basis.NbCol(), 2);
}

TEST_F(SvdCalls, AnErrorOfTheIterationEndsTheRun) {
  saupdInfo = -9999;

  EXPECT_EQ(run(), -1);

  EXPECT_TRUE(holds(err, " [SVD] Error with _saupd, info = -9999 : Check documentation in "
                         "_saupd\n"))
      << err;
  EXPECT_EQ(svd.GetNbRetained(), 0);
}

TEST_F(SvdCalls, AnErrorOfTheExtractionEndsTheRun) {
  for (int info : {-14, 1}) {
    seupdInfo = info;

    EXPECT_EQ(run(), -1);

    EXPECT_TRUE(holds(err, " [SVD] Error with _seupd, info = " + std::to_string(info) +
                               " : Check documentation in _seupd\n"))
        << err;
    EXPECT_EQ(svd.GetNbRetained(), 0);
    EXPECT_EQ(problem.basis.NbCol(), 0);
  }
}

TEST_F(SvdCalls, AnErrorOfLapackEndsTheRunAndKeepsTheVectors) {
  for (int info : {5, -3}) {
    C_MatMGe<double> a(4, 2);
    C_VSTRUCT<double> set(onFile, 2, 4, nullptr);
    C_AlgoSvdLapack<double> direct;
    ASSERT_EQ(direct.Run(set, 0, 1), 0);
    ASSERT_EQ(direct.GetNbRetained(), 1);
    set.Resize(2, nullptr);
    gesvdInfo = info;

    support::capture([&] {
      EXPECT_EQ(direct.Run(set, 0, 1), -1);
      EXPECT_EQ(direct.Run(a, 0), -1);
    });

    EXPECT_EQ(direct.GetNbRetained(), 0);
    EXPECT_EQ(set.getDim(), 2);
    EXPECT_EQ(a.NbCol(), 2);
    gesvdInfo = 0;
  }
}

} // namespace

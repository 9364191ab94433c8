// Questions to LAPACK itself, and routines with many character options.
#include <cmath>
#include <limits>
#include <vector>

#include "numerics/precision.h"

using namespace precision;

namespace {

TEST(Ilaenv, KnowsTheBlockSizesOfRealNames) {
  // The values of the reference ilaenv: 64 for xGETRF, 32 for xGEQRF and xORGQR.
  EXPECT_EQ(ITF_ilaenv(1, option("DGETRF"), option(" "), 1000, 1000, -1, -1), 64);
  EXPECT_EQ(ITF_ilaenv(1, option("ZGEQRF"), option(" "), 1000, 1000, -1, -1), 32);
  EXPECT_EQ(ITF_ilaenv(1, option("DORGQR"), option(""), 1000, 1000, 1000, -1), 32);
  EXPECT_EQ(ITF_ilaenv(2, option("DGETRF"), option("UN"), 1000, 1000, -1, -1), 2);
}

TEST(Ilaenv, RejectsAQuestionItDoesNotKnow) {
  EXPECT_EQ(ITF_ilaenv(99, option("DGETRF"), option(" "), 1, 1, 1, 1), -1);
}

TEST(Lamch, TellsTheMachine) {
  EXPECT_EQ(ITF_dlamch(option("E")), std::numeric_limits<double>::epsilon() / 2);
  EXPECT_EQ(ITF_dlamch(option("Precision")), std::numeric_limits<double>::epsilon());
  EXPECT_EQ(ITF_dlamch(option("S")), std::numeric_limits<double>::min());
  EXPECT_EQ(ITF_slamch(option("E")), std::numeric_limits<float>::epsilon() / 2);
  EXPECT_EQ(ITF_slamch(option("Overflow")), std::numeric_limits<float>::max());
}

TEST(Lsame, ComparesOneLetterWithoutCase) {
  EXPECT_TRUE(ITF_lsame(option("n"), option("N")));
  EXPECT_TRUE(ITF_lsame(option("Nothing"), option("none")));
  EXPECT_FALSE(ITF_lsame(option("T"), option("N")));
}

TEST(Options, FourOfThemReachAnExpertEigenvalueRoutine) {
  // [2 1; 1 2]: eigenvalues 1 and 3; balanced, with vectors on both sides and all condition
  // numbers.
  std::vector<double> a{2, 1, 1, 2}, wr(2), wi(2), vl(4), vr(4), scale(2), rconde(2), rcondv(2),
      work(64);
  std::vector<int> iwork(2);
  double norm = 0;
  int low = 0, high = 0, info = -1;

  ITF_dgeevx(option("B"), option("V"), option("V"), option("B"), 2, a.data(), 2, wr.data(),
             wi.data(), vl.data(), 2, vr.data(), 2, &low, &high, scale.data(), &norm, rconde.data(),
             rcondv.data(), work.data(), 64, iwork.data(), &info);

  EXPECT_EQ(info, 0);
  EXPECT_EQ(low, 1);
  EXPECT_EQ(high, 2);
  EXPECT_NEAR(std::min(wr[0], wr[1]), 1, 1e-14);
  EXPECT_NEAR(std::max(wr[0], wr[1]), 3, 1e-14);
  EXPECT_NEAR(norm, 3, 1e-14);
  EXPECT_NEAR(rconde[0], 1, 1e-14); // eigenvalues of a symmetric matrix are well conditioned
}

TEST(Options, AnExpertSolverTellsHowItScaled) {
  // diag(1, 1e-8) with fact 'E': rows are scaled, and equed says so.
  std::vector<double> a{1, 0, 0, 1e-8}, af(4), r(2), c(2), b{1, 1}, x(2), ferr(1), berr(1), work(8);
  std::vector<int> pivots(2), iwork(2);
  char equed = '?';
  double rcond = 0;
  int info = -1;

  ITF_dgesvx(option("E"), option("N"), 2, 1, a.data(), 2, af.data(), 2, pivots.data(), &equed,
             r.data(), c.data(), b.data(), 2, x.data(), 2, &rcond, ferr.data(), berr.data(),
             work.data(), iwork.data(), &info);

  EXPECT_EQ(info, 0);
  EXPECT_EQ(equed, 'R');
  EXPECT_NEAR(x[0], 1, 1e-12);
  EXPECT_NEAR(x[1], 1e8, 1e-4);
  EXPECT_NEAR(rcond, 1, 1e-12);
}

TEST(Options, NormsByTheirLetter) {
  std::vector<double> a{1, -3, 2, 4}, work(2); // [1 2; -3 4]
  std::vector<ComplexDouble> z{{3, 4}, {0, 0}};
  std::vector<double> none(2);

  EXPECT_EQ(ITF_dlange(option("M"), 2, 2, a.data(), 2, work.data()), 4);
  EXPECT_EQ(ITF_dlange(option("1"), 2, 2, a.data(), 2, work.data()), 6);
  EXPECT_EQ(ITF_dlange(option("I"), 2, 2, a.data(), 2, work.data()), 7);
  EXPECT_NEAR(ITF_dlange(option("F"), 2, 2, a.data(), 2, work.data()), std::sqrt(30.), 1e-14);
  EXPECT_EQ(ITF_zlange(option("M"), 2, 1, z.data(), 2, none.data()), 5);
}

} // namespace

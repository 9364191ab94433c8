#include "surrogate.h"

#include "app_support.h"
#include "library.h"

#include <cmath>

using namespace app;
using apptest::failureOf;

namespace {

class Surrogate : public ::testing::Test {
protected:
  Surrogate() {
    samples_.inputs.names = {"p", "q"};
    samples_.outputs.names = {"u", "v", "w"};
    for (int i = 0; i < 20; ++i) {
      const double p = std::cos(2.4 * i);
      const double q = std::sin(1.7 * i);
      samples_.inputs.values.insert(samples_.inputs.values.end(), {p, q});
      samples_.outputs.values.insert(samples_.outputs.values.end(), {p * q, p - q * q, 5 + q});
    }
  }

  Samples samples_;
  ModelOptions options_;
  KrigingList<double> list_;
  ModelNotes notes_;
  Console console_;
};

TEST_F(Surrogate, PutsTheOutputsInTheOrderOfTheirGroups) {
  options_.groups = "w,u";
  buildList(samples_, options_, list_, notes_);
  EXPECT_EQ(notes_.outputs, (std::vector<std::string>{"w", "u", "v"}));
  C_MatMGe<double> y;
  ASSERT_EQ(list_.GetOutSampMtx(y, -1), 0);
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(y(i, 0), samples_.outputs.at(i, 2));
    EXPECT_EQ(y(i, 1), samples_.outputs.at(i, 0));
    EXPECT_EQ(y(i, 2), samples_.outputs.at(i, 1));
  }
  EXPECT_EQ(modelCount(list_), 2);
}

/** The same calls by hand give the same model, to the last bit. */
TEST_F(Surrogate, IsWhatTheLibrarysOwnCallsMake) {
  options_.groups = "all";
  options_.correlation = {E_CorrMatern52};
  options_.trend = {E_PolyLinear};
  buildList(samples_, options_, list_, notes_);
  fitModels(list_, notes_, console_);

  KrigingList<double> hand;
  C_MatMGe<double> x;
  C_MatMGe<double> y;
  toMatrix(samples_.inputs, x);
  toMatrix(samples_.outputs, y);
  int size = 3;
  hand.PutNumKriging(1);
  hand.PutNumVar(2);
  hand.PutNumSol(3, 1, &size);
  hand.PutInpSampMtx(x);
  hand.PutOutSampMtx(y);
  hand.PutCorrFuncType(E_CorrMatern52, -1);
  hand.PutPolynomType(E_PolyLinear, -1);
  hand.PutScalingType(E_ScaleBoth, -1);
  hand.PutKrigingKernVarType(E_KernAnisotropic, -1);
  hand.PutKrigingKernOptType(E_KernOptPattern, -1);
  ASSERT_EQ(hand.Solve(), 0);

  C_MatMGe<double> ours;
  C_MatMGe<double> theirs;
  list_.EvalModel(x, ours);
  hand.EvalModel(x, theirs);
  for (int i = 0; i < 20; ++i)
    for (int j = 0; j < 3; ++j)
      EXPECT_EQ(ours(i, j), theirs(i, j));
}

TEST_F(Surrogate, PreparingErrorsKeepsTheMultipliers) {
  buildList(samples_, options_, list_, notes_);
  fitModels(list_, notes_, console_);
  const auto before = modelFacts(list_, notes_);
  prepareErrors(list_, notes_, console_);
  const auto after = modelFacts(list_, notes_);
  for (std::size_t i = 0; i < before.size(); ++i)
    EXPECT_EQ(before[i].theta, after[i].theta);
}

TEST_F(Surrogate, FactsNameAReducedTrend) {
  samples_.inputs.values.resize(2 * 2);
  samples_.outputs.values.resize(3 * 2);
  options_.optimise = false;
  buildList(samples_, options_, list_, notes_);
  fitModels(list_, notes_, console_);
  const auto facts = modelFacts(list_, notes_);
  EXPECT_EQ(facts[0].trend, E_PolyConst);
  EXPECT_EQ(facts[0].terms, 1);
}

TEST_F(Surrogate, TrialsHaveAnExpectedNumber) {
  EXPECT_EQ(library::expectedTrials(1), 2 + 2 * 3);
  EXPECT_EQ(library::expectedTrials(3), 2 + 3 * 7);
  EXPECT_EQ(library::expectedTrials(10), 2 + 4 * 21);
}

} // namespace

// Defaults, state word, and the Puts and Gets of a model.
#include <cmath>
#include <functional>
#include <limits>
#include <thread>

#include "kriging/ModelFixture.h"

using namespace kriging_test;

template <class T>
class KrigingModel : public ::testing::Test {
protected:
  OpenModel<T> model_;
};
TYPED_TEST_SUITE(KrigingModel, Scalars);

namespace {

template <class T>
void expectDefaults(OpenModel<T>& model) {
  EXPECT_EQ(model.Status, 0);
  EXPECT_FALSE(model.stopped());
  EXPECT_EQ(model.NumSamp, 0);
  EXPECT_EQ(model.NumVar, 0);
  EXPECT_EQ(model.NumSol, 0);
  EXPECT_EQ(model.NumGlobalSol, 0);
  EXPECT_EQ(model.VecGlobalSol, nullptr);
  EXPECT_EQ(model.NumKern, 0);
  EXPECT_EQ(model.KernOptType, 0);
  EXPECT_EQ(model.SolnType, 0);
  EXPECT_EQ(model.CorrFuncType, 2);
  EXPECT_EQ(model.PolynomType, 4);
  EXPECT_EQ(model.KernStartPending, 1);
  EXPECT_EQ(model.KernVarType, 0);
  EXPECT_FALSE(model.KernRecentre);
  EXPECT_TRUE(model.ISSolveRequired());
  EXPECT_FALSE(model.InpSampSet);
  EXPECT_FALSE(model.OutSampSet);
  EXPECT_EQ(model.ScalingType, 0);
  EXPECT_EQ(model.DropToler, 1e-8);
  EXPECT_EQ(model.Spare1, 1.0);
  EXPECT_EQ(model.NuggetFactor, 1e-14);
  EXPECT_EQ(model.NumSolves, 0);
  EXPECT_EQ(model.SolveStep, 1);
  EXPECT_FALSE(model.RegrFactorIsTri);
  EXPECT_EQ(model.InputPointToler, 1e-7);
  EXPECT_EQ(model.Spare2, 9.999999999999998e-15);
  EXPECT_EQ(model.LowerKernelMultiplierBound, 0.01);
  EXPECT_EQ(model.UpperKernelMultiplierBound, 20.0);
  EXPECT_FALSE(model.KeepPredictorError);
  EXPECT_FALSE(model.InpTestSet);
  EXPECT_FALSE(model.RescaleOnSolve);
  EXPECT_TRUE(model.TestCorrStale);
  EXPECT_TRUE(model.TestPolyStale);
}

/// Gives every field that has a default another value.
template <class T>
void leaveDefaults(OpenModel<T>& model) {
  model.Status = E_KrigingStatusSolved;
  model.StopRequested = 1;
  model.NumSamp = model.NumVar = model.NumSol = model.NumGlobalSol = model.NumKern = 7;
  model.VecGlobalSol.reset(new int[7]());
  model.KernOptType = model.SolnType = model.CorrFuncType = model.PolynomType = 9;
  model.KernVarType = model.ScalingType = 9;
  model.KernStartPending = 0;
  model.KernRecentre = model.InpSampSet = model.OutSampSet = model.InpTestSet = true;
  model.SolveRequired = model.TestCorrStale = model.TestPolyStale = false;
  model.DropToler = model.Spare1 = model.NuggetFactor = model.InputPointToler = 0.5;
  model.Spare2 = model.LowerKernelMultiplierBound = model.UpperKernelMultiplierBound = 0.5;
  model.NumSolves = model.SolveStep = 9;
  model.RegrFactorIsTri = model.KeepPredictorError = model.RescaleOnSolve = true;
}

} // namespace

TYPED_TEST(KrigingModel, StartsWithTheDefaultOfEveryField) {
  expectDefaults(this->model_);
  EXPECT_STREQ(this->model_.Version(), "1.0");
  EXPECT_EQ(this->model_.KernVec.Dim(), 0);
}

TYPED_TEST(KrigingModel, GetsTheDefaultOfEveryFieldBack) {
  leaveDefaults(this->model_);

  this->model_.InitKriging();

  expectDefaults(this->model_);
}

TYPED_TEST(KrigingModel, KeepsItsFactorsAsLowerTriangles) {
  EXPECT_NE(this->model_.InvCholFactor.GetSide(), 0);
  EXPECT_NE(this->model_.RegrFactor.GetSide(), 0);

  this->model_.ClearTemporaryMatrices();

  EXPECT_NE(this->model_.InvCholFactor.GetSide(), 0);
  EXPECT_NE(this->model_.RegrFactor.GetSide(), 0);
}

TYPED_TEST(KrigingModel, KeepsMatricesAndVectorsWhenItIsInitialisedAgain) {
  auto& model = this->model_;
  makeSolved(model, 5, 2, 3, E_ScaleBoth, E_PolyConst, E_KernAnisotropic);

  model.InitKriging();

  EXPECT_EQ(model.InpSampMtx.NbRow(), 5);
  EXPECT_EQ(model.OutSampMtx.NbCol(), 3);
  EXPECT_EQ(model.KernVec.Dim(), 2);
  EXPECT_EQ(model.InpScaleVec.Dim(), 2);
  EXPECT_EQ(model.PolyCoeff.NbRow(), 1);
  EXPECT_EQ(model.CorrCoeff.NbRow(), 5);
  EXPECT_EQ(model.CheckInputState(), E_KrigingStatusIncomplete);
}

TYPED_TEST(KrigingModel, IsReadyOnlyWithBothSamplesAndAllSizes) {
  auto& model = this->model_;
  makeSolved(model, 4, 2, 1);
  EXPECT_EQ(model.CheckInputState(), E_KrigingStatusReady);

  for (int* size : {&model.NumSamp, &model.NumVar, &model.NumKern, &model.NumSol}) {
    int const kept = *size;
    *size = 0;
    EXPECT_EQ(model.CheckInputState(), E_KrigingStatusIncomplete);
    *size = kept;
  }
  for (bool* set : {&model.InpSampSet, &model.OutSampSet}) {
    *set = false;
    EXPECT_EQ(model.CheckInputState(), E_KrigingStatusIncomplete);
    *set = true;
  }
}

// ----- sizes -------------------------------------------------------------------------------------

TYPED_TEST(KrigingModel, RefusesSizesBelowOneAlsoWhenTheyEqualTheStoredOnes) {
  EXPECT_EQ(this->model_.PutNumVar(0), 1);
  EXPECT_EQ(this->model_.PutNumSamp(0), 1);
  EXPECT_EQ(this->model_.PutMaxNumIter(0), 1);
  EXPECT_EQ(this->model_.PutNumVar(-3), 1);
  EXPECT_EQ(this->model_.PutNumSol(0, 0, nullptr), 1);
}

TYPED_TEST(KrigingModel, TakesANewNumberOfVariables) {
  auto& model = this->model_;
  makeSolved(model, 4, 2, 1, E_ScaleNone, E_PolyConst, E_KernAnisotropic);
  model.clearStale();

  EXPECT_EQ(model.PutNumVar(3), 0);

  EXPECT_EQ(model.NumVar, 3);
  EXPECT_FALSE(model.InpSampSet);
  EXPECT_EQ(model.KernStartPending, 1);
  EXPECT_TRUE(model.TestCorrStale);
  EXPECT_TRUE(model.TestPolyStale);
  EXPECT_EQ(model.DiffWorkVec.Dim(), 3);
  EXPECT_EQ(model.NumKern, 3);
  EXPECT_EQ(model.Status, E_KrigingStatusSolved);
  C_MatMGe<TypeParam> x;
  EXPECT_EQ(model.GetInpSampMtx(x), 1);
}

TYPED_TEST(KrigingModel, HasOneMultiplierWhenIsotropic) {
  EXPECT_EQ(this->model_.PutNumVar(3), 0);

  int kernels = 0;
  EXPECT_EQ(this->model_.GetNumKern(kernels), 0);
  EXPECT_EQ(kernels, 1);
}

TYPED_TEST(KrigingModel, IgnoresTheNumberOfVariablesItHas) {
  auto& model = this->model_;
  makeSolved(model, 4, 2, 1);
  model.clearStale();

  EXPECT_EQ(model.PutNumVar(2), 0);

  EXPECT_TRUE(model.InpSampSet);
  EXPECT_EQ(model.KernStartPending, 0);
  EXPECT_FALSE(model.TestCorrStale);
}

TYPED_TEST(KrigingModel, TakesANewNumberOfSamples) {
  auto& model = this->model_;
  makeSolved(model, 4, 2, 1);
  EXPECT_EQ(model.PutNumSamp(4), 0);
  EXPECT_TRUE(model.InpSampSet && model.OutSampSet);

  EXPECT_EQ(model.PutNumSamp(5), 0);

  EXPECT_FALSE(model.InpSampSet);
  EXPECT_FALSE(model.OutSampSet);
  EXPECT_EQ(model.Status, E_KrigingStatusSolved);
}

TYPED_TEST(KrigingModel, GroupsOutputsByCountAlone) {
  auto& model = this->model_;

  EXPECT_EQ(model.PutNumSol(3, 3, nullptr), 0);
  EXPECT_EQ(model.groups(), (std::vector<int>{1, 1, 1}));
  EXPECT_EQ(model.PutNumSol(3, 1, nullptr), 0);
  EXPECT_EQ(model.groups(), (std::vector<int>{3}));
  EXPECT_EQ(model.PutNumSol(1, 1, nullptr), 0);
  EXPECT_EQ(model.groups(), (std::vector<int>{1}));
  int wrong[] = {7, 7, 7};
  EXPECT_EQ(model.PutNumSol(3, 3, wrong), 0);
  EXPECT_EQ(model.groups(), (std::vector<int>{1, 1, 1}));
}

TYPED_TEST(KrigingModel, GroupsOutputsBySizes) {
  auto& model = this->model_;
  int sizes[] = {1, 3};
  ASSERT_EQ(model.PutNumSol(4, 2, sizes), 0);
  model.OutSampSet = true;

  int others[] = {2, 2};
  EXPECT_EQ(model.PutNumSol(4, 2, others), 0) << "equal counts: nothing happens";
  EXPECT_EQ(model.groups(), (std::vector<int>{1, 3}));
  EXPECT_TRUE(model.OutSampSet);

  int three[] = {1, 2, 2};
  EXPECT_EQ(model.PutNumSol(5, 3, three), 0);
  EXPECT_EQ(model.groups(), (std::vector<int>{1, 2, 2}));
  EXPECT_FALSE(model.OutSampSet);
}

TYPED_TEST(KrigingModel, RefusesGroupsThatDoNotSumToTheOutputs) {
  auto& model = this->model_;
  int sizes[] = {2, 3};
  ASSERT_EQ(model.PutNumSol(5, 2, sizes), 0);

  int shortOfOne[] = {1, 2};
  int negative[] = {5, -1};
  EXPECT_EQ(model.PutNumSol(4, 2, shortOfOne), 1);
  EXPECT_EQ(model.PutNumSol(4, 2, negative), 1);
  EXPECT_EQ(model.PutNumSol(4, 2, nullptr), 1);
  EXPECT_EQ(model.PutNumSol(2, 3, sizes), 1);
  EXPECT_EQ(model.PutNumSol(2, 0, sizes), 1);

  EXPECT_EQ(model.groups(), (std::vector<int>{2, 3}));
  int q = 0;
  int groups = 0;
  EXPECT_EQ(model.GetNumSol(q), 0);
  EXPECT_EQ(model.GetNumGlobalSol(groups), 0);
  EXPECT_EQ(q, 5);
  EXPECT_EQ(groups, 2);
}

TYPED_TEST(KrigingModel, GivesAFreshArrayOfGroupSizes) {
  int sizes[] = {1, 3};
  ASSERT_EQ(this->model_.PutNumSol(4, 2, sizes), 0);
  int status = -1;

  std::unique_ptr<int[]> groups(this->model_.GetVecGlobalSol(status));

  EXPECT_EQ(status, 0);
  ASSERT_NE(groups, nullptr);
  EXPECT_NE(groups.get(), this->model_.VecGlobalSol.get());
  EXPECT_EQ(groups[0], 1);
  EXPECT_EQ(groups[1], 3);
}

TYPED_TEST(KrigingModel, AsksForTheSamplesOfAFullQuadratic) {
  auto& model = this->model_;
  model.PutNumVar(3);
  model.PutPolynomType(E_PolyConst);
  model.InpSampSet = model.OutSampSet = true;
  int samples = 0;

  EXPECT_EQ(model.GetOptNumSamp(samples), 0);
  EXPECT_EQ(samples, 10);
  EXPECT_EQ(model.SetOptNumSamp(), 0);

  EXPECT_EQ(model.GetNumSamp(samples), 0);
  EXPECT_EQ(samples, 10);
  EXPECT_FALSE(model.InpSampSet);
  EXPECT_FALSE(model.OutSampSet);
  model.InpSampSet = true;
  EXPECT_EQ(model.SetOptNumSamp(), 0);
  EXPECT_TRUE(model.InpSampSet) << "the same number clears nothing";
}

TEST(KrigingModelSizes, OptimalSamplesBelowOneAreRefused) {
  class Fewer : public Kriging<double> {
    int GetOptNumSamp(int& value) const override {
      value = 0;
      return 0;
    }
  } model;

  EXPECT_EQ(model.SetOptNumSamp(), 1);
}

TEST(KrigingModelSizes, OptimalSamplesOfManyVariablesDoNotOverflow) {
  OpenModel<double> model;
  model.NumVar = std::numeric_limits<int>::max();
  int samples = 0;

  EXPECT_EQ(model.GetOptNumSamp(samples), 0);
  EXPECT_EQ(samples, std::numeric_limits<int>::max());
}

// ----- options -----------------------------------------------------------------------------------

namespace {

/// An option: how it is put and got, and which caches it makes stale.
template <class T>
struct Option {
  char const* name;
  std::function<int(Kriging<T>&, double)> put;
  std::function<double(Kriging<T>&)> get;
  double initial;
  double next;
  bool correlationsStale;
  bool termsStale;
};

template <class T, class V>
Option<T> option(char const* name, int (Kriging<T>::*put)(V const&),
                 int (Kriging<T>::*get)(V&) const, double initial, double next, bool correlations,
                 bool terms) {
  return {name,
          [put](Kriging<T>& model, double value) { return (model.*put)(static_cast<V>(value)); },
          [get](Kriging<T>& model) {
            V value{};
            EXPECT_EQ((model.*get)(value), 0);
            return static_cast<double>(value);
          },
          initial,
          next,
          correlations,
          terms};
}

template <class T>
std::vector<Option<T>> options() {
  using K = Kriging<T>;
  return {
      option<T, int>("MaxNumIter", &K::PutMaxNumIter, &K::GetMaxNumIter, 0, 9, false, false),
      option<T, double>("DropToler", &K::PutDropToler, &K::GetDropToler, 1e-8, 0.5, false, false),
      option<T, double>("Lower", &K::PutLowerKernelMultiplierBound,
                        &K::GetLowerKernelMultiplierBound, 0.01, 30.0, false, false),
      option<T, double>("Upper", &K::PutUpperKernelMultiplierBound,
                        &K::GetUpperKernelMultiplierBound, 20.0, 0.001, false, false),
      option<T, int>("SolnType", &K::PutSolnType, &K::GetSolnType, 0, 3, false, false),
      option<T, int>("CorrFuncType", &K::PutCorrFuncType, &K::GetCorrFuncType, 2, 99, true, false),
      option<T, int>("KernVarType", &K::PutKrigingKernVarType, &K::GetKrigingKernVarType, 0, 1,
                     true, false),
      option<T, int>("KernOptType", &K::PutKrigingKernOptType, &K::GetKrigingKernOptType, 0, 7,
                     false, false),
      option<T, int>("ScalingType", &K::PutScalingType, &K::GetScalingType, 0, 8, true, true),
      option<T, int>("PolynomType", &K::PutPolynomType, &K::GetPolynomType, 4, -2, false, true)};
}

} // namespace

TYPED_TEST(KrigingModel, ANewOptionDemotesASolvedModelAndMakesItsCachesStale) {
  for (auto const& option : options<TypeParam>()) {
    SCOPED_TRACE(option.name);
    OpenModel<TypeParam> model;
    model.PutNumVar(2);
    EXPECT_EQ(option.get(model), option.initial);
    model.Status = E_KrigingStatusSolved;
    model.clearStale();

    EXPECT_EQ(option.put(model, option.next), 0);

    EXPECT_EQ(option.get(model), option.next);
    EXPECT_EQ(model.Status, E_KrigingStatusReady);
    EXPECT_EQ(model.TestCorrStale, option.correlationsStale);
    EXPECT_EQ(model.TestPolyStale, option.termsStale);
  }
}

TYPED_TEST(KrigingModel, AnEqualOptionChangesNothing) {
  for (auto const& option : options<TypeParam>()) {
    SCOPED_TRACE(option.name);
    OpenModel<TypeParam> model;
    model.PutNumVar(2);
    ASSERT_EQ(option.put(model, option.next), 0);
    model.Status = E_KrigingStatusSolved;
    model.clearStale();

    EXPECT_EQ(option.put(model, option.next), 0);

    EXPECT_EQ(model.Status, E_KrigingStatusSolved);
    EXPECT_FALSE(model.TestCorrStale);
    EXPECT_FALSE(model.TestPolyStale);
  }
}

TYPED_TEST(KrigingModel, AnOptionLeavesEveryStateButSolved) {
  for (int status : {E_KrigingStatusInit, E_KrigingStatusReady, E_KrigingStatusIncomplete}) {
    for (auto const& option : options<TypeParam>()) {
      OpenModel<TypeParam> model;
      model.Status = status;
      EXPECT_EQ(option.put(model, option.next), 0);
      EXPECT_EQ(model.GetKrigingStatus(), status) << option.name;
    }
  }
}

TYPED_TEST(KrigingModel, RefusesOptionsOutOfTheirRange) {
  auto& model = this->model_;
  model.Status = E_KrigingStatusSolved;

  EXPECT_EQ(model.PutDropToler(0.0), 1);
  EXPECT_EQ(model.PutDropToler(1.0), 1);
  EXPECT_EQ(model.PutLowerKernelMultiplierBound(0.0), 1);
  EXPECT_EQ(model.PutUpperKernelMultiplierBound(-1.0), 1);
  EXPECT_EQ(model.PutMaxNumIter(-1), 1);

  EXPECT_EQ(model.Status, E_KrigingStatusSolved);
  EXPECT_EQ(model.DropToler, 1e-8);
  EXPECT_EQ(model.LowerKernelMultiplierBound, 0.01);
  EXPECT_EQ(model.UpperKernelMultiplierBound, 20.0);
}

TYPED_TEST(KrigingModel, SetsTheNumberOfMultipliersWithTheirVariableType) {
  auto& model = this->model_;
  model.PutNumVar(3);

  EXPECT_EQ(model.PutKrigingKernVarType(E_KernAnisotropic), 0);
  EXPECT_EQ(model.NumKern, 3);
  EXPECT_EQ(model.GetKrigingKernVarType(), E_KernAnisotropic);
  EXPECT_EQ(model.PutKrigingKernVarType(5), 0);
  EXPECT_EQ(model.NumKern, 3) << "every type but 0 has one multiplier a variable";
  EXPECT_EQ(model.PutKrigingKernVarType(E_KernIsotropic), 0);
  EXPECT_EQ(model.NumKern, 1);
}

TYPED_TEST(KrigingModel, GivesOptionsAsEnumeratorsToo) {
  auto& model = this->model_;
  model.PutCorrFuncType(E_CorrSinc);
  model.PutPolynomType(E_PolyPureQuad);
  model.PutScalingType(E_ScaleBoth);
  model.PutKrigingKernOptType(E_KernOptPattern);
  model.PutKrigingKernVarType(E_KernAnisotropic);
  E_CorrFuncType correlation = E_CorrExp;
  E_KrigingPolynomType trend = E_PolyNone;
  E_KrigingScalingType scaling = E_ScaleNone;
  E_KrigingKernOptType search = E_KernOptNone;
  E_KrigingKernVarType variation = E_KernIsotropic;
  E_KrigingSolType solution = static_cast<E_KrigingSolType>(4);

  EXPECT_EQ(model.GetCorrFuncType(correlation), 0);
  EXPECT_EQ(model.GetPolynomType(trend), 0);
  EXPECT_EQ(model.GetScalingType(scaling), 0);
  EXPECT_EQ(model.GetKrigingKernOptType(search), 0);
  EXPECT_EQ(model.GetKrigingKernVarType(variation), 0);
  EXPECT_EQ(model.GetSolnType(solution), 0);

  EXPECT_EQ(correlation, E_CorrSinc);
  EXPECT_EQ(trend, E_PolyPureQuad);
  EXPECT_EQ(scaling, E_ScaleBoth);
  EXPECT_EQ(search, E_KernOptPattern);
  EXPECT_EQ(variation, E_KernAnisotropic);
  EXPECT_EQ(solution, E_KrigingSolStandard);
}

TYPED_TEST(KrigingModel, TakesAKernelAlsoWhenItIsTheSame) {
  auto& model = this->model_;
  makeSolved(model, 4, 2, 1, E_ScaleNone, E_PolyConst, E_KernAnisotropic);
  RealVec theta = vector<double>({0.5, 0.75});
  model.KernStartPending = 1;
  model.clearStale();

  EXPECT_EQ(model.PutKernVec(theta), 0);

  EXPECT_EQ(values(model.KernVec), (std::vector<double>{0.5, 0.75}));
  EXPECT_EQ(model.KernStartPending, 0);
  EXPECT_TRUE(model.TestCorrStale);
  EXPECT_FALSE(model.TestPolyStale);
  EXPECT_EQ(model.Status, E_KrigingStatusReady);
}

TYPED_TEST(KrigingModel, SetsTheNumberOfMultipliersBeforeItRefusesAKernel) {
  auto& model = this->model_;
  C_MatMGe<TypeParam> x = pattern<TypeParam>(4, 2, 0.1);
  model.PutInpSampMtx(x);
  ASSERT_EQ(model.NumKern, 0);
  RealVec three = vector<double>({1.0, 2.0, 3.0});

  model.Status = E_KrigingStatusSolved;
  model.clearStale();

  EXPECT_EQ(model.PutKernVec(three), 1);

  EXPECT_EQ(model.NumKern, 1);
  EXPECT_EQ(model.Status, E_KrigingStatusSolved);
  EXPECT_FALSE(model.TestCorrStale);
  EXPECT_EQ(model.KernVec.Dim(), 0);
  EXPECT_EQ(model.KernStartPending, 1);
}

TYPED_TEST(KrigingModel, TakesOnlyPositiveSteps) {
  EXPECT_EQ(this->model_.SetStep(3), 0);
  EXPECT_EQ(this->model_.SolveStep, 3);
  EXPECT_EQ(this->model_.SetStep(0), 0);
  EXPECT_EQ(this->model_.SetStep(-2), 0);
  EXPECT_EQ(this->model_.SolveStep, 3);
}

TYPED_TEST(KrigingModel, CopiesOutWhatItHolds) {
  auto& model = this->model_;
  makeSolved(model, 5, 2, 3, E_ScaleBoth, E_PolyLinear, E_KernAnisotropic);
  RealVec real;
  Vec<TypeParam> scalar;
  C_MatMGe<TypeParam> coefficients;
  int count = 0;

  EXPECT_EQ(model.GetKernVec(real), 0);
  EXPECT_EQ(values(real), values(model.KernVec));
  EXPECT_EQ(model.GetInpScaleVec(real), 0);
  EXPECT_EQ(values(real), values(model.InpScaleVec));
  EXPECT_EQ(model.GetOutScaleVec(real), 0);
  EXPECT_EQ(values(real), values(model.OutScaleVec));
  EXPECT_EQ(model.GetInpInterceptVec(scalar), 0);
  EXPECT_EQ(values(scalar), values(model.InpInterceptVec));
  EXPECT_EQ(model.GetOutInterceptVec(scalar), 0);
  EXPECT_EQ(values(scalar), values(model.OutInterceptVec));
  EXPECT_EQ(model.GetCorrCoeff(coefficients), 0);
  expectEqual(coefficients, model.CorrCoeff);
  EXPECT_EQ(model.GetPolyCoeff(coefficients), 0);
  expectEqual(coefficients, model.PolyCoeff);
  EXPECT_EQ(model.GetNumCorrCoef(count), 0);
  EXPECT_EQ(count, 5);
  EXPECT_EQ(model.GetNumPolyCoeff(count), 0);
  EXPECT_EQ(count, 3);
}

// ----- stopping and clearing ---------------------------------------------------------------------

TYPED_TEST(KrigingModel, StaysStoppedUntilItIsInitialised) {
  std::thread other([this] { this->model_.Stop(); });
  other.join();

  EXPECT_TRUE(this->model_.stopped());
  this->model_.PutNumVar(2);
  EXPECT_TRUE(this->model_.stopped());
  this->model_.InitKriging();
  EXPECT_FALSE(this->model_.stopped());
}

TYPED_TEST(KrigingModel, ClearsWhatOnlyAFitNeeds) {
  auto& model = this->model_;
  makeSolved(model, 4, 2, 1);
  C_MatMGe<TypeParam> points = pattern<TypeParam>(6, 2, 0.6);
  model.PutInpTestMtx(points);
  C_MatMSym<double> factor(4, 1);
  model.InvCholFactor.Copy(factor);
  C_MatMSym<TypeParam> trendFactor(3, 1);
  model.RegrFactor.Copy(trendFactor);
  model.DenseRegrFactor.Resize(3, 3);
  model.WhitenedRegrT.Resize(3, 4);
  model.ProcVarnc.Resize(1);
  model.LastPredictorError.Resize(6, 1);
  model.TestCorrMtx.Resize(6, 4);
  model.TestPolyMtx.Resize(6, 3);
  model.TestRelativeErrorVec.Resize(6);
  model.SolveRequired = false;

  model.ClearTemporaryMatrices();

  EXPECT_EQ(model.InvCholFactor.NbRow(), 0);
  EXPECT_EQ(model.InvCholFactor.NbVal(), 0);
  EXPECT_EQ(model.RegrFactor.NbRow(), 0);
  EXPECT_EQ(model.DenseRegrFactor.NbRow(), 0);
  EXPECT_EQ(model.WhitenedRegrT.NbRow(), 0);
  EXPECT_EQ(model.ProcVarnc.Dim(), 0);
  EXPECT_EQ(model.LastPredictorError.NbRow(), 0);
  EXPECT_EQ(model.InpTestMtx.NbRow(), 0);
  EXPECT_EQ(model.TestCorrMtx.NbRow(), 0);
  EXPECT_EQ(model.TestPolyMtx.NbRow(), 0);
  EXPECT_EQ(model.TestRelativeErrorVec.Dim(), 0);
  EXPECT_EQ(model.DiffWorkVec.Dim(), 0);
  EXPECT_FALSE(model.SolveRequired);
  EXPECT_TRUE(model.InpTestSet);
  EXPECT_EQ(model.Status, E_KrigingStatusSolved);
  EXPECT_EQ(model.InpSampMtx.NbRow(), 4);
  EXPECT_EQ(model.CorrCoeff.NbRow(), 4);
}

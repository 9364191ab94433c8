// A model from another.
#include "kriging/ModelFixture.h"

using namespace kriging_test;

template <class T>
class KrigingCopy : public ::testing::Test {
protected:
  OpenModel<T> source_;
};
TYPED_TEST_SUITE(KrigingCopy, Scalars);

TYPED_TEST(KrigingCopy, TakesOverWhatAPredictionNeeds) {
  auto& source = this->source_;
  makeSolved(source, 5, 2, 3, E_ScaleBoth, E_PolyLinear, E_KernAnisotropic);
  source.PutCorrFuncType(E_CorrMatern52);
  source.PutKrigingKernOptType(E_KernOptPattern);
  source.Status = E_KrigingStatusSolved;
  int error = -1;

  OpenModel<TypeParam> copy(source, error);

  EXPECT_EQ(error, 0);
  EXPECT_EQ(copy.Status, E_KrigingStatusSolved);
  expectEqual(copy.InpSampMtx, source.InpSampMtx);
  expectEqual(copy.OutSampMtx, source.OutSampMtx);
  expectEqual(copy.CorrCoeff, source.CorrCoeff);
  expectEqual(copy.PolyCoeff, source.PolyCoeff);
  EXPECT_EQ(values(copy.KernVec), values(source.KernVec));
  EXPECT_EQ(values(copy.InpScaleVec), values(source.InpScaleVec));
  EXPECT_EQ(values(copy.OutInterceptVec), values(source.OutInterceptVec));
  EXPECT_EQ(copy.groups(), source.groups());
  EXPECT_EQ(copy.NumKern, 2);
  EXPECT_EQ(copy.NumSamp, 5);
  EXPECT_EQ(copy.NumVar, 2);
  EXPECT_EQ(copy.NumSol, 3);
  EXPECT_EQ(copy.CorrFuncType, E_CorrMatern52);
  EXPECT_EQ(copy.KernOptType, E_KernOptPattern);
  EXPECT_EQ(copy.ScalingType, E_ScaleBoth);
  EXPECT_EQ(copy.PolynomType, E_PolyLinear);
  expectEqual(copy.OutputRanges, source.OutputRanges);
  EXPECT_EQ(values(copy.OutputGlobalRange), values(source.OutputGlobalRange));
  EXPECT_TRUE(copy.CoefficientsFit());
}

TYPED_TEST(KrigingCopy, OwnsWhatItHolds) {
  makeSolved(this->source_, 5, 2, 3);
  int error = -1;
  OpenModel<TypeParam> copy(this->source_, error);

  copy.InpSampMtx(0, 0) = TypeParam(1000);
  copy.VecGlobalSol[0] = 2;

  EXPECT_NE(this->source_.InpSampMtx(0, 0), TypeParam(1000));
  EXPECT_EQ(this->source_.groups(), (std::vector<int>{3}));
}

TYPED_TEST(KrigingCopy, StartsItsOwnHistory) {
  makeSolved(this->source_, 5, 2, 1);
  OpenModel<TypeParam> copy;
  copy.Stop();
  copy.NumSolves = 4;
  copy.SolveStep = 3;
  copy.KeepPredictorError = true;
  copy.SolveRequired = false;
  copy.clearStale();

  EXPECT_EQ(copy.Copy(&this->source_), 0);

  EXPECT_FALSE(copy.stopped());
  EXPECT_EQ(copy.NumSolves, 0);
  EXPECT_EQ(copy.SolveStep, 1);
  EXPECT_FALSE(copy.KeepPredictorError);
  EXPECT_TRUE(copy.ISSolveRequired());
  EXPECT_TRUE(copy.TestCorrStale);
  EXPECT_TRUE(copy.TestPolyStale);
  EXPECT_EQ(copy.KernStartPending, 0);
  EXPECT_TRUE(copy.InpSampSet);
  EXPECT_TRUE(copy.OutSampSet);
}

TYPED_TEST(KrigingCopy, TakesBoundsOnlyWhenConstructed) {
  makeSolved(this->source_, 5, 2, 1);
  this->source_.PutLowerKernelMultiplierBound(0.125);
  this->source_.PutUpperKernelMultiplierBound(8.0);
  this->source_.PutDropToler(0.5);
  int error = -1;

  OpenModel<TypeParam> constructed(this->source_, error);
  OpenModel<TypeParam> copied;
  EXPECT_EQ(copied.Copy(&this->source_), 0);

  EXPECT_EQ(constructed.LowerKernelMultiplierBound, 0.125);
  EXPECT_EQ(constructed.UpperKernelMultiplierBound, 8.0);
  EXPECT_EQ(constructed.DropToler, 1e-8);
  EXPECT_EQ(copied.LowerKernelMultiplierBound, 0.01);
  EXPECT_EQ(copied.UpperKernelMultiplierBound, 20.0);
}

TYPED_TEST(KrigingCopy, OfAReadyModelIsReady) {
  makeSolved(this->source_, 5, 2, 1);
  this->source_.PutSolnType(3);
  OpenModel<TypeParam> copy;

  EXPECT_EQ(copy.Copy(&this->source_), 0);

  EXPECT_EQ(copy.Status, E_KrigingStatusReady);
  EXPECT_EQ(copy.SolnType, 3);
}

TYPED_TEST(KrigingCopy, WithoutTrendKeepsTheTrendItHas) {
  makeSolved(this->source_, 5, 2, 1, E_ScaleNone, E_PolyNone);
  OpenModel<TypeParam> copy;
  makeSolved(copy, 5, 2, 1, E_ScaleNone, E_PolyConst);

  EXPECT_EQ(copy.Copy(&this->source_), 0);

  EXPECT_EQ(copy.PolynomType, E_PolyNone);
  EXPECT_EQ(copy.PolyCoeff.NbRow(), 1);
}

namespace {

/// The result of copying a source that a test has spoilt.
template <class T, class Spoil>
int copyOf(Spoil&& spoil) {
  OpenModel<T> source;
  makeSolved(source, 5, 2, 3, E_ScaleBoth, E_PolyLinear, E_KernAnisotropic);
  spoil(source);
  OpenModel<T> copy;
  int const result = copy.Copy(&source);
  int error = -1;
  OpenModel<T> constructed(source, error);
  EXPECT_EQ(error, result);
  return result;
}

} // namespace

TYPED_TEST(KrigingCopy, NeedsACompleteAndConsistentSource) {
  using Model = OpenModel<TypeParam>;
  auto const refuses = [](auto&& spoil) { return copyOf<TypeParam>(spoil) == 1; };
  EXPECT_EQ(copyOf<TypeParam>([](Model&) {}), 0);

  EXPECT_TRUE(refuses([](Model& m) { m.InpSampSet = false; }));
  EXPECT_TRUE(refuses([](Model& m) { m.OutSampSet = false; }));
  EXPECT_TRUE(refuses([](Model& m) { m.OutSampMtx.ResizeAndKeepValues(4, 3); }));
  EXPECT_TRUE(refuses([](Model& m) { m.KernVec.Resize(1); }));
  EXPECT_TRUE(refuses([](Model& m) { m.KernVarType = E_KernIsotropic; }));
  EXPECT_TRUE(refuses([](Model& m) { m.InpScaleVec.Resize(1); }));
  EXPECT_TRUE(refuses([](Model& m) { m.InpInterceptVec.Resize(3); }));
  EXPECT_TRUE(refuses([](Model& m) { m.OutScaleVec.Resize(2); }));
  EXPECT_TRUE(refuses([](Model& m) { m.OutInterceptVec.Resize(2); }));
  EXPECT_TRUE(refuses([](Model& m) { m.CorrCoeff.Resize(4, 3); }));
  EXPECT_TRUE(refuses([](Model& m) { m.CorrCoeff.Resize(5, 2); }));
  EXPECT_TRUE(refuses([](Model& m) { m.PolyCoeff.Resize(3, 2); }));
  EXPECT_TRUE(refuses([](Model& m) { m.VecGlobalSol[0] = 4; })) << "groups that are not q";
}

TYPED_TEST(KrigingCopy, OfNothingFails) {
  OpenModel<TypeParam> copy;
  EXPECT_EQ(copy.Copy(nullptr), 1);
}

TYPED_TEST(KrigingCopy, ThatFailedAnswersOneAndCanStillBeUsed) {
  OpenModel<TypeParam> copy;
  makeSolved(copy, 8, 2, 3);
  makeSolved(this->source_, 5, 2, 3);
  this->source_.CorrCoeff.Release();

  EXPECT_EQ(copy.Copy(&this->source_), 1);

  EXPECT_FALSE(copy.SamplesFit());
  MemoryFile file;
  EXPECT_EQ(copy.Write(file.get()), 1);
  OpenModel<TypeParam> good;
  makeSolved(good, 4, 1, 1);
  EXPECT_EQ(copy.Copy(&good), 0);
  EXPECT_TRUE(copy.CoefficientsFit());
}

TEST(KrigingCopySubclass, ViewCounts) {
  class Shifted : public OpenModel<double> {
  public:
    int GetCorrFuncType(int& value) const override {
      value = E_CorrCubic;
      return 0;
    }
    int GetKrigingStatus() const override { return E_KrigingStatusIncomplete; }
  } source;
  makeSolved(source, 4, 2, 1);
  OpenModel<double> copy;

  EXPECT_EQ(copy.Copy(&source), 0);

  EXPECT_EQ(copy.CorrFuncType, E_CorrCubic);
  EXPECT_EQ(copy.Status, E_KrigingStatusIncomplete);
}

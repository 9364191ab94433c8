// Sizes, samples, options and copies of a list.
#include "kriging/ListFixture.h"
#include "kriging/Traces.h"

using namespace kriging_test;

template <class T>
class KrigingLists : public ::testing::Test {
protected:
  OpenList<T> list_;
};
TYPED_TEST_SUITE(KrigingLists, Scalars);

TYPED_TEST(KrigingLists, StartEmpty) {
  auto& list = this->list_;
  int number = -1;

  EXPECT_STREQ(list.Version(), "1.0");
  EXPECT_EQ(list.GetNumKriging(number), 0);
  EXPECT_EQ(number, 0);
  EXPECT_EQ(list.GetNumVar(number), 0);
  EXPECT_EQ(number, 0);
  EXPECT_EQ(list.GetNumSamp(number), 0);
  EXPECT_EQ(number, 0);
  EXPECT_EQ(list.Models, nullptr);
  EXPECT_EQ(list.SolPerModel, nullptr);
  EXPECT_EQ(list.NumNewPoints, 0);
  EXPECT_EQ(list.InpTestMtx.NbRow(), 0);
  EXPECT_EQ(list.GetItemKriging(-1), nullptr);
  EXPECT_EQ(list.GetItemKriging(1), nullptr);
}

TYPED_TEST(KrigingLists, GiveTheAddressBehindTheirLastModel) {
  this->list_.PutNumKriging(2);

  EXPECT_EQ(this->list_.GetItemKriging(-1), nullptr);
  EXPECT_EQ(this->list_.GetItemKriging(0), this->list_.Models.get());
  EXPECT_EQ(this->list_.GetItemKriging(2), this->list_.Models.get() + 2);
  EXPECT_EQ(this->list_.GetItemKriging(3), nullptr);
}

TYPED_TEST(KrigingLists, GiveSizesToAllModels) {
  auto& list = this->list_;
  list.PutNumKriging(2);

  EXPECT_EQ(list.PutNumVar(0), 1);
  EXPECT_EQ(list.PutNumSamp(0), 1);
  EXPECT_EQ(list.PutNumVar(3), 0);
  EXPECT_EQ(list.PutNumSamp(7), 0);

  for (int i = 0; i < 2; ++i) {
    int number = 0;
    list.GetItemKriging(i)->GetNumVar(number);
    EXPECT_EQ(number, 3);
    list.GetItemKriging(i)->GetNumSamp(number);
    EXPECT_EQ(number, 7);
  }
  int optimal = 0;
  EXPECT_EQ(list.GetOptNumSamp(optimal), 0);
  EXPECT_EQ(optimal, 10);
  EXPECT_EQ(list.SetOptNumSamp(), 0);
  list.GetItemKriging(1)->GetNumSamp(optimal);
  EXPECT_EQ(optimal, 10);
  list.GetItemKriging(1)->PutNumVar(5);
  EXPECT_EQ(list.PutNumVar(3), 0) << "equal to what the list has: no model is asked";
  list.GetItemKriging(1)->GetNumVar(optimal);
  EXPECT_EQ(optimal, 5);
}

TYPED_TEST(KrigingLists, GiveEachModelItsOutputsAsOneGroup) {
  auto& list = this->list_;
  list.PutNumKriging(2);
  int sizes[] = {1, 3};

  EXPECT_EQ(list.PutNumSol(4, 2, sizes), 0);

  EXPECT_EQ(list.NumSol, 4);
  EXPECT_EQ(list.sizes(), (std::vector<int>{1, 3}));
  int outputs = 0;
  int groups = 0;
  list.GetItemKriging(1)->GetNumSol(outputs);
  list.GetItemKriging(1)->GetNumGlobalSol(groups);
  EXPECT_EQ(outputs, 3);
  EXPECT_EQ(groups, 1);
}

TYPED_TEST(KrigingLists, RefuseOutputsThatDoNotFitTheModels) {
  auto& list = this->list_;
  list.PutNumKriging(2);
  int sizes[] = {1, 3};
  ASSERT_EQ(list.PutNumSol(4, 2, sizes), 0);
  int negative[] = {6, -2};
  int empty[] = {4, 0};

  EXPECT_EQ(list.PutNumSol(4, 1, sizes), 1);
  EXPECT_EQ(list.PutNumSol(-4, 2, sizes), 1);
  EXPECT_EQ(list.PutNumSol(5, 2, sizes), 1);
  EXPECT_EQ(list.PutNumSol(4, 2, negative), 1);
  EXPECT_EQ(list.PutNumSol(4, 2, nullptr), 1);
  EXPECT_EQ(list.sizes(), (std::vector<int>{1, 3}));
  EXPECT_EQ(list.PutNumSol(4, 2, empty), 1) << "the second model refuses";
}

TYPED_TEST(KrigingLists, RefuseANegativeNumberOfModels) {
  EXPECT_EQ(this->list_.PutNumKriging(-1), 1);
  EXPECT_EQ(this->list_.NumKriging, 0);
}

// ----- options -----------------------------------------------------------------------------------

namespace {

template <class T>
struct ListOption {
  char const* name;
  int (KrigingList<T>::*put)(int const&, int);
  int (Kriging<T>::*get)(int&) const;
};

template <class T>
std::vector<ListOption<T>> listOptions() {
  using L = KrigingList<T>;
  using K = Kriging<T>;
  return {{"CorrFuncType", &L::PutCorrFuncType, &K::GetCorrFuncType},
          {"KernVarType", &L::PutKrigingKernVarType, &K::GetKrigingKernVarType},
          {"KernOptType", &L::PutKrigingKernOptType, &K::GetKrigingKernOptType},
          {"ScalingType", &L::PutScalingType, &K::GetScalingType},
          {"PolynomType", &L::PutPolynomType, &K::GetPolynomType}};
}

} // namespace

TYPED_TEST(KrigingLists, SetOptionsOfOneModelOrAll) {
  for (auto const& option : listOptions<TypeParam>()) {
    SCOPED_TRACE(option.name);
    OpenList<TypeParam> list;
    list.PutNumKriging(2);
    auto const of = [&](int i) {
      int value = -1;
      EXPECT_EQ((list.GetItemKriging(i)->*option.get)(value), 0);
      return value;
    };
    int const initial = of(0);

    EXPECT_EQ((list.*option.put)(3, 5), 1);
    EXPECT_EQ((list.*option.put)(3, 2), 1);
    EXPECT_EQ(of(0), initial);
    EXPECT_EQ(of(1), initial);
    EXPECT_EQ((list.*option.put)(3, 1), 0);
    EXPECT_EQ(of(0), initial);
    EXPECT_EQ(of(1), 3);
    EXPECT_EQ((list.*option.put)(1, -1), 0);
    EXPECT_EQ(of(0), 1);
    EXPECT_EQ(of(1), 1);
  }
}

TYPED_TEST(KrigingLists, SetStepsAndAnswerOneAllTheSame) {
  auto& list = this->list_;
  list.PutNumKriging(2);
  auto const steps = [&] {
    auto const step = &OpenModel<TypeParam>::SolveStep;
    return std::vector<int>{list.Models[0].*step, list.Models[1].*step};
  };

  EXPECT_EQ(list.SetStep(3, -1), 1);
  EXPECT_EQ(steps(), (std::vector<int>{3, 3}));
  EXPECT_EQ(list.SetStep(5, 0), 1);
  EXPECT_EQ(steps(), (std::vector<int>{5, 3}));
  EXPECT_EQ(list.SetStep(4, 7), 1);
  EXPECT_EQ(steps(), (std::vector<int>{5, 3}));
}

// ----- samples -----------------------------------------------------------------------------------

TYPED_TEST(KrigingLists, DealTheColumnsOfTheOutputs) {
  auto& list = this->list_;
  makeList(list, {1, 3, 2}, 4, 2);
  C_MatMGe<TypeParam> all = pattern<TypeParam>(4, 6, 1.7);
  C_MatMGe<TypeParam> out;

  EXPECT_EQ(list.GetOutSampMtx(out, -1), 0);
  expectEqual(out, all);
  C_MatMGe<TypeParam> second(4, 3, all[1], 4);
  EXPECT_EQ(list.GetOutSampMtx(out, 1), 0);
  expectEqual(out, second);
  C_MatMGe<TypeParam> third(4, 2, all[4], 4);
  EXPECT_EQ(list.GetOutSampMtx(out, 2), 0);
  expectEqual(out, third);
  EXPECT_EQ(list.GetOutSampMtx(out, 3), 1) << "there is no model behind the last";
  EXPECT_EQ(list.GetOutSampMtx(out, 4), 1);
}

TYPED_TEST(KrigingLists, GiveTheSamplesOfOneModel) {
  auto& list = this->list_;
  makeList(list, {1, 1}, 4, 2);
  C_MatMGe<TypeParam> expected = pattern<TypeParam>(4, 2, 0.3);
  C_MatMGe<TypeParam> out;

  EXPECT_EQ(list.GetInpSampMtx(out, 1), 0);
  expectEqual(out, expected);
  EXPECT_EQ(list.GetInpSampMtx(out, -1), 1);
  EXPECT_EQ(list.GetInpSampMtx(out, 2), 1);
}

TYPED_TEST(KrigingLists, RefuseSamplesThatDoNotFit) {
  auto& list = this->list_;
  makeList(list, {1, 1}, 4, 2);
  C_MatMGe<TypeParam> none(0, 2);
  C_MatMGe<TypeParam> narrow = pattern<TypeParam>(4, 1, 0.1);
  C_MatMGe<TypeParam> tall = pattern<TypeParam>(5, 2, 0.1);

  EXPECT_EQ(list.PutInpSampMtx(none), 1);
  EXPECT_EQ(list.PutOutSampMtx(narrow), 1);
  EXPECT_EQ(list.PutOutSampMtx(tall), 1);
}

TYPED_TEST(KrigingLists, TakeTheirSizesFromTheInputSamples) {
  auto& list = this->list_;
  list.PutNumKriging(2);
  C_MatMGe<TypeParam> x = pattern<TypeParam>(5, 3, 0.1);

  EXPECT_EQ(list.PutInpSampMtx(x), 0);

  EXPECT_EQ(list.NumSamp, 5);
  EXPECT_EQ(list.NumVar, 3);
}

TYPED_TEST(KrigingLists, AppendSamplesByTheirSlices) {
  auto& list = this->list_;
  makeList(list, {1, 2}, 4, 2);
  C_MatMGe<TypeParam> x = pattern<TypeParam>(2, 2, 0.7);
  C_MatMGe<TypeParam> y = matrix<TypeParam>(
      {{TypeParam(1), TypeParam(2), TypeParam(3)}, {TypeParam(4), TypeParam(5), TypeParam(6)}});

  EXPECT_EQ(list.AppendSampData(x, y), 0);

  EXPECT_EQ(list.NumSamp, 6);
  C_MatMGe<TypeParam> out;
  ASSERT_EQ(list.GetOutSampMtx(out, -1), 0);
  ASSERT_EQ(out.NbRow(), 6);
  EXPECT_EQ(out(4, 0), TypeParam(1));
  EXPECT_EQ(out(5, 1), TypeParam(5));
  EXPECT_EQ(out(5, 2), TypeParam(6));
}

TYPED_TEST(KrigingLists, RefuseToAppendWhatDoesNotFit) {
  auto& list = this->list_;
  makeList(list, {1, 2}, 4, 2);
  auto const append = [&](int xRows, int xColumns, int yRows, int yColumns) {
    C_MatMGe<TypeParam> x = pattern<TypeParam>(xRows, xColumns, 0.2);
    C_MatMGe<TypeParam> y = pattern<TypeParam>(yRows, yColumns, 0.2);
    return list.AppendSampData(x, y);
  };

  EXPECT_EQ(append(0, 2, 0, 3), 1);
  EXPECT_EQ(append(1, 0, 1, 3), 1);
  EXPECT_EQ(append(1, 2, 2, 3), 1);
  EXPECT_EQ(append(1, 3, 1, 3), 1);
  EXPECT_EQ(append(1, 2, 1, 2), 1);
  EXPECT_EQ(list.NumSamp, 4);
}

TYPED_TEST(KrigingLists, CountNoSamplesThatAModelRefuses) {
  auto& list = this->list_;
  makeList(list, {1, 2}, 4, 2);
  list.Models[1].*&OpenModel<TypeParam>::OutSampSet = false;
  C_MatMGe<TypeParam> x = pattern<TypeParam>(2, 2, 0.7);
  C_MatMGe<TypeParam> y = pattern<TypeParam>(2, 3, 0.9);

  EXPECT_EQ(list.AppendSampData(x, y), 1);

  EXPECT_EQ(list.NumSamp, 4);
  int first = 0;
  list.GetItemKriging(0)->GetNumSamp(first);
  EXPECT_EQ(first, 6) << "the models before the one that refused have theirs";
}

TYPED_TEST(KrigingLists, JoinTheKernelsOfTheirModels) {
  auto& list = this->list_;
  makeList(list, {1, 1}, 4, 2);
  RealVec one = vector<double>({0.5});
  RealVec two = vector<double>({1.5, 2.5});
  list.PutKrigingKernVarType(E_KernAnisotropic, 1);
  ASSERT_EQ(list.GetItemKriging(0)->PutKernVec(one), 0);
  ASSERT_EQ(list.GetItemKriging(1)->PutKernVec(two), 0);
  RealVec joined = vector<double>({9.0, 9.0, 9.0, 9.0, 9.0, 9.0});

  EXPECT_EQ(list.GetKernVec(joined), 0);

  EXPECT_EQ(values(joined), (std::vector<double>{0.5, 1.5, 2.5}));
}

// ----- copies ------------------------------------------------------------------------------------

TYPED_TEST(KrigingLists, CopyAllModels) {
  auto& list = this->list_;
  makeSolvedList(list, {1, 3}, 5, 2);
  list.NumNewPoints = 3;
  int error = -1;

  OpenList<TypeParam> copy(list, error);

  EXPECT_EQ(error, 0);
  EXPECT_EQ(copy.NumKriging, 2);
  EXPECT_EQ(copy.NumSamp, 5);
  EXPECT_EQ(copy.NumVar, 2);
  EXPECT_EQ(copy.NumSol, 4);
  EXPECT_EQ(copy.sizes(), (std::vector<int>{1, 3}));
  EXPECT_EQ(copy.NumNewPoints, 0);
  EXPECT_NE(copy.Models, list.Models);
  C_MatMGe<TypeParam> expected;
  C_MatMGe<TypeParam> out;
  ASSERT_EQ(list.GetOutSampMtx(expected, -1), 0);
  ASSERT_EQ(copy.GetOutSampMtx(out, -1), 0);
  expectEqual(out, expected);
}

TYPED_TEST(KrigingLists, CopySomeModelsInTheOrderAskedFor) {
  auto& list = this->list_;
  makeSolvedList(list, {1, 3, 2}, 5, 2);
  std::vector<int> ids{2, 0};
  int error = -1;

  OpenList<TypeParam> copy(list, ids, error);

  EXPECT_EQ(error, 0);
  EXPECT_EQ(copy.NumKriging, 2);
  EXPECT_EQ(copy.NumSol, 3);
  EXPECT_EQ(copy.sizes(), (std::vector<int>{2, 1}));
  C_MatMGe<TypeParam> expected;
  C_MatMGe<TypeParam> out;
  ASSERT_EQ(list.GetOutSampMtx(expected, 2), 0);
  ASSERT_EQ(copy.GetOutSampMtx(out, 0), 0);
  expectEqual(out, expected);
}

TYPED_TEST(KrigingLists, RefuseToCopyWhatIsNotThere) {
  auto& list = this->list_;
  int error = 0;
  OpenList<TypeParam> ofEmpty(list, error);
  EXPECT_EQ(error, 1);

  makeList(list, {1, 1}, 5, 2);
  error = 0;
  OpenList<TypeParam> ofUnfitted(list, error);
  EXPECT_EQ(error, 1) << "models without coefficients cannot be copied";

  OpenList<TypeParam> solved;
  makeSolvedList(solved, {1, 1}, 5, 2);
  for (std::vector<int> ids : {std::vector<int>{2}, std::vector<int>{-1}, std::vector<int>{}}) {
    error = 0;
    OpenList<TypeParam> copy(solved, ids, error);
    EXPECT_EQ(error, 1);
  }
}

TYPED_TEST(KrigingLists, TraceWhatASourceDoesNotTell) {
  class Silent : public OpenList<TypeParam> {
  public:
    int GetNumKriging(int& value) const override { return this->answer(0, value, 2); }
    int GetNumSamp(int& value) const override { return this->answer(1, value, 5); }
    int GetNumVar(int& value) const override { return this->answer(2, value, 2); }
    int silent = 0;

  private:
    int answer(int which, int& value, int known) const {
      value = known;
      return silent == which ? 1 : 0;
    }
  } source;
  makeSolvedList(source, {1, 1}, 5, 2);
  for (source.silent = 0; source.silent < 3; ++source.silent) {
    Traces const traces;
    int error = 0;
    OpenList<TypeParam> copy(source, error);
    EXPECT_EQ(error, 1);
    EXPECT_EQ(traces.count(), 1);
  }
  int error = -1;
  OpenList<TypeParam> copy(source, error);
  EXPECT_EQ(error, 0);
}

TYPED_TEST(KrigingLists, ShareModelsWithTheirPlainCopies) {
  auto& list = this->list_;
  makeSolvedList(list, {1, 1}, 5, 2);
  C_MatMGe<TypeParam> points = pattern<TypeParam>(3, 2, 0.9);
  list.PutInpTestMtx(points, -1);
  list.NumNewPoints = 2;
  list.NewPointIds[1] = 77;

  OpenList<TypeParam> copy(list);
  OpenList<TypeParam> assigned;
  assigned = list;

  for (auto* other : {&copy, &assigned}) {
    EXPECT_EQ(other->GetItemKriging(0), list.GetItemKriging(0));
    EXPECT_EQ(other->SolPerModel, list.SolPerModel);
    expectEqual(other->InpTestMtx, list.InpTestMtx);
    EXPECT_NE(other->InpTestMtx.Adr(), list.InpTestMtx.Adr());
    int id = 0;
    EXPECT_EQ(other->GetIdOfNewPoint(1, id), 0);
    EXPECT_EQ(id, 77);
  }
}

TYPED_TEST(KrigingLists, ThatShareModelsKeepThemAsLongAsOneIsThere) {
  auto first = std::make_unique<OpenList<TypeParam>>();
  makeSolvedList(*first, {1, 1}, 5, 2);
  OpenList<TypeParam> second(*first);
  first.reset();

  C_MatMGe<TypeParam> x;
  EXPECT_EQ(second.GetInpSampMtx(x, 1), 0);
}

TYPED_TEST(KrigingLists, ThatShareModelsSurviveNewSizesOfTheOther) {
  auto& list = this->list_;
  makeSolvedList(list, {1, 3}, 5, 2);
  OpenList<TypeParam> other(list);
  int sizes[] = {4, 4};

  ASSERT_EQ(list.PutNumSol(8, 2, sizes), 0);

  EXPECT_EQ(other.sizes(), (std::vector<int>{1, 3}));
  C_MatMGe<TypeParam> y = pattern<TypeParam>(5, 4, 0.1);
  EXPECT_EQ(other.PutOutSampMtx(y), 1) << "the shared models have other outputs now";
}

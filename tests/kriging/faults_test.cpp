// Every allocation failed in turn: an exception or the operation's 1, nothing lost, nothing broken.
#include "kriging/ListFixture.h"
#include "kriging/Traces.h"
#include "kriging/exercise.h"
#include "support/FailingAllocation.h"

using namespace kriging_test;
using support::FailingAllocation;
using support::forEachFailingAllocation;
using support::Unharmed;

template <class T>
class KrigingFaults : public ::testing::Test {
  Traces traces_;
};
TYPED_TEST_SUITE(KrigingFaults, Scalars);

namespace {

/// Fails every allocation of reading what `source` writes: 1, and an object that may be used.
template <class Object>
long failuresOfReading(Object& source) {
  MemoryFile file(written(source));
  return forEachFailingAllocation([&] {
    Object read;
    file.reopen();
    int const result = read.Read(file.get());
    Unharmed const checks;
    EXPECT_EQ(result, FailingAllocation::happened() ? 1 : 0);
    exercise(read);
    file.reopen();
    EXPECT_EQ(read.Read(file.get()), 0);
  });
}

} // namespace

TYPED_TEST(KrigingFaults, OfReadGiveOne) {
  OpenModel<TypeParam> model;
  makeSolved(model, 6, 2, 3, E_ScaleBoth, E_PolyLinear, E_KernAnisotropic);

  EXPECT_GT(failuresOfReading(model), 5);
}

TYPED_TEST(KrigingFaults, OfReadingAListGiveOne) {
  OpenList<TypeParam> list;
  makeSolvedList(list, {1, 2}, 5, 2);

  EXPECT_GT(failuresOfReading(list), 5);
}

TYPED_TEST(KrigingFaults, OfWriteAreNoneAtAll) {
  OpenModel<TypeParam> model;
  makeSolved(model, 6, 2, 3, E_ScaleBoth);
  MemoryFile file;

  EXPECT_EQ(forEachFailingAllocation([&] { EXPECT_EQ(model.Write(file.get()), 0); }), 0);
}

TYPED_TEST(KrigingFaults, OfCopiesLeaveTheSourceAndAModelThatMayBeUsed) {
  OpenModel<TypeParam> source;
  makeSolved(source, 6, 2, 3, E_ScaleBoth, E_PolyLinear, E_KernAnisotropic);
  std::string const bytes = written(source);

  long const failures = forEachFailingAllocation([&] {
    OpenModel<TypeParam> copy;
    try {
      int const result = copy.Copy(&source); // 1 where only the array of group sizes failed
      EXPECT_EQ(result, FailingAllocation::happened() ? 1 : 0);
    } catch (...) {
      Unharmed const checks;
      exercise(copy);
      throw;
    }
  });

  EXPECT_GT(failures, 5);
  EXPECT_EQ(written(source), bytes);
}

TYPED_TEST(KrigingFaults, OfConstructingACopyLeaveNothingBehind) {
  OpenModel<TypeParam> source;
  makeSolved(source, 6, 2, 3, E_ScaleBoth, E_PolyLinear, E_KernAnisotropic);
  OpenList<TypeParam> list;
  makeSolvedList(list, {1, 2}, 5, 2);

  EXPECT_GT(forEachFailingAllocation([&] {
              int error = -1;
              OpenModel<TypeParam> copy(source, error);
              EXPECT_EQ(error, FailingAllocation::happened() ? 1 : 0);
            }),
            5);
  EXPECT_GT(forEachFailingAllocation([&] {
              int error = -1;
              OpenList<TypeParam> copy(list, error);
              EXPECT_EQ(error, FailingAllocation::happened() ? 1 : 0);
            }),
            5);
}

namespace {

/// The operations of a list's life up to its coefficients; whichever fails ends it.
template <class T>
int setUp(KrigingList<T>& list, C_MatMGe<T>& x, C_MatMGe<T>& y) {
  int sizes[] = {1, 2};
  bool const done = list.PutNumKriging(2) == 0 && list.PutNumVar(2) == 0 &&
                    list.PutNumSol(3, 2, sizes) == 0 && list.PutInpSampMtx(x) == 0 &&
                    list.PutOutSampMtx(y) == 0 && list.PutInpTestMtx(x, -1) == 0 &&
                    list.AppendSampData(x, y) == 0;
  return done ? 0 : 1;
}

/// Fails every allocation of a Put on a fresh copy of a solved model, which must stay usable.
template <class T, class Put>
long failuresOf(Put&& put) {
  OpenModel<T> source;
  makeSolved(source, 6, 2, 3, E_ScaleBoth, E_PolyLinear, E_KernAnisotropic);
  std::string const bytes = written(source);
  return forEachFailingAllocation([&] {
    OpenModel<T> model;
    {
      Unharmed const preparing;
      EXPECT_EQ(readFrom(model, bytes), 0);
    }
    try {
      EXPECT_EQ(put(model), 0);
    } catch (...) {
      Unharmed const checks;
      exercise(model);
      throw;
    }
  });
}

} // namespace

TYPED_TEST(KrigingFaults, OfPutsThrowAndLeaveAModelThatMayBeUsed) {
  using Model = OpenModel<TypeParam>;
  C_MatMGe<TypeParam> x = pattern<TypeParam>(9, 2, 0.3);
  C_MatMGe<TypeParam> fewX = pattern<TypeParam>(2, 2, 0.3);
  C_MatMGe<TypeParam> fewY = pattern<TypeParam>(2, 3, 0.3);
  C_MatMGe<TypeParam> y = pattern<TypeParam>(6, 3, 0.9);
  RealVec theta = vector<double>({1.0, 2.0});
  int sizes[] = {2, 3};

  EXPECT_GT(failuresOf<TypeParam>([](Model& m) { return m.PutNumVar(40); }), 0);
  EXPECT_GT(failuresOf<TypeParam>([&](Model& m) { return m.PutNumSol(5, 2, sizes); }), 0);
  EXPECT_GT(failuresOf<TypeParam>([&](Model& m) { return m.PutInpSampMtx(x); }), 0);
  EXPECT_GT(failuresOf<TypeParam>([&](Model& m) { return m.PutInpTestMtx(x); }), 0);
  EXPECT_GT(failuresOf<TypeParam>([&](Model& m) { return m.AppendSampData(fewX, fewY, false); }),
            0);
  failuresOf<TypeParam>([&](Model& m) { return m.PutOutSampMtx(y); });
  failuresOf<TypeParam>([&](Model& m) { return m.PutKernVec(theta); });
}

TYPED_TEST(KrigingFaults, OfGroupSizesGiveStatusOne) {
  OpenModel<TypeParam> model;
  makeSolved(model, 6, 2, 3);
  FailingAllocation const failing(1);
  int status = 0;

  EXPECT_EQ(model.GetVecGlobalSol(status), nullptr);
  EXPECT_EQ(status, 1);
}

TYPED_TEST(KrigingFaults, OfListsLeaveListsThatMayBeUsed) {
  C_MatMGe<TypeParam> x = pattern<TypeParam>(5, 2, 0.3);
  C_MatMGe<TypeParam> y = pattern<TypeParam>(5, 3, 1.7);

  long const failures = forEachFailingAllocation([&] {
    OpenList<TypeParam> list;
    try {
      EXPECT_EQ(setUp(list, x, y), 0);
    } catch (...) {
      Unharmed const checks;
      exercise(list);
      throw;
    }
  });

  EXPECT_GT(failures, 20);
}

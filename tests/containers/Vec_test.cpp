// Size, views, ranges and copies of the concrete vector.
#include "containers/OffCore.h"
#include "containers/support.h"

namespace {

template <class C>
class Vec : public ::testing::Test {};
TYPED_TEST_SUITE(Vec, StorageCases, ScalarNames);

#define ZAREL_TYPES                                                                                \
  using T [[maybe_unused]] = typename TypeParam::T;                                                \
  using I [[maybe_unused]] = typename TypeParam::I;                                                \
  using V = typename TypeParam::Vec

TYPED_TEST(Vec, IsEmptyAtFirst) {
  ZAREL_TYPES;
  V v;

  EXPECT_EQ(v.Dim(), 0);
  EXPECT_EQ(v.Capacity(), 0);
  EXPECT_EQ(v.Adr(0), nullptr);
  EXPECT_EQ(v.InCore(), 1);
  EXPECT_EQ(v.Full(), 1);
  EXPECT_EQ(v.MemSize(), 0);
}

TYPED_TEST(Vec, IsBuiltClearedOrFilled) {
  ZAREL_TYPES;
  V cleared(3), filled(3, scalar<T>(4, 1));

  EXPECT_EQ(cleared.Sum(0, -1), T(0));
  EXPECT_EQ(cleared.Capacity(), 3);
  EXPECT_EQ(filled[2], scalar<T>(4, 1));
  EXPECT_EQ(filled.MemSize(), static_cast<int>(3 * sizeof(T)));
}

TYPED_TEST(Vec, OfNegativeSizeHasThatDimensionAndNoData) {
  ZAREL_TYPES;
  V v(-3);

  EXPECT_EQ(v.Dim(), -3);
  EXPECT_EQ(v.Adr(0), nullptr);
  EXPECT_EQ(v.Resize(2), 0);
  EXPECT_EQ(v.Sum(0, -1), T(0));
}

TYPED_TEST(Vec, ANegativeResizeThrows2) {
  ZAREL_TYPES;
  V v(3);

  EXPECT_EQ(codeOf([&] { v.Resize(-1); }), 2);
  EXPECT_EQ(v.Dim(), 3);
}

TYPED_TEST(Vec, OldValuesComeBackWithinTheCapacity) {
  ZAREL_TYPES;
  V v(4);
  count(v);
  T* block = v.Adr(0);

  v.Resize(2);
  EXPECT_EQ(v.Dim(), 2);
  EXPECT_EQ(v.Capacity(), 4);
  v.Resize(4);

  EXPECT_EQ(v.Adr(0), block);
  EXPECT_EQ(v[3], scalar<T>(4, -1));
}

TYPED_TEST(Vec, GrowingKeepsValuesAndResizeToNothingFrees) {
  ZAREL_TYPES;
  V v(2);
  count(v);

  v.Resize(50);
  EXPECT_EQ(v[1], scalar<T>(2, 1));
  EXPECT_EQ(v.Capacity(), 50);
  v.Resize(0);
  EXPECT_EQ(v.Adr(0), nullptr);
  EXPECT_EQ(v.Capacity(), 0);
}

TYPED_TEST(Vec, AFailingGrowthLeavesTheVector) {
  ZAREL_TYPES;
  V v(2);
  count(v);
  const AllocatorProbe none(0);

  EXPECT_EQ(codeOf([&] { v.Resize(60); }), 1001);

  EXPECT_EQ(v.Dim(), 2);
  EXPECT_EQ(v.Capacity(), 2);
  EXPECT_EQ(v[0], scalar<T>(1, 2));
}

TYPED_TEST(Vec, AnAttachedVectorIsAViewThatMayShrinkButNotGrow) {
  ZAREL_TYPES;
  T block[3] = {scalar<T>(1), scalar<T>(2), scalar<T>(3)};
  V v(7);

  EXPECT_EQ(v.Attach(3, block), 0);
  EXPECT_EQ(v.Capacity(), 0);
  v[0] = scalar<T>(9);
  EXPECT_EQ(block[0], scalar<T>(9));
  EXPECT_EQ(v.Resize(2), 0);
  EXPECT_EQ(codeOf([&] { v.Resize(3); }), 2870);
  EXPECT_EQ(v.Dim(), 2);
}

TYPED_TEST(Vec, ResizeToNothingOfAViewLeavesTheForeignBlockAlone) {
  ZAREL_TYPES;
  T block[2] = {scalar<T>(1), scalar<T>(2)};
  V v(2, block);

  v.Resize(0);

  EXPECT_EQ(v.Adr(0), nullptr);
  EXPECT_EQ(block[1], scalar<T>(2));
}

TYPED_TEST(Vec, ReleaseEmpties) {
  ZAREL_TYPES;
  V v(5);

  EXPECT_EQ(v.Release(), 0);

  EXPECT_EQ(v.Dim(), 0);
  EXPECT_EQ(v.Capacity(), 0);
  EXPECT_EQ(v.Adr(0), nullptr);
}

TYPED_TEST(Vec, LnkIsAViewOnTheRest) {
  ZAREL_TYPES;
  V v(4);
  count(v);
  std::unique_ptr<C_Vec<T, I>> rest(v.Lnk(1)), nothing(v.Lnk(4));

  EXPECT_EQ(rest->Dim(), 3);
  rest->SetVal(0, scalar<T>(7));
  EXPECT_EQ(v[1], scalar<T>(7));
  EXPECT_EQ(codeOf([&] { rest->Resize(4); }), 2870);
  EXPECT_EQ(nothing->Dim(), 0);
  EXPECT_EQ(codeOf([&] { v.Lnk(-1); }), 2872);
  EXPECT_EQ(codeOf([&] { v.Lnk(5); }), 2872);
}

TYPED_TEST(Vec, ACopyOfAViewOwnsItsBlock) {
  ZAREL_TYPES;
  T block[2] = {scalar<T>(1), scalar<T>(2)};
  V view(2, block);
  V copy(view), assigned;
  assigned = view;
  assigned = *&assigned;
  block[0] = scalar<T>(9);

  EXPECT_EQ(copy[0], scalar<T>(1));
  EXPECT_EQ(copy.Capacity(), 2);
  EXPECT_EQ(assigned[1], scalar<T>(2));
}

TYPED_TEST(Vec, CopyIntoAViewWritesThroughAndCannotGrowIt) {
  ZAREL_TYPES;
  T block[2] = {};
  V view(2, block), two(2, scalar<T>(5)), three(3);
  const V& constant = two;

  EXPECT_EQ(view.Copy(constant), 0);
  EXPECT_EQ(block[1], scalar<T>(5));
  EXPECT_EQ(codeOf([&] { view.Copy(three); }), 2870);
}

TYPED_TEST(Vec, CopiesASparseVectorByItsValues) {
  using T = typename TypeParam::T;
  if constexpr (std::is_same_v<typename TypeParam::I, int>) {
    SparseVec<T> sparse(5, {1, 4}, scalar<T>(3, 2));
    VecOf<T> v(5, scalar<T>(8));

    EXPECT_EQ(v.Copy(sparse), 0);

    const T expected[] = {T(0), scalar<T>(3, 2), T(0), T(0), scalar<T>(3, 2)};
    EXPECT_TRUE(std::equal(expected, expected + 5, v.Adr(0)));
  }
}

TYPED_TEST(Vec, RangesFollowOneRule) {
  ZAREL_TYPES;
  V v(4, scalar<T>(1));

  EXPECT_EQ(v.Sum(0, -1), scalar<T>(4));
  EXPECT_EQ(v.Sum(1, 2), scalar<T>(2));
  EXPECT_EQ(v.Sum(2, 99), scalar<T>(2));
  EXPECT_EQ(v.Sum(4, -1), T(0));
  EXPECT_EQ(v.Sum(3, 1), T(0));
  EXPECT_EQ(v.Sum(-1, 2), T(0));
  EXPECT_EQ(v.Sum(5, -1), T(0));
  EXPECT_EQ(v.Init(T(2), -1, 1), -1);
  EXPECT_EQ(v.Init(T(2), 5, -1), -1);
  EXPECT_EQ(v.Init(scalar<T>(2), 3, -1), 0);
  EXPECT_EQ(v.Init(scalar<T>(2), 4, -1), 0);
  EXPECT_EQ(v.SMlt(T(2), -1, 1), -1);
  EXPECT_EQ(v.SMlt(T(2), 5, 1), -1);
  EXPECT_EQ(v.SMlt(scalar<T>(3), 2, 2), 0);
  EXPECT_EQ(v.Zero(-1, 1), -1);
  EXPECT_EQ(v.Zero(5, 1), -1);
  EXPECT_EQ(v.Zero(0, 0), 0);
  const T expected[] = {T(0), scalar<T>(1), scalar<T>(3), scalar<T>(2)};
  EXPECT_TRUE(std::equal(expected, expected + 4, v.Adr(0)));
}

TYPED_TEST(Vec, ExtractGivesThePlaceItself) {
  ZAREL_TYPES;
  V v(4);

  EXPECT_EQ(v.Extract(0, -1, nullptr), v.Adr(0));
  EXPECT_EQ(v.Extract(2, 2, nullptr), v.Adr(2));
  EXPECT_EQ(v.Extract(4, -1, nullptr), v.Adr(0) + 4);
  EXPECT_EQ(v.Extract(5, -1, nullptr), nullptr);
  EXPECT_EQ(v.Extract(-1, -1, nullptr), nullptr);
}

TYPED_TEST(Vec, ScalingByZeroClearsWhatever) {
  ZAREL_TYPES;
  V v(3, scalar<T>(5));
  if constexpr (!std::is_integral_v<T>) v[1] = scalar<T>(std::numeric_limits<double>::quiet_NaN());

  EXPECT_EQ(v.SMlt(T(0), 0, -1), 0);

  EXPECT_EQ(v.Sum(0, -1), T(0));
}

TYPED_TEST(Vec, IteratorsAreNotOffered) {
  ZAREL_TYPES;
  V v(1);
  T value(0);
  std::string text;

  EXPECT_EQ(codeOf([&] { v.FirstVal(value); }), 2871);
  EXPECT_EQ(codeOf([&] { v.NextVal(value); }), 2871);
  EXPECT_EQ(codeOf([&] { v.FirstVal(text); }), 2871);
  EXPECT_EQ(codeOf([&] { v.NextVal(text); }), 2871);
}

TYPED_TEST(Vec, CopiesAreCountedAsTheyAreDestroyed) {
  ZAREL_TYPES;
  using Counter = C_Counter<C_Vec<T, I>>;
  const int created = Counter::objects_created;
  const int alive = Counter::objects_alive;
  {
    V v(1);
    V copy(v);
    EXPECT_EQ(Counter::objects_created, created + 2);
    EXPECT_EQ(Counter::objects_alive, alive + 2);
  }
  EXPECT_EQ(Counter::objects_alive, alive);
}

TYPED_TEST(Vec, OneProcessTransfersNothing) {
  ZAREL_TYPES;
  V v(2, scalar<T>(3));

  EXPECT_EQ(v.Send(0, 1), 0);
  EXPECT_EQ(v.Recv(0, 1), 0);
  EXPECT_EQ(v.Bcast(0), 0);
  EXPECT_EQ(v.Sum(0, -1), scalar<T>(6));
}

TEST(VecSend, RefusesWhatAnIntCannotCount) {
  double block[1] = {};
  C_VecPi<double, __int64, C_PtrInCore<double, __int64>> v(2147483648LL, block);

  EXPECT_EQ(codeOf([&] { v.Send(0, 0); }), 2880);
}

} // namespace

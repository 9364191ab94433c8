#include "containers/OffCore.h"
#include "containers/support.h"

namespace {

template <class C>
class PtrInCore : public ::testing::Test {};
TYPED_TEST_SUITE(PtrInCore, StorageCases, ScalarNames);

#define ZAREL_TYPES                                                                                \
  using T [[maybe_unused]] = typename TypeParam::T;                                                \
  using I [[maybe_unused]] = typename TypeParam::I;                                                \
  using Ptr [[maybe_unused]] = C_PtrInCore<T, I>

TYPED_TEST(PtrInCore, StartsEmptyAndReadyToOwn) {
  ZAREL_TYPES;
  Ptr p;

  EXPECT_EQ(p.Adr(0), nullptr);
  EXPECT_EQ(p.Owner(), 1);
  EXPECT_EQ(p.InCore(), 1);
  EXPECT_EQ(p.Load(), 0);
  EXPECT_EQ(p.UnLoad(), 0);
}

TYPED_TEST(PtrInCore, IsFilledWithTheValueOfItsConstructor) {
  ZAREL_TYPES;
  Ptr cleared(3), filled(3, scalar<T>(5, 1)), none(0, scalar<T>(5)), negative(-2);

  for (I i = 0; i < 3; ++i) {
    EXPECT_EQ(cleared.GetVal(i), T(0));
    EXPECT_EQ(filled.GetVal(i), scalar<T>(5, 1));
  }
  EXPECT_EQ(none.Adr(0), nullptr);
  EXPECT_EQ(none.Owner(), 1);
  EXPECT_EQ(negative.Adr(0), nullptr);
}

TYPED_TEST(PtrInCore, ViewsAForeignBlockWithoutACopy) {
  ZAREL_TYPES;
  T block[3] = {scalar<T>(1), scalar<T>(2), scalar<T>(3)};
  Ptr p(block);
  std::unique_ptr<Ptr> rest(p.Lnk(1));

  EXPECT_EQ(p.Owner(), 0);
  EXPECT_EQ(p.Adr(2), block + 2);
  EXPECT_EQ(rest->Adr(0), block + 1);
  EXPECT_EQ(rest->Owner(), 0);
  rest->SetVal(0, scalar<T>(9));
  EXPECT_EQ(block[1], scalar<T>(9));
}

TYPED_TEST(PtrInCore, CopyConstructionTakesOwnerMarkAndAddress) {
  ZAREL_TYPES;
  T block[1] = {scalar<T>(1)};
  Ptr view(block);
  Ptr copy(view);

  EXPECT_EQ(copy.Adr(0), block);
  EXPECT_EQ(copy.Owner(), 0);
}

TYPED_TEST(PtrInCore, CopyTakesTheFirstValuesIntoAFreshBlock) {
  ZAREL_TYPES;
  T block[3] = {scalar<T>(1), scalar<T>(2), scalar<T>(3)};
  Ptr source(block), target(5);

  EXPECT_EQ(target.Copy(source, 2), 0);

  EXPECT_EQ(target.Owner(), 1);
  EXPECT_NE(target.Adr(0), block);
  EXPECT_EQ(target[0], scalar<T>(1));
  EXPECT_EQ(target[1], scalar<T>(2));
}

TYPED_TEST(PtrInCore, ACopyOfItselfLeavesIt) {
  ZAREL_TYPES;
  Ptr p(2, scalar<T>(4));

  EXPECT_EQ(p.Copy(p, 2), 0);

  EXPECT_EQ(p[1], scalar<T>(4));
}

TYPED_TEST(PtrInCore, ResizeKeepsValuesAndClearsAFirstBlock) {
  ZAREL_TYPES;
  Ptr p;

  EXPECT_EQ(p.Resize(2), 0);
  EXPECT_EQ(p.GetVal(1), T(0));
  p[0] = scalar<T>(7);
  EXPECT_EQ(p.Resize(100), 0);
  EXPECT_EQ(p[0], scalar<T>(7));
  EXPECT_EQ(p.Resize(0), 0);
  EXPECT_EQ(p.Adr(0), nullptr);
  EXPECT_EQ(p.Owner(), 1);
}

TYPED_TEST(PtrInCore, AViewCannotBeResized) {
  ZAREL_TYPES;
  T block[2] = {};
  Ptr p(block);

  EXPECT_EQ(codeOf([&] { p.Resize(3); }), 2870);
  EXPECT_EQ(p.Adr(0), block);
}

// Resize never touches the owner mark: a view cut to nothing and grown again holds a block that
// nobody frees.
TYPED_TEST(PtrInCore, AViewResizedToNothingGrowsABlockItDoesNotOwn) {
  ZAREL_TYPES;
  T block[2] = {};
  Ptr p(block);

  p.Resize(0);
  EXPECT_EQ(p.Adr(0), nullptr);
  EXPECT_EQ(p.Owner(), 0);
  EXPECT_EQ(p.Resize(3), 0);
  EXPECT_EQ(p.Owner(), 0);
  EXPECT_EQ(codeOf([&] { p.Resize(4); }), 2870);

  zarelmem_free(p.Adr(0), __FILE__, __LINE__);
}

TYPED_TEST(PtrInCore, ExtractWithoutABufferPointsIntoTheBlock) {
  ZAREL_TYPES;
  Ptr p(4);

  EXPECT_EQ(p.Extract(1, 2, nullptr), p.Adr(1));
  EXPECT_EQ(p.Extract(4, 0, nullptr), p.Adr(4));
}

TYPED_TEST(PtrInCore, ExtractIntoABufferResizesIt) {
  ZAREL_TYPES;
  T block[3] = {scalar<T>(1), scalar<T>(2), scalar<T>(3)};
  Ptr p(block);
  T* buffer = static_cast<T*>(zarelmem_malloc(1, "test", 1, __FILE__, __LINE__));

  {
    const AllocatorProbe probe;
    EXPECT_EQ(p.Extract(1, 0, buffer), buffer);
    EXPECT_EQ(p.Extract(1, -2, buffer), buffer);
    EXPECT_EQ(probe.count(), 0) << "nothing to copy leaves the buffer as it is";
  }
  buffer = p.Extract(1, 2, buffer);

  EXPECT_EQ(buffer[0], scalar<T>(2));
  EXPECT_EQ(buffer[1], scalar<T>(3));
  zarelmem_free(buffer, __FILE__, __LINE__);
}

TYPED_TEST(PtrInCore, RangesAreClearedFilledAndSummed) {
  ZAREL_TYPES;
  Ptr p(4, scalar<T>(1, 1));

  EXPECT_EQ(p.Init(scalar<T>(5), 1, 2), 0);
  EXPECT_EQ(p.Sum(0, 4), scalar<T>(12, 2));
  EXPECT_EQ(p.Sum(1, 2), scalar<T>(10));
  EXPECT_EQ(p.Zero(1, 1), 0);
  EXPECT_EQ(p.Zero(2, 0), 0);
  EXPECT_EQ(p.Zero(2, -1), 0);
  EXPECT_EQ(p[1], T(0));
  EXPECT_EQ(p[2], scalar<T>(5));
}

TYPED_TEST(PtrInCore, ScalesARange) {
  ZAREL_TYPES;
  Ptr p(3, scalar<T>(2, 1));

  EXPECT_EQ(p.SMlt(scalar<T>(3), 1, 1), 0);

  EXPECT_EQ(p[0], scalar<T>(2, 1));
  EXPECT_EQ(p[1], scalar<T>(6, 3));
  EXPECT_EQ(p[2], scalar<T>(2, 1));
}

TYPED_TEST(PtrInCore, NormHonoursTheFirstIndex) {
  ZAREL_TYPES;
  Ptr p(4, scalar<T>(9));
  p[2] = scalar<T>(3);
  p[3] = isComplex<T> ? scalar<T>(0, 4) : scalar<T>(4);
  T norm(0);

  EXPECT_EQ(p.Nrm2(2, 2, norm), 0);

  expectClose(norm, 5, 5);
}

TYPED_TEST(PtrInCore, AttachFreesAnOwnedBlockAndReleaseMakesItOwnerAgain) {
  ZAREL_TYPES;
  T block[1] = {scalar<T>(3)};
  Ptr p(4);

  EXPECT_EQ(p.Attach(block), 0);
  EXPECT_EQ(p.Adr(0), block);
  EXPECT_EQ(p.Owner(), 0);
  EXPECT_EQ(p.Release(), 0);
  EXPECT_EQ(p.Adr(0), nullptr);
  EXPECT_EQ(p.Owner(), 1);
}

TYPED_TEST(PtrInCore, AFailingAllocationThrows1001AndKeepsTheBlock) {
  ZAREL_TYPES;
  Ptr p(2, scalar<T>(6));
  const AllocatorProbe none(0);

  EXPECT_EQ(codeOf([] { Ptr q(3); }), 1001);
  EXPECT_EQ(codeOf([&] { p.Resize(9); }), 1001);
  EXPECT_EQ(codeOf([&] { p.Extract(0, 2, p.Adr(0)); }), 1001);
  EXPECT_EQ(p[1], scalar<T>(6));
}

/** A storage that offers nothing but what it must. */
template <class T, class I>
class BarePtr : public C_Ptr<T, I> {
public:
  int Copy(C_Ptr<T, I>&, I) override { return 0; }
  int InCore() override { return 0; }
  T GetVal(I) override { return T(0); }
  T Sum(I, I) override { return T(0); }
  int SMlt(T, I, I) override { return 0; }
};

TYPED_TEST(PtrInCore, WhatOnlyAConcreteStorageOffersThrows2871InTheBase) {
  ZAREL_TYPES;
  BarePtr<T, I> p;

  EXPECT_EQ(p.Lnk(0), nullptr);
  EXPECT_EQ(p.Adr(0), nullptr);
  EXPECT_EQ(p.SetVal(0, T(1)), 0);
  EXPECT_EQ(codeOf([&] { p.Load(); }), 2871);
  EXPECT_EQ(codeOf([&] { p.UnLoad(); }), 2871);
  EXPECT_EQ(codeOf([&] { p.Resize(1); }), 2871);
  EXPECT_EQ(codeOf([&] { p[0] = T(0); }), 2871);
  EXPECT_EQ(codeOf([&] { p.Extract(0, 1, nullptr); }), 2871);
  EXPECT_EQ(codeOf([&] { p.Zero(0, 1); }), 2871);
  EXPECT_EQ(codeOf([&] { p.Init(T(0), 0, 1); }), 2871);
}

// The general norm reads blocks from value 0 on, whatever the first index says.
TYPED_TEST(PtrInCore, TheGeneralNormIgnoresTheFirstIndex) {
  ZAREL_TYPES;
  OffCore<T, I> p(6);
  p.values[0] = scalar<T>(3);
  p.values[1] = scalar<T>(4);
  p.values[4] = scalar<T>(12);
  T norm(0);

  EXPECT_EQ(p.Nrm2(4, 2, norm), 0);

  expectClose(norm, 5, 5);
}

TYPED_TEST(PtrInCore, TheGeneralNormReadsBlocksOf4096) {
  ZAREL_TYPES;
  OffCore<T, I> p(10000);
  p.values[0] = p.values[5000] = p.values[9000] = p.values[9999] = scalar<T>(3);
  T norm(0);
  const AllocatorProbe probe;

  p.Nrm2(0, 10000, norm);

  expectClose(norm, 6, 6);
  EXPECT_EQ(probe.count(), 1);
  const std::vector<typename OffCore<T, I>::Run> expected = {{0, 4096}, {4096, 4096}, {8192, 1808}};
  EXPECT_TRUE(p.reads == expected);
}

TEST(BlockRule, CutsAsTold) {
  const auto rule = [](long long n) {
    const Zarel::BlockRule r(n, 4096);
    return std::vector<long long>{r.count, r.length, r.last};
  };

  EXPECT_EQ(rule(0), (std::vector<long long>{1, 0, 0}));
  EXPECT_EQ(rule(100), (std::vector<long long>{1, 100, 100}));
  EXPECT_EQ(rule(4096), (std::vector<long long>{1, 4096, 4096}));
  EXPECT_EQ(rule(4097), (std::vector<long long>{2, 4096, 1}));
  EXPECT_EQ(rule(8192), (std::vector<long long>{2, 4096, 4096}));
  EXPECT_EQ(rule(10000), (std::vector<long long>{3, 4096, 1808}));
}

TEST(IntPieces, CutWhatAnIntCannotCount) {
  std::vector<long long> seen;
  const auto note = [&](long long at, int length) {
    seen.push_back(at);
    seen.push_back(length);
  };

  Zarel::forEachIntPiece(5, note);
  Zarel::forEachIntPiece(0, note);
  Zarel::forEachIntPiece(5000000000LL, note);

  EXPECT_EQ(seen, (std::vector<long long>{0, 5, 0, 0, 0, 2147483647, 2147483647, 2147483647,
                                          4294967294, 705032706}));
}

} // namespace

#include "kernel/records.h"

#include <zarel/zarelmem.h>

#include "memory/allocator.h"
#include "support/FailingAllocation.h"

using namespace kernel;
using testing::Each;
using testing::ElementsAre;

namespace {

class Records : public Kernel {};

TEST_F(Records, SizeZeroIsStoredWithRoomForOneElement) {
  const auto v = vec({});
  EXPECT_EQ(v->dim, 0u);
  EXPECT_EQ(v->max_dim, 1u);
  ASSERT_NE(v->ve, nullptr);
  v->ve[0] = 1.0; // the element is there
  for (const auto& [dim, room] :
       {std::pair(zvec({})->dim, zvec({})->max_dim), std::pair(ivec({})->dim, ivec({})->max_dim),
        std::pair(lvec({})->dim, lvec({})->max_dim),
        std::pair(perm({})->size, perm({})->max_size)}) {
    EXPECT_EQ(dim, 0u);
    EXPECT_EQ(room, 1u);
  }
}

TEST_F(Records, MatrixWithoutColumnsHasItsRowPointers) {
  const auto A = mat(3, 0);
  EXPECT_EQ(A->m, 3u);
  EXPECT_EQ(A->n, 0u);
  EXPECT_EQ(A->max_m, 3u);
  EXPECT_EQ(A->max_n, 1u);
  EXPECT_EQ(A->max_size, 3u);
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(A->me[i], A->base + i);
  const auto B = mat(0, 4);
  EXPECT_EQ(B->m, 0u);
  EXPECT_EQ(B->max_m, 1u);
  EXPECT_EQ(B->max_n, 4u);
}

TEST_F(Records, MatrixIsOneBlockByRows) {
  const auto A = mat(4, 5);
  EXPECT_EQ(A->max_size, 20u);
  for (int i = 0; i < 4; ++i)
    EXPECT_EQ(A->me[i], A->base + 5 * i);
  EXPECT_THAT(list(A.get()), Each(0.0));
}

TEST_F(Records, NegativeSizesAreError20) {
  EXPECT_FAILS(20, LM_v_get("t", 0, -1, 0, nullptr, &status));
  EXPECT_FAILS(20, LM_zv_get("t", 0, -1, 0, nullptr, &status));
  EXPECT_FAILS(20, LM_px_get("t", 0, -1, 0, nullptr, &status));
  EXPECT_FAILS(20, LM_iv_resize("t", 0, nullptr, -1, 0, nullptr, &status));
  EXPECT_FAILS(20, LM_lv_resize("t", 0, nullptr, -1, 0, nullptr, &status));
  EXPECT_FAILS(20, LM_m_get("t", 0, -1, 2, 0, nullptr, &status));
  EXPECT_FAILS(20, LM_m_get("t", 0, 2, -1, 0, nullptr, &status));
  EXPECT_FAILS(20, LM_zm_resize("t", 0, nullptr, 2, -1, 0, nullptr, &status));
  const auto v = vec({1, 2});
  EXPECT_FAILS(20, LM_v_resize("t", 0, v.get(), -5, 0, nullptr, &status));
  EXPECT_THAT(list(v.get()), ElementsAre(1, 2));
}

TEST_F(Records, MoreValuesThan32BitsCountAreError3) {
  EXPECT_FAILS(3, LM_m_get("t", 0, 100000, 100000, 0, nullptr, &status));
  const auto A = mat(2, 2, {1, 2, 3, 4});
  EXPECT_FAILS(3, LM_m_resize("t", 0, A.get(), 100000, 100000, 0, nullptr, &status));
  EXPECT_THAT(list(A.get()), ElementsAre(1, 2, 3, 4));
}

// Counts what is asked of the heap.
class HeapProbe {
public:
  HeapProbe() : _former(Zarel::allocator()) {
    asked = 0;
    heap = _former;
    Zarel::allocator().calloc = [](std::size_t n, std::size_t size) {
      ++asked;
      return heap.calloc(n, size);
    };
    Zarel::allocator().realloc = [](void* block, std::size_t size) {
      ++asked;
      return heap.realloc(block, size);
    };
  }
  HeapProbe(const HeapProbe&) = delete;
  HeapProbe& operator=(const HeapProbe&) = delete;
  ~HeapProbe() { Zarel::allocator() = _former; }

  static inline int asked = 0;

private:
  static inline Zarel::Allocator heap{};
  Zarel::Allocator _former;
};

TEST_F(Records, WhatCannotBeCountedIsNotAskedFor) {
  const auto A = mat(2, 2, {1, 2, 3, 4});
  const HeapProbe probe;
  EXPECT_FAILS(3, LM_m_get("t", 0, 65536, 65536, 0, nullptr, &status));
  EXPECT_FAILS(3, LM_m_resize("t", 0, A.get(), 65536, 65536, 0, nullptr, &status));
  EXPECT_EQ(HeapProbe::asked, 0);
}

TEST_F(Records, ResizeKeepsValuesAndClearsAddedOnes) {
  VEC* v = vec({1, 2, 3}).release();
  VEC* const same = LM_v_resize("t", 0, v, 5, 0, nullptr, &status);
  EXPECT_EQ(same, v);
  EXPECT_EQ(status, 0);
  EXPECT_THAT(list(v), ElementsAre(1, 2, 3, 0, 0));
  EXPECT_EQ(v->max_dim, 5u);
  LM_v_resize("t", 0, v, 2, 0, nullptr, &status);
  EXPECT_EQ(v->max_dim, 5u);
  LM_v_resize("t", 0, v, 4, 0, nullptr, &status); // within the room: what was cut off is gone
  EXPECT_THAT(list(v), ElementsAre(1, 2, 0, 0));
  v_free(v);
}

TEST_F(Records, ResizeToZeroGivesOne) {
  auto v = vec({1, 2, 3});
  EXPECT_EQ(LM_v_resize("t", 0, v.get(), 0, 0, nullptr, &status)->dim, 1u);
  EXPECT_EQ(own(LM_v_resize("t", 0, nullptr, 0, 0, nullptr, &status))->dim, 1u);
  const auto A = own(LM_m_resize("t", 0, nullptr, 0, 0, 0, nullptr, &status));
  EXPECT_EQ(A->m, 1u);
  EXPECT_EQ(A->n, 1u);
  const auto empty = vec({});
  EXPECT_EQ(LM_v_resize("t", 0, empty.get(), 0, 0, nullptr, &status)->dim, 1u);
}

// Records that the host put together itself.
TEST_F(Records, ResizeOfARecordWithoutRoomMakesANewOne) {
  double data[3] = {1, 2, 3};
  VEC v = {3, 0, data};
  EXPECT_EQ(LM_v_resize("t", 0, &v, 3, 0, nullptr, &status), &v) << "the same length";
  const auto made = own(LM_v_resize("t", 0, &v, 4, 0, nullptr, &status));
  EXPECT_NE(made.get(), &v);
  EXPECT_THAT(list(made.get()), ElementsAre(0, 0, 0, 0));
  MAT A = {1, 1, 0, 0, 0, nullptr, nullptr};
  EXPECT_EQ(LM_m_resize("t", 0, &A, 1, 1, 0, nullptr, &status), &A) << "the same shape";
  const auto madeMatrix = own(LM_m_resize("t", 0, &A, 2, 1, 0, nullptr, &status));
  EXPECT_NE(madeMatrix.get(), &A);
  EXPECT_THAT(list(madeMatrix.get()), ElementsAre(0, 0));
}

TEST_F(Records, ResizeOfARecordWithoutDataAllocatesThem) {
  const auto v = vec({});
  zarelmem_free(v->ve, __FILE__, __LINE__);
  v->ve = nullptr;
  v->max_dim = 5;
  EXPECT_EQ(LM_v_resize("t", 0, v.get(), 2, 0, nullptr, &status), v.get());
  EXPECT_THAT(list(v.get()), ElementsAre(0, 0));
}

TEST_F(Records, PermutationsBeginAndGrowAsTheIdentity) {
  auto px = own(LM_px_get("t", 0, 3, 0, nullptr, &status));
  EXPECT_THAT(list(px.get()), ElementsAre(0, 1, 2));
  LM_px_resize("t", 0, px.get(), 5, 0, nullptr, &status);
  EXPECT_THAT(list(px.get()), ElementsAre(0, 1, 2, 3, 4));
}

// Every shape to every shape: common values stay, added ones are zero, rows stand at the stride.
TEST_F(Records, MatrixResizeKeepsWhatBothShapesHave) {
  for (int m0 = 1; m0 < 6; ++m0)
    for (int n0 = 1; n0 < 6; ++n0)
      for (int m1 = 1; m1 < 7; ++m1)
        for (int n1 = 1; n1 < 7; ++n1)
          for (int shrink = 0; shrink < 2; ++shrink) {
            auto A = mat(m0, n0);
            for (int i = 0; i < m0; ++i)
              for (int j = 0; j < n0; ++j)
                A->me[i][j] = 10.0 * i + j + 1;
            int m = m0, n = n0;
            if (shrink) { // leave stale values behind
              m = (m0 + 1) / 2, n = (n0 + 1) / 2;
              LM_m_resize("t", 0, A.get(), m, n, 0, nullptr, &status);
            }
            MAT* const B = LM_m_resize("t", 0, A.get(), m1, n1, 0, nullptr, &status);
            ASSERT_EQ(B, A.get());
            ASSERT_EQ(B->m, static_cast<unsigned>(m1));
            ASSERT_EQ(B->n, static_cast<unsigned>(n1));
            ASSERT_LE(B->max_m * B->max_n, B->max_size);
            ASSERT_GE(B->max_m, B->m);
            ASSERT_GE(B->max_n, B->n);
            for (int i = 0; i < m1; ++i) {
              ASSERT_EQ(B->me[i], B->base + i * static_cast<int>(B->max_n));
              for (int j = 0; j < n1; ++j)
                ASSERT_EQ(B->me[i][j], i < m && j < n ? 10.0 * i + j + 1 : 0.0);
            }
          }
}

TEST_F(Records, LongColumnTurnsIntoLongRowInLittleMemory) {
  auto A = mat(60000, 1);
  A->me[0][0] = 7.0;
  LM_m_resize("t", 0, A.get(), 1, 60000, 0, nullptr, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(A->me[0][0], 7.0);
  EXPECT_EQ(A->max_size, 60000u);
}

TEST_F(Records, TheRoomOfABlockServesLaterShapes) {
  const auto A = mat(6, 2);
  LM_m_resize("t", 0, A.get(), 2, 4, 0, nullptr, &status);
  EXPECT_EQ(A->max_m, 3u) << "12 values are three rows of four";
  const HeapProbe probe;
  LM_m_resize("t", 0, A.get(), 3, 4, 0, nullptr, &status);
  EXPECT_EQ(HeapProbe::asked, 0);
  EXPECT_EQ(A->max_size, 12u);
}

TEST_F(Records, FreeOfNullIsMinusOne) {
  EXPECT_EQ(v_free(nullptr), -1);
  EXPECT_EQ(zv_free(nullptr), -1);
  EXPECT_EQ(iv_free(nullptr), -1);
  EXPECT_EQ(lv_free(nullptr), -1);
  EXPECT_EQ(px_free(nullptr), -1);
  EXPECT_EQ(m_free(nullptr), -1);
  EXPECT_EQ(zm_free(nullptr), -1);
  EXPECT_EQ(v_free(vec({1}).release()), 0);
  EXPECT_EQ(m_free(mat(1, 1).release()), 0);
}

TEST_F(Records, ListFormsWorkOnEachPointerAndCount) {
  VEC *a = nullptr, *b = nullptr, *c = nullptr;
  VEC** const end = nullptr;
  EXPECT_EQ(LM_v_get_vars("t", 0, 4, 0, nullptr, &status, &a, &b, &c, end), 3);
  EXPECT_EQ(a->dim + b->dim + c->dim, 12u);
  VEC* const kept = b;
  EXPECT_EQ(LM_v_resize_vars("t", 0, 2, 0, nullptr, &status, &a, &b, end), 2);
  EXPECT_EQ(b, kept);
  EXPECT_EQ(b->dim, 2u);
  EXPECT_EQ(c->dim, 4u);
  EXPECT_EQ(v_free_vars(&a, &b, &c, end), 3);
  EXPECT_EQ(a, nullptr);
  EXPECT_EQ(c, nullptr);
  EXPECT_EQ(v_free_vars(&a, &b, &c, end), 0);
  EXPECT_EQ(LM_v_get_vars("t", 0, -1, 0, nullptr, &status, &a, end), -1);
  EXPECT_EQ(status, -1);
  EXPECT_EQ(a, nullptr);
}

TEST_F(Records, ListFormsExistForAllRecords) {
  ZVEC *z1 = nullptr, *z2 = nullptr;
  IVEC* i1 = nullptr;
  LVEC* l1 = nullptr;
  PERM* p1 = nullptr;
  MAT *m1 = nullptr, *m2 = nullptr;
  ZMAT* w1 = nullptr;
  EXPECT_EQ(LM_zv_get_vars("t", 0, 2, 0, nullptr, &status, &z1, &z2, (ZVEC**)nullptr), 2);
  EXPECT_EQ(LM_iv_get_vars("t", 0, 2, 0, nullptr, &status, &i1, (IVEC**)nullptr), 1);
  EXPECT_EQ(LM_lv_get_vars("t", 0, 2, 0, nullptr, &status, &l1, (LVEC**)nullptr), 1);
  EXPECT_EQ(LM_px_get_vars("t", 0, 2, 0, nullptr, &status, &p1, (PERM**)nullptr), 1);
  EXPECT_EQ(LM_m_get_vars("t", 0, 2, 3, 0, nullptr, &status, &m1, &m2, (MAT**)nullptr), 2);
  EXPECT_EQ(LM_zm_get_vars("t", 0, 2, 3, 0, nullptr, &status, &w1, (ZMAT**)nullptr), 1);
  EXPECT_EQ(LM_zv_resize_vars("t", 0, 3, 0, nullptr, &status, &z1, (ZVEC**)nullptr), 1);
  EXPECT_EQ(LM_iv_resize_vars("t", 0, 3, 0, nullptr, &status, &i1, (IVEC**)nullptr), 1);
  EXPECT_EQ(LM_lv_resize_vars("t", 0, 3, 0, nullptr, &status, &l1, (LVEC**)nullptr), 1);
  EXPECT_EQ(LM_px_resize_vars("t", 0, 3, 0, nullptr, &status, &p1, (PERM**)nullptr), 1);
  EXPECT_EQ(LM_m_resize_vars("t", 0, 4, 3, 0, nullptr, &status, &m1, (MAT**)nullptr), 1);
  EXPECT_EQ(LM_zm_resize_vars("t", 0, 4, 3, 0, nullptr, &status, &w1, (ZMAT**)nullptr), 1);
  EXPECT_EQ(z1->dim + i1->dim + l1->dim + p1->size, 12u);
  EXPECT_EQ(m1->m + w1->m, 8u);
  EXPECT_EQ(zv_free_vars(&z1, &z2, (ZVEC**)nullptr), 2);
  EXPECT_EQ(iv_free_vars(&i1, (IVEC**)nullptr), 1);
  EXPECT_EQ(lv_free_vars(&l1, (LVEC**)nullptr), 1);
  EXPECT_EQ(px_free_vars(&p1, (PERM**)nullptr), 1);
  EXPECT_EQ(m_free_vars(&m1, &m2, (MAT**)nullptr), 2);
  EXPECT_EQ(zm_free_vars(&w1, (ZMAT**)nullptr), 1);
}

TEST_F(Records, FailingAllocationsAreError3AndLeaveRecordsAlone) {
  const long failures = support::forEachFailingAllocation([this] {
    status = 0;
    const auto v = own(LM_v_get("t", 0, 3, 0, nullptr, &status));
    EXPECT_EQ(v == nullptr, status == -1);
    if (!v) {
      const support::Unharmed unharmed;
      EXPECT_EQ(lastError(), 3);
    }
  });
  EXPECT_EQ(failures, 2);
}

TEST_F(Records, MatrixSurvivesFailingAllocationsOfResize) {
  const auto A = mat(2, 3, {1, 2, 3, 4, 5, 6});
  const long failures = support::forEachFailingAllocation([this, &A] {
    MAT* const B = LM_m_resize("t", 0, A.get(), 7, 9, 0, nullptr, &status);
    if (B) return;
    const support::Unharmed unharmed;
    EXPECT_EQ(status, -1);
    EXPECT_EQ(lastError(), 3);
    EXPECT_THAT(list(A.get()), ElementsAre(1, 2, 3, 4, 5, 6));
  });
  EXPECT_GE(failures, 2);
  EXPECT_EQ(A->m, 7u);
  EXPECT_EQ(A->me[1][2], 6.0);
  EXPECT_EQ(A->me[6][8], 0.0);
}

TEST_F(Records, OutputOfTheWrongSizeIsResizedOrMade) {
  const auto x = vec({1, 2, 3}), y = vec({10, 20, 30});
  auto right = vec({0, 0, 0});
  double* const data = right->ve;
  EXPECT_EQ(LM_v_add(x.get(), y.get(), right.get(), 0, nullptr, &status), right.get());
  EXPECT_EQ(right->ve, data);
  auto wrong = vec({9});
  EXPECT_EQ(LM_v_add(x.get(), y.get(), wrong.get(), 0, nullptr, &status), wrong.get());
  EXPECT_THAT(list(wrong.get()), ElementsAre(11, 22, 33));
  const auto made = own(LM_v_add(x.get(), y.get(), nullptr, 0, nullptr, &status));
  EXPECT_NE(made.get(), x.get());
  EXPECT_THAT(list(made.get()), ElementsAre(11, 22, 33));
  EXPECT_EQ(status, 0);
}

TEST_F(Records, ResultOfLengthZeroFollowsTheRuleOfResize) {
  const auto x = vec({}), y = vec({});
  const auto made = own(LM_v_add(x.get(), y.get(), nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(made.get()), ElementsAre(0.0));
  const auto fits = vec({});
  EXPECT_EQ(LM_v_add(x.get(), y.get(), fits.get(), 0, nullptr, &status)->dim, 0u);
}

} // namespace

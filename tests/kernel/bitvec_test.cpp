#include "kernel/records.h"

#include <cstdio>
#include <string>

#include "support/Capture.h"
#include "support/FailingAllocation.h"

using namespace kernel;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Model = std::vector<bool>;

const int kinds[] = {LM_BV_BLOC, LM_BV_CODAGE, LM_BV_IVEC, LM_BV_DIRECT};

// Sets that are empty, full, sparse, dense, in runs.
std::vector<Model> models(int dim) {
  std::vector<Model> all;
  Random random(static_cast<unsigned>(dim) + 1);
  const auto add = [&](auto isOn) {
    Model m(static_cast<std::size_t>(dim));
    for (int i = 0; i < dim; ++i)
      m[static_cast<std::size_t>(i)] = isOn(i);
    all.push_back(m);
  };
  add([](int) { return false; });
  add([](int) { return true; });
  add([&](int) { return random.below(2) == 0; });
  add([&](int) { return random.below(7) == 0; });
  add([&](int i) { return i / 5 % 2 == 0; });
  add([dim](int i) { return i == 0 || i == dim - 1; });
  return all;
}

Own<BVEC> make(int kind, const Model& m) {
  const int dim = static_cast<int>(m.size());
  auto bv = own(kind == LM_BV_IVEC ? LM_bv_get_ivec("t", 0, dim, 1, 0, nullptr, nullptr)
                                   : LM_bv_get("t", 0, kind, dim, 0, nullptr, nullptr));
  for (int i = 0; i < dim && kind != LM_BV_TOUT; ++i)
    if (m[static_cast<std::size_t>(i)]) {
      EXPECT_EQ(LM_bv_insere(bv.get(), i, nullptr), 0);
    }
  return bv;
}

// Bit by bit, by the count, and by both iterators.
void expectIs(BVEC* bv, const Model& m, int kind) {
  ASSERT_TRUE(bv);
  const int dim = static_cast<int>(m.size());
  ASSERT_EQ(bv->kind, kind);
  ASSERT_EQ(bv->dim, dim);
  int count = 0;
  std::vector<int> on, off;
  for (int i = 0; i < dim; ++i) {
    const bool set = m[static_cast<std::size_t>(i)];
    ASSERT_EQ(LM_bv_is_on(bv, i) != 0, set) << i;
    ASSERT_EQ(LM_bv_is_off(bv, i) != 0, !set) << i;
    (set ? on : off).push_back(i);
    count += set;
  }
  ASSERT_EQ(LM_bv_nb_on(bv), count);
  ASSERT_EQ(LM_bv_nb_off(bv), dim - count);
  std::vector<int> walked;
  LM_bv_initialize(bv);
  for (int i = LM_bv_on_suivant(bv); i >= 0; i = LM_bv_on_suivant(bv))
    walked.push_back(i);
  ASSERT_EQ(walked, on);
  walked.clear();
  LM_bv_initialize(bv);
  for (int i = LM_bv_off_suivant(bv); i >= 0; i = LM_bv_off_suivant(bv))
    walked.push_back(i);
  ASSERT_EQ(walked, off);
  ASSERT_EQ(LM_bv_on_suivant(bv), -1);
}

Model combined(const Model& a, const Model& b, bool (*rule)(bool, bool)) {
  Model c(a.size());
  for (std::size_t i = 0; i < a.size(); ++i)
    c[i] = rule(a[i], b[i]);
  return c;
}
bool orRule(bool a, bool b) {
  return a || b;
}
bool andRule(bool a, bool b) {
  return a && b;
}
bool offRule(bool a, bool b) {
  return b && !a;
}
bool onRule(bool a, bool b) {
  return b || !a;
}

class BitVectors : public Kernel {
protected:
  // Every kind with every content; `tout` with its only one.
  template <class F>
  void forEachSet(int dim, F f) {
    for (const Model& m : models(dim))
      for (const int kind : kinds)
        f(make(kind, m), m, kind);
    const Model all(static_cast<std::size_t>(dim), true);
    f(make(LM_BV_TOUT, all), all, static_cast<int>(LM_BV_TOUT));
  }
};

TEST_F(BitVectors, AnswerAsTheModelForAllLengths) {
  for (int dim = 0; dim <= 70; ++dim)
    forEachSet(dim,
               [](const Own<BVEC>& bv, const Model& m, int kind) { expectIs(bv.get(), m, kind); });
}

TEST_F(BitVectors, CreationByKind) {
  EXPECT_FALSE(LM_bv_get("t", 0, LM_BV_IVEC, 5, 0, nullptr, &status));
  EXPECT_EQ(status, -1);
  EXPECT_EQ(LM_error_count(), 0); // a refusal without a number
  for (const int unknown : {0, 6, -1})
    EXPECT_EQ(own(LM_bv_get("t", 0, unknown, 5, 0, nullptr, &status))->kind, LM_BV_BLOC);
  const auto bloc = own(LM_bv_get("t", 0, LM_BV_BLOC, 5, 0, nullptr, &status));
  EXPECT_EQ(bloc->capacity, 100);
  EXPECT_EQ(bloc->count, 0);
  const auto codage = own(LM_bv_get("t", 0, LM_BV_CODAGE, 33, 0, nullptr, &status));
  EXPECT_EQ(codage->count, 2);
  EXPECT_EQ(codage->capacity, -1);
  EXPECT_EQ(own(LM_bv_get("t", 0, LM_BV_CODAGE, 32, 0, nullptr, &status))->count, 1);
  EXPECT_EQ(bloc->position, 0);
  EXPECT_EQ(bloc->state, 0);
  for (const int kind : {LM_BV_BLOC, LM_BV_CODAGE, LM_BV_DIRECT, LM_BV_TOUT})
    EXPECT_FAILS(20, LM_bv_get("t", 0, kind, -1, 0, nullptr, &status));
  EXPECT_FAILS(20, LM_bv_get_bloc("t", 0, 3, -1, 0, nullptr, &status));
  EXPECT_FAILS(20, LM_bv_get_ivec("t", 0, -3, 1, 0, nullptr, &status));
  EXPECT_EQ(LM_bv_free(nullptr), -1);
}

TEST_F(BitVectors, ToutIsOnForEveryIndex) {
  const auto tout = own(LM_bv_get_tout("t", 0, 4, 0, nullptr, &status));
  for (const int i : {0, 3, 4, -1, 1000})
    EXPECT_NE(LM_bv_is_on(tout.get(), i), 0);
  EXPECT_EQ(LM_bv_is_on(tout.get(), 0), -1);
  EXPECT_EQ(LM_bv_is_on(nullptr, 0), -1);
  for (const int unknown : {0, -3, 6}) { // which counts as on, too
    tout->kind = unknown;
    EXPECT_EQ(LM_bv_is_on(tout.get(), 0), -1) << unknown;
    EXPECT_EQ(LM_bv_is_off(tout.get(), 0), 0) << unknown;
  }
  tout->kind = LM_BV_TOUT;
  for (const int kind : kinds) {
    const auto bv = make(kind, Model(4, true));
    EXPECT_EQ(LM_bv_is_on(bv.get(), 4), 0);
    EXPECT_EQ(LM_bv_is_on(bv.get(), -1), 0);
  }
}

TEST_F(BitVectors, ADirectSetAnswersWithWhatItStores) {
  const auto direct = make(LM_BV_DIRECT, {true, false});
  direct->bits->ive[0] = -7;
  EXPECT_EQ(LM_bv_is_on(direct.get(), 0), -7);
  EXPECT_EQ(LM_bv_is_on(direct.get(), 1), 0);
  EXPECT_EQ(LM_bv_nb_on(direct.get()), 1);
}

TEST_F(BitVectors, SingleBitsAreSetInCodageOnly) {
  auto codage = make(LM_BV_CODAGE, Model(40, false));
  EXPECT_EQ(LM_bv_set_on(codage.get(), 31), 0);
  EXPECT_EQ(LM_bv_set_on(codage.get(), 32), 0);
  EXPECT_EQ(codage->bits->ive[0], -2147483647 - 1);
  EXPECT_EQ(codage->bits->ive[1], 1);
  EXPECT_EQ(LM_bv_set_off(codage.get(), 31), 0);
  EXPECT_EQ(codage->bits->ive[0], 0);
  EXPECT_EQ(LM_bv_set_on(codage.get(), 40), -1);
  EXPECT_EQ(LM_bv_set_off(codage.get(), -1), -1);
  EXPECT_EQ(LM_bv_set_on(nullptr, 0), -1);
  for (const int kind : {LM_BV_BLOC, LM_BV_IVEC, LM_BV_DIRECT, LM_BV_TOUT}) {
    const Model before(9, kind == LM_BV_TOUT);
    auto bv = make(kind, before);
    EXPECT_EQ(LM_bv_set_on(bv.get(), 3), -1);
    EXPECT_EQ(LM_bv_set_off(bv.get(), 3), -1);
    expectIs(bv.get(), before, kind);
  }
}

TEST_F(BitVectors, InsertionAscends) {
  auto bloc = make(LM_BV_BLOC, Model(10, false));
  EXPECT_EQ(LM_bv_insere(bloc.get(), 5, &status), 0);
  EXPECT_EQ(LM_bv_insere(bloc.get(), 6, &status), 0);
  EXPECT_EQ(bloc->count, 1);
  EXPECT_EQ(bloc->starts->ive[0], 5);
  EXPECT_EQ(bloc->ends->ive[0], 6);
  for (const int low : {6, 4, 0}) {
    EXPECT_EQ(LM_bv_insere(bloc.get(), low, &status), -1);
    EXPECT_EQ(status, -1);
  }
  EXPECT_EQ(LM_bv_insere(bloc.get(), 8, &status), 0);
  EXPECT_EQ(bloc->count, 2);
  auto ivec = make(LM_BV_IVEC, Model(10, false));
  EXPECT_EQ(LM_bv_insere(ivec.get(), 5, &status), 0);
  EXPECT_EQ(LM_bv_insere(ivec.get(), 5, &status), -1);
  EXPECT_EQ(LM_bv_insere(ivec.get(), 10, &status), -1);
  EXPECT_EQ(LM_bv_insere(ivec.get(), -1, &status), -1);
  EXPECT_EQ(LM_bv_insere(nullptr, 1, &status), -1);
  EXPECT_EQ(lastError(), 8);
  const auto tout = make(LM_BV_TOUT, Model(4, true)); // where everything is already
  EXPECT_EQ(LM_bv_insere(tout.get(), 2, &status), 0);
  EXPECT_EQ(status, 0);
  expectIs(tout.get(), Model(4, true), LM_BV_TOUT);
}

TEST_F(BitVectors, FullTablesGrowByFifty) {
  auto bloc = own(LM_bv_get_bloc("t", 0, 1000, 1, 0, nullptr, &status));
  auto ivec = own(LM_bv_get_ivec("t", 0, 1000, 1, 0, nullptr, &status));
  for (const int i : {0, 2}) {
    LM_bv_insere(bloc.get(), i, &status);
    LM_bv_insere(ivec.get(), i, &status);
  }
  EXPECT_EQ(bloc->capacity, 51);
  EXPECT_EQ(ivec->capacity, 51);
}

TEST_F(BitVectors, SharedEndsOfRunsCountOnce) {
  auto bv = own(LM_bv_get_bloc("t", 0, 20, 4, 0, nullptr, &status));
  bv->count = 3;
  const int starts[] = {1, 4, 10}, ends[] = {4, 6, 10};
  std::copy(starts, starts + 3, bv->starts->ive);
  std::copy(ends, ends + 3, bv->ends->ive);
  EXPECT_EQ(LM_bv_nb_on(bv.get()), 7);
  bv->starts->ive[1] = 3; // runs that share more than an end are counted as they stand
  EXPECT_EQ(LM_bv_nb_on(bv.get()), 9);
  bv->starts->ive[1] = 4;
  EXPECT_EQ(LM_bv_nb_on(nullptr), 0);
  const auto on = own(LM_bv_on_to_ivec_compact(bv.get(), nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(on.get()), ElementsAre(1, 2, 3, 4, 5, 6, 10));
  const auto off = own(LM_bv_off_to_ivec_compact(bv.get(), nullptr, 0, nullptr, &status));
  EXPECT_THAT(list(off.get()), ElementsAre(0, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19));
}

TEST_F(BitVectors, KeepTheirCapacitiesAndTheirIterator) {
  EXPECT_EQ(own(LM_bv_get_bloc("t", 0, 5, 0, 0, nullptr, &status))->capacity, 1);
  EXPECT_EQ(own(LM_bv_get_ivec("t", 0, 5, 0, 0, nullptr, &status))->capacity, 1);
  EXPECT_EQ(own(LM_bv_get_direct("t", 0, 5, 0, nullptr, &status))->capacity, 5);
  auto bv = make(LM_BV_BLOC, {true, true, false, false, true});
  LM_bv_on_suivant(bv.get());
  LM_bv_on_suivant(bv.get());
  LM_bv_ou_dans_bv(make(LM_BV_IVEC, {false, false, true, false, false}).get(), bv.get(), 0, nullptr,
                   &status);
  EXPECT_EQ(LM_bv_on_suivant(bv.get()), 2) << "the iterator goes on in the new content";
  LM_bv_set_all_on(bv.get(), 0, 0, nullptr, &status);
  EXPECT_EQ(bv->count, 0) << "nothing is no run";
}

TEST_F(BitVectors, SegmentsAreCounted) {
  for (const int dim : {0, 1, 33, 70})
    forEachSet(dim, [&](const Own<BVEC>& bv, const Model& m, int) {
      for (int first = -2; first <= dim; first += 3)
        for (int last = first - 1; last <= dim + 2; last += 2) {
          int count = 0;
          for (int i = std::max(first, 0); i <= std::min(last, dim - 1); ++i)
            count += m[static_cast<std::size_t>(i)];
          ASSERT_EQ(LM_bv_nb_on_segment(bv.get(), first, last), count);
        }
    });
  EXPECT_EQ(LM_bv_nb_on_segment(nullptr, 0, 5), 0);
}

TEST_F(BitVectors, IteratorStartsAnywhere) {
  for (const int dim : {1, 40, 70})
    forEachSet(dim, [&](const Own<BVEC>& bv, const Model& m, int) {
      for (int start = -1; start <= dim + 1; ++start) {
        int on = std::max(start, 0), off = on;
        while (on < dim && !m[static_cast<std::size_t>(on)])
          ++on;
        while (off < dim && m[static_cast<std::size_t>(off)])
          ++off;
        LM_bv_set_iterateur(bv.get(), start);
        ASSERT_EQ(LM_bv_on_suivant(bv.get()), on < dim ? on : -1);
        LM_bv_set_iterateur(bv.get(), start);
        ASSERT_EQ(LM_bv_off_suivant(bv.get()), off < dim ? off : -1);
      }
    });
  // both in turn: each goes on behind what the other found
  auto bv = make(LM_BV_BLOC, {true, true, false, false, true, false});
  LM_bv_initialize(bv.get());
  EXPECT_EQ(LM_bv_off_suivant(bv.get()), 2);
  EXPECT_EQ(LM_bv_on_suivant(bv.get()), 4);
  EXPECT_EQ(LM_bv_off_suivant(bv.get()), 5);
  EXPECT_EQ(LM_bv_on_suivant(bv.get()), -1);
  EXPECT_EQ(bv->position, 6) << "at the end it stays";
  EXPECT_EQ(LM_bv_on_suivant(bv.get()), -1);
  EXPECT_EQ(bv->position, 6);
  EXPECT_EQ(LM_bv_on_suivant(nullptr), -1);
}

TEST_F(BitVectors, SetsOfTwoSetsMatchTheModel) {
  for (int dim = 0; dim <= 70; dim += dim < 5 ? 1 : 13)
    forEachSet(dim, [&](const Own<BVEC>& a, const Model& ma, int ka) {
      forEachSet(dim, [&](const Own<BVEC>& b, const Model& mb, int kb) {
        const bool aAll = ka == LM_BV_TOUT, bAll = kb == LM_BV_TOUT;
        const auto u = own(LM_bv_union(a.get(), b.get(), nullptr, 0, nullptr, &status));
        expectIs(u.get(), combined(ma, mb, &orRule), aAll || bAll ? int(LM_BV_TOUT) : ka);
        const auto n = own(LM_bv_inter(a.get(), b.get(), nullptr, 0, nullptr, &status));
        expectIs(n.get(), combined(ma, mb, andRule), aAll ? kb : ka);
        for (const auto& [change, rule] :
             {std::pair(&LM_bv_ou_dans_bv, &orRule), std::pair(&LM_bv_off1_to_on2, &onRule),
              std::pair(&LM_bv_on1_to_off2, &offRule)}) {
          auto target = own(LM_bv_copy(b.get(), nullptr, 0, nullptr, &status));
          const Model expected = combined(ma, mb, rule);
          BVEC* const changed = change(a.get(), target.get(), 0, nullptr, &status);
          if (bAll && expected != mb) { // everything can't lose a bit
            EXPECT_FALSE(changed);
            EXPECT_EQ(status, -1);
            continue;
          }
          EXPECT_EQ(changed, target.get());
          expectIs(target.get(), expected, kb);
        }
      });
      const auto opposite = own(LM_bv_oppose(a.get(), nullptr, 0, nullptr, &status));
      Model inverted = ma;
      inverted.flip();
      expectIs(opposite.get(), inverted, ka == LM_BV_TOUT ? int(LM_BV_BLOC) : ka);
    });
}

TEST_F(BitVectors, IntersectionByKindTakesThatKindOnly) {
  const auto byKind = {
      std::pair(LM_BV_BLOC, &LM_bv_inter_bloc), std::pair(LM_BV_CODAGE, &LM_bv_inter_codage),
      std::pair(LM_BV_DIRECT, &LM_bv_inter_direct), std::pair(LM_BV_IVEC, &LM_bv_inter_ivec)};
  const auto all = models(50);
  for (const auto& [kind, inter] : byKind)
    for (const int other : kinds) {
      const auto a = make(kind, all[2]), b = make(other, all[4]);
      const auto out = own(inter(a.get(), b.get(), nullptr, 0, nullptr, &status));
      if (other == kind)
        expectIs(out.get(), combined(all[2], all[4], andRule), kind);
      else
        EXPECT_FALSE(out);
      EXPECT_EQ(status, other == kind ? 0 : -1);
    }
}

TEST_F(BitVectors, FastUnionTakesCodageOnly) {
  const auto all = models(70);
  const auto a = make(LM_BV_CODAGE, all[2]);
  auto into = make(LM_BV_CODAGE, all[3]), list = make(LM_BV_IVEC, all[3]);
  EXPECT_EQ(LM_bv_ou_dans_bv_fast(a.get(), into.get(), 0, nullptr, &status), into.get());
  expectIs(into.get(), combined(all[2], all[3], &orRule), LM_BV_CODAGE);
  EXPECT_FALSE(LM_bv_ou_dans_bv_fast(a.get(), list.get(), 0, nullptr, &status));
  EXPECT_EQ(status, -1);
}

TEST_F(BitVectors, OutputMayBeAnOperandOrOfAnotherKind) {
  const auto all = models(20);
  for (const int ka : kinds)
    for (const int kout : kinds) {
      const auto a = make(ka, all[2]), b = make(LM_BV_DIRECT, all[4]);
      BVEC* const out = make(kout, all[3]).release();
      const auto result = own(LM_bv_union(a.get(), b.get(), out, 0, nullptr, &status));
      expectIs(result.get(), combined(all[2], all[4], &orRule), ka);
      EXPECT_EQ(result.get() == out, ka == kout);
      auto self = make(ka, all[2]);
      EXPECT_EQ(LM_bv_inter(self.get(), b.get(), self.get(), 0, nullptr, &status), self.get());
      expectIs(self.get(), combined(all[2], all[4], andRule), ka);
    }
}

TEST_F(BitVectors, CopyTakesKindAndIterator) {
  const auto all = models(30);
  for (const int ka : kinds)
    for (const int kout : {1, 2, 3, 4, 5}) {
      const auto a = make(ka, all[2]);
      LM_bv_on_suivant(a.get());
      const int next = a->position;
      const auto copy = own(LM_bv_copy(a.get(), make(kout, all[1]).release(), 0, nullptr, &status));
      EXPECT_EQ(copy->position, next);
      expectIs(copy.get(), all[2], ka);
    }
  const auto a = make(LM_BV_BLOC, all[2]);
  EXPECT_EQ(LM_bv_copy(a.get(), a.get(), 0, nullptr, &status), a.get());
}

TEST_F(BitVectors, SegmentsAreSetAndCleared) {
  for (const int dim : {1, 31, 32, 33, 65})
    for (const int kind : kinds)
      for (const Model& m : models(dim))
        for (int first = 0; first < dim; first += 1 + dim / 6)
          for (int last = first - 1; last < dim; last += 1 + dim / 5)
            for (const bool on : {true, false}) {
              auto bv = make(kind, m);
              Model expected = m;
              for (int i = first; i <= last; ++i)
                expected[static_cast<std::size_t>(i)] = on;
              const auto change = on ? LM_bv_set_to_on_segment : LM_bv_set_to_off_segment;
              ASSERT_EQ(change(bv.get(), first, last, 0, nullptr, &status), bv.get());
              expectIs(bv.get(), expected, kind);
            }
  auto bv = make(LM_BV_BLOC, Model(5, false));
  EXPECT_FAILS(2, LM_bv_set_to_on_segment(bv.get(), 3, 5, 0, nullptr, &status));
  EXPECT_FAILS(2, LM_bv_set_to_off_segment(bv.get(), -1, 2, 0, nullptr, &status));
  auto tout = make(LM_BV_TOUT, Model(5, true));
  EXPECT_TRUE(LM_bv_set_to_on_segment(tout.get(), 1, 2, 0, nullptr, &status));
  EXPECT_FALSE(LM_bv_set_to_off_segment(tout.get(), 1, 2, 0, nullptr, &status));
  EXPECT_EQ(status, -1);
}

TEST_F(BitVectors, AllOnAndAllOffTakeALength) {
  for (const int kind : kinds)
    for (const int dim : {0, 1, 64, 70}) {
      auto bv = make(kind, models(33)[2]);
      ASSERT_EQ(LM_bv_set_all_on(bv.get(), dim, 0, nullptr, &status), bv.get());
      expectIs(bv.get(), Model(static_cast<std::size_t>(dim), true), kind);
      ASSERT_EQ(LM_bv_set_all_off(bv.get(), dim, 0, nullptr, &status), bv.get());
      expectIs(bv.get(), Model(static_cast<std::size_t>(dim), false), kind);
      EXPECT_FAILS(20, LM_bv_set_all_on(bv.get(), -1, 0, nullptr, &status));
      EXPECT_FAILS(20, LM_bv_set_all_off(bv.get(), -1, 0, nullptr, &status));
    }
  auto tout = make(LM_BV_TOUT, Model(5, true));
  EXPECT_EQ(LM_bv_set_all_on(tout.get(), 8, 0, nullptr, &status)->dim, 8);
  EXPECT_FALSE(LM_bv_set_all_off(tout.get(), 8, 0, nullptr, &status));
  EXPECT_EQ(status, -1);
}

TEST_F(BitVectors, ResizeCutsAndClears) {
  for (const int kind : {LM_BV_BLOC, LM_BV_CODAGE})
    for (const int from : {0, 1, 32, 45, 70})
      for (const int to : {0, 1, 31, 45, 64, 70})
        for (const Model& m : models(from)) {
          auto bv = make(kind, m);
          const auto resize = [&](int dim) {
            return kind == LM_BV_BLOC
                       ? LM_bv_resize_bloc("t", 0, bv.get(), dim, 0, 0, nullptr, &status)
                       : LM_bv_resize_codage("t", 0, bv.get(), dim, 0, nullptr, &status);
          };
          ASSERT_EQ(resize(to), bv.get());
          Model expected = m;
          expected.resize(static_cast<std::size_t>(to));
          expectIs(bv.get(), expected, kind);
          resize(90); // what was cut is gone
          expected.resize(90);
          expectIs(bv.get(), expected, kind);
        }
  auto runs = make(LM_BV_BLOC, {true, false, true, false, true});
  LM_bv_resize_bloc("t", 0, runs.get(), 5, 1, 0, nullptr, &status);
  EXPECT_EQ(runs->capacity, 3) << "room for the runs that are there";
  expectIs(runs.get(), {true, false, true, false, true}, LM_BV_BLOC);
  auto bloc = make(LM_BV_BLOC, models(20)[2]);
  EXPECT_FAILS(20, LM_bv_resize_bloc("t", 0, bloc.get(), -1, 3, 0, nullptr, &status));
  EXPECT_FAILS(20, LM_bv_resize_bloc("t", 0, bloc.get(), 3, -1, 0, nullptr, &status));
  EXPECT_FAILS(20, LM_bv_resize_codage("t", 0, nullptr, -1, 0, nullptr, &status));
  EXPECT_FALSE(LM_bv_resize_codage("t", 0, bloc.get(), 3, 0, nullptr, &status));
  EXPECT_EQ(status, -1);
  EXPECT_EQ(own(LM_bv_resize_bloc("t", 0, nullptr, 3, 7, 0, nullptr, &status))->capacity, 7);
}

TEST_F(BitVectors, ConversionsGoFromEveryKindToEveryKind) {
  for (const int dim : {0, 1, 40, 70})
    forEachSet(dim, [&](const Own<BVEC>& bv, const Model& m, int) {
      for (const int kind : kinds) {
        const auto to = own(LM_bv_to_bv(bv.get(), kind, nullptr, 0, nullptr, &status));
        expectIs(to.get(), m, kind);
        const auto flags = own(LM_bv_to_ivec(bv.get(), nullptr, 0, nullptr, &status));
        ASSERT_EQ(flags->dim, static_cast<unsigned>(dim));
        const auto back = own(LM_ivec_to_bv(flags.get(), kind, nullptr, 0, nullptr, &status));
        expectIs(back.get(), m, kind);
      }
      std::vector<int> on, off;
      for (int i = 0; i < dim; ++i)
        (m[static_cast<std::size_t>(i)] ? on : off).push_back(i);
      EXPECT_EQ(list(own(LM_bv_on_to_ivec_compact(bv.get(), nullptr, 0, nullptr, &status)).get()),
                on);
      EXPECT_EQ(list(own(LM_bv_off_to_ivec_compact(bv.get(), nullptr, 0, nullptr, &status)).get()),
                off);
      const bool full = off.empty();
      const auto tout = own(LM_bv_to_bv(bv.get(), LM_BV_TOUT, nullptr, 0, nullptr, &status));
      EXPECT_EQ(tout != nullptr, full);
      EXPECT_EQ(status, full ? 0 : -1);
      EXPECT_FALSE(LM_bv_to_bv(bv.get(), 6, nullptr, 0, nullptr, &status));
    });
}

TEST_F(BitVectors, GroupsAreCounted) {
  const auto bv = make(LM_BV_BLOC, {true, true, false, true, false, false, true});
  EXPECT_THAT(
      list(own(LM_bv_build_nb_active_bit_per(bv.get(), 3, nullptr, 0, nullptr, &status)).get()),
      ElementsAre(2, 1, 1));
  EXPECT_FAILS(20, LM_bv_build_nb_active_bit_per(bv.get(), 0, nullptr, 0, nullptr, &status));
  const auto none = make(LM_BV_CODAGE, {});
  EXPECT_THAT(
      list(own(LM_bv_build_nb_active_bit_per(none.get(), 4, nullptr, 0, nullptr, &status)).get()),
      IsEmpty());
}

TEST_F(BitVectors, DifferentLengthsAndNullsAreRefused) {
  const auto a = make(LM_BV_BLOC, Model(4, true)), b = make(LM_BV_BLOC, Model(5, true));
  EXPECT_FAILS(1, LM_bv_union(a.get(), b.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_bv_inter(a.get(), b.get(), nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_bv_ou_dans_bv(a.get(), b.get(), 0, nullptr, &status));
  const auto c = make(LM_BV_CODAGE, Model(4, true)), d = make(LM_BV_CODAGE, Model(40, true));
  EXPECT_FAILS(1, LM_bv_ou_dans_bv_fast(c.get(), d.get(), 0, nullptr, &status));
  EXPECT_FAILS(1, LM_bv_on1_to_off2(a.get(), b.get(), 0, nullptr, &status));
  EXPECT_FAILS(1, LM_bv_off1_to_on2(a.get(), b.get(), 0, nullptr, &status));
  EXPECT_FAILS(8, LM_bv_union(a.get(), nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_bv_oppose(nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_bv_copy(nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_bv_to_ivec(nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_ivec_to_bv(nullptr, 1, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_bv_set_all_on(nullptr, 1, 0, nullptr, &status));
}

TEST_F(BitVectors, FailingAllocationsLeaveOperandsAlone) {
  const auto all = models(70);
  for (const int kind : kinds) {
    const auto a = make(kind, all[2]), b = make(LM_BV_IVEC, all[3]);
    const long failures = support::forEachFailingAllocation([&] {
      const auto u = own(LM_bv_union(a.get(), b.get(), nullptr, 0, nullptr, &status));
      const support::Unharmed unharmed;
      EXPECT_EQ(u == nullptr, status == -1);
      if (!u) {
        EXPECT_EQ(lastError(), 3);
      }
    });
    EXPECT_GE(failures, 2);
    expectIs(a.get(), all[2], kind);
  }
}

// Files that are gone at the end.
struct File {
  FILE* stream = std::tmpfile();
  ~File() { std::fclose(stream); }
  void rewind() { std::rewind(stream); }
  std::vector<int> words() {
    std::vector<int> all;
    int word;
    std::rewind(stream);
    while (std::fread(&word, 4, 1, stream) == 1)
      all.push_back(word);
    return all;
  }
  void write(const std::vector<int>& all) {
    if (!all.empty()) std::fwrite(all.data(), 4, all.size(), stream);
    std::fflush(stream);
    std::rewind(stream);
  }
};

TEST_F(BitVectors, BinaryFormComesBack) {
  for (const int dim : {0, 1, 33, 70})
    forEachSet(dim, [&](const Own<BVEC>& bv, const Model& m, int kind) {
      File file;
      ASSERT_EQ(LM_bv_boutput(file.stream, bv.get(), &status), 0);
      file.rewind();
      const auto fresh = own(LM_bv_binput(file.stream, nullptr, &status));
      EXPECT_EQ(status, 0);
      expectIs(fresh.get(), m, kind);
      file.rewind();
      BVEC* const old = make(LM_BV_BLOC, models(9)[2]).release();
      const auto into = own(LM_bv_binput(file.stream, old, &status));
      EXPECT_EQ(into.get() == old, kind == LM_BV_BLOC);
      expectIs(into.get(), m, kind);
    });
}

TEST_F(BitVectors, BinaryFormWordByWord) {
  File bloc, codage;
  LM_bv_boutput(bloc.stream, make(LM_BV_BLOC, {true, true, false, true}).get(), &status);
  EXPECT_THAT(bloc.words(), ElementsAre(1, 4, 2, 0, 3, 1, 3));
  LM_bv_boutput(codage.stream, make(LM_BV_CODAGE, {true, true, false, true}).get(), &status);
  EXPECT_THAT(codage.words(), ElementsAre(2, 4, 1, 11));
}

TEST_F(BitVectors, WrongFilesAreRefused) {
  auto old = make(LM_BV_BLOC, {true, false});
  const auto read = [&](const std::vector<int>& words) {
    File file;
    file.write(words);
    return LM_bv_binput(file.stream, old.get(), &status);
  };
  EXPECT_FAILS(7, read({}));
  EXPECT_FAILS(7, read({1, 4}));
  EXPECT_FAILS(7, read({1, 4, 2, 0, 3, 1}));
  EXPECT_FAILS(7, read({4, 2000000000, 2000000000})); // a count that no file holds
  EXPECT_FAILS(6, read({0, 4, 0}));
  EXPECT_FAILS(6, read({6, 4, 0}));
  EXPECT_FAILS(6, read({1, -1, 0}));
  EXPECT_FAILS(6, read({1, 4, -1}));
  EXPECT_FAILS(6, read({1, 4, 5}));
  EXPECT_FAILS(6, read({1, 4, 1, 2, 4}));       // past the end
  EXPECT_FAILS(6, read({1, 4, 1, 2, 1}));       // backwards
  EXPECT_FAILS(6, read({1, 9, 2, 4, 1, 5, 2})); // out of order
  EXPECT_FAILS(6, read({1, 9, 2, 4, 6, 6, 6})); // starts, then ends: the second adds nothing
  EXPECT_FAILS(6, read({2, 4, 2, 0, 0}));
  EXPECT_FAILS(6, read({2, 4, 1, 16})); // a bit past the end
  EXPECT_FAILS(6, read({3, 4, 2, 1, 1}));
  EXPECT_FAILS(6, read({3, 4, 1, 4}));
  EXPECT_FAILS(6, read({4, 4, 3, 1, 1, 1}));
  EXPECT_FAILS(6, read({5, 4, 1}));
  EXPECT_FALSE(LM_bv_binput(nullptr, nullptr, &status));
  EXPECT_EQ(status, -1);
  expectIs(old.get(), {true, false}, LM_BV_BLOC);
  EXPECT_EQ(LM_bv_boutput(nullptr, old.get(), &status), -1);
  EXPECT_EQ(status, -1);
  File file;
  EXPECT_EQ(LM_bv_boutput(file.stream, nullptr, &status), -1);
}

TEST_F(BitVectors, AreWrittenForPeople) {
  const auto bv = make(LM_BV_IVEC, {true, true, false, true});
  const auto said = support::capture([&] {
    LM_bv_print(nullptr, bv.get());
    LM_bv_on_print(nullptr, bv.get());
    LM_bv_off_print(nullptr, bv.get());
    LM_bv_print(nullptr, nullptr);
    std::fflush(stdout);
  });
  EXPECT_EQ(said.out, "Bit vector: kind ivec, dim 4, 3 on\n0 - 1\n3 - 3\n0 1 3 \n2 \n"
                      "NULL bit vector\n");
}

} // namespace

#include "kernel/records.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>

#include <zarel/bf.h>

#include "support/Capture.h"
#include "support/FailingAllocation.h"

using namespace kernel;
using testing::Each;
using testing::ElementsAre;

namespace {

using Map = std::map<int, double>;

// The entries of a tree, and that its links are those of a search tree.
void collect(const VECM_NODE* node, int low, int high, Map& to) {
  if (!node) return;
  ASSERT_GT(node->index, low);
  ASSERT_LT(node->index, high);
  to[node->index] = node->value;
  collect(node->left, low, node->index, to);
  collect(node->right, node->index, high, to);
}
Map entries(const VECM* v) {
  Map m;
  collect(v->root, -1, v->dim, m);
  EXPECT_EQ(static_cast<int>(m.size()), v->nb);
  return m;
}
std::vector<int> words(const VECMW* v) {
  return v->words ? std::vector<int>(v->words, v->words + v->nw) : std::vector<int>();
}

// Kept entries and zeros in many patterns: all of length 0 to 9.
std::vector<std::vector<double>> patterns() {
  std::vector<std::vector<double>> all;
  for (int n = 0; n < 10; ++n)
    for (int bits = 0; bits < 1 << n; ++bits) {
      std::vector<double> x(static_cast<std::size_t>(n));
      for (int i = 0; i < n; ++i)
        x[static_cast<std::size_t>(i)] = bits >> i & 1 ? i + 1.0 : 0.0;
      all.push_back(x);
    }
  return all;
}

class Morse : public Kernel {
protected:
  Own<VECM> tree(const std::vector<double>& x) { return own(LM_vec2vecm(vec(x).get(), &status)); }
  Own<VECMP> packed(const std::vector<double>& x) {
    return own(LM_vec2vecmp(vec(x).get(), &status));
  }
  Own<VECMW> windows(const std::vector<double>& x) {
    return own(LM_vec2vecmw(vec(x).get(), &status));
  }
};

TEST_F(Morse, CreationAndItsErrors) {
  const auto v = own(LM_vecm_get(5, 0, &status));
  EXPECT_EQ(v->dim, 5);
  EXPECT_EQ(v->max_dim, 5);
  EXPECT_EQ(v->nb, 0);
  EXPECT_EQ(v->max_nb, 1);
  EXPECT_EQ(v->root, nullptr);
  const auto p = own(LM_vecmp_get(5, 2, &status));
  EXPECT_EQ(p->nb, 2);
  EXPECT_EQ(p->idx[1], 0);
  EXPECT_EQ(p->val[1], 0.0);
  EXPECT_NE(own(LM_vecmp_get(0, 0, &status))->idx, nullptr);
  EXPECT_FAILS(20, LM_vecm_get(-1, 0, &status));
  EXPECT_FAILS(2, LM_vecm_get(3, -1, &status));
  EXPECT_FAILS(2, LM_vecm_get(3, 4, &status));
  EXPECT_FAILS(20, LM_vecmp_get(-1, 0, &status));
  EXPECT_FAILS(2, LM_vecmp_get(3, 4, &status));
  vecm_free(nullptr);
  vecmp_free(nullptr);
  vecmw_free(nullptr);
}

TEST_F(Morse, TreeBehavesAsAMap) {
  Random random(20);
  for (const int dim : {1, 7, 300}) {
    auto v = own(LM_vecm_get(dim, 0, &status));
    Map model;
    for (int step = 0; step < 3 * dim; ++step) {
      const int i = random.below(dim), add = random.below(2);
      const double x = random();
      ASSERT_EQ(LM_vecm_addval(v.get(), i, x, add), 0);
      model[i] = add ? model[i] + x : x;
    }
    EXPECT_EQ(entries(v.get()), model);
    for (int i = -1; i <= dim; ++i)
      ASSERT_EQ(LM_vecm_getval(v.get(), i, &status), model.count(i) ? model[i] : 0.0);
    EXPECT_LE(v->max_nb, dim);
    LM_vecm_scal(v.get(), -2, &status);
    for (auto& [i, x] : model)
      x *= -2;
    EXPECT_EQ(entries(v.get()), model);
    const int room = v->max_nb;
    EXPECT_EQ(LM_vecm_zero(v.get(), &status), v.get());
    EXPECT_EQ(v->nb, 0);
    EXPECT_EQ(v->root, nullptr);
    EXPECT_EQ(v->max_nb, room);
  }
}

TEST_F(Morse, SameIndexTwiceKeepsOneNode) {
  auto v = own(LM_vecm_get(5, 0, &status));
  LM_vecm_addval(v.get(), 3, 1.0, 0);
  LM_vecm_addval(v.get(), 3, 7.0, 0);
  EXPECT_EQ(v->nb, 1);
  EXPECT_EQ(LM_vecm_getval(v.get(), 3, &status), 7.0);
  LM_vecm_addval(v.get(), 3, 1.0, 1);
  EXPECT_EQ(LM_vecm_getval(v.get(), 3, &status), 8.0);
}

TEST_F(Morse, BlockGrowsByTenUpToTheLength) {
  auto v = own(LM_vecm_get(25, 2, &status));
  std::vector<int> rooms;
  for (int i = 0; i < 25; ++i) {
    LM_vecm_addval(v.get(), i, 1.0, 0);
    rooms.push_back(v->max_nb);
  }
  EXPECT_EQ(rooms[1], 2);
  EXPECT_EQ(rooms[2], 12);
  EXPECT_EQ(rooms[12], 22);
  EXPECT_EQ(rooms[24], 25);
}

TEST_F(Morse, InsertionOutsideIsMinusOneWithoutAReport) {
  auto v = own(LM_vecm_get(5, 0, &status));
  EXPECT_EQ(LM_vecm_addval(v.get(), 5, 1.0, 0), -1);
  EXPECT_EQ(LM_vecm_addval(v.get(), -1, 1.0, 0), -1);
  EXPECT_EQ(LM_error_count(), 0);
  EXPECT_EQ(LM_vecm_addval(nullptr, 0, 1.0, 0), -1);
  EXPECT_EQ(lastError(), 8);
}

// The room is told to be there after a growth that failed, but nothing is written past the block.
TEST_F(Morse, FailedGrowthRaisesMaxAndIsTriedAgain) {
  auto v = own(LM_vecm_get(100, 1, &status));
  LM_vecm_addval(v.get(), 50, 1.0, 0);
  {
    const support::FailingAllocation failing(1);
    EXPECT_EQ(LM_vecm_addval(v.get(), 60, 2.0, 0), -1);
  }
  EXPECT_EQ(lastError(), 3);
  EXPECT_EQ(v->max_nb, 11);
  EXPECT_EQ(v->nb, 1);
  for (int i = 0; i < 30; ++i)
    EXPECT_EQ(LM_vecm_addval(v.get(), i, i, 0), 0);
  EXPECT_EQ(entries(v.get()).size(), 31u);
}

TEST_F(Morse, EntriesAreKeptAboveTheirThreshold) {
  EXPECT_EQ(entries(tree({1, 1e-17, 0}).get()), (Map{{0, 1}}));
  EXPECT_EQ(entries(tree({1, 1.1e-16, -1e-16}).get()), (Map{{0, 1}, {1, 1.1e-16}}));
  const auto zeros = tree({0, 0, 0});
  EXPECT_EQ(zeros->nb, 0);
  EXPECT_EQ(zeros->max_nb, 1);
  EXPECT_EQ(packed({0, 0})->nb, 0);
  EXPECT_EQ(windows({0, 0})->words, nullptr);
  EXPECT_EQ(windows({0, 0})->val, nullptr);
  EXPECT_EQ(windows({})->dim, 0);
}

TEST_F(Morse, WordsDescribeRuns) {
  const auto a = windows({1, 2, 0, 3, 4, 5});
  EXPECT_THAT(words(a.get()), ElementsAre(0, 2, -3, 3));
  EXPECT_EQ(a->first_run, 1);
  EXPECT_EQ(a->nb, 5);
  const auto b = windows({1, 0, 2, 0});
  EXPECT_THAT(words(b.get()), ElementsAre(0, 2));
  EXPECT_EQ(b->first_run, 0);
  EXPECT_EQ(b->nb, 2);
  EXPECT_EQ(LM_vecmw_sizebloc(a.get(), &status), 2.5);
  EXPECT_EQ(LM_vecmw_sizebloc(b.get(), &status), 1.0);
  EXPECT_EQ(LM_vecmw_sizebloc(windows({0}).get(), &status), 0.0);
}

TEST_F(Morse, AllConversionsKeepEveryPattern) {
  for (const auto& x : patterns()) {
    const auto t = tree(x);
    const auto p = packed(x);
    const auto w = windows(x);
    ASSERT_EQ(list(own(LM_vecm2vec(t.get(), nullptr, &status)).get()), x);
    ASSERT_EQ(list(own(LM_vecmw2vec(w.get(), nullptr, &status)).get()), x);
    const auto fromTree = own(LM_vecm2vecmp(t.get(), &status));
    ASSERT_EQ(std::vector<int>(fromTree->idx, fromTree->idx + fromTree->nb),
              std::vector<int>(p->idx, p->idx + p->nb));
    ASSERT_EQ(entries(own(LM_vecmp2vecm(p.get(), &status)).get()), entries(t.get()));
    ASSERT_EQ(entries(own(LM_vecmw2vecm(w.get(), &status)).get()), entries(t.get()));
    const auto again = own(LM_vecmp2vecmw(p.get(), &status));
    ASSERT_EQ(words(again.get()), words(w.get()));
    ASSERT_EQ(again->first_run, w->first_run);
    ASSERT_EQ(list(own(LM_vecmw2vec(again.get(), nullptr, &status)).get()), x);
  }
}

TEST_F(Morse, PackingATreeOfAnyShapeAscends) {
  auto v = own(LM_vecm_get(100000, 0, &status));
  // a zigzag, then a long chain to the left
  for (int i = 0; i < 500; ++i)
    LM_vecm_addval(v.get(), i % 2 ? 50000 + i : 50000 - i, i, 0);
  for (int i = 3000; i > 0; --i)
    LM_vecm_addval(v.get(), i, i, 0);
  const Map before = entries(v.get());
  const auto p = own(LM_vecm2vecmp(v.get(), &status));
  Map got;
  for (int k = 0; k < p->nb; ++k) {
    ASSERT_GT(p->idx[k], k > 0 ? p->idx[k - 1] : -1);
    got[p->idx[k]] = p->val[k];
  }
  EXPECT_EQ(got, before);
  EXPECT_EQ(entries(v.get()), before); // the walk puts all links back
}

TEST_F(Morse, UnorderedPackedVectorsAreInserted) {
  auto p = own(LM_vecmp_get(10, 4, &status));
  const int idx[] = {7, 2, 7, 99};
  const double val[] = {1, 2, 3, 4};
  std::copy(idx, idx + 4, p->idx);
  std::copy(val, val + 4, p->val);
  EXPECT_EQ(entries(own(LM_vecmp2vecm(p.get(), &status)).get()), (Map{{2, 2}, {7, 3}}));
  EXPECT_FAILS(2, LM_vecmp2vecmw(p.get(), &status));
}

TEST_F(Morse, CopiesAreWholeAndTheirOwn) {
  auto v = own(LM_vecm_get(50, 0, &status));
  for (const int i : {20, 10, 30, 5, 15, 40})
    LM_vecm_addval(v.get(), i, i, 0);
  EXPECT_EQ(LM_vecm_copy(v.get(), v.get(), &status), v.get());
  for (VECM* const target : {static_cast<VECM*>(nullptr), tree({1, 2, 3}).release(),
                             tree(std::vector<double>(30, 1.0)).release()}) {
    auto copy = own(LM_vecm_copy(v.get(), target, &status));
    EXPECT_TRUE(!target || copy.get() == target);
    EXPECT_EQ(entries(copy.get()), entries(v.get()));
    EXPECT_EQ(copy->root->left->index, 10); // the shape too
    EXPECT_EQ(copy->dim, 50);
    LM_vecm_addval(copy.get(), 20, -1, 0);
    EXPECT_EQ(LM_vecm_getval(v.get(), 20, &status), 20);
  }
  const std::vector<double> x = {0, 2, 3, 0, 5};
  const auto p = packed(x);
  const auto w = windows(x);
  const auto pc = own(LM_vecmp_copy(p.get(), packed({1}).release(), &status));
  EXPECT_EQ(pc->nb, 3);
  EXPECT_EQ(pc->idx[2], 4);
  const auto wc = own(LM_vecmw_copy(w.get(), nullptr, &status));
  EXPECT_EQ(list(own(LM_vecmw2vec(wc.get(), nullptr, &status)).get()), x);
  EXPECT_EQ(LM_vecmp_copy(p.get(), p.get(), &status), p.get());
  EXPECT_EQ(LM_vecmw_copy(w.get(), w.get(), &status), w.get());
}

TEST_F(Morse, DaxpyAddsTrees) {
  const auto x = tree({1, 0, 3, 0});
  auto y = tree({10, 20, 0, 0});
  EXPECT_EQ(LM_vecm_daxpy(x.get(), 2, y.get(), &status), y.get());
  EXPECT_EQ(entries(y.get()), (Map{{0, 12}, {1, 20}, {2, 6}}));
  LM_vecm_daxpy(x.get(), 0.9e-14, y.get(), &status);
  EXPECT_EQ(entries(y.get()), (Map{{0, 12}, {1, 20}, {2, 6}}));
  LM_vecm_daxpy(y.get(), 0.5, y.get(), &status);
  EXPECT_EQ(entries(y.get()), (Map{{0, 18}, {1, 30}, {2, 9}}));
  EXPECT_FAILS(1, LM_vecm_daxpy(tree({1}).get(), 1, y.get(), &status));
  EXPECT_FAILS(8, LM_vecm_daxpy(nullptr, 1, y.get(), &status));
}

TEST_F(Morse, ProductsAndNormsMatchFullVectors) {
  Random random(21);
  for (int trial = 0; trial < 20; ++trial) {
    const int n = 1 + random.below(60);
    std::vector<double> x(n), y(n), z(n);
    double xy = 0, zy = 0, norm = 0;
    for (int i = 0; i < n; ++i) {
      x[i] = random.below(3) ? 0 : random();
      y[i] = random.below(4) ? random() : 0;
      z[i] = random();
      xy += x[i] * y[i];
      zy += z[i] * y[i];
      norm += y[i] * y[i];
    }
    const auto full = vec(z);
    EXPECT_NEAR(LM_pscal_vecm(tree(x).get(), tree(y).get(), &status), xy, 1e-13);
    EXPECT_NEAR(LM_pscal_vecm(tree(y).get(), tree(x).get(), &status), xy, 1e-13);
    EXPECT_NEAR(LM_pscal_vvecm(full.get(), tree(y).get(), &status), zy, 1e-13);
    EXPECT_NEAR(LM_pscal_vvecmp(full.get(), packed(y).get(), &status), zy, 1e-13);
    EXPECT_NEAR(LM_pscal_vvecmw(full.get(), windows(y).get(), &status), zy, 1e-13);
    EXPECT_NEAR(LM_vecm_norm2(tree(y).get(), &status), std::sqrt(norm), 1e-13);
    EXPECT_NEAR(LM_vecmp_norm2(packed(y).get(), &status), std::sqrt(norm), 1e-13);
    EXPECT_NEAR(LM_vecmw_norm2(windows(y).get(), &status), std::sqrt(norm), 1e-13);
    const auto check = [&](VEC* result) {
      const auto out = own(result);
      for (int i = 0; i < n; ++i)
        EXPECT_NEAR(out->ve[i], z[i] - 0.5 * y[i], 1e-15);
    };
    check(LM_vvecm_mltadd(full.get(), tree(y).get(), -0.5, nullptr, 0, nullptr, &status));
    check(LM_vvecmp_mltadd(full.get(), packed(y).get(), -0.5, nullptr, 0, nullptr, &status));
    check(LM_vvecmw_mltadd(full.get(), windows(y).get(), -0.5, nullptr, 0, nullptr, &status));
    auto inPlace = vec(z);
    EXPECT_EQ(
        LM_vvecmp_mltadd(inPlace.get(), packed(y).get(), 2, inPlace.get(), 0, nullptr, &status),
        inPlace.get());
    EXPECT_NEAR(inPlace->ve[n - 1], z[n - 1] + 2 * y[n - 1], 1e-15);
  }
}

TEST_F(Morse, NullAndSizesAreTested) {
  const auto full = vec({1, 2});
  const auto t = tree({1});
  const auto p = packed({1});
  const auto w = windows({1});
  EXPECT_EQ(LM_vecm_norm2(nullptr, &status), -1.0);
  EXPECT_EQ(status, -1);
  EXPECT_EQ(LM_vecmp_norm2(nullptr, &status), -1.0);
  EXPECT_EQ(LM_vecmw_norm2(nullptr, &status), -1.0);
  EXPECT_FAILS(1, LM_pscal_vvecm(full.get(), t.get(), &status));
  EXPECT_FAILS(1, LM_pscal_vvecmp(full.get(), p.get(), &status));
  EXPECT_FAILS(1, LM_pscal_vvecmw(full.get(), w.get(), &status));
  EXPECT_FAILS(1, LM_vvecm_mltadd(full.get(), t.get(), 1, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(1, LM_vvecmp_mltadd(full.get(), p.get(), 0, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_vvecmw_mltadd(nullptr, w.get(), 1, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_vec2vecm(nullptr, &status));
  EXPECT_FAILS(8, LM_vecm2vec(nullptr, nullptr, &status));
  EXPECT_FAILS(8, LM_vecm_copy(nullptr, nullptr, &status));
  EXPECT_FAILS(8, LM_vvecmp_daxpy_idx(nullptr, nullptr, 0, 1, nullptr, 0, nullptr, &status));
}

TEST_F(Morse, AlphaZeroOrNothingStoredGivesACopy) {
  const auto full = vec({1, 2});
  const double nan = std::nan("");
  const auto s = packed({0, 1});
  s->val[0] = nan;
  EXPECT_THAT(
      list(own(LM_vvecmp_mltadd(full.get(), s.get(), 0, nullptr, 0, nullptr, &status)).get()),
      ElementsAre(1, 2));
  EXPECT_THAT(
      list(own(LM_vvecm_mltadd(full.get(), tree({0, 0}).get(), 5, nullptr, 0, nullptr, &status))
               .get()),
      ElementsAre(1, 2));
  auto out = vec({7, 8});
  LM_vvecmw_mltadd2(0, full.get(), windows({0, 3}).get(), 2, out.get(), 0, nullptr, &status);
  EXPECT_THAT(list(out.get()), ElementsAre(7, 2 + 2 * 3)); // index 0 is not stored
}

// Both forms of the indexed addition do the same.
class Indexed : public Morse {
protected:
  std::vector<double> run(const std::vector<double>& s, const IVEC* idx, int add, double alpha,
                          const std::vector<double>& start) {
    auto a = vec(start), b = vec(start);
    LM_vvecmp_daxpy_idx(idx, packed(s).get(), add, alpha, a.get(), 0, nullptr, &status);
    LM_vvecmw_daxpy_idx(idx, windows(s).get(), add, alpha, b.get(), 0, nullptr, &status);
    EXPECT_EQ(list(a.get()), list(b.get()));
    return list(a.get());
  }
};

TEST_F(Indexed, WithoutIndicesTheStoredPlacesAreSet) {
  const std::vector<double> s = {0, 2, 3, 0}, start = {9, 9, 9, 9};
  EXPECT_THAT(run(s, nullptr, 0, 10, start), ElementsAre(9, 20, 30, 9));
  EXPECT_THAT(run(s, nullptr, 1, 10, start), ElementsAre(9, 29, 39, 9));
  EXPECT_THAT(run({0, 0, 0, 0}, nullptr, 1, 10, start), Each(9));
}

TEST_F(Indexed, FactorsNearOneAreOne) {
  const double x = 1e20;
  const std::vector<double> s = {x}, start = {0};
  EXPECT_EQ(run(s, nullptr, 0, 1 + 9e-15, start)[0], x);
  EXPECT_EQ(run(s, nullptr, 0, -1 + 9e-15, start)[0], -x);
  EXPECT_NE(run(s, nullptr, 0, 1 + 2e-14, start)[0], x);
}

TEST_F(Indexed, WantedIndicesFillTheHead) {
  const std::vector<double> s = {0, 1, 2, 0, 4, 5, 0}, start(7, 9);
  const auto idx = ivec({0, 2, 3, 5, 6});
  EXPECT_THAT(run(s, idx.get(), 0, 10, start), ElementsAre(9, 20, 9, 50, 9, 9, 9));
  EXPECT_THAT(run(s, idx.get(), 1, 10, start), ElementsAre(9, 29, 9, 59, 9, 9, 9));
  EXPECT_THAT(run(s, ivec({}).get(), 0, 10, start), Each(9));
}

// The tests of the ends are not strict: sharing nothing but one end is taken for nothing.
TEST_F(Indexed, AnOverlapOfOneIndexIsLeftOut) {
  const std::vector<double> s = {0, 0, 2, 3, 4, 0, 0}, start(7, 9);
  EXPECT_THAT(run(s, ivec({4, 5}).get(), 0, 1, start), Each(9));
  EXPECT_THAT(run(s, ivec({0, 2}).get(), 0, 1, start), Each(9));
  EXPECT_THAT(run(s, ivec({3, 4}).get(), 0, 1, start), ElementsAre(3, 4, 9, 9, 9, 9, 9));
  EXPECT_THAT(run({0, 0, 2, 0, 0, 0, 0}, ivec({2}).get(), 0, 1, start), Each(9));
  EXPECT_FAILS(1, LM_vvecmp_daxpy_idx(ivec({0, 1, 2}).get(), packed({1, 2}).get(), 0, 1, nullptr, 0,
                                      nullptr, &status));
}

TEST_F(Morse, ShareOfRuns) {
  double mean = 9;
  const auto ratio = [&](const std::vector<double>& x) {
    return LM_v_RatioBloc(vec(x).get(), &mean, &status);
  };
  EXPECT_EQ(ratio({0, 1, 0, 1, 1, 1, 0}), 0.75); // one alone, three in a run
  EXPECT_EQ(mean, 4.0 / 3);                      // 1 for the lone one, 2 for the run
  EXPECT_EQ(ratio({1, 0, 0}), 0.0);
  EXPECT_EQ(mean, 0.0); // index 0 is not counted
  EXPECT_EQ(ratio({1, 1, 1}), 1.0);
  EXPECT_EQ(mean, 3.0); // only its second entry is
  EXPECT_EQ(ratio({0, 0}), 1.0);
  EXPECT_EQ(mean, 0.0);
  EXPECT_EQ(ratio({}), 1.0);
  EXPECT_FAILS(8, LM_v_RatioBloc(nullptr, &mean, &status));
}

TEST_F(Morse, SharesOfStoredEntries) {
  EXPECT_EQ(v_RateCompletion(vec({1, -3, 2, 0}).get(), 1.0, &status), 0.5);
  EXPECT_EQ(vecm_RateCompletion(tree({1, 0, 0, 2}).get(), &status), 0.5);
  EXPECT_EQ(vecmp_RateCompletion(packed({1, 0, 0, 0}).get(), &status), 0.25);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(v_RateCompletion(vec({}).get(), 1.0, &status), 0.0);
  EXPECT_EQ(status, -1);
}

TEST_F(Morse, TextForms) {
  const auto said = support::capture([&] {
    vecm_output(nullptr, tree({0, 1.5}).get());
    vecmp_output(nullptr, packed({0, 0}).get());
    vecmw_output(nullptr, windows({1, 2}).get());
    vecm_output(nullptr, nullptr);
    std::fflush(stdout);
  });
  EXPECT_EQ(said.out,
            "Morse Vector :\nDim = 2, Number of effective values = 1\n"
            "------------------------------\n\n[1] : 1.5\n------------------------------\n\n"
            "Morse Packed Vector :\nDim = 2, Number of effective values = 0\n"
            "Morse Window Vector :\nDim = 2, Number of effective values = 2\n"
            "------------------------------\n\n[0] : 1\n[1] : 2\n------------------------------\n\n"
            "NULL vector\n");
}

// Files.
struct File {
  FILE* stream = std::tmpfile();
  ~File() { std::fclose(stream); }
  std::string bytes() {
    std::string all(100000, '\0');
    std::rewind(stream);
    all.resize(std::fread(&all[0], 1, all.size(), stream));
    return all;
  }
};

std::string raw(std::initializer_list<int> head) {
  std::string s;
  for (const int i : head)
    s.append(reinterpret_cast<const char*>(&i), 4);
  return s;
}
std::string raw(double x) {
  return std::string(reinterpret_cast<const char*>(&x), 8);
}

TEST_F(Morse, BinaryFormsByteByByte) {
  const std::vector<double> x = {1, 2, 0, 4};
  const std::string asTree = raw({4, 3, 0}) + raw(1) + raw({1}) + raw(2) + raw({3}) + raw(4);
  const std::string asPacked = raw({4, 3, 0, 1, 3}) + raw(1) + raw(2) + raw(4);
  File a, b, c, d, e;
  EXPECT_EQ(vecm_boutput(a.stream, tree(x).get(), &status), 0);
  EXPECT_EQ(a.bytes(), asTree);
  EXPECT_EQ(v_boutput_as_vecm(b.stream, vec(x).get(), &status), 0);
  EXPECT_EQ(b.bytes(), asTree);
  EXPECT_EQ(vecmp_boutput(c.stream, packed(x).get(), &status), 0);
  EXPECT_EQ(c.bytes(), asPacked);
  EXPECT_EQ(vecm_boutput_as_vecmp(d.stream, tree(x).get(), &status), 0);
  EXPECT_EQ(d.bytes(), asPacked);
  EXPECT_EQ(vecmw_boutput(e.stream, windows(x).get(), &status), 0);
  EXPECT_EQ(e.bytes(), raw({4, 3, 3, 1, 0, 2, 3}) + raw(1) + raw(2) + raw(4));
  File none;
  EXPECT_EQ(vecmp_boutput(none.stream, packed({0, 0}).get(), &status), 0);
  EXPECT_EQ(none.bytes(), raw({2, 0}));
}

TEST_F(Morse, BinaryFormsComeBack) {
  for (const auto& x : patterns()) {
    if (x.empty()) continue;
    File a, b, c;
    vecm_boutput(a.stream, tree(x).get(), &status);
    vecmp_boutput(b.stream, packed(x).get(), &status);
    vecmw_boutput(c.stream, windows(x).get(), &status);
    for (FILE* const f : {a.stream, b.stream, c.stream})
      std::rewind(f);
    const auto t = own(LM_vecm_binput(a.stream, nullptr, &status));
    ASSERT_EQ(list(own(LM_vecm2vec(t.get(), nullptr, &status)).get()), x);
    ASSERT_EQ(t->max_nb, std::max(t->nb, 1));
    VECMP* const oldPacked = packed({1, 2}).release();
    const auto p = own(LM_vecmp_binput(b.stream, oldPacked, &status));
    ASSERT_EQ(p.get(), oldPacked);
    ASSERT_EQ(entries(own(LM_vecmp2vecm(p.get(), &status)).get()), entries(t.get()));
    VECMW* const oldWindows = windows({1, 2}).release();
    const auto w = own(LM_vecmw_binput(c.stream, oldWindows, &status));
    ASSERT_EQ(list(own(LM_vecmw2vec(w.get(), nullptr, &status)).get()), x);
    std::rewind(a.stream);
    VECM* const oldTree = tree({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}).release();
    const auto again = own(LM_vecm_binput(a.stream, oldTree, &status));
    ASSERT_EQ(again.get(), oldTree);
    ASSERT_EQ(again->dim, static_cast<int>(x.size()));
    ASSERT_EQ(entries(again.get()), entries(t.get()));
  }
}

TEST_F(Morse, LongTreesPassTheStageInBothByteOrders) {
  std::vector<double> x(1000);
  Random(22).fill(x.data(), 1000);
  for (const bool reversed : {false, true}) {
    File file;
    if (reversed) AddFileException(file.stream);
    ASSERT_EQ(vecm_boutput(file.stream, tree(x).get(), &status), 0);
    std::rewind(file.stream);
    const auto back = own(LM_vecm_binput(file.stream, nullptr, &status));
    EXPECT_EQ(list(own(LM_vecm2vec(back.get(), nullptr, &status)).get()), x);
    if (!reversed) continue;
    RemFileException(file.stream);
    EXPECT_EQ(file.bytes().substr(0, 12), std::string("\0\0\3\xe8\0\0\3\xe8\0\0\0\0", 12));
  }
}

TEST_F(Morse, WritersRefuse) {
  File file;
  EXPECT_EQ(vecm_boutput(nullptr, tree({1}).get(), &status), -1);
  EXPECT_EQ(status, -1);
  EXPECT_EQ(vecm_boutput(file.stream, nullptr, &status), -1);
  EXPECT_EQ(vecm_boutput(file.stream, tree({}).get(), &status), -1);
  EXPECT_EQ(vecmp_boutput(file.stream, packed({}).get(), &status), -1);
  EXPECT_EQ(vecmw_boutput(file.stream, windows({}).get(), &status), -1);
  EXPECT_EQ(v_boutput_as_vecm(file.stream, vec({}).get(), &status), -1);
  EXPECT_EQ(vecm_boutput_as_vecmp(nullptr, tree({1}).get(), &status), -1);
  EXPECT_EQ(file.bytes(), "");
  FILE* const full = std::fopen("/dev/full", "wb");
  if (full) {
    EXPECT_EQ(vecm_boutput(full, tree({1}).get(), &status), -1);
    EXPECT_EQ(status, -1);
    EXPECT_EQ(vecmp_boutput(full, packed({1}).get(), &status), -1);
    std::fclose(full);
  }
}

TEST_F(Morse, WrongFilesAreRefused) {
  auto t = tree({5, 6});
  auto p = packed({5, 6});
  auto w = windows({5, 6});
  const auto read = [&](const std::string& bytes, auto reader, auto& old) {
    File file;
    std::fwrite(bytes.data(), 1, bytes.size(), file.stream);
    std::fflush(file.stream);
    std::rewind(file.stream);
    return reader(file.stream, old.get(), &status);
  };
  const auto both = [&](int error, const std::string& bytes) {
    EXPECT_FAILS(error, read(bytes, LM_vecm_binput, t));
    EXPECT_FAILS(error, read(bytes, LM_vecmp_binput, p));
  };
  both(7, "");
  both(7, raw({5}));
  both(7, raw({5, 1}));
  both(7, raw({5, 1, 2}) + "abc");
  both(7, raw({2000000000, 2000000000}));
  both(6, raw({0, 0}));
  both(6, raw({-5, 0}));
  both(6, raw({5, -1}));
  both(6, raw({5, 6}));
  both(6, raw({5, 1, 5}) + raw(1.0));
  both(6, raw({5, 1, -1}) + raw(1.0));
  EXPECT_FAILS(6, read(raw({5, 2, 3}) + raw(1) + raw({3}) + raw(1), LM_vecm_binput, t));
  const auto windowError = [&](int error, const std::string& bytes) {
    EXPECT_FAILS(error, read(bytes, LM_vecmw_binput, w));
  };
  windowError(7, raw({9, 2, 2, 0}));
  windowError(7, raw({9, 2, 2, 0, 1, 3}));
  windowError(6, raw({9, 2, 3, 0, 1, 2, 3})); // more words than values
  windowError(6, raw({9, 2, 0, 0}));          // none
  windowError(6, raw({9, 2, 2, 0, 3, 1}));    // backwards
  windowError(6, raw({9, 2, 2, 0, -8, 2}));   // past the end
  windowError(6, raw({9, 2, 1, 0, -3}));      // a run without its count
  windowError(6, raw({9, 2, 2, 0, -3, 1}));   // a run of one
  windowError(6, raw({9, 3, 2, 0, -3, 2}));   // values left over
  windowError(6, raw({9, 2, 2, 1, 4, 2}));    // a first run that is elsewhere
  windowError(6, raw({9, 2, 2, 0, -2147483647 - 1, 2}));
  windowError(6, raw({9, 2, 2, 1, 0, 2147483647}));
  EXPECT_FALSE(LM_vecm_binput(nullptr, nullptr, &status));
  EXPECT_EQ(status, -1);
  EXPECT_EQ(entries(t.get()), (Map{{0, 5}, {1, 6}}));
  EXPECT_EQ(p->val[1], 6);
  EXPECT_THAT(words(w.get()), ElementsAre(0, 2));
}

TEST_F(Morse, FailingAllocationsLeaveSourcesAlone) {
  const std::vector<double> x = {1, 2, 0, 4};
  const auto full = vec(x);
  const auto t = tree(x);
  const auto fails = [&](auto convert) {
    return support::forEachFailingAllocation([&] {
      const auto made = own(convert());
      const support::Unharmed unharmed;
      EXPECT_EQ(made == nullptr, status == -1);
      if (!made) {
        EXPECT_EQ(lastError(), 3);
      }
    });
  };
  EXPECT_EQ(fails([&] { return LM_vec2vecm(full.get(), &status); }), 2);
  EXPECT_EQ(fails([&] { return LM_vec2vecmp(full.get(), &status); }), 3);
  EXPECT_EQ(fails([&] { return LM_vec2vecmw(full.get(), &status); }), 3);
  EXPECT_EQ(fails([&] { return LM_vecm_copy(t.get(), nullptr, &status); }), 2);
  EXPECT_EQ(entries(t.get()), (Map{{0, 1}, {1, 2}, {3, 4}}));
}

} // namespace

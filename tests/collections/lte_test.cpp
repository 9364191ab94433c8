// Lists with a head.
#include <cstddef>

#include "collections/fixture.h"

namespace collections_test {

class Lte : public Collections {
protected:
  Lte() : list(LTE_creer(nullptr)) {}
  ~Lte() override { LTE_free(list, nullptr); }

  void hold(const std::vector<const char*>& texts) {
    int type = 0;
    for (const char* characters : texts)
      EXPECT_EQ(LTE_ins_fin(list, text(characters), type++), 0);
  }
  LIS* at(int index) const { return LIS_chercher_ieme(list->first, index); }
  std::string current() const {
    return list->current ? static_cast<const char*>(list->current->object) : "none";
  }

  LTE* list;
};

TEST_F(Lte, NewHeadIsEmpty) {
  int error = 7;
  LTE* const head = LTE_creer(&error);

  EXPECT_EQ(error, 0);
  EXPECT_EQ(head->count, 0);
  EXPECT_EQ(head->first, nullptr);
  EXPECT_EQ(head->last, nullptr);
  EXPECT_EQ(head->current, nullptr);
  LTE_free(head, nullptr);
}

TEST_F(Lte, InsertsBehindAndBeforeNodes) {
  EXPECT_EQ(LTE_ins(list, nullptr, text("b"), 1), 0) << "behind no node: at the start";
  EXPECT_EQ(LTE_ins_apres(list, nullptr, text("a"), 2), 0);
  EXPECT_EQ(LTE_ins_apres(list, list->last, text("d"), 3), 0);
  EXPECT_EQ(current(), "d");
  EXPECT_EQ(LTE_ins_avant(list, list->last, text("c"), 4), 0);
  EXPECT_EQ(current(), "c");
  EXPECT_EQ(LTE_ins_avant(list, list->first, text("_"), 5), 0);
  EXPECT_EQ(LTE_ins_avant(list, nullptr, text("^"), 6), 0) << "before no node: at the start";

  EXPECT_EQ(textsOf(list->first), (Texts{"^", "_", "a", "b", "c", "d"}));
  EXPECT_TRUE(isSound(list));
  EXPECT_EQ(at(4)->type, 4);
}

TEST_F(Lte, InAnEmptyListEveryInsertionIsTheFirst) {
  LIS stranger = {};
  EXPECT_EQ(LTE_ins_apres(list, &stranger, text("a"), 1), 0);
  EXPECT_TRUE(isSound(list));
  LTE* const other = LTE_creer(nullptr);
  LIS itsPrevious = {};
  stranger.previous = &itsPrevious;
  EXPECT_EQ(LTE_ins_avant(other, &stranger, text("a"), 1), 0);
  EXPECT_TRUE(isSound(other));
  EXPECT_EQ(other->count, 1);
  EXPECT_EQ(stranger.next, nullptr);
  EXPECT_EQ(itsPrevious.next, nullptr);
  LTE_free(other, nullptr);
}

TEST_F(Lte, InsertsAtBothEnds) {
  EXPECT_EQ(LTE_ins_debut(list, text("b"), 0), 0);
  EXPECT_EQ(LTE_ins_debut(list, text("a"), 0), 0);
  EXPECT_EQ(current(), "a");
  EXPECT_EQ(LTE_ins_fin(list, text("c"), 0), 0);
  EXPECT_EQ(current(), "c");

  EXPECT_EQ(textsOf(list->first), (Texts{"a", "b", "c"}));
  EXPECT_TRUE(isSound(list));
}

TEST_F(Lte, UniqueObjectsComeOnceAndAMatchBecomesCurrent) {
  hold({"a", "b"});
  int inserted = 7;
  char same[] = "a";

  EXPECT_EQ(LTE_ins_fin_unique(list, same, 0, &inserted, LIS_cmp_str), 0);
  EXPECT_EQ(inserted, 0);
  EXPECT_EQ(list->current, list->first);
  EXPECT_EQ(LTE_ins_fin_unique(list, text("c"), 0, &inserted, LIS_cmp_str), 0);
  EXPECT_EQ(inserted, 1);
  EXPECT_EQ(current(), "c");

  EXPECT_EQ(list->count, 3);
  EXPECT_TRUE(isSound(list));
}

TEST_F(Lte, AppendLinksTheNodesAndLeavesTheOtherHead) {
  hold({"a"});
  LTE* const other = LTE_creer(nullptr);
  LTE_ins_fin(other, text("x"), 0);
  LTE_ins_fin(other, text("y"), 0);
  LIS* const x = other->first;

  EXPECT_EQ(LTE_append(list, other), 0);

  EXPECT_EQ(textsOf(list->first), (Texts{"a", "x", "y"}));
  EXPECT_EQ(at(1), x) << "no copy";
  EXPECT_TRUE(isSound(list));
  EXPECT_EQ(other->count, 2);
  EXPECT_EQ(other->first, x);
  zarelmem_free(other, __FILE__, __LINE__);
}

// Linked again, they would go round for ever.
TEST_F(Lte, NodesThatWereAppendedAreNotAppendedAgain) {
  hold({"a"});
  LTE* const other = LTE_creer(nullptr);
  LTE_ins_fin(other, text("x"), 0);
  EXPECT_EQ(LTE_append(list, other), 0);
  EXPECT_EQ(LTE_append(list, other), -1);
  LTE_ins_fin(list, text("b"), 0);
  EXPECT_EQ(LTE_append(list, other), -1) << "behind other nodes too";
  LTE_sup_elt(list, at(0), nullptr);
  EXPECT_EQ(LTE_append(list, other), -1) << "and as the first ones";

  EXPECT_EQ(textsOf(list->first), (Texts{"x", "b"}));
  EXPECT_TRUE(isSound(list));
  EXPECT_EQ(errors(), Texts(3, "An argument is missing"));
  zarelmem_free(other, __FILE__, __LINE__);
}

TEST_F(Lte, AppendToAndOfAnEmptyList) {
  LTE* const other = LTE_creer(nullptr);
  EXPECT_EQ(LTE_append(list, other), 0);
  EXPECT_EQ(LTE_append(list, nullptr), 0);
  EXPECT_EQ(list->count, 0);
  LTE_ins_fin(other, text("x"), 0);
  EXPECT_EQ(LTE_append(list, other), 0);
  EXPECT_TRUE(isSound(list));
  EXPECT_EQ(list->count, 1);
  EXPECT_EQ(LTE_append(list, list), -1) << "a list cannot follow itself";
  LTE* const empty = LTE_creer(nullptr);
  EXPECT_EQ(LTE_append(list, empty), 0);
  EXPECT_EQ(textsOf(list->first), Texts{"x"});
  EXPECT_TRUE(isSound(list));
  EXPECT_EQ(LTE_append(empty, empty), -1) << "nor an empty one";
  LTE_free(empty, nullptr);
  zarelmem_free(other, __FILE__, __LINE__);
}

TEST_F(Lte, SearchesSetCurrent) {
  hold({"a", "b", "c", "b"});
  LIS* where = nullptr;

  EXPECT_EQ(LTE_chercher(list, "b", LIS_cmp_str, &where), 1);
  EXPECT_EQ(where, at(1));
  EXPECT_EQ(list->current, at(1));
  EXPECT_EQ(LTE_chercher(list, "z", LIS_cmp_str, &where), 0);
  EXPECT_EQ(where, nullptr);
  EXPECT_EQ(list->current, nullptr);
  EXPECT_EQ(LTE_chercher_element(list, at(2)), at(2));
  EXPECT_EQ(list->current, at(2));
  EXPECT_EQ(LTE_chercher_objet(list, "a", LIS_cmp_str), at(0));
  EXPECT_EQ(list->current, at(0));
  EXPECT_EQ(LTE_chercher_ieme(list, 3), list->last);
  EXPECT_EQ(list->current, list->last);
  EXPECT_EQ(LTE_chercher_ieme(list, 4), nullptr);
  EXPECT_EQ(list->current, nullptr);
  EXPECT_EQ(LTE_chercher_type(list, 2), at(2));
  EXPECT_EQ(list->current, at(2));
  EXPECT_EQ(LTE_exist(list, "a", LIS_cmp_str), 1);
  EXPECT_EQ(LTE_exist(list, "z", LIS_cmp_str), 0);
  EXPECT_EQ(list->current, at(2)) << "a question is no search";
}

TEST_F(Lte, CountsAllMatchingAndTyped) {
  hold({"a", "b", "a"});

  EXPECT_EQ(LTE_length(list), 3);
  EXPECT_EQ(LTE_length_type(list, -1), 3);
  EXPECT_EQ(LTE_length_type(list, 1), 1);
  EXPECT_EQ(LTE_length_cmp(list, "a", LIS_cmp_str), 2);
}

TEST_F(Lte, RemovalKeepsTheHeadRight) {
  hold({"a", "b", "c"});

  EXPECT_EQ(LTE_sup_elt(list, list->last, nullptr), 0);
  EXPECT_TRUE(isSound(list));
  EXPECT_EQ(current(), "none") << "the last insertion is gone";
  LTE_chercher(list, "b", LIS_cmp_str, nullptr);
  EXPECT_EQ(LTE_sup_objet(list, "a", LIS_cmp_str, nullptr), 0);
  EXPECT_TRUE(isSound(list));
  EXPECT_EQ(current(), "b");
  EXPECT_EQ(LTE_sup_elt(list, list->first, nullptr), 0);
  EXPECT_TRUE(isSound(list));
  EXPECT_EQ(list->count, 0);
}

TEST_F(Lte, RemovingAStrangerChangesNothing) {
  hold({"a"});
  LIS stranger = {};

  EXPECT_EQ(LTE_sup_elt(list, &stranger, nullptr), 0);
  EXPECT_EQ(LTE_sup_objet(list, "z", LIS_cmp_str, nullptr), 0);

  EXPECT_EQ(list->count, 1);
  EXPECT_EQ(current(), "a");
}

TEST_F(Lte, NullHeadIsReportedByChangesAndEmptyForQuestions) {
  LIS* where = nullptr;
  int inserted = 7;
  EXPECT_EQ(LTE_ins(nullptr, nullptr, nullptr, 0), -1);
  EXPECT_EQ(LTE_ins_apres(nullptr, nullptr, nullptr, 0), -1);
  EXPECT_EQ(LTE_ins_avant(nullptr, nullptr, nullptr, 0), -1);
  EXPECT_EQ(LTE_ins_debut(nullptr, nullptr, 0), -1);
  EXPECT_EQ(LTE_ins_fin(nullptr, nullptr, 0), -1);
  EXPECT_EQ(LTE_ins_fin_unique(nullptr, nullptr, 0, &inserted, nullptr), -1);
  EXPECT_EQ(inserted, 0);
  EXPECT_EQ(LTE_append(nullptr, list), -1);
  EXPECT_EQ(LTE_sup_elt(nullptr, at(0), nullptr), -1);
  EXPECT_EQ(LTE_sup_elt(list, nullptr, nullptr), -1);
  EXPECT_EQ(LTE_sup_objet(nullptr, "a", nullptr, nullptr), -1);
  EXPECT_EQ(errors(), Texts(10, "An argument is missing"));

  EXPECT_EQ(LTE_length(nullptr), 0);
  EXPECT_EQ(LTE_length_type(nullptr, -1), 0);
  EXPECT_EQ(LTE_length_cmp(nullptr, "a", LIS_cmp_str), 0);
  EXPECT_EQ(LTE_exist(nullptr, "a", LIS_cmp_str), 0);
  EXPECT_EQ(LTE_chercher(nullptr, "a", LIS_cmp_str, &where), 0);
  EXPECT_EQ(LTE_chercher_type(nullptr, -1), nullptr);
  EXPECT_EQ(LTE_print(nullptr, LIS_print_str, stdout), 0);
  LTE_free(nullptr, LIS_free_str);
  EXPECT_EQ(errors(), Texts());
}

TEST_F(Lte, ObjectsAreFreedOnlyByAFunction) {
  freed = 0;
  for (const LIS_FREE free : {LIS_FREE(nullptr), LIS_FREE(countFree)}) {
    LTE* const other = LTE_creer(nullptr);
    LTE_ins_fin(other, text("x"), 0);
    LTE_ins_fin(other, text("y"), 0);
    LTE_ins_fin(other, text("z"), 0);
    LTE_sup_elt(other, other->first, free);
    EXPECT_EQ(freed, free ? 1 : 0);
    LTE_free(other, free);
  }
  EXPECT_EQ(freed, 3);
}

// Hosts in C read the fields.
TEST_F(Lte, FieldsStandInTheirOrder) {
  EXPECT_EQ(offsetof(LTE, count), 0u);
  EXPECT_EQ(offsetof(LTE, first), sizeof(void*));
  EXPECT_EQ(offsetof(LTE, last), 2 * sizeof(void*));
  EXPECT_EQ(offsetof(LTE, current), 3 * sizeof(void*));
}

TEST_F(Lte, PrintsThatFailAreReported) {
  const FullStream full;
  hold({"a"});

  EXPECT_EQ(LTE_print(list, LIS_print_str, full.get()), -1);

  EXPECT_EQ(blamed(), Texts{"LTE_print"});
}

TEST_F(Lte, CopiesAndPrints) {
  hold({"a", "b"});
  int error = 7;
  LTE* const copy = LTE_copier(list, LIS_copy_str, &error);

  EXPECT_EQ(error, 0);
  EXPECT_TRUE(isSound(copy));
  EXPECT_NE(copy->first->object, list->first->object);
  EXPECT_EQ(capture([&] { LTE_print(copy, LIS_print_str, stdout); }).out, "a\nb\n");
  LTE_free(copy, LIS_free_str);

  LTE* const empty = LTE_copier(nullptr, LIS_copy_str, &error);
  EXPECT_EQ(empty->count, 0);
  LTE_free(empty, nullptr);
}

TEST_F(Lte, WithoutMemoryTheListStays) {
  hold({"a"});
  int error = 0;
  for (const auto insert : {LTE_ins, LTE_ins_apres, LTE_ins_avant}) {
    const support::FailingAllocation failing(1);
    EXPECT_EQ(insert(list, list->first, text("x"), 0), -1);
  }
  for (const auto insert : {LTE_ins_debut, LTE_ins_fin}) {
    const support::FailingAllocation failing(1);
    EXPECT_EQ(insert(list, text("x"), 0), -1);
  }
  {
    const support::FailingAllocation failing(1);
    EXPECT_EQ(LTE_creer(&error), nullptr);
    EXPECT_EQ(error, -1);
  }
  EXPECT_EQ(errors(), Texts(6, "Not enough memory for a list"));
  EXPECT_EQ(textsOf(list->first), Texts{"a"});
  EXPECT_TRUE(isSound(list));
}

// No memory, and no function to print with.
TEST_F(Lte, FailuresAreThoseOfTheFunctionCalled) {
  hold({"a"});
  const auto withoutMemory = [](auto call) {
    const support::FailingAllocation failing(1);
    call();
  };
  withoutMemory([this] { LTE_ins_apres(list, list->first, text("x"), 0); });
  withoutMemory([this] { LTE_ins_avant(list, list->first, text("x"), 0); });
  withoutMemory([this] { LTE_ins_debut(list, text("x"), 0); });
  withoutMemory([this] { LTE_ins_fin(list, text("x"), 0); });
  withoutMemory([] { LTE_creer(nullptr); });
  LTE_print(list, nullptr, stdout);

  EXPECT_EQ(blamed(), (Texts{"LTE_ins_apres", "LTE_ins_avant", "LTE_ins_debut", "LTE_ins_fin",
                             "LTE_creer", "LTE_print"}));
}

TEST_F(Lte, CallersOfWhatFailedLeaveATrace) {
  const auto withoutMemory = [](auto call) {
    const support::FailingAllocation failing(1);
    call();
  };
  for (const auto insert : {LTE_ins, LTE_ins_apres, LTE_ins_avant}) {
    withoutMemory([&] { insert(list, nullptr, text("x"), 0); });
    EXPECT_EQ(traces(), 1);
  }
  for (const auto insert : {LTE_ins_debut, LTE_ins_fin}) {
    withoutMemory([&] { insert(list, text("x"), 0); });
    EXPECT_EQ(traces(), 1);
  }
  withoutMemory([&] { LTE_ins_fin_unique(list, text("x"), 0, nullptr, nullptr); });
  EXPECT_EQ(traces(), 2) << "its own and that of the insertion";
}

TEST_F(Lte, FailingCopyIsBlamed) {
  hold({"a"});
  int error = 0;
  LTE* copy = nullptr;
  {
    const support::FailingAllocation failing(2);
    copy = LTE_copier(list, nullptr, &error);
  }
  EXPECT_EQ(error, -1);
  EXPECT_EQ(blamed(), Texts{"LTE_copier"});
  LTE_free(copy, nullptr);
}

TEST_F(Lte, CopyWithoutMemoryIsWhatWasCopiedBefore) {
  hold({"a", "b"});
  const long failures = failuresWithoutLoss([&] {
    int error = 7;
    LTE* const copy = LTE_copier(list, LIS_copy_str, &error);
    const support::Unharmed unharmed;
    EXPECT_EQ(error, LTE_length(copy) == 2 ? 0 : -1);
    LTE_free(copy, LIS_free_str);
  });

  EXPECT_GE(failures, 5);
}

} // namespace collections_test

// Lists of bare nodes.
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "collections/fixture.h"
#include "collections/report.h"

namespace collections_test {

// A list of texts, typed 0, 1, 2, ..., without ownership of them.
class Lis : public Collections {
protected:
  ~Lis() override { LIS_free(&list, nullptr); }

  void hold(const std::vector<const char*>& texts) {
    int type = 0;
    for (const char* characters : texts)
      EXPECT_EQ(LIS_ins_fin(&list, text(characters), type++), 0);
  }
  LIS* at(int index) { return LIS_chercher_ieme(list, index); }

  LIS* list = nullptr;
};

TEST_F(Lis, NewNodeStandsAlone) {
  int error = 7;
  list = LIS_creer(5, &error);

  ASSERT_NE(list, nullptr);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(list->type, 5);
  EXPECT_EQ(list->object, nullptr);
  EXPECT_EQ(list->next, nullptr);
  EXPECT_EQ(list->previous, nullptr);
}

TEST_F(Lis, InsertsBehindTheNodeGiven) {
  EXPECT_EQ(LIS_ins(&list, text("a"), 1), 0);
  EXPECT_EQ(LIS_ins(&list, text("c"), 2), 0);
  EXPECT_EQ(LIS_ins(&list, text("b"), 3), 0);
  LIS* last = at(2);
  EXPECT_EQ(LIS_ins(&last, text("d"), 4), 0);

  EXPECT_EQ(textsOf(list), (Texts{"a", "b", "c", "d"}));
  EXPECT_TRUE(isSound(list));
  EXPECT_EQ(at(3)->type, 4);
}

TEST_F(Lis, InsertsAtBothEnds) {
  EXPECT_EQ(LIS_ins_debut(&list, text("b"), 0), 0);
  EXPECT_EQ(LIS_ins_debut(&list, text("a"), 0), 0);
  EXPECT_EQ(LIS_ins_fin(&list, text("c"), 0), 0);

  EXPECT_EQ(textsOf(list), (Texts{"a", "b", "c"}));
  EXPECT_TRUE(isSound(list));
}

TEST_F(Lis, UniqueObjectsComeOnce) {
  int inserted = 7;
  EXPECT_EQ(LIS_ins_fin_unique(&list, text("a"), 1, &inserted, LIS_cmp_str), 0);
  EXPECT_EQ(inserted, 1);
  char other[] = "a";
  EXPECT_EQ(LIS_ins_fin_unique(&list, other, 2, &inserted, LIS_cmp_str), 0);
  EXPECT_EQ(inserted, 0);
  EXPECT_EQ(LIS_ins_fin_unique(&list, other, 3, &inserted, nullptr), 0) << "another pointer";
  EXPECT_EQ(inserted, 1);

  EXPECT_EQ(textsOf(list), (Texts{"a", "a"}));
  EXPECT_EQ(at(0)->type, 1);
  EXPECT_EQ(at(1)->type, 3);
}

TEST_F(Lis, AppendsTheNodesOfAnother) {
  LIS* other = nullptr;
  LIS_ins_fin(&other, text("x"), 0);
  EXPECT_EQ(LIS_append(&list, other), 0);
  EXPECT_EQ(list, other) << "an empty list takes the other over";
  LIS* more = nullptr;
  LIS_ins_fin(&more, text("y"), 0);
  EXPECT_EQ(LIS_append(&list, more), 0);
  EXPECT_EQ(LIS_append(&list, nullptr), 0);
  EXPECT_EQ(LIS_append(&list, list), -1) << "a list cannot follow itself";

  EXPECT_EQ(textsOf(list), (Texts{"x", "y"}));
  EXPECT_TRUE(isSound(list));
  EXPECT_EQ(at(1), more) << "no copy";
}

// Linked, they would go round for ever.
TEST_F(Lis, ListsThatShareNodesAreNotAppended) {
  hold({"a", "b", "c"});
  LIS* tail = at(1);

  EXPECT_EQ(LIS_append(&list, at(0)), -1);
  EXPECT_EQ(LIS_append(&list, at(1)), -1);
  EXPECT_EQ(LIS_append(&list, at(2)), -1);
  EXPECT_EQ(LIS_append(&tail, list), -1) << "the other way round";

  EXPECT_EQ(textsOf(list), (Texts{"a", "b", "c"}));
  EXPECT_TRUE(isSound(list));
  EXPECT_EQ(errors(), Texts(4, "An argument is missing"));
}

TEST_F(Lis, SearchesByKeyNodeObjectIndexAndType) {
  hold({"a", "b", "c", "b"});
  LIS* where = nullptr;

  EXPECT_EQ(LIS_chercher(list, "b", LIS_cmp_str, &where), 1);
  EXPECT_EQ(where, at(1)) << "the first one";
  EXPECT_EQ(LIS_chercher(list, "z", LIS_cmp_str, &where), 0);
  EXPECT_EQ(where, nullptr);
  EXPECT_EQ(LIS_chercher(list, "c", LIS_cmp_str, nullptr), 1);
  EXPECT_EQ(LIS_chercher(nullptr, "c", LIS_cmp_str, &where), 0);

  EXPECT_EQ(LIS_chercher_element(list, at(2)), at(2));
  const LIS stranger = {};
  EXPECT_EQ(LIS_chercher_element(list, &stranger), nullptr);

  EXPECT_EQ(LIS_chercher_objet(list, "c", LIS_cmp_str), at(2));
  EXPECT_EQ(LIS_chercher_objet(list, at(3)->object, nullptr)->object, at(3)->object);
  EXPECT_EQ(LIS_chercher_objet(list, "z", LIS_cmp_str), nullptr);

  EXPECT_EQ(at(0), list);
  EXPECT_EQ(at(3)->type, 3);
  EXPECT_EQ(at(4), nullptr);
  EXPECT_EQ(at(-1), nullptr);
  EXPECT_EQ(at(INT_MIN), nullptr);

  EXPECT_EQ(LIS_chercher_type(list, 2), at(2));
  EXPECT_EQ(LIS_chercher_type(list, -1), list) << "any type";
  EXPECT_EQ(LIS_chercher_type(list, 9), nullptr);
}

TEST_F(Lis, CountsAllMatchingAndTyped) {
  hold({"a", "b", "a"});
  at(2)->type = 0;

  EXPECT_EQ(LIS_length(list), 3);
  EXPECT_EQ(LIS_length_type(list, -1), LIS_length(list));
  EXPECT_EQ(LIS_length_type(list, 0), 2);
  EXPECT_EQ(LIS_length_type(list, 5), 0);
  EXPECT_EQ(LIS_length_cmp(list, "a", LIS_cmp_str), 2);
  EXPECT_EQ(LIS_length_cmp(list, at(1)->object, nullptr), 1);
  EXPECT_EQ(LIS_length(nullptr), 0);
  EXPECT_EQ(LIS_exist(list, "b", LIS_cmp_str), 1);
  EXPECT_EQ(LIS_exist(list, "c", LIS_cmp_str), 0);
}

TEST_F(Lis, RemovesNodesAtEveryPlace) {
  hold({"a", "b", "c", "d"});

  EXPECT_EQ(LIS_sup_elt(&list, at(1), nullptr), 0);
  EXPECT_EQ(textsOf(list), (Texts{"a", "c", "d"}));
  EXPECT_EQ(LIS_sup_elt(&list, at(2), nullptr), 0);
  EXPECT_EQ(textsOf(list), (Texts{"a", "c"}));
  EXPECT_EQ(LIS_sup_elt(&list, list, nullptr), 0);
  EXPECT_EQ(textsOf(list), (Texts{"c"}));
  EXPECT_TRUE(isSound(list));
  EXPECT_EQ(LIS_sup_elt(&list, list, nullptr), 0);
  EXPECT_EQ(list, nullptr);
}

TEST_F(Lis, RemovingAStrangerChangesNothing) {
  hold({"a", "b"});
  LIS stranger = {};

  EXPECT_EQ(LIS_sup_elt(&list, &stranger, nullptr), 0);
  EXPECT_EQ(LIS_sup_objet(&list, "z", LIS_cmp_str, nullptr), 0);
  EXPECT_EQ(errors(), Texts());
  EXPECT_EQ(textsOf(list), (Texts{"a", "b"}));
}

TEST_F(Lis, NullListOrNodeIsReported) {
  LIS stranger = {};
  EXPECT_EQ(LIS_sup_elt(&list, &stranger, nullptr), -1);
  EXPECT_EQ(LIS_sup_elt(nullptr, &stranger, nullptr), -1);
  EXPECT_EQ(LIS_sup_objet(&list, "z", LIS_cmp_str, nullptr), -1);
  EXPECT_EQ(LIS_ins(nullptr, nullptr, 0), -1);
  EXPECT_EQ(LIS_append(nullptr, &stranger), -1);
  int inserted = 7;
  EXPECT_EQ(LIS_ins_fin_unique(nullptr, nullptr, 0, &inserted, nullptr), -1);
  EXPECT_EQ(inserted, 0);
  hold({"a"});
  EXPECT_EQ(LIS_sup_elt(&list, nullptr, nullptr), -1);
  EXPECT_EQ(LIS_print(list, nullptr, stdout), -1);
  EXPECT_EQ(LIS_print(list, LIS_print_str, nullptr), -1);

  EXPECT_EQ(errors(), Texts(9, "An argument is missing"));
}

TEST_F(Lis, PrintsThatFailAreReported) {
  const FullStream full;
  hold({"a"});

  EXPECT_EQ(LIS_print(nullptr, LIS_print_str, full.get()), 0) << "nothing was printed yet";
  EXPECT_EQ(LIS_print(list, LIS_print_str, full.get()), -1);

  EXPECT_THAT(noting.lines, testing::Contains(testing::StartsWith("0 8 0 LIS_print()")));
  EXPECT_EQ(errors(), Texts{"Write error"});
}

TEST_F(Lis, RemovesTheFirstObjectThatMatches) {
  hold({"a", "b", "a"});

  EXPECT_EQ(LIS_sup_objet(&list, "a", LIS_cmp_str, nullptr), 0);

  EXPECT_EQ(textsOf(list), (Texts{"b", "a"}));
  EXPECT_TRUE(isSound(list));
}

TEST_F(Lis, ObjectsAreFreedOnlyByAFunction) {
  hold({"a", "b", "c", "d"});
  freed = 0;

  LIS_sup_elt(&list, list, nullptr);
  EXPECT_EQ(freed, 0);
  LIS_sup_elt(&list, list, countFree);
  EXPECT_EQ(freed, 1);
  LIS_sup_objet(&list, "c", LIS_cmp_str, countFree);
  EXPECT_EQ(freed, 2);
  LIS_free(&list, countFree);
  EXPECT_EQ(freed, 3);
  EXPECT_EQ(list, nullptr);
  LIS_free(&list, countFree);
  LIS_free(nullptr, countFree);
  EXPECT_EQ(freed, 3);
}

TEST_F(Lis, CopiesNodesAndObjects) {
  hold({"a", "b"});
  int error = 7;

  LIS* deep = LIS_copier(list, LIS_copy_str, &error);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(textsOf(deep), textsOf(list));
  EXPECT_TRUE(isSound(deep));
  EXPECT_EQ(deep->next->type, 1);
  EXPECT_NE(deep->object, list->object);
  LIS_free(&deep, LIS_free_str);

  LIS* shallow = LIS_copier(list, nullptr, nullptr);
  EXPECT_EQ(shallow->object, list->object);
  LIS_free(&shallow, nullptr);

  error = 7;
  EXPECT_EQ(LIS_copier(nullptr, LIS_copy_str, &error), nullptr);
  EXPECT_EQ(error, 0);
}

TEST_F(Lis, PrintsObjectsLineByLine) {
  int number = -3;
  double real = 0.25;
  EXPECT_EQ(capture([&] { LIS_print_int(&number, stdout); }).out, "-3\n");
  EXPECT_EQ(capture([&] { LIS_print_db(&real, stdout); }).out, "0.25\n");
  EXPECT_EQ(capture([&] { LIS_print_str(nullptr, stdout); }).out, "");
  hold({"a", "b"});

  const std::string out =
      capture([&] { EXPECT_EQ(LIS_print(list, LIS_print_str, stdout), 0); }).out;

  EXPECT_EQ(out, "a\nb\n");
}

TEST_F(Lis, ReadyMadeFunctionsCompare) {
  const int one = 1, otherOne = 1, two = 2;
  EXPECT_NE(LIS_cmp_int(&one, &otherOne), 0);
  EXPECT_EQ(LIS_cmp_int(&one, &two), 0);

  const double real = 1.0, close = 1.0 + 1e-15;
  EXPECT_NE(LIS_cmp_db(&real, &close), 0);
  EXPECT_NE(LIS_cmp_db(&close, &real), 0);
  const double zero = 0, below = std::nextafter(1e-14, 0), apart = 1e-14, nan = std::nan("");
  EXPECT_NE(LIS_cmp_db(&zero, &below), 0);
  EXPECT_NE(LIS_cmp_db(&below, &zero), 0);
  EXPECT_EQ(LIS_cmp_db(&zero, &apart), 0) << "not below";
  EXPECT_EQ(LIS_cmp_db(&apart, &zero), 0);
  EXPECT_EQ(LIS_cmp_db(&nan, &nan), 0) << "no difference is no small one";

  EXPECT_NE(LIS_cmp_str("ab", "ab"), 0);
  EXPECT_EQ(LIS_cmp_str("ab", "abc"), 0);
  EXPECT_NE(LIS_cmp_str(nullptr, nullptr), 0);
  EXPECT_EQ(LIS_cmp_str(nullptr, "ab"), 0);
}

TEST_F(Lis, ReadyMadeFunctionsCopyAndFree) {
  const int number = 5;
  const double real = 0.5;
  int error = 7;

  void* copy = LIS_copy_int(&number, &error);
  EXPECT_EQ(*static_cast<int*>(copy), 5);
  EXPECT_EQ(error, 0);
  LIS_free_int(copy);
  copy = LIS_copy_db(&real, &error);
  EXPECT_EQ(*static_cast<double*>(copy), 0.5);
  LIS_free_db(copy);
  copy = LIS_copy_str("text", &error);
  EXPECT_STREQ(static_cast<char*>(copy), "text");
  LIS_free_str(copy);
  EXPECT_EQ(LIS_copy_str(nullptr, &error), nullptr);
  EXPECT_EQ(LIS_copy_int(nullptr, &error), nullptr);
  EXPECT_EQ(error, 0) << "no object is no failure";
  LIS_free_str(nullptr);
}

TEST_F(Lis, CreationWithoutMemoryIsReported) {
  int error = 0;
  {
    const support::FailingAllocation failing(1);
    EXPECT_EQ(LIS_creer(1, &error), nullptr);
  }
  EXPECT_EQ(error, -1);
  EXPECT_EQ(errors(), Texts{"Not enough memory for a list"});
  {
    const support::FailingAllocation failing(1);
    EXPECT_EQ(LIS_copy_int(&error, &error), nullptr);
  }
  EXPECT_EQ(error, -1);
  error = 0;
  {
    const support::FailingAllocation failing(1);
    EXPECT_EQ(LIS_copy_str("text", &error), nullptr);
  }
  EXPECT_EQ(error, -1);
  EXPECT_EQ(errors(), Texts(2, "Not enough memory for a list"));
}

// Hosts in C read the fields.
TEST_F(Lis, FieldsStandInTheirOrder) {
  EXPECT_EQ(offsetof(LIS, next), 0u);
  EXPECT_EQ(offsetof(LIS, previous), sizeof(void*));
  EXPECT_EQ(offsetof(LIS, type), 2 * sizeof(void*));
  EXPECT_EQ(offsetof(LIS, object), 3 * sizeof(void*));
}

TEST_F(Lis, InsertionsWithoutMemoryLeaveTheList) {
  hold({"a", "b"});
  for (const auto insert : {LIS_ins, LIS_ins_debut, LIS_ins_fin}) {
    const support::FailingAllocation failing(1);
    EXPECT_EQ(insert(&list, text("x"), 0), -1);
  }
  int inserted = 7;
  {
    const support::FailingAllocation failing(1);
    EXPECT_EQ(LIS_ins_fin_unique(&list, text("x"), 0, &inserted, LIS_cmp_str), -1);
  }

  EXPECT_EQ(inserted, 0);
  EXPECT_EQ(textsOf(list), (Texts{"a", "b"}));
  EXPECT_EQ(errors(), Texts(4, "Not enough memory for a list"));
}

TEST_F(Lis, FailuresAreThoseOfTheFunctionCalled) {
  const auto withoutMemory = [](auto call) {
    const support::FailingAllocation failing(1);
    call();
  };
  withoutMemory([] { LIS_creer(0, nullptr); });
  withoutMemory([this] { LIS_ins(&list, text("x"), 0); });
  withoutMemory([this] { LIS_ins_debut(&list, text("x"), 0); });
  withoutMemory([this] { LIS_ins_fin(&list, text("x"), 0); });
  hold({"a"});
  withoutMemory([this] { LIS_copier(list, nullptr, nullptr); });
  int number = 0;
  withoutMemory([&] { LIS_copy_int(&number, &number); });
  LIS_ins_debut(nullptr, text("x"), 0);
  LIS_ins_fin(nullptr, text("x"), 0);
  LIS_print(list, nullptr, stdout);

  EXPECT_EQ(blamed(), (Texts{"LIS_creer", "LIS_ins", "LIS_ins_debut", "LIS_ins_fin", "LIS_copier",
                             "LIS_copy_int", "LIS_ins_debut", "LIS_ins_fin", "LIS_print"}));
}

TEST_F(Lis, CallersOfWhatFailedLeaveATrace) {
  const auto withoutMemory = [](auto call) {
    const support::FailingAllocation failing(1);
    call();
  };
  for (const auto insert : {LIS_ins, LIS_ins_debut, LIS_ins_fin}) {
    withoutMemory([&] { insert(&list, text("x"), 0); });
    EXPECT_EQ(traces(), 1);
  }
  withoutMemory([&] { LIS_ins_fin_unique(&list, text("x"), 0, nullptr, nullptr); });
  EXPECT_EQ(traces(), 2) << "its own and that of the insertion";
  hold({"a"});
  withoutMemory([&] { LIS_copier(list, nullptr, nullptr); });
  EXPECT_EQ(traces(), 1);
}

// The numbers under which a host brings texts of its own.
TEST_F(Lis, MessagesKeepTheirNumbers) {
  const auto say = [](int number) {
    EXPECT_EQ(Zarel::reported(static_cast<Zarel::CollectionMessage>(number)), -1);
  };
  for (const int number : {1001, 1003, 2005, 2500, 3122, 3123, 3126})
    say(number);

  EXPECT_EQ(errors(),
            (Texts{"Not enough memory for a list", "Write error", "There is no list to read",
                   "An argument is missing", "There is no hash table",
                   "Not enough memory for a hash table", "The key is not in the hash table"}));
}

TEST_F(Lis, CopyWithoutMemoryIsWhatWasCopiedBefore) {
  hold({"a", "b"});
  Texts lengths;
  const long failures = failuresWithoutLoss([&] {
    int error = 7;
    LIS* copy = LIS_copier(list, LIS_copy_str, &error);
    const support::Unharmed unharmed;
    EXPECT_EQ(error, LIS_length(copy) == 2 ? 0 : -1);
    EXPECT_TRUE(isSound(copy));
    lengths.push_back(std::to_string(LIS_length(copy)));
    LIS_free(&copy, LIS_free_str);
  });

  EXPECT_GE(failures, 4);
  EXPECT_THAT(lengths, testing::IsSupersetOf({"0", "1", "2"}));
}

} // namespace collections_test

#include "kernel/records.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "support/Capture.h"

using namespace kernel;
using testing::HasSubstr;

namespace {

int freed = 0;
int countFree(void* object) {
  if (!object) return -1;
  ++freed;
  return 0;
}

const char* const names[] = {"ONE", nullptr};
const MEM_FREE frees[] = {countFree, countFree};
MEM_ENTRY entries[2];

class Accounting : public Kernel {
protected:
  void SetUp() override {
    Kernel::SetUp();
    mem_info_on(1);
    for (int type = 0; type < LM_TYPE_COUNT; ++type) {
      mem_bytes_list(type, mem_info_bytes(type, 0), 0, 0);
      mem_numvar_list(type, -mem_info_numvar(type, 0), 0);
    }
  }
  void TearDown() override {
    mem_info_on(0);
    mem_detach_list(2);
    Kernel::TearDown();
  }
};

std::string printed(int list) {
  return support::capture([list] {
           mem_info_file(nullptr, list);
           std::fflush(stdout);
         })
      .out;
}

TEST_F(Accounting, SwitchTellsTheFormerState) {
  EXPECT_EQ(mem_info_is_on(), 1);
  EXPECT_EQ(mem_info_on(0), 1);
  EXPECT_EQ(mem_info_is_on(), 0);
  EXPECT_EQ(mem_info_on(5), 0);
  EXPECT_EQ(mem_info_is_on(), 1);
}

TEST_F(Accounting, FollowsCreateResizeAndFree) {
  VEC* v = LM_v_get("t", 0, 10, 0, nullptr, &status);
  EXPECT_EQ(mem_info_bytes(LM_TYPE_VEC, 0), static_cast<long>(sizeof(VEC)) + 80);
  EXPECT_EQ(mem_info_numvar(LM_TYPE_VEC, 0), 1);
  v = LM_v_resize("t", 0, v, 25, 0, nullptr, &status);
  EXPECT_EQ(mem_info_bytes(LM_TYPE_VEC, 0), static_cast<long>(sizeof(VEC)) + 200);
  v = LM_v_resize("t", 0, v, 5, 0, nullptr, &status); // the room stays
  EXPECT_EQ(mem_info_bytes(LM_TYPE_VEC, 0), static_cast<long>(sizeof(VEC)) + 200);
  v_free(v);
  EXPECT_EQ(mem_info_bytes(LM_TYPE_VEC, 0), 0);
  EXPECT_EQ(mem_info_numvar(LM_TYPE_VEC, 0), 0);
}

// Whatever is made and freed, the books are even at the end, for every type.
TEST_F(Accounting, ComesBackToZeroForEveryType) {
  {
    auto m = mat(3, 4);
    LM_m_resize("t", 0, m.get(), 10, 20, 0, nullptr, &status);
    LM_m_resize("t", 0, m.get(), 2, 30, 0, nullptr, &status);
    const auto z = zmat(2, 2);
    const auto px = perm({1, 0});
    const auto iv = ivec({1, 2, 3});
    const auto lv = lvec({1});
    const auto zv = zvec({{1, 2}});
    auto tree = own(LM_vecm_get(100, 1, &status));
    for (int i = 0; i < 50; ++i)
      LM_vecm_addval(tree.get(), i, 1.0, 0);
    const auto packed = own(LM_vecm2vecmp(tree.get(), &status));
    const auto windows = own(LM_vecmp2vecmw(packed.get(), &status));
    const auto bits = own(LM_bv_get("t", 0, LM_BV_BLOC, 10, 0, nullptr, &status));
    for (const int type : {LM_TYPE_MAT, LM_TYPE_ZMAT, LM_TYPE_PERM, LM_TYPE_IVEC, LM_TYPE_LVEC,
                           LM_TYPE_ZVEC, LM_TYPE_VECM, LM_TYPE_VECMP, LM_TYPE_VECMW, LM_TYPE_BVEC})
      EXPECT_GT(mem_info_bytes(type, 0), 0) << type;
  }
  for (int type = 0; type < LM_TYPE_COUNT; ++type) {
    EXPECT_EQ(mem_info_bytes(type, 0), 0) << type;
    EXPECT_EQ(mem_info_numvar(type, 0), 0) << type;
  }
}

TEST_F(Accounting, CountsNothingWhileOff) {
  mem_info_on(0);
  const auto v = vec({1});
  EXPECT_EQ(mem_info_numvar(LM_TYPE_VEC, 0), 0);
  mem_info_on(1);
  mem_bytes_list(LM_TYPE_VEC, 0, 24, 0); // what the free of v takes off again
  mem_numvar_list(LM_TYPE_VEC, 1, 0);
}

TEST_F(Accounting, UnknownTypesAndListsAreZero) {
  EXPECT_EQ(mem_info_bytes(-1, 0), 0);
  EXPECT_EQ(mem_info_bytes(LM_TYPE_COUNT, 0), 0);
  EXPECT_EQ(mem_info_numvar(0, 1), 0);
  EXPECT_EQ(mem_info_numvar(0, 5), 0);
  mem_bytes_list(0, 0, 10, 3); // ignored
  EXPECT_EQ(printed(1), "") << "a list that is not attached";
  EXPECT_EQ(printed(5), "");
}

TEST_F(Accounting, NegativeTotalsAreWarnedOfOnBothStreams) {
  const std::string bytes = "\n WARNING !! memory info: allocated memory is less than 0\n"
                            "\t TYPE PERM \n\n";
  const std::string variables =
      "\n WARNING !! memory info: allocated # of variables is less than 0\n\t TYPE PERM \n\n";
  const auto said = support::capture([] {
    mem_bytes_list(LM_TYPE_PERM, 8, 0, 0);
    mem_numvar_list(LM_TYPE_PERM, -1, 0);
    std::fflush(stdout);
  });
  EXPECT_EQ(said.out, bytes + variables);
  EXPECT_EQ(said.err, bytes + variables);
}

TEST_F(Accounting, StandardListIsPrintedTypeByType) {
  const auto v = vec({1, 2});
  const auto A = mat(1, 1), B = mat(1, 1);
  const std::string text = printed(0);
  EXPECT_THAT(text, testing::StartsWith(" MEMORY INFORMATION (standard types):\n type MAT    "));
  EXPECT_THAT(text, HasSubstr(" type VEC             32 alloc. bytes       1 alloc. variable \n"));
  EXPECT_THAT(text, HasSubstr(" type BAND             0 alloc. bytes       0 alloc. variables\n"));
  EXPECT_THAT(text, HasSubstr("       2 alloc. variables\n type BAND"));
  EXPECT_THAT(text, HasSubstr(" type BVEC "));
  EXPECT_THAT(text, HasSubstr("\n total:      "));
  EXPECT_THAT(text, testing::EndsWith("       3 alloc. variables\n\n"));
}

TEST_F(Accounting, ListsOfTheHostAreKeptApart) {
  EXPECT_EQ(mem_attach_list(2, 2, names, frees, entries), 0);
  mem_bytes_list(0, 0, 1, 2);
  mem_numvar_list(0, 1, 2);
  mem_numvar_list(1, 4, 2);
  EXPECT_EQ(printed(2), " MEMORY INFORMATION (list no. 2):\n"
                        " type ONE              1 alloc. byte        1 alloc. variable \n"
                        " total:                1 alloc. byte        5 alloc. variables\n\n");
}

TEST_F(Accounting, AttachTestsItsArguments) {
  EXPECT_EQ(mem_attach_list(5, 2, names, frees, entries), -1);
  EXPECT_EQ(mem_attach_list(-1, 2, names, frees, entries), -1);
  EXPECT_EQ(mem_attach_list(2, -1, names, frees, entries), -1);
  EXPECT_EQ(mem_attach_list(2, 2, nullptr, frees, entries), -1);
  EXPECT_EQ(mem_attach_list(2, 2, names, nullptr, entries), -1);
  EXPECT_EQ(mem_attach_list(2, 2, names, frees, nullptr), -1);
  EXPECT_EQ(LM_error_count(), 0);
}

TEST_F(Accounting, OccupiedListIsReportedAndReplaced) {
  MEM_ENTRY other[1];
  EXPECT_EQ(mem_attach_list(2, 2, names, frees, entries), 0);
  EXPECT_EQ(mem_attach_list(2, 1, names, frees, other), 0);
  EXPECT_EQ(lastError(), 21);
  mem_numvar_list(0, 3, 2);
  EXPECT_EQ(other[0].numvar, 3);
  EXPECT_EQ(entries[0].numvar, 0);
}

// Work objects in static pointers.
class StaticObjects : public Accounting {
protected:
  void TearDown() override {
    mem_stat_mark(0);
    while (mem_stat_groups() > 0)
      mem_stat_free_list(1, 0);
    Accounting::TearDown();
  }
  void* first = nullptr;
  void* second = nullptr;
};

TEST_F(StaticObjects, AreReleasedByTheirMark) {
  first = vec({1}).release();
  second = mat(2, 2).release();
  EXPECT_EQ(mem_stat_mark(3), 3);
  EXPECT_EQ(mem_stat_show_mark(), 3);
  EXPECT_EQ(mem_stat_reg_list(&first, LM_TYPE_VEC, 0), 3);
  EXPECT_EQ(mem_stat_mark(4), 4);
  EXPECT_EQ(mem_stat_reg_list(&second, LM_TYPE_MAT, 0), 4);
  EXPECT_EQ(mem_stat_groups(), 2);
  EXPECT_EQ(mem_stat_free_list(3, 0), 0);
  EXPECT_EQ(first, nullptr);
  EXPECT_NE(second, nullptr);
  EXPECT_EQ(mem_info_numvar(LM_TYPE_VEC, 0), 0);
  EXPECT_EQ(mem_stat_free_list(4, 0), 0);
  EXPECT_EQ(second, nullptr);
  EXPECT_EQ(mem_stat_groups(), 0);
}

TEST_F(StaticObjects, MarkZeroRegistersNothing) {
  mem_stat_mark(0);
  EXPECT_EQ(mem_stat_reg_list(&first, LM_TYPE_VEC, 0), 0);
  const auto dumped = support::capture([] {
    mem_stat_dump(nullptr, 0);
    std::fflush(stdout);
  });
  EXPECT_EQ(dumped.out, " Array mem_stat_var (list no. 0):\n");
}

TEST_F(StaticObjects, ARegisteredVariableStaysAsItIs) {
  first = vec({1}).release();
  mem_stat_mark(1);
  mem_stat_reg_list(&first, LM_TYPE_VEC, 0);
  mem_stat_mark(2);
  EXPECT_EQ(mem_stat_reg_list(&first, LM_TYPE_MAT, 0), 2);
  EXPECT_EQ(mem_stat_free_list(2, 0), 0);
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(mem_stat_free_list(1, 0), 0);
  EXPECT_EQ(first, nullptr);
}

TEST_F(StaticObjects, FreeingAnUnusedMarkOnlyLowersTheCounter) {
  first = vec({1}).release();
  mem_stat_mark(1);
  mem_stat_reg_list(&first, LM_TYPE_VEC, 0);
  EXPECT_EQ(mem_stat_groups(), 1);
  EXPECT_EQ(mem_stat_free_list(77, 0), 0);
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(mem_stat_groups(), 0);
  EXPECT_EQ(mem_stat_free_list(1, 0), -1); // no group is open
  EXPECT_EQ(lastError(), 2);
  mem_stat_mark(1);
  EXPECT_EQ(mem_stat_free_list(1, 0), 0);
  EXPECT_EQ(first, nullptr);
}

TEST_F(StaticObjects, MarksEndGroups) {
  mem_stat_mark(5);
  EXPECT_EQ(mem_stat_mark(0), 0);
  EXPECT_EQ(mem_stat_show_mark(), 0);
  mem_stat_mark(5);
  EXPECT_EQ(mem_stat_mark(-2), -1);
  EXPECT_EQ(mem_stat_show_mark(), 0);
  mem_stat_mark(5);
  EXPECT_EQ(mem_stat_free_list(0, 0), 0);
  EXPECT_EQ(mem_stat_show_mark(), 0);
  mem_stat_mark(5);
  EXPECT_EQ(mem_stat_free_list(-3, 0), -1);
  EXPECT_EQ(mem_stat_show_mark(), 0);
  EXPECT_EQ(mem_stat_groups(), 4);
}

TEST_F(StaticObjects, ListsAndTypesAreTested) {
  mem_stat_mark(1);
  EXPECT_EQ(mem_stat_reg_list(&first, LM_TYPE_COUNT, 0), -1);
  EXPECT_EQ(lastError(), 1);
  EXPECT_EQ(mem_stat_reg_list(&first, -1, 0), -1);
  EXPECT_EQ(mem_stat_reg_list(nullptr, 0, 0), -1);
  EXPECT_EQ(lastError(), 8);
  EXPECT_EQ(mem_stat_reg_list(&first, 0, 5), -1);
  EXPECT_EQ(mem_stat_reg_list(&first, 0, 3), -1);
  EXPECT_EQ(mem_stat_free_list(1, 5), -1);
  EXPECT_EQ(mem_stat_free_list(1, 3), -1);
}

TEST_F(StaticObjects, OfAnotherListStayThere) {
  void* other = &freed;
  first = vec({1}).release();
  mem_attach_list(2, 2, names, frees, entries);
  mem_stat_mark(8);
  mem_stat_reg_list(&first, LM_TYPE_VEC, 0);
  mem_stat_reg_list(&other, 1, 2);
  const auto dumped = support::capture([] {
    mem_stat_dump(nullptr, 2);
    std::fflush(stdout);
  });
  EXPECT_THAT(dumped.out, HasSubstr(" 1.  var"));
  EXPECT_THAT(dumped.out, testing::Not(HasSubstr(" 2.  var"))) << "the variable of list 0";
  freed = 0;
  EXPECT_EQ(mem_stat_free_list(8, 0), 0);
  EXPECT_EQ(first, nullptr);
  EXPECT_EQ(other, &freed);
  mem_stat_mark(8);
  EXPECT_EQ(mem_stat_free_list(8, 2), 0);
  EXPECT_EQ(other, nullptr);
  EXPECT_EQ(freed, 1);
}

TEST_F(StaticObjects, WhoseTypeTheirListNoLongerHasStay) {
  MEM_ENTRY one[1];
  void* variable = &freed;
  mem_attach_list(2, 2, names, frees, entries);
  mem_stat_mark(8);
  mem_stat_reg_list(&variable, 1, 2);
  mem_attach_list(2, 1, names, frees, one);
  const auto dumped = support::capture([] {
    mem_stat_dump(nullptr, 2);
    std::fflush(stdout);
  });
  EXPECT_THAT(dumped.out, HasSubstr(", type = ???, mark = 8\n"));
  EXPECT_EQ(mem_stat_free_list(8, 2), 0);
  EXPECT_EQ(variable, &freed);
  mem_attach_list(2, 2, names, frees, entries);
  mem_stat_mark(8);
  EXPECT_EQ(mem_stat_free_list(8, 2), 0);
  EXPECT_EQ(variable, nullptr);
}

// A slot is looked for from the address modulo 509 on, and behind the last one at the start.
TEST_F(StaticObjects, StandInTheOrderOfTheirAddressesModuloTheSlots) {
  std::vector<void*> variables(MEM_HASHSIZE * 8);
  const auto at = [&variables](std::uintptr_t slot) { // a variable that belongs there
    return std::find_if(variables.begin(), variables.end(), [slot](void*& variable) {
      return reinterpret_cast<std::uintptr_t>(&variable) % MEM_HASHSIZE == slot;
    });
  };
  void** const last = &*at(508);
  void** const wrapped = last + MEM_HASHSIZE; // the same slot; it goes to slot 0
  void** const middle = &*at(200);
  ASSERT_LT(last - variables.data(), MEM_HASHSIZE);
  mem_stat_mark(6);
  for (void** const variable : {last, wrapped, middle})
    EXPECT_EQ(mem_stat_reg_list(variable, LM_TYPE_MAT, 0), 6);

  const auto dumped = support::capture([] {
    mem_stat_dump(nullptr, 0);
    std::fflush(stdout);
  });

  std::string expected = " Array mem_stat_var (list no. 0):\n";
  int number = 0;
  for (void** const variable : {wrapped, middle, last}) {
    char line[100];
    std::snprintf(line, sizeof line, " %d.  var = 0x%p, type = MAT, mark = 6\n", ++number,
                  static_cast<void*>(variable));
    expected += line;
  }
  EXPECT_EQ(dumped.out, expected);
  mem_stat_free_list(6, 0);
}

TEST_F(StaticObjects, HoldFiveHundredAndNineVariablesAndThenWarn) {
  mem_attach_list(2, 2, names, frees, entries);
  std::vector<void*> variables(MEM_HASHSIZE + 1, &freed);
  mem_stat_mark(9);
  for (int k = 0; k < MEM_HASHSIZE; ++k)
    ASSERT_EQ(mem_stat_reg_list(&variables[static_cast<size_t>(k)], 1, 2), 9) << k;
  EXPECT_EQ(mem_stat_reg_list(&variables[7], 1, 2), 9); // known, so it needs no slot
  const auto warned =
      support::capture([&] { EXPECT_EQ(mem_stat_reg_list(&variables[MEM_HASHSIZE], 1, 2), -1); });
  EXPECT_THAT(warned.err,
              testing::StartsWith("\n WARNING !!! static memory: mem_stat_var is too small\n"
                                  " Increase MEM_HASHSIZE in file: "));
  EXPECT_THAT(warned.err, testing::EndsWith("src/kernel/static_objects.cpp (currently = 509)\n\n"));
  const auto dumped = support::capture([] {
    mem_stat_dump(nullptr, 2);
    std::fflush(stdout);
  });
  EXPECT_THAT(dumped.out, HasSubstr(" 509.  var = 0x"));
  EXPECT_THAT(dumped.out, HasSubstr(", type = ???, mark = 9\n"));
  freed = 0;
  EXPECT_EQ(mem_stat_free_list(9, 2), 0);
  EXPECT_EQ(freed, MEM_HASHSIZE);
  EXPECT_EQ(variables[0], nullptr);
}

} // namespace

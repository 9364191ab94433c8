// The table of a host's thread functions.
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <zarel/C_PllMgr.h>

#include "support/FailingAllocation.h"

namespace {

using Calls = std::vector<std::string>;

// What a host's functions note of their calls, and what they answer.
Calls calls;
int answers[32];

void note(const char* name, int value) {
  calls.push_back(std::string(name) + " " + std::to_string(value));
}

template <class... Args>
void gate(void (*function)(Args...), Args... args) {
  note("gate", static_cast<int>(sizeof...(Args)));
  function(args...);
}

void installHost() {
  getGlobalPllManager()->Init(
      [](int* number) { note("lock", *number); }, [](int* number) { note("unlock", *number); },
      [] { return 5; },
      [](int* code) {
        note("query", *code);
        return answers[*code];
      },
      [](int* code, int* value) {
        calls.push_back("set " + std::to_string(*code) + " " + std::to_string(*value));
      },
      [] { calls.push_back("enter"); }, [] { calls.push_back("leave"); },
      [](int* count, int* parts, int* part) {
        *parts = 4;
        *part = *count / 4;
      },
      gate<void*>, gate<void*, void*>, gate<void*, void*, void*>, gate<void*, void*, void*, void*>,
      gate<void*, void*, void*, void*, void*>, gate<void*, void*, void*, void*, void*, void*>,
      gate<void*, void*, void*, void*, void*, void*, void*>);
}

class PllMgr : public testing::Test {
protected:
  PllMgr() { calls.clear(); }
  ~PllMgr() override { ReleaseGlobalPllManager(); }

  C_PllMgr& manager() { return *getGlobalPllManager(); }
};

void add(void* sum, int value) {
  *static_cast<int*>(sum) = 10 * *static_cast<int*>(sum) + value;
}

// Calls a function through the gate for each number of arguments; each argument is noted.
int throughAllGates(C_PllMgr& manager) {
  int s = 0;
  manager.Run([](void* a) { add(a, 1); }, &s);
  manager.Run([](void* a, void* b) { add(a, a == b ? 2 : 0); }, &s, &s);
  manager.Run([](void*, void*, void* c) { add(c, 3); }, nullptr, nullptr, &s);
  manager.Run([](void*, void*, void*, void* d) { add(d, 4); }, nullptr, nullptr, nullptr, &s);
  manager.Run([](void*, void*, void*, void*, void* e) { add(e, 5); }, nullptr, nullptr, nullptr,
              nullptr, &s);
  manager.Run([](void*, void*, void*, void*, void*, void* f) { add(f, 6); }, nullptr, nullptr,
              nullptr, nullptr, nullptr, &s);
  manager.Run([](void*, void*, void*, void*, void*, void*, void* g) { add(g, 7); }, nullptr,
              nullptr, nullptr, nullptr, nullptr, nullptr, &s);
  return s;
}

TEST_F(PllMgr, IsOneInstance) {
  EXPECT_FALSE(C_PllMgr::IsInstanced());
  C_PllMgr* const one = getGlobalPllManager();
  EXPECT_EQ(getGlobalPllManager(), one);
  EXPECT_EQ(C_PllMgr::Instance(), one);
  EXPECT_EQ(C_PllMgr::getInstance(), one);
  ReleaseGlobalPllManager();
  EXPECT_EQ(C_PllMgr::Instance(), nullptr);
  ReleaseGlobalPllManager();
}

TEST_F(PllMgr, IsOneWorkerWithoutAHost) {
  EXPECT_EQ(manager().LastNbWorkers(), -1);
  EXPECT_EQ(manager().Limit(), 20000);
  EXPECT_EQ(manager().CurrentWorker(), 0);
  EXPECT_EQ(manager().Query(0), 1);
  EXPECT_EQ(manager().NbWorkers(), 1);
  EXPECT_EQ(manager().LastNbWorkers(), 1);
  manager().Lock(107);
  manager().Lock(107);
  manager().Unlock(107);
  manager().SetValue(1, 0);
  manager().Enter();
  manager().Leave();
  int parts = 0, part = 0;
  manager().Share(123, parts, part);
  EXPECT_EQ(parts, 1);
  EXPECT_EQ(part, 123);
}

TEST_F(PllMgr, GatesCallDirectlyWithoutAHost) {
  EXPECT_EQ(throughAllGates(manager()), 1234567);
}

TEST_F(PllMgr, CodesOfTheStatesAreAsAgreed) {
  const int codes[] = {0, 1, 2, 3, 4, 5, 10, 12, 22, 0, 1, 3};
  for (int state = 0; state < 12; ++state)
    EXPECT_EQ(manager().Code(state), codes[state]) << state;
  EXPECT_EQ(manager().Code(12), 0);
  EXPECT_EQ(manager().Code(-1), 0);
}

TEST_F(PllMgr, InitReplacesAllFunctionsAtOnce) {
  installHost();

  EXPECT_EQ(manager().CurrentWorker(), 5);
  manager().Lock(107);
  manager().Unlock(107);
  answers[7] = 70;
  EXPECT_EQ(manager().Query(7), 70);
  manager().SetValue(7, 71);
  manager().Enter();
  manager().Leave();
  EXPECT_EQ(calls, (Calls{"lock 107", "unlock 107", "query 7", "set 7 71", "enter", "leave"}));
  int parts = 0, part = 0;
  manager().Share(100, parts, part);
  EXPECT_EQ(parts, 4);
  EXPECT_EQ(part, 25);
  calls.clear();
  EXPECT_EQ(throughAllGates(manager()), 1234567);
  EXPECT_EQ(calls, (Calls{"gate 1", "gate 2", "gate 3", "gate 4", "gate 5", "gate 6", "gate 7"}));
}

TEST_F(PllMgr, CountOfWorkersIsAskedInTheStateForIt) {
  installHost();
  answers[0] = 0;
  answers[1] = 1;
  answers[3] = 8;

  EXPECT_EQ(manager().NbWorkers(), 8);

  EXPECT_EQ(manager().LastNbWorkers(), 8);
  EXPECT_EQ(calls,
            (Calls{"query 0", "query 1", "set 1 0", "enter", "query 3", "leave", "set 1 1"}));
}

TEST_F(PllMgr, OnlyAnAnswerOf1TellsThatAStateIsOn) {
  installHost();
  answers[1] = 1;
  for (const int notOne : {0, 2, -1}) {
    answers[0] = notOne;
    calls.clear();
    manager().NbWorkers();
    EXPECT_EQ(calls.size(), 7u) << notOne;
  }
}

TEST_F(PllMgr, CountOfWorkersIsAskedDirectlyOtherwise) {
  installHost();
  answers[3] = 8;
  for (const auto& [first, second] : {std::pair{1, 1}, {1, 0}, {0, 0}, {0, 2}, {0, -1}}) {
    answers[0] = first;
    answers[1] = second;
    calls.clear();
    EXPECT_EQ(manager().NbWorkers(), 8);
    EXPECT_EQ(calls.back(), "query 3");
    EXPECT_EQ(calls.size(), first == 1 ? 2u : 3u);
  }
}

TEST_F(PllMgr, LockIsHeldWithinAScope) {
  installHost();
  {
    const C_PllLock lock(107);
    EXPECT_EQ(calls, (Calls{"lock 107"}));
  }
  EXPECT_EQ(calls, (Calls{"lock 107", "unlock 107"}));
}

TEST_F(PllMgr, LockOfAReleasedManagerIsGoneWithIt) {
  installHost();
  {
    const C_PllLock lock(107);
    ReleaseGlobalPllManager();
  }
  EXPECT_EQ(C_PllMgr::Instance(), nullptr) << "no manager is made for the unlock";
  EXPECT_EQ(calls, (Calls{"lock 107"}));
}

TEST_F(PllMgr, WithoutMemoryThereIsNone) {
  const long failures = support::forEachFailingAllocation([] {
    ReleaseGlobalPllManager();
    EXPECT_FALSE(C_PllMgr::IsInstanced());
    EXPECT_EQ(getGlobalPllManager()->NbWorkers(), 1);
  });

  EXPECT_GE(failures, 2) << "the manager and the codes of its table";
}

TEST_F(PllMgr, ReleaseForgetsTheHost) {
  installHost();
  ReleaseGlobalPllManager();
  EXPECT_EQ(manager().CurrentWorker(), 0);
}

} // namespace

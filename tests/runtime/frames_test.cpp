// Entries, stacks and frames.
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <zarel/C_Trace.h>
#include <zarel/C_ZarelException.h>

#include "runtime/fail.h"
#include "runtime/timehooks.h"
#include "support/FailingAllocation.h"
#include "support/Files.h"

namespace {

std::vector<std::string> events;
size_t depthAtBegin = 0;

const C_CallStack& here() {
  return *GlobalCallstackCollection().GetCurrentCallStack();
}
size_t depth() {
  return here().GetStack().size();
}

void noteBegin(char* name) {
  events.push_back(std::string("begin ") + name);
  depthAtBegin = depth();
}
void noteEnd(char* name) {
  events.push_back(std::string("end ") + name);
}

class Frames : public testing::Test {
protected:
  Frames() : hooks(Zarel::timeHooks) { events.clear(); }
  ~Frames() override {
    Zarel::timeHooks = hooks;
    SetXternalTrackFuncs(nullptr, nullptr);
  }
  static void installTimeManager() {
    Zarel::timeHooks.begin = [](char* name) { events.push_back(std::string("time+ ") + name); };
    Zarel::timeHooks.end = [](char* name) { events.push_back(std::string("time- ") + name); };
  }

private:
  Zarel::TimeHooks hooks;
};

TEST_F(Frames, EntryCutsLongTexts) {
  const std::string function(100, 'f'), file(200, 'g');

  const C_Entry entry(function.c_str(), file.c_str(), 12);

  EXPECT_EQ(std::string(entry.GetFunction()), std::string(63, 'f'));
  EXPECT_EQ(std::string(entry.GetFile()), std::string(127, 'g'));
  EXPECT_EQ(entry.GetLine(), 12);
  EXPECT_EQ(sizeof entry.function, 64u);
  EXPECT_EQ(sizeof entry.file, 128u);
  EXPECT_STREQ(C_Entry(nullptr, nullptr, 0).GetFunction(), "");
}

TEST_F(Frames, FrameIsOnTheStackWhileItLives) {
  const size_t before = depth();
  {
    const Zarel::C_Trace frame("outer", "a.cpp", 3);
    {
      const Zarel::C_Trace inner("inner", "b.cpp", 4);
      ASSERT_EQ(depth(), before + 2);
      EXPECT_STREQ(here().GetStack().back().GetFunction(), "inner");
      EXPECT_EQ(here().GetTop(), &here().GetStack().back() + 1);
    }
    EXPECT_STREQ(here().GetStack().back().GetFile(), "a.cpp");
    EXPECT_EQ(here().GetStack().back().GetLine(), 3);
  }
  EXPECT_EQ(depth(), before);
}

TEST_F(Frames, TimeManagerIsToldOnceAFrameAndBeforeTheBeginHook) {
  installTimeManager();
  { const Zarel::C_Trace frame("work", "a.cpp", 1, noteBegin, noteEnd); }

  EXPECT_EQ(events,
            (std::vector<std::string>{"time+ work", "begin work", "end work", "time- work"}));
  EXPECT_EQ(depthAtBegin, depth() + 1);
}

TEST_F(Frames, NullHooksAreNotCalledButTheTimeManagerIsTold) {
  installTimeManager();
  { const Zarel::C_Trace frame("work", "a.cpp", 1, nullptr, nullptr); }
  { const Zarel::C_Trace frame("plain", "a.cpp", 1); }

  EXPECT_EQ(events,
            (std::vector<std::string>{"time+ work", "time- work", "time+ plain", "time- plain"}));
}

TEST_F(Frames, HooksGetTheWholeTextAtTheBeginAndTheCutOneAtTheEnd) {
  const std::string name(80, 'n');
  { const Zarel::C_Trace frame(name.c_str(), "a.cpp", 1, noteBegin, noteEnd); }

  EXPECT_EQ(events, (std::vector<std::string>{"begin " + name, "end " + std::string(63, 'n')}));
}

TEST_F(Frames, HooksOfTheProcessAreNullUntilSet) {
  EXPECT_EQ(BegFunc(), nullptr);
  EXPECT_EQ(EndFunc(), nullptr);
  SetXternalTrackFuncs(noteBegin, noteEnd);
  EXPECT_EQ(BegFunc(), noteBegin);
  EXPECT_EQ(EndFunc(), noteEnd);
}

TEST_F(Frames, ChangedHooksDoNotCloseOpenFrames) {
  SetXternalTrackFuncs(noteBegin, noteEnd);
  {
    const Zarel::C_Trace frame("work", "a.cpp", 1, BegFunc(), EndFunc());
    SetXternalTrackFuncs(nullptr, nullptr);
  }
  EXPECT_EQ(events, (std::vector<std::string>{"begin work", "end work"}));
}

TEST_F(Frames, FrameOfAClearedStackClosesWithAnEmptyText) {
  std::thread([] {
    installTimeManager();
    const Zarel::C_Trace frame("work", "a.cpp", 1, nullptr, noteEnd);
    GlobalCallstackCollection().GetCurrentCallStack()->Clear();
  }).join();
  EXPECT_EQ(events, (std::vector<std::string>{"time+ work", "end ", "time- "}));
}

TEST_F(Frames, ThreadsHaveStacksOfTheirOwn) {
  const Zarel::C_Trace frame("main", "a.cpp", 1);
  size_t other = 99;
  const C_CallStack* stack = nullptr;

  std::thread([&] {
    const Zarel::C_Trace inner("thread", "b.cpp", 1);
    other = depth();
    stack = &here();
  }).join();

  EXPECT_EQ(other, 1u);
  EXPECT_NE(stack, &here());
}

TEST_F(Frames, PopOfAnEmptyStackLeavesItEmptyAndTellsTheTimeManager) {
  installTimeManager();
  C_CallStack stack;

  stack.Pop();

  EXPECT_TRUE(stack.GetStack().empty());
  EXPECT_EQ(events, (std::vector<std::string>{"time- "}));
}

TEST_F(Frames, TopFollowsEveryChange) {
  C_CallStack stack;
  const auto behindLast = [&] { return stack.GetStack().data() + stack.GetStack().size(); };
  stack.Push(C_Entry("a", "a.cpp", 1));
  stack.Push(C_Entry("b", "b.cpp", 2));
  EXPECT_EQ(stack.GetTop(), behindLast());
  stack.Pop();
  EXPECT_EQ(stack.GetTop(), behindLast());
  const C_CallStack& same = stack;
  stack = same;
  EXPECT_EQ(stack.GetStack().size(), 1u) << "assignment to itself";
  stack.Clear();
  EXPECT_EQ(stack.GetTop(), behindLast());
}

TEST_F(Frames, StackIsReservedForThirtyEntries) {
  C_CallStack stack;
  EXPECT_GE(stack.GetStack().capacity(), 30u);
  EXPECT_EQ(stack.GetTop(), stack.GetStack().data()) << "behind the last of none";
  EXPECT_FALSE(stack.GetMark());
}

TEST_F(Frames, ClearRemovesAllAndSaysNothing) {
  C_CallStack stack;
  stack.Push(C_Entry("a", "a.cpp", 1));
  stack.Push(C_Entry("b", "b.cpp", 2));
  stack.SetMark(true);
  installTimeManager();

  stack.Clear();

  EXPECT_TRUE(stack.GetStack().empty());
  EXPECT_FALSE(stack.GetMark());
  EXPECT_TRUE(events.empty());
}

TEST_F(Frames, CopiesShowTheirOwnEntries) {
  C_CallStack stack, assigned;
  stack.Push(C_Entry("a", "a.cpp", 1));
  stack.SetMark(true);

  const C_CallStack copy(stack);
  assigned = stack;
  stack.Clear();

  for (const C_CallStack* one : {&copy, static_cast<const C_CallStack*>(&assigned)}) {
    ASSERT_EQ(one->GetStack().size(), 1u);
    EXPECT_STREQ(one->GetStack()[0].GetFunction(), "a");
    EXPECT_TRUE(one->GetMark());
    EXPECT_EQ(one->GetTop(), one->GetStack().data() + 1);
  }
}

TEST_F(Frames, DeepStacksGrow) {
  const size_t before = depth();
  std::vector<std::unique_ptr<Zarel::C_Trace>> frames;
  for (int k = 0; k < 100; ++k)
    frames.push_back(std::make_unique<Zarel::C_Trace>("deep", "a.cpp", k));

  EXPECT_EQ(depth(), before + 100);
  EXPECT_EQ(here().GetStack()[before + 99].GetLine(), 99);
  while (!frames.empty())
    frames.pop_back();
  EXPECT_EQ(depth(), before);
}

TEST_F(Frames, CollectionReadsCollectimes) {
  static int level = -1;
  static bool released = false;
  Zarel::timeHooks.init = [](int l) { level = l; };
  Zarel::timeHooks.release = [] { released = true; };
  {
    const support::Environment wanted("COLLECTIMES", "2x");
    const C_StackCollection collection;
    EXPECT_EQ(level, 2);
    EXPECT_FALSE(released);
  }
  EXPECT_TRUE(released);
  level = -1;
  const support::Environment unset("COLLECTIMES", nullptr);
  { const C_StackCollection collection; }
  EXPECT_EQ(level, -1);
}

TEST_F(Frames, NoManagerMeansThatBlocksDoNothing) {
  char name[] = "block";
  Zarel::timeHooks = {nullptr, nullptr, nullptr, nullptr};
  cTimeManagerBeginBlock(name);
  cTimeManagerEndBlock(name);
}

TEST_F(Frames, ExceptionCarriesTheFramesOfItsThrow) {
  const size_t before = depth();
  try {
    const Zarel::C_Trace outer("outer", "a.cpp", 1);
    const Zarel::C_Trace inner("inner", "a.cpp", 2);
    Zarel::fail(12);
  } catch (const C_ZarelException& e) {
    EXPECT_EQ(depth(), before) << "unwound already";
    ASSERT_EQ(e.getCallStack().GetStack().size(), before + 2);
    EXPECT_STREQ(e.getCallStack().GetStack()[before].GetFunction(), "outer");
    EXPECT_STREQ(e.getCallStack().GetStack()[before + 1].GetFunction(), "inner");
    EXPECT_EQ(e.getCallStackFlag(), 1);
  }
}

TEST_F(Frames, ThreadWithoutMemoryForAStackGoesOn) {
  std::thread([] {
    const support::FailingAllocation failing(1);
    EXPECT_EQ(GlobalCallstackCollection().GetCurrentCallStack(), nullptr);
    { const Zarel::C_Trace frame("later", "a.cpp", 1, noteBegin, noteEnd); }
  }).join();
}

TEST_F(Frames, FramesThatCannotBeRecordedDoNotUnbalanceTheStack) {
  const size_t before = depth();
  support::forEachFailingAllocation([&] {
    const Zarel::C_Trace frame("work", "a.cpp", 1);
    Zarel::fail(1);
  });
  EXPECT_EQ(depth(), before);
}

} // namespace

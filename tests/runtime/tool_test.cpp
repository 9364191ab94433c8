// Tools: the table, the filters, the way of a message, the standard streams.
#include <climits>
#include <cstdlib>
#include <functional>
#include <unistd.h>

#include "runtime/fixture.h"
#include "support/FailingAllocation.h"

namespace runtime_test {

class Tool : public Messages {
protected:
  static E_MessageCode_t code(int number) { return static_cast<E_MessageCode_t>(number); }
  using Lines = std::vector<std::string>;
};

TEST_F(Tool, EnumeratorsHaveTheirNumbers) {
  EXPECT_EQ(E_MsgInfo, 1);
  EXPECT_EQ(E_MsgError, 2);
  EXPECT_EQ(E_MsgWarning, 4);
  EXPECT_EQ(E_MsgCallStack, 8);
  EXPECT_EQ(E_MsgProgress, 16);
  EXPECT_EQ(E_MsgNone, 65535);
  EXPECT_EQ(SCREEN, 0);
  EXPECT_EQ(LOG, 1);
  EXPECT_EQ(LOG_RECORD, 2);
  EXPECT_EQ(ALL_STREAMS, 3);
}

TEST_F(Tool, ThereIsOneForEachKey) {
  EXPECT_FALSE(C_MessageTool::HasInstance("own"));
  EXPECT_FALSE(C_MessageTool::HasInstance("own")) << "asking creates nothing";

  C_MessageTool* own = C_MessageTool::Instance("own");

  EXPECT_TRUE(C_MessageTool::HasInstance("own"));
  EXPECT_EQ(C_MessageTool::Instance("own"), own);
  EXPECT_NE(C_MessageTool::Instance("other"), own);
  EXPECT_EQ(own->getKey(), "own");
  EXPECT_FALSE(own->isInitialized());
}

TEST_F(Tool, LastInstanceIsTheLastFoundInitialized) {
  EXPECT_EQ(C_MessageTool::LastInstance(), nullptr);
  tool("own");
  tool("own");
  EXPECT_EQ(C_MessageTool::LastInstance(), nullptr) << "not initialized";
  C_MessageTool& own = initialized("own");
  EXPECT_EQ(C_MessageTool::LastInstance(), nullptr) << "not looked up since";
  tool("own");
  EXPECT_EQ(C_MessageTool::LastInstance(), &own);
  tool("other");
  EXPECT_EQ(C_MessageTool::LastInstance(), &own);
}

TEST_F(Tool, DestructionForgetsTheKeyAndTheLastInstance) {
  initialized("own");
  tool("own");
  delete C_MessageTool::Instance("own");

  EXPECT_FALSE(C_MessageTool::HasInstance("own"));
  EXPECT_EQ(C_MessageTool::LastInstance(), nullptr);
  EXPECT_FALSE(tool("own").isInitialized()) << "a fresh one";
}

TEST_F(Tool, NewOneListensToTheOrdinary) {
  const C_MessageTool& t = tool();
  for (const auto stream : {SCREEN, LOG, LOG_RECORD}) {
    EXPECT_EQ(t.getMessageTypeFilter(stream), 15u);
    EXPECT_EQ(t.getVerbosityLevel(stream), 0);
    EXPECT_TRUE(t.DebugScopeActive(0, stream));
    EXPECT_FALSE(t.DebugScopeActive(451, stream));
    EXPECT_FALSE(t.MessageTypeActive(E_MsgProgress, stream));
  }
}

TEST_F(Tool, SettersOfAllStreamsSetAllThree) {
  C_MessageTool& t = tool();
  t.setMessageTypeFilter(6, ALL_STREAMS);
  t.setVerbosityLevel(4, ALL_STREAMS);
  t.ActivateDebugScope(451, true, ALL_STREAMS);
  for (const auto stream : {SCREEN, LOG, LOG_RECORD}) {
    EXPECT_EQ(t.getMessageTypeFilter(stream), 6u);
    EXPECT_EQ(t.getVerbosityLevel(stream), 4);
    EXPECT_TRUE(t.DebugScopeActive(451, stream));
  }
  EXPECT_EQ(t.getMessageTypeFilter(ALL_STREAMS), 0u);
  EXPECT_EQ(t.getVerbosityLevel(ALL_STREAMS), 0);
  EXPECT_FALSE(t.MessageTypeActive(E_MsgError, ALL_STREAMS));
  EXPECT_FALSE(t.VerbosityLevelActive(0, ALL_STREAMS));
  EXPECT_FALSE(t.DebugScopeActive(0, ALL_STREAMS));
}

TEST_F(Tool, SettersOfOneStreamSetOne) {
  C_MessageTool& t = tool();
  t.setMessageTypeFilter(6, LOG);
  t.setVerbosityLevel(4, LOG);
  t.ActivateDebugScope(E_DebugScope_enum(451), true, LOG);
  EXPECT_EQ(t.getMessageTypeFilter(LOG), 6u);
  EXPECT_EQ(t.getMessageTypeFilter(SCREEN), 15u);
  EXPECT_EQ(t.getVerbosityLevel(SCREEN), 0);
  EXPECT_TRUE(t.DebugScopeActive(451, LOG));
  EXPECT_FALSE(t.DebugScopeActive(451, SCREEN));
  t.ActivateDebugScope(451, false, LOG);
  EXPECT_FALSE(t.DebugScopeActive(451, LOG));
}

TEST_F(Tool, StreamsThatAreNoneArePassedOver) {
  C_MessageTool& t = tool();
  const auto none = static_cast<E_MessageStream_enum>(7);
  t.setVerbosityLevel(4, none);
  t.ActivateDebugScope(5, true, none);
  EXPECT_EQ(t.getVerbosityLevel(none), 0);
  EXPECT_FALSE(t.DebugScopeActive(5, none));
}

TEST_F(Tool, TypesSwitchTheirBits) {
  C_MessageTool& t = tool();
  t.ActivateMessageType(E_MsgProgress, true, SCREEN);
  EXPECT_EQ(t.getMessageTypeFilter(SCREEN), 31u);
  t.ActivateMessageType(E_MsgError, false, SCREEN);
  EXPECT_EQ(t.getMessageTypeFilter(SCREEN), 29u);
  t.ActivateMessageType(E_MsgNone, true, SCREEN);
  EXPECT_EQ(t.getMessageTypeFilter(SCREEN), 65535u);
  EXPECT_FALSE(t.MessageTypeActive(E_MsgNone, SCREEN)) << "never active";
  t.ActivateMessageType(E_MsgNone, false, ALL_STREAMS);
  EXPECT_EQ(t.getMessageTypeFilter(LOG), 0u);
}

TEST_F(Tool, MessagePassesByTypeLevelAndScope) {
  C_MessageTool& t = tool();
  t.setVerbosityLevel(2, SCREEN);
  t.ActivateDebugScope(451, true, LOG);
  EXPECT_TRUE(t.MessageActive(message("t", E_MsgInfo, 2), SCREEN));
  EXPECT_FALSE(t.MessageActive(message("t", E_MsgInfo, 3), SCREEN));
  EXPECT_TRUE(t.MessageActive(message("t", E_MsgInfo, -5), LOG));
  EXPECT_FALSE(t.MessageActive(message("t", E_MsgInfo, 1), LOG));
  EXPECT_TRUE(t.MessageActive(message("t", E_MsgInfo, 1), ALL_STREAMS)) << "one is enough";
  EXPECT_TRUE(t.MessageActive(message("t", E_MsgInfo, 0, 451), LOG));
  EXPECT_FALSE(t.MessageActive(message("t", E_MsgInfo, 0, 451), SCREEN));
  EXPECT_FALSE(t.MessageActive(message("t", E_MsgInfo, 1, 451), ALL_STREAMS))
      << "level and scope must agree on one stream";
  EXPECT_FALSE(t.MessageActive(message("t", E_MsgProgress), ALL_STREAMS));
  EXPECT_FALSE(t.MessageActive(message("t", E_MsgNone), ALL_STREAMS));
}

TEST_F(Tool, VerbosityOfTheEnvironmentIsTheLevelOfAllStreams) {
  const support::Environment level("ZAREL_VERBOSITY", "2 and more");
  C_MessageTool& t = tool();
  for (const auto stream : {SCREEN, LOG, LOG_RECORD})
    EXPECT_EQ(t.getVerbosityLevel(stream), 2);
  EXPECT_FALSE(message("t", E_MsgInfo, 3).IsActive());
  EXPECT_TRUE(message("t", E_MsgInfo, 2).IsActive());
}

TEST_F(Tool, ScopesOfTheEnvironmentAreAnnouncedThreeTimes) {
  const support::Environment scopes("ZAREL_DEBUG_SCOPES", "451;12");
  const std::string once = "\nZAREL_DEBUG_SCOPES defined, activating the debug scopes: 451 12 \n";

  const Captured c = capture([] { tool(); });

  EXPECT_EQ(c.out, once + once + once);
  for (const auto stream : {SCREEN, LOG, LOG_RECORD}) {
    EXPECT_TRUE(tool().DebugScopeActive(451, stream));
    EXPECT_TRUE(tool().DebugScopeActive(12, stream));
    EXPECT_TRUE(tool().DebugScopeActive(0, stream));
  }
  const Captured again = capture([] { tool().ActivateDebugScope(-1, false, LOG); });
  EXPECT_EQ(again.out, once) << "a reset of one stream runs once";
}

TEST_F(Tool, OddScopesOfTheEnvironment) {
  const std::string head = "\nZAREL_DEBUG_SCOPES defined, activating the debug scopes: ";
  for (const auto& [value, numbers] : std::vector<std::pair<const char*, const char*>>{
           {"", ""}, {";;", ""}, {"-1;7", "7 "}, {"none", "0 "}}) {
    const support::Environment scopes("ZAREL_DEBUG_SCOPES", value);
    capture([] { tool("own"); });
    const Captured c = capture([] { tool("own").ActivateDebugScope(-1, true, SCREEN); });
    EXPECT_EQ(c.out, head + numbers + "\n") << value;
    delete C_MessageTool::Instance("own");
  }
}

TEST_F(Tool, ResetPutsAllStreamsBackToScopeZero) {
  C_MessageTool& t = tool();
  t.ActivateDebugScope(9, true, ALL_STREAMS);
  t.ActivateDebugScope(0, false, ALL_STREAMS);

  t.ActivateDebugScope(-1, false, LOG);

  for (const auto stream : {SCREEN, LOG, LOG_RECORD}) {
    EXPECT_TRUE(t.DebugScopeActive(0, stream));
    EXPECT_FALSE(t.DebugScopeActive(9, stream));
  }
}

TEST_F(Tool, FormatsOfTheScreen) {
  tool().setEndMsgChar('\n');
  tool().setMessageTypeFilter(31, SCREEN);
  const Captured c = capture([] {
    for (const auto type : {E_MsgInfo, E_MsgWarning, E_MsgCallStack, E_MsgProgress})
      EXPECT_EQ(C_MessageTool::HandleMessage("text", type, 0, 0), 0);
  });
  EXPECT_EQ(c.out, "text\ntext\n");
  EXPECT_EQ(c.err, "*** Warning: text\ntext\n");
}

TEST_F(Tool, ErrorIsFollowedByItsCallStack) {
  tool().setEndMsgChar('\n');
  const Captured c =
      capture([] { EXPECT_EQ(C_MessageTool::HandleMessage(message("bad", E_MsgError)), 0); });
  EXPECT_EQ(c.out, "");
  EXPECT_EQ(c.err, "*** bad\n0 f(), file.cpp line 7\n\n");
}

TEST_F(Tool, MessageEndsWithABlankAtFirst) {
  const Captured c = capture([] {
    C_MessageTool::HandleMessageInf("one");
    C_MessageTool::HandleMessageInf(std::string("two"));
  });
  EXPECT_EQ(c.out, "one two ");
}

TEST_F(Tool, EmptyMessageIsASingleBlank) {
  tool().setEndMsgChar('|');
  const Captured c = capture([] { C_MessageTool::HandleMessage(message("")); });
  EXPECT_EQ(c.out, " |");
}

TEST_F(Tool, DefaultControllerPassesOverWhatIsNone) {
  C_MessageTool& t = tool();
  const auto odd = static_cast<E_MessageType_enum>(3);
  const auto far = static_cast<E_MessageStream_enum>(9);
  const Captured c = capture([&] {
    EXPECT_EQ(t.AppHandleMessage("t", E_MsgNone, SCREEN, nullptr), 0);
    EXPECT_EQ(t.AppHandleMessage("t", E_MsgInfo, ALL_STREAMS, nullptr), 0);
    EXPECT_EQ(t.AppHandleMessage("", E_MsgInfo, SCREEN, nullptr), 0);
    EXPECT_EQ(t.AppHandleMessage("t", odd, SCREEN, nullptr), 0);
    EXPECT_EQ(t.AppHandleMessage("t", E_MsgInfo, LOG, nullptr), 0);
    EXPECT_EQ(t.AppHandleMessage("t", E_MsgInfo, LOG_RECORD, nullptr), 0);
    EXPECT_EQ(t.AppHandleMessage("t", E_MsgInfo, far, nullptr), 0);
  });
  EXPECT_EQ(c.out + c.err, "");
}

TEST_F(Tool, LevelFiveTracesTheStream) {
  C_MessageTool& t = tool();
  t.setEndMsgChar('|');
  t.setVerbosityLevel(5, ALL_STREAMS);
  const auto far = static_cast<E_MessageStream_enum>(9);
  const Captured c = capture([&] {
    t.AppHandleMessage("s", E_MsgInfo, SCREEN, nullptr);
    t.AppHandleMessage("l", E_MsgError, LOG, nullptr);
    t.AppHandleMessage("r", E_MsgWarning, LOG_RECORD, nullptr);
    t.AppHandleMessage("u", E_MsgWarning, far, nullptr);
    t.setVerbosityLevel(6, ALL_STREAMS);
    t.AppHandleMessage("x", E_MsgWarning, LOG_RECORD, nullptr);
  });
  EXPECT_EQ(c.out, "AppHandleMessage(SCREEN,1): s|s|AppHandleMessage(LOG,2): l|"
                   "AppHandleMessage(LOG_RECORD,4): r|");
  EXPECT_EQ(c.err, "AppHandleMessage(UNKNOWN STREAM,4): u|");
}

TEST_F(Tool, ControllersGetWhatPassesTheirStream) {
  tool().setMessageStreamCtrl(&noting, ALL_STREAMS);
  tool().setVerbosityLevel(2, LOG);
  EXPECT_EQ(C_MessageTool::HandleMessage(message("low")), 0);
  EXPECT_EQ(C_MessageTool::HandleMessage(message("high", E_MsgInfo, 2)), 0);
  EXPECT_EQ(C_MessageTool::HandleMessage(message("one", E_MsgInfo, 0, 0, LOG_RECORD)), 0);
  EXPECT_EQ(C_MessageTool::HandleMessage(message("none", E_MsgNone)), 0);
  EXPECT_EQ(noting.lines, (Lines{"0 1 low", "1 1 low", "2 1 low", "1 1 high", "2 1 one"}));
}

TEST_F(Tool, NullControllerIsThatOfTheScreen) {
  tool().setMessageStreamCtrl(&noting, SCREEN);
  tool().setMessageStreamCtrl(nullptr, LOG);
  tool().setMessageStreamCtrl(nullptr, LOG_RECORD);
  C_MessageTool::HandleMessage(message("t"));
  EXPECT_EQ(noting.lines, (Lines{"0 1 t", "1 1 t", "2 1 t"}));

  tool().setMessageStreamCtrl(nullptr, SCREEN);
  EXPECT_EQ(C_MessageTool::HandleMessage(message("t")), 0) << "nobody there";
}

TEST_F(Tool, ResetMakesTheToolItsController) {
  tool().setMessageStreamCtrl(&noting, ALL_STREAMS);
  tool().ResetMessageStreamCtrl(SCREEN);
  const Captured c = capture([] { C_MessageTool::HandleMessage(message("t")); });
  EXPECT_EQ(c.out, "t ");
  EXPECT_EQ(noting.lines, (Lines{"1 1 t", "2 1 t"}));
}

TEST_F(Tool, FailingControllerDoesNotStopTheOthers) {
  tool().setMessageStreamCtrl(&noting, ALL_STREAMS);
  noting.result = 3;
  EXPECT_EQ(C_MessageTool::HandleMessage(message("t")), -1);
  EXPECT_EQ(noting.lines.size(), 3u);
  EXPECT_EQ(C_MessageTool::HandleMessage(message("t", E_MsgError)), -1);
  EXPECT_EQ(noting.lines.size(), 9u) << "and the call stack follows";
}

TEST_F(Tool, DevNullSwallowsEverything) {
  EXPECT_EQ(devNull.AppHandleMessage("t", E_MsgError, SCREEN, nullptr), 0);
  EXPECT_EQ(devNull.AppOpenProgress(), 0);
  EXPECT_EQ(devNull.AppSetProgress("t", 1, SCREEN), 0);
  EXPECT_EQ(devNull.AppCloseProgress(), 0);
}

TEST_F(Tool, CallStackFollowsEvenWhereTheErrorIsFilteredOut) {
  C_MessageTool& t = tool();
  t.setMessageStreamCtrl(&noting, ALL_STREAMS);
  t.ActivateMessageType(E_MsgError, false, SCREEN);
  t.setVerbosityLevel(-1, LOG_RECORD);
  C_MessageTool::HandleMessage(message("bad", E_MsgError));
  EXPECT_EQ(noting.lines,
            (Lines{"1 2 bad", "0 8 0 f(), file.cpp line 7\n", "1 8 0 f(), file.cpp line 7\n"}));
}

TEST_F(Tool, CallStackStringIsInnermostFirst) {
  const C_Trace outer("outer", "o.cpp", 1);
  const C_Trace inner("inner", "i.cpp", 2);
  char buffer[2048];

  tool().BuildCallStackString(message("t"), buffer);

  EXPECT_STREQ(buffer,
               "2 f(), file.cpp line 7\n1 inner(), i.cpp line 2\n0 outer(), o.cpp line 1\n");
}

TEST_F(Tool, CallStackStringOfAnExceptionIsItsOwn) {
  auto thrown = [] {
    const C_Trace frame("gone", "g.cpp", 5);
    return C_ZarelException("Throwing", "t.cpp", 6, 1, 0, defaultKey);
  }();
  char buffer[2048];
  tool().BuildCallStackString(thrown, buffer);
  EXPECT_STREQ(buffer, "1 Throwing(), t.cpp line 6\n0 gone(), g.cpp line 5\n");
}

TEST_F(Tool, CallStackStringOfAnEmptyStackIsTheLocation) {
  char buffer[2048];
  tool().BuildCallStackString(message("t"), buffer);
  EXPECT_STREQ(buffer, "0 f(), file.cpp line 7\n");
}

TEST_F(Tool, CallStackStringIsCutAtItsBuffer) {
  const std::string name(63, 'n'), file(127, 'f');
  std::vector<std::unique_ptr<C_Trace>> frames;
  for (int k = 0; k < 50; ++k)
    frames.push_back(std::make_unique<C_Trace>(name.c_str(), file.c_str(), INT_MAX));
  std::string buffer(3000, '#');

  tool().BuildCallStackString(message("t"), &buffer[0]);

  EXPECT_EQ(buffer.find('\0'), 2047u);
  EXPECT_EQ(buffer[2048], '#');
  while (!frames.empty())
    frames.pop_back();
}

TEST_F(Tool, FormsOfHandleMessage) {
  C_MessageTool& own = tool("own");
  own.setMessageStreamCtrl(&noting, SCREEN);
  own.setMessageTypeFilter(0, LOG);
  own.setMessageTypeFilter(0, LOG_RECORD);
  own.ActivateDebugScope(4, true, SCREEN);
  const std::string key = "own";
  const std::string none = "MessageTool is not initialized! Cannot get message ID=";

  EXPECT_EQ(C_MessageTool::HandleMessage(key, std::string("a %d"), E_MsgWarning, 0, 4), 0);
  EXPECT_EQ(C_MessageTool::HandleMessage(key, code(5), E_MsgInfo, 0), -1);
  EXPECT_EQ(C_MessageTool::HandleMessageArg(key, "%d+%s", E_MsgInfo, 0, 4, 1, "x"), 0);
  EXPECT_EQ(C_MessageTool::HandleMessageArg(key, "", E_MsgInfo, 0, 0), 0);
  EXPECT_EQ(C_MessageTool::HandleMessageArg(key, code(6), E_MsgInfo, 0, 1), -1);
  EXPECT_EQ(C_MessageTool::HandleMessageInf(key, code(7)), -1);
  EXPECT_EQ(C_MessageTool::HandleMessageInfArg(key, code(8), "x"), -1);

  EXPECT_EQ(noting.lines,
            (Lines{"0 4 a %d", "0 1 " + none + "5.", "0 1 1+x",
                   "0 1 *** MessageTool: invalid message, empty string in argument!",
                   "0 1 " + none + "6.", "0 1 " + none + "7.", "0 1 " + none + "8."}));
}

TEST_F(Tool, FormsWithTheDefaultKey) {
  C_MessageTool& t = tool();
  t.setMessageStreamCtrl(&noting, SCREEN);
  t.setMessageTypeFilter(0, LOG);
  t.setMessageTypeFilter(0, LOG_RECORD);
  const std::string none = "MessageTool is not initialized! Cannot get message ID=";
  const char* null = nullptr;

  EXPECT_EQ(C_MessageTool::HandleMessage(std::string("a"), E_MsgWarning, 0, 0), 0);
  EXPECT_EQ(C_MessageTool::HandleMessage("b", E_MsgWarning, 0, E_DebugScope_enum(0)), 0);
  EXPECT_EQ(C_MessageTool::HandleMessage(code(1), E_MsgInfo, 0), -1);
  EXPECT_EQ(C_MessageTool::HandleMessageArg(std::string("%d"), E_MsgInfo, 0, 0, 2), 0);
  EXPECT_EQ(C_MessageTool::HandleMessageArg("%s", E_MsgInfo, 0, E_DebugScope_enum(0), "c"), 0);
  EXPECT_EQ(C_MessageTool::HandleMessageArg(null, E_MsgInfo, 0, 0), 0);
  EXPECT_EQ(C_MessageTool::HandleMessageArg(code(3), E_MsgInfo, 0), -1);
  EXPECT_EQ(C_MessageTool::HandleMessageInf(code(4)), -1);
  EXPECT_EQ(C_MessageTool::HandleMessageInfArg("%d", 5), 0);
  EXPECT_EQ(C_MessageTool::HandleMessageInfArg(code(6), 1), -1);
  EXPECT_EQ(C_MessageTool::HandleMessageInfArg("%s", std::string(2000, 'z').c_str()), 0);

  EXPECT_EQ(noting.lines, (Lines{"0 4 a", "0 4 b", "0 1 " + none + "1.", "0 1 2", "0 1 c",
                                 "0 1 *** MessageTool: invalid message, empty string in argument!",
                                 "0 1 " + none + "3.", "0 1 " + none + "4.", "0 1 5",
                                 "0 1 " + none + "6.", "0 1 " + std::string(1023, 'z')}));
}

TEST_F(Tool, InactiveNumbersAreNotLookedUp) {
  EXPECT_EQ(C_MessageTool::HandleMessage(code(5), E_MsgInfo, 1), 0) << "a look-up would fail";
  EXPECT_EQ(C_MessageTool::HandleMessageArg(code(5), E_MsgInfo, 1, 7), 0);
  EXPECT_EQ(C_MessageTool::HandleMessageArg(code(5), E_MsgProgress, 0), 0);
}

TEST_F(Tool, GetMessageTellsWhatIsMissing) {
  std::string text;
  EXPECT_EQ(C_MessageTool::getMessage(code(5), text, nullptr, "own"), -1);
  EXPECT_EQ(text, "MessageTool is not initialized! Cannot get message ID=5.");
  EXPECT_FALSE(C_MessageTool::HasInstance("own")) << "creates nothing";

  initialized("own");
  EXPECT_EQ(C_MessageTool::getMessage(code(5), text, nullptr, "own"), -1);
  EXPECT_EQ(text, "MessageDatabase failed to load id 5");
}

TEST_F(Tool, SafeDisplayIsTheErrorBox) {
  C_MessageTool::SafeDisplay("%d %s", 4, "words");
  C_MessageTool::SafeDisplay("%s", std::string(3000, 'x').c_str());
  EXPECT_EQ(boxes, (Lines{"Error: 4 words", "Error: " + std::string(1023, 'x')}));
}

// Runs after the table's end, since it is registered before the table's beginning.
void afterTheEnd() {
  const bool gone = !C_MessageTool::HasInstance("own") && !C_MessageTool::LastInstance();
  const bool usable = C_MessageTool::Instance("own") != nullptr;
  _exit(gone && usable ? 0 : 1);
}

TEST(ToolDeathTest, ProcessEndDeletesEveryTool) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        std::atexit(afterTheEnd);
        C_DevNullCtrl devNull;
        C_MessageTool::Instance("own")->setMessageStreamCtrl(&devNull, ALL_STREAMS);
        C_MessageTool::Instance("own")->Initialize();
        C_MessageTool::Instance("own");
        std::exit(3);
      },
      testing::ExitedWithCode(0), "");
}

// What the boxes say when each allocation of a call fails in turn and there is no tool before.
std::vector<std::string> boxesWithoutMemory(const std::function<void()>& call) {
  std::vector<std::string> said;
  support::forEachFailingAllocation([&] {
    {
      const support::Unharmed before;
      if (C_MessageTool::HasInstance(defaultKey)) delete C_MessageTool::Instance(defaultKey);
      boxes.clear();
      boxes.reserve(8);
    }
    call();
    const support::Unharmed after;
    said.insert(said.end(), boxes.begin(), boxes.end());
  });
  return said;
}

TEST_F(Tool, WithoutMemoryForAToolTheBoxSpeaks) {
  tool().setMessageTypeFilter(0, ALL_STREAMS);
  const C_ZarelMessage m = message("t", E_MsgWarning, 2);
  C_ZarelException e("Throwing", "a.cpp", 1, 12, 3, defaultKey);
  const std::string head = "Error: MessageTool is not initialized!\n*** Cannot handle ";
  using testing::Contains;

  EXPECT_THAT(boxesWithoutMemory([&] { EXPECT_EQ(C_MessageTool::HandleCallStack(m, 9), 0); }),
              Contains(head + "callstack."));
  EXPECT_THAT(boxesWithoutMemory([&] {
                const int result = C_MessageTool::HandleMessage(m);
                EXPECT_EQ(result, boxes.empty() ? 0 : -1);
              }),
              Contains(head + "message id=0 type=4 level=2"));
  EXPECT_THAT(boxesWithoutMemory([&] { C_MessageTool::HandleMessageArg(code(7), E_MsgInfo, 3); }),
              Contains(head + "message id=7 type=1 level=3"));
  EXPECT_THAT(boxesWithoutMemory([&] { C_MessageTool::HandleMessage(e, E_MsgWarning, 4); }),
              Contains(head + "exception code=12 reason=3 type=4 level=4"));
  EXPECT_THAT(boxesWithoutMemory([&] { fct_Trace("aff_lieu", 5, "a.c"); }),
              Contains("Error: *** We couldn't retrieve the Default Message Tool !\n"
                       "*** fct_Trace( aff_lieu, 5, a.c)"));
  EXPECT_THAT(boxesWithoutMemory([&] { MSG_get(5); }),
              Contains("Error: *** We couldn't retrieve the Default Message Tool !"));
}

TEST_F(Tool, FailingAllocationsNeverCrash) {
  const long failed = support::forEachFailingAllocation([] {
    C_MessageTool::HandleMessage(std::string("own"), "a text that is long enough to be allocated",
                                 E_MsgWarning, 7, 0);
    if (C_MessageTool::HasInstance("own")) delete C_MessageTool::Instance("own");
  });
  EXPECT_GT(failed, 3);
}

} // namespace runtime_test

// Messages and what is printed of them.
#include "runtime/fixture.h"

namespace runtime_test {

class Message : public Messages {
protected:
  static E_MessageCode_t code(int number) { return static_cast<E_MessageCode_t>(number); }
  static void expect(const C_ZarelMessage& m, const std::string& key, int number, int type,
                     int level, int scope, int stream, const std::string& text) {
    EXPECT_EQ(m.getKey(), key);
    EXPECT_EQ(m.getMessageCode(), number);
    EXPECT_EQ(m.getMessageType(), type);
    EXPECT_EQ(m.getVerbosityLevel(), level);
    EXPECT_EQ(m.getDebugScope(), scope);
    EXPECT_EQ(m.getMessageStream(), stream);
    EXPECT_EQ(m.getMessage(), text);
    EXPECT_EQ(m.getCallStackFlag(), 0);
    EXPECT_TRUE(m.getCallStack().GetStack().empty());
    EXPECT_STREQ(m.getErrorLocation().GetFunction(), "f");
    EXPECT_STREQ(m.getErrorLocation().GetFile(), "a.cpp");
    EXPECT_EQ(m.getErrorLocation().GetLine(), 3);
  }
};

TEST_F(Message, HasTwelveForms) {
  const std::string own = "own", text = "text %d";
  const std::string dflt = defaultKey;
  const auto none = std::string("MessageDatabase failed to load id 9");
  using M = C_ZarelMessage;
  expect(M("f", "a.cpp", 3, "literal %d", E_MsgInfo, 1, 2, LOG), dflt, 0, 1, 1, 2, 1, "literal %d");
  expect(M("f", "a.cpp", 3, own, text, E_MsgError, 1, 2, SCREEN), "own", 0, 2, 1, 2, 0, text);
  expect(M("f", "a.cpp", 3, own, code(9), E_MsgError, 1, 2, SCREEN), "own", 9, 2, 1, 2, 0, "");
  expect(M("f", "a.cpp", 3, own, E_MsgWarning, "%d-%s", 5, "x"), "own", 0, 4, 0, 0, 3, "5-x");
  expect(M("f", "a.cpp", 3, own, E_MsgWarning, text), "own", 0, 4, 0, 0, 3, text);
  expect(M("f", "a.cpp", 3, own, E_MsgWarning, code(9), 1), "own", 9, 4, 0, 0, 3, none);
  expect(M("f", "a.cpp", 3, own, E_MsgInfo, 1, 2, LOG_RECORD), "own", 0, 1, 1, 2, 2, "");
  expect(M("f", "a.cpp", 3, code(9), E_MsgInfo, 1, 2, LOG), dflt, 9, 1, 1, 2, 1, "");
  expect(M("f", "a.cpp", 3, E_MsgInfo, "%g", 1.5), dflt, 0, 1, 0, 0, 3, "1.5");
  expect(M("f", "a.cpp", 3, E_MsgInfo, text), dflt, 0, 1, 0, 0, 3, text);
  expect(M("f", "a.cpp", 3, E_MsgInfo, code(9)), dflt, 9, 1, 0, 0, 3, none);
  expect(M("f", "a.cpp", 3, E_MsgInfo, 4, 5, ALL_STREAMS), dflt, 0, 1, 4, 5, 3, "");
}

TEST_F(Message, ScopesMayBeEnumerators) {
  const C_ZarelMessage m("f", "a.cpp", 3, "t", E_MsgInfo, 0, E_DebugScope_enum(451), SCREEN);
  EXPECT_EQ(m.getDebugScope(), 451);
}

TEST_F(Message, CopiesCarryEveryField) {
  C_ZarelMessage m("f", "a.cpp", 3, std::string("own"), std::string("t"), E_MsgError, 1, 2, LOG);
  m.setMessageCode(code(9));
  C_ZarelMessage assigned("g", "b.cpp", 4, E_MsgInfo, 0, 0, SCREEN);
  assigned = m;
  expect(C_ZarelMessage(m), "own", 9, 2, 1, 2, 1, "t");
  expect(assigned, "own", 9, 2, 1, 2, 1, "t");
}

TEST_F(Message, SettersSet) {
  C_ZarelMessage m("f", "a.cpp", 3, E_MsgInfo, 0, 0, SCREEN);
  m.setKey("own");
  m.setMessageCode(code(5));
  m.setMessageType(E_MsgProgress);
  m.setVerbosityLevel(3);
  m.setDebugScope(E_DebugScope_enum(7));
  m.setMessageStream(LOG);
  m.Set(std::string("text"));
  expect(m, "own", 5, 16, 3, 7, 1, "text");
}

void setFrom(C_ZarelMessage& m, bool append, const char* format, ...) {
  va_list args;
  va_start(args, format);
  if (append)
    m.Append(format, reinterpret_cast<char**>(&args));
  else
    m.Set(format, reinterpret_cast<char**>(&args));
  va_end(args);
}

TEST_F(Message, TextIsSetAndAppended) {
  C_ZarelMessage m = message("old");
  m.Set("%d,", 1);
  m.Append("%s", "two");
  m.Append(std::string(",%d"));
  EXPECT_EQ(m.getMessage(), "1,two,%d");

  setFrom(m, false, "%d+%d", 3, 4);
  setFrom(m, true, "=%s", "seven");
  EXPECT_EQ(m.getMessage(), "3+4=seven");

  m.Set("plain %d", static_cast<char**>(nullptr));
  EXPECT_EQ(m.getMessage(), "plain %d") << "no arguments, no formatting";

  m.Set(code(6));
  EXPECT_EQ(m.getMessage(), "MessageDatabase failed to load id 6");
  EXPECT_EQ(m.getMessageCode(), 6);
  m.Set(code(8), static_cast<char**>(nullptr));
  EXPECT_EQ(m.getMessage(), "MessageDatabase failed to load id 8");
  m.Append(code(7), 1);
  EXPECT_EQ(m.getMessage(),
            "MessageDatabase failed to load id 8MessageDatabase failed to load id 7");
  EXPECT_EQ(m.getMessageCode(), 7);
}

TEST_F(Message, FormattedTextIsCutAtItsBuffer) {
  C_ZarelMessage m = message("");
  m.Set("%s", std::string(20000, 'x').c_str());
  EXPECT_EQ(m.getMessage(), std::string(16383, 'x'));
  m.Set(std::string(20000, 'y'));
  EXPECT_EQ(m.getMessage().size(), 20000u) << "a literal text has no limit";
}

TEST_F(Message, IsActiveWhenAStreamOfItsToolListens) {
  tool().setVerbosityLevel(2, LOG);
  EXPECT_TRUE(message("t", E_MsgInfo, 2).IsActive());
  EXPECT_FALSE(message("t", E_MsgInfo, 2, 0, SCREEN).IsActive());
  EXPECT_FALSE(message("t", E_MsgInfo, 3).IsActive());
  EXPECT_FALSE(message("t", E_MsgNone).IsActive());
}

TEST_F(Message, PrintGoesToTheTool) {
  tool().setMessageStreamCtrl(&noting, ALL_STREAMS);
  C_ZarelMessage m = message("first", E_MsgInfo, 0, 0, SCREEN);
  m.Print();
  m.Print("%d", 2);
  m.Print(std::string("third"));
  m.Print(static_cast<E_MessageCode_t>(4));
  EXPECT_EQ(noting.lines, (std::vector<std::string>{"0 1 first", "0 1 2", "0 1 third",
                                                    "0 1 MessageDatabase failed to load id 4"}));
}

int hookResult = 0;
int hookSaw = 0;
int hook(int* argument) {
  hookSaw = *argument;
  return hookResult;
}

TEST_F(Message, HookTakesWhatItDealsWith) {
  tool().setMessageStreamCtrl(&noting, ALL_STREAMS);
  SetXternalPrint(hook);
  C_ZarelMessage m = message("text", E_MsgInfo, 0, 0, SCREEN);

  hookResult = 0;
  EXPECT_EQ(m.Print(), 0);
  EXPECT_EQ(hookSaw, 1);
  EXPECT_TRUE(noting.lines.empty());

  hookResult = 5;
  EXPECT_EQ(m.Print("%s", "other"), 0);
  EXPECT_EQ(noting.lines, (std::vector<std::string>{"0 1 other"}));
}

TEST_F(Message, LongTextsGoOutInPieces) {
  tool().setMessageStreamCtrl(&noting, ALL_STREAMS);
  C_ZarelMessage m = message("", E_MsgInfo, 0, 0, SCREEN);
  const std::string a(4096, 'a'), b(4096, 'b');

  EXPECT_EQ(TPrintStr(m, a.c_str()), 0);
  ASSERT_EQ(noting.lines.size(), 1u);
  EXPECT_EQ(TPrintStr(m, (a + b + "c%d").c_str()), 0);

  EXPECT_EQ(noting.lines,
            (std::vector<std::string>{"0 1 " + a, "0 1 " + a, "0 1 " + b, "0 1 c%d"}));
  noting.result = -1;
  EXPECT_EQ(TPrintStr(m, "x"), -1);
}

TEST_F(Message, TextIsTheFormatOnAStream) {
  const Captured c = capture([] {
    EXPECT_EQ(TPrintStr(stdout, "100%% sure"), 9);
    TPrintStr(stdout, "|%d|%");
  });
  EXPECT_EQ(c.out, "100% sure|%d|%");
}

} // namespace runtime_test

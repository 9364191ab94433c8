// The exception.
#include <cerrno>
#include <cstring>

#include <zarel/C_ZarelException.h>

#include "runtime/fail.h"
#include "runtime/fixture.h"

namespace runtime_test {

E_MessageCode_t code(int number) {
  return static_cast<E_MessageCode_t>(number);
}

class Exceptions : public Messages {};

TEST_F(Exceptions, DefaultOneIsEmpty) {
  const C_ZarelException e;

  EXPECT_STREQ(e.getErrorLocation().GetFunction(), "");
  EXPECT_EQ(e.getExceptionCode(), 0);
  EXPECT_EQ(e.getReasonCode(), 0);
  EXPECT_EQ(e.getKey(), "DefaultMessageTool");
  EXPECT_EQ(e.getErrno(), 0);
}

TEST_F(Exceptions, IsAnErrorMessageWithItsOwnStack) {
  const C_ZarelException e("Throwing", "src/a.cpp", 42, code(12), code(3), "own");

  EXPECT_EQ(e.getMessageCode(), 12);
  EXPECT_EQ(e.getExceptionCode(), 12);
  EXPECT_EQ(e.getReasonCode(), 3);
  EXPECT_EQ(e.getMessageType(), E_MsgError);
  EXPECT_EQ(e.getVerbosityLevel(), 0);
  EXPECT_EQ(e.getDebugScope(), 0);
  EXPECT_EQ(e.getMessageStream(), ALL_STREAMS);
  EXPECT_EQ(e.getMessage(), "");
  EXPECT_EQ(e.getCallStackFlag(), 1);
  EXPECT_EQ(e.getKey(), "own");
  EXPECT_STREQ(e.getErrorLocation().GetFile(), "src/a.cpp");
  EXPECT_EQ(e.getErrorLocation().GetLine(), 42);
}

TEST_F(Exceptions, FailIsOneWord) {
  const int line = __LINE__ + 2;
  try {
    Zarel::fail(2872);
  } catch (const C_ZarelException& e) {
    EXPECT_EQ(e.getExceptionCode(), 2872);
    EXPECT_EQ(e.getReasonCode(), 0);
    EXPECT_STREQ(e.getErrorLocation().GetFunction(), "Throwing");
    EXPECT_STREQ(e.getErrorLocation().GetFile(), "tests/runtime/exception_test.cpp")
        << "the path as it stands in the repository";
    EXPECT_EQ(e.getErrorLocation().GetLine(), line);
    EXPECT_EQ(e.getKey(), "DefaultMessageTool");
  }
}

// The numbers of the symbols are those of this system's errno, the reasons are the library's.
TEST_F(Exceptions, ReasonInErrnoIsMappedAtOnce) {
  const int rows[][2] = {{6, 17}, {9, 16}, {12, 1}, {13, 2828}, {22, 18}, {23, 8},
                         {24, 7}, {27, 9}, {28, 5}, {0, 31},    {5, 31},  {2, 31}};
  for (const auto& row : rows) {
    errno = row[0];
    const C_ZarelException e("Throwing", "a.cpp", 1, code(22), code(100), defaultKey);
    EXPECT_EQ(e.getReasonCode(), row[1]) << row[0];
    EXPECT_EQ(e.getErrno(), row[0]);
  }
}

TEST_F(Exceptions, SymbolsHaveTheirNumbers) {
  EXPECT_EQ(ENXIO, 6);
  EXPECT_EQ(EBADF, 9);
  EXPECT_EQ(ENOMEM, 12);
  EXPECT_EQ(EACCES, 13);
  EXPECT_EQ(EINVAL, 22);
  EXPECT_EQ(ENFILE, 23);
  EXPECT_EQ(EMFILE, 24);
  EXPECT_EQ(EFBIG, 27);
  EXPECT_EQ(ENOSPC, 28);
}

TEST_F(Exceptions, SettersMapTheReasonToo) {
  C_ZarelException e;
  errno = ENOSPC;
  e.setReasonCode(code(100));
  EXPECT_EQ(e.getReasonCode(), 5);
  errno = EBADF;
  e.setExceptionCode(code(21), code(100));
  EXPECT_EQ(e.getExceptionCode(), 21);
  EXPECT_EQ(e.getReasonCode(), 16);
  errno = EINVAL;
  e.setReason(code(100));
  EXPECT_EQ(e.getReasonCode(), 18);
  EXPECT_EQ(e.getReasonMessage(), "");
  e.setExceptionCode(code(21), code(4));
  EXPECT_EQ(e.getReasonCode(), 4);
}

TEST_F(Exceptions, TextsWithoutADatabaseTellTheNumber) {
  C_ZarelException e;

  e.setExceptionCode(code(77));
  EXPECT_EQ(e.getExceptionCode(), 77);
  EXPECT_EQ(e.getMessageCode(), 77);
  EXPECT_EQ(e.getExceptionMessage(), "MessageDatabase failed to load id 77");
  e.setExceptionCode(code(78), 5, "argument");
  EXPECT_EQ(e.getExceptionMessage(), "MessageDatabase failed to load id 78");

  e.setReason(code(79));
  EXPECT_EQ(e.getReasonCode(), 79);
  EXPECT_EQ(e.getReasonMessage(), "MessageDatabase failed to load id 79");
  e.setReason("%d of %s", 3, "four");
  EXPECT_EQ(e.getReasonMessage(), "3 of four");
  e.setReason("%s", std::string(2000, 'r').c_str());
  EXPECT_EQ(e.getReasonMessage(), std::string(1023, 'r'));
}

TEST_F(Exceptions, HandlingPutsTheTextsTogether) {
  initialized();
  C_ZarelException e("Throwing", "a.cpp", 9, code(12), code(3), defaultKey);
  e.setReason("because %d", 1);

  EXPECT_EQ(C_MessageTool::HandleMessage(e, E_MsgError, 0), -1) << "12 has no text";

  EXPECT_EQ(e.getMessage(), "MessageDatabase failed to load id 12\nbecause 1");
  ASSERT_EQ(noting.lines.size(), 6u) << "a message and a call stack on three streams";
  EXPECT_EQ(noting.lines[0], "0 2 MessageDatabase failed to load id 12\nbecause 1");
  EXPECT_EQ(noting.lines[3], "0 8 0 Throwing(), a.cpp line 9\n");
}

TEST_F(Exceptions, FailedCodeLeavesTheReasonUnfetched) {
  initialized();
  C_ZarelException e("Throwing", "a.cpp", 9, code(12), code(3), defaultKey);

  EXPECT_EQ(C_MessageTool::HandleMessage(e, E_MsgError, 0), -1);

  EXPECT_EQ(e.getMessage(), "MessageDatabase failed to load id 12");
}

TEST_F(Exceptions, ReasonAloneIsFetched) {
  initialized();
  C_ZarelException e("Throwing", "a.cpp", 9, code(0), code(3), defaultKey);

  EXPECT_EQ(C_MessageTool::HandleMessage(e, E_MsgError, 0), -1);

  EXPECT_EQ(e.getMessage(), "\nMessageDatabase failed to load id 3");
}

TEST_F(Exceptions, UninitializedToolSaysSo) {
  tool().setMessageStreamCtrl(&noting, ALL_STREAMS);
  C_ZarelException e("Throwing", "a.cpp", 9, code(12), code(0), defaultKey);

  EXPECT_EQ(C_MessageTool::HandleMessage(e, E_MsgError, 0), -1);

  EXPECT_EQ(noting.lines[0], "0 2 MessageTool is not initialized! Cannot get message ID=12.");
}

TEST_F(Exceptions, HandlingSetsTypeAndLevel) {
  initialized().setVerbosityLevel(2, ALL_STREAMS);
  C_ZarelException e("Throwing", "a.cpp", 9, code(0), code(0), defaultKey);
  e.setReason("%s", "why");

  EXPECT_EQ(C_MessageTool::HandleMessage(e, E_MsgWarning, 2), 0);

  EXPECT_EQ(e.getMessageType(), E_MsgWarning);
  EXPECT_EQ(e.getVerbosityLevel(), 2);
  EXPECT_EQ(noting.lines, (std::vector<std::string>{"0 4 \nwhy", "1 4 \nwhy", "2 4 \nwhy"}));
}

// A derived exception may keep 100 as its reason; the system's text then tells why.
class Raw : public C_ZarelException {
public:
  using C_ZarelException::C_ZarelException;
  E_MessageCode_t getReasonCode() const override { return code(100); }
  int getErrno() const override { return ENOSPC; }
};

TEST_F(Exceptions, ReasonThatStaysInErrnoGetsTheSystemsText) {
  initialized();
  Raw e("Throwing", "a.cpp", 9, code(0), code(0), defaultKey);

  EXPECT_EQ(C_MessageTool::HandleMessage(e, E_MsgInfo, 0), 0);

  EXPECT_EQ(e.getMessage(), std::string("\n") + std::strerror(ENOSPC));
}

TEST_F(Exceptions, CopiesCarryEverything) {
  C_ZarelException e("Throwing", "a.cpp", 9, code(12), code(3), "own");
  e.setReason("%s", "why");
  C_ZarelException copy(e), assigned;
  assigned = e;

  for (const C_ZarelException* one : {&copy, &assigned}) {
    EXPECT_EQ(one->getExceptionCode(), 12);
    EXPECT_EQ(one->getReasonCode(), 3);
    EXPECT_EQ(one->getReasonMessage(), "why");
    EXPECT_EQ(one->getKey(), "own");
    EXPECT_EQ(one->getCallStackFlag(), 1);
  }
}

} // namespace runtime_test

// The log file.
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <unistd.h>

#include "runtime/fixture.h"

namespace runtime_test {

class Log : public Messages {
protected:
  Log() : name(directory.file("run.log")) {
    tool().setEndMsgChar('\n');
    tool().setMessageTypeFilter(0, SCREEN);
    tool().setMessageTypeFilter(31, LOG);
  }
  std::string content() const { return support::bytesOf(name); }

  support::TempDirectory directory;
  std::string name;
};

TEST_F(Log, FormatsOfTheLog) {
  tool().setLogFilename(name, true);
  for (const auto type : {E_MsgInfo, E_MsgWarning, E_MsgCallStack, E_MsgProgress})
    EXPECT_EQ(C_MessageTool::HandleMessage("text", type, 0, 0), 0);
  EXPECT_EQ(content(), "text\n*** Warning: text\ntext\ntext\n");
  EXPECT_EQ(tool().getLogFilename(), name);
}

TEST_F(Log, ErrorsAreFollowedByTheirCallStack) {
  tool().setVerbosityLevel(-1, SCREEN);
  tool().setLogFilename(name, true);
  EXPECT_EQ(C_MessageTool::HandleMessage(message("bad", E_MsgError)), 0);
  EXPECT_EQ(content(), "*** bad\n0 f(), file.cpp line 7\n\n");
}

TEST_F(Log, OnlyTheFirstMessageTruncates) {
  support::writeBytes(name, "old\n");
  tool().setLogFilename(name, false);
  C_MessageTool::HandleMessageInf("first");
  C_MessageTool::HandleMessageInf("second");
  EXPECT_EQ(content(), "first\nsecond\n");
}

TEST_F(Log, AppendKeepsWhatIsThere) {
  support::writeBytes(name, "old\n");
  tool().setLogFilename(name, true);
  C_MessageTool::HandleMessageInf("new");
  EXPECT_EQ(content(), "old\nnew\n");
}

TEST_F(Log, IsOpenOnlyAroundAMessage) {
  tool().setLogFilename(name, true);
  C_MessageTool::HandleMessageInf("first");
  support::writeBytes(name, "");
  unlink(name.c_str());
  C_MessageTool::HandleMessageInf("second");
  EXPECT_EQ(content(), "second\n") << "opened anew";
}

TEST_F(Log, InactiveMessagesTouchNoFile) {
  tool().setLogFilename(name, true);
  C_MessageTool::HandleMessage("t", E_MsgInfo, 1, 0);
  EXPECT_NE(access(name.c_str(), F_OK), 0);
}

TEST_F(Log, ControllersGetTheOpenFile) {
  tool().setMessageStreamCtrl(&noting, LOG);
  tool().setLogFilename(name, true);
  C_MessageTool::HandleMessageInf("t");
  EXPECT_EQ(noting.lines, (std::vector<std::string>{"1 1 t +log"}));
}

TEST_F(Log, UnwritableNameGivesOneWarningThenTheException) {
  tool().setMessageTypeFilter(15, SCREEN);
  const std::string bad = directory.file("none/run.log");
  tool().setLogFilename(bad, true);
  int caught = 0;

  const Captured first = capture([&] {
    try {
      C_MessageTool::HandleMessage("text", E_MsgWarning, 0, 0);
    } catch (const C_ZarelException& e) {
      caught = e.getExceptionCode();
      EXPECT_EQ(e.getErrno(), ENOENT);
      EXPECT_EQ(e.getReasonCode(), 31);
    }
  });
  EXPECT_EQ(caught, 29);
  EXPECT_EQ(first.err, "*** Warning: text\n*** Warning: Cannot open file " + bad + " for write.\n");
  EXPECT_EQ(tool().getLogFilename(), "");

  const Captured second = capture([] { C_MessageTool::HandleMessage("more", E_MsgWarning, 0, 0); });
  EXPECT_EQ(second.err, "*** Warning: more\n");
}

TEST_F(Log, FullDiskIsAFailure) {
  if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
  tool().setLogFilename("/dev/full", true);
  EXPECT_EQ(C_MessageTool::HandleMessage("text", E_MsgInfo, 0, 0), -1);
}

TEST_F(Log, OpenAndCloseMayBeRepeated) {
  C_MessageTool& t = tool();
  EXPECT_EQ(t.openLogFile(), 0) << "no name, no log";
  EXPECT_EQ(t.closeLogFile(), 0);
  t.setLogFilename(name, true);
  EXPECT_EQ(t.openLogFile(), 0);
  EXPECT_EQ(t.openLogFile(), 0);
  EXPECT_EQ(t.setLogFilename("", true), 0);
  EXPECT_EQ(t.closeLogFile(), 0);
}

// The descriptors of the process, one of them the listing's own.
size_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<size_t>(std::distance(begin(all), end(all)));
}

TEST_F(Log, NoFileStaysOpen) {
  const size_t before = openDescriptors();
  tool("own").setLogFilename(name, true);
  tool("own").openLogFile();
  tool("own").openLogFile();
  EXPECT_EQ(openDescriptors(), before + 1) << "the second open closed the first";
  tool("own").setLogFilename(name, true);
  EXPECT_EQ(openDescriptors(), before) << "a new name closes it";
  tool("own").openLogFile();
  tool("own").closeLogFile();
  EXPECT_EQ(openDescriptors(), before);
  tool("own").openLogFile();
  delete C_MessageTool::Instance("own");
  EXPECT_EQ(openDescriptors(), before) << "and so does the end of the tool";
}

TEST_F(Log, DefaultNameFallsBackToTheWorkingDirectory) {
  C_MessageTool& t = tool();
  const std::string base = directory.file("a.model.bin");
  EXPECT_EQ(t.GenerateDefaultLogFilename(base, ".log"), directory.file("a.model") + ".log");
  EXPECT_EQ(t.GenerateDefaultLogFilename("/no/such/dir/x.bin", ".txt"), "x.txt");
  EXPECT_EQ(t.GenerateDefaultLogFilename("x.bin", ".log"), "x.log");
  EXPECT_EQ(t.GenerateDefaultLogFilename("plain", ""), "plain");
  EXPECT_EQ(t.GenerateDefaultLogFilename(directory.file("\xff\xc3\xa9.b"), ".log"),
            directory.file("\xff\xc3\xa9.log"));
}

} // namespace runtime_test

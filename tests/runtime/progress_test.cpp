// Progress reports.
#include "runtime/fixture.h"

namespace runtime_test {

class Progress : public Messages {
protected:
  Progress() {
    tool().setMessageTypeFilter(31, ALL_STREAMS);
    tool().setMessageStreamCtrl(&noting, ALL_STREAMS);
  }
  using Lines = std::vector<std::string>;
};

TEST_F(Progress, IsOpenedSetAndClosed) {
  EXPECT_EQ(C_MessageTool::OpenProgress(50, "fit"), 0);
  EXPECT_EQ(C_MessageTool::SetProgress(20, "going", 0), 0);
  EXPECT_EQ(C_MessageTool::SetProgressArg(30, "at %d", 0, 3), 0);
  EXPECT_EQ(C_MessageTool::CloseProgress(defaultKey), 0);

  EXPECT_EQ(noting.lines, (Lines{"open", "progress 0 0 fit", "progress 1 0 fit", "progress 2 0 fit",
                                 "progress 0 20 going", "progress 1 20 going",
                                 "progress 2 20 going", "progress 0 30 at 3", "progress 1 30 at 3",
                                 "progress 2 30 at 3", "close", "close", "close"}));
}

TEST_F(Progress, DefaultFilterLetsNonePass) {
  tool().setMessageTypeFilter(15, ALL_STREAMS);
  EXPECT_EQ(C_MessageTool::OpenProgress(50, "fit"), 0);
  EXPECT_EQ(C_MessageTool::SetProgress(20, "going", 0), 0);
  EXPECT_EQ(noting.lines, Lines{});
}

TEST_F(Progress, NegativeValueIsTheLastOne) {
  C_MessageTool::OpenProgress(50, message("fit", E_MsgProgress, 0, 0, LOG));
  C_MessageTool::SetProgress(20, message("a", E_MsgProgress, 0, 0, LOG));
  C_MessageTool::SetProgress(-1, message("b", E_MsgProgress, 0, 0, LOG));
  EXPECT_EQ(noting.lines,
            (Lines{"open", "progress 1 0 fit", "progress 1 20 a", "progress 1 20 b"}));
}

TEST_F(Progress, LastValueIsKeptEvenIfNobodyListened) {
  C_MessageTool::OpenProgress(50, "fit");
  noting.lines.clear();
  C_MessageTool::SetProgress(20, "quiet", 3);
  C_MessageTool::SetProgress(-1, message("b", E_MsgProgress, 0, 0, SCREEN));
  EXPECT_EQ(noting.lines, (Lines{"progress 0 20 b"}));
}

TEST_F(Progress, LastValueIsZeroAtFirst) {
  C_MessageTool::SetProgress(-1, message("a", E_MsgProgress, 0, 0, SCREEN));
  EXPECT_EQ(noting.lines, (Lines{"progress 0 0 a"}));
}

TEST_F(Progress, ZeroIsAValueOfItsOwn) {
  C_MessageTool::SetProgress(20, message("a", E_MsgProgress, 0, 0, SCREEN));
  C_MessageTool::SetProgress(0, message("b", E_MsgProgress, 0, 0, SCREEN));
  C_MessageTool::SetProgress(-1, message("c", E_MsgProgress, 0, 0, SCREEN));
  EXPECT_EQ(noting.lines, (Lines{"progress 0 20 a", "progress 0 0 b", "progress 0 0 c"}));
}

TEST_F(Progress, ClosingForgetsTheValue) {
  C_MessageTool::OpenProgress(50, "fit");
  C_MessageTool::SetProgress(20, "a", 0);
  C_MessageTool::CloseProgress(defaultKey);
  noting.lines.clear();
  C_MessageTool::SetProgress(-1, message("b", E_MsgProgress, 0, 0, SCREEN));
  EXPECT_EQ(noting.lines, (Lines{"progress 0 0 b"}));
}

TEST_F(Progress, NumbersAreLookedUp) {
  EXPECT_EQ(C_MessageTool::OpenProgress(50, static_cast<E_MessageCode_t>(6)), -1);
  EXPECT_EQ(C_MessageTool::SetProgress(1, static_cast<E_MessageCode_t>(7), 0), -1);
  EXPECT_EQ(noting.lines[1],
            "progress 0 0 MessageTool is not initialized! Cannot get message ID=6.");
  EXPECT_EQ(noting.lines[4],
            "progress 0 1 MessageTool is not initialized! Cannot get message ID=7.");
}

TEST_F(Progress, EmptyTextIsABlank) {
  C_MessageTool::SetProgress(1, message("", E_MsgProgress, 0, 0, SCREEN));
  EXPECT_EQ(noting.lines, (Lines{"progress 0 1  "}));
}

TEST_F(Progress, OpenGoesToTheMessagesStream) {
  NotingCtrl log;
  tool().setMessageStreamCtrl(&log, LOG);
  C_MessageTool::OpenProgress(5, message("m", E_MsgProgress, 0, 0, LOG));
  EXPECT_EQ(log.lines, (Lines{"open", "progress 1 0 m"}));
  EXPECT_EQ(noting.lines, Lines{});

  log.lines.clear();
  tool().setMessageStreamCtrl(nullptr, LOG);
  C_MessageTool::OpenProgress(5, message("m", E_MsgProgress, 0, 0, LOG));
  EXPECT_EQ(noting.lines, (Lines{"open", "progress 1 0 m"}));
}

TEST_F(Progress, StopIsTheHostsAndTheTextStaysTheCallers) {
  EXPECT_FALSE(C_MessageTool::ProgressStopped(defaultKey));
  C_MessageTool::OpenProgress(5, "m");
  noting.lines.clear();
  tool().setProgressStopped(true);

  EXPECT_TRUE(C_MessageTool::ProgressStopped(defaultKey));
  C_MessageTool::SetProgress(1, message("mine", E_MsgProgress, 0, 0, SCREEN));
  EXPECT_EQ(noting.lines, (Lines{"progress 0 1 mine"}));

  C_MessageTool::OpenProgress(5, "m");
  EXPECT_FALSE(C_MessageTool::ProgressStopped(defaultKey)) << "opening takes a stop back";
}

TEST_F(Progress, WithoutAToolThereIsNothingToClose) {
  EXPECT_EQ(C_MessageTool::CloseProgress("own"), 0);
  EXPECT_FALSE(C_MessageTool::ProgressStopped("own"));
  EXPECT_FALSE(C_MessageTool::HasInstance("own"));
}

TEST_F(Progress, FailingControllersAreTold) {
  noting.result = 1;
  EXPECT_EQ(C_MessageTool::OpenProgress(5, "m"), -1);
  EXPECT_EQ(C_MessageTool::SetProgress(1, "m", 0), -1);
  EXPECT_EQ(C_MessageTool::CloseProgress(defaultKey), -1);
  EXPECT_EQ(noting.lines.size(), 1u + 3u + 3u + 3u) << "the others are served";
}

TEST_F(Progress, LogThatCannotBeOpenedEndsTheReport) {
  tool().setLogFilename("/no/such/dir/run.log", true);
  EXPECT_THROW(C_MessageTool::SetProgress(1, "m", 0), C_ZarelException);
  EXPECT_EQ(noting.lines[0], "progress 0 1 m");
  for (const std::string& line : noting.lines)
    EXPECT_NE(line, "progress 2 1 m");
}

TEST_F(Progress, ToolPrintsThePercentageOnTheScreen) {
  tool().ResetMessageStreamCtrl(ALL_STREAMS);
  const Captured c = capture([] {
    C_MessageTool::OpenProgress(3, "start");
    C_MessageTool::SetProgress(1, "one", 0);
    C_MessageTool::SetProgress(3, "all", 0);
    C_MessageTool::CloseProgress(defaultKey);
  });
  EXPECT_EQ(c.out, "  0.0% start\n 33.3% one\n 100.0% all\n");
  EXPECT_EQ(c.err, "");
}

TEST_F(Progress, ToolRefusesWhileClosed) {
  EXPECT_EQ(tool().AppSetProgress("t", 1, SCREEN), -1);
  ASSERT_EQ(boxes.size(), 1u) << "a trace";
  EXPECT_THAT(boxes[0], testing::HasSubstr("fct_Trace( aff_lieu, "));
}

} // namespace runtime_test

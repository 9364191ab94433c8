#include "app_support.h"
#include "refine/command.h"

#include <gmock/gmock.h>

using apptest::failureOf;
using namespace app::refine;
using ::testing::ElementsAre;

namespace {

TEST(RefineCommand, SplitsAtBlanks) {
  EXPECT_THAT(splitCommand("  sim  -x\t1\n"), ElementsAre("sim", "-x", "1"));
}

TEST(RefineCommand, SingleQuotesKeepEverything) {
  EXPECT_THAT(splitCommand(R"(sim 'a b\"$HOME' c)"), ElementsAre("sim", R"(a b\"$HOME)", "c"));
}

TEST(RefineCommand, DoubleQuotesKeepBlanksAndTakeBackslashes) {
  EXPECT_THAT(splitCommand(R"(sim "a \" b"c)"), ElementsAre("sim", "a \" bc"));
}

TEST(RefineCommand, QuotesMayHoldNothing) {
  EXPECT_THAT(splitCommand("sim '' \"\""), ElementsAre("sim", "", ""));
}

TEST(RefineCommand, NothingOfAShellIsSpecial) {
  EXPECT_THAT(splitCommand("sim $X *.csv ; rm | > x `y` #z"),
              ElementsAre("sim", "$X", "*.csv", ";", "rm", "|", ">", "x", "`y`", "#z"));
}

TEST(RefineCommand, OpenQuotesAndEmptyCommandsAreRefused) {
  for (const char* command : {"sim 'a", "sim \"a", "sim \\", "", "  \t"})
    EXPECT_EQ(failureOf([&] { splitCommand(command); }).code, app::ExitCode::usage) << command;
}

TEST(RefineCommand, PlaceholdersAreFilledInsideWords) {
  const Placeholders values{{"points", "/p q.csv"}, {"results", "{points}"}};

  EXPECT_THAT(fillPlaceholders({"sim", "--in={points}", "{results}", "{other}", "{"}, values),
              ElementsAre("sim", "--in=/p q.csv", "{points}", "{other}", "{"));
}

TEST(RefineCommand, FilesAreAppendedWhenNeitherIsMentioned) {
  EXPECT_THAT(withFileArguments({"sim", "-v"}), ElementsAre("sim", "-v", "{points}", "{results}"));
  EXPECT_THAT(withFileArguments({"sim", "{results}", "-i{points}"}),
              ElementsAre("sim", "{results}", "-i{points}"));
}

TEST(RefineCommand, OneFileAloneIsRefused) {
  EXPECT_EQ(failureOf([] { withFileArguments({"sim", "{points}"}); }).code, app::ExitCode::usage);
  EXPECT_EQ(failureOf([] { withFileArguments({"sim", "{results}"}); }).code, app::ExitCode::usage);
}

TEST(RefineCommand, QuotedWordsReadBackAsTheSameWords) {
  const std::vector<std::string> words{"a", "", "b c", "it's", "\"q\"", "$x", "back\\slash", "é"};

  // The command's own rules are those of a shell for such words.
  EXPECT_EQ(splitCommand(quoteWords(words)), words);
}

} // namespace

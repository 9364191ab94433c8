#include "output_file.h"

#include "app_support.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace app;
using apptest::failureOf;

namespace {

class OutputFiles : public apptest::InFolder {
protected:
  void writeWhole(const std::string& name, const std::string& text, bool force) {
    OutputFile output(path(name), force);
    output.write(text);
    output.commit();
  }
};

TEST_F(OutputFiles, AppearWhenTheyAreComplete) {
  {
    OutputFile output(path("o"), false);
    output.write("ab");
    EXPECT_FALSE(exists("o"));
    output.write("c");
    output.commit();
  }
  EXPECT_EQ(read("o"), "abc");
  EXPECT_EQ(count(), 1) << "no temporary stays";
}

TEST_F(OutputFiles, LeaveNothingWithoutACommit) {
  { OutputFile(path("o"), false).write("abc"); }
  EXPECT_EQ(count(), 0);
}

TEST_F(OutputFiles, KeepTheFormerFileUntilThen) {
  write("o", "old");
  {
    OutputFile output(path("o"), true);
    output.write("new");
    EXPECT_EQ(read("o"), "old");
  }
  EXPECT_EQ(read("o"), "old");
  writeWhole("o", "new", true);
  EXPECT_EQ(read("o"), "new");
  EXPECT_EQ(count(), 1);
}

TEST_F(OutputFiles, AreNotOverwrittenWithoutForce) {
  write("o", "old");
  const auto failure = failureOf([&] { OutputFile output(path("o"), false); });
  EXPECT_EQ(failure.code, ExitCode::usage);
  EXPECT_NE(failure.hint.find("--force"), std::string::npos);
  EXPECT_EQ(failureOf([&] { checkOverwrite(path("o"), false); }).code, ExitCode::usage);
  EXPECT_NO_THROW(checkOverwrite(path("o"), true));
  EXPECT_NO_THROW(checkOverwrite(path("other"), false));
  EXPECT_NO_THROW(checkOverwrite("-", false));
}

/** Someone else writes the name while we work: theirs stays. */
TEST_F(OutputFiles, DoNotOverwriteWhatAppearedMeanwhile) {
  OutputFile output(path("o"), false);
  output.write("ours");
  write("o", "theirs");
  EXPECT_EQ(failureOf([&] { output.commit(); }).code, ExitCode::usage);
  EXPECT_EQ(read("o"), "theirs");
}

TEST_F(OutputFiles, GoWhereALinkLeads) {
  write("real", "old");
  std::filesystem::create_symlink(path("real"), path("link"));
  writeWhole("link", "new", true);
  EXPECT_EQ(read("real"), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
}

TEST_F(OutputFiles, KeepThePermissionsOfTheFormerFile) {
  write("o", "old");
  chmod(path("o").c_str(), 0640);
  writeWhole("o", "new", true);
  struct stat info {};
  stat(path("o").c_str(), &info);
  EXPECT_EQ(info.st_mode & 07777, 0640u);
}

TEST_F(OutputFiles, MayTakeAnotherNameInTheEnd) {
  OutputFile output(path("o"), false);
  output.write("half");
  output.commitAs(path("o.partial"));
  EXPECT_FALSE(exists("o"));
  EXPECT_EQ(read("o.partial"), "half");
}

TEST_F(OutputFiles, ReportAFolderThatIsNotThere) {
  EXPECT_EQ(failureOf([&] { OutputFile output(path("no/where"), false); }).code, ExitCode::io);
  EXPECT_EQ(failureOf([&] { OutputFile output(folder_.string() + "/", true); }).code, ExitCode::io);
}

TEST_F(OutputFiles, ReportAFullDevice) {
  OutputFile output("/dev/full", false);
  const auto failure = failureOf([&] { output.write("abc"); });
  EXPECT_EQ(failure.code, ExitCode::io);
  EXPECT_NE(failure.text().find("No space left"), std::string::npos);
  EXPECT_EQ(failureOf([&] { output.commit(); }).code, ExitCode::io) << "the error sticks";
}

TEST_F(OutputFiles, ReportAFileSizeLimit) {
  write("o", "old");
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit former{};
  getrlimit(RLIMIT_FSIZE, &former);
  rlimit small = former;
  small.rlim_cur = 1000;
  setrlimit(RLIMIT_FSIZE, &small);
  {
    OutputFile output(path("o"), true);
    EXPECT_EQ(failureOf([&] { output.write(std::string(5000, 'x')); }).code, ExitCode::io);
    EXPECT_EQ(failureOf([&] { output.commit(); }).code, ExitCode::io);
  }
  setrlimit(RLIMIT_FSIZE, &former);
  EXPECT_EQ(read("o"), "old");
  EXPECT_EQ(count(), 1);
}

TEST_F(OutputFiles, NeedNoForceForADevice) {
  EXPECT_NO_THROW(OutputFile("/dev/null", false));
}

} // namespace
